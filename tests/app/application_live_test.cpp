#include "app/application_fixture.h"
#include "app/application_gestures.h"

#include "harmony/styles.h"

#include <gtest/gtest.h>

#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

struct LiveSession : LoadedSession {
    std::int32_t PitchOf(std::int32_t note, std::int32_t voice) {
        float deviation = 0;
        return app->Driver().GetVoice(note, voice, deviation, gain, false);
    }
    float GainOf(std::int32_t note, std::int32_t voice) {
        PitchOf(note, voice);
        return gain;
    }
    std::vector<std::int32_t> Pitches() {
        std::vector<std::int32_t> pitches;
        for (std::int32_t note = 0; note < app->Driver().GetNoteCount(); ++note)
            for (std::int32_t voice = 0; voice < app->Driver().VoiceCount(); ++voice)
                pitches.push_back(PitchOf(note, voice));
        return pitches;
    }
    void Hold(std::initializer_list<std::int32_t> keys) {
        for (const std::int32_t key : keys) app->NoteOn(key, 0, 0);
    }
    void Release(std::initializer_list<std::int32_t> keys) {
        for (const std::int32_t key : keys) app->NoteOff(key, 0, End());
    }
    // With the keys held from the beginning to the end.
    void PlayAll(std::initializer_list<std::int32_t> keys) {
        app->Rewind();
        app->Start();
        Hold(keys);
        Process(End(), 512);
        Release(keys);
        app->Stop();
    }

    float gain = 0;
};

// Of C sharp major, which the song's key does not have.
constexpr std::initializer_list<std::int32_t> kPlayedChord = {61, 65, 68};
constexpr std::int32_t kPlayedRoot = 1;

bool IsPlayedChord(const ChordRecord& chord) {
    return chord.root == kPlayedRoot && chord.triadType == kMajorTriad;
}

TEST(ApplicationLive, HarmoniesTakeTheIntelligentRowOfAsManyVoices) {
    struct Case {
        std::int32_t row;
        std::int32_t detail;
        std::int32_t liveRow;
    };
    for (const Case& c : {Case{0, 0, 0},
                          {1, 0, 1},
                          {2, 0, 2},
                          {3, 5, 0},
                          {4, 2, 1},
                          {5, 0, 2},
                          {5, 6, 1},
                          {6, 0, 0},
                          {7, 0, 2}}) {
        SCOPED_TRACE(c.row);
        LiveSession session;
        CkvovirelaineApp& app = *session.app;
        app.ChoirPanel().ChooseStyle(c.row);
        app.ChoirPanel().ChooseDetail(c.detail);
        app.ChoirPanel().PressLive(true);
        EXPECT_EQ(app.ChoirPanel().GetMode(), 0x10000);
        EXPECT_EQ(app.ChoirPanel().GetStyle(), c.liveRow);
        EXPECT_EQ(app.Driver().GetStyle(), kStyleIntelligent);
        EXPECT_EQ(app.Driver().GetArrangement(), c.liveRow);
        EXPECT_FALSE(app.Driver().GetManualOnly());
        EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 4 - c.liveRow);
        EXPECT_TRUE(ViewShowsTheDriver(app));
        app.ChoirPanel().PressLive(false); // up again
        EXPECT_EQ(app.ChoirPanel().GetMode(), 0);
        EXPECT_FALSE(app.Driver().IsLive());
        EXPECT_EQ(app.View().GetBackground(), PitchViewBackground::kNormal);
        EXPECT_TRUE(app.SnapshotPanel().IsEnabled());
        EXPECT_TRUE(ViewShowsTheDriver(app));
    }
}

TEST(ApplicationLive, PitchesWantFourVoicesOfTheIntelligentStyle) {
    for (const std::int32_t row : {2, 4, 6}) {
        LiveSession session;
        CkvovirelaineApp& app = *session.app;
        app.ChoirPanel().ChooseStyle(row);
        app.ChoirPanel().SetInterpretation(1);
        app.ChoirPanel().PressLive(true);
        EXPECT_EQ(app.ChoirPanel().GetMode(), 0x10001) << row;
        EXPECT_EQ(app.ChoirPanel().GetStyle(), 0) << row;
        EXPECT_EQ(app.Driver().VoiceCount(), 4) << row;
        EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), 4) << row;
        EXPECT_FALSE(app.Driver().GetManualOnly()) << row;
        EXPECT_TRUE(ViewShowsTheDriver(app)) << row;
    }
}

TEST(ApplicationLive, AfterPlayingPitchesTheStoredVoicesAreBack) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    const std::vector<std::int32_t> stored = session.Pitches();
    app.ChoirPanel().SetInterpretation(1);
    app.ChoirPanel().PressLive(true);
    app.Start();
    session.Hold({50, 54, 57, 61});
    session.Process(session.End(), 512);
    EXPECT_NE(session.Pitches(), stored);
    app.ChoirPanel().PressEdit(true);
    EXPECT_EQ(session.Pitches(), stored);
    EXPECT_TRUE(ViewShowsTheDriver(app));
    EXPECT_EQ(session.GainOf(2, 2), 1);
}

TEST(ApplicationLive, WhatIsPlayedReachesTheViewAtTheNextPoll) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().PressLive(true);
    app.Start();
    session.Hold(kPlayedChord);
    session.Process(app.Driver().GetNoteStart(3) + 1000, 512);
    app.Poll();
    for (std::int32_t note = 1; note <= 3; ++note) {
        for (std::int32_t voice = 0; voice < 4; ++voice) {
            EXPECT_EQ(app.View().GetNotePitch(note, voice), static_cast<float>(session.PitchOf(note, voice)));
            EXPECT_EQ(app.View().GetNote(note, voice)->gain, 1);
        }
    }
    EXPECT_FALSE(app.View().GetChordDisplay().empty());
    EXPECT_EQ(app.View().GetNote(4, 1)->gain, 0); // still to come

    // The note that sounds changes with the keys, and the view with it.
    const double now = app.GetExactPosition();
    for (const std::int32_t key : kPlayedChord) app.NoteOff(key, 0, now);
    session.Process(128, 64);
    app.Poll();
    EXPECT_EQ(app.View().GetNote(3, 1)->gain, 0);
    for (const std::int32_t key : {60, 63, 67}) app.NoteOn(key, 0, now);
    session.Process(128, 64);
    app.Poll();
    EXPECT_EQ(app.View().GetNote(3, 1)->gain, 1);
    EXPECT_EQ(app.View().GetNotePitch(3, 2), static_cast<float>(session.PitchOf(3, 2)));
}

TEST(ApplicationLive, ATakeBecomesTheArrangement) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().PressLive(true);
    app.ChoirPanel().ToggleRecord();
    EXPECT_TRUE(app.Driver().GetRecordLive());
    session.PlayAll(kPlayedChord);
    app.ChoirPanel().ToggleRecord();
    for (std::int32_t note = 1; note < 6; ++note) {
        EXPECT_TRUE(IsPlayedChord(app.Driver().GetChord(note))) << note; // right behind a load, too
    }
    app.ChoirPanel().PressEdit(true);
    EXPECT_FALSE(app.Driver().IsLive());
    for (std::int32_t note = 1; note < 6; ++note) {
        EXPECT_TRUE(IsPlayedChord(app.Driver().GetChord(note))) << note;
        EXPECT_EQ(session.GainOf(note, 1), 1) << note;
    }
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationLive, ATakeOfPitchesMutesWhatWasNotPlayed) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().SetInterpretation(1);
    app.ChoirPanel().PressLive(true);
    app.ChoirPanel().ToggleRecord();
    session.PlayAll({55, 59});
    app.ChoirPanel().PressEdit(true);
    EXPECT_EQ(session.GainOf(3, 0), 1);
    EXPECT_EQ(session.GainOf(3, 1), 1);
    EXPECT_EQ(session.GainOf(3, 2), 0);
    EXPECT_EQ(session.GainOf(3, 3), 0);
    EXPECT_EQ(session.PitchOf(3, 0) + session.PitchOf(3, 1), 55 + 59);
    EXPECT_TRUE(ViewShowsTheDriver(app));
    app.ChoirPanel().SetRecording(false);
    EXPECT_TRUE(app.Undo());            // the step before the take
    EXPECT_EQ(session.GainOf(3, 2), 0); // live: nothing is held
    app.ChoirPanel().PressEdit(true);
    EXPECT_EQ(session.GainOf(3, 2), 1);
}

TEST(ApplicationLive, ATakeUnderWayIsNotDisturbed) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().PressLive(true);
    app.ChoirPanel().ToggleRecord();
    app.Start();
    session.Hold(kPlayedChord);
    session.Process(app.Driver().GetNoteStart(2) + 1000, 512);
    constexpr std::int32_t kByHand = 43; // a run would put another pitch there
    app.Driver().SetVoicePitch(5, 3, kByHand);
    app.OnChoirSettingsChanged();
    app.Driver().SetLiveBypass(true);
    EXPECT_EQ(session.PitchOf(5, 3), kByHand);
    app.Driver().SetLiveBypass(false);
    EXPECT_TRUE(app.Driver().GetRecordLive());
    app.Stop();
    app.OnChoirSettingsChanged();
    app.Driver().SetLiveBypass(true);
    EXPECT_NE(session.PitchOf(5, 3), kByHand);
    app.Driver().SetLiveBypass(false);
}

TEST(ApplicationLive, UndoDuringATakeBringsBackWhatWasThere) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    const std::vector<std::int32_t> stored = session.Pitches();
    app.ChoirPanel().SetInterpretation(1);
    app.ChoirPanel().PressLive(true);
    app.ChoirPanel().ToggleRecord();
    session.PlayAll({55});
    ASSERT_TRUE(app.Undo());
    EXPECT_EQ(app.ChoirPanel().GetMode(), 2);
    EXPECT_FALSE(app.Driver().GetRecordLive());
    EXPECT_EQ(session.Pitches(), stored);
    for (std::int32_t note = 0; note < 6; ++note)
        for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_EQ(session.GainOf(note, voice), 1);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationLive, KeysHeldWhileLiveIsLeftAreForgotten) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().SetInterpretation(1);
    app.ChoirPanel().PressLive(true);
    for (std::int32_t i = 0; i < 3; ++i) {
        session.Hold({40, 41, 42, 43, 44, 45, 46, 47}); // all places
        app.ChoirPanel().PressLive(false);
        session.Release({40, 41, 42, 43, 44, 45, 46, 47}); // nobody hears it
        app.ChoirPanel().PressLive(true);
    }
    session.PlayAll({55, 59});
    EXPECT_EQ(session.PitchOf(3, 0) + session.PitchOf(3, 1), 55 + 59);
}

TEST(ApplicationLive, KeysAsTriggersEndLiveInEdit) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().PressLive(true);
    app.PlaybackPanel().PressMidi();
    EXPECT_EQ(app.ChoirPanel().GetMode(), 2);
    EXPECT_FALSE(app.Driver().IsLive());
    EXPECT_TRUE(app.View().GetNoteEdit());
    app.ChoirPanel().PressLive(true);
    EXPECT_EQ(app.ChoirPanel().GetMode(), 2);
    app.Undo(); // to the live mode, which is not allowed now
    EXPECT_EQ(app.ChoirPanel().GetMode(), 2);
    EXPECT_FALSE(app.Driver().IsLive());
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationLive, UndoIntoALiveModeGoesLiveAgain) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    app.PushUndo();
    for (const std::int32_t interpretation : {0, 1}) {
        app.ChoirPanel().ChooseStyle(1);
        app.ChoirPanel().SetInterpretation(interpretation);
        app.ChoirPanel().PressLive(true);
        app.ChoirPanel().PressEdit(true);
        ASSERT_TRUE(app.Undo());
        EXPECT_EQ(app.ChoirPanel().GetMode(), 0x10000 + interpretation);
        EXPECT_TRUE(app.Driver().IsLive());
        EXPECT_EQ(app.View().GetBackground(), PitchViewBackground::kLive);
        EXPECT_FALSE(app.View().GetNoteEdit());
        EXPECT_FALSE(app.SnapshotPanel().IsEnabled());
        session.PlayAll(interpretation == 0 ? kPlayedChord : std::initializer_list<std::int32_t>{55, 59});
        EXPECT_GT(session.GainOf(3, 1), 0);
        app.Poll();
        app.ChoirPanel().PressLive(false);
    }
}

TEST(ApplicationLive, RunsOfTheLiveModesKeepTheChordsThatTheUserChose) {
    LiveSession session;
    CkvovirelaineApp& app = *session.app;
    const ChordRecord strange = {1, 3, kAugmentedTriad, kNoTetrad};
    app.SetChord(2, strange);
    app.ChoirPanel().PressLive(true);
    EXPECT_EQ(app.Driver().GetChord(2), strange);
    app.ChoirPanel().ChooseInterpretation(1);
    EXPECT_EQ(app.Driver().GetChord(2), strange);
    app.ChoirPanel().PressEdit(true);
    EXPECT_TRUE(app.Undo());
    EXPECT_EQ(app.Driver().GetChord(2), strange);
}

} // namespace
} // namespace sonorelle::test
