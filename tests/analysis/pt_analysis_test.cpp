#include "analysis/pt_analysis.h"

#include "analysis/pt_pre_process.h"
#include "dsp/ring_buffer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/melodies.h"
#include "support/sanitizer_share.h"
#include "support/slow_pitch_analysis.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::SlowPitchAnalysis;

constexpr std::int32_t kTrackerRate = 11025;
constexpr std::int32_t kSize = 8192;
constexpr std::int32_t kFrameSamples = 1024;
constexpr std::int32_t kHopSamples = 512;
constexpr double kBinHertz = 11025.0 / 8192.0;

class CPTAnalysisFixture : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(analysis.Init(kTrackerRate, kSize, kFrameSamples), kOk); }

    const PitchTrackResult& Process(const std::vector<float>& frame) {
        analysis.Process(frame.data(), result);
        return result;
    }

    CPTAnalysis analysis;
    PitchTrackResult result;
};

// A voice of ten harmonics that fall off by 1 / h, from sample `start` on.
std::vector<float> Voice(double hertz, double amplitude = 0.3, std::int32_t start = 0, int harmonics = 10) {
    std::vector<float> frame(kFrameSamples);
    for (std::int32_t i = 0; i < kFrameSamples; ++i) {
        double sum = 0.0;
        for (int h = 1; h <= harmonics && h * hertz < 5000.0; ++h) {
            sum +=
                std::sin(2.0 * std::numbers::pi * h * hertz * (start + i) / kTrackerRate + 0.3 * h * h) / h;
        }
        frame[static_cast<std::size_t>(i)] = static_cast<float>(amplitude * sum);
    }
    return frame;
}

std::vector<float> Tone(double hertz, double amplitude = 0.5) { return Voice(hertz, amplitude, 0, 1); }

std::vector<float> Sum(std::vector<float> a, const std::vector<float>& b, float gain = 1.0F) {
    for (std::size_t i = 0; i < a.size(); ++i) a[i] += gain * b[i];
    return a;
}

std::vector<float> NoiseFrame(unsigned generator, float peak = 1.0F) {
    std::mt19937 random(generator);
    std::uniform_real_distribution<float> sample(-peak, peak);
    std::vector<float> noise(kFrameSamples);
    for (float& value : noise) value = sample(random);
    return noise;
}

double Cents(double a, double b) { return 1200.0 * std::log2(a / b); }

// Runs both over the frames of `signal` and lets them differ only where the model itself nearly decided
// otherwise.
SlowPitchAnalysis::Events ExpectTheSameDecisions(const std::vector<float>& signal, const char* name,
                                                 bool afterReset = false) {
    CPTAnalysis analysis;
    EXPECT_EQ(analysis.Init(kTrackerRate, kSize, kFrameSamples), kOk);
    SlowPitchAnalysis slow;
    if (afterReset) {
        analysis.Reset();
        slow.Reset();
    }
    PitchTrackResult got;
    SlowPitchAnalysis::Result expected;
    for (std::size_t at = 0; at + kFrameSamples <= signal.size(); at += kHopSamples) {
        analysis.Process(signal.data() + at, got);
        slow.Process(signal.data() + at, expected);
        const auto pitch = static_cast<double>(got.pitch);
        // A thirtieth of a bin is the grid of the interpolation; more than 2 cents only below 40 Hz.
        const bool samePitch = std::fabs(pitch - expected.pitch) < 1.01 * kBinHertz / 30.0 ||
                               std::fabs(Cents(pitch, expected.pitch)) < 2.0;
        const bool same = (got.salience != 0.0F) == (expected.salience != 0.0) && samePitch &&
                          std::fabs(static_cast<double>(got.salience) - expected.salience) < 1e-3;
        if (!same) {
            const auto& margins = slow.GetMargins();
            EXPECT_TRUE(margins.product < 1e-5 || margins.sum < 1e-5 || margins.salience < 1e-3)
                << name << ", frame " << at / kHopSamples << ": " << pitch << " Hz " << got.salience
                << " dB, not " << expected.pitch << " Hz " << expected.salience << " dB";
            // From here on they may remember different pitches; the same pitch from the bin beside does no
            // harm.
            if (!samePitch) return slow.GetEvents();
        }
        EXPECT_NEAR(static_cast<double>(got.rms), expected.rms, 1e-5 * expected.rms + 2e-12) << name;
        EXPECT_NEAR(static_cast<double>(got.change), expected.change, 2e-3)
            << name << ", frame " << at / kHopSamples;
        if (expected.rms > 1e-9) {
            EXPECT_NEAR(static_cast<double>(got.rise), expected.rise, 1e-5 * (1.0 + std::fabs(expected.rise)))
                << name;
        }
    }
    return slow.GetEvents();
}

test::SingerSettings SingerAtTheTrackersRate() {
    test::SingerSettings settings;
    settings.sampleRate = kTrackerRate;
    return settings;
}

TEST(CPTAnalysis, DecidesAsTheSlowModelOnSinging) {
    SlowPitchAnalysis::Events all;
    int round = 0;
    for (const int lowest : {38, 48, 60, 72}) {
        for (const std::uint64_t melody : {1U, 2U}) {
            if (!test::InSanitizerShare(round++, 5)) continue;
            auto settings = SingerAtTheTrackersRate();
            settings.seed = melody;
            settings.breath = melody == 2 ? 0.15 : 0.01;
            test::MelodyWish wish;
            wish.lowestMidiPitch = lowest;
            const auto recording = test::Sing(test::RandomDiatonicMelody(wish, melody), settings);
            const auto events = ExpectTheSameDecisions(recording.channels[0], "singing", melody == 2);
            all.voiced += events.voiced;
            all.unvoiced += events.unvoiced;
            all.fallBacks += events.fallBacks;
        }
    }
    EXPECT_GT(all.voiced, test::SanitizerShare(1000));
    EXPECT_GT(all.unvoiced, test::SanitizerShare(50));
    EXPECT_GT(all.fallBacks, test::SanitizerShare(20));
}

TEST(CPTAnalysis, DecidesAsTheSlowModelOnGlidesAndNoise) {
    const auto settings = SingerAtTheTrackersRate();
    ExpectTheSameDecisions(test::Glissando(70, 1000, 6, settings).channels[0], "rising glide");
    ExpectTheSameDecisions(test::Glissando(1000, 70, 6, settings).channels[0], "falling glide");
    ExpectTheSameDecisions(test::WhiteNoise(6, settings).channels[0], "noise");
    ExpectTheSameDecisions(test::Silence(1, settings).channels[0], "silence");
    ExpectTheSameDecisions(std::vector<float>(8000, 0.7F), "constant");
    std::vector<float> clicks(20000, 0.0F);
    for (std::size_t i = 100; i < clicks.size(); i += 2731) clicks[i] = 1.0F;
    ExpectTheSameDecisions(clicks, "clicks");
}

// Harmonics of random strength at random pitches, some of them missing: every correction is called for.
TEST(CPTAnalysis, DecidesAsTheSlowModelWhenEveryCorrectionIsNeeded) {
    std::mt19937 random(77);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    SlowPitchAnalysis::Events all;
    for (int run = 0; run < 12; ++run) {
        std::vector<float> signal;
        for (int note = 0; note < 25; ++note) {
            const double hertz = 45.0 * std::pow(2.0, 5.0 * static_cast<double>(unit(random)));
            float strengths[12];
            for (float& strength : strengths)
                strength = unit(random) < 0.3F ? 0.0F : std::pow(unit(random), 3.0F);
            const float noise = 0.3F * std::pow(unit(random), 2.0F);
            for (int i = 0; i < 2 * kHopSamples; ++i) {
                double sum = static_cast<double>(noise * (2.0F * unit(random) - 1.0F));
                for (int h = 1; h <= 12 && h * hertz < 5400.0; ++h) {
                    sum += static_cast<double>(strengths[h - 1]) *
                           std::sin(2.0 * std::numbers::pi * h * hertz * i / kTrackerRate);
                }
                signal.push_back(static_cast<float>(0.3 * sum));
            }
        }
        const auto events = ExpectTheSameDecisions(signal, "random harmonics", run % 2 == 1);
        all.bySum += events.bySum;
        all.byContinuity += events.byContinuity;
        all.fallBacks += events.fallBacks;
        all.aboveComb += events.aboveComb;
        all.voiced += events.voiced;
    }
    EXPECT_GT(all.bySum, 5);
    EXPECT_GT(all.byContinuity, 5);
    EXPECT_GT(all.fallBacks, 5);
    EXPECT_GT(all.voiced, 100);
}

TEST(CPTAnalysis, DecidesAsTheSlowModelOnRecordings) {
    const char* folder = std::getenv("SONORELLE_RECORDINGS");
    if (folder == nullptr) GTEST_SKIP() << "SONORELLE_RECORDINGS names no folder";
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".wav") continue;
        CkvoAudioFile file;
        ASSERT_EQ(file.OpenRead(entry.path().string(), 0, -1, -1), kOk) << entry.path();
        const auto frames = static_cast<std::size_t>(file.GetLength());
        const auto channels = static_cast<std::size_t>(file.GetNumChannels());
        if (file.GetSampleRate() < static_cast<float>(kTrackerRate)) continue;
        ++files;
        std::vector<std::vector<float>> samples(channels, std::vector<float>(frames));
        std::vector<float*> pointers;
        for (auto& channel : samples) pointers.push_back(channel.data());
        file.Seek(0);
        ASSERT_GT(file.Read(pointers.data(), static_cast<std::int32_t>(frames)), 0) << entry.path();

        CPTPreProcess preProcess;
        ASSERT_EQ(preProcess.Init(static_cast<std::int32_t>(file.GetSampleRate()), 1), kOk);
        std::unique_ptr<RingBuffer> ring;
        ASSERT_EQ(RingBuffer::Create(ring, 16384), kOk);
        std::vector<float> signal(kHopSamples, 0.0F);
        for (std::size_t at = 0; at < frames; at += 1024) {
            std::vector<float> block(1024, 0.0F);
            for (std::size_t i = 0; i < 1024 && at + i < frames; ++i) {
                for (const auto& channel : samples) block[i] += channel[at + i];
            }
            std::int32_t count = 1024;
            preProcess.Process(block.data(), count, *ring);
            std::vector<float> out(static_cast<std::size_t>(count));
            ring->Read(out.data(), static_cast<std::uint32_t>(count));
            signal.insert(signal.end(), out.begin(), out.end());
        }
        ExpectTheSameDecisions(signal, entry.path().filename().c_str());
    }
    EXPECT_GT(files, 0);
}

TEST_F(CPTAnalysisFixture, FindsThePitchOfASteadyVoice) {
    for (const double hertz :
         {70.0, 82.41, 110.0, 155.56, 196.0, 220.0, 311.13, 440.0, 587.33, 783.99, 987.77}) {
        for (int i = 0; i < 4; ++i) Process(Voice(hertz, 0.3, i * kHopSamples));
        // Hann's parabola through bins an eighth of a lobe apart is biased by less than a thirtieth of a bin;
        // low voices have neighbours under their lobe.
        EXPECT_NEAR(static_cast<double>(result.pitch), hertz, hertz < 100.0 ? 0.5 : 0.1);
        EXPECT_GT(result.salience, 5.0F) << hertz;
        EXPECT_NEAR(static_cast<double>(result.change), 0.0, 1e-3);
    }
}

TEST_F(CPTAnalysisFixture, PitchLiesOnAGridOfThirtiethsOfABin) {
    for (double hertz = 200.0; hertz < 204.0; hertz += 0.171) {
        const double place = static_cast<double>(Process(Voice(hertz)).pitch) / kBinHertz * 30.0;
        EXPECT_NEAR(place, std::round(place), 2e-3) << hertz;
    }
}

TEST_F(CPTAnalysisFixture, LevelCountsPositiveSamplesAlone) {
    EXPECT_NEAR(static_cast<double>(Process(Tone(500.0, 0.8)).rms), 0.4, 3e-3)
        << "A / 2, but for the last part of a period";
    EXPECT_FLOAT_EQ(Process(std::vector<float>(kFrameSamples, 0.5F)).rms, 0.5F);
    EXPECT_LT(Process(std::vector<float>(kFrameSamples, -0.5F)).rms, 1e-11F);
}

TEST_F(CPTAnalysisFixture, RiseIsRelativeToTheNewLevel) {
    EXPECT_FLOAT_EQ(Process(Tone(300.0, 0.2)).rise, 1.0F) << "from nothing";
    EXPECT_NEAR(static_cast<double>(Process(Tone(300.0, 0.4)).rise), 0.5, 1e-5);
    EXPECT_NEAR(static_cast<double>(Process(Tone(300.0, 0.1)).rise), -3.0, 1e-4);
    Process(std::vector<float>(kFrameSamples, 0.0F));
    EXPECT_EQ(Process(std::vector<float>(kFrameSamples, 0.0F)).rise, 0.0F);
}

TEST_F(CPTAnalysisFixture, ChangeComparesWithThePitchBefore) {
    const double first = static_cast<double>(Process(Voice(300.0)).pitch);
    EXPECT_NEAR(static_cast<double>(result.change), -first / (first + 1.0), 1e-6) << "nothing before";
    const double second = static_cast<double>(Process(Voice(350.0)).pitch);
    EXPECT_NEAR(static_cast<double>(result.change), (first - second) / (first + second + 1.0), 1e-6);
    EXPECT_LT(result.change, 0.0F) << "upward is negative";
}

TEST_F(CPTAnalysisFixture, ASilentFrameIsUnvoicedWithSalienceZero) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Process(std::vector<float>(kFrameSamples, 0.0F)).salience, 0.0F);
        EXPECT_TRUE(std::isfinite(result.pitch));
    }
    // A clear voice, but with rms^2 of at most 1e-7: no salience is measured. Just louder it is.
    EXPECT_EQ(Process(Voice(200.0, 5e-4)).salience, 0.0F);
    EXPECT_LE(result.rms * result.rms, 1e-7F);
    EXPECT_GT(Process(Voice(200.0, 1e-3)).salience, 5.0F);
    EXPECT_GT(result.rms * result.rms, 1e-7F);
}

// A voice under more and more noise: the model tells the salience, and both sides of the limit are met.
TEST(CPTAnalysis, APitchAbove160HzNeeds5DecibelsOneBelowNeedsThreeAndAHalf) {
    int between[2] = {0, 0};
    for (const double hertz : {150.0, 175.0}) {
        const double needed = hertz < 160.0 ? 3.5 : 5.0;
        for (int i = 0; i < 600; ++i) {
            if (!test::InSanitizerShare(i, 5)) continue;
            CPTAnalysis analysis;
            ASSERT_EQ(analysis.Init(kTrackerRate, kSize, kFrameSamples), kOk);
            SlowPitchAnalysis slow;
            PitchTrackResult result;
            SlowPitchAnalysis::Result expected;
            const auto frame = Sum(Voice(hertz), NoiseFrame(static_cast<unsigned>(i)),
                                   0.5F + 0.004F * static_cast<float>(i));
            analysis.Process(frame.data(), result);
            slow.Process(frame.data(), expected);
            if (std::fabs(slow.GetBinHertz() - hertz) > 5.0 || slow.GetMargins().salience < 1e-3) continue;
            ASSERT_EQ(result.salience != 0.0F, slow.GetComb() >= needed)
                << slow.GetComb() << " dB at " << hertz;
            if (slow.GetComb() > 3.5 && slow.GetComb() < 5.0) ++between[hertz < 160.0 ? 0 : 1];
        }
    }
    EXPECT_GT(between[0], test::SanitizerShare(10, 5)) << "voiced at 150 Hz";
    EXPECT_GT(between[1], test::SanitizerShare(10, 5)) << "unvoiced at 175 Hz";
}

TEST_F(CPTAnalysisFixture, TheThresholdCanBeMovedAbove160HzAlone) {
    EXPECT_EQ(analysis.GetThreshold(), 5.0F);
    analysis.SetThreshold(90.0F);
    EXPECT_EQ(Process(Voice(300.0)).salience, 0.0F);
    EXPECT_GT(Process(Voice(120.0)).salience, 3.5F);
    analysis.SetThreshold(1.0F);
    EXPECT_GT(Process(Voice(300.0)).salience, 5.0F);
}

// A loud voice at 330 Hz over a soft tone where the voice was before. `last` is the pitch two frames back.
TEST_F(CPTAnalysisFixture, APitchFarAboveTheLastGivesWayToAPeakNearIt) {
    for (int i = 0; i < 3; ++i) Process(Voice(90.0));
    EXPECT_NEAR(static_cast<double>(Process(Sum(Voice(330.0), Tone(90.0, 0.06))).pitch), 90.0, 1.0);
}

TEST_F(CPTAnalysisFixture, WithTheLastPitchAtOrBelow80HzContinuityIsOff) {
    for (int i = 0; i < 3; ++i) Process(Voice(78.0));
    ASSERT_LE(result.pitch, 80.0F);
    EXPECT_NEAR(static_cast<double>(Process(Sum(Voice(330.0), Tone(78.0, 0.06))).pitch), 330.0, 1.0);
}

TEST_F(CPTAnalysisFixture, APeakNearTheLastPitchMustReachASixteenth) {
    for (int i = 0; i < 3; ++i) Process(Voice(90.0));
    EXPECT_NEAR(static_cast<double>(Process(Sum(Voice(330.0), Tone(90.0, 0.01))).pitch), 330.0, 1.0);
}

// Above N / 4, 2756 Hz, the comb has no tooth: minus infinity decibels.
TEST_F(CPTAnalysisFixture, APitchAboveAQuarterOfTheSpectrumIsUnvoiced) {
    EXPECT_EQ(Process(Tone(3500.0)).salience, 0.0F);
    EXPECT_TRUE(std::isfinite(result.pitch));
}

TEST_F(CPTAnalysisFixture, ANewOneExpects440Hz) {
    // Unvoiced, and far from the pitch before (0): it falls back on what it expects, give or take a bin.
    EXPECT_NEAR(static_cast<double>(Process(Tone(3500.0)).pitch), 440.0, 1.5 * kBinHertz);
}

TEST_F(CPTAnalysisFixture, AfterAResetItExpects220Hz) {
    for (int i = 0; i < 15; ++i) Process(Voice(300.0));
    analysis.Reset();
    result = {};
    EXPECT_NEAR(static_cast<double>(Process(Tone(3500.0)).pitch), 220.0, 1.5 * kBinHertz);
    EXPECT_FLOAT_EQ(result.rise, 1.0F) << "the level before is forgotten";
}

TEST_F(CPTAnalysisFixture, AnUnvoicedFrameFallsBackOnThePitchOfSomeFramesAgo) {
    std::vector<double> steps = {200, 210, 220, 230, 240, 250, 260, 270, 280, 290, 300};
    for (const double hertz : steps) ASSERT_GT(Process(Voice(hertz)).salience, 0.0F);
    // Each voiced frame enters the pitch of two frames before it: after 290 and 300 the newest is 280 at 0,
    // ... and 230 at 5.
    EXPECT_NEAR(static_cast<double>(Process(Tone(3500.0)).pitch), 230.0, 1.5 * kBinHertz);
}

TEST_F(CPTAnalysisFixture, NearThePitchBeforeAnUnvoicedFrameKeepsItsOwn) {
    Process(Voice(300.0));
    analysis.SetThreshold(90.0F);
    EXPECT_NEAR(static_cast<double>(Process(Voice(310.0)).pitch), 310.0, 0.3);
    EXPECT_EQ(result.salience, 0.0F);
}

TEST_F(CPTAnalysisFixture, LoudnessDoesNotMoveThePitch) {
    const float pitch = Process(Voice(233.0)).pitch;
    for (const double amplitude : {0.01, 1.0, 100.0, 1e6}) {
        EXPECT_NEAR(static_cast<double>(Process(Voice(233.0, amplitude)).pitch), static_cast<double>(pitch),
                    0.05);
        EXPECT_TRUE(std::isfinite(result.salience));
    }
}

TEST_F(CPTAnalysisFixture, ExtremeFramesGiveFiniteNumbers) {
    std::vector<std::vector<float>> frames = {NoiseFrame(1),
                                              NoiseFrame(2, 1e-20F),
                                              NoiseFrame(3, 1e-44F),
                                              NoiseFrame(4, 1e15F),
                                              std::vector<float>(kFrameSamples, 1e-15F),
                                              std::vector<float>(kFrameSamples, -1e15F)};
    std::vector<float> nyquist(kFrameSamples), click(kFrameSamples, 0.0F);
    for (std::size_t i = 0; i < kFrameSamples; ++i) nyquist[i] = i % 2 == 0 ? 1.0F : -1.0F;
    click[500] = 1.0F;
    frames.push_back(nyquist);
    frames.push_back(click);
    for (int round = 0; round < 3; ++round) {
        for (const auto& frame : frames) {
            Process(frame);
            EXPECT_TRUE(std::isfinite(result.pitch) && result.pitch >= 0.0F);
            EXPECT_TRUE(std::isfinite(result.salience) && result.salience >= 0.0F);
            EXPECT_TRUE(std::isfinite(result.rms) && std::isfinite(result.rise) &&
                        std::isfinite(result.change));
        }
    }
    // And it recovers.
    for (int i = 0; i < 3; ++i) Process(Voice(250.0));
    EXPECT_NEAR(static_cast<double>(result.pitch), 250.0, 0.1);
}

TEST(CPTAnalysis, RefusesWhatItCannotWorkWith) {
    CPTAnalysis analysis;
    EXPECT_EQ(analysis.Init(0, kSize, kFrameSamples), kBadArgument);
    EXPECT_EQ(analysis.Init(-1, kSize, kFrameSamples), kBadArgument);
    EXPECT_EQ(analysis.Init(kTrackerRate, 512, 256), kBadArgument);
    EXPECT_EQ(analysis.Init(kTrackerRate, 5000, kFrameSamples), kBadArgument) << "no power of two";
    EXPECT_EQ(analysis.Init(kTrackerRate, -8192, kFrameSamples), kBadArgument);
    EXPECT_EQ(analysis.Init(kTrackerRate, kSize, 1), kBadArgument);
    EXPECT_EQ(analysis.Init(kTrackerRate, kSize, kSize + 1), kBadArgument);
    EXPECT_EQ(analysis.Init(kTrackerRate, kSize, kFrameSamples), kOk);
}

TEST(CPTAnalysis, TheQuickFramingFindsPitchTooIfLessFinely) {
    CPTAnalysis analysis;
    ASSERT_EQ(analysis.Init(kTrackerRate, 2048, 512), kOk);
    PitchTrackResult result;
    for (int i = 0; i < 3; ++i) analysis.Process(Voice(330.0, 0.3, 64 * i).data(), result);
    EXPECT_NEAR(static_cast<double>(result.pitch), 330.0, 1.0);
    EXPECT_GT(result.salience, 0.0F);
}

} // namespace
} // namespace sonorelle
