// Why known notes were not matched, and what the found notes are that stand for no known one. A known note
// that was found at the wrong time or pitch is told once, with the known ones, and costs recall and precision
// alike.
#pragma once

#include "support/note_matching.h"

#include <array>
#include <cstddef>
#include <span>

namespace sonorelle::tools {

enum Loss : std::size_t {
    kOnsetLate,    // found at its pitch, but it begins too late ...
    kOnsetEarly,   // ... or too early
    kPitchOff,     // found at its time, but at another pitch
    kJoined,       // lies within a found note of its pitch that began with another known note
    kSwallowed,    // lies within a found note of another pitch
    kNothingThere, // no found note covers its middle
    kSplit,        // found, not known: a second piece of a known note of that pitch
    kTransition,   // found, not known: below 0.1 s
    kOtherSurplus, // found, not known: longer
    kLossKinds
};

struct LostNotes {
    std::array<std::size_t, kLossKinds> counts{};
    LostNotes& operator+=(const LostNotes& other);
};

const char* LossName(std::size_t loss);

LostNotes FindLostNotes(std::span<const test::TimedNote> known, std::span<const test::TimedNote> found,
                        const test::NoteTolerance& tolerance = {});

} // namespace sonorelle::tools
