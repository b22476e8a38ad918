// What there is for every note of the melody: its record, its chord, its voices and their gains.
//
// The arrays hold `capacity` notes, of which the first Count() are in use. A row is an allocation of its own
// and stays where it is until the object goes: the snapshot store writes into it.

#pragma once

#include "analysis/records.h"
#include "app/snapshot_element.h"
#include "harmony/chord_record.h"
#include "harmony/pitch_class.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace sonorelle {

class CSnapshotStore;

class CChoirNotes {
public:
    // The most notes that are ever made room for; a song of ten minutes has some thousand. Keeps a made-up
    // count in a document from asking for all memory there is.
    static constexpr std::int32_t kMostNotes = 100000;

    // Slot 0 is the melody, slots 1 to 3 the harmony.
    struct Row {
        std::array<std::int32_t, ConsortierClassic::kVoiceSlots> voices;     // pitches; -1 silent
        std::array<std::int32_t, ConsortierClassic::kVoiceSlots> liveVoices; // as played live; -1 none
        std::array<float, ConsortierClassic::kVoiceSlots> gains;             // 0 to 1
    };

    // `count` is the number of notes in use. It belongs to the owner, who registers it; the store may write
    // anything into it, and it is held to the capacity wherever it is read.
    CChoirNotes(CSnapshotStore& snapshotStore, std::uint32_t& count);
    CChoirNotes(const CChoirNotes&) = delete;
    CChoirNotes& operator=(const CChoirNotes&) = delete;

    // Takes the first copy of the note list (its first kMostNotes notes): silent voices at full gain, no
    // chords. Registers everything but the live voices and the rounded pitches. Chords of the old layout come
    // in through `convertChords`. Allocates; throws std::bad_alloc, and then nothing has changed.
    void Fill(std::span<const NoteRecord> records, SnapshotConvert convertChords, void* context);

    // Makes room for `capacity` notes (at most kMostNotes) and registers it behind everything else. Allocates
    // as Fill does. Never shrinks.
    void Grow(std::int32_t capacity);

    // Puts a copy of note `index` behind it; those behind move up. There must be room for one more.
    void Duplicate(std::int32_t index);
    // Takes note `index` out; those behind move down.
    void Remove(std::int32_t index);

    bool IsEmpty() const { return rows.empty(); }
    std::int32_t GetCapacity() const { return static_cast<std::int32_t>(rows.size()); }
    std::int32_t Count() const;
    bool Contains(std::int32_t index) const { return index >= 0 && index < Count(); }

    // `index` below the capacity.
    NoteRecord& Note(std::int32_t index) { return notes[At(index)]; }
    const NoteRecord& Note(std::int32_t index) const { return notes[At(index)]; }
    ConsortierClassic::ChordRecord& Chord(std::int32_t index) { return chords[At(index)]; }
    const ConsortierClassic::ChordRecord& Chord(std::int32_t index) const { return chords[At(index)]; }
    Row& Voicing(std::int32_t index) { return *rows[At(index)]; }
    const Row& Voicing(std::int32_t index) const { return *rows[At(index)]; }
    std::int32_t& Pitch(std::int32_t index) { return pitches[At(index)]; } // of the melody, rounded
    std::int32_t Pitch(std::int32_t index) const { return pitches[At(index)]; }

    std::span<const NoteRecord> Notes() const { return {notes.data(), At(Count())}; } // those in use
    std::span<ConsortierClassic::ChordRecord> Chords() { return {chords.data(), At(Count())}; }
    std::span<const std::int32_t> Pitches() const { return {pitches.data(), At(Count())}; }

private:
    static std::size_t At(std::int32_t index) { return static_cast<std::size_t>(index); }

    CSnapshotStore& store;
    std::uint32_t& noteCount;
    std::vector<NoteRecord> notes;
    std::vector<ConsortierClassic::ChordRecord> chords;
    std::vector<std::unique_ptr<Row>> rows;
    std::vector<std::int32_t> pitches;
};

} // namespace sonorelle
