#include "analysis/mean_pitch.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kSteadyDeviation = 0.1; // semitones

double MeanOf(const std::vector<float>& values, std::size_t first, std::size_t end) {
    double sum = 0;
    for (std::size_t i = first; i < end; ++i) sum += static_cast<double>(values[i]);
    return sum / static_cast<double>(end - first);
}

// Rising, what is not a number last: sorting needs an order that holds for every value.
bool ComesBefore(float a, float b) { return a < b || (std::isnan(b) && !std::isnan(a)); }

} // namespace

float MeanPitch(const AnalysisFrame* frames, std::int32_t first, std::int32_t last, bool stable,
                std::vector<float>& scratch) {
    scratch.clear();
    for (std::int32_t i = first; i < last; ++i) {
        if (frames[i].voiced != 0) scratch.push_back(frames[i].pitch);
    }
    std::sort(scratch.begin(), scratch.end(), ComesBefore);
    const std::size_t count = scratch.size();
    const std::size_t quarter = count >> 2;
    const bool trimmed = quarter > 1;
    const std::size_t begin = trimmed ? (count >> 1) - quarter : 0;
    const std::size_t end = trimmed ? (count >> 1) + quarter : count;
    const double mean = MeanOf(scratch, begin, end);
    if (stable) {
        double deviation = 0;
        for (std::size_t i = begin; i < end; ++i)
            deviation += std::fabs(static_cast<double>(scratch[i]) - mean);
        if (deviation / static_cast<double>(end - begin) < kSteadyDeviation) {
            return static_cast<float>(MeanOf(scratch, 0, count));
        }
    }
    return static_cast<float>(mean);
}

LevelMeans::LevelMeans(const std::vector<AnalysisFrame>& frames) : sums(frames.size() + 1, 0.0) {
    for (std::size_t i = 0; i < frames.size(); ++i)
        sums[i + 1] = sums[i] + static_cast<double>(frames[i].level);
}

float LevelMeans::Mean(std::int32_t first, std::int32_t last) const {
    const double sum =
        sums[static_cast<std::size_t>(std::max(last, first))] - sums[static_cast<std::size_t>(first)];
    return static_cast<float>(sum / std::max(last - first, 0));
}

} // namespace sonorelle
