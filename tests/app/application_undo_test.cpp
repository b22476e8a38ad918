#include "app/application_fixture.h"
#include "app/application_gestures.h"

#include "harmony/styles.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

// All that the store holds of the present arrangement.
std::vector<std::byte> Arrangement(CSnapshotStore& store) {
    store.AddSnapshot("present");
    const std::int32_t last = store.GetSnapshotCount() - 1;
    const std::byte* const data = store.GetSnapshotData(last);
    std::vector<std::byte> bytes(data, data + store.GetSnapshotSize(last));
    store.DeleteSnapshot(last);
    return bytes;
}

std::vector<std::int32_t> NoteStarts(CkvovirelaineApp& app) {
    std::vector<std::int32_t> starts;
    for (std::int32_t note = 0; note < app.Driver().GetNoteCount(); ++note)
        starts.push_back(app.Driver().GetNoteStart(note));
    return starts;
}

struct UndoSession : LoadedSession {
    UndoSession() {
        app->SetHostTempo(120, 4, 4);
        app->PushUndo(); // the bottom
    }
};

TEST(ApplicationUndo, TheFirstStateStays) {
    UndoSession session;
    EXPECT_FALSE(session.app->Undo());
    EXPECT_FALSE(session.app->Redo());
    session.app->ChoirPanel().MoveRange(0.1);
    EXPECT_TRUE(session.app->Undo());
    EXPECT_FALSE(session.app->Undo());
    EXPECT_TRUE(session.app->Redo());
    EXPECT_FALSE(session.app->Redo());
}

TEST(ApplicationUndo, SplitAndMergeGoBackAndForthWithViewAndDriverInStep) {
    for (const std::int32_t mode : {0, 1, 2, 4, 8, 16}) {
        SCOPED_TRACE(mode);
        UndoSession session;
        CkvovirelaineApp& app = *session.app;
        app.ChoirPanel().SetMode(mode);
        app.OnChoirSettingsChanged();
        ViewHand hand(app);
        const std::vector<std::int32_t> six = NoteStarts(app);
        hand.Cut(2, 0.5);
        const std::vector<std::int32_t> seven = NoteStarts(app);
        ASSERT_EQ(seven.size(), 7U);
        EXPECT_TRUE(ViewShowsTheDriver(app));
        hand.Cut(5, 0.4);
        const std::vector<std::int32_t> eight = NoteStarts(app);
        ASSERT_EQ(eight.size(), 8U);
        hand.Join(0, 1);
        const std::vector<std::int32_t> joined = NoteStarts(app);
        ASSERT_EQ(joined.size(), 7U);
        EXPECT_TRUE(ViewShowsTheDriver(app));

        for (const auto* expected : {&eight, &seven, &six}) {
            ASSERT_TRUE(app.Undo());
            EXPECT_EQ(NoteStarts(app), *expected);
            EXPECT_TRUE(ViewShowsTheDriver(app));
            for (std::int32_t note = 0; note < app.Driver().GetNoteCount(); ++note)
                EXPECT_GT(app.Driver().GetNotePitch(note), 40) << note;
        }
        for (const auto* expected : {&seven, &eight, &joined}) {
            ASSERT_TRUE(app.Redo());
            EXPECT_EQ(NoteStarts(app), *expected);
            EXPECT_TRUE(ViewShowsTheDriver(app));
        }
    }
}

TEST(ApplicationUndo, EveryElementComesBackAsItWas) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    ViewHand hand(app);
    hand.Cut(2, 0.5); // the elements of the seventh note are there from here on
    std::vector<std::vector<std::byte>> states = {Arrangement(session.store)};
    hand.DragTo(1, 2, 45);
    states.push_back(Arrangement(session.store));
    hand.SwitchNote(3, 1);
    states.push_back(Arrangement(session.store));
    hand.Join(4, 5);
    states.push_back(Arrangement(session.store));
    for (std::size_t i = 1; i < states.size(); ++i) EXPECT_NE(states[i], states[i - 1]) << i;
    for (std::size_t i = states.size() - 1; i-- > 0;) {
        ASSERT_TRUE(app.Undo());
        EXPECT_EQ(Arrangement(session.store), states[i]) << i;
    }
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(app.Redo());
        EXPECT_EQ(Arrangement(session.store), states[i]) << i;
    }
}

TEST(ApplicationUndo, GoesThroughAllModesAndBack) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    constexpr std::int32_t kWay[] = {4, 2, 1, 0x10000, 8, 0x10001, 16, 0};
    for (const std::int32_t mode : kWay) {
        app.ChoirPanel().SetMode(mode);
        app.OnChoirSettingsChanged();
    }
    const auto check = [&](std::int32_t mode) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(app.ChoirPanel().GetMode(), mode);
        const bool live = IsLiveMode(mode);
        EXPECT_EQ(app.Driver().IsLive(), live);
        EXPECT_EQ(app.View().GetNoteEdit(), mode == 2);
        EXPECT_EQ(app.View().GetChordEdit(), mode == 0);
        EXPECT_EQ(app.View().GetChordTips(), mode == 2);
        EXPECT_EQ(app.MelodyPanel().IsActive(), !live && mode != 2);
        EXPECT_EQ(app.SnapshotPanel().IsEnabled(), !live);
        EXPECT_EQ(app.ChoirPanel().AreLiveControlsActive(), live);
        EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), app.Driver().VoiceCount());
        EXPECT_EQ(app.ChoirPanel().GetDriverStyle().style, app.Driver().GetStyle());
        EXPECT_EQ(app.ChoirPanel().GetDriverStyle().arrangement, app.Driver().GetArrangement());
        EXPECT_TRUE(ViewShowsTheDriver(app));
    };
    for (std::size_t i = std::size(kWay) - 1; i-- > 0;) {
        ASSERT_TRUE(app.Undo());
        check(kWay[i]);
    }
    for (std::size_t i = 1; i < std::size(kWay); ++i) {
        ASSERT_TRUE(app.Redo());
        check(kWay[i]);
    }
}

TEST(ApplicationUndo, BringsPanelsBack) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    const float range = app.ChoirPanel().GetVoiceRange();
    const std::int32_t scale = app.ChoirPanel().GetScale();
    const std::int32_t root = app.MelodyPanel().GetRoot();
    app.ChoirPanel().MoveRange(1.0);
    app.ChoirPanel().ChooseScale(scale == 1 ? 2 : 1);
    app.ChoirPanel().ChooseRoot((root + 4) % 12);
    app.MelodyPanel().EnterTempo(77);
    app.ChoirPanel().ChooseStyle(7);
    app.ChoirPanel().ChooseInterval(1, 0);
    while (app.Undo()) {
    }
    EXPECT_EQ(app.ChoirPanel().GetVoiceRange(), range);
    EXPECT_EQ(app.ChoirPanel().GetScale(), scale);
    EXPECT_EQ(app.ChoirPanel().GetRoot(), root);
    EXPECT_EQ(app.ChoirPanel().GetStyle(), 0);
    EXPECT_EQ(app.MelodyPanel().GetTempo(), 120);
    EXPECT_EQ(app.GetMelodyTempo(), 120);
    EXPECT_EQ(app.View().GetTransposeShift(), 0);
    while (app.Redo()) {
    }
    EXPECT_EQ(app.View().GetTransposeShift(), 4);
    EXPECT_EQ(app.ChoirPanel().GetStyle(), 7);
    EXPECT_EQ(app.ChoirPanel().GetInterval(1), 14);
    EXPECT_EQ(app.GetMelodyTempo(), 77);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationUndo, SnapshotsOfOtherStylesAndVoiceCountsAreRecalled) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    for (const std::int32_t row : {2, 3, 4, 7, 1}) {
        app.ChoirPanel().ChooseStyle(row);
        EXPECT_TRUE(app.SnapshotPanel().Add("row " + std::to_string(row)));
    }
    ViewHand(app).Cut(1, 0.5);
    for (const std::int32_t index : {1, 4, 2, 5, 3, 0}) {
        SCOPED_TRACE(index);
        app.SnapshotPanel().Choose(index);
        constexpr std::int32_t kRows[] = {0, 2, 3, 4, 7, 1};
        EXPECT_EQ(app.ChoirPanel().GetStyle(), kRows[index]);
        EXPECT_EQ(app.VoicePanel().GetVisibleVoices(), app.ChoirPanel().GetVoiceCount());
        EXPECT_EQ(app.View().GetVoiceCount(), app.ChoirPanel().GetVoiceCount());
        EXPECT_EQ(app.Driver().GetNoteCount(), 6);
        EXPECT_TRUE(ViewShowsTheDriver(app));
    }
    EXPECT_TRUE(app.Undo()); // a click is a step
    EXPECT_EQ(app.ChoirPanel().GetStyle(), 4);
}

TEST(ApplicationUndo, ARecalledSnapshotBringsItsKeyAndRegion) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    ASSERT_TRUE(app.SnapshotPanel().Add("part", 72, 9000, 20000));
    app.SnapshotPanel().Choose(0);
    EXPECT_EQ(app.GetPlayStart(), 0);
    EXPECT_EQ(app.GetPlayEnd(), session.End());
    app.SnapshotPanel().Choose(1);
    EXPECT_EQ(app.GetPlayStart(), 9000);
    EXPECT_EQ(app.GetPlayEnd(), 20000);
    EXPECT_EQ(app.PlaybackPanel().GetStartMarker(), 9000);
    EXPECT_EQ(app.PlaybackPanel().GetEndMarker(), 20000);
    EXPECT_EQ(app.PlaybackPanel().GetTriggerNote(), 72);
    EXPECT_EQ(app.View().GetMarkerStart(), 9000);
    EXPECT_EQ(app.View().GetMarkerEnd(), 20000);
    ASSERT_TRUE(app.SnapshotPanel().Add("beyond", 5, 40000, std::numeric_limits<std::int32_t>::max()));
    app.SnapshotPanel().Recall(2);
    EXPECT_EQ(app.GetPlayEnd(), session.End());
}

TEST(ApplicationUndo, TheInitialSnapshotIsOlderThanTheTempoAndLeavesIt) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    app.PlaybackPanel().ToggleSync();
    app.MelodyPanel().EnterTempo(60);
    app.SnapshotPanel().Choose(0);
    EXPECT_EQ(app.GetMelodyTempo(), 60);
    EXPECT_EQ(app.MelodyPanel().GetTempo(), 60);
    app.MelodyPanel().EnterTempo(80);
    EXPECT_EQ(app.GetMelodyTempo(), 80);
}

TEST(ApplicationUndo, ByAKeyTheTempoStaysToo) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    app.MelodyPanel().EnterTempo(60);
    app.PlaybackPanel().SetMode(CkvovirelainePlaybackSettings::kMidi);
    app.OnPlaybackChanged();
    std::int32_t key = 40;
    for (const float wrong : {-1.0F, 0.0F, kNotANumber, kInfinity}) {
        const SnapshotElement& tempo = *session.store.GetElement(0);
        std::memcpy(tempo.data, &wrong, sizeof wrong);
        app.SnapshotPanel().SetTriggerNote(++key);
        app.SnapshotPanel().Replace(0);
        app.NoteOn(key, 0, 0);
        EXPECT_EQ(app.GetMelodyTempo(), 60) << wrong;
        app.Poll();
        EXPECT_EQ(app.GetMelodyTempo(), 60) << wrong;
    }
}

TEST(ApplicationUndo, ATranspositionThatIsNoneIsHeld) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    for (const float wrong : {1e30F, -1e30F, kNotANumber, kInfinity}) {
        const SnapshotElement& transpose = *session.store.GetElement(1);
        std::memcpy(transpose.data, &wrong, sizeof wrong);
        app.RefreshFromStore();
        EXPECT_LE(std::fabs(app.View().GetTransposeShift()), CVoiceBank::kLargestTranspose) << wrong;
        EXPECT_EQ(app.View().GetTransposeShift(), app.GetTranspose()) << wrong;
        EXPECT_TRUE(ViewShowsTheDriver(app)) << wrong;
    }
    app.SetTranspose(1e30F);
    EXPECT_EQ(app.GetTranspose(), CVoiceBank::kLargestTranspose);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationUndo, AChangeOfTheModeBringsTheTranspositionOfThePanelsBack) {
    for (const std::int32_t mode : {0, 1, 2, 4, 0x10000, 0x10001}) {
        UndoSession session;
        CkvovirelaineApp& app = *session.app;
        app.SetTranspose(14);
        EXPECT_EQ(app.View().GetTransposeShift(), 14);
        app.ChoirPanel().SetMode(mode);
        app.OnChoirSettingsChanged();
        EXPECT_EQ(app.GetTranspose(), 2) << mode;
        EXPECT_EQ(app.View().GetTransposeShift(), 2) << mode;
        EXPECT_TRUE(ViewShowsTheDriver(app)) << mode;
    }
}

TEST(ApplicationUndo, AnAuditionEndsWithTheNotesThatItBelongsTo) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    ViewHand hand(app);
    hand.Cut(2, 0.5);
    app.View().Press(hand.On(3, 1));
    ASSERT_TRUE(app.IsPlaying());
    ASSERT_NE(app.GetPlayStart(), 0);
    ASSERT_TRUE(app.Undo()); // by a key, with the mouse still down: there is one note less
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_EQ(app.GetPlayStart(), 0);
    EXPECT_EQ(app.GetPlayEnd(), session.End());
    EXPECT_EQ(app.View().GetMarkerStart(), 0);
    app.View().Release(hand.On(3, 1));
    app.SynchronizeToHost(5000, true, true, 64); // the host steers again
    EXPECT_TRUE(app.IsPlaying());
    EXPECT_EQ(app.GetPosition(), 5000);
}

TEST(ApplicationUndo, AnAuditionEndsWithAChangeOfTheMode) {
    UndoSession session;
    CkvovirelaineApp& app = *session.app;
    SpreadVoicesForEditing(app);
    ViewHand hand(app);
    app.View().Press(hand.On(3, 1));
    ASSERT_TRUE(app.IsPlaying());
    app.ChoirPanel().PressLive(true);
    app.View().Release(hand.On(3, 1));
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_EQ(app.GetPlayEnd(), session.End());
    app.SynchronizeToHost(5000, true, true, 64);
    EXPECT_TRUE(app.IsPlaying());
}

} // namespace
} // namespace sonorelle::test
