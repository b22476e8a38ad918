#include "app/voice_colours.h"

#include <gtest/gtest.h>

#include <cmath>

#include <algorithm>

namespace sonorelle {
namespace {

TEST(VoiceColours, AreOrangeRedBlueAndGreen) {
    EXPECT_EQ(RgbFromColour(kVoiceColours[0]), 0xff5f00U);
    EXPECT_EQ(RgbFromColour(kVoiceColours[1]), 0xc81405U);
    EXPECT_EQ(RgbFromColour(kVoiceColours[2]), 0x2e2ed5U);
    EXPECT_EQ(RgbFromColour(kVoiceColours[3]), 0x147405U);
}

TEST(VoiceColours, LerpGoesStraightFromOneToTheOther) {
    EXPECT_EQ(LerpColour(kWhite, kVoiceColours[0], 0), kWhite);
    EXPECT_EQ(LerpColour(kWhite, kVoiceColours[0], 1), kVoiceColours[0]);
    EXPECT_EQ(LerpColour({0, 100, 200}, {100, 200, 0}, 0.5F), (Colour{50, 150, 100}));
    EXPECT_EQ(LerpColour(kWhite, kBlack, -3), kWhite);
    EXPECT_EQ(LerpColour(kWhite, kBlack, 3), kBlack);
    EXPECT_EQ(LerpColour(kWhite, kBlack, std::nanf("")), kWhite);
}

TEST(VoiceColours, WidgetsAndPanelsArePaler) {
    EXPECT_EQ(WidgetColour(kVoiceColours[0]), (Colour{255, 143, 76})); // 76.5 + 66.5; 76.5, cut
    EXPECT_EQ(kPanelColour, (Colour{210, 215, 221}));                  // 25.5 + 0.9 x 206, 211, 218, cut
    EXPECT_EQ(kLightBackground, kWhite);
    EXPECT_EQ(kOverviewOutside, (Colour{196, 196, 196})); // 255 x 0.77, cut
    EXPECT_EQ(kOverviewInside, (Colour{216, 216, 216}));  // 255 x 0.85, cut
}

TEST(VoiceColours, ChordsStartAtOrangeAndWalkAroundTheChannels) {
    EXPECT_EQ(RgbFromColour(kChordColours[0]), 0xffa500U);
    EXPECT_EQ(kChordColours[1], (Colour{155, 214, 23}));
    EXPECT_EQ(kChordColours[2], (Colour{55, 7, 46}));    // 165 + 98 wraps
    EXPECT_EQ(kChordColours[3], (Colour{211, 56, 69}));  // 255 - 300 wraps
    EXPECT_EQ(kChordColours[15], (Colour{35, 132, 89})); // 255 - 1500, 165 + 735, 345
    for (std::size_t i = 0; i < kChordColours.size(); ++i) {
        EXPECT_EQ(std::count(kChordColours.begin(), kChordColours.end(), kChordColours[i]), 1) << i;
    }
}

} // namespace
} // namespace sonorelle
