// Settings, and what Run makes of them.

#include "harmony/choir_driver.h"

#include "harmony/choir_driver_rig.h"
#include "harmony/styles.h"
#include "platform/result_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;
using testing::ElementsAre;

// A minor melody that says F with all its might.
const std::vector<float> kFMinorTune = {65, 67, 68, 70, 72, 68, 65, 72, 73, 72,
                                        75, 72, 70, 68, 67, 65, 65, 68, 65};

// What Run does, step by step, on an engine of its own.
class RunModel {
public:
    explicit RunModel(const CChoirDriver& driver, std::vector<std::int32_t> melody)
        : pitches(std::move(melody)), rows(pitches.size(), VoiceRow{-1, -1, -1, -1}), chords(pitches.size()) {
        Run(driver);
    }

    void Run(const CChoirDriver& driver) {
        engine.Reset();
        engine.SetRoot(driver.GetRoot());
        engine.SetMelodyScale(driver.GetMelodyScale());
        engine.SetHarmonyScale(driver.GetFollowScale() ? driver.GetMelodyScale() : driver.GetHarmonyScale());
        engine.SetSnapToScale(driver.GetSnapToScale());
        engine.SetMapScale(driver.GetMapScale());
        engine.SetSpread(driver.GetSpread());
        engine.SetVoiceMode(driver.GetArrangement());
        engine.SetVoiceRange(driver.GetVoiceRange());
        const std::int32_t style = driver.GetManualOnly() ? 1 : driver.GetStyle();
        const std::int32_t arrangement = driver.GetArrangement();
        std::int32_t intervals[4];
        for (std::int32_t voice = 0; voice < 4; ++voice) intervals[voice] = driver.GetManualInterval(voice);
        if (style == 0 && driver.GetChordsDirty())
            engine.FindChordPath(pitches.data(), chords.data(), static_cast<std::int32_t>(pitches.size()));
        for (std::size_t i = 0; i < pitches.size(); ++i) {
            std::int32_t* const row = rows[i].data();
            const std::int32_t next = i + 1 < pitches.size() ? pitches[i + 1] : pitches[i];
            if (style == 0) engine.GenerateVoices(pitches[i], row, chords[i]);
            if (style == 1) engine.GenerateParallel(pitches[i], row, intervals);
            if (style == 2) engine.GenerateBlock(pitches[i], next, row, arrangement);
            if (style == 3) engine.GenerateFauxbourdon(pitches[i], row, arrangement);
            if (style == 4) engine.GenerateOrganum(pitches[i], row, arrangement);
        }
    }

    CConsortier engine;
    std::vector<std::int32_t> pitches;
    std::vector<VoiceRow> rows;
    std::vector<ChordRecord> chords;
};

std::vector<std::int32_t> WholePitches(const std::vector<float>& tune) { return {tune.begin(), tune.end()}; }

struct SettingsList {
    explicit SettingsList(const CChoirDriver& driver)
        : integers{driver.GetRoot(),
                   driver.GetMelodyScale(),
                   driver.GetHarmonyScale(),
                   driver.GetVoiceRange(),
                   driver.GetStyle(),
                   driver.GetArrangement(),
                   driver.GetManualInterval(0),
                   driver.GetManualInterval(1),
                   driver.GetManualInterval(2),
                   driver.GetManualInterval(3),
                   driver.GetSnapToScale(),
                   driver.GetMapScale(),
                   driver.GetAutoKey(),
                   driver.GetFollowScale(),
                   driver.GetChordsDirty(),
                   driver.GetManualOnly()},
          spread(driver.GetSpread()) {}
    bool operator==(const SettingsList&) const = default;

    std::vector<std::int32_t> integers;
    float spread;
};

// Settings.

TEST(CChoirDriver, StartsWithTheToldSettings) {
    DriverRig rig(kTune);
    const SettingsList settings(rig.driver);
    EXPECT_THAT(settings.integers, ElementsAre(0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 0));
    EXPECT_EQ(settings.spread, 1.0F);
    EXPECT_EQ(rig.driver.GetNoteCount(), 0);
    EXPECT_FALSE(rig.driver.IsLive());
}

TEST(CChoirDriver, EachSetterIsReadBackByItsGetter) {
    DriverRig rig(kTune);
    CChoirDriver& driver = rig.driver;
    EXPECT_EQ(driver.SetRoot(11), kOk);
    EXPECT_EQ(driver.SetMelodyScale(10), kOk);
    EXPECT_EQ(driver.SetHarmonyScale(11), kOk);
    EXPECT_EQ(driver.SetVoiceRange(3), kOk);
    EXPECT_EQ(driver.SetStyle(4), kOk);
    EXPECT_EQ(driver.SetArrangement(6), kOk);
    for (std::int32_t voice = 0; voice < 4; ++voice)
        EXPECT_EQ(driver.SetManualInterval(voice, voice - 7), kOk);
    driver.SetSnapToScale(false);
    driver.SetMapScale(false);
    driver.SetAutoKey(false);
    driver.SetFollowScale(false);
    driver.SetChordsDirty(false);
    driver.SetManualOnly(true);
    EXPECT_EQ(driver.SetSpread(0.25F), kOk);
    const SettingsList settings(driver);
    EXPECT_THAT(settings.integers, ElementsAre(11, 10, 11, 3, 4, 6, -7, -6, -5, -4, 0, 0, 0, 0, 0, 1));
    EXPECT_EQ(settings.spread, 0.25F);
}

TEST(CChoirDriver, SettingsBeyondTheirLimitsAreRefusedAndChangeNothing) {
    DriverRig rig(kTune);
    CChoirDriver& driver = rig.driver;
    const SettingsList before(driver);
    for (const std::int32_t bad : {INT_MIN, -1, 12, INT_MAX})
        EXPECT_EQ(driver.SetRoot(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 11, INT_MAX})
        EXPECT_EQ(driver.SetMelodyScale(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 12, INT_MAX})
        EXPECT_EQ(driver.SetHarmonyScale(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 4, INT_MAX})
        EXPECT_EQ(driver.SetVoiceRange(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 5, INT_MAX})
        EXPECT_EQ(driver.SetStyle(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 9, INT_MAX})
        EXPECT_EQ(driver.SetArrangement(bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -8, 8, INT_MAX})
        EXPECT_EQ(driver.SetManualInterval(0, bad), kBadArgument) << bad;
    for (const std::int32_t bad : {INT_MIN, -1, 4, INT_MAX})
        EXPECT_EQ(driver.SetManualInterval(bad, 1), kBadArgument) << bad;
    for (const float bad : {-0.01F, 1.01F, std::numeric_limits<float>::infinity(), std::nanf("")})
        EXPECT_EQ(driver.SetSpread(bad), kBadArgument) << bad;
    EXPECT_TRUE(SettingsList(driver) == before);
    EXPECT_EQ(driver.GetManualInterval(-1), 0);
    EXPECT_EQ(driver.GetManualInterval(4), 0);
}

TEST(CChoirDriver, ScalesReachTheEngineAtOnce) {
    DriverRig rig(kTune);
    EXPECT_FALSE(rig.driver.IsInScale(61));
    rig.driver.SetHarmonyScale(2);
    EXPECT_TRUE(rig.driver.IsInScale(61));
    rig.driver.SetMelodyScale(3);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetMelodyScale(), 3);
    rig.driver.SetRoot(5);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetRoot(), 0) << "the root waits for Run";
}

TEST(CChoirDriver, VoiceCountFollowsStyleAndArrangement) {
    DriverRig rig(kTune);
    const auto count = [&rig](std::int32_t style, std::int32_t arrangement) {
        rig.driver.SetStyle(style);
        rig.driver.SetArrangement(arrangement);
        return rig.driver.VoiceCount();
    };
    EXPECT_EQ(count(0, 0), 4);
    EXPECT_EQ(count(0, 1), 3);
    EXPECT_EQ(count(0, 2), 2);
    EXPECT_EQ(count(0, 7), 4);
    EXPECT_EQ(count(1, 0), 4);
    EXPECT_EQ(count(1, 1), 2);
    EXPECT_EQ(count(1, 2), 4);
    EXPECT_EQ(count(2, 1), 4);
    EXPECT_EQ(count(3, 1), 3);
    EXPECT_EQ(count(4, 5), 2);
    EXPECT_EQ(count(4, 6), 3);
}

// Run.

TEST(CChoirDriver, RunOfAnEmptyMelodyDoesNothing) {
    DriverRig rig(std::vector<float>{});
    rig.driver.SetRoot(7);
    const SettingsList before(rig.driver);
    const std::int32_t elements = rig.store.GetElementCount();
    EXPECT_EQ(rig.driver.Run(), kOk);
    rig.driver.SetManualOnly(true);
    EXPECT_EQ(rig.driver.Run(), kOk);
    EXPECT_EQ(rig.driver.GetStyle(), 0);
    rig.driver.SetManualOnly(false);
    EXPECT_TRUE(SettingsList(rig.driver) == before);
    EXPECT_EQ(rig.store.GetElementCount(), elements);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetRoot(), 0);
    rig.driver.Rewind();
    rig.driver.RefreshFromStore();
}

TEST(CChoirDriver, RunOfAnAnalyserWithoutAFileDoesNothing) {
    CMelodyAnalyzer analyzer;
    CSnapshotStore store;
    CChoirDriver driver(analyzer, store);
    EXPECT_EQ(driver.Run(), kOk);
    EXPECT_EQ(driver.GetNoteCount(), 0);
    EXPECT_EQ(driver.FindNoteAt(0), -1);
    EXPECT_EQ(driver.SplitNote(0), 0);
}

TEST(CChoirDriver, FirstRunTakesTheNotesOfTheAnalysis) {
    DriverRig rig(kTune);
    rig.driver.Run();
    const auto count = static_cast<std::int32_t>(kTune.size());
    EXPECT_EQ(rig.driver.GetNoteCount(), count);
    EXPECT_EQ(rig.driver.GetAnalysedNoteCount(), count);
    EXPECT_EQ(rig.driver.GetNoteCapacity(), count);
    for (std::int32_t note = 0; note < count; ++note) {
        const NoteRecord& record = rig.melody.Notes()[static_cast<std::size_t>(note)];
        EXPECT_EQ(rig.driver.GetNotePitch(note), static_cast<std::int32_t>(record.pitch));
        EXPECT_EQ(rig.driver.GetNoteLength(note), record.length);
        EXPECT_EQ(rig.driver.GetNoteStart(note), record.start);
        EXPECT_EQ(rig.driver.GetNoteLevel(note), record.level);
        std::int32_t start = 0;
        std::int32_t end = 0;
        EXPECT_TRUE(rig.driver.GetNoteRange(note, start, end));
        EXPECT_EQ(start, record.start);
        EXPECT_EQ(end, record.end);
        EXPECT_EQ(rig.driver.GetNote(note).firstFrame, record.firstFrame);
    }
}

TEST(CChoirDriver, QueriesAnswerABadNoteAsTold) {
    DriverRig rig(kTune);
    rig.driver.Run();
    for (const std::int32_t bad : {INT_MIN, -1, rig.driver.GetNoteCount(), INT_MAX}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(rig.driver.GetNotePitch(bad), -1);
        EXPECT_EQ(rig.driver.GetNoteLength(bad), -1);
        EXPECT_EQ(rig.driver.GetNoteStart(bad), -1);
        EXPECT_EQ(rig.driver.GetNoteLevel(bad), 0.0F);
        EXPECT_EQ(rig.driver.GetDeviation(bad), -1.0F);
        EXPECT_EQ(rig.driver.GetNote(bad).end, 0);
        EXPECT_EQ(rig.driver.GetChord(bad), (ChordRecord{0, 0, 0, 0}));
        EXPECT_TRUE(rig.driver.ChordsForNote(bad, 7).empty());
        std::int32_t start = 17;
        std::int32_t end = 18;
        EXPECT_FALSE(rig.driver.GetNoteRange(bad, start, end));
        EXPECT_EQ(start + end, 35);
        float deviation = 17;
        float gain = 18;
        EXPECT_EQ(rig.driver.GetVoice(bad, 0, deviation, gain, true), -1);
        EXPECT_EQ(deviation + gain, 35.0F);
    }
    for (const std::int32_t bad : {INT_MIN, -1, 4, INT_MAX}) {
        float deviation = 17;
        float gain = 18;
        EXPECT_EQ(rig.driver.GetVoice(0, bad, deviation, gain, true), -1);
        EXPECT_EQ(deviation + gain, 35.0F);
    }
}

TEST(CChoirDriver, PitchesAreRoundedBySingersTuning) {
    // Everything 30 cents sharp: 60.6 would be 61 on its own, and is the 60 of this singer a third higher up.
    DriverRig rig({60.3F, 62.3F, 64.3F, 60.6F});
    rig.driver.Run();
    const float tuning = rig.melody.Analyzer().GetTuningOffset();
    ASSERT_NEAR(static_cast<double>(tuning), 0.3, 0.1);
    EXPECT_EQ(rig.driver.GetNotePitch(0), 60);
    EXPECT_EQ(rig.driver.GetNotePitch(1), 62);
    EXPECT_EQ(rig.driver.GetNotePitch(2), 64);
    EXPECT_EQ(rig.driver.GetNotePitch(3), 60);
    EXPECT_NEAR(static_cast<double>(rig.driver.GetDeviation(0)), 60.3 - static_cast<double>(tuning) - 60.0,
                1e-5);
    EXPECT_NEAR(static_cast<double>(rig.driver.GetDeviation(3)), 60.6 - static_cast<double>(tuning) - 60.0,
                1e-5);
}

TEST(CChoirDriver, RunWithAutoKeyAndAnEstimateOf17IsFMinor) {
    DriverRig rig(kFMinorTune);
    ASSERT_EQ(rig.melody.Analyzer().EstimateKey(0), 17);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetRoot(), 5);
    EXPECT_EQ(rig.driver.GetMelodyScale(), 5);
    EXPECT_EQ(rig.driver.GetHarmonyScale(), 5) << "the harmony follows";
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetRoot(), 5);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetMelodyScale(), 5);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetHarmonyScale(), 5);
}

TEST(CChoirDriver, RunWithAutoKeyInMajorTakesScaleZero) {
    DriverRig rig(kTune);
    ASSERT_EQ(rig.melody.Analyzer().EstimateKey(0), 0);
    rig.driver.SetMelodyScale(4);
    rig.driver.SetRoot(3);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetRoot(), 0);
    EXPECT_EQ(rig.driver.GetMelodyScale(), 0);
}

TEST(CChoirDriver, NoEstimateLeavesTheKeyAsItIs) {
    std::vector<NoteRecord> notes = EvenNotes(kTune);
    for (NoteRecord& note : notes) note.length = 0; // weighs nothing
    DriverRig rig(notes);
    ASSERT_EQ(rig.melody.Analyzer().EstimateKey(0), -1);
    rig.driver.SetRoot(9);
    rig.driver.SetMelodyScale(7);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetRoot(), 9);
    EXPECT_EQ(rig.driver.GetMelodyScale(), 7);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetRoot(), 9);
}

TEST(CChoirDriver, HarmonyKeepsItsScaleWhenItDoesNotFollow) {
    DriverRig rig(kTune);
    rig.driver.SetFollowScale(false);
    rig.driver.SetHarmonyScale(5);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetMelodyScale(), 0);
    EXPECT_EQ(rig.driver.GetHarmonyScale(), 5);
    EXPECT_EQ(rig.driver.GetEngine().GetKey().GetHarmonyScale(), 5);
    EXPECT_EQ(rig.Voices(2)[0], 63) << "E of C major is E flat in C minor";
}

TEST(CChoirDriver, EveryStyleAndArrangementMakesWhatTheEngineMakesNoteByNote) {
    int runs = 0;
    for (const StyleEntry& entry : StyleList()) {
        for (std::int32_t k = 0; k < entry.arrangementCount; ++k) {
            for (const std::int32_t range : {0, 1, 2, 3}) {
                SCOPED_TRACE(testing::Message() << entry.name << ' ' << k << " range " << range);
                DriverRig rig(kTune);
                rig.driver.SetAutoKey(false);
                rig.driver.SetFollowScale(false);
                rig.driver.SetHarmonyScale(range == 3 ? 5 : 0);
                rig.driver.SetRoot(0);
                rig.driver.SetSpread(0.6F);
                rig.driver.SetVoiceRange(range);
                rig.driver.SetStyle(entry.style);
                rig.driver.SetArrangement(entry.arrangement + k);
                const std::int32_t intervals[] = {0, -2, 2, 5};
                for (std::int32_t voice = 0; voice < 4; ++voice)
                    rig.driver.SetManualInterval(voice, intervals[voice]);
                rig.driver.Run();
                RunModel model(rig.driver, WholePitches(kTune));
                EXPECT_EQ(rig.AllVoices(), model.rows);
                EXPECT_EQ(rig.Chords(), model.chords);
                // Once more: the randomised arrangements go on, the others repeat themselves.
                rig.driver.Run();
                model.Run(rig.driver);
                EXPECT_EQ(rig.AllVoices(), model.rows);
                ++runs;
            }
        }
    }
    EXPECT_EQ(runs, 4 * (3 + 9 + 4 + 7 + 2));
}

TEST(CChoirDriver, RunTwiceGivesTheSameVoices) {
    DriverRig rig(kTune);
    rig.driver.Run();
    const auto voices = rig.AllVoices();
    rig.driver.Run();
    EXPECT_EQ(rig.AllVoices(), voices);
}

TEST(CChoirDriver, BlockStyleTakesTheLastNoteForItsOwnNext) {
    // C to F is a passing note; the last C, followed by nothing, is not.
    DriverRig rig({72, 77, 72});
    rig.driver.SetStyle(kStyleBlock);
    rig.driver.SetArrangement(kBlockIntelligent);
    rig.RunInC();
    EXPECT_EQ(rig.Voices(0), (VoiceRow{72, 70, 67, 64}));
    EXPECT_EQ(rig.Voices(2), (VoiceRow{72, 69, 67, 64}));
}

TEST(CChoirDriver, ManualOnlyForcesTheParallelStyle) {
    DriverRig rig(kTune);
    rig.driver.SetManualOnly(true);
    rig.driver.SetManualInterval(1, 2);
    rig.driver.SetManualInterval(2, -7);
    rig.RunInC();
    EXPECT_EQ(rig.driver.GetStyle(), kStyleParallel);
    EXPECT_EQ(rig.Voices(0), (VoiceRow{60, 64, 48, 60}));
    EXPECT_EQ(rig.Voices(1), (VoiceRow{62, 65, 50, 62}));
}

TEST(CChoirDriver, RangeBeyondTheVoicesOfTheModeKeepsTheEnginesOwn) {
    DriverRig rig(kTune);
    rig.driver.SetVoiceRange(3);
    rig.driver.SetArrangement(kTwoVoices);
    rig.RunInC();
    EXPECT_EQ(rig.driver.GetVoiceRange(), 3) << "kept for a mode that has so many voices";
    EXPECT_EQ(rig.driver.GetEngine().GetVoiceLeader().GetHarmonyVoiceCount(), 1);
    EXPECT_EQ(rig.driver.GetEngine().GetVoiceLeader().GetVoiceRange(), 0) << "1 of 3 above becomes 0 of 1";
}

TEST(CChoirDriver, RunWithoutDirtyChordsKeepsEditedChordsAndPitches) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetChordsDirty(false);
    const auto pitches = [&rig] {
        std::vector<std::int32_t> list;
        for (std::int32_t i = 0; i < rig.driver.GetNoteCount(); ++i)
            list.push_back(rig.driver.GetNotePitch(i));
        return list;
    };
    const std::vector<std::int32_t> before = pitches();
    const float deviation = rig.driver.GetDeviation(3);

    ASSERT_NE(rig.driver.GetChord(4), kGMajor);
    rig.driver.SetChord(4, kGMajor);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetChord(4), kGMajor);
    EXPECT_EQ(pitches(), before);
    EXPECT_EQ(rig.driver.GetDeviation(3), deviation);
    for (const std::int32_t pitch : rig.Voices(4)) EXPECT_THAT(pitch % 12, testing::AnyOf(7, 11, 2));

    const std::vector<ChordRecord> edited = rig.Chords();
    rig.driver.SetChordsDirty(true);
    rig.driver.Run();
    EXPECT_NE(rig.Chords(), edited) << "dirty chords are found anew";
}

TEST(CChoirDriver, RunWithoutDirtyChordsKeepsTheOldTuning) {
    // The tuning changes under the driver when the recording is attached and loaded anew.
    DriverRig rig(kTune);
    rig.RunInC();
    const float deviation = rig.driver.GetDeviation(0);
    std::vector<NoteRecord> sharp = EvenNotes(kTune);
    for (NoteRecord& note : sharp) note.pitch += 0.4F;
    ASSERT_TRUE(rig.melody.Reload(sharp));
    ASSERT_NEAR(static_cast<double>(rig.melody.Analyzer().GetTuningOffset()), 0.4, 0.01);
    rig.driver.SetChordsDirty(false);
    rig.driver.Run();
    EXPECT_EQ(rig.driver.GetDeviation(0), deviation);
    EXPECT_EQ(rig.driver.GetNotePitch(0), 60);
    rig.driver.SetChordsDirty(true);
    rig.driver.Run();
    EXPECT_NEAR(static_cast<double>(rig.driver.GetDeviation(0)), -0.4, 0.01);
}

TEST(CChoirDriver, ParallelStyleTakesTheTuningEachTime) {
    DriverRig rig(kTune);
    rig.RunInC();
    std::vector<NoteRecord> flat = EvenNotes(kTune);
    for (NoteRecord& note : flat) note.pitch -= 0.4F;
    ASSERT_TRUE(rig.melody.Reload(flat));
    rig.driver.SetChordsDirty(false);
    rig.driver.SetManualOnly(true);
    rig.driver.Run();
    EXPECT_NEAR(static_cast<double>(rig.driver.GetDeviation(0)), 0.4, 0.01);
}

TEST(CChoirDriver, DeviationTellsHowFarTheMelodyVoiceWasMoved) {
    DriverRig rig({60, 61, 64, 67});
    rig.RunInC();
    ASSERT_EQ(rig.melody.Analyzer().GetTuningOffset(), 0.0F);
    EXPECT_EQ(rig.Voices(1)[0], 60) << "C sharp is snapped";
    EXPECT_EQ(rig.Deviation(1, 0), -1.0F);
    EXPECT_EQ(rig.Deviation(0, 0), 0.0F);
    rig.driver.SetVoicePitch(0, 0, 72);
    EXPECT_EQ(rig.Deviation(0, 0), 12.0F);
    EXPECT_EQ(rig.Deviation(0, 1), 0.0F);
    rig.driver.SetVoicePitch(0, 0, -1);
    EXPECT_EQ(rig.Deviation(0, 0), -61.0F) << "a silent melody voice is measured as it is stored";
}

TEST(CChoirDriver, GainsAreFullAtFirst) {
    DriverRig rig(kTune);
    rig.driver.Run();
    for (std::int32_t note = 0; note < rig.driver.GetNoteCount(); ++note)
        EXPECT_EQ(rig.Gains(note), (GainRow{1, 1, 1, 1}));
}

TEST(CChoirDriver, NotesFarOutsideTheMidiRangeAreVoiced) {
    for (const std::int32_t style : {0, 1, 2, 3, 4}) {
        DriverRig rig({-500, 3e9F, -3e9F, 200, 60, 1e38F, -1e38F});
        rig.driver.SetStyle(style);
        EXPECT_EQ(rig.driver.Run(), kOk);
        for (std::int32_t note = 0; note < rig.driver.GetNoteCount(); ++note) {
            rig.Voices(note, true);
            EXPECT_TRUE(std::isfinite(rig.Deviation(note, 0)));
            EXPECT_TRUE(std::isfinite(rig.driver.GetDeviation(note)));
        }
    }
}

TEST(CChoirDriver, OneNoteIsVoicedInEveryStyle) {
    for (const StyleEntry& entry : StyleList()) {
        SCOPED_TRACE(entry.name);
        DriverRig rig(std::vector<float>{64});
        rig.driver.SetStyle(entry.style);
        rig.driver.SetArrangement(entry.arrangement);
        rig.RunInC();
        EXPECT_EQ(rig.Voices(0)[0], 64);
        EXPECT_NE(rig.Voices(0)[1], -1);
    }
}

TEST(CChoirDriver, TwoThousandNotesAreVoiced) {
    std::vector<float> tune;
    for (int i = 0; i < 2000; ++i) tune.push_back(kTune[static_cast<std::size_t>(i) % kTune.size()]);
    DriverRig rig(EvenNotes(tune, 100, 10));
    rig.RunInC();
    EXPECT_EQ(rig.driver.GetNoteCount(), 2000);
    const RunModel model(rig.driver, WholePitches(tune));
    EXPECT_EQ(rig.AllVoices(), model.rows);
}

// Chords.

TEST(CChoirDriver, ChordsAreSetAndReadBack) {
    DriverRig rig(kTune);
    rig.driver.Run();
    rig.driver.SetChord(2, kFMajor);
    EXPECT_EQ(rig.driver.GetChord(2), kFMajor);
    const std::vector<ChordRecord> before = rig.Chords();
    for (const std::int32_t bad : {INT_MIN, -1, rig.driver.GetNoteCount(), INT_MAX})
        rig.driver.SetChord(bad, kCMajor);
    EXPECT_EQ(rig.Chords(), before);
}

TEST(CChoirDriver, ChordFromOutsideTheScaleIsVoicedWithTheScalesTonesAboveItsRoot) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetChordsDirty(false);
    rig.driver.SetChord(3, {5, 3, kMinorTriad, kNoTetrad}); // F minor: the A flat is not in C major
    rig.driver.Run();
    for (const std::int32_t pitch : rig.Voices(3)) EXPECT_THAT(pitch % 12, testing::AnyOf(5, 9, 0));
}

TEST(CChoirDriver, NoChordHoldsTheVoicesOfTheNoteBefore) {
    DriverRig rig(kTune);
    rig.RunInC();
    rig.driver.SetChordsDirty(false);
    rig.driver.SetChord(4, kNoChord);
    rig.driver.Run();
    VoiceRow before = rig.Voices(3);
    const VoiceRow held = rig.Voices(4);
    EXPECT_EQ(held[0], 67);
    before[0] = held[0];
    EXPECT_EQ(held, before);
}

TEST(CChoirDriver, ChordsForNoteAreThoseThatHoldItsMelodyVoice) {
    DriverRig rig(kTune);
    rig.RunInC();
    for (const std::int32_t n : {INT_MIN, -1, 0, 1, 3, 5, 7, 8, 12, 1000, INT_MAX}) {
        SCOPED_TRACE(n);
        const auto list = rig.driver.ChordsForNote(2, n);
        EXPECT_EQ(static_cast<std::int32_t>(list.size()), n < 0 ? 0 : (n > 7 ? 7 : n));
        ChordRecord expected[7];
        rig.driver.GetEngine().ChordsForPitch(64, expected, 7);
        for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(list[i], expected[i]);
    }
    rig.driver.SetVoicePitch(2, 0, 61);
    EXPECT_TRUE(IsNoChord(rig.driver.ChordsForNote(2, 3)[0])) << "no chord of the scale holds C sharp";
}

TEST(CChoirDriver, AllChordsAreTwoForEachTone) {
    DriverRig rig(kTune);
    rig.RunInC();
    EXPECT_EQ(rig.driver.AllChords().size(), 14U);
    EXPECT_EQ(rig.driver.AllChords()[0], kCMajor);
    rig.driver.SetHarmonyScale(kChromaticScale);
    EXPECT_EQ(rig.driver.AllChords().size(), 24U);
}

TEST(CChoirDriver, ChordToPitchesIsThatOfTheEngine) {
    std::int32_t pitches[4];
    CChoirDriver::ChordToPitches(kFMajor, pitches);
    EXPECT_THAT(pitches, ElementsAre(65, 69, 72, -1));
    CChoirDriver::ChordToPitches(kNoChord, pitches);
    EXPECT_THAT(pitches, ElementsAre(-1, -1, -1, -1));
}

// Positions; the rules themselves are tested with NoteLookup.

TEST(CChoirDriver, FindNoteAtFindsNothingFromTheEndOfTheFileOn) {
    std::vector<NoteRecord> notes = EvenNotes({60, 62});
    AnalysedMelody melody(notes, 0); // the last note ends on the file's length
    CSnapshotStore store;
    CChoirDriver driver(melody.Analyzer(), store);
    driver.Run();
    EXPECT_EQ(driver.FindNoteAt(melody.Length() - 1), 1);
    EXPECT_EQ(driver.FindNoteAt(melody.Length()), -1);
    EXPECT_EQ(driver.FindNearestNote(melody.Length()), 1);
    EXPECT_EQ(driver.FindNextNote(melody.Length()), 1);
    EXPECT_EQ(driver.FindNoteAt(INT_MAX), -1);
    EXPECT_EQ(driver.FindNoteAt(INT_MIN), -1);
    EXPECT_EQ(driver.FindNearestNote(INT_MIN), 0);
}

TEST(CChoirDriver, LookUpsBeginWhereTheLastOneEnded) {
    DriverRig rig(EvenNotes({60, 62, 64}, 1000, 0)); // notes that share their ends
    rig.driver.Run();
    const std::int32_t shared = rig.driver.GetNoteStart(1);
    EXPECT_EQ(rig.driver.FindNoteAt(shared), 0);
    EXPECT_EQ(rig.driver.FindNoteAt(shared + 1), 1);
    EXPECT_EQ(rig.driver.FindNoteAt(shared), 1) << "the cursor is on the second note now";
    EXPECT_EQ(rig.driver.FindNearestNote(0), 0);
    EXPECT_EQ(rig.driver.FindNoteAt(shared), 0);
    EXPECT_EQ(rig.driver.FindNextNote(shared + 600), 1);
    EXPECT_EQ(rig.driver.FindNoteAt(shared), 1);
    EXPECT_EQ(rig.driver.FindNoteAt(INT_MAX), -1);
    EXPECT_EQ(rig.driver.FindNoteAt(shared), 0) << "from nowhere it begins at the first";
}

} // namespace
} // namespace sonorelle::test
