// The editor in a host's window, on a display of the tests' own.

#include "vst/editor_stage.h"

#include "support/sanitizer_share.h"
#include "vst/process_state.h"

#include <X11/keysym.h>
#include <chrono>
#include <filesystem>
#include <thread>

namespace sonorelle::test {
namespace {

class VstEditor : public VstEditorStage {
protected:
    // Of whatever has come up last on the screen.
    void FocusDialog() {
        Window root = 0;
        Window above = 0;
        Window* children = nullptr;
        unsigned count = 0;
        XQueryTree(display->Get(), display->Root(), &root, &above, &children, &count);
        if (count > 0) XSetInputFocus(display->Get(), children[count - 1], RevertToParent, CurrentTime);
        if (children != nullptr) XFree(children);
        display->Sync();
    }
    void Type(const std::vector<unsigned long>& keys) {
        for (const unsigned long key : keys) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            display->TapKey(key);
        }
    }
};

TEST_F(VstEditor, TellsItsRectangleAtAnyTimeAndKeepsIt) {
    const auto expectRectangle = [&] {
        HostRectangle* rectangle = nullptr;
        EXPECT_EQ(plugIn.Do(Call::kEditGetRect, 0, 0, static_cast<void*>(&rectangle)), 1);
        ASSERT_NE(rectangle, nullptr);
        EXPECT_EQ(rectangle->top, 0);
        EXPECT_EQ(rectangle->left, 0);
        EXPECT_EQ(rectangle->bottom, kEditorHeight);
        EXPECT_EQ(rectangle->right, kEditorWidth);
    };
    expectRectangle();
    EXPECT_EQ(Open(), 1);
    Idle(3);
    expectRectangle();
    XResizeWindow(display->Get(), parent, 300, 200);
    display->Sync();
    Idle(3);
    expectRectangle();
    ExpectInPlace(parent); // and follows nothing
    plugIn.Do(Call::kEditClose);
    expectRectangle();
}

TEST_F(VstEditor, TheRectangleIsOneForAllAndOutlivesItsEditor) {
    const auto rectangleOf = [](HostedPlugIn& which) {
        HostRectangle* rectangle = nullptr;
        which.Do(Call::kEditGetRect, 0, 0, static_cast<void*>(&rectangle));
        return rectangle;
    };
    HostRectangle* rectangle = nullptr;
    {
        TestHost otherHost;
        HostedPlugIn other(otherHost, library);
        rectangle = rectangleOf(other);
    }
    ASSERT_NE(rectangle, nullptr);
    EXPECT_EQ(rectangleOf(plugIn), rectangle);
    EXPECT_EQ(rectangle->bottom, kEditorHeight);
    EXPECT_EQ(rectangle->right, kEditorWidth);
    rectangle->left = 0; // a host that writes to it is none that ends
}

TEST_F(VstEditor, LiesInTheHostsWindowAtItsCornerAndIsDrawn) {
    EXPECT_EQ(Open(), 1);
    ExpectInPlace(parent);
    EXPECT_TRUE(WaitForPicture());
}

TEST_F(VstEditor, ShowsTheLoadedSong) {
    EXPECT_EQ(Open(), 1);
    ASSERT_TRUE(WaitForPicture());
    const std::vector<unsigned long> empty = Pixels(parent);
    LoadSong();
    EXPECT_TRUE(IdleUntil([&] { return Pixels(parent) != empty; }));
}

TEST_F(VstEditor, TakesTheFocusAndGivesItBack) {
    // Not the parent: the display itself would give it back to that one.
    const Window holder = display->MakeWindow(0, 0, 30, 30);
    XSetInputFocus(display->Get(), holder, RevertToParent, CurrentTime);
    display->Sync();
    ASSERT_EQ(display->Focus(), holder);
    EXPECT_EQ(Open(), 1);
    EXPECT_TRUE(IdleUntil([&] { return display->Focus() == display->OnlyChild(parent); }));
    plugIn.Do(Call::kEditClose);
    EXPECT_EQ(display->Focus(), holder);
    display->Destroy(holder);
}

TEST_F(VstEditor, OpensAndClosesAgainAndAgain) {
    EXPECT_EQ(Open(), 1);
    EXPECT_TRUE(WaitForPicture());
    plugIn.Do(Call::kEditClose);
    const auto files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    for (int turn = 0; turn < SanitizerShare(8); ++turn) {
        EXPECT_EQ(display->ViewableChildren(parent), 0) << turn;
        EXPECT_EQ(Open(), 1) << turn;
        ExpectInPlace(parent);
        EXPECT_TRUE(WaitForPicture()) << turn;
        plugIn.Do(Call::kEditClose);
        Idle(1); // hosts go on with that
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}), files);
}

TEST_F(VstEditor, OddOrdersOfOpeningAndClosingAreHarmless) {
    plugIn.Do(Call::kEditClose);
    Idle(2);
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(Open(), 1);
    ExpectInPlace(parent);
    plugIn.Do(Call::kEditClose);
    plugIn.Do(Call::kEditClose);
    EXPECT_EQ(display->ViewableChildren(parent), 0);
    EXPECT_EQ(Open(plugIn, 0), 0);
    EXPECT_EQ(Open(plugIn, 0x7FFFFFF), 0); // no window of this display
    EXPECT_EQ(Open(), 1);
    EXPECT_TRUE(WaitForPicture());
}

// The host asks the rectangle only afterwards, and then makes its window large enough.
TEST_F(VstEditor, LiesInAWindowOfOnePixelThatGrowsAndMovesLater) {
    const Window tiny = display->MakeWindow(0, 0, 1, 1, false);
    EXPECT_EQ(Open(plugIn, tiny), 1);
    ExpectInPlace(tiny);
    Idle(3);
    XReparentWindow(display->Get(), tiny, parent, 0, 0);
    XResizeWindow(display->Get(), tiny, kEditorWidth, kEditorHeight);
    XMapWindow(display->Get(), tiny);
    display->Sync();
    EXPECT_TRUE(WaitForPicture());
    ExpectInPlace(tiny);
}

TEST_F(VstEditor, SurvivesTheEndOfTheHostsWindow) {
    EXPECT_EQ(Open(), 1);
    Idle(2);
    display->Destroy(parent);
    Idle(5);
    plugIn.Do(Call::kEditClose);
    parent = display->MakeWindow(60, 40, kEditorWidth, kEditorHeight);
    EXPECT_EQ(Open(), 1);
    EXPECT_TRUE(WaitForPicture());
    display->Destroy(parent);
    plugIn.Do(Call::kEditClose); // with no idle call in between
    parent = 0;
}

TEST_F(VstEditor, OpensWhileBlocksArePlayed) {
    LoadSong();
    host.Play(0);
    std::atomic<bool> ends{false};
    std::atomic<int> blocks{0};
    std::thread audio([&] {
        HostBlock block(64);
        while (!ends) {
            plugIn.RawPlayBlock(block, 64);
            ++blocks;
        }
    });
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(plugIn.Raw(Call::kEditOpen, 0, 0, AsParent(parent)), 1);
        EXPECT_TRUE(WaitForPicture());
        plugIn.Raw(Call::kEditClose);
    }
    ends = true;
    audio.join();
    EXPECT_GT(blocks, 0);
}

TEST_F(VstEditor, TwoEffectsHaveTwoEditors) {
    const Window otherParent = display->MakeWindow(200, 200, kEditorWidth, kEditorHeight);
    {
        TestHost otherHost;
        HostedPlugIn other(otherHost, library);
        EXPECT_EQ(Open(), 1);
        EXPECT_EQ(Open(other, otherParent), 1);
        ExpectInPlace(parent);
        ExpectInPlace(otherParent);
        EXPECT_TRUE(WorkUntil([&] { other.Raw(Call::kEditIdle); }, [&] { return IsDrawn(otherParent); }));
    } // closed by the host with its editor open
    EXPECT_EQ(display->ViewableChildren(otherParent), 0);
    display->Destroy(otherParent);
    XRaiseWindow(display->Get(), parent);
    EXPECT_TRUE(WaitForPicture());
}

// Another maker's plug-in may be made with the same toolkit: a copy of this one has its own.
TEST_F(VstEditor, AnotherPlugInWithTheSameToolkitIsNoHarm) {
    const Window otherParent = display->MakeWindow(0, 0, kEditorWidth, kEditorHeight);
    const OwnPlugInFile file;
    EXPECT_EQ(Open(), 1);
    for (int turn = 0; turn < 2; ++turn) {
        {
            const PlugInLibrary otherLibrary(file.Path());
            TestHost otherHost;
            HostedPlugIn other(otherHost, otherLibrary);
            EXPECT_EQ(Open(other, otherParent), 1);
            EXPECT_TRUE(WorkUntil(
                [&] {
                    other.Raw(Call::kEditIdle);
                    plugIn.Raw(Call::kEditIdle);
                },
                [&] { return IsDrawn(otherParent); }));
            other.Do(Call::kEditClose);
        }
        EXPECT_FALSE(file.IsInMemory());
        Idle(3);
    }
    display->Destroy(otherParent);
    XRaiseWindow(display->Get(), parent);
    EXPECT_TRUE(WaitForPicture());
}

TEST_F(VstEditor, TheLibraryIsUnloadedAndLoadedAgainAfterAnEditorWasOpen) {
    const OwnPlugInFile file;
    const ProcessState before = ProcessState::Take();
    const auto files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    for (int turn = 0; turn < 3; ++turn) {
        {
            const PlugInLibrary own(file.Path());
            TestHost ownHost;
            HostedPlugIn effect(ownHost, own);
            EXPECT_EQ(Open(effect, parent), 1) << turn;
            EXPECT_TRUE(WorkUntil([&] { effect.Raw(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
            if (turn > 0) effect.Do(Call::kEditClose); // the first time the host forgets it
        }
        EXPECT_FALSE(file.IsInMemory()) << turn;
        EXPECT_EQ(display->ViewableChildren(parent), 0) << turn;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}), files) << turn;
        EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "") << turn;
    }
}

TEST_F(VstEditor, UnloadedWithTheEditorOpenAndNoCloseCallNothingHappens) {
    static HostedEffect* forgotten = nullptr; // not lost, for those who look for leaks
    static TestHost ownHost;
    const OwnPlugInFile file;
    {
        const PlugInLibrary own(file.Path());
        HostedPlugIn effect(ownHost, own);
        EXPECT_EQ(Open(effect, parent), 1);
        forgotten = effect.Abandon();
    }
    EXPECT_TRUE(file.IsInMemory());
    forgotten->dispatcher(forgotten, static_cast<std::int32_t>(Call::kEditIdle), 0, 0, nullptr, 0);
    forgotten->dispatcher(forgotten, static_cast<std::int32_t>(Call::kEditClose), 0, 0, nullptr, 0);
    EXPECT_EQ(display->ViewableChildren(parent), 0);
}

// Ardour restores on one thread and idles editors on another: the question is asked, and answered, later.
TEST_F(VstEditor, AMissingRecordingIsAskedForInTheEditorAndTheSessionsProgramIsTheCurrentOne) {
    plugIn.Do(Call::kSetProgram, 0, 1);
    LoadSong();
    std::string session = plugIn.Chunk();
    const std::string folder = std::filesystem::path(VstSong()).parent_path().string();
    session.replace(session.find(VstSong()), VstSong().size(), "/nowhere/song.wav");
    const char* const home = std::getenv("HOME");
    const std::string kept = home != nullptr ? home : "/";
    setenv("HOME", folder.c_str(), 1); // where the dialog looks first

    TestHost ownHost;
    HostedPlugIn effect(ownHost, library);
    const int before = display->ViewableChildren(display->Root());
    std::atomic<bool> ends{false};
    std::thread interface([&] {
        effect.Raw(Call::kEditOpen, 0, 0, AsParent(parent));
        while (!ends) effect.Raw(Call::kEditIdle);
        effect.Raw(Call::kEditClose);
    });
    EXPECT_EQ(effect.RawSetChunk(session), 0);
    EXPECT_EQ(effect.Raw(Call::kGetProgram), 0);
    EXPECT_TRUE(WorkUntil([] {}, [&] { return display->ViewableChildren(display->Root()) > before; }));
    const auto loaded = [&] {
        void* data = nullptr;
        effect.Raw(Call::kGetChunk, 1, 0, static_cast<void*>(&data));
        return data != nullptr;
    };
    FocusDialog();
    Type({XK_End, XK_s, XK_o, XK_n, XK_g, XK_period, XK_w, XK_a, XK_v, XK_Return});
    EXPECT_TRUE(WorkUntil([] {}, loaded));
    EXPECT_EQ(effect.Raw(Call::kGetProgram), 1);
    effect.Raw(Call::kSetProgram, 0, 0);
    EXPECT_EQ(effect.Raw(Call::kGetProgram), 0);
    ends = true;
    interface.join();
    setenv("HOME", kept.c_str(), 1);
}

// Some hosts have a thread for editors alone.
TEST_F(VstEditor, AnyThreadMayHaveIt) {
    std::thread([&] {
        EXPECT_EQ(Open(), 1);
        EXPECT_TRUE(WaitForPicture());
    }).join();
    Idle(3);
    std::thread([&] { plugIn.Do(Call::kEditClose); }).join();
    EXPECT_EQ(display->ViewableChildren(parent), 0);
}

TEST_F(VstEditor, WithoutADisplayThereIsNoEditorAndNothingWorse) {
    const std::string kept = std::getenv("DISPLAY");
    const OwnPlugInFile file; // one that has no connection yet
    for (const char* const none : {"", ":4711", "nowhere"}) {
        setenv("DISPLAY", none, 1);
        const PlugInLibrary own(file.Path());
        TestHost ownHost;
        HostedPlugIn effect(ownHost, own);
        EXPECT_EQ(Open(effect, parent), 0) << none;
        effect.Do(Call::kEditIdle);
        effect.Do(Call::kEditClose);
        EXPECT_EQ(effect.SetChunk(SessionNaming(VstSong())), 1);
        effect.Do(Call::kEditIdle);
    }
    setenv("DISPLAY", kept.c_str(), 1);
}

// What an open, an idle call with nothing to draw, and one with the editor closed cost; the processor's time,
// since the machine may be busy with other things.
TEST_F(VstEditor, OpensAndIdlesForSomeTime) {
    const OwnPlugInFile file; // one that has no connection yet
    const PlugInLibrary own(file.Path());
    TestHost ownHost;
    HostedPlugIn effect(ownHost, own);
    const auto secondsOf = [&](Call call, int times, Window where = 0) {
        const double start = ThreadSeconds();
        for (int i = 0; i < times; ++i) effect.Raw(call, 0, 0, AsParent(where));
        return (ThreadSeconds() - start) / times;
    };
    constexpr int kPasses = 500;
    const double notYetOpen = secondsOf(Call::kEditIdle, kPasses);
    const auto start = std::chrono::steady_clock::now();
    const double opening = secondsOf(Call::kEditOpen, 1, parent);
    const std::chrono::duration<double> openingByTheClock = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(WorkUntil([&] { effect.Raw(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
    secondsOf(Call::kEditIdle, kPasses);
    const double open = secondsOf(Call::kEditIdle, kPasses);
    ASSERT_EQ(effect.SetChunk(SessionNaming(VstSong())), 1);
    secondsOf(Call::kEditIdle, kPasses);
    const double loaded = secondsOf(Call::kEditIdle, kPasses);
    const double closing = secondsOf(Call::kEditClose, 1);
    const double again = secondsOf(Call::kEditOpen, 1, parent);
    effect.Raw(Call::kEditClose);
    const double closed = secondsOf(Call::kEditIdle, kPasses);
    Figure("first open, ms", opening * 1e3);
    Figure("first open, ms by the clock", openingByTheClock.count() * 1e3);
    Figure("second open, ms", again * 1e3);
    Figure("close, ms", closing * 1e3);
    Figure("idle, nothing to draw, us", open * 1e6);
    Figure("idle, nothing to draw, with a song, us", loaded * 1e6);
    Figure("idle, never opened, us", notYetOpen * 1e6);
    Figure("idle, closed, us", closed * 1e6);
}

} // namespace
} // namespace sonorelle::test
