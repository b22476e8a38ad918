#include "ui/window_stage.h"

#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace sonorelle::testing {
namespace {

class FltkToolkit : public WindowStageTest {
protected:
    // What a user does while a dialog waits: in steps, with a while between them.
    template<class... Step>
    static std::thread User(Step... steps) {
        return std::thread([=] {
            CHostDisplay hand;
            const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(250)); };
            (..., (pause(), steps(hand)));
        });
    }

    void Open() {
        ASSERT_TRUE(window->OpenInside(parent));
        ASSERT_TRUE(WaitForPicture());
    }
};

PopupItem Entry(const std::string& text, std::int32_t id) {
    PopupItem entry;
    entry.text = text;
    entry.id = id;
    return entry;
}

// A dialog is a window of the root with the given size, in the middle of the editor.
Window FindDialog(CHostDisplay& display, int width, int height) {
    Window root = 0;
    Window above = 0;
    Window* children = nullptr;
    unsigned count = 0;
    XQueryTree(display.Get(), display.Root(), &root, &above, &children, &count);
    Window found = 0;
    for (unsigned i = 0; i < count; ++i) {
        const XWindowAttributes place = display.Attributes(children[i]);
        if (place.width == width && place.height == height && place.map_state == IsViewable)
            found = children[i];
    }
    if (children != nullptr) XFree(children);
    return found;
}

Window AwaitDialog(CHostDisplay& display, int width, int height) {
    Window found = 0;
    for (int look = 0; look < 500 && found == 0; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        found = FindDialog(display, width, height);
    }
    return found;
}

void Focus(CHostDisplay& display, Window window) {
    XSetInputFocus(display.Get(), window, RevertToParent, CurrentTime);
    display.Sync();
}

TEST_F(FltkToolkit, MessageStandsInTheMiddleUntilItIsConfirmed) {
    Open();
    bool centred = false;
    std::thread user = User([&](CHostDisplay& hand) {
        const Window dialog = FindDialog(hand, 300, 80);
        if (dialog == 0) return;
        const XWindowAttributes place = hand.Attributes(dialog);
        centred = std::abs(place.x + 150 - kLeft - 479) <= 1 && std::abs(place.y + 40 - kTop - 299) <= 1;
        Focus(hand, dialog);
        hand.TapKey(XK_Return);
    });
    toolkit.ShowMessage("Error!", "Could not load audio file!");
    user.join();
    EXPECT_TRUE(centred);
    EXPECT_EQ(FindDialog(*host, 300, 80), 0U);
}

TEST_F(FltkToolkit, TimersRunWhileAMessageWaits) {
    Open();
    int ticks = 0;
    toolkit.SetTimer(
        0.05, [](void* count) { ++*static_cast<int*>(count); }, &ticks);
    std::thread user = User([](CHostDisplay&) {},
                            [](CHostDisplay& hand) {
                                Focus(hand, FindDialog(hand, 300, 80));
                                hand.TapKey(XK_Escape);
                            });
    toolkit.ShowMessage("Warning!", "Text");
    user.join();
    EXPECT_EQ(ticks, 1);
}

TEST_F(FltkToolkit, NameIsAsItWasTyped) {
    Open();
    std::thread user = User([](CHostDisplay& hand) {
        Focus(hand, FindDialog(hand, 300, 95));
        for (const unsigned long key : {XK_n, XK_e, XK_w}) hand.TapKey(key);
        hand.TapKey(XK_Return);
    });
    EXPECT_EQ(toolkit.AskForName("Name:", "Snapshot 1"), "new")
        << "the preset text is selected, and replaced";
    user.join();
}

TEST_F(FltkToolkit, CancelledNameIsNone) {
    Open();
    std::thread user = User([](CHostDisplay& hand) {
        Focus(hand, FindDialog(hand, 300, 95));
        hand.TapKey(XK_Escape);
    });
    EXPECT_EQ(toolkit.AskForName("Name:", "Snapshot 1"), std::nullopt);
    user.join();
}

TEST_F(FltkToolkit, DialogsStayAboveTheHostsWindow) {
    Open();
    std::vector<Window> below;
    const auto look = [&below](int width, int height) {
        return std::thread([&below, width, height] {
            CHostDisplay hand;
            const Window dialog = AwaitDialog(hand, width, height);
            Focus(hand, dialog);
            Window hosts = 0;
            XGetTransientForHint(hand.Get(), dialog, &hosts);
            below.push_back(hosts);
            hand.TapKey(XK_Escape);
        });
    };
    std::thread user = look(300, 80);
    toolkit.ShowMessage("Warning!", "Text");
    user.join();
    user = look(620, 420);
    toolkit.ChooseFileToOpen("Open Audio File", "WAV Files\t*.wav");
    user.join();
    EXPECT_EQ(below, (std::vector<Window>{parent, parent}));
}

TEST_F(FltkToolkit, TickTakesTheNameAndCrossLeavesIt) {
    Open();
    for (const bool tick : {true, false}) {
        std::thread user([tick] {
            CHostDisplay hand;
            const XWindowAttributes place = hand.Attributes(AwaitDialog(hand, 300, 95));
            hand.Click(place.x + (tick ? 270 : 225), place.y + 76);
        });
        EXPECT_EQ(toolkit.AskForName("Snapshot:", "Snapshot No. 1").has_value(), tick);
        user.join();
    }
}

TEST_F(FltkToolkit, QuestionTakesReturnForYesAndEscapeForNo) {
    Open();
    for (const bool yes : {true, false}) {
        std::thread user = User([yes](CHostDisplay& hand) {
            Focus(hand, FindDialog(hand, 300, 100));
            hand.TapKey(yes ? XK_Return : XK_Escape);
        });
        EXPECT_EQ(toolkit.Confirm("Replace it?"), yes);
        user.join();
    }
}

TEST_F(FltkToolkit, MenuGivesTheChosenEntryAlsoOfASubmenu) {
    Open();
    PopupMenu menu;
    menu.items = {Entry("one", 11), Entry("more & @", PopupItem::kNothing)};
    menu.items[0].mark = PopupMark::kOn;
    menu.items[1].mark = PopupMark::kOff;
    menu.items[1].children = {Entry("two", 22), Entry("three", 33)};
    host->MovePointer(kLeft + 400, kTop + 200);
    WorkFor(0.1);
    std::thread user = User(
        [](CHostDisplay& hand) { hand.TapKey(XK_Down); }, [](CHostDisplay& hand) { hand.TapKey(XK_Down); },
        [](CHostDisplay& hand) { hand.TapKey(XK_Right); }, [](CHostDisplay& hand) { hand.TapKey(XK_Down); },
        [](CHostDisplay& hand) { hand.TapKey(XK_Return); });
    const std::int32_t chosen = toolkit.ChooseFromMenu(menu);
    user.join();
    EXPECT_TRUE(chosen == 22 || chosen == 33) << chosen;
}

TEST_F(FltkToolkit, MenuLeftWithEscapeGivesNothing) {
    Open();
    PopupMenu menu;
    menu.items = {Entry("one", 11)};
    std::thread user = User([](CHostDisplay& hand) { hand.TapKey(XK_Escape); });
    EXPECT_EQ(toolkit.ChooseFromMenu(menu), PopupItem::kNothing);
    user.join();
    EXPECT_EQ(toolkit.ChooseFromMenu({}), PopupItem::kNothing);
}

TEST_F(FltkToolkit, FileDialogIsCancelledWithEscape) {
    Open();
    const auto folder = std::filesystem::current_path();
    std::thread user = User([](CHostDisplay&) {},
                            [this](CHostDisplay& hand) {
                                Focus(hand, hand.Attributes(hand.Root()).root);
                                XSetInputFocus(hand.Get(), PointerRoot, RevertToNone, CurrentTime);
                                hand.MovePointer(kLeft + 479, kTop + 299);
                                hand.TapKey(XK_Escape);
                            });
    EXPECT_EQ(toolkit.ChooseFileToOpen("Open Audio File", "WAV Files\t*.wav"), "");
    user.join();
    EXPECT_EQ(std::filesystem::current_path(), folder);
}

// Types into the dialog that is shown, and gives back what it answers.
class FileDialog : public FltkToolkit {
protected:
    void SetUp() override {
        FltkToolkit::SetUp();
        if (IsSkipped()) return;
        folder = std::filesystem::temp_directory_path() / ("sonorelle-ui-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "song.wav") << "old";
        Open();
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
        FltkToolkit::TearDown();
    }
    static std::thread Typist(std::string text) {
        return std::thread([text = std::move(text)] {
            CHostDisplay hand;
            Focus(hand, AwaitDialog(hand, 620, 420));
            for (const char sign : text)
                hand.TapKey(sign == '/' ? XK_slash : static_cast<unsigned char>(sign));
            hand.TapKey(XK_Delete); // what was completed
            hand.TapKey(XK_Return);
            for (int look = 0; look < 100 && FindDialog(hand, 620, 420) != 0; ++look)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            if (FindDialog(hand, 620, 420) != 0) hand.TapKey(XK_Escape); // it has not understood
        });
    }
    std::string OpenTyping(const std::string& text) {
        std::thread user = Typist(text);
        std::string path = toolkit.ChooseFileToOpen("Open Audio File", "WAV Files\t*.wav");
        user.join();
        return path;
    }

    std::filesystem::path folder;
};

TEST_F(FileDialog, WholePathCanBeTyped) {
    EXPECT_EQ(OpenTyping((folder / "song.wav").string()), (folder / "song.wav").string());
}

TEST_F(FileDialog, NameIsLookedForInTheFolderThatIsShown) {
    ASSERT_EQ(OpenTyping((folder / "song.wav").string()), (folder / "song.wav").string());
    EXPECT_EQ(OpenTyping("song.wav"), (folder / "song.wav").string()) << "the folder of the last choice";
}

TEST_F(FileDialog, NameToSaveGetsItsExtensionAndNothingIsReplacedUnasked) {
    std::thread user = Typist((folder / "new").string());
    EXPECT_EQ(toolkit.ChooseFileToSave("Save as Audio File", "WAV File\t*.wav", "Out.wav"),
              (folder / "new.wav").string());
    user.join();

    std::thread writer = Typist((folder / "song").string());
    bool asked = false;
    std::thread answer([&] {
        CHostDisplay hand;
        const Window question = AwaitDialog(hand, 300, 100);
        asked = question != 0;
        if (!asked) return;
        Focus(hand, question);
        hand.TapKey(XK_Escape);
    });
    EXPECT_EQ(toolkit.ChooseFileToSave("Save as Audio File", "WAV File\t*.wav", "Out.wav"), "");
    writer.join();
    answer.join();
    EXPECT_TRUE(asked);
}

// What a plug-in does whose host closes it from another thread.
TEST_F(FltkToolkit, AbandonedQuestionsEndAsCancelledAndNoOtherIsAsked) {
    Open();
    const auto abandon = [](CFltkToolkit& asked) {
        return User([](CHostDisplay&) {}, [&asked](CHostDisplay&) { asked.Abandon(); });
    };
    PopupMenu menu;
    menu.items = {Entry("one", 11)};
    const std::function<void(CFltkToolkit&)> questions[] = {
        [](CFltkToolkit& asked) { asked.ShowMessage("Warning!", "Text"); },
        [](CFltkToolkit& asked) { EXPECT_FALSE(asked.Confirm("Replace it?")); },
        [](CFltkToolkit& asked) { EXPECT_EQ(asked.AskForName("Name:", "Snapshot 1"), std::nullopt); },
        [](CFltkToolkit& asked) { EXPECT_EQ(asked.ChooseFileToOpen("Open", "WAV Files\t*.wav"), ""); },
        [](CFltkToolkit& asked) {
            EXPECT_EQ(asked.ChooseFileToSave("Save", "WAV Files\t*.wav", "a.wav"), "");
        },
        [&](CFltkToolkit& asked) { EXPECT_EQ(asked.ChooseFromMenu(menu), PopupItem::kNothing); }};
    for (const auto& ask : questions) {
        CFltkToolkit asked;
        asked.SetMainWindow(window.get());
        asked.BeInterfaceThread();
        std::thread closer = abandon(asked);
        ask(asked);
        closer.join();
        ask(asked); // nobody would end this one
    }
    toolkit.SetMainWindow(window.get());
    EXPECT_TRUE(toolkit.RunEvents());
}

// --- What needs no window ---

struct Ticks {
    CFltkToolkit* toolkit;
    int count = 0;
};

TEST_F(FltkToolkit, TimerRunsOnceAndThenWaitsToBeSetAgain) {
    Ticks ticks{&toolkit};
    const auto tick = [](void* context) { ++static_cast<Ticks*>(context)->count; };
    toolkit.SetTimer(0, tick, &ticks);
    toolkit.RunEvents();
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 1);
    toolkit.SetTimer(0, tick, &ticks);
    toolkit.RemoveTimer(tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 1);
}

TEST_F(FltkToolkit, TimerThatSetsItselfAgainRunsOnceAPass) {
    Ticks ticks{&toolkit};
    struct Repeat {
        static void Tick(void* context) {
            auto* t = static_cast<Ticks*>(context);
            if (++t->count < 1000) t->toolkit->SetTimer(0, Tick, context);
        }
    };
    toolkit.SetTimer(0, Repeat::Tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 1);
    toolkit.RemoveTimer(Repeat::Tick, &ticks);
}

TEST_F(FltkToolkit, SettingATimerAgainMovesIt) {
    Ticks ticks{&toolkit};
    const auto tick = [](void* context) { ++static_cast<Ticks*>(context)->count; };
    toolkit.SetTimer(0, tick, &ticks);
    toolkit.SetTimer(3600, tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 0);
    toolkit.RemoveTimer(tick, &ticks);
}

TEST_F(FltkToolkit, OddTimesAreTakenForTheNearestSensible) {
    Ticks ticks{&toolkit};
    const auto tick = [](void* context) { ++static_cast<Ticks*>(context)->count; };
    toolkit.SetTimer(std::nan(""), tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 1);
    toolkit.SetTimer(-5, tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 2);
    toolkit.SetTimer(1e300, tick, &ticks);
    toolkit.RunEvents();
    EXPECT_EQ(ticks.count, 2);
}

TEST_F(FltkToolkit, OtherThreadsAskNobody) {
    std::thread([this] {
        EXPECT_FALSE(toolkit.IsInterfaceThread());
        EXPECT_FALSE(toolkit.RunEvents());
        EXPECT_EQ(toolkit.ChooseFileToOpen("t", ""), "");
        EXPECT_EQ(toolkit.ChooseFromMenu({{Entry("a", 1)}}), PopupItem::kNothing);
        EXPECT_EQ(toolkit.AskForName("a", "b"), std::nullopt);
    }).join();
}

int HandlerOfHost(Display*, XErrorEvent*) { return 0; }

// The two below run in programs of their own, since this one has its display already.
TEST(FltkToolkitDeathTest, FirstWindowChangesNothingOfTheHosts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (StartVirtualDisplay().empty()) GTEST_SKIP() << "Xvfb is not installed: no display to open";
    const auto open = [] {
        setenv("LC_ALL", "C.UTF-8", 1); // what a library that asks for the user's locale would bring in
        std::setlocale(LC_ALL, "C");
        XSetErrorHandler(HandlerOfHost);
        CHostDisplay user;
        NotingOwner nobody;
        bool opened = OpenDisplay();
        {
            CkvoDNDWindow first(nobody);
            opened = opened && first.OpenInside(user.MakeWindow(0, 0, kWindowWidth, kWindowHeight));
            CFltkToolkit toolkit;
            toolkit.BeInterfaceThread();
            for (int pass = 0; pass < 20; ++pass) {
                toolkit.RunEvents();
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        }
        const bool same = std::string(std::setlocale(LC_ALL, nullptr)) == "C" &&
                          XSetErrorHandler(HandlerOfHost) == HandlerOfHost;
        std::exit(opened && same ? 0 : 1);
    };
    EXPECT_EXIT(open(), ::testing::ExitedWithCode(0), "");
}

TEST(FltkToolkitDeathTest, WithoutADisplayThereIsNoInterfaceAndNothingWorse) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto tryWithout = [] {
        unsetenv("DISPLAY");
        CFltkToolkit toolkit;
        toolkit.BeInterfaceThread();
        const bool quiet =
            !OpenDisplay() && !IsDisplayOpen() && !toolkit.IsInterfaceThread() && !toolkit.RunEvents();
        toolkit.ActivateMainWindow(false);
        toolkit.OpenProgress();
        toolkit.ShowProgress(5, 0);
        toolkit.CloseProgress();
        setenv("DISPLAY", ":4711", 1);
        std::exit(quiet && !OpenDisplay() ? 0 : 1);
    };
    EXPECT_EXIT(tryWithout(), ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace sonorelle::testing
