#include "support/glottal_source.h"

#include "support/portable_math.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sonorelle::test {

namespace {

// Pass band of the corners as a share of half the sample rate; with the window below, what folds back is
// inaudible.
constexpr double kCutoff = 0.9;

double WindowedSinc(double u, double reach) {
    if (std::abs(u) >= reach) return 0.0;
    const double blackman = 0.42 + 0.5 * CosTurns(u / (2.0 * reach)) + 0.08 * CosTurns(u / reach);
    const double x = kCutoff * u;
    return kCutoff * blackman * (x == 0.0 ? 1.0 : SinTurns(x / 2.0) / (kPi * x));
}

// The running integral of a table by the trapezium rule, beginning with 0.
std::vector<double> Integral(const std::vector<double>& values, double step) {
    std::vector<double> result(values.size(), 0.0);
    for (std::size_t i = 1; i < values.size(); ++i)
        result[i] = result[i - 1] + 0.5 * step * (values[i - 1] + values[i]);
    return result;
}

} // namespace

GlottalSource::GlottalSource() {
    constexpr std::size_t points = 2 * kReach * kPhases + 1;
    std::vector<double> impulse(points);
    for (std::size_t i = 0; i < points; ++i)
        impulse[i] = WindowedSinc(static_cast<double>(i) / kPhases - kReach, kReach);
    stepTable = Integral(impulse, 1.0 / kPhases);
    const double whole = stepTable.back();
    for (double& value : stepTable) value /= whole;
    rampTable = Integral(stepTable, 1.0 / kPhases);
    const double end = rampTable.back(); // exactly kReach, but for the rounding of the sum
    for (std::size_t i = 0; i < points; ++i) {
        const double u = static_cast<double>(i) / kPhases - kReach;
        rampTable[i] = rampTable[i] * kReach / end - std::max(u, 0.0);
    }
}

void GlottalSource::AddCorner(float* frames, std::size_t count, double position, double step,
                              double slope) const {
    const auto first = std::max<std::int64_t>(0, static_cast<std::int64_t>(std::ceil(position - kReach)));
    const auto end =
        std::min(static_cast<std::int64_t>(count), static_cast<std::int64_t>(std::floor(position + kReach)));
    for (std::int64_t n = first; n < end; ++n) {
        const double u = static_cast<double>(n) - position;
        const double at = (u + kReach) * kPhases;
        const auto index = static_cast<std::size_t>(at);
        const double part = at - static_cast<double>(index);
        const double stepNow =
            stepTable[index] + part * (stepTable[index + 1] - stepTable[index]) - (u >= 0.0 ? 1.0 : 0.0);
        const double rampNow = rampTable[index] + part * (rampTable[index + 1] - rampTable[index]);
        frames[n] += static_cast<float>(step * stepNow + slope * rampNow);
    }
}

void GlottalSource::AddPulse(float* frames, std::size_t count, double closureFrame, double openFrames,
                             double strength) const {
    const double opening = closureFrame - openFrames;
    const auto first = static_cast<std::int64_t>(std::max(0.0, std::ceil(opening)));
    const auto end =
        std::min(static_cast<std::int64_t>(count), static_cast<std::int64_t>(std::ceil(closureFrame)));
    for (std::int64_t n = first; n < end; ++n) {
        const double x = (static_cast<double>(n) - opening) / openFrames;
        frames[n] += static_cast<float>(strength * x * (2.0 - 3.0 * x));
    }
    AddCorner(frames, count, opening, 0.0, 2.0 * strength / openFrames);
    AddCorner(frames, count, closureFrame, strength, 4.0 * strength / openFrames);
}

} // namespace sonorelle::test
