// The toolkit's record of a native window is among what it calls internals.
#define FL_INTERNALS 1

#include "ui/lost_windows.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

namespace sonorelle {

namespace {

// True: the toolkit shall not see the event.
int OnSystemEvent(void* event, void*) {
    const auto* x = static_cast<const XEvent*>(event);
    if (x->type != DestroyNotify) return 0;
    Fl_Window* window = fl_find(x->xdestroywindow.window);
    if (window == nullptr) return 0;
    Fl_X::i(window)->xid = 0; // so that it is not destroyed once more
    window->hide();
    return 1;
}

} // namespace

void WatchLostWindows() { Fl::add_system_handler(OnSystemEvent, nullptr); }

} // namespace sonorelle
