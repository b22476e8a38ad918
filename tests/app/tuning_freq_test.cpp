#include "app/tuning_freq.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace sonorelle {
namespace {

struct ListenedTuning {
    CkvovirelaineTuningFreq panel;
    int calls = 0;
    ListenedTuning() {
        panel.SetCallback([this](CkvovirelaineTuningFreq&) { ++calls; });
    }
};

TEST(TuningFreq, StartsAtConcertPitch) {
    const CkvovirelaineTuningFreq panel;
    EXPECT_EQ(panel.GetFrequency(), 440);
    EXPECT_EQ(panel.GetText(), "440.0 Hz");
    EXPECT_STREQ(CkvovirelaineTuningFreq::kUnit, "Hz");
    EXPECT_STREQ(CkvovirelaineTuningFreq::kToolTip,
                 "adjust tuning frequency, use SHIFT key to\nchange value by integer steps");
}

TEST(TuningFreq, TheApplicationSetsItWithoutTellingAnybody) {
    ListenedTuning listened;
    listened.panel.SetFrequency(442.1234F);
    EXPECT_EQ(listened.panel.GetFrequency(), 442.1234F); // not cut to tenths: a document gets it back whole
    EXPECT_EQ(listened.panel.GetText(), "442.1 Hz");
    EXPECT_EQ(listened.calls, 0);
}

TEST(TuningFreq, EnteringItTellsTheCallbackOnce) {
    ListenedTuning listened;
    EXPECT_TRUE(listened.panel.EnterFrequency(415));
    EXPECT_FALSE(listened.panel.EnterFrequency(415));
    EXPECT_EQ(listened.panel.GetFrequency(), 415);
    EXPECT_EQ(listened.calls, 1);
}

TEST(TuningFreq, IsHeldToTheRange) {
    CkvovirelaineTuningFreq panel;
    panel.SetFrequency(1e30F);
    EXPECT_EQ(panel.GetFrequency(), 500);
    panel.SetFrequency(-1);
    EXPECT_EQ(panel.GetFrequency(), 350);
    panel.EnterFrequency(501);
    EXPECT_EQ(panel.GetFrequency(), 500);
}

TEST(TuningFreq, WhatIsNoNumberChangesNothing) {
    ListenedTuning listened;
    for (const float bad : {kNaN, kInfinity, -kInfinity}) {
        listened.panel.SetFrequency(bad);
        EXPECT_FALSE(listened.panel.EnterFrequency(bad));
    }
    EXPECT_EQ(listened.panel.GetFrequency(), 440);
    EXPECT_EQ(listened.calls, 0);
}

TEST(TuningFreq, StepsAreTenthsAndWithShiftWhole) {
    ListenedTuning listened;
    EXPECT_TRUE(listened.panel.StepFrequency(1, false));
    EXPECT_EQ(listened.panel.GetFrequency(), 440.1F);
    EXPECT_TRUE(listened.panel.StepFrequency(-2, true));
    EXPECT_EQ(listened.panel.GetFrequency(), 438.1F);
    EXPECT_FALSE(listened.panel.StepFrequency(0, false));
    EXPECT_TRUE(listened.panel.StepFrequency(std::numeric_limits<std::int32_t>::max(), true));
    EXPECT_EQ(listened.panel.GetFrequency(), 500);
    EXPECT_FALSE(listened.panel.StepFrequency(1, true));
    EXPECT_EQ(listened.calls, 3);
}

TEST(TuningFreq, KnowsWhichFrequenciesItCanHave) {
    EXPECT_TRUE(CkvovirelaineTuningFreq::IsFrequency(350));
    EXPECT_TRUE(CkvovirelaineTuningFreq::IsFrequency(500));
    EXPECT_FALSE(CkvovirelaineTuningFreq::IsFrequency(349.9F));
    EXPECT_FALSE(CkvovirelaineTuningFreq::IsFrequency(500.1F));
    EXPECT_FALSE(CkvovirelaineTuningFreq::IsFrequency(kNaN));
}

} // namespace
} // namespace sonorelle
