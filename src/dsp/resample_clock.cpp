#include "dsp/resample_clock.h"

#include "dsp/kaiser_sinc.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

bool ResampleClock::SetRates(std::int32_t input, std::int32_t output) {
    if (input == inputRate && output == outputRate) return false;
    inputRate = input;
    outputRate = output;
    ratio = static_cast<double>(output) / input;
    inverse = 1.0 / ratio;
    wholeAdvance = static_cast<std::int64_t>(inverse);
    fractionAdvance = inverse - static_cast<double>(wholeAdvance);
    const double entries = std::min(ratio * kSamplesPerCrossing, double{kSamplesPerCrossing});
    step = static_cast<std::int32_t>(std::floor(entries * 128.0 + 0.5));
    return true;
}

std::int64_t ResampleClock::CountOutputs(std::int64_t usableFrames) const {
    if (usableFrames <= 0) return 0;
    const auto usable = static_cast<double>(usableFrames);
    if (ratio >= 1.0) {
        const auto limit = static_cast<std::int64_t>(std::floor(usable * ratio * 100.0 + 0.5));
        return (limit + 99) / 100; // all i with 100 i < limit
    }
    const auto isUsable = [&](std::int64_t i) {
        return std::floor(static_cast<double>(i) * inverse * 100.0 + 0.5) < usable * 100.0;
    };
    auto outputs = static_cast<std::int64_t>(usable * ratio); // at most one off
    while (outputs > 0 && !isUsable(outputs - 1)) --outputs;
    while (isUsable(outputs)) ++outputs;
    return outputs;
}

} // namespace sonorelle
