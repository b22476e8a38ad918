#include "app/time_display.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <string>

namespace sonorelle {
namespace {

constexpr float kRate = 44100;

// Text.

TEST(FormatTime, ShowsMinutesSecondsAndMilliseconds) {
    EXPECT_EQ(FormatTime(0, kRate), "0:00.000");
    EXPECT_EQ(FormatTime(44100, kRate), "0:01.000");
    EXPECT_EQ(FormatTime(62.5 * 44100, kRate), "1:02.500");
    EXPECT_EQ(FormatTime(600 * 44100, kRate), "10:00.000");
    EXPECT_EQ(FormatTime(7 * 48000, 48000), "0:07.000");
    EXPECT_EQ(FormatTime(48, 48000), "0:00.001");
}

TEST(FormatTime, ATimeBeforeZeroHasALeadingMinus) {
    EXPECT_EQ(FormatTime(-0.25 * 44100, kRate), "-0:00.250");
    EXPECT_EQ(FormatTime(-62.5 * 44100, kRate), "-1:02.500");
    EXPECT_EQ(FormatTime(-1, kRate), "0:00.000") << "nearer to zero than to a millisecond";
}

TEST(FormatTime, RoundsUpOverSecondsAndMinutes) {
    EXPECT_EQ(FormatTime(44099, kRate), "0:01.000");
    EXPECT_EQ(FormatTime(60 * 44100 - 1, kRate), "1:00.000");
}

TEST(FormatTime, NumbersWithoutATimeAreHarmless) {
    EXPECT_EQ(FormatTime(kDoubleNaN, kRate), "0:00.000");
    EXPECT_EQ(FormatTime(kDoubleInfinity, kRate), "0:00.000");
    EXPECT_EQ(FormatTime(44100, 0), "0:00.000");
    EXPECT_EQ(FormatTime(44100, -1), "0:00.000");
    EXPECT_EQ(FormatTime(44100, static_cast<float>(kDoubleNaN)), "0:00.000");
    EXPECT_EQ(FormatTime(1e24, kRate).substr(0, 11), "2147483647:") << "minutes end with an i32";
    EXPECT_EQ(FormatTime(-1e24, kRate).substr(0, 12), "-2147483647:");
}

// Entry.

double EnteredSeconds(const char* text) {
    const auto samples = ParseTime(text, kRate);
    return samples ? *samples / 44100.0 : kDoubleNaN;
}

TEST(ParseTime, OneMinuteTwoAndAHalfSecondsAre62AndAHalfSecondsInSamples) {
    EXPECT_EQ(ParseTime("1:02.500", 44100), 62.5 * 44100);
    EXPECT_EQ(ParseTime("1:02.500", 48000), 62.5 * 48000);
    EXPECT_EQ(ParseTime("1:2.5", 44100), 62.5 * 44100);
}

TEST(ParseTime, TwelveWithoutPointOrColonAreMilliseconds) {
    EXPECT_EQ(ParseTime("12", 48000), 576);
    EXPECT_EQ(ParseTime("12", 44100), 529); // 529.2: whole samples
    EXPECT_EQ(ParseTime("0", 44100), 0);
}

TEST(ParseTime, WithAPointItIsSeconds) {
    EXPECT_EQ(EnteredSeconds("2.5"), 2.5);
    EXPECT_EQ(EnteredSeconds(".5"), 0.5);
    EXPECT_EQ(EnteredSeconds("3."), 3);
    EXPECT_EQ(EnteredSeconds("  2.5 s"), 2.5);
}

TEST(ParseTime, WithAColonItIsMinutesAndSeconds) {
    EXPECT_EQ(EnteredSeconds("2:30"), 150);
    EXPECT_EQ(EnteredSeconds("2:"), 120);
    EXPECT_EQ(EnteredSeconds("2:x"), 120);
    EXPECT_EQ(EnteredSeconds("2x:30"), 120) << "the colon must follow the minutes";
    EXPECT_EQ(EnteredSeconds("2x30:"), 120);
    EXPECT_EQ(EnteredSeconds("2:-5"), 120);
    EXPECT_EQ(EnteredSeconds("2: 5"), 125);
}

TEST(ParseTime, MillisecondsEndAt999SecondsAt59MinutesAt999) {
    EXPECT_EQ(ParseTime("999", 48000), 999 * 48);
    EXPECT_EQ(ParseTime("1500", 48000), 999 * 48);
    EXPECT_EQ(EnteredSeconds("75.5"), 59.5);
    EXPECT_EQ(EnteredSeconds("1:75.5"), 119.5);
    EXPECT_EQ(EnteredSeconds("1000:00"), 999 * 60);
    EXPECT_EQ(ParseTime("59.9996", 48000), 59999 * 48) << "no millisecond 1000";
    EXPECT_EQ(ParseTime("99999999999999999999", 48000), 999 * 48);
    EXPECT_EQ(EnteredSeconds("99999999999999999999:0"), 999 * 60);
    EXPECT_EQ(EnteredSeconds("0:1e300"), 59);
}

TEST(ParseTime, AMinusHoldsForTheWhole) {
    EXPECT_EQ(EnteredSeconds("-1:02.500"), -62.5);
    EXPECT_EQ(EnteredSeconds("-0:30"), -30);
    EXPECT_EQ(EnteredSeconds("-2.5"), -2.5);
    EXPECT_EQ(ParseTime("-12", 48000), -576);
    EXPECT_EQ(EnteredSeconds("+2.5"), 2.5);
    EXPECT_FALSE(std::signbit(*ParseTime("-0", 48000)));
}

TEST(ParseTime, TextsThatAreNoTimeGiveNothing) {
    for (const char* text : {"", " ", "-", "abc", "x12", ":", ":30", "-:30", "--5", ".", "..", "a.5", "nan",
                             "inf", "\n", "%d:%f"})
        EXPECT_FALSE(ParseTime(text, kRate).has_value()) << text;
    EXPECT_FALSE(ParseTime("12", 0).has_value());
    EXPECT_FALSE(ParseTime("12", static_cast<float>(kDoubleInfinity)).has_value());
    EXPECT_EQ(ParseTime(std::string(1 << 20, '9'), 48000), 999 * 48);
    EXPECT_EQ(ParseTime(std::string("12\0:5", 5), 48000), 12 * 60 * 48000);
}

TEST(ParseTime, EveryMillisecondComesBackAsItWasEntered) {
    for (const float rate : {8000.0F, 44100.0F, 48000.0F, 96000.0F}) {
        for (std::int32_t millisecond = 0; millisecond < 1000; ++millisecond) {
            const std::string digits = std::to_string(1000 + millisecond).substr(1);
            const std::string text = "3:07." + digits;
            EXPECT_EQ(FormatTime(ParseTime(text, rate).value_or(-1), rate), text);
        }
    }
}

// A numbers' way of a German host: commas and points change places.
class GermanNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ParseTime, IsTheSameUnderEveryLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new GermanNumbers));
    EXPECT_EQ(ParseTime("1:02.500", kRate), 62.5 * 44100);
    EXPECT_EQ(FormatTime(1000 * 60.0 * 44100, kRate), "1000:00.000");
    EXPECT_EQ(ParseTime("1:02,500", kRate), 62.0 * 44100) << "a comma ends the number";
    std::locale::global(before);
}

// The display.

struct TimeDisplayRig {
    TimeDisplayRig() {
        display.SetOnChanged([this] { ++calls; });
    }
    CkvoTimeDisplay display;
    int calls = 0;
};

TEST(TimeDisplay, EntrySetsTheValueAndTells) {
    TimeDisplayRig rig;
    EXPECT_TRUE(rig.display.Enter("1:02.500"));
    EXPECT_EQ(rig.display.GetValue(), 62.5 * 44100);
    EXPECT_EQ(rig.display.GetText(), "1:02.500");
    EXPECT_EQ(rig.calls, 1);
    EXPECT_TRUE(rig.display.Enter("1:02.5"));
    EXPECT_EQ(rig.calls, 1) << "nothing has changed";
    EXPECT_FALSE(rig.display.Enter("rubbish"));
    EXPECT_EQ(rig.display.GetValue(), 62.5 * 44100);
    EXPECT_EQ(rig.calls, 1);
}

TEST(TimeDisplay, HoldsValuesToItsRange) {
    TimeDisplayRig rig;
    EXPECT_TRUE(rig.display.SetValue(-kDoubleInfinity));
    EXPECT_EQ(rig.display.GetValue(), -1e24);
    rig.display.SetRange(0, 100);
    EXPECT_TRUE(rig.display.SetValue(-5));
    EXPECT_EQ(rig.display.GetValue(), 0);
    EXPECT_TRUE(rig.display.SetValue(5000));
    EXPECT_EQ(rig.display.GetValue(), 100);
    EXPECT_FALSE(rig.display.SetValue(kDoubleNaN));
    EXPECT_EQ(rig.display.GetValue(), 100);
    rig.display.SetRange(5, 4);
    rig.display.SetRange(kDoubleNaN, 4);
    EXPECT_EQ(rig.display.GetMinimum(), 0);
    EXPECT_EQ(rig.display.GetMaximum(), 100);
    EXPECT_TRUE(rig.display.Enter("-3:00"));
    EXPECT_EQ(rig.display.GetValue(), 0);
}

TEST(TimeDisplay, ShowsAndTakesSamplesOnRequest) {
    TimeDisplayRig rig;
    rig.display.SetShowSamples(true);
    EXPECT_TRUE(rig.display.Enter("44100"));
    EXPECT_EQ(rig.display.GetValue(), 44100);
    EXPECT_EQ(rig.display.GetText(), "44100");
    EXPECT_TRUE(rig.display.Enter("-7"));
    EXPECT_EQ(rig.display.GetText(), "-7");
    EXPECT_FALSE(rig.display.Enter("x"));
    rig.display.SetShowSamples(false);
    EXPECT_TRUE(rig.display.Enter("1.0"));
    EXPECT_EQ(rig.display.GetText(), "0:01.000");
}

TEST(TimeDisplay, TheWheelStepsTheValueAndShowsTheTip) {
    TimeDisplayRig rig;
    rig.display.SetShowSamples(true);
    rig.display.TurnWheel(3);
    rig.display.TurnWheel(-1);
    EXPECT_EQ(rig.display.GetValue(), 2);
    EXPECT_EQ(rig.calls, 2);
    EXPECT_TRUE(rig.display.GetTip().IsVisible());
    EXPECT_EQ(rig.display.GetTip().GetText(), "2");
    rig.display.HideTip();
    EXPECT_FALSE(rig.display.GetTip().IsVisible());
    rig.display.TurnWheel(0);
    EXPECT_EQ(rig.calls, 2);
}

TEST(TimeDisplay, ADragStepsByPixelsShowsTheTipAndTellsOnceAtItsEnd) {
    TimeDisplayRig rig;
    rig.display.SetValue(44100);
    rig.display.BeginDrag();
    EXPECT_FALSE(rig.display.GetTip().IsVisible());
    rig.display.DragTo(4410);
    EXPECT_EQ(rig.display.GetValue(), 48510);
    EXPECT_TRUE(rig.display.GetTip().IsVisible());
    EXPECT_EQ(rig.display.GetTip().GetText(), "0:01.100");
    rig.display.DragTo(-44100);
    EXPECT_EQ(rig.display.GetValue(), 0);
    EXPECT_EQ(rig.calls, 0);
    rig.display.EndDrag();
    EXPECT_FALSE(rig.display.GetTip().IsVisible());
    EXPECT_EQ(rig.calls, 1);
}

TEST(TimeDisplay, ADragBackToItsStartAndOneThatNeverBeganTellNothing) {
    TimeDisplayRig rig;
    rig.display.BeginDrag();
    rig.display.DragTo(5);
    rig.display.DragTo(0);
    rig.display.EndDrag();
    rig.display.DragTo(99);
    rig.display.EndDrag();
    EXPECT_EQ(rig.display.GetValue(), 0);
    EXPECT_EQ(rig.calls, 0);
}

TEST(TimeDisplay, ANewRateKeepsTheSamples) {
    TimeDisplayRig rig;
    rig.display.SetValue(48000);
    rig.display.SetSampleRate(48000);
    EXPECT_EQ(rig.display.GetText(), "0:01.000");
    for (const float bad : {0.0F, -1.0F, static_cast<float>(kDoubleNaN), static_cast<float>(kDoubleInfinity)})
        rig.display.SetSampleRate(bad);
    EXPECT_EQ(rig.display.GetSampleRate(), 48000);
    EXPECT_EQ(rig.calls, 0);
}

TEST(TimeDisplay, TellsHowItIsUsed) {
    EXPECT_STREQ(CkvoTimeDisplay::kTip,
                 "drag up/down or use\nmousewheel to change value\n\nto enter value, double click");
}

TEST(TipWin, IsALittleLargerThanItsText) {
    EXPECT_EQ(SizeOfTip(40, 12), (TipSize{50, 14}));
    EXPECT_EQ(SizeOfTip(0, 0), (TipSize{10, 2}));
}

TEST(TipWin, ShowsItsTextAsItStandsWhileTheButtonIsHeld) {
    TipWin tip;
    EXPECT_FALSE(tip.IsVisible());
    tip.Show("100 %s %n");
    EXPECT_TRUE(tip.IsVisible());
    EXPECT_EQ(tip.GetText(), "100 %s %n");
    tip.Hide();
    EXPECT_FALSE(tip.IsVisible());
}

} // namespace
} // namespace sonorelle
