#include "app/seam.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace sonorelle {

namespace {

// The falling half of a cosine, from 1 to 0.
float ShareLeft(std::int32_t passed) {
    const double phase = std::numbers::pi * (passed + 1) / (CSeam::kLength + 1);
    return static_cast<float>(0.5 + 0.5 * std::cos(phase));
}

} // namespace

void CSeam::Close(float* const* outputs, std::int32_t outputCount, std::int32_t frames) {
    const std::int32_t cut = cutAt < frames ? cutAt : kNowhere;
    cutAt = kNowhere;
    const std::int32_t count = std::min(outputCount, kMostOutputs);
    const auto add = [&](std::int32_t output, std::int32_t from, std::int32_t to) {
        const float height = step[static_cast<std::size_t>(output)];
        if (height == 0) return;
        for (std::int32_t i = from; i < to && passed + i - from < kLength; ++i)
            outputs[output][i] += height * ShareLeft(passed + i - from);
    };
    const std::int32_t beforeCut = cut < 0 ? frames : cut;
    for (std::int32_t output = 0; output < count; ++output) add(output, 0, beforeCut);
    passed = std::min(passed + beforeCut, kLength);
    if (cut >= 0) {
        passed = 0;
        for (std::int32_t output = 0; output < count; ++output) {
            const auto o = static_cast<std::size_t>(output);
            const float before = cut > 0 ? outputs[output][cut - 1] : lastSample[o];
            const float missing = before - outputs[output][cut];
            step[o] = std::isfinite(missing) ? missing : 0;
            add(output, cut, frames);
        }
        passed = std::min(frames - cut, kLength);
    }
    for (std::int32_t output = 0; output < kMostOutputs; ++output)
        lastSample[static_cast<std::size_t>(output)] = output < count ? outputs[output][frames - 1] : 0;
}

} // namespace sonorelle
