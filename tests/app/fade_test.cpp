#include "app/fade.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace sonorelle {
namespace {

constexpr double kDecay = -0.0021484375; // nepers a sample

// Half a unit in the last place of numbers below 1, at each step, summed up over the fade's memory of 465.
constexpr double kFadeRounding = 465.5 * 0x1p-24;

std::vector<float> NextOf(CFade& fade, std::int32_t count, std::int32_t blockSize = 64) {
    std::vector<float> curve(static_cast<std::size_t>(count));
    for (std::int32_t done = 0; done < count; done += blockSize)
        fade.Next(curve.data() + done, std::min(count - done, blockSize));
    return curve;
}

// One sample as it is defined.
float Step(float gain, float target) {
    return (1 - CFade::kCoefficient) * target + CFade::kCoefficient * gain + 1e-24F;
}

TEST(Fade, ItsCoefficientIsTheExponentialDecay) {
    EXPECT_EQ(CFade::kCoefficient, static_cast<float>(std::exp(kDecay)));
}

TEST(Fade, NothingIsHeardBeforeTheFirstStart) {
    CFade fade;
    EXPECT_FALSE(fade.IsFadingIn());
    for (const float gain : NextOf(fade, 1000)) EXPECT_LT(gain, 1e-20F); // -400 dB
}

TEST(Fade, ItRisesAsOneMinusTheExponential) {
    CFade fade;
    fade.FadeIn();
    const std::vector<float> curve = NextOf(fade, 5000);
    for (std::size_t i = 0; i < curve.size(); ++i)
        ASSERT_NEAR(curve[i], 1 - std::exp(kDecay * static_cast<double>(i + 1)), kFadeRounding) << i;
}

TEST(Fade, AStopOf1024SamplesNoticeComesDownTo11Percent) {
    CFade fade;
    fade.FadeIn();
    const float full = NextOf(fade, 20000).back();
    fade.FadeOut();
    const std::vector<float> curve = NextOf(fade, 1024);
    for (std::size_t i = 0; i < curve.size(); ++i)
        ASSERT_NEAR(curve[i], static_cast<double>(full) * std::exp(kDecay * static_cast<double>(i + 1)),
                    kFadeRounding)
            << i;
    EXPECT_NEAR(curve.back(), 0.1108, 0.0001); // exp(-2.2)
}

TEST(Fade, TellsWhereItGoes) {
    CFade fade;
    fade.FadeIn();
    EXPECT_TRUE(fade.IsFadingIn());
    fade.FadeOut();
    EXPECT_FALSE(fade.IsFadingIn());
    fade.FadeOut();
    EXPECT_FALSE(fade.IsFadingIn());
}

TEST(Fade, TurningAroundHasNoStep) {
    CFade fade;
    fade.FadeIn();
    float before = NextOf(fade, 300).back();
    fade.FadeOut();
    for (const float gain : NextOf(fade, 300)) {
        EXPECT_LT(std::abs(gain - before), 0.0022F); // 1 - coefficient: the largest step there is
        before = gain;
    }
}

TEST(Fade, SilenceIsAtOnceAndKeepsTheDirection) {
    CFade fade;
    fade.FadeIn();
    NextOf(fade, 20000);
    fade.Silence();
    EXPECT_EQ(fade.GetGain(), 0);
    EXPECT_TRUE(fade.IsFadingIn());
    EXPECT_EQ(NextOf(fade, 1)[0], Step(0, 1));
}

TEST(Fade, ToTheBitThatOfSampleBySampleEvenLongAfterItHasArrived) {
    CFade fade;
    float gain = 0;
    for (const bool in : {true, false, true}) {
        if (in)
            fade.FadeIn();
        else
            fade.FadeOut();
        for (const float faded : NextOf(fade, 50000)) {
            gain = Step(gain, in ? 1.0F : 0.0F);
            ASSERT_EQ(faded, gain);
        }
        EXPECT_EQ(Step(gain, in ? 1.0F : 0.0F), gain) << "not long enough to arrive";
    }
}

TEST(Fade, TheSameInBlocksOfAnySize) {
    CFade whole;
    whole.FadeIn();
    const std::vector<float> expected = NextOf(whole, 1000, 1000);
    for (const std::int32_t blockSize : {1, 7, 64, 100}) {
        CFade fade;
        fade.FadeIn();
        EXPECT_EQ(NextOf(fade, 1000, blockSize), expected) << blockSize;
    }
}

TEST(Fade, NoneOfItsGainsIsADenormalNumber) {
    CFade fade;
    fade.FadeIn();
    NextOf(fade, 20000);
    fade.FadeOut();
    for (const float gain : NextOf(fade, 100000)) ASSERT_GE(gain, std::numeric_limits<float>::min());
    EXPECT_LT(fade.GetGain(), 1e-20F);
}

TEST(Fade, NoSamplesChangeNothing) {
    CFade fade;
    fade.FadeIn();
    const float before = NextOf(fade, 100).back();
    fade.Next(nullptr, 0);
    EXPECT_EQ(fade.GetGain(), before);
}

} // namespace
} // namespace sonorelle
