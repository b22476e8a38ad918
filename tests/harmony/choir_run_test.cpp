#include "app/snapshot_store.h"
#include "harmony/choir_driver.h"
#include "harmony/styles.h"
#include "support/allocation_trap.h"
#include "support/analysed_melody_fixture.h"

#include <gtest/gtest.h>

#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

// A melody up and down a scale and beyond it.
std::vector<float> WanderingPitches() {
    std::vector<float> pitches;
    for (std::int32_t i = 0; i < 40; ++i) pitches.push_back(60.0F + static_cast<float>(i * 5 % 13));
    return pitches;
}

class ChoirRunSteps : public ::testing::Test {
protected:
    struct Choir {
        Choir() : melody(EvenNotes(WanderingPitches())), driver(melody.Analyzer(), store) {
            driver.Run();
            driver.SetAutoKey(false);
        }
        ~Choir() { store.ClearAll(); }
        std::vector<std::int32_t> Voices() {
            std::vector<std::int32_t> all;
            for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
                for (std::int32_t voice = 0; voice < 4; ++voice) {
                    float deviation = 0;
                    float gain = 0;
                    all.push_back(driver.GetVoice(note, voice, deviation, gain, false));
                }
                all.push_back(driver.GetChord(note).root);
            }
            return all;
        }
        void Set(std::int32_t style, std::int32_t arrangement) {
            driver.SetManualOnly(style == kStyleParallel);
            driver.SetStyle(style);
            driver.SetArrangement(arrangement);
            driver.SetChordsDirty(true);
            driver.SetRoot(7);
            driver.SetSpread(0.3F);
            driver.SetManualInterval(1, 4);
        }
        AnalysedMelody melody;
        CSnapshotStore store;
        CChoirDriver driver;
    };

    static bool RunInSteps(Choir& choir) {
        CChoirRun run;
        if (!choir.driver.BeginRun(run)) return false;
        run.Make();
        return choir.driver.FinishRun(run);
    }
};

TEST_F(ChoirRunSteps, MakeTheVoicesThatOneRunMakes) {
    for (std::int32_t style = kStyleIntelligent; IsStyle(style); ++style)
        for (std::int32_t arrangement = 0; IsArrangement(style, arrangement); ++arrangement) {
            Choir whole;
            Choir steps;
            const std::vector<std::int32_t> first = whole.Voices();
            // Twice, so that what the engine remembers is the same too.
            for (std::int32_t round = 0; round < 2; ++round) {
                whole.Set(style, arrangement);
                steps.Set(style, arrangement);
                ASSERT_EQ(whole.driver.Run(), 0);
                ASSERT_TRUE(RunInSteps(steps));
                ASSERT_EQ(steps.Voices(), whole.Voices()) << style << " " << arrangement;
            }
            EXPECT_NE(whole.Voices(), first) << style << " " << arrangement;
        }
}

TEST_F(ChoirRunSteps, LeaveTheOldVoicesUntilTheyAreFinished) {
    Choir choir;
    choir.Set(kStyleIntelligent, kThreeVoices);
    CChoirRun run;
    ASSERT_TRUE(choir.driver.BeginRun(run));
    const std::vector<std::int32_t> before = choir.Voices();
    run.Make();
    EXPECT_EQ(choir.Voices(), before);
    const std::int64_t allocations = AllocationCount();
    EXPECT_TRUE(choir.driver.FinishRun(run));
    EXPECT_EQ(AllocationCount(), allocations);
    EXPECT_NE(choir.Voices(), before);
}

TEST_F(ChoirRunSteps, AreDroppedWhenASnapshotWasRecalledMeanwhile) {
    Choir choir;
    ASSERT_TRUE(choir.store.AddSnapshot("Before"));
    const std::vector<std::int32_t> stored = choir.Voices();
    choir.Set(kStyleIntelligent, kTwoVoices);
    CChoirRun run;
    ASSERT_TRUE(choir.driver.BeginRun(run));
    run.Make();
    ASSERT_TRUE(choir.store.RecallSnapshot(0));
    choir.driver.RefreshFromStore();
    EXPECT_FALSE(choir.driver.FinishRun(run));
    EXPECT_EQ(choir.Voices(), stored);
    EXPECT_TRUE(RunInSteps(choir)); // the next goes through
}

TEST_F(ChoirRunSteps, WithoutMemoryNothingIsBegun) {
    Choir choir;
    choir.Set(kStyleOrganum, 0);
    const std::vector<std::int32_t> before = choir.Voices();
    CChoirRun run;
    bool begun = true;
    {
        const AllocationLimit limit(1);
        begun = choir.driver.BeginRun(run);
    }
    EXPECT_FALSE(begun);
    EXPECT_EQ(choir.Voices(), before);
    EXPECT_EQ(choir.driver.Run(), 0);
}

} // namespace
} // namespace sonorelle::test
