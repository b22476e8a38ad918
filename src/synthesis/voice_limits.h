// How far a voice may be bent, and what it must have room for then.

#pragma once

#include <cstdint>

namespace sonorelle {

struct VoiceLimits {
    static constexpr float kLowestPitch = 0.125F;        // three octaves down ...
    static constexpr float kHighestPitch = 8.0F;         // ... and up: beyond, nothing of a voice is left
    static constexpr float kHighestFormant = 1.5874011F; // 8 semitones up
    static constexpr float kLowestFormant = 1.0F / kHighestFormant;
    static constexpr std::int32_t kLargestBlock = 4096; // samples
    // Most input samples of one block beyond what its grains read: a block of 64 at a hundred times the
    // speed, one of 4096 at four times. Faster than that the grains outrun their input, and fall silent.
    static constexpr std::int32_t kFastRead = 16384;

    std::int32_t longestPeriod = 4096; // samples between two marks; longer ones are held to it
    std::int32_t longestTiming = 0;    // samples of the humanised offset

    std::int32_t LargestSpan() const;    // input that one side of a grain reads at most
    std::int32_t LargestTake() const;    // input of one block at most
    std::int32_t History() const;        // input kept before the mark in use, besides the timing's swing
    std::int32_t InputCapacity() const;  // all input that is ever held
    std::int32_t OutputCapacity() const; // all output in flight
};

} // namespace sonorelle
