// What a list of notes tells about the singer's tuning and the key.

#pragma once

#include "analysis/records.h"

#include <array>
#include <cstdint>
#include <span>

namespace sonorelle {

// Duration of each pitch class, 0 being C, in sample frames.
using PitchClassHistogram = std::array<float, 12>;

// How far the notes lie off the grid of semitones at 440 Hz on average, weighted by length, in semitones from
// -0.5 to 0.5. Deviations are taken against the grid and against one half a semitone off it: near a quarter
// tone they wrap around on the first, and the grid on which they are smaller is believed. 0 without notes.
float EstimateTuning(std::span<const NoteRecord> notes);

// The histogram of the notes' pitch classes with `tuning` taken off and `offset` added, both in semitones.
PitchClassHistogram CountPitchClasses(std::span<const NoteRecord> notes, float tuning, std::int32_t offset);

// The key that fits a histogram best: 0 to 11 major from C, 12 to 23 minor from C, -1 none. Scales that hold
// nearly as many of the notes as the best one are candidates; among them the key profiles of C. L. Krumhansl
// and E. J. Kessler ("Tracing the dynamic changes in perceived tonal organization", Psychological Review 89,
// 1982) decide.
std::int32_t EstimateKey(const PitchClassHistogram& histogram);

} // namespace sonorelle
