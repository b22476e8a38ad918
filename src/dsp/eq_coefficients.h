// The coefficients of the equaliser's filters, from musical parameters.
//
// Second-order sections by the bilinear transform, as in U. Zoelzer (ed.), DAFX: Digital Audio Effects,
// chapter on filters: Butterworth low-pass and high-pass, parametric peak, shelves. The formulas are computed
// in f64.
//
// Departures and quirks: kEqPeakDifference is the peak filter without its first tap, so that it gives what
// the peak feeds back from earlier samples alone; kEqOnePole is a one-pole low-pass.
//
// Pure functions for any thread.

#pragma once

#include <cstdint>

namespace sonorelle {

inline constexpr std::int32_t kEqLowShelf = 0;
inline constexpr std::int32_t kEqHighShelf = 1;
inline constexpr std::int32_t kEqPeak = 2;
inline constexpr std::int32_t kEqLowPass = 3;
inline constexpr std::int32_t kEqHighPass = 4;
inline constexpr std::int32_t kEqPeakDifference = 5;
inline constexpr std::int32_t kEqOnePole = 6;
inline constexpr std::int32_t kEqTypeCount = 7;

// y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] + a1 y[n-1] + a2 y[n-2]: the denominators are held negated.
struct EqCoefficients {
    float b0 = 1.0f;
    float b1 = 0.0f;
    float b2 = 0.0f;
    float a1 = 0.0f;
    float a2 = 0.0f;
};

// The section of `type` for a frequency relative to the sample rate, a gain in decibels (shelves and peak: 0
// or more boosts, less cuts by as much; the cut is the inverse of the boost) and a q (peak: centre frequency
// over bandwidth). All finite.
//
// Held to frequencies of 0.0001 to 0.4999 (4.4 Hz to 22.05 kHz at 44.1 kHz), gains of -120 to 120 dB and a q
// of 0.01 to 1000. The result is then finite, and stable wherever music is made (0.001 to 0.499, 24 dB either
// way, a q of 0.1 to 100); in the corners, such as a shelf that cuts by 100 dB, f32 may no longer hold the
// poles inside the unit circle, which IsStable tells.
EqCoefficients ComputeEqCoefficients(std::int32_t type, float relativeFrequency, float gainDecibels, float q);

// True when all five are finite and both poles lie inside the unit circle.
bool IsStable(const EqCoefficients& section);

} // namespace sonorelle
