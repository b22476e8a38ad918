// What comes from outside may be anything: no number leads out of an array, into a cast that cannot hold it,
// or into a loop without end. The sanitizers watch; the checks are about what must still hold afterwards.

#include "pitch_view_stage.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace sonorelle {
namespace {

constexpr float kLargestFloat = std::numeric_limits<float>::max();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

class PitchViewHostile : public ::testing::Test, public PitchViewStage {
protected:
    void DrawAll() const {
        view.DrawNotes();
        view.DrawRecordedPitch();
        view.DrawCurve();
        view.DrawOverview();
        view.DrawMarkers();
        view.DrawToggles();
        EXPECT_LE(view.DrawPitchRows().size(), 127U);
        EXPECT_LE(view.DrawBeats().size(), 33000U); // a line needs a pixel at least
        EXPECT_LE(view.DrawSeconds().size(), 33000U);
        view.DrawChords();
        view.DrawPosition();
        view.DrawPitchLabel();
        view.TempoText();
    }
    void CheckRanges() const {
        const PitchViewAxes& axes = view.GetAxes();
        EXPECT_GE(axes.topPitch - axes.bottomPitch, 4);
        EXPECT_LE(axes.topPitch, 127);
        EXPECT_GE(axes.bottomPitch, 0);
        EXPECT_LE(axes.viewStart, axes.viewEnd);
        EXPECT_GE(axes.viewStart, axes.totalStart);
        EXPECT_LE(axes.viewEnd, axes.totalEnd);
        EXPECT_GT(axes.PixelsPerSample(), 0);
        EXPECT_GT(axes.PixelsPerSemitone(), 0);
    }
};

TEST_F(PitchViewHostile, NotesAndVoicesThatDoNotExistAreIgnored) {
    for (const std::int32_t bad : {-1, 4, 100, kMost, kLeast}) {
        view.SetNote(bad, 0, 0, 60, 0, 1, 100, 1, 0);
        view.SetNote(0, bad, 0, 60, 0, 1, 100, 1, 0);
        view.SetChord(bad, 0, 0);
        view.SetDetectedChord(bad, 0, 0);
        view.SetVoiceEnabled(bad, true);
        EXPECT_FALSE(view.IsVoiceEnabled(bad));
        EXPECT_EQ(view.GetNote(bad, 0), nullptr);
        EXPECT_EQ(view.GetNote(0, bad), nullptr);
        EXPECT_EQ(view.GetNotePitch(bad, bad), 0);
    }
    EXPECT_EQ(view.GetNotePitch(0, 0), 60);
    EXPECT_EQ(view.DrawNotes().size(), 12U);
}

TEST_F(PitchViewHostile, NumbersThatAreNoneNeverEnterANote) {
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        view.SetNote(0, 0, bad, bad, bad, bad, bad, bad, 0);
        const PitchViewNote& note = *view.GetNote(0, 0);
        EXPECT_TRUE(note.isSilent);
        EXPECT_EQ(note.start, 0);
        EXPECT_EQ(note.length, 0);
        EXPECT_EQ(note.height, 1);
        EXPECT_EQ(note.offset, 0);
        EXPECT_EQ(note.object.isOff, 1);
        DrawAll();
    }
}

TEST_F(PitchViewHostile, HugeNotesAndChordsAreDrawnSomehow) {
    for (const float value : {kLargestFloat, -kLargestFloat, 1e10F}) {
        view.SetNote(0, 0, value, std::abs(value), value, 1, value, value, kMost);
        view.SetNote(1, 0, -kLargestFloat, 60, kLargestFloat, 1, kLargestFloat, kLargestFloat, kLeast);
        view.SetChord(0, kMost, kMost);
        view.SetDetectedChord(0, kLeast, kLeast);
        view.SetChordDisplay(kLeast, 3);
        DrawAll();
        view.FitPitch();
        view.ResetView();
        CheckRanges();
    }
    view.SetTransposeShift(kLargestFloat);
    view.SetChord(0, kMost, 0);
    EXPECT_TRUE(std::isfinite(view.GetTransposeShift()));
}

TEST_F(PitchViewHostile, SizesOfNothingAndOfEverythingAreHeld) {
    for (const std::int32_t size : {kLeast, -1, 0, 1, 30, kMost}) {
        view.SetSize(size, size);
        DrawAll();
        for (const std::int32_t at : {0, 1, 40, 70}) {
            view.Press(At(at, at));
            view.Drag(At(at + 7, at + 9));
            view.Release(At(at, at));
            view.Wheel(Turn(at, at, -1));
            view.Wheel(Turn(at, at, 1, PointerEvent::kAlt));
        }
        CheckRanges();
    }
}

TEST_F(PitchViewHostile, TotalsPositionsAndRatesOfAllKindsAreHeld) {
    for (const std::int32_t end : {kLeast, -5, 0, 1, kMost}) {
        view.SetTotal(0, end);
        view.SetPlayRegion(kMost, end);
        view.SetPlayRegion(kLeast, kMost);
        view.FitPlayRegion();
        view.SetZoom(kLargestFloat);
        view.SetZoom(kNaN);
        CheckRanges();
        DrawAll();
        for (const double position : {-1e300, 1e300, std::nan(""), 1e308 * 10}) {
            view.SetPlayPosition(position, true);
            view.FollowPosition();
            EXPECT_TRUE(std::isfinite(view.GetPlayPosition()));
        }
        CheckRanges();
    }
    view.SetTotal(kMost, kLeast);
    CheckRanges();
    for (const float rate : {kNaN, -kInfinity, kInfinity, 0.0F, -1.0F}) view.SetSampleRate(rate);
    EXPECT_EQ(view.GetSampleRate(), kRate);
    for (const float rate : {1e-30F, kLargestFloat}) {
        view.SetSampleRate(rate);
        view.SetTotal(0, kEnd);
        view.Wheel(Turn(300, 100, 1));
        view.SetShowBeatRow(rate < 1);
        DrawAll();
        CheckRanges();
    }
    for (const float grid : {kNaN, 0.0F, -1.0F, kInfinity}) view.SetPitchGrid(grid);
    EXPECT_EQ(view.GetPitchGrid(), 1);
}

TEST_F(PitchViewHostile, TempiAndMetresOfAllKindsAreHeld) {
    view.SetShowBeatRow(true);
    for (const float tempo : {kNaN, -kInfinity, kInfinity, 0.0F, -1.0F})
        view.SetTempoGrid(tempo, 120, 0, 4, 4);
    EXPECT_EQ(view.GetTempoGrid(), 120);
    for (const float tempo : {kLargestFloat, 1e-30F, 120.0F}) {
        for (const double anchor : {1e300, -1e300, std::nan(""), 0.0}) {
            view.SetTempoGrid(tempo, kLargestFloat, anchor, kMost, kLeast);
            DrawAll();
            view.Press(At(235, 58));
            view.Drag(At(kMost, 58));
            view.Drag(At(kLeast, 58));
            DrawAll();
            view.Release(At(0, 0));
            EXPECT_TRUE(std::isfinite(view.GetTempoGrid()));
        }
    }
}

TEST_F(PitchViewHostile, CurvesOfRubbishAreDrawnSomehow) {
    std::vector<PitchCurvePoint> curve;
    for (const std::int32_t position : {5000, kLeast, kMost, 0, 200000, 100}) {
        for (const float value : {kNaN, kInfinity, -kLargestFloat, kLargestFloat, 0.5F})
            curve.push_back({position, value, value, true});
    }
    view.SetCurve(curve);
    DrawAll();
    view.SetCurve({});
    EXPECT_EQ(view.GetEnvelopeCount(), 0);
    DrawAll();
}

TEST_F(PitchViewHostile, ScalesOfRubbishAreReduced) {
    const std::vector<std::int32_t> tones = {kLeast, kMost, -1, 12, 13, 99, 7, 8, 9, 10};
    view.SetScale(tones, kLeast);
    DrawAll();
}

TEST_F(PitchViewHostile, PointersFarAwayAreHarmlessInEveryGesture) {
    const std::vector<PointerEvent> presses = {
        At(5, 5),         At(36, 15),         At(690, 15),   At(300, 3),    At(36, 52),
        At(690, 52),      At(300, 52),        OnNote(1, 0),  At(600, 100),  At(600, 100, PointerEvent::kAlt),
        At(kMost, kMost), At(kLeast, kLeast), At(kMost, 52), At(kLeast, 40)};
    view.SetNoteEdit(true);
    view.SetChordTips(true);
    view.SetShowBeatRow(true);
    for (const PointerEvent& press : presses) {
        view.Press(press);
        for (const std::int32_t at : {kMost, kLeast, 0}) {
            view.Drag(At(at, at));
            view.CursorAt(At(at, at));
            CheckRanges();
            DrawAll();
        }
        view.Release(At(0, 0));
        view.RightClick(press);
        view.ChooseMenuEntry(kMost);
        view.Wheel(Turn(press.x, press.y, kLeast, press.modifiers));
        view.Wheel(Turn(press.x, press.y, kMost, press.modifiers));
        view.Move(press);
        CheckRanges();
    }
}

TEST_F(PitchViewHostile, AnyRowOfGesturesLeavesTheViewInOrder) {
    constexpr std::uint32_t kSeed = 20;
    std::mt19937 random(kSeed);
    const auto pick = [&random](std::int32_t count) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(count));
    };
    for (std::int32_t step = 0; step < 5000; ++step) {
        PointerEvent event = At(pick(720) - 10, pick(280) - 10, static_cast<std::uint32_t>(pick(8)));
        if (pick(3) == 0) { // the edges of things are seldom met by chance
            const PointerEvent on = OnNote(pick(kNotes), pick(4));
            const PixelRect handle = view.DrawMarkers()[static_cast<std::size_t>(pick(2))].handle;
            event.x = pick(2) == 0 ? on.x : handle.x + 3;
            event.y = event.x == on.x ? on.y : handle.y + 3;
        }
        event.wheel = pick(9) - 4;
        switch (pick(12)) {
        case 0:
            view.Wheel(event);
            break;
        case 1:
            view.RightClick(event);
            break;
        case 2:
            view.ChooseMenuEntry(pick(8) - 1);
            break;
        case 3:
            view.SetNoteEdit(pick(2) == 0);
            break;
        case 4:
            view.SetCutMode(pick(3) == 0);
            break;
        case 5:
            view.SetShowBeatRow(pick(2) == 0);
            break;
        case 6:
            view.Release(event);
            break;
        case 7:
            view.Press(event);
            break;
        default:
            view.Drag(event);
            break;
        }
        CheckRanges();
        std::int32_t start = 0;
        std::int32_t end = 0;
        view.GetPlayRegion(start, end);
        EXPECT_TRUE(0 <= start && start <= end && end <= kEnd);
        if (HasFailure()) FAIL() << "step " << step << " of seed " << kSeed;
        if (step % 50 == 0) {
            DrawAll();
            view.ResetView(); // lest it stay at its nearest for the rest
        }
    }
    for (const HeardViewEvent& event : heard) {
        const bool isNote = event.code == kEventDragEnded || event.code == kEventNoteMoved;
        if (isNote) {
            EXPECT_NE(view.GetNote(event.data[0], event.data[1]), nullptr);
        }
    }
    EXPECT_GT(heard.size(), 100U) << "much has happened";
}

} // namespace
} // namespace sonorelle
