#include "platform/numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>

namespace sonorelle {
namespace {

float ReadBack(const std::string& text) {
    float value = -1;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    return value;
}

TEST(FormatFloat, IsTheShortestText) {
    EXPECT_EQ(FormatFloat(0.1f), "0.1");
    EXPECT_EQ(FormatFloat(440.0f), "440");
    EXPECT_EQ(FormatFloat(-0.0f), "-0");
    EXPECT_EQ(FormatFloat(16777216.0f), "16777216");
    EXPECT_EQ(FormatFloat(1e-24f), "1e-24");
    EXPECT_EQ(FormatFloat(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(FormatFloat(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(FormatFloat(std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(FormatFloat, ReadsBackToTheSameBits) {
    constexpr std::uint32_t kSeed = 20240607;
    std::mt19937 random(kSeed);
    for (int i = 0; i < 20000; ++i) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value)) continue;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(ReadBack(FormatFloat(value))),
                  std::bit_cast<std::uint32_t>(value));
    }
    using Limits = std::numeric_limits<float>;
    for (const float value : {Limits::max(), Limits::lowest(), Limits::min(), Limits::denorm_min()})
        EXPECT_EQ(ReadBack(FormatFloat(value)), value);
}

TEST(FormatFixed, RoundsToTheGivenDecimals) {
    EXPECT_EQ(FormatFixed(2.0, 3), "2.000");
    EXPECT_EQ(FormatFixed(-1.2345, 2), "-1.23");
    EXPECT_EQ(FormatFixed(0.999, 2), "1.00");
    EXPECT_EQ(FormatFixed(440.5, 0), "440"); // a half goes to the even one
    EXPECT_EQ(FormatFixed(441.5, 0), "442");
}

TEST(FormatFixed, BearsTheLongestNumbersAndAbsurdDecimals) {
    EXPECT_EQ(FormatFixed(-std::numeric_limits<double>::max(), 20).size(), 1u + 309u + 1u + 20u);
    EXPECT_EQ(FormatFixed(0.5, 1000), "0.50000000000000000000");
    EXPECT_EQ(FormatFixed(0.5, -3), "0");
}

TEST(ReadLeadingNumber, ReadsWhatStandsInFront) {
    EXPECT_EQ(ReadLeadingNumber("0.5"), 0.5);
    EXPECT_EQ(ReadLeadingNumber("-440.25000000"), -440.25);
    EXPECT_EQ(ReadLeadingNumber(" \t\n+1e3 Hz"), 1000.0);
    EXPECT_EQ(ReadLeadingNumber(".5"), 0.5);
    EXPECT_EQ(ReadLeadingNumber("5."), 5.0);
    EXPECT_EQ(ReadLeadingNumber("1e"), 1.0);
    EXPECT_EQ(ReadLeadingNumber("0,5"), 0.0); // a comma is no decimal point anywhere
    EXPECT_EQ(ReadLeadingNumber("1.000.000"), 1.0);
}

TEST(ReadLeadingNumber, GivesNothingForWhatIsNoNumber) {
    for (const char* text : {"", " ", "abc", "-", "+", "+-1", "--1", "- 1", ".", "e5", "\xFF", "nan", "-nan",
                             "inf", "-infinity", "1e999", "-1e999"})
        EXPECT_EQ(ReadLeadingNumber(text), std::nullopt) << text;
    EXPECT_EQ(ReadLeadingNumber(std::string(100'000, '9')), std::nullopt);
}

TEST(ReadLeadingNumber, ReadsBackWhatWasWritten) {
    for (const double value : {0.0, -0.1, 440.0, 1e-8, 123456.78901234})
        EXPECT_NEAR(ReadLeadingNumber(FormatFixed(value, 8)).value(), value,
                    0.5e-8); // the last written digit, rounded
    EXPECT_TRUE(std::signbit(ReadLeadingNumber(FormatFixed(-0.0, 8)).value()));
}

TEST(ReadLeadingInteger, ReadsWhatStandsInFront) {
    EXPECT_EQ(ReadLeadingInteger("12"), 12);
    EXPECT_EQ(ReadLeadingInteger(" +12.7"), 12);
    EXPECT_EQ(ReadLeadingInteger("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ReadLeadingInteger("2147483647x"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ReadLeadingInteger("0x10"), 0);
}

TEST(ReadLeadingInteger, GivesNothingForWhatIsNoI32) {
    for (const char* text :
         {"", " ", "x", "-", "+-1", ".5", "2147483648", "-2147483649", "99999999999999999999"})
        EXPECT_EQ(ReadLeadingInteger(text), std::nullopt) << text;
}

} // namespace
} // namespace sonorelle
