#include "pitch_view_stage.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

constexpr std::int32_t kUp = -1;  // away from the user
constexpr std::int32_t kDown = 1; // towards the user
constexpr std::int32_t kMiddleX = 35 + 330;
constexpr std::int32_t kMiddleY = 160; // 10 of the 20 semitones lie above: 100 of 201 pixels

class PitchViewZoom : public ::testing::Test, public PitchViewStage {
protected:
    const PitchViewAxes& Axes() const { return view.GetAxes(); }
    float Semitones() const { return Axes().topPitch - Axes().bottomPitch; }
    float Length() const { return Axes().viewEnd - Axes().viewStart; }
};

// --- Pitch ---

TEST_F(PitchViewZoom, TheWheelOverTheAxisZoomsPitchesAboutThePointer) {
    view.Wheel(Turn(10, kMiddleY, kDown)); // f is a little under a half: 1.49 and 1.51, both cut to 1
    EXPECT_EQ(Axes().topPitch, 71);
    EXPECT_EQ(Axes().bottomPitch, 53);
    EXPECT_EQ(Length(), kEnd) << "time stays";
}

TEST_F(PitchViewZoom, TheWheelUpwardZoomsOut) {
    view.Wheel(Turn(10, kMiddleY, kUp));
    EXPECT_EQ(Axes().topPitch, 73);
    EXPECT_EQ(Axes().bottomPitch, 51);
}

TEST_F(PitchViewZoom, AltZoomsPitchesAnywhere) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kUp, PointerEvent::kAlt));
    EXPECT_EQ(Semitones(), 22);
    EXPECT_EQ(Length(), kEnd);
}

TEST_F(PitchViewZoom, TheSideUnderThePointerStays) {
    view.Wheel(Turn(10, 60, kDown)); // at the top: f is 0
    EXPECT_EQ(Axes().topPitch, 72);
    EXPECT_EQ(Axes().bottomPitch, 55);
    view.Wheel(Turn(10, 20, kUp)); // above it too
    EXPECT_EQ(Axes().topPitch, 72);
    EXPECT_EQ(Axes().bottomPitch, 52);
    view.Wheel(Turn(10, 261, kDown)); // at the bottom: f is 1
    EXPECT_EQ(Axes().topPitch, 69);
    EXPECT_EQ(Axes().bottomPitch, 52);
}

TEST_F(PitchViewZoom, AStepThatWouldLeaveLessThanFourSemitonesDoesNothingButOneUpwardStillZoomsOut) {
    for (std::int32_t i = 0; i < 30; ++i) view.Wheel(Turn(10, 60, kDown));
    EXPECT_EQ(Semitones(), 4);
    const float top = Axes().topPitch;
    for (const std::int32_t y : {0, 60, 100, 160, 250, 261}) {
        view.Wheel(Turn(10, y, kDown));
        EXPECT_EQ(Semitones(), 4) << y;
        EXPECT_EQ(Axes().topPitch, top) << y;
    }
    view.Wheel(Turn(10, 60, kUp));
    EXPECT_EQ(Semitones(), 7);
}

TEST_F(PitchViewZoom, PitchesEndAtTheLimitsOfMidi) {
    for (std::int32_t i = 0; i < 100; ++i) view.Wheel(Turn(10, kMiddleY, kUp));
    EXPECT_EQ(Axes().topPitch, 127);
    EXPECT_EQ(Axes().bottomPitch, 0);
}

TEST_F(PitchViewZoom, CtrlTakesTheWheelAway) {
    const std::uint32_t both = PointerEvent::kCtrl | PointerEvent::kAlt;
    for (const std::uint32_t modifiers : {std::uint32_t{PointerEvent::kCtrl}, both}) {
        view.Wheel(Turn(10, kMiddleY, kUp, modifiers));
        view.Wheel(Turn(kMiddleX, kMiddleY, kDown, modifiers));
    }
    EXPECT_EQ(Semitones(), 20);
    EXPECT_EQ(Length(), kEnd);
}

// --- Time ---

TEST_F(PitchViewZoom, TheWheelZoomsTimeAboutThePointer) {
    const double under = Axes().SampleFromX(kMiddleX);
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    // 659 pixels for 441000 samples: 1 / 0.0014943 = 669.19 samples a pixel, cut to 669, times 128.
    EXPECT_NEAR(Length(), 441000 - 669 * 128, 0.1); // the ends are floats
    EXPECT_NEAR(Axes().SampleFromX(kMiddleX), under, 1);
    EXPECT_EQ(Semitones(), 20);
}

TEST_F(PitchViewZoom, AStepOutNearlyUndoesAStepIn) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    const float before = Length();
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    view.Wheel(Turn(kMiddleX, kMiddleY, kUp));
    EXPECT_NEAR(Length() / before, 1, 0.01); // 0.806 x 1.243
}

TEST_F(PitchViewZoom, ShiftDoesNotDisturbTheWheel) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown, PointerEvent::kShift));
    EXPECT_LT(Length(), kEnd);
}

TEST_F(PitchViewZoom, AFifthOfASecondIsTheLeast) {
    for (const std::int32_t x : {35, kMiddleX, 693}) {
        view.FitHorizontally();
        const double under = Axes().SampleFromX(x);
        for (std::int32_t i = 0; i < 100; ++i) view.Wheel(Turn(x, kMiddleY, kDown));
        EXPECT_NEAR(Length(), kRate * 0.2, 0.1) << x;
        EXPECT_NEAR(Axes().SampleFromX(x), under, 20) << x; // a pixel is 13 samples by now
    }
}

TEST_F(PitchViewZoom, TimeEndsWithTheRecording) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    for (std::int32_t i = 0; i < 100; ++i) view.Wheel(Turn(60, kMiddleY, kUp));
    EXPECT_EQ(Axes().viewStart, 0);
    EXPECT_EQ(Axes().viewEnd, kEnd);
}

TEST_F(PitchViewZoom, ARecordingShorterThanTheLeastIsSeenWhole) {
    view.SetTotal(0, 1000);
    EXPECT_EQ(Length(), 1000);
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    EXPECT_EQ(Length(), 1000);
}

TEST_F(PitchViewZoom, OneCanZoomOutAgainFromSamplesThatAreManyPixelsWide) {
    view.SetSampleRate(10);
    for (std::int32_t i = 0; i < 200; ++i) view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    EXPECT_EQ(Length(), 2); // a fifth of a second
    for (std::int32_t i = 0; i < 200; ++i) view.Wheel(Turn(kMiddleX, kMiddleY, kUp));
    EXPECT_EQ(Length(), kEnd);
}

// --- Dragging empty space ---

TEST_F(PitchViewZoom, AltDragDownShowsASemitoneMoreOnEachSideForEachRow) {
    const PointerEvent from = At(600, 100, PointerEvent::kAlt);
    DragFromTo(from, At(600, 131, PointerEvent::kAlt)); // three rows of 10.05 pixels
    EXPECT_EQ(Axes().topPitch, 75);
    EXPECT_EQ(Axes().bottomPitch, 49);
    EXPECT_EQ(Length(), kEnd);
}

TEST_F(PitchViewZoom, AltDragKeepsBetween4And48Semitones) {
    view.Press(At(600, 100, PointerEvent::kAlt));
    view.Drag(At(600, -5000, PointerEvent::kAlt));
    EXPECT_EQ(Semitones(), 4);
    view.Drag(At(600, 9000, PointerEvent::kAlt));
    EXPECT_EQ(Semitones(), 48);
    view.Drag(At(600, 100, PointerEvent::kAlt));
    EXPECT_EQ(Axes().topPitch, 72) << "back where it was";
    EXPECT_EQ(Axes().bottomPitch, 52);
}

TEST_F(PitchViewZoom, AltDragToTheRightMagnifiesTimeByOnePercentAPixel) {
    const PointerEvent from = At(600, 100, PointerEvent::kAlt);
    DragFromTo(from, At(601, 100, PointerEvent::kAlt));
    EXPECT_NEAR(Length(), kEnd / 1.01, 1);
    EXPECT_NEAR((Axes().viewStart + Axes().viewEnd) / 2, kEnd / 2, 1);
    EXPECT_EQ(Semitones(), 20);
    DragFromTo(from, At(500, 100, PointerEvent::kAlt));
    EXPECT_EQ(Length(), kEnd);
}

TEST_F(PitchViewZoom, APlainDragMovesWhatIsSeenWithThePointer) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    const float length = Length();
    const double under = Axes().SampleFromX(400);
    view.Press(At(400, 100));
    view.Drag(At(420, 121)); // two rows of 10.05 pixels
    EXPECT_NEAR(Axes().SampleFromX(420), under, 1);
    EXPECT_NEAR(Length(), length, 0.1);
    EXPECT_EQ(Axes().topPitch, 74);
    EXPECT_EQ(Axes().bottomPitch, 54);
    view.Drag(At(400, 109)); // less than one row
    EXPECT_EQ(Axes().topPitch, 72);
    view.Release(At(400, 109));
    view.Drag(At(600, 200));
    EXPECT_EQ(Axes().topPitch, 72) << "the drag has ended";
    EXPECT_TRUE(Heard().empty());
}

TEST_F(PitchViewZoom, PanningEndsWithTheRecordingAndTheLimitsOfMidi) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    const float length = Length();
    view.Press(At(400, 100));
    view.Drag(At(30000, 30000));
    EXPECT_EQ(Axes().viewStart, 0);
    EXPECT_NEAR(Length(), length, 0.1);
    EXPECT_EQ(Axes().topPitch, 127);
    EXPECT_EQ(Semitones(), 20);
    view.Drag(At(-30000, -30000));
    EXPECT_EQ(Axes().viewEnd, kEnd);
    EXPECT_EQ(Axes().bottomPitch, 0);
    EXPECT_EQ(Semitones(), 20);
}

TEST_F(PitchViewZoom, CtrlDragDoesNothing) {
    view.Press(At(600, 100, PointerEvent::kCtrl));
    EXPECT_FALSE(view.IsDragging());
}

TEST_F(PitchViewZoom, ShiftFitsThePitchesInViewWithASemitoneAround) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    Click(At(600, 100, PointerEvent::kShift));
    EXPECT_EQ(Axes().bottomPitch, 50) << "51 is the lowest";
    EXPECT_EQ(Axes().topPitch, 66) << "64 is the highest, and its row ends at 65";
    EXPECT_LT(Length(), kEnd);
}

TEST_F(PitchViewZoom, FittingLooksAtVisibleVoicesInViewOnly) {
    for (const std::int32_t voice : {1, 2, 3}) view.SetVoiceEnabled(voice, false);
    view.SetPlayRegion(static_cast<std::int32_t>(StartOf(2)), kEnd);
    view.FitPlayRegion();
    view.FitPitch();
    EXPECT_EQ(Axes().bottomPitch, 63) << "a semitone under 64";
    EXPECT_EQ(Axes().topPitch, 67) << "above the row of 64 too, and four semitones at least";
    view.SetVoiceEnabled(0, false);
    view.FitPitch();
    EXPECT_EQ(Axes().topPitch, 67) << "nothing to fit";
}

TEST_F(PitchViewZoom, ShiftAndCtrlShowEverything) {
    view.Wheel(Turn(kMiddleX, kMiddleY, kDown));
    view.SetVoiceEnabled(3, false);
    Click(At(600, 100, PointerEvent::kShift | PointerEvent::kCtrl));
    EXPECT_EQ(Axes().viewStart, 0);
    EXPECT_EQ(Axes().viewEnd, kEnd);
    EXPECT_EQ(Axes().bottomPitch, 50);
    EXPECT_EQ(Axes().topPitch, 66);
}

TEST_F(PitchViewZoom, AnEmptyViewShowsTheUsualRange) {
    CkvoPitchView empty;
    empty.FitPitch();
    empty.ResetView();
    EXPECT_EQ(empty.GetAxes().topPitch, 72);
    EXPECT_EQ(empty.GetAxes().bottomPitch, 52);
}

// --- By the application ---

TEST_F(PitchViewZoom, ZoomOneIsTheWholeRecording) {
    view.SetZoom(4);
    EXPECT_EQ(Length(), kEnd / 4);
    view.SetZoom(1);
    EXPECT_EQ(Length(), kEnd);
    view.SetZoom(0.1F);
    EXPECT_EQ(Length(), kEnd);
}

TEST_F(PitchViewZoom, ThePlayRegionCanBeFitted) {
    view.SetPlayRegion(100000, 200000);
    view.FitPlayRegion();
    EXPECT_EQ(Axes().viewStart, 100000);
    EXPECT_EQ(Axes().viewEnd, 200000);
    view.SetPlayRegion(100000, 100100);
    view.FitPlayRegion();
    EXPECT_NEAR(Length(), kRate * 0.2, 0.1) << "about its middle";
    EXPECT_NEAR((Axes().viewStart + Axes().viewEnd) / 2, 100050, 1);
    view.SetPlayRegion(5, 5);
    view.FitPlayRegion();
    EXPECT_NEAR((Axes().viewStart + Axes().viewEnd) / 2, 100050, 1) << "an empty one is not";
}

TEST_F(PitchViewZoom, FollowingTurnsThePageOnlyWhenThePositionIsOutOfSight) {
    view.SetPlayRegion(100000, 200000);
    view.FitPlayRegion();
    view.SetPlayPosition(150000, true);
    view.FollowPosition();
    EXPECT_EQ(Axes().viewStart, 100000);
    view.SetPlayPosition(200001, true);
    view.FollowPosition();
    EXPECT_NEAR(Axes().viewStart, 200001 - 10000, 1); // a tenth of the width is left before it
    EXPECT_NEAR(Length(), 100000, 0.1);
    view.SetPlayPosition(1e12, true);
    view.FollowPosition();
    EXPECT_EQ(Axes().viewEnd, kEnd);
}

} // namespace
} // namespace sonorelle
