// Keys from a MIDI input in the place of the voices.

#include "harmony/choir_driver.h"

#include "harmony/choir_driver_rig.h"
#include "harmony/styles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace sonorelle::test {
namespace {

using namespace ConsortierClassic;

constexpr std::int32_t kLongNote = 8000; // frames; above 0.15 s at 44100 Hz
constexpr std::int32_t kShortNote = 6000;
constexpr std::int32_t kRest = 400;

using Keys = std::vector<std::int32_t>;

struct LiveRig : DriverRig {
    explicit LiveRig(bool harmonies, std::int32_t length = kLongNote, std::int32_t rest = kRest)
        : DriverRig(EvenNotes(kTune, length, rest)) {
        RunInC();
        driver.StartLive(true, harmonies);
    }

    std::int32_t Press(const Keys& held, double position) {
        std::int32_t places[CChoirDriver::kHeldKeys];
        for (std::size_t i = 0; i < 8; ++i) places[i] = i < held.size() ? held[i] : -1;
        return driver.NoteInput(places, position, static_cast<std::int32_t>(held.size()));
    }
    // Both calls that the application makes when keys go down.
    void Hold(const Keys& held, double position) {
        Press(held, position);
        driver.UpdateLive(true, position);
    }
    void Release(double position) {
        Press({}, position);
        driver.UpdateLive(false, position);
    }
    void SetVoices(std::int32_t note, const VoiceRow& row) {
        for (std::int32_t voice = 0; voice < 4; ++voice)
            driver.SetVoicePitch(note, voice, row[static_cast<std::size_t>(voice)]);
    }
    // As playback does: each note in turn, all voices.
    void PlayNotes(std::int32_t first, std::int32_t last) {
        for (std::int32_t note = first; note <= last; ++note) Voices(note, true);
    }
};

bool IsChordOf(const VoiceRow& row, const std::vector<std::int32_t>& pitchClasses) {
    for (const std::int32_t pitch : row)
        if (std::find(pitchClasses.begin(), pitchClasses.end(), pitch % 12) == pitchClasses.end())
            return false;
    return true;
}

constexpr GainRow kAllSound = {1, 1, 1, 1};
constexpr GainRow kNoneSounds = {0, 0, 0, 0};

// Modes.

TEST(CChoirDriver, LiveModeTakesTheIntelligentStyle) {
    DriverRig rig(kTune);
    rig.driver.SetStyle(kStyleOrganum);
    rig.driver.StartLive(false, true);
    EXPECT_EQ(rig.driver.GetStyle(), kStyleOrganum);
    EXPECT_FALSE(rig.driver.IsLive());
    rig.driver.StartLive(true, true);
    EXPECT_EQ(rig.driver.GetStyle(), kStyleIntelligent);
    EXPECT_TRUE(rig.driver.IsLive());
    rig.driver.StartLive(false, false);
    EXPECT_FALSE(rig.driver.IsLive());
}

TEST(CChoirDriver, WithoutKeysAPitchesPlayerHearsNothing) {
    LiveRig rig(false);
    const VoiceRow stored = {60, 48, 64, 67};
    rig.SetVoices(3, stored);
    EXPECT_EQ(rig.Gains(3), kNoneSounds);
    EXPECT_EQ(rig.Voices(3), stored) << "the pitches still tell what would be there";
    EXPECT_EQ(rig.Deviation(3, 0), -5.0F) << "60 in the place of an F";
}

TEST(CChoirDriver, WithoutKeysAHarmoniesPlayerHearsTheMelody) {
    LiveRig rig(true);
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 0, 0, 0}));
    EXPECT_EQ(rig.Voices(3)[0], 65);
}

TEST(CChoirDriver, BypassBringsTheStoredVoicesBack) {
    for (const bool harmonies : {false, true}) {
        LiveRig rig(harmonies);
        const VoiceRow stored = {65, 48, 57, 60};
        rig.SetVoices(3, stored);
        rig.driver.SetVoiceGain(3, 2, 0.5F);
        rig.Hold({40, 44, 47}, rig.Inside(3));
        EXPECT_NE(rig.Voices(3, true), stored);
        rig.driver.SetLiveBypass(true);
        EXPECT_EQ(rig.Voices(3, true), stored);
        EXPECT_EQ(rig.Gains(3), (GainRow{1, 1, 0.5F, 1}));
        rig.driver.SetLiveBypass(false);
        EXPECT_NE(rig.Voices(3, true), stored);
    }
}

TEST(CChoirDriver, LeavingLiveModeBringsTheStoredVoicesBack) {
    LiveRig rig(false);
    const std::vector<VoiceRow> stored = [&rig] {
        rig.driver.StartLive(false, false);
        return rig.AllVoices();
    }();
    rig.driver.StartLive(true, false);
    rig.Hold({40, 41, 42, 43}, rig.Inside(3));
    rig.PlayNotes(3, 6);
    rig.driver.StartLive(false, false);
    EXPECT_EQ(rig.AllVoices(), stored);
    EXPECT_EQ(rig.Gains(3), kAllSound);
}

TEST(CChoirDriver, EnteringLiveModeForgetsWhatWasPlayed) {
    LiveRig rig(false);
    rig.Hold({50, 55, 60, 64}, rig.Inside(2));
    rig.PlayNotes(2, 4);
    rig.driver.UpdateLive(false, rig.Inside(8));
    EXPECT_EQ(rig.Gains(3), kAllSound) << "what was played stays in the notes behind";
    rig.driver.StartLive(true, false);
    EXPECT_EQ(rig.Gains(9), kNoneSounds);
    rig.driver.UpdateLive(false, rig.Inside(8));
    rig.driver.StartLive(false, false);
    rig.driver.StartLive(true, false);
    rig.driver.UpdateLive(false, rig.Inside(8));
    EXPECT_EQ(rig.Gains(3), kNoneSounds);
}

// Keys as pitches.

TEST(CChoirDriver, KeysTakeTheVerticalOrderOfTheVoices) {
    LiveRig rig(false);
    rig.SetVoices(3, {60, 48, 67, 72});
    rig.Hold({70, 50, 65, 62}, rig.Inside(3));
    EXPECT_EQ(rig.Voices(3, true), (VoiceRow{62, 50, 65, 70}));
    EXPECT_EQ(rig.Gains(3), kAllSound);

    rig.SetVoices(3, {72, 67, 60, 48});
    rig.Hold({70, 50, 65, 62}, rig.Inside(3));
    EXPECT_EQ(rig.Voices(3, true), (VoiceRow{70, 65, 62, 50}));
}

TEST(CChoirDriver, VoicesOfEqualPitchAreAnOrderOfTheirOwn) {
    LiveRig rig(false);
    rig.SetVoices(3, {60, 60, 67, 72});
    rig.Hold({50, 62, 65, 70}, rig.Inside(3));
    EXPECT_EQ(rig.Voices(3, true), (VoiceRow{62, 50, 65, 70}));
}

TEST(CChoirDriver, OfMoreKeysThanVoicesTheLowestCount) {
    LiveRig rig(false);
    rig.SetVoices(3, {48, 60, 67, 72});
    rig.Hold({70, 50, 65, 62, 80, 30, 90, 31}, rig.Inside(3));
    EXPECT_EQ(rig.Voices(3, true), (VoiceRow{30, 31, 50, 62}));
}

TEST(CChoirDriver, TwoKeysForThreeVoicesSilenceTheThird) {
    LiveRig rig(false);
    rig.driver.SetArrangement(kThreeVoices);
    rig.driver.Run();
    ASSERT_EQ(rig.driver.VoiceCount(), 3);
    rig.SetVoices(3, {60, 48, 67, -1});
    rig.Hold({64, 50}, rig.Inside(3));
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 1, 0, 0}));
    EXPECT_EQ(rig.Voices(3, true)[0], 64);
    EXPECT_EQ(rig.Voices(3, true)[1], 50);
}

TEST(CChoirDriver, KeysOfVoicesThatNoLongerSoundAreForgotten) {
    LiveRig rig(false);
    rig.Hold({50, 55, 60, 64}, rig.Inside(3));
    rig.driver.SetArrangement(kTwoVoices);
    rig.Hold({50, 55, 60, 64}, rig.Inside(3));
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 1, 0, 0}));
}

TEST(CChoirDriver, KeysCountFromTheNoteThatTheyAreMeantFor) {
    LiveRig rig(false);
    rig.Hold({50, 55, 60, 64}, rig.Inside(4));
    EXPECT_EQ(rig.Gains(3), kNoneSounds);
    EXPECT_EQ(rig.Gains(4), kAllSound);
    EXPECT_EQ(rig.Gains(10), kAllSound);
    // Later keys leave the notes before them alone.
    rig.PlayNotes(5, 5);
    const VoiceRow played = rig.Voices(4);
    rig.Hold({40, 41, 42, 43}, rig.Inside(6));
    EXPECT_EQ(rig.Voices(4), played);
    EXPECT_NE(rig.Voices(6), played);
    rig.Release(rig.Inside(8));
    EXPECT_EQ(rig.Gains(5), kAllSound);
    EXPECT_EQ(rig.Gains(8), kNoneSounds);
}

TEST(CChoirDriver, KeyPressedInTheLastQuarterIsForTheNextNote) {
    LiveRig rig(false, kLongNote, kLongNote);
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.driver.GetNoteRange(4, start, end);
    EXPECT_EQ(rig.Press({50}, end - kLongNote / 4), 3) << "gives the note before";
    EXPECT_EQ(rig.Press({50}, end - kLongNote / 4 + 1), 4);
}

TEST(CChoirDriver, PassingNoteTakesAnOctaveOfAFarKey) {
    LiveRig rig(false, kShortNote);
    rig.SetVoices(4, {48, 60, 67, 72});
    rig.Hold({40, 45, 50}, rig.Inside(4)); // under a sung G, 67: 27 semitones, two octaves
    EXPECT_EQ(rig.Voices(4, true), (VoiceRow{64, 69, 74, 72}));
    EXPECT_EQ(rig.Gains(4), (GainRow{1, 1, 1, 0})) << "a voice without a key stays silent";
    rig.Hold({100, 101, 102, 103}, rig.Inside(4)); // 33 above: two octaves down, truncated
    EXPECT_EQ(rig.Voices(4, true), (VoiceRow{76, 77, 78, 79}));
    rig.Hold({55, 56, 57, 58}, rig.Inside(4)); // an octave is not too far
    EXPECT_EQ(rig.Voices(4, true), (VoiceRow{55, 56, 57, 58}));
}

TEST(CChoirDriver, LongNoteTakesAFarKeyAsItIs) {
    LiveRig rig(false, kLongNote);
    rig.SetVoices(4, {48, 60, 67, 72});
    rig.Hold({40, 45, 50, 52}, rig.Inside(4));
    EXPECT_EQ(rig.Voices(4, true), (VoiceRow{40, 45, 50, 52}));
}

TEST(CChoirDriver, NoteOfExactlyThePassingLengthIsLong) {
    LiveRig exact(false, 6615); // 0.15 s at 44100 Hz
    exact.Hold({30, 31, 32, 33}, exact.Inside(4));
    EXPECT_LT(exact.Voices(4, true)[0], 40);
    LiveRig shorter(false, 6614);
    shorter.Hold({30, 31, 32, 33}, shorter.Inside(4));
    EXPECT_GT(shorter.Voices(4, true)[0], 60);
}

TEST(CChoirDriver, InputThatNoNoteDecidesForIsGuarded) {
    AnalysedMelody melody(EvenNotes({60}, kLongNote, kRest));
    CSnapshotStore store;
    CChoirDriver driver(melody.Analyzer(), store);
    driver.Run();
    const std::int32_t keys[8] = {70, 50, 60, 40, -1, -1, -1, -1};
    for (const bool harmonies : {false, true}) {
        driver.StartLive(true, harmonies);
        EXPECT_EQ(driver.NoteInput(keys, kRest, 4), -2) << "the start of a single note";
        EXPECT_EQ(driver.UpdateLive(true, kRest), -2);
        float deviation = 0;
        float gain = 0;
        EXPECT_NE(driver.GetVoice(0, 0, deviation, gain, true), -1);
    }
    driver.StartLive(true, false);
    driver.NoteInput(keys, kRest, 4);
    driver.UpdateLive(true, kRest);
    float deviation = 0;
    float gain = 0;
    EXPECT_EQ(driver.GetVoice(0, 0, deviation, gain, true), 40) << "sorted, but in no order of voices";
    EXPECT_EQ(driver.GetVoice(0, 3, deviation, gain, true), 70);
}

TEST(CChoirDriver, InputWithoutNotesIsHarmless) {
    DriverRig rig(std::vector<float>{});
    rig.driver.Run();
    const std::int32_t keys[8] = {70, 50, 60, 40, -1, -1, -1, -1};
    for (const bool harmonies : {false, true}) {
        rig.driver.StartLive(true, harmonies);
        EXPECT_EQ(rig.driver.NoteInput(keys, 100, 4), -2);
        EXPECT_EQ(rig.driver.UpdateLive(true, 100), -1);
    }
    rig.driver.SetRecordLive(true);
    rig.driver.Rewind();
    rig.driver.SetRecordLive(false);
}

TEST(CChoirDriver, PositionsThatAreNoPositionsAreHarmless) {
    LiveRig rig(false);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double position : {std::nan(""), infinity, -infinity, 1e300, -1e300, -0.5}) {
        rig.Hold({50, 55, 60, 64}, position);
        const std::int32_t before = rig.driver.UpdateLive(true, position);
        EXPECT_GE(before, -1);
        EXPECT_LT(before, rig.driver.GetNoteCount());
        rig.PlayNotes(0, 10);
    }
}

TEST(CChoirDriver, UpdateLiveBetweenNotesGoesToTheNextOne) {
    LiveRig rig(false);
    std::int32_t start = 0;
    std::int32_t end = 0;
    rig.driver.GetNoteRange(4, start, end);
    EXPECT_EQ(rig.driver.UpdateLive(true, start + 10), 3) << "in a note: the one before it";
    EXPECT_EQ(rig.driver.UpdateLive(true, end), 4) << "its last quarter";
    EXPECT_EQ(rig.driver.UpdateLive(true, end + 1), 4) << "behind note 4: the next is 5";
    EXPECT_EQ(rig.driver.UpdateLive(true, end + kRest - 1), 4);
    rig.driver.GetNoteRange(10, start, end);
    EXPECT_EQ(rig.driver.UpdateLive(true, end), 9) << "within the last note";
    EXPECT_EQ(rig.driver.UpdateLive(true, end + 1), 10) << "behind all notes there is none left";
    EXPECT_EQ(rig.driver.UpdateLive(true, 0), 0) << "before the first note the nearest one counts as passed";
}

TEST(CChoirDriver, ResetLiveLetsKeysCountFromTheBeginning) {
    LiveRig rig(false);
    rig.Hold({50, 55, 60, 64}, rig.Inside(6));
    EXPECT_EQ(rig.Gains(2), kNoneSounds);
    rig.driver.ResetLive();
    EXPECT_EQ(rig.Gains(2), kAllSound);
}

// Keys as harmonies.

TEST(CChoirDriver, ThreeKeysNameAChordAndTwoDoNot) {
    LiveRig rig(true);
    rig.Hold({65, 57, 60}, rig.Inside(4)); // F major under a sung G
    VoiceRow row = rig.Voices(4, true);
    EXPECT_EQ(row[0], 67);
    row[0] = row[1];
    EXPECT_TRUE(IsChordOf(row, {5, 9, 0}));
    EXPECT_EQ(rig.Gains(4), kAllSound);

    rig.Hold({65, 57}, rig.Inside(6));
    rig.Voices(6, true);
    EXPECT_EQ(rig.Gains(6), (GainRow{1, 0, 0, 0})) << "the melody alone";
    EXPECT_EQ(rig.Voices(6, true)[0], 67);
    EXPECT_EQ(rig.Gains(4), kAllSound) << "what was played stays";
}

TEST(CChoirDriver, ChordThatNobodyKnowsLeavesTheMelodyAlone) {
    LiveRig rig(true);
    rig.Hold({60, 61, 62}, rig.Inside(4));
    rig.Voices(4, true);
    EXPECT_EQ(rig.Gains(4), (GainRow{1, 0, 0, 0}));
    rig.Hold({60, 72, 84}, rig.Inside(6)); // three keys, one pitch class
    rig.Voices(6, true);
    EXPECT_EQ(rig.Gains(6), (GainRow{1, 0, 0, 0}));
}

TEST(CChoirDriver, OfManyKeysTheFirstFourPlacesNameTheChord) {
    LiveRig rig(true);
    rig.Hold({60, 64, 67, 71, 61, 63}, rig.Inside(4));
    EXPECT_TRUE(IsChordOf(rig.Voices(4, true), {0, 4, 7, 11}));
    EXPECT_EQ(rig.Gains(4), kAllSound);
}

TEST(CChoirDriver, HeldChordVoicesEachNoteOnceAsItSounds) {
    LiveRig rig(true);
    rig.Hold({60, 64, 67}, rig.Inside(2));
    EXPECT_EQ(rig.driver.GetLiveStartNote(), -1);
    // A look ahead voices nothing.
    rig.Voices(3, false);
    EXPECT_EQ(rig.Gains(3), kNoneSounds);
    rig.PlayNotes(2, 5);
    EXPECT_EQ(rig.driver.GetLiveStartNote(), 5);
    const VoiceRow fifth = rig.Voices(5, true);
    EXPECT_TRUE(IsChordOf({fifth[1], fifth[2], fifth[3], fifth[1]}, {0, 4, 7}));
    // Asking again voices nothing anew, not even when the melody has moved since.
    rig.driver.SetVoicePitch(5, 0, 72);
    EXPECT_EQ(rig.Voices(5, true), fifth);
    EXPECT_EQ(rig.Gains(6), kNoneSounds);
    // Only the melody voice sets it off.
    float deviation = 0;
    float gain = 1;
    rig.driver.GetVoice(6, 2, deviation, gain, true);
    EXPECT_EQ(gain, 0.0F);
}

TEST(CChoirDriver, VoicesOfAHeldChordAreThoseOfTheEngine) {
    LiveRig rig(true);
    rig.Hold({60, 65, 69}, rig.Inside(2));
    CConsortier engine = rig.driver.GetEngine();
    for (std::int32_t note = 2; note < 9; ++note) {
        VoiceRow expected = {-1, -1, -1, -1};
        engine.GenerateVoices(rig.driver.GetNotePitch(note), expected.data(), kFMajor);
        EXPECT_EQ(rig.Voices(note, true), expected) << note;
    }
}

TEST(CChoirDriver, NewChordTakesEffectOnTheNoteThatSounds) {
    LiveRig rig(true);
    rig.Hold({60, 64, 67}, rig.Inside(4));
    rig.PlayNotes(4, 4);
    rig.Hold({65, 69, 60}, rig.Inside(4) + 50);
    VoiceRow row = rig.Voices(4, true);
    row[0] = row[1];
    EXPECT_TRUE(IsChordOf(row, {5, 9, 0}));
}

TEST(CChoirDriver, JumpBackIsVoicedAnewAfterAReset) {
    LiveRig rig(true);
    rig.Hold({60, 64, 67}, rig.Inside(2));
    rig.PlayNotes(2, 8);
    rig.driver.ResetLive();
    rig.PlayNotes(0, 0);
    EXPECT_EQ(rig.driver.GetLiveStartNote(), 0);
    EXPECT_EQ(rig.Gains(0), kAllSound);
}

// Recording.

TEST(CChoirDriver, VoiceThatWasSilentInARecordingHasGainZeroAfterRewind) {
    LiveRig rig(false);
    rig.driver.SetRecordLive(true);
    rig.SetVoices(3, {60, 48, 67, 72});
    rig.Hold({64, 50, 70}, rig.Inside(3));
    rig.PlayNotes(3, 3);
    rig.Release(rig.Inside(5));
    rig.PlayNotes(5, 10);
    rig.driver.Rewind();
    rig.driver.StartLive(false, false);
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 1, 1, 0}));
    EXPECT_EQ(rig.Voices(3)[0], 64);
    EXPECT_EQ(rig.Voices(3)[1], 50);
    EXPECT_EQ(rig.Voices(3)[2], 70);
    EXPECT_EQ(rig.Voices(3)[3], 72) << "a silent voice keeps its pitch";
    EXPECT_EQ(rig.Gains(7), kNoneSounds) << "nothing was played there";
}

TEST(CChoirDriver, RecordingCoversTheSoundingVoicesOnly) {
    LiveRig rig(false);
    rig.driver.SetArrangement(kTwoVoices);
    rig.driver.Run();
    rig.driver.SetRecordLive(true);
    rig.SetVoices(3, {60, 48, 67, 72});
    rig.driver.SetVoiceGain(3, 2, 0.25F);
    rig.Hold({64, 50, 70}, rig.Inside(3));
    rig.PlayNotes(3, 3);
    rig.driver.Rewind();
    rig.driver.StartLive(false, false);
    EXPECT_EQ(rig.Voices(3), (VoiceRow{64, 50, 67, 72}));
    EXPECT_EQ(rig.Gains(3), (GainRow{1, 1, 0.25F, 1}));
}

TEST(CChoirDriver, RewindWithoutRecordingKeepsTheVoices) {
    LiveRig rig(false);
    rig.Hold({64, 50, 70, 40}, rig.Inside(3));
    rig.PlayNotes(3, 10);
    rig.driver.SetLiveBypass(true);
    const std::vector<VoiceRow> before = rig.AllVoices();
    rig.driver.Rewind();
    EXPECT_EQ(rig.AllVoices(), before);
    EXPECT_EQ(rig.Gains(3), kAllSound);
}

TEST(CChoirDriver, SwitchingTheRecordingOffTakesItOver) {
    LiveRig rig(false);
    rig.driver.SetRecordLive(true);
    EXPECT_TRUE(rig.driver.GetRecordLive());
    rig.SetVoices(3, {48, 60, 67, 72});
    rig.Hold({50, 55, 60, 64}, rig.Inside(3));
    rig.PlayNotes(3, 3);
    rig.driver.SetRecordLive(false);
    EXPECT_FALSE(rig.driver.GetRecordLive());
    rig.driver.StartLive(false, false);
    EXPECT_EQ(rig.Voices(3), (VoiceRow{50, 55, 60, 64}));
    EXPECT_EQ(rig.Gains(3), kAllSound);
    EXPECT_EQ(rig.Gains(0), kNoneSounds);
    // Off again and again changes nothing more.
    rig.driver.SetVoiceGain(0, 0, 0.5F);
    rig.driver.SetRecordLive(false);
    EXPECT_EQ(rig.Gains(0)[0], 0.5F);
}

TEST(CChoirDriver, SwitchingTheRecordingForgetsTheKeys) {
    LiveRig rig(false);
    rig.Hold({50, 55, 60, 64}, rig.Inside(3));
    EXPECT_EQ(rig.Gains(3), kAllSound);
    rig.driver.SetRecordLive(true);
    EXPECT_EQ(rig.Gains(3), kNoneSounds);
}

TEST(CChoirDriver, RecordedChordsBecomeTheChordsOfTheNotes) {
    LiveRig rig(true);
    const std::vector<ChordRecord> before = rig.Chords();
    rig.Hold({60, 65, 69}, rig.Inside(4));
    rig.PlayNotes(4, 5);
    EXPECT_EQ(rig.Chords(), before) << "not without the recording";
    rig.driver.SetRecordLive(true);
    rig.driver.ResetLive();
    rig.Hold({59, 62, 67}, rig.Inside(4));
    rig.PlayNotes(4, 5);
    EXPECT_EQ(rig.driver.GetChord(4), kGMajor);
    EXPECT_EQ(rig.driver.GetChord(5), kGMajor);
    EXPECT_EQ(rig.driver.GetChord(3), before[3]);
    EXPECT_EQ(rig.driver.GetChord(6), before[6]);
    // Two keys are no chord: the stored one stays.
    rig.Hold({60, 64}, rig.Inside(7));
    rig.PlayNotes(7, 7);
    EXPECT_EQ(rig.driver.GetChord(7), before[7]);
}

TEST(CChoirDriver, RewindTakesOverTheSettingsWithoutMakingVoices) {
    DriverRig rig(kTune);
    rig.RunInC();
    const std::vector<VoiceRow> before = rig.AllVoices();
    rig.driver.SetRoot(7);
    rig.driver.SetMelodyScale(4);
    rig.driver.SetSpread(0.125F);
    rig.driver.SetArrangement(kTwoVoices);
    rig.driver.SetVoiceRange(1);
    rig.driver.SetMapScale(false);
    rig.driver.SetSnapToScale(false);
    rig.driver.Rewind();
    EXPECT_EQ(rig.AllVoices(), before);
    const CConsortier& engine = rig.driver.GetEngine();
    EXPECT_EQ(engine.GetKey().GetRoot(), 7);
    EXPECT_EQ(engine.GetKey().GetMelodyScale(), 4);
    EXPECT_EQ(engine.GetKey().GetHarmonyScale(), 4);
    EXPECT_FALSE(engine.GetKey().GetMapScale());
    EXPECT_FALSE(engine.GetKey().GetSnapToScale());
    EXPECT_EQ(engine.GetVoiceLeader().GetSpread(), 0.125F);
    EXPECT_EQ(engine.GetVoiceLeader().GetHarmonyVoiceCount(), 1);
    EXPECT_EQ(engine.GetVoiceLeader().GetVoiceRange(), 1);
    EXPECT_EQ(engine.GetVoiceLeader().GetPreviousVoices()[0], -1) << "the melody begins anew";
}

} // namespace
} // namespace sonorelle::test
