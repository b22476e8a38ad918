#include "dsp/eq_coefficients.h"

#include "dsp/finite.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sonorelle {

namespace {

constexpr double kLowestFrequency = 0.0001; // of the sample rate
constexpr double kHighestFrequency = 0.4999;
constexpr double kLargestGain = 120.0; // decibels
constexpr double kLowestQ = 0.01;
constexpr double kHighestQ = 1000.0;
constexpr double kRootTwo = 1.4142135; // the damping of a Butterworth section

// A polynomial in z^-1, constant term first.
struct Quadratic {
    double c0, c1, c2;
};

EqCoefficients Section(const Quadratic& numerator, const Quadratic& denominator) {
    const double scale = 1.0 / denominator.c0;
    return {static_cast<float>(numerator.c0 * scale), static_cast<float>(numerator.c1 * scale),
            static_cast<float>(numerator.c2 * scale), static_cast<float>(-denominator.c1 * scale),
            static_cast<float>(-denominator.c2 * scale)};
}

// A section that boosts, or its inverse.
EqCoefficients BoostOrCut(bool boost, const Quadratic& boosting, const Quadratic& flat) {
    return boost ? Section(boosting, flat) : Section(flat, boosting);
}

// 1 + damping s + s^2 by the bilinear transform, with k the prewarped frequency.
Quadratic Resonance(double damping, double k) {
    return {1.0 + damping + k * k, 2.0 * (k * k - 1.0), 1.0 - damping + k * k};
}

EqCoefficients OnePole(double relativeFrequency) {
    const double c = std::cos(2.0 * std::numbers::pi * relativeFrequency);
    const double mix = 1.0 - (2.0 - c - std::sqrt((c - 2.0) * (c - 2.0) - 1.0));
    return {static_cast<float>(mix), 0.0f, 0.0f, static_cast<float>(1.0 - mix), 0.0f};
}

} // namespace

EqCoefficients ComputeEqCoefficients(std::int32_t type, float relativeFrequency, float gainDecibels,
                                     float q) {
    const double f = std::clamp(static_cast<double>(relativeFrequency), kLowestFrequency, kHighestFrequency);
    const double decibels = std::clamp(static_cast<double>(gainDecibels), -kLargestGain, kLargestGain);
    const double quality = std::clamp(static_cast<double>(q), kLowestQ, kHighestQ);
    const double k = std::tan(std::numbers::pi * f);
    const double k2 = k * k;
    const bool boost = decibels >= 0.0;
    const double v = std::pow(10.0, std::fabs(decibels) / 20.0); // of a boost; a cut is its inverse
    const double w = std::sqrt(v) * k * kRootTwo;
    const Quadratic flat = Resonance(kRootTwo * k, k);

    switch (type) {
    case kEqLowShelf:
        return BoostOrCut(boost, {1.0 + w + v * k2, 2.0 * (v * k2 - 1.0), 1.0 - w + v * k2}, flat);
    case kEqHighShelf:
        return BoostOrCut(boost, {v + w + k2, 2.0 * (k2 - v), v - w + k2}, flat);
    case kEqLowPass:
        return Section({k2, 2.0 * k2, k2}, flat);
    case kEqHighPass:
        return Section({1.0, -2.0, 1.0}, flat);
    case kEqOnePole:
        return OnePole(f);
    default:
        break;
    }

    const double e = k / quality;
    EqCoefficients peak = BoostOrCut(boost, Resonance(v * e, k), Resonance(e, k));
    if (type == kEqPeakDifference) peak.b0 = 0.0f;
    return peak;
}

bool IsStable(const EqCoefficients& section) {
    for (const float value : {section.b0, section.b1, section.b2, section.a1, section.a2}) {
        if (!IsFinite(value)) return false;
    }
    // The triangle of stability of z^2 - a1 z - a2, in f64 since its corners lie close to a1 = 2.
    const double a1 = static_cast<double>(section.a1);
    const double a2 = static_cast<double>(section.a2);
    return std::fabs(a2) < 1.0 && std::fabs(a1) < 1.0 - a2;
}

} // namespace sonorelle
