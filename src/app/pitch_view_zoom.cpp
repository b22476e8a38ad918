// How much of the recording the pitch view shows.

#include "app/pitch_view.h"

#include "dsp/finite.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

constexpr std::int32_t kLargestSide = 32767; // pixels: what windows can have
constexpr double kPageMargin = 0.1;          // of the view's width, left of the position after a turn of page
constexpr double kMarginSemitones = 1;       // above and below the notes

} // namespace

float CkvoPitchView::LeastVisibleSamples() const { return GetSampleRate() * PitchViewAxes::kLeastSeconds; }

void CkvoPitchView::SetSize(std::int32_t widthPixels, std::int32_t heightPixels) {
    axes.layout.width = std::clamp(widthPixels, 1, kLargestSide);
    axes.layout.height = std::clamp(heightPixels, 1, kLargestSide);
    Redraw(kDamageAll);
}

void CkvoPitchView::SetZoom(float factor) {
    if (!IsFinite(factor)) return;
    const double length = double{axes.TotalLength()} / std::max(1.0, double{factor});
    axes.ShowSamples(double{axes.viewStart}, double{axes.viewStart} + length, LeastVisibleSamples());
    Redraw(kDamageAll);
}

void CkvoPitchView::FitHorizontally() {
    axes.ShowSamples(double{axes.totalStart}, double{axes.totalEnd}, LeastVisibleSamples());
    Redraw(kDamageAll);
}

void CkvoPitchView::FitPlayRegion() {
    const MarkerPair pair = markers.load(std::memory_order_relaxed);
    if (pair.end <= pair.start) return;
    axes.ShowSamples(pair.start, pair.end, LeastVisibleSamples());
    Redraw(kDamageAll);
}

void CkvoPitchView::FitVertically() { FitPitch(); }

void CkvoPitchView::FitPitch() {
    double lowest = double{PitchViewAxes::kHighestPitch};
    double highest = double{PitchViewAxes::kLowestPitch};
    for (std::int32_t voice = 0; voice < voiceCount; ++voice) {
        for (const PitchViewNote& note : noteRows[static_cast<std::size_t>(voice)]) {
            if (!IsDrawn(voice, note)) continue;
            lowest = std::min(lowest, double{note.pitch});
            highest = std::max(highest, double{note.pitch} + double{note.height});
        }
    }
    if (lowest > highest) return; // nothing in view
    axes.ShowPitches(lowest - kMarginSemitones, highest + kMarginSemitones);
    Redraw(kDamageAll);
}

void CkvoPitchView::ResetView() {
    FitHorizontally();
    float lowest = PitchViewAxes::kHighestPitch;
    float highest = PitchViewAxes::kLowestPitch;
    for (const auto& row : noteRows) {
        for (const PitchViewNote& note : row) {
            if (note.isSilent) continue;
            lowest = std::min(lowest, note.pitch);
            highest = std::max(highest, note.pitch + note.height);
        }
    }
    if (lowest <= highest) {
        minBottomPitch = lowest - static_cast<float>(kMarginSemitones);
        maxTopPitch = highest + static_cast<float>(kMarginSemitones);
    }
    axes.ShowPitches(double{minBottomPitch}, double{maxTopPitch});
}

void CkvoPitchView::FollowPosition() {
    const double position = GetPlayPosition();
    if (position >= double{axes.viewStart} && position <= double{axes.viewEnd}) return;
    const double margin = kPageMargin * (double{axes.viewEnd} - double{axes.viewStart});
    axes.ScrollToSample(position - margin);
    Redraw(kDamageAll);
}

void CkvoPitchView::Wheel(const PointerEvent& event) {
    if (event.wheel == 0 || event.Has(PointerEvent::kCtrl)) return;
    if (event.x < axes.layout.leftMargin || event.Has(PointerEvent::kAlt)) {
        axes.WheelPitch(event.y, event.wheel);
    } else {
        axes.WheelTime(event.x, event.wheel, LeastVisibleSamples());
    }
    Redraw(kDamageAll);
}

} // namespace sonorelle
