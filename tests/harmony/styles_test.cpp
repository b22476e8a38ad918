#include "harmony/styles.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

TEST(StyleList, NamesAndCodesInTheOrderOfTheList) {
    const struct {
        const char* name;
        std::int32_t style, arrangement, count, voices;
    } rows[] = {{"Intelligent 4 Voices", 0, 0, 1, 4},     {"Intelligent 3 Voices", 0, 1, 1, 3},
                {"Intelligent 2 Voices", 0, 2, 1, 2},     {"Block Chord 4 Voices", 2, 0, 9, 4},
                {"Fauxbourdon 3 Voices", 3, 0, 4, 3},     {"Organum 2/3 Voices", 4, 0, 7, 2},
                {"Parallel manual 4 Voices", 1, 0, 1, 4}, {"Parallel manual 2 Voices", 1, 1, 1, 2}};
    ASSERT_EQ(StyleList().size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_STREQ(StyleList()[i].name, rows[i].name);
        EXPECT_EQ(StyleList()[i].style, rows[i].style);
        EXPECT_EQ(StyleList()[i].arrangement, rows[i].arrangement);
        EXPECT_EQ(StyleList()[i].arrangementCount, rows[i].count);
        EXPECT_EQ(CountVoices(rows[i].style, rows[i].arrangement), rows[i].voices);
        EXPECT_EQ(StyleListPosition(rows[i].style, rows[i].arrangement), static_cast<std::int32_t>(i));
    }
}

TEST(ArrangementList, NamesInTheOrderOfTheirCodes) {
    const std::vector<std::vector<std::string>> names = {
        {},
        {},
        {"Block", "Block Intelligent", "Shearing", "Shearing Intelligent", "Drop2", "Drop2 Intelligent",
         "Block Randomized", "Shearing Randomized", "Drop2 Randomized"},
        {"Tenor Diatonic", "Tenor Intelligent", "Descant Diatonic", "Descant Intelligent"},
        {"Fourth Above", "Fourth Below", "Fifth Above", "Fifth Below", "Octave Above", "Octave Below",
         "Octave Around"},
        {}};
    for (std::int32_t style = 0; style < 6; ++style) {
        const auto list = ArrangementList(style);
        const auto& expected = names[static_cast<std::size_t>(style)];
        ASSERT_EQ(list.size(), expected.size());
        for (std::size_t i = 0; i < list.size(); ++i) {
            EXPECT_EQ(list[i].name, expected[i]);
            EXPECT_EQ(list[i].arrangement, static_cast<std::int32_t>(i));
            EXPECT_EQ(list[i].style, style);
        }
    }
}

TEST(ManualIntervalList, FifteenEntriesAroundThePrime) {
    const char* const names[] = {"Down Octave", "Down Seventh", "Down Sixth", "Down Fifth", "Down Fourth",
                                 "Down Third",  "Down Second",  "Prime",      "Up Second",  "Up Third",
                                 "Up Fourth",   "Up Fifth",     "Up Sixth",   "Up Seventh", "Up Octave"};
    ASSERT_EQ(ManualIntervalList().size(), 15U);
    for (std::int32_t position = 0; position < 15; ++position) {
        EXPECT_STREQ(ManualIntervalList()[static_cast<std::size_t>(position)], names[position]);
        EXPECT_EQ(IntervalAtListPosition(position), position - 7);
        EXPECT_EQ(ListPositionOfInterval(position - 7), position);
        EXPECT_TRUE(IsManualInterval(position - 7));
    }
    EXPECT_FALSE(IsManualInterval(8));
    EXPECT_FALSE(IsManualInterval(-8));
}

TEST(CountVoices, EveryStyleAndWhatNoTableKnows) {
    EXPECT_EQ(CountVoices(0, 7), 4);
    EXPECT_EQ(CountVoices(1, 7), 4);
    EXPECT_EQ(CountVoices(2, 99), 4);
    EXPECT_EQ(CountVoices(3, 99), 3);
    for (std::int32_t arrangement = 0; arrangement < 6; ++arrangement)
        EXPECT_EQ(CountVoices(4, arrangement), 2);
    EXPECT_EQ(CountVoices(4, 6), 3);
    EXPECT_EQ(CountVoices(4, 7), 2);
    EXPECT_EQ(CountVoices(-1, 0), 4);
    EXPECT_EQ(CountVoices(5, 1), 4);
    EXPECT_EQ(CountVoices(0, -1), 4);
}

TEST(IsArrangement, KnowsTheTablesAndNothingElse) {
    const std::int32_t counts[] = {3, 2, 9, 4, 7};
    for (std::int32_t style = -2; style < 8; ++style) {
        EXPECT_EQ(IsStyle(style), style >= 0 && style < 5);
        for (std::int32_t arrangement = -2; arrangement < 12; ++arrangement) {
            const bool known = style >= 0 && style < 5 && arrangement >= 0 && arrangement < counts[style];
            EXPECT_EQ(IsArrangement(style, arrangement), known) << style << " " << arrangement;
        }
        EXPECT_FALSE(IsArrangement(style, INT_MAX));
        EXPECT_FALSE(IsArrangement(style, INT_MIN));
    }
    EXPECT_EQ(StyleListPosition(2, 8), 3);
    EXPECT_EQ(StyleListPosition(2, 9), -1);
}

} // namespace
} // namespace sonorelle::ConsortierClassic
