#include "app/choir_style_rows.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace sonorelle {
namespace {

struct StyleCase {
    const char* name;
    std::int32_t mode;
    std::int32_t voices;
    StyleDetail detail;
    std::int32_t detailCount;
    DriverStyle driver;
};

constexpr StyleCase kCases[kStyleRows] = {
    {"Intelligent 4 Voices", 0, 4, StyleDetail::kArrangementSlider, 0, {0, 0}},
    {"Intelligent 3 Voices", 0, 3, StyleDetail::kArrangementSlider, 0, {0, 1}},
    {"Intelligent 2 Voices", 0, 2, StyleDetail::kArrangementSlider, 0, {0, 2}},
    {"Block Chord 4 Voices", 4, 4, StyleDetail::kBlockList, 9, {2, 0}},
    {"Fauxbourdon 3 Voices", 8, 3, StyleDetail::kFauxbourdonList, 4, {3, 0}},
    {"Organum 2/3 Voices", 16, 2, StyleDetail::kOrganumList, 7, {4, 0}},
    {"Parallel manual 4 Voices", 1, 4, StyleDetail::kIntervalRows, 0, {1, 0}},
    {"Parallel manual 2 Voices", 1, 2, StyleDetail::kIntervalRows, 0, {1, 1}},
};

TEST(StyleRows, EachRowHasItsModeVoicesAndDetails) {
    for (std::int32_t row = 0; row < kStyleRows; ++row) {
        const StyleCase& expected = kCases[row];
        SCOPED_TRACE(expected.name);
        EXPECT_STREQ(ConsortierClassic::StyleList()[static_cast<std::size_t>(row)].name, expected.name);
        EXPECT_EQ(ModeOfRow(row), expected.mode);
        EXPECT_EQ(VoicesOfRow({row, 0}), expected.voices);
        EXPECT_EQ(DetailOfRow(row), expected.detail);
        EXPECT_EQ(DetailCountOfRow(row), expected.detailCount);
        EXPECT_EQ(DriverStyleOfRow({row, 0}), expected.driver);
    }
}

TEST(StyleRows, OrganumHasAThirdVoiceOnlyWithOctaveAround) {
    for (std::int32_t detail = 0; detail < 6; ++detail) EXPECT_EQ(VoicesOfRow({5, detail}), 2);
    EXPECT_EQ(VoicesOfRow({5, 6}), 3);
}

TEST(StyleRows, EveryDetailIsAnArrangementOfTheDriverAndComesBack) {
    for (std::int32_t row = 0; row < kStyleRows; ++row) {
        for (std::int32_t detail = 0; detail < std::max(DetailCountOfRow(row), 1); ++detail) {
            const StyleRow there{row, detail};
            const DriverStyle driver = DriverStyleOfRow(there);
            EXPECT_EQ(StyleRowOfDriver(driver.style, driver.arrangement), there) << row << ", " << detail;
        }
    }
    EXPECT_EQ(DriverStyleOfRow({3, 8}), (DriverStyle{2, 8}));
}

TEST(StyleRows, WhatNoRowStandsForIsRowZero) {
    constexpr auto kHuge = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(StyleRowOfDriver(99, 0), (StyleRow{0, 0}));
    EXPECT_EQ(StyleRowOfDriver(4, 7), (StyleRow{0, 0}));
    EXPECT_EQ(StyleRowOfDriver(-kHuge, kHuge), (StyleRow{0, 0}));
    EXPECT_EQ(DriverStyleOfRow({kHuge, 0}), (DriverStyle{0, 0}));
    EXPECT_EQ(DriverStyleOfRow({-1, 0}), (DriverStyle{0, 0}));
    EXPECT_EQ(DriverStyleOfRow({3, 9}), (DriverStyle{2, 0}));
    EXPECT_EQ(DriverStyleOfRow({3, -1}), (DriverStyle{2, 0}));
}

TEST(StyleRows, AModeTellsThePage) {
    for (const std::int32_t mode : {0, 1, 4, 8, 16, 5, -7, 0x10002})
        EXPECT_EQ(PageOfMode(mode), ChoirPage::kAutomatic) << mode;
    EXPECT_EQ(PageOfMode(2), ChoirPage::kEdit);
    EXPECT_EQ(PageOfMode(3), ChoirPage::kEdit);
    EXPECT_EQ(PageOfMode(0x10000), ChoirPage::kLive);
    EXPECT_EQ(PageOfMode(0x10001), ChoirPage::kLive);
}

TEST(StyleRows, AModeTakesTheFirstRowThatItStandsForUnlessThePresentOneIsOne) {
    EXPECT_EQ(RowOfMode(0, 2), 2);
    EXPECT_EQ(RowOfMode(0, 5), 0);
    EXPECT_EQ(RowOfMode(1, 7), 7);
    EXPECT_EQ(RowOfMode(1, 0), 6);
    EXPECT_EQ(RowOfMode(4, 0), 3);
    EXPECT_EQ(RowOfMode(8, 0), 4);
    EXPECT_EQ(RowOfMode(16, 0), 5);
    for (const std::int32_t silent : {2, 3, 0x10000, 0x10001, 77, -1}) EXPECT_EQ(RowOfMode(silent, 4), 4);
}

} // namespace
} // namespace sonorelle
