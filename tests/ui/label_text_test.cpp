#include "ui/label_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sonorelle {
namespace {

LabelRun TextRun(const std::string& text, bool bold, int size, int lower = 0, int line = 0) {
    return {LabelShape::kText, text, bold, size, lower, line};
}

TEST(LabelText, PlainTextIsOneRun) {
    EXPECT_EQ(ParseLabel("Volume", 12), std::vector{TextRun("Volume", false, 12)});
}

TEST(LabelText, EmptyLabelHasNoRun) { EXPECT_TRUE(ParseLabel("", 12).empty()); }

TEST(LabelText, BoldTitleLosesItsCommandAndTheSpaceBehindIt) {
    EXPECT_EQ(ParseLabel("@b Snapshots", 12), std::vector{TextRun("Snapshots", true, 12)});
}

TEST(LabelText, ArrowsAreSmallAndLowerUntilTheLabelIsNormalAgain) {
    const std::vector<LabelRun> runs = ParseLabel("Host @y+1@s5@<@>@n Plug Offset", 12);
    ASSERT_EQ(runs.size(), 4U);
    EXPECT_EQ(runs[0], TextRun("Host ", false, 12));
    EXPECT_EQ(runs[1], (LabelRun{LabelShape::kArrowLeft, "", false, 5, 1, 0}));
    EXPECT_EQ(runs[2], (LabelRun{LabelShape::kArrowRight, "", false, 5, 1, 0}));
    EXPECT_EQ(runs[3], TextRun("Plug Offset", false, 12));
}

TEST(LabelText, ChordLabelHasASmallLoweredCaptionAndAChordOnItsOwnLine) {
    const std::vector<LabelRun> runs = ParseLabel("@s-8@y+6 chord:@s0\n@y+3 C M7", 20);
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0], TextRun(" chord:", false, 12, 6, 0));
    EXPECT_EQ(runs[1], TextRun(" C M7", false, 20, 3, 1));
}

TEST(LabelText, ShiftEndsWithItsLine) {
    const std::vector<LabelRun> runs = ParseLabel("@y-4a\nb", 12);
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].lower, -4);
    EXPECT_EQ(runs[1].lower, 0);
    EXPECT_EQ(runs[1].line, 1);
}

TEST(LabelText, EmptyLinesCount) {
    const std::vector<LabelRun> runs = ParseLabel("a\n\nb", 12);
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[1].line, 2);
}

TEST(LabelText, SignedSizesCountFromTheLabelsOwn) {
    EXPECT_EQ(ParseLabel("@s+3x", 12).front().size, 15);
    EXPECT_EQ(ParseLabel("@s-3x", 12).front().size, 9);
    EXPECT_EQ(ParseLabel("@s9x", 12).front().size, 9);
    EXPECT_EQ(ParseLabel("@s9@s0x", 12).front().size, 12);
}

TEST(LabelText, AbsurdNumbersStayWithinTheirBounds) {
    EXPECT_EQ(ParseLabel("@s99999999999999999999x", 12).front().size, kLargestLabel);
    EXPECT_EQ(ParseLabel("@s-99999999999999999999x", 12).front().size, 1);
    EXPECT_EQ(ParseLabel("x", -5).front().size, 1);
    EXPECT_LE(ParseLabel("@y99999999999999999999x", 12).front().lower, 200);
}

TEST(LabelText, SignItselfIsWrittenTwice) { EXPECT_EQ(PlainLabel("a@@b"), "a@b"); }

TEST(LabelText, UnknownCommandsAndALoneSignStandAsTheyAre) { EXPECT_EQ(PlainLabel("a@xb@"), "a@xb@"); }

TEST(LabelText, PlainLabelKeepsLinesAndDropsMarkup) {
    EXPECT_EQ(PlainLabel("@b Tuning @s5Freq\n@y+3 440"), "Tuning Freq\n 440");
}

} // namespace
} // namespace sonorelle
