// Glide and timing may be moved from any thread while the audio runs.

#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

namespace sonorelle::test {
namespace {

TEST(VoiceBankThreads, GlideAndTimingMoveWhileTheVoicesSing) {
    VoicedSong song = PulseTrain(200, 60000);
    AddNote(song, 2000, 20000);
    AddNote(song, 22000, 50000);
    BankPlayer player(song, 64);
    player.SetInterval(0, 1, 4);
    player.SetInterval(1, 1, -3);

    std::atomic<bool> done{false};
    std::thread hand([&] {
        for (int turn = 0; !done.load(std::memory_order_relaxed); ++turn) {
            const std::int32_t voice = turn % CVoiceBank::kVoices;
            player.bank.SetGlide(voice, static_cast<float>(turn % 11) * 0.1F);
            player.bank.SetTiming(voice, static_cast<float>(turn % 21) * 0.01F);
        }
    });
    const int blocks = player.Play(800);
    done.store(true, std::memory_order_relaxed);
    hand.join();

    EXPECT_GT(blocks, 700); // a timing of 0.2 s cannot end the song much before its 937 blocks
    for (const auto& voice : player.sound) {
        const auto& samples = voice[0];
        EXPECT_TRUE(std::all_of(samples.begin(), samples.end(),
                                [](float sample) { return std::isfinite(sample) && std::fabs(sample) < 4; }));
        EXPECT_TRUE(std::any_of(samples.begin(), samples.end(), [](float sample) { return sample > 0.1F; }));
    }
}

} // namespace
} // namespace sonorelle::test
