// Analysis frames as the tests of their stages want them.

#pragma once

#include "analysis/frame_stages.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// Voiced frames of level 0.5, one for each pitch (MIDI notes), `step` samples apart from sample 0 on.
inline Frames FramesWithPitches(const std::vector<float>& pitches, std::int32_t step = 100) {
    Frames frames;
    for (const float pitch : pitches) {
        const auto position = static_cast<std::int32_t>(frames.size()) * step;
        frames.push_back({pitch, 0.5F, 1, position});
    }
    return frames;
}

} // namespace sonorelle
