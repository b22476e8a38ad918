#include "app/voice_rows.h"

#include <gtest/gtest.h>

#include <limits>

namespace sonorelle {
namespace {

constexpr std::int32_t kOrange = 0;
constexpr std::int32_t kRed = 1;
constexpr std::int32_t kBlue = 2;
constexpr std::int32_t kGreen = 3;

std::int32_t DistanceOfRows(const VoiceRows& rows) { return rows[1].y - rows[0].y; }

TEST(VoiceRows, LieInTheMiddleOfThePanelAtEqualDistances) {
    // 4 voices, range 0.6, 130 pixels: 0.25 / 1.3 x 0.9 x 130 is 22.5, rows of 10, first at
    // (130 - 3 x 22 - 10) / 2.
    const VoiceRows rows = LayOutVoiceRows(4, 0.6F, 130);
    for (std::int32_t i = 0; i < 4; ++i) {
        const VoiceRow& row = rows[static_cast<std::size_t>(i)];
        EXPECT_EQ(row.x, 5);
        EXPECT_EQ(row.y, 27 + 22 * i);
        EXPECT_EQ(row.width, 50);
        EXPECT_EQ(row.height, 10);
        EXPECT_TRUE(row.visible);
    }
}

TEST(VoiceRows, SpreadAsTheRangeGrows) {
    // 100 pixels, 4 voices: 0.25 / 1.3 x (range + 0.3) x 100.
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, 0.0F, 100)), 5);  // 5.77
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, 0.3F, 100)), 11); // 11.54
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, 0.8F, 100)), 21); // 21.15
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, 1.0F, 100)), 25);
    // 2 voices have twice the room.
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(2, 0.8F, 100)), 42); // 42.3
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(3, 0.8F, 100)), 28); // 28.2
}

TEST(VoiceRows, AreLowerThanTenPixelsOnlyOnALowPanelWithAWideRange) {
    EXPECT_EQ(LayOutVoiceRows(4, 1.0F, 101)[0].height, 10);
    EXPECT_EQ(LayOutVoiceRows(4, 1.0F, 50)[0].height, 5); // a tenth of it, 5.0
    EXPECT_EQ(LayOutVoiceRows(4, 0.5F, 14)[0].height, 8); // 0.6 x 14 is 8.4
    EXPECT_EQ(LayOutVoiceRows(4, 0.6F, 18)[0].height, 9); // 0.5 x 18, whatever 0.6 is in binary
    EXPECT_EQ(LayOutVoiceRows(4, 0.0F, 50)[0].height, 10);
}

TEST(VoiceRows, AStyleOfFewerVoicesHidesTheExtraRows) {
    for (std::int32_t voices = 1; voices <= 4; ++voices) {
        const VoiceRows rows = LayOutVoiceRows(voices, 0.6F, 130);
        for (std::int32_t i = 0; i < 4; ++i)
            EXPECT_EQ(rows[static_cast<std::size_t>(i)].visible, i < voices)
                << voices << " voices, row " << i;
    }
}

TEST(VoiceRows, ValuesBeyondTheirEndsCountAsTheEnds) {
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, 7.0F, 100)), 25);
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, -std::numeric_limits<float>::infinity(), 100)), 5);
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(4, std::numeric_limits<float>::quiet_NaN(), 100)), 5);
    EXPECT_EQ(DistanceOfRows(LayOutVoiceRows(9, 1.0F, 100)), 25);
    EXPECT_FALSE(LayOutVoiceRows(-3, 1.0F, 100)[1].visible);
    EXPECT_EQ(LayOutVoiceRows(4, 0.6F, -5)[0].y, 0);
    EXPECT_GT(LayOutVoiceRows(4, 0.6F, std::numeric_limits<std::int32_t>::max())[0].y, 0);
}

struct OrderRow {
    std::int32_t voices;
    std::int32_t voicesAbove;
    VoiceOrder order;
};

TEST(VoiceOrder, TheMelodyGoesDownAsVoicesComeAboveIt) {
    const OrderRow rows[] = {
        {4, 0, {kOrange, kGreen, kBlue, kRed}},      {4, 1, {kGreen, kOrange, kBlue, kRed}},
        {4, 2, {kGreen, kBlue, kOrange, kRed}},      {4, 3, {kGreen, kBlue, kRed, kOrange}},
        {3, 0, {kOrange, kRed, kBlue, kNoVoice}},    {3, 1, {kBlue, kOrange, kRed, kNoVoice}},
        {3, 2, {kBlue, kRed, kOrange, kNoVoice}},    {3, 3, {kBlue, kRed, kOrange, kNoVoice}},
        {2, 0, {kOrange, kRed, kNoVoice, kNoVoice}}, {2, 1, {kRed, kOrange, kNoVoice, kNoVoice}},
        {2, 2, {kRed, kOrange, kNoVoice, kNoVoice}}, {2, 3, {kRed, kOrange, kNoVoice, kNoVoice}},
    };
    for (const OrderRow& row : rows) {
        EXPECT_EQ(OrderOfVoices(row.voices, row.voicesAbove), row.order)
            << row.voices << " voices, " << row.voicesAbove << " above";
        // The place of the melody is the count of voices above it, as far as there are as many.
        const auto place = static_cast<std::size_t>(std::min(row.voicesAbove, row.voices - 1));
        EXPECT_EQ(OrderOfVoices(row.voices, row.voicesAbove)[place], kOrange);
    }
}

TEST(VoiceOrder, NumbersWithoutMeaningReachNoTable) {
    constexpr auto kHuge = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(OrderOfVoices(kHuge, kHuge), OrderOfVoices(4, 3));
    EXPECT_EQ(OrderOfVoices(4, -kHuge), OrderOfVoices(4, 0));
    EXPECT_EQ(OrderOfVoices(-kHuge, 2), (VoiceOrder{kOrange, kNoVoice, kNoVoice, kNoVoice}));
}

} // namespace
} // namespace sonorelle
