#include "app/melody_properties.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace sonorelle {
namespace {

struct ListenedMelody {
    CkvovirelaineMelodyProperties panel;
    int calls = 0;
    ListenedMelody() {
        panel.SetCallback([this](CkvovirelaineMelodyProperties&) { ++calls; });
    }
};

TEST(MelodyProperties, StartsInCMajorAtTheUsualTempo) {
    const CkvovirelaineMelodyProperties panel;
    EXPECT_EQ(panel.GetRoot(), 0);
    EXPECT_EQ(panel.GetScale(), 0);
    EXPECT_EQ(panel.GetTempo(), 120);
    EXPECT_TRUE(panel.IsActive());
}

TEST(MelodyProperties, HasItsTexts) {
    EXPECT_STREQ(CkvovirelaineMelodyProperties::kRootLabel, "Root ");
    EXPECT_STREQ(CkvovirelaineMelodyProperties::kScaleLabel, "Scale ");
    EXPECT_STREQ(CkvovirelaineMelodyProperties::kTempoLabel, "Tempo ");
    EXPECT_STREQ(CkvovirelaineMelodyProperties::kTempoToolTip,
                 "adjust melody's original tempo,use SHIFT key to\nchange value by integer steps");
}

TEST(MelodyProperties, SettersTellNobody) {
    ListenedMelody listened;
    listened.panel.SetRoot(11);
    listened.panel.SetScale(10);
    listened.panel.SetTempo(97.5F);
    EXPECT_EQ(listened.panel.GetRoot(), 11);
    EXPECT_EQ(listened.panel.GetScale(), 10);
    EXPECT_EQ(listened.panel.GetTempo(), 97.5F);
    EXPECT_EQ(listened.calls, 0);
}

TEST(MelodyProperties, KeysThatDoNotExistChangeNothing) {
    ListenedMelody listened;
    listened.panel.SetRoot(5);
    listened.panel.SetScale(3);
    for (const std::int32_t bad : {-1, 12, std::numeric_limits<std::int32_t>::max()}) {
        listened.panel.SetRoot(bad);
        listened.panel.SetScale(bad);
        EXPECT_FALSE(listened.panel.ChooseRoot(bad));
        EXPECT_FALSE(listened.panel.ChooseScale(bad));
    }
    listened.panel.SetScale(11); // all twelve tones are in no menu
    EXPECT_EQ(listened.panel.GetRoot(), 5);
    EXPECT_EQ(listened.panel.GetScale(), 3);
    EXPECT_EQ(listened.calls, 0);
}

TEST(MelodyProperties, TheApplicationMaySetATempoThatNobodyCouldEnter) {
    CkvovirelaineMelodyProperties panel;
    panel.SetTempo(5.5F);
    EXPECT_EQ(panel.GetTempo(), 5.5F);
    EXPECT_EQ(panel.GetTempoText(), "5.5");
    panel.SetTempo(1200);
    EXPECT_EQ(panel.GetTempo(), 1200);
    EXPECT_EQ(panel.GetTempoText(), "1200.0");
}

TEST(MelodyProperties, ATempoThatIsNoneIsIgnored) {
    ListenedMelody listened;
    for (const float bad : {kNaN, kInfinity, -kInfinity, 0.0F, -120.0F}) listened.panel.SetTempo(bad);
    for (const float bad : {kNaN, kInfinity, -kInfinity}) EXPECT_FALSE(listened.panel.EnterTempo(bad));
    EXPECT_EQ(listened.panel.GetTempo(), 120);
    EXPECT_EQ(listened.calls, 0);
}

TEST(MelodyProperties, ChoicesAreToldOnceWhenTheyChangeSomething) {
    ListenedMelody listened;
    EXPECT_TRUE(listened.panel.ChooseRoot(7));
    EXPECT_EQ(listened.panel.GetRoot(), 7);
    EXPECT_FALSE(listened.panel.ChooseRoot(7));
    EXPECT_TRUE(listened.panel.ChooseScale(5));
    EXPECT_EQ(listened.panel.GetScale(), 5);
    EXPECT_FALSE(listened.panel.ChooseScale(5));
    EXPECT_TRUE(listened.panel.EnterTempo(90));
    EXPECT_FALSE(listened.panel.EnterTempo(90));
    EXPECT_EQ(listened.calls, 3);
}

TEST(MelodyProperties, EnteredTemposAreHeldToTheRange) {
    CkvovirelaineMelodyProperties panel;
    panel.EnterTempo(19.9F);
    EXPECT_EQ(panel.GetTempo(), 20);
    panel.EnterTempo(1e30F);
    EXPECT_EQ(panel.GetTempo(), 999);
    panel.EnterTempo(-5);
    EXPECT_EQ(panel.GetTempo(), 20);
}

TEST(MelodyProperties, StepsAreTenthsAndWithShiftWhole) {
    ListenedMelody listened;
    listened.panel.SetTempo(120.5F);
    EXPECT_TRUE(listened.panel.StepTempo(1, false));
    EXPECT_EQ(listened.panel.GetTempo(), 120.6F);
    EXPECT_TRUE(listened.panel.StepTempo(-3, false));
    EXPECT_EQ(listened.panel.GetTempo(), 120.3F);
    EXPECT_TRUE(listened.panel.StepTempo(2, true));
    EXPECT_EQ(listened.panel.GetTempo(), 122.3F);
    EXPECT_FALSE(listened.panel.StepTempo(0, true));
    EXPECT_EQ(listened.calls, 3);
}

TEST(MelodyProperties, StepsLeadToTenthsAndStopAtTheEnds) {
    ListenedMelody listened;
    listened.panel.SetTempo(133.333F);
    listened.panel.StepTempo(1, false);
    EXPECT_EQ(listened.panel.GetTempo(), 133.4F);
    listened.panel.StepTempo(std::numeric_limits<std::int32_t>::max(), true);
    EXPECT_EQ(listened.panel.GetTempo(), 999);
    EXPECT_FALSE(listened.panel.StepTempo(1, false));
    listened.panel.StepTempo(std::numeric_limits<std::int32_t>::min(), false);
    EXPECT_EQ(listened.panel.GetTempo(), 20);
}

TEST(MelodyProperties, TwoToOneDoublesTheTempoWithinTheRange) {
    ListenedMelody listened;
    EXPECT_TRUE(listened.panel.PressRatio(kTempoDouble));
    EXPECT_EQ(listened.panel.GetTempo(), 240);
    EXPECT_TRUE(listened.panel.PressRatio(kTempoDouble));
    EXPECT_TRUE(listened.panel.PressRatio(kTempoDouble));
    EXPECT_EQ(listened.panel.GetTempo(), 960);
    EXPECT_TRUE(listened.panel.PressRatio(kTempoDouble));
    EXPECT_EQ(listened.panel.GetTempo(), 999);
    EXPECT_FALSE(listened.panel.PressRatio(kTempoDouble)); // it is as fast as it gets
    EXPECT_EQ(listened.calls, 4);
}

TEST(MelodyProperties, EachButtonMultipliesByWhatItSays) {
    const float expected[] = {240, 60, 160, 90};
    const char* const labels[] = {"2/1", "1/2", "4/3", "3/4"};
    for (std::int32_t button = 0; button < 4; ++button) {
        CkvovirelaineMelodyProperties panel;
        EXPECT_TRUE(panel.PressRatio(button));
        EXPECT_FLOAT_EQ(panel.GetTempo(), expected[button]);
        EXPECT_STREQ(kTempoRatios[static_cast<std::size_t>(button)].label, labels[button]);
    }
}

TEST(MelodyProperties, AThirdMoreAndAQuarterLessIsWhereItWas) {
    CkvovirelaineMelodyProperties panel;
    panel.SetTempo(100);
    panel.PressRatio(kTempoFourThirds);
    EXPECT_FLOAT_EQ(panel.GetTempo(), 133.33333F); // not cut to tenths
    panel.PressRatio(kTempoThreeQuarters);
    EXPECT_FLOAT_EQ(panel.GetTempo(), 100);
}

TEST(MelodyProperties, HalvingStopsAtTheLowerEnd) {
    CkvovirelaineMelodyProperties panel;
    panel.SetTempo(30);
    panel.PressRatio(kTempoHalf);
    EXPECT_EQ(panel.GetTempo(), 20);
}

TEST(MelodyProperties, ButtonsThatDoNotExistDoNothing) {
    ListenedMelody listened;
    EXPECT_FALSE(listened.panel.PressRatio(-1));
    EXPECT_FALSE(listened.panel.PressRatio(4));
    EXPECT_EQ(listened.panel.GetTempo(), 120);
    EXPECT_EQ(listened.calls, 0);
}

TEST(MelodyProperties, APanelThatIsNotActiveTakesNoHand) {
    ListenedMelody listened;
    listened.panel.SetActive(false);
    EXPECT_FALSE(listened.panel.IsActive());
    EXPECT_FALSE(listened.panel.ChooseRoot(3));
    EXPECT_FALSE(listened.panel.ChooseScale(3));
    EXPECT_FALSE(listened.panel.EnterTempo(90));
    EXPECT_FALSE(listened.panel.StepTempo(1, true));
    EXPECT_FALSE(listened.panel.PressRatio(kTempoDouble));
    EXPECT_EQ(listened.panel.GetRoot(), 0);
    EXPECT_EQ(listened.panel.GetScale(), 0);
    EXPECT_EQ(listened.panel.GetTempo(), 120);
    EXPECT_EQ(listened.calls, 0);
    listened.panel.SetTempo(90); // the application still may
    EXPECT_EQ(listened.panel.GetTempo(), 90);
}

} // namespace
} // namespace sonorelle
