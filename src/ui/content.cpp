#include "ui/content.h"

#include "app/pitch_view.h"
#include "ui/label_drawing.h"
#include "ui/pitch_view_face.h"
#include "ui/theme.h"

#include <FL/fl_draw.H>

#include <utility>

namespace sonorelle {

namespace {

constexpr Colour kPaper = LerpColour(kPanelColour, kWhite, 0.55F);

// The line around the view ends where that of the mixer below it does.
Placement AroundView(const ContentLayout& layout) {
    constexpr int kGap = 3; // pixels, with the line
    const Placement view = layout.view.panel;
    const Placement mixer = layout.voices.frame;
    return {mixer.x + 1, view.y - kGap, mixer.width - 2, view.height + 2 * kGap};
}

// The place of the pitch view, and the line around it. The text is pale while nothing can be dropped.
class Middle final : public Fl_Group {
public:
    Middle(Placement place, Placement placeOfView, const std::function<CkvoPitchView*()>& pitchView,
           const bool& takesDrop)
        : Fl_Group(place.x, place.y, place.width, place.height), currentView(pitchView), inner(placeOfView),
          bright(takesDrop) {
        box(FL_FLAT_BOX);
        color(ToolkitColour(kPanelColour));
        end();
    }

protected:
    void draw() override {
        const Colour line = bright ? kVoiceColours[0] : kFrameColour;
        if (const CkvoPitchView* view = currentView()) {
            DrawFrame(x(), y(), w(), h(), kPanelColour, line);
            DrawPitchView(*view, inner);
        } else {
            DrawFrame(x(), y(), w(), h(), kPaper, line);
            DrawLabel(kStartText, kLabelSize, {x(), y(), w(), h()}, LabelAlign::kCentre,
                      active_r() != 0 ? kLabelColour : kDisabledColour);
        }
    }

private:
    const std::function<CkvoPitchView*()>& currentView;
    const Placement inner;
    const bool& bright;
};

Placement Moved(Placement place, int x, int y) {
    return {place.x + x, place.y + y, place.width, place.height};
}

} // namespace

CkvoContent::CkvoContent(Placement place, std::function<CkvoPitchView*()> pitchView)
    : Fl_Group(place.x, place.y, place.width, place.height), currentView(std::move(pitchView)) {
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
    viewPlace = Moved(layout.view.panel, place.x, place.y);
    middle = new Middle(Moved(AroundView(layout), place.x, place.y), viewPlace, currentView, dropHint);
    end();
    resizable(middle);
}

void CkvoContent::FollowView() {
    CkvoPitchView* view = currentView();
    if (view != nullptr) {
        const PitchViewLayout& layout = view->GetAxes().layout;
        if (layout.width != viewPlace.width || layout.height != viewPlace.height)
            view->SetSize(viewPlace.width, viewPlace.height);
    }
    if ((view != nullptr) == viewShown) return;
    viewShown = view != nullptr;
    middle->redraw();
}

void CkvoContent::ShowDropHint(bool on) {
    if (std::exchange(dropHint, on) != on) middle->redraw();
}

void CkvoContent::RedrawPanels() {
    if (viewShown) middle->redraw();
}

} // namespace sonorelle
