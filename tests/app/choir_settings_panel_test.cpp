#include "app/choir_settings_panel.h"

#include "app/snapshot_store.h"
#include "harmony/styles.h"
#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace sonorelle {
namespace {

constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

// The panel, and how often it has told a change.
struct ChoirPanelRig {
    ChoirPanelRig() {
        panel.SetOnChanged([this] { ++calls; });
    }
    int Calls() { return std::exchange(calls, 0); }

    CCriticalSection audioLock;
    CkvovirelaineChoirSettings panel{audioLock};
    int calls = 0;
};

TEST(ChoirSettingsPanel, BeginsWithFourIntelligentVoices) {
    ChoirPanelRig rig;
    EXPECT_EQ(rig.panel.GetMode(), 0);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    EXPECT_EQ(rig.panel.GetStyle(), 0);
    EXPECT_EQ(rig.panel.GetVoiceCount(), 4);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.6F);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 1);
    EXPECT_TRUE(rig.panel.GetSnapToScale());
    EXPECT_TRUE(rig.panel.GetAllowLive());
    EXPECT_FALSE(rig.panel.IsRecording());
    EXPECT_FALSE(rig.panel.AreLiveControlsActive());
}

// Modes and pages.

TEST(ChoirSettingsPanel, EachStyleHasItsMode) {
    ChoirPanelRig rig;
    const std::int32_t modes[kStyleRows] = {0, 0, 0, 4, 8, 16, 1, 1};
    for (std::int32_t row = kStyleRows - 1; row >= 0; --row) {
        rig.panel.ChooseStyle(row);
        EXPECT_EQ(rig.panel.GetMode(), modes[row]) << row;
        EXPECT_EQ(rig.Calls(), 1) << row;
    }
}

TEST(ChoirSettingsPanel, EditShowsItsPageAndGoesBackToTheModeOfTheStyle) {
    ChoirPanelRig rig;
    rig.panel.ChooseStyle(4);
    rig.Calls();
    rig.panel.PressEdit(true);
    EXPECT_EQ(rig.panel.GetMode(), 2);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kEdit);
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.PressEdit(false);
    EXPECT_EQ(rig.panel.GetMode(), 8);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    EXPECT_EQ(rig.Calls(), 1);
}

TEST(ChoirSettingsPanel, APressOnLiveWhenItIsDownReturnsToTheModeOfTheStyle) {
    ChoirPanelRig rig;
    rig.panel.ChooseStyle(7);
    rig.Calls();
    rig.panel.PressLive(true);
    EXPECT_EQ(rig.panel.GetMode(), 0x10000);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kLive);
    rig.panel.PressLive(false);
    EXPECT_EQ(rig.panel.GetMode(), 1);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    EXPECT_EQ(rig.Calls(), 2);
}

TEST(ChoirSettingsPanel, TheThreePagesExcludeEachOther) {
    ChoirPanelRig rig;
    rig.panel.PressEdit(true);
    rig.panel.PressLive(true);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kLive);
    rig.panel.PressEdit(true);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kEdit);
    rig.panel.PressAutomatic();
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    rig.panel.PressAutomatic(); // stays down
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    EXPECT_EQ(rig.Calls(), 5);
}

TEST(ChoirSettingsPanel, TheInterpretationChoosesTheLiveMode) {
    ChoirPanelRig rig;
    rig.panel.PressLive(true);
    rig.Calls();
    rig.panel.ChooseInterpretation(1);
    EXPECT_EQ(rig.panel.GetMode(), 0x10001);
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.PressLive(false);
    rig.panel.PressLive(true);
    EXPECT_EQ(rig.panel.GetMode(), 0x10001);
    rig.panel.ChooseInterpretation(0);
    EXPECT_EQ(rig.panel.GetMode(), 0x10000);
    rig.panel.SetInterpretation(1);
    EXPECT_EQ(rig.panel.GetMode(), 0x10001);
    rig.panel.PressAutomatic();
    rig.panel.ChooseInterpretation(0); // on another page the mode is not its business
    EXPECT_EQ(rig.panel.GetMode(), 0);
}

TEST(ChoirSettingsPanel, SettingAModeShowsItsPageAndAStyleOfIt) {
    ChoirPanelRig rig;
    rig.panel.SetMode(8);
    EXPECT_EQ(rig.panel.GetStyle(), 4);
    rig.panel.SetMode(2);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kEdit);
    EXPECT_EQ(rig.panel.GetStyle(), 4);
    rig.panel.SetMode(0x10001);
    EXPECT_EQ(rig.panel.GetInterpretation(), 1);
    EXPECT_EQ(rig.panel.GetStyle(), 4);
    rig.panel.SetMode(0);
    EXPECT_EQ(rig.panel.GetStyle(), 0);
    rig.panel.SetStyle(2);
    rig.panel.SetMode(0);
    EXPECT_EQ(rig.panel.GetStyle(), 2);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(ChoirSettingsPanel, AModeThatNobodyKnowsIsKeptAndKeepsTheStyle) {
    ChoirPanelRig rig;
    rig.panel.SetStyle(5);
    for (const std::int32_t mode : {-1, 5, 0x10002, kHuge, -kHuge}) {
        rig.panel.SetMode(mode);
        EXPECT_EQ(rig.panel.GetMode(), mode);
        EXPECT_EQ(rig.panel.GetStyle(), 5);
        EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kAutomatic);
    }
}

TEST(ChoirSettingsPanel, AStyleSetOnAnotherPageLeavesTheMode) {
    ChoirPanelRig rig;
    rig.panel.SetMode(2);
    rig.panel.SetStyle(3);
    EXPECT_EQ(rig.panel.GetMode(), 2);
    EXPECT_EQ(rig.panel.GetStyle(), 3);
    rig.panel.PressEdit(false);
    EXPECT_EQ(rig.panel.GetMode(), 4);
}

TEST(ChoirSettingsPanel, ForbiddingLiveOnItsPageFallsBackToEdit) {
    ChoirPanelRig rig;
    EXPECT_FALSE(rig.panel.SetAllowLive(true));
    rig.panel.PressLive(true);
    rig.Calls();
    EXPECT_TRUE(rig.panel.SetAllowLive(false));
    EXPECT_EQ(rig.panel.GetMode(), 2);
    EXPECT_FALSE(rig.panel.GetAllowLive());
    EXPECT_FALSE(rig.panel.SetAllowLive(false));
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(ChoirSettingsPanel, LiveAnswersNoPressWhileItIsForbidden) {
    ChoirPanelRig rig;
    rig.panel.SetAllowLive(false);
    rig.panel.PressLive(true);
    EXPECT_EQ(rig.panel.GetMode(), 0);
    EXPECT_EQ(rig.Calls(), 0);
    rig.panel.SetMode(0x10000); // a recalled arrangement
    EXPECT_EQ(rig.panel.GetMode(), 2);
    rig.panel.SetAllowLive(true);
    rig.panel.PressLive(true);
    EXPECT_EQ(rig.panel.GetMode(), 0x10000);
}

// The store.

TEST(ChoirSettingsPanel, TheModeWordIsAnElementOfFourBytes) {
    ChoirPanelRig rig;
    CSnapshotStore store;
    rig.panel.RegisterWith(store);
    ASSERT_EQ(store.GetElementCount(), 1);
    EXPECT_EQ(store.GetElement(0)->size, 4);
    EXPECT_EQ(store.GetElement(0)->version, 1.0F);
    EXPECT_TRUE(store.GetElement(0)->active);
}

TEST(ChoirSettingsPanel, UndoBringsTheModeBackOnceItIsRead) {
    ChoirPanelRig rig;
    CSnapshotStore store;
    rig.panel.RegisterWith(store);
    rig.panel.ChooseStyle(5);
    store.PushUndo();
    rig.panel.PressLive(true);
    store.PushUndo();
    rig.panel.PressLive(false);
    rig.panel.ChooseStyle(0);
    store.PushUndo();
    ASSERT_TRUE(store.Undo());
    EXPECT_EQ(rig.panel.GetMode(), 0);
    rig.panel.ReadModeFromStore();
    EXPECT_EQ(rig.panel.GetMode(), 0x10000);
    EXPECT_EQ(rig.panel.GetPage(), ChoirPage::kLive);
    ASSERT_TRUE(store.Undo());
    rig.panel.ReadModeFromStore();
    EXPECT_EQ(rig.panel.GetMode(), 16);
    EXPECT_EQ(rig.panel.GetStyle(), 5);
}

TEST(ChoirSettingsPanel, EveryWayToAModeReachesTheStore) {
    ChoirPanelRig rig;
    CSnapshotStore store;
    rig.panel.RegisterWith(store);
    const auto stored = [&store] { return *static_cast<const std::int32_t*>(store.GetElement(0)->data); };
    rig.panel.SetMode(4);
    EXPECT_EQ(stored(), 4);
    rig.panel.PressEdit(true);
    EXPECT_EQ(stored(), 2);
    rig.panel.PressLive(true);
    EXPECT_EQ(stored(), 0x10000);
    rig.panel.ChooseInterpretation(1);
    EXPECT_EQ(stored(), 0x10001);
    rig.panel.SetAllowLive(false);
    EXPECT_EQ(stored(), 2);
    rig.panel.PressAutomatic();
    rig.panel.SetStyle(6);
    EXPECT_EQ(stored(), 1);
}

// Style and details.

TEST(ChoirSettingsPanel, AStyleOfFewerVoicesHidesTheExtraRowsAndLowersTheMostVoicesAbove) {
    ChoirPanelRig rig;
    rig.panel.MoveArrangement(3);
    EXPECT_EQ(rig.panel.GetMostVoicesAbove(), 3);
    EXPECT_TRUE(rig.panel.GetVoiceRows(130)[3].visible);
    rig.panel.ChooseStyle(1);
    EXPECT_EQ(rig.panel.GetMostVoicesAbove(), 2);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 2);
    EXPECT_TRUE(rig.panel.GetVoiceRows(130)[2].visible);
    EXPECT_FALSE(rig.panel.GetVoiceRows(130)[3].visible);
    rig.panel.ChooseStyle(2);
    EXPECT_EQ(rig.panel.GetMostVoicesAbove(), 1);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 1);
    EXPECT_FALSE(rig.panel.GetVoiceRows(130)[2].visible);
    EXPECT_EQ(rig.panel.GetVoiceOrder(), OrderOfVoices(2, 1));
}

TEST(ChoirSettingsPanel, TheVoiceArrangementIsSetInAnyOrderWithTheStyle) {
    ChoirPanelRig rig;
    rig.panel.SetStyle(2);
    rig.panel.SetVoiceArrangement(3);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 1);
    rig.panel.SetStyle(0);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 3);
    rig.panel.SetVoiceArrangement(kHuge);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 3);
    rig.panel.SetVoiceArrangement(-kHuge);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 0);
}

TEST(ChoirSettingsPanel, TheArrangementSliderIsTruncatedAndTellsOnlyChanges) {
    ChoirPanelRig rig;
    rig.panel.MoveArrangement(2.9);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 2);
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.MoveArrangement(2.1);
    EXPECT_EQ(rig.Calls(), 0);
    rig.panel.MoveArrangement(kDoubleNaN);
    rig.panel.MoveArrangement(kDoubleInfinity);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 2);
    EXPECT_EQ(rig.Calls(), 0);
    rig.panel.MoveArrangement(-1e300);
    EXPECT_EQ(rig.panel.GetVoiceArrangement(), 0);
    EXPECT_EQ(rig.panel.GetVoiceOrder(), OrderOfVoices(4, 0));
}

TEST(ChoirSettingsPanel, AChangeOfTheRangeMovesTheRowsAndTells) {
    ChoirPanelRig rig;
    ASSERT_EQ(rig.panel.GetMode(), 0);
    const VoiceRows before = rig.panel.GetVoiceRows(130);
    rig.panel.MoveRange(1.0);
    EXPECT_EQ(rig.Calls(), 1);
    const VoiceRows after = rig.panel.GetVoiceRows(130);
    EXPECT_GT(after[1].y - after[0].y, before[1].y - before[0].y);
    EXPECT_LT(after[0].y, before[0].y);
    EXPECT_EQ(rig.panel.GetMode(), 0);
}

TEST(ChoirSettingsPanel, TheRangeSliderMovesByTenths) {
    ChoirPanelRig rig;
    rig.panel.MoveRange(0.3400001);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.3F);
    EXPECT_EQ(rig.Calls(), 1);
    rig.panel.MoveRange(0.28);
    EXPECT_EQ(rig.Calls(), 0);
    rig.panel.MoveRange(12);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 1.0F);
    rig.panel.MoveRange(-12);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.0F);
    rig.Calls();
    rig.panel.MoveRange(kDoubleNaN);
    rig.panel.MoveRange(kDoubleInfinity);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.0F);
    EXPECT_EQ(rig.Calls(), 0);
    rig.panel.SetVoiceRange(0.123F); // what the driver holds is not rounded
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.123F);
    rig.panel.SetVoiceRange(static_cast<float>(kDoubleNaN));
    EXPECT_EQ(rig.panel.GetVoiceRange(), 0.123F);
    rig.panel.SetVoiceRange(2);
    EXPECT_EQ(rig.panel.GetVoiceRange(), 1.0F);
}

TEST(ChoirSettingsPanel, EachStyleFamilyKeepsItsOwnDetailRow) {
    ChoirPanelRig rig;
    rig.panel.ChooseStyle(3);
    rig.panel.ChooseDetail(8);
    rig.panel.ChooseStyle(4);
    EXPECT_EQ(rig.panel.GetDetailRow(), 0);
    rig.panel.ChooseDetail(2);
    rig.panel.ChooseStyle(3);
    EXPECT_EQ(rig.panel.GetDetailRow(), 8);
    EXPECT_EQ(rig.panel.GetDriverStyle(), (DriverStyle{2, 8}));
    rig.panel.ChooseStyle(4);
    EXPECT_EQ(rig.panel.GetDriverStyle(), (DriverStyle{3, 2}));
    EXPECT_EQ(rig.Calls(), 6);
    rig.panel.ChooseDetail(2);
    rig.panel.ChooseDetail(4); // the list has four rows
    rig.panel.ChooseDetail(-1);
    EXPECT_EQ(rig.panel.GetDetailRow(), 2);
    rig.panel.ChooseStyle(0);
    rig.Calls();
    rig.panel.ChooseDetail(1); // no list there
    EXPECT_EQ(rig.panel.GetDetailRow(), 0);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(ChoirSettingsPanel, TheDetailOfOrganumChangesTheVoiceCount) {
    ChoirPanelRig rig;
    rig.panel.ChooseStyle(5);
    EXPECT_EQ(rig.panel.GetVoiceCount(), 2);
    rig.panel.ChooseDetail(6);
    EXPECT_EQ(rig.panel.GetVoiceCount(), 3);
    EXPECT_TRUE(rig.panel.GetVoiceRows(130)[2].visible);
}

TEST(ChoirSettingsPanel, TakesStyleAndArrangementAsTheDriverHasThem) {
    ChoirPanelRig rig;
    rig.panel.SetDriverStyle(4, 6);
    EXPECT_EQ(rig.panel.GetStyle(), 5);
    EXPECT_EQ(rig.panel.GetDetailRow(), 6);
    EXPECT_EQ(rig.panel.GetMode(), 16);
    rig.panel.SetDriverStyle(1, 1);
    EXPECT_EQ(rig.panel.GetStyle(), 7);
    rig.panel.SetDriverStyle(1, 5);
    rig.panel.SetDriverStyle(kHuge, -kHuge);
    EXPECT_EQ(rig.panel.GetStyle(), 7);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(ChoirSettingsPanel, TheIntervalListReadsDownwards) {
    EXPECT_STREQ(CkvovirelaineChoirSettings::IntervalChoiceText(0), "Up Octave");
    EXPECT_STREQ(CkvovirelaineChoirSettings::IntervalChoiceText(7), "Prime");
    EXPECT_STREQ(CkvovirelaineChoirSettings::IntervalChoiceText(14), "Down Octave");
    EXPECT_STREQ(CkvovirelaineChoirSettings::IntervalChoiceText(15), "");
    EXPECT_STREQ(CkvovirelaineChoirSettings::IntervalChoiceText(-1), "");
}

TEST(ChoirSettingsPanel, AnIntervalIsStoredAs14MinusItsRow) {
    ChoirPanelRig rig;
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        rig.panel.ChooseInterval(voice, 10 + voice);
        EXPECT_EQ(rig.panel.GetInterval(voice), 4 - voice);
        EXPECT_EQ(rig.panel.GetIntervalChoiceRow(voice), 10 + voice);
    }
    EXPECT_EQ(rig.Calls(), 4);
    rig.panel.ChooseInterval(0, 0);
    EXPECT_EQ(ConsortierClassic::IntervalAtListPosition(rig.panel.GetInterval(0)), 7);
    rig.panel.ChooseInterval(0, 14);
    EXPECT_EQ(ConsortierClassic::IntervalAtListPosition(rig.panel.GetInterval(0)), -7);
    rig.panel.SetInterval(0, 9);
    EXPECT_EQ(rig.panel.GetInterval(0), 9);
}

TEST(ChoirSettingsPanel, IntervalsBeginAsTheDriverDoes) {
    ChoirPanelRig rig;
    const std::int32_t intervals[] = {0, -2, 2, 5};
    for (std::int32_t voice = 0; voice < 4; ++voice)
        EXPECT_EQ(ConsortierClassic::IntervalAtListPosition(rig.panel.GetInterval(voice)), intervals[voice]);
}

TEST(ChoirSettingsPanel, IntervalRowsAreThoseOfTheVoicesOfAManualStyle) {
    ChoirPanelRig rig;
    EXPECT_FALSE(rig.panel.IsIntervalRowVisible(0));
    rig.panel.ChooseStyle(7);
    EXPECT_TRUE(rig.panel.IsIntervalRowVisible(1));
    EXPECT_FALSE(rig.panel.IsIntervalRowVisible(2));
    rig.panel.ChooseStyle(6);
    EXPECT_TRUE(rig.panel.IsIntervalRowVisible(3));
    EXPECT_FALSE(rig.panel.IsIntervalRowVisible(4));
    EXPECT_FALSE(rig.panel.IsIntervalRowVisible(-1));
}

// Key.

TEST(ChoirSettingsPanel, RootAndScaleTellAndRememberThatTheyWereTouched) {
    ChoirPanelRig rig;
    EXPECT_FALSE(rig.panel.WasChoiceChanged());
    rig.panel.ChooseRoot(0); // is so already
    EXPECT_FALSE(rig.panel.WasChoiceChanged());
    rig.panel.ChooseRoot(11);
    EXPECT_TRUE(rig.panel.WasChoiceChanged());
    rig.panel.ChooseScale(10);
    EXPECT_EQ(rig.panel.GetRoot(), 11);
    EXPECT_EQ(rig.panel.GetScale(), 10);
    EXPECT_EQ(rig.Calls(), 2);
}

TEST(ChoirSettingsPanel, OnlyTheDriverBringsTheScaleOfAllTones) {
    ChoirPanelRig rig;
    rig.panel.ChooseScale(11);
    EXPECT_EQ(rig.panel.GetScale(), 0);
    rig.panel.SetScale(11);
    EXPECT_EQ(rig.panel.GetScale(), 11);
}

TEST(ChoirSettingsPanel, ChordsHaveChangedAtFirstAndWithScaleOrSnapUntilAsked) {
    ChoirPanelRig rig;
    EXPECT_TRUE(rig.panel.GetChordsChanged());
    EXPECT_FALSE(rig.panel.GetChordsChanged());
    rig.panel.ChooseRoot(3);
    rig.panel.ChooseStyle(1);
    rig.panel.MoveRange(0.1);
    rig.panel.SetScale(4); // by the application
    rig.panel.SetSnapToScale(false);
    EXPECT_FALSE(rig.panel.GetChordsChanged());
    rig.panel.ChooseScale(4);
    EXPECT_FALSE(rig.panel.GetChordsChanged());
    rig.panel.ChooseScale(5);
    EXPECT_TRUE(rig.panel.GetChordsChanged());
    rig.panel.ToggleSnap();
    EXPECT_TRUE(rig.panel.GetSnapToScale());
    EXPECT_TRUE(rig.panel.GetChordsChanged());
    EXPECT_FALSE(rig.panel.GetChordsChanged());
}

// Live and the rest.

TEST(ChoirSettingsPanel, RecordToggles) {
    ChoirPanelRig rig;
    rig.panel.ToggleRecord();
    EXPECT_TRUE(rig.panel.IsRecording());
    rig.panel.ToggleRecord();
    EXPECT_FALSE(rig.panel.IsRecording());
    EXPECT_EQ(rig.Calls(), 2);
    rig.panel.SetLiveControlsActive(true);
    EXPECT_TRUE(rig.panel.AreLiveControlsActive());
}

TEST(ChoirSettingsPanel, SettersTellNobody) {
    ChoirPanelRig rig;
    rig.panel.SetRoot(4);
    rig.panel.SetScale(4);
    rig.panel.SetStyle(3);
    rig.panel.SetDetailRow(4);
    rig.panel.SetVoiceArrangement(2);
    rig.panel.SetVoiceRange(0.4F);
    rig.panel.SetSnapToScale(false);
    rig.panel.SetInterval(2, 3);
    rig.panel.SetInterpretation(1);
    rig.panel.SetRecording(true);
    rig.panel.SetLiveControlsActive(true);
    EXPECT_EQ(rig.Calls(), 0);
    EXPECT_EQ(rig.panel.GetRoot(), 4);
    EXPECT_EQ(rig.panel.GetDetailRow(), 4);
    EXPECT_EQ(rig.panel.GetInterval(2), 3);
    EXPECT_TRUE(rig.panel.IsRecording());
}

TEST(ChoirSettingsPanel, RowsThatDoNotExistChangeNothing) {
    ChoirPanelRig rig;
    for (const std::int32_t bad : {-1, 15, kHuge, -kHuge}) {
        rig.panel.ChooseRoot(bad);
        rig.panel.SetRoot(bad);
        rig.panel.ChooseScale(bad);
        rig.panel.SetScale(bad);
        rig.panel.ChooseStyle(bad);
        rig.panel.SetStyle(bad);
        rig.panel.ChooseInterval(bad, 2);
        rig.panel.ChooseInterval(2, bad);
        rig.panel.SetInterval(bad, 2);
        rig.panel.SetInterval(2, bad);
        rig.panel.ChooseInterpretation(bad);
        rig.panel.SetInterpretation(bad);
        EXPECT_EQ(rig.panel.GetInterval(bad), 7);
    }
    EXPECT_EQ(rig.panel.GetRoot(), 0);
    EXPECT_EQ(rig.panel.GetScale(), 0);
    EXPECT_EQ(rig.panel.GetStyle(), 0);
    EXPECT_EQ(rig.panel.GetInterval(2), 9);
    EXPECT_EQ(rig.panel.GetInterpretation(), 0);
    EXPECT_EQ(rig.Calls(), 0);
}

TEST(ChoirSettingsPanel, WorksWithoutACallback) {
    CCriticalSection audioLock;
    CkvovirelaineChoirSettings panel(audioLock);
    panel.PressEdit(true);
    EXPECT_EQ(panel.GetMode(), 2);
}

} // namespace
} // namespace sonorelle
