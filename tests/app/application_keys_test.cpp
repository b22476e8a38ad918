// Keys of the host: those that trigger snapshots, and those that choose the harmony of the running melody.
#include "app/application_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kTriggerKey = CkvovirelaineApp::kDefaultTriggerNote;
constexpr std::int32_t kSnapshotKey = 62;

float LoudestOf(const std::vector<float>& samples) {
    float largest = 0;
    for (const float sample : samples) largest = std::max(largest, std::fabs(sample));
    return largest;
}

void TriggerByKeys(LoadedSession& session) { session.app->PlaybackPanel().PressMidi(); }

// "Low" on key 62, from sample 12000 to 40000: voice 1 sings the first note at pitch 50.
void AddLowSnapshot(LoadedSession& session) {
    CkvovirelaineApp& app = *session.app;
    float deviation = 0;
    float gain = 0;
    const std::int32_t pitch = app.Driver().GetVoice(0, 1, deviation, gain, false);
    app.Driver().SetVoicePitch(0, 1, 50);
    app.SnapshotPanel().Add("Low", kSnapshotKey, 12000, 40000);
    app.Driver().SetVoicePitch(0, 1, pitch);
}

std::int32_t PitchOf(LoadedSession& session, std::int32_t note, std::int32_t voice) {
    float deviation = 0;
    float gain = 0;
    return session.app->Driver().GetVoice(note, voice, deviation, gain, false);
}

float GainOf(LoadedSession& session, std::int32_t note, std::int32_t voice) {
    float deviation = 0;
    float gain = -1;
    session.app->Driver().GetVoice(note, voice, deviation, gain, false);
    return gain;
}

// --- Triggers ---

TEST(ApplicationKeys, AKeyStartsTheRegionAtItsOwnSampleOfTheBlock) {
    for (const std::int32_t block : {512, 64, 100}) {
        LoadedSession plain;
        TriggerByKeys(plain);
        plain.app->NoteOn(kTriggerKey, 0, 0);
        const Outputs expected = plain.Process(8000, block);
        EXPECT_GT(LoudestOf(expected[0]), 0.02F);
        LoadedSession session;
        TriggerByKeys(session);
        session.app->NoteOn(kTriggerKey, 37, 37);
        const Outputs heard = session.Process(8000, block);
        for (std::size_t i = 0; i < 37; ++i) ASSERT_EQ(heard[0][i], 0.0F) << i;
        for (std::size_t i = 37; i < 8000; ++i)
            ASSERT_EQ(heard[0][i], expected[0][i - 37]) << block << " " << i;
    }
}

TEST(ApplicationKeys, ARegionInsideTheRecordingIsReachedAtTheKeysSample) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(12000, 40000);
    TriggerByKeys(session);
    session.app->NoteOn(kTriggerKey, 37, 37);
    EXPECT_EQ(session.app->GetExactPosition(), 12000 - 37);
    session.Process(37, 37);
    EXPECT_EQ(session.app->GetExactPosition(), 12000);
}

TEST(ApplicationKeys, WhatLiesBeforeTheRegionSoundsWithinTheKeysBlock) {
    for (const std::int32_t key : {kTriggerKey, kSnapshotKey}) {
        LoadedSession session;
        AddLowSnapshot(session);
        session.app->PlaybackPanel().SetRegion(12000, 40000);
        TriggerByKeys(session);
        session.app->NoteOn(key, 500, 500);
        const Outputs heard = session.Process(512, 512);
        EXPECT_GT(LoudestOf({heard[0].begin(), heard[0].begin() + 500}), 1e-3F) << key;
    }
}

TEST(ApplicationKeys, ATriggerCountsItsOffsetInTheMelodysTime) {
    LoadedSession session;
    session.app->PlaybackPanel().SetRegion(12000, 40000);
    session.app->SetHostTempo(60, 4, 4);
    session.app->SetMelodyTempo(120);
    session.app->PlaybackPanel().ToggleSync();
    TriggerByKeys(session);
    session.app->NoteOn(kTriggerKey, 101, 101);
    EXPECT_EQ(session.app->GetExactPosition(), 12000 - 50); // 50.5, truncated
}

TEST(ApplicationKeys, AKeyWithoutASnapshotDoesNothing) {
    LoadedSession session;
    AddLowSnapshot(session);
    TriggerByKeys(session);
    for (const std::int32_t key : {61, 0, 127, -1, 128, std::numeric_limits<std::int32_t>::max()})
        session.app->NoteOn(key, 0, 0);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(LoudestOf(session.Process(640, 64)[0]), 0.0F);
}

TEST(ApplicationKeys, AKeyRecallsItsSnapshotAndPlaysItsRegion) {
    LoadedSession session;
    AddLowSnapshot(session);
    TriggerByKeys(session);
    const std::int32_t steps = session.store.GetUndoCount();
    ASSERT_NE(PitchOf(session, 0, 1), 50);
    session.app->NoteOn(kSnapshotKey, 20, 20);
    EXPECT_TRUE(session.app->IsPlaying());
    EXPECT_EQ(PitchOf(session, 0, 1), 50);
    EXPECT_EQ(session.app->GetPlayStart(), 12000);
    EXPECT_EQ(session.app->GetPlayEnd(), 40000);
    EXPECT_EQ(session.app->GetExactPosition(), 12000 - 20);
    // Panels and view follow with the next poll.
    session.app->Poll();
    EXPECT_EQ(session.app->View().GetMarkerStart(), 12000);
    EXPECT_EQ(session.app->PlaybackPanel().GetStartMarker(), 12000);
    EXPECT_EQ(session.app->PlaybackPanel().GetTriggerNote(), kSnapshotKey);
    EXPECT_EQ(session.app->View().GetNotePitch(0, 1), 50);
    EXPECT_EQ(session.store.GetUndoCount(), steps);
    EXPECT_TRUE(session.app->IsPlaying());
}

TEST(ApplicationKeys, OnlyTheKeyOfWhatPlaysStopsIt) {
    LoadedSession session;
    AddLowSnapshot(session);
    TriggerByKeys(session);
    session.app->NoteOn(kSnapshotKey, 0, 0);
    session.Process(2048, 64);
    session.app->NoteOff(kTriggerKey, 0, 2048); // that of the region before
    session.app->NoteOff(61, 0, 2048);
    session.Process(2048, 64);
    EXPECT_TRUE(session.app->IsPlaying());
    session.app->NoteOff(kSnapshotKey, 0, 4096);
    session.Process(960, 64);
    EXPECT_TRUE(session.app->IsPlaying()); // fading
    session.Process(128, 64);
    EXPECT_FALSE(session.app->IsPlaying());
    session.Process(CSeam::kLength, 64);
    EXPECT_EQ(LoudestOf(session.Process(640, 64)[0]), 0.0F);
}

TEST(ApplicationKeys, ATriggeredRegionEndsByItself) {
    LoadedSession session;
    AddLowSnapshot(session);
    TriggerByKeys(session);
    session.app->NoteOn(kSnapshotKey, 0, 0);
    session.Process(28000 + 256, 64);
    EXPECT_FALSE(session.app->IsPlaying());
}

TEST(ApplicationKeys, AllNotesOffEndsATriggeredRegion) {
    LoadedSession session;
    TriggerByKeys(session);
    session.app->NoteOn(kTriggerKey, 0, 0);
    session.Process(2048, 64);
    session.app->AllNotesOff(0, 2048);
    session.Process(1088, 64);
    EXPECT_FALSE(session.app->IsPlaying());
}

TEST(ApplicationKeys, WithoutTriggersAndLivePlayingKeysDoNothing) {
    LoadedSession session;
    AddLowSnapshot(session);
    const std::int32_t pitch = PitchOf(session, 0, 1);
    for (const std::int32_t key : {kTriggerKey, kSnapshotKey}) {
        session.app->NoteOn(key, 0, 0);
        session.app->NoteOff(key, 0, 0);
    }
    session.app->AllNotesOff(0, 0);
    EXPECT_FALSE(session.app->IsPlaying());
    EXPECT_EQ(PitchOf(session, 0, 1), pitch);
    session.app->Start();
    session.app->NoteOff(kTriggerKey, 0, 0);
    session.Process(4096, 64);
    EXPECT_TRUE(session.app->IsPlaying());
}

// The notes that go out belong to the snapshot that sounds: what the interface does later ends none of them.
TEST(ApplicationKeys, APollBehindARecallEndsNoOutgoingNote) {
    LoadedSession session;
    AddLowSnapshot(session);
    TriggerByKeys(session);
    session.app->NoteOn(kSnapshotKey, 0, 0);
    session.Process(4096, 64);
    const auto count = [&](bool on) {
        std::vector<MidiEventRecord> events;
        session.app->GetOutgoingMidi(events);
        return std::count_if(events.begin(), events.end(),
                             [&](const MidiEventRecord& event) { return (event.velocity > 0) == on; });
    };
    const auto begun = count(true);
    const auto ended = count(false);
    ASSERT_GT(begun, ended);
    session.app->Poll();
    EXPECT_EQ(count(false), ended);
    session.app->NoteOn(kTriggerKey - 1, 0, 0); // no snapshot: nothing ends either
    EXPECT_EQ(count(false), ended);
    session.app->NoteOn(kSnapshotKey, 0, 0); // its own key is the region's now, and starts it anew
    session.Process(64, 64);
    EXPECT_TRUE(session.app->IsPlaying());
}

// --- Live ---

void PlayLive(LoadedSession& session, std::int32_t mode) {
    session.app->ChoirPanel().SetMode(mode);
    session.app->OnChoirSettingsChanged();
}

TEST(ApplicationKeys, HeldKeysAreThePitchesOfTheVoices) {
    LoadedSession session;
    PlayLive(session, kModePitches);
    ASSERT_TRUE(session.app->Driver().IsLive());
    for (const std::int32_t key : {72, 60, 64, 67}) session.app->NoteOn(key, 0, 0);
    std::array<std::int32_t, 4> pitches{};
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        pitches[static_cast<std::size_t>(voice)] = PitchOf(session, 4, voice);
        EXPECT_EQ(GainOf(session, 4, voice), 1.0F) << voice;
    }
    std::sort(pitches.begin(), pitches.end());
    EXPECT_EQ(pitches, (std::array<std::int32_t, 4>{60, 64, 67, 72}));
    for (const std::int32_t key : {72, 60, 64, 67}) session.app->NoteOff(key, 0, 0);
    for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_EQ(GainOf(session, 4, voice), 0.0F) << voice;
}

TEST(ApplicationKeys, ANinthKeyIsIgnoredAndSoIsItsRelease) {
    LoadedSession session;
    PlayLive(session, kModePitches);
    for (std::int32_t key = 60; key < 69; ++key) session.app->NoteOn(key, 0, 0);
    session.app->NoteOff(68, 0, 0);
    EXPECT_EQ(GainOf(session, 4, 0), 1.0F); // the eight are held still
    for (std::int32_t key = 60; key < 67; ++key) session.app->NoteOff(key, 0, 0);
    EXPECT_EQ(GainOf(session, 4, 0), 1.0F); // the eighth
    session.app->NoteOff(67, 0, 0);
    EXPECT_EQ(GainOf(session, 4, 0), 0.0F);
    session.app->NoteOn(71, 0, 0); // the places are free again
    EXPECT_EQ(GainOf(session, 4, 0), 1.0F);
}

TEST(ApplicationKeys, AllNotesOffLetsGoOfEveryKey) {
    LoadedSession session;
    PlayLive(session, kModePitches);
    for (std::int32_t round = 0; round < 3; ++round) {
        for (std::int32_t key = 60; key < 68; ++key) session.app->NoteOn(key, 0, 0);
        EXPECT_EQ(GainOf(session, 4, 0), 1.0F);
        session.app->AllNotesOff(5, 5);
        EXPECT_EQ(GainOf(session, 4, 0), 0.0F);
    }
}

TEST(ApplicationKeys, KeysAreMeantInTheTransposedKey) {
    LoadedSession session;
    PlayLive(session, kModePitches);
    session.app->ChoirPanel().SetRoot((session.app->MelodyPanel().GetRoot() + 2) % 12);
    session.app->OnChoirSettingsChanged();
    for (const std::int32_t key : {62, 66, 69, 74}) session.app->NoteOn(key, 0, 0);
    std::array<std::int32_t, 4> pitches{};
    for (std::int32_t voice = 0; voice < 4; ++voice)
        pitches[static_cast<std::size_t>(voice)] = PitchOf(session, 4, voice);
    std::sort(pitches.begin(), pitches.end());
    EXPECT_EQ(pitches, (std::array<std::int32_t, 4>{60, 64, 67, 72}));
    for (const std::int32_t key : {62, 66, 69, 74}) session.app->NoteOff(key, 0, 0);
    EXPECT_EQ(GainOf(session, 4, 0), 0.0F);
}

TEST(ApplicationKeys, AHeldChordHarmonisesTheNotesThatFollow) {
    LoadedSession session;
    PlayLive(session, kModeHarmonies);
    for (const std::int32_t key : {60, 64, 67}) session.app->NoteOn(key, 0, 0);
    session.Play(30000, 64);
    // Whoever is voiced in C major stands on its tones.
    for (std::int32_t voice = 1; voice < 4; ++voice) {
        const std::int32_t tone = PitchOf(session, 1, voice) % 12;
        EXPECT_TRUE(tone == 0 || tone == 4 || tone == 7) << voice << " " << tone;
        EXPECT_EQ(GainOf(session, 1, voice), 1.0F) << voice;
    }
    session.app->Poll(); // the view has them as well
    EXPECT_EQ(session.app->View().GetNotePitch(1, 1), static_cast<float>(PitchOf(session, 1, 1)));
}

TEST(ApplicationKeys, TheKeysPlaceIsCountedFromTheAnchor) {
    LoadedSession session;
    session.app->PlaybackPanel().SetOffset(100000);
    session.app->OnPlaybackChanged();
    PlayLive(session, kModePitches);
    const std::int32_t third = session.app->Driver().GetNoteStart(3);
    for (const std::int32_t key : {60, 64, 67, 72}) session.app->NoteOn(key, 0, 100000.0 + third + 100);
    EXPECT_EQ(GainOf(session, 1, 0), 0.0F); // passed
    EXPECT_EQ(GainOf(session, 4, 0), 1.0F);
}

TEST(ApplicationKeys, HostileKeysDoNoHarm) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    const double places[] = {0, 1e300, -1e300, std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity()};
    for (const std::int32_t mode : std::array<std::int32_t, 3>{kModeHarmonies, kModePitches, -1}) {
        LoadedSession session;
        AddLowSnapshot(session);
        if (mode < 0)
            TriggerByKeys(session);
        else
            PlayLive(session, mode);
        session.app->Start();
        for (const std::int32_t key : {kMost, kLeast, -1, 128, 60, 62})
            for (const std::int32_t delta : {0, kMost, kLeast, -1})
                for (const double place : places) {
                    session.app->NoteOn(key, delta, place);
                    session.Process(64, 64);
                    session.app->NoteOff(key, delta, place);
                    session.app->AllNotesOff(delta, place);
                    const Outputs heard = session.Process(100, 50);
                    for (const float sample : heard[0]) ASSERT_TRUE(std::isfinite(sample));
                }
        EXPECT_TRUE(std::isfinite(session.app->GetExactPosition()));
    }
}

} // namespace
} // namespace sonorelle::test
