// The human swing of a voice beside numbers worked out by hand; its fades and its ends.

#include "synthesis/sung_voice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace sonorelle::test {
namespace {

// Where the next block reads, less a block and less the timeline.
double SwingAt(double timeline, float amount, float rate = 0.00098F) {
    SungVoice sung(Constant());
    sung.voice->SetPosition(static_cast<std::int32_t>(timeline));
    sung.voice->SetTiming(amount, rate);
    sung.voice->SetTimeline(timeline);
    EXPECT_EQ(sung.Render(), 0);
    return sung.voice->GetReadPosition() - kBlock - timeline;
}

// phase = 0.00098 x timeline / 32 + amount / 4, and an amount of 800 adds whole turns. A half turn of the
// phase, 1, is 32653 samples.
TEST(CvirelaineSynthesisSwing, TheSwingIsATriangleFromEightTenthsBehindToTwoTenthsAhead) {
    EXPECT_NEAR(SwingAt(65306.12, 800), -640, 0.1); // phase 2: -(1 + 0.6) x 400
    EXPECT_NEAR(SwingAt(16326.53, 800), -240, 0.1); // phase 0.5: -(0 + 0.6) x 400
    EXPECT_NEAR(SwingAt(32653.06, 800), 160, 0.1);  // phase 1: -(-1 + 0.6) x 400
    EXPECT_NEAR(SwingAt(48979.59, 800), -240, 0.1); // phase 1.5
    EXPECT_NEAR(SwingAt(40816.33, 800), -40, 0.1);  // phase 1.25: -(-0.5 + 0.6) x 400
    EXPECT_NEAR(SwingAt(8163.27, 800), -440, 0.1);  // phase 0.25: -(0.5 + 0.6) x 400
}

TEST(CvirelaineSynthesisSwing, OneSwingLasts65306Samples) {
    for (const double timeline : {5000.0, 12345.0, 25000.0})
        EXPECT_NEAR(SwingAt(timeline, 400), SwingAt(timeline + 65306.12, 400), 0.1);
}

// 402 / 4 = 100.5 turns on by half a unit: phase 0.5 where the amount of 400 has 0.
TEST(CvirelaineSynthesisSwing, TheAmountItselfShiftsThePhase) {
    EXPECT_NEAR(SwingAt(65306.12, 400), -320, 0.1);   // -(1 + 0.6) x 200
    EXPECT_NEAR(SwingAt(65306.12, 402), -120.6, 0.1); // -(0 + 0.6) x 201
}

TEST(CvirelaineSynthesisSwing, NothingIsReadBeforeTheRecording) {
    EXPECT_EQ(SwingAt(0, 800), 0);
    EXPECT_NEAR(SwingAt(500, 800), -500, 1e-9); // would be -628
}

TEST(CvirelaineSynthesisSwing, WithoutTimingTheVoiceReadsOnTheTimeline) {
    for (const double timeline : {0.0, 1000.0, 32653.0, 50000.0}) EXPECT_EQ(SwingAt(timeline, 0), 0);
}

TEST(CvirelaineSynthesisSwing, TimingIsHeldToItsLongestAndNoNumberChangesNothing) {
    EXPECT_NEAR(SwingAt(65306.12, 1e30F), SwingAt(65306.12, 10000), 1e-9);
    EXPECT_EQ(SwingAt(32653, -50), 0);
    SungVoice sung(Constant());
    sung.voice->SetTiming(800, 0.00098F);
    sung.voice->SetTiming(kNoNumber, 0.00098F);
    sung.voice->SetTiming(100, kNoNumber);
    sung.voice->SetPosition(65300);
    sung.voice->SetTimeline(65306.12);
    EXPECT_EQ(sung.Render(), 0);
    EXPECT_NEAR(sung.voice->GetReadPosition(), 65306.12 + kBlock - 640, 0.1);
}

// --- Fades and ends ---

TEST(CvirelaineSynthesisEnds, TheFirst1024SamplesFadeInAndAgainAfterARestart) {
    SungVoice sung(Constant());
    sung.Play(40);
    for (int i = 0; i < 1024; ++i)
        ASSERT_NEAR(static_cast<double>(sung.out[static_cast<std::size_t>(i)]), RiseWeight(i, 1024), 1e-4)
            << i;
    for (std::size_t i = 1024; i < sung.out.size(); ++i) ASSERT_NEAR(sung.out[i], 1.0F, 1e-6F);
    sung.voice->RestartFade();
    sung.out.clear();
    sung.Play(40);
    EXPECT_EQ(sung.out[0], 0.0F);
    for (const std::size_t i : {200u, 512u, 900u}) // beyond the grain that begins without a rise
        EXPECT_NEAR(static_cast<double>(sung.out[i]), RiseWeight(static_cast<double>(i), 1024), 1e-4) << i;
}

TEST(CvirelaineSynthesisEnds, SwitchedOnAgainItFadesInFromSilence) {
    SungVoice sung(Constant());
    sung.PassFade();
    sung.voice->SetGrainsActive(false);
    sung.Play(20);
    sung.voice->SwitchOn();
    sung.out.clear();
    sung.Play(40);
    for (int i = 0; i < 1024; ++i)
        ASSERT_LE(static_cast<double>(sung.out[static_cast<std::size_t>(i)]), RiseWeight(i, 1024) + 1e-4)
            << i;
    EXPECT_NEAR(sung.out.back(), 1.0F, 1e-6F);
}

TEST(CvirelaineSynthesisEnds, SwitchedOnAgainNothingOfBeforeIsLeft) {
    SungVoice sung(Constant());
    sung.PassFade();
    sung.voice->SetGrainsActive(false);
    sung.voice->SwitchOn();
    const auto inFlight = static_cast<std::size_t>(sung.voice->GetOutputFill());
    ASSERT_GE(inFlight, 10u);
    sung.Play(4);
    for (std::size_t i = 0; i < inFlight; ++i) ASSERT_EQ(sung.out[i], 0.0F) << i;
}

TEST(CvirelaineSynthesisEnds, FewerThanTwoMarksAreExhausted) {
    SungVoice none(Constant(), {});
    SungVoice one(Constant(), {Mark(0)});
    EXPECT_EQ(none.voice->GetRequiredInput(kBlock), CvirelaineSynthesis::kMarksExhausted);
    EXPECT_EQ(one.voice->GetRequiredInput(kBlock), CvirelaineSynthesis::kMarksExhausted);
    none.voice->SetPosition(1000);
    one.voice->SetPosition(1000);
    EXPECT_EQ(one.voice->GetRequiredInput(kBlock), CvirelaineSynthesis::kMarksExhausted);
}

TEST(CvirelaineSynthesisEnds, TheLastMarkEndsIt) {
    SungVoice sung(Constant(), {Mark(0), Mark(100), Mark(200), Mark(300)});
    int blocks = 0;
    while (blocks < 100 && sung.Render() == 0) ++blocks;
    EXPECT_GE(blocks * kBlock, 100);
    EXPECT_LE(blocks * kBlock, 300);
    EXPECT_EQ(sung.voice->GetRequiredInput(kBlock), CvirelaineSynthesis::kMarksExhausted);
}

TEST(CvirelaineSynthesisEnds, MarksThatDoNotRiseFailAndNeverLoop) {
    SungVoice same(Constant(), {Mark(0), Mark(500), Mark(500), Mark(500), Mark(900)});
    SungVoice back(Constant(), {Mark(0), Mark(500), Mark(400), Mark(300), Mark(900)});
    for (SungVoice* sung : {&same, &back}) {
        int blocks = 0;
        while (blocks < 1000 && sung->Render() == 0) ++blocks;
        EXPECT_LT(blocks, 40);
    }
}

TEST(CvirelaineSynthesisEnds, PeriodsOfOneAndTwoSamplesAtTheHighestPitchEnd) {
    for (const std::int32_t period : {1, 2}) {
        std::vector<PitchMarkRecord> records;
        for (std::int32_t i = 0; i < 5000; ++i) records.push_back(Mark(i * period));
        SungVoice sung(Constant(), records);
        sung.voice->SetPitchAndFormant(8, 1);
        int blocks = 0;
        while (blocks < 1000 && sung.Render() == 0) ++blocks;
        EXPECT_LE(blocks, 5000 * period / kBlock + 1);
        for (const float sample : sung.out) ASSERT_TRUE(std::isfinite(sample));
    }
}

} // namespace
} // namespace sonorelle::test
