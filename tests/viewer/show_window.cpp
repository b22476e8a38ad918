// Shows the editor inside a plain window, to be looked at and for pictures:
//
//     show_window                          the start-up screen, until the window is closed
//     show_window --load FILE              with a recording
//     show_window --message TITLE TEXT     with a message on it
//     show_window --seconds 3              ends by itself

#include "app/toolkit.h"
#include "host/plugin_core.h"
#include "host/vst_window.h"

#include <X11/Xlib.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::string load;
    std::string title;
    std::string text;
    double seconds = 1e6;
};

Options OptionsFrom(int count, char** words) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--load" && i + 1 < count) options.load = words[++i];
        if (word == "--seconds" && i + 1 < count) options.seconds = std::atof(words[++i]);
        if (word == "--message" && i + 2 < count) {
            options.title = words[++i];
            options.text = words[++i];
        }
    }
    return options;
}

} // namespace

int main(int count, char** words) {
    using namespace sonorelle;
    const Options options = OptionsFrom(count, words);
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "show_window: no display\n");
        return 1;
    }
    const Window parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 60, 60,
                                              CkvoEditorWindow::kWidth, CkvoEditorWindow::kHeight, 0, 0, 0);
    XStoreName(display, parent, "show_window");
    XMapWindow(display, parent);
    XSync(display, False);

    const std::unique_ptr<CkvoToolkit> toolkit = MakePlugInToolkit();
    CvirelainePlugIn core(nullptr, *toolkit, {false}); // no cache: the analysis is to be seen
    const std::unique_ptr<CkvoEditorWindow> window = MakePlugInWindow(core, *toolkit);
    const auto start = Clock::now();
    if (!window->Open(reinterpret_cast<void*>(parent))) return 1;
    std::printf("open: %.1f ms\n", std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    const auto end = start + std::chrono::duration<double>(options.seconds);
    for (int pass = 0; Clock::now() < end && window->IsOpen(); ++pass) {
        window->Idle();
        if (pass == 20 && !options.load.empty()) core.LoadAudioFile(options.load);
        if (pass == 20 && !options.text.empty()) core.ShowMessage(options.title, options.text);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    window->Close();
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
    return 0;
}
