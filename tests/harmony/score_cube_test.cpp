#include "harmony/score_cube.h"

#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <climits>

namespace sonorelle::ConsortierClassic {
namespace {

using Choice = CScoreCube::Choice;

bool Same(const Choice& a, const Choice& b) { return a.i == b.i && a.j == b.j && a.k == b.k; }

TEST(CScoreCube, OfEqualScoresTheHigherIndexWins) {
    CScoreCube cube;
    cube.Reset(5);
    Choice best{-1, -1, -1};
    EXPECT_EQ(cube.PickBest(best), kOk);
    EXPECT_TRUE(Same(best, {4, 4, 4}));
    cube.At(1, 2, 3) = 2.0F;
    EXPECT_EQ(cube.PickBest(best), kOk);
    EXPECT_TRUE(Same(best, {1, 2, 3}));
    cube.At(1, 3, 0) = 2.0F; // j goes before k
    cube.PickBest(best);
    EXPECT_TRUE(Same(best, {1, 3, 0}));
    cube.At(2, 0, 0) = 2.0F; // i goes before j
    cube.PickBest(best);
    EXPECT_TRUE(Same(best, {2, 0, 0}));
}

TEST(CScoreCube, AllZeroPicksTheLastOfAllAndSaysSo) {
    CScoreCube cube;
    cube.Reset(7);
    for (std::int32_t i = 0; i < 7; ++i) cube.Plane(i) = 0.0F;
    Choice best{-1, -1, -1};
    EXPECT_EQ(cube.PickBest(best), 9999999);
    EXPECT_TRUE(Same(best, {6, 6, 6}));
}

TEST(CScoreCube, WithoutCandidatesNothingIsPicked) {
    CScoreCube cube;
    for (const std::int32_t none : {0, -1, INT_MIN}) {
        cube.Reset(none);
        Choice best{3, 2, 1};
        EXPECT_EQ(cube.PickBest(best), kNothingToChoose);
        EXPECT_TRUE(Same(best, {3, 2, 1}));
    }
}

TEST(CScoreCube, FactorsGoOnTheirElementRowPlaneOrColumnAlone) {
    for (std::int32_t n = 1; n <= kMostCandidates; ++n) {
        CScoreCube cube;
        const std::int32_t x = n / 2;
        const std::int32_t y = n - 1;
        const auto expectOnly = [&](const char* what, auto chosen) {
            for (std::int32_t i = 0; i < n; ++i)
                for (std::int32_t j = 0; j < n; ++j)
                    for (std::int32_t k = 0; k < n; ++k)
                        ASSERT_EQ(cube.At(i, j, k), chosen(i, j, k) ? 0.5F : 1.0F) << what;
            cube.Reset(n);
        };
        cube.Reset(n);
        cube.At(x, y, 0) *= 0.5F;
        expectOnly("element", [&](auto i, auto j, auto k) { return i == x && j == y && k == 0; });
        cube.Row(x, y) *= 0.5F;
        expectOnly("row", [&](auto i, auto j, auto) { return i == x && j == y; });
        cube.Plane(x) *= 0.5F;
        expectOnly("plane", [&](auto i, auto, auto) { return i == x; });
        cube.ScaleLowest(x, 0.5F);
        expectOnly("lowest", [&](auto i, auto, auto) { return i == x; });
        cube.ScaleMiddle(x, 0.5F);
        expectOnly("middle", [&](auto, auto j, auto) { return j == x; });
        cube.ScaleHighest(x, 0.5F);
        expectOnly("highest", [&](auto, auto, auto k) { return k == x; });
    }
}

TEST(CScoreCube, HoldsNoMoreThanItsSides) {
    CScoreCube cube;
    cube.Reset(INT_MAX);
    EXPECT_EQ(cube.GetCandidateCount(), kMostCandidates);
    EXPECT_EQ(cube.At(10, 10, 10), 1.0F);
}

} // namespace
} // namespace sonorelle::ConsortierClassic
