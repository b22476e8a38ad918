#include "app/snapshots.h"

#include "app/snapshot_store.h"
#include "app/toolkit.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace sonorelle {
namespace {

constexpr std::int32_t kHugeIndex = std::numeric_limits<std::int32_t>::max();

// A user who types a name, or cancels, and reads messages.
class NamingToolkit : public CkvoToolkit {
public:
    std::optional<std::string> AskForName(const std::string& label, const std::string& presetText) override {
        ++questions;
        lastLabel = label;
        lastPreset = presetText;
        return answer;
    }
    void ShowMessage(const std::string& title, const std::string&) override { messages.push_back(title); }

    std::optional<std::string> answer;
    std::string lastLabel;
    std::string lastPreset;
    int questions = 0;
    std::vector<std::string> messages;
};

// A panel over an arrangement of one number.
struct SnapshotsRig {
    SnapshotsRig() {
        store.AddElement(&arrangement, sizeof arrangement, 1.0F, true, nullptr);
        panel.SetOnChanged([this] {
            ++calls;
            shift = panel.IsShiftHeld();
            ctrl = panel.IsCtrlHeld();
        });
    }
    void AddThree() {
        for (std::int32_t i = 0; i < 3; ++i) {
            arrangement = 10 * (i + 1);
            panel.Add(std::string(1, static_cast<char>('A' + i)), 60 + i, 100 * i, 100 * i + 50);
        }
    }
    std::vector<std::string> Rows() const {
        std::vector<std::string> rows;
        for (std::int32_t i = 0; i < panel.GetCount(); ++i) rows.push_back(panel.GetRowText(i));
        return rows;
    }
    bool InStep() const { return panel.GetCount() == store.GetSnapshotCount(); }

    std::int32_t arrangement = 0;
    CSnapshotStore store;
    CCriticalSection audioLock;
    CkvovirelaineSnapshots panel{store, audioLock};
    int calls = 0;
    bool shift = false;
    bool ctrl = false;
};

using Rows = std::vector<std::string>;

// Rows.

TEST(Snapshots, ARowShowsNameAndKey) {
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", 60), "Verse\tC 3");
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", 61), "Verse\tC# 3");
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", 0), "Verse\tC -2");
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", 23), "Verse\tB -1");
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", 127), "Verse\tG 8");
}

TEST(Snapshots, ATriggerOfMinusOneShowsNoKeyName) {
    EXPECT_EQ(CkvovirelaineSnapshots::FormatRow("Verse", -1), "Verse\t");
    SnapshotsRig rig;
    rig.panel.Add("Verse", -1, 0, 1);
    EXPECT_EQ(rig.panel.GetRowText(0), "Verse\t");
    EXPECT_EQ(rig.panel.GetKey(0), -1);
}

TEST(Snapshots, ControlCharactersOfANameStayOutOfTheRowAlone) {
    SnapshotsRig rig;
    const std::string name = "one\ttwo\nthree \x7f M\xc3\xbcller %s %d";
    rig.panel.Add(name);
    EXPECT_EQ(rig.panel.GetRowText(0), "one two three   M\xc3\xbcller %s %d\tC 3");
    EXPECT_EQ(rig.panel.GetName(0), name);
}

// Adding.

TEST(Snapshots, ANewOneTakesThePresentKeyAndRegionAndIsSelected) {
    SnapshotsRig rig;
    EXPECT_EQ(rig.panel.GetTriggerNote(), 60);
    EXPECT_EQ(rig.panel.GetSelected(), -1);
    rig.panel.Add("first");
    rig.panel.SetTriggerNote(64);
    rig.panel.SetRegion(1000, 2000);
    EXPECT_TRUE(rig.panel.Add("second"));
    EXPECT_EQ(rig.Rows(), (Rows{"first\tC 3", "second\tE 3"}));
    EXPECT_EQ(rig.panel.GetSelected(), 1);
    std::int32_t start = -1;
    std::int32_t end = -1;
    EXPECT_TRUE(rig.panel.GetMarkers(1, start, end));
    EXPECT_EQ(start, 1000);
    EXPECT_EQ(end, 2000);
    EXPECT_EQ(rig.store.GetSnapshotName(1), "second");
    EXPECT_EQ(rig.calls, 0);
}

TEST(Snapshots, TheThirtyThirdIsRefusedAndSaysSo) {
    SnapshotsRig rig;
    for (int i = 0; i < 32; ++i) {
        EXPECT_TRUE(rig.panel.CanAdd());
        EXPECT_TRUE(rig.panel.Add("x"));
    }
    EXPECT_FALSE(rig.panel.CanAdd());
    EXPECT_FALSE(rig.panel.Add("lost"));
    EXPECT_FALSE(rig.panel.Add("lost", 1, 2, 3));
    EXPECT_EQ(rig.panel.GetCount(), 32);
    EXPECT_EQ(rig.panel.GetSelected(), 31);
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, AFullListHasRoomForTheTemporaryOneOfASave) {
    SnapshotsRig rig;
    for (int i = 0; i < 32; ++i) rig.panel.Add("x", 40 + i, 0, 1);
    rig.panel.Select(4);
    EXPECT_TRUE(rig.panel.AddTemporary("Last State"));
    EXPECT_EQ(rig.panel.GetCount(), 33);
    EXPECT_EQ(rig.panel.GetName(32), "Last State");
    EXPECT_EQ(rig.panel.GetSelected(), 4);
    EXPECT_FALSE(rig.panel.Add("one more"));
    EXPECT_FALSE(rig.panel.AddTemporary("a second")) << "there is one";
    rig.panel.RemoveTemporary();
    EXPECT_EQ(rig.panel.GetCount(), 32);
    EXPECT_EQ(rig.panel.GetSelected(), 4);
    EXPECT_EQ(rig.panel.GetKey(31), 71);
    rig.panel.RemoveTemporary();
    EXPECT_EQ(rig.panel.GetCount(), 32) << "only what was added for the time is removed";
    EXPECT_EQ(rig.store.GetSnapshotLimit(), 32);
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, TheTemporaryOneLeavesNoSelectionWhereThereWasNone) {
    SnapshotsRig rig;
    rig.panel.AddTemporary("Last State");
    EXPECT_EQ(rig.panel.GetSelected(), -1);
    rig.panel.RemoveTemporary();
    EXPECT_EQ(rig.panel.GetCount(), 0);
}

TEST(Snapshots, KeysAndRegionsWithoutMeaningAreMended) {
    SnapshotsRig rig;
    rig.panel.Add("a", 132, -5, -9);
    rig.panel.Add("b", -kHugeIndex, 10, 5);
    EXPECT_EQ(rig.panel.GetKey(0), -1);
    SnapshotEntry entry;
    ASSERT_TRUE(rig.panel.GetEntry(0, entry));
    EXPECT_EQ(entry, (SnapshotEntry{-1, 0, 0}));
    ASSERT_TRUE(rig.panel.GetEntry(1, entry));
    EXPECT_EQ(entry, (SnapshotEntry{-1, 10, 10}));
    rig.panel.SetTriggerNote(132);
    rig.panel.SetTriggerNote(-2);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 60);
    rig.panel.SetTriggerNote(-1);
    EXPECT_EQ(rig.panel.GetTriggerNote(), -1);
}

// Import.

struct ImportBytes {
    std::array<std::byte, 4> data{std::byte{7}};
    std::array<std::int32_t, 1> sizes{4};
};

TEST(Snapshots, ImportAddsRecordAndEntryTogether) {
    SnapshotsRig rig;
    ImportBytes bytes;
    EXPECT_TRUE(rig.panel.Import("read", {bytes.data, 1.2F, true, bytes.sizes}, {62, 5, 9}));
    EXPECT_TRUE(rig.panel.Import("old", {bytes.data, 1.0F, false, {}}, {63, 6, 10}));
    EXPECT_EQ(rig.Rows(), (Rows{"read\tD 3", "old\tD# 3"}));
    EXPECT_EQ(rig.panel.GetSelected(), -1);
    ASSERT_TRUE(rig.panel.Recall(0));
    EXPECT_EQ(rig.arrangement, 7);
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, WhatTheStoreRefusesGetsNoEntry) {
    SnapshotsRig rig;
    ImportBytes bytes;
    const std::array<std::int32_t, 1> wrongSize{400};
    EXPECT_FALSE(rig.panel.Import("newer", {bytes.data, 9.0F, true, bytes.sizes}, {62, 5, 9}));
    EXPECT_FALSE(rig.panel.Import("misfit", {bytes.data, 1.2F, true, wrongSize}, {62, 5, 9}));
    EXPECT_EQ(rig.panel.GetCount(), 0);
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, ImportHasRoomForTheStateBehindAFullList) {
    SnapshotsRig rig;
    ImportBytes bytes;
    for (int i = 0; i < 33; ++i)
        EXPECT_TRUE(rig.panel.Import("x", {bytes.data, 1.2F, true, bytes.sizes}, {62, 5, 9})) << i;
    EXPECT_FALSE(rig.panel.Import("x", {bytes.data, 1.2F, true, bytes.sizes}, {62, 5, 9}));
    EXPECT_EQ(rig.panel.GetCount(), 33);
    EXPECT_EQ(rig.store.GetSnapshotLimit(), 32);
    rig.panel.Remove(32);
    EXPECT_FALSE(rig.panel.CanAdd());
    EXPECT_TRUE(rig.InStep());
}

// Recall.

TEST(Snapshots, ARecallByIndexBringsArrangementKeyAndRegionWithoutAnUndoStep) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.store.PushUndo();
    EXPECT_TRUE(rig.panel.Recall(1));
    EXPECT_EQ(rig.arrangement, 20);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 61);
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.panel.GetRegion(start, end);
    EXPECT_EQ(start, 100);
    EXPECT_EQ(end, 150);
    EXPECT_EQ(rig.panel.GetSelected(), 1);
    EXPECT_EQ(rig.panel.GetRecalled(), 0);
    EXPECT_EQ(rig.calls, 1);
    EXPECT_EQ(rig.store.GetUndoCount(), 1);
}

TEST(Snapshots, ARecallByClickLeavesAnUndoStep) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.store.PushUndo();
    rig.panel.Choose(0);
    EXPECT_EQ(rig.arrangement, 10);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 60);
    EXPECT_EQ(rig.panel.GetSelected(), 0);
    EXPECT_EQ(rig.panel.GetRecalled(), 1);
    EXPECT_EQ(rig.calls, 1);
    EXPECT_FALSE(rig.shift);
    EXPECT_EQ(rig.store.GetUndoCount(), 2);
    ASSERT_TRUE(rig.store.Undo());
    EXPECT_EQ(rig.arrangement, 30);
}

TEST(Snapshots, ARecallBeyondTheListDoesNothing) {
    SnapshotsRig rig;
    rig.AddThree();
    for (const std::int32_t bad : {-1, 3, kHugeIndex, -kHugeIndex}) {
        EXPECT_FALSE(rig.panel.Recall(bad));
        EXPECT_FALSE(rig.panel.RecallQuietly(bad));
        rig.panel.Choose(bad);
    }
    EXPECT_EQ(rig.arrangement, 30);
    EXPECT_EQ(rig.panel.GetSelected(), 2);
    EXPECT_EQ(rig.calls, 0);
}

TEST(Snapshots, AQuietRecallTellsNobodyAndAllocatesNothing) {
    SnapshotsRig rig;
    rig.AddThree();
    const std::int64_t before = test::AllocationCount();
    EXPECT_EQ(rig.panel.FindByKey(61), 1);
    EXPECT_TRUE(rig.panel.RecallQuietly(1));
    EXPECT_EQ(rig.panel.GetKey(1), 61);
    EXPECT_EQ(test::AllocationCount(), before);
    EXPECT_EQ(rig.arrangement, 20);
    EXPECT_EQ(rig.calls, 0);
}

// Keys.

TEST(Snapshots, OfTwoWithTheSameKeyTheFirstIsFound) {
    SnapshotsRig rig;
    rig.panel.Add("a", 70, 0, 1);
    rig.panel.Add("b", 71, 0, 1);
    rig.panel.Add("c", 71, 0, 1);
    EXPECT_EQ(rig.panel.FindByKey(71), 1);
    EXPECT_EQ(rig.panel.FindByKey(70), 0);
    EXPECT_EQ(rig.panel.FindByKey(72), -1);
}

TEST(Snapshots, NoKeyIsNeverFound) {
    SnapshotsRig rig;
    rig.panel.Add("a", -1, 0, 1);
    EXPECT_EQ(rig.panel.FindByKey(-1), -1);
    EXPECT_EQ(rig.panel.FindByKey(kHugeIndex), -1);
}

TEST(Snapshots, QuestionsAboutABadIndexHaveTheirAnswers) {
    SnapshotsRig rig;
    rig.AddThree();
    for (const std::int32_t bad : {-1, 3, kHugeIndex, -kHugeIndex}) {
        EXPECT_EQ(rig.panel.GetKey(bad), -1);
        std::int32_t start = 7;
        std::int32_t end = 8;
        EXPECT_FALSE(rig.panel.GetMarkers(bad, start, end));
        EXPECT_EQ(start, 7);
        EXPECT_EQ(end, 8);
        EXPECT_EQ(rig.panel.GetName(bad), "");
        EXPECT_EQ(rig.panel.GetRowText(bad), "");
        rig.panel.Rename(bad, "x");
        EXPECT_FALSE(rig.panel.Replace(bad));
        rig.panel.Remove(bad);
        if (bad != -1) rig.panel.Select(bad);
    }
    EXPECT_EQ(rig.Rows(), (Rows{"A\tC 3", "B\tC# 3", "C\tD 3"}));
    EXPECT_EQ(rig.panel.GetSelected(), 2);
}

// Changing the list.

TEST(Snapshots, RemovingTheRowInUseKeepsThePresentStateAndClearsNothingElse) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.Recall(1);
    rig.panel.Remove(1);
    EXPECT_EQ(rig.arrangement, 20);
    EXPECT_EQ(rig.panel.GetTriggerNote(), 61);
    EXPECT_EQ(rig.panel.GetSelected(), -1);
    EXPECT_EQ(rig.Rows(), (Rows{"A\tC 3", "C\tD 3"}));
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, LaterRowsMoveUpTogetherWithTheirEntriesAndTheSelection) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.Remove(0);
    EXPECT_EQ(rig.panel.GetSelected(), 1);
    EXPECT_EQ(rig.panel.FindByKey(62), 1);
    EXPECT_TRUE(rig.panel.Recall(1));
    EXPECT_EQ(rig.arrangement, 30);
    rig.panel.Select(0);
    rig.panel.Remove(1);
    EXPECT_EQ(rig.panel.GetSelected(), 0);
    EXPECT_TRUE(rig.InStep());
}

TEST(Snapshots, AReplacedOneKeepsItsNameAndTakesThePresentState) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.arrangement = 99;
    rig.panel.SetTriggerNote(48);
    rig.panel.SetRegion(7, 77);
    EXPECT_TRUE(rig.panel.Replace(0));
    EXPECT_EQ(rig.panel.GetRowText(0), "A\tC 2");
    SnapshotEntry entry;
    ASSERT_TRUE(rig.panel.GetEntry(0, entry));
    EXPECT_EQ(entry, (SnapshotEntry{48, 7, 77}));
    rig.arrangement = 0;
    rig.panel.Recall(0);
    EXPECT_EQ(rig.arrangement, 99);
}

TEST(Snapshots, ARenamedOneKeepsAllElse) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.Rename(0, "Intro");
    EXPECT_EQ(rig.Rows(), (Rows{"Intro\tC 3", "B\tC# 3", "C\tD 3"}));
    EXPECT_EQ(rig.store.GetSnapshotName(0), "Intro");
    EXPECT_EQ(rig.panel.GetSelected(), 2);
}

TEST(Snapshots, ClearEmptiesListAndStoreAndLeavesUndo) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.store.PushUndo();
    rig.panel.Clear();
    EXPECT_EQ(rig.panel.GetCount(), 0);
    EXPECT_EQ(rig.store.GetSnapshotCount(), 0);
    EXPECT_EQ(rig.panel.GetSelected(), -1);
    EXPECT_EQ(rig.panel.FindByKey(60), -1);
    EXPECT_EQ(rig.store.GetUndoCount(), 1);
    EXPECT_EQ(rig.arrangement, 30);
}

TEST(Snapshots, RefreshBringsTheListInStepWithTheStore) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.SetTriggerNote(50);
    rig.store.AddSnapshot("by hand");
    rig.panel.RefreshList();
    EXPECT_EQ(rig.Rows(), (Rows{"A\tC 3", "B\tC# 3", "C\tD 3", "by hand\tD 2"}));
    rig.panel.Select(3);
    rig.store.ClearHistory();
    rig.panel.RefreshList();
    EXPECT_EQ(rig.panel.GetCount(), 0);
    EXPECT_EQ(rig.panel.GetSelected(), -1);
}

TEST(Snapshots, BeginsWithWhatTheStoreHoldsAlready) {
    SnapshotsRig rig;
    rig.AddThree();
    CkvovirelaineSnapshots second(rig.store, rig.audioLock);
    EXPECT_EQ(second.GetCount(), 3);
    EXPECT_EQ(second.GetRowText(1), "B\tC 3");
}

TEST(Snapshots, TheRevisionGrowsWithEveryChangeThatShows) {
    SnapshotsRig rig;
    std::uint32_t last = rig.panel.GetRevision();
    const auto hasGrown = [&] {
        const bool grown = rig.panel.GetRevision() > last;
        last = rig.panel.GetRevision();
        return grown;
    };
    rig.AddThree();
    EXPECT_TRUE(hasGrown());
    rig.panel.Rename(0, "x");
    EXPECT_TRUE(hasGrown());
    rig.panel.Replace(0);
    EXPECT_TRUE(hasGrown());
    rig.panel.RecallQuietly(0);
    EXPECT_TRUE(hasGrown());
    rig.panel.Remove(2);
    EXPECT_TRUE(hasGrown());
    rig.panel.Clear();
    EXPECT_TRUE(hasGrown());
    rig.panel.GetCount();
    rig.panel.Recall(0);
    EXPECT_FALSE(hasGrown());
}

// Dialogs.

TEST(Snapshots, AddAsksForANameAndOffersTheNextNumber) {
    SnapshotsRig rig;
    NamingToolkit user;
    rig.AddThree();
    user.answer = "Bridge";
    rig.panel.PressAdd(user);
    EXPECT_EQ(user.lastLabel, "Snapshot:");
    EXPECT_EQ(user.lastPreset, "Snapshot No. 4");
    EXPECT_EQ(rig.panel.GetName(3), "Bridge");
    EXPECT_EQ(rig.panel.GetSelected(), 3);
}

TEST(Snapshots, CancelEndsADialogWithoutChange) {
    SnapshotsRig rig;
    NamingToolkit user;
    rig.AddThree();
    rig.panel.PressAdd(user);
    rig.panel.PressRename(user);
    EXPECT_EQ(user.questions, 2);
    user.answer = "";
    rig.panel.PressAdd(user);
    rig.panel.PressRename(user);
    EXPECT_EQ(rig.Rows(), (Rows{"A\tC 3", "B\tC# 3", "C\tD 3"}));
}

TEST(Snapshots, RenameOffersThePresentName) {
    SnapshotsRig rig;
    NamingToolkit user;
    user.answer = "Refrain";
    rig.panel.PressRename(user); // nothing selected
    EXPECT_EQ(user.questions, 0);
    rig.AddThree();
    rig.panel.Select(1);
    rig.panel.PressRename(user);
    EXPECT_EQ(user.lastPreset, "B");
    EXPECT_EQ(rig.panel.GetName(1), "Refrain");
    EXPECT_EQ(rig.panel.GetSelected(), 1);
}

TEST(Snapshots, AFullListIsToldBeforeANameIsTyped) {
    SnapshotsRig rig;
    NamingToolkit user;
    user.answer = "lost";
    for (int i = 0; i < 32; ++i) rig.panel.Add("x");
    rig.panel.PressAdd(user);
    EXPECT_EQ(user.questions, 0);
    EXPECT_EQ(user.messages, (Rows{"Warning!"}));
    EXPECT_EQ(rig.panel.GetCount(), 32);
}

TEST(Snapshots, RemoveAndReplaceActOnTheSelectedRow) {
    SnapshotsRig rig;
    rig.panel.PressRemove();
    rig.panel.PressReplace();
    rig.AddThree();
    rig.panel.Select(1);
    rig.arrangement = 77;
    rig.panel.PressReplace();
    rig.arrangement = 0;
    rig.panel.Recall(1);
    EXPECT_EQ(rig.arrangement, 77);
    rig.panel.PressRemove();
    EXPECT_EQ(rig.panel.GetCount(), 2);
    EXPECT_EQ(rig.panel.GetName(1), "C");
    rig.panel.PressRemove(); // nothing selected any more
    EXPECT_EQ(rig.panel.GetCount(), 2);
}

TEST(Snapshots, ADisabledPanelAnswersNoUserButStillTheApplication) {
    SnapshotsRig rig;
    NamingToolkit user;
    user.answer = "x";
    rig.AddThree();
    rig.panel.SetEnabled(false);
    EXPECT_FALSE(rig.panel.IsEnabled());
    rig.panel.PressAdd(user);
    rig.panel.PressRename(user);
    rig.panel.PressRemove();
    rig.panel.PressReplace();
    rig.panel.Choose(0);
    rig.panel.BeginDrag(true, true);
    EXPECT_EQ(user.questions, 0);
    EXPECT_EQ(rig.calls, 0);
    EXPECT_FALSE(rig.panel.IsDragging());
    EXPECT_EQ(rig.arrangement, 30);
    EXPECT_EQ(rig.Rows(), (Rows{"A\tC 3", "B\tC# 3", "C\tD 3"}));
    EXPECT_TRUE(rig.panel.Recall(0));
    EXPECT_EQ(rig.arrangement, 10);
}

// Drags.

TEST(Snapshots, ADragWithShiftTellsTheKeysHeldWhileItTells) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.BeginDrag(true, false);
    EXPECT_EQ(rig.calls, 1);
    EXPECT_TRUE(rig.shift);
    EXPECT_FALSE(rig.ctrl);
    EXPECT_EQ(rig.panel.GetRecalled(), 1);
    EXPECT_FALSE(rig.panel.IsShiftHeld());
    rig.panel.EndDrag();
    rig.panel.BeginDrag(true, true);
    EXPECT_EQ(rig.calls, 2);
    EXPECT_TRUE(rig.ctrl);
    rig.panel.EndDrag();
}

TEST(Snapshots, ADragWithoutShiftOrSelectionExportsNothing) {
    SnapshotsRig rig;
    rig.panel.BeginDrag(true, false);
    rig.panel.EndDrag();
    rig.AddThree();
    rig.panel.BeginDrag(false, true);
    rig.panel.EndDrag();
    EXPECT_EQ(rig.calls, 0);
}

TEST(Snapshots, NothingIsRecalledDuringADrag) {
    SnapshotsRig rig;
    rig.AddThree();
    rig.panel.BeginDrag(false, false);
    EXPECT_TRUE(rig.panel.IsDragging());
    EXPECT_FALSE(rig.panel.Recall(0));
    rig.panel.Choose(0);
    EXPECT_EQ(rig.arrangement, 30);
    EXPECT_EQ(rig.panel.GetSelected(), 2);
    rig.panel.EndDrag();
    rig.panel.Choose(0);
    EXPECT_EQ(rig.arrangement, 10);
}

// Threads.

TEST(Snapshots, KeysRecallWhileTheListIsEdited) {
    SnapshotsRig rig;
    rig.AddThree();
    std::atomic<bool> done{false};
    std::thread audio([&] {
        while (!done.load(std::memory_order_relaxed)) {
            rig.panel.RecallQuietly(rig.panel.FindByKey(61));
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 200; ++i) {
        rig.panel.Add("more", 90, 0, 1);
        rig.panel.Replace(rig.panel.GetCount() - 1);
        rig.panel.Rename(0, "other");
        EXPECT_EQ(rig.panel.FindByKey(61), 1);
        rig.panel.Remove(rig.panel.GetCount() - 1);
        EXPECT_FALSE(rig.panel.GetRowText(1).empty());
    }
    done.store(true, std::memory_order_relaxed);
    audio.join();
    EXPECT_TRUE(rig.InStep());
    EXPECT_EQ(rig.panel.GetCount(), 3);
}

TEST(Snapshots, WhatMemoryRefusesLeavesListAndStoreInStep) {
    SnapshotsRig rig;
    const std::string name(100, 'n');
    bool added = false;
    int refusals = 0;
    for (std::int64_t allowed = 0; !added && allowed < 20; ++allowed) {
        {
            const test::AllocationLimit limit(allowed);
            added = rig.panel.Add(name);
        }
        if (!added) ++refusals;
        ASSERT_TRUE(rig.InStep());
    }
    EXPECT_TRUE(added);
    EXPECT_GT(refusals, 0) << "the trap works";
    EXPECT_EQ(rig.panel.GetCount(), 1);
}

} // namespace
} // namespace sonorelle
