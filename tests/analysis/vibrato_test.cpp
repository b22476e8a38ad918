#include "analysis/frame_stages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace sonorelle {
namespace {

constexpr float kVibratoRate = 44100.0F;
constexpr std::int32_t kVibratoStep = 60; // samples between frames: a voice at 735 Hz

const AnalysisLengths kVibratoLengths = AnalysisLengths::For(kVibratoRate);

template<class PitchAt>
Frames VoicedFrames(double seconds, PitchAt pitchAt) {
    Frames frames;
    for (std::int32_t position = 0; position < seconds * static_cast<double>(kVibratoRate);
         position += kVibratoStep) {
        frames.push_back(
            {static_cast<float>(pitchAt(position / static_cast<double>(kVibratoRate))), 0.5F, 1, position});
    }
    return frames;
}

Frames Vibrato(double seconds, double hertz, double depth) {
    return VoicedFrames(seconds,
                        [=](double t) { return 60.0 + depth * std::sin(2 * std::numbers::pi * hertz * t); });
}

// From 60 up in 24 even steps and down again, over and over, at 15 Hz: three whole swings in a window. One
// frame a swing is at the top.
Frames Triangle(double seconds, float top) {
    Frames frames = Vibrato(seconds, 1.0, 0.0);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const int phase = static_cast<int>(i % 49);
        frames[i].pitch = phase == 24 ? top : 60.0F + 0.25F * static_cast<float>(std::min(phase, 48 - phase));
    }
    return frames;
}

Frames Flattened(const Frames& frames) {
    Frames flattened = frames;
    FlattenVibrato(frames, flattened, kVibratoLengths);
    return flattened;
}

float LargestDeviation(const Frames& frames, double from, double until, float pitch) {
    float largest = 0;
    for (const AnalysisFrame& frame : frames) {
        const double seconds = frame.position / static_cast<double>(kVibratoRate);
        if (seconds >= from && seconds < until) largest = std::max(largest, std::fabs(frame.pitch - pitch));
    }
    return largest;
}

void ExpectUnchanged(const Frames& frames) {
    const Frames flattened = Flattened(frames);
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_EQ(flattened[i].pitch, frames[i].pitch) << "frame " << i;
}

TEST(FlattenVibrato, VibratoBecomesItsCentre) {
    for (const double hertz : {10.0, 12.0, 15.0}) {
        for (const double depth : {0.3, 0.5, 1.0}) {
            const Frames flattened = Flattened(Vibrato(2.0, hertz, depth));
            // The first window may not be one of vibrato yet, and the last is not written.
            EXPECT_LT(LargestDeviation(flattened, 0.2, 1.7, 60.0F), 0.1 * depth)
                << hertz << " Hz, depth " << depth;
        }
    }
}

// A quirk that stays: a window of 0.2 s with two peaks, two valleys and four crossings holds one and a half
// swings, so that an even swing slower than that is left to the median.
TEST(FlattenVibrato, EvenSwingsOfSevenHertzAndLessStay) {
    for (const double hertz : {2.0, 5.0, 7.0}) ExpectUnchanged(Vibrato(2.0, hertz, 0.5));
}

TEST(FlattenVibrato, VoicingPositionsAndLevelsStay) {
    const Frames frames = Vibrato(1.0, 15.0, 0.5);
    const Frames flattened = Flattened(frames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(flattened[i].voiced, frames[i].voiced);
        ASSERT_EQ(flattened[i].position, frames[i].position);
        ASSERT_EQ(flattened[i].level, frames[i].level);
    }
}

TEST(FlattenVibrato, SwingsFasterThanTwentyHertzStay) {
    ExpectUnchanged(Vibrato(1.0, 24.0, 0.5));
    EXPECT_LT(LargestDeviation(Flattened(Vibrato(1.0, 16.0, 0.5)), 0.2, 0.75, 60.0F), 0.05F);
}

TEST(FlattenVibrato, ARangeOfExactlySixSemitonesIsTooWide) {
    ExpectUnchanged(Triangle(2.0, 66.0F));
    EXPECT_LT(LargestDeviation(Flattened(Triangle(2.0, 65.984375F)), 0.2, 1.7, 63.0F), 0.3F);
}

TEST(FlattenVibrato, SteadyPitchStays) { ExpectUnchanged(Vibrato(1.0, 5.0, 0.0)); }

TEST(FlattenVibrato, AGlideStays) {
    ExpectUnchanged(VoicedFrames(1.0, [](double t) { return 60.0 + 5.0 * t; }));
}

TEST(FlattenVibrato, UnvoicedFramesStay) {
    Frames frames = Vibrato(2.0, 15.0, 0.5);
    for (AnalysisFrame& frame : frames) frame.voiced = 0;
    ExpectUnchanged(frames);
}

TEST(FlattenVibrato, RunsOfVibratoAreFlattenedEachToItsOwnCentre) {
    Frames frames = Vibrato(3.0, 15.0, 0.4);
    for (AnalysisFrame& frame : frames) {
        const double seconds = frame.position / static_cast<double>(kVibratoRate);
        if (seconds >= 1.4 && seconds < 1.6) frame.voiced = 0;
        if (seconds >= 1.6) frame.pitch += 4.0F;
    }
    const Frames flattened = Flattened(frames);
    EXPECT_LT(LargestDeviation(flattened, 0.0, 1.35, 60.0F), 0.05F);
    EXPECT_LT(LargestDeviation(flattened, 1.6, 2.7, 64.0F), 0.05F);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (frames[i].voiced == 0) {
            ASSERT_EQ(flattened[i].pitch, frames[i].pitch);
        }
    }
}

} // namespace
} // namespace sonorelle
