#include "app/slider_text.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace sonorelle {
namespace {

const VoiceControlInfo& Volume() { return GetVoiceControl(VoiceControl::kVolume); }
const VoiceControlInfo& Pan() { return GetVoiceControl(VoiceControl::kPan); }
const VoiceControlInfo& Shape() { return GetVoiceControl(VoiceControl::kShape); }
const VoiceControlInfo& Delay() { return GetVoiceControl(VoiceControl::kDelay); }

TEST(SliderText, TheTipOfVolumeZeroIsMinusInfinity) { EXPECT_EQ(SliderTip(Volume(), 0), "-oo"); }

TEST(SliderText, TheTipOfAVolumeIsInDecibels) {
    EXPECT_EQ(SliderTip(Volume(), 1), "0.0");
    EXPECT_EQ(SliderTip(Volume(), 0.5F), "-6.0");
    EXPECT_EQ(SliderTip(Volume(), 1.333F), "2.5");
    EXPECT_EQ(SliderTip(Volume(), 0.001F), "-60.0");
}

TEST(SliderText, TheTipOfOtherControlsHasOneDigitBehindThePoint) {
    EXPECT_EQ(SliderTip(Pan(), -1), "-1.0");
    EXPECT_EQ(SliderTip(Shape(), 3.14F), "3.1");
    EXPECT_EQ(SliderTip(Delay(), 100), "100.0");
    EXPECT_EQ(SliderTip(Delay(), 0), "0.0");
}

TEST(SliderText, TipsOfHostileValuesStayWithinTheRange) {
    EXPECT_EQ(SliderTip(Delay(), 1e30F), "100.0");
    EXPECT_EQ(SliderTip(Delay(), kNaN), "0.0");
    EXPECT_EQ(SliderTip(Volume(), -kInfinity), "-oo");
    EXPECT_EQ(SliderTip(Volume(), kInfinity), "2.5");
}

TEST(SliderText, TickLabelsOfLinearSlidersAreShort) {
    EXPECT_EQ(SliderTickLabel(Delay(), 50), "50");
    EXPECT_EQ(SliderTickLabel(Delay(), 100), "100");
    EXPECT_EQ(SliderTickLabel(Shape(), -8), "-8");
    EXPECT_EQ(SliderTickLabel(Shape(), 2.5F), "2.5");
    EXPECT_EQ(SliderTickLabel(Shape(), 1.0F / 3), "0.333333");
    EXPECT_EQ(SliderTickLabel(Shape(), 0), "0");
}

TEST(SliderText, TickLabelsOfLogarithmicSlidersAreWholeDecibels) {
    EXPECT_EQ(SliderTickLabel(Volume(), 0), "-oo");
    EXPECT_EQ(SliderTickLabel(Volume(), 1), "0");
    EXPECT_EQ(SliderTickLabel(Volume(), 0.5F), "-6");
    EXPECT_EQ(SliderTickLabel(Volume(), 1.333F), "2");    // 2.5, cut off
    EXPECT_EQ(SliderTickLabel(Volume(), 0.33325F), "-9"); // -9.5
    EXPECT_EQ(SliderTickLabel(Volume(), 0.1F), "-20");
}

TEST(SliderText, LogarithmicTicksAreTwelfthsOfTheRange) {
    EXPECT_EQ(LogarithmicTick(Volume(), 0), 0);
    EXPECT_EQ(LogarithmicTick(Volume(), 12), 1.333F);
    EXPECT_FLOAT_EQ(LogarithmicTick(Volume(), 6), 0.6665F);
    EXPECT_FLOAT_EQ(LogarithmicTick(Volume(), 9), 0.99975F); // as good as unity: its label is 0 dB
    EXPECT_EQ(SliderTickLabel(Volume(), LogarithmicTick(Volume(), 9)), "0");
    EXPECT_EQ(LogarithmicTick(Volume(), -1), 0);
    EXPECT_EQ(LogarithmicTick(Volume(), 100), 1.333F);
}

TEST(SliderText, TheWheelMovesByTheStep) {
    EXPECT_EQ(WheelValue(Pan(), 0, 1), 0.05F);
    EXPECT_EQ(WheelValue(Pan(), 0, -3), -0.15F);
    EXPECT_EQ(WheelValue(Delay(), 5, 2), 7);
    EXPECT_EQ(WheelValue(Shape(), 0.1F, 1), 0.2F);
}

TEST(SliderText, TheWheelStopsAtTheEnds) {
    EXPECT_EQ(WheelValue(Delay(), 99, 5), 100);
    EXPECT_EQ(WheelValue(Delay(), 1, -5), 0);
    EXPECT_EQ(WheelValue(Shape(), 0, std::numeric_limits<std::int32_t>::max()), 8);
    EXPECT_EQ(WheelValue(Shape(), 0, std::numeric_limits<std::int32_t>::min()), -8);
    EXPECT_EQ(WheelValue(Shape(), kNaN, 1), 0.1F);
}

TEST(SliderText, AHundredNotchesOfATenthMakeTen) {
    float value = -5;
    for (int notch = 0; notch < 100; ++notch) value = WheelValue(Shape(), value, 1);
    EXPECT_EQ(value, 5); // no error adds up
}

TEST(SliderText, TheVolumeHasNoStepAndTheWheelLeavesIt) {
    EXPECT_EQ(WheelValue(Volume(), 0.7F, 3), 0.7F);
    EXPECT_EQ(SnapToStep(Volume(), 0.7654321F), 0.7654321F);
}

TEST(SliderText, ValuesSnapToTheNearestStepWithinTheRange) {
    EXPECT_EQ(SnapToStep(Pan(), 0.33F), 0.35F);
    EXPECT_EQ(SnapToStep(Pan(), 0.32F), 0.3F);
    EXPECT_EQ(SnapToStep(Delay(), 12.4F), 12);
    EXPECT_EQ(SnapToStep(Shape(), -100), -8);
    EXPECT_EQ(SnapToStep(Shape(), kInfinity), 8);
}

} // namespace
} // namespace sonorelle
