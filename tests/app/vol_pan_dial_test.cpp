#include "app/vol_pan_dial.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

constexpr DialSize kDialSize = {51, 41};

TEST(VolPanDial, StartsAtUnityInTheCentre) {
    const CkvoVolPanDial dial;
    EXPECT_EQ(dial.GetVol(), 1);
    EXPECT_EQ(dial.GetPan(), 0);
}

TEST(VolPanDial, ADragReachesAllCornersOfTheRange) {
    EXPECT_EQ(DialPlaceAt(0, 0, kDialSize).vol, 1.333F);
    EXPECT_EQ(DialPlaceAt(0, 0, kDialSize).pan, -1);
    EXPECT_EQ(DialPlaceAt(50, 40, kDialSize).vol, 0);
    EXPECT_EQ(DialPlaceAt(50, 40, kDialSize).pan, 1);
    EXPECT_EQ(DialPlaceAt(25, 20, kDialSize).pan, 0);
    EXPECT_FLOAT_EQ(DialPlaceAt(25, 20, kDialSize).vol, 0.6665F);
    EXPECT_FLOAT_EQ(DialPlaceAt(25, 10, kDialSize).vol, 0.99975F);
}

TEST(VolPanDial, ADragBeyondTheEdgesIsHeldThere) {
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(DialPlaceAt(-kFar, kFar, kDialSize).pan, -1);
    EXPECT_EQ(DialPlaceAt(-kFar, kFar, kDialSize).vol, 0);
    EXPECT_EQ(DialPlaceAt(kFar, -kFar, kDialSize).pan, 1);
    EXPECT_EQ(DialPlaceAt(kFar, -kFar, kDialSize).vol, 1.333F);
}

TEST(VolPanDial, ADialWithoutExtentIsHarmless) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    for (const DialSize size :
         {DialSize{1, 1}, DialSize{0, 0}, DialSize{-5, -5}, DialSize{kLowest, kLowest}}) {
        EXPECT_EQ(DialPlaceAt(0, 0, size).pan, -1);
        EXPECT_EQ(DialPlaceAt(0, 0, size).vol, 1.333F);
        EXPECT_EQ(DialPlaceAt(1, 1, size).pan, 1);
        EXPECT_EQ(DialPlaceAt(1, 1, size).vol, 0);
    }
}

TEST(VolPanDial, ThePointStandsWhereVolumeAndPanPutIt) {
    // A pixel has room for no more than this: the constants of the two directions are each other's inverse to
    // eight digits.
    constexpr float kClose = 1e-3F;
    EXPECT_NEAR(DialPointAt(1.333F, -1, kDialSize).x, 0, kClose);
    EXPECT_NEAR(DialPointAt(1.333F, -1, kDialSize).y, 2, kClose);
    EXPECT_NEAR(DialPointAt(0, 1, kDialSize).x, 51, kClose);
    EXPECT_NEAR(DialPointAt(0, 1, kDialSize).y, 39, kClose);
    EXPECT_NEAR(DialPointAt(1, 0, kDialSize).x, 25.5, kClose);
    EXPECT_NEAR(DialPointAt(1, 0, kDialSize).y, 37 * 0.24981245 + 2, kClose);
    EXPECT_NEAR(DialPointAt(0.5F, 0.5F, kDialSize).x, 38.25, kClose);
    EXPECT_NEAR(DialPointAt(0.5F, 0.5F, kDialSize).y, 37 * (1 - 0.5 * 0.75018755) + 2, kClose);
}

TEST(VolPanDial, ThePointFollowsTheDragWithinThreePixels) {
    for (std::int32_t y = 0; y < kDialSize.height; ++y) {
        for (std::int32_t x = 0; x < kDialSize.width; ++x) {
            const DialPlace place = DialPlaceAt(x, y, kDialSize);
            const DialPoint point = DialPointAt(place.vol, place.pan, kDialSize);
            // The point keeps two pixels from either edge, and the width counts one pixel more than the drag.
            ASSERT_NEAR(point.x, x, 1.001);
            ASSERT_NEAR(point.y, y, 2.001);
        }
    }
}

TEST(VolPanDial, ThePointOfHostileValuesIsInTheDial) {
    for (const float value : {kNaN, kInfinity, -kInfinity, 1e30F, -1e30F}) {
        const DialPoint point = DialPointAt(value, value, kDialSize);
        EXPECT_TRUE(point.x >= 0 && point.x <= 51) << value;
        EXPECT_TRUE(point.y >= 1.99F && point.y <= 39.01F) << value;
    }
}

TEST(VolPanDial, TheArcsOfFullAndUnityGainFollowTheHeight) {
    EXPECT_EQ(DialOuterRadius(41), 38);
    EXPECT_NEAR(DialUnityRadius(41), 41 * 0.24981245 - 3, 1e-5);
}

TEST(VolPanDial, ValuesAreHeldAndWhatIsNoNumberIsIgnored) {
    CkvoVolPanDial dial;
    dial.Set(5, -5);
    EXPECT_EQ(dial.GetVol(), 1.333F);
    EXPECT_EQ(dial.GetPan(), -1);
    dial.Set(-5, 5);
    EXPECT_EQ(dial.GetVol(), 0);
    EXPECT_EQ(dial.GetPan(), 1);
    dial.Set(0.5F, 0.25F);
    dial.Set(kNaN, kInfinity);
    EXPECT_EQ(dial.GetVol(), 0.5F);
    EXPECT_EQ(dial.GetPan(), 0.25F);
}

TEST(VolPanDial, WedgesGrowWithTheFourthRootOfThePower) {
    CkvoVolPanDial dial;
    dial.SetPeak(1, 0.0625F);
    EXPECT_EQ(dial.GetPeak(0), 1);
    EXPECT_EQ(dial.GetPeak(1), 0.0625F);
    const auto wedges = dial.NextWedges();
    EXPECT_TRUE(wedges[0].visible);
    EXPECT_FLOAT_EQ(wedges[0].radius, 0.24981245F); // full scale reaches the line of unity
    EXPECT_TRUE(wedges[1].visible);
    EXPECT_FLOAT_EQ(wedges[1].radius, 1 - 0.5F * 0.75018755F);
    EXPECT_EQ(wedges[0].clip, 0);
}

TEST(VolPanDial, AWedgeOfAQuietVoiceIsNotDrawn) {
    CkvoVolPanDial dial;
    EXPECT_FALSE(dial.NextWedges()[0].visible);
    // The radius is 0.95 at a power of (0.05 / 0.75018755)^4 = 1.9733e-5.
    dial.SetPeak(1.96e-5F, 1.99e-5F);
    EXPECT_FALSE(dial.NextWedges()[0].visible);
    EXPECT_TRUE(dial.NextWedges()[1].visible);
}

TEST(VolPanDial, AClippedWedgeFadesBackOverSixteenRedraws) {
    CkvoVolPanDial dial;
    dial.SetPeak(1.42F, 1.41F);
    dial.SetPeak(0.5F, 0.5F);
    for (int redraw = 0; redraw < 16; ++redraw) {
        EXPECT_TRUE(dial.IsFading()) << redraw;
        const auto wedges = dial.NextWedges();
        EXPECT_EQ(wedges[0].clip, 1 - 0.0625F * static_cast<float>(redraw)) << redraw;
        EXPECT_EQ(wedges[1].clip, 0) << redraw;
    }
    EXPECT_FALSE(dial.IsFading());
    EXPECT_EQ(dial.NextWedges()[0].clip, 0);
}

TEST(VolPanDial, EachClippedPeakStartsTheFadeAnew) {
    CkvoVolPanDial dial;
    dial.SetPeak(0, 2);
    dial.NextWedges();
    dial.NextWedges();
    dial.SetPeak(0, 2);
    EXPECT_EQ(dial.NextWedges()[1].clip, 1);
}

TEST(VolPanDial, HostilePeaksGiveDrawableWedges) {
    CkvoVolPanDial dial;
    for (const float peak : {kNaN, kInfinity, -kInfinity, -1.0F, 1e30F, 1e-40F}) {
        dial.SetPeak(peak, peak);
        for (const PeakWedge& wedge : dial.NextWedges()) {
            EXPECT_TRUE(wedge.radius >= 0 && wedge.radius <= 1) << peak;
            EXPECT_TRUE(wedge.clip >= 0 && wedge.clip <= 1) << peak;
        }
    }
    EXPECT_EQ(dial.GetPeak(-1), 0);
    EXPECT_EQ(dial.GetPeak(2), 0);
}

} // namespace
} // namespace sonorelle
