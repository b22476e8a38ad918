#include "dsp/kaiser_sinc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace sonorelle {
namespace {

TEST(KaiserSinc, BesselAgreesWithTheLibrarys) {
    for (double argument = 0.0; argument <= 30.0; argument += 0.125) {
        const double expected = std::cyl_bessel_i(0.0, argument);
        EXPECT_NEAR(BesselI0(argument), expected, 1e-13 * expected) << argument;
    }
}

TEST(KaiserSinc, BesselIsEvenAndOneAtZero) {
    EXPECT_EQ(BesselI0(0.0), 1.0);
    EXPECT_EQ(BesselI0(-9.0), BesselI0(9.0));
}

TEST(KaiserSinc, CentreIsTheRolloff) { EXPECT_EQ(KaiserSinc(0, 768, 0.90234375, 9.0), 0.90234375); }

TEST(KaiserSinc, IsASincUnderItsWindow) {
    constexpr int kSize = 768;
    constexpr double kRolloff = 0.90234375;
    for (int i = 1; i < kSize; ++i) {
        const double crossings = i / 256.0;
        const double sinc =
            std::sin(std::numbers::pi * crossings * kRolloff) / (std::numbers::pi * crossings);
        const double v = i / 767.0;
        const double window =
            std::cyl_bessel_i(0.0, 9.0 * std::sqrt(1.0 - v * v)) / std::cyl_bessel_i(0.0, 9.0);
        ASSERT_NEAR(KaiserSinc(i, kSize, kRolloff, 9.0), sinc * window, 1e-14) << i;
    }
}

TEST(KaiserSinc, AtFullBandItVanishesAtEachZeroCrossing) {
    for (int crossing = 1; crossing < 8; ++crossing) {
        EXPECT_NEAR(KaiserSinc(crossing * kSamplesPerCrossing, 2048, 1.0, 9.0), 0.0, 1e-15);
    }
}

TEST(KaiserSinc, TheWindowEndsAtOneOverBesselOfBeta) {
    const double u = std::numbers::pi * 767 / 256.0;
    EXPECT_NEAR(KaiserSinc(767, 768, 0.9, 9.0), std::sin(u * 0.9) / u / std::cyl_bessel_i(0.0, 9.0), 1e-16);
}

} // namespace
} // namespace sonorelle
