// Measures of a stretch of samples, in whole vectors. The order of all sums is fixed, so that results are the
// same on every machine.

#pragma once

#include <cstdint>
#include <cstring>

namespace sonorelle {

namespace sample_math_detail {

using Float4 = float __attribute__((vector_size(16)));
inline constexpr std::int32_t kLanes = 4;

inline Float4 Load(const float* from) {
    Float4 value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

inline Float4 Larger(Float4 a, Float4 b) { return a > b ? a : b; }

} // namespace sample_math_detail

// The largest |x| of `count` samples, 0 without any; a sample that is not a number counts as nothing.
inline float LargestMagnitude(const float* samples, std::int32_t count) {
    using namespace sample_math_detail;
    Float4 largest[2] = {};
    std::int32_t i = 0;
    for (; i + 2 * kLanes <= count; i += 2 * kLanes) {
        const Float4 a = Load(samples + i);
        const Float4 b = Load(samples + i + kLanes);
        largest[0] = Larger(Larger(a, -a), largest[0]);
        largest[1] = Larger(Larger(b, -b), largest[1]);
    }
    const Float4 both = Larger(largest[0], largest[1]);
    float result = 0;
    for (std::int32_t lane = 0; lane < kLanes; ++lane) result = both[lane] > result ? both[lane] : result;
    for (; i < count; ++i) {
        const float magnitude = samples[i] < 0 ? -samples[i] : samples[i];
        result = magnitude > result ? magnitude : result;
    }
    return result;
}

// The sum of x^2 over `count` samples.
inline float SumOfSquares(const float* samples, std::int32_t count) {
    using namespace sample_math_detail;
    Float4 sums[2] = {};
    std::int32_t i = 0;
    for (; i + 2 * kLanes <= count; i += 2 * kLanes) {
        const Float4 a = Load(samples + i);
        const Float4 b = Load(samples + i + kLanes);
        sums[0] += a * a;
        sums[1] += b * b;
    }
    const Float4 both = sums[0] + sums[1];
    float result = (both[0] + both[1]) + (both[2] + both[3]);
    for (; i < count; ++i) result += samples[i] * samples[i];
    return result;
}

} // namespace sonorelle
