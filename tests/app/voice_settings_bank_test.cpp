#include "app/voice_settings.h"
#include "synthesis/voice_bank_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace sonorelle {
namespace {

using test::BankPlayer;
using test::PulseTrain;

TEST(VoiceSettingsBank, ADelayOfHundredMillisecondsFitsAtEveryRate) {
    constexpr std::int32_t kBlock = 512;
    CkvovirelaineVoiceSettings mixer;
    mixer.MoveControl(1, VoiceControl::kDelay, 100);
    for (const std::int32_t rate : {8000, 11025, 22050, 44100, 48000, 88200, 96000, 176400, 192000}) {
        const auto song = PulseTrain(rate / 110, rate / 2, static_cast<float>(rate));
        BankPlayer plain(song, kBlock);
        BankPlayer delayed(song, kBlock);
        delayed.bank.SetDelay(1, mixer.GetDelay(1));
        const std::int32_t blocks = rate * 3 / 10 / kBlock; // 0.3 s
        plain.Play(blocks);
        delayed.Play(blocks);
        const auto& before = plain.sound[1][0];
        const auto& after = delayed.sound[1][0];
        const auto shift = static_cast<std::size_t>(rate / 10);
        ASSERT_EQ(after.size(), before.size());
        ASSERT_GT(after.size(), 2 * shift);
        float loudest = 0;
        for (std::size_t i = 0; i < after.size(); ++i) {
            ASSERT_EQ(after[i], i < shift ? 0.0F : before[i - shift]) << rate << " " << i;
            loudest = std::max(loudest, after[i]);
        }
        EXPECT_GT(loudest, 0) << rate;
    }
}

} // namespace
} // namespace sonorelle
