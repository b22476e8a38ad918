#include "harmony/scales.h"

#include "harmony/slow_key.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

// As a musician spells them: semitones from tone to tone.
struct ScaleCase {
    const char* name;
    std::vector<int> semitones;
};

class Scales : public testing::TestWithParam<int> {};

const ScaleCase kCases[] = {
    {"Major", {2, 2, 1, 2, 2, 2, 1}},      {"Dorian", {2, 1, 2, 2, 2, 1, 2}},
    {"Phrygian", {1, 2, 2, 2, 1, 2, 2}},   {"Lydian", {2, 2, 2, 1, 2, 2, 1}},
    {"Mixolydian", {2, 2, 1, 2, 2, 1, 2}}, {"Aeolic Minor", {2, 1, 2, 2, 1, 2, 2}},
    {"Lokrian", {1, 2, 2, 1, 2, 2, 2}},    {"Harmonic Minor", {2, 1, 2, 2, 1, 3, 1}},
    {"Gipsy I", {2, 1, 3, 1, 1, 3, 1}},    {"Gipsy II", {1, 3, 1, 2, 1, 3, 1}},
    {"Whole Tone", {2, 2, 2, 2, 2, 2}},    {nullptr, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
};

TEST_P(Scales, HasTheTonesOfItsName) {
    const int row = GetParam();
    const ScaleCase& scale = kCases[row];
    if (scale.name != nullptr) {
        EXPECT_STREQ(kScaleNames[static_cast<std::size_t>(row)], scale.name);
    }
    std::string flags(12, '0');
    int position = 0;
    for (const int step : scale.semitones) {
        flags[static_cast<std::size_t>(position)] = '1';
        position += step;
    }
    ASSERT_EQ(position, 12);
    EXPECT_EQ(flags, slow::kScales[static_cast<std::size_t>(row)]);
    for (std::size_t column = 0; column < 12; ++column)
        EXPECT_EQ(ScaleTable[row][column], flags[column] - '0') << column;
    EXPECT_EQ(CountTones(row), static_cast<int>(scale.semitones.size()));
}

INSTANTIATE_TEST_SUITE_P(EveryRow, Scales, testing::Range(0, 12));

TEST(ScaleLimits, TheTwelveTonesAreForTheHarmonyAlone) {
    EXPECT_TRUE(IsHarmonyScale(11));
    EXPECT_FALSE(IsMelodyScale(11));
    EXPECT_TRUE(IsMelodyScale(10));
    for (const int bad : {-1, 12}) {
        EXPECT_FALSE(IsHarmonyScale(bad));
        EXPECT_FALSE(IsMelodyScale(bad));
        EXPECT_FALSE(IsKeyRoot(bad));
    }
}

} // namespace
} // namespace sonorelle::ConsortierClassic
