#include "harmony/key.h"

#include "platform/result_codes.h"

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kTopPosition = kSemitonesInOctave - 1;

// Semitones from a position to the nearest tone of a scale in one direction; 0 for a tone.
std::int32_t DistanceToTone(std::int32_t scale, std::int32_t position, std::int32_t semitone) {
    std::int32_t distance = 0;
    while (ScaleTable[scale][PitchClass(position + distance * semitone)] == 0) ++distance;
    return distance;
}

} // namespace

std::int32_t CKey::SetRoot(std::int32_t pitchClass) {
    if (!IsKeyRoot(pitchClass)) return kBadArgument;
    root = pitchClass;
    BuildScaleMap();
    return kOk;
}

std::int32_t CKey::SetMelodyScale(std::int32_t index) {
    if (!IsMelodyScale(index)) return kBadArgument;
    melodyScale = index;
    BuildScaleMap();
    return kOk;
}

std::int32_t CKey::SetHarmonyScale(std::int32_t index) {
    if (!IsHarmonyScale(index)) return kBadArgument;
    harmonyScale = index;
    BuildScaleMap();
    return kOk;
}

std::int32_t CKey::ScaleWalk(std::int32_t position, Direction direction, std::int32_t n) const {
    const std::int32_t semitone = direction == Direction::kUp ? 1 : -1;
    std::int32_t distance = -1;
    std::int32_t here = PitchClass(position);
    for (std::int32_t met = 0; met < n; ++distance) {
        if (HasTone(here)) ++met;
        here = PitchClass(here + semitone);
    }
    return distance;
}

std::int32_t CKey::SnapToScale(std::int32_t pitch) const {
    const std::int32_t held = HoldPitch(pitch);
    const std::int32_t up = DistanceToTone(melodyScale, Position(held), 1);
    const std::int32_t down = DistanceToTone(melodyScale, Position(held), -1);
    return down > up ? held + up : held - down;
}

std::int32_t CKey::ApplyScaleMap(std::int32_t pitch) const {
    const std::int32_t held = HoldPitch(pitch);
    return held + scaleMap[static_cast<std::size_t>(PitchClass(held))];
}

std::int32_t CKey::Prepare(std::int32_t pitch) const {
    const std::int32_t snapped = SnapIfSet(pitch);
    return mapScale ? ApplyScaleMap(snapped) : snapped;
}

void CKey::BuildScaleMap() {
    scaleMap.fill(0);
    if (CountTones(melodyScale) == CountTones(harmonyScale))
        PairTonesOneByOne();
    else if (harmonyScale != kChromaticScale) // which has every tone already
        PairTonesUpwards();
}

// The k-th tone of the one scale becomes the k-th of the other.
void CKey::PairTonesOneByOne() {
    std::int32_t j = -1;
    for (std::int32_t i = 0; i < kSemitonesInOctave; ++i) {
        if (ScaleTable[melodyScale][i] == 0) continue;
        do ++j;
        while (!HasTone(j));
        scaleMap[static_cast<std::size_t>(PitchClass(i + root))] = j - i;
    }
}

// Each tone becomes the next harmony tone that is not taken; where none is left above, the highest of all.
void CKey::PairTonesUpwards() {
    std::int32_t j = 0;
    for (std::int32_t i = 0; i < kSemitonesInOctave; ++i) {
        if (ScaleTable[melodyScale][i] == 0) continue;
        while (j <= kTopPosition && !HasTone(j)) ++j;
        if (j > kTopPosition) {
            j = kTopPosition;
            while (!HasTone(j)) --j;
        }
        scaleMap[static_cast<std::size_t>(PitchClass(i + root))] = j - i;
        ++j;
    }
}

} // namespace sonorelle::ConsortierClassic
