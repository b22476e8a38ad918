#include "ui/dialog.h"

#include "ui/native_window.h"
#include "ui/pixel_canvas.h"
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

// A long name has no place where its line could be broken.
int WidthForText(const std::string& text) {
    constexpr int kWidest = 800; // pixels
    fl_font(FL_HELVETICA, kLabelSize);
    int width = 0;
    int height = 0;
    fl_measure(Escaped(text).c_str(), width, height);
    return std::clamp(width + 4 * kMargin, kMessageWidth, kWidest);
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

void ConfirmWith(Fl_Button& button, bool& confirmed) {
    button.shortcut(FL_Enter);
    button.callback(Confirm, &confirmed);
}

// A tick or a cross on a piece of plastic.
class MarkButton final : public Fl_Button {
public:
    MarkButton(int left, int windowHeight, bool isTick)
        : Fl_Button(left, windowHeight - kButtonHeight - kMargin + 2, kMarkWidth, kButtonHeight),
          tick(isTick) {
        tooltip(tick ? kNameOkayTip : kNameCancelTip);
    }
    static constexpr int kMarkWidth = 40; // pixels

protected:
    void draw() override {
        const bool down = value() != 0;
        const Colour top = LerpColour(kPanelColour, down ? kBlack : kWhite, down ? 0.14F : 0.75F);
        const Colour bottom = LerpColour(kPanelColour, down ? kWhite : kBlack, down ? 0.25F : 0.06F);
        CPixelCanvas canvas(w(), h(), kPanelColour);
        const CanvasBox whole{0, 0, static_cast<float>(w()), static_cast<float>(h())};
        canvas.FillRoundedBox(whole, 4, top, bottom);
        canvas.StrokeRoundedBox(whole, 4, 1, kFrameColour);
        const float x0 = whole.width / 2;
        const float y0 = whole.height / 2 + (down ? 1.0F : 0.0F);
        const Colour ink = kVoiceColours[tick ? 3 : 1];
        if (tick) {
            canvas.DrawLine({x0 - 5, y0}, {x0 - 1.5F, y0 + 4}, 2, ink);
            canvas.DrawLine({x0 - 1.5F, y0 + 4}, {x0 + 5, y0 - 4}, 2, ink);
        } else {
            canvas.DrawLine({x0 - 4, y0 - 4}, {x0 + 4, y0 + 4}, 2, ink);
            canvas.DrawLine({x0 - 4, y0 + 4}, {x0 + 4, y0 - 4}, 2, ink);
        }
        fl_draw_image(canvas.Data(), x(), y(), w(), h());
    }

private:
    const bool tick;
};

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
    KeepAbove(*this, hostWindow);
}

void KeepAbove(const Fl_Window& window, unsigned long hostWindow) {
    if (hostWindow == 0) return;
    if (const Window below = TopWindowOf(hostWindow))
        XSetTransientForHint(fl_display, fl_xid(&window), below);
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
    : CkvoDialog(WidthForText(questionText), kMessageHeight + 20, "sonorelle"),
      text(std::move(questionText)) {
    AddText(text, w(), h());
    ConfirmWith(*AddButton("Yes", w() / 2 - kButtonWidth - kMargin / 2, h()), confirmed);
    AddButton("No", w() / 2 + kMargin / 2, h())->callback(HideWindow);
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
    const int pair = w() - kMargin - 2 * MarkButton::kMarkWidth - kMargin / 2;
    auto* cancel = new MarkButton(pair, h(), false);
    cancel->callback(HideWindow);
    auto* okay = new MarkButton(pair + MarkButton::kMarkWidth + kMargin / 2, h(), true);
    ConfirmWith(*okay, confirmed);
    end();
    input->take_focus();
}

std::string CkvoNameWindow::Name() const { return {input->value(), static_cast<std::size_t>(input->size())}; }

} // namespace sonorelle
