// Dragging, cutting and joining the notes of the pitch view.

#include "app/pitch_view.h"

#include "harmony/pitch_class.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

// `semitones`, shortened by whole semitones until `pitch` stays between the limits, or where it is if it is
// outside already.
double HoldMove(double pitch, double semitones, double bottom, double top) {
    const double target = pitch + semitones;
    const double above = target - std::max(top, pitch);
    const double below = std::min(bottom, pitch) - target;
    if (above > 0) return std::max(0.0, semitones - std::ceil(above));
    if (below > 0) return std::min(0.0, semitones + std::ceil(below));
    return semitones;
}

} // namespace

void CkvoPitchView::PressNote(const PointerEvent& event, const NoteHit& hit) {
    BeginGesture(Gesture::kNote, event);
    dragNote = hit.note;
    dragVoice = hit.voice;
    FindNote(hit.note, hit.voice)->selected = 1;
    Redraw(kDamagePart | kDamageNotes);
    if (event.Has(PointerEvent::kShift)) {
        if (!IsSelected(hit.note, hit.voice)) selection.push_back({hit.note, hit.voice});
        return;
    }
    selection.clear();
    if (!event.Has(PointerEvent::kAlt)) Report(kEventNotePressed, {hit.note, hit.voice});
}

// To the semitone nearest to the pointer. Those of the selection move by as much.
void CkvoPitchView::DragNote(const PointerEvent& event) {
    const PitchViewNote* const note = FindNote(dragNote, dragVoice);
    if (note == nullptr) return;
    const double scale = double{pitchGrid} * double{axes.PixelsPerSemitone()};
    const double under = double{axes.topPitch} - (double{1} * event.y - axes.layout.topMargin) / scale;
    const double nearest = std::floor(under + 0.5);
    const double bottom = double{axes.bottomPitch};
    const double top = double{axes.topPitch};
    double semitones = std::max(bottom, std::min(nearest, top)) - double{note->pitch};
    for (const PitchViewSelection& other : selection) {
        const PitchViewNote* const moved = FindNote(other.note, other.voice);
        if (moved == nullptr || (other.note == dragNote && other.voice == dragVoice)) continue;
        semitones = HoldMove(double{moved->pitch}, semitones, bottom, top);
    }
    if (semitones == 0 || !std::isfinite(semitones)) return;

    if (selection.empty()) {
        MoveNote(dragNote, dragVoice, static_cast<float>(semitones));
    } else {
        for (const PitchViewSelection& other : selection) {
            MoveNote(other.note, other.voice, static_cast<float>(semitones));
        }
    }
    noteMoved = true;
    Redraw(kDamagePart | kDamageNotes);
    ShowChordTip(dragNote);
    Report(kEventNoteMoved, {dragNote, dragVoice});
}

void CkvoPitchView::MoveNote(std::int32_t note, std::int32_t voice, float semitones) {
    PitchViewNote* const record = FindNote(note, voice);
    if (record == nullptr) return;
    record->pitch += semitones;
    record->offset += semitones;
    MarkDoubled(note);
}

// A press without a move has changed nothing, and only its sound ends.
void CkvoPitchView::ReleaseNote() {
    const NoteHit released{dragNote, dragVoice};
    std::vector<PitchViewSelection> moved;
    if (noteMoved) moved = selection;
    if (noteMoved && moved.empty()) moved.push_back({released.note, released.voice});
    EndGesture();
    Report(kEventNoteReleased, {released.note, released.voice});
    for (const PitchViewSelection& note : moved) {
        if (FindNote(note.note, note.voice) != nullptr) Report(kEventDragEnded, {note.note, note.voice});
    }
}

void CkvoPitchView::PressCut(const PointerEvent& event, const NoteHit& hit) {
    cutPosition = TruncateToI32(axes.SampleFromX(event.x));
    if (event.Has(PointerEvent::kAlt)) {
        JoinWith(hit);
    } else if (FindNoteAt(cutPosition) >= 0) {
        selection.clear();
        Report(kEventCut, {cutPosition});
    }
}

// The first click remembers a note, the second one joins its neighbour to it.
void CkvoPitchView::JoinWith(const NoteHit& hit) {
    Redraw(kDamagePart | kDamageNotes);
    if (selection.empty()) {
        selection.push_back({hit.note, hit.voice});
        return;
    }
    const std::int32_t other = selection.back().note;
    selection.clear();
    if (other == hit.note + 1 || other == hit.note - 1) {
        Report(kEventJoin, {std::min(other, hit.note), std::max(other, hit.note)});
    }
}

// At the right side of the view, at the height of the note.
void CkvoPitchView::ShowChordTip(std::int32_t note) {
    const PitchViewNote* const record = FindNote(note, std::max(0, dragVoice));
    if (record == nullptr || !GetChordTips() || GetCutMode()) return;
    if (!chordWindow) chordWindow.emplace();
    chordWindow->ShowChord(NameOfChord(record->detectedRoot, record->detectedType));
    chordWindow->x = axes.layout.width;
    chordWindow->y = std::clamp(axes.RowTopFromPitch(double{record->pitch}), 0, axes.layout.height);
}

std::optional<PitchLabel> CkvoPitchView::DrawPitchLabel() const {
    const PitchViewNote* const note = GetNote(dragNote, dragVoice);
    if (gesture != Gesture::kNote || note == nullptr) return std::nullopt;
    const std::int32_t nearest = TruncateToI32(std::floor(double{note->pitch} + 0.5));
    const PixelRect rect = axes.NoteRect(note->start, note->length, note->pitch, note->height);
    return PitchLabel{dragNote, dragVoice, nearest, NameOfPitch(nearest), rect};
}

} // namespace sonorelle
