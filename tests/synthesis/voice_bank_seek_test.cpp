// Where the bank goes, and what it sounds like there.

#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kSeekPeriod = 100;
constexpr std::int32_t kSeekSong = 100000;

// Two notes with a rest of 0.7 s between them; the voices sing four different pitches.
VoicedSong TwoNotes() {
    VoicedSong song = PulseTrain(kSeekPeriod, kSeekSong);
    AddNote(song, 5000, 34999);
    AddNote(song, 66000, 95999);
    return song;
}

void SingApart(BankPlayer& player) {
    for (std::int32_t note = 0; note < 2; ++note) {
        player.SetInterval(note, 1, 4);
        player.SetInterval(note, 2, 9);
        player.SetInterval(note, 3, -7);
    }
}

double SeekTo(BankPlayer& player, double position) {
    player.bank.Seek(position);
    return position;
}

// Every grain is centred on its mark: each pulse is whole, and there is nothing between them.
void ExpectCentredGrains(const std::vector<float>& sound, std::size_t from, const char* what) {
    std::size_t pulses = 0;
    for (std::size_t i = from; i < sound.size(); ++i) {
        if (sound[i] == 0.0F) continue;
        ASSERT_NEAR(sound[i], kPulse, 1e-6F) << what << ", sample " << i;
        ++pulses;
    }
    EXPECT_GT(pulses, (sound.size() - from) / 200) << what;
}

TEST(VoiceBankSeek, GoesToTheMarkNearestAndTellsIt) {
    BankPlayer player(TwoNotes());
    EXPECT_EQ(SeekTo(player, 20049), 20000);
    EXPECT_EQ(player.bank.GetPosition(), 20000);
    EXPECT_EQ(SeekTo(player, 20051.9), 20100);
    for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_EQ(player.bank.GetReadPosition(voice), 20100);
    EXPECT_EQ(player.melody.LastSeek(), 20100);
}

TEST(VoiceBankSeek, ToTheCurrentPositionDoesNothing) {
    BankPlayer player(TwoNotes());
    BankPlayer twin(TwoNotes());
    for (BankPlayer* each : {&player, &twin}) {
        SingApart(*each);
        each->Play(300);
    }
    const std::int32_t reads = player.melody.ReadCount();
    const std::int32_t seeked = player.melody.LastSeek();
    for (int i = 0; i < 1500; ++i) {
        const double here = player.bank.GetPosition();
        ASSERT_EQ(SeekTo(player, here), here);
        ASSERT_EQ(player.Render(), twin.Render());
    }
    EXPECT_EQ(player.melody.LastSeek(), seeked);
    EXPECT_EQ(player.melody.ReadCount() - reads, twin.melody.ReadCount() - reads);
    EXPECT_EQ(player.sound, twin.sound);
    EXPECT_GT(PulsesOf(player.sound[3][0], 32).size(), 300u);
}

TEST(VoiceBankSeek, DuringPlayGrainsStayCentredOnTheirMarks) {
    for (const double target : {10000.0, 30050.0, 40.0, 66000.0, 80123.0, 0.0}) {
        BankPlayer player(TwoNotes());
        SingApart(player);
        player.Play(700);
        SeekTo(player, target);
        const std::size_t before = player.SamplesPlayed();
        player.Play(400);
        for (std::size_t voice = 0; voice < 4; ++voice)
            ExpectCentredGrains(player.sound[voice][0], before, "after a seek");
    }
}

// Grains of one voice lie elsewhere than those of a bank that begins there, since the last grain before the
// jump plays out; each sounds the same.
TEST(VoiceBankSeek, DuringPlayARealVoiceSoundsAsAfterAFreshStartThere) {
    const VoicedSong song = MakeVoicedSong({{200, 30000}, {160, 30000, 0}});
    BankPlayer fresh(song);
    BankPlayer player(song);
    player.Play(300);
    for (BankPlayer* each : {&fresh, &player}) SeekTo(*each, 12000);
    const std::size_t before = player.SamplesPlayed();
    fresh.Play(300);
    player.Play(300);
    const std::vector<float>& expected = fresh.sound[0][0];
    const std::vector<float>& sound = player.sound[0][0];
    double best = 1e9;
    for (std::size_t shift = 0; shift < 400; ++shift) { // two periods
        double error = 0;
        double power = 0;
        for (std::size_t i = 2000; i < 9000; ++i) {
            const double wanted = static_cast<double>(expected[i]);
            const double difference = static_cast<double>(sound[before + i + shift]) - wanted;
            error += difference * difference;
            power += wanted * wanted;
        }
        best = std::min(best, error / power);
    }
    EXPECT_LT(10 * std::log10(best + 1e-30), -60.0); // decibels; the song repeats exactly
}

TEST(VoiceBankSeek, ANegativePositionIsTakenAsItIsAndPlaysFromTheStart) {
    BankPlayer player(TwoNotes());
    player.Play(100);
    EXPECT_EQ(SeekTo(player, -1234.5), -1234);
    EXPECT_EQ(player.bank.GetReadPosition(0), -1234);
    EXPECT_EQ(player.melody.LastSeek(), 0);
    const std::size_t before = player.SamplesPlayed();
    EXPECT_EQ(player.Play(500), 500);
    ExpectCentredGrains(player.sound[0][0], before, "from before the start");
    EXPECT_NEAR(player.bank.GetReadPosition(0), 500 * 32, 2.0 * 1234);
}

TEST(VoiceBankSeek, PastTheEndIsTheEndAndTheNextSeekRecovers) {
    BankPlayer player(TwoNotes());
    player.Play(100);
    for (const double target : {99990.0, 1e9, 1e300}) {
        EXPECT_EQ(SeekTo(player, target), 99900); // the last mark
        EXPECT_LE(player.Play(20), 8); // grains that were made already play out: two periods at most
        for (std::size_t voice = 0; voice < 4; ++voice)
            for (std::size_t i = player.SamplesPlayed() - 32; i < player.SamplesPlayed(); ++i)
                ASSERT_EQ(player.sound[voice][0][i], 0.0F);
        EXPECT_EQ(SeekTo(player, 20000), 20000);
        const std::size_t before = player.SamplesPlayed();
        EXPECT_EQ(player.Play(200), 200);
        ExpectCentredGrains(player.sound[1][0], before, "after the end");
    }
}

TEST(VoiceBankSeek, WhatIsNoPositionIsIgnored) {
    BankPlayer player(TwoNotes());
    SeekTo(player, 20000);
    for (const double bad :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()})
        SeekTo(player, bad);
    EXPECT_EQ(player.bank.GetPosition(), 20000);
    EXPECT_EQ(SeekTo(player, -1e300), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(player.Play(10), 10);
}

// A glide of half a second would still be on its way after the jump.
TEST(VoiceBankSeek, TheNoteThereBeginsAtItsOwnInterval) {
    BankPlayer player(TwoNotes());
    player.SetInterval(0, 1, 12);
    player.SetInterval(1, 1, -12);
    player.bank.SetGlide(1, 1.0F);
    player.PlayTo(30000);
    SeekTo(player, 80000);
    const std::size_t before = player.SamplesPlayed();
    player.Play(200);
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], 32)) {
        if (pulse.at < before + 100) continue;
        ASSERT_EQ(pulse.spacing, 200u) << "at " << pulse.at;
    }
}

TEST(VoiceBankSeek, InAGapTheVoiceHasTheTransposeAlone) {
    for (const float transpose : {0.0F, 12.0F}) {
        BankPlayer player(TwoNotes());
        player.SetInterval(0, 1, -12);
        player.bank.SetTranspose(transpose);
        player.PlayTo(30000);
        SeekTo(player, 45000);
        const std::size_t before = player.SamplesPlayed();
        player.Play(200);
        int checked = 0;
        for (const Pulse& pulse : PulsesOf(player.sound[1][0], 32)) {
            if (pulse.at < before + 200) continue;
            ASSERT_EQ(pulse.spacing, transpose > 0 ? 50u : 100u) << "at " << pulse.at;
            ++checked;
        }
        EXPECT_GT(checked, 30);
    }
}

TEST(VoiceBankSeek, TheOutputTuningSurvives) {
    BankPlayer player(TwoNotes());
    const float octaveUp = 2 * player.melody.Analyzer().GetTuningFrequency();
    player.bank.SetOutputTuning(octaveUp);
    player.PlayTo(20000);
    EXPECT_EQ(PulsesOf(player.sound[0][0], 32).back().spacing, 50u);
    SeekTo(player, 80000);
    player.Play(200);
    EXPECT_EQ(PulsesOf(player.sound[0][0], 32).back().spacing, 50u);
}

TEST(VoiceBankSeek, JumpsGoFromNoteToNote) {
    BankPlayer player(TwoNotes());
    player.bank.JumpToNextNote(); // before the first note the first counts as here
    EXPECT_EQ(player.bank.GetPosition(), 66000);
    player.bank.JumpToNextNote(); // there is none
    EXPECT_EQ(player.bank.GetPosition(), 66000);
    EXPECT_EQ(player.bank.GetNoteAtPosition(), 1);
    player.bank.JumpToPreviousNote(); // within 0.75 s of the start of this one
    EXPECT_EQ(player.bank.GetPosition(), 5000);
    EXPECT_EQ(player.bank.GetNoteAtPosition(), 0);
    player.bank.JumpToPreviousNote(); // none before: the first again
    EXPECT_EQ(player.bank.GetPosition(), 5000);
    SeekTo(player, 65900); // one mark before a note this is the next one
    player.bank.JumpToNextNote();
    EXPECT_EQ(player.bank.GetPosition(), 66000);
}

// 0.75 s are 33075 samples.
TEST(VoiceBankSeek, AJumpBackRestartsANoteThatHasSoundedForThreeQuartersOfASecond) {
    VoicedSong song = PulseTrain(kSeekPeriod, kSeekSong);
    AddNote(song, 5000, 19999);
    AddNote(song, 20000, 95999);
    BankPlayer player(std::move(song));
    SeekTo(player, 53000); // 33000 samples into the second
    player.bank.JumpToPreviousNote();
    EXPECT_EQ(player.bank.GetPosition(), 5000);
    SeekTo(player, 53100);
    player.bank.JumpToPreviousNote();
    EXPECT_EQ(player.bank.GetPosition(), 20000);
}

TEST(VoiceBankSeek, WithoutNotesJumpsGoNowhere) {
    BankPlayer player(PulseTrain(kSeekPeriod, kSeekSong));
    SeekTo(player, 20000);
    player.bank.JumpToNextNote();
    player.bank.JumpToPreviousNote();
    EXPECT_EQ(player.bank.GetPosition(), 20000);
    EXPECT_EQ(player.bank.GetNoteAtPosition(), -1);
}

TEST(VoiceBankSeek, TheBlockOriginMovesThePlayPositionAndNotTheVoices) {
    BankPlayer player(TwoNotes());
    player.bank.SetBlockOrigin(70000.5);
    EXPECT_EQ(player.bank.GetPosition(), 70000.5);
    EXPECT_EQ(player.bank.GetNoteAtPosition(), 1);
    EXPECT_EQ(player.bank.GetReadPosition(0), 0);
    player.Render();
    EXPECT_EQ(player.bank.GetPosition(), 70032.5);
    player.bank.SetBlockOrigin(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(player.bank.GetPosition(), 70032.5);
}

} // namespace
} // namespace sonorelle::test
