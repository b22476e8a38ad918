#include "ui/drag_out.h"

#include "ui/display.h"
#include "ui/dropped_text.h"
#include "ui/native_window.h"

#include <FL/Fl.H>
#include <FL/x.H>
#include <X11/Xatom.h>
#include <X11/cursorfont.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace sonorelle {

namespace {

constexpr long kProtocolVersion = 5;
constexpr std::chrono::seconds kPatience{3}; // with a target that does not answer
constexpr double kPass = 0.02;               // seconds that one pass of the events waits at most

using Clock = std::chrono::steady_clock;

Atom AtomOf(const char* name) { return XInternAtom(fl_display, name, False); }

class Drag {
public:
    Drag(Window sourceWindow, const std::string& path)
        : source(sourceWindow), plain(path), list(AddressOfFile(path) + "\r\n") {}

    bool Run() {
        XSetSelectionOwner(fl_display, selection, source, fl_event_time);
        const Cursor cursor = XCreateFontCursor(fl_display, XC_hand2);
        constexpr unsigned kEvents = ButtonReleaseMask | PointerMotionMask;
        XGrabPointer(fl_display, source, False, kEvents, GrabModeAsync, GrabModeAsync, None, cursor,
                     CurrentTime);
        Fl::add_system_handler(OnEvent, this);
        while (!done && IsDisplayOpen() && (!released || Clock::now() < deadline)) Fl::wait(kPass);
        Fl::remove_system_handler(OnEvent);
        XUngrabPointer(fl_display, CurrentTime);
        XFreeCursor(fl_display, cursor);
        XSetSelectionOwner(fl_display, selection, None, CurrentTime);
        XFlush(fl_display);
        return taken;
    }

private:
    struct Target {
        Window window = 0;
        Window receiver = 0; // of the messages: the window, or its proxy
        long version = 0;
    };

    static int OnEvent(void* event, void* drag) {
        return static_cast<Drag*>(drag)->Take(*static_cast<const XEvent*>(event)) ? 1 : 0;
    }

    // True: the toolkit shall not see the event.
    bool Take(const XEvent& event) {
        switch (event.type) {
        case MotionNotify:
            Move(event.xmotion.x_root, event.xmotion.y_root, event.xmotion.time);
            return true;
        case ButtonRelease:
            Release(event.xbutton);
            return true;
        case ClientMessage:
            return TakeMessage(event.xclient);
        case SelectionRequest:
            if (event.xselectionrequest.selection != selection) return false;
            Answer(event.xselectionrequest);
            return true;
        default:
            return false;
        }
    }

    bool TakeMessage(const XClientMessageEvent& message) {
        if (message.window != source) return false;
        if (message.message_type == status) {
            accepted = (message.data.l[1] & 1) != 0;
            if (released) Drop();
            return true;
        }
        if (message.message_type == finished) {
            // Older targets do not say whether they took it.
            taken = target.version < kProtocolVersion || (message.data.l[1] & 1) != 0;
            done = true;
            return true;
        }
        return false;
    }

    void Move(int x, int y, Time time) {
        const Target now = TargetAt(x, y);
        if (now.window != target.window) {
            if (target.window != 0) Send(leave, {0, 0, 0, 0});
            target = now;
            accepted = false;
            if (target.window != 0)
                Send(enter, {std::min(target.version, kProtocolVersion) << 24, static_cast<long>(uriList),
                             static_cast<long>(utf8), static_cast<long>(text)});
        }
        if (target.window == 0) return;
        Send(position, {0, static_cast<long>(x) << 16 | y, static_cast<long>(time), static_cast<long>(copy)});
    }

    void Release(const XButtonEvent& event) {
        if (event.button != Button1 || released) return;
        Move(event.x_root, event.y_root, event.time);
        released = true;
        releaseTime = event.time;
        deadline = Clock::now() + kPatience;
        XUngrabPointer(fl_display, event.time);
        if (target.window == 0) done = true;
    }

    // The answer to the last position has come: it decides.
    void Drop() {
        if (dropped) return;
        dropped = true;
        if (accepted) {
            Send(drop, {0, static_cast<long>(releaseTime), 0, 0});
        } else {
            Send(leave, {0, 0, 0, 0});
            done = true;
        }
    }

    void Send(Atom type, std::array<long, 4> words) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = target.window;
        event.xclient.message_type = type;
        event.xclient.format = 32;
        event.xclient.data.l[0] = static_cast<long>(source);
        for (std::size_t i = 0; i < words.size(); ++i) event.xclient.data.l[i + 1] = words[i];
        XSendEvent(fl_display, target.receiver, False, NoEventMask, &event);
        XFlush(fl_display);
    }

    // The outermost window at the pointer that takes drops.
    Target TargetAt(int x, int y) const {
        const Window root = RootWindow(fl_display, fl_screen);
        Window window = root;
        while (true) {
            int left = 0;
            int top = 0;
            Window child = 0;
            if (XTranslateCoordinates(fl_display, root, window, x, y, &left, &top, &child) == 0 || child == 0)
                return {};
            window = child;
            if (const Target found = AsTarget(window); found.window != 0) return found;
        }
    }

    Target AsTarget(Window window) const {
        const auto proxies = ReadNumbers(window, proxy, XA_WINDOW);
        const Window receiver = proxies.empty() ? window : proxies.front();
        const auto versions = ReadNumbers(receiver, aware, XA_ATOM);
        if (versions.empty() || versions.front() < 3) return {};
        return {window, receiver, static_cast<long>(versions.front())};
    }

    void Answer(const XSelectionRequestEvent& request) {
        XEvent reply{};
        reply.xselection.type = SelectionNotify;
        reply.xselection.requestor = request.requestor;
        reply.xselection.selection = request.selection;
        reply.xselection.target = request.target;
        reply.xselection.time = request.time;
        reply.xselection.property = request.property != None ? request.property : request.target;
        if (!Provide(request.requestor, reply.xselection.property, request.target))
            reply.xselection.property = None;
        XSendEvent(fl_display, request.requestor, False, NoEventMask, &reply);
        XFlush(fl_display);
    }

    bool Provide(Window window, Atom property, Atom type) const {
        if (type == targets) {
            const std::array<Atom, 4> offered = {targets, uriList, utf8, text};
            XChangeProperty(fl_display, window, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(offered.data()),
                            static_cast<int>(offered.size()));
            return true;
        }
        if (type != uriList && type != utf8 && type != text) return false;
        const std::string& content = type == uriList ? list : plain;
        XChangeProperty(fl_display, window, property, type, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(content.data()),
                        static_cast<int>(content.size()));
        return true;
    }

    const Window source;
    const std::string plain;
    const std::string list;

    const Atom selection = AtomOf("XdndSelection");
    const Atom aware = AtomOf("XdndAware");
    const Atom proxy = AtomOf("XdndProxy");
    const Atom enter = AtomOf("XdndEnter");
    const Atom position = AtomOf("XdndPosition");
    const Atom leave = AtomOf("XdndLeave");
    const Atom drop = AtomOf("XdndDrop");
    const Atom status = AtomOf("XdndStatus");
    const Atom finished = AtomOf("XdndFinished");
    const Atom copy = AtomOf("XdndActionCopy");
    const Atom targets = AtomOf("TARGETS");
    const Atom uriList = AtomOf("text/uri-list");
    const Atom utf8 = AtomOf("UTF8_STRING");
    const Atom text = AtomOf("text/plain");

    Target target;
    bool accepted = false;
    bool released = false;
    bool dropped = false;
    bool taken = false;
    bool done = false;
    Time releaseTime = 0;
    Clock::time_point deadline;
};

} // namespace

bool DragOut(unsigned long sourceWindow, const std::string& path) { return Drag(sourceWindow, path).Run(); }

} // namespace sonorelle
