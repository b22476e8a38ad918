// Levels are powers of two where a test compares exactly, so that products do not round.

#include "app/voice_mix.h"

#include "app/mixing_desk.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace sonorelle {
namespace {

using test::Desk;
using test::FadeFullyIn;
using test::FadeInCurve;
using test::kSize;

constexpr float kUntouched = 77;

TEST(VoiceMix, AllVoicesSeeTheSameFade) {
    Desk desk(2, 1);
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    for (const auto& voice : desk.samples)
        for (const auto& channel : voice) EXPECT_EQ(channel, FadeInCurve(kSize));
    EXPECT_EQ(mix.Fade().GetGain(), FadeInCurve(kSize).back());
}

TEST(VoiceMix, TheFadeGoesOnFromBlockToBlock) {
    Desk desk(2, 1);
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.block.count = 100;
    desk.Mix(mix);
    desk.block.from = 100;
    desk.block.count = 50;
    desk.Mix(mix);
    const std::vector<float> curve = FadeInCurve(150);
    EXPECT_EQ(std::vector<float>(desk.samples[3][1].begin(), desk.samples[3][1].begin() + 150), curve);
}

TEST(VoiceMix, EachSideHasItsChannelAtItsGain) {
    Desk desk;
    desk.EnableOnly(2);
    desk.samples[2][0].assign(kSize, 0.5F);
    desk.samples[2][1].assign(kSize, 0.25F);
    desk.voices.gains[2] = {0.5F, 2.0F};
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_EQ(desk.outputs[0], std::vector<float>(kSize, 0.25F * full));
    EXPECT_EQ(desk.outputs[1], std::vector<float>(kSize, 0.5F * full));
}

TEST(VoiceMix, VoicesAreAddedToWhatTheOutputsHold) {
    Desk desk;
    for (std::size_t v = 0; v < 4; ++v) desk.SetVoice(v, 0.0625F * static_cast<float>(v + 1));
    desk.outputs[0].assign(kSize, 0.25F);
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    // 0.625 of four voices; their sum rounds in another order.
    EXPECT_NEAR(desk.outputs[0][5], 0.25F + 0.625F * full, 1e-6F);
    EXPECT_NEAR(desk.outputs[1][5], 0.625F * full, 1e-6F);
}

TEST(VoiceMix, ADisabledVoiceAddsNothingAndKeepsItsBuffer) {
    Desk desk(2, 0.5F);
    desk.voices.enabled[1] = false;
    desk.voices.buffers[1] = nullptr;
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    EXPECT_EQ(desk.samples[1][0], std::vector<float>(kSize, 0.5F));
    EXPECT_NEAR(desk.outputs[0].back(), 1.5F * FadeInCurve(kSize).back(), 1e-6F);
    EXPECT_EQ(mix.GetPeak(1, 0), 0);
}

TEST(VoiceMix, WithoutAnEnabledVoiceTheFadeWaits) {
    Desk desk(2, 0.5F);
    desk.voices.enabled.fill(false);
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    EXPECT_EQ(mix.Fade().GetGain(), 0);
    EXPECT_EQ(desk.outputs[0], std::vector<float>(kSize, 0.0F));
}

TEST(VoiceMix, AMonoFileFeedsBothSidesFromItsOneChannel) {
    Desk desk(1);
    desk.EnableOnly(0);
    desk.samples[0][0].assign(kSize, 0.5F);
    desk.samples[0][1].assign(kSize, kUntouched);
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_EQ(desk.outputs[0], std::vector<float>(kSize, 0.5F * full));
    EXPECT_EQ(desk.outputs[1], std::vector<float>(kSize, 0.5F * full * full));
    EXPECT_EQ(desk.samples[0][1], std::vector<float>(kSize, kUntouched));
}

TEST(VoiceMix, InMonoTheFadeCountsTwiceOnTheRight) {
    Desk desk(1, 1);
    desk.EnableOnly(0);
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    const std::vector<float> curve = FadeInCurve(kSize);
    for (std::size_t i = 0; i < kSize; ++i) {
        ASSERT_EQ(desk.outputs[0][i], curve[i]);
        ASSERT_EQ(desk.outputs[1][i], curve[i] * curve[i]);
    }
}

TEST(VoiceMix, ReadsAndWritesAtItsIndicesAlone) {
    Desk desk;
    desk.EnableOnly(0);
    desk.SetVoice(0, 1);
    desk.block.singleVoiceOutput = true;
    desk.block.from = 10;
    desk.block.to = 100;
    desk.block.count = 30;
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    for (std::size_t i = 0; i < kSize; ++i) {
        const bool written = i >= 100 && i < 130;
        for (const std::size_t output : {0U, 1U, 2U, 3U})
            ASSERT_EQ(desk.outputs[output][i], written ? full : 0.0F) << output << " at " << i;
        ASSERT_EQ(desk.samples[0][0][i], i >= 10 && i < 40 ? full : 1.0F) << i;
    }
}

TEST(VoiceMix, NothingToMixChangesNothing) {
    Desk desk(2, 1);
    desk.block.count = 0;
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    EXPECT_EQ(mix.Fade().GetGain(), 0);
    EXPECT_EQ(mix.GetPeak(0, 0), 0);
}

// --- Outputs of single voices ---

TEST(VoiceMix, EachVoiceHasItsOwnPairOfOutputsWithoutGainAndPan) {
    Desk desk;
    for (std::size_t v = 0; v < 4; ++v)
        for (std::size_t c = 0; c < 2; ++c)
            desk.samples[v][c].assign(kSize, 0.0625F * static_cast<float>(1 + 2 * v + c));
    desk.voices.gains.fill({0.25F, 0});
    for (auto& output : desk.outputs) output.assign(kSize, kUntouched);
    desk.block.singleVoiceOutput = true;
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    for (std::size_t i = 2; i < desk.outputs.size(); ++i)
        EXPECT_EQ(desk.outputs[i], std::vector<float>(kSize, 0.0625F * static_cast<float>(i - 1) * full))
            << i;
}

TEST(VoiceMix, TheOwnOutputsOfADisabledVoiceAreLeftAlone) {
    Desk desk(2, 0.5F);
    desk.voices.enabled[1] = false;
    desk.block.singleVoiceOutput = true;
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_EQ(desk.outputs[4][0], 0);
    EXPECT_EQ(desk.outputs[5][0], 0);
    EXPECT_NE(desk.outputs[6][0], 0);
}

TEST(VoiceMix, OutputsThatTheHostDoesNotHaveAreNotWritten) {
    for (const std::int32_t outputCount : {2, 3, 5, 9}) {
        Desk desk(2, 0.5F);
        desk.block.singleVoiceOutput = true;
        desk.block.outputCount = outputCount;
        const auto count = static_cast<std::size_t>(outputCount);
        for (std::size_t i = count; i < desk.outputs.size(); ++i) desk.outputPointers[i] = nullptr;
        CVoiceMix mix;
        const float full = FadeFullyIn(mix);
        desk.Mix(mix);
        for (std::size_t i = 2; i < count; ++i) EXPECT_EQ(desk.outputs[i][0], 0.5F * full) << i;
    }
}

TEST(VoiceMix, TheVoicesOwnOutputsStaySilentUnlessAskedFor) {
    Desk desk(2, 0.5F);
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    for (std::size_t i = 2; i < desk.outputs.size(); ++i)
        EXPECT_EQ(desk.outputs[i], std::vector<float>(kSize, 0.0F)) << i;
}

TEST(VoiceMix, InMonoBothOwnOutputsOfAVoiceHoldItsOneChannel) {
    Desk desk(1, 1);
    desk.block.singleVoiceOutput = true;
    CVoiceMix mix;
    mix.Fade().FadeIn();
    desk.Mix(mix);
    EXPECT_EQ(desk.outputs[6], desk.samples[2][0]);
    EXPECT_EQ(desk.outputs[7], desk.samples[2][0]);
}

// --- The whole against its definition ---

// The mix as it is defined, a sample at a time.
struct SlowMix {
    float fadeGain = 0;
    std::array<std::array<float, 2>, 4> peak{};
    bool clipped = false;

    void Mix(Desk& desk) {
        const float start = fadeGain;
        const VoiceMixBlock& block = desk.block;
        for (std::size_t v = 0; v < 4; ++v) {
            if (!desk.voices.enabled[v]) continue;
            fadeGain = start;
            for (std::int32_t n = 0; n < block.count; ++n) {
                fadeGain = (1 - CFade::kCoefficient) * 1 + CFade::kCoefficient * fadeGain + 1e-24F;
                for (std::size_t c = 0; c < 2; ++c) MixSample(desk, v, c, n);
            }
            CopyVoice(desk, v);
        }
    }
    void MixSample(Desk& desk, std::size_t v, std::size_t c, std::int32_t n) {
        const auto from = static_cast<std::size_t>(desk.block.from + n);
        const auto to = static_cast<std::size_t>(desk.block.to + n);
        float& sample = desk.samples[v][c % static_cast<std::size_t>(desk.voices.channels)][from];
        sample *= fadeGain;
        const float x = sample * (c == 0 ? desk.voices.gains[v].left : desk.voices.gains[v].right);
        if (std::abs(x) >= 1) clipped = true;
        peak[v][c] = std::max(peak[v][c], x * x);
        desk.outputs[c][to] += x;
    }
    static void CopyVoice(Desk& desk, std::size_t v) {
        const VoiceMixBlock& block = desk.block;
        if (!block.singleVoiceOutput) return;
        for (std::size_t i = 2; i < static_cast<std::size_t>(block.outputCount); ++i) {
            if (i / 2 - 1 != v) continue;
            for (std::int32_t n = 0; n < block.count; ++n)
                desk.outputs[i][static_cast<std::size_t>(block.to + n)] =
                    desk.samples[v][i % static_cast<std::size_t>(desk.voices.channels)]
                                [static_cast<std::size_t>(block.from + n)];
        }
    }
};

TEST(VoiceMix, ToTheBitAsItIsDefinedInBlocksOfAnySize) {
    constexpr std::uint32_t kSeed = 20;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 60; ++round) {
        const auto channels = static_cast<std::int32_t>(1 + random() % 2);
        Desk fast(channels);
        Desk slow(channels);
        const auto seed = static_cast<std::uint32_t>(random());
        fast.Randomise(seed);
        slow.Randomise(seed);
        CVoiceMix mix;
        mix.Fade().FadeIn();
        SlowMix slowMix;
        std::int32_t done = 0;
        while (done < kSize) {
            for (Desk* desk : {&fast, &slow}) {
                std::mt19937 choices(seed + static_cast<std::uint32_t>(done));
                for (bool& on : desk->voices.enabled) on = choices() % 4 != 0;
                desk->block.singleVoiceOutput = choices() % 2 == 0;
                desk->block.outputCount = static_cast<std::int32_t>(2 + choices() % 9);
                desk->block.count = std::min(static_cast<std::int32_t>(1 + choices() % 150), kSize - done);
                desk->block.from = done;
                desk->block.to = kSize - done - desk->block.count;
            }
            fast.Mix(mix);
            slowMix.Mix(slow);
            done += fast.block.count;
        }
        ASSERT_EQ(fast.samples, slow.samples) << "seed " << seed;
        ASSERT_EQ(fast.outputs, slow.outputs) << "seed " << seed;
        ASSERT_EQ(mix.IsClipped(), slowMix.clipped) << "seed " << seed;
        for (std::int32_t v = 0; v < 4; ++v)
            for (std::int32_t c = 0; c < 2; ++c)
                ASSERT_EQ(mix.GetPeak(v, c),
                          slowMix.peak[static_cast<std::size_t>(v)][static_cast<std::size_t>(c)])
                    << "seed " << seed;
    }
}

TEST(VoiceMix, AllocatesNothing) {
    Desk desk(2, 0.5F);
    desk.block.singleVoiceOutput = true;
    CVoiceMix mix;
    mix.Fade().FadeIn();
    const std::int64_t before = test::AllocationCount();
    desk.Mix(mix);
    mix.DecayPeaks();
    EXPECT_EQ(test::AllocationCount(), before);
}

TEST(VoiceMixThreads, PollingMetersAndStartingDoesNotDisturbTheSound) {
    constexpr int kBlocks = 2000;
    Desk desk(2, 0.5F);
    desk.block.count = 64;
    CVoiceMix mix;
    mix.Fade().FadeIn();
    std::atomic<bool> done{false};
    std::thread poller([&] {
        while (!done.load()) {
            mix.DecayPeaks();
            mix.ClearClipped();
            mix.Fade().FadeIn();
            for (std::int32_t voice = 0; voice < 4; ++voice)
                if (!(mix.GetPeak(voice, 0) <= 0.25F)) ADD_FAILURE() << "a peak that never was";
        }
    });
    for (int i = 0; i < kBlocks; ++i) {
        for (auto& voice : desk.samples)
            for (auto& channel : voice) std::fill_n(channel.begin(), 64, 0.5F);
        desk.Mix(mix);
    }
    done.store(true);
    poller.join();
    const std::vector<float> curve = FadeInCurve(kBlocks * 64);
    EXPECT_EQ(mix.Fade().GetGain(), curve.back());
    EXPECT_EQ(desk.samples[0][0][63], 0.5F * curve.back());
}

} // namespace
} // namespace sonorelle
