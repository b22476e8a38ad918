#include "app/playback_settings.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace sonorelle {
namespace {

constexpr std::int32_t kHugeKey = std::numeric_limits<std::int32_t>::max();

using Region = std::pair<std::int32_t, std::int32_t>;

// The panel of a melody of 10000 samples whose region is 2000 to 5000.
struct PlaybackRig {
    PlaybackRig() {
        panel.SetMelodyLength(10000);
        panel.SetRegion(2000, 5000);
        panel.SetOnChanged([this] { ++calls; });
    }
    int Calls() { return std::exchange(calls, 0); }
    Region GetRegion() const {
        Region region;
        panel.GetRegion(region.first, region.second);
        return region;
    }

    CkvovirelainePlaybackSettings panel;
    int calls = 0;
};

TEST(PlaybackSettings, BeginsInTimeModeWithKey60) {
    const CkvovirelainePlaybackSettings panel;
    EXPECT_EQ(panel.GetMode(), 0);
    EXPECT_EQ(panel.GetTriggerNote(), 60);
    EXPECT_EQ(panel.GetNote(), 0);
    EXPECT_EQ(panel.GetOctave(), 3);
    EXPECT_EQ(panel.GetOffset(), 0);
    EXPECT_FALSE(panel.IsOffsetSet());
    EXPECT_FALSE(panel.GetSyncTempo());
    EXPECT_EQ(panel.GetSampleRate(), 44100);
}

// Modes.

TEST(PlaybackSettings, TimeAndMidiExcludeEachOther) {
    PlaybackRig rig;
    rig.panel.PressMidi();
    EXPECT_EQ(rig.panel.GetMode(), 1);
    rig.panel.PressMidi(); // stays down
    EXPECT_EQ(rig.panel.GetMode(), 1);
    rig.panel.PressTime();
    EXPECT_EQ(rig.panel.GetMode(), 0);
    EXPECT_EQ(rig.Calls(), 3);
}

TEST(PlaybackSettings, TheModeChoosesTheRowAndTheMarkerButtons) {
    PlaybackRig rig;
    EXPECT_TRUE(rig.panel.IsOffsetRowVisible());
    EXPECT_FALSE(rig.panel.IsTriggerRowVisible());
    EXPECT_TRUE(rig.panel.AreMarkerButtonsActive());
    rig.panel.PressMidi();
    EXPECT_FALSE(rig.panel.IsOffsetRowVisible());
    EXPECT_TRUE(rig.panel.IsTriggerRowVisible());
    EXPECT_FALSE(rig.panel.AreMarkerButtonsActive());
}

TEST(PlaybackSettings, AToggleLimitsTheStartMarkerToTheEndMarker) {
    PlaybackRig rig;
    rig.panel.StartDisplay().SetRange(0, 9000); // as if another thread had moved the end meanwhile
    rig.panel.StartDisplay().SetValue(8000);
    rig.panel.PressMidi();
    EXPECT_EQ(rig.GetRegion(), Region(5000, 5000));
    EXPECT_EQ(rig.panel.StartDisplay().GetMaximum(), 5000);
}

TEST(PlaybackSettings, ASetModeTellsNobody) {
    PlaybackRig rig;
    rig.panel.SetMode(1);
    EXPECT_EQ(rig.panel.GetMode(), 1);
    for (const std::int32_t bad : {-1, 2, kHugeKey}) rig.panel.SetMode(bad);
    EXPECT_EQ(rig.panel.GetMode(), 1);
    EXPECT_EQ(rig.Calls(), 0);
}

// Key.

TEST(PlaybackSettings, TheKeyIsMadeOfOctaveAndNote) {
    PlaybackRig rig;
    rig.panel.ChangeOctave(-2);
    EXPECT_EQ(rig.panel.GetTriggerKey(), 0);
    rig.panel.ChooseNote(7);
    EXPECT_EQ(rig.panel.GetTriggerKey(), 7);
    rig.panel.ChangeOctave(8);
    EXPECT_EQ(rig.panel.GetTriggerKey(), 127);
    rig.panel.ChooseNote(11);
    EXPECT_EQ(rig.panel.GetTriggerKey(), 131);
    EXPECT_EQ(rig.Calls(), 4);
    rig.panel.ChooseNote(11);
    rig.panel.ChangeOctave(8);
    EXPECT_EQ(rig.Calls(), 0) << "nothing has changed";
}

TEST(PlaybackSettings, EveryKeyShowsItsOctaveAndNote) {
    PlaybackRig rig;
    for (std::int32_t key = 0; key <= 131; ++key) {
        rig.panel.SetTriggerNote(key);
        EXPECT_EQ(rig.panel.GetTriggerNote(), key);
        EXPECT_EQ(rig.panel.GetOctave() * 12 + rig.panel.GetNote() + 24, key);
    }
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(PlaybackSettings, OctavesAreHeldToTheirRangeAndBadNotesIgnored) {
    PlaybackRig rig;
    rig.panel.ChangeOctave(-kHugeKey);
    EXPECT_EQ(rig.panel.GetOctave(), -2);
    rig.panel.ChangeOctave(kHugeKey);
    EXPECT_EQ(rig.panel.GetOctave(), 8);
    rig.Calls();
    for (const std::int32_t bad : {-1, 12, kHugeKey, -kHugeKey}) rig.panel.ChooseNote(bad);
    EXPECT_EQ(rig.panel.GetNote(), 0);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(PlaybackSettings, NoKeyShowsTheLastOneAndComesBackWithIt) {
    PlaybackRig rig;
    rig.panel.SetTriggerNote(64);
    rig.panel.SetTriggerNote(-1);
    EXPECT_EQ(rig.panel.GetTriggerNote(), -1);
    EXPECT_EQ(rig.panel.GetNote(), 4);
    EXPECT_EQ(rig.panel.GetOctave(), 3);
    rig.panel.ChooseNote(4);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 64);
    EXPECT_EQ(rig.Calls(), 1);
    for (const std::int32_t bad : {-2, 132, kHugeKey, -kHugeKey}) rig.panel.SetTriggerNote(bad);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 64);
}

// Offset.

TEST(PlaybackSettings, SetOffsetTakesTheHostPositionAndMarksIt) {
    PlaybackRig rig;
    rig.panel.SetHostPosition(3000, 88200.5);
    rig.panel.PressSetOffset();
    EXPECT_EQ(rig.panel.GetOffset(), 88200.5);
    EXPECT_EQ(rig.panel.GetChangeCode(), 1);
    EXPECT_TRUE(rig.panel.IsOffsetSet());
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.ClearOffsetSet();
    EXPECT_EQ(rig.panel.GetChangeCode(), 0);
}

TEST(PlaybackSettings, AnEnteredOffsetIsMarkedToo) {
    PlaybackRig rig;
    EXPECT_TRUE(rig.panel.OffsetDisplay().Enter("-1:02.500"));
    EXPECT_EQ(rig.panel.GetOffset(), -62.5 * 44100);
    EXPECT_TRUE(rig.panel.IsOffsetSet());
    EXPECT_EQ(rig.Calls(), 1);
}

TEST(PlaybackSettings, AnOffsetFromTheApplicationIsMarkedAndTellsNobody) {
    PlaybackRig rig;
    rig.panel.SetOffset(kDoubleNaN);
    rig.panel.SetOffset(kDoubleInfinity);
    EXPECT_FALSE(rig.panel.IsOffsetSet());
    rig.panel.SetOffset(1e30);
    EXPECT_EQ(rig.panel.GetOffset(), 1e24);
    rig.panel.SetOffset(-1234);
    EXPECT_EQ(rig.panel.GetOffset(), -1234);
    EXPECT_TRUE(rig.panel.IsOffsetSet());
    EXPECT_EQ(rig.Calls(), 0);
}

// Markers. r is the melody position less the offset.

TEST(PlaybackSettings, SetStartBeforeTheEndMovesTheStartAlone) {
    PlaybackRig rig;
    rig.panel.SetOffset(100);
    rig.panel.SetHostPosition(4100.7, 0);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(4000, 5000));
    EXPECT_EQ(rig.panel.GetChangeCode(), 0) << "the marker buttons clear it";
    EXPECT_EQ(rig.Calls(), 1);
}

TEST(PlaybackSettings, SetStartAtOrBehindTheEndTakesTheRegionAlong) {
    PlaybackRig rig;
    rig.panel.SetHostPosition(5000, 0);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(5000, 8000));
    rig.panel.SetHostPosition(9000, 0);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(9000, 10000)) << "limited to the melody";
    rig.panel.SetHostPosition(70000, 0);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(10000, 10000));
}

TEST(PlaybackSettings, SetStartBeforeTheMelodyIsItsBeginning) {
    PlaybackRig rig;
    rig.panel.SetHostPosition(-300, 0);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(0, 5000));
}

TEST(PlaybackSettings, SetEndBehindTheStartMovesTheEndAlone) {
    PlaybackRig rig;
    rig.panel.SetOffset(-100);
    rig.panel.SetHostPosition(6900, 0);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(2000, 7000));
    EXPECT_FALSE(rig.panel.IsOffsetSet());
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.SetHostPosition(80000, 0);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(2000, 10000));
}

TEST(PlaybackSettings, SetEndAtOrBeforeTheStartTakesTheRegionAlong) {
    PlaybackRig rig;
    rig.panel.SetRegion(5000, 6000);
    rig.panel.SetHostPosition(5000, 0);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(4000, 5000));
    rig.panel.SetHostPosition(400, 0);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(0, 400)) << "limited to 0";
    rig.panel.SetRegion(5000, 6000);
    rig.panel.SetHostPosition(-400, 0);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(0, 0));
}

TEST(PlaybackSettings, TheSetButtonsAnswerNothingInMidiMode) {
    PlaybackRig rig;
    rig.panel.SetHostPosition(4000, 4000);
    rig.panel.SetMode(1);
    rig.panel.PressSetStart();
    rig.panel.PressSetEnd();
    rig.panel.PressSetOffset();
    EXPECT_EQ(rig.GetRegion(), Region(2000, 5000));
    EXPECT_EQ(rig.panel.GetOffset(), 0);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(PlaybackSettings, PositionsThatAreNoNumbersAreNotTaken) {
    PlaybackRig rig;
    rig.panel.SetHostPosition(4000, 400);
    rig.panel.SetHostPosition(kDoubleNaN, 0);
    rig.panel.SetHostPosition(0, kDoubleInfinity);
    EXPECT_EQ(rig.panel.GetShownMelodyPosition(), 4000);
    EXPECT_EQ(rig.panel.GetShownHostPosition(), 400);
    rig.panel.SetOffset(-1e24);
    rig.panel.PressSetStart();
    EXPECT_EQ(rig.GetRegion(), Region(10000, 10000));
    rig.panel.SetOffset(1e24);
    rig.panel.PressSetEnd();
    EXPECT_EQ(rig.GetRegion(), Region(0, 0));
}

TEST(PlaybackSettings, AnEnteredEndBeforeTheStartTakesTheStartAlong) {
    PlaybackRig rig;
    rig.panel.SetSampleRate(1000); // milliseconds are samples
    EXPECT_TRUE(rig.panel.EndDisplay().Enter("1.5"));
    EXPECT_EQ(rig.GetRegion(), Region(1500, 1500));
    EXPECT_EQ(rig.Calls(), 1);
}

TEST(PlaybackSettings, AnEnteredStartEndsAtTheEndMarkerAndAnEndAtTheMelody) {
    PlaybackRig rig;
    rig.panel.SetSampleRate(1000);
    EXPECT_TRUE(rig.panel.StartDisplay().Enter("0:59"));
    EXPECT_EQ(rig.GetRegion(), Region(5000, 5000));
    EXPECT_TRUE(rig.panel.EndDisplay().Enter("0:59"));
    EXPECT_EQ(rig.GetRegion(), Region(5000, 10000));
    EXPECT_TRUE(rig.panel.StartDisplay().Enter("7.0"));
    EXPECT_EQ(rig.GetRegion(), Region(7000, 10000)) << "the start's limit has followed";
    EXPECT_TRUE(rig.panel.StartDisplay().Enter("-7.0"));
    EXPECT_EQ(rig.GetRegion(), Region(0, 10000));
    EXPECT_EQ(rig.Calls(), 4);
}

TEST(PlaybackSettings, ARegionLiesWithinTheMelody) {
    PlaybackRig rig;
    rig.panel.SetRegion(-5, kHugeKey);
    EXPECT_EQ(rig.GetRegion(), Region(0, 10000));
    rig.panel.SetRegion(700, 600);
    EXPECT_EQ(rig.GetRegion(), Region(600, 600));
    rig.panel.SetRegion(0, -kHugeKey);
    EXPECT_EQ(rig.GetRegion(), Region(0, 0));
    rig.panel.SetEndMarker(900);
    rig.panel.SetStartMarker(300);
    EXPECT_EQ(rig.GetRegion(), Region(300, 900));
    rig.panel.SetMelodyLength(500);
    EXPECT_EQ(rig.GetRegion(), Region(300, 500));
    rig.panel.SetMelodyLength(-1);
    EXPECT_EQ(rig.GetRegion(), Region(0, 0));
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(PlaybackSettings, BeforeTheLengthIsKnownARegionHasNoLimit) {
    CkvovirelainePlaybackSettings panel;
    panel.SetRegion(5, kHugeKey);
    EXPECT_EQ(panel.GetStartMarker(), 5);
    EXPECT_EQ(panel.GetEndMarker(), kHugeKey);
    panel.SetHostPosition(1e18, 0);
    panel.PressSetStart();
    EXPECT_EQ(panel.GetStartMarker(), kHugeKey);
    EXPECT_EQ(panel.GetEndMarker(), kHugeKey);
}

// The rest.

TEST(PlaybackSettings, TheSyncBoxToggles) {
    PlaybackRig rig;
    rig.panel.ToggleSync();
    EXPECT_TRUE(rig.panel.GetSyncTempo());
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.SetSyncTempo(false);
    EXPECT_FALSE(rig.panel.GetSyncTempo());
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(PlaybackSettings, TheSampleRateIsThatOfAllThreeTexts) {
    PlaybackRig rig;
    rig.panel.SetSampleRate(1000);
    EXPECT_EQ(rig.panel.GetSampleRate(), 1000);
    EXPECT_EQ(rig.panel.StartDisplay().GetText(), "0:02.000");
    EXPECT_EQ(rig.panel.EndDisplay().GetText(), "0:05.000");
    EXPECT_EQ(rig.panel.OffsetDisplay().GetText(), "0:00.000");
    EXPECT_EQ(rig.GetRegion(), Region(2000, 5000));
    EXPECT_EQ(rig.Calls(), 0);
}

} // namespace
} // namespace sonorelle
