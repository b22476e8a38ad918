#include "pitch_view_stage.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sonorelle {
namespace {

using Events = std::vector<HeardViewEvent>;

class PitchViewDrag : public ::testing::Test, public PitchViewStage {
protected:
    PitchViewDrag() { view.SetNoteEdit(true); }

    float PitchNow(std::int32_t note, std::int32_t voice) const { return view.GetNote(note, voice)->pitch; }
    float OffsetNow(std::int32_t note, std::int32_t voice) const { return view.GetNote(note, voice)->offset; }
    bool IsLit(std::int32_t note, std::int32_t voice) const {
        const std::vector<NoteDrawing> drawn = view.DrawNotes();
        const auto found = std::find_if(drawn.begin(), drawn.end(), [&](const NoteDrawing& drawing) {
            return drawing.note == note && drawing.voice == voice;
        });
        return found != drawn.end() && found->colour == kVoiceColours[static_cast<std::size_t>(voice)];
    }
};

TEST_F(PitchViewDrag, APressIsReportedAndLightsTheNote) {
    EXPECT_FALSE(IsLit(1, 2));
    view.Press(OnNote(1, 2));
    EXPECT_EQ(Heard(), (Events{{kEventNotePressed, {1, 2}}}));
    EXPECT_TRUE(IsLit(1, 2));
    EXPECT_EQ(view.GetNote(1, 2)->selected, 1);
    EXPECT_EQ(view.GetHotNote(), 1);
    EXPECT_EQ(view.GetHotVoice(), 2);
    view.Release(OnNote(1, 2));
    EXPECT_FALSE(IsLit(1, 2));
    EXPECT_EQ(view.GetNote(1, 2)->selected, 0);
}

TEST_F(PitchViewDrag, AClickOnlySoundsTheNote) {
    Click(OnNote(1, 2));
    EXPECT_EQ(Heard(), (Events{{kEventNotePressed, {1, 2}}, {kEventNoteReleased, {1, 2}}}));
}

TEST_F(PitchViewDrag, AMoveIsReportedWhileItHappensAndAtItsEnd) {
    DragNoteTo(0, 0, 65);
    EXPECT_EQ(Heard(), (Events{{kEventNotePressed, {0, 0}},
                               {kEventNoteMoved, {0, 0}},
                               {kEventNoteReleased, {0, 0}},
                               {kEventDragEnded, {0, 0}}}));
    EXPECT_EQ(PitchNow(0, 0), 65);
    EXPECT_EQ(OffsetNow(0, 0), 5);
    EXPECT_EQ(PitchNow(0, 1), PitchOf(0, 1)) << "the others stay";
    EXPECT_EQ(PitchNow(1, 0), PitchOf(1, 0));
}

TEST_F(PitchViewDrag, ADragThatLandsOnTheSameRoundedPitchReportsNothing) {
    view.Press(OnNote(0, 0));
    Heard();
    const std::int32_t y = YOfDragTo(60);
    for (std::int32_t off = -4; off <= 4; ++off) view.Drag(At(200, y + off)); // a semitone is 10 pixels
    EXPECT_EQ(Heard(), Events{});
    view.Drag(At(200, y - 6));
    EXPECT_EQ(Heard(), (Events{{kEventNoteMoved, {0, 0}}}));
}

TEST_F(PitchViewDrag, ADragThereAndBackIsStillReportedAtItsEnd) {
    const PointerEvent on = OnNote(0, 0);
    view.Press(on);
    view.Drag(At(on.x, YOfDragTo(63)));
    view.Drag(At(on.x, YOfDragTo(60)));
    Heard();
    view.Release(on);
    EXPECT_EQ(Heard(), (Events{{kEventNoteReleased, {0, 0}}, {kEventDragEnded, {0, 0}}}));
    EXPECT_EQ(OffsetNow(0, 0), 0);
}

TEST_F(PitchViewDrag, OffsetsAddUpOverDrags) {
    SetPitch(0, 0, 60, 1.25F);
    DragNoteTo(0, 0, 63);
    DragNoteTo(0, 0, 61);
    EXPECT_EQ(OffsetNow(0, 0), 2.25F);
}

TEST_F(PitchViewDrag, ANoteBetweenSemitonesLandsOnOne) {
    SetPitch(0, 0, 60.3F);
    DragNoteTo(0, 0, 62);
    EXPECT_EQ(PitchNow(0, 0), 62);
    EXPECT_NEAR(OffsetNow(0, 0), 1.7F, 1e-5); // 62 - 60.3, in floats near 60
}

TEST_F(PitchViewDrag, NotesStayInTheVisiblePitchRange) {
    DragNoteTo(0, 0, 120);
    EXPECT_EQ(PitchNow(0, 0), view.GetAxes().topPitch);
    DragNoteTo(1, 0, -50);
    EXPECT_EQ(PitchNow(1, 0), view.GetAxes().bottomPitch);
}

TEST_F(PitchViewDrag, ThePitchGridDividesTheWayOfThePointer) {
    view.SetPitchGrid(2);
    const PointerEvent on = OnNote(0, 0);
    view.Press(on);
    // 100 pixels under the header, at 2 x 10.05 pixels a semitone, lie 5 below the top: 72 - 4.98 + 0.5.
    view.Drag(At(on.x, 160));
    EXPECT_EQ(PitchNow(0, 0), 67);
}

TEST_F(PitchViewDrag, ShiftGathersNotesThatThenMoveTogether) {
    Click(OnNote(0, 1, PointerEvent::kShift));
    EXPECT_EQ(Heard(), (Events{{kEventNoteReleased, {0, 1}}})) << "gathering makes no sound";
    DragNoteTo(1, 0, 64, PointerEvent::kShift);
    EXPECT_EQ(PitchNow(0, 1), PitchOf(0, 1) + 2);
    EXPECT_EQ(OffsetNow(0, 1), 2);
    EXPECT_EQ(PitchNow(1, 0), 64);
    EXPECT_EQ(Heard(), (Events{{kEventNoteMoved, {1, 0}},
                               {kEventNoteReleased, {1, 0}},
                               {kEventDragEnded, {0, 1}},
                               {kEventDragEnded, {1, 0}}}));
    EXPECT_TRUE(IsLit(0, 1)) << "it stays gathered";
}

TEST_F(PitchViewDrag, ANoteIsGatheredOnce) {
    Click(OnNote(0, 1, PointerEvent::kShift));
    Click(OnNote(0, 1, PointerEvent::kShift));
    EXPECT_EQ(view.GetSelection(), (std::vector<PitchViewSelection>{{0, 1}}));
}

TEST_F(PitchViewDrag, APressWithoutShiftForgetsWhatWasGathered) {
    Click(OnNote(0, 1, PointerEvent::kShift));
    Click(OnNote(1, 0));
    EXPECT_TRUE(view.GetSelection().empty());
    EXPECT_FALSE(IsLit(0, 1));
}

TEST_F(PitchViewDrag, AltMovesWithoutThePressBeingHeard) {
    DragNoteTo(0, 0, 65, PointerEvent::kAlt);
    EXPECT_EQ(PitchNow(0, 0), 65);
    EXPECT_EQ(Heard(),
              (Events{{kEventNoteMoved, {0, 0}}, {kEventNoteReleased, {0, 0}}, {kEventDragEnded, {0, 0}}}));
}

TEST_F(PitchViewDrag, GatheredNotesStopTogetherAtTheEdgeOfTheView) {
    SetPitch(1, 1, 70);
    Click(OnNote(1, 1, PointerEvent::kShift));
    DragNoteTo(0, 0, 68, PointerEvent::kShift);
    EXPECT_EQ(PitchNow(1, 1), 72);
    EXPECT_EQ(PitchNow(0, 0), 62) << "as far as the other could go";
}

TEST_F(PitchViewDrag, TheLabelFollowsTheNote) {
    EXPECT_FALSE(view.DrawPitchLabel().has_value());
    SetPitch(0, 0, 60.6F);
    const PointerEvent on = OnNote(0, 0);
    view.Press(on);
    ASSERT_TRUE(view.DrawPitchLabel().has_value());
    EXPECT_EQ(view.DrawPitchLabel()->pitch, 61);
    view.Drag(At(on.x, YOfDragTo(66)));
    EXPECT_EQ(view.DrawPitchLabel()->pitch, 66);
    EXPECT_EQ(view.DrawPitchLabel()->name, "F#4");
    view.Release(on);
    EXPECT_FALSE(view.DrawPitchLabel().has_value());
}

TEST_F(PitchViewDrag, OnlyTheLeftButtonDrags) {
    for (const PointerButton button : {PointerButton::kNone, PointerButton::kMiddle, PointerButton::kRight}) {
        PointerEvent event = OnNote(0, 0);
        event.button = button;
        view.Press(event);
        EXPECT_FALSE(view.IsDragging());
    }
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewDrag, WithoutEditNotesLieStillAndTheViewMoves) {
    view.SetNoteEdit(false);
    view.SetZoom(2);
    const float start = view.GetAxes().viewStart;
    const PointerEvent on = OnNote(1, 0);
    DragFromTo(on, At(on.x - 50, on.y));
    EXPECT_EQ(Heard(), Events{});
    EXPECT_EQ(PitchNow(1, 0), PitchOf(1, 0));
    EXPECT_GT(view.GetAxes().viewStart, start);
}

TEST_F(PitchViewDrag, NotesOfAHiddenVoiceCannotBeTouched) {
    view.SetVoiceEnabled(2, false);
    Click(OnNote(1, 2));
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewDrag, TheUpperOfTwoNotesOnOnePitchIsTaken) {
    SetPitch(1, 3, PitchOf(1, 1));
    view.Press(OnNote(1, 1));
    EXPECT_EQ(Heard(), (Events{{kEventNotePressed, {1, 3}}}));
}

TEST_F(PitchViewDrag, APressWhileADragIsLostEndsIt) {
    const PointerEvent on = OnNote(0, 0);
    view.Press(on);
    view.Drag(At(on.x, YOfDragTo(62)));
    Heard();
    view.Press(OnNote(1, 0));
    EXPECT_EQ(Heard(),
              (Events{{kEventNoteReleased, {0, 0}}, {kEventDragEnded, {0, 0}}, {kEventNotePressed, {1, 0}}}));
}

// The application writes results back while it is called, or fills the view anew.
TEST_F(PitchViewDrag, TheOwnerMayReplaceTheNotesFromWithinAnEvent) {
    for (const std::int32_t code :
         {kEventNotePressed, kEventNoteMoved, kEventNoteReleased, kEventDragEnded}) {
        PitchViewStage stage;
        stage.view.SetNoteEdit(true);
        stage.reaction = [&stage, code](const HeardViewEvent& event) {
            if (event.code == code) stage.view.Resize(1, 0);
        };
        stage.DragNoteTo(1, 2, 65);
        EXPECT_FALSE(stage.view.IsDragging()) << code;
        EXPECT_EQ(stage.view.GetNoteCount(), 0) << code;
    }
}

TEST_F(PitchViewDrag, ResultsWrittenBackDuringADragKeepItGoing) {
    reaction = [this](const HeardViewEvent& event) {
        if (event.code == kEventNoteMoved) SetPitch(0, 0, view.GetNotePitch(0, 0), OffsetNow(0, 0));
    };
    const PointerEvent on = OnNote(0, 0);
    view.Press(on);
    view.Drag(At(on.x, YOfDragTo(63)));
    view.Drag(At(on.x, YOfDragTo(66)));
    EXPECT_EQ(PitchNow(0, 0), 66);
    EXPECT_EQ(OffsetNow(0, 0), 6);
    EXPECT_TRUE(IsLit(0, 0));
}

TEST_F(PitchViewDrag, WhatTheOwnerReadsIsWithoutTheTransposition) {
    view.SetTransposeShift(-3);
    SetPitch(0, 0, 66);
    DragNoteTo(0, 0, 65); // two up from the 63 that is shown
    EXPECT_EQ(PitchNow(0, 0), 65);
    EXPECT_EQ(view.GetNotePitch(0, 0), 68);
}

// --- The chord window ---

TEST_F(PitchViewDrag, TheChordWindowLivesWhileTipsAreOnAndANoteMoves) {
    view.SetChordTips(true);
    const PointerEvent on = OnNote(0, 1);
    view.Press(on);
    EXPECT_FALSE(view.GetChordWindow().has_value()) << "nothing has moved yet";
    reaction = [this](const HeardViewEvent& event) {
        if (event.code == kEventNoteMoved) view.SetDetectedChord(0, 9, ConsortierClassic::kMinorSeventh);
    };
    view.Drag(At(on.x, YOfDragTo(63)));
    ASSERT_TRUE(view.GetChordWindow().has_value());
    EXPECT_EQ(view.GetChordWindow()->text, "@s-8@y+6 chord:@s0\n@y+3 a m7");
    EXPECT_EQ(view.GetChordWindow()->x, view.GetAxes().layout.width);
    EXPECT_EQ(view.GetChordWindow()->y, view.GetAxes().RowTopFromPitch(63));
    view.Release(on);
    EXPECT_FALSE(view.GetChordWindow().has_value());
}

TEST_F(PitchViewDrag, WithoutTipsThereIsNoChordWindow) {
    const PointerEvent on = OnNote(0, 1);
    view.Press(on);
    view.Drag(At(on.x, YOfDragTo(63)));
    EXPECT_FALSE(view.GetChordWindow().has_value());
}

// --- Cut and join ---

class PitchViewCut : public PitchViewDrag {
protected:
    PitchViewCut() { view.SetCutMode(true); }
};

TEST_F(PitchViewCut, AClickCutsTheNoteUnderIt) {
    const PointerEvent on = OnNote(1, 0);
    Click(on);
    const auto position = static_cast<std::int32_t>(view.GetAxes().SampleFromX(on.x));
    EXPECT_EQ(Heard(), (Events{{kEventCut, {position}}}));
    EXPECT_EQ(view.GetCutPosition(), position);
    EXPECT_NEAR(position, StartOf(1) + kRate / 2, 1400) << "the middle of the note, to two pixels";
}

TEST_F(PitchViewCut, NotesAreCutWithoutNoteEditToo) {
    view.SetNoteEdit(false);
    Click(OnNote(1, 3));
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].code, kEventCut);
}

TEST_F(PitchViewCut, AClickBesideTheNotesCutsNothing) {
    Click(At(500, 100));
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewCut, AltJoinsNeighboursInOrder) {
    for (const auto& [first, second] : {std::pair{0, 1}, std::pair{2, 1}}) {
        Click(OnNote(first, 0, PointerEvent::kAlt));
        EXPECT_EQ(Heard(), Events{});
        EXPECT_EQ(view.GetSelection(), (std::vector<PitchViewSelection>{{first, 0}}));
        Click(OnNote(second, 2, PointerEvent::kAlt));
        EXPECT_EQ(Heard(), (Events{{kEventJoin, {std::min(first, second), std::max(first, second)}}}));
        EXPECT_TRUE(view.GetSelection().empty());
    }
}

TEST_F(PitchViewCut, NotesThatAreNoNeighboursAreForgotten) {
    for (const std::int32_t other : {2, 0}) {
        Click(OnNote(0, 0, PointerEvent::kAlt));
        Click(OnNote(other, 0, PointerEvent::kAlt));
        EXPECT_EQ(Heard(), Events{});
        EXPECT_TRUE(view.GetSelection().empty());
    }
}

TEST_F(PitchViewCut, ThereIsNoChordWindow) {
    view.SetChordTips(true);
    view.SetCutMode(false);
    const PointerEvent on = OnNote(0, 1);
    view.Press(on);
    view.SetCutMode(true);
    view.Drag(At(on.x, YOfDragTo(63)));
    EXPECT_EQ(PitchNow(0, 1), 63);
    EXPECT_FALSE(view.GetChordWindow().has_value());
}

} // namespace
} // namespace sonorelle
