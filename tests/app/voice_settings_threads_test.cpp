#include "app/voice_settings.h"
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace sonorelle {
namespace {

// Two hosts' threads write while a third reads, as automation, interface and audio do.
TEST(VoiceSettingsThreads, AutomationAndMixMeetWithoutALock) {
    constexpr int kRounds = 4000;
    CkvovirelaineVoiceSettings mixer;
    mixer.Refresh();
    std::atomic<bool> done{false};
    std::atomic<bool> sane{true};
    std::thread mix([&] {
        while (!done.load()) {
            for (std::int32_t voice = 0; voice < 4; ++voice) {
                const StripGain gain = mixer.GetStripGain(voice);
                const VoiceSettings settings = mixer.GetSettings(voice);
                if (!(gain.left >= 0 && gain.left <= 1.9F && settings.delay >= 0)) sane.store(false);
            }
            if (mixer.GetAudibleVoices().size() != 4) sane.store(false);
        }
    });
    std::thread automation([&] {
        for (int round = 0; round < kRounds; ++round) {
            mixer.SetVol(round % 4, static_cast<float>(round % 100) / 100);
            mixer.SetDelay(round % 4, 0.05F);
            mixer.SetMute(round % 4, round % 3 == 0);
            mixer.SetVisibleVoices(round % 5);
        }
        mixer.SetVol(0, 0.5F);
    });
    for (int round = 0; round < kRounds; ++round)
        mixer.SetPan(round % 4, static_cast<float>(round % 200) / 100 - 1);
    mixer.SetPan(0, 1);
    automation.join();
    done.store(true);
    mix.join();
    EXPECT_TRUE(sane.load());
    // Whoever wrote last, the gains are those of both values.
    EXPECT_EQ(mixer.GetGain(0, 0), 0);
    EXPECT_FLOAT_EQ(mixer.GetGain(0, 1), std::sqrt(2.0F) * 0.5F);
}

TEST(VoiceSettingsThreads, WhatTheAudioThreadAsksAllocatesNothing) {
    CkvovirelaineVoiceSettings mixer;
    const std::int64_t before = test::AllocationCount();
    float sum = 0;
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        mixer.SetSettings(voice, mixer.GetSettings(voice));
        sum += mixer.GetStripGain(voice).left + mixer.GetGain(voice, 1);
        sum += mixer.GetAudibleVoices()[0] ? 1.0F : 0.0F;
    }
    const std::int64_t after = test::AllocationCount();
    EXPECT_EQ(after, before);
    EXPECT_EQ(sum, 12);
}

} // namespace
} // namespace sonorelle
