#include "pitch_view_stage.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sonorelle {
namespace {

using Events = std::vector<HeardViewEvent>;

class PitchViewHeader : public ::testing::Test, public PitchViewStage {
protected:
    const PitchViewAxes& Axes() const { return view.GetAxes(); }
    PixelRect Handle(std::size_t marker) const { return view.DrawMarkers()[marker].handle; }
    static PointerEvent Inside(const PixelRect& rect) { return At(rect.x + rect.width / 2, rect.y + 2); }
    static PointerEvent Moved(PointerEvent event, std::int32_t pixels) {
        event.x += pixels;
        return event;
    }
    void DragRect(const PixelRect& rect, std::int32_t pixels) {
        DragFromTo(Inside(rect), Moved(Inside(rect), pixels));
    }
};

// --- Rows ---

TEST_F(PitchViewHeader, RowsFillTheHeaderWithoutGaps) {
    const PitchViewLayout& layout = Axes().layout;
    EXPECT_EQ(layout.Overview(), (PixelRect{35, 0, 659, 36}));
    EXPECT_EQ(layout.ChordRow(), (PixelRect{35, 36, 659, 13}));
    EXPECT_EQ(layout.Ruler(), (PixelRect{35, 49, 659, 11}));
    EXPECT_EQ(layout.NoteArea(), (PixelRect{35, 60, 659, 201}));
    EXPECT_EQ(layout.PitchAxis(), (PixelRect{0, 60, 35, 201}));
}

TEST_F(PitchViewHeader, TogglesLieInTheMarginAndTurnOrange) {
    auto toggles = view.DrawToggles();
    const std::array<const char*, 3> labels = {"Key", "Freq", "Beat"};
    const std::array<bool, 3> first = {false, true, false};
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_EQ(toggles[row].label, labels[row]);
        EXPECT_EQ(toggles[row].rect.x, 1);
        EXPECT_EQ(toggles[row].rect.y, static_cast<std::int32_t>(row) * 20);
        EXPECT_EQ(toggles[row].rect.width, 31);
        EXPECT_EQ(toggles[row].on, first[row]);
        Click(Inside(toggles[row].rect));
        EXPECT_EQ(view.DrawToggles()[row].on, !first[row]);
    }
    toggles = view.DrawToggles();
    EXPECT_EQ(toggles[0].background, ColourFromRgb(0xffa500));
    EXPECT_EQ(toggles[0].labelColour, kWhite);
    EXPECT_EQ(toggles[1].background, kPanelColour);
    EXPECT_EQ(toggles[1].labelColour, kBlack);
    EXPECT_TRUE(view.GetShowKeyRow());
    EXPECT_FALSE(view.GetShowFreqRow());
    EXPECT_TRUE(view.GetShowBeatRow());
    EXPECT_EQ(Heard(), Events{});
}

// --- Loudness strip ---

TEST_F(PitchViewHeader, HandlesOfTheStripLieAtTheEndsOfTheVisibleRange) {
    view.SetPlayRegion(kEnd / 4, kEnd / 2);
    view.FitPlayRegion();
    const OverviewDrawing drawing = view.DrawOverview();
    EXPECT_EQ(drawing.visibleRange, (PixelRect{199, 0, 165, 36})); // 35 + 659 / 4 and 35 + 659 / 2, cut
    EXPECT_EQ(drawing.leftHandle, (PixelRect{199, 13, 11, 10}));
    EXPECT_EQ(drawing.rightHandle, (PixelRect{353, 13, 11, 10}));
}

TEST_F(PitchViewHeader, HandlesOfAVeryShortRangeLieBesideOneAnotherInTheStrip) {
    for (const std::int32_t start : {0, 200000, kEnd - 9000}) {
        view.SetPlayRegion(start, start + 9000);
        view.FitPlayRegion();
        const OverviewDrawing drawing = view.DrawOverview();
        EXPECT_EQ(drawing.leftHandle.x + 11, drawing.rightHandle.x) << start;
        EXPECT_GE(drawing.leftHandle.x, 35) << start;
        EXPECT_LE(drawing.rightHandle.x + 11, 694) << start;
    }
}

TEST_F(PitchViewHeader, AHandleOfTheStripMovesOneSide) {
    DragRect(view.DrawOverview().leftHandle, 100);
    EXPECT_NEAR(Axes().viewStart, 100.0 * kEnd / 659, 1);
    EXPECT_EQ(Axes().viewEnd, kEnd);
    DragRect(view.DrawOverview().rightHandle, -200);
    EXPECT_NEAR(Axes().viewStart, 100.0 * kEnd / 659, 1);
    EXPECT_NEAR(Axes().viewEnd, 459.0 * kEnd / 659, 1);
    EXPECT_EQ(Heard(), Events{}) << "what is seen concerns nobody else";
}

TEST_F(PitchViewHeader, AHandleOfTheStripStopsBeforeTheOtherOneAndAtTheEnds) {
    view.Press(Inside(view.DrawOverview().leftHandle));
    view.Drag(At(5000, 10));
    EXPECT_NEAR(Axes().viewStart, kEnd - kRate * 0.2, 1);
    EXPECT_EQ(Axes().viewEnd, kEnd);
    view.Drag(At(-5000, 10));
    EXPECT_EQ(Axes().viewStart, 0);
    view.Release(At(0, 0));
    view.Press(Inside(view.DrawOverview().rightHandle));
    view.Drag(At(-5000, 10));
    EXPECT_EQ(Axes().viewStart, 0);
    EXPECT_NEAR(Axes().viewEnd, kRate * 0.2, 1);
}

TEST_F(PitchViewHeader, TheBodyOfTheStripMovesTheRange) {
    view.SetPlayRegion(kEnd / 4, kEnd / 2);
    view.FitPlayRegion();
    DragFromTo(At(280, 5), At(290, 5));
    EXPECT_NEAR(Axes().viewStart, kEnd / 4 + 10.0 * kEnd / 659, 1);
    EXPECT_NEAR(Axes().viewEnd - Axes().viewStart, kEnd / 4, 0.1);
    view.Press(At(290, 5));
    view.Drag(At(9000, 5));
    EXPECT_EQ(Axes().viewEnd, kEnd);
    EXPECT_NEAR(Axes().viewStart, kEnd - kEnd / 4, 1);
}

TEST_F(PitchViewHeader, OutsideTheVisibleRangeTheStripIsDead) {
    view.SetPlayRegion(kEnd / 4, kEnd / 2);
    view.FitPlayRegion();
    for (const std::int32_t x : {40, 190, 380, 690}) {
        view.Press(At(x, 5));
        EXPECT_FALSE(view.IsDragging()) << x;
    }
}

TEST_F(PitchViewHeader, TheEnvelopeIsSplitWhereTheVisibleRangeBeginsAndEnds) {
    const std::vector<PitchCurvePoint> curve = {
        {0, 60, 0, true}, {kEnd / 2, 60, 1, true}, {kEnd, 60, 0, true}};
    view.SetCurve(curve);
    EXPECT_EQ(view.GetEnvelopeCount(), 3);
    view.SetPlayRegion(kEnd / 4, kEnd * 3 / 4);
    view.FitPlayRegion();
    const OverviewDrawing drawing = view.DrawOverview();
    EXPECT_EQ(drawing.before, (PixelPolyline{{35, 35}, {35, 35}, {199, 18}, {199, 35}})) << "half as loud";
    EXPECT_EQ(drawing.visible, (PixelPolyline{{199, 35}, {199, 18}, {364, 0}, {529, 18}, {529, 35}}));
    EXPECT_EQ(drawing.behind, (PixelPolyline{{529, 35}, {529, 18}, {694, 35}, {694, 35}}));
    view.ResetView();
    EXPECT_TRUE(view.DrawOverview().before.empty());
    EXPECT_TRUE(view.DrawOverview().behind.empty());
}

TEST_F(PitchViewHeader, TheEnvelopeOfALongRecordingKeepsItsPeaks) {
    std::vector<PitchCurvePoint> curve(100000);
    for (std::size_t i = 0; i < curve.size(); ++i) curve[i].position = static_cast<std::int32_t>(4 * i);
    curve[51234].level = 0.9F;
    view.SetCurve(curve);
    EXPECT_LE(view.GetEnvelopeCount(), 4096);
    const PixelPolyline visible = view.DrawOverview().visible;
    const auto highest = std::min_element(visible.begin(), visible.end(),
                                          [](PixelPoint a, PixelPoint b) { return a.y < b.y; });
    EXPECT_EQ(highest->y, 35 - 31); // 0.9 x 35, cut
}

// --- Markers ---

TEST_F(PitchViewHeader, MarkersStandAtTheirSamplesWithHandlesInside) {
    view.SetPlayRegion(kEnd / 4, kEnd / 2);
    const auto markers = view.DrawMarkers();
    EXPECT_EQ(markers[0].lineX, 199);
    EXPECT_EQ(markers[0].handle, (PixelRect{199, 49, 11, 10}));
    EXPECT_EQ(markers[1].lineX, 364);
    EXPECT_EQ(markers[1].handle, (PixelRect{353, 49, 11, 10}));
    EXPECT_TRUE(markers[0].inSight && markers[1].inSight);
}

TEST_F(PitchViewHeader, EachMoveOfAMarkerIsReported) {
    view.SetPlayRegion(100000, 300000);
    EXPECT_EQ(Heard(), Events{}) << "what comes from outside is not";
    const PointerEvent on = Inside(Handle(0));
    view.Press(on);
    EXPECT_EQ(Heard(), Events{});
    view.Drag(Moved(on, 10));
    const std::int32_t first = view.GetMarkerStart();
    EXPECT_NEAR(first, 100000 + 10.0 * kEnd / 659, 1);
    view.Drag(Moved(on, 20));
    view.Drag(Moved(on, 20));
    const std::int32_t second = view.GetMarkerStart();
    EXPECT_EQ(Heard(),
              (Events{{kEventPlayRegionMoved, {first, 300000}}, {kEventPlayRegionMoved, {second, 300000}}}));
    view.Release(Moved(on, 20));
    EXPECT_EQ(Heard(), Events{});
    DragRect(Handle(1), -10);
    EXPECT_NEAR(view.GetMarkerEnd(), 300000 - 10.0 * kEnd / 659, 1);
}

TEST_F(PitchViewHeader, MarkersStayInTheRecordingAndNeverPassEachOther) {
    view.SetPlayRegion(100000, 300000);
    view.Press(Inside(Handle(0)));
    view.Drag(At(5000, 50));
    EXPECT_EQ(view.GetMarkerStart(), 300000);
    view.Drag(At(-5000, 50));
    EXPECT_EQ(view.GetMarkerStart(), 0);
    view.Release(At(0, 0));
    view.Press(Inside(Handle(1)));
    view.Drag(At(5000, 50));
    EXPECT_EQ(view.GetMarkerEnd(), kEnd);
    view.Drag(At(-5000, 50));
    EXPECT_EQ(view.GetMarkerEnd(), 0);
}

TEST_F(PitchViewHeader, MarkersOnOneSpotCanBePulledApartAgain) {
    for (const std::int32_t spot : {0, 200000, kEnd}) {
        for (const std::size_t marker : {0U, 1U}) {
            const bool isStart = marker == 0;
            if (spot == (isStart ? 0 : kEnd)) continue; // no room on its side
            view.SetPlayRegion(spot, spot);
            DragRect(Handle(marker), isStart ? -50 : 50);
            EXPECT_EQ(view.GetMarkerStart() < spot, isStart) << spot;
            EXPECT_EQ(view.GetMarkerEnd() > spot, !isStart) << spot;
        }
    }
}

TEST_F(PitchViewHeader, OverlappingHandlesShareTheRoomByTheNearerLine) {
    view.SetPlayRegion(200000, 200000 + 669 * 8); // lines 8 pixels apart, handles of 11
    const auto markers = view.DrawMarkers();
    view.Press(At(markers[0].lineX + 1, 52));
    view.Drag(At(markers[0].lineX - 30, 52));
    EXPECT_LT(view.GetMarkerStart(), 200000);
    view.Release(At(0, 0));
    view.SetPlayRegion(200000, 200000 + 669 * 8);
    view.Press(At(markers[1].lineX - 1, 52));
    view.Drag(At(markers[1].lineX + 30, 52));
    EXPECT_GT(view.GetMarkerEnd(), 200000 + 669 * 9);
}

TEST_F(PitchViewHeader, MarkersOutOfSightAreOutOfReach) {
    view.SetPlayRegion(200000, 300000);
    view.FitPlayRegion();
    view.SetPlayRegion(100000, 400000);
    EXPECT_FALSE(view.DrawMarkers()[0].inSight);
    EXPECT_FALSE(view.DrawMarkers()[1].inSight);
    for (std::int32_t x = 0; x < 694; x += 5) {
        EXPECT_EQ(view.CursorAt(At(x, 59)) == PitchViewCursor::kMarker, false) << x;
    }
}

TEST_F(PitchViewHeader, AWindowTellsTheTimeWhileAMarkerMoves) {
    view.SetPlayRegion(100000, 300000);
    const PointerEvent on = Inside(Handle(0));
    view.Press(on);
    view.Drag(Moved(on, 10));
    ASSERT_TRUE(view.GetChordWindow().has_value());
    EXPECT_EQ(view.GetChordWindow()->text, "0:02.419"); // 106692 samples
    view.SetShowBeatRow(true);
    view.Drag(Moved(on, 11));
    EXPECT_EQ(view.GetChordWindow()->text, "0:02.434\n2.1.333"); // 107361 samples: 4.869 beats
    view.Release(on);
    EXPECT_FALSE(view.GetChordWindow().has_value());
}

// --- Beats ---

TEST_F(PitchViewHeader, BeatsAreShownInTheBeatRowAlone) {
    EXPECT_TRUE(view.DrawBeats().empty());
    EXPECT_FALSE(view.DrawSeconds().empty());
    view.SetShowBeatRow(true);
    EXPECT_TRUE(view.DrawSeconds().empty());
    const std::vector<BeatLineDrawing> beats = view.DrawBeats();
    ASSERT_EQ(beats.size(), 21U); // ten seconds of half a second, both ends
    EXPECT_EQ(beats[0].x, 35);
    EXPECT_EQ(beats[1].x, 67); // 32.95 pixels on
    for (std::size_t i = 0; i < beats.size(); ++i) {
        EXPECT_EQ(beats[i].strong, i % 4 == 0) << i;
        EXPECT_EQ(beats[i].bar, static_cast<std::int32_t>(i / 4) + 1) << i;
        EXPECT_EQ(beats[i].beat, static_cast<std::int32_t>(i % 4) + 1) << i;
    }
}

TEST_F(PitchViewHeader, DenseBeatsLeaveOnlyBarsAndThenEverySecond) {
    view.SetShowBeatRow(true);
    view.SetTempoGrid(999, 999, 0, 4, 4); // 166.5 beats on 659 pixels: 3.96 pixels each, 15.8 a bar
    const std::vector<BeatLineDrawing> bars = view.DrawBeats();
    EXPECT_EQ(bars.size(), 42U);
    for (const BeatLineDrawing& line : bars) EXPECT_TRUE(line.strong);
    view.SetTotal(0, kEnd * 3); // 5.3 pixels a bar
    ASSERT_EQ(view.DrawBeats().size(), 63U);
    EXPECT_EQ(view.DrawBeats()[1].bar, 3);
}

TEST_F(PitchViewHeader, TheGridStandsWhereTheHostsBarsFallInTheRecording) {
    view.SetTempoGrid(100, 150, 44100, 3, 4); // the recording, played at 3/2, begins at the host's second 1
    const BeatGrid grid = view.GetBeatGrid();
    EXPECT_EQ(view.GetTempoGrid(), 100);
    EXPECT_EQ(grid.anchor, -66150);
    EXPECT_EQ(grid.numerator, 3);
    EXPECT_DOUBLE_EQ(grid.SamplesPerBeat(), 26460);
    EXPECT_EQ(view.TempoText(), "100.0");
}

TEST_F(PitchViewHeader, DraggingTheBeatsChangesTheTempoAndIsReportedAtRelease) {
    view.SetShowBeatRow(true);
    const PointerEvent from = At(235, 58); // under the second beat after 200 pixels, away from the handles
    view.Press(from);
    view.Drag(At(335, 58)); // what was 200 pixels from the start is 300 from it now
    EXPECT_NEAR(view.GetTempoGrid(), 80, 0.01);
    EXPECT_EQ(view.TempoText(), "80.0");
    EXPECT_EQ(Heard(), Events{});
    view.SetTempoGrid(60, 60, 0, 4, 4);
    EXPECT_NEAR(view.GetTempoGrid(), 80, 0.01) << "it is in the user's hand";
    view.Release(At(335, 58));
    EXPECT_EQ(Heard(), (Events{{kEventTempoDragged, {}}}));
    EXPECT_NEAR(view.GetTempoGrid(), 80, 0.01);
    view.SetTempoGrid(60, 60, 0, 4, 4);
    EXPECT_EQ(view.GetTempoGrid(), 60);
}

TEST_F(PitchViewHeader, AClickOnTheBeatsChangesNothing) {
    view.SetShowBeatRow(true);
    view.Press(At(235, 58));
    view.SetTempoGrid(60, 60, 0, 4, 4);
    view.Drag(At(235, 58));
    view.Release(At(235, 58));
    EXPECT_EQ(Heard(), Events{});
    EXPECT_EQ(view.GetTempoGrid(), 60);
}

TEST_F(PitchViewHeader, WithoutTheBeatRowTheRulerIsDead) {
    view.Press(At(235, 58));
    EXPECT_FALSE(view.IsDragging());
}

TEST_F(PitchViewHeader, SecondsStandAtRoundTimes) {
    const std::vector<TimeLineDrawing> lines = view.DrawSeconds();
    ASSERT_EQ(lines.size(), 6U); // 70 pixels are 1.06 seconds: every two
    EXPECT_EQ(lines[0].text, "0:00.000");
    EXPECT_EQ(lines[5].text, "0:10.000");
    EXPECT_NEAR(lines[5].x, 694, 1); // the scale is a float
}

// --- Cursor ---

TEST_F(PitchViewHeader, TheCursorTellsWhatADragWouldDo) {
    using Cursor = PitchViewCursor;
    const auto over = [this](const PointerEvent& event) { return view.CursorAt(event); };
    EXPECT_EQ(over(Inside(view.DrawToggles()[1].rect)), Cursor::kHand);
    EXPECT_EQ(over(Inside(view.DrawOverview().leftHandle)), Cursor::kResize);
    EXPECT_EQ(over(Inside(view.DrawOverview().rightHandle)), Cursor::kResize);
    EXPECT_EQ(over(At(300, 3)), Cursor::kScroll);
    EXPECT_EQ(over(Inside(Handle(0))), Cursor::kMarker);
    EXPECT_EQ(over(At(OnNote(1, 0).x, 40)), Cursor::kHand);
    EXPECT_EQ(over(At(600, 40)), Cursor::kArrow);
    EXPECT_EQ(over(At(300, 55)), Cursor::kArrow);
    view.SetShowBeatRow(true);
    EXPECT_EQ(over(At(300, 55)), Cursor::kDragTempo);

    EXPECT_EQ(over(At(600, 100)), Cursor::kPan);
    EXPECT_EQ(over(At(600, 100, PointerEvent::kAlt)), Cursor::kZoom);
    EXPECT_EQ(over(At(600, 100, PointerEvent::kShift)), Cursor::kZoom);
    EXPECT_EQ(over(At(600, 100, PointerEvent::kCtrl)), Cursor::kArrow);

    EXPECT_EQ(over(OnNote(1, 0)), Cursor::kPan) << "notes are not edited";
    view.SetNoteEdit(true);
    EXPECT_EQ(over(OnNote(1, 0)), Cursor::kMoveNote);
    EXPECT_EQ(over(OnNote(1, 0, PointerEvent::kShift)), Cursor::kSelect);
    view.SetCutMode(true);
    EXPECT_EQ(over(OnNote(1, 0)), Cursor::kCut);
    EXPECT_EQ(over(OnNote(1, 0, PointerEvent::kAlt)), Cursor::kJoin);
}

TEST_F(PitchViewHeader, TheNoteUnderThePointerIsHot) {
    view.Move(OnNote(2, 1));
    EXPECT_EQ(view.GetHotNote(), 2);
    EXPECT_EQ(view.GetHotVoice(), 1);
    view.Move(At(600, 100));
    EXPECT_EQ(view.GetHotNote(), -1);
    view.Move(OnNote(2, 1));
    view.Leave();
    EXPECT_EQ(view.GetHotNote(), -1);
    EXPECT_EQ(view.GetHotVoice(), -1);
}

} // namespace
} // namespace sonorelle
