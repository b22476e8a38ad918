#include "ui/virtual_display.h"

#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// Read by LeakSanitizer: the toolkit keeps the fonts that it has opened until the process ends, and has no
// call that would free them.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

namespace sonorelle::testing {

namespace {

using Clock = std::chrono::steady_clock;

// The server writes the number of its display when it is ready.
class Server {
public:
    Server() {
        int ends[2];
        if (pipe(ends) != 0) return;
        process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL); // it must not outlive a test that crashes
            close(ends[0]);
            const std::string number = std::to_string(ends[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", "1280x900x24", "-nolisten",
                   "tcp", "-noreset", nullptr);
            _exit(127);
        }
        close(ends[1]);
        char sign = 0;
        std::string number;
        while (read(ends[0], &sign, 1) == 1 && sign != '\n') number += sign;
        close(ends[0]);
        if (!number.empty()) name = ":" + number;
    }
    ~Server() {
        if (process <= 0) return;
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string name;

private:
    pid_t process = -1;
};

// The connections of the tests' own hands. A window that one of them looks at may be closed in that moment,
// which is no error; what others do wrong stays one.
struct Hands {
    std::mutex lock;
    std::set<Display*> open;
    XErrorHandler others = nullptr;
};
Hands hands;

int ForgiveHands(Display* display, XErrorEvent* error) {
    {
        const std::lock_guard guard(hands.lock);
        if (error->error_code == BadWindow && hands.open.contains(display)) return 0;
    }
    return hands.others(display, error);
}

} // namespace

std::string StartVirtualDisplay() {
    static const Server server;
    static const bool forgiving = [] {
        hands.others = XSetErrorHandler(ForgiveHands);
        return true;
    }();
    if (forgiving && !server.name.empty()) setenv("DISPLAY", server.name.c_str(), 1);
    return server.name;
}

CHostDisplay::CHostDisplay() : display(XOpenDisplay(nullptr)) {
    if (display == nullptr) throw std::runtime_error("no display");
    const std::lock_guard guard(hands.lock);
    hands.open.insert(display);
}

CHostDisplay::~CHostDisplay() {
    {
        const std::lock_guard guard(hands.lock);
        hands.open.erase(display);
    }
    XCloseDisplay(display);
}

Window CHostDisplay::MakeWindow(int x, int y, int width, int height, bool mapped) {
    const Window window = XCreateSimpleWindow(display, Root(), x, y, static_cast<unsigned>(width),
                                              static_cast<unsigned>(height), 0, 0, 0x123456);
    XSelectInput(display, window, KeyPressMask | KeyReleaseMask | SubstructureNotifyMask | FocusChangeMask);
    if (mapped) XMapWindow(display, window);
    Sync();
    return window;
}

void CHostDisplay::Destroy(Window window) {
    XDestroyWindow(display, window);
    Sync();
}

Window CHostDisplay::OnlyChild(Window window) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    Sync();
    XQueryTree(display, window, &root, &parent, &children, &count);
    const Window only = count == 1 ? children[0] : 0;
    if (children != nullptr) XFree(children);
    return only;
}

int CHostDisplay::ViewableChildren(Window window) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    XQueryTree(display, window, &root, &parent, &children, &count);
    int viewable = 0;
    for (unsigned i = 0; i < count; ++i) viewable += Attributes(children[i]).map_state == IsViewable ? 1 : 0;
    if (children != nullptr) XFree(children);
    return viewable;
}

XWindowAttributes CHostDisplay::Attributes(Window window) {
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, window, &attributes);
    return attributes;
}

Window CHostDisplay::Focus() {
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(display, &focus, &revert);
    return focus;
}

void CHostDisplay::MovePointer(int x, int y) {
    XTestFakeMotionEvent(display, -1, x, y, CurrentTime);
    Sync();
}

void CHostDisplay::Press(unsigned button, bool down) {
    XTestFakeButtonEvent(display, button, down ? True : False, CurrentTime);
    Sync();
}

void CHostDisplay::Click(int x, int y) {
    MovePointer(x, y);
    Press(1, true);
    Press(1, false);
}

void CHostDisplay::TapKey(unsigned long key) {
    const KeyCode code = XKeysymToKeycode(display, key);
    XTestFakeKeyEvent(display, code, True, CurrentTime);
    XTestFakeKeyEvent(display, code, False, CurrentTime);
    Sync();
}

unsigned long CHostDisplay::Pixel(Window window, int x, int y) {
    XImage* image = XGetImage(display, window, x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) return 0;
    const unsigned long pixel = XGetPixel(image, 0, 0) & 0xffffffUL;
    XDestroyImage(image);
    return pixel;
}

bool CHostDisplay::WaitFor(Window window, int type, const std::function<void()>& work, double seconds) {
    XEvent event;
    return WorkUntil(
        work, [&] { return XCheckTypedWindowEvent(display, window, type, &event) != 0; }, seconds);
}

bool WorkUntil(const std::function<void()>& work, const std::function<bool()>& done, double seconds) {
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (Clock::now() > end) return false;
        work();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace sonorelle::testing
