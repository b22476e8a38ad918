// The editor's window: the toolbar, and below it the frames of the panels. It lies in a window of a host, as
// its child.
//
//     CkvoDNDWindow window(owner);             // the display is open
//     window.OpenInside(hostWindow);
//     while (hosting) { toolkit.RunEvents(); window.Follow(); window.RunActions(); }
//     window.CloseInside();
//
// What the user does is kept, and done by RunActions: outside of the toolkit's events and of every lock,
// where a load or a dialog may take its time.
//
// Threads: any one at a time; each operation enters the ToolkitScope itself.

#pragma once

#include "ui/main_window_owner.h"

#include <FL/Fl_Double_Window.H>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>

class Fl_Group;

namespace sonorelle {

class CkvoContent;
class CkvoInfoWindow;
class CkvoProgressWindow;
class CkvoToolbar;

class CkvoDNDWindow final : public Fl_Double_Window {
public:
    explicit CkvoDNDWindow(CkvoMainWindowOwner& windowOwner);
    ~CkvoDNDWindow() override;
    CkvoDNDWindow(const CkvoDNDWindow&) = delete;
    CkvoDNDWindow& operator=(const CkvoDNDWindow&) = delete;

    // As a child of the native window, at its corner, in full size. False for a window that is not there.
    bool OpenInside(unsigned long hostWindow);
    void CloseInside(); // and the focus goes back to where it was
    bool IsOpen() const;
    unsigned long HostWindow() const { return host; }

    void Follow(); // the toolbar and the start-up text show what the owner says
    void RunActions();
    void RedrawPanels();
    void SetInputActive(bool active); // toolbar and content
    // The place of a window of this size in the middle of this one, on the screen.
    Placement Centred(int windowWidth, int windowHeight) const;

    CkvoProgressWindow& Progress() { return *progress; }
    CkvoContent& Content() { return *content; }
    CkvoToolbar& Toolbar() { return *toolbar; }
    void OpenInfo();
    CkvoInfoWindow* Info() { return info.get(); } // null: never opened
    // Within a drag of the mouse: it goes on as the drag of a file, out of the window. True when it was
    // taken.
    bool DragFileOut(const std::string& path);

    int handle(int event) override;

protected:
    void draw() override;
    void flush() override;

private:
    using Clock = std::chrono::steady_clock;
    class OwnerScope;
    bool TakeDrop(int event);
    void TakeFocus();
    void TakeFocusFromFrame();
    void GiveFocusBack();

    CkvoMainWindowOwner& owner;
    CkvoToolbar* toolbar = nullptr; // owned by the toolkit, as its widgets are
    CkvoContent* content = nullptr;
    CkvoProgressWindow* progress = nullptr;
    std::unique_ptr<CkvoInfoWindow> info;

    std::deque<std::function<void()>> actions;
    unsigned long host = 0;
    unsigned long previousFocus = 0;
    int previousRevert = 0;
    bool focusWanted = false;
    // Until then the window manager may give the focus to the host's window.
    Clock::time_point managersTurn;
    bool pictureMissed = false; // there was something to draw, and it could not be drawn
};

} // namespace sonorelle
