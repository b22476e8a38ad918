#include "synthesis/pitch2freq.h"

#include "platform/result_codes.h"
#include "support/allocation_trap.h"
#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace sonorelle {
namespace {

constexpr float kRate = 44100.0f;
constexpr std::int32_t kBlock = 64;
constexpr float kTenBlocks = 10.0f * 64.0f / 44100.0f; // s
constexpr float kLargest = std::numeric_limits<float>::max();

// f32 holds a pitch of some 60 semitones to 4e-6, which is 2e-7 of the frequency; a few roundings of that.
constexpr double kCents = 0.002;

std::unique_ptr<CPitch2Freq> MakeLaw(float averageSeconds = 0.0f) {
    std::unique_ptr<CPitch2Freq> law;
    EXPECT_EQ(CPitch2Freq::Create(law, kRate, kBlock, averageSeconds), kOk);
    return law;
}

double Hertz(double midiPitch, double tuning = 440.0) {
    return tuning * std::exp2((midiPitch - 69.0) / 12.0);
}

float Measured(double midiPitch, double tuning = 440.0) {
    return static_cast<float>(Hertz(midiPitch, tuning));
}

double CentsBetween(float hertz, double expected) {
    return 1200.0 * std::log2(static_cast<double>(hertz) / expected);
}

// The voice of a note that is sung 0.3 semitones sharp, doubling it, while the singer is at `sung`.
float SharpNote(CPitch2Freq& law, double sung) { return law.Calc(60.3f, Measured(sung), 60.3f, true, true); }

TEST(CPitch2Freq, AtRestItTransposes) {
    const auto law = MakeLaw();
    EXPECT_NEAR(law->Calc(73, 440, 69, true, false), 554.3653f, 1e-3f); // C#5
    EXPECT_NEAR(law->Calc(57, 440, 69, true, true), 220.0f, 1e-3f);
    EXPECT_NEAR(law->Calc(69, 440, 69, true, true), 440.0f, 1e-3f);

    law->SetInputTuning(446);
    law->SetOutputTuning(438);
    std::mt19937 random(31);
    std::uniform_real_distribution<float> pitch(30.0f, 90.0f), hertz(60.0f, 1200.0f);
    for (int n = 0; n < 1000; ++n) {
        const float target = pitch(random), base = pitch(random), measured = hertz(random);
        const double interval = static_cast<double>(target) - static_cast<double>(base);
        const double expected = static_cast<double>(measured) * std::exp2(interval / 12.0) * 438.0 / 446.0;
        ASSERT_NEAR(CentsBetween(law->Calc(target, measured, base, true, n % 2 == 0), expected), 0.0, kCents)
            << target << ", " << measured << ", " << base;
    }
}

TEST(CPitch2Freq, WithoutTheIntervalTheContourStaysWhereItIs) {
    const auto law = MakeLaw();
    EXPECT_NEAR(law->Calc(73, 450, 69, false, false), 450.0f, 1e-3f);
    law->SetCorrection(0.5f);
    // Half-way from what is sung, 69, to the target 73.
    EXPECT_NEAR(CentsBetween(law->Calc(73, 440, 69, false, false), Hertz(71)), 0.0, kCents);
    law->SetCorrection(1);
    EXPECT_NEAR(CentsBetween(law->Calc(73, 450, 69, false, false), Hertz(73)), 0.0, kCents);
}

TEST(CPitch2Freq, CorrectionPullsToTheTargetOrMirrorsAround) {
    const auto law = MakeLaw();
    // A third above: the singer is 40 cents above the note's 62, so the voice 40 above its 66.
    const auto voice = [&law] { return law->Calc(66, Measured(62.4), 62, true, true); };
    const double expected[][2] = {{0, 66.4}, {1, 66}, {-1, 66.8}, {0.5, 66.2}, {-0.5, 66.6}};
    for (const auto& [correction, pitch] : expected) {
        law->SetCorrection(static_cast<float>(correction));
        EXPECT_NEAR(CentsBetween(voice(), Hertz(pitch)), 0.0, kCents) << correction;
    }
}

TEST(CPitch2Freq, QuantizePullsTheNotesMeanToTheGrid) {
    const auto law = MakeLaw();
    // The target 66.3 lies 30 cents above its semitone, 65.8 lies 20 cents below.
    for (const double quantize : {0.0, 0.5, 1.0}) {
        law->SetQuantize(static_cast<float>(quantize));
        EXPECT_NEAR(
            CentsBetween(law->Calc(66.3f, Measured(62.5), 62.3f, true, true), Hertz(66.5 - 0.3 * quantize)),
            0.0, kCents);
        EXPECT_NEAR(
            CentsBetween(law->Calc(65.8f, Measured(61.7), 61.8f, true, true), Hertz(65.7 + 0.2 * quantize)),
            0.0, kCents);
        EXPECT_NEAR(CentsBetween(law->Calc(66.0f, Measured(62.1), 62.0f, true, true), Hertz(66.1)), 0.0,
                    kCents);
    }
}

TEST(CPitch2Freq, HalfWayBetweenTwoSemitonesTheUpperOneAttracts) {
    const auto law = MakeLaw();
    law->SetQuantize(1);
    EXPECT_NEAR(CentsBetween(law->Calc(66.5f, Measured(66.5), 66.5f, true, true), Hertz(67)), 0.0, kCents);
}

TEST(CPitch2Freq, CorrectionAndQuantizeAddUp) {
    const auto law = MakeLaw();
    law->SetCorrection(1);
    law->SetQuantize(1);
    EXPECT_NEAR(CentsBetween(SharpNote(*law, 60.9), Hertz(60)), 0.0, kCents); // exactly on the key
    law->SetCorrection(-1);
    EXPECT_NEAR(CentsBetween(SharpNote(*law, 60.5), Hertz(60.4)), 0.0, kCents); // 60.3 + 2 x 0.2 - 0.3
    law->SetCorrection(0);
    EXPECT_NEAR(CentsBetween(SharpNote(*law, 60.5), Hertz(60.2)), 0.0, kCents);
}

TEST(CPitch2Freq, TuningsOfSourceAndResultAreApart) {
    const auto law = MakeLaw();
    law->SetInputTuning(446);
    EXPECT_NEAR(law->Calc(69, 446, 69, true, true), 440.0f, 1e-3f);
    law->SetOutputTuning(446);
    EXPECT_NEAR(law->Calc(69, 446, 69, true, true), 446.0f, 1e-3f);
    EXPECT_NEAR(law->Calc(81, 223, 69, true, true), 446.0f, 1e-3f);
    law->SetCorrection(1); // the target is a key of the output's tuning, whatever is sung
    EXPECT_NEAR(law->Calc(57, 450, 57, true, true), 223.0f, 1e-3f);
    law->SetInputTuning(440);
    EXPECT_NEAR(law->Calc(57, 450, 57, true, true), 223.0f, 1e-3f);
}

TEST(CPitch2Freq, ResetForgetsTheResultAndKeepsTheSettings) {
    const auto law = MakeLaw();
    law->SetInputTuning(446);
    law->SetOutputTuning(438);
    law->SetCorrection(0.25f);
    law->SetQuantize(0.75f);
    const float result = SharpNote(*law, 61);
    EXPECT_EQ(law->Calc(60, kNaN, 60, true, true), result);
    law->Reset();
    EXPECT_EQ(law->Calc(60, kNaN, 60, true, true), 0.0f);
    EXPECT_EQ(SharpNote(*law, 61), result);
}

// --- Bad input ---

TEST(CPitch2Freq, AMeasuredFrequencyThatIsNoneLeavesEverything) {
    const auto law = MakeLaw(kTenBlocks), untouched = MakeLaw(kTenBlocks);
    for (CPitch2Freq* each : {law.get(), untouched.get()}) {
        SharpNote(*each, 60.5);
        SharpNote(*each, 60.1);
    }
    const float last = SharpNote(*law, 60.2);
    EXPECT_EQ(SharpNote(*untouched, 60.2), last);
    for (const float correction : {0.0f, 1.0f, -1.0f, 0.5f, 2.0f}) {
        law->SetCorrection(correction);
        for (const float bad : {0.0f, -0.0f, -440.0f, kNaN, kInfinity, -kInfinity, -kLargest}) {
            for (const bool interval : {false, true}) {
                for (const bool average : {false, true})
                    EXPECT_EQ(law->Calc(72, bad, 60, interval, average), last) << bad;
            }
        }
    }
    law->SetCorrection(0);
    EXPECT_EQ(SharpNote(*law, 60.4), SharpNote(*untouched, 60.4)); // neither average nor last pitch moved
}

TEST(CPitch2Freq, GivesNothingBeforeTheFirstResult) {
    EXPECT_EQ(MakeLaw()->Calc(60, 0, 60, true, true), 0.0f);
}

TEST(CPitch2Freq, PitchesThatAreNoneLeaveEverything) {
    const auto law = MakeLaw();
    law->SetQuantize(0.5f);
    const float last = law->Calc(60, 260, 60, true, true);
    for (const float bad : {kNaN, kInfinity, -kInfinity, kLargest, -kLargest, 1e5f, -1e5f}) {
        EXPECT_EQ(law->Calc(bad, 300, 60, true, true), last) << bad;
        EXPECT_EQ(law->Calc(60, 300, bad, true, true), last) << bad;
    }
}

TEST(CPitch2Freq, SettingsThatAreNoneAreIgnored) {
    const auto law = MakeLaw(), untouched = MakeLaw();
    for (CPitch2Freq* each : {law.get(), untouched.get()}) {
        each->SetInputTuning(446);
        each->SetOutputTuning(438);
        each->SetCorrection(0.25f);
        each->SetQuantize(0.75f);
    }
    double sung = 60.0; // another one each time: the last result is no answer
    const auto expectTheSame = [&](float bad) {
        sung += 0.1;
        EXPECT_EQ(SharpNote(*law, sung), SharpNote(*untouched, sung)) << bad;
    };
    for (const float bad : {kNaN, kInfinity, -kInfinity, 0.0f, -440.0f}) {
        law->SetInputTuning(bad);
        expectTheSame(bad);
        law->SetOutputTuning(bad);
        expectTheSame(bad);
        if (std::isfinite(bad)) continue;
        law->SetCorrection(bad);
        expectTheSame(bad);
        law->SetQuantize(bad);
        expectTheSame(bad);
    }
}

TEST(CPitch2Freq, EveryResultIsAFrequencyWhateverComesIn) {
    std::mt19937 random(37);
    const float values[] = {0.0f,     -1.0f, 1e-45f,   1e-38f,    1e-3f, 60.0f,     69.5f,     440.0f,
                            20000.0f, 1e30f, kLargest, -kLargest, kNaN,  kInfinity, -kInfinity};
    const auto any = [&] { return values[random() % std::size(values)]; };
    const auto law = MakeLaw(0.1f);
    law->Calc(60, 260, 60, true, true);
    for (int n = 0; n < 20000; ++n) {
        law->SetInputTuning(any());
        law->SetOutputTuning(any());
        law->SetCorrection(any());
        law->SetQuantize(any());
        const float result = law->Calc(any(), any(), any(), random() % 2 == 0, random() % 2 == 0);
        ASSERT_TRUE(std::isfinite(result) && result > 0.0f) << n << ": " << result;
    }
}

// --- The average ---

TEST(CPitch2Freq, AveragesTheLastBlocks) {
    const auto law = MakeLaw(kTenBlocks), plain = MakeLaw();
    double results[40] = {};
    for (int n = 0; n < 40; ++n) {
        const double sung = 60.3 + 0.5 * std::sin(0.7 * n);
        results[n] = static_cast<double>(SharpNote(*plain, sung));
        double mean = 0.0; // of ten; what lies before the first result counts as that
        for (int back = 0; back < 10; ++back) mean += results[n < back ? 0 : n - back] / 10.0;
        ASSERT_NEAR(SharpNote(*law, sung), mean, 1e-3) << n; // 10 roundings of 260 Hz
    }
}

TEST(CPitch2Freq, AJumpOfMoreThanThreeSemitonesCutsThroughTheAverage) {
    const auto law = MakeLaw(kTenBlocks);
    for (int n = 0; n < 20; ++n) SharpNote(*law, 60.3);
    EXPECT_NEAR(CentsBetween(SharpNote(*law, 63.32), Hertz(63.32)), 0.0, kCents);
    EXPECT_NEAR(SharpNote(*law, 63.32), Hertz(63.32), 1e-3); // nothing of the old note is left
    EXPECT_NEAR(SharpNote(*law, 60.30), Hertz(60.30), 1e-3); // as well downwards
    // 2.98 semitones go the long way: a tenth of it in the first block.
    EXPECT_NEAR(SharpNote(*law, 63.28), 0.9 * Hertz(60.30) + 0.1 * Hertz(63.28), 1e-3);
}

TEST(CPitch2Freq, WithoutAverageABlockIsGivenAsItIs) {
    const auto law = MakeLaw(kTenBlocks);
    for (int n = 0; n < 20; ++n) SharpNote(*law, 60.3);
    const float as = law->Calc(60.3f, Measured(61.3), 60.3f, true, false);
    EXPECT_NEAR(CentsBetween(as, Hertz(61.3)), 0.0, kCents);
    EXPECT_NEAR(SharpNote(*law, 61.3), Hertz(61.3), 1e-3); // and the average begins there
}

TEST(CPitch2Freq, BeginsWithItsFirstResultAfterReset) {
    const auto law = MakeLaw(kTenBlocks);
    EXPECT_NEAR(SharpNote(*law, 69.0), 440.0, 1e-3);
    for (int n = 0; n < 20; ++n) SharpNote(*law, 69.0);
    law->Reset();
    EXPECT_NEAR(SharpNote(*law, 70.0), Hertz(70.0), 1e-3); // not a tenth of the way
    EXPECT_NEAR(SharpNote(*law, 70.0), Hertz(70.0), 1e-3);
}

TEST(CPitch2Freq, TheAverageIsHeldToItsLongest) {
    // 0.1 s are 68.9 blocks, so 69.
    for (const float seconds : {0.1f, 5.0f, kInfinity}) {
        const auto law = MakeLaw(seconds);
        SharpNote(*law, 60.0);
        for (int n = 1; n <= 69; ++n)
            ASSERT_NEAR(SharpNote(*law, 61.0), Hertz(60.0) + n * (Hertz(61.0) - Hertz(60.0)) / 69.0, 2e-3)
                << n;
        EXPECT_NEAR(SharpNote(*law, 61.0), Hertz(61.0), 2e-3);
    }
    for (const float seconds : {0.0f, -1.0f, kNaN}) {
        const auto law = MakeLaw(seconds);
        SharpNote(*law, 60.0);
        EXPECT_NEAR(SharpNote(*law, 61.0), Hertz(61.0), 1e-3) << seconds;
    }
}

TEST(CPitch2Freq, AveragesAtTheEndsOfTheNumbersToo) {
    for (const float hertz : {1e-45f, kLargest}) {
        const auto law = MakeLaw(0.1f);
        law->SetOutputTuning(hertz);
        for (int n = 0; n < 3; ++n) ASSERT_GT(law->Calc(69, 440, 69, true, true), 0.0f) << hertz;
        EXPECT_TRUE(std::isfinite(law->Calc(69, 440, 69, true, true))) << hertz;
    }
}

TEST(CPitch2Freq, CalcAllocatesNothing) {
    const auto law = MakeLaw(0.1f);
    const std::int64_t before = test::AllocationCount();
    for (int n = 0; n < 1000; ++n) SharpNote(*law, 60.0 + n % 7);
    EXPECT_EQ(test::AllocationCount(), before);
}

// --- Creation ---

TEST(CreatePitch2Freq, RefusesRatesAndBlocksThatAreNone) {
    std::unique_ptr<CPitch2Freq> law;
    for (const float rate : {0.0f, -44100.0f, kNaN, kInfinity})
        EXPECT_EQ(CPitch2Freq::Create(law, rate, kBlock), kBadArgument) << rate;
    for (const std::int32_t block : {0, -64})
        EXPECT_EQ(CPitch2Freq::Create(law, kRate, block), kBadArgument) << block;
    EXPECT_FALSE(law);
}

TEST(CreatePitch2Freq, TellsWhenMemoryRanOut) {
    std::int64_t needed = 0;
    {
        const std::int64_t before = test::AllocationCount();
        MakeLaw(0.1f);
        needed = test::AllocationCount() - before;
    }
    ASSERT_GT(needed, 1);
    for (std::int64_t allowed = 0; allowed < needed; ++allowed) {
        std::unique_ptr<CPitch2Freq> law;
        std::int32_t result = kOk;
        {
            const test::AllocationLimit limit(allowed);
            result = CPitch2Freq::Create(law, kRate, kBlock, 0.1f);
        }
        EXPECT_EQ(result, kOutOfMemory) << allowed;
        EXPECT_FALSE(law);
    }
}

TEST(CreatePitch2Freq, AnAbsurdRateStillMakesALaw) {
    std::unique_ptr<CPitch2Freq> law;
    ASSERT_EQ(CPitch2Freq::Create(law, kLargest, 1), kOk);
    EXPECT_NEAR(law->Calc(69, 440, 69, true, true), 440.0f, 1e-3f);
    ASSERT_EQ(CPitch2Freq::Create(law, 1e-30f, std::numeric_limits<std::int32_t>::max(), 0.1f), kOk);
    EXPECT_NEAR(law->Calc(69, 440, 69, true, true), 440.0f, 1e-3f);
}

} // namespace
} // namespace sonorelle
