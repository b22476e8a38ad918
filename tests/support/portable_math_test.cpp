#include "support/portable_math.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace sonorelle::test {

// The library's functions are good to a bit or two, which is what these are compared with.

TEST(PortableMath, ExponentialsAgreeWithTheLibrary) {
    for (double x = -40.0; x <= 40.0; x += 0.0317) {
        ASSERT_NEAR(Exp2(x) / std::exp2(x), 1.0, 1e-15) << x;
        ASSERT_NEAR(Exp(x) / std::exp(x), 1.0, 2e-14) << x; // the rounding of x log2(e) is magnified by x
    }
    EXPECT_EQ(Exp2(0.0), 1.0);
    EXPECT_EQ(Exp2(5.0), 32.0);
}

TEST(PortableMath, LogarithmAgreesWithTheLibrary) {
    for (double x = 1e-6; x < 1e6; x *= 1.0371) ASSERT_NEAR(Log2(x), std::log2(x), 1e-14) << x;
    EXPECT_EQ(Log2(1.0), 0.0);
    EXPECT_EQ(Log2(1024.0), 10.0);
}

TEST(PortableMath, SineAndCosineOfTurnsAgreeWithTheLibrary) {
    for (double x = -3.0; x <= 3.0; x += 0.00317) {
        ASSERT_NEAR(SinTurns(x), std::sin(2.0 * std::numbers::pi * x), 5e-15) << x;
        ASSERT_NEAR(CosTurns(x), std::cos(2.0 * std::numbers::pi * x), 5e-15) << x;
    }
    EXPECT_EQ(SinTurns(0.0), 0.0);
    EXPECT_NEAR(SinTurns(1234567.25), 1.0, 1e-15);
}

TEST(PortableMath, SmoothStepIsLevelAtBothEnds) {
    EXPECT_EQ(SmoothStep(-1.0), 0.0);
    EXPECT_EQ(SmoothStep(2.0), 1.0);
    EXPECT_DOUBLE_EQ(SmoothStep(0.5), 0.5);
    EXPECT_LT(SmoothStep(0.01), 0.0004);
    EXPECT_GT(SmoothStep(0.99), 0.9996);
}

} // namespace sonorelle::test
