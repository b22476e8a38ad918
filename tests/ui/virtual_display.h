// A display of the tests' own, without a screen, and a program on it that stands for a host: windows, events
// from a user, pixels.
//
// The server is started once for the test program and ends with it. Where none is installed the tests say so
// and are skipped.

#pragma once

#include <X11/Xlib.h>

#include <cstdint>
#include <functional>
#include <string>

namespace sonorelle::testing {

// The variable DISPLAY names it afterwards. Empty: there is none to be had.
std::string StartVirtualDisplay();

// The host's own connection.
class CHostDisplay {
public:
    CHostDisplay();
    ~CHostDisplay();
    CHostDisplay(const CHostDisplay&) = delete;
    CHostDisplay& operator=(const CHostDisplay&) = delete;

    Display* Get() const { return display; }
    Window Root() const { return DefaultRootWindow(display); }
    Window MakeWindow(int x, int y, int width, int height, bool mapped = true);
    void Destroy(Window window);
    Window OnlyChild(Window window); // 0: none, or several
    int ViewableChildren(Window window);
    XWindowAttributes Attributes(Window window);
    Window Focus();

    void MovePointer(int x, int y); // on the screen
    void Press(unsigned button, bool down);
    void Click(int x, int y);
    void TapKey(unsigned long key);
    unsigned long Pixel(Window window, int x, int y);
    // The next event of a type for a window, if it has come within `seconds`, while `work` goes on.
    bool WaitFor(Window window, int type, const std::function<void()>& work, double seconds = 3);
    void Sync() { XSync(display, False); }

private:
    Display* display;
};

// Repeats `work` until `done`, or until the time is over: false.
bool WorkUntil(const std::function<void()>& work, const std::function<bool()>& done, double seconds = 3);

} // namespace sonorelle::testing
