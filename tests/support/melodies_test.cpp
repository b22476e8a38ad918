#include "support/melodies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace sonorelle::test {

namespace {

std::array<double, 12> BeatsOfPitchClasses(const Melody& melody) {
    std::array<double, 12> beats{};
    for (const MelodyNote& note : melody.notes)
        beats[static_cast<std::size_t>(note.midiPitch) % 12] += note.beats;
    return beats;
}

// White keys from C, and from A for the minor keys.
bool IsInKey(int pitchClass, int key) {
    const std::set<int> white = {0, 2, 4, 5, 7, 9, 11};
    const int toWhite = key < 12 ? pitchClass - key : pitchClass - (key - 12) + 9;
    return white.count((toWhite + 24) % 12) == 1;
}

} // namespace

class MelodyInKey : public testing::TestWithParam<int> {};

TEST_P(MelodyInKey, IsDiatonicSingableAndEndsOnTheTonic) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "melody " << seed);
        MelodyWish wish;
        wish.key = GetParam();
        wish.lowestMidiPitch = 40 + static_cast<int>(seed % 25);
        const Melody melody = RandomDiatonicMelody(wish, seed);
        EXPECT_EQ(melody.key, GetParam());
        ASSERT_EQ(melody.notes.size(), 32u);
        int steps = 0;
        for (std::size_t i = 0; i < melody.notes.size(); ++i) {
            const MelodyNote& note = melody.notes[i];
            ASSERT_TRUE(IsInKey(static_cast<int>(note.midiPitch) % 12, wish.key));
            ASSERT_GE(note.midiPitch, wish.lowestMidiPitch);
            ASSERT_LE(note.midiPitch, wish.lowestMidiPitch + 19);
            if (i == 0) continue;
            const double leap = std::abs(note.midiPitch - melody.notes[i - 1].midiPitch);
            EXPECT_LE(leap, 12.0);
            steps += leap <= 4.0;
            // Without a consonant or a rest nobody could tell where the second begins.
            EXPECT_TRUE(leap > 0.0 || note.consonant == Consonant::kPlosive ||
                        note.consonant == Consonant::kFricative);
        }
        EXPECT_GT(steps, 15); // more than half of all moves
        EXPECT_EQ(static_cast<int>(melody.notes.back().midiPitch) % 12, wish.key % 12);
        EXPECT_EQ(melody.notes.back().restBeatsAfter, 0.0);
        EXPECT_GT(melody.notes[7].restBeatsAfter, 0.0);
    }
}

INSTANTIATE_TEST_SUITE_P(AllKeys, MelodyInKey, testing::Range(0, 24));

// On an even spread over the scale the two would have 2/7 of the time.
TEST(RandomDiatonicMelody, TonicAndFifthTakeMuchOfTheTime) {
    double share = 0.0;
    for (int i = 0; i < 240; ++i) {
        const Melody melody = RandomDiatonicMelody({.key = i % 24}, static_cast<std::uint64_t>(i));
        const std::array<double, 12> beats = BeatsOfPitchClasses(melody);
        double all = 0.0;
        for (const double b : beats) all += b;
        const auto tonic = static_cast<std::size_t>(i % 12);
        share += (beats[tonic] + beats[(tonic + 7) % 12]) / all / 240.0;
    }
    EXPECT_GT(share, 0.4);
    EXPECT_LT(share, 0.7);
}

TEST(RandomDiatonicMelody, SeedDecidesTheMelody) {
    const auto pitches = [](std::uint64_t seed) {
        std::vector<double> result;
        for (const MelodyNote& note : RandomDiatonicMelody({}, seed).notes) result.push_back(note.midiPitch);
        return result;
    };
    EXPECT_EQ(pitches(3), pitches(3));
    std::set<std::vector<double>> different;
    for (std::uint64_t seed = 0; seed < 100; ++seed) different.insert(pitches(seed));
    EXPECT_EQ(different.size(), 100u);
}

TEST(RandomDiatonicMelody, IsSungWithItsKey) {
    const Melody melody = RandomDiatonicMelody({.key = 14, .phrases = 1}, 1);
    const Recording sung = Sing(melody, SingerSettings());
    EXPECT_EQ(sung.key, 14);
    EXPECT_EQ(sung.notes.size(), melody.notes.size());
}

} // namespace sonorelle::test
