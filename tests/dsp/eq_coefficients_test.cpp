#include "dsp/eq_coefficients.h"

#include "support/portable_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

namespace sonorelle {
namespace {

using test::kPi;

using Complex = std::complex<double>;

double Response(const EqCoefficients& c, double frequency) {
    const Complex z1 = std::polar(1.0, -2.0 * kPi * frequency);
    const Complex z2 = z1 * z1;
    const Complex numerator = double{c.b0} + double{c.b1} * z1 + double{c.b2} * z2;
    return std::abs(numerator / (1.0 - double{c.a1} * z1 - double{c.a2} * z2));
}

// The analogue filters that the sections are made after, with s in units of the prewarped frequency.
double Analogue(std::int32_t type, double gain, double q, Complex s) {
    const double v = std::pow(10.0, std::fabs(gain) / 20.0);
    const Complex butterworth = s * s + std::sqrt(2.0) * s + 1.0;
    Complex boost = 1.0;
    switch (type) {
    case kEqLowPass:
        return std::abs(1.0 / butterworth);
    case kEqHighPass:
        return std::abs(s * s / butterworth);
    case kEqLowShelf:
        boost = (s * s + std::sqrt(2.0 * v) * s + v) / butterworth;
        break;
    case kEqHighShelf:
        boost = (v * s * s + std::sqrt(2.0 * v) * s + 1.0) / butterworth;
        break;
    case kEqPeak:
        boost = (s * s + v / q * s + 1.0) / (s * s + s / q + 1.0);
        break;
    default:
        break;
    }
    return gain < 0.0 ? 1.0 / std::abs(boost) : std::abs(boost);
}

TEST(EqCoefficients, ResponsesAreThoseOfTheAnalogueFilters) {
    for (const std::int32_t type : {kEqLowShelf, kEqHighShelf, kEqPeak, kEqLowPass, kEqHighPass}) {
        for (const float f : {0.01f, 0.1f, 0.25f, 4000.0f / 11025.0f, 0.44f}) {
            for (const float gain : {-24.0f, -6.0f, 0.0f, 3.0f, 18.0f}) {
                for (const float q : {0.5f, 1.0f, 8.0f}) {
                    const EqCoefficients section = ComputeEqCoefficients(type, f, gain, q);
                    for (double at = 0.002; at < 0.5; at += 0.013) {
                        const double warped = std::tan(kPi * at) / std::tan(kPi * static_cast<double>(f));
                        const double expected = Analogue(type, static_cast<double>(gain),
                                                         static_cast<double>(q), Complex(0.0, warped));
                        // f32 coefficients near the unit circle move a response at 0.01 of the rate by some
                        // 1e-4 of itself; -100 dB beside the largest gain is lost in their rounding.
                        ASSERT_NEAR(Response(section, at), expected, 3e-3 * expected + 1e-5)
                            << "type " << type << " at " << f << ", " << gain << " dB, q " << q
                            << ", seen at " << at;
                    }
                }
            }
        }
    }
}

TEST(EqCoefficients, LowPassAndHighPassAreThreeDecibelsDownAtTheirFrequency) {
    for (const float f : {0.02f, 0.1f, 4000.0f / 11025.0f}) {
        for (const std::int32_t type : {kEqLowPass, kEqHighPass}) {
            EXPECT_NEAR(Response(ComputeEqCoefficients(type, f, 0.0f, 1.0f), static_cast<double>(f)),
                        std::sqrt(0.5), 1e-4);
        }
    }
}

TEST(EqCoefficients, GainZeroIsFlat) {
    for (const std::int32_t type : {kEqLowShelf, kEqHighShelf, kEqPeak}) {
        const EqCoefficients section = ComputeEqCoefficients(type, 0.1f, 0.0f, 2.0f);
        for (double at = 0.0; at < 0.5; at += 0.05) EXPECT_NEAR(Response(section, at), 1.0, 1e-5);
    }
}

TEST(EqCoefficients, ACutUndoesItsBoost) {
    for (const std::int32_t type : {kEqLowShelf, kEqHighShelf, kEqPeak}) {
        const EqCoefficients boost = ComputeEqCoefficients(type, 0.1f, 12.0f, 2.0f);
        const EqCoefficients cut = ComputeEqCoefficients(type, 0.1f, -12.0f, 2.0f);
        for (double at = 0.0; at < 0.5; at += 0.01) {
            EXPECT_NEAR(Response(boost, at) * Response(cut, at), 1.0, 1e-5);
        }
    }
}

TEST(EqCoefficients, ShelvesReachTheirGainAtTheirEndAndNothingAtTheOther) {
    const double four = std::pow(10.0, 12.0 / 20.0);
    EXPECT_NEAR(Response(ComputeEqCoefficients(kEqLowShelf, 0.1f, 12.0f, 1.0f), 0.0), four, 1e-4);
    EXPECT_NEAR(Response(ComputeEqCoefficients(kEqLowShelf, 0.1f, 12.0f, 1.0f), 0.5), 1.0, 1e-5);
    EXPECT_NEAR(Response(ComputeEqCoefficients(kEqHighShelf, 0.1f, 12.0f, 1.0f), 0.0), 1.0, 1e-5);
    EXPECT_NEAR(Response(ComputeEqCoefficients(kEqHighShelf, 0.1f, -12.0f, 1.0f), 0.5), 1.0 / four, 1e-5);
}

TEST(EqCoefficients, PeakDifferenceIsThePeakWithoutItsFirstTap) {
    for (const float gain : {-9.0f, 9.0f}) {
        const EqCoefficients peak = ComputeEqCoefficients(kEqPeak, 0.1f, gain, 2.0f);
        const EqCoefficients difference = ComputeEqCoefficients(kEqPeakDifference, 0.1f, gain, 2.0f);
        EXPECT_EQ(difference.b0, 0.0f);
        EXPECT_EQ(difference.b1, peak.b1);
        EXPECT_EQ(difference.b2, peak.b2);
        EXPECT_EQ(difference.a1, peak.a1);
        EXPECT_EQ(difference.a2, peak.a2);
    }
}

TEST(EqCoefficients, OnePoleIsThreeDecibelsDownAtItsFrequencyAndOneAtRest) {
    for (const float f : {0.01f, 0.1f, 0.2f}) {
        const EqCoefficients section = ComputeEqCoefficients(kEqOnePole, f, 0.0f, 1.0f);
        EXPECT_NEAR(Response(section, 0.0), 1.0, 1e-5);
        EXPECT_NEAR(Response(section, static_cast<double>(f)), std::sqrt(0.5), 1e-5);
        EXPECT_EQ(section.b1, 0.0f);
        EXPECT_EQ(section.b2, 0.0f);
        EXPECT_EQ(section.a2, 0.0f);
    }
}

TEST(EqCoefficients, DenominatorsAreHeldNegated) {
    // A low-pass at a quarter of the rate has K = 1: denominator 1, 0, (2 - r2) / (2 + r2).
    const EqCoefficients section = ComputeEqCoefficients(kEqLowPass, 0.25f, 0.0f, 1.0f);
    EXPECT_NEAR(section.a1, 0.0, 1e-7);
    EXPECT_NEAR(section.a2, -(2.0 - std::sqrt(2.0)) / (2.0 + std::sqrt(2.0)), 1e-6);
    EXPECT_NEAR(section.b0, 1.0 / (2.0 + std::sqrt(2.0)), 1e-6);
    EXPECT_NEAR(section.b1, 2.0 / (2.0 + std::sqrt(2.0)), 1e-6);
}

TEST(EqCoefficients, MusicalParametersGiveStableSections) {
    for (std::int32_t type = 0; type < kEqTypeCount; ++type) {
        for (const float f : {0.001f, 0.003f, 0.01f, 0.1f, 0.3f, 0.45f, 0.49f, 0.497f, 0.499f}) {
            for (const float gain : {-24.0f, -12.0f, -1.0f, 0.0f, 1.0f, 12.0f, 24.0f}) {
                for (const float q : {0.1f, 0.7f, 1.0f, 10.0f, 100.0f}) {
                    EXPECT_TRUE(IsStable(ComputeEqCoefficients(type, f, gain, q)))
                        << "type " << type << ", " << f << ", " << gain << " dB, q " << q;
                }
            }
        }
    }
}

TEST(EqCoefficients, EveryFiniteParameterGivesFiniteCoefficients) {
    const float largest = std::numeric_limits<float>::max();
    for (std::int32_t type = 0; type < kEqTypeCount; ++type) {
        for (const float f : {-largest, -0.1f, 0.0f, 1e-30f, 0.3f, 0.4999f, 0.5f, 0.7f, largest}) {
            for (const float gain : {-largest, -120.0f, 0.0f, 120.0f, largest}) {
                for (const float q : {-largest, 0.0f, 1e-30f, 1.0f, largest}) {
                    const EqCoefficients c = ComputeEqCoefficients(type, f, gain, q);
                    for (const float value : {c.b0, c.b1, c.b2, c.a1, c.a2})
                        EXPECT_TRUE(std::isfinite(value));
                }
            }
        }
    }
}

TEST(EqCoefficients, StabilityMeansPolesInsideTheUnitCircle) {
    EXPECT_TRUE(IsStable({1.0f, 0.0f, 0.0f, 1.8f, -0.81f})); // both at 0.9
    EXPECT_FALSE(IsStable({1.0f, 0.0f, 0.0f, 2.0f, -1.0f})); // both at 1
    EXPECT_FALSE(IsStable({1.0f, 0.0f, 0.0f, 0.0f, -1.0f})); // at +-i
    EXPECT_FALSE(IsStable({1.0f, 0.0f, 0.0f, 1.1f, 0.0f}));  // at 1.1
    EXPECT_FALSE(IsStable({1.0f, 0.0f, 0.0f, -0.5f, 0.6f})); // at 0.56 and -1.06
    EXPECT_FALSE(IsStable({std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f, 0.0f, 0.0f}));
    EXPECT_FALSE(IsStable({1.0f, 0.0f, 0.0f, std::numeric_limits<float>::infinity(), 0.0f}));
}

} // namespace
} // namespace sonorelle
