#include "cli/colour.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

TEST(Colour, HexTextHasSixDigits) {
    EXPECT_EQ(HexText(ColourFromRgb(0xff5f00)), "#ff5f00");
    EXPECT_EQ(HexText(ColourFromRgb(0x00000a)), "#00000a");
}

} // namespace
} // namespace sonorelle
