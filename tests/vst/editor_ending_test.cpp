// How an editor ends: by a host's other threads, with a question open, with the program; and that nothing of
// it stays.

#include "vst/editor_stage.h"

#include "support/sanitizer_share.h"
#include "vst/fresh_song.h"

#include <malloc.h>
#include <thread>

namespace sonorelle::test {
namespace {

class VstEditorEnding : public VstEditorStage {
protected:
    // Windows on the screen itself: those of hosts, and dialogs.
    std::ptrdiff_t Tops() { return display->ViewableChildren(display->Root()); }
};

std::ptrdiff_t EntriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

std::string SessionOfNoRecording() { return SessionNaming("/nowhere/gone.wav"); }

// Ardour idles editors on a thread of its own; there the user is being asked while the host closes.
TEST_F(VstEditorEnding, ClosedByAnotherThreadWhileAQuestionIsOpenItEndsSoon) {
    TestHost ownHost;
    HostedPlugIn effect(ownHost, library);
    const std::ptrdiff_t before = Tops();
    std::atomic<bool> ends{false};
    std::atomic<bool> ended{false};
    std::thread interface([&] {
        effect.Raw(Call::kEditOpen, 0, 0, AsParent(parent));
        while (!ends) effect.Raw(Call::kEditIdle); // which returns when the question has its answer
        ended = true;
    });
    EXPECT_EQ(effect.RawSetChunk(SessionOfNoRecording()), 0);
    EXPECT_TRUE(WorkUntil([] {}, [&] { return Tops() > before; })) << "nobody was asked";
    ends = true;
    EXPECT_EQ(effect.Raw(Call::kClose), 1);
    effect.Abandon();
    ASSERT_TRUE(WorkUntil([] {}, [&] { return ended.load(); })) << "the question outlives the effect";
    interface.join();
    EXPECT_EQ(Tops(), before);
}

TEST_F(VstEditorEnding, ClosedByAnotherThreadDuringAnAnalysisItEndsSoon) {
    const TemporaryFolder folder;
    const std::string session = SessionNaming(FreshSong(folder, 20));
    TestHost ownHost;
    HostedPlugIn effect(ownHost, library);
    const std::ptrdiff_t threads = EntriesOf("/proc/self/task");
    std::atomic<std::intptr_t> taken{-1};
    std::thread interface([&] {
        effect.Raw(Call::kEditOpen, 0, 0, AsParent(parent));
        taken = effect.RawSetChunk(session); // the events go on within
    });
    while (taken == -1 && EntriesOf("/proc/self/task") < threads + 2) std::this_thread::yield();
    EXPECT_EQ(taken, -1) << "the analysis was over before it could be interrupted";
    EXPECT_EQ(effect.Raw(Call::kClose), 1);
    effect.Abandon();
    interface.join();
    EXPECT_EQ(taken, 0);
    EXPECT_EQ(display->ViewableChildren(parent), 0);
}

// Nor with its window made, opened, and closed.
TEST_F(VstEditorEnding, TheInterfaceHasNoThreadOfItsOwn) {
    const OwnPlugInFile file;
    const PlugInLibrary own(file.Path());
    TestHost ownHost;
    const std::ptrdiff_t threads = EntriesOf("/proc/self/task");
    HostedPlugIn effect(ownHost, own);
    EXPECT_LE(EntriesOf("/proc/self/task"), threads);
    EXPECT_EQ(Open(effect, parent), 1);
    EXPECT_TRUE(WorkUntil([&] { effect.Raw(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
    EXPECT_LE(EntriesOf("/proc/self/task"), threads);
    effect.Do(Call::kEditClose);
    EXPECT_LE(EntriesOf("/proc/self/task"), threads);
}

TEST_F(VstEditorEnding, ManyEffectsWithEditorsLeaveNothingBehind) {
    const auto useOnce = [&] {
        TestHost ownHost;
        HostedPlugIn effect(ownHost, library);
        EXPECT_EQ(Open(effect, parent), 1);
        EXPECT_TRUE(WorkUntil([&] { effect.Raw(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
        effect.Do(Call::kEditClose);
        EXPECT_EQ(Open(effect, parent), 1);
        XSync(display->Get(), True); // the events that the host keeps are its own
    };
    const auto allocated = [] {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    for (int i = 0; i < 3; ++i) useOnce();
    const std::ptrdiff_t files = EntriesOf("/proc/self/fd");
    const std::ptrdiff_t threads = EntriesOf("/proc/self/task");
    const std::size_t bytes = allocated();
    for (int i = 0; i < SanitizerShare(20); ++i) useOnce();
    EXPECT_EQ(EntriesOf("/proc/self/fd"), files);
    EXPECT_LE(EntriesOf("/proc/self/task"), threads);
    EXPECT_LT(allocated(), bytes + 40000); // a window of widgets alone is larger
}

// Many hosts end so, with everything open.
using VstEditorDeathTest = VstEditorEnding;
TEST_F(VstEditorDeathTest, AProgramThatEndsWithTheEditorOpenEndsInOrder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto useAndExit = [this] {
        EXPECT_EQ(Open(), 1);
        EXPECT_TRUE(WaitForPicture());
        LoadSong();
        Idle(3);
        std::exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(useAndExit(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace sonorelle::test
