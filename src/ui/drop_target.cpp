#include "ui/drop_target.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>
#include <X11/Xatom.h>

namespace sonorelle {

namespace {

// With the release of the button the pointer enters some widget, which the toolkit would then ask instead of
// the window whether it takes the drop.
int OnDrop(void* event, void*) {
    const auto* x = static_cast<const XEvent*>(event);
    if (x->type != ClientMessage || x->xclient.message_type != XInternAtom(fl_display, "XdndDrop", False))
        return 0;
    if (Fl_Window* window = fl_find(x->xclient.window)) Fl::belowmouse(window);
    return 0;
}

} // namespace

void WatchDrops() { Fl::add_system_handler(OnDrop, nullptr); }

// The toolkit does so itself, but not for windows that no window manager looks after.
void TakeDrops(const Fl_Window& window) {
    constexpr long kProtocolVersion = 4; // the toolkit's
    const Atom aware = XInternAtom(fl_display, "XdndAware", False);
    XChangeProperty(fl_display, fl_xid(&window), aware, XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&kProtocolVersion), 1);
}

} // namespace sonorelle
