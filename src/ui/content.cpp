#include "ui/content.h"

#include "ui/label_drawing.h"
#include "ui/theme.h"

#include <FL/fl_draw.H>

namespace sonorelle {

namespace {

constexpr Colour kPaper = LerpColour(kPanelColour, kWhite, 0.55F);

// The place of the pitch view, as long as there is none.
class Middle final : public Fl_Group {
public:
    Middle(Placement place, const bool& showText)
        : Fl_Group(place.x, place.y, place.width, place.height), text(showText) {
        box(FL_FLAT_BOX);
        color(ToolkitColour(kPanelColour));
        end();
    }

protected:
    void draw() override {
        if ((damage() & ~FL_DAMAGE_CHILD) != 0) {
            DrawFrame(x(), y(), w(), h(), kPaper);
            if (text)
                DrawLabel(kStartText, kLabelSize, {x(), y(), w(), h()}, LabelAlign::kCentre, kLabelColour);
        }
        draw_children();
    }

private:
    const bool& text;
};

Placement Moved(Placement place, int x, int y) {
    return {place.x + x, place.y + y, place.width, place.height};
}

} // namespace

CkvoContent::CkvoContent(Placement place) : Fl_Group(place.x, place.y, place.width, place.height) {
    box(FL_FLAT_BOX);
    color(ToolkitColour(kPanelColour));
    const ContentLayout layout = LayOutContent(place.width, place.height);
    const auto frame = [&](const FramePlace& where, const char* title) {
        auto* made = new CkvoToolWindow(Moved(where.frame, place.x, place.y), title);
        made->end();
        return made;
    };
    frames = {frame(layout.synchronization, kSynchronizationTitle),
              frame(layout.tuning, kTuningTitle),
              frame(layout.voices, kVoiceTitle),
              frame(layout.melody, kMelodyTitle),
              frame(layout.choir, kChoirTitle),
              frame(layout.snapshots, kSnapshotsTitle)};
    const Placement view = Inset(layout.view.frame, 0, 4, 0, 6); // a little air to the frames around it
    middle = new Middle(Moved(view, place.x, place.y), startText);
    end();
    resizable(middle);
}

void CkvoContent::ShowStartText(bool shown) {
    if (startText == shown) return;
    startText = shown;
    middle->redraw();
}

} // namespace sonorelle
