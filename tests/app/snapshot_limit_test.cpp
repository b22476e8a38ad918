// The store's limit of snapshots, when it moves.

#include "app/snapshot_store.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace sonorelle {
namespace {

TEST(CSnapshotStore, ARaisedLimitLetsOneMoreIn) {
    std::int32_t state = 1;
    CSnapshotStore store(1.2F, 32, 2);
    store.AddElement(&state, sizeof state, 1.0F);
    EXPECT_TRUE(store.AddSnapshot("a"));
    EXPECT_TRUE(store.AddSnapshot("b"));
    EXPECT_FALSE(store.AddSnapshot("c"));
    EXPECT_EQ(store.GetSnapshotLimit(), 2);
    store.SetSnapshotLimit(3);
    EXPECT_TRUE(store.AddSnapshot("c"));
    EXPECT_FALSE(store.AddSnapshot("d"));
}

TEST(CSnapshotStore, ALoweredLimitRemovesNothing) {
    std::int32_t state = 1;
    CSnapshotStore store(1.2F, 32, 3);
    store.AddElement(&state, sizeof state, 1.0F);
    for (const char* name : {"a", "b", "c"}) EXPECT_TRUE(store.AddSnapshot(name));
    store.SetSnapshotLimit(1);
    EXPECT_EQ(store.GetSnapshotCount(), 3);
    EXPECT_EQ(store.GetSnapshotName(2), "c");
    store.DeleteSnapshot(2);
    EXPECT_FALSE(store.AddSnapshot("d"));
}

} // namespace
} // namespace sonorelle
