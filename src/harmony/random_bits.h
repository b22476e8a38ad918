// The coin of the randomised arrangements: a linear congruential generator whose sequence is part of what a
// listener knows, since every new engine starts it alike.

#pragma once

#include <cstdint>

namespace sonorelle::ConsortierClassic {

class CRandomBits {
public:
    // The next number, 0 to 32767.
    std::int32_t Next() {
        state = state * kMultiplier + kIncrement;
        return static_cast<std::int32_t>((state >> kShift) & kMask);
    }
    bool NextBit() { return (Next() & 1) != 0; }

private:
    static constexpr std::uint32_t kStart = 42;
    static constexpr std::uint32_t kMultiplier = 214013; // modulo 2^32
    static constexpr std::uint32_t kIncrement = 2531011;
    static constexpr std::uint32_t kShift = 16; // the low bits of such a generator are the poor ones
    static constexpr std::uint32_t kMask = 0x7FFF;

    std::uint32_t state = kStart;
};

} // namespace sonorelle::ConsortierClassic
