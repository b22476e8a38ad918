#include "app/fade.h"

#include <algorithm>

namespace sonorelle {

// In f32 the gain arrives after some thousand samples at a number that the next step gives back, a little
// below 1 or above 0. From there on there is nothing to compute.
void CFade::Next(float* curve, std::int32_t count) {
    const float coefficient = fadeCoefficient.load(std::memory_order_relaxed);
    const float approach = (1 - coefficient) * fadeTarget.load(std::memory_order_relaxed);
    const auto step = [=](float gain) { return approach + coefficient * gain + kDenormalGuard; };

    float gain = fadeGain;
    if (step(gain) == gain) {
        std::fill_n(curve, std::max(count, 0), gain);
        return;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        gain = step(gain);
        curve[i] = gain;
    }
    fadeGain = gain;
}

} // namespace sonorelle
