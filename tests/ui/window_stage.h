// A main window in a host's window on the tests' own display, with an owner that notes what it is asked.

#pragma once

#include "ui/display.h"
#include "ui/fltk_toolkit.h"
#include "ui/main_window.h"
#include "ui/main_window_owner.h"
#include "ui/virtual_display.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace sonorelle::testing {

class NotingOwner final : public CkvoMainWindowOwner {
public:
    void PressToolbar(ToolbarButton button) override {
        presses.push_back(button);
        if (onPress) onPress();
    }
    ToolbarLook GetToolbarLook() override { return look; }
    CkvoPitchView* PitchView() override { return view; }
    void DropText(const std::string& text) override { drops.push_back(text); }
    std::string AboutText() override { return "V1"; }
    std::string UpdateAddress() override { return {}; }
    bool TryEnterInterface() override {
        if (!busy) ++entered;
        return !busy;
    }
    void LeaveInterface() override { --entered; }

    ToolbarLook look;
    CkvoPitchView* view = nullptr;
    bool busy = false; // what the window shows is being replaced
    int entered = 0;
    std::function<void()> onPress;
    std::vector<ToolbarButton> presses;
    std::vector<std::string> drops;
};

inline ToolbarLook EverythingAnswers() {
    ToolbarLook look;
    look.editActive = look.saveActive = look.singleVoiceActive = true;
    return look;
}

class WindowStageTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (StartVirtualDisplay().empty())
            GTEST_SKIP() << "Xvfb is not installed: no display to show windows on";
        ASSERT_TRUE(OpenDisplay());
        host = std::make_unique<CHostDisplay>();
        host->MovePointer(1270, 890); // over nothing
        parent = host->MakeWindow(kLeft, kTop, kWindowWidth, kWindowHeight);
        window = std::make_unique<CkvoDNDWindow>(owner);
        toolkit.SetMainWindow(window.get());
        toolkit.BeInterfaceThread();
    }

    void TearDown() override {
        toolkit.SetMainWindow(nullptr);
        window.reset();
        if (host != nullptr && parent != 0) host->Destroy(parent);
    }

    void Work() {
        toolkit.RunEvents();
        window->Follow();
        window->RunActions();
    }
    void WorkFor(double seconds) {
        WorkUntil([this] { Work(); }, [] { return false; }, seconds);
    }
    bool WorkUntilTrue(const std::function<bool()>& done, double seconds = 3) {
        return WorkUntil([this] { Work(); }, done, seconds);
    }
    // Until its first picture is on the display: the pixel between the frames has its colour.
    bool WaitForPicture() {
        return WorkUntilTrue([this] { return host->Pixel(parent, 4, 40) == kPanelPixel; });
    }

    void ClickAt(int x, int y) {
        host->MovePointer(kLeft + x, kTop + y);
        WorkFor(0.05);
        host->Press(1, true);
        WorkFor(0.05);
        host->Press(1, false);
        WorkFor(0.1);
    }
    void ClickButton(ToolbarButton button) {
        const Placement place = PlaceOf(kToolbar[static_cast<std::size_t>(button)]);
        ClickAt(place.x + place.width / 2, place.y + place.height / 2);
    }

    static constexpr int kLeft = 60; // of the host's window, on the screen
    static constexpr int kTop = 40;
    static constexpr unsigned long kPanelPixel = 0xd2d7dd;

    NotingOwner owner;
    CFltkToolkit toolkit;
    std::unique_ptr<CHostDisplay> host;
    std::unique_ptr<CkvoDNDWindow> window;
    Window parent = 0;
};

} // namespace sonorelle::testing
