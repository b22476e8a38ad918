// From lengths that are products of ratios to whole samples. Beyond the range of i32 they are held to it.

#pragma once

#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace sonorelle {

// Rounded towards zero.
inline std::int32_t WholeSamples(float samples) noexcept {
    return TruncateToI32(static_cast<double>(samples));
}

// Rounded to the nearest, halves up.
inline std::int32_t NearestSamples(float samples) noexcept {
    return WholeSamples(std::floor(samples + 0.5F));
}

inline std::int32_t HoldToI32(std::int64_t samples) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(samples, Limits::min(), Limits::max()));
}

} // namespace sonorelle
