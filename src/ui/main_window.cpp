#include "ui/main_window.h"

#include "ui/content.h"
#include "ui/display.h"
#include "ui/drag_out.h"
#include "ui/drop_target.h"
#include "ui/dropped_text.h"
#include "ui/info_window.h"
#include "ui/key_forwarding.h"
#include "ui/native_window.h"
#include "ui/progress_window.h"
#include "ui/theme.h"
#include "ui/toolbar.h"

#include <FL/Fl.H>
#include <FL/Fl_Tooltip.H>
#include <FL/x.H>

#include <utility>

namespace sonorelle {

namespace {

// Until it lies in its host's window, it is shown where nobody sees it.
constexpr int kOutOfSight = -4 * kWindowWidth;

// The time in which a window manager answers to a new window, on a slow display too.
constexpr std::chrono::milliseconds kManagersTime(500);

bool IsWithin(Window window, Window ancestor) {
    while (window != 0 && window != ancestor) window = ParentOf(window);
    return window == ancestor;
}

// The frame that the window manager has put around it, or itself.
Window TopOf(Window window) {
    while (const Window parent = ParentOf(window)) window = parent;
    return window;
}

bool CanBeSeen(Window window) {
    XWindowAttributes attributes;
    return XGetWindowAttributes(fl_display, window, &attributes) != 0 && attributes.map_state == IsViewable;
}

} // namespace

// Keeps what the widgets show in place while they work with it.
class CkvoDNDWindow::OwnerScope {
public:
    explicit OwnerScope(CkvoMainWindowOwner& windowOwner)
        : owner(windowOwner), entered(windowOwner.TryEnterInterface()) {}
    ~OwnerScope() {
        if (entered) owner.LeaveInterface();
    }
    OwnerScope(const OwnerScope&) = delete;
    OwnerScope& operator=(const OwnerScope&) = delete;
    explicit operator bool() const { return entered; }

private:
    CkvoMainWindowOwner& owner;
    const bool entered;
};

CkvoDNDWindow::CkvoDNDWindow(CkvoMainWindowOwner& windowOwner)
    : Fl_Double_Window(0, 0, kWindowWidth, kWindowHeight, "sonorelle"), owner(windowOwner) {
    const ToolkitScope scope;
    color(ToolkitColour(kPanelColour));
    callback([](Fl_Widget*, void*) {}); // no key closes it
    toolbar = new CkvoToolbar([this](ToolbarButton button) {
        actions.emplace_back([this, button] {
            if (button == ToolbarButton::kLogo) {
                OpenInfo();
            } else {
                owner.PressToolbar(button);
            }
        });
    });
    content = new CkvoContent(kContent, [this] { return owner.PitchView(); });
    progress = new CkvoProgressWindow;
    end();
    progress->hide();
    resizable(content);
}

CkvoDNDWindow::~CkvoDNDWindow() {
    CloseInside();
    const ToolkitScope scope;
    info.reset();
    clear();
}

bool CkvoDNDWindow::IsOpen() const { return fl_xid(this) != 0; }

bool CkvoDNDWindow::OpenInside(unsigned long hostWindow) {
    const ToolkitScope scope;
    if (IsOpen()) CloseInside();
    XWindowAttributes attributes;
    if (hostWindow == 0 || XGetWindowAttributes(fl_display, hostWindow, &attributes) == 0) return false;
    XGetInputFocus(fl_display, &previousFocus, &previousRevert);
    host = hostWindow;
    resize(kOutOfSight, 0, kWindowWidth, kWindowHeight);
    border(0);
    set_override();
    show();
    const Window own = fl_xid(this);
    XReparentWindow(fl_display, own, host, 0, 0);
    XMapWindow(fl_display, own);
    XSync(fl_display, False);
    TakeDrops(*this);
    ForwardKeysOf(*this, host);
    focusWanted = true;
    TakeFocus();
    redraw();
    return true;
}

// A window that cannot be seen yet gets no focus; the next look is when it is to be drawn.
void CkvoDNDWindow::TakeFocus() {
    if (!focusWanted || !IsOpen() || !CanBeSeen(fl_xid(this))) return;
    XSetInputFocus(fl_display, fl_xid(this), RevertToParent, CurrentTime);
    focusWanted = false;
    managersTurn = Clock::now() + kManagersTime;
}

// A window that has just been shown gets the focus from the window manager, which knows nothing of the window
// in it. It is taken back once; what the host does with it later is the host's affair.
void CkvoDNDWindow::TakeFocusFromFrame() {
    if (Clock::now() >= managersTurn || !IsOpen()) return;
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(fl_display, &focus, &revert);
    const Window own = fl_xid(this);
    if (focus <= PointerRoot || IsWithin(focus, own) || !IsWithin(focus, TopOf(own))) return;
    XSetInputFocus(fl_display, own, RevertToParent, CurrentTime);
    managersTurn = {};
}

// Only if it is still here: the user may have gone elsewhere.
void CkvoDNDWindow::GiveFocusBack() {
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(fl_display, &focus, &revert);
    if (focus <= PointerRoot || !IsWithin(focus, fl_xid(this))) return;
    const bool there = previousFocus > PointerRoot && CanBeSeen(previousFocus);
    if (there) XSetInputFocus(fl_display, previousFocus, previousRevert, CurrentTime);
}

void CkvoDNDWindow::CloseInside() {
    const ToolkitScope scope;
    info.reset();
    progress->hide();
    actions.clear();
    ForwardNoKeysOf(*this);
    if (IsDisplayOpen()) TakeNoDrops(*this);
    content->ShowDropHint(false);
    if (!IsOpen()) return;
    Fl_Tooltip::exit(nullptr);
    if (IsDisplayOpen()) GiveFocusBack();
    hide();
    XSync(fl_display, False);
    managersTurn = {};
    host = 0;
}

void CkvoDNDWindow::Follow() {
    const ToolkitScope scope;
    if (!IsOpen()) return;
    TakeFocusFromFrame();
    if (std::exchange(pictureMissed, false)) redraw();
    toolbar->Show(owner.GetToolbarLook());
    const OwnerScope entered(owner);
    if (entered) content->FollowView();
}

// An action may close the window, and so forget the others.
void CkvoDNDWindow::RunActions() {
    while (true) {
        std::function<void()> action;
        {
            const ToolkitScope scope;
            if (actions.empty()) return;
            action = std::move(actions.front());
            actions.pop_front();
        }
        action();
    }
}

void CkvoDNDWindow::RedrawPanels() {
    const ToolkitScope scope;
    if (IsOpen()) content->RedrawPanels();
}

void CkvoDNDWindow::SetInputActive(bool active) {
    const ToolkitScope scope;
    toolbar->SetInputActive(active);
    if (active) {
        content->activate();
    } else {
        content->deactivate();
    }
}

Placement CkvoDNDWindow::Centred(int windowWidth, int windowHeight) const {
    int left = x_root();
    int top = y_root();
    if (IsOpen()) {
        Window child = 0;
        XTranslateCoordinates(fl_display, fl_xid(this), RootWindow(fl_display, fl_screen), 0, 0, &left, &top,
                              &child);
    }
    return {left + (w() - windowWidth) / 2, top + (h() - windowHeight) / 2, windowWidth, windowHeight};
}

void CkvoDNDWindow::OpenInfo() {
    const ToolkitScope scope;
    if (!IsOpen()) return;
    if (info == nullptr) info = std::make_unique<CkvoInfoWindow>(owner.AboutText(), owner.UpdateAddress());
    const Placement place = Centred(info->w(), info->h());
    info->OpenAt(place.x, place.y, host);
}

bool CkvoDNDWindow::DragFileOut(const std::string& path) {
    const ToolkitScope scope;
    return IsOpen() && DragOut(fl_xid(this), path);
}

bool CkvoDNDWindow::TakeDrop(int event) {
    switch (event) {
    case FL_DND_ENTER:
    case FL_DND_DRAG:
    case FL_DND_RELEASE:
        content->ShowDropHint(toolbar->TakesInput());
        return toolbar->TakesInput();
    case FL_DND_LEAVE:
        content->ShowDropHint(false);
        return true;
    case FL_PASTE: {
        content->ShowDropHint(false);
        const char* text = Fl::event_text();
        std::string dropped =
            TextOfDrop({text != nullptr ? text : "", static_cast<std::size_t>(Fl::event_length())});
        if (!dropped.empty()) actions.emplace_back([this, dropped] { owner.DropText(dropped); });
        return true;
    }
    default:
        return false;
    }
}

// A host moves its own windows without a word to their children: the pointer's two places tell where this
// window is, which tips and menus go by.
int CkvoDNDWindow::handle(int event) {
    switch (event) {
    case FL_ENTER:
    case FL_MOVE:
    case FL_PUSH:
    case FL_DRAG:
        x(Fl::event_x_root() - Fl::event_x());
        y(Fl::event_y_root() - Fl::event_y());
        break;
    default:
        break;
    }
    if (TakeDrop(event)) return 1;
    const OwnerScope scope(owner);
    return scope ? Fl_Double_Window::handle(event) : 0;
}

void CkvoDNDWindow::draw() {
    TakeFocus();
    Fl_Double_Window::draw();
}

// What is being replaced elsewhere is drawn when it is there again. A window that has been moved into another
// one comes to light there.
void CkvoDNDWindow::flush() {
    if ((damage() & (FL_DAMAGE_ALL | FL_DAMAGE_EXPOSE)) != 0) FollowHostWindow(*this);
    const OwnerScope scope(owner);
    if (scope) {
        Fl_Double_Window::flush();
    } else {
        pictureMissed = true;
    }
}

} // namespace sonorelle
