#include "analysis/pitch_track.h"

#include "dsp/ring_buffer.h"
#include "platform/result_codes.h"
#include "support/noise.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace sonorelle {
namespace {

using test::Noise;

constexpr std::int32_t kFine = static_cast<std::int32_t>(PitchTrackMode::kFine);
constexpr std::int32_t kQuick = static_cast<std::int32_t>(PitchTrackMode::kQuick);
constexpr std::size_t kHop = 512;
constexpr std::size_t kFrame = 1024;

std::unique_ptr<CPitchTrack> Make(std::int32_t rate, std::int32_t channels = 1, std::int32_t mode = kFine) {
    std::unique_ptr<CPitchTrack> tracker;
    EXPECT_EQ(CreatePitchTrack(tracker, rate, channels, mode), kOk);
    return tracker;
}

std::vector<float> Sung(double hertz, double seconds, double rate, double peak = 0.5) {
    test::SingerSettings settings;
    settings.sampleRate = std::min(rate, 192000.0);
    settings.peak = peak;
    settings.leadInSeconds = 0.0;
    settings.leadOutSeconds = 0.0;
    return test::SteadyTone(hertz, seconds, settings).channels[0];
}

bool Same(const PitchTrackResult& a, const PitchTrackResult& b) {
    return a.pitch == b.pitch && a.salience == b.salience && a.rms == b.rms && a.rise == b.rise &&
           a.change == b.change;
}

// What stands in an output that no frame has reached.
PitchTrackResult Untouched() { return {-11.0F, -12.0F, -13.0F, -14.0F, -15.0F}; }

// Gives `count` frames of `input` from `at` on, in a copy that is not a sample longer.
PitchTrackResult Feed(CPitchTrack& tracker, const std::vector<float>& input, std::size_t at,
                      std::size_t count, PitchTrackResult output, std::size_t channels = 1) {
    std::vector<float> samples(input.begin() + static_cast<std::ptrdiff_t>(at * channels),
                               input.begin() + static_cast<std::ptrdiff_t>((at + count) * channels));
    EXPECT_EQ(tracker.Process(samples.data(), static_cast<std::int32_t>(count), output), kOk);
    return output;
}

// The results of all frames, cut by hand: half a frame of silence, then the signal as the pre-processing
// gives it.
std::vector<PitchTrackResult> FramesByHand(std::vector<float> input, std::int32_t rate) {
    CPTPreProcess preProcess;
    EXPECT_EQ(preProcess.Init(rate, 1), kOk);
    std::unique_ptr<RingBuffer> ring;
    EXPECT_EQ(RingBuffer::Create(ring, 16384), kOk);
    std::vector<float> signal(kFrame - kHop, 0.0F);
    for (std::size_t at = 0; at < input.size(); at += 4096) {
        auto count = static_cast<std::int32_t>(std::min<std::size_t>(4096, input.size() - at));
        preProcess.Process(input.data() + at, count, *ring);
        const std::size_t before = signal.size();
        signal.resize(before + static_cast<std::size_t>(count));
        ring->Read(signal.data() + before, static_cast<std::uint32_t>(count));
    }
    CPTAnalysis analysis;
    EXPECT_EQ(analysis.Init(11025, 8192, 1024), kOk);
    std::vector<PitchTrackResult> results;
    PitchTrackResult result;
    for (std::size_t at = 0; at + kFrame <= signal.size(); at += kHop) {
        analysis.Process(signal.data() + at, result);
        results.push_back(result);
    }
    return results;
}

TEST(CPitchTrack, FramesFollowEvery512SamplesAfter512OfSilence) {
    for (const std::int32_t rate : {11025, 44100, 48000}) {
        const std::vector<float> input = Noise(static_cast<std::size_t>(rate) * 3, 1);
        const std::vector<PitchTrackResult> expected = FramesByHand(input, rate);
        ASSERT_GT(expected.size(), 60U);
        const auto tracker = Make(rate);
        // Sample by sample where a frame is due, so that none is passed over.
        std::vector<PitchTrackResult> seen;
        PitchTrackResult output = Untouched();
        for (std::size_t at = 0; at < input.size(); at += 100) {
            const PitchTrackResult now =
                Feed(*tracker, input, at, std::min<std::size_t>(100, input.size() - at), output);
            if (!Same(now, output)) seen.push_back(now);
            output = now;
        }
        ASSERT_EQ(seen.size(), expected.size()) << rate;
        for (std::size_t i = 0; i < seen.size(); ++i)
            ASSERT_TRUE(Same(seen[i], expected[i])) << rate << ", frame " << i;
    }
}

TEST(CPitchTrack, TheLongestBlocksOverrunNothingAt11025Hz) {
    const std::vector<float> input = Noise(16384 * 6, 2);
    const std::vector<PitchTrackResult> expected = FramesByHand(input, 11025);
    for (const std::size_t block : {16384U, 16383U, 8193U, 1U << 13, 5000U}) {
        const auto tracker = Make(11025);
        PitchTrackResult output = Untouched();
        std::size_t given = 0;
        for (std::size_t at = 0; at < input.size(); at += block) {
            const std::size_t count = std::min(block, input.size() - at);
            output = Feed(*tracker, input, at, count, output);
            given = at + count;
            // The last frame that these samples complete; the filter holds back 8 of them at the most.
            const std::size_t frames = (given - 8) / kHop;
            ASSERT_TRUE(Same(output, expected[frames - 1]) || Same(output, expected[given / kHop - 1]))
                << "block " << block << " at " << at;
        }
        float loudest = 0.0F;
        for (const auto& frame : expected) loudest = std::max(loudest, frame.rms);
        EXPECT_EQ(tracker->GetMaxRms(), loudest) << "every frame was looked at, block " << block;
    }
}

TEST(CPitchTrack, RefusesMoreThan16384FramesAndKeepsTheResult) {
    const auto tracker = Make(11025);
    std::vector<float> samples = Noise(20000, 3);
    PitchTrackResult output = Untouched();
    for (const std::int32_t count : {16385, 20000, std::numeric_limits<std::int32_t>::max(), -1,
                                     std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_EQ(tracker->Process(samples.data(), count, output), kBadArgument) << count;
        EXPECT_TRUE(Same(output, Untouched()));
    }
    // Nothing of it went in.
    EXPECT_EQ(tracker->GetRequiredInput(), Make(11025)->GetRequiredInput());
    EXPECT_EQ(tracker->Process(samples.data(), 0, output), kOk);
    EXPECT_TRUE(Same(output, Untouched()));
    EXPECT_EQ(tracker->Process(samples.data(), 16384, output), kOk);
    EXPECT_FALSE(Same(output, Untouched()));
}

TEST(CPitchTrack, AFirstBlockShorterThanAHopGivesNoFrameAndKeepsThePreviousResult) {
    for (const std::int32_t rate : {11025, 22050, 44100, 96000}) {
        const auto tracker = Make(rate);
        const std::size_t hop = kHop * static_cast<std::size_t>(rate) / 11025;
        const std::vector<float> input = Noise(3 * hop, 4);
        PitchTrackResult output = Feed(*tracker, input, 0, hop - 1, Untouched());
        EXPECT_TRUE(Same(output, Untouched())) << rate;
        output = Feed(*tracker, input, hop - 1, hop, output);
        EXPECT_FALSE(Same(output, Untouched())) << rate;
    }
}

TEST(CPitchTrack, WhatIsRequiredGivesOneFrame) {
    for (const std::int32_t rate : {11025, 11026, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 192000}) {
        const auto tracker = Make(rate);
        const std::vector<float> input = Noise(static_cast<std::size_t>(rate) * 3, 5);
        std::size_t at = 0, frames = 0, calls = 0;
        PitchTrackResult output = Untouched();
        for (;; ++calls) {
            const auto need = static_cast<std::size_t>(tracker->GetRequiredInput());
            ASSERT_LE(need, kHop * static_cast<std::size_t>(rate) / 11025 + 75) << rate;
            if (at + need > input.size()) break;
            const PitchTrackResult now = Feed(*tracker, input, at, need, output);
            frames += Same(now, output) ? 0 : 1;
            output = now;
            at += need;
        }
        EXPECT_GT(calls, 55U) << rate;
        // Rounding of the filter's place may put one frame off by a call.
        EXPECT_LE(calls - frames, 1U) << rate;
    }
}

TEST(CPitchTrack, EveryRateFromItsOwnTo384kHzFindsThePitch) {
    for (const std::int32_t rate : {11025, 11026, 12000, 16000, 22050, 24000, 32000, 44100, 48000, 64000,
                                    88200, 96000, 128000, 176400, 192000, 384000}) {
        std::vector<float> input = Sung(220.0, 1.0, rate);
        double hertz = 220.0;
        if (rate > 192000) hertz *= rate / 192000.0; // the singer's highest rate, played faster
        const auto tracker = Make(rate);
        PitchTrackResult output;
        for (std::size_t at = 0; at < input.size() * 4 / 5; at += 3001) {
            output = Feed(*tracker, input, at, std::min<std::size_t>(3001, input.size() - at), output);
        }
        EXPECT_GT(output.salience, 5.0F) << rate;
        EXPECT_NEAR(1200.0 * std::log2(static_cast<double>(output.pitch) / hertz), 0.0, 5.0) << rate;
    }
}

TEST(CPitchTrack, StereoIsTrackedAsTheMeanOfItsChannels) {
    const std::vector<float> mono = Sung(300.0, 1.0, 44100);
    std::vector<float> stereo;
    for (const float value : mono) stereo.insert(stereo.end(), {1.5F * value, 0.5F * value});
    const auto one = Make(44100, 1);
    const auto two = Make(44100, 2);
    PitchTrackResult ofOne, ofTwo;
    for (std::size_t at = 0; at + 9000 < mono.size(); at += 9000) {
        ofOne = Feed(*one, mono, at, 9000, ofOne);
        ofTwo = Feed(*two, stereo, at, 9000, ofTwo, 2);
        EXPECT_NEAR(ofTwo.pitch, ofOne.pitch, 1e-3F);
        EXPECT_NEAR(ofTwo.rms, ofOne.rms, 1e-5F);
    }
    EXPECT_NEAR(ofTwo.pitch, 300.0F, 0.6F);
}

TEST(CPitchTrack, AfterAResetItIsAsNewButExpects220Hz) {
    const std::vector<float> high = Noise(44100, 6);
    const auto tracker = Make(44100);
    PitchTrackResult output;
    for (std::size_t at = 0; at + 4000 < high.size(); at += 4000)
        output = Feed(*tracker, high, at, 4000, output);
    ASSERT_GT(tracker->GetMaxRms(), 0.0F);
    ASSERT_EQ(tracker->Reset(), kOk);
    EXPECT_EQ(tracker->GetMaxRms(), 0.0F);
    EXPECT_EQ(tracker->GetRequiredInput(), Make(44100)->GetRequiredInput());

    // Against a frame cut by hand from an analysis that was reset too.
    const std::vector<float> input = Sung(200.0, 0.5, 44100);
    CPTPreProcess preProcess;
    ASSERT_EQ(preProcess.Init(44100, 1), kOk);
    std::unique_ptr<RingBuffer> ring;
    ASSERT_EQ(RingBuffer::Create(ring, 16384), kOk);
    std::vector<float> copy(input.begin(), input.begin() + 12000);
    std::int32_t count = 12000;
    preProcess.Process(copy.data(), count, *ring);
    std::vector<float> signal(kFrame - kHop + static_cast<std::size_t>(count), 0.0F);
    ring->Read(signal.data() + kFrame - kHop, static_cast<std::uint32_t>(count));
    CPTAnalysis analysis;
    ASSERT_EQ(analysis.Init(11025, 8192, 1024), kOk);
    analysis.Reset();
    PitchTrackResult expected;
    for (std::size_t at = 0; at + kFrame <= signal.size(); at += kHop)
        analysis.Process(signal.data() + at, expected);
    EXPECT_TRUE(Same(Feed(*tracker, input, 0, 12000, Untouched()), expected));
}

TEST(CPitchTrack, TheThresholdReachesTheAnalysis) {
    const auto tracker = Make(11025);
    EXPECT_EQ(tracker->GetThreshold(), 5.0F);
    tracker->SetThreshold(90.0F);
    EXPECT_EQ(tracker->GetThreshold(), 90.0F);
    const std::vector<float> input = Sung(300.0, 1.0, 11025);
    EXPECT_EQ(Feed(*tracker, input, 0, 6000, Untouched()).salience, 0.0F);
    tracker->SetThreshold(5.0F);
    EXPECT_GT(Feed(*tracker, input, 6000, 3000, Untouched()).salience, 5.0F);
}

TEST(CPitchTrack, TheQuickFramingCutsEvery64Samples) {
    const auto tracker = Make(11025, 1, kQuick);
    const std::vector<float> input = Noise(64 * 200 + 8, 7);
    std::size_t frames = 0;
    PitchTrackResult output = Untouched();
    for (std::size_t at = 0; at < input.size(); at += 8) {
        const PitchTrackResult now = Feed(*tracker, input, at, 8, output);
        frames += Same(now, output) ? 0 : 1;
        output = now;
    }
    EXPECT_EQ(frames, 200U);
}

TEST(CPitchTrack, HostileSamplesLeaveItWorking) {
    const auto tracker = Make(44100);
    std::vector<float> hostile = Noise(16384, 8);
    for (std::size_t i = 0; i < hostile.size(); i += 97) hostile[i] = std::numeric_limits<float>::quiet_NaN();
    for (std::size_t i = 13; i < hostile.size(); i += 301)
        hostile[i] = std::numeric_limits<float>::infinity();
    for (std::size_t i = 17; i < hostile.size(); i += 503) hostile[i] = 1e-42F;
    PitchTrackResult output;
    for (int i = 0; i < 4; ++i) {
        output = Feed(*tracker, hostile, 0, hostile.size(), output);
        EXPECT_TRUE(std::isfinite(output.pitch) && std::isfinite(output.rms) &&
                    std::isfinite(output.salience));
    }
    const std::vector<float> input = Sung(250.0, 1.0, 44100);
    for (std::size_t at = 0; at + 2000 < 30000; at += 2000) output = Feed(*tracker, input, at, 2000, output);
    EXPECT_NEAR(output.pitch, 250.0F, 0.6F);
}

TEST(CreatePitchTrack, RefusesRatesBelow11025HzAndOtherModes) {
    auto tracker = Make(44100);
    const CPitchTrack* before = tracker.get();
    for (const std::int32_t rate : {std::numeric_limits<std::int32_t>::min(), -44100, 0, 8000, 11024}) {
        EXPECT_EQ(CreatePitchTrack(tracker, rate, 1, kFine), kSampleRateTooLow) << rate;
    }
    for (const std::int32_t mode : {-1, 2, 1000}) {
        EXPECT_EQ(CreatePitchTrack(tracker, 44100, 1, mode), kBadArgument) << mode;
    }
    EXPECT_EQ(CreatePitchTrack(tracker, 44100, 0, kFine), kBadArgument);
    EXPECT_EQ(CreatePitchTrack(tracker, 44100, -1, kFine), kBadArgument);
    EXPECT_EQ(tracker.get(), before) << "a failure leaves what was there";
    EXPECT_EQ(CreatePitchTrack(tracker, 11025, 1, kFine), kOk);
    EXPECT_NE(tracker.get(), before);
}

} // namespace
} // namespace sonorelle
