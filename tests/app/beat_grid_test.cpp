#include "app/beat_grid.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

TEST(BeatGrid, ATempoCountsQuartersWhateverTheMetre) {
    BeatGrid grid;
    EXPECT_EQ(grid.SamplesPerBeat(), 22050);
    grid.denominator = 8;
    EXPECT_EQ(grid.SamplesPerBeat(), 11025);
    grid.denominator = 2;
    EXPECT_EQ(grid.SamplesPerBeat(), 44100);
    grid.tempo = 60;
    EXPECT_EQ(grid.SamplesPerBeat(), 88200);
    grid.sampleRate = 48000;
    EXPECT_EQ(grid.SamplesPerBeat(), 96000);
}

TEST(BeatGrid, BarsAndBeatsCountFromOneAndTicksFromZero) {
    BeatGrid grid;
    EXPECT_EQ(grid.PositionAt(0), (BeatPosition{1, 1, 0}));
    EXPECT_EQ(grid.PositionAt(22050), (BeatPosition{1, 2, 0}));
    EXPECT_EQ(grid.PositionAt(4 * 22050 + 11025), (BeatPosition{2, 1, 192}));
    grid.numerator = 3;
    EXPECT_EQ(grid.PositionAt(4 * 22050), (BeatPosition{2, 2, 0}));
}

TEST(BeatGrid, BeforeTheAnchorBarsCountDown) {
    BeatGrid grid;
    grid.anchor = 22050;
    EXPECT_EQ(grid.PositionAt(22050), (BeatPosition{1, 1, 0}));
    EXPECT_EQ(grid.PositionAt(0), (BeatPosition{0, 4, 0}));
    EXPECT_EQ(grid.PositionAt(-4 * 22050), (BeatPosition{-1, 4, 0}));
}

TEST(BeatGrid, BeatsAndSamplesConvertBothWays) {
    BeatGrid grid;
    grid.tempo = 97.3F;
    grid.anchor = -12345.5;
    for (std::int32_t beat = -50; beat < 50; ++beat) {
        EXPECT_NEAR(grid.BeatFromSample(grid.SampleFromBeat(beat)), beat, 1e-9); // doubles
        EXPECT_EQ(grid.PositionAt(grid.SampleFromBeat(beat)).tick, 0) << beat;
    }
}

TEST(BeatGrid, ADragTakesTheBeatUnderThePointerAlong) {
    BeatGrid grid;
    grid.anchor = 1000;
    for (const double to : {50000.0, 100000.0, 300000.0}) {
        const double beat = grid.BeatFromSample(100000);
        BeatGrid dragged = grid;
        dragged.tempo = grid.TempoAfterDrag(100000, to);
        EXPECT_NEAR(dragged.BeatFromSample(to), beat, 1e-5) << to; // the tempo is a float
    }
}

TEST(BeatGrid, ADragEndsAtTheTempiThatTheInputTakes) {
    const BeatGrid grid;
    EXPECT_EQ(grid.TempoAfterDrag(100000, 1), 999);
    EXPECT_EQ(grid.TempoAfterDrag(100, 1e7), 20);
}

TEST(BeatGrid, ADragFromOrAcrossTheAnchorChangesNothing) {
    const BeatGrid grid;
    EXPECT_EQ(grid.TempoAfterDrag(0, 1000), 120);
    EXPECT_EQ(grid.TempoAfterDrag(1000, 0), 120);
    EXPECT_EQ(grid.TempoAfterDrag(0, 0), 120);
    EXPECT_EQ(grid.TempoAfterDrag(1000, -1000), 120);
    EXPECT_EQ(grid.TempoAfterDrag(std::nan(""), 1000), 120);
    EXPECT_EQ(grid.TempoAfterDrag(1000, std::nan("")), 120);
}

TEST(BeatGrid, WhatMakesNoSenseBecomesTheDefault) {
    for (const float bad : {0.0F, -5.0F, kNaN, kInfinity, 1e30F}) {
        BeatGrid grid;
        grid.tempo = bad;
        grid.sampleRate = bad;
        EXPECT_EQ(grid.SamplesPerBeat(), 22050) << bad;
    }
    for (const std::int32_t bad : {0, -1, 1 << 30}) {
        BeatGrid grid;
        grid.numerator = bad;
        grid.denominator = bad;
        EXPECT_EQ(grid.PositionAt(4 * 22050), (BeatPosition{2, 1, 0})) << bad;
    }
    BeatGrid grid;
    grid.anchor = std::numeric_limits<double>::infinity();
    EXPECT_EQ(grid.BeatFromSample(22050), 1);
}

TEST(BeatGrid, PositionsBeyondAllMeasureAreHarmless) {
    const BeatGrid grid;
    EXPECT_EQ(grid.PositionAt(std::nan("")), BeatPosition{});
    EXPECT_EQ(grid.PositionAt(1e300), BeatPosition{});
    const BeatPosition far = grid.PositionAt(9e14);
    EXPECT_EQ(far.bar, std::numeric_limits<std::int32_t>::max());
    EXPECT_GE(far.tick, 0);
    EXPECT_LT(far.tick, BeatGrid::kTicksPerBeat);
}

} // namespace
} // namespace sonorelle
