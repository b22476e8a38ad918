#include "cli/note_names.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

namespace sonorelle {
namespace {

TEST(NoteNames, MiddleCIsC4) {
    EXPECT_EQ(NoteName(60), "C4");
    EXPECT_EQ(NoteName(69), "A4");
    EXPECT_EQ(NoteName(59), "B3");
}

TEST(NoteNames, BlackKeysAreSharps) {
    EXPECT_EQ(NoteName(58), "A#3");
    EXPECT_EQ(NoteName(61), "C#4");
    EXPECT_EQ(NoteName(63), "D#4");
    EXPECT_EQ(NoteName(66), "F#4");
    EXPECT_EQ(NoteName(68), "G#4");
    for (const int note : {1, 3, 6, 8, 10, 61, 118, -2}) EXPECT_TRUE(IsBlackKey(note)) << note;
    for (const int note : {0, 2, 4, 5, 7, 9, 11, 60, 127, -1}) EXPECT_FALSE(IsBlackKey(note)) << note;
}

TEST(NoteNames, GoOnBelowZero) {
    EXPECT_EQ(NoteName(0), "C-1");
    EXPECT_EQ(NoteName(-1), "B-2");
    EXPECT_EQ(NoteName(-12), "C-2");
    EXPECT_EQ(NoteName(-13), "B-3");
}

TEST(PitchText, NamesTheNearestNoteAndTheRestInCents) {
    EXPECT_EQ(PitchText(58.12F), "A#3 +12");
    EXPECT_EQ(PitchText(60.0F), "C4 +0");
    EXPECT_EQ(PitchText(59.97F), "C4 -3");
    EXPECT_EQ(PitchText(127.25F), "G9 +25");
}

TEST(PitchText, BetweenTwoNotesTheUpperOneIsNamed) {
    EXPECT_EQ(PitchText(60.5F), "C#4 -50");
    EXPECT_EQ(PitchText(60.49F), "C4 +49");
    EXPECT_EQ(PitchText(60.51F), "C#4 -49");
    EXPECT_EQ(PitchText(60.497F), "C#4 -50"); // rounds to the quarter tone, which has one spelling
    EXPECT_EQ(PitchText(59.5F), "C4 -50");
}

TEST(PitchText, NegativePitchesKeepTheirCents) {
    EXPECT_EQ(PitchText(-0.25F), "C-1 -25");
    EXPECT_EQ(PitchText(-0.5F), "C-1 -50");
    EXPECT_EQ(PitchText(-0.75F), "B-2 +25");
    EXPECT_EQ(PitchText(-12.0F), "C-2 +0");
}

TEST(PitchText, WhatHasNoNameIsADash) {
    EXPECT_EQ(PitchText(std::nanf("")), "-");
    EXPECT_EQ(PitchText(std::numeric_limits<float>::infinity()), "-");
    EXPECT_EQ(PitchText(-std::numeric_limits<float>::infinity()), "-");
    EXPECT_EQ(PitchText(std::numeric_limits<float>::max()), "-");
    EXPECT_EQ(PitchText(1000.5F), "-");
}

TEST(PitchText, EveryCentIsNamedOnce) {
    std::set<std::string> seen;
    for (int cents = -2400; cents <= 14400; ++cents) {
        const float pitch = static_cast<float>(cents) / 100;
        const auto named = NearestNote(pitch);
        ASSERT_TRUE(named);
        EXPECT_EQ(named->midiNote * 100 + named->cents, cents);
        EXPECT_GE(named->cents, -50);
        EXPECT_LT(named->cents, 50);
        EXPECT_TRUE(seen.insert(PitchText(pitch)).second) << PitchText(pitch);
    }
}

TEST(KeyName, MajorThenMinorFromC) {
    EXPECT_EQ(KeyName(0), "C major");
    EXPECT_EQ(KeyName(1), "C# major");
    EXPECT_EQ(KeyName(11), "B major");
    EXPECT_EQ(KeyName(12), "C minor");
    EXPECT_EQ(KeyName(21), "A minor");
    EXPECT_EQ(KeyName(23), "B minor");
}

TEST(KeyName, AnyOtherNumberIsNone) {
    EXPECT_EQ(KeyName(-1), "none");
    EXPECT_EQ(KeyName(24), "none");
    EXPECT_EQ(KeyName(std::numeric_limits<std::int32_t>::min()), "none");
}

} // namespace
} // namespace sonorelle
