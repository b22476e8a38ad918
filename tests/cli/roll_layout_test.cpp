#include "cli/roll_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

TEST(SpanOf, LeavesRoomAroundThePitches) {
    const PitchSpan span = SpanOf({50.2F, 70.6F, 60.0F});
    EXPECT_EQ(span.lowest, 48);
    EXPECT_EQ(span.highest, 73);
}

TEST(SpanOf, OneNoteStillShowsMoreThanAnOctave) {
    const PitchSpan span = SpanOf({69.0F});
    EXPECT_GE(span.Lanes(), 14);
    EXPECT_LE(std::abs(span.lowest + span.highest - 2 * 69), 1);
}

TEST(SpanOf, PitchesThatAreNoneDoNotCount) {
    const float infinity = std::numeric_limits<float>::infinity();
    const PitchSpan none = SpanOf({});
    const PitchSpan span = SpanOf({std::nanf(""), infinity, -infinity, -1.0F, 128.0F, 3e38F});
    EXPECT_EQ(span.lowest, none.lowest);
    EXPECT_EQ(span.highest, none.highest);
    EXPECT_LT(none.lowest, 60);
    EXPECT_GT(none.highest, 60);
}

TEST(LayOutRoll, TimeRunsFromEdgeToEdge) {
    for (const double seconds : {0.1, 1.0, 12.0, 100.0, 600.0}) {
        const RollLayout layout = LayOutRoll(seconds, {48, 72});
        EXPECT_DOUBLE_EQ(layout.XOf(0), layout.lanes.x);
        EXPECT_NEAR(layout.XOf(seconds), layout.lanes.Right(), 1e-6);
        EXPECT_EQ(layout.loudness.x, layout.lanes.x);
        EXPECT_EQ(layout.loudness.width, layout.lanes.width);
    }
}

TEST(LayOutRoll, PitchRisesUpward) {
    const RollLayout layout = LayOutRoll(10, {48, 72});
    EXPECT_NEAR(layout.YOf(72.5), layout.lanes.y, 1e-9);
    EXPECT_NEAR(layout.YOf(47.5), layout.lanes.Bottom(), 1e-9);
    EXPECT_NEAR(layout.LaneTop(60) + layout.laneHeight / 2, layout.YOf(60), 1e-9);
}

TEST(LayOutRoll, SizesStayWithinWhatCanBeShown) {
    for (const double seconds : {-1.0, 0.0, 1e-9, 0.1, 600.0, 1e6, std::nan("")}) {
        for (const PitchSpan span : {PitchSpan{59, 61}, PitchSpan{0, 127}}) {
            const RollLayout layout = LayOutRoll(seconds, span);
            EXPECT_GE(layout.width, 1000);
            EXPECT_LE(layout.width, 10000);
            EXPECT_GE(layout.laneHeight, 7);
            EXPECT_LE(layout.laneHeight, 18);
            EXPECT_LE(layout.height, 1300);
            EXPECT_TRUE(std::isfinite(layout.pixelsPerSecond));
        }
    }
}

TEST(ChooseTicks, LabelsKeepApartFromATenthOfASecondToTenMinutes) {
    for (double seconds = 0.1; seconds < 700; seconds *= 1.3) {
        const RollLayout layout = LayOutRoll(seconds, {48, 72});
        const TimeTicks ticks = ChooseTicks(seconds, layout.pixelsPerSecond);
        EXPECT_GE(ticks.step * layout.pixelsPerSecond, 60) << seconds;
        EXPECT_LE(ticks.step * layout.pixelsPerSecond, 170) << seconds; // 2.5 times the least
        EXPECT_GT(ticks.minorStep, 0);
        const double digits = ticks.step * std::pow(10, ticks.decimals); // the label can show the step
        EXPECT_NEAR(digits, std::round(digits), 1e-9) << seconds;
    }
}

TEST(ChooseTicks, StepsAreOneTwoOrFive) {
    EXPECT_DOUBLE_EQ(ChooseTicks(600, 8).step, 10);
    EXPECT_DOUBLE_EQ(ChooseTicks(60, 60).step, 2);
    EXPECT_DOUBLE_EQ(ChooseTicks(12, 100).step, 1);
    EXPECT_DOUBLE_EQ(ChooseTicks(1, 1000).step, 0.1);
    EXPECT_EQ(ChooseTicks(1, 1000).decimals, 1);
    EXPECT_DOUBLE_EQ(ChooseTicks(1, 2000).step, 0.05);
    EXPECT_EQ(ChooseTicks(1, 2000).decimals, 2);
}

} // namespace
} // namespace sonorelle
