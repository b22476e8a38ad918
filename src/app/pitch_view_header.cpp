// The header of the pitch view: loudness strip, chord names, markers, beats, toggles.

#include "app/pitch_view.h"

#include "platform/numbers.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

constexpr std::int32_t kToggles = 3;

} // namespace

// --- Where things are ---

std::int32_t CkvoPitchView::HitToggle(std::int32_t x, std::int32_t y) const {
    for (std::int32_t row = 0; row < kToggles; ++row) {
        if (axes.layout.Toggle(row).Contains(x, y)) return row;
    }
    return -1;
}

CkvoPitchView::Gesture CkvoPitchView::HitOverview(std::int32_t x, std::int32_t y) const {
    const OverviewHandles handles = PlaceOverviewHandles(axes);
    if (handles.left.Contains(x, y)) return Gesture::kOverviewLeft;
    if (handles.right.Contains(x, y)) return Gesture::kOverviewRight;
    return handles.body.Contains(x, y) ? Gesture::kOverviewBody : Gesture::kNone;
}

// Where the two handles lie over each other, each has the half on its own side.
CkvoPitchView::Gesture CkvoPitchView::HitMarker(std::int32_t x, std::int32_t y) const {
    const std::array<MarkerDrawing, 2> drawn = DrawMarkers();
    if (!axes.layout.Ruler().Contains(x, y)) return Gesture::kNone;
    const bool onStart = drawn[0].inSight && drawn[0].handle.Contains(x, y);
    const bool onEnd = drawn[1].inSight && drawn[1].handle.Contains(x, y);
    if (onStart && onEnd) {
        const bool nearEnd = x - drawn[0].lineX > drawn[1].lineX - x;
        return nearEnd ? Gesture::kMarkerEnd : Gesture::kMarkerStart;
    }
    if (onStart) return Gesture::kMarkerStart;
    return onEnd ? Gesture::kMarkerEnd : Gesture::kNone;
}

std::int32_t CkvoPitchView::HitChord(std::int32_t x, std::int32_t y) const {
    if (!axes.layout.ChordRow().Contains(x, y)) return -1;
    return FindNoteAt(axes.SampleFromX(x));
}

bool CkvoPitchView::IsInBeatRow(std::int32_t x, std::int32_t y) const {
    return showBeatRow && axes.layout.Ruler().Contains(x, y);
}

// --- Gestures ---

void CkvoPitchView::PressHeader(const PointerEvent& event) {
    const std::int32_t toggle = HitToggle(event.x, event.y);
    if (toggle >= 0) {
        ToggleRow(toggle);
        return;
    }
    Gesture kind = HitOverview(event.x, event.y);
    if (kind == Gesture::kNone) kind = HitMarker(event.x, event.y);
    if (kind == Gesture::kNone && IsInBeatRow(event.x, event.y)) kind = Gesture::kTempo;
    if (kind != Gesture::kNone) {
        BeginGesture(kind, event);
        pressMarker = kind == Gesture::kMarkerStart ? GetMarkerStart() : GetMarkerEnd();
        tempoGridBase = GetTempoGrid();
        return;
    }
    const std::int32_t note = GetChordEdit() ? HitChord(event.x, event.y) : -1;
    if (note >= 0) Report(kEventChordClicked, {note});
}

void CkvoPitchView::ToggleRow(std::int32_t row) {
    bool* const shown[kToggles] = {&showKeyRow, &showFreqRow, &showBeatRow};
    *shown[row] = !*shown[row];
    Redraw(kDamageAll);
}

void CkvoPitchView::DragOverview(const PointerEvent& event) {
    const double moved = (double{1} * event.x - pressEvent.x) / axes.OverviewPixelsPerSample();
    const double least = std::min(double{LeastVisibleSamples()}, double{axes.TotalLength()});
    double start = double{pressAxes.viewStart};
    double end = double{pressAxes.viewEnd};
    if (gesture == Gesture::kOverviewBody) {
        axes.ScrollToSample(start + moved);
    } else if (gesture == Gesture::kOverviewLeft) {
        start = std::max(double{axes.totalStart}, std::min(start + moved, end - least));
        axes.ShowSamples(start, end, LeastVisibleSamples());
    } else {
        end = std::min(double{axes.totalEnd}, std::max(end + moved, start + least));
        axes.ShowSamples(start, end, LeastVisibleSamples());
    }
    Redraw(kDamageAll);
}

void CkvoPitchView::DragMarker(const PointerEvent& event) {
    const double samples = (double{1} * event.x - pressEvent.x) / double{axes.PixelsPerSample()};
    const bool isStart = gesture == Gesture::kMarkerStart;
    MoveMarker(isStart, TruncateToI32(std::round(pressMarker + samples)));
}

void CkvoPitchView::DragTempo(const PointerEvent& event) {
    BeatGrid grid = GetBeatGrid();
    grid.tempo = tempoGridBase;
    const double from = axes.SampleFromX(pressEvent.x);
    const double to = axes.SampleFromX(event.x);
    draggedTempo.store(grid.TempoAfterDrag(from, to), std::memory_order_relaxed);
    Redraw(kDamagePart | kDamageHeader);
}

void CkvoPitchView::ReleaseTempo() {
    const float dragged = draggedTempo.load(std::memory_order_relaxed);
    const bool changed = dragged > 0 && dragged != tempoGridBase;
    if (changed) tempoGrid.store(dragged, std::memory_order_relaxed);
    EndGesture();
    if (changed) Report(kEventTempoDragged, {});
}

// --- Markers ---

// A marker stays within the recording and on its side of the other one.
void CkvoPitchView::MoveMarker(bool isStart, std::int32_t sample) {
    const MarkerPair old = markers.load(std::memory_order_relaxed);
    MarkerPair moved = old;
    if (isStart)
        moved.start = std::max(firstSample, std::min(sample, old.end));
    else
        moved.end = std::min(lastSample, std::max(sample, old.start));
    if (moved.start > moved.end) return; // a play range from elsewhere, outside of the recording
    ReportMarkers(moved);
}

void CkvoPitchView::ReportMarkers(MarkerPair moved) {
    const MarkerPair old = markers.load(std::memory_order_relaxed);
    if (moved.start == old.start && moved.end == old.end) return;
    markers.store(moved, std::memory_order_relaxed);
    if (gesture == Gesture::kMarkerStart) ShowMarkerTime(moved.start);
    if (gesture == Gesture::kMarkerEnd) ShowMarkerTime(moved.end);
    Redraw(kDamagePart | kDamageHeader);
    Report(kEventPlayRegionMoved, {moved.start, moved.end});
}

void CkvoPitchView::ShowMarkerTime(std::int32_t sample) {
    if (!chordWindow) chordWindow.emplace();
    if (showBeatRow) {
        chordWindow->ShowTimeAndBeat(sample, GetSampleRate(), GetBeatGrid().PositionAt(sample));
    } else {
        chordWindow->ShowTime(sample, GetSampleRate());
    }
    chordWindow->x = std::clamp(axes.XFromSample(sample), axes.layout.leftMargin,
                                std::max(axes.layout.leftMargin, axes.layout.width));
    chordWindow->y = axes.layout.topMargin;
}

std::optional<std::int32_t> CkvoPitchView::ClosestNoteStart(std::int32_t sample) const {
    std::optional<std::int32_t> closest;
    double least = 0;
    for (const PitchViewNote& note : noteRows[0]) {
        const double distance = std::abs(double{note.start} - sample);
        if (note.length <= 0 || (closest && distance >= least)) continue;
        least = distance;
        closest = TruncateToI32(double{note.start});
    }
    return closest;
}

std::string CkvoPitchView::TempoText() const { return FormatFixed(double{GetTempoGrid()}, 1); }

} // namespace sonorelle
