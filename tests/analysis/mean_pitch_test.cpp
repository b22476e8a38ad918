#include "analysis/mean_pitch.h"

#include "analysis/frames_with_pitches.h"
#include "support/hostile_numbers.h"
#include "support/literal_note_model.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace sonorelle {
namespace {

float MeanOf(const std::vector<AnalysisFrame>& frames, bool stable = false) {
    std::vector<float> scratch;
    return MeanPitch(frames.data(), 0, static_cast<std::int32_t>(frames.size()), stable, scratch);
}

TEST(MeanPitch, OfUpToSevenFramesAllCount) {
    EXPECT_EQ(MeanOf(FramesWithPitches({60.0F})), 60.0F);
    EXPECT_EQ(MeanOf(FramesWithPitches({60.0F, 60.0F, 60.0F, 60.0F, 60.0F, 60.0F, 74.0F})), 62.0F);
}

TEST(MeanPitch, OfEightFramesTheMiddleFourCount) {
    EXPECT_EQ(MeanOf(FramesWithPitches({90.0F, 60.0F, 61.0F, 10.0F, 62.0F, 63.0F, 95.0F, 20.0F})), 61.5F);
}

TEST(MeanPitch, OfNineFramesTheMiddleLeansDown) {
    // Sorted 1 to 9: half of nine is 4, a quarter 2, so that elements 2 to 5 count.
    EXPECT_EQ(MeanOf(FramesWithPitches({9.0F, 8.0F, 7.0F, 6.0F, 5.0F, 4.0F, 3.0F, 2.0F, 1.0F})), 4.5F);
}

TEST(MeanPitch, TheLastFrameAndUnvoicedOnesDoNotCount) {
    std::vector<AnalysisFrame> frames = FramesWithPitches({50.0F, 60.0F, 70.0F, 62.0F, 90.0F});
    frames[2].voiced = 0;
    std::vector<float> scratch;
    EXPECT_EQ(MeanPitch(frames.data(), 1, 4, false, scratch), 61.0F);
}

TEST(MeanPitch, OfNoVoicedFramesIsNotANumber) {
    std::vector<AnalysisFrame> frames = FramesWithPitches({60.0F, 60.0F});
    std::vector<float> scratch;
    EXPECT_TRUE(std::isnan(MeanPitch(frames.data(), 1, 1, false, scratch)));
    EXPECT_TRUE(std::isnan(MeanPitch(frames.data(), 1, 0, true, scratch)));
    EXPECT_TRUE(std::isnan(MeanPitch(nullptr, 0, 0, false, scratch)));
    for (AnalysisFrame& frame : frames) frame.voiced = 0;
    EXPECT_TRUE(std::isnan(MeanOf(frames)));
    EXPECT_TRUE(std::isnan(MeanOf(frames, true)));
}

TEST(MeanPitch, WhenStableAMiddleThatHardlyDeviatesGivesWayToAll) {
    const std::vector<AnalysisFrame> steady =
        FramesWithPitches({60.0F, 60.0F, 60.0F, 60.0F, 60.0F, 60.0F, 60.0F, 64.0F});
    EXPECT_EQ(MeanOf(steady), 60.0F);
    EXPECT_EQ(MeanOf(steady, true), 60.5F);
    // The middle 60, 60, 60.25, 60.25 deviates by 0.125.
    const std::vector<AnalysisFrame> wide =
        FramesWithPitches({60.0F, 60.0F, 60.0F, 60.0F, 60.25F, 60.25F, 60.25F, 64.0F});
    EXPECT_EQ(MeanOf(wide, true), 60.125F);
}

TEST(MeanPitch, AgreesWithThePlainModel) {
    test::RandomNumbers random(7);
    for (int round = 0; round < 500; ++round) {
        std::vector<AnalysisFrame> frames(static_cast<std::size_t>(random.Below(200)));
        const double spread = random.Below(2) == 0 ? 0.3 : 12.0;
        for (AnalysisFrame& frame : frames) {
            frame.pitch = static_cast<float>(60.0 + spread * random.Symmetric());
            frame.voiced = random.Below(5) > 0 ? 1 : 0;
        }
        for (const bool stable : {false, true}) {
            const float expected = test::LiteralMeanPitch(frames, 0, static_cast<int>(frames.size()), stable);
            const float found = MeanOf(frames, stable);
            // Sums of f32 in f64: equal but for the last bit of the result.
            if (std::isnan(expected))
                EXPECT_TRUE(std::isnan(found));
            else
                EXPECT_FLOAT_EQ(found, expected);
        }
    }
}

TEST(MeanPitch, PitchesThatAreNoNumbersAreSortedSafely) {
    test::RandomNumbers random(8);
    for (int round = 0; round < 200; ++round) {
        std::vector<float> pitches(static_cast<std::size_t>(random.Below(300)));
        for (float& pitch : pitches)
            pitch = random.Below(3) == 0 ? kNaN : static_cast<float>(60.0 * random.Symmetric());
        MeanOf(FramesWithPitches(pitches));
    }
    // They come last: three of twelve leave the middle half to the numbers.
    EXPECT_EQ(
        MeanOf(FramesWithPitches({kNaN, 1.0F, 2.0F, kNaN, 3.0F, 4.0F, 5.0F, kNaN, 6.0F, 7.0F, 8.0F, 9.0F})),
        6.5F);
}

TEST(LevelMeans, AreMeansFromTheFirstFrameUpToBelowTheLast) {
    std::vector<AnalysisFrame> frames(4);
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i].level = static_cast<float>(1 << i);
    const LevelMeans levels(frames);
    EXPECT_EQ(levels.Mean(0, 4), 3.75F);
    EXPECT_EQ(levels.Mean(1, 3), 3.0F);
    EXPECT_EQ(levels.Mean(3, 4), 8.0F);
    EXPECT_TRUE(std::isnan(levels.Mean(2, 2)));
    EXPECT_TRUE(std::isnan(levels.Mean(3, 1)));
}

} // namespace
} // namespace sonorelle
