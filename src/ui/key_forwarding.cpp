#include "ui/key_forwarding.h"

#include "ui/native_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

#include <algorithm>
#include <vector>

namespace sonorelle {

namespace {

struct Route {
    Fl_Window* from = nullptr;
    Window to = 0;
};

// Beside the toolkit's own list of windows, and under the same lock.
std::vector<Route> routes;
std::vector<unsigned> heldKeys; // whose press went to the host, so that the release follows it

const Route* RouteOf(Window source) {
    Fl_Window* window = fl_find(source);
    if (window == nullptr) return nullptr;
    Fl_Window* top = window->top_window();
    const auto found =
        std::find_if(routes.begin(), routes.end(), [&](const Route& r) { return r.from == top; });
    return found != routes.end() ? &*found : nullptr;
}

// The window that the server would offer a key next: hosts put windows of others around ours that do not
// listen to keys. 0 when none does. A host's toolkit knows its own windows alone, so that the event must bear
// the name of this one: the server, looking for it by itself, leaves the name as it was.
Window ListenerFrom(Window window) {
    while (window != 0) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(fl_display, window, &attributes) == 0) return 0;
        if ((attributes.all_event_masks & KeyPressMask) != 0) return window;
        window = ParentOf(window);
    }
    return 0;
}

void Send(const Route& route, const XEvent& event) {
    const Window listener = ListenerFrom(route.to);
    if (listener == 0) return;
    XEvent copy = event;
    copy.xkey.window = listener;
    copy.xkey.subwindow = 0;
    Window child = 0;
    XTranslateCoordinates(fl_display, event.xkey.root, listener, event.xkey.x_root, event.xkey.y_root,
                          &copy.xkey.x, &copy.xkey.y, &child);
    XSendEvent(fl_display, listener, False, event.type == KeyPress ? KeyPressMask : KeyReleaseMask, &copy);
    XFlush(fl_display);
}

// The last place where the toolkit offers a key.
int OnUnusedEvent(int event) {
    if (event != FL_SHORTCUT || fl_xevent == nullptr || fl_xevent->type != KeyPress) return 0;
    const Route* route = RouteOf(fl_xevent->xkey.window);
    if (route == nullptr || Fl::modal() != nullptr) return 0;
    Send(*route, *fl_xevent);
    heldKeys.push_back(fl_xevent->xkey.keycode);
    return 1;
}

int OnRelease(void* event, void*) {
    const auto* x = static_cast<const XEvent*>(event);
    if (x->type != KeyRelease) return 0;
    if (std::erase(heldKeys, x->xkey.keycode) == 0) return 0;
    if (const Route* route = RouteOf(x->xkey.window)) Send(*route, *x);
    return 0;
}

} // namespace

void ForwardUnusedKeys() {
    Fl::add_handler(OnUnusedEvent);
    Fl::add_system_handler(OnRelease, nullptr);
}

void ForwardKeysOf(Fl_Window& window, unsigned long hostWindow) {
    ForwardNoKeysOf(window);
    routes.push_back({&window, hostWindow});
}

void ForwardNoKeysOf(Fl_Window& window) {
    std::erase_if(routes, [&](const Route& route) { return route.from == &window; });
}

} // namespace sonorelle
