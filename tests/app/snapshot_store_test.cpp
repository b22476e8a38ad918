#include "app/snapshot_store.h"

#include "app/snapshot_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using testing::ElementsAre;

// The block of the state as it is now.
std::string PresentBytes(CSnapshotStore& store) {
    store.AddSnapshot("now");
    std::string bytes = Bytes(store, store.GetSnapshotCount() - 1);
    store.DeleteSnapshot(store.GetSnapshotCount() - 1);
    return bytes;
}

// A store over one number.
struct OneNumber {
    std::int32_t value = 0;
    CSnapshotStore store;
    OneNumber() { store.AddElement(&value, sizeof value, 1.0F); }
    void Push(std::int32_t number) {
        value = number;
        store.PushUndo();
    }
};

TEST(CSnapshotStore, IsOfVersion1Point2WithThirtyTwoStepsAndSnapshots) {
    EXPECT_EQ(CSnapshotStore().GetVersion(), 1.2F);
    EXPECT_EQ(CSnapshotStore::kUndoLimit, 32);
    EXPECT_EQ(CSnapshotStore::kSnapshotLimit, 32);
    EXPECT_EQ(CSnapshotStore(1.5F, 3, 4).GetVersion(), 1.5F);
}

// Elements.

TEST(CSnapshotStore, ElementsLieByVersionAndEqualOnesByRegistration) {
    std::array<char, 5> letters = {'a', 'b', 'c', 'd', 'e'};
    CSnapshotStore store;
    EXPECT_EQ(store.AddElement(&letters[0], 1, 1.1F), 0);
    EXPECT_EQ(store.AddElement(&letters[1], 1, 1.0F), 0);
    EXPECT_EQ(store.AddElement(&letters[2], 1, 1.2F), 2);
    EXPECT_EQ(store.AddElement(&letters[3], 1, 1.0F), 1);
    EXPECT_EQ(store.AddElement(&letters[4], 1, 1.1F), 3);
    EXPECT_EQ(PresentBytes(store), "bdaec");
}

TEST(CSnapshotStore, SecondSequenceStaysBehindAllInTheOrderOfRegistration) {
    std::array<char, 5> letters = {'a', 'b', 'c', 'd', 'e'};
    CSnapshotStore store;
    store.AddElement(&letters[0], 1, 1.0F);
    EXPECT_EQ(store.AddElement(&letters[1], 1, 10001.1F), 0) << "its place is not told";
    EXPECT_EQ(store.AddElement(&letters[2], 1, 10001.0F), 0);
    EXPECT_EQ(store.AddElement(&letters[3], 1, 10000.0F), 0);
    EXPECT_EQ(store.AddElement(&letters[4], 1, 9999.0F), 1);
    EXPECT_EQ(PresentBytes(store), "aebcd");
}

TEST(CSnapshotStore, BlockIsThePlainConcatenationOfActiveElements) {
    std::array<char, 3> first = {'o', 'n', 'e'};
    std::array<char, 3> second = {'t', 'w', 'o'};
    CSnapshotStore store;
    store.AddElement(first.data(), 3, 1.0F);
    store.AddElement(nullptr, 80, 1.0F, false);
    store.AddElement(second.data(), 3, 1.0F);
    EXPECT_EQ(store.GetTotalSize(), 6);
    ASSERT_TRUE(store.AddSnapshot("state"));
    EXPECT_EQ(Bytes(store, 0), "onetwo");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(3, 80, 3)) << "a placeholder has a size but no bytes";
}

TEST(CSnapshotStore, ElementKeepsWhatItWasRegisteredWith) {
    std::int32_t value = 0;
    CSnapshotStore store;
    store.AddElement(&value, sizeof value, 1.1F, true, &store);
    ASSERT_EQ(store.GetElementCount(), 1);
    EXPECT_EQ(store.GetElement(0)->data, &value);
    EXPECT_EQ(store.GetElement(0)->size, 4);
    EXPECT_EQ(store.GetElement(0)->version, 1.1F);
    EXPECT_TRUE(store.GetElement(0)->active);
    EXPECT_EQ(store.GetElement(0)->owner, &store);
    EXPECT_EQ(store.GetElement(-1), nullptr);
    EXPECT_EQ(store.GetElement(1), nullptr);
}

TEST(CSnapshotStore, ElementsThatCannotBeCountAsEmpty) {
    char letter = 'x';
    CSnapshotStore store;
    store.AddElement(&letter, -1, 1.0F);
    store.AddElement(nullptr, 100, 1.0F);
    store.AddElement(nullptr, -100, 1.0F, false);
    store.AddElement(&letter, 1, 1.0F);
    store.AddElement(&letter, std::numeric_limits<std::int32_t>::max(),
                     1.0F); // the sum would not fit 32 bits
    EXPECT_EQ(store.GetTotalSize(), 1);
    ASSERT_TRUE(store.AddSnapshot("state"));
    EXPECT_THAT(Sizes(store, 0), ElementsAre(0, 0, 0, 1, 0));
    EXPECT_EQ(Bytes(store, 0), "x");
    EXPECT_TRUE(store.RecallSnapshot(0));
}

TEST(CSnapshotStore, ReplacedElementIsReadAndWrittenInItsNewMemory) {
    std::array<char, 2> old = {'a', 'b'};
    std::array<char, 4> larger = {'c', 'd', 'e', 'f'};
    char behind = 'z';
    CSnapshotStore store;
    store.AddElement(old.data(), 2, 1.0F);
    store.AddElement(&behind, 1, 1.0F);
    store.ReplaceElement(old.data(), 2, larger.data(), 4);
    EXPECT_EQ(store.GetTotalSize(), 5);
    store.AddSnapshot("grown");
    EXPECT_EQ(Bytes(store, 0), "cdefz");
    larger.fill('-');
    store.RecallSnapshot(0);
    EXPECT_THAT(larger, ElementsAre('c', 'd', 'e', 'f'));
    EXPECT_THAT(old, ElementsAre('a', 'b')) << "nothing is written to memory that was given up";
}

TEST(CSnapshotStore, ReplacingNeedsTheRightMemoryAndTheRightSize) {
    std::array<char, 2> old = {'a', 'b'};
    std::array<char, 4> other = {'c', 'd', 'e', 'f'};
    CSnapshotStore store;
    store.AddElement(old.data(), 2, 1.0F);
    store.ReplaceElement(old.data(), 3, other.data(), 4);
    store.ReplaceElement(other.data(), 2, other.data(), 4);
    EXPECT_EQ(PresentBytes(store), "ab");
    store.ReplaceElement(old.data(), 2, other.data(), -4); // counts as empty
    EXPECT_EQ(store.GetTotalSize(), 0);
    EXPECT_EQ(PresentBytes(store), "");
}

TEST(CSnapshotStore, ReplacingAPlaceholderDoesNotCount) {
    char letter = 'x';
    CSnapshotStore store;
    store.AddElement(nullptr, 8, 1.0F, false);
    store.AddElement(&letter, 1, 1.0F);
    store.ReplaceElement(nullptr, 8, nullptr, 16);
    EXPECT_EQ(store.GetTotalSize(), 1);
    store.AddSnapshot("state");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(16, 1));
}

TEST(CSnapshotStore, RestoringAfterGrowthFillsTheStartAndKeepsTheRest) {
    std::array<char, 2> old = {'a', 'b'};
    std::array<char, 4> larger = {'1', '2', '3', '4'};
    char behind = 'z';
    char later = 'l';
    CSnapshotStore store;
    store.AddElement(old.data(), 2, 1.0F);
    store.AddElement(&behind, 1, 1.0F);
    store.PushUndo();
    store.AddSnapshot("small");
    store.ReplaceElement(old.data(), 2, larger.data(), 4);
    store.AddElement(&later, 1, 10001.0F);
    behind = 'y';
    store.PushUndo();

    ASSERT_TRUE(store.Undo());
    EXPECT_THAT(larger, ElementsAre('a', 'b', '3', '4'));
    EXPECT_EQ(behind, 'z');
    EXPECT_EQ(later, 'l') << "it came later than the state";
    ASSERT_TRUE(store.Redo());
    EXPECT_THAT(larger, ElementsAre('1', '2', '3', '4'));
    EXPECT_EQ(behind, 'y');
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_THAT(larger, ElementsAre('a', 'b', '3', '4'));
}

TEST(CSnapshotStore, RestoringAfterShrinkingStaysInsideTheElement) {
    CGuardedPiece large(8);
    CGuardedPiece small(3);
    CGuardedPiece behind(2);
    large.Put("abcdefgh");
    behind.Put("yz");
    CSnapshotStore store;
    store.AddElement(large.Data(), 8, 1.0F);
    store.AddElement(behind.Data(), 2, 1.0F);
    store.AddSnapshot("large");
    store.ReplaceElement(large.Data(), 8, small.Data(), 3);
    behind.Put("--");
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_EQ(small.Content(), "abc");
    EXPECT_TRUE(small.GuardsHold());
    EXPECT_EQ(behind.Content(), "yz") << "what follows is found by the old size";
}

TEST(CSnapshotStore, ElementsRegisteredBetweenOldOnesNeverReadBeyondABlock) {
    CGuardedPiece old(4);
    CGuardedPiece between(400);
    CSnapshotStore store;
    store.AddElement(nullptr, 400, 1.1F, false);
    store.AddElement(old.Data(), 4, 1.2F);
    store.AddSnapshot("before");
    store.AddElement(between.Data(), 400, 1.0F); // now in the place whose recorded size is 400
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_TRUE(old.GuardsHold() && between.GuardsHold());
}

// Undo.

TEST(CSnapshotStore, FirstPushGivesUndoIndex1AndIsNeverUndone) {
    OneNumber one;
    EXPECT_FALSE(one.store.Undo()) << "an empty stack";
    EXPECT_FALSE(one.store.Redo());
    one.Push(1);
    EXPECT_EQ(one.store.GetUndoIndex(), 1);
    one.value = 5;
    EXPECT_FALSE(one.store.Undo());
    EXPECT_EQ(one.value, 5);
}

TEST(CSnapshotStore, UndoAndRedoWalkTheStates) {
    OneNumber one;
    for (const int number : {1, 2, 3}) one.Push(number);
    EXPECT_TRUE(one.store.Undo());
    EXPECT_EQ(one.value, 2);
    EXPECT_TRUE(one.store.Undo());
    EXPECT_EQ(one.value, 1);
    EXPECT_FALSE(one.store.Undo());
    EXPECT_TRUE(one.store.Redo());
    EXPECT_EQ(one.value, 2);
    EXPECT_TRUE(one.store.Redo());
    EXPECT_EQ(one.value, 3);
    EXPECT_FALSE(one.store.Redo());
    EXPECT_EQ(one.store.GetUndoIndex(), 3);
}

TEST(CSnapshotStore, UndoDropsAnEditThatWasNotPushed) {
    OneNumber one;
    one.Push(1);
    one.Push(2);
    one.value = 77;
    EXPECT_TRUE(one.store.Undo());
    EXPECT_EQ(one.value, 1);
    EXPECT_TRUE(one.store.Redo());
    EXPECT_EQ(one.value, 2);
}

TEST(CSnapshotStore, ThirtyThreePushesLeaveThirtyTwoWithoutTheOldest) {
    OneNumber one;
    for (int number = 1; number <= 33; ++number) one.Push(number);
    EXPECT_EQ(one.store.GetUndoCount(), 32);
    EXPECT_EQ(one.store.GetUndoIndex(), 32);
    int undone = 0;
    while (one.store.Undo()) ++undone;
    EXPECT_EQ(undone, 31);
    EXPECT_EQ(one.value, 2);
}

TEST(CSnapshotStore, PushAfterUndoDropsWhatWasUndone) {
    OneNumber one;
    one.Push(1);
    one.Push(2);
    one.store.Undo();
    one.Push(3);
    EXPECT_EQ(one.store.GetUndoCount(), 2);
    EXPECT_FALSE(one.store.Redo());
    EXPECT_EQ(one.value, 3);
    one.store.Undo();
    EXPECT_EQ(one.value, 1);
    one.store.PushUndo(); // the same without an edit in between
    EXPECT_FALSE(one.store.Redo());
    EXPECT_EQ(one.store.GetUndoCount(), 1);
}

TEST(CSnapshotStore, PushOfAnUnchangedStateChangesNothing) {
    OneNumber one;
    one.Push(1);
    one.Push(2);
    one.store.PushUndo();
    EXPECT_EQ(one.store.GetUndoCount(), 2);
    EXPECT_EQ(one.store.GetUndoIndex(), 2);
    EXPECT_TRUE(one.store.Undo());
    EXPECT_EQ(one.value, 1);
}

TEST(CSnapshotStore, PushOfAnUnchangedStateLeavesTheOldestInAFullStack) {
    OneNumber one;
    for (int number = 1; number <= 32; ++number) one.Push(number);
    one.store.PushUndo();
    EXPECT_EQ(one.store.GetUndoCount(), 32);
    while (one.store.Undo()) {
    }
    EXPECT_EQ(one.value, 1);
}

TEST(CSnapshotStore, GrowthWithTheSameStartIsAStepOfItsOwn) {
    std::array<char, 2> old = {'a', 'b'};
    std::array<char, 3> larger = {'a', 'b', 'c'};
    CSnapshotStore store;
    store.AddElement(old.data(), 2, 1.0F);
    store.PushUndo();
    store.ReplaceElement(old.data(), 2, larger.data(), 3);
    store.PushUndo();
    EXPECT_EQ(store.GetUndoCount(), 2);
    store.ReplaceElement(larger.data(), 3, old.data(), 2);
    store.PushUndo();
    EXPECT_EQ(store.GetUndoCount(), 3);
}

TEST(CSnapshotStore, UndoLimitsDownToNothingKeepThePresentState) {
    for (const std::int32_t limit : {-5, 0, 1}) {
        std::int32_t value = 1;
        CSnapshotStore store(1.2F, limit, 32);
        store.AddElement(&value, sizeof value, 1.0F);
        for (int i = 0; i < 4; ++i, ++value) store.PushUndo();
        EXPECT_EQ(store.GetUndoCount(), 1) << limit;
        EXPECT_EQ(store.GetUndoIndex(), 1) << limit;
        EXPECT_FALSE(store.Undo()) << limit;
    }
}

TEST(CSnapshotStore, EmptyStoreHasStatesToo) {
    CSnapshotStore store;
    store.PushUndo();
    store.PushUndo();
    EXPECT_EQ(store.GetUndoCount(), 1);
    EXPECT_TRUE(store.AddSnapshot("nothing"));
    EXPECT_TRUE(store.RecallSnapshot(0));
    EXPECT_EQ(store.GetSnapshotSize(0), 0);
}

// Snapshots.

TEST(CSnapshotStore, SnapshotsAreRecalledByIndex) {
    OneNumber one;
    one.value = 10;
    EXPECT_TRUE(one.store.AddSnapshot("ten"));
    one.value = 20;
    EXPECT_TRUE(one.store.AddSnapshot("twenty"));
    one.value = 0;
    EXPECT_TRUE(one.store.RecallSnapshot(0));
    EXPECT_EQ(one.value, 10);
    EXPECT_TRUE(one.store.RecallSnapshot(1));
    EXPECT_EQ(one.value, 20);
    EXPECT_EQ(one.store.GetSnapshotName(0), "ten");
    EXPECT_EQ(one.store.GetSnapshotName(1), "twenty");
}

TEST(CSnapshotStore, ThirtyThirdSnapshotIsDroppedWithItsName) {
    OneNumber one;
    for (int i = 0; i < 32; ++i) EXPECT_TRUE(one.store.AddSnapshot(std::to_string(i)));
    EXPECT_FALSE(one.store.AddSnapshot("one too many"));
    EXPECT_EQ(one.store.GetSnapshotCount(), 32);
    EXPECT_EQ(one.store.GetSnapshotName(31), "31");
    EXPECT_EQ(one.store.GetSnapshotName(32), "");
    one.store.DeleteSnapshot(0);
    EXPECT_TRUE(one.store.AddSnapshot("now it fits"));
}

TEST(CSnapshotStore, RecallOfMinus1IsRefused) {
    OneNumber one;
    one.value = 1;
    one.store.AddSnapshot("one");
    one.value = 2;
    EXPECT_FALSE(one.store.RecallSnapshot(-1));
    EXPECT_FALSE(one.store.RecallSnapshot(1));
    EXPECT_EQ(one.value, 2);
}

TEST(CSnapshotStore, BadIndexesAreIgnoredOrAnswered) {
    OneNumber one;
    one.value = 1;
    one.store.AddSnapshot("one");
    const std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    const std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    for (const std::int32_t bad : {lowest, -1, 1, highest}) {
        EXPECT_FALSE(one.store.ReplaceSnapshot(bad));
        EXPECT_FALSE(one.store.RecallSnapshot(bad));
        one.store.DeleteSnapshot(bad);
        one.store.RenameSnapshot(bad, "other");
        EXPECT_EQ(one.store.GetSnapshotName(bad), "");
        EXPECT_EQ(one.store.GetSnapshotData(bad), nullptr);
        EXPECT_EQ(one.store.GetSnapshotSize(bad), 0);
        EXPECT_EQ(one.store.GetSizeCount(bad), 0);
        std::array<std::int32_t, 2> sizes = {-7, -7};
        one.store.GetSizes(bad, sizes);
        EXPECT_THAT(sizes, ElementsAre(-7, -7));
    }
    EXPECT_EQ(one.store.GetSnapshotCount(), 1);
    EXPECT_EQ(one.store.GetSnapshotName(0), "one");
}

TEST(CSnapshotStore, ReplacedSnapshotTakesStateAndSizesAndKeepsItsName) {
    std::array<char, 1> old = {'a'};
    std::array<char, 2> larger = {'b', 'c'};
    CSnapshotStore store;
    store.AddElement(old.data(), 1, 1.0F);
    store.AddSnapshot("kept");
    store.ReplaceElement(old.data(), 1, larger.data(), 2);
    EXPECT_TRUE(store.ReplaceSnapshot(0));
    EXPECT_EQ(store.GetSnapshotName(0), "kept");
    EXPECT_EQ(Bytes(store, 0), "bc");
    EXPECT_THAT(Sizes(store, 0), ElementsAre(2));
}

TEST(CSnapshotStore, DeletingMovesLaterSnapshotsDown) {
    OneNumber one;
    for (const int number : {1, 2, 3}) {
        one.value = number;
        one.store.AddSnapshot(std::to_string(number));
    }
    one.store.DeleteSnapshot(1);
    EXPECT_EQ(one.store.GetSnapshotCount(), 2);
    EXPECT_EQ(one.store.GetSnapshotName(1), "3");
    one.store.RecallSnapshot(1);
    EXPECT_EQ(one.value, 3);
}

TEST(CSnapshotStore, RenamingLeavesTheState) {
    OneNumber one;
    one.value = 4;
    one.store.AddSnapshot("before");
    one.store.RenameSnapshot(0, "Ch\xC5\x93ur");
    one.value = 5;
    EXPECT_EQ(one.store.GetSnapshotName(0), "Ch\xC5\x93ur");
    one.store.RecallSnapshot(0);
    EXPECT_EQ(one.value, 4);
}

TEST(CSnapshotStore, SizesFillAsMuchRoomAsThereIs) {
    std::array<char, 3> letters = {'a', 'b', 'c'};
    CSnapshotStore store;
    for (char& letter : letters) store.AddElement(&letter, 1, 1.0F);
    store.AddSnapshot("state");
    ASSERT_EQ(store.GetSizeCount(0), 3);
    std::array<std::int32_t, 2> few = {};
    store.GetSizes(0, few);
    EXPECT_THAT(few, ElementsAre(1, 1));
    std::array<std::int32_t, 4> many = {};
    store.GetSizes(0, many);
    EXPECT_THAT(many, ElementsAre(1, 1, 1, 0));
}

TEST(CSnapshotStore, SnapshotsAndUndoDoNotTouchEachOther) {
    OneNumber one;
    one.Push(1);
    one.store.AddSnapshot("one");
    one.Push(2);
    one.store.RecallSnapshot(0);
    EXPECT_EQ(one.store.GetUndoIndex(), 2);
    one.store.PushUndo();
    EXPECT_EQ(one.store.GetUndoIndex(), 3);
    one.store.Undo();
    EXPECT_EQ(one.value, 2);
}

// Forgetting.

TEST(CSnapshotStore, ClearAllForgetsEverything) {
    OneNumber one;
    one.Push(1);
    one.Push(2);
    one.store.AddSnapshot("two");
    one.store.ClearAll();
    EXPECT_EQ(one.store.GetElementCount(), 0);
    EXPECT_EQ(one.store.GetTotalSize(), 0);
    EXPECT_EQ(one.store.GetUndoCount(), 0);
    EXPECT_EQ(one.store.GetUndoIndex(), 0);
    EXPECT_EQ(one.store.GetSnapshotCount(), 0);
    EXPECT_FALSE(one.store.Undo());
    std::int32_t other = 9;
    EXPECT_EQ(one.store.AddElement(&other, sizeof other, 1.0F), 0);
    one.store.PushUndo();
    EXPECT_EQ(one.store.GetUndoIndex(), 1);
    EXPECT_EQ(one.store.GetTotalSize(), 4);
}

TEST(CSnapshotStore, ClearHistoryKeepsTheElements) {
    OneNumber one;
    one.Push(1);
    one.Push(2);
    one.store.AddSnapshot("two");
    one.store.ClearHistory();
    EXPECT_EQ(one.store.GetElementCount(), 1);
    EXPECT_EQ(one.store.GetTotalSize(), 4);
    EXPECT_EQ(one.store.GetUndoCount(), 0);
    EXPECT_EQ(one.store.GetUndoIndex(), 0);
    EXPECT_EQ(one.store.GetSnapshotCount(), 0);
    one.Push(3);
    one.Push(4);
    EXPECT_TRUE(one.store.Undo());
    EXPECT_EQ(one.value, 3);
}

} // namespace
} // namespace sonorelle
