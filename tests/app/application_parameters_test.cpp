// The strips as the host's parameters.
#include "app/application_fixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kGlideOfVoice1 = 26;
constexpr std::int32_t kTuneOfVoice1 = 9;

TEST(ApplicationParameters, AVolumeIsAShareOfTheLargestGain) {
    LoadedSession session;
    session.app->SetParameter(0, 0.75F);
    EXPECT_EQ(session.app->VoicePanel().GetVol(0), 0.75F * 1.333F);
    EXPECT_NEAR(session.app->VoicePanel().GetVol(0), 0.99975F, 1e-6F);
    EXPECT_EQ(session.app->GetParameterDisplay(0), "-0.0");
}

TEST(ApplicationParameters, TheEightKindsReachTheirValues) {
    LoadedSession session;
    CkvovirelaineVoiceSettings& panel = session.app->VoicePanel();
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        const std::int32_t early = voice * 6;
        const std::int32_t late = 24 + voice * 2;
        session.app->SetParameter(early, 0.5F);
        session.app->SetParameter(early + 1, 0.25F);
        session.app->SetParameter(early + 2, 0.5F);
        session.app->SetParameter(early + 3, 0.75F);
        session.app->SetParameter(early + 4, 1.0F);
        session.app->SetParameter(early + 5, 0.25F);
        session.app->SetParameter(late, 0.25F);
        session.app->SetParameter(late + 1, 0.5F);
        EXPECT_FLOAT_EQ(panel.GetVol(voice), 0.6665F);
        EXPECT_FLOAT_EQ(panel.GetPan(voice), -0.5F);
        EXPECT_FLOAT_EQ(panel.GetDelay(voice), 0.05F);
        EXPECT_FLOAT_EQ(panel.GetQuantize(voice), 0.75F);
        EXPECT_FLOAT_EQ(panel.GetFormantShift(voice), std::exp2(8.0F / 12));
        EXPECT_FLOAT_EQ(panel.GetDrift(voice), 0.5F);
        EXPECT_FLOAT_EQ(panel.GetGlide(voice), 0.25F);
        EXPECT_FLOAT_EQ(panel.GetTiming(voice), 0.1F);
        EXPECT_NEAR(session.app->GetParameter(early + 4), 1.0F, 1e-6F);
        EXPECT_NEAR(session.app->GetParameter(late + 1), 0.5F, 1e-6F);
    }
}

TEST(ApplicationParameters, TheLateParametersAreGlideAndTiming) {
    LoadedSession session;
    session.app->SetParameter(24, 0.9F);
    EXPECT_FLOAT_EQ(session.app->VoicePanel().GetGlide(0), 0.9F);
    session.app->SetParameter(31, 1.0F);
    EXPECT_FLOAT_EQ(session.app->VoicePanel().GetTiming(3), 0.2F);
}

TEST(ApplicationParameters, SmallChangesOfAllButVolumeAndPanAreNone) {
    LoadedSession session;
    CkvovirelaineVoiceSettings& panel = session.app->VoicePanel();
    session.app->SetParameter(3, 0.5F);
    session.app->SetParameter(3, 0.505F);
    EXPECT_EQ(panel.GetQuantize(0), 0.5F);
    session.app->SetParameter(3, 0.515F);
    EXPECT_EQ(panel.GetQuantize(0), 0.515F);
    session.app->SetParameter(0, 0.5F);
    session.app->SetParameter(0, 0.5001F);
    EXPECT_FLOAT_EQ(panel.GetVol(0), 0.5001F * 1.333F);
}

// Voice 1 alone, with a tune of 1 and the glide at `knob`, automated or not.
std::vector<float> HeardGlide(bool automated, float knob, float tune) {
    LoadedSession session;
    session.app->SetParameter(kTuneOfVoice1, tune);
    if (automated)
        session.app->SetParameter(kGlideOfVoice1, knob);
    else
        session.app->Bank().SetGlide(1, knob);
    for (const std::int32_t voice : {0, 2, 3}) session.app->VoicePanel().ToggleMute(voice);
    return session.Play(50000, 64)[0];
}

TEST(ApplicationParameters, AsAutomatedAGlideFollowsTheTune) {
    const std::vector<float> automated = HeardGlide(true, 0.1F, 0.9F);
    EXPECT_EQ(automated, HeardGlide(false, 0.9F, 0.9F));
    EXPECT_NE(automated, HeardGlide(false, 0.1F, 0.9F));
    LoadedSession session; // the user's own hand is not
    session.app->SetParameter(kTuneOfVoice1, 0.9F);
    session.app->VoicePanel().MoveControl(1, VoiceControl::kGlide, 10); // per cent
    for (const std::int32_t voice : {0, 2, 3}) session.app->VoicePanel().ToggleMute(voice);
    EXPECT_EQ(session.Play(50000, 64)[0], HeardGlide(false, 0.1F, 0.9F));
}

TEST(ApplicationParameters, TheHostIsToldWhatAStripHasChanged) {
    LoadedSession session;
    std::vector<std::int32_t> told;
    session.app->SetParameterChanged([&](std::int32_t index) { told.push_back(index); });
    session.app->VoicePanel().MoveControl(2, VoiceControl::kPan, 0.5F);
    session.app->VoicePanel().MoveControl(3, VoiceControl::kTime, 50);
    session.app->VoicePanel().ToggleMute(1); // no parameter
    EXPECT_EQ(told, (std::vector<std::int32_t>{13, 31}));
    session.app->SetParameter(0, 0.1F); // the host knows
    EXPECT_EQ(told.size(), 2U);
}

TEST(ApplicationParameters, WhatIsNoParameterDoesNothing) {
    LoadedSession session;
    std::array<float, 32> before{};
    for (std::int32_t i = 0; i < 32; ++i) before[static_cast<std::size_t>(i)] = session.app->GetParameter(i);
    for (const std::int32_t index :
         {-1, 32, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
        session.app->SetParameter(index, 0.3F);
        EXPECT_EQ(session.app->GetParameter(index), 0.0F);
        EXPECT_EQ(session.app->GetParameterDisplay(index), "");
    }
    for (std::int32_t i = 0; i < 32; ++i)
        for (const float value :
             {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
              -std::numeric_limits<float>::infinity()})
            session.app->SetParameter(i, value);
    for (std::int32_t i = 0; i < 32; ++i)
        EXPECT_EQ(session.app->GetParameter(i), before[static_cast<std::size_t>(i)]) << i;
    for (std::int32_t i = 0; i < 32; ++i) {
        session.app->SetParameter(i, 1e30F);
        EXPECT_NEAR(session.app->GetParameter(i), 1.0F, 1e-6F) << i; // held
        session.app->SetParameter(i, -1e30F);
        EXPECT_NEAR(session.app->GetParameter(i), 0.0F, 1e-6F) << i;
    }
}

TEST(ApplicationParameters, ParametersAreThereWithoutARecording) {
    AnsweringToolkit toolkit;
    CCriticalSection lock;
    CSnapshotStore store;
    {
        CkvovirelaineApp app({toolkit, lock, nullptr, store});
        app.Run();
        for (std::int32_t i = 0; i < 32; ++i) {
            app.SetParameter(i, 0.9F);
            EXPECT_NEAR(app.GetParameter(i), 0.9F, 1e-6F) << i;
        }
    }
    store.ClearAll();
}

} // namespace
} // namespace sonorelle::test
