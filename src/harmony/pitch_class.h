// Arithmetic of pitches and pitch classes.
//
// A pitch is a MIDI note number (60 is middle C), a pitch class 0 to 11 (0 is C). Reduction to an octave
// never gives a negative number here, however low the pitch, so that the result is always an index of a table
// of twelve.

#pragma once

#include <algorithm>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

inline constexpr std::int32_t kSemitonesInOctave = 12;
inline constexpr std::int32_t kNoPitch = -1; // a silent voice, an absent key
inline constexpr std::int32_t kMiddleC = 60;
inline constexpr std::int32_t kVoiceSlots = 4; // a voice row: the melody and up to three harmony voices

// Pitches are held within this many semitones of 0 before anything is computed from them. It is far beyond
// anything that sounds, and small enough that no sum or difference of a few pitches leaves 32 bits.
inline constexpr std::int32_t kPitchLimit = 1 << 28;

constexpr std::int32_t HoldPitch(std::int32_t pitch) { return std::clamp(pitch, -kPitchLimit, kPitchLimit); }

// The distance in semitones from the C at or below `semitones`: 0 to 11. 64 bits, so that callers need not
// think of overflow.
constexpr std::int32_t PitchClass(std::int64_t semitones) {
    const auto remainder = static_cast<std::int32_t>(semitones % kSemitonesInOctave);
    return remainder < 0 ? remainder + kSemitonesInOctave : remainder;
}

// The interval from `from` up to the pitch class of `to`: 0 to 11, so that a falling second reads as a rising
// seventh.
constexpr std::int32_t IntervalUp(std::int32_t from, std::int32_t to) {
    return PitchClass(static_cast<std::int64_t>(to) - from);
}

// Whether the pitch is a black key of the piano.
constexpr bool IsBlackKey(std::int64_t semitones) {
    constexpr std::uint32_t kBlackKeys = 0b010101001010; // C# D# F# G# A#
    return (kBlackKeys >> PitchClass(semitones) & 1U) != 0;
}

} // namespace sonorelle::ConsortierClassic
