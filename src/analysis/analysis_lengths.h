// The lengths of time that the note analysis works with, in sample frames.

#pragma once

#include <cstdint>

namespace sonorelle {

struct AnalysisLengths {
    float sampleRate = 44100;     // Hz
    std::int32_t longWindow = 0;  // 0.2 s: more than one period of any vibrato
    std::int32_t shortWindow = 0; // 0.025 s: what is shorter is no run of voice
    std::int32_t window = 0;      // 0.1 s
    std::int32_t halfWindow = 0;  // 0.05 s

    static AnalysisLengths For(float sampleRate) {
        const auto rate = static_cast<double>(sampleRate);
        return {sampleRate, static_cast<std::int32_t>(0.2 * rate), static_cast<std::int32_t>(0.025 * rate),
                static_cast<std::int32_t>(0.1 * rate), static_cast<std::int32_t>(0.05 * rate)};
    }
};

} // namespace sonorelle
