#include "analysis/note_stages.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kFrameStep = 100; // samples between frames
constexpr NoteRules kRules{44100.0F, 0.75F, 1852, 4057};

// Voiced frames of one pitch.
std::vector<AnalysisFrame> SteadyFrames(std::int32_t count, float pitch = 60.0F, float level = 0.03125F) {
    std::vector<AnalysisFrame> frames;
    for (std::int32_t i = 0; i < count; ++i) frames.push_back({pitch, level, 1, i * kFrameStep});
    return frames;
}

void SetUnvoiced(std::vector<AnalysisFrame>& frames, std::int32_t first, std::int32_t last) {
    for (std::int32_t i = first; i <= last; ++i) frames[static_cast<std::size_t>(i)].voiced = 0;
}

void SetLevels(std::vector<AnalysisFrame>& frames, std::int32_t first, std::int32_t last, float level) {
    for (std::int32_t i = first; i <= last; ++i) frames[static_cast<std::size_t>(i)].level = level;
}

void SetPitches(std::vector<AnalysisFrame>& frames, std::int32_t first, std::int32_t last, float pitch) {
    for (std::int32_t i = first; i <= last; ++i) frames[static_cast<std::size_t>(i)].pitch = pitch;
}

NoteRecord Note(std::int32_t first, std::int32_t last, float pitch = 60.0F, float level = 0.03125F) {
    return {pitch, level, (last - first) * kFrameStep, first * kFrameStep, last * kFrameStep, first, last};
}

std::vector<NoteRecord> Cleaned(std::vector<NoteRecord> notes, const std::vector<AnalysisFrame>& frames,
                                const NoteRules& rules = kRules) {
    CleanUpNotes(notes, frames, rules);
    return notes;
}

void ExpectSpan(const NoteRecord& note, std::int32_t first, std::int32_t last) {
    EXPECT_EQ(note.firstFrame, first);
    EXPECT_EQ(note.lastFrame, last);
    EXPECT_EQ(note.start, first * kFrameStep);
    EXPECT_EQ(note.end, last * kFrameStep);
    EXPECT_EQ(note.length, (last - first) * kFrameStep);
}

TEST(BuildNotes, WithoutVoicedFramesThereAreNone) {
    for (const std::int32_t count : {0, 1, 2, 100}) {
        std::vector<AnalysisFrame> frames = SteadyFrames(count);
        SetUnvoiced(frames, 0, count - 1);
        EXPECT_TRUE(BuildNotes(frames, frames).empty());
    }
}

TEST(BuildNotes, ANoteEndsOnTheFrameBehindItsRun) {
    std::vector<AnalysisFrame> frames = SteadyFrames(50);
    SetUnvoiced(frames, 0, 9);
    SetUnvoiced(frames, 20, 29);
    SetUnvoiced(frames, 45, 49);
    const std::vector<NoteRecord> notes = BuildNotes(frames, frames);
    ASSERT_EQ(notes.size(), 2U);
    ExpectSpan(notes[0], 10, 20);
    ExpectSpan(notes[1], 30, 45);
}

TEST(BuildNotes, ARunToTheEndEndsOnTheLastFrame) {
    const std::vector<AnalysisFrame> frames = SteadyFrames(50);
    const std::vector<NoteRecord> notes = BuildNotes(frames, frames);
    ASSERT_EQ(notes.size(), 1U);
    ExpectSpan(notes[0], 0, 49);
}

TEST(BuildNotes, TheLastFrameAloneIsNoNote) {
    std::vector<AnalysisFrame> frames = SteadyFrames(50);
    SetUnvoiced(frames, 0, 48);
    EXPECT_TRUE(BuildNotes(frames, frames).empty());
    frames[48].voiced = 1;
    EXPECT_EQ(BuildNotes(frames, frames).size(), 1U);
}

TEST(BuildNotes, PitchIsThatOfTheRawFramesAndLevelThatOfTheSmoothedOnes) {
    const std::vector<AnalysisFrame> frames = SteadyFrames(50, 60.0F, 0.25F);
    std::vector<AnalysisFrame> smoothed = SteadyFrames(50, 61.0F, 0.5F);
    smoothed.back().level = 1; // the last frame does not count
    const std::vector<NoteRecord> notes = BuildNotes(frames, smoothed);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].pitch, 60.0F);
    EXPECT_EQ(notes[0].level, 0.5F);
}

TEST(BuildNotes, ThereMayBeManyNotes) {
    std::vector<AnalysisFrame> frames = SteadyFrames(3000);
    for (std::int32_t i = 0; i < 3000; i += 10) SetUnvoiced(frames, i, i);
    EXPECT_EQ(BuildNotes(frames, frames).size(), 300U);
}

TEST(CleanUpNotes, WithoutNotesOrFramesNothingHappens) {
    EXPECT_TRUE(Cleaned({}, SteadyFrames(10)).empty());
    EXPECT_TRUE(Cleaned({}, {}).empty());
    EXPECT_EQ(Cleaned({Note(1, 5)}, {}).size(), 1U);
}

// A quirk that stays: each of the three extensions takes in one frame before it looks at levels, so that an
// edge comes to lie up to two frames further out than where the level ends it.
TEST(CleanUpNotes, EdgesGoOutToWhereTheLevelFallsToAnEighth) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200, 60.0F, 0.25F);
    SetLevels(frames, 0, 29, 0.03125F); // an eighth exactly ends it
    SetLevels(frames, 150, 199, 0.03F);
    const std::vector<NoteRecord> notes = Cleaned({Note(60, 100, 60.0F, 0.25F)}, frames);
    ASSERT_EQ(notes.size(), 1U);
    ExpectSpan(notes[0], 29 - 2, 150 + 2);
}

TEST(CleanUpNotes, TheFirstNoteNeverBeginsAtTheFirstFrame) {
    for (const std::int32_t first : {0, 1, 30}) {
        const std::vector<NoteRecord> notes = Cleaned({Note(first, 150)}, SteadyFrames(200));
        ASSERT_EQ(notes.size(), 1U);
        ExpectSpan(notes[0], 1, 198); // nor does the last one end at the last
    }
}

TEST(CleanUpNotes, NeighboursStopTheExtension) {
    std::vector<AnalysisFrame> frames = SteadyFrames(300);
    SetPitches(frames, 150, 299, 65.0F);
    const std::vector<NoteRecord> notes = Cleaned({Note(20, 100), Note(200, 280, 65.0F)}, frames);
    ASSERT_EQ(notes.size(), 2U);
    ExpectSpan(notes[0], 1, 199); // up to the second as it was
    ExpectSpan(notes[1], 200, 298);
}

TEST(CleanUpNotes, ABurstAHundredTimesAsLoudStopsTheExtension) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200, 60.0F, 0.0078125F);
    SetLevels(frames, 150, 199, 0.78125F);
    const std::vector<NoteRecord> notes = Cleaned({Note(20, 100, 60.0F, 0.0078125F)}, frames);
    ASSERT_EQ(notes.size(), 1U);
    ExpectSpan(notes[0], 1, 150 + 1);
}

// Two soft notes of one pitch, 50 frames (5000 samples) apart, a third behind them. Only when the edges go
// out before the joining does the gap close in time.
std::size_t NotesAfterAGapOf50Frames(float level) {
    std::vector<AnalysisFrame> frames = SteadyFrames(400, 60.0F, level);
    SetPitches(frames, 250, 399, 67.0F);
    return Cleaned({Note(20, 100, 60.0F, level), Note(150, 240, 60.0F, level), Note(300, 390, 67.0F, level)},
                   frames)
        .size();
}

TEST(CleanUpNotes, OnlyNotesAboveFiveHundredthsAreExtendedBeforeTheJoining) {
    EXPECT_EQ(NotesAfterAGapOf50Frames(0.051F), 2U);
    EXPECT_EQ(NotesAfterAGapOf50Frames(0.05F), 3U);

    // Behind the joining the softer ones are extended as well.
    const std::vector<NoteRecord> notes =
        Cleaned({Note(50, 100, 60.0F, 0.05F)}, SteadyFrames(200, 60.0F, 0.05F));
    ASSERT_EQ(notes.size(), 1U);
    ExpectSpan(notes[0], 1, 198);
}

// Three notes from frames 20, 20 + `length` + `gap` and 300 on, the last far off in pitch; the second begins
// at `rise` times the level that the first ends with.
struct Pair {
    std::int32_t gap = 10; // frames
    float interval = 0.5F; // semitones
    float rise = 1.0F;
    std::int32_t length = 40; // frames of the second note
};

std::size_t CountJoined(const Pair& pair) {
    constexpr float kLevel = 0.015625F;
    const std::int32_t second = 100 + pair.gap;
    std::vector<AnalysisFrame> frames = SteadyFrames(400, 60.0F, kLevel);
    SetPitches(frames, 101, 250, 60.0F + pair.interval);
    SetPitches(frames, 251, 399, 72.0F);
    SetLevels(frames, second, second, kLevel * pair.rise);
    const std::vector<NoteRecord> before{Note(20, 100, 60.0F, kLevel),
                                         Note(second, second + pair.length, 60.0F + pair.interval, kLevel),
                                         Note(300, 390, 72.0F, kLevel)};
    return before.size() - Cleaned(before, frames).size();
}

TEST(CleanUpNotes, NotesNearInPitchAndTimeAreJoined) { EXPECT_EQ(CountJoined({}), 1U); }

TEST(CleanUpNotes, NotesAGapApartAreNot) {
    EXPECT_EQ(CountJoined({.gap = 40}), 1U); // 4000 samples
    EXPECT_EQ(CountJoined({.gap = 41}), 0U); // 4100, where 4057 is the limit
}

TEST(CleanUpNotes, NotesAToleranceApartAreNot) {
    EXPECT_EQ(CountJoined({.interval = 0.734375F}), 1U);
    EXPECT_EQ(CountJoined({.interval = 0.75F}), 0U);
    EXPECT_EQ(CountJoined({.interval = -0.75F}), 0U);
}

TEST(CleanUpNotes, ALevelJumpOfNinetyFivePercentBeginsANoteOfItsOwn) {
    EXPECT_EQ(CountJoined({.rise = 1.94F}), 1U);
    EXPECT_EQ(CountJoined({.rise = 1.96F}), 0U);
}

TEST(CleanUpNotes, AShortNoteIsJoinedWhateverItsLevel) {
    EXPECT_EQ(CountJoined({.rise = 1.96F, .length = 19}), 0U); // 1900 samples, where 1852 is the limit
    EXPECT_EQ(CountJoined({.rise = 1.96F, .length = 18}), 1U);
    EXPECT_EQ(CountJoined({.interval = 5.0F, .length = 18}),
              0U); // but only to one of its pitch; it grows instead
}

TEST(CleanUpNotes, TheFirstAndTheLastNoteTakeNobodyIn) {
    // Two notes of one pitch: neither has neighbours on both sides.
    EXPECT_EQ(Cleaned({Note(20, 100), Note(110, 180)}, SteadyFrames(200)).size(), 2U);
    // Of three the middle one takes in the first; then there are two.
    EXPECT_EQ(Cleaned({Note(20, 100), Note(110, 180), Note(190, 280)}, SteadyFrames(300)).size(), 2U);
    // Of four the second takes in the first, is the first itself, and the third takes in that.
    EXPECT_EQ(
        Cleaned({Note(20, 100), Note(110, 180), Note(190, 280), Note(290, 380)}, SteadyFrames(400)).size(),
        2U);
}

TEST(CleanUpNotes, ANoteIsJoinedToTheNextWhenThePreviousIsNotNear) {
    std::vector<AnalysisFrame> frames = SteadyFrames(400);
    SetPitches(frames, 0, 104, 70.0F);
    SetPitches(frames, 285, 399, 50.0F);
    const std::vector<NoteRecord> notes =
        Cleaned({Note(20, 100, 70.0F), Note(110, 180), Note(190, 280), Note(290, 390, 50.0F)}, frames);
    ASSERT_EQ(notes.size(), 3U);
    ExpectSpan(notes[1], 110, 289);
}

TEST(CleanUpNotes, ANoteNearThePreviousThatBeginsLoudlyDoesNotTryTheNext) {
    std::vector<AnalysisFrame> frames = SteadyFrames(300);
    SetLevels(frames, 110, 110, 0.0625F);
    // The last is near and begins softly: the second could take it in, had it not been near the first.
    EXPECT_EQ(Cleaned({Note(20, 100), Note(110, 180), Note(190, 280)}, frames).size(), 3U);
    SetPitches(frames, 0, 104, 70.0F);
    EXPECT_EQ(Cleaned({Note(20, 100, 70.0F), Note(110, 180), Note(190, 280)}, frames).size(), 2U);
}

// The raw frames' mean replaces a note's pitch in the end unless it is not above 0; below 0 the weighted one
// shows.
TEST(CleanUpNotes, TheNeighbourWeighsFourTimesAsMuch) {
    const std::vector<AnalysisFrame> frames = SteadyFrames(400, -1.0F);
    const std::vector<NoteRecord> notes =
        Cleaned({Note(20, 100, 60.0F), Note(110, 200, 60.5F), Note(300, 390, 72.0F)}, frames);
    ASSERT_EQ(notes.size(), 2U);
    const double joined = 18000; // samples, from frame 20 to 200
    const double neighbour = 8000;
    const double expected = (neighbour * 60.0 * 2.0 + joined * 60.5 * 0.5) / (joined * 0.5 + neighbour * 2.0);
    EXPECT_FLOAT_EQ(notes[0].pitch, static_cast<float>(expected));
}

TEST(CleanUpNotes, NotesOfOnePitchKeepItExactlyWhenJoined) {
    for (const float pitch : {41.171875F, 60.1F, 77.7F}) {
        const std::vector<AnalysisFrame> frames = SteadyFrames(400, -1.0F);
        const std::vector<NoteRecord> notes =
            Cleaned({Note(21, 101, pitch), Note(110, 199, pitch), Note(300, 390, 90.0F)}, frames);
        ASSERT_EQ(notes.size(), 2U);
        EXPECT_EQ(notes[0].pitch, pitch);
    }
}

TEST(CleanUpNotes, TheRawFramesGiveTheFinalPitch) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200, 62.0F);
    std::vector<NoteRecord> notes = Cleaned({Note(20, 100, 60.0F)}, frames);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].pitch, 62.0F);
}

TEST(CleanUpNotes, ShortNotesAreDropped) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200);
    SetLevels(frames, 0, 199, 0.0F);
    EXPECT_EQ(Cleaned({Note(20, 39)}, frames).size(),
              1U); // 1900 samples, behind which an edge creeps out by 2 frames
    EXPECT_EQ(Cleaned({Note(20, 35)}, frames).size(), 0U);
}

TEST(CleanUpNotes, ShortSilentNotesAreDroppedBeforeTheJoining) {
    std::vector<AnalysisFrame> frames = SteadyFrames(400);
    const auto middle = [](float level) {
        return std::vector<NoteRecord>{Note(20, 100), Note(110, 120, 60.0F, level), Note(190, 280, 66.0F),
                                       Note(300, 390, 70.0F)};
    };
    SetPitches(frames, 150, 295, 66.0F);
    SetPitches(frames, 296, 399, 70.0F);
    // Joined, the first note would have the mean of both levels from frame 20 to 120; dropped, it keeps its
    // own.
    SetLevels(frames, 101, 149, 0.0625F);
    EXPECT_EQ(Cleaned(middle(0.0004F), frames)[0].level, 0.03125F);
    EXPECT_GT(Cleaned(middle(0.0005F), frames)[0].level, 0.03125F);
}

// A note from frame 20 on whose pitch rises by `step` a frame, with silence around it; the pitch of the frame
// behind it counts as well, voiced or not.
std::size_t NotesLeftOfGlide(std::int32_t frameCount, float step) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200, 60.0F, 0.0F);
    const std::int32_t last = 20 + frameCount - 1;
    for (std::int32_t i = 20; i <= last; ++i)
        SetPitches(frames, i, i, 60.0F + step * static_cast<float>(i - 20));
    SetPitches(frames, last + 1, 199, frames[static_cast<std::size_t>(last)].pitch);
    SetUnvoiced(frames, 0, 19);
    SetUnvoiced(frames, last + 1, 199);
    SetLevels(frames, 20, last, 0.03125F);
    return Cleaned({Note(20, last)}, frames).size();
}

TEST(CleanUpNotes, AnEvenGlideIsDropped) {
    EXPECT_EQ(NotesLeftOfGlide(30, 0.125F), 0U);
    EXPECT_EQ(NotesLeftOfGlide(30, -0.125F), 0U);
}

TEST(CleanUpNotes, AGlideLongerThanTheLargestGapStays) {
    EXPECT_EQ(NotesLeftOfGlide(41, 0.125F), 0U); // 4000 samples
    EXPECT_EQ(NotesLeftOfGlide(42, 0.125F), 1U); // 4100, where 4057 is the limit
}

TEST(CleanUpNotes, AGlideOfLessThanASemitoneStays) {
    EXPECT_EQ(NotesLeftOfGlide(33, 0.03125F), 0U); // 1.0 semitones
    EXPECT_EQ(NotesLeftOfGlide(32, 0.03125F), 1U);
}

TEST(CleanUpNotes, AStepBetweenTwoPitchesThatAreHeldUnevenlyStays) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200, 60.0F, 0.0F);
    SetPitches(frames, 26, 50, 63.0F);
    SetUnvoiced(frames, 0, 19);
    SetUnvoiced(frames, 51, 199);
    SetLevels(frames, 20, 50, 0.03125F);
    EXPECT_EQ(Cleaned({Note(20, 50)}, frames).size(), 1U); // 6 frames below the mean, 25 above
}

TEST(CleanUpNotes, ANoteWithOneVoicedFrameIsAGlide) {
    std::vector<AnalysisFrame> frames = SteadyFrames(200);
    SetUnvoiced(frames, 0, 199);
    frames[50].voiced = 1;
    EXPECT_TRUE(Cleaned({Note(20, 100)}, frames).empty());
    frames[50].voiced = 0;
    EXPECT_TRUE(Cleaned({Note(20, 100)}, frames).empty());
}

TEST(CleanUpNotes, AnyNotesAreSafe) {
    std::vector<NoteRecord> notes;
    for (const std::int32_t a : {kSmallestI32, -1, 0, 50, 99, 100, kLargestI32}) {
        for (const std::int32_t b : {kSmallestI32, -1, 0, 50, 99, 100, kLargestI32}) {
            for (const float level : {0.0F, 0.03F, 0.5F, kNaN}) {
                notes.push_back({60.0F, level, 2000, a, b, a, b});
                notes.push_back({kNaN, level, b, b, a, b, a});
            }
        }
    }
    for (const std::int32_t frameCount : {1, 2, 100}) {
        for (const NoteRecord& note : Cleaned(notes, SteadyFrames(frameCount))) {
            ASSERT_GE(note.firstFrame, 0);
            ASSERT_LT(note.firstFrame, frameCount);
            ASSERT_GE(note.lastFrame, 0);
            ASSERT_LT(note.lastFrame, frameCount);
        }
    }
}

TEST(CleanUpNotes, AnyPositionsAndPitchesAreSafe) {
    std::vector<AnalysisFrame> frames = SteadyFrames(100);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        frames[i].position = i % 2 == 0 ? kSmallestI32 : kLargestI32;
        frames[i].pitch = i % 3 == 0 ? kNaN : 60.0F;
    }
    std::vector<NoteRecord> notes = BuildNotes(frames, frames);
    notes.push_back({60.0F, 0.5F, 10, kSmallestI32, kLargestI32, 5, 90});
    notes.push_back({60.0F, 0.5F, 10, kLargestI32, kSmallestI32, 5, 90});
    CleanUpNotes(notes, frames, kRules);
    EXPECT_LE(notes.size(), 3U);
}

} // namespace
} // namespace sonorelle
