// One triad for every note of a melody: the cheapest way through the chords that can hold its notes.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/key.h"

#include <cstdint>

namespace sonorelle::ConsortierClassic {

// Fills `chords` with a triad for each of the n pitches. 0; kBadArgument if an array is missing, kOutOfMemory
// without memory, and then `chords` is untouched; with n below 1 nothing happens. Allocates about 130 bytes a
// note and frees them again; costs about 625 comparisons a note.
std::int32_t FindChordPath(const CKey& key, const std::int32_t* pitches, ChordRecord* chords, std::int32_t n);

} // namespace sonorelle::ConsortierClassic
