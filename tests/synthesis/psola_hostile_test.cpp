#include "support/hostile_numbers.h"
#include "support/psola_driver.h"
#include "synthesis/psola_synthesis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

using test::Channels;
using test::OpenPsola;

constexpr auto kNothingLeft = CPSOLASynthesisIf::kMarksExhausted;
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

class PsolaUnderHostileInput : public testing::Test {
protected:
    // One block with `count` samples of noise.
    std::int32_t Render(OpenPsola& synthesis, int count = 1000, int block = 64) {
        Channels in = test::Stretch(recording, 0, count);
        out.assign(2, std::vector<float>(static_cast<std::size_t>(block)));
        return synthesis.Process(test::Pointers(in).data(), count, test::Pointers(out).data());
    }

    // Each sample of the recording comes through with a weight of at most one, or of the interpolator's
    // overshoot; two grains may lie over one another.
    void ExpectBounded() const {
        for (const auto& channel : out) {
            for (const float sample : channel) ASSERT_LE(std::fabs(sample), 4.0F); // false for NaN too
        }
    }

    static std::vector<PitchMarkRecord> At(const std::vector<std::int32_t>& positions, float transient = 0) {
        std::vector<PitchMarkRecord> records;
        for (const std::int32_t position : positions) records.push_back({position, 0, transient, 0, 0, 0});
        return records;
    }

    const Channels recording = test::NoiseRecording(2, 5000, 3);
    const std::shared_ptr<const GrainTables> tables = GrainTables::Create();
    Channels out;
};

TEST_F(PsolaUnderHostileInput, NoneOrOneMarkIsExhaustedAtOnce) {
    for (const auto& positions : {std::vector<std::int32_t>{}, {0}, {700}}) {
        const CPitchMarks marks = test::MarksOf(At(positions));
        OpenPsola synthesis(marks, 64, 2, tables);
        for (const std::int32_t position : {0, 5000, -5000}) {
            synthesis.SetPosition(position);
            EXPECT_EQ(synthesis.CalcRequiredInput(), kNothingLeft);
            EXPECT_EQ(Render(synthesis), kNothingLeft);
            EXPECT_EQ(synthesis.GetCurrentPeriod(), -1.0F);
        }
    }
}

TEST_F(PsolaUnderHostileInput, MarksThatDoNotRiseAreExhaustedNotEndless) {
    const std::vector<std::vector<std::int32_t>> lists = {
        {0, 0, 0, 0}, {300, 200, 100, 0}, {0, 100, 100, 200}, {0, 100, 50, 200, 300}};
    for (const auto& positions : lists) {
        for (const float transient : {0.0F, 0.9F}) {
            const CPitchMarks marks = test::MarksOf(At(positions, transient));
            OpenPsola synthesis(marks, 64, 2, tables);
            synthesis.SetTransientHandling(true);
            synthesis.SetTransientSearchLength(10);
            synthesis.SetPosition(0);
            int blocks = 0;
            while (synthesis.CalcRequiredInput() >= 0 && Render(synthesis) == 0 && blocks < 20) ++blocks;
            EXPECT_LT(blocks, 20) << positions[1];
            EXPECT_EQ(Render(synthesis), kNothingLeft);
        }
    }
}

TEST_F(PsolaUnderHostileInput, AnAttackWhoseEndTheMarksDoNotTellIsExhausted) {
    const CPitchMarks marks = test::MarksOf(At({0, 100, 200, 300}, 0.9F));
    OpenPsola synthesis(marks, 64, 2, tables);
    synthesis.SetTransientHandling(true); // the search goes 1024 samples far
    synthesis.SetPosition(0);
    EXPECT_EQ(synthesis.CalcRequiredInput(), kNothingLeft);
    EXPECT_EQ(Render(synthesis), kNothingLeft);
    synthesis.SetTransientSearchLength(-5); // counts as none: one period
    EXPECT_EQ(Render(synthesis), 0);
}

TEST_F(PsolaUnderHostileInput, GrainsThatAddNoOutputEndTheBlock) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(50, 10));
    for (const bool preserve : {false, true}) {
        OpenPsola synthesis(marks, 64, 2, tables);
        synthesis.SetFormantPreservation(preserve);
        synthesis.SetPitchFactor(1000.0F); // a hundredth of a sample each
        synthesis.SetPosition(100);
        synthesis.SetFreeze(true); // and never the end of the marks
        EXPECT_EQ(Render(synthesis), kNothingLeft);
        EXPECT_GT(synthesis.repeatCount, 1000);
        EXPECT_GE(synthesis.CalcRequiredInput(), 0); // the look-ahead counts two samples each
    }
}

TEST_F(PsolaUnderHostileInput, FrozenOnAMarkWithTransientHandlingBlocksStillCome) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(50, 100));
    OpenPsola synthesis(marks, 64, 2, tables);
    synthesis.SetTransientHandling(true);
    synthesis.SetPosition(1000);
    synthesis.SetFreeze(true);
    for (int n = 0; n < 3000; ++n) {
        ASSERT_GE(synthesis.CalcRequiredInput(), 0);
        ASSERT_EQ(Render(synthesis, n == 0 ? 2000 : 0), 0) << n;
        // A quarter of the output is kept, and no more than a block and a grain with it.
        ASSERT_LE(synthesis.outputEnd, synthesis.output.GetCapacity() / 4 + 300);
    }
    ExpectBounded();
}

TEST_F(PsolaUnderHostileInput, PeriodsOfOneSampleGiveTheRecordingBack) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(3000, 1));
    OpenPsola synthesis(marks, 64, 2, tables);
    synthesis.SetPosition(0);
    ASSERT_EQ(Render(synthesis, 3000), 0);
    for (std::size_t i = 0; i < 64; ++i) ASSERT_EQ(out[1][i], recording[1][i]);
    // The look-ahead counts two samples a grain, and so asks for half of what is used.
    EXPECT_EQ(synthesis.CalcRequiredInput(), 0);
}

TEST_F(PsolaUnderHostileInput, GapsLongerThanTheBuffersAreHeldToThem) {
    const CPitchMarks marks = test::MarksOf(At({0, 500000, 1000000, kHighest - 1, kHighest}));
    for (const float pitch : {0.001F, 0.7F, 1.0F, 3.0F, 1000.0F}) {
        for (const bool preserve : {false, true}) {
            OpenPsola synthesis(marks, 64, 2, tables);
            synthesis.SetFormantPreservation(preserve);
            synthesis.SetPitchFactor(pitch);
            synthesis.SetPosition(0);
            for (int n = 0; n < 40; ++n) {
                ASSERT_GE(synthesis.CalcRequiredInput(), -1);
                const auto result = Render(synthesis);
                ASSERT_TRUE(result == 0 || result == kNothingLeft);
                ASSERT_LE(synthesis.outputEnd, synthesis.output.GetCapacity()) << pitch;
                ExpectBounded();
            }
        }
    }
}

TEST_F(PsolaUnderHostileInput, WhatIsHeldIsHeldInTheReadPositionToo) {
    const CPitchMarks gap = test::MarksOf(At({0, 500000, 1000000}));
    const CPitchMarks attack = test::MarksOf(At({0, 500000, 1000000}, 0.9F));
    for (const CPitchMarks* marks : {&gap, &attack}) {
        for (const float pitch : {0.5F, 1.0F, 2.0F}) {
            OpenPsola synthesis(*marks, 64, 2, tables);
            synthesis.SetFormantPreservation(true);
            synthesis.SetTransientHandling(true);
            synthesis.SetPitchFactor(pitch);
            synthesis.SetPosition(0);
            ASSERT_EQ(Render(synthesis), 0);
            // The read position has moved as far as the grain reaches, all but two of the samples there are.
            const int room = synthesis.output.GetCapacity() - 2;
            EXPECT_LE(synthesis.GetReadPosition(), room) << pitch;
            EXPECT_GT(synthesis.GetReadPosition(), room / 4) << pitch;
        }
    }
}

TEST_F(PsolaUnderHostileInput, FactorsAreHeldAndWhatIsNotANumberIsIgnored) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(200, 100));
    struct {
        float given, held;
    } const cases[] = {{0.0F, 0.001F},       {-3.0F, 0.001F},  {-kInfinity, 0.001F}, {1e-30F, 0.001F},
                       {kInfinity, 1000.0F}, {1e30F, 1000.0F}, {kNaN, 1.5F}};
    for (const auto& [given, held] : cases) {
        OpenPsola odd(marks, 64, 2, tables), even(marks, 64, 2, tables);
        for (OpenPsola* each : {&odd, &even}) {
            each->SetTimeFactor(1.5F);
            each->SetPitchFactor(1.5F);
            each->SetPosition(5000);
        }
        odd.SetTimeFactor(given);
        even.SetTimeFactor(held);
        EXPECT_EQ(odd.CalcRequiredInput(), even.CalcRequiredInput()) << given;
        odd.SetPitchFactor(given);
        even.SetPitchFactor(held);
        EXPECT_EQ(odd.CalcRequiredInput(), even.CalcRequiredInput()) << given;
        EXPECT_EQ(Render(odd), Render(even));
        ExpectBounded();
        EXPECT_EQ(odd.GetReadPosition(), even.GetReadPosition()) << given;
    }
}

TEST_F(PsolaUnderHostileInput, PositionsAtTheEndsOfTheirRangeTouchNothingOutside) {
    const CPitchMarks low = test::MarksOf(test::EvenMarks(200, 100));
    const CPitchMarks high =
        test::MarksOf(At({kHighest - 3000, kHighest - 2000, kHighest - 1000, kHighest - 1, kHighest}));
    for (const CPitchMarks* marks : {&low, &high}) {
        OpenPsola synthesis(*marks, 64, 2, tables);
        for (const float pitch : {1.0F, 0.5F, 2.0F}) {
            synthesis.SetPitchFactor(pitch);
            for (const std::int32_t position : {kLowest, kLowest + 1, -1, 0, kHighest - 1, kHighest}) {
                synthesis.SetPosition(position);
                for (int n = 0; n < 3; ++n) {
                    synthesis.CalcRequiredInput();
                    Render(synthesis, 5000);
                    ExpectBounded();
                }
            }
            for (const double position : {1e300, -1e300, 1e10, -1e10, std::nan(""), HUGE_VAL}) {
                synthesis.SetReadPosition(position);
                ASSERT_TRUE(std::isfinite(synthesis.GetReadPosition()));
                synthesis.CalcRequiredInput();
                Render(synthesis);
                synthesis.GetCurrentPeriod();
                ExpectBounded();
            }
        }
    }
}

TEST_F(PsolaUnderHostileInput, IndicesShiftedOutOfTheListRecoverAtTheNextJump) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(200, 100));
    OpenPsola synthesis(marks, 64, 2, tables);
    for (const std::int32_t delta : {kHighest, kLowest}) {
        synthesis.SetPosition(5000);
        for (int n = 0; n < 3; ++n) synthesis.ShiftMarkIndices(delta);
        EXPECT_EQ(synthesis.GetMarkEnergy(), -1.0F);
        synthesis.GetCurrentPeriod();
        synthesis.CalcRequiredInput();
        Render(synthesis);
        synthesis.SetPosition(5000);
        EXPECT_EQ(Render(synthesis), 0);
    }
}

TEST_F(PsolaUnderHostileInput, CountsBelowOneAppendNothing) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(200, 100));
    OpenPsola synthesis(marks, 64, 2, tables);
    synthesis.SetPosition(0);
    for (const std::int32_t count : {0, -1, kLowest}) {
        Channels in = test::Stretch(recording, 0, 10);
        out.assign(2, std::vector<float>(64));
        EXPECT_EQ(synthesis.Process(test::Pointers(in).data(), count, test::Pointers(out).data()), 0);
        EXPECT_EQ(synthesis.inputFill, 0);
        EXPECT_EQ(synthesis.inputEnd, 0);
    }
}

TEST_F(PsolaUnderHostileInput, BlocksAreHeldToWhatTheOutputHolds) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(2000, 100));
    OpenPsola synthesis(marks, 64, 2, tables);
    synthesis.SetPosition(0);
    EXPECT_EQ(synthesis.GetRequiredInput(-7), 0); // no block, no input
    EXPECT_EQ(Render(synthesis, 1000, 1), 0);
    EXPECT_EQ(out[0][0], 0.0F);
    const int largest = OpenPsola::kUsualCapacity / 4;
    EXPECT_EQ(synthesis.GetRequiredInput(kHighest), synthesis.GetRequiredInput(largest));
    EXPECT_EQ(Render(synthesis, 40000, largest), 0);

    OpenPsola large(marks, 100000, 2, tables); // made for it
    large.SetPosition(0);
    EXPECT_GT(large.CalcRequiredInput(), 99000);
    EXPECT_EQ(Render(large, 110000, 100000), 0);
    ExpectBounded();
}

TEST_F(PsolaUnderHostileInput, TooLittleInputIsSilenceNotMemory) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(200, 100));
    for (const float pitch : {1.0F, 0.6F, 1.9F}) {
        OpenPsola synthesis(marks, 64, 2, tables);
        synthesis.SetPitchFactor(pitch);
        synthesis.SetPosition(5000);
        for (int n = 0; n < 20; ++n) ASSERT_EQ(Render(synthesis, 1), 0);
        for (const float sample : out[0]) ASSERT_EQ(sample, 0.0F);
    }
}

TEST_F(PsolaUnderHostileInput, SamplesThatAreNoNumbersPassAndAreForgotten) {
    const CPitchMarks marks = test::MarksOf(test::EvenMarks(200, 100));
    for (const float pitch : {1.0F, 0.6F, 1.9F}) {
        OpenPsola synthesis(marks, 64, 2, tables);
        synthesis.SetPitchFactor(pitch);
        synthesis.SetPosition(0);
        Channels odd = recording;
        std::fill_n(odd[0].begin() + 1000, 50, kNaN);
        const Channels played = test::Play(synthesis, odd, 4000);
        for (std::size_t i = 3000; i < 4000; ++i) ASSERT_TRUE(std::isfinite(played[0][i])) << pitch;
    }
}

TEST_F(PsolaUnderHostileInput, ARandomWalkThroughAbsurdSettingsStaysBounded) {
    std::mt19937 random(77);
    const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    const float factors[] = {0.001F, 0.01F, 0.3F, 1.0F, 1.5F, 8.0F, 1000.0F};
    const CPitchMarks marks = test::MarksOf(test::RandomMarks(random, 2000, 1, 900, 0.2));
    OpenPsola synthesis(marks, 64, 2, tables);
    for (int n = 0; n < 1500; ++n) {
        switch (pick(8)) {
        case 0:
            synthesis.SetPitchFactor(factors[pick(7)]);
            break;
        case 1:
            synthesis.SetTimeFactor(factors[pick(7)]);
            break;
        case 2:
            synthesis.SetPosition(pick(1000000) - 5000);
            break;
        case 3:
            synthesis.SetReadPosition(pick(2000000) - 1000000);
            break;
        case 4:
            synthesis.SetTransientHandling(pick(2) == 0);
            break;
        case 5:
            synthesis.SetFormantPreservation(pick(3) != 0);
            break;
        case 6:
            synthesis.SetFreeze(pick(2) == 0);
            break;
        default:
            synthesis.SetTransientSearchLength(pick(20000));
            break;
        }
        const int block = 1 + pick(200);
        synthesis.GetRequiredInput(block);
        Render(synthesis, pick(2000), block);
        ASSERT_LE(synthesis.outputEnd, synthesis.output.GetCapacity());
        ExpectBounded();
    }
}

} // namespace
} // namespace sonorelle
