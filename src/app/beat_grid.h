// Bars and beats over a recording.
//
//     BeatGrid grid;                  // 120 quarters a minute, 4/4, the first bar begins with the recording
//     grid.sampleRate = 48000;
//     grid.SamplesPerBeat();          // 24000
//     grid.PositionAt(100000);        // bar 2, beat 1, tick 64
//
// Pure functions for any thread; nothing allocates. A tempo, rate or signature that makes no sense is
// replaced by the ones above.

#pragma once

#include <cstdint>

namespace sonorelle {

// Quarters in a bar where nobody tells: a host without a time signature, a new arrangement.
inline constexpr std::int32_t kUsualMetre = 4;

struct BeatPosition {
    std::int32_t bar = 1;
    std::int32_t beat = 1;
    std::int32_t tick = 0; // 0 to BeatGrid::kTicksPerBeat - 1

    bool operator==(const BeatPosition&) const = default;
};

struct BeatGrid {
    static constexpr float kDefaultTempo = 120;
    static constexpr float kLowestTempo = 20; // by dragging; as the tempo input takes it
    static constexpr float kHighestTempo = 999;
    static constexpr float kDefaultRate = 44100;
    static constexpr std::int32_t kTicksPerBeat = 384; // as in exported MIDI files

    float tempo = kDefaultTempo; // quarter notes a minute
    float sampleRate = kDefaultRate;
    double anchor = 0; // sample at which a bar, counted as the first, begins; may lie before the recording
    std::int32_t numerator = kUsualMetre;
    std::int32_t denominator = kUsualMetre;

    BeatGrid Cleaned() const; // with all values in their ranges
    double SamplesPerBeat() const;
    double BeatFromSample(double sample) const; // beats since the anchor, with fraction; negative before it
    double SampleFromBeat(double beat) const;
    BeatPosition PositionAt(double sample) const;
    // The tempo at which what lay at `from` lies at `to`: the beats move with the pointer. Held to
    // kLowestTempo and kHighestTempo; the same tempo when `from` or `to` are no use for it (on the anchor or
    // on different sides of it).
    float TempoAfterDrag(double from, double to) const;
};

} // namespace sonorelle
