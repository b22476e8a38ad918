// The scales: which semitones above its root a scale has, and what the scales are called.

#pragma once

#include "harmony/pitch_class.h"

#include <array>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

inline constexpr std::int32_t kScaleCount = 12;
inline constexpr std::int32_t kNamedScaleCount = 11; // the rows that the menus list
inline constexpr std::int32_t kMajorScale = 0;
inline constexpr std::int32_t kMinorScale = 5;      // "Aeolic Minor", the minor of the key estimate
inline constexpr std::int32_t kChromaticScale = 11; // all twelve tones; in no menu, and for the harmony alone

// A row is a scale, a column a semitone above the scale's root; 1 where the scale has a tone. The names in a
// column head are those of a scale on C. Every row has its root.
// clang-format off
inline constexpr std::int32_t ScaleTable[kScaleCount][kSemitonesInOctave] = {
    // C  C#  D  D#  E  F  F#  G  G#  A  A#  B
    {  1, 0,  1, 0,  1, 1, 0,  1, 0,  1, 0,  1 }, //  0  Major
    {  1, 0,  1, 1,  0, 1, 0,  1, 0,  1, 1,  0 }, //  1  Dorian
    {  1, 1,  0, 1,  0, 1, 0,  1, 1,  0, 1,  0 }, //  2  Phrygian
    {  1, 0,  1, 0,  1, 0, 1,  1, 0,  1, 0,  1 }, //  3  Lydian
    {  1, 0,  1, 0,  1, 1, 0,  1, 0,  1, 1,  0 }, //  4  Mixolydian
    {  1, 0,  1, 1,  0, 1, 0,  1, 1,  0, 1,  0 }, //  5  Aeolic Minor
    {  1, 1,  0, 1,  0, 1, 1,  0, 1,  0, 1,  0 }, //  6  Lokrian
    {  1, 0,  1, 1,  0, 1, 0,  1, 1,  0, 0,  1 }, //  7  Harmonic Minor
    {  1, 0,  1, 1,  0, 0, 1,  1, 1,  0, 0,  1 }, //  8  Gipsy I
    {  1, 1,  0, 0,  1, 1, 0,  1, 1,  0, 0,  1 }, //  9  Gipsy II
    {  1, 0,  1, 0,  1, 0, 1,  0, 1,  0, 1,  0 }, // 10  Whole Tone
    {  1, 1,  1, 1,  1, 1, 1,  1, 1,  1, 1,  1 }, // 11  all twelve tones
};

// As the user's menus list them, in the order of the rows.
inline constexpr std::array<const char*, kNamedScaleCount> kScaleNames = {
    "Major",          "Dorian",  "Phrygian", "Lydian",     "Mixolydian", "Aeolic Minor", "Lokrian",
    "Harmonic Minor", "Gipsy I", "Gipsy II", "Whole Tone",
};
// clang-format on

// A melody cannot be snapped to the row of all twelve tones: the map on to a smaller scale would have no
// place for them.
constexpr bool IsMelodyScale(std::int32_t index) { return index >= 0 && index < kNamedScaleCount; }
constexpr bool IsHarmonyScale(std::int32_t index) { return index >= 0 && index < kScaleCount; }
constexpr bool IsKeyRoot(std::int32_t pitchClass) {
    return pitchClass >= 0 && pitchClass < kSemitonesInOctave;
}

// What follows from the rows, counted when the program is compiled: the voicing asks for it thousands of
// times a note.
struct ScaleCounts {
    std::int32_t tones[kScaleCount] = {};
    std::int32_t steps[kScaleCount][kSemitonesInOctave][kSemitonesInOctave] = {};
};

constexpr ScaleCounts CountScales() {
    ScaleCounts counts;
    for (std::int32_t scale = 0; scale < kScaleCount; ++scale) {
        for (const std::int32_t tone : ScaleTable[scale]) counts.tones[scale] += tone;
        for (std::int32_t position = 0; position < kSemitonesInOctave; ++position) {
            std::int32_t met = 0;
            for (std::int32_t semitones = 0; semitones < kSemitonesInOctave; ++semitones) {
                met += ScaleTable[scale][PitchClass(position + semitones)];
                counts.steps[scale][position][semitones] = met - 1;
            }
        }
    }
    return counts;
}

inline constexpr ScaleCounts kScaleCounts = CountScales();

// How many tones the row `scale` has.
constexpr std::int32_t CountTones(std::int32_t scale) { return kScaleCounts.tones[scale]; }

// The scale steps that an interval of `semitones` (0 to 11) spans upward from `position` (0 to 11): the tones
// met, both ends included, less one. See CKey::ScaleSteps for intervals of any size.
constexpr std::int32_t ScaleStepsWithinOctave(std::int32_t scale, std::int32_t position,
                                              std::int32_t semitones) {
    return kScaleCounts.steps[scale][position][semitones];
}

} // namespace sonorelle::ConsortierClassic
