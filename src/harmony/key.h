// The key of a piece: one root, the scale that the melody is snapped in, the scale that the harmony is built
// in, and the map from the tones of the one on to those of the other.
//
// A position is a pitch class counted from the key root, so that everything written in positions holds in
// every key. The walks along the scale always read the harmony scale. No operation allocates; each is a few
// table lookups. Whoever shares a key between threads locks it.

#pragma once

#include "harmony/pitch_class.h"
#include "harmony/scales.h"

#include <array>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

enum class Direction { kUp, kDown };

class CKey {
public:
    // Each stores and rebuilds the scale map. 0, or kBadArgument with nothing changed: the root is 0 to 11,
    // the melody scale a named row, the harmony scale any row.
    std::int32_t SetRoot(std::int32_t pitchClass);
    std::int32_t SetMelodyScale(std::int32_t index);
    std::int32_t SetHarmonyScale(std::int32_t index);
    // Whether Prepare snaps, and whether it maps. Both are on at first.
    void SetSnapToScale(bool on) { snapToScale = on; }
    void SetMapScale(bool on) { mapScale = on; }

    std::int32_t GetRoot() const { return root; }
    std::int32_t GetMelodyScale() const { return melodyScale; }
    std::int32_t GetHarmonyScale() const { return harmonyScale; }
    bool GetSnapToScale() const { return snapToScale; }
    bool GetMapScale() const { return mapScale; }
    // Semitones to add to a pitch, by its absolute pitch class.
    const std::array<std::int32_t, kSemitonesInOctave>& GetScaleMap() const { return scaleMap; }

    // The place of a pitch in the key: 0 (the root) to 11.
    std::int32_t Position(std::int32_t pitch) const { return IntervalUp(root, pitch); }
    // Whether the harmony scale has the pitch.
    bool IsInScale(std::int32_t pitch) const { return HasTone(Position(pitch)); }

    // The distance in semitones from a position to the n-th tone of the harmony scale in a direction. A start
    // that is a tone counts as the first: in major, (0, kUp, 3) is 4, a third above the root. From a position
    // outside the scale every count is reached one tone later. -1 for n below 1.
    std::int32_t ScaleWalk(std::int32_t position, Direction direction, std::int32_t n) const;

    // The steps of the harmony scale that an interval of `semitones` (of any size and sign) spans from a
    // position: 0 within one tone, 1 a second, 2 a third, and 7 an octave where the scale has seven tones;
    // falling intervals are negative. From a position outside the scale a rising count is one lower than from
    // a tone.
    std::int32_t ScaleSteps(std::int32_t position, std::int32_t semitones) const;

    // Three readings of the interval from one pitch to another in scale steps. They differ in what they do
    // with octaves:
    std::int32_t StepsBetween(std::int32_t from, std::int32_t to) const;      // kept
    std::int32_t StepsUpwards(std::int32_t from, std::int32_t to) const;      // as a rising interval
    std::int32_t StepsWithinOctave(std::int32_t from, std::int32_t to) const; // taken off, the direction kept

    // The nearest tone of the melody scale; exactly between two tones, the lower.
    std::int32_t SnapToScale(std::int32_t pitch) const;
    // A pitch of the melody scale carried over to the harmony scale.
    std::int32_t ApplyScaleMap(std::int32_t pitch) const;
    // What every generator does with the melody pitch first: snap, then map, each one if its flag is set.
    std::int32_t Prepare(std::int32_t pitch) const;
    // The first half of Prepare.
    std::int32_t SnapIfSet(std::int32_t pitch) const {
        return snapToScale ? SnapToScale(pitch) : HoldPitch(pitch);
    }

private:
    bool HasTone(std::int32_t position) const { return ScaleTable[harmonyScale][position] != 0; }
    void BuildScaleMap();
    void PairTonesOneByOne();
    void PairTonesUpwards();

    std::int32_t root = 0; // one root for both scales
    std::int32_t melodyScale = kMajorScale;
    std::int32_t harmonyScale = kMajorScale;
    bool snapToScale = true;
    bool mapScale = true;
    std::array<std::int32_t, kSemitonesInOctave> scaleMap{};
};

inline std::int32_t CKey::ScaleSteps(std::int32_t position, std::int32_t semitones) const {
    // A falling interval has the steps of the rising one from its other end.
    if (semitones < 0) return -ScaleSteps(PitchClass(std::int64_t{position} + semitones), -semitones);
    const std::int32_t octaves = semitones / kSemitonesInOctave;
    const std::int32_t rest = semitones % kSemitonesInOctave;
    return octaves * CountTones(harmonyScale) +
           ScaleStepsWithinOctave(harmonyScale, PitchClass(position), rest);
}

inline std::int32_t CKey::StepsUpwards(std::int32_t from, std::int32_t to) const {
    return ScaleStepsWithinOctave(harmonyScale, Position(from), IntervalUp(from, to));
}

inline std::int32_t CKey::StepsBetween(std::int32_t from, std::int32_t to) const {
    return ScaleSteps(Position(from), to - from);
}

inline std::int32_t CKey::StepsWithinOctave(std::int32_t from, std::int32_t to) const {
    return ScaleSteps(Position(from), (to - from) % kSemitonesInOctave);
}

} // namespace sonorelle::ConsortierClassic
