#include "support/note_matching.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace sonorelle::test {

namespace {

// One note of 220 Hz from 0.1 s to 0.6 s, pulses each 100 frames.
Recording OneNote() {
    Recording recording;
    recording.sampleRate = 22000.0;
    recording.channels.assign(1, std::vector<float>(22000));
    SungNote note;
    note.onsetSeconds = 0.1;
    note.offsetSeconds = 0.6;
    note.midiPitchAt440 = 57.0;
    recording.notes = {note};
    recording.curveHertz.assign(1001, 0.0);
    for (std::size_t i = 100; i <= 600; ++i) recording.curveHertz[i] = 220.0;
    recording.intendedHertz.assign(1001, 220.0);
    for (double frame = 2200.0; frame < 13200.0; frame += 100.0) recording.pulseFrames.push_back(frame);
    recording.voiced = {{0.1, 0.6}};
    return recording;
}

std::vector<PitchMarkRecord> MarksEach(std::int32_t first, std::int32_t end, std::int32_t step) {
    std::vector<PitchMarkRecord> marks;
    for (std::int32_t position = first; position < end; position += step) {
        marks.emplace_back();
        marks.back().position = position;
    }
    return marks;
}

} // namespace

TEST(NoteMatching, LimitsAreIncludedAndWhatIsBeyondIsNot) {
    const std::vector<TimedNote> known = {{1.0, 2.0, 60.0}};
    const auto matches = [&](double onset, double pitch) {
        const std::vector<TimedNote> found = {{onset, 2.0, pitch}};
        return ScoreNotes(known, found).matched == 1;
    };
    EXPECT_TRUE(matches(1.05, 60.5));
    EXPECT_TRUE(matches(0.95, 59.5));
    EXPECT_FALSE(matches(1.0501, 60.0));
    EXPECT_FALSE(matches(0.9499, 60.0));
    EXPECT_FALSE(matches(1.0, 60.501));
    EXPECT_FALSE(matches(1.0, 59.499));
}

TEST(NoteMatching, EachNoteCountsOnce) {
    const std::vector<TimedNote> known = {{1.0, 2.0, 60.0}};
    const std::vector<TimedNote> found = {{1.0, 1.02, 60.0}, {1.03, 2.0, 60.0}};
    const NoteScore score = ScoreNotes(known, found);
    EXPECT_EQ(score.matched, 1U);
    EXPECT_DOUBLE_EQ(score.Precision(), 0.5);
    EXPECT_DOUBLE_EQ(score.Recall(), 1.0);
    EXPECT_DOUBLE_EQ(score.FMeasure(), 2.0 / 3.0);
}

TEST(NoteMatching, FindsTheLargestSetOfPairs) {
    // Taking the first partner for the first note would leave the second without one.
    const std::vector<TimedNote> known = {{1.00, 1.04, 60.0}, {1.04, 2.0, 60.0}};
    const std::vector<TimedNote> found = {{1.02, 1.5, 60.0}, {0.96, 1.0, 60.0}};
    const std::vector<NotePair> pairs = MatchNotes(known, found);
    ASSERT_EQ(pairs.size(), 2U);
    EXPECT_EQ(pairs[0].known, 0U);
    EXPECT_EQ(pairs[0].found, 1U);
    EXPECT_EQ(pairs[1].found, 0U);
}

TEST(NoteMatching, NothingSungAndNothingFoundIsRight) {
    EXPECT_DOUBLE_EQ(ScoreNotes({}, {}).FMeasure(), 1.0);
    const std::vector<TimedNote> one(1);
    EXPECT_DOUBLE_EQ(ScoreNotes(one, {}).FMeasure(), 0.0);
    EXPECT_DOUBLE_EQ(ScoreNotes({}, one).FMeasure(), 0.0);
}

TEST(CurveScore, CountsFramesByWhatTheyMiss) {
    const Recording recording = OneNote();
    const std::vector<AnalysisFrame> frames = {{57.0F, 0.0F, 1, 4400},   // right
                                               {57.49F, 0.0F, 1, 4500},  // within
                                               {57.51F, 0.0F, 1, 4600},  // beyond
                                               {69.0F, 0.0F, 1, 4700},   // an octave
                                               {57.0F, 0.0F, 0, 4800},   // missed
                                               {57.0F, 0.0F, 1, 20000},  // invented
                                               {57.0F, 0.0F, 0, 21000}}; // rightly unvoiced
    const CurveScore score = ScoreCurve(recording, frames);
    EXPECT_EQ(score.voiced, 4U);
    EXPECT_EQ(score.within, 2U);
    EXPECT_EQ(score.octaves, 1U);
    EXPECT_EQ(score.missed, 1U);
    EXPECT_EQ(score.invented, 1U);
    EXPECT_NEAR(score.worstSemitones, 12.0, 1e-4);
}

TEST(CurveScore, FrameMayHaveAnyPitchOfItsOwnPeriodAndTheNext) {
    Recording recording = OneNote();
    for (std::size_t i = 300; i <= 600; ++i) recording.curveHertz[i] = recording.intendedHertz[i] = 440.0;
    // A step from 220 to 440 Hz between 0.299 s and 0.3 s; one period of 220 Hz is 4.5 ms.
    const std::vector<AnalysisFrame> near = {{69.0F, 0.0F, 1, static_cast<std::int32_t>(0.296 * 22000)}};
    const std::vector<AnalysisFrame> far = {{69.0F, 0.0F, 1, static_cast<std::int32_t>(0.294 * 22000)}};
    EXPECT_EQ(ScoreCurve(recording, near).within, 1U);
    EXPECT_EQ(ScoreCurve(recording, far).within, 0U);
}

TEST(MarkScore, OneMarkAPeriodIsFullScoreWhereverItLies) {
    const Recording recording = OneNote();
    for (const std::int32_t phase : {0, 1, 49, 50, 51, 99}) {
        const MarkScore score = ScoreMarks(recording, MarksEach(phase, 22000, 100), SteadyVowels(recording));
        EXPECT_GT(score.periods, 60U);
        EXPECT_DOUBLE_EQ(score.Share(), 1.0) << phase;
    }
}

TEST(MarkScore, MarksAtTwiceOrHalfTheRateScoreNothing) {
    const Recording recording = OneNote();
    EXPECT_LT(ScoreMarks(recording, MarksEach(10, 22000, 200), SteadyVowels(recording)).Share(), 0.55);
    EXPECT_DOUBLE_EQ(ScoreMarks(recording, MarksEach(10, 22000, 50), SteadyVowels(recording)).Share(), 0.0);
    EXPECT_DOUBLE_EQ(ScoreMarks(recording, {}, SteadyVowels(recording)).Share(), 0.0);
}

TEST(MarkScore, OneMarkMissingCostsOnePeriod) {
    const Recording recording = OneNote();
    std::vector<PitchMarkRecord> marks = MarksEach(30, 22000, 100);
    marks.erase(marks.begin() + 70);
    const MarkScore score = ScoreMarks(recording, marks, SteadyVowels(recording));
    EXPECT_EQ(score.single, score.periods - 1);
}

TEST(SteadyVowels, LeaveOutTheEdgesAndShortNotes) {
    Recording recording = OneNote();
    const std::vector<VoicedSpan> spans = SteadyVowels(recording);
    ASSERT_EQ(spans.size(), 1U);
    EXPECT_DOUBLE_EQ(spans[0].startSeconds, 0.2);
    EXPECT_DOUBLE_EQ(spans[0].endSeconds, 0.5);
    recording.notes[0].offsetSeconds = 0.39;
    EXPECT_TRUE(SteadyVowels(recording).empty());
}

TEST(TuningError, IsCountedRoundTheSemitone) {
    EXPECT_NEAR(TuningErrorCents(0.0, 440.0), 0.0, 1e-9);
    EXPECT_NEAR(TuningErrorCents(0.05, 440.0), 5.0, 1e-9);
    EXPECT_NEAR(TuningErrorCents(0.49, 440.0 * std::exp2(-0.49 / 12.0)), -2.0, 1e-6);
    EXPECT_NEAR(TuningErrorCents(-0.3, 440.0 * std::exp2(-0.28 / 12.0)), -2.0, 1e-6);
}

TEST(CompareKeys, KnowsTheRelativeKey) {
    EXPECT_EQ(CompareKeys(0, 0), KeyAgreement::kSame);
    EXPECT_EQ(CompareKeys(21, 0), KeyAgreement::kRelative); // A minor, C major
    EXPECT_EQ(CompareKeys(3, 12), KeyAgreement::kRelative); // E flat major, C minor
    EXPECT_EQ(CompareKeys(12, 0), KeyAgreement::kOther);
    EXPECT_EQ(CompareKeys(7, 0), KeyAgreement::kOther);
    EXPECT_EQ(CompareKeys(-1, 0), KeyAgreement::kOther);
}

} // namespace sonorelle::test
