// Edits of the pitch view.

#include "harmony/choir_driver.h"

#include "analysis/melody_analyzer.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace sonorelle {

namespace {

bool IsVoice(std::int32_t voice) { return voice >= 0 && voice < CChoirDriver::kVoiceSlots; }

} // namespace

void CChoirDriver::SetVoicePitch(std::int32_t note, std::int32_t voice, std::int32_t pitch) {
    if (!notes.Contains(note) || !IsVoice(voice)) return;
    notes.Voicing(note).voices[static_cast<std::size_t>(voice)] = ConsortierClassic::HoldPitch(pitch);
}

void CChoirDriver::SetVoiceGain(std::int32_t note, std::int32_t voice, float gain) {
    if (!notes.Contains(note) || !IsVoice(voice) || std::isnan(gain)) return;
    notes.Voicing(note).gains[static_cast<std::size_t>(voice)] = std::clamp(gain, 0.0F, 1.0F);
}

// Measured first, since that and the growth may fail for want of memory; from there on nothing does.
std::int32_t CChoirDriver::SplitNote(std::int32_t position) noexcept try {
    const std::int32_t note = FindNoteAt(position);
    const std::int32_t count = notes.Count();
    if (note < 0 || count >= CChoirNotes::kMostNotes) return 0;
    NoteRecord first = notes.Note(note);
    NoteRecord second = first;
    first.end = position;
    second.start = position + 1;
    Measure(first);
    Measure(second);
    if (count == notes.GetCapacity()) notes.Grow(count + 1);
    notes.Duplicate(note);
    notes.Note(note) = first;
    notes.Note(note + 1) = second;
    UpdateNotePitches();
    SetMelodyAsSung(note);
    SetMelodyAsSung(note + 1);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

std::int32_t CChoirDriver::MergeNotes(std::int32_t first, std::int32_t last) noexcept try {
    if (!notes.Contains(first) || !notes.Contains(last) || last != first + 1) return 0;
    NoteRecord joined = notes.Note(first);
    joined.end = notes.Note(last).end;
    Measure(joined);
    notes.Note(first) = joined;
    notes.Remove(last);
    UpdateNotePitches();
    SetMelodyAsSung(first);
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

std::int32_t CChoirDriver::GrowNotes(std::int32_t capacity) noexcept try {
    if (capacity > CChoirNotes::kMostNotes) return kBadArgument;
    // Before the first Run there is nothing that could grow: the notes are still to come.
    if (!notes.IsEmpty()) notes.Grow(capacity);
    return kOk;
} catch (const std::bad_alloc&) {
    return kOutOfMemory;
}

// Length and pitch of a note whose ends have moved. Where there is nothing to be measured, as in a piece
// without any voiced mark, the pitch stays: one that is no number would silence the voices.
void CChoirDriver::Measure(NoteRecord& note) const {
    note.length = TruncateToI32(static_cast<double>(note.end) - static_cast<double>(note.start));
    const float measured = analysis.MeasureRange(note.start, note.end);
    if (std::isfinite(measured) && measured >= 0) note.pitch = measured;
}

void CChoirDriver::SetMelodyAsSung(std::int32_t note) { notes.Voicing(note).voices[0] = notes.Pitch(note); }

} // namespace sonorelle
