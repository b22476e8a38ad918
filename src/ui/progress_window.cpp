#include "ui/progress_window.h"

#include "ui/label_drawing.h"
#include "ui/pixel_canvas.h"
#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace sonorelle {

namespace {

constexpr int kRays = 8; // of the spinner: one for each step that it takes

// A cross that turns red under the pointer. The bar ends where the button begins: its picture keeps away.
class CancelButton final : public Fl_Button {
public:
    explicit CancelButton(Placement place) : Fl_Button(place.x, place.y, place.width, place.height) {
        clear_visible_focus();
        tooltip(kCancelTip);
    }

    int handle(int event) override {
        if (event == FL_ENTER || event == FL_LEAVE) {
            hovered = event == FL_ENTER;
            redraw();
            if (hovered) return 1;
        }
        return Fl_Button::handle(event);
    }

protected:
    void draw() override {
        const Colour base = hovered || value() != 0 ? kVoiceColours[1] : kPanelColour;
        const Colour cross = hovered || value() != 0 ? kWhite : ColourFromRgb(0x2b333d);
        const float shade = value() != 0 ? 0.2F : 0.0F;
        CPixelCanvas canvas(w(), h(), kPanelColour);
        const CanvasBox body{2, 1, static_cast<float>(w() - 2), static_cast<float>(h() - 2)};
        canvas.FillRoundedBox(body, 4, LerpColour(LerpColour(base, kWhite, 0.35F), kBlack, shade), base);
        canvas.StrokeRoundedBox(body, 4, 1, kFrameColour);
        canvas.DrawLine({6.5F, 5.5F}, {12.5F, 11.5F}, 1.6F, cross);
        canvas.DrawLine({12.5F, 5.5F}, {6.5F, 11.5F}, 1.6F, cross);
        fl_draw_image(canvas.Data(), x(), y(), w(), h());
    }

private:
    bool hovered = false;
};

void DrawSpinner(int degrees) {
    CPixelCanvas canvas(kSpinnerPlace.width, kSpinnerPlace.height, kPanelColour);
    const CanvasPoint centre{kSpinnerPlace.width / 2.0F, kSpinnerPlace.height / 2.0F};
    for (int ray = 0; ray < kRays; ++ray) {
        const float turn = (static_cast<float>(degrees) - 360.0F * static_cast<float>(ray) / kRays - 90) *
                           std::numbers::pi_v<float> / 180;
        const float age = static_cast<float>(ray) / kRays; // the rays behind the first one fade
        const auto point = [&](float radius) {
            return CanvasPoint{centre.x + radius * std::cos(turn), centre.y + radius * std::sin(turn)};
        };
        canvas.DrawLine(point(3), point(6.3F), 1.7F, LerpColour(kVoiceColours[0], kPanelColour, age));
    }
    fl_draw_image(canvas.Data(), kSpinnerPlace.x, kSpinnerPlace.y, kSpinnerPlace.width, kSpinnerPlace.height);
}

void DrawBar(int percent) {
    CPixelCanvas canvas(kBarPlace.width, kBarPlace.height, kPanelColour);
    const auto width = static_cast<float>(canvas.Width());
    const auto height = static_cast<float>(canvas.Height());
    canvas.FillRoundedBox({0, 0, width, height}, 4, LerpColour(kPanelColour, kBlack, 0.12F),
                          LerpColour(kPanelColour, kWhite, 0.3F));
    const float filled = (width - 4) * static_cast<float>(percent) / 100;
    if (percent > 0)
        canvas.FillRoundedBox({2, 2, filled, height - 4}, 3, LerpColour(kVoiceColours[0], kWhite, 0.45F),
                              kVoiceColours[0]);
    canvas.StrokeRoundedBox({0, 0, width, height}, 4, 1, kFrameColour);
    fl_draw_image(canvas.Data(), kBarPlace.x, kBarPlace.y, kBarPlace.width, kBarPlace.height);
    const std::string text = std::to_string(percent) + " %";
    DrawLabel(text, kTextSize, kBarPlace, LabelAlign::kCentre, kLabelColour);
}

} // namespace

CkvoProgressWindow::CkvoProgressWindow()
    : Fl_Double_Window(kProgressPlace.x, kProgressPlace.y, kProgressPlace.width, kProgressPlace.height),
      cancel(new CancelButton(kCancelPlace)) {
    end();
    color(ToolkitColour(kPanelColour));
    cancel->callback(
        [](Fl_Widget*, void* window) { static_cast<CkvoProgressWindow*>(window)->cancelled = true; }, this);
}

void CkvoProgressWindow::Open() {
    percent = 0;
    degrees = 0;
    cancelled = false;
}

void CkvoProgressWindow::ShowProgress(int newPercent, int spinnerDegrees) {
    const int held = std::clamp(newPercent, 0, 100);
    const bool changed = held != percent || spinnerDegrees != degrees;
    percent = held;
    degrees = spinnerDegrees;
    if (shown() == 0 && parent() != nullptr && window()->shown() != 0) {
        show();
    } else if (changed) {
        redraw();
    }
}

void CkvoProgressWindow::draw() {
    fl_color(color());
    fl_rectf(0, 0, w(), h());
    fl_color(ToolkitColour(kFrameColour));
    fl_rect(0, 0, w(), h());
    DrawSpinner(degrees);
    DrawBar(percent);
    draw_children();
}

} // namespace sonorelle
