// Median smoothing and the splitting at steps.

#include "analysis/frame_stages.h"

#include "analysis/frames_with_pitches.h"
#include "support/hostile_numbers.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace sonorelle {
namespace {

const AnalysisLengths kSmoothingLengths = AnalysisLengths::For(44100.0F);

Frames Smoothed(const Frames& frames) {
    Frames smoothed = frames;
    SmoothByMedian(frames, smoothed, kSmoothingLengths);
    return smoothed;
}

std::vector<float> Plateaus(const std::vector<float>& pitches, std::size_t length) {
    std::vector<float> all;
    for (const float pitch : pitches) all.insert(all.end(), length, pitch);
    return all;
}

std::vector<std::size_t> UnvoicedFrames(const Frames& frames) {
    std::vector<std::size_t> unvoiced;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (frames[i].voiced == 0) unvoiced.push_back(i);
    }
    return unvoiced;
}

std::vector<std::size_t> SplitsOf(const std::vector<float>& pitches) {
    Frames frames = FramesWithPitches(pitches);
    SplitAtSteps(frames, kSmoothingLengths);
    return UnvoicedFrames(frames);
}

TEST(SmoothByMedian, ASteadyRunTakesTheMedianOfAllItsFrames) {
    for (const std::size_t count : {60U, 61U, 500U, 3001U}) {
        test::RandomNumbers random(count);
        std::vector<float> pitches(count);
        for (float& pitch : pitches) pitch = static_cast<float>(60.0 + 0.4 * random.Symmetric());
        std::vector<float> sorted = pitches;
        std::sort(sorted.begin(), sorted.end());
        pitches.resize(count + 20, 75.0F);
        Frames frames = FramesWithPitches(pitches);
        for (std::size_t i = count; i < frames.size(); ++i) frames[i].voiced = 0;
        const Frames smoothed = Smoothed(frames);
        // Of an even count the upper one of the two in the middle.
        for (std::size_t i = 0; i + 1 < count; ++i)
            ASSERT_EQ(smoothed[i].pitch, sorted[count / 2]) << "frame " << i;
        for (std::size_t i = count - 1; i < frames.size(); ++i) ASSERT_EQ(smoothed[i].pitch, frames[i].pitch);
    }
}

TEST(SmoothByMedian, UnvoicedFramesDoNotCountAndStay) {
    Frames frames = FramesWithPitches(Plateaus({60.0F, 61.0F, 60.0F}, 100));
    for (std::size_t i = 100; i < 200; ++i) frames[i].voiced = 0;
    const Frames smoothed = Smoothed(frames);
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_EQ(smoothed[i].pitch, frames[i].pitch) << "frame " << i;
}

TEST(SmoothByMedian, StepsAreNotRounded) {
    const Frames frames = FramesWithPitches(Plateaus({60.0F, 64.0F, 62.0F}, 200));
    for (const AnalysisFrame& frame : Smoothed(frames)) {
        EXPECT_TRUE(frame.pitch == 60.0F || frame.pitch == 64.0F || frame.pitch == 62.0F) << frame.pitch;
    }
}

TEST(SmoothByMedian, OnlyPitchesChange) {
    std::vector<float> pitches(200);
    for (std::size_t i = 0; i < pitches.size(); ++i) pitches[i] = i % 3 == 0 ? 60.2F : 60.0F;
    const Frames frames = FramesWithPitches(pitches);
    const Frames smoothed = Smoothed(frames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(smoothed[i].voiced, frames[i].voiced);
        ASSERT_EQ(smoothed[i].position, frames[i].position);
        ASSERT_EQ(smoothed[i].level, frames[i].level);
    }
}

TEST(SmoothByMedian, PitchesThatAreNoNumbersEnd) {
    for (const float odd : {kNaN, kInfinity, -kInfinity}) {
        std::vector<float> pitches(500, 60.0F);
        for (std::size_t i = 0; i < pitches.size(); i += 7) pitches[i] = odd;
        EXPECT_EQ(Smoothed(FramesWithPitches(pitches)).size(), pitches.size());
    }
}

TEST(SplitAtSteps, AStepIsSplitAtItsFirstFrame) {
    EXPECT_EQ(SplitsOf(Plateaus({60.0F, 62.0F}, 100)), std::vector<std::size_t>{100});
    EXPECT_EQ(SplitsOf(Plateaus({62.0F, 60.0F}, 100)), std::vector<std::size_t>{100});
}

TEST(SplitAtSteps, EachStepOfAScaleIsSplit) {
    const std::vector<std::size_t> expected{100, 200, 300, 400, 500, 600, 700};
    EXPECT_EQ(SplitsOf(Plateaus({60.0F, 62.0F, 64.0F, 65.0F, 67.0F, 69.0F, 71.0F, 72.0F}, 100)), expected);
}

TEST(SplitAtSteps, AStepOfExactlyHalfASemitoneIsNone) {
    EXPECT_TRUE(SplitsOf(Plateaus({60.0F, 60.5F, 60.0F}, 100)).empty());
    EXPECT_EQ(SplitsOf(Plateaus({60.0F, 60.515625F}, 100)).size(), 1U);
}

TEST(SplitAtSteps, AGlideBetweenTwoNotesIsSplitOnce) {
    std::vector<float> pitches = Plateaus({60.0F}, 100);
    for (int i = 1; i < 16; ++i) pitches.push_back(60.0F + 0.125F * static_cast<float>(i));
    pitches.insert(pitches.end(), 100, 62.0F);
    const std::vector<std::size_t> splits = SplitsOf(pitches);
    ASSERT_EQ(splits.size(), 1U);
    EXPECT_GE(splits[0], 100U);
    EXPECT_LE(splits[0], 115U);
}

TEST(SplitAtSteps, PitchesStay) {
    const std::vector<float> pitches = Plateaus({60.0F, 62.0F, 59.0F}, 100);
    Frames frames = FramesWithPitches(pitches);
    SplitAtSteps(frames, kSmoothingLengths);
    for (std::size_t i = 0; i < pitches.size(); ++i) ASSERT_EQ(frames[i].pitch, pitches[i]);
}

TEST(SplitAtSteps, PitchesThatAreNoNumbersEnd) {
    for (const float odd : {kNaN, kInfinity, -kInfinity}) {
        // One lone voiced frame: the window then ends on a frame that is unvoiced already.
        Frames lone = FramesWithPitches(std::vector<float>(100, odd));
        for (std::size_t i = 0; i < lone.size(); ++i) lone[i].voiced = i == 50 ? 1 : 0;
        SplitAtSteps(lone, kSmoothingLengths);
        // Long runs of them.
        Frames run = FramesWithPitches(std::vector<float>(5000, odd));
        SplitAtSteps(run, kSmoothingLengths);
        // And some among numbers.
        std::vector<float> mixed(5000, 60.0F);
        for (std::size_t i = 0; i < mixed.size(); i += 50) mixed[i] = odd;
        Frames frames = FramesWithPitches(mixed);
        SplitAtSteps(frames, kSmoothingLengths);
        EXPECT_EQ(frames.size(), mixed.size());
    }
}

} // namespace
} // namespace sonorelle
