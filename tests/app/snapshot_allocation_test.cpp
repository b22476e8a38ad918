// What the store does with memory itself: recalls, which may come from the audio thread, take none, and when
// there is none left an operation leaves everything as it was.

#include "app/snapshot_memory.h"
#include "app/snapshot_store.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>

namespace sonorelle {
namespace {

using test::AllocationCount;
using test::AllocationLimit;

TEST(CSnapshotStore, RecallUndoAndRedoAllocateNothing) {
    std::mt19937 random(3);
    CSnapshotStore store;
    CSnapshotArrangement arrangement(store, 500);
    arrangement.Fill(random);
    store.PushUndo();
    store.AddSnapshot("state");
    arrangement.Fill(random);
    const std::int64_t before = AllocationCount();
    store.PushUndo();
    const std::int64_t pushed = AllocationCount();
    store.PushUndo();
    EXPECT_EQ(AllocationCount(), pushed) << "a push of the unchanged state";
    EXPECT_TRUE(store.RecallSnapshot(0));
    EXPECT_TRUE(store.Undo());
    EXPECT_TRUE(store.Redo());
    EXPECT_EQ(AllocationCount(), pushed);
    EXPECT_GT(pushed, before) << "the count counts";
}

// Runs `operation`, which gives whether it succeeded, with ever more memory until it does.
template<typename Operation>
int FailuresBeforeSuccess(const Operation& operation) {
    for (int failures = 0; failures < 100; ++failures) {
        const AllocationLimit limit(failures);
        if (operation()) return failures;
    }
    return -1;
}

TEST(CSnapshotStore, WithoutMemoryNothingChanges) {
    std::array<char, 2> letters = {'a', 'b'};
    CSnapshotStore store;
    EXPECT_GT(FailuresBeforeSuccess([&] { return store.AddElement(letters.data(), 2, 1.0F) == 0; }), 0);
    EXPECT_EQ(store.GetElementCount(), 1);
    EXPECT_EQ(store.GetTotalSize(), 2);

    const auto push = [&] {
        store.PushUndo();
        return store.GetUndoCount() == 1;
    };
    EXPECT_GT(FailuresBeforeSuccess(push), 0);
    EXPECT_EQ(store.GetUndoIndex(), 1);
    EXPECT_GT(FailuresBeforeSuccess([&] { return store.AddSnapshot("one"); }), 0);
    EXPECT_GT(FailuresBeforeSuccess([&] { return store.ReplaceSnapshot(0); }), 0);
    EXPECT_GT(FailuresBeforeSuccess([&] { return store.ImportSnapshot("two", "AB", 2, 1.2F, nullptr, 0); }),
              0);
    EXPECT_EQ(store.GetSnapshotCount(), 2);
    ASSERT_TRUE(store.RecallSnapshot(1));
    EXPECT_EQ(letters[0], 'A');
    ASSERT_TRUE(store.RecallSnapshot(0));
    EXPECT_EQ(letters[0], 'a');
}

} // namespace
} // namespace sonorelle
