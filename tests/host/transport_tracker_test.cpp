#include "host/transport_tracker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace sonorelle::test {
namespace {

TEST(CTransportTracker, FollowsBlocksThatComeOneAfterTheOther) {
    CTransportTracker transport;
    EXPECT_FALSE(transport.Follow(0, 512));
    EXPECT_FALSE(transport.Follow(512, 100));
    EXPECT_FALSE(transport.Follow(612, 1));
    EXPECT_EQ(transport.GetExpected(), 613);
}

TEST(CTransportTracker, ThreeSamplesOffAreAJumpAndTwoAreNone) {
    for (const double offset : {-3.0, 3.0, 3.9, -1000.0, 1e9}) {
        CTransportTracker transport;
        transport.Follow(100000, 512);
        EXPECT_TRUE(transport.Follow(100512 + offset, 512)) << offset;
    }
    for (const double offset : {-2.0, 2.0, 2.99, -2.99, 0.5}) {
        CTransportTracker transport;
        transport.Follow(100000, 512);
        EXPECT_FALSE(transport.Follow(100512 + offset, 512)) << offset;
    }
}

TEST(CTransportTracker, AHostThatStandsStillDoesNotJump) {
    CTransportTracker transport;
    EXPECT_TRUE(transport.Follow(44100, 512)); // it went there
    EXPECT_FALSE(transport.Follow(44100, 512));
    EXPECT_FALSE(transport.Follow(44100.7, 512)); // the same whole sample
    EXPECT_TRUE(transport.Follow(44101, 512));
}

TEST(CTransportTracker, CountsOnBeyondWhatAnIntegerHolds) {
    CTransportTracker transport;
    const double far = 4e9;
    transport.Follow(far, 512);
    EXPECT_FALSE(transport.Follow(far + 512, 512));
    EXPECT_TRUE(transport.Follow(far + 1024 + 3, 512));
}

} // namespace
} // namespace sonorelle::test
