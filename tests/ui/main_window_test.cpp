#include "ui/window_stage.h"

#include "app/pitch_view.h"
#include "ui/content.h"
#include "ui/info_window.h"
#include "ui/progress_window.h"
#include "ui/theme.h"
#include "ui/toolbar.h"

#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <clocale>
#include <filesystem>
#include <string>
#include <thread>

namespace sonorelle::testing {
namespace {

class MainWindow : public WindowStageTest {};

int OpenFiles() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

TEST_F(MainWindow, LiesInTheHostsWindowAtItsCornerInFullSize) {
    ASSERT_TRUE(window->OpenInside(parent));
    const Window child = host->OnlyChild(parent);
    ASSERT_NE(child, 0U);
    const XWindowAttributes place = host->Attributes(child);
    EXPECT_EQ(place.x, 0);
    EXPECT_EQ(place.y, 0);
    EXPECT_EQ(place.width, 959);
    EXPECT_EQ(place.height, 599);
    EXPECT_EQ(place.border_width, 0);
    EXPECT_EQ(place.map_state, IsViewable);
    EXPECT_TRUE(WaitForPicture());
}

TEST_F(MainWindow, SmallUnmappedParentChangesNeitherPlaceNorSize) {
    const Window small = host->MakeWindow(0, 0, 1, 1, false);
    ASSERT_TRUE(window->OpenInside(small));
    WorkFor(0.1);
    const Window child = host->OnlyChild(small);
    ASSERT_NE(child, 0U);
    EXPECT_EQ(host->Attributes(child).width, 959);
    XResizeWindow(host->Get(), small, 1100, 700);
    XReparentWindow(host->Get(), small, parent, 0, 0);
    XMapWindow(host->Get(), small);
    EXPECT_TRUE(WaitForPicture());
    EXPECT_EQ(host->Attributes(child).x, 0);
    EXPECT_EQ(host->Attributes(child).width, 959);
    window->CloseInside();
    host->Destroy(small);
}

TEST_F(MainWindow, WindowThatIsNotThereIsRefused) {
    const Window gone = host->MakeWindow(0, 0, 10, 10);
    host->Destroy(gone);
    EXPECT_FALSE(window->OpenInside(gone));
    EXPECT_FALSE(window->OpenInside(0));
    EXPECT_FALSE(window->IsOpen());
}

TEST_F(MainWindow, OpensAndClosesAsOftenAsOneLikes) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    window->CloseInside();
    const int before = OpenFiles();
    for (int round = 0; round < 30; ++round) {
        ASSERT_TRUE(window->OpenInside(parent)) << round;
        EXPECT_TRUE(window->IsOpen());
        if (round % 5 == 0) {
            EXPECT_TRUE(WaitForPicture()) << round;
        }
        window->CloseInside();
        EXPECT_FALSE(window->IsOpen());
        EXPECT_EQ(host->OnlyChild(parent), 0U);
    }
    EXPECT_EQ(OpenFiles(), before);
}

TEST_F(MainWindow, OpeningTwiceMovesItToTheNewParent) {
    const Window other = host->MakeWindow(0, 0, 959, 599);
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(window->OpenInside(other));
    EXPECT_EQ(host->OnlyChild(parent), 0U);
    EXPECT_NE(host->OnlyChild(other), 0U);
    window->CloseInside();
    host->Destroy(other);
}

TEST_F(MainWindow, TwoEditorsLiveSideBySide) {
    NotingOwner secondOwner;
    CFltkToolkit secondToolkit;
    CkvoDNDWindow second(secondOwner);
    secondToolkit.SetMainWindow(&second);
    const Window secondParent = host->MakeWindow(200, 250, 959, 599); // covers the first one's lower part
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(second.OpenInside(secondParent));
    ASSERT_TRUE(WaitForPicture());
    host->MovePointer(200 + 30, 250 + 12); // Load of the second
    WorkFor(0.1);
    host->Press(1, true);
    WorkFor(0.1);
    host->Press(1, false);
    WorkFor(0.1);
    EXPECT_TRUE(owner.presses.empty());
    EXPECT_TRUE(secondOwner.presses.empty()); // its own thread has not looked yet
    second.RunActions();
    EXPECT_EQ(secondOwner.presses, std::vector{ToolbarButton::kLoad});
    second.CloseInside();
    EXPECT_TRUE(window->IsOpen());
    ClickButton(ToolbarButton::kLoad);
    EXPECT_EQ(owner.presses, std::vector{ToolbarButton::kLoad});
    host->Destroy(secondParent);
}

TEST_F(MainWindow, ParentThatIsDestroyedFirstClosesItAndNothingWorse) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    toolkit.OpenProgress();
    toolkit.ShowProgress(10, 45);
    WorkFor(0.05);
    host->Destroy(parent);
    EXPECT_TRUE(WorkUntilTrue([this] { return !window->IsOpen(); }));
    WorkFor(0.1);
    EXPECT_EQ(host->ViewableChildren(host->Root()), 0) << "it must not come back on the desktop";
    toolkit.CloseProgress();
    window->CloseInside();
    parent = host->MakeWindow(kLeft, kTop, kWindowWidth, kWindowHeight);
    ASSERT_TRUE(window->OpenInside(parent));
    EXPECT_TRUE(WaitForPicture());
}

TEST_F(MainWindow, ParentThatIsDestroyedBeforeAnyEventIsSeenDoesNoHarm) {
    ASSERT_TRUE(window->OpenInside(parent));
    host->Destroy(parent);
    parent = 0;
    window->SetInputActive(false);
    window->CloseInside();
    EXPECT_FALSE(window->IsOpen());
    WorkFor(0.05);
}

int HostErrorHandler(Display*, XErrorEvent*) { return 0; }
int HostLossHandler(Display*) { return 0; }

TEST_F(MainWindow, HostsErrorHandlersAndLocaleAreTheSameBehindEachCall) {
    XErrorHandler before = XSetErrorHandler(HostErrorHandler);
    XIOErrorHandler lossBefore = XSetIOErrorHandler(HostLossHandler);
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    const auto same = [&](const char* call) {
        EXPECT_EQ(XSetErrorHandler(HostErrorHandler), HostErrorHandler) << call;
        EXPECT_EQ(XSetIOErrorHandler(HostLossHandler), HostLossHandler) << call;
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale) << call;
    };
    EXPECT_TRUE(OpenDisplay());
    same("display");
    window->OpenInside(parent);
    same("open");
    Work();
    same("idle");
    window->CloseInside();
    same("close");
    XSetErrorHandler(before);
    XSetIOErrorHandler(lossBefore);
}

int errorsOfHost = 0;
int CountHostError(Display*, XErrorEvent*) {
    ++errorsOfHost;
    return 0;
}

TEST_F(MainWindow, ErrorsOfTheHostsOwnConnectionReachTheHost) {
    XErrorHandler before = XSetErrorHandler(CountHostError);
    errorsOfHost = 0;
    {
        const ToolkitScope scope;
        XMapWindow(host->Get(), 0x7ffffff);
        host->Sync();
    }
    EXPECT_EQ(errorsOfHost, 1);
    XSetErrorHandler(before);
}

TEST_F(MainWindow, TakesTheFocusAndGivesItBack) {
    XSetInputFocus(host->Get(), parent, RevertToParent, CurrentTime);
    host->Sync();
    ASSERT_TRUE(window->OpenInside(parent));
    WorkFor(0.1);
    EXPECT_EQ(host->Focus(), host->OnlyChild(parent));
    window->CloseInside();
    EXPECT_EQ(host->Focus(), parent);
}

TEST_F(MainWindow, FocusGoesBackToTheVeryWindowThatHadIt) {
    const Window field = host->MakeWindow(0, 0, 20, 20); // not one that it would fall back to by itself
    XSetInputFocus(host->Get(), field, RevertToParent, CurrentTime);
    host->Sync();
    ASSERT_TRUE(window->OpenInside(parent));
    WorkFor(0.1);
    ASSERT_EQ(host->Focus(), host->OnlyChild(parent));
    window->CloseInside();
    EXPECT_EQ(host->Focus(), field);
    host->Destroy(field);
}

TEST_F(MainWindow, FocusOfAWindowThatIsGoneGoesToTheHosts) {
    const Window field = host->MakeWindow(0, 0, 20, 20);
    XSetInputFocus(host->Get(), field, RevertToParent, CurrentTime);
    host->Sync();
    ASSERT_TRUE(window->OpenInside(parent));
    WorkFor(0.1);
    host->Destroy(field);
    window->CloseInside();
    EXPECT_EQ(host->Focus(), parent);
}

TEST_F(MainWindow, TakesTheFocusWhenItBecomesVisible) {
    XSetInputFocus(host->Get(), parent, RevertToParent, CurrentTime);
    const Window hidden = host->MakeWindow(kLeft, kTop, 959, 599, false);
    ASSERT_TRUE(window->OpenInside(hidden));
    WorkFor(0.05);
    EXPECT_EQ(host->Focus(), parent);
    XMapWindow(host->Get(), hidden);
    const Window child = host->OnlyChild(hidden);
    EXPECT_TRUE(WorkUntilTrue([&] { return host->Focus() == child; }));
    window->CloseInside();
    host->Destroy(hidden);
}

// As a window manager does when a window appears.
TEST_F(MainWindow, TakesTheFocusBackFromAFrameThatHasJustAppeared) {
    const Window frame = host->MakeWindow(kLeft, kTop, 959, 599, false);
    ASSERT_TRUE(window->OpenInside(frame));
    XMapWindow(host->Get(), frame);
    const Window child = host->OnlyChild(frame);
    ASSERT_TRUE(WorkUntilTrue([&] { return host->Focus() == child; }));
    XSetInputFocus(host->Get(), frame, RevertToParent, CurrentTime);
    host->Sync();
    EXPECT_TRUE(WorkUntilTrue([&] { return host->Focus() == child; }));
    XSetInputFocus(host->Get(), frame, RevertToParent, CurrentTime);
    host->Sync();
    WorkFor(0.1);
    EXPECT_EQ(host->Focus(), frame); // the host means it
    window->CloseInside();
    host->Destroy(frame);
}

TEST_F(MainWindow, FocusThatTheUserTookElsewhereStaysThere) {
    const Window elsewhere = host->MakeWindow(0, 0, 20, 20);
    ASSERT_TRUE(window->OpenInside(parent));
    WorkFor(0.1);
    XSetInputFocus(host->Get(), elsewhere, RevertToParent, CurrentTime);
    host->Sync();
    window->CloseInside();
    EXPECT_EQ(host->Focus(), elsewhere);
    host->Destroy(elsewhere);
}

TEST_F(MainWindow, UnusedKeysGoOnToTheHost) {
    owner.look = EverythingAnswers();
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    for (const unsigned long key : {XK_space, XK_Return, XK_Escape, XK_a, XK_F5, XK_KP_0}) {
        const unsigned code = XKeysymToKeycode(host->Get(), key);
        host->TapKey(key);
        XEvent event;
        ASSERT_TRUE(WorkUntilTrue([&] {
            return XCheckTypedWindowEvent(host->Get(), parent, KeyPress, &event) != 0;
        })) << key;
        EXPECT_EQ(event.xkey.keycode, code);
        EXPECT_TRUE(WorkUntilTrue([&] {
            return XCheckTypedWindowEvent(host->Get(), parent, KeyRelease, &event) != 0;
        })) << key;
        WorkFor(0.05);
        EXPECT_EQ(XCheckTypedWindowEvent(host->Get(), parent, KeyPress, &event), 0) << "twice: " << key;
    }
    EXPECT_TRUE(window->IsOpen());
    EXPECT_TRUE(owner.presses.empty());
}

// A host's toolkit throws away events for a window that it does not know.
TEST_F(MainWindow, UnusedKeysBearTheNameOfTheHostsWindowThatListens) {
    const Window deaf = host->MakeWindow(0, 0, 959, 599);
    const Window socket = host->MakeWindow(0, 0, 959, 599);
    for (const Window silent : {deaf, socket}) XSelectInput(host->Get(), silent, StructureNotifyMask);
    XReparentWindow(host->Get(), socket, parent, 0, 0);
    XReparentWindow(host->Get(), deaf, socket, 0, 0);
    host->Sync();
    ASSERT_TRUE(window->OpenInside(deaf));
    ASSERT_TRUE(WaitForPicture());
    host->TapKey(XK_space);
    for (const int type : {KeyPress, KeyRelease}) {
        XEvent event;
        ASSERT_TRUE(WorkUntilTrue([&] { return XCheckTypedEvent(host->Get(), type, &event) != 0; }));
        EXPECT_EQ(event.xkey.window, parent);
        EXPECT_EQ(event.xkey.x_root - event.xkey.x, host->Attributes(parent).x);
        EXPECT_EQ(event.xkey.y_root - event.xkey.y, host->Attributes(parent).y);
    }
    window->CloseInside();
    host->Destroy(socket);
}

TEST_F(MainWindow, UnusedKeysAreLostWhereNobodyListens) {
    XSelectInput(host->Get(), parent, StructureNotifyMask);
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    host->TapKey(XK_space);
    WorkFor(0.1);
    XEvent event;
    EXPECT_EQ(XCheckTypedEvent(host->Get(), KeyPress, &event), 0);
    EXPECT_TRUE(window->IsOpen());
}

TEST_F(MainWindow, SpaceBarDoesNotPressTheButtonUnderThePointer) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    ClickButton(ToolbarButton::kLoad);
    ASSERT_EQ(owner.presses.size(), 1U);
    host->TapKey(XK_space);
    EXPECT_TRUE(host->WaitFor(parent, KeyPress, [this] { Work(); }));
    EXPECT_EQ(owner.presses.size(), 1U);
}

TEST_F(MainWindow, EveryButtonReachesItsOwner) {
    owner.look = EverythingAnswers();
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    for (const ToolbarEntry& entry : kToolbar) {
        if (entry.button == ToolbarButton::kLogo) continue;
        owner.presses.clear();
        ClickButton(entry.button);
        EXPECT_EQ(owner.presses, std::vector{entry.button});
    }
}

TEST_F(MainWindow, ButtonsThatDoNotAnswerStaySilent) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    for (const ToolbarEntry& entry : kToolbar)
        if (entry.button != ToolbarButton::kLogo) ClickButton(entry.button);
    EXPECT_EQ(owner.presses, std::vector{ToolbarButton::kLoad});
}

TEST_F(MainWindow, WhileInputIsOffNothingAnswers) {
    owner.look = EverythingAnswers();
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    toolkit.ActivateMainWindow(false);
    toolkit.ActivateMainWindow(false);
    toolkit.ActivateMainWindow(true);
    ClickButton(ToolbarButton::kLoad);
    EXPECT_TRUE(owner.presses.empty()) << "the outer of two wishes still holds";
    toolkit.ActivateMainWindow(true);
    ClickButton(ToolbarButton::kUndo);
    EXPECT_EQ(owner.presses, std::vector{ToolbarButton::kUndo});
}

TEST_F(MainWindow, NoLockIsHeldWhileAPressIsDone) {
    owner.onPress = [this] {
        EXPECT_EQ(owner.entered, 0);
        bool free = false;
        std::thread([&] {
            const ToolkitScope scope; // would wait for ever
            free = true;
        }).join();
        EXPECT_TRUE(free);
    };
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    ClickButton(ToolbarButton::kLoad);
    EXPECT_EQ(owner.presses.size(), 1U);
}

TEST_F(MainWindow, PressThatClosesTheWindowIsTheLast) {
    owner.onPress = [this] { window->CloseInside(); };
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    ClickButton(ToolbarButton::kLoad);
    EXPECT_FALSE(window->IsOpen());
    EXPECT_EQ(owner.presses.size(), 1U);
}

TEST_F(MainWindow, WhatIsBeingReplacedIsNeitherDrawnNorClicked) {
    owner.busy = true;
    ASSERT_TRUE(window->OpenInside(parent));
    WorkFor(0.2);
    EXPECT_NE(host->Pixel(parent, 4, 40), kPanelPixel);
    ClickButton(ToolbarButton::kLoad);
    EXPECT_TRUE(owner.presses.empty());
    owner.busy = false;
    EXPECT_TRUE(WaitForPicture());
    EXPECT_EQ(owner.entered, 0);
}

// A sung note of 1 second, alone in a view of 2 seconds.
void FillWithOneNote(CkvoPitchView& view) {
    view.SetSampleRate(44100);
    view.Resize(1, 1);
    view.SetNote(0, 0, 22050, 60, 0, 1, 44100, 1, 0);
    view.SetTotal(0, 88200);
    view.ResetView();
}

constexpr int kViewLeft = 264; // in the window
constexpr int kViewTop = 26 + 56;

TEST_F(MainWindow, StartTextGivesWayToTheNotesOfARecording) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    const auto darkPixels = [this] { // in the middle of the view's place
        int count = 0;
        for (int y = 200; y < 225; ++y)
            for (int x = 580; x < 640; ++x) count += (host->Pixel(parent, x, y) & 0xffU) < 0x60 ? 1 : 0;
        return count;
    };
    EXPECT_GT(darkPixels(), 20);
    CkvoPitchView view;
    FillWithOneNote(view);
    owner.view = &view;
    WorkFor(0.1);
    ASSERT_EQ(view.DrawNotes().size(), 1U);
    const PixelRect note = view.DrawNotes().front().rect;
    EXPECT_EQ(host->Pixel(parent, kViewLeft + note.x + note.width / 2, kViewTop + note.y + note.height / 2),
              RgbFromColour(view.DrawNotes().front().colour));
    EXPECT_EQ(view.GetAxes().layout.width, 690);
    EXPECT_EQ(view.GetAxes().layout.height, 261);
    owner.view = nullptr;
    WorkFor(0.1);
    EXPECT_GT(darkPixels(), 20);
}

TEST_F(MainWindow, ViewThatHasChangedIsDrawnAgainWhenAsked) {
    CkvoPitchView view;
    FillWithOneNote(view);
    owner.view = &view;
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    WorkFor(0.3); // until nothing is left to be drawn for other reasons
    const PixelRect note = view.DrawNotes().front().rect;
    const auto pixel = [&] {
        return host->Pixel(parent, kViewLeft + note.x + note.width / 2, kViewTop + note.y + note.height / 2);
    };
    const unsigned long before = pixel();
    view.SetNote(0, 0, 22050, -1, 0, 1, 44100, 1, 0); // silent
    WorkFor(0.05);
    EXPECT_EQ(pixel(), before);
    toolkit.RequestRedraw();
    WorkFor(0.1);
    EXPECT_NE(pixel(), before);
    owner.view = nullptr;
}

TEST_F(MainWindow, FramesHaveTheirTitles) {
    const ToolkitScope scope;
    const char* titles[] = {"@b Host Synchronization",   "@b Tuning Freq",
                            "@b Voice Settings",         "@b Melody Properties",
                            "@b Harmonization Settings", "@b Snapshots"};
    for (std::size_t i = 0; i < CkvoContent::kFrames; ++i)
        EXPECT_EQ(window->Content().Frame(i).Title(), titles[i]);
}

TEST_F(MainWindow, StartTextIsPaleWhileNothingCanBeLoaded) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    const auto darkest = [this] {
        unsigned long least = 0xff;
        for (int y = 200; y < 225; ++y)
            for (int x = 540; x < 680; ++x) least = std::min(least, host->Pixel(parent, x, y) & 0xffU);
        return least;
    };
    EXPECT_LT(darkest(), 0x20U);
    toolkit.ActivateMainWindow(false);
    WorkFor(0.1);
    EXPECT_GT(darkest(), 0x80U);
    toolkit.ActivateMainWindow(true);
    WorkFor(0.1);
    EXPECT_LT(darkest(), 0x20U);
}

TEST_F(MainWindow, LogoOpensTheVersionWhichGoesWithTheEditor) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(window->Info(), nullptr);
        ClickButton(ToolbarButton::kLogo);
        ASSERT_NE(window->Info(), nullptr);
        EXPECT_NE(window->Info()->shown(), 0);
        EXPECT_FALSE(window->Info()->HasUpdateButton());
        window->CloseInside();
        EXPECT_EQ(window->Info(), nullptr);
        ASSERT_TRUE(window->OpenInside(parent));
    }
}

TEST_F(MainWindow, VersionHasAnUpdateButtonWhereThereIsAPage) {
    const ToolkitScope scope;
    const CkvoInfoWindow info("V1", "https://example.org/index.php");
    ASSERT_TRUE(info.HasUpdateButton());
    ASSERT_EQ(info.children(), 2);
    EXPECT_STREQ(info.child(1)->label(), "Update");
    EXPECT_STREQ(info.child(1)->tooltip(), "check if there are any updates available");
}

TEST_F(MainWindow, ProgressIsSeenInTheMiddleAndCanBeCancelled) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    toolkit.OpenProgress();
    toolkit.ShowProgress(30, 45);
    const Window child = host->OnlyChild(parent);
    ASSERT_TRUE(WorkUntilTrue([&] { return host->OnlyChild(child) != 0; }));
    const XWindowAttributes place = host->Attributes(host->OnlyChild(child));
    EXPECT_EQ(place.x, (959 - 303) / 2);
    EXPECT_EQ(place.y, (599 - 40) / 2);
    EXPECT_EQ(place.width, 303);
    EXPECT_EQ(place.height, 40);
    EXPECT_FALSE(toolkit.IsProgressCancelled());
    ClickAt(kProgressPlace.x + kCancelPlace.x + 8, kProgressPlace.y + kCancelPlace.y + 8);
    EXPECT_TRUE(toolkit.IsProgressCancelled());
    toolkit.CloseProgress();
    WorkFor(0.05);
    EXPECT_EQ(host->OnlyChild(child), 0U);
    toolkit.OpenProgress();
    EXPECT_FALSE(toolkit.IsProgressCancelled()) << "a new one begins anew";
    toolkit.CloseProgress();
}

TEST_F(MainWindow, AnotherThreadMayTakeOver) {
    std::thread([this] {
        toolkit.BeInterfaceThread();
        ASSERT_TRUE(window->OpenInside(parent));
        EXPECT_TRUE(WaitForPicture());
    }).join();
    EXPECT_FALSE(toolkit.IsInterfaceThread());
    EXPECT_FALSE(toolkit.RunEvents());
    toolkit.BeInterfaceThread();
    ClickButton(ToolbarButton::kLoad);
    EXPECT_EQ(owner.presses.size(), 1U);
    std::thread([this] { window->CloseInside(); }).join();
    EXPECT_FALSE(window->IsOpen());
}

TEST_F(MainWindow, PassWithNothingToDrawIsQuick) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    WorkFor(0.2);
    constexpr int kPasses = 200;
    double best = 1; // seconds; the machine may be busy with something else for most of the time
    for (int round = 0; round < 10; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int pass = 0; pass < kPasses; ++pass) Work();
        best = std::min(
            best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / kPasses);
    }
    EXPECT_LT(best, 0.0002);
}

// --- Drag and drop ---

TEST_F(MainWindow, FileDraggedOutOfOneEditorIsDroppedOnAnother) {
    NotingOwner targetOwner;
    CkvoDNDWindow target(targetOwner);
    const Window targetParent = host->MakeWindow(200, 300, 959, 599);
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(target.OpenInside(targetParent));
    ASSERT_TRUE(WaitForPicture());
    const std::string path = "/tmp/My Song \xC3\xA4 100%.mid";
    toolkit.SetSelection(path);
    host->MovePointer(kLeft + 400, kTop + 100);
    WorkFor(0.05);
    host->Press(1, true);
    WorkFor(0.05);
    std::thread user([this] { // moves on while the drag runs
        CHostDisplay hand;
        const auto wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(60)); };
        for (int step = 1; step <= 5; ++step) {
            wait();
            hand.MovePointer(kLeft + 400 + 20 * step, kTop + 100 + 90 * step);
        }
        wait();
        hand.Press(1, false);
    });
    EXPECT_TRUE(toolkit.DragSelectionOut());
    user.join();
    target.RunActions();
    EXPECT_EQ(targetOwner.drops, std::vector{path});
    EXPECT_TRUE(owner.drops.empty());
    target.CloseInside();
    host->Destroy(targetParent);
}

TEST_F(MainWindow, DragThatEndsOverNothingIsNotTaken) {
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    EXPECT_FALSE(toolkit.DragSelectionOut()) << "nothing is selected";
    toolkit.SetSelection("/tmp/a.mid");
    host->MovePointer(kLeft + 400, kTop + 100);
    WorkFor(0.05);
    host->Press(1, true);
    WorkFor(0.05);
    std::thread user([] {
        CHostDisplay hand;
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
        hand.MovePointer(1270, 890);
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
        hand.Press(1, false);
    });
    EXPECT_FALSE(toolkit.DragSelectionOut());
    user.join();
    toolkit.ClearSelection();
    EXPECT_FALSE(toolkit.DragSelectionOut());
}

} // namespace
} // namespace sonorelle::testing
