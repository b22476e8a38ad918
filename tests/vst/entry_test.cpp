// How hosts come in: the names of the library, who is let in, what is asked on the way.

#include "vst/vst_stage.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <memory>
#include <set>

namespace sonorelle::test {
namespace {

// Name and kind of each symbol that `nm` lists.
std::set<std::pair<std::string, std::string>> SymbolsOf(const std::string& file) {
    std::set<std::pair<std::string, std::string>> symbols;
    const std::unique_ptr<FILE, int (*)(FILE*)> listing(
        popen(("nm -D --defined-only '" + file + "'").c_str(), "r"), pclose);
    std::array<char, 512> line{};
    while (listing != nullptr && std::fgets(line.data(), line.size(), listing.get()) != nullptr) {
        std::istringstream words(line.data());
        std::string address;
        std::string kind;
        std::string name;
        words >> address >> kind >> name;
        symbols.emplace(name, kind);
    }
    return symbols;
}

// Kind u would keep the library in memory for good, so T alone is as it should be.
TEST(VstEntryPoints, AreTheOnlyNamesOfTheLibrary) {
    const std::set<std::pair<std::string, std::string>> both = {{"VSTPluginMain", "T"}, {"main", "T"}};
    EXPECT_EQ(SymbolsOf(BuiltPlugIn()), both);
}

TEST(VstEntryPoints, LetEveryHostInButOneOfVersionZero) {
    const PlugInLibrary library;
    for (const char* const name : {"VSTPluginMain", "main"}) {
        const VstEntry entry = library.Entry(name);
        ASSERT_NE(entry, nullptr) << name;
        TestHost old(0);
        EXPECT_EQ(old.Make(entry), nullptr) << name;
        EXPECT_EQ(old.Requests(), std::vector<std::int32_t>{1}); // asked for its version and nothing else
        EXPECT_TRUE(old.AskedForVersionPlainly());
        for (const std::intptr_t version : {1, 2, 2300, 2400, -1}) {
            TestHost host(version);
            HostedEffect* const effect = host.Make(entry);
            ASSERT_NE(effect, nullptr) << name << ' ' << version;
            EXPECT_EQ(effect->dispatcher(effect, 1, 0, 0, nullptr, 0), 1);
        }
    }
}

TEST(VstEntryPoints, GiveNothingToNobody) {
    const PlugInLibrary library;
    EXPECT_EQ(library.Entry()(nullptr), nullptr);
    EXPECT_EQ(library.Entry("main")(nullptr), nullptr);
    EXPECT_EQ(library.Entry("VSTPluginMainUnderItsOldName"), nullptr);
}

TEST(VstEntryPoints, TellTheHostOfTheTenOutputsOnce) {
    const PlugInLibrary library;
    TestHost host;
    HostedEffect* const effect = host.Make(library.Entry());
    ASSERT_NE(effect, nullptr);
    ASSERT_EQ(host.OutputsTellings().size(), 1U);
    EXPECT_EQ(host.OutputsTellings()[0].inputs, 0);
    EXPECT_EQ(host.OutputsTellings()[0].outputs, 10);
    // Told between the editor and the rest, as hosts have always seen it.
    EXPECT_EQ(host.OutputsTellings()[0].flags, 1);
    EXPECT_EQ(host.OutputsTellings()[0].uniqueId, 0);
    EXPECT_EQ(host.CountOf(Request::kVersion), 1);
    EXPECT_EQ(host.CountOf(Request::kWantMidi), 0); // only when it is switched on
    effect->dispatcher(effect, 1, 0, 0, nullptr, 0);
}

double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// As a scanner does, which may have no display.
TEST(VstEntryPoints, AScanNeedsNoDisplayAndLeavesNothing) {
    const char* const display = std::getenv("DISPLAY");
    const std::string kept = display != nullptr ? display : "";
    unsetenv("DISPLAY");
    double quickest = 1e9;
    for (int turn = 0; turn < 3; ++turn) {
        const OwnPlugInFile file;
        TestHost host(2);
        const double start = ProcessorSeconds();
        {
            const PlugInLibrary library(file.Path());
            HostedEffect* const effect = host.Make(library.Entry());
            ASSERT_NE(effect, nullptr);
            std::array<char, 64> text{};
            EXPECT_EQ(effect->dispatcher(effect, 45, 0, 0, text.data(), 0), 1);
            EXPECT_STREQ(text.data(), "sonorelle");
            EXPECT_EQ(effect->dispatcher(effect, 1, 0, 0, nullptr, 0), 1);
        }
        quickest = std::min(quickest, ProcessorSeconds() - start);
        EXPECT_FALSE(file.IsInMemory());
    }
    if (!kept.empty()) setenv("DISPLAY", kept.c_str(), 1);
    Figure("scan, ms", quickest * 1e3);
}

} // namespace
} // namespace sonorelle::test
