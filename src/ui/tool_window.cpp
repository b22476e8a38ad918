#include "ui/tool_window.h"

#include "ui/label_drawing.h"
#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <utility>

namespace sonorelle {

namespace {

constexpr int kTitleLeft = 10; // pixels, from the frame's left edge
constexpr int kTitleGap = 4;   // on both sides of the title

} // namespace

CkvoToolWindow::CkvoToolWindow(Placement place, std::string frameTitle)
    : Fl_Group(place.x, place.y, place.width, place.height), title(std::move(frameTitle)) {
    box(FL_FLAT_BOX);
    color(ToolkitColour(kPanelColour));
}

void CkvoToolWindow::draw() {
    if ((damage() & ~FL_DAMAGE_CHILD) == 0) {
        draw_children();
        return;
    }
    draw_box();
    const int above = title.empty() ? 0 : kTitleHeight / 2;
    DrawFrame(x() + 1, y() + above, w() - 2, h() - above - 1, kPanelColour);
    if (!title.empty()) {
        const LabelSize size = MeasureLabel(title, kLabelSize);
        const Placement row{x() + kTitleLeft, y(), size.width + 2 * kTitleGap, kTitleHeight};
        fl_color(color());
        fl_rectf(row.x, row.y, row.width, row.height);
        DrawLabel(title, kLabelSize, row, LabelAlign::kCentre,
                  active_r() != 0 ? kLabelColour : kDisabledColour);
    }
    draw_children();
}

} // namespace sonorelle
