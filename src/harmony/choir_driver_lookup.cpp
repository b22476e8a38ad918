// What the driver answers: about notes, chords and positions.

#include "harmony/choir_driver.h"

#include "harmony/note_lookup.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr ConsortierClassic::ChordRecord kZeroChord = {0, 0, 0, 0};

float FiniteOrZero(float value) { return std::isfinite(value) ? value : 0.0F; }

} // namespace

// Notes.

std::int32_t CChoirDriver::GetNotePitch(std::int32_t note) const {
    return notes.Contains(note) ? notes.Pitch(note) : -1;
}

std::int32_t CChoirDriver::GetNoteLength(std::int32_t note) const {
    return notes.Contains(note) ? notes.Note(note).length : -1;
}

std::int32_t CChoirDriver::GetNoteStart(std::int32_t note) const {
    return notes.Contains(note) ? notes.Note(note).start : -1;
}

float CChoirDriver::GetNoteLevel(std::int32_t note) const {
    return notes.Contains(note) ? FiniteOrZero(notes.Note(note).level) : 0.0F;
}

bool CChoirDriver::GetNoteRange(std::int32_t note, std::int32_t& start, std::int32_t& end) const {
    if (!notes.Contains(note)) return false;
    start = notes.Note(note).start;
    end = notes.Note(note).end;
    return true;
}

float CChoirDriver::GetDeviation(std::int32_t note) const {
    if (!notes.Contains(note)) return -1.0F;
    return FiniteOrZero(notes.Note(note).pitch - tuningOffset - static_cast<float>(notes.Pitch(note)));
}

NoteRecord CChoirDriver::GetNote(std::int32_t note) const {
    return notes.Contains(note) ? notes.Note(note) : NoteRecord{};
}

// Chords.

CChoirDriver::ChordRecord CChoirDriver::GetChord(std::int32_t note) const {
    return notes.Contains(note) ? notes.Chord(note) : kZeroChord;
}

void CChoirDriver::SetChord(std::int32_t note, const ChordRecord& chord) {
    if (notes.Contains(note)) notes.Chord(note) = chord;
}

std::span<const CChoirDriver::ChordRecord> CChoirDriver::ChordsForNote(std::int32_t note, std::int32_t n) {
    if (!notes.Contains(note)) return {};
    const std::int32_t count = std::clamp(n, 0, ConsortierClassic::kChordsForPitch);
    engine.ChordsForPitch(notes.Voicing(note).voices[0], pitchChords.data(), count);
    return std::span(pitchChords).first(static_cast<std::size_t>(count));
}

std::span<const CChoirDriver::ChordRecord> CChoirDriver::AllChords() {
    const std::int32_t count = engine.AllDiatonicChords(allChords.data());
    return std::span(allChords).first(static_cast<std::size_t>(count));
}

void CChoirDriver::ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]) {
    ConsortierClassic::CConsortier::ChordToPitches(chord, out);
}

// Positions.

std::int32_t CChoirDriver::FindNoteAt(std::int32_t position) {
    const std::int32_t from = cursor.load(std::memory_order_relaxed);
    return MoveCursor(position < audioLength ? NoteHolding(notes.Notes(), position, from) : -1);
}

std::int32_t CChoirDriver::FindNearestNote(std::int32_t position) {
    return MoveCursor(NoteNearest(notes.Notes(), position));
}

std::int32_t CChoirDriver::FindNextNote(std::int32_t position) {
    return MoveCursor(NoteMeant(notes.Notes(), position));
}

std::int32_t CChoirDriver::MoveCursor(std::int32_t note) {
    cursor.store(note, std::memory_order_relaxed);
    return note;
}

} // namespace sonorelle
