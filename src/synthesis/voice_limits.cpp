#include "synthesis/voice_limits.h"

#include "synthesis/psola_synthesis.h"
#include "synthesis/sample_counts.h"

#include <algorithm>

namespace sonorelle {

namespace {

// Samples of `period` stretched by `ratio`.
std::int32_t Stretched(std::int32_t period, float ratio) {
    return WholeSamples(static_cast<float>(period) * ratio) + 1;
}

} // namespace

std::int32_t VoiceLimits::LargestSpan() const {
    return Stretched(longestPeriod, kHighestPitch * kHighestFormant);
}

std::int32_t VoiceLimits::LargestTake() const { return LargestSpan() + longestPeriod + kFastRead; }

// A grain that follows one of the lowest pitch may reach as far back as that one reached ahead.
std::int32_t VoiceLimits::History() const { return std::max(CPSOLASynthesis::kUsualHistory, LargestSpan()); }

std::int32_t VoiceLimits::InputCapacity() const { return History() + longestTiming + 2 * LargestTake(); }

std::int32_t VoiceLimits::OutputCapacity() const {
    return kLargestBlock + 2 * Stretched(longestPeriod, kHighestPitch);
}

} // namespace sonorelle
