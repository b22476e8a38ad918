#include "harmony/key.h"

#include "harmony/slow_key.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <random>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kWholeTone = 10;
constexpr unsigned kGenerator = 20417;

CKey MakeKey(std::int32_t root, std::int32_t melodyScale, std::int32_t harmonyScale) {
    CKey key;
    EXPECT_EQ(key.SetRoot(root), kOk);
    EXPECT_EQ(key.SetMelodyScale(melodyScale), kOk);
    EXPECT_EQ(key.SetHarmonyScale(harmonyScale), kOk);
    return key;
}

slow::Key SlowOf(const CKey& key) {
    return {key.GetRoot(), key.GetMelodyScale(), key.GetHarmonyScale(), key.GetSnapToScale(),
            key.GetMapScale()};
}

template<typename Each>
void ForEveryKey(Each each) {
    for (std::int32_t root = 0; root < 12; ++root)
        for (std::int32_t melody = 0; melody < kNamedScaleCount; ++melody)
            for (std::int32_t harmony = 0; harmony < kScaleCount; ++harmony)
                each(MakeKey(root, melody, harmony));
}

TEST(CKey, StartsInCMajorWithSnapAndMapOn) {
    const CKey key;
    EXPECT_EQ(key.GetRoot(), 0);
    EXPECT_EQ(key.GetMelodyScale(), 0);
    EXPECT_EQ(key.GetHarmonyScale(), 0);
    EXPECT_TRUE(key.GetSnapToScale());
    EXPECT_TRUE(key.GetMapScale());
    for (const std::int32_t offset : key.GetScaleMap()) EXPECT_EQ(offset, 0);
}

TEST(CKey, TiesGoDownInEveryKey) {
    int ties = 0;
    ForEveryKey([&](const CKey& key) {
        const slow::Key slow = SlowOf(key);
        for (std::int32_t pitch = 48; pitch < 72; ++pitch) {
            if (slow.MelodyFlag(slow.Position(pitch))) continue;
            const bool tie =
                slow.MelodyFlag(slow.Position(pitch + 1)) && slow.MelodyFlag(slow.Position(pitch - 1));
            if (!tie) continue;
            ++ties;
            ASSERT_EQ(key.SnapToScale(pitch), pitch - 1);
        }
    });
    EXPECT_GT(ties, 10000);
    EXPECT_EQ(CKey().SnapToScale(61), 60);
    EXPECT_EQ(CKey().SnapToScale(63), 62);
}

TEST(CKey, SnapGoesToTheNearestToneOfTheMelodyScale) {
    ForEveryKey([](const CKey& key) {
        const slow::Key slow = SlowOf(key);
        for (std::int32_t pitch = -30; pitch < 140; pitch += 1) {
            const std::int32_t snapped = key.SnapToScale(pitch);
            ASSERT_TRUE(slow.MelodyFlag(slow.Position(snapped)));
            for (std::int32_t other = pitch - 6; other <= pitch + 6; ++other) {
                if (!slow.MelodyFlag(slow.Position(other))) continue;
                ASSERT_LE(std::abs(snapped - pitch), std::abs(other - pitch));
            }
        }
    });
}

TEST(CKey, GipsyGapOfThreeSemitonesSnapsUpFromItsUpperHalf) {
    const CKey key = MakeKey(0, 8, 0); // D# to F# in Gipsy I
    EXPECT_EQ(key.SnapToScale(64), 63);
    EXPECT_EQ(key.SnapToScale(65), 66);
}

TEST(CKey, LastToneOfMajorFallsToTheTopOfTheWholeToneScale) {
    const CKey key = MakeKey(0, 0, kWholeTone);
    const std::array<std::int32_t, 12> expected = {0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, -1};
    EXPECT_EQ(key.GetScaleMap(), expected);
    EXPECT_EQ(key.ApplyScaleMap(71), 70);
}

TEST(CKey, EveryScaleOfSevenTonesFallsAtItsTopInTheWholeToneScale) {
    for (std::int32_t melody = 0; melody < kWholeTone; ++melody) {
        const CKey key = MakeKey(0, melody, kWholeTone);
        const std::int32_t last = ScaleTable[melody][11] != 0 ? 11 : 10;
        EXPECT_EQ(key.ApplyScaleMap(60 + last), 70) << kScaleNames[static_cast<std::size_t>(melody)];
    }
}

TEST(CKey, ScaleMapIsIndexedByAbsolutePitchClass) {
    const CKey key = MakeKey(2, 0, 5);   // D major to D minor
    EXPECT_EQ(key.GetScaleMap()[2], 0);  // D
    EXPECT_EQ(key.GetScaleMap()[6], -1); // F# to F
    EXPECT_EQ(key.GetScaleMap()[11], -1);
    EXPECT_EQ(key.GetScaleMap()[1], -1);
    EXPECT_EQ(key.GetScaleMap()[4], 0);
}

TEST(CKey, MajorMapsToneByToneToMinor) {
    const CKey key = MakeKey(0, 0, 5);
    EXPECT_EQ(key.ApplyScaleMap(64), 63); // E to D#
    EXPECT_EQ(key.ApplyScaleMap(69), 68); // A to G#
    EXPECT_EQ(key.ApplyScaleMap(71), 70); // B to A#
    for (const std::int32_t same : {60, 62, 65, 67}) EXPECT_EQ(key.ApplyScaleMap(same), same);
}

TEST(CKey, AllTwelveTonesLeaveTheMapAlone) {
    const CKey key = MakeKey(3, 7, kChromaticScale);
    for (const std::int32_t offset : key.GetScaleMap()) EXPECT_EQ(offset, 0);
}

TEST(CKey, EveryMapEqualsTheSlowOneAndLandsInTheHarmonyScale) {
    ForEveryKey([](const CKey& key) {
        const slow::Key slow = SlowOf(key);
        ASSERT_EQ(key.GetScaleMap(), slow.Map())
            << key.GetRoot() << " " << key.GetMelodyScale() << " " << key.GetHarmonyScale();
        for (std::int32_t pitch = 40; pitch < 80; ++pitch) ASSERT_TRUE(key.IsInScale(key.Prepare(pitch)));
    });
}

TEST(CKey, WalksAndStepsEqualTheSlowOnesInEveryScale) {
    for (std::int32_t scale = 0; scale < kScaleCount; ++scale) {
        const CKey key = MakeKey(4, 0, scale);
        const slow::Key slow = SlowOf(key);
        for (std::int32_t position = 0; position < 12; ++position) {
            for (std::int32_t n = 1; n <= 16; ++n) {
                ASSERT_EQ(key.ScaleWalk(position, Direction::kUp, n), slow.Walk(position, 1, n));
                ASSERT_EQ(key.ScaleWalk(position, Direction::kDown, n), slow.Walk(position, -1, n));
            }
            for (std::int32_t delta = -40; delta <= 40; ++delta)
                ASSERT_EQ(key.ScaleSteps(position, delta), slow.Steps(position, delta))
                    << position << " " << delta;
        }
    }
}

TEST(CKey, StepsCountAsAMusicianCounts) {
    const CKey key;
    EXPECT_EQ(key.ScaleSteps(0, 4), 2);   // a third
    EXPECT_EQ(key.ScaleSteps(0, 12), 7);  // an octave
    EXPECT_EQ(key.ScaleSteps(4, -4), -2); // a third down
    EXPECT_EQ(key.ScaleSteps(1, 0), -1);  // within a place outside the scale
    EXPECT_EQ(key.ScaleWalk(0, Direction::kUp, 3), 4);
    EXPECT_EQ(key.ScaleWalk(0, Direction::kDown, 5), 7);
    EXPECT_EQ(key.ScaleWalk(1, Direction::kUp, 1), 1); // one tone later from outside
}

TEST(CKey, ThreeReadingsOfAnInterval) {
    const CKey key;
    EXPECT_EQ(key.StepsUpwards(62, 60), 6);
    EXPECT_EQ(key.StepsUpwards(60, 62), 1);
    EXPECT_EQ(key.StepsBetween(60, 74), 8);
    EXPECT_EQ(key.StepsBetween(74, 60), -8);
    EXPECT_EQ(key.StepsWithinOctave(60, 74), 1);
    EXPECT_EQ(key.StepsWithinOctave(74, 60), -1);
}

TEST(CKey, SnappedNotesAreInScaleInRandomKeys) {
    RecordProperty("generator", static_cast<int>(kGenerator));
    std::mt19937 random(kGenerator);
    std::uniform_int_distribution<int> anyPitch(-2000, 2000);
    for (int round = 0; round < 20000; ++round) {
        const CKey key = MakeKey(static_cast<int>(random() % 12), static_cast<int>(random() % 11),
                                 static_cast<int>(random() % 12));
        const slow::Key slow = SlowOf(key);
        const int pitch = anyPitch(random);
        ASSERT_EQ(key.SnapToScale(pitch), slow.Snapped(pitch)) << "generator " << kGenerator;
        ASSERT_EQ(key.Prepare(pitch), slow.Prepared(pitch)) << "generator " << kGenerator;
        ASSERT_TRUE(slow.MelodyFlag(slow.Position(key.SnapToScale(pitch))));
    }
}

TEST(CKey, FlagsDecideWhatPreparationDoes) {
    CKey key = MakeKey(0, 0, 5);
    EXPECT_EQ(key.Prepare(66), 65); // F# to F, which minor has
    EXPECT_EQ(key.Prepare(65), 65);
    EXPECT_EQ(key.Prepare(64), 63);
    key.SetMapScale(false);
    EXPECT_EQ(key.Prepare(66), 65);
    EXPECT_EQ(key.Prepare(64), 64);
    key.SetSnapToScale(false);
    EXPECT_EQ(key.Prepare(66), 66);
    key.SetMapScale(true);
    EXPECT_EQ(key.Prepare(64), 63);
}

TEST(CKey, RefusesWhatNoTableKnowsAndKeepsItsState) {
    CKey key = MakeKey(5, 3, 7);
    const auto map = key.GetScaleMap();
    for (const std::int32_t bad : {-1, 12, 13, INT_MAX, INT_MIN}) {
        EXPECT_EQ(key.SetRoot(bad), kBadArgument);
        EXPECT_EQ(key.SetMelodyScale(bad), kBadArgument);
        EXPECT_EQ(key.SetHarmonyScale(bad), kBadArgument);
    }
    EXPECT_EQ(key.SetMelodyScale(kChromaticScale), kBadArgument);
    EXPECT_EQ(key.GetRoot(), 5);
    EXPECT_EQ(key.GetMelodyScale(), 3);
    EXPECT_EQ(key.GetHarmonyScale(), 7);
    EXPECT_EQ(key.GetScaleMap(), map);
}

TEST(CKey, PitchesFarOutsideAreHandledLikeTheirPitchClass) {
    const CKey key = MakeKey(7, 0, 5);
    for (const std::int32_t octave : {-1000000, -40, 40, 1000000}) {
        for (std::int32_t pitch = 0; pitch < 12; ++pitch) {
            const std::int32_t far = pitch + 12 * octave;
            EXPECT_EQ(key.Prepare(far) - far, key.Prepare(pitch) - pitch);
            EXPECT_EQ(key.IsInScale(far), key.IsInScale(pitch));
        }
    }
    for (const std::int32_t end : {INT_MIN, INT_MAX}) {
        EXPECT_LE(std::abs(static_cast<long long>(key.Prepare(end))), kPitchLimit + 12);
        EXPECT_GE(key.Position(end), 0);
        EXPECT_LT(key.Position(end), 12);
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
