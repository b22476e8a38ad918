#include "neighbour.h"

#include <FL/Fl.H>
#include <FL/Fl_Double_Window.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <clocale>
#include <string>

namespace {

using sonorelle::test::kNeighbourColour;
using sonorelle::test::kNeighbourSize;

class Picture final : public Fl_Double_Window {
public:
    Picture() : Fl_Double_Window(-2 * kNeighbourSize, 0, kNeighbourSize, kNeighbourSize) { end(); }

protected:
    void draw() override {
        fl_color(static_cast<uchar>(kNeighbourColour >> 16), static_cast<uchar>(kNeighbourColour >> 8 & 0xFF),
                 static_cast<uchar>(kNeighbourColour & 0xFF));
        fl_rectf(0, 0, w(), h());
        fl_color(FL_BLACK);
        fl_font(FL_TIMES_BOLD, 17);
        fl_draw("the neighbour", 20, 100);
    }
};

Picture* picture = nullptr;
XErrorHandler hostErrors = nullptr;
XIOErrorHandler hostLosses = nullptr;
std::string hostLanguage;
int errors = 0;

int CountError(Display*, XErrorEvent*) {
    ++errors;
    return 0;
}

// The toolkit's own opening sets handlers and the language for the whole process. Most plug-ins leave them
// there, as long as they are loaded.
bool OpenDisplay() {
    if (fl_display != nullptr) return true;
    hostLanguage = std::setlocale(LC_ALL, nullptr);
    hostErrors = XSetErrorHandler(nullptr);
    hostLosses = XSetIOErrorHandler(nullptr);
    fl_open_display();
    XSetErrorHandler(CountError);
    return fl_display != nullptr;
}

bool Open(unsigned long parent) {
    if (!OpenDisplay()) return false;
    if (picture == nullptr) picture = new Picture;
    picture->position(-2 * kNeighbourSize, 0);
    picture->border(0);
    picture->set_override();
    picture->show();
    XReparentWindow(fl_display, fl_xid(picture), parent, 0, 0);
    XMapWindow(fl_display, fl_xid(picture));
    XSync(fl_display, False);
    picture->redraw();
    return true;
}

void Idle() { Fl::check(); }

void Close() {
    if (picture == nullptr) return;
    picture->hide();
    XSync(fl_display, False);
}

int Errors() { return errors; }

void Leave() {
    delete picture;
    picture = nullptr;
    if (fl_display == nullptr) return;
    fl_close_display();
    XSetErrorHandler(hostErrors);
    XSetIOErrorHandler(hostLosses);
    std::setlocale(LC_ALL, hostLanguage.c_str());
}

} // namespace

extern "C" [[gnu::visibility("default")]] const sonorelle::test::NeighbourCalls Neighbour;
extern "C" const sonorelle::test::NeighbourCalls Neighbour = {Open, Idle, Close, Errors, Leave};
