#include "cli/arrangement_names.h"

#include "app/voice_preset.h"
#include "cli/named_numbers.h"
#include "harmony/styles.h"

#include <gtest/gtest.h>

#include <optional>

namespace sonorelle {
namespace {

using namespace ConsortierClassic;

TEST(FindStyle, TakesNamesInAnyCasePositionsAndClearBeginnings) {
    EXPECT_EQ(FindStyle("Intelligent 4 Voices"), 0);
    EXPECT_EQ(FindStyle("fauxbourdon 3 VOICES"), 4);
    EXPECT_EQ(FindStyle("  organum "), 5);
    EXPECT_EQ(FindStyle("7"), 7);
    EXPECT_EQ(FindStyle("parallel manual 2"), 7);
    for (const char* text : {"intelligent", "parallel", "8", "-1", "", " ", "choir", "Organum 2/3 Voices!",
                             "0x1", "1.0", "99999999999"})
        EXPECT_EQ(FindStyle(text), std::nullopt) << text;
}

TEST(FindArrangement, AWholeNameGoesBeforeABeginning) {
    EXPECT_EQ(FindArrangement(kStyleBlock, "block"), kBlock);
    EXPECT_EQ(FindArrangement(kStyleBlock, "drop2 r"), kDrop2Randomized);
    EXPECT_EQ(FindArrangement(kStyleBlock, "8"), kDrop2Randomized);
    EXPECT_EQ(FindArrangement(kStyleFauxbourdon, "Descant Intelligent"), kDescantIntelligent);
    EXPECT_EQ(FindArrangement(kStyleOrganum, "octave ar"), kOctaveAround);
    EXPECT_EQ(FindArrangement(kStyleOrganum, "7"), std::nullopt);
    EXPECT_EQ(FindArrangement(kStyleOrganum, "octave"), std::nullopt);
    EXPECT_EQ(FindArrangement(kStyleIntelligent, "0"), std::nullopt);
}

TEST(FindRoot, TakesNotesInBothSpellingsAndNumbers) {
    EXPECT_EQ(FindRoot("C"), 0);
    EXPECT_EQ(FindRoot("C#"), 1);
    EXPECT_EQ(FindRoot("Db"), 1);
    EXPECT_EQ(FindRoot("eb"), 3);
    EXPECT_EQ(FindRoot("e"), 4);
    EXPECT_EQ(FindRoot("F#"), 6);
    EXPECT_EQ(FindRoot("b"), 11);
    EXPECT_EQ(FindRoot("bb"), 10);
    EXPECT_EQ(FindRoot("BB"), 10);
    EXPECT_EQ(FindRoot("Cb"), 11);
    EXPECT_EQ(FindRoot("b#"), 0);
    EXPECT_EQ(FindRoot("11"), 11);
    for (const char* text : {"H", "", " ", "12", "-1", "C##", "Cx", "C major", "#", "1.5"})
        EXPECT_EQ(FindRoot(text), std::nullopt) << text;
}

TEST(FindScale, TwelveTonesAreForTheHarmonyAlone) {
    EXPECT_EQ(FindScale("Aeolic Minor"), 5);
    EXPECT_EQ(FindScale("harmonic minor"), 7);
    EXPECT_EQ(FindScale("gipsy i"), 8); // and not the beginning of "Gipsy II"
    EXPECT_EQ(FindScale("10"), 10);
    EXPECT_EQ(FindScale("11"), std::nullopt);
    EXPECT_EQ(FindScale("m"), std::nullopt); // Major or Mixolydian
    EXPECT_EQ(FindHarmonyScale("11"), 11);
    EXPECT_EQ(FindHarmonyScale("whole tone"), 10);
    EXPECT_EQ(FindHarmonyScale("12"), std::nullopt);
}

TEST(FindInterval, TakesNamesAndSignedSteps) {
    EXPECT_EQ(FindInterval("Down Octave"), -7);
    EXPECT_EQ(FindInterval("prime"), 0);
    EXPECT_EQ(FindInterval("up third"), 2);
    EXPECT_EQ(FindInterval("-3"), -3);
    EXPECT_EQ(FindInterval("+5"), 5);
    for (const char* text : {"8", "-8", "up", "", "third", "+-1", "+"})
        EXPECT_EQ(FindInterval(text), std::nullopt) << text;
}

TEST(ReadNumber, TakesFiniteNumbersAlone) {
    EXPECT_EQ(ReadNumber("0.6"), 0.6);
    EXPECT_EQ(ReadNumber("-2e1"), -20.0);
    EXPECT_EQ(ReadNumber("+1.5"), 1.5);
    for (const char* text : {"", "x", "+", "+-1", "++1", "1,5", "1 ", "nan", "inf", "1e999"})
        EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
}

TEST(FindVoice, TakesNumbersAndColoursOfTheVoicesThatThereAre) {
    for (const std::int32_t voice : {0, 1, 2, 3}) {
        EXPECT_EQ(FindVoice(std::to_string(voice), 4), voice);
        EXPECT_EQ(FindVoice(VoiceName(voice), 4), voice);
    }
    EXPECT_EQ(FindVoice(" RED ", 2), 1);
    EXPECT_EQ(FindVoice("g", 4), 3);
    for (const char* text : {"2", "blue", "3", "green"}) EXPECT_EQ(FindVoice(text, 2), std::nullopt) << text;
    for (const char* text : {"", "4", "-1", "lead", "1.0"})
        EXPECT_EQ(FindVoice(text, 4), std::nullopt) << text;
    EXPECT_EQ(VoiceChoices(3), "0 to 2, or orange, red, blue");
    EXPECT_EQ(VoiceName(-1), "");
    EXPECT_EQ(VoiceName(4), "");
}

TEST(FindPreset, TakesNamesAndNumbers) {
    EXPECT_EQ(FindPreset("Default"), kDefaultPreset);
    EXPECT_EQ(FindPreset("flat"), kFlatPreset);
    EXPECT_EQ(FindPreset("1"), kFlatPreset);
    for (const char* text : {"", "2", "-1", "loud"}) EXPECT_EQ(FindPreset(text), std::nullopt) << text;
    EXPECT_EQ(PresetName(kFlatPreset), "flat");
    EXPECT_EQ(PresetName(2), "");
}

TEST(KeyAndScaleName, FollowsTheSignature) {
    EXPECT_EQ(KeyAndScaleName(0, 0), "C Major");
    EXPECT_EQ(KeyAndScaleName(3, 0), "Eb Major");
    EXPECT_EQ(KeyAndScaleName(6, 0), "F# Major");
    EXPECT_EQ(KeyAndScaleName(10, 5), "Bb Aeolic Minor"); // as Db major
    EXPECT_EQ(KeyAndScaleName(1, 5), "C# Aeolic Minor");  // as E major
    EXPECT_EQ(KeyAndScaleName(3, 5), "D# Aeolic Minor");  // as F# major
    EXPECT_EQ(KeyAndScaleName(10, 4), "Bb Mixolydian");   // as Eb major
    EXPECT_EQ(KeyAndScaleName(6, 2), "F# Phrygian");      // as D major
    EXPECT_TRUE(IsWrittenWithFlats(0, 7));                // C harmonic minor, as Eb major
    EXPECT_FALSE(IsWrittenWithFlats(2, 1));               // D Dorian, as C major
}

TEST(FormatChoices, ListsEverythingWithItsNumber) {
    EXPECT_EQ(FormatChoices(), R"(Styles (--style)
  0  Intelligent 4 Voices
  1  Intelligent 3 Voices
  2  Intelligent 2 Voices
  3  Block Chord 4 Voices
  4  Fauxbourdon 3 Voices
  5  Organum 2/3 Voices
  6  Parallel manual 4 Voices
  7  Parallel manual 2 Voices

Arrangements of Block Chord 4 Voices (--arrangement)
  0  Block
  1  Block Intelligent
  2  Shearing
  3  Shearing Intelligent
  4  Drop2
  5  Drop2 Intelligent
  6  Block Randomized
  7  Shearing Randomized
  8  Drop2 Randomized

Arrangements of Fauxbourdon 3 Voices (--arrangement)
  0  Tenor Diatonic
  1  Tenor Intelligent
  2  Descant Diatonic
  3  Descant Intelligent

Arrangements of Organum 2/3 Voices (--arrangement)
  0  Fourth Above
  1  Fourth Below
  2  Fifth Above
  3  Fifth Below
  4  Octave Above
  5  Octave Below
  6  Octave Around

Scales (--scale, --harmony-scale)
   0  Major
   1  Dorian
   2  Phrygian
   3  Lydian
   4  Mixolydian
   5  Aeolic Minor
   6  Lokrian
   7  Harmonic Minor
   8  Gipsy I
   9  Gipsy II
  10  Whole Tone
  11  all twelve tones (--harmony-scale alone)

Intervals in scale steps (--intervals)
  -7  Down Octave
  -6  Down Seventh
  -5  Down Sixth
  -4  Down Fifth
  -3  Down Fourth
  -2  Down Third
  -1  Down Second
   0  Prime
   1  Up Second
   2  Up Third
   3  Up Fourth
   4  Up Fifth
   5  Up Sixth
   6  Up Seventh
   7  Up Octave
)");
}

} // namespace
} // namespace sonorelle
