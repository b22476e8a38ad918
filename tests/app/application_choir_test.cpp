#include "app/application_fixture.h"
#include "app/application_gestures.h"

#include "harmony/scales.h"
#include "harmony/styles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

struct ModeRow {
    std::int32_t mode;
    bool noteEdit;
    bool chordEdit;
    bool chordTips; // of four voices
    PitchViewBackground background;
    bool live;
    std::int32_t style;
    bool manualOnly;
};

constexpr PitchViewBackground kNormal = PitchViewBackground::kNormal;
constexpr PitchViewBackground kEdit = PitchViewBackground::kEdit;
constexpr PitchViewBackground kLive = PitchViewBackground::kLive;

// clang-format off
constexpr ModeRow kModes[] = {
    // mode    note   chord  tips   background live   style                manual
    {0,        false, true,  false, kNormal,   false, kStyleIntelligent,   false},
    {1,        false, false, true,  kNormal,   false, kStyleParallel,      true },
    {2,        true,  false, true,  kEdit,     false, kStyleIntelligent,   false},
    {3,        true,  false, true,  kEdit,     false, kStyleIntelligent,   false},
    {4,        false, false, true,  kNormal,   false, kStyleBlock,         false},
    {8,        false, false, true,  kNormal,   false, kStyleFauxbourdon,   false},
    {16,       false, false, false, kNormal,   false, kStyleOrganum,       false},
    {0x10000,  false, false, false, kLive,     true,  kStyleIntelligent,   false},
    {0x10001,  false, false, false, kLive,     true,  kStyleIntelligent,   false},
};
// clang-format on

std::vector<std::int32_t> PitchesOf(CkvovirelaineApp& app) {
    std::vector<std::int32_t> pitches;
    for (std::int32_t note = 0; note < app.Driver().GetNoteCount(); ++note) {
        for (std::int32_t voice = 0; voice < app.Driver().VoiceCount(); ++voice) {
            float deviation = 0;
            float gain = 0;
            pitches.push_back(app.Driver().GetVoice(note, voice, deviation, gain, false));
        }
    }
    return pitches;
}

// A chord that no scale of the song holds, so that no search finds it.
constexpr ChordRecord kStrangeChord = {1, 3, kAugmentedTriad, kNoTetrad};

TEST(ApplicationChoir, EachModeLetsTheUserDoWhatBelongsToIt) {
    for (const ModeRow& row : kModes) {
        SCOPED_TRACE(row.mode);
        LoadedSession session;
        CkvovirelaineApp& app = *session.app;
        app.ChoirPanel().SetMode(row.mode);
        app.OnChoirSettingsChanged();
        EXPECT_EQ(app.ChoirPanel().GetMode(), row.mode);
        EXPECT_EQ(app.View().GetNoteEdit(), row.noteEdit);
        EXPECT_EQ(app.View().GetChordEdit(), row.chordEdit);
        EXPECT_EQ(app.View().GetChordTips(), row.chordTips);
        EXPECT_EQ(app.View().GetBackground(), row.background);
        EXPECT_EQ(app.MelodyPanel().IsActive(), row.background == kNormal);
        EXPECT_EQ(app.ChoirPanel().AreLiveControlsActive(), row.live);
        EXPECT_EQ(app.SnapshotPanel().IsEnabled(), !row.live);
        EXPECT_EQ(app.Driver().IsLive(), row.live);
        EXPECT_EQ(app.Driver().GetStyle(), row.style);
        EXPECT_EQ(app.Driver().GetManualOnly(), row.manualOnly);
        EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), app.Driver().VoiceCount());
        EXPECT_FALSE(app.View().NeedsRebuild());
        EXPECT_TRUE(ViewShowsTheDriver(app));
    }
}

TEST(ApplicationChoir, TheIntelligentPathLoadsTheDriverFromThePanels) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.Driver().SetAutoKey(true);
    app.ChoirPanel().ChooseStyle(1);
    app.ChoirPanel().MoveRange(0.3);
    app.ChoirPanel().MoveArrangement(2);
    EXPECT_EQ(app.Driver().GetArrangement(), kThreeVoices);
    EXPECT_EQ(app.Driver().GetSpread(), 0.3F);
    EXPECT_EQ(app.Driver().GetVoiceRange(), 2);
    EXPECT_FALSE(app.Driver().GetAutoKey());
    EXPECT_FALSE(app.Driver().GetChordsDirty());
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 3);
    EXPECT_FALSE(app.View().IsVoiceEnabled(3));
    app.ChoirPanel().ToggleSnap();
    EXPECT_FALSE(app.Driver().GetSnapToScale());
    EXPECT_FALSE(app.Driver().GetMapScale());
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationChoir, TheManualPathSingsTheIntervalsOfThePanel) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().ChooseStyle(6);
    for (std::int32_t voice = 0; voice < 4; ++voice)
        app.ChoirPanel().ChooseInterval(voice, 14 - (7 + voice)); // prime, second, third, fourth up
    for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_EQ(app.Driver().GetManualInterval(voice), voice);
    const std::vector<std::int32_t> pitches = PitchesOf(app);
    for (std::size_t i = 0; i < pitches.size(); i += 4) {
        for (std::size_t voice = 1; voice < 4; ++voice)
            EXPECT_GT(pitches[i + voice], pitches[i + voice - 1]) << i;
    }
    app.ChoirPanel().ChooseStyle(7);
    EXPECT_EQ(app.Driver().VoiceCount(), 2);
    EXPECT_FALSE(app.View().GetChordTips());
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationChoir, TheMixedPathTakesStyleAndDetail) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().ChooseStyle(6); // leaves "manual only" behind
    app.ChoirPanel().ChooseStyle(3);
    app.ChoirPanel().ChooseDetail(4);
    EXPECT_EQ(app.Driver().GetStyle(), kStyleBlock);
    EXPECT_EQ(app.Driver().GetArrangement(), kDrop2);
    app.ChoirPanel().ChooseStyle(4);
    app.ChoirPanel().ChooseDetail(3);
    EXPECT_EQ(app.Driver().GetStyle(), kStyleFauxbourdon);
    EXPECT_EQ(app.Driver().GetArrangement(), kDescantIntelligent);
    app.ChoirPanel().ChooseStyle(5);
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 2);
    EXPECT_FALSE(app.View().GetChordTips());
    app.ChoirPanel().ChooseDetail(6);
    EXPECT_EQ(app.Driver().GetArrangement(), kOctaveAround);
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 3);
    EXPECT_TRUE(app.View().GetChordTips());
    EXPECT_FALSE(app.Driver().GetManualOnly());
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationChoir, AModeThatNobodyKnowsRunsTheMixedPathAndStays) {
    for (const std::int32_t mode : {5, -1, 0x10002, std::numeric_limits<std::int32_t>::max(),
                                    std::numeric_limits<std::int32_t>::min()}) {
        LoadedSession session;
        session.app->ChoirPanel().SetMode(mode);
        session.app->OnChoirSettingsChanged();
        EXPECT_EQ(session.app->View().GetBackground(), kNormal) << mode;
        EXPECT_FALSE(session.app->View().GetChordEdit()) << mode;
        EXPECT_TRUE(ViewShowsTheDriver(*session.app)) << mode;
    }
}

TEST(ApplicationChoir, AChangeOfTheVoiceRangeMakesTheVoicesAnewAndKeepsTheChords) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().MoveRange(0.0); // the first run of the panel finds the chords
    const std::vector<std::int32_t> close = PitchesOf(app);
    app.SetChord(2, kStrangeChord);
    app.ChoirPanel().MoveRange(1.0);
    EXPECT_NE(PitchesOf(app), close);
    EXPECT_EQ(app.Driver().GetChord(2), kStrangeChord);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationChoir, ScaleSnapAndMelodyKeyFindTheChordsAnew) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().MoveRange(0.0);
    const auto isFoundAnew = [&](auto&& change) {
        app.SetChord(2, kStrangeChord);
        EXPECT_EQ(app.Driver().GetChord(2), kStrangeChord);
        change();
        return !(app.Driver().GetChord(2) == kStrangeChord) && ViewShowsTheDriver(app);
    };
    EXPECT_TRUE(isFoundAnew([&] { app.ChoirPanel().ToggleSnap(); }));
    const std::int32_t scale = app.ChoirPanel().GetScale();
    EXPECT_TRUE(isFoundAnew([&] { app.ChoirPanel().ChooseScale(scale == 1 ? 2 : 1); }));
    EXPECT_TRUE(
        isFoundAnew([&] { app.MelodyPanel().ChooseScale(app.MelodyPanel().GetScale() == 3 ? 4 : 3); }));
    EXPECT_TRUE(isFoundAnew([&] { app.MelodyPanel().ChooseRoot((app.MelodyPanel().GetRoot() + 5) % 12); }));
    EXPECT_FALSE(isFoundAnew([&] { app.ChoirPanel().ChooseRoot((app.ChoirPanel().GetRoot() + 5) % 12); }));
}

TEST(ApplicationChoir, ACorrectedMelodyKeyIsTakenByTheHarmony) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().ChooseRoot((app.ChoirPanel().GetRoot() + 3) % 12);
    EXPECT_EQ(app.View().GetTransposeShift(), 3);
    app.MelodyPanel().ChooseRoot((app.MelodyPanel().GetRoot() + 1) % 12);
    EXPECT_EQ(app.ChoirPanel().GetRoot(), app.MelodyPanel().GetRoot());
    EXPECT_EQ(app.Driver().GetRoot(), app.MelodyPanel().GetRoot());
    EXPECT_EQ(app.View().GetTransposeShift(), 0);
    app.MelodyPanel().ChooseScale(7);
    EXPECT_EQ(app.ChoirPanel().GetScale(), 7);
    EXPECT_EQ(app.Driver().GetHarmonyScale(), 7);
    EXPECT_EQ(app.Driver().GetMelodyScale(), 7);
}

TEST(ApplicationChoir, ARootOfTheChoirMovesTheSoundTheShortWayAndNotTheKey) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    const std::int32_t root = app.MelodyPanel().GetRoot();
    const std::vector<std::int32_t> pitches = PitchesOf(app);
    for (std::int32_t step = 1; step < 12; ++step) {
        app.ChoirPanel().ChooseRoot((root + step) % 12);
        const float shift = app.View().GetTransposeShift();
        EXPECT_EQ((static_cast<std::int32_t>(shift) + 12 - step) % 12, 0) << step;
        EXPECT_LE(std::abs(shift), 6) << step;
        EXPECT_EQ(app.Driver().GetRoot(), root);
        EXPECT_EQ(PitchesOf(app), pitches) << step;
        EXPECT_EQ(app.View().GetNote(0, 0)->pitch, static_cast<float>(pitches[0]) + shift);
        EXPECT_TRUE(ViewShowsTheDriver(app)) << step;
    }
}

TEST(ApplicationChoir, TheTempoOfTheMelodyIsAllThatSuchAChangeDoes) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    EXPECT_TRUE(app.MelodyPanel().EnterTempo(90));
    EXPECT_EQ(app.GetMelodyTempo(), CkvovirelaineApp::kUnknownTempo); // the host has not told one yet
    app.SetHostTempo(100, 4, 4);
    EXPECT_EQ(app.MelodyPanel().GetTempo(), 100);
    app.PushUndo();
    const std::int32_t steps = session.store.GetUndoIndex();
    EXPECT_TRUE(app.MelodyPanel().PressRatio(kTempoDouble));
    EXPECT_EQ(app.GetMelodyTempo(), 200);
    EXPECT_EQ(app.GetHostTempo(), 100);
    EXPECT_EQ(session.store.GetUndoIndex(), steps);
    app.MelodyPanel().PressRatio(kTempoDouble);
    app.MelodyPanel().PressRatio(kTempoDouble);
    app.MelodyPanel().PressRatio(kTempoDouble);
    EXPECT_EQ(app.GetMelodyTempo(), 999);
}

TEST(ApplicationChoir, ASmallerChoirHidesTheStripsOfTheOthers) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().MoveArrangement(3);
    app.ChoirPanel().ChooseStyle(2);
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 2);
    EXPECT_EQ(app.ChoirPanel().GetMostVoicesAbove(), 1);
    EXPECT_EQ(app.Driver().GetVoiceRange(), 1);
    EXPECT_TRUE(app.View().IsVoiceEnabled(1));
    EXPECT_FALSE(app.View().IsVoiceEnabled(2));
    app.ChoirPanel().ChooseStyle(0);
    EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 4);
    EXPECT_EQ(app.Driver().GetVoiceRange(), 3);
    EXPECT_TRUE(app.View().IsVoiceEnabled(3));
}

TEST(ApplicationChoir, EachChangeIsOneStepAndOneThatChangesNothingIsNone) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().MoveRange(0.2);
    const std::int32_t steps = session.store.GetUndoIndex();
    app.ChoirPanel().ChooseStyle(3);
    EXPECT_EQ(session.store.GetUndoIndex(), steps + 1);
    app.OnChoirSettingsChanged();
    EXPECT_EQ(session.store.GetUndoIndex(), steps + 1);
}

TEST(ApplicationChoir, TheViewIsGivenTheHarmonyScaleInRisingOrder) {
    LoadedSession session;
    CkvovirelaineApp& app = *session.app;
    app.View().SetShowKeyRow(true);
    app.MelodyPanel().ChooseRoot(2);
    app.ChoirPanel().ChooseScale(0);
    std::vector<std::int32_t> inScale;
    for (std::int32_t tone = 0; tone < 12; ++tone)
        if (app.Driver().IsInScale(tone)) inScale.push_back(tone);
    EXPECT_THAT(inScale, testing::ElementsAre(1, 2, 4, 6, 7, 9, 11)); // D major
}

TEST(ApplicationChoir, WithoutARecordingNothingHappens) {
    AnsweringToolkit toolkit;
    CCriticalSection lock;
    CSnapshotStore store;
    CkvovirelaineApp app({toolkit, lock, nullptr, store});
    app.Run();
    app.ChoirPanel().ChooseStyle(5);
    app.ChoirPanel().PressLive(true);
    app.MelodyPanel().ChooseRoot(4);
    app.MelodyPanel().EnterTempo(77);
    EXPECT_EQ(store.GetUndoCount(), 0);
    EXPECT_FALSE(app.Driver().IsLive());
    EXPECT_FALSE(app.Undo());
    EXPECT_FALSE(app.Redo());
}

} // namespace
} // namespace sonorelle::test
