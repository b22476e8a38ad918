// The store under many random edits, with arrays that grow in between.

#include "app/snapshot_store.h"

#include "app/snapshot_memory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

class CSnapshotStoreEdits : public testing::TestWithParam<std::uint32_t> {};

TEST_P(CSnapshotStoreEdits, AThousandUndoneAndRedoneGiveIdenticalBytes) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::mt19937 random(GetParam());
    CSnapshotStore store(1.2F, 2000, 32);
    CSnapshotArrangement arrangement(store, 12);
    arrangement.Fill(random);

    std::vector<std::vector<std::string>> states;
    for (int edit = 0; edit < 1000; ++edit) {
        if (random() % 50 == 0) arrangement.Grow();
        const auto before = arrangement.Content();
        while (arrangement.Content() == before) arrangement.Edit(random);
        store.PushUndo();
        states.push_back(arrangement.Content());
    }
    ASSERT_EQ(store.GetUndoIndex(), 1000);
    for (std::size_t i = states.size() - 1; i-- > 0;) {
        ASSERT_TRUE(store.Undo());
        ASSERT_TRUE(HoldsContent(arrangement.Content(), states[i])) << "undone to state " << i;
    }
    EXPECT_FALSE(store.Undo());
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(store.Redo());
        ASSERT_TRUE(HoldsContent(arrangement.Content(), states[i])) << "redone to state " << i;
    }
    EXPECT_FALSE(store.Redo());
    EXPECT_EQ(arrangement.Content(), states.back());
    EXPECT_TRUE(arrangement.GuardsHold());
}

TEST_P(CSnapshotStoreEdits, RandomWalkAgreesWithAListOfStates) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::mt19937 random(GetParam());
    CSnapshotStore store;
    CSnapshotArrangement arrangement(store, 6);
    std::vector<std::vector<std::string>> states;
    std::size_t done = 0;

    for (int step = 0; step < 1000; ++step) {
        switch (random() % 4) {
        case 0: {
            const bool expected = done >= 2;
            ASSERT_EQ(store.Undo(), expected);
            if (expected) --done;
            break;
        }
        case 1: {
            const bool expected = done < states.size();
            ASSERT_EQ(store.Redo(), expected);
            if (expected) ++done;
            break;
        }
        default:
            if (random() % 40 == 0) arrangement.Grow();
            for (std::uint32_t i = random() % 3; i > 0; --i) arrangement.Edit(random);
            store.PushUndo();
            states.resize(done);
            if (states.empty() || states.back() != arrangement.Content())
                states.push_back(arrangement.Content());
            if (states.size() > 32) states.erase(states.begin());
            done = states.size();
        }
        ASSERT_EQ(store.GetUndoIndex(), static_cast<std::int32_t>(done)) << "step " << step;
        ASSERT_EQ(store.GetUndoCount(), static_cast<std::int32_t>(states.size())) << "step " << step;
        if (done == 0) continue;
        ASSERT_TRUE(HoldsContent(arrangement.Content(), states[done - 1])) << "step " << step;
    }
    EXPECT_TRUE(arrangement.GuardsHold());
}

TEST_P(CSnapshotStoreEdits, GrowingKeepsEveryElementOfEverySnapshotRestorable) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    std::mt19937 random(GetParam());
    CSnapshotStore store;
    CSnapshotArrangement arrangement(store, 5);
    std::vector<std::vector<std::string>> states;
    for (int i = 0; i < 32; ++i) {
        arrangement.Fill(random);
        ASSERT_TRUE(store.AddSnapshot(std::to_string(i)));
        states.push_back(arrangement.Content());
        arrangement.Grow();
    }
    for (int step = 0; step < 200; ++step) {
        const std::uint32_t index = random() % 32;
        arrangement.Fill(random);
        ASSERT_TRUE(store.RecallSnapshot(static_cast<std::int32_t>(index)));
        ASSERT_TRUE(HoldsContent(arrangement.Content(), states[index])) << "snapshot " << index;
    }
    EXPECT_TRUE(arrangement.GuardsHold());
}

INSTANTIATE_TEST_SUITE_P(Seeds, CSnapshotStoreEdits, testing::Values(1U, 20240U, 777001U));

} // namespace
} // namespace sonorelle
