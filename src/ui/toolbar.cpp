#include "ui/toolbar.h"

#include "ui/theme.h"
#include "ui/toolbar_button.h"

#include <FL/fl_draw.H>

#include <utility>

namespace sonorelle {

CkvoToolbar::CkvoToolbar(Callback onPress)
    : Fl_Group(0, 0, kWindowWidth, kContent.y), callback(std::move(onPress)) {
    box(FL_FLAT_BOX);
    color(ToolkitColour(kPanelColour));
    for (const ToolbarEntry& entry : kToolbar) {
        auto* button = new CkvoToolbarButton(entry);
        button->callback(
            [](Fl_Widget* widget, void* bar) {
                static_cast<CkvoToolbar*>(bar)->callback(static_cast<CkvoToolbarButton*>(widget)->Which());
            },
            this);
        buttons[static_cast<std::size_t>(entry.button)] = button;
    }
    end();
    Apply();
}

// A line keeps it apart from the panels.
void CkvoToolbar::draw() {
    Fl_Group::draw();
    fl_color(ToolkitColour(LerpColour(kFrameColour, kPanelColour, 0.5F)));
    fl_xyline(x(), y() + h() - 2, x() + w() - 1);
}

void CkvoToolbar::Show(const ToolbarLook& newLook) {
    if (newLook == look) return;
    look = newLook;
    Apply();
}

void CkvoToolbar::SetInputActive(bool active) {
    if (active == inputActive) return;
    inputActive = active;
    Apply();
}

void CkvoToolbar::Apply() {
    for (CkvoToolbarButton* button : buttons)
        button->Show(inputActive && IsActive(look, button->Which()), IsOn(look, button->Which()));
}

} // namespace sonorelle
