#include "harmony/chord_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <string>

namespace sonorelle::ConsortierClassic {
namespace {

std::string Format(std::int32_t root, std::int32_t type, bool useFlats) {
    char buffer[kChordNameSize] = "untouched";
    FormatChordName(buffer, root, type, useFlats);
    return buffer;
}

TEST(FormatChordName, AugmentedIsUpperDiminishedAndTheSmallSeventhsAreLower) {
    EXPECT_EQ(Format(3, kAugmentedTriad, false), "D# aug");
    EXPECT_EQ(Format(3, kDiminishedTriad, false), "d# dim");
    EXPECT_EQ(Format(3, kHalfDiminished, false), "d# m7b5");
    EXPECT_EQ(Format(3, kDiminishedSeventh, false), "d# dim7");
}

TEST(FormatChordName, EveryTypeInBothSpellings) {
    const struct {
        std::int32_t type;
        const char *sharp, *flat;
    } rows[] = {
        {0, "A#", "Bb"},     {1, "a#", "bb"},           {2, "a# dim", "bb dim"},    {3, "A# aug", "Bb aug"},
        {4, "--", "--"},     {5, "--", "--"},           {6, "A# M7", "Bb M7"},      {7, "a# m7", "bb m7"},
        {8, "A# 7", "Bb 7"}, {9, "a# m7b5", "bb m7b5"}, {10, "a# dim7", "bb dim7"}, {11, "a# mM7", "bb mM7"},
        {12, "--", "--"}};
    for (const auto& row : rows) {
        EXPECT_EQ(Format(10, row.type, false), row.sharp);
        EXPECT_EQ(Format(10, row.type, true), row.flat);
    }
}

TEST(FormatChordName, TypesWithoutANameWriteNothing) {
    for (const std::int32_t type : {13, 14, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(Format(0, type, false), "untouched");
    FormatChordName({}, 0, 0, false);
}

TEST(FormatChordName, IsCutToTheBuffer) {
    std::array<char, 8> buffer;
    buffer.fill('x');
    FormatChordName(std::span<char>(buffer.data(), 4), 1, kHalfDiminished, true);
    EXPECT_STREQ(buffer.data(), "db ");
    EXPECT_EQ(buffer[4], 'x');
}

TEST(NoteName, EveryPitchClassInFourSpellings) {
    const std::array<const char*, 12> sharps = {"C",  "C#", "D",  "D#", "E",  "F",
                                                "F#", "G",  "G#", "A",  "A#", "B"};
    const std::array<const char*, 12> flats = {"C",  "Db", "D",  "Eb", "E",  "F",
                                               "Gb", "G",  "Ab", "A",  "Bb", "B"};
    for (std::int32_t pc = 0; pc < 12; ++pc) {
        const std::string sharp = sharps[static_cast<std::size_t>(pc)];
        const std::string flat = flats[static_cast<std::size_t>(pc)];
        const auto small = [](std::string name) {
            name[0] = static_cast<char>(name[0] - 'A' + 'a');
            return name;
        };
        EXPECT_EQ(NoteName(pc, false), sharp);
        EXPECT_EQ(NoteName(pc, true), flat);
        EXPECT_EQ(NoteName(pc, false, true), small(sharp));
        EXPECT_EQ(NoteName(pc, true, true), small(flat));
    }
    EXPECT_STREQ(NoteName(-1, false), "B");
    EXPECT_STREQ(NoteName(INT_MAX, false), "G");
}

TEST(ChordName, TakesTheTypeThatTheNumberOfNotesNames) {
    EXPECT_EQ(ChordName({0, 3, kMinorTriad, kDominantSeventh}, false), "c");
    EXPECT_EQ(ChordName({0, 4, kMinorTriad, kDominantSeventh}, false), "C 7");
    EXPECT_EQ(ChordName({0, 4, kMinorTriad, kNoTetrad}, false), "");
}

TEST(ChordName, TheLongestNameFits) {
    std::size_t longest = 0;
    for (std::int32_t root = 0; root < 12; ++root)
        for (std::int32_t type = 0; type < 13; ++type)
            longest = std::max(longest, Format(root, type, true).size());
    EXPECT_EQ(longest, std::strlen("db m7b5"));
    EXPECT_LT(longest, kChordNameSize);
}

TEST(ChordMenu, PlainEntriesAndHeadings) {
    EXPECT_STREQ(kNoChordName, "No Chord");
    EXPECT_STREQ(kMajorTriadName, "Triad Major");
    EXPECT_STREQ(kMinorTriadName, "Triad Minor");
    EXPECT_STREQ(kSeventhChordsHeading, "7th");
    EXPECT_STREQ(kAllChordsHeading, "all");
}

} // namespace
} // namespace sonorelle::ConsortierClassic
