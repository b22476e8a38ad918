#include "cli/colour.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sonorelle {
namespace {

TEST(Colour, HexTextHasSixDigits) {
    EXPECT_EQ(HexText(FromRgb(0xff5f00)), "#ff5f00");
    EXPECT_EQ(HexText(FromRgb(0x00000a)), "#00000a");
}

TEST(Colour, LerpRunsFromTheFirstToTheSecond) {
    const Colour a = FromRgb(0x102030);
    const Colour b = FromRgb(0xf0e0d0);
    EXPECT_EQ(Lerp(a, b, 0), a);
    EXPECT_EQ(Lerp(a, b, 1), b);
    EXPECT_EQ(Lerp(a, b, -1), a);
    EXPECT_EQ(Lerp(a, b, 2), b);
    EXPECT_EQ(Lerp(a, b, std::nanf("")), a);
    EXPECT_EQ(HexText(Lerp(kBlack, kWhite, 0.5F)), "#7f7f7f"); // 127.5, cut
}

TEST(Colour, VoicesHaveTheirTints) {
    EXPECT_EQ(HexText(kVoiceColours[0]), "#ff5f00");
    EXPECT_EQ(HexText(kVoiceColours[1]), "#c81405");
    EXPECT_EQ(HexText(kVoiceColours[2]), "#2e2ed5");
    EXPECT_EQ(HexText(kVoiceColours[3]), "#147405");
    // 0.7 x 95 + 0.3 x 255 = 143.0, 0.3 x 255 = 76.5.
    const Colour lead = WidgetColour(kVoiceColours[0]);
    EXPECT_EQ(lead.red, 255);
    EXPECT_NEAR(lead.green, 143, 1); // a whole number whose last bit of f32 decides the cut
    EXPECT_EQ(lead.blue, 76);
}

TEST(Colour, PanelIsNineTenthsOfItsBase) {
    // 0.9 x 206 + 25.5 = 210.9, 0.9 x 211 + 25.5 = 215.4, 0.9 x 218 + 25.5 = 221.7
    EXPECT_EQ(HexText(PanelColour()), "#d2d7dd");
}

} // namespace
} // namespace sonorelle
