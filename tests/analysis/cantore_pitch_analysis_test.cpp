#include "analysis/cantore_pitch_analysis.h"

#include "analysis/pitch_marks.h"
#include "platform/result_codes.h"
#include "support/hostile_numbers.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

// A melody of three notes with rests between, as marks: 60, 64 and 67, half a second each.
void AddMelody(CPitchMarks& marks) {
    std::int32_t position = 0;
    marks.AddWithPeriod(0, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F);
    for (const double pitch : {60.0, 64.0, 67.0}) {
        const auto period = static_cast<std::int32_t>(std::lround(44100.0 / test::HertzFromMidiPitch(pitch)));
        for (std::int32_t sung = 0; sung < 22050; sung += period) {
            position += period;
            marks.AddWithPeriod(position, 6.0F, 0.25F, 0.0F, 0.0F, static_cast<float>(period));
        }
        for (std::int32_t rest = 0; rest < 11025; rest += 441) {
            position += 441;
            marks.AddWithPeriod(position, 0.0F, 1e-6F, 0.0F, 0.0F, 441.0F);
        }
    }
}

class CantorePitchAnalysis : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(CreatePitchAnalysis(analysis, &marks, 44100.0F, 1), kOk);
        marks.Clear(); // the mark finder begins with a mark at 0
    }

    std::vector<AnalysisFrame> GetFrames() const {
        const AnalysisFrame* records = nullptr;
        const std::int32_t count = analysis->GetFrames(records);
        return {records, records + count};
    }
    std::vector<NoteRecord> GetNotes() const {
        const NoteRecord* records = nullptr;
        const std::int32_t count = analysis->GetNotes(records);
        return {records, records + count};
    }
    std::int32_t Set(const std::vector<AnalysisFrame>& frames) {
        return analysis->SetFrames(frames.data(), static_cast<std::int32_t>(frames.size()));
    }

    CPitchMarks marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
};

TEST_F(CantorePitchAnalysis, ResultCodesHaveTheirNumbers) {
    EXPECT_EQ(kNothingThere, 0x4C4B42);
    EXPECT_EQ(kBadArgument, 0x4C4B43);
}

TEST_F(CantorePitchAnalysis, WithoutMarksTheFirstStageFailsAndAllStagesStop) {
    ASSERT_EQ(Set({{60.0F, 0.5F, 1, 0}, {60.0F, 0.25F, 1, 100}}), kOk);
    EXPECT_EQ(analysis->RunStage(0), kNothingThere);
    EXPECT_EQ(analysis->BuildFrames(), kNothingThere);
    EXPECT_EQ(analysis->RunAllStages(), kNothingThere);
    ASSERT_EQ(GetFrames().size(), 2U);
    EXPECT_EQ(GetFrames()[0].level, 0.5F); // no later stage ran
}

TEST_F(CantorePitchAnalysis, OtherStagesDoNothing) {
    AddMelody(marks);
    ASSERT_EQ(analysis->RunStage(0), kOk);
    const std::vector<AnalysisFrame> before = GetFrames();
    for (const std::int32_t index : {-1, 9, 10, kSmallestI32, kLargestI32})
        EXPECT_EQ(analysis->RunStage(index), kOk);
    const std::vector<AnalysisFrame> after = GetFrames();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i].level, before[i].level);
    EXPECT_TRUE(GetNotes().empty());
}

TEST_F(CantorePitchAnalysis, StagesOnEmptyListsSucceed) {
    for (std::int32_t stage = 1; stage < CCANTOREPitchAnalysisIf::kStageCount; ++stage) {
        EXPECT_EQ(analysis->RunStage(stage), kOk);
    }
    EXPECT_TRUE(GetNotes().empty());
    EXPECT_EQ(analysis->EstimateTuning(), 0.0F);
    EXPECT_EQ(analysis->EstimateKey(0), -1);
}

TEST_F(CantorePitchAnalysis, AllStagesMakeNotesOfAMelody) {
    AddMelody(marks);
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    const std::vector<NoteRecord> notes = GetNotes();
    ASSERT_EQ(notes.size(), 3U);
    // Periods are whole samples, off by up to half of one in 112.
    EXPECT_NEAR(notes[0].pitch, 60.0F, 0.08F);
    EXPECT_NEAR(notes[1].pitch, 64.0F, 0.08F);
    EXPECT_NEAR(notes[2].pitch, 67.0F, 0.08F);
    // Each edge takes in up to three frames of the rest, 441 samples each.
    for (const NoteRecord& note : notes) EXPECT_NEAR(note.length, 22050 + 1323, 1323 + 200);
    EXPECT_EQ(analysis->EstimateKey(0), 0);
    EXPECT_EQ(analysis->EstimateKey(2), 2);
}

TEST_F(CantorePitchAnalysis, AFileWithoutVoicedFramesHasNeitherNotesNorKey) {
    for (std::int32_t i = 0; i < 200; ++i) marks.AddWithPeriod(i * 441, 0.0F, 0.5F, 0.0F, 0.0F, 441.0F);
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    EXPECT_EQ(GetFrames().size(), 200U);
    EXPECT_TRUE(GetNotes().empty());
    EXPECT_EQ(analysis->EstimateKey(0), -1);
}

TEST_F(CantorePitchAnalysis, ResetEmptiesTheLists) {
    AddMelody(marks);
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    analysis->Reset();
    EXPECT_TRUE(GetFrames().empty());
    EXPECT_TRUE(GetNotes().empty());
    EXPECT_EQ(analysis->EstimateKey(0), -1);
}

TEST_F(CantorePitchAnalysis, RawFramesKeepThePitchThatWasSung) {
    AddMelody(marks);
    ASSERT_EQ(analysis->RunStage(0), kOk);
    const std::vector<AnalysisFrame> before = GetFrames();
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    const std::vector<AnalysisFrame> after = GetFrames();
    for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i].pitch, before[i].pitch);
}

TEST_F(CantorePitchAnalysis, MeasureRangeGivesMeanPitchAndLevelUpToBelowTheLastFrame) {
    ASSERT_EQ(
        Set({{60.0F, 0.25F, 1, 0}, {61.0F, 0.5F, 1, 100}, {70.0F, 0.75F, 0, 200}, {90.0F, 1.0F, 1, 300}}),
        kOk);
    float pitch = 0;
    float level = 0;
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 0, 3), kOk);
    EXPECT_EQ(pitch, 60.5F);
    EXPECT_EQ(level, 0.5F);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 2, 2), kOk); // no frames
    EXPECT_TRUE(std::isnan(pitch));
    EXPECT_TRUE(std::isnan(level));
}

TEST_F(CantorePitchAnalysis, MeasureRangeRefusesBadIndicesAndLeavesItsOutputs) {
    float pitch = 1.5F;
    float level = 2.5F;
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 0, 0), kBadArgument);
    ASSERT_EQ(Set(std::vector<AnalysisFrame>(4)), kOk);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, -1, 2), kBadArgument);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 2, 1), kBadArgument);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 0, 4), kBadArgument);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, 4, 4), kBadArgument);
    EXPECT_EQ(analysis->MeasureRange(pitch, level, kSmallestI32, kLargestI32), kBadArgument);
    EXPECT_EQ(pitch, 1.5F);
    EXPECT_EQ(level, 2.5F);
}

TEST_F(CantorePitchAnalysis, MeanLevelsOfLongRangesAreExact) {
    std::vector<AnalysisFrame> frames(300000);
    for (AnalysisFrame& frame : frames) frame.level = 0.1F; // an f32 sum would be off by a thousandth
    ASSERT_EQ(Set(frames), kOk);
    float pitch = 0;
    float level = 0;
    ASSERT_EQ(analysis->MeasureRange(pitch, level, 0, 299999), kOk);
    EXPECT_FLOAT_EQ(level, 0.1F);
}

TEST_F(CantorePitchAnalysis, GetMeanPitchTakesAnyFrames) {
    const std::vector<AnalysisFrame> frames{
        {60.0F, 0.5F, 1, 0}, {62.0F, 0.5F, 1, 100}, {99.0F, 0.5F, 1, 200}};
    EXPECT_EQ(analysis->GetMeanPitch(frames.data(), 0, 2), 61.0F);
    EXPECT_TRUE(std::isnan(analysis->GetMeanPitch(frames.data(), 1, 1)));
}

TEST_F(CantorePitchAnalysis, SettersFloorToWholeSampleFramesAndGettersDivideBack) {
    analysis->SetMinNoteLength(0.05001F); // 2205.4 sample frames
    EXPECT_FLOAT_EQ(analysis->GetMinNoteLength(), 2205.0F / 44100.0F);
    analysis->SetMaxGap(0.09999F); // 4409.6
    EXPECT_FLOAT_EQ(analysis->GetMaxGap(), 4409.0F / 44100.0F);
    analysis->SetReserveLength(0.25002F); // 11025.9
    EXPECT_FLOAT_EQ(analysis->GetReserveLength(), 0.25F);
    analysis->SetMinNoteLength(0.0F);
    EXPECT_EQ(analysis->GetMinNoteLength(), 0.0F);
    analysis->SetMinNoteLength(-0.00001F); // -0.4
    EXPECT_FLOAT_EQ(analysis->GetMinNoteLength(), -1.0F / 44100.0F);
    analysis->SetPitchTolerance(0.3F);
    EXPECT_EQ(analysis->GetPitchTolerance(), 0.3F);
    analysis->SetVoicingThreshold(3.5F);
    EXPECT_EQ(analysis->GetVoicingThreshold(), 3.5F);
}

TEST_F(CantorePitchAnalysis, LengthsBeginAtTheirUsualValues) {
    EXPECT_EQ(analysis->GetPitchTolerance(), 0.75F);
    EXPECT_FLOAT_EQ(analysis->GetMinNoteLength(), 1852.0F / 44100.0F); // 0.042 s
    EXPECT_FLOAT_EQ(analysis->GetMaxGap(), 4057.0F / 44100.0F);        // 0.092 s
    EXPECT_FLOAT_EQ(analysis->GetReserveLength(), 8114.0F / 44100.0F); // 0.184 s
    for (const float rate : {8000.0F, 16000.0F, 48000.0F, 96000.0F}) { // at which they are whole
        std::unique_ptr<CCANTOREPitchAnalysis> other;
        ASSERT_EQ(CreatePitchAnalysis(other, &marks, rate, 1), kOk);
        EXPECT_EQ(std::lround(other->GetMinNoteLength() * rate), std::lround(rate * 42 / 1000)) << rate;
        EXPECT_EQ(std::lround(other->GetMaxGap() * rate), std::lround(rate * 92 / 1000)) << rate;
        EXPECT_EQ(std::lround(other->GetReserveLength() * rate), std::lround(rate * 184 / 1000)) << rate;
    }
}

TEST_F(CantorePitchAnalysis, SettersAreSafeWhateverTheValue) {
    for (const float value : {kNaN, kInfinity, -kInfinity, 3e38F, -3e38F}) {
        analysis->SetMinNoteLength(value);
        analysis->SetMaxGap(value);
        analysis->SetReserveLength(value);
        analysis->SetPitchTolerance(value);
        EXPECT_TRUE(std::isfinite(analysis->GetMinNoteLength()));
        EXPECT_TRUE(std::isfinite(analysis->GetMaxGap()));
        EXPECT_TRUE(std::isfinite(analysis->GetReserveLength()));
        AddMelody(marks);
        EXPECT_EQ(analysis->RunAllStages(), kOk);
        marks.Clear();
    }
}

TEST_F(CantorePitchAnalysis, RulesTakeEffect) {
    AddMelody(marks);
    analysis->SetMinNoteLength(0.6F); // longer than any of the notes
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    EXPECT_TRUE(GetNotes().empty());
    analysis->SetMinNoteLength(0.042F);
    analysis->SetMaxGap(0.5F);
    analysis->SetPitchTolerance(5.0F);
    ASSERT_EQ(analysis->RunAllStages(), kOk);
    EXPECT_EQ(GetNotes().size(), 2U); // the middle note took the first one in
}

TEST_F(CantorePitchAnalysis, SetFramesAndSetNotesCopy) {
    std::vector<AnalysisFrame> frames{{60.0F, 0.5F, 1, 0}, {61.0F, 0.5F, 1, 100}, {62.0F, 0.5F, 0, 200}};
    std::vector<NoteRecord> notes(2);
    notes[1].pitch = 61.5F;
    ASSERT_EQ(Set(frames), kOk);
    ASSERT_EQ(analysis->SetNotes(notes.data(), 2), kOk);
    frames[1].pitch = 0;
    notes[1].pitch = 0;
    EXPECT_EQ(GetFrames()[1].pitch, 61.0F);
    EXPECT_EQ(GetNotes()[1].pitch, 61.5F);
    EXPECT_EQ(analysis->GetFlattenedFrames().size(), 3U);
    EXPECT_EQ(analysis->GetSmoothedFrames().size(), 3U);
}

TEST_F(CantorePitchAnalysis, SetFramesAndSetNotesTakePartOfTheirOwnLists) {
    ASSERT_EQ(Set({{60.0F, 0.5F, 1, 0}, {61.0F, 0.5F, 1, 100}, {62.0F, 0.5F, 1, 200}}), kOk);
    const AnalysisFrame* frames = nullptr;
    ASSERT_EQ(analysis->GetFrames(frames), 3);
    ASSERT_EQ(analysis->SetFrames(frames + 1, 2), kOk);
    ASSERT_EQ(GetFrames().size(), 2U);
    EXPECT_EQ(GetFrames()[0].pitch, 61.0F);
    std::vector<NoteRecord> list(3);
    list[2].pitch = 70.0F;
    ASSERT_EQ(analysis->SetNotes(list.data(), 3), kOk);
    const NoteRecord* notes = nullptr;
    ASSERT_EQ(analysis->GetNotes(notes), 3);
    ASSERT_EQ(analysis->SetNotes(notes + 2, 1), kOk);
    EXPECT_EQ(GetNotes()[0].pitch, 70.0F);
}

TEST_F(CantorePitchAnalysis, SetFramesAndSetNotesRefuseBadArguments) {
    ASSERT_EQ(Set(std::vector<AnalysisFrame>(3)), kOk);
    const AnalysisFrame frame;
    const NoteRecord note;
    EXPECT_EQ(analysis->SetFrames(&frame, -1), kBadArgument);
    EXPECT_EQ(analysis->SetFrames(nullptr, 1), kBadArgument);
    EXPECT_EQ(analysis->SetNotes(&note, kSmallestI32), kBadArgument);
    EXPECT_EQ(analysis->SetNotes(nullptr, 1), kBadArgument);
    EXPECT_EQ(GetFrames().size(), 3U);
    EXPECT_EQ(analysis->SetFrames(nullptr, 0), kOk);
    EXPECT_EQ(analysis->SetNotes(nullptr, 0), kOk);
    EXPECT_TRUE(GetFrames().empty());
}

TEST_F(CantorePitchAnalysis, WithLoadedNotesTheLevelsAreThoseOfTheMarks) {
    AddMelody(marks);
    const NoteRecord note{60.0F, 0.5F, 1000, 100, 1100, 1, 5};
    ASSERT_EQ(analysis->SetNotes(&note, 1), kOk);
    ASSERT_EQ(analysis->BuildFrames(), kOk);
    ASSERT_EQ(analysis->NormaliseFrames(), kOk);
    EXPECT_EQ(GetNotes().size(), 1U);
    EXPECT_EQ(GetFrames()[5].level, 1.0F);
    EXPECT_EQ(analysis->GetSmoothedFrames()[5].level, 0.25F); // the copies stay raw
}

TEST(CreatePitchAnalysis, RefusesWhatItCannotAnalyse) {
    CPitchMarks marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    EXPECT_EQ(CreatePitchAnalysis(analysis, nullptr, 44100.0F, 1), kBadArgument);
    for (const float rate : {0.0F, -44100.0F, 7999.0F, 256000.0F, kNaN, kInfinity}) {
        EXPECT_EQ(CreatePitchAnalysis(analysis, &marks, rate, 1), kBadArgument) << rate;
    }
    for (const std::int32_t channels : {-1, 0, 48, kSmallestI32, kLargestI32}) {
        EXPECT_EQ(CreatePitchAnalysis(analysis, &marks, 44100.0F, channels), kBadArgument) << channels;
    }
    EXPECT_EQ(analysis, nullptr);
    EXPECT_EQ(CreatePitchAnalysis(analysis, &marks, 8000.0F, 47), kOk);
    EXPECT_NE(analysis, nullptr);
}

// Lists that no voice makes: each stage must end, stay within the list, and leave indices that a reader can
// trust.
struct OddList {
    const char* name;
    AnalysisFrame (*frameAt)(std::int32_t index, std::int32_t count, test::RandomNumbers& random);
};

class OddLists : public testing::TestWithParam<OddList> {};

TEST_P(OddLists, EndAndStayInBounds) {
    CPitchMarks marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    ASSERT_EQ(CreatePitchAnalysis(analysis, &marks, 44100.0F, 1), kOk);
    test::RandomNumbers random(11);
    for (const std::int32_t count : {1, 2, 3, 31, 32, 33, 34, 64, 65, 500, 4000}) {
        SCOPED_TRACE(std::to_string(count) + " frames");
        std::vector<AnalysisFrame> frames;
        for (std::int32_t i = 0; i < count; ++i) frames.push_back(GetParam().frameAt(i, count, random));
        ASSERT_EQ(analysis->SetFrames(frames.data(), count), kOk);
        for (std::int32_t stage = 1; stage < CCANTOREPitchAnalysisIf::kStageCount; ++stage) {
            ASSERT_EQ(analysis->RunStage(stage), kOk);
        }
        ASSERT_EQ(analysis->GetSmoothedFrames().size(), frames.size());
        for (const AnalysisFrame& frame : analysis->GetSmoothedFrames())
            ASSERT_TRUE(frame.voiced == 0 || frame.voiced == 1);
        const NoteRecord* notes = nullptr;
        const std::int32_t noteCount = analysis->GetNotes(notes);
        for (std::int32_t i = 0; i < noteCount; ++i) {
            ASSERT_GE(notes[i].firstFrame, 0);
            ASSERT_LT(notes[i].firstFrame, count);
            ASSERT_GE(notes[i].lastFrame, 0);
            ASSERT_LT(notes[i].lastFrame, count);
        }
        const std::int32_t key = analysis->EstimateKey(0);
        ASSERT_GE(key, -1);
        ASSERT_LT(key, 24);
        float pitch = 0;
        float level = 0;
        ASSERT_EQ(analysis->MeasureRange(pitch, level, 0, count - 1), kOk);
    }
}

using Random = test::RandomNumbers;

float AnyPitch(Random& random) {
    static constexpr float kPitches[] = {kNaN, kInfinity, -kInfinity, 3e38F, -3e38F,
                                         0.0F, 60.0F,     66.0F,      -5.0F, 1e-40F};
    return kPitches[random.Below(10)];
}

std::int32_t AnyPosition(Random& random) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(random.Next()));
}

constexpr OddList kOddLists[] = {
    {"AllVoiced",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{60, 1, 1, i * 100};
     }},
    {"AllUnvoiced",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{60, 1, 0, i * 100};
     }},
    {"Alternating",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{60, 1, i % 2, i * 100};
     }},
    {"AlternatingOctaves",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{i % 2 == 0 ? 60.0F : 72.0F, 1, 1, i * 100};
     }},
    {"LastFramesVoiced",
     [](std::int32_t i, std::int32_t count, Random&) {
         return AnalysisFrame{60, 1, i + 3 > count ? 1 : 0, i * 100};
     }},
    {"FirstFrameVoiced",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{60, 1, i == 0 ? 1 : 0, i * 100};
     }},
    {"EqualPositions",
     [](std::int32_t, std::int32_t, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(random.Below(9)), 1, random.Below(2), 5000};
     }},
    {"PairsOfEqualPositions",
     [](std::int32_t i, std::int32_t, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(random.Below(9)), 1, random.Below(9) > 0 ? 1 : 0,
                              i / 2 * 100};
     }},
    {"EqualPositionsAtTheEnd",
     [](std::int32_t i, std::int32_t count, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(random.Below(9)), 1, random.Below(3) > 0 ? 1 : 0,
                              std::min(i, count / 2) * 100};
     }},
    {"FallingPositions",
     [](std::int32_t i, std::int32_t count, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(random.Below(9)), 1, random.Below(9) > 0 ? 1 : 0,
                              (count - i) * 100};
     }},
    {"PositionsOfEveryKind",
     [](std::int32_t i, std::int32_t, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(i % 14), 1, random.Below(9) > 0 ? 1 : 0,
                              AnyPosition(random)};
     }},
    {"PositionsAtTheUpperLimit",
     [](std::int32_t i, std::int32_t count, Random&) {
         return AnalysisFrame{60.0F + static_cast<float>(i % 14), 1, 1, kLargestI32 - (count - 1 - i) * 100};
     }},
    {"PositionsFarApart",
     [](std::int32_t i, std::int32_t count, Random&) {
         return AnalysisFrame{60.0F + static_cast<float>(i % 14), 1, 1, kLargestI32 / count * i};
     }},
    {"NeighbouringPositions",
     [](std::int32_t i, std::int32_t, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(random.Below(3)), 1, 1, i};
     }},
    {"PitchesNotANumber",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{kNaN, 1, 1, i * 100};
     }},
    {"PitchesInfinite",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{kInfinity, 1, 1, i * 100};
     }},
    {"PitchesOfEveryKind",
     [](std::int32_t i, std::int32_t, Random& random) {
         return AnalysisFrame{AnyPitch(random), static_cast<float>(random.Uniform()),
                              random.Below(9) > 0 ? 1 : 0, i * 100};
     }},
    {"LevelsOfEveryKind",
     [](std::int32_t i, std::int32_t, Random& random) {
         return AnalysisFrame{60.0F + static_cast<float>(i / 60 % 3), AnyPitch(random),
                              random.Below(9) > 0 ? 1 : 0, i * 100};
     }},
    {"LevelsInfinite",
     [](std::int32_t i, std::int32_t, Random&) {
         return AnalysisFrame{60, kInfinity, 1, i * 100};
     }},
    {"Everything",
     [](std::int32_t, std::int32_t, Random& random) {
         return AnalysisFrame{AnyPitch(random), AnyPitch(random), random.Below(2), AnyPosition(random)};
     }},
};

INSTANTIATE_TEST_SUITE_P(Lists, OddLists, testing::ValuesIn(kOddLists),
                         [](const testing::TestParamInfo<OddList>& list) {
                             return std::string(list.param.name);
                         });

} // namespace
} // namespace sonorelle
