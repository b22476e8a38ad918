#include "ui/dialog.h"

#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Input.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <algorithm>
#include <utility>

namespace sonorelle {

namespace {

constexpr int kMargin = 10; // pixels
constexpr int kButtonWidth = 80;
constexpr int kButtonHeight = 22;

// The toolkit takes an @ for the sign of a symbol.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char sign : text) escaped.append(sign == '@' ? 2 : 1, sign);
    return escaped;
}

void AddText(const std::string& text, int width, int height) {
    auto* box = new Fl_Box(kMargin, kMargin / 2, width - 2 * kMargin, height - kButtonHeight - 2 * kMargin);
    box->copy_label(Escaped(text).c_str());
    box->align(FL_ALIGN_CENTER | FL_ALIGN_INSIDE | FL_ALIGN_WRAP);
}

Fl_Button* AddButton(const char* label, int left, int windowHeight) {
    const int top = windowHeight - kButtonHeight - kMargin + 2;
    auto* button = new Fl_Button(left, top, kButtonWidth, kButtonHeight, label);
    button->box(kvoRPlasticBox());
    button->down_box(kvosRPlasticBox());
    return button;
}

void HideWindow(Fl_Widget* widget, void*) { widget->top_window()->hide(); }

void Confirm(Fl_Widget* widget, void* flag) {
    *static_cast<bool*>(flag) = true;
    widget->top_window()->hide();
}

// Return is the first, Escape the second.
void AddTwoButtons(const char* first, const char* second, int width, int height, bool& confirmed) {
    auto* yes = AddButton(first, width / 2 - kButtonWidth - kMargin / 2, height);
    yes->shortcut(FL_Enter);
    yes->callback(Confirm, &confirmed);
    AddButton(second, width / 2 + kMargin / 2, height)->callback(HideWindow);
}

// The window of the host that a window manager knows.
Window TopOf(Window window) {
    while (true) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        if (XQueryTree(fl_display, window, &root, &parent, &children, &count) == 0) return 0;
        if (children != nullptr) XFree(children);
        if (parent == root || parent == 0) return window;
        unsigned char* state = nullptr;
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long rest = 0;
        const Atom managed = XInternAtom(fl_display, "WM_STATE", False);
        XGetWindowProperty(fl_display, window, managed, 0, 0, False, AnyPropertyType, &type, &format, &items,
                           &rest, &state);
        if (state != nullptr) XFree(state);
        if (type != None) return window;
        window = parent;
    }
}

} // namespace

CkvoDialog::CkvoDialog(int dialogWidth, int dialogHeight, std::string dialogTitle)
    : Fl_Double_Window(0, 0, dialogWidth, dialogHeight), title(std::move(dialogTitle)) {
    color(ToolkitColour(kPanelColour));
    label(title.c_str());
    callback(HideWindow); // Escape, and the window manager's button
    set_modal();
}

void CkvoDialog::OpenAt(int left, int top, unsigned long hostWindow) {
    position(std::max(left, 0), std::max(top, 0));
    show();
    if (hostWindow == 0) return;
    if (const Window above = TopOf(hostWindow)) XSetTransientForHint(fl_display, fl_xid(this), above);
}

void CkvoDialog::draw() {
    Fl_Double_Window::draw();
    fl_color(ToolkitColour(kFrameColour));
    fl_rect(0, 0, w(), h());
}

CkvoMessageWindow::CkvoMessageWindow(const std::string& messageTitle, std::string messageText)
    : CkvoDialog(kMessageWidth, kMessageHeight, messageTitle), text(std::move(messageText)) {
    AddText(text, w(), h());
    auto* button = AddButton("OK", (w() - kButtonWidth) / 2, h());
    button->shortcut(FL_Enter);
    button->callback(HideWindow);
    end();
}

CkvoQuestionWindow::CkvoQuestionWindow(std::string questionText)
    : CkvoDialog(kMessageWidth, kMessageHeight + 20, "sonorelle"), text(std::move(questionText)) {
    AddText(text, w(), h());
    AddTwoButtons("Yes", "No", w(), h(), confirmed);
    end();
}

CkvoNameWindow::CkvoNameWindow(std::string nameLabel, const std::string& presetText)
    : CkvoDialog(kMessageWidth, kMessageHeight + 15, "sonorelle"), label(std::move(nameLabel)) {
    auto* caption = new Fl_Box(kMargin, 4, w() - 2 * kMargin, 22);
    caption->copy_label(Escaped(label).c_str());
    caption->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    input = new Fl_Input(kMargin, 28, w() - 2 * kMargin, 24);
    input->value(presetText.c_str());
    input->textsize(kTextSize);
    input->position(input->size(), 0); // all of it is selected, and typing replaces it
    AddTwoButtons("OK", "Cancel", w(), h(), confirmed);
    end();
    input->take_focus();
}

std::string CkvoNameWindow::Name() const { return {input->value(), static_cast<std::size_t>(input->size())}; }

} // namespace sonorelle
