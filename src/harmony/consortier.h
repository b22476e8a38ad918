// The choir engine: from a melody note to the voices that go with it.
//
// It holds the key (see key.h), makes the voices of a note in five styles, and finds the chords of a whole
// melody. A voice row is four MIDI pitches: slot 0 the melody as it was snapped and mapped, slots 1 to 3 the
// harmony, -1 for a silent voice.
//
//     CConsortier engine;
//     engine.SetRoot(7);                                        // G
//     engine.FindChordPath(pitches, chords, noteCount);
//     engine.Reset();
//     for (...) engine.GenerateVoices(pitches[i], rows[i], chords[i]);   // in the order of the notes
//
// Threads: none of its own and no lock; whoever shares an engine locks it. Only FindChordPath allocates;
// everything else is fit for the audio thread.
//
// Result codes: 0; kBadArgument for what is missing or out of bounds, and then nothing was written or
// changed. Pitches may be any number; beyond 2^28 semitones they are held there.

#pragma once

#include "harmony/chord_names.h"
#include "harmony/chord_path.h"
#include "harmony/chord_record.h"
#include "harmony/chords.h"
#include "harmony/key.h"
#include "harmony/random_bits.h"
#include "harmony/voice_leader.h"

#include <array>
#include <cstdint>
#include <span>

namespace sonorelle::ConsortierClassic {

class CConsortier {
public:
    // --- The key
    // -----------------------------------------------------------------------------------------------------

    // The key root, 0 (C) to 11; the row of ScaleTable that a melody is snapped in, 0 to 10; the row that all
    // harmony is built in, 0 to 11.
    std::int32_t SetRoot(std::int32_t pitchClass) { return key.SetRoot(pitchClass); }
    std::int32_t SetMelodyScale(std::int32_t index) { return key.SetMelodyScale(index); }
    std::int32_t SetHarmonyScale(std::int32_t index) { return key.SetHarmonyScale(index); }
    // Whether melody pitches are snapped to the melody scale, and whether they are carried over to the
    // harmony scale. Any number but 0 is on. Always 0.
    std::int32_t SetSnapToScale(std::int32_t flag);
    std::int32_t SetMapScale(std::int32_t flag);

    const CKey& GetKey() const { return key; }
    bool IsInScale(std::int32_t pitch) const { return key.IsInScale(pitch); }
    std::int32_t SnapToScale(std::int32_t pitch) const { return key.SnapToScale(pitch); }
    std::int32_t ApplyScaleMap(std::int32_t pitch) const { return key.ApplyScaleMap(pitch); }

    // --- Chords; see chords.h and chord_names.h
    // -----------------------------------------------------------------------------------------------------

    static ChordRecord RecogniseChord(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d);
    static void ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]);
    static void FormatChordName(std::span<char> buffer, std::int32_t root, std::int32_t type, bool useFlats);
    bool IsDiatonicChord(const ChordRecord& chord) const;
    std::int32_t ChordsForPitch(std::int32_t pitch, ChordRecord* out, std::int32_t n) const;
    std::int32_t AllDiatonicChords(ChordRecord* out) const;
    // `entry` is one of the old layout: two words, of which the first is a pitch.
    void LegacyChord(ChordRecord& out, const std::int32_t* entry) const;

    // --- Styles that know a note alone; see table_styles.h
    // -----------------------------------------------------------------------------------------------------

    std::int32_t GenerateParallel(std::int32_t pitch, std::int32_t* row, const std::int32_t* intervals) const;
    // The randomised arrangements go on in one sequence of bits, which starts alike in every new engine.
    std::int32_t GenerateBlock(std::int32_t pitch, std::int32_t next, std::int32_t* row,
                               std::int32_t arrangement);
    std::int32_t GenerateFauxbourdon(std::int32_t pitch, std::int32_t* row, std::int32_t arrangement) const;
    std::int32_t GenerateOrganum(std::int32_t pitch, std::int32_t* row, std::int32_t arrangement) const;

    // --- The intelligent style; see voice_leader.h
    // -----------------------------------------------------------------------------------------------------

    std::int32_t SetVoiceMode(std::int32_t mode) { return voiceLeader.SetVoiceMode(mode); }
    std::int32_t SetVoiceRange(std::int32_t voicesAbove) { return voiceLeader.SetVoiceRange(voicesAbove); }
    std::int32_t SetSpread(float share) { return voiceLeader.SetSpread(share); }
    // Before the first note of a melody. Always 0.
    std::int32_t Reset();
    // Where the melody stands among the voices, from the lowest: 0 is the bass.
    std::int32_t GetMelodySlot() const { return voiceLeader.GetMelodySlot(); }
    const CVoiceLeader& GetVoiceLeader() const { return voiceLeader; }

    // Voices a note in a chord, in the light of the note before it. With "No Chord" the last voices hold.
    // Slots beyond the harmony voices that there are become -1. A few microseconds for a triad in four
    // voices.
    std::int32_t GenerateVoices(std::int32_t pitch, std::int32_t* row, const ChordRecord& chord);

    // One triad for each of n melody pitches. Does not touch what GenerateVoices remembers.
    std::int32_t FindChordPath(const std::int32_t* pitches, ChordRecord* chords, std::int32_t n) const;

private:
    CKey key;
    CVoiceLeader voiceLeader;
    CRandomBits random;
};

} // namespace sonorelle::ConsortierClassic
