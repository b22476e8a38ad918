// Which numbers may enter a filter's memory. One that is not finite would stay in a feedback for ever, and
// one near the smallest that the processor can hold makes every later operation a hundred times slower. The
// tests look at the bits, so that they vectorise and cost next to nothing off a filter's critical path.
//
// Pure functions for any thread.

#pragma once

#include <bit>
#include <cstdint>

namespace sonorelle {

inline constexpr std::uint32_t kMagnitudeBits = 0x7fffffffu;
inline constexpr std::uint32_t kInfinityBits = 0x7f800000u;

// 2^-80, about 8.3e-25 or -482 dB: far below anything heard or measured, and far enough above the smallest
// normal number (1.2e-38) that products with a filter's coefficients stay normal too.
inline constexpr float kSilenceFloor = 8.2718061e-25f;

inline bool IsFinite(float value) {
    return (std::bit_cast<std::uint32_t>(value) & kMagnitudeBits) < kInfinityBits;
}

// `sample`, or 0 where it is not a finite number.
inline float FiniteOrZero(float sample) { return IsFinite(sample) ? sample : 0.0f; }

// `sample`, or 0 where it is not a finite number or lies below the silence floor.
inline float AudibleOrZero(float sample) {
    constexpr std::uint32_t kFloorBits = (127u - 80u) << 23; // 2^-80
    const std::uint32_t magnitude = std::bit_cast<std::uint32_t>(sample) & kMagnitudeBits;
    return magnitude - kFloorBits < kInfinityBits - kFloorBits ? sample : 0.0f;
}

} // namespace sonorelle
