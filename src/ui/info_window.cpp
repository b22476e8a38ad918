#include "ui/info_window.h"

#include "ui/label_drawing.h"
#include "ui/pixel_canvas.h"
#include "ui/theme.h"

#include <FL/Fl_Button.H>
#include <FL/filename.H>
#include <FL/fl_draw.H>

#include <array>
#include <utility>

namespace sonorelle {

namespace {

constexpr int kWidth = 320; // pixels
constexpr int kHeight = 190;
constexpr int kPictureHeight = 110;
constexpr int kInfoButtonWidth = 90;
constexpr int kInfoButtonHeight = 22;
constexpr Colour kNight = ColourFromRgb(0x232a33);

// One sung line, and three that go with it.
struct LogoNote {
    float x;
    float y;
    float width;
};
constexpr std::array<std::array<LogoNote, 4>, 4> kLogoNotes = {{
    {{{40, 28, 52}, {98, 20, 44}, {148, 24, 60}, {214, 14, 66}}},
    {{{40, 42, 52}, {98, 38, 44}, {148, 36, 60}, {214, 30, 66}}},
    {{{40, 54, 52}, {98, 52, 44}, {148, 50, 60}, {214, 46, 66}}},
    {{{40, 70, 52}, {98, 64, 44}, {148, 68, 60}, {214, 62, 66}}},
}};

void DrawPicture() {
    CPixelCanvas canvas(kWidth, kPictureHeight, kNight);
    canvas.FillRoundedBox({0, 0, kWidth, kPictureHeight}, 0, LerpColour(kNight, kWhite, 0.12F), kNight);
    for (std::size_t voice = 0; voice < kLogoNotes.size(); ++voice) {
        const Colour light = LerpColour(kVoiceColours[voice], kWhite, 0.35F);
        for (const LogoNote& note : kLogoNotes[voice])
            canvas.FillRoundedBox({note.x, note.y, note.width, 7}, 3.5F, light,
                                  LerpColour(light, kVoiceColours[voice], 0.7F));
    }
    fl_draw_image(canvas.Data(), 0, 0, kWidth, kPictureHeight);
    DrawLabel("@b sonorelle", 20, {0, kPictureHeight - 29, kWidth, 26}, LabelAlign::kCentre, kWhite);
}

} // namespace

CkvoInfoWindow::CkvoInfoWindow(const std::string& versionText, std::string updateAddress)
    : CkvoDialog(kWidth, kHeight, "sonorelle"), version(versionText), address(std::move(updateAddress)) {
    set_non_modal();
    const auto button = [this](const char* label, int left) {
        auto* made =
            new Fl_Button(left, kHeight - kInfoButtonHeight - 10, kInfoButtonWidth, kInfoButtonHeight, label);
        made->box(kvoRPlasticBox());
        made->down_box(kvosRPlasticBox());
        return made;
    };
    const int pair = kWidth / 2 - kInfoButtonWidth - 5;
    button("Close", HasUpdateButton() ? kWidth / 2 + 5 : (kWidth - kInfoButtonWidth) / 2)
        ->callback([](Fl_Widget* widget, void*) { widget->top_window()->hide(); });
    if (HasUpdateButton()) {
        Fl_Button* update = button("Update", pair);
        update->tooltip(kUpdateTip);
        update->callback(
            [](Fl_Widget* widget, void* window) {
                fl_open_uri(static_cast<CkvoInfoWindow*>(window)->address.c_str());
                widget->top_window()->hide();
            },
            this);
    }
    end();
}

void CkvoInfoWindow::draw() {
    fl_color(color());
    fl_rectf(0, kPictureHeight, w(), h() - kPictureHeight);
    DrawPicture();
    DrawLabel(version, kLabelSize, {0, kPictureHeight + 8, w(), 24}, LabelAlign::kCentre, kLabelColour);
    draw_children();
    fl_color(ToolkitColour(kFrameColour));
    fl_rect(0, 0, w(), h());
}

} // namespace sonorelle
