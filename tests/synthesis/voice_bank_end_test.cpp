// How playing ends: at the last mark, where the file breaks off, and for voices that lag behind the lead.

#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kEndPeriod = 100;
constexpr std::int32_t kEndingSong = 60000;
constexpr int kForever = 10000; // blocks: far more than there are

VoicedSong NoteToTheEnd() {
    VoicedSong song = PulseTrain(kEndPeriod, kEndingSong);
    AddNote(song, 0, kEndingSong - 1);
    return song;
}

bool IsSilent(const std::vector<float>& sound, std::size_t from, std::size_t count) {
    return std::all_of(sound.begin() + static_cast<std::ptrdiff_t>(from),
                       sound.begin() + static_cast<std::ptrdiff_t>(from + count),
                       [](float x) { return x == 0; });
}

TEST(VoiceBankEnd, TheEndOfTheMarksIsTheEndAndSilent) {
    BankPlayer player(NoteToTheEnd());
    const int blocks = player.Play(kForever);
    EXPECT_NEAR(blocks * 32, kEndingSong, 3 * kEndPeriod);
    for (std::size_t voice = 0; voice < 4; ++voice) {
        EXPECT_TRUE(IsSilent(player.sound[voice][0], static_cast<std::size_t>(blocks) * 32, 32));
        EXPECT_GE(PulsesOf(player.sound[voice][0], 32).back().at,
                  static_cast<std::size_t>(kEndingSong - 500));
    }
    for (int i = 0; i < 100; ++i) EXPECT_EQ(player.Render(), -1); // and it stays so
    EXPECT_TRUE(IsSilent(player.sound[1][0], static_cast<std::size_t>(blocks) * 32, 100 * 32));
}

TEST(VoiceBankEnd, HumanVoicesReachTheirOwnEndBehindTheLead) {
    BankPlayer player(NoteToTheEnd());
    player.bank.SetTiming(1, 8817.0F / 44100);
    BankPlayer twin(NoteToTheEnd());
    const int leadBlocks = twin.Play(kForever);
    const int blocks = player.Play(kForever);
    // phase = 0.00102 x 60000 / 32 + 8817 / 4 = 2206.16: a lag of (0.675 + 0.6) x 8817 / 2 = 5621 samples,
    // which shrinks by 0.28 samples a sample of the lead's clock.
    EXPECT_NEAR((blocks - leadBlocks) * 32, 5621 / 1.28, 200);
    const auto end = static_cast<std::size_t>(leadBlocks) * 32;
    const auto behind = static_cast<std::size_t>(blocks - leadBlocks) * 32;
    EXPECT_TRUE(IsSilent(player.sound[0][0], end, behind));
    EXPECT_TRUE(IsSilent(player.sound[2][0], end, behind));
    int pulses = 0;
    for (const Pulse& pulse : PulsesOf(player.sound[1][0], 32)) pulses += pulse.at > end ? 1 : 0;
    EXPECT_GE(pulses, static_cast<int>(behind) / kEndPeriod - 3);
    // It reads on all the while instead of standing on one mark.
    const std::vector<double>& reads = player.readAt[1];
    for (std::size_t b = static_cast<std::size_t>(leadBlocks); b + 10 < reads.size(); ++b)
        ASSERT_GT(reads[b + 8], reads[b]) << "block " << b;
    EXPECT_NEAR(reads.back(), kEndingSong, 3 * kEndPeriod);
}

TEST(VoiceBankEnd, AFileThatBreaksOffEndsThereAndTheNextSeekRecovers) {
    BankPlayer player(NoteToTheEnd());
    player.melody.CutAt(20000);
    const int blocks = player.Play(kForever);
    EXPECT_NEAR(blocks * 32, 20000, 3 * kEndPeriod);
    EXPECT_TRUE(IsSilent(player.sound[0][0], static_cast<std::size_t>(blocks) * 32, 32));
    double position = 5000;
    player.bank.Seek(position);
    EXPECT_EQ(player.Play(100), 100);
    EXPECT_GT(PulsesOf(player.sound[0][0], 32).back().at, player.SamplesPlayed() - 300);
    EXPECT_EQ(PulsesOf(player.sound[0][0], 32).back().height, kPulse);
}

TEST(VoiceBankEnd, TheFileIsReadAtLeast4096SamplesAtATimeAndEachOnce) {
    BankPlayer player(NoteToTheEnd());
    player.Render();
    EXPECT_EQ(player.melody.FramesRead(), 4096);
    EXPECT_EQ(player.melody.ReadCount(), 1);
    player.Play(kForever);
    EXPECT_LE(player.melody.FramesRead(), kEndingSong);
    EXPECT_LE(player.melody.ReadCount(), kEndingSong / 4096 + 3);
}

TEST(VoiceBankEnd, AnEmptyFileEndsAtOnce) {
    BankPlayer player(NoteToTheEnd());
    player.melody.CutAt(0);
    EXPECT_EQ(player.Play(kForever), 0);
    EXPECT_TRUE(IsSilent(player.sound[3][0], 0, 32));
}

TEST(VoiceBankEnd, ComesWhicheverVoicesAreHeard) {
    for (int heard = 0; heard < 16; ++heard) {
        BankPlayer off(NoteToTheEnd());
        BankPlayer leftOut(NoteToTheEnd());
        for (std::int32_t voice = 0; voice < 4; ++voice) {
            const bool on = (heard >> voice & 1) != 0;
            off.bank.SetVoiceEnabled(voice, on);
            leftOut.leaveOut[static_cast<std::size_t>(voice)] = !on;
        }
        EXPECT_NEAR(off.Play(kForever) * 32, kEndingSong, 3 * kEndPeriod) << heard;
        EXPECT_NEAR(leftOut.Play(kForever) * 32, kEndingSong, 3 * kEndPeriod) << heard;
    }
}

TEST(VoiceBankEnd, ARecordingMayBeginAndEndInTheMiddleOfAVowel) {
    VoicedSongSettings settings;
    settings.tail = 0;
    for (const std::int32_t interval : {0, 12, -12, -36}) {
        BankPlayer player(MakeVoicedSong({{200, 12000, 0}}, settings));
        player.SetInterval(0, 1, interval);
        const int blocks = player.Play(kForever);
        EXPECT_NEAR(blocks * 32, player.melody.Song().Length(), 2 * 1600); // two of the lowest periods
        float loudest = 0;
        for (const float sample : player.sound[1][0]) loudest = std::max(loudest, std::fabs(sample));
        EXPECT_GT(loudest, 0.1F);
        EXPECT_LT(loudest, 1.0F);
    }
}

} // namespace
} // namespace sonorelle::test
