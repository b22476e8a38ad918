// Shows the editor inside a plain window, to be looked at and for pictures:
//
//     show_window                          the start-up screen, until the window is closed
//     show_window --load FILE              with a recording
//     show_window --message TITLE TEXT     with a message on it
//     show_window --drag FILE              a drag of the mouse in the editor is one of this file, out of it
//     show_window --editors 2              several, each in a window of its own
//     show_window --seconds 3              ends by itself
//
// Tells which keys come on to the window around it.

#include "app/toolkit.h"
#include "host/plugin_core.h"
#include "host/vst_window.h"
#include "ui/fltk_toolkit.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::string load;
    std::string title;
    std::string text;
    std::string drag;
    int editors = 1;
    double seconds = 1e6;
};

Options OptionsFrom(int count, char** words) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--load" && i + 1 < count) options.load = words[++i];
        if (word == "--drag" && i + 1 < count) options.drag = words[++i];
        if (word == "--editors" && i + 1 < count) options.editors = std::atoi(words[++i]);
        if (word == "--seconds" && i + 1 < count) options.seconds = std::atof(words[++i]);
        if (word == "--message" && i + 2 < count) {
            options.title = words[++i];
            options.text = words[++i];
        }
    }
    return options;
}

// A window of the host, and the editor in it.
class Shown {
public:
    explicit Shown(Display* hostDisplay) : display(hostDisplay) {
        constexpr int kWidth = sonorelle::CkvoEditorWindow::kWidth;
        constexpr int kHeight = sonorelle::CkvoEditorWindow::kHeight;
        parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 60, 60, kWidth, kHeight, 0, 0, 0);
        XStoreName(display, parent, "show_window");
        XSelectInput(display, parent, KeyPressMask);
        XMapWindow(display, parent);
        XSync(display, False);
        window = sonorelle::MakePlugInWindow(core, *toolkit);
    }
    ~Shown() {
        window->Close();
        XDestroyWindow(display, parent);
        XSync(display, False);
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    bool Open() {
        const auto start = Clock::now();
        const bool opened = window->Open(reinterpret_cast<void*>(parent));
        const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
        std::printf("open: %.1f ms\n", taken.count());
        return opened;
    }

    void Pass(const Options& options, int pass) {
        window->Idle();
        if (pass == 20 && !options.load.empty()) core.LoadAudioFile(options.load);
        if (pass == 20 && !options.text.empty()) core.ShowMessage(options.title, options.text);
        if (!options.drag.empty() && IsPressed()) {
            toolkit->SetSelection(options.drag);
            const bool taken = dynamic_cast<sonorelle::CFltkToolkit&>(*toolkit).DragSelectionOut();
            std::printf("dragged: %s\n", taken ? "taken" : "not taken");
        }
    }
    bool IsOpen() const { return window->IsOpen(); }

private:
    // The button is down within the editor's lower part, where nothing else would be pressed.
    bool IsPressed() const {
        Window root = 0;
        Window child = 0;
        int x = 0;
        int y = 0;
        int rootX = 0;
        int rootY = 0;
        unsigned buttons = 0;
        XQueryPointer(display, parent, &root, &child, &rootX, &rootY, &x, &y, &buttons);
        return (buttons & Button1Mask) != 0 && x >= 0 && x < sonorelle::CkvoEditorWindow::kWidth && y > 40 &&
               y < sonorelle::CkvoEditorWindow::kHeight;
    }

    Display* const display;
    Window parent = 0;
    const std::unique_ptr<sonorelle::CkvoToolkit> toolkit = sonorelle::MakePlugInToolkit();
    sonorelle::CvirelainePlugIn core{nullptr, *toolkit, {false}}; // no cache: the analysis is to be seen
    std::unique_ptr<sonorelle::CkvoEditorWindow> window;
};

void TellKeys(Display* display) {
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type != KeyPress) continue;
        const char* name = XKeysymToString(XLookupKeysym(&event.xkey, 0));
        std::printf("key: %s\n", name != nullptr ? name : "?");
    }
}

} // namespace

int main(int count, char** words) {
    const Options options = OptionsFrom(count, words);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "show_window: no display\n");
        return 1;
    }
    {
        std::vector<std::unique_ptr<Shown>> editors;
        for (int i = 0; i < options.editors; ++i) {
            editors.push_back(std::make_unique<Shown>(display));
            if (!editors.back()->Open()) return 1;
        }
        const auto end = Clock::now() + std::chrono::duration<double>(options.seconds);
        for (int pass = 0; Clock::now() < end && !editors.empty() && editors.front()->IsOpen(); ++pass) {
            for (const auto& editor : editors) editor->Pass(options, pass);
            TellKeys(display);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    XCloseDisplay(display);
    return 0;
}
