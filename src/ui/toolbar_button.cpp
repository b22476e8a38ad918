#include "ui/toolbar_button.h"

#include "ui/label_drawing.h"
#include "ui/theme.h"
#include "ui/toolbar_pictures.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

namespace sonorelle {

namespace {

constexpr Colour kLogoColour = ColourFromRgb(0x3a4350);

} // namespace

CkvoToolbarButton::CkvoToolbarButton(const ToolbarEntry& toolbarEntry)
    : Fl_Button(PlaceOf(toolbarEntry).x, PlaceOf(toolbarEntry).y, toolbarEntry.place.width,
                toolbarEntry.place.height),
      entry(toolbarEntry) {
    clear_visible_focus();
    tooltip(entry.tip);
}

void CkvoToolbarButton::Show(bool isActive, bool isOn) {
    if (isActive != (active() != 0)) {
        if (isActive) {
            activate();
        } else {
            deactivate();
            hovered = false;
        }
    }
    if (isOn == on) return;
    on = isOn;
    redraw();
}

int CkvoToolbarButton::handle(int event) {
    if (event == FL_ENTER || event == FL_LEAVE || event == FL_HIDE) {
        hovered = event == FL_ENTER && active_r() != 0;
        redraw();
        if (event == FL_ENTER) return 1;
    }
    return Fl_Button::handle(event);
}

void CkvoToolbarButton::draw() {
    ButtonLook look = ButtonLook::kNormal;
    if (active_r() == 0) {
        look = ButtonLook::kDisabled;
    } else if (value() != 0) {
        look = ButtonLook::kPressed;
    } else if (hovered) {
        look = ButtonLook::kHovered;
    }
    const CPixelCanvas picture = DrawToolbarPicture(entry, look, on);
    fl_draw_image(picture.Data(), x(), y(), w(), h());
    const int down = look == ButtonLook::kPressed ? 1 : 0;
    const Colour colour = look == ButtonLook::kDisabled ? kDisabledColour : kLabelColour;
    const Placement place{x(), y() + down, w(), h()};
    if (entry.label != nullptr) DrawLabel(entry.label, kTextSize, place, LabelAlign::kCentre, colour);
    if (entry.button == ToolbarButton::kLogo) {
        const Placement word{place.x + kLogoSignWidth, place.y, place.width - kLogoSignWidth - 4,
                             place.height};
        const Colour awake = hovered ? kVoiceColours[0] : kLogoColour;
        DrawLabel("@b sonorelle", kLabelSize, word, LabelAlign::kCentre,
                  look == ButtonLook::kDisabled ? kDisabledColour : awake);
    }
}

} // namespace sonorelle
