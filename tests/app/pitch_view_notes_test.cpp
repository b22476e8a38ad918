#include "pitch_view_stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace sonorelle {
namespace {

class PitchViewNotes : public ::testing::Test, public PitchViewStage {
protected:
    const PitchViewAxes& Axes() const { return view.GetAxes(); }
    std::optional<NoteDrawing> Drawn(std::int32_t note, std::int32_t voice) const {
        for (const NoteDrawing& drawing : view.DrawNotes()) {
            if (drawing.note == note && drawing.voice == voice) return drawing;
        }
        return std::nullopt;
    }
};

// --- Coordinates ---

TEST_F(PitchViewNotes, SamplesAndPitchesBecomePixels) {
    EXPECT_EQ(Axes().XFromSample(0), 35);
    EXPECT_NEAR(Axes().XFromSample(kEnd), 694, 1); // the scale is a float
    EXPECT_EQ(Axes().XFromSample(44100), 100);     // 65.9 + 35, cut
    EXPECT_EQ(Axes().RowTopFromPitch(52), 251);    // 261 - 10.05 + 1, cut
    EXPECT_EQ(Axes().RowTopFromPitch(60), 171);    // 261 - 90.45 + 1, cut
    EXPECT_EQ(Axes().YFromPitch(60), 180);         // 261 - 80.4, cut
    EXPECT_NEAR(Axes().SampleFromX(694), kEnd, 1); // the scale is a float
    EXPECT_NEAR(Axes().PitchFromY(60), 72, 1e-4);  // likewise
    EXPECT_NEAR(Axes().PitchFromY(261), 52, 1e-4);
}

TEST_F(PitchViewNotes, PixelsLeadBackToWhereTheyCameFrom) {
    for (const double sample : {0.0, 1000.0, 123456.0, 440999.0}) {
        // a pixel is 669 samples
        EXPECT_NEAR(Axes().SampleFromX(Axes().XFromSample(sample)), sample, 670) << sample;
    }
    for (const double pitch : {52.0, 60.5, 71.9}) {
        EXPECT_NEAR(Axes().PitchFromY(Axes().YFromPitch(pitch)), pitch, 0.1) << pitch; // 0.0995 a pixel
    }
}

TEST_F(PitchViewNotes, ANoteIsARectangleOfItsTimeAndPitch) {
    ASSERT_TRUE(Drawn(0, 0).has_value());
    EXPECT_EQ(Drawn(0, 0)->rect, (PixelRect{100, 171, 65, 11})); // 10.05 + 1 high, both cut
}

TEST_F(PitchViewNotes, ARectangleHoldsItsLeftAndUpperEdgeOnly) {
    const PixelRect rect{10, 20, 5, 4};
    EXPECT_TRUE(rect.Contains(10, 20));
    EXPECT_TRUE(rect.Contains(14, 23));
    EXPECT_FALSE(rect.Contains(15, 20));
    EXPECT_FALSE(rect.Contains(10, 24));
    EXPECT_FALSE(rect.Contains(9, 20));
}

// --- Records ---

TEST_F(PitchViewNotes, TheTranspositionIsAddedToPitchesAndChords) {
    view.SetTransposeShift(2);
    SetPitch(0, 0, 60);
    EXPECT_EQ(view.GetNote(0, 0)->pitch, 62);
    EXPECT_EQ(view.GetNotePitch(0, 0), 60);
    view.SetChord(0, 11, ConsortierClassic::kMajorTriad);
    view.SetDetectedChord(0, 71, ConsortierClassic::kMinorTriad);
    EXPECT_EQ(view.GetNote(0, 0)->chordRoot, 1) << "B is C#";
    EXPECT_EQ(view.GetNote(0, 0)->detectedRoot, 61) << "in the octave that was given";
    EXPECT_EQ(view.GetNote(0, 3)->chordRoot, 1) << "for all voices of the note";
    view.SetTransposeShift(-3);
    view.SetChord(0, 1, ConsortierClassic::kMajorTriad);
    EXPECT_EQ(view.GetNote(0, 0)->chordRoot, 10);
    view.SetTransposeShift(-0.5F);
    view.SetChord(0, 0, ConsortierClassic::kMajorTriad);
    EXPECT_EQ(view.GetNote(0, 0)->chordRoot, 11) << "cut towards 0 once 12 is added";
}

TEST_F(PitchViewNotes, NotesAreFoundByTheirSamples) {
    EXPECT_EQ(view.FindNoteAt(44099), -1);
    EXPECT_EQ(view.FindNoteAt(44100), 0);
    EXPECT_EQ(view.FindNoteAt(88200), 0);
    EXPECT_EQ(view.FindNoteAt(88201), -1);
    EXPECT_EQ(view.FindNoteAt(230000), 2);
}

TEST_F(PitchViewNotes, ResizeEmptiesTheView) {
    view.SetNoteEdit(true);
    view.Press(OnNote(0, 0));
    view.Resize(3, 2);
    EXPECT_FALSE(view.IsDragging());
    EXPECT_EQ(view.GetVoiceCount(), 3);
    EXPECT_EQ(view.GetNoteCount(), 2);
    EXPECT_TRUE(view.DrawNotes().empty());
    EXPECT_EQ(view.GetNote(0, 3), nullptr);
    EXPECT_EQ(view.GetNote(2, 0), nullptr);
    view.Resize(9, -5);
    EXPECT_EQ(view.GetVoiceCount(), 4);
    EXPECT_EQ(view.GetNoteCount(), 0);
}

TEST_F(PitchViewNotes, BeforeAnythingHappensThereIsNoEvent) {
    PitchViewEventData data;
    EXPECT_EQ(CkvoPitchView().GetEvent(data), kNoViewEvent);
    EXPECT_EQ(data, PitchViewEventData{});
}

TEST_F(PitchViewNotes, FreshViewsStandAsTheyShould) {
    const CkvoPitchView fresh;
    EXPECT_EQ(fresh.GetVoiceCount(), 4);
    EXPECT_EQ(fresh.GetAxes().topPitch, 72);
    EXPECT_EQ(fresh.GetAxes().bottomPitch, 52);
    EXPECT_EQ(fresh.GetPitchGrid(), 0.1F);
    EXPECT_EQ(fresh.GetTempoGrid(), 120);
    EXPECT_FALSE(fresh.GetCutMode());
    EXPECT_FALSE(fresh.GetNoteEdit());
    EXPECT_TRUE(fresh.GetChordEdit());
    EXPECT_FALSE(fresh.GetChordTips());
    EXPECT_EQ(fresh.GetHotNote(), -1);
    EXPECT_EQ(fresh.GetTransposeShift(), 0);
    for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_TRUE(fresh.IsVoiceEnabled(voice));
}

// --- Drawing ---

TEST_F(PitchViewNotes, EachVoiceHasItsColour) {
    const std::array<std::uint32_t, 4> colours = {0xff5f00, 0xc81405, 0x2e2ed5, 0x147405};
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        const Colour full = ColourFromRgb(colours[static_cast<std::size_t>(voice)]);
        EXPECT_EQ(Drawn(0, voice)->colour, LerpColour(kWhite, full, 0.7F));
        EXPECT_EQ(view.GetNote(0, voice)->object.selectColour, full);
    }
}

TEST_F(PitchViewNotes, OnlyNotesInViewAreDrawn) {
    EXPECT_EQ(view.DrawNotes().size(), 12U);
    view.SetPlayRegion(90000, 130000); // between the first two
    view.FitPlayRegion();
    EXPECT_TRUE(view.DrawNotes().empty());
    view.SetPlayRegion(90000, 140000);
    view.FitPlayRegion();
    EXPECT_EQ(view.DrawNotes().size(), 4U);
}

TEST_F(PitchViewNotes, SilentVoicesAreNotDrawn) {
    view.SetTransposeShift(5);
    SetPitch(1, 3, -1);
    EXPECT_FALSE(Drawn(1, 3).has_value());
    EXPECT_EQ(view.GetNotePitch(1, 3), -1);
}

TEST_F(PitchViewNotes, ANoteWithAnotherGainThanOneLooksOff) {
    for (const float gain : {0.0F, 0.5F, 2.0F}) {
        SetPitch(0, 1, 57, 0, gain);
        EXPECT_EQ(Drawn(0, 1)->style, PitchBoxStyle::kOff) << gain;
        EXPECT_EQ(view.GetNote(0, 1)->object.isOff, 1) << gain;
    }
    SetPitch(0, 1, 57);
    EXPECT_EQ(Drawn(0, 1)->style, PitchBoxStyle::kNote);
}

TEST_F(PitchViewNotes, ANoteOfVoiceTwoOnThePitchOfVoiceOneIsDrawnAsDoubledAndVoiceOneIsNot) {
    SetPitch(0, 2, PitchOf(0, 1));
    EXPECT_EQ(Drawn(0, 2)->style, PitchBoxStyle::kDoubled);
    EXPECT_EQ(Drawn(0, 1)->style, PitchBoxStyle::kNote);
    EXPECT_EQ(view.GetNote(0, 2)->object.doubled, 1);
    SetPitch(0, 1, 50); // it is the other one that goes
    EXPECT_EQ(Drawn(0, 2)->style, PitchBoxStyle::kNote);
}

TEST_F(PitchViewNotes, DoublingFollowsADragAndNeedsTwoThatSing) {
    view.SetNoteEdit(true);
    DragNoteTo(0, 2, PitchOf(0, 0));
    EXPECT_EQ(Drawn(0, 2)->style, PitchBoxStyle::kDoubled);
    SetPitch(1, 1, -1);
    SetPitch(1, 2, -1);
    EXPECT_EQ(view.GetNote(1, 2)->object.doubled, 0);
    SetPitch(0, 2, PitchOf(0, 0), 0, 0);
    EXPECT_EQ(Drawn(0, 2)->style, PitchBoxStyle::kOff) << "what is off looks off";
}

TEST_F(PitchViewNotes, TheRecordedPitchIsALineThroughTheRowWhereItWasSung) {
    EXPECT_TRUE(view.DrawRecordedPitch().empty());
    SetPitch(1, 0, 65, 3);
    const std::vector<RecordedPitchLine> lines = view.DrawRecordedPitch();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].note, 1);
    EXPECT_EQ(lines[0].from, (PixelPoint{232, 155})); // 62.5: 261 - 105.5, cut
    EXPECT_EQ(lines[0].to, (PixelPoint{298, 155}));
    EXPECT_EQ(lines[0].colour, WidgetColour(kVoiceColours[0]));
    EXPECT_EQ(RecordedPitchLine::kWidth, 3);
}

TEST_F(PitchViewNotes, UpToHalfASemitoneNoLineIsNeeded) {
    for (const float offset : {0.5F, -0.5F}) {
        SetPitch(1, 0, 65, offset);
        EXPECT_TRUE(view.DrawRecordedPitch().empty()) << offset;
    }
    for (const float offset : {0.51F, -0.51F}) {
        SetPitch(1, 0, 65, offset);
        EXPECT_EQ(view.DrawRecordedPitch().size(), 1U) << offset;
    }
}

TEST_F(PitchViewNotes, OnlyTheLeadHasRecordedPitchLines) {
    SetPitch(1, 2, 58, 3);
    EXPECT_TRUE(view.DrawRecordedPitch().empty());
}

TEST_F(PitchViewNotes, HidingVoiceZeroHidesItsRecordedPitchLines) {
    SetPitch(1, 0, 65, 3);
    view.SetVoiceEnabled(0, false);
    EXPECT_TRUE(view.DrawRecordedPitch().empty());
    EXPECT_FALSE(Drawn(1, 0).has_value());
    EXPECT_EQ(view.DrawNotes().size(), 9U) << "the others stay";
}

TEST_F(PitchViewNotes, TheSungCurveBreaksWhereNothingIsSung) {
    const std::vector<PitchCurvePoint> curve = {{0, 60, 1, true},
                                                {10000, 62, 1, true},
                                                {20000, 0, 0, false},
                                                {30000, 64, 1, true},
                                                {40000, 64, 1, true}};
    view.SetCurve(curve);
    const std::vector<PixelPolyline> lines = view.DrawCurve();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].size(), 2U);
    EXPECT_EQ(lines[0][0], (PixelPoint{35, Axes().YFromPitch(60.5)}));
    EXPECT_EQ(lines[1][1], (PixelPoint{Axes().XFromSample(40000), Axes().YFromPitch(64.5)}));
    view.SetTransposeShift(2);
    view.SetTuningOffset(0.5F);
    EXPECT_EQ(view.DrawCurve()[0][0].y, Axes().YFromPitch(62));
    view.SetShowFreqRow(false);
    EXPECT_TRUE(view.DrawCurve().empty());
}

TEST_F(PitchViewNotes, RowsKnowTheirKeysAndTheScale) {
    const std::array<std::int32_t, 8> tones = {0, 2, 4, 5, 7, 9, 11, 1}; // the eighth is one too many
    view.SetScale(tones, 0);
    std::vector<PitchRowDrawing> rows = view.DrawPitchRows();
    ASSERT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows.front().pitch, 52);
    EXPECT_EQ(rows.front().rect.y, Axes().RowTopFromPitch(52));
    const PitchRowDrawing& c = rows[8];
    EXPECT_EQ(c.name, "C4");
    EXPECT_TRUE(c.isRoot && c.inScale && !c.blackKey);
    EXPECT_EQ(rows[9].name, "C#4");
    EXPECT_TRUE(rows[9].blackKey && !rows[9].inScale);
    view.SetUseFlats(true);
    EXPECT_EQ(view.DrawPitchRows()[9].name, "Db4");
    view.SetTransposeShift(2);
    rows = view.DrawPitchRows();
    EXPECT_TRUE(rows[10].isRoot) << "the scale moves with the notes";
    EXPECT_FALSE(rows[8].isRoot);
}

TEST_F(PitchViewNotes, ChordsStandOverTheirNotesUpToTheNext) {
    EXPECT_TRUE(view.DrawChords().empty());
    view.SetChord(0, 0, ConsortierClassic::kMajorSeventh);
    view.SetChord(1, 9, ConsortierClassic::kMinorTriad);
    view.SetDetectedChord(1, 5, ConsortierClassic::kMajorTriad);
    const std::vector<ChordDrawing> chords = view.DrawChords();
    ASSERT_EQ(chords.size(), 2U);
    EXPECT_EQ(chords[0].name, "C M7");
    EXPECT_EQ(chords[0].detectedName, "");
    EXPECT_EQ(chords[0].rect, (PixelRect{100, 36, 132, 13})); // 100 to 232
    EXPECT_EQ(chords[0].colour, kChordColours[0]);
    EXPECT_EQ(chords[1].name, "a");
    EXPECT_EQ(chords[1].detectedName, "F");
    EXPECT_EQ(chords[1].colour, kChordColours[9]);
}

TEST_F(PitchViewNotes, TheChordOnDisplayIsTransposed) {
    EXPECT_EQ(view.GetChordDisplay(), "");
    view.SetTransposeShift(3);
    view.SetChordDisplay(0, ConsortierClassic::kDominantSeventh);
    EXPECT_EQ(view.GetChordDisplay(), "D# 7");
}

TEST_F(PitchViewNotes, ThePositionIsALineWhereItIsInSight) {
    view.SetPlayPosition(44100, true);
    EXPECT_EQ(view.DrawPosition().x, 100);
    EXPECT_TRUE(view.DrawPosition().inSight);
    EXPECT_TRUE(view.DrawPosition().playing);
    view.SetPlayPosition(-1000);
    EXPECT_FALSE(view.DrawPosition().inSight);
    EXPECT_FALSE(view.DrawPosition().playing);
}

TEST_F(PitchViewNotes, DamageTellsWhatToDrawAgain) {
    view.TakeDamage();
    EXPECT_EQ(view.TakeDamage(), 0U);
    view.SetPlayPosition(1, true);
    EXPECT_EQ(view.TakeDamage(), 0x18U);
    SetPitch(0, 0, 61);
    EXPECT_EQ(view.TakeDamage(), 0x12U);
    view.SetPlayRegion(5, 6);
    EXPECT_EQ(view.TakeDamage(), 0x11U);
    view.ResetView();
    EXPECT_EQ(view.TakeDamage(), 0x40U);
}

TEST_F(PitchViewNotes, StatesOfTheApplicationAreKept) {
    EXPECT_EQ(view.GetBackground(), PitchViewBackground::kNormal);
    for (const PitchViewBackground state : {PitchViewBackground::kEdit, PitchViewBackground::kLive}) {
        view.SetBackground(state);
        EXPECT_EQ(view.GetBackground(), state);
    }
    EXPECT_FALSE(view.NeedsRebuild());
    view.SetRebuild(true);
    EXPECT_TRUE(view.NeedsRebuild());
}

} // namespace
} // namespace sonorelle
