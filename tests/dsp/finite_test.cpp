#include "dsp/finite.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

constexpr float kMax = std::numeric_limits<float>::max();

TEST(Finite, InfinitiesAndNotNumbersBecomeZero) {
    for (const float bad : {kInfinity, -kInfinity, kNaN, -kNaN}) {
        EXPECT_FALSE(IsFinite(bad));
        EXPECT_EQ(FiniteOrZero(bad), 0.0f);
        EXPECT_EQ(AudibleOrZero(bad), 0.0f);
    }
}

TEST(Finite, OrdinarySamplesPassUnchanged) {
    for (const float good : {1.0f, -1.0f, 0.0f, 1e-20f, -1e-24f, kMax, -kMax}) {
        EXPECT_TRUE(IsFinite(good));
        EXPECT_EQ(FiniteOrZero(good), good);
        EXPECT_EQ(AudibleOrZero(good), good);
    }
}

TEST(Finite, AudibleEndsAtTheSilenceFloorItself) {
    EXPECT_EQ(kSilenceFloor, std::ldexp(1.0f, -80));
    EXPECT_EQ(AudibleOrZero(kSilenceFloor), kSilenceFloor);
    EXPECT_EQ(AudibleOrZero(std::nextafter(kSilenceFloor, 0.0f)), 0.0f);
    EXPECT_EQ(AudibleOrZero(std::numeric_limits<float>::denorm_min()), 0.0f);
}

} // namespace
} // namespace sonorelle
