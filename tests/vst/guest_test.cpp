// A guest's manners, in a host with settings of its own. HostedPlugIn looks after each call that nothing has
// changed; here is what could.

#include "vst/editor_stage.h"

#include "support/german_locale.h"
#include "vst/process_state.h"

#include <X11/Xlib.h>

#include <bit>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <sys/stat.h>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace sonorelle::test {
namespace {

int HostsErrors(Display*, XErrorEvent*) { return 0; }
int HostsLosses(Display*) { return 0; }
void HostsSignals(int) {}

// A host's settings, for a scope.
class PeculiarHost {
public:
    PeculiarHost() {
        std::setlocale(LC_ALL, "C.UTF-8");
        errors = XSetErrorHandler(HostsErrors);
        losses = XSetIOErrorHandler(HostsLosses);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            struct sigaction action {};
            action.sa_handler = HostsSignals;
            sigaction(kSignals[i], &action, &actions[i]);
        }
        std::filesystem::current_path(folder.Path());
        mask = umask(S_IRWXG | S_IRWXO);
        setenv("SONORELLE_PECULIAR", "yes", 1);
    }
    ~PeculiarHost() {
        unsetenv("SONORELLE_PECULIAR");
        umask(mask);
        std::setlocale(LC_ALL, "C");
        XSetErrorHandler(errors);
        XSetIOErrorHandler(losses);
        for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &actions[i], nullptr);
        std::filesystem::current_path(home);
    }
    PeculiarHost(const PeculiarHost&) = delete;
    PeculiarHost& operator=(const PeculiarHost&) = delete;

private:
    static constexpr std::array<int, 4> kSignals = {SIGPIPE, SIGALRM, SIGUSR1, SIGCHLD};
    const TemporaryFolder folder;
    const std::filesystem::path home = std::filesystem::current_path();
    XErrorHandler errors = nullptr;
    XIOErrorHandler losses = nullptr;
    std::array<struct sigaction, kSignals.size()> actions{};
    mode_t mask = 0;
};

void UseAllOfIt(HostedPlugIn& plugIn, TestHost& host) {
    EXPECT_EQ(plugIn.SetChunk(SessionNaming(VstSong())), 1);
    host.Play(0);
    HostBlock block(512);
    for (int i = 0; i < 8; ++i) plugIn.PlayBlock(block, 512);
    plugIn.SendMidi({MidiOf(0x90, 60, 100)});
    for (std::int32_t i = 0; i < 32; ++i) plugIn.Set(i, 0.5F);
    plugIn.Do(Call::kEditIdle);
    const std::string saved = plugIn.Chunk();
    EXPECT_EQ(plugIn.SetChunk(saved), 1);
    plugIn.SetChunk("rubbish");
}

TEST(VstGuest, LeavesAPeculiarHostAsItIs) {
    const PeculiarHost peculiar;
    const ProcessState before = ProcessState::Take();
    {
        const OwnPlugInFile file;
        const PlugInLibrary library(file.Path());
        EXPECT_EQ(ProcessState::Take().DifferenceTo(before), ""); // no work while it is loaded
        TestHost host;
        HostedPlugIn plugIn(host, library);
        UseAllOfIt(plugIn, host);
    }
    EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
}

class VstGuestEditor : public VstEditorStage {};

TEST_F(VstGuestEditor, LeavesAPeculiarHostAsItIs) {
    const PeculiarHost peculiar;
    const ProcessState before = ProcessState::Take();
    {
        const OwnPlugInFile file; // whose toolkit opens the display here
        const PlugInLibrary own(file.Path());
        TestHost ownHost;
        HostedPlugIn effect(ownHost, own);
        EXPECT_EQ(Open(effect, parent), 1);
        EXPECT_TRUE(WorkUntil([&] { effect.Do(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
        UseAllOfIt(effect, ownHost);
        effect.Do(Call::kEditClose);
    }
    EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
}

// What a session says, and what a host shows of it.
std::vector<std::string> TextsOf(HostedPlugIn& plugIn) {
    std::vector<std::string> texts = {plugIn.Chunk(), plugIn.Chunk(true)};
    for (std::int32_t i = 0; i < 32; ++i) {
        texts.push_back(plugIn.Text(Call::kGetParamDisplay, 32, i));
        texts.push_back(std::to_string(std::bit_cast<std::uint32_t>(plugIn.Get(i))));
    }
    return texts;
}

// With its window open, too: the display is opened by the language of the host.
TEST_F(VstGuestEditor, SaysTheSameToAGermanHost) {
    LoadSong("<MasterPlaybackStart str=\"1234.5\"/>\n");
    plugIn.Set(0, 0.3F);
    plugIn.Set(3, 0.7F);
    const std::vector<std::string> plain = TextsOf(plugIn);
    const GermanLocale german;
    if (!german.IsThere()) GTEST_SKIP() << "neither the locale de_DE.UTF-8 nor its sources are installed";
    std::array<char, 8> half{};
    std::snprintf(half.data(), half.size(), "%.1f", 0.5);
    ASSERT_STREQ(half.data(), "0,5");

    const OwnPlugInFile file;
    const PlugInLibrary own(file.Path());
    TestHost ownHost;
    HostedPlugIn effect(ownHost, own);
    EXPECT_EQ(Open(effect, parent), 1);
    EXPECT_EQ(effect.SetChunk(plain.front()), 1);
    EXPECT_EQ(TextsOf(effect), plain);
    EXPECT_TRUE(WorkUntil([&] { effect.Do(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
    UseAllOfIt(effect, ownHost);
}

// Otherwise the tests above could not fail.
TEST(VstGuest, EachPartOfTheProcessIsSeen) {
    const ProcessState before = ProcessState::Take();
    std::fesetround(FE_DOWNWARD);
    const std::string rounded = ProcessState::Take().DifferenceTo(before);
    std::fesetround(FE_TONEAREST);
    EXPECT_NE(rounded.find("rounding"), std::string::npos);
    std::string found;
    {
        const PeculiarHost peculiar;
        found = ProcessState::Take().DifferenceTo(before);
    }
    for (const char* const part : {"locale", "signal handlers", "X error handler", "X connection handler",
                                   "working folder", "mask of new files", "environment"})
        EXPECT_NE(found.find(part), std::string::npos) << part;
    EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
}

TEST(VstGuest, SoundsInWhateverRoundingAHostCalculates) {
    const PlugInLibrary library;
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(rounding);
        {
            TestHost host;
            HostedPlugIn plugIn(host, library);
            UseAllOfIt(plugIn, host);
        }
        EXPECT_EQ(std::fegetround(), rounding);
        std::fesetround(FE_TONEAREST);
    }
}

#if defined(__x86_64__)
// As nearly all hosts do on their audio threads.
TEST(VstGuest, KeepsTheHostsFlushingOfSmallNumbers) {
    constexpr unsigned kFlushAndZero = 0x8040;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | kFlushAndZero);
    {
        const PlugInLibrary library;
        TestHost host;
        HostedPlugIn plugIn(host, library);
        UseAllOfIt(plugIn, host);
    }
    EXPECT_EQ(_mm_getcsr() & kFlushAndZero, kFlushAndZero);
    _mm_setcsr(before);
}
#endif

} // namespace
} // namespace sonorelle::test
