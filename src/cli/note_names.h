// Names of notes and keys as musicians write them.
//
// Pitches are MIDI note numbers, 69.0 being 440 Hz. Octaves are counted so that middle C, MIDI note 60, is
// C4.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sonorelle {

// A pitch as the nearest note and the rest in cents. Exactly between two notes the upper one is named: cents
// lie in
// [-50, 49].
struct NamedPitch {
    std::int32_t midiNote = 0;
    std::int32_t cents = 0;
};

// Nothing when the pitch is not finite or further than 1000 semitones from 0, which no sound has.
std::optional<NamedPitch> NearestNote(float midiPitch);

// "C4" for 60, "A#3" for 58, "B-2" for -1.
std::string NoteName(std::int32_t midiNote);

// "A#3 +12"; "-" for a pitch that has no nearest note.
std::string PitchText(float midiPitch);

// "+12", "-3", "+0".
std::string CentsText(std::int32_t cents);

// Keys 0 to 11 are "C major" to "B major", 12 to 23 "C minor" to "B minor"; any other number is "none".
std::string KeyName(std::int32_t key);

// Whether the note is a black key of the piano.
bool IsBlackKey(std::int32_t midiNote);

} // namespace sonorelle
