// The styles, their arrangements, and the intervals of "Parallel manual": codes, user names, and the places
// in the lists.

#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace sonorelle::ConsortierClassic {

enum Style : std::int32_t {
    kStyleIntelligent = 0,
    kStyleParallel = 1,
    kStyleBlock = 2,
    kStyleFauxbourdon = 3,
    kStyleOrganum = 4,
};

enum IntelligentArrangement : std::int32_t { kFourVoices = 0, kThreeVoices = 1, kTwoVoices = 2 };

enum ParallelArrangement : std::int32_t { kParallelFour = 0, kParallelTwo = 1 };

enum BlockArrangement : std::int32_t {
    kBlock = 0,
    kBlockIntelligent = 1,
    kShearing = 2,
    kShearingIntelligent = 3,
    kDrop2 = 4,
    kDrop2Intelligent = 5,
    kBlockRandomized = 6,
    kShearingRandomized = 7,
    kDrop2Randomized = 8,
};

enum FauxbourdonArrangement : std::int32_t {
    kTenorDiatonic = 0,
    kTenorIntelligent = 1,
    kDescantDiatonic = 2,
    kDescantIntelligent = 3,
};

enum OrganumArrangement : std::int32_t {
    kFourthAbove = 0,
    kFourthBelow = 1,
    kFifthAbove = 2,
    kFifthBelow = 3,
    kOctaveAbove = 4,
    kOctaveBelow = 5,
    kOctaveAround = 6,
};

// One entry of the user's Style list.
struct StyleEntry {
    const char* name;
    std::int32_t style;
    std::int32_t arrangement;      // the first, or the only one
    std::int32_t arrangementCount; // 1 where the entry stands for one arrangement
};

// One entry of the "Voice Arrangement" list.
struct ArrangementEntry {
    std::int32_t style;
    std::int32_t arrangement;
    const char* name;
};

inline constexpr std::int32_t kStyleListLength = 8;
inline constexpr std::int32_t kLargestManualInterval = 7; // scale steps; 7 is the octave
inline constexpr std::int32_t kManualIntervalCount = 2 * kLargestManualInterval + 1;

// In the order of the list.
std::span<const StyleEntry> StyleList();
// The named arrangements of a style, in the order of their codes; empty where the style has none to choose
// from.
std::span<const ArrangementEntry> ArrangementList(std::int32_t style);
// The names of the manual intervals by list position, from "Down Octave" to "Up Octave".
std::span<const char* const> ManualIntervalList();

// Whether a table knows the style, and the arrangement in it.
bool IsStyle(std::int32_t style);
bool IsArrangement(std::int32_t style, std::int32_t arrangement);
// The entry of the Style list that a style and arrangement belong to; -1 for none.
std::int32_t StyleListPosition(std::int32_t style, std::int32_t arrangement);

constexpr bool IsManualInterval(std::int32_t interval) {
    return interval >= -kLargestManualInterval && interval <= kLargestManualInterval;
}
constexpr std::int32_t IntervalAtListPosition(std::int32_t position) {
    return position - kLargestManualInterval;
}
constexpr std::int32_t ListPositionOfInterval(std::int32_t interval) {
    return interval + kLargestManualInterval;
}

// How many voices sound, the melody included; 4 for a style that no table knows.
std::int32_t CountVoices(std::int32_t style, std::int32_t arrangement);

} // namespace sonorelle::ConsortierClassic
