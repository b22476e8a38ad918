#include "analysis/pt_pre_process.h"

#include "dsp/eq.h"
#include "dsp/resample_base.h"
#include "dsp/ring_buffer.h"
#include "platform/result_codes.h"
#include "support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using test::Noise;

constexpr std::int32_t kManyRates[] = {11025, 11026, 16000, 22050,  32000,  44100,
                                       48000, 88200, 96000, 176400, 192000, 384000};

// Feeds `input` (interleaved) in blocks and gives all that comes out. Buffers have exactly the promised size.
std::vector<float> Passed(CPTPreProcess& preProcess, const std::vector<float>& input, std::size_t channels,
                          std::size_t block) {
    std::unique_ptr<RingBuffer> ring;
    EXPECT_EQ(RingBuffer::Create(ring, 16384), kOk);
    std::vector<float> output;
    const std::size_t frames = input.size() / channels;
    for (std::size_t at = 0; at < frames; at += block) {
        std::size_t taken = std::min(block, frames - at);
        std::vector<float> samples(input.begin() + static_cast<std::ptrdiff_t>(at * channels),
                                   input.begin() + static_cast<std::ptrdiff_t>((at + taken) * channels));
        auto count = static_cast<std::int32_t>(taken);
        preProcess.Process(samples.data(), count, *ring);
        const std::size_t before = output.size();
        output.resize(before + static_cast<std::size_t>(count));
        ring->Read(output.data() + before, static_cast<std::uint32_t>(count));
    }
    return output;
}

std::vector<float> PassedThroughNew(const std::vector<float>& input, std::int32_t rate,
                                    std::int32_t channels = 1, std::size_t block = 1000) {
    CPTPreProcess preProcess;
    EXPECT_EQ(preProcess.Init(rate, channels), kOk);
    return Passed(preProcess, input, static_cast<std::size_t>(channels), block);
}

// The road without the high-pass.
std::vector<float> ResampledAndLowPassed(std::vector<float> input, std::int32_t rate,
                                         bool withLowPass = true) {
    std::unique_ptr<CResampleBase> resampler;
    EXPECT_EQ(CreateResampler(resampler, 3, 16384, 1, kResampleFloat), kOk);
    const std::int32_t count = resampler->Process(input.data(), input.data(), rate, 11025, 1,
                                                  static_cast<std::int32_t>(input.size()));
    input.resize(static_cast<std::size_t>(count));
    std::unique_ptr<CEqIf> lowPass;
    EXPECT_EQ(CreateEq(lowPass, 11025.0F, 1, 3), kOk);
    lowPass->SetParameters(4000.0F, 0.0F, 1.0F);
    float* const buffers[] = {input.data()};
    if (withLowPass) lowPass->ProcessInPlace(buffers, count);
    return input;
}

double Magnitude(const std::vector<float>& response, double turns) {
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < response.size(); ++n) {
        sum += static_cast<double>(response[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * turns * static_cast<double>(n));
    }
    return std::abs(sum);
}

TEST(CPTPreProcess, TheHighPassChangesNothingAt11025Hz) {
    for (const std::int32_t rate : {11025, 44100}) {
        const std::vector<float> input = Noise(16000, 1);
        const std::vector<float> output = PassedThroughNew(input, rate, 1, 16000);
        EXPECT_EQ(output, ResampledAndLowPassed(input, rate)) << rate;
        EXPECT_GT(output.size(), 3900U);
    }
    // Nor does it take a constant away: the resampler's gain of 0.99 is all that is left of it. The
    // resampler's own ripple at 0 Hz is under half a percent.
    const std::vector<float> constant = PassedThroughNew(std::vector<float>(20000, 0.5F), 11025);
    EXPECT_NEAR(static_cast<double>(constant.back()), 0.5 * 0.99, 0.0025);
}

TEST(CPTPreProcess, LowPassIsASecondOrderButterworthAt4000Hz) {
    std::vector<float> impulse(3000, 0.0F);
    impulse[100] = 1.0F;
    const std::vector<float> whole = PassedThroughNew(impulse, 11025);
    const std::vector<float> resampled = ResampledAndLowPassed(impulse, 11025, false);
    for (double hertz = 50.0; hertz < 4700.0; hertz += 131.0) {
        const double warped =
            std::tan(std::numbers::pi * hertz / 11025.0) / std::tan(std::numbers::pi * 4000.0 / 11025.0);
        const double expected = std::sqrt(1.0 / (1.0 + std::pow(warped, 4.0)));
        const double turns = hertz / 11025.0;
        EXPECT_NEAR(Magnitude(whole, turns) / Magnitude(resampled, turns), expected, 1e-4) << hertz << " Hz";
    }
}

TEST(CPTPreProcess, BringsEveryRateTo11025Hz) {
    for (const std::int32_t rate : kManyRates) {
        const double hertz = 500.0;
        std::vector<float> tone(static_cast<std::size_t>(rate));
        for (std::size_t i = 0; i < tone.size(); ++i) {
            tone[i] =
                static_cast<float>(std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate));
        }
        const std::vector<float> output = PassedThroughNew(tone, rate, 1, 16384);
        EXPECT_NEAR(static_cast<double>(output.size()), 11025.0, 30.0) << rate;
        // The strength at 500 Hz over ten whole periods' worth of the middle, where the filter has settled.
        const std::vector<float> middle(output.begin() + 3000, output.begin() + 3000 + 2205);
        EXPECT_NEAR(Magnitude(middle, hertz / 11025.0) / (2205.0 / 2.0), 0.99, 0.01) << rate;
    }
}

TEST(CPTPreProcess, ChannelsBecomeTheirMean) {
    const std::vector<float> a = Noise(8000, 2);
    const std::vector<float> b = Noise(8000, 3);
    std::vector<float> stereo, mean;
    for (std::size_t i = 0; i < a.size(); ++i) {
        stereo.push_back(a[i]);
        stereo.push_back(b[i]);
        mean.push_back((a[i] + (b[i] + 1e-15F)) * 0.5F);
    }
    EXPECT_EQ(PassedThroughNew(stereo, 44100, 2), PassedThroughNew(mean, 44100));
    // Three channels: only what they have in common is left of equal ones.
    std::vector<float> triple;
    for (const float value : a) triple.insert(triple.end(), {value, value, value});
    const std::vector<float> ofThree = PassedThroughNew(triple, 22050, 3);
    const std::vector<float> ofOne = PassedThroughNew(a, 22050);
    ASSERT_EQ(ofThree.size(), ofOne.size());
    for (std::size_t i = 0; i < ofOne.size(); ++i) ASSERT_NEAR(ofThree[i], ofOne[i], 1e-6F);
}

TEST(CPTPreProcess, AChannelThatIsSilentAddsAHairOnly) {
    std::vector<float> stereo(8000, 0.0F);
    CPTPreProcess preProcess;
    ASSERT_EQ(preProcess.Init(11025, 2), kOk);
    std::unique_ptr<RingBuffer> ring;
    ASSERT_EQ(RingBuffer::Create(ring, 16384), kOk);
    std::int32_t count = 4000;
    preProcess.Process(stereo.data(), count, *ring);
    const float settled = ring->data[static_cast<std::size_t>(count) - 1];
    EXPECT_NEAR(static_cast<double>(settled), 0.5e-15 * 0.99, 0.01e-15)
        << "1e-15 for the added channel, halved";
}

TEST(CPTPreProcess, OutputDoesNotDependOnTheCutIntoBlocks) {
    for (const std::int32_t rate : {11025, 44100, 48000}) {
        const std::vector<float> input = Noise(16000, 4);
        const std::vector<float> whole = PassedThroughNew(input, rate, 1, 16000);
        for (const std::size_t block : {1U, 7U, 512U, 1024U}) {
            const std::vector<float> cut = PassedThroughNew(input, rate, 1, block);
            // The cuts differ by up to the outputs of one input frame in how far they come.
            EXPECT_NEAR(static_cast<double>(cut.size()), static_cast<double>(whole.size()), 1.0) << rate;
            EXPECT_TRUE(std::equal(
                cut.begin(), cut.begin() + static_cast<std::ptrdiff_t>(std::min(cut.size(), whole.size())),
                whole.begin()))
                << "rate " << rate << " block " << block;
        }
    }
}

TEST(CPTPreProcess, LastIndexFollowsTheWrites) {
    CPTPreProcess preProcess;
    ASSERT_EQ(preProcess.Init(11025, 1), kOk);
    std::unique_ptr<RingBuffer> ring;
    ASSERT_EQ(RingBuffer::Create(ring, 16384), kOk);
    std::uint32_t written = 0;
    for (int i = 0; i < 40; ++i) {
        std::vector<float> block = Noise(1000, 5);
        std::int32_t count = 1000;
        preProcess.Process(block.data(), count, *ring);
        EXPECT_EQ(ring->lastIndex, written);
        written = (written + static_cast<std::uint32_t>(count)) % 16384;
        EXPECT_EQ(ring->writeIndex, written);
    }
}

TEST(CPTPreProcess, BeforeTheFirstRunTheFilterMustBeFilledToo) {
    for (const std::int32_t rate : kManyRates) {
        CPTPreProcess preProcess;
        ASSERT_EQ(preProcess.Init(rate, 1), kOk);
        const double ratio = rate / 11025.0;
        for (const std::int32_t hop : {0, 64, 512}) {
            // The look-ahead starts at 8 frames; the filter reaches 4 of the longer period.
            const double expected = std::ceil(hop * ratio + std::max(8.0, 4.0 * std::max(ratio, 1.0) + 1.0));
            EXPECT_EQ(preProcess.GetRequiredInput(hop), static_cast<std::int32_t>(expected))
                << rate << " " << hop;
        }
    }
    CPTPreProcess at44100;
    ASSERT_EQ(at44100.Init(44100, 1), kOk);
    EXPECT_EQ(at44100.GetRequiredInput(512), 512 * 4 + 17);
}

TEST(CPTPreProcess, AfterTheFirstRunWhatIsHeldIsTakenOff) {
    for (const std::int32_t rate : kManyRates) {
        CPTPreProcess preProcess;
        ASSERT_EQ(preProcess.Init(rate, 1), kOk);
        std::unique_ptr<CResampleBase> beside;
        ASSERT_EQ(CreateResampler(beside, 3, 16384, 1, kResampleFloat), kOk);
        std::mt19937 random(6);
        for (int i = 0; i < 60; ++i) {
            const std::size_t block = 1 + random() % 3000;
            const std::vector<float> input = Noise(block, 7);
            Passed(preProcess, input, 1, block);
            std::vector<float> samples = input;
            beside->Process(samples.data(), samples.data(), rate, 11025, 1, static_cast<std::int32_t>(block));
            const double expected = std::ceil(512.0 * rate / 11025.0 - beside->HeldFrames());
            ASSERT_EQ(preProcess.GetRequiredInput(512), static_cast<std::int32_t>(std::max(0.0, expected)))
                << rate;
        }
    }
}

TEST(CPTPreProcess, WhatIsRequiredGivesAHop) {
    for (const std::int32_t rate : kManyRates) {
        CPTPreProcess preProcess;
        ASSERT_EQ(preProcess.Init(rate, 1), kOk);
        std::size_t produced = 0;
        for (std::size_t hop = 1; hop <= 60; ++hop) {
            const auto need = static_cast<std::size_t>(preProcess.GetRequiredInput(512));
            produced += Passed(preProcess, Noise(need, 8), 1, 16384).size();
            ASSERT_GE(produced + 1, 512 * hop) << "at " << rate << " Hz, hop " << hop;
            ASSERT_LE(produced, 513 * hop + 8) << "at " << rate << " Hz, hop " << hop;
        }
    }
}

TEST(CPTPreProcess, ResetForgetsAllInput) {
    CPTPreProcess preProcess;
    ASSERT_EQ(preProcess.Init(48000, 1), kOk);
    const std::vector<float> input = Noise(9000, 9);
    const std::vector<float> first = Passed(preProcess, input, 1, 777);
    EXPECT_NE(Passed(preProcess, input, 1, 777), first);
    ASSERT_EQ(preProcess.Reset(), kOk);
    EXPECT_EQ(preProcess.GetRequiredInput(512), 2248);
    EXPECT_EQ(Passed(preProcess, input, 1, 777), first);
}

TEST(CPTPreProcess, HostileSamplesLeaveNoTrace) {
    CPTPreProcess preProcess;
    ASSERT_EQ(preProcess.Init(44100, 1), kOk);
    std::vector<float> input(8000, 0.1F);
    input[1000] = std::numeric_limits<float>::quiet_NaN();
    input[1500] = -std::numeric_limits<float>::infinity();
    input[2000] = 1e-44F;
    for (const float value : Passed(preProcess, input, 1, 512)) ASSERT_TRUE(std::isfinite(value));
    const std::vector<float> after = Passed(preProcess, std::vector<float>(8000, 0.5F), 1, 512);
    EXPECT_NEAR(static_cast<double>(after.back()), 0.495, 0.003);
}

TEST(CPTPreProcess, RefusesRatesBelowItsOwnAndNoChannels) {
    CPTPreProcess preProcess;
    for (const std::int32_t rate : {std::numeric_limits<std::int32_t>::min(), -1, 0, 8000, 11024}) {
        EXPECT_EQ(preProcess.Init(rate, 1), kSampleRateTooLow) << rate;
    }
    EXPECT_EQ(preProcess.Init(44100, 0), kBadArgument);
    EXPECT_EQ(preProcess.Init(44100, -2), kBadArgument);
    EXPECT_EQ(preProcess.Init(11025, 1), kOk);
}

} // namespace
} // namespace sonorelle
