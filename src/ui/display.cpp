#include "ui/display.h"

#include "ui/drop_target.h"
#include "ui/key_forwarding.h"
#include "ui/lost_windows.h"
#include "ui/theme.h"

#include <FL/x.H>

#include <atomic>
#include <mutex>
#include <unistd.h>

namespace sonorelle {

namespace {

// The toolkit keeps its own state once for the process; so does what guards it.
struct SharedDisplay {
    std::recursive_mutex lock;
    int depth = 0; // scopes of the thread that holds the lock
    XErrorHandler hostErrors = nullptr;
    XIOErrorHandler hostLosses = nullptr;
    std::atomic<bool> open{false};
    std::atomic<bool> lost{false}; // the server has closed the connection
    pid_t opener = 0;

    ~SharedDisplay();
};
SharedDisplay shared;

int OnError(Display* display, XErrorEvent* error) {
    if (display == fl_display) return 0;
    return shared.hostErrors != nullptr ? shared.hostErrors(display, error) : 0;
}

// Returning lets the connection's own exit handler decide, which does not end the process.
int OnLoss(Display* display) {
    if (display == fl_display) return 0;
    return shared.hostLosses != nullptr ? shared.hostLosses(display) : 0;
}

// A child of a fork shares the connection with its parent, and must not say farewell on it. The server may be
// gone by now.
SharedDisplay::~SharedDisplay() {
    if (!open.load(std::memory_order_relaxed) || lost.load(std::memory_order_relaxed) || opener != getpid())
        return;
    XErrorHandler errors = XSetErrorHandler(OnError);
    XIOErrorHandler losses = XSetIOErrorHandler(OnLoss);
    XCloseDisplay(fl_display);
    XSetErrorHandler(errors);
    XSetIOErrorHandler(losses);
}

void AfterLoss(Display*, void*) { shared.lost.store(true, std::memory_order_relaxed); }

} // namespace

bool IsDisplayOpen() {
    return shared.open.load(std::memory_order_relaxed) && !shared.lost.load(std::memory_order_relaxed);
}

bool OpenDisplay() {
    const ToolkitScope scope;
    if (shared.open.load(std::memory_order_relaxed)) return IsDisplayOpen();
    // Were the toolkit to open it itself, it would end the process where there is none, and set the process's
    // locale and error handlers.
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XSetIOErrorExitHandler(display, AfterLoss, nullptr);
    fl_open_display(display);
    shared.opener = getpid();
    shared.open.store(true, std::memory_order_relaxed);
    LoadTheme();
    WatchLostWindows();
    WatchDrops();
    ForwardUnusedKeys();
    return true;
}

ToolkitScope::ToolkitScope() {
    shared.lock.lock();
    if (++shared.depth > 1) return;
    shared.hostErrors = XSetErrorHandler(OnError);
    shared.hostLosses = XSetIOErrorHandler(OnLoss);
}

ToolkitScope::~ToolkitScope() {
    if (--shared.depth == 0) {
        XSetErrorHandler(shared.hostErrors);
        XSetIOErrorHandler(shared.hostLosses);
    }
    shared.lock.unlock();
}

} // namespace sonorelle
