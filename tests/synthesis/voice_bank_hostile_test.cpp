// Recordings, marks, notes and settings that no singer gave: the output stays finite and within 12 dB of full
// scale, and playing comes to an end.

#include "synthesis/voice_bank_player.h"

#include "support/hostile_numbers.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kBound = 3.98F; // 12 dB over full scale

void ExpectBounded(const BankPlayer& player) {
    for (std::size_t voice = 0; voice < 4; ++voice)
        for (const auto& channel : player.sound[voice])
            for (const float sample : channel)
                ASSERT_TRUE(std::fabs(sample) <= kBound || sample == kUntouched)
                    << "voice " << voice << ": " << sample;
}

// Marks as given, under full-scale noise.
VoicedSong SongWithMarks(const std::vector<std::int32_t>& positions, std::int32_t length,
                         float sampleRate = 44100.0F, std::size_t channels = 1) {
    VoicedSong song;
    song.sampleRate = sampleRate;
    RandomNumbers random(7);
    song.channels.resize(channels);
    for (auto& channel : song.channels)
        for (std::int32_t i = 0; i < length; ++i) channel.push_back(static_cast<float>(random.Symmetric()));
    for (std::size_t i = 0; i < positions.size(); ++i) {
        PitchMarkRecord mark;
        mark.position = positions[i];
        mark.voicing = 20;
        mark.period = static_cast<float>(i + 1 < positions.size() ? positions[i + 1] - positions[i] : 0);
        song.marks.push_back(mark);
    }
    return song;
}

std::vector<std::int32_t> EvenPositions(std::int32_t distance, std::int32_t length) {
    std::vector<std::int32_t> positions;
    for (std::int32_t position = 0; position < length; position += distance) positions.push_back(position);
    return positions;
}

// All four voices at the corners of what can be set.
void Stretch(BankPlayer& player, float transpose) {
    player.bank.SetTranspose(transpose);
    constexpr std::array<float, 4> kFormants = {0.63F, 1.0F, 1.3F, 1.5874F};
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        player.bank.SetFormantShift(voice, kFormants[static_cast<std::size_t>(voice)]);
        player.bank.SetTiming(voice, 0.05F * static_cast<float>(voice));
        player.bank.SetDelay(voice, 0.04F * static_cast<float>(voice));
    }
}

// Every transposition at every speed; under a sanitizer each at one of them, in turn.
void PlayStretched(const VoicedSong& song, std::int32_t blockSize = 64) {
    constexpr std::array<float, 3> kSpeeds = {1.0F, 0.25F, 4.0F};
    std::size_t turn = 0;
    for (const float transpose : {-48.0F, -5.0F, 0.0F, 48.0F}) {
        const float speedInTurn = kSpeeds[turn++ % kSpeeds.size()];
        for (const float speed : kSpeeds) {
            if (UnderSanitizer() && speed != speedInTurn) continue;
            BankPlayer player(song, blockSize);
            Stretch(player, transpose);
            player.bank.SetSpeed(speed);
            const int most = 8 * (song.Length() + 50000) / blockSize;
            EXPECT_LT(player.Play(most), most) << "never ends: " << transpose << ", speed " << speed;
            ExpectBounded(player);
        }
    }
}

TEST(VoiceBankHostile, SilenceStaysSilent) {
    VoicedSong song = SongWithMarks(EvenPositions(150, 30000), 30000);
    for (float& sample : song.channels[0]) sample = 0;
    AddNote(song, 1000, 20000);
    BankPlayer player(std::move(song));
    Stretch(player, -3);
    player.Play(800);
    for (std::size_t voice = 0; voice < 4; ++voice)
        for (const float sample : player.sound[voice][0]) ASSERT_EQ(sample, 0.0F);
}

TEST(VoiceBankHostile, OneMarkOrTwoEndAtOnce) {
    for (const std::size_t count : {1u, 2u}) {
        std::vector<std::int32_t> positions = {0, 20000};
        positions.resize(count);
        BankPlayer player(SongWithMarks(positions, 30000));
        EXPECT_LT(player.Play(2000), 1300);
        ExpectBounded(player);
        double position = 25000;
        player.bank.Seek(position);
        EXPECT_LT(player.Play(2000), 1300);
    }
}

TEST(VoiceBankHostile, MarksFurtherApartThanTheBuffers) {
    PlayStretched(SongWithMarks({0, 90000, 90100, 200000, 200001}, 200100));
    PlayStretched(SongWithMarks({0, 1, 150000, 150002, 150003}, 150100), 4096);
}

TEST(VoiceBankHostile, MarksTwoSamplesApart) { PlayStretched(SongWithMarks(EvenPositions(2, 6000), 6000)); }

TEST(VoiceBankHostile, MarksOneSampleApart) { PlayStretched(SongWithMarks(EvenPositions(1, 3000), 3000)); }

TEST(VoiceBankHostile, MarksTwiceTheLongestSpacingApart) {
    PlayStretched(SongWithMarks(EvenPositions(8192, 82000), 82000));
}

TEST(VoiceBankHostile, StereoAt11025Hertz) {
    VoicedSong song = SongWithMarks(EvenPositions(37, 20000), 20000, 11025, 2);
    AddNote(song, 1000, 9000);
    AddNote(song, 9001, 15000);
    PlayStretched(song);
}

TEST(VoiceBankHostile, MonoAt192Kilohertz) {
    VoicedSong song = SongWithMarks(EvenPositions(7000, 210000), 210000, 192000);
    AddNote(song, 1000, 90000);
    AddNote(song, 90001, 150000);
    PlayStretched(song);
}

TEST(VoiceBankHostile, EveryBlockSize) {
    const std::int32_t frames = SanitizerShare(20000, 2);
    VoicedSong song = SongWithMarks(EvenPositions(180, frames), frames);
    AddNote(song, 1000, frames - 5000);
    for (const std::int32_t blockSize : {1, 31, 32, 64, 1000, 4096}) PlayStretched(song, blockSize);
}

TEST(VoiceBankHostile, ANoteListThatGoesBeyondTheFile) {
    VoicedSong song = SongWithMarks(EvenPositions(200, 90000), 90000);
    AddNote(song, 1000, 9000);
    AddNote(song, 10000, 40000);
    AddNote(song, 70000, 80000);
    BankPlayer player(std::move(song));
    player.melody.CutAt(12000);
    player.bank.SetMidiOut(true);
    EXPECT_LT(player.Play(2000), 400);
    ExpectBounded(player);
    player.bank.JumpToNextNote(); // behind the end
    EXPECT_EQ(player.bank.GetPosition(), 70000);
    EXPECT_LT(player.Play(2000), 20);
    player.bank.JumpToPreviousNote();
    EXPECT_EQ(player.bank.GetPosition(), 10000);
    EXPECT_GT(player.Play(2000), 40);
}

// Every setting with numbers that are none or absurd, before and while it plays.
TEST(VoiceBankHostile, SettingsThatAreNoNumberChangeNothing) {
    VoicedSong song = MakeVoicedSong({{200, 12000}, {160, 12000}});
    BankPlayer player(song);
    BankPlayer twin(song);
    for (BankPlayer* each : {&player, &twin}) Stretch(*each, 2);
    for (int i = 0; i < 400; ++i) {
        for (const float bad : {kNoNumber, kInfinity, -kInfinity}) {
            player.bank.SetSpeed(bad);
            player.bank.SetTranspose(bad);
            player.bank.SetOutputTuning(bad);
            for (std::int32_t voice = 0; voice < 4; ++voice) {
                player.bank.SetDelay(voice, bad);
                player.bank.SetTiming(voice, bad);
                player.bank.SetFormantShift(voice, bad);
                player.bank.SetQuantize(voice, bad);
                player.bank.SetDrift(voice, bad);
                player.bank.SetGlide(voice, bad);
            }
        }
        player.bank.SetOutputTuning(0);
        player.bank.SetOutputTuning(-440);
        ASSERT_EQ(player.Render(), twin.Render());
    }
    EXPECT_EQ(player.sound, twin.sound);
}

TEST(VoiceBankHostile, AbsurdSettingsAreHeldToTheirLimits) {
    const VoicedSong song = MakeVoicedSong({{200, 12000}, {160, 12000}});
    for (const float huge : {1e30F, -1e30F, 3e38F, 1e-38F}) {
        BankPlayer player(song);
        player.bank.SetSpeed(huge);
        player.bank.SetTranspose(huge);
        player.bank.SetOutputTuning(huge);
        for (std::int32_t voice = 0; voice < 4; ++voice) {
            player.bank.SetDelay(voice, huge);
            player.bank.SetTiming(voice, huge);
            player.bank.SetFormantShift(voice, huge);
            player.bank.SetQuantize(voice, huge);
            player.bank.SetDrift(voice, huge);
            player.bank.SetGlide(voice, huge);
        }
        player.Play(2000);
        ExpectBounded(player);
    }
}

TEST(VoiceBankHostile, AHundredTimesTooSlowAndTooFast) {
    const VoicedSong song = MakeVoicedSong({{200, 12000}, {160, 12000}});
    for (const std::int32_t blockSize : {32, 64, 4096}) {
        BankPlayer slow(song, blockSize);
        slow.bank.SetSpeed(100);
        EXPECT_EQ(slow.Play(200), 200);
        EXPECT_NEAR(slow.bank.GetReadPosition(0), 2 * blockSize, 450); // a hundredth of what was played
        ExpectBounded(slow);
        BankPlayer fast(song, blockSize);
        fast.bank.SetSpeed(0.01F);
        EXPECT_LE(fast.Play(200), song.Length() / (100 * blockSize) + 450 / blockSize + 2);
        ExpectBounded(fast);
    }
}

TEST(VoiceBankHostile, VoicesSwitchedInEveryBlock) {
    VoicedSong song = MakeVoicedSong({{200, 12000}, {160, 12000}});
    BankPlayer player(std::move(song));
    player.bank.SetMidiOut(true);
    for (int i = 0; i < 800; ++i) {
        for (std::int32_t voice = 0; voice < 4; ++voice)
            player.bank.SetVoiceEnabled(voice, (i >> voice & 1) == 0);
        ASSERT_EQ(player.Render(), 0);
    }
    ExpectBounded(player);
    std::array<int, 4> sounding{}; // each note that begins ends before the next one does
    for (const MidiEventRecord& event : player.TakeEvents()) {
        int& count = sounding[event.status & 3];
        count += event.status >= 0x90 ? 1 : -1;
        ASSERT_TRUE(count == 0 || count == 1);
    }
}

TEST(VoiceBankHostile, SamplesThatAreNoNumbersPassThrough) {
    VoicedSong song = MakeVoicedSong({{200, 12000}, {160, 12000, 0}});
    for (std::size_t i = 6000; i < 6100; ++i) song.channels[0][i] = i % 2 == 0 ? kNoNumber : kInfinity;
    BankPlayer player(std::move(song));
    player.Play(600);
    for (std::size_t voice = 0; voice < 4; ++voice)
        for (std::size_t i = 7500; i < player.SamplesPlayed(); ++i)
            ASSERT_LE(std::fabs(player.sound[voice][0][i]), 1.0F) << i; // nothing of them stays
}

} // namespace
} // namespace sonorelle::test
