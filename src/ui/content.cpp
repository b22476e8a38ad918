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

// Within the frame around it.
Placement PlaceOfView(const Fl_Widget& frame) {
    constexpr int kLine = 2; // pixels
    return {frame.x() + kLine, frame.y() + kLine, frame.w() - 2 * kLine, frame.h() - 2 * kLine};
}

// The place of the pitch view.
class Middle final : public Fl_Group {
public:
    Middle(Placement place, const std::function<CkvoPitchView*()>& pitchView)
        : Fl_Group(place.x, place.y, place.width, place.height), currentView(pitchView) {
        box(FL_FLAT_BOX);
        color(ToolkitColour(kPanelColour));
        end();
    }

protected:
    void draw() override {
        if (const CkvoPitchView* view = currentView()) {
            DrawFrame(x(), y(), w(), h(), kPanelColour);
            DrawPitchView(*view, PlaceOfView(*this));
        } else {
            DrawFrame(x(), y(), w(), h(), kPaper);
            DrawLabel(kStartText, kLabelSize, {x(), y(), w(), h()}, LabelAlign::kCentre, kLabelColour);
        }
    }

private:
    const std::function<CkvoPitchView*()>& currentView;
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
    const Placement view = Inset(layout.view.frame, 0, 4, 0, 6); // a little air to the frames around it
    middle = new Middle(Moved(view, place.x, place.y), currentView);
    end();
    resizable(middle);
}

void CkvoContent::FollowView() {
    CkvoPitchView* view = currentView();
    if (view != nullptr) {
        const Placement place = PlaceOfView(*middle);
        const PitchViewLayout& layout = view->GetAxes().layout;
        if (layout.width != place.width || layout.height != place.height)
            view->SetSize(place.width, place.height);
    }
    if ((view != nullptr) == viewShown) return;
    viewShown = view != nullptr;
    middle->redraw();
}

void CkvoContent::RedrawPanels() {
    if (viewShown) middle->redraw();
}

} // namespace sonorelle
