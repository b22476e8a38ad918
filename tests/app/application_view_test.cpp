#include "app/application_fixture.h"
#include "app/application_gestures.h"

#include "app/chord_window.h"
#include "harmony/chord_names.h"

#include <gtest/gtest.h>

#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

struct ViewSession : LoadedSession {
    ViewSession() : hand(*app) { app->PushUndo(); }
    std::int32_t PitchOf(std::int32_t note, std::int32_t voice) {
        float deviation = 0;
        return app->Driver().GetVoice(note, voice, deviation, gain, false);
    }
    float GainOf(std::int32_t note, std::int32_t voice) {
        PitchOf(note, voice);
        return gain;
    }
    std::int32_t Steps() const { return store.GetUndoIndex(); }

    ViewHand hand;
    float gain = 0;
};

struct EditSession : ViewSession {
    EditSession() {
        SpreadVoicesForEditing(*app);
        app->View().ResetView();
    }
};

TEST(ApplicationView, TheChordMenuOffersTriadsSeventhsAndAll) {
    ViewSession session;
    session.hand.Click(session.hand.OnChordOf(2));
    ASSERT_EQ(session.toolkit.menus.size(), 1U);
    const std::vector<PopupItem>& items = session.toolkit.menus[0].items;
    ASSERT_EQ(items.size(), 5U);
    const auto ofNote = session.app->Driver().ChordsForNote(2, 7);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(items[i].text, ChordName(ofNote[i], false));
        EXPECT_EQ(items[i].id, static_cast<std::int32_t>(i));
    }
    EXPECT_EQ(items[3].text, "7th");
    EXPECT_EQ(items[3].id, PopupItem::kNothing);
    EXPECT_EQ(items[3].children.size(), 4U);
    EXPECT_EQ(items[4].text, "all");
    EXPECT_EQ(items[4].children.size(), 14U);
    EXPECT_EQ(session.Steps(), 1);
}

TEST(ApplicationView, TheChordMenuIsWrittenAsTheChordDisplayTransposed) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().ChooseRoot((app.MelodyPanel().GetRoot() + 10) % 12);
    ASSERT_EQ(app.View().GetTransposeShift(), -2);
    session.hand.Click(session.hand.OnChordOf(2));
    const auto ofNote = app.Driver().ChordsForNote(2, 7);
    const std::string shown = session.toolkit.menus.back().items[0].text;
    EXPECT_EQ(shown, ChordDisplayName(ofNote[0].root + 10, TypeOf(ofNote[0]), false));
    EXPECT_NE(shown, ChordName(ofNote[0], false));
}

TEST(ApplicationView, AChosenChordIsSungShownAndOneStep) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    for (const std::int32_t choice : {0, 1, 2, 3, 6, 7, 20}) {
        SCOPED_TRACE(choice);
        const auto ofNote = app.Driver().ChordsForNote(2, 7);
        std::vector<ChordRecord> chords(ofNote.begin(), ofNote.end());
        const auto all = app.Driver().AllChords();
        chords.insert(chords.end(), all.begin(), all.end());
        const ChordRecord chosen = chords[static_cast<std::size_t>(choice)];
        const ChordRecord other = app.Driver().GetChord(3);
        const bool isNew = !(app.Driver().GetChord(2) == chosen);
        const std::int32_t steps = session.Steps();
        session.toolkit.menuChoice = choice;
        session.hand.Click(session.hand.OnChordOf(2));
        EXPECT_EQ(app.Driver().GetChord(2), chosen); // also as the first thing after a load
        EXPECT_EQ(app.Driver().GetChord(3), other);
        EXPECT_EQ(session.Steps(), isNew ? steps + 1 : steps);
        EXPECT_TRUE(ViewShowsTheDriver(app));
    }
    EXPECT_FALSE(app.View().GetChordDisplay().empty());
}

TEST(ApplicationView, AChordMenuThatIsLeftOrAnswersNonsenseChangesNothing) {
    ViewSession session;
    const ChordRecord before = session.app->Driver().GetChord(2);
    for (const std::int32_t choice : {-1, 21, 1000000, -5}) {
        session.toolkit.menuChoice = choice;
        session.hand.Click(session.hand.OnChordOf(2));
        EXPECT_EQ(session.app->Driver().GetChord(2), before) << choice;
    }
    session.app->SetChord(-1, before);
    session.app->SetChord(1 << 30, before);
    EXPECT_EQ(session.app->Driver().GetChord(2), before);
    EXPECT_TRUE(ViewShowsTheDriver(*session.app));
}

TEST(ApplicationView, ChordsAreChosenInTheIntelligentModeAlone) {
    ViewSession session;
    session.app->ChoirPanel().ChooseStyle(3);
    session.app->View().SetChordEdit(true); // whatever the face does
    session.hand.Click(session.hand.OnChordOf(2));
    EXPECT_TRUE(session.toolkit.menus.empty());
}

TEST(ApplicationView, ADraggedNoteIsWrittenHeardAndOneStep) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    const std::int32_t steps = session.Steps();
    const PointerEvent from = session.hand.On(2, 1);
    app.View().Press(from);
    EXPECT_TRUE(app.IsPlaying());
    EXPECT_EQ(app.GetPlayStart(), app.Driver().GetNoteStart(2));
    session.Process(640, 64);
    EXPECT_GT(app.GetPosition(), app.GetPlayStart());
    app.View().Drag(session.hand.AtPitch(from, 65));
    EXPECT_EQ(session.PitchOf(2, 1), 65);
    EXPECT_EQ(app.GetPosition(), app.GetPlayStart()); // from its beginning again
    EXPECT_EQ(session.Steps(), steps);
    app.View().Drag(session.hand.AtPitch(from, 66));
    EXPECT_EQ(session.PitchOf(2, 1), 66);
    EXPECT_FALSE(app.View().GetChordDisplay().empty());
    app.View().Release(session.hand.AtPitch(from, 66));
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_EQ(app.GetPlayStart(), 0);
    EXPECT_EQ(app.GetPlayEnd(), session.End());
    EXPECT_EQ(session.PitchOf(2, 1), 66);
    EXPECT_EQ(session.Steps(), steps + 1);
    EXPECT_TRUE(app.Undo());
    EXPECT_EQ(session.PitchOf(2, 1), 58);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationView, ADragThatLandsOnTheSamePitchChangesNothing) {
    EditSession session;
    const std::int32_t steps = session.Steps();
    session.hand.DragTo(2, 1, 58);
    EXPECT_EQ(session.PitchOf(2, 1), 58);
    EXPECT_EQ(session.Steps(), steps);
    EXPECT_FALSE(session.app->IsPlaying());
}

TEST(ApplicationView, WithATranspositionADragWritesThePitchOfTheMelodysKey) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().ChooseRoot((app.MelodyPanel().GetRoot() + 4) % 12);
    ASSERT_EQ(app.View().GetTransposeShift(), 4);
    SpreadVoicesForEditing(app);
    session.hand.DragTo(2, 1, 64);
    EXPECT_EQ(session.PitchOf(2, 1), 64);
    EXPECT_EQ(app.View().GetNote(2, 1)->pitch, 68);
}

TEST(ApplicationView, NotesThatAreDraggedTogetherAreOneStep) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    app.View().Press(session.hand.On(1, 1, PointerEvent::kShift));
    app.View().Release(session.hand.On(1, 1, PointerEvent::kShift));
    app.View().Press(session.hand.On(4, 2, PointerEvent::kShift));
    app.View().Release(session.hand.On(4, 2, PointerEvent::kShift));
    const std::int32_t steps = session.Steps();
    session.hand.DragTo(2, 3, session.PitchOf(2, 3) + 3, PointerEvent::kShift);
    EXPECT_EQ(session.PitchOf(1, 1), 60);
    EXPECT_EQ(session.PitchOf(4, 2), 59);
    EXPECT_EQ(session.PitchOf(2, 3), 53);
    EXPECT_EQ(session.Steps(), steps + 1);
    EXPECT_TRUE(app.Undo());
    EXPECT_EQ(session.PitchOf(1, 1), 57);
    EXPECT_EQ(session.PitchOf(4, 2), 56);
    EXPECT_EQ(session.PitchOf(2, 3), 50);
    EXPECT_TRUE(ViewShowsTheDriver(app));
    session.hand.DragTo(3, 1, 62); // alone again
    EXPECT_EQ(session.Steps(), steps + 1);
}

TEST(ApplicationView, AnAuditionWhileStoppedPutsThePositionBack) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    app.SetPosition(12345);
    session.app->View().Press(session.hand.On(4, 0));
    EXPECT_EQ(app.GetPosition(), app.Driver().GetNoteStart(4));
    const Outputs heard = session.Process(2048, 64);
    EXPECT_GT(*std::max_element(heard[0].begin(), heard[0].end()), 0.01F);
    app.Poll();
    EXPECT_EQ(app.View().GetPlayPosition(), 12345); // the cursor does not follow it
    session.app->View().Release(session.hand.On(4, 0));
    EXPECT_EQ(app.GetPosition(), 12345);
    EXPECT_FALSE(app.IsPlaying());
}

TEST(ApplicationView, AnAuditionEndsWithItsNoteByItself) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    session.app->View().Press(session.hand.On(0, 0));
    const std::int32_t length = app.Driver().GetNoteLength(0);
    const Outputs heard = session.Process(length + 8192, 64);
    EXPECT_GT(*std::max_element(heard[0].begin(), heard[0].begin() + length), 0.01F);
    EXPECT_EQ(*std::max_element(heard[0].end() - 4096, heard[0].end()), 0.0F);
    session.app->View().Release(session.hand.On(0, 0));
    EXPECT_EQ(app.GetPosition(), 0);
}

TEST(ApplicationView, WhilePlayingNoNoteIsHeardAlone) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    app.Start();
    session.Process(1000, 64);
    session.app->View().Press(session.hand.On(4, 0));
    EXPECT_EQ(app.GetPosition(), 1000);
    EXPECT_EQ(app.GetPlayStart(), 0);
    session.app->View().Release(session.hand.On(4, 0));
    EXPECT_TRUE(app.IsPlaying());
    session.hand.DragTo(2, 1, 65);
    EXPECT_EQ(session.PitchOf(2, 1), 65);
    EXPECT_TRUE(app.IsPlaying());
    EXPECT_EQ(app.GetPosition(), 1000);
}

TEST(ApplicationView, InLiveModeNoNoteIsHeardAlone) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    app.ChoirPanel().PressLive(true);
    app.View().SetNoteEdit(true); // whatever the face does
    app.View().Press(session.hand.On(4, 0));
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_EQ(app.GetPlayStart(), 0);
    app.View().Release(session.hand.On(4, 0));
}

TEST(ApplicationView, AnAuditionIsNotSteeredByTheHost) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    session.app->View().Press(session.hand.On(4, 0));
    const std::int32_t start = app.GetPosition();
    app.SynchronizeToHost(100, true, true, 64);
    EXPECT_EQ(app.GetPosition(), start);
    app.SynchronizeToHost(100, false, true, 64);
    EXPECT_TRUE(app.IsPlaying());
    session.app->View().Release(session.hand.On(4, 0));
    app.SynchronizeToHost(164, true, false, 64);
    EXPECT_TRUE(app.IsPlaying());
    EXPECT_EQ(app.GetPosition(), 164);
}

TEST(ApplicationView, ARegionThatIsDraggedGoesToPlaybackAndPanels) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    const PixelRect handle = app.View().DrawMarkers()[0].handle;
    const PointerEvent from{handle.x + handle.width / 2, handle.y + handle.height / 2, PointerButton::kLeft,
                            0, 0};
    PointerEvent to = from;
    to.x += 300;
    app.View().Press(from);
    app.View().Drag(to);
    app.View().Release(to);
    EXPECT_GT(app.GetPlayStart(), 1000);
    EXPECT_EQ(app.GetPlayStart(), app.View().GetMarkerStart());
    EXPECT_EQ(app.GetPlayEnd(), session.End());
    EXPECT_EQ(app.PlaybackPanel().GetStartMarker(), app.GetPlayStart());
    std::int32_t start = 0;
    std::int32_t end = 0;
    app.SnapshotPanel().GetRegion(start, end);
    EXPECT_EQ(start, app.GetPlayStart());
    EXPECT_EQ(end, session.End());

    PointerEvent menu = to;
    menu.button = PointerButton::kRight;
    app.View().RightClick(menu);
    app.View().ChooseMenuEntry(CkvoPitchView::kMarkerReset);
    EXPECT_EQ(app.GetPlayStart(), 0);
}

TEST(ApplicationView, ARegionDraggedDuringAnAuditionCountsAfterIt) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    session.app->View().Press(session.hand.On(4, 0));
    const std::int32_t start = app.GetPlayStart();
    const PixelRect handle = app.View().DrawMarkers()[1].handle;
    const PointerEvent menu{handle.x + handle.width / 2, handle.y + handle.height / 2, PointerButton::kRight,
                            0, 0};
    // The view lets go of the note for any other gesture, so that the region is moved by a second hand.
    auto callback = [&] { return app.View().RightClick(menu); };
    ASSERT_FALSE(callback().items.empty());
    EXPECT_FALSE(app.IsPlaying());
    EXPECT_NE(app.GetPlayStart(), start);
    app.View().ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(app.GetPlayEnd(), app.View().GetMarkerEnd());
    EXPECT_LT(app.GetPlayEnd(), session.End());
}

TEST(ApplicationView, TheBeatsThatAreDraggedSetTheMelodysTempo) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    app.SetHostTempo(120, 4, 4);
    app.PlaybackPanel().ToggleSync();
    app.View().SetShowBeatRow(true);
    const PixelRect ruler = app.View().GetAxes().layout.Ruler();
    PointerEvent event{ruler.x + ruler.width / 2, ruler.y + ruler.height / 2, PointerButton::kLeft, 0, 0};
    app.View().Press(event);
    event.x += 100;
    app.View().Drag(event);
    EXPECT_EQ(app.GetMelodyTempo(), 120); // at the release
    app.View().Release(event);
    EXPECT_NE(app.GetMelodyTempo(), 120);
    EXPECT_EQ(app.GetMelodyTempo(), app.View().GetTempoGrid());
    EXPECT_EQ(app.MelodyPanel().GetTempo(), app.GetMelodyTempo());
    EXPECT_EQ(app.GetHostTempo(), 120);
}

TEST(ApplicationView, ANoteIsSwitchedOffAndOnAndUndone) {
    EditSession session;
    CkvovirelaineApp& app = *session.app;
    session.hand.SwitchNote(3, 2);
    EXPECT_EQ(session.GainOf(3, 2), 0);
    EXPECT_EQ(session.GainOf(3, 1), 1);
    EXPECT_TRUE(ViewShowsTheDriver(app));
    session.hand.SwitchNote(3, 2);
    EXPECT_EQ(session.GainOf(3, 2), 1);
    EXPECT_TRUE(app.Undo());
    EXPECT_EQ(session.GainOf(3, 2), 0);
    EXPECT_TRUE(ViewShowsTheDriver(app));
}

TEST(ApplicationView, TheChordRowSwitchesTheHarmonyOfANoteAndLeavesTheLead) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    PointerEvent event = session.hand.OnChordOf(2);
    event.button = PointerButton::kRight;
    app.View().RightClick(event);
    app.View().ChooseMenuEntry(CkvoPitchView::kGainOff);
    EXPECT_EQ(session.GainOf(2, 0), 1);
    for (std::int32_t voice = 1; voice < 4; ++voice) EXPECT_EQ(session.GainOf(2, voice), 0) << voice;
    app.View().RightClick(event);
    app.View().ChooseMenuEntry(CkvoPitchView::kGainOn);
    for (std::int32_t voice = 1; voice < 4; ++voice) EXPECT_EQ(session.GainOf(2, voice), 1) << voice;
}

TEST(ApplicationView, ACutSplitsTheNoteAtItsPlace) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    const std::int32_t start = app.Driver().GetNoteStart(2);
    const std::int32_t length = app.Driver().GetNoteLength(2);
    const std::int32_t steps = session.Steps();
    session.hand.Cut(2, 0.25);
    ASSERT_EQ(app.Driver().GetNoteCount(), 7);
    EXPECT_NEAR(app.Driver().GetNoteStart(3), start + length / 4, 60); // a pixel is 30 samples
    EXPECT_EQ(session.Steps(), steps + 1);
    EXPECT_TRUE(ViewShowsTheDriver(app));
    EXPECT_FALSE(app.GetCutMode());
    session.hand.Join(2, 3);
    EXPECT_EQ(app.Driver().GetNoteCount(), 6);
    EXPECT_EQ(app.Driver().GetNoteLength(2), length);
    EXPECT_EQ(session.Steps(), steps + 2);
}

TEST(ApplicationView, NotesThatAreNoNeighboursAreNotJoined) {
    ViewSession session;
    const std::int32_t steps = session.Steps();
    session.hand.Join(1, 3);
    session.hand.Join(2, 2);
    EXPECT_EQ(session.app->Driver().GetNoteCount(), 6);
    EXPECT_EQ(session.Steps(), steps);
}

TEST(ApplicationView, InEditACutKeepsTheVoices) {
    EditSession session;
    session.hand.Cut(2, 0.5);
    ASSERT_EQ(session.app->Driver().GetNoteCount(), 7);
    for (std::int32_t voice = 1; voice < 4; ++voice) {
        EXPECT_EQ(session.PitchOf(2, voice), 62 - 4 * voice) << voice;
        EXPECT_EQ(session.PitchOf(3, voice), 62 - 4 * voice) << voice;
        EXPECT_EQ(session.PitchOf(4, voice), 63 - 4 * voice) << voice;
    }
    EXPECT_TRUE(ViewShowsTheDriver(*session.app));
}

TEST(ApplicationView, WithoutAnEventNothingHappens) {
    ViewSession session;
    const std::int32_t steps = session.Steps();
    session.app->OnViewEvent();
    EXPECT_EQ(session.Steps(), steps);
    EXPECT_FALSE(session.app->IsPlaying());
}

TEST(ApplicationView, TheCursorFollowsOnlyWhenItShould) {
    ViewSession session;
    CkvovirelaineApp& app = *session.app;
    app.View().SetZoom(8);
    app.SetPosition(40000);
    app.Poll();
    EXPECT_EQ(app.View().GetPlayPosition(), 40000);
    EXPECT_LT(app.View().GetAxes().viewEnd, 40000);
    app.SetFollowCursor(true);
    app.Poll();
    EXPECT_LE(app.View().GetAxes().viewStart, 40000);
    EXPECT_GE(app.View().GetAxes().viewEnd, 40000);
}

} // namespace
} // namespace sonorelle::test
