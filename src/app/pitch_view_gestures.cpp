// Which gesture of the pitch view begins where, and how those on empty space go on.
//
// A press is looked at in this order: the header's toggles, handles, chords and beats; then the notes, if
// they may be cut or dragged; then the space behind them. Everything that a drag moves is counted from the
// press, so that nothing drifts and a way back is a way back.

#include "app/pitch_view.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

constexpr double kZoomOfAPixel = 1.01; // the visible time changes by 1 % with each

} // namespace

CkvoPitchView::NoteHit CkvoPitchView::HitNote(std::int32_t x, std::int32_t y) const {
    if (!axes.layout.NoteArea().Contains(x, y)) return {};
    for (std::int32_t voice = voiceCount - 1; voice >= 0; --voice) { // the one drawn last lies on top
        const std::vector<PitchViewNote>& row = noteRows[static_cast<std::size_t>(voice)];
        for (std::size_t i = row.size(); i-- > 0;) {
            const PitchViewNote& note = row[i];
            if (!IsDrawn(voice, note)) continue;
            const PixelRect rect = axes.NoteRect(note.start, note.length, note.pitch, note.height);
            if (rect.Contains(x, y)) return {static_cast<std::int32_t>(i), voice};
        }
    }
    return {};
}

void CkvoPitchView::BeginGesture(Gesture kind, const PointerEvent& event) {
    gesture = kind;
    pressEvent = event;
    pressAxes = axes;
    lastX = event.x;
    lastY = event.y;
}

void CkvoPitchView::EndGesture() {
    if (PitchViewNote* const note = FindNote(dragNote, dragVoice)) note->selected = 0;
    gesture = Gesture::kNone;
    dragNote = -1;
    dragVoice = -1;
    noteMoved = false;
    chordWindow.reset();
    draggedTempo.store(0, std::memory_order_relaxed);
    Redraw(kDamageAll);
}

void CkvoPitchView::Press(const PointerEvent& event) {
    if (event.button != PointerButton::kLeft) return;
    Release(event); // of a drag whose end never came
    if (event.y < axes.layout.topMargin) {
        PressHeader(event);
        return;
    }
    const NoteHit hit = HitNote(event.x, event.y);
    hotNote = hit.note;
    hotVoice = hit.voice;
    if (hit.Found() && GetCutMode()) {
        PressCut(event, hit);
    } else if (hit.Found() && GetNoteEdit()) {
        PressNote(event, hit);
    } else {
        PressEmpty(event);
    }
}

void CkvoPitchView::PressEmpty(const PointerEvent& event) {
    const bool ctrl = event.Has(PointerEvent::kCtrl);
    if (event.Has(PointerEvent::kShift)) {
        if (ctrl)
            ResetView();
        else
            FitPitch();
    } else if (event.Has(PointerEvent::kAlt)) {
        BeginGesture(Gesture::kZoom, event);
    } else if (!ctrl) {
        BeginGesture(Gesture::kPan, event);
    }
}

void CkvoPitchView::Drag(const PointerEvent& event) {
    switch (gesture) {
    case Gesture::kNone:
        return;
    case Gesture::kPan:
        DragPan(event);
        break;
    case Gesture::kZoom:
        DragZoom(event);
        break;
    case Gesture::kNote:
        DragNote(event);
        break;
    case Gesture::kOverviewLeft:
    case Gesture::kOverviewRight:
    case Gesture::kOverviewBody:
        DragOverview(event);
        break;
    case Gesture::kMarkerStart:
    case Gesture::kMarkerEnd:
        DragMarker(event);
        break;
    case Gesture::kTempo:
        DragTempo(event);
        break;
    }
    lastX = event.x;
    lastY = event.y;
}

// What was under the pointer stays under it, in whole semitones.
void CkvoPitchView::DragPan(const PointerEvent& event) {
    const double rows = (double{1} * event.y - pressEvent.y) / double{pressAxes.PixelsPerSemitone()};
    const double samples = (double{1} * event.x - pressEvent.x) / double{pressAxes.PixelsPerSample()};
    axes.ScrollToPitch(double{pressAxes.topPitch} + std::trunc(rows));
    axes.ScrollToSample(double{pressAxes.viewStart} - samples);
    Redraw(kDamageAll);
}

// Up and right magnify.
void CkvoPitchView::DragZoom(const PointerEvent& event) {
    const double range = double{pressAxes.topPitch} - double{pressAxes.bottomPitch};
    const double rows = (double{1} * event.y - pressEvent.y) / double{pressAxes.PixelsPerSemitone()};
    const double least = std::trunc((double{PitchViewAxes::kLeastSemitones} - range) / 2);
    const double most = std::max(0.0, std::trunc((double{PitchViewAxes::kMostSemitones} - range) / 2));
    const double steps = std::max(least, std::min(std::trunc(rows), most));
    axes.ShowPitches(double{pressAxes.bottomPitch} - steps, double{pressAxes.topPitch} + steps);

    const double length = double{pressAxes.viewEnd} - double{pressAxes.viewStart};
    const double pixels = double{1} * event.x - pressEvent.x;
    const double change = length * (std::pow(kZoomOfAPixel, -pixels) - 1);
    if (std::isfinite(change)) {
        axes.ShowSamples(double{pressAxes.viewStart} - change / 2, double{pressAxes.viewEnd} + change / 2,
                         LeastVisibleSamples());
    }
    Redraw(kDamageAll);
}

void CkvoPitchView::Release(const PointerEvent& event) {
    if (event.button != PointerButton::kLeft) return;
    if (gesture == Gesture::kNote) {
        ReleaseNote();
    } else if (gesture == Gesture::kTempo) {
        ReleaseTempo();
    } else if (gesture != Gesture::kNone) {
        EndGesture();
    }
}

void CkvoPitchView::Move(const PointerEvent& event) {
    if (IsDragging()) return;
    const NoteHit hit = HitNote(event.x, event.y);
    if (hit.note == hotNote && hit.voice == hotVoice) return;
    hotNote = hit.note;
    hotVoice = hit.voice;
    Redraw(kDamagePart | kDamageNotes);
}

void CkvoPitchView::Leave() {
    if (IsDragging()) return;
    hotNote = -1;
    hotVoice = -1;
    Redraw(kDamagePart | kDamageNotes);
}

PitchViewCursor CkvoPitchView::HeaderCursorAt(const PointerEvent& event) const {
    if (HitToggle(event.x, event.y) >= 0) return PitchViewCursor::kHand;
    const Gesture strip = HitOverview(event.x, event.y);
    if (strip == Gesture::kOverviewBody) return PitchViewCursor::kScroll;
    if (strip != Gesture::kNone) return PitchViewCursor::kResize;
    if (HitMarker(event.x, event.y) != Gesture::kNone) return PitchViewCursor::kMarker;
    if (GetChordEdit() && HitChord(event.x, event.y) >= 0) return PitchViewCursor::kHand;
    return IsInBeatRow(event.x, event.y) ? PitchViewCursor::kDragTempo : PitchViewCursor::kArrow;
}

PitchViewCursor CkvoPitchView::CursorAt(const PointerEvent& event) const {
    if (event.y < axes.layout.topMargin) return HeaderCursorAt(event);
    if (HitNote(event.x, event.y).Found()) {
        if (GetCutMode()) {
            return event.Has(PointerEvent::kAlt) ? PitchViewCursor::kJoin : PitchViewCursor::kCut;
        }
        if (GetNoteEdit()) {
            return event.Has(PointerEvent::kShift) ? PitchViewCursor::kSelect : PitchViewCursor::kMoveNote;
        }
    }
    if (event.Has(PointerEvent::kShift)) return PitchViewCursor::kZoom;
    if (event.Has(PointerEvent::kAlt)) return PitchViewCursor::kZoom;
    return event.Has(PointerEvent::kCtrl) ? PitchViewCursor::kArrow : PitchViewCursor::kPan;
}

} // namespace sonorelle
