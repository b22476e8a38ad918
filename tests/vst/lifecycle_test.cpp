// Coming and going: as hosts unload, reload, forget to close, and scan.
//
// SONORELLE_CREATIONS sets how often effects are made for the test of growth; the usual number takes a
// moment.

#include "vst/vst_stage.h"

#include "support/sanitizer_share.h"
#include "vst/fresh_song.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <thread>

namespace sonorelle::test {
namespace {

constexpr int kUsualCreations = 60;

int Creations() {
    const char* const wish = std::getenv("SONORELLE_CREATIONS");
    return wish != nullptr && std::atoi(wish) > 0 ? std::atoi(wish) : SanitizerShare(kUsualCreations);
}

std::ptrdiff_t EntriesIn(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

// A thread that has been joined may still be listed for a moment.
bool ThreadsSettleAt(std::ptrdiff_t count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (EntriesIn("/proc/self/task") != count) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

std::size_t AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// What a user does with a plug-in in a few moments.
void UseOnce(const PlugInLibrary& library) {
    TestHost host;
    HostedPlugIn plugIn(host, library);
    EXPECT_EQ(plugIn.SetChunk(SessionNaming(VstSong())), 1);
    host.Play(0);
    HostBlock block(512);
    plugIn.RawPlayBlock(block, 512);
    plugIn.RawPlayBlock(block, 512);
    EXPECT_FALSE(plugIn.Chunk().empty());
}

TEST(VstLifecycle, ManyCreationsLeaveNothingBehind) {
    const PlugInLibrary library;
    for (int i = 0; i < 5; ++i) UseOnce(library); // what is made once, and the allocator's reserves
    const std::ptrdiff_t files = EntriesIn("/proc/self/fd");
    const std::ptrdiff_t threads = EntriesIn("/proc/self/task");
    const std::size_t bytes = AllocatedBytes();
    for (int i = 0; i < Creations(); ++i) UseOnce(library);
    EXPECT_EQ(EntriesIn("/proc/self/fd"), files);
    EXPECT_TRUE(ThreadsSettleAt(threads));
    // A single effect's core alone is larger. Where a sanitizer has its own allocator this counts nothing,
    // and the sanitizer looks for leaks instead.
    EXPECT_LT(AllocatedBytes(), bytes + 40000);
}

TEST(VstLifecycle, TheLibraryIsReallyUnloadedAndCanBeLoadedAgain) {
    const OwnPlugInFile file;
    for (int turn = 0; turn < 4; ++turn) {
        {
            const PlugInLibrary library(file.Path());
            EXPECT_TRUE(file.IsInMemory());
            UseOnce(library);
        }
        EXPECT_FALSE(file.IsInMemory()) << turn;
    }
}

TEST(VstLifecycle, ALibraryThatIsAskedForNothingGoesQuietly) {
    const OwnPlugInFile file;
    { const PlugInLibrary library(file.Path()); }
    EXPECT_FALSE(file.IsInMemory());
}

// Such a host keeps the record, and may call it still.
TEST(VstLifecycle, UnloadedWithoutACloseCallTheEffectGoesOn) {
    static HostedEffect* forgotten = nullptr; // not lost, for those who look for leaks
    static TestHost host;
    const OwnPlugInFile file;
    {
        const PlugInLibrary library(file.Path());
        HostedPlugIn plugIn(host, library);
        EXPECT_EQ(plugIn.SetChunk(SessionNaming(VstSong())), 1);
        forgotten = plugIn.Abandon();
    }
    EXPECT_TRUE(file.IsInMemory());
    host.Play(0);
    HostBlock block(2048);
    for (int i = 0; i < 4; ++i) {
        forgotten->processReplacing(forgotten, nullptr, block.Pointers(), 2048);
        host.Advance(2048);
    }
    EXPECT_GT(block.Peak(0), 0.0F);
}

TEST(VstLifecycle, ClosingOneEffectLeavesTheOtherAlone) {
    const PlugInLibrary library;
    TestHost host;
    TestHost otherHost;
    HostedPlugIn plugIn(host, library);
    EXPECT_EQ(plugIn.SetChunk(SessionNaming(VstSong())), 1);
    const std::string before = plugIn.Chunk();
    {
        HostedPlugIn other(otherHost, library);
        EXPECT_EQ(other.Chunk(), "");
        EXPECT_EQ(other.SetChunk(before), 1);
        other.Set(0, 0.1F);
    }
    EXPECT_EQ(plugIn.Chunk(), before);
    host.Play(0);
    EXPECT_GT(plugIn.PlayOut(8192, 512).size(), 0U);
}

// Closes while another thread of the host restores a session whose recording must be listened to first.
TEST(VstLifecycle, ClosedWhileAnAnalysisRunsItEndsSoon) {
    const TemporaryFolder folder;
    const std::string session = SessionNaming(FreshSong(folder, 20));
    const OwnPlugInFile file;
    {
        const PlugInLibrary library(file.Path());
        TestHost host;
        HostedPlugIn plugIn(host, library);
        const std::ptrdiff_t threads = EntriesIn("/proc/self/task");
        std::atomic<std::intptr_t> taken{-1};
        std::thread restorer([&] { taken = plugIn.RawSetChunk(session); });
        // The restorer, and the analysis's own thread.
        while (taken == -1 && EntriesIn("/proc/self/task") < threads + 2) std::this_thread::yield();
        EXPECT_EQ(taken, -1) << "the analysis was over before it could be interrupted";
        EXPECT_EQ(plugIn.Raw(Call::kClose), 1);
        restorer.join();
        plugIn.Abandon();
        EXPECT_EQ(taken, 0);
        EXPECT_TRUE(ThreadsSettleAt(threads));
    }
    EXPECT_FALSE(file.IsInMemory());
}

// The host has only let go of the library: the analysis goes on in it.
TEST(VstLifecycle, UnloadedWhileAnAnalysisRunsItStaysUntilTheCloseCall) {
    const TemporaryFolder folder;
    const std::string session = SessionNaming(FreshSong(folder, 4));
    const OwnPlugInFile file;
    PlugInLibrary library(file.Path());
    TestHost host;
    HostedPlugIn plugIn(host, library);
    std::atomic<std::intptr_t> taken{-1};
    std::thread restorer([&] { taken = plugIn.RawSetChunk(session); });
    library.Unload();
    EXPECT_TRUE(file.IsInMemory());
    restorer.join();
    EXPECT_EQ(taken, 1);
    const PlugInLibrary again(file.Path()); // a closing call is made with the library in hand
    EXPECT_NE(plugIn.Chunk(), "");
    HostedEffect* const effect = plugIn.Abandon();
    effect->dispatcher(effect, 1, 0, 0, nullptr, 0);
}

} // namespace
} // namespace sonorelle::test
