// The editor in a host's window, on a display of the tests' own.
//
// SONORELLE_SCREENSHOTS names a folder for a picture of each test's editor.

#include "vst/vst_stage.h"

#include "support/sanitizer_share.h"
#include "ui/virtual_display.h"
#include "vst/process_state.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <thread>

namespace sonorelle::test {
namespace {

using sonorelle::testing::CHostDisplay;
using sonorelle::testing::StartVirtualDisplay;
using sonorelle::testing::WorkUntil;

constexpr int kWidth = 959;
constexpr int kHeight = 599;
constexpr int kPixelStep = 5; // enough to see what changes

void* AsParent(Window window) { return reinterpret_cast<void*>(window); }

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

class VstEditor : public VstStage {
protected:
    void SetUp() override {
        if (StartVirtualDisplay().empty())
            GTEST_SKIP() << "Xvfb is not installed: no display to show windows on";
        display = std::make_unique<CHostDisplay>();
        display->MovePointer(1270, 890); // over nothing
        parent = display->MakeWindow(60, 40, kWidth, kHeight);
    }
    void TearDown() override {
        if (display == nullptr) return;
        Picture();
        plugIn.Do(Call::kEditClose);
        if (parent != 0) display->Destroy(parent);
    }

    std::intptr_t Open(HostedPlugIn& which, Window where) {
        return which.Do(Call::kEditOpen, 0, 0, AsParent(where));
    }
    std::intptr_t Open() { return Open(plugIn, parent); }
    bool IdleUntil(const std::function<bool()>& done) {
        return WorkUntil([this] { plugIn.Raw(Call::kEditIdle); }, done);
    }
    void Idle(int times) {
        for (int i = 0; i < times; ++i) plugIn.Do(Call::kEditIdle);
    }
    // Row by row, every `step`-th pixel of the window, or of its part that an editor covers.
    std::vector<unsigned long> Pixels(Window window, int step = kPixelStep) {
        display->Sync();
        const XWindowAttributes size = display->Attributes(window);
        const int width = std::min(size.width, kWidth);
        const int height = std::min(size.height, kHeight);
        std::vector<unsigned long> pixels;
        XImage* const image = XGetImage(display->Get(), window, 0, 0, static_cast<unsigned>(width),
                                        static_cast<unsigned>(height), AllPlanes, ZPixmap);
        if (image == nullptr) return pixels;
        for (int y = 0; y < height; y += step)
            for (int x = 0; x < width; x += step) pixels.push_back(XGetPixel(image, x, y) & 0xFFFFFFUL);
        XDestroyImage(image);
        return pixels;
    }
    // The first picture is on the display when the window has more colours than an empty one could.
    bool IsDrawn(Window window) {
        constexpr std::size_t kColoursOfAPicture = 16;
        const std::vector<unsigned long> pixels = Pixels(window);
        return std::set<unsigned long>(pixels.begin(), pixels.end()).size() >= kColoursOfAPicture;
    }
    bool WaitForPicture() {
        return IdleUntil([this] { return IsDrawn(parent); });
    }
    void Picture() {
        const char* const folder = std::getenv("SONORELLE_SCREENSHOTS");
        if (folder == nullptr || parent == 0) return;
        const XWindowAttributes size = display->Attributes(parent);
        if (size.width < kWidth || size.height < kHeight) return;
        const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::ofstream out(std::filesystem::path(folder) / ("vst-" + name + ".ppm"), std::ios::binary);
        out << "P6 " << kWidth << ' ' << kHeight << " 255\n";
        for (const unsigned long pixel : Pixels(parent, 1))
            for (const int shift : {16, 8, 0}) out.put(static_cast<char>(pixel >> shift & 0xFF));
    }
    void ExpectInPlace(Window where) {
        const Window child = display->OnlyChild(where);
        ASSERT_NE(child, 0U);
        const XWindowAttributes attributes = display->Attributes(child);
        EXPECT_EQ(attributes.x, 0);
        EXPECT_EQ(attributes.y, 0);
        EXPECT_EQ(attributes.width, kWidth);
        EXPECT_EQ(attributes.height, kHeight);
        EXPECT_NE(attributes.map_state, IsUnmapped);
    }

    std::unique_ptr<CHostDisplay> display;
    Window parent = 0;
};

TEST_F(VstEditor, TellsItsRectangleAtAnyTimeAndKeepsIt) {
    const auto expectRectangle = [&] {
        HostRectangle* rectangle = nullptr;
        EXPECT_EQ(plugIn.Do(Call::kEditGetRect, 0, 0, static_cast<void*>(&rectangle)), 1);
        ASSERT_NE(rectangle, nullptr);
        EXPECT_EQ(rectangle->top, 0);
        EXPECT_EQ(rectangle->left, 0);
        EXPECT_EQ(rectangle->bottom, kHeight);
        EXPECT_EQ(rectangle->right, kWidth);
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
    XResizeWindow(display->Get(), tiny, kWidth, kHeight);
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
    parent = display->MakeWindow(60, 40, kWidth, kHeight);
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
    const Window otherParent = display->MakeWindow(200, 200, kWidth, kHeight);
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
    const Window otherParent = display->MakeWindow(0, 0, kWidth, kHeight);
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

// The processor's time, since the machine may be busy with other things.
TEST_F(VstEditor, OpensQuicklyAndIdlesForNothing) {
    const OwnPlugInFile file;
    const PlugInLibrary own(file.Path());
    TestHost ownHost;
    HostedPlugIn effect(ownHost, own);
    const double start = ThreadSeconds();
    EXPECT_EQ(effect.Raw(Call::kEditOpen, 0, 0, AsParent(parent)), 1);
    const double opening = ThreadSeconds() - start;
    EXPECT_TRUE(WorkUntil([&] { effect.Raw(Call::kEditIdle); }, [&] { return IsDrawn(parent); }));
    constexpr int kPasses = 200;
    for (int i = 0; i < kPasses; ++i) effect.Raw(Call::kEditIdle);
    const double before = ThreadSeconds();
    for (int i = 0; i < kPasses; ++i) effect.Raw(Call::kEditIdle);
    const double idling = (ThreadSeconds() - before) / kPasses;
    RecordProperty("open_ms", std::to_string(opening * 1e3));
    RecordProperty("idle_us", std::to_string(idling * 1e6));
    if (UnderSanitizer()) return;
    EXPECT_LT(opening, 0.150);
    EXPECT_LT(idling, 0.0002);
}

} // namespace
} // namespace sonorelle::test
