// The meters and the clip flag of the mix.

#include "app/voice_mix.h"

#include "app/mixing_desk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

using test::Desk;
using test::FadeFullyIn;
using test::kSize;

TEST(VoiceMixMeters, AMeterHoldsTheSquaredPeakOfWhatTheVoiceAdds) {
    Desk desk;
    desk.samples[1][0][300] = -0.5F;
    desk.samples[1][1][7] = 0.25F;
    desk.voices.gains[1] = {0.5F, 2.0F};
    CVoiceMix mix;
    const float full = FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_EQ(mix.GetPeak(1, 0), 0.25F * full * (0.25F * full));
    EXPECT_EQ(mix.GetPeak(1, 1), 0.5F * full * (0.5F * full));
    EXPECT_EQ(mix.GetPeak(0, 0), 0);
    EXPECT_FALSE(mix.IsClipped());
}

TEST(VoiceMixMeters, APeakIsHeldAndFallsBy1DecibelAPoll) {
    Desk desk;
    desk.samples[0][0][0] = 0.5F;
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    const float peak = mix.GetPeak(0, 0);
    desk.samples[0][0].assign(kSize, 0.0F);
    desk.Mix(mix);
    EXPECT_EQ(mix.GetPeak(0, 0), peak);
    mix.DecayPeaks();
    EXPECT_EQ(mix.GetPeak(0, 0), peak * 0.8F + 1e-24F);
    desk.Mix(mix);
    EXPECT_EQ(mix.GetPeak(0, 0), peak * 0.8F + 1e-24F) << "the peak of the last poll's time came back";
}

TEST(VoiceMixMeters, ASofterPeakDoesNotReplaceALouderOneThatStillFalls) {
    Desk desk(2, 0.5F);
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    mix.DecayPeaks();
    const float falling = mix.GetPeak(2, 1);
    desk.SetVoice(2, 0.25F);
    desk.Mix(mix);
    EXPECT_EQ(mix.GetPeak(2, 1), falling);
    for (int poll = 0; poll < 20; ++poll) mix.DecayPeaks();
    desk.SetVoice(2, 0.25F);
    desk.Mix(mix);
    EXPECT_NEAR(mix.GetPeak(2, 1), 0.0625F, 1e-5F);
}

TEST(VoiceMixMeters, AMeterAtRestIsNoDenormalNumber) {
    CVoiceMix mix;
    for (int poll = 0; poll < 2000; ++poll) mix.DecayPeaks();
    EXPECT_GE(mix.GetPeak(3, 1), std::numeric_limits<float>::min());
    EXPECT_LT(mix.GetPeak(3, 1), 1e-20F);
}

TEST(VoiceMixMeters, FullScaleClipsAndAHairBelowDoesNot) {
    const float full = [] {
        CVoiceMix mix;
        return FadeFullyIn(mix);
    }();
    for (const float sign : {1.0F, -1.0F}) {
        Desk desk;
        // The gain makes up for what the fade lacks: the product is the sample itself.
        desk.voices.gains[3] = {1, 1};
        CVoiceMix mix;
        FadeFullyIn(mix);
        float sample = 1 / full;
        while (sample * full >= 1) sample = std::nextafter(sample, 0.0F);
        desk.samples[3][1][kSize - 1] = sign * sample;
        desk.Mix(mix);
        EXPECT_FALSE(mix.IsClipped()) << sign * sample * full;

        while (sample * full < 1) sample = std::nextafter(sample, 2.0F);
        ASSERT_EQ(sample * full, 1);
        desk.samples[3][1][kSize - 1] = sign * sample;
        desk.Mix(mix);
        EXPECT_TRUE(mix.IsClipped()) << sign * sample * full;
        mix.ClearClipped();
        EXPECT_FALSE(mix.IsClipped());
    }
}

TEST(VoiceMixMeters, TheGainBelongsToWhatClips) {
    Desk desk;
    desk.samples[0][0][9] = 0.75F;
    desk.voices.gains[0] = {1.4F, 1};
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_TRUE(mix.IsClipped());
}

TEST(VoiceMixMeters, VoicesThatAreLoudOnlyTogetherDoNotClip) {
    Desk desk(2, 0.75F);
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_GT(desk.outputs[0][0], 2.9F);
    EXPECT_FALSE(mix.IsClipped());
}

TEST(VoiceMixMeters, AMeterThatDoesNotExistIsAtRest) {
    Desk desk(2, 0.5F);
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_EQ(mix.GetPeak(-1, 0), 0);
    EXPECT_EQ(mix.GetPeak(4, 0), 0);
    EXPECT_EQ(mix.GetPeak(0, -1), 0);
    EXPECT_EQ(mix.GetPeak(0, 2), 0);
}

TEST(VoiceMixMeters, ASampleThatIsNotANumberDoesNotHideTheOthers) {
    Desk desk;
    desk.samples[0][0][3] = std::numeric_limits<float>::quiet_NaN();
    desk.samples[0][0][5] = 2;
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_NEAR(mix.GetPeak(0, 0), 4, 0.001F); // the fade arrives a little below 1
    EXPECT_TRUE(mix.IsClipped());
}

TEST(VoiceMixMeters, BrokenSamplesDoNotStayInTheMeters) {
    Desk desk;
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    desk.samples[0][0][3] = infinity;
    desk.samples[1][0][3] = nan;
    desk.samples[2][0][3] = -nan;
    desk.samples[3][0][3] = 1e30F;
    CVoiceMix mix;
    FadeFullyIn(mix);
    desk.Mix(mix);
    EXPECT_TRUE(mix.IsClipped());
    EXPECT_EQ(mix.GetPeak(1, 0), 0);
    EXPECT_EQ(mix.GetPeak(2, 0), 0);
    for (int poll = 0; poll < 100; ++poll) mix.DecayPeaks(); // 10 seconds
    for (std::int32_t voice = 0; voice < 4; ++voice) EXPECT_LT(mix.GetPeak(voice, 0), 0.01F) << voice;
    EXPECT_TRUE(std::isfinite(mix.Fade().GetGain()));
}

} // namespace
} // namespace sonorelle
