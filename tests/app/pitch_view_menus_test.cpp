#include "pitch_view_stage.h"

#include <gtest/gtest.h>

#include <string>

namespace sonorelle {
namespace {

using Events = std::vector<HeardViewEvent>;

class PitchViewMenus : public ::testing::Test, public PitchViewStage {
protected:
    PopupMenu MenuAt(std::int32_t x, std::int32_t y) {
        PointerEvent event = At(x, y);
        event.button = PointerButton::kRight;
        return view.RightClick(event);
    }
    PopupMenu MenuOfNote(std::int32_t note, std::int32_t voice) {
        const PointerEvent on = OnNote(note, voice);
        return MenuAt(on.x, on.y);
    }
    PopupMenu MenuOfChord(std::int32_t note) {
        return MenuAt(OnNote(note, 0).x, view.GetAxes().layout.ChordRow().y + 5);
    }
    PopupMenu MenuOfMarker(std::size_t marker) {
        const PixelRect handle = view.DrawMarkers()[marker].handle;
        return MenuAt(handle.x + 5, handle.y + 5);
    }
};

TEST_F(PitchViewMenus, ANoteOffersTheStateThatItWouldGet) {
    PopupMenu menu = MenuOfNote(1, 2);
    ASSERT_EQ(menu.items.size(), 1U);
    EXPECT_EQ(menu.items[0].mark, PopupMark::kOff);
    EXPECT_EQ(menu.items[0].text, "");
    view.ChooseMenuEntry(menu.items[0].id);
    EXPECT_EQ(view.GetNote(1, 2)->object.isOff, 1);
    EXPECT_EQ(Heard(), (Events{{kEventGainChanged, {1, 2, 0}}}));

    menu = MenuOfNote(1, 2);
    EXPECT_EQ(menu.items[0].mark, PopupMark::kOn);
    view.ChooseMenuEntry(menu.items[0].id);
    EXPECT_EQ(view.GetNote(1, 2)->object.isOff, 0);
    EXPECT_EQ(view.GetNote(1, 2)->gain, 1);
    EXPECT_EQ(Heard(), (Events{{kEventGainChanged, {1, 2, 1}}}));
}

TEST_F(PitchViewMenus, ANoteOfTheLeadCanBeOffToo) {
    view.ChooseMenuEntry(MenuOfNote(0, 0).items[0].id);
    EXPECT_EQ(Heard(), (Events{{kEventGainChanged, {0, 0, 0}}}));
}

TEST_F(PitchViewMenus, TheChordRowSwitchesTheHarmonyAndLeavesTheLead) {
    const PopupMenu menu = MenuOfChord(1);
    ASSERT_EQ(menu.items.size(), 2U);
    EXPECT_EQ(menu.items[0].id, 0);
    EXPECT_EQ(menu.items[0].mark, PopupMark::kOff);
    EXPECT_EQ(menu.items[1].id, 1);
    EXPECT_EQ(menu.items[1].mark, PopupMark::kOn);
    view.ChooseMenuEntry(0);
    EXPECT_EQ(Heard(), (Events{{kEventGainChanged, {1, 1, 0}},
                               {kEventGainChanged, {1, 2, 0}},
                               {kEventGainChanged, {1, 3, 0}}}));
    EXPECT_EQ(view.GetNote(1, 0)->gain, 1);
    EXPECT_EQ(view.GetNote(1, 3)->gain, 0);
    EXPECT_EQ(view.GetNote(0, 3)->gain, 1) << "other notes stay";
    MenuOfChord(1);
    view.ChooseMenuEntry(1);
    EXPECT_EQ(view.GetNote(1, 3)->gain, 1);
    EXPECT_EQ(Heard().size(), 3U);
}

TEST_F(PitchViewMenus, WithFewerVoicesFewerGainsChange) {
    view.Resize(2, kNotes);
    for (std::int32_t note = 0; note < kNotes; ++note) SetPitch(note, 0, 60);
    MenuOfChord(1);
    view.ChooseMenuEntry(0);
    EXPECT_EQ(Heard(), (Events{{kEventGainChanged, {1, 1, 0}}}));
}

TEST_F(PitchViewMenus, TheChordRowAnswersOnlyWhileItMayBeEdited) {
    view.SetChordEdit(false);
    EXPECT_TRUE(MenuOfChord(1).items.empty());
    Click(At(OnNote(1, 0).x, 40));
    EXPECT_EQ(Heard(), Events{});
    view.SetChordEdit(true);
    Click(At(OnNote(1, 0).x, 40));
    EXPECT_EQ(Heard(), (Events{{kEventChordClicked, {1}}}));
}

TEST_F(PitchViewMenus, BetweenNotesTheChordRowIsSilent) {
    const std::int32_t x = view.GetAxes().XFromSample(kRate * 2.5);
    EXPECT_TRUE(MenuAt(x, 40).items.empty());
    Click(At(x, 40));
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewMenus, EmptySpaceHasNoMenu) {
    EXPECT_TRUE(MenuAt(600, 100).items.empty());
    for (const std::int32_t id : {-1, 0, 1, 2, 3, 4, 5, 6}) view.ChooseMenuEntry(id);
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewMenus, HiddenNotesHaveNoMenu) {
    view.SetVoiceEnabled(2, false);
    EXPECT_TRUE(MenuOfNote(1, 2).items.empty());
}

TEST_F(PitchViewMenus, AMenuIsGoodForOneChoiceOfItsOwn) {
    MenuOfNote(1, 2);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerResetBoth);
    view.ChooseMenuEntry(CkvoPitchView::kToggleNote);
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewMenus, ANoteThatIsGoneByTheTimeOfTheChoiceIsLeftAlone) {
    MenuOfNote(2, 3);
    view.Resize(1, 1);
    view.ChooseMenuEntry(CkvoPitchView::kToggleNote);
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewMenus, ARightClickEndsADrag) {
    view.SetNoteEdit(true);
    view.Press(OnNote(0, 0));
    Heard();
    MenuOfNote(1, 1);
    EXPECT_EQ(Heard(), (Events{{kEventNoteReleased, {0, 0}}}));
    EXPECT_FALSE(view.IsDragging());
}

// --- Markers ---

TEST_F(PitchViewMenus, BothMarkersOfferTheSameEntries) {
    view.SetPlayRegion(100000, 300000);
    for (const std::size_t marker : {0U, 1U}) {
        const PopupMenu menu = MenuOfMarker(marker);
        ASSERT_EQ(menu.items.size(), 3U);
        EXPECT_EQ(menu.items[0].text, "Set to closest Pitch");
        EXPECT_FALSE(menu.items[0].separatorBehind);
        EXPECT_EQ(menu.items[1].text, "Reset");
        EXPECT_TRUE(menu.items[1].separatorBehind);
        EXPECT_EQ(menu.items[2].text, "Reset both Markers");
    }
}

TEST_F(PitchViewMenus, ResetSendsTheStartMarkerToZeroAndTheEndMarkerToTheTotalLength) {
    view.SetPlayRegion(100000, 300000);
    MenuOfMarker(0);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerReset);
    EXPECT_EQ(Heard(), (Events{{kEventPlayRegionMoved, {0, 300000}}}));
    MenuOfMarker(1);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerReset);
    EXPECT_EQ(Heard(), (Events{{kEventPlayRegionMoved, {0, kEnd}}}));
}

TEST_F(PitchViewMenus, BothMarkersCanBeResetFromEither) {
    for (const std::size_t marker : {0U, 1U}) {
        view.SetPlayRegion(100000, 300000);
        MenuOfMarker(marker);
        view.ChooseMenuEntry(CkvoPitchView::kMarkerResetBoth);
        EXPECT_EQ(Heard(), (Events{{kEventPlayRegionMoved, {0, kEnd}}}));
    }
}

TEST_F(PitchViewMenus, TheTotalLengthIsKeptToTheSample) {
    constexpr std::int32_t kLong = (1 << 24) + 1; // more than a float can count
    view.SetTotal(0, kLong);
    view.SetPlayRegion(0, 8000000);
    MenuOfMarker(1);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerReset);
    EXPECT_EQ(view.GetMarkerEnd(), kLong);
}

TEST_F(PitchViewMenus, SetToClosestPitchJumpsToTheStartOfTheNearestNote) {
    view.SetPlayRegion(100000, 300000); // notes begin at 44100, 132300, 220500
    MenuOfMarker(0);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(Heard(), (Events{{kEventPlayRegionMoved, {132300, 300000}}}));
    MenuOfMarker(1);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(Heard(), (Events{{kEventPlayRegionMoved, {132300, 220500}}}));
}

TEST_F(PitchViewMenus, SetToClosestPitchLeavesTheMarkerIfTheNotesStartWouldPassTheOtherMarker) {
    view.SetPlayRegion(120000, 130000); // the nearest start, 132300, lies behind the end
    MenuOfMarker(0);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(view.GetMarkerStart(), 120000);
    view.SetPlayRegion(140000, 150000); // the nearest start lies before the start
    MenuOfMarker(1);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(view.GetMarkerEnd(), 150000);
    EXPECT_EQ(Heard(), Events{});
}

TEST_F(PitchViewMenus, WithoutNotesThereIsNoClosestPitch) {
    view.Resize(4, 0);
    view.SetPlayRegion(100000, 300000);
    MenuOfMarker(0);
    view.ChooseMenuEntry(CkvoPitchView::kMarkerToClosestPitch);
    EXPECT_EQ(Heard(), Events{});
}

} // namespace
} // namespace sonorelle
