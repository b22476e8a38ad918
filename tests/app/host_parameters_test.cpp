#include "app/host_parameters.h"

#include "support/hostile_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>

namespace sonorelle {
namespace {

using Kind = HostParameterKind;

constexpr std::int32_t kNoIndices[] = {-1, 32, std::numeric_limits<std::int32_t>::max(),
                                       std::numeric_limits<std::int32_t>::min()};

Kind KindOf(std::int32_t number) { return static_cast<Kind>(number); }

// --- Numbers of parameters ---

TEST(HostParameters, SixOfEachVoiceComeFirstThenTwoOfEach) {
    for (std::int32_t index = 0; index < 32; ++index) {
        const auto parameter = HostParameterAt(index);
        ASSERT_TRUE(parameter);
        const std::int32_t voice = index < 24 ? index / 6 : (index - 24) / 2;
        const std::int32_t kind = index < 24 ? index % 6 : 6 + (index - 24) % 2;
        EXPECT_EQ(parameter->voice, voice) << index;
        EXPECT_EQ(parameter->kind, KindOf(kind)) << index;
        EXPECT_EQ(HostParameterIndex(voice, KindOf(kind)), index);
    }
}

TEST(HostParameters, Parameter31IsTheTimingOfVoiceThree) {
    EXPECT_EQ(*HostParameterAt(31), (HostParameter{3, Kind::kTiming}));
}

TEST(HostParameters, Parameter24IsTheGlideOfVoiceZero) {
    EXPECT_EQ(*HostParameterAt(24), (HostParameter{0, Kind::kGlide}));
}

TEST(HostParameters, AnIndexThatIsNoneHasNothing) {
    for (const std::int32_t index : kNoIndices) {
        EXPECT_FALSE(HostParameterAt(index));
        EXPECT_EQ(HostParameterName(index), "");
        EXPECT_EQ(HostParameterUnit(index), "");
        EXPECT_EQ(HostParameterDisplayForValue(index, 0.5F), "");
        EXPECT_EQ(GetHostParameterRange(index).most, 0);
    }
}

TEST(HostParameters, TheControlsOfAStripFindTheirParameters) {
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kVolume), voice * 6);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kPan), voice * 6 + 1);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kDelay), voice * 6 + 2);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kTune), voice * 6 + 3);  // change code 4
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kShape), voice * 6 + 4); // change code 3
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kDrift), voice * 6 + 5);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kGlide), 24 + voice * 2);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kTime), 25 + voice * 2);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kSwitch), -1);
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kNone), -1);
    }
    for (const std::int32_t voice : {-1, 4}) {
        EXPECT_EQ(HostParameterIndex(voice, VoiceControl::kVolume), -1);
        EXPECT_EQ(HostParameterIndex(voice, Kind::kTiming), -1);
    }
    EXPECT_EQ(HostParameterIndex(0, KindOf(8)), -1);
    EXPECT_EQ(HostParameterIndex(0, KindOf(-1)), -1);
}

// --- Values ---

TEST(HostParameters, ParameterZeroAtThreeQuartersIsGain0Point99975) {
    EXPECT_FLOAT_EQ(ModelFromHostValue(Kind::kVolume, 0.75F), 0.99975F);
}

TEST(HostParameters, HostValuesBecomeModelValues) {
    struct Row {
        Kind kind;
        float atZero;
        float atQuarter;
        float atOne;
    };
    const Row rows[] = {
        {Kind::kVolume, 0, 0.33325F, 1.333F},
        {Kind::kPan, -1, -0.5F, 1},
        {Kind::kDelay, 0, 0.025F, 0.1F},
        {Kind::kTune, 0, 0.25F, 1},
        {Kind::kShape, 0.62996052F, 0.79370053F, 1.5874011F}, // 2 to the -8, -4 and 8 twelfths
        {Kind::kDrift, 1, 0.5F, -1},
        {Kind::kGlide, 0, 0.25F, 1},
        {Kind::kTiming, 0, 0.05F, 0.2F},
    };
    for (const Row& row : rows) {
        const int kind = static_cast<int>(row.kind);
        EXPECT_FLOAT_EQ(ModelFromHostValue(row.kind, 0), row.atZero) << kind;
        EXPECT_FLOAT_EQ(ModelFromHostValue(row.kind, 0.25F), row.atQuarter) << kind;
        EXPECT_FLOAT_EQ(ModelFromHostValue(row.kind, 1), row.atOne) << kind;
        EXPECT_NEAR(HostValueFromModel(row.kind, row.atZero), 0, 1e-6) << kind;
        EXPECT_NEAR(HostValueFromModel(row.kind, row.atQuarter), 0.25, 1e-6) << kind;
        EXPECT_NEAR(HostValueFromModel(row.kind, row.atOne), 1, 1e-6) << kind;
    }
}

TEST(HostParameters, HostValuesComeBack) {
    for (std::int32_t kind = 0; kind < 8; ++kind)
        for (int step = 0; step <= 128; ++step) {
            const float value = static_cast<float>(step) / 128;
            // The logarithm of a formant costs a last digit of 16 semitones.
            EXPECT_NEAR(HostValueFromModel(KindOf(kind), ModelFromHostValue(KindOf(kind), value)), value,
                        5e-7)
                << kind;
        }
}

TEST(HostParameters, ModelValuesAreOnesThatTheControlsCanHave) {
    for (std::int32_t kind = 0; kind < 8; ++kind)
        for (const float value : {0.0F, 0.3F, 1.0F, -5.0F, 5.0F, kInfinity, -kInfinity, kNaN})
            EXPECT_TRUE(IsStoredValue(ControlOfKind(KindOf(kind)), ModelFromHostValue(KindOf(kind), value)))
                << kind << " " << value;
}

TEST(HostParameters, HostValuesAreHeldToZeroAndOne) {
    for (std::int32_t number = 0; number < 8; ++number) {
        const Kind kind = KindOf(number);
        EXPECT_EQ(ModelFromHostValue(kind, -3), ModelFromHostValue(kind, 0)) << number;
        EXPECT_EQ(ModelFromHostValue(kind, 3), ModelFromHostValue(kind, 1)) << number;
        EXPECT_EQ(ModelFromHostValue(kind, kNaN), ModelFromHostValue(kind, 0)) << number;
        for (const float model : {-1e30F, -2.0F, 0.0F, 2.0F, 1e30F, kInfinity, -kInfinity, kNaN}) {
            const float value = HostValueFromModel(kind, model);
            EXPECT_TRUE(value >= 0 && value <= 1) << number << " " << model;
        }
    }
}

TEST(HostParameters, EachKindReadsItsOwnValueOfTheSettings) {
    VoiceSettings settings;
    settings.vol = 0.66650003F;
    settings.pan = 0.5F;
    settings.delay = 0.025F;
    settings.quantize = 0.125F;
    settings.formantShift = std::exp2(4.0F / 12);
    settings.drift = -0.75F;
    settings.glide = 0.375F;
    settings.timing = 0.12F;
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kVolume, settings), 0.5F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kPan, settings), 0.75F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kDelay, settings), 0.25F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kTune, settings), 0.125F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kShape, settings), 0.75F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kDrift, settings), 0.875F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kGlide, settings), 0.375F);
    EXPECT_FLOAT_EQ(GetHostValue(Kind::kTiming, settings), 0.6F);
    EXPECT_EQ(GetModelValue(Kind::kDrift, settings), -0.75F);
}

// --- What counts as a change ---

TEST(HostParameters, VolumeAndPanMoveByTheSmallestAmount) {
    for (const Kind kind : {Kind::kVolume, Kind::kPan}) {
        EXPECT_FALSE(Differs(kind, 0.5F, 0.5F));
        EXPECT_TRUE(Differs(kind, 0.5F, std::nextafter(0.5F, 1.0F)));
    }
}

TEST(HostParameters, TheOthersMoveByMoreThanAHundredthOfTheirStoredUnit) {
    for (std::int32_t number = 2; number < 8; ++number) {
        const Kind kind = KindOf(number);
        EXPECT_FALSE(Differs(kind, 0, 0)) << number;
        EXPECT_FALSE(Differs(kind, 0, 0.01F)) << number;
        EXPECT_FALSE(Differs(kind, 0, -0.01F)) << number;
        EXPECT_TRUE(Differs(kind, 0, 0.0101F)) << number;
        EXPECT_TRUE(Differs(kind, 0.0101F, 0)) << number;
    }
}

TEST(HostParameters, WhatIsNotFiniteIsNoChange) {
    for (std::int32_t number = 0; number < 8; ++number) {
        for (const float bad : {kNaN, kInfinity, -kInfinity}) {
            EXPECT_FALSE(Differs(KindOf(number), 0, bad)) << number;
            EXPECT_FALSE(Differs(KindOf(number), bad, 0)) << number;
            EXPECT_FALSE(ModelChangeFromHost(KindOf(number), {}, bad)) << number;
        }
    }
}

TEST(HostParameters, AHostValueGivesTheNewModelValueOrNone) {
    VoiceSettings settings;
    EXPECT_FLOAT_EQ(*ModelChangeFromHost(Kind::kVolume, settings, 0.75F), 0.99975F);
    settings.vol = 1.333F;
    EXPECT_FALSE(ModelChangeFromHost(Kind::kVolume, settings, 1));
    EXPECT_FALSE(ModelChangeFromHost(Kind::kVolume, settings, 7));      // held to 1
    EXPECT_FALSE(ModelChangeFromHost(Kind::kTiming, settings, 0.049F)); // below 10 ms
    EXPECT_FLOAT_EQ(*ModelChangeFromHost(Kind::kTiming, settings, 0.051F), 0.0102F);
    EXPECT_FALSE(ModelChangeFromHost(Kind::kGlide, settings, 0.505F));
    EXPECT_EQ(*ModelChangeFromHost(Kind::kGlide, settings, 0.75F), 0.75F);
    EXPECT_FLOAT_EQ(*ModelChangeFromHost(Kind::kShape, settings, 1), 1.5874011F);
}

// --- Texts ---

TEST(HostParameters, NamesAreTheVoiceAndTheKind) {
    const char* const voices[] = {"orange voice", "red voice", "blue voice", "green voice"};
    const char* const kinds[] = {" volume", " pan",   " delay", " tune",
                                 " shape",  " drift", " glide", " timing"};
    for (std::int32_t voice = 0; voice < 4; ++voice)
        for (std::int32_t kind = 0; kind < 8; ++kind)
            EXPECT_EQ(HostParameterName(HostParameterIndex(voice, KindOf(kind))),
                      std::string(voices[voice]) + kinds[kind]);
    EXPECT_EQ(HostParameterName(31), "green voice timing");
}

TEST(HostParameters, UnitsAndRanges) {
    struct Row {
        std::int32_t index;
        const char* unit;
        float least;
        float most;
        bool logarithmic;
    };
    const Row rows[] = {
        {0, " dB ", 0, 1.333F, true}, {1, " L-R ", -1, 1, false},       {2, " ms ", 0, 100, false},
        {3, " % ", 0, 100, false},    {4, " semitones ", -8, 8, false}, {5, " % ", 0, 200, false},
        {24, " % ", 0, 100, false},   {25, " % ", 0, 100, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(HostParameterUnit(row.index), row.unit);
        const HostParameterRange range = GetHostParameterRange(row.index);
        EXPECT_EQ(range.least, row.least) << row.index;
        EXPECT_EQ(range.most, row.most) << row.index;
        EXPECT_EQ(range.logarithmic, row.logarithmic) << row.index;
    }
}

TEST(HostParameters, TextsShowTheValueAsTheControlDoes) {
    EXPECT_EQ(DisplayText(Kind::kVolume, 0), "-oo");
    EXPECT_EQ(DisplayText(Kind::kVolume, 0.5F), "-6.0");
    EXPECT_EQ(DisplayText(Kind::kVolume, 1), "0.0");
    EXPECT_EQ(DisplayText(Kind::kPan, -0.5F), "-0.5");
    EXPECT_EQ(DisplayText(Kind::kDelay, 0.035F), "35.0");
    EXPECT_EQ(DisplayText(Kind::kTune, 0.25F), "25.0");
    EXPECT_EQ(DisplayText(Kind::kShape, std::exp2(-4.0F / 12)), "-4.0");
    EXPECT_EQ(DisplayText(Kind::kDrift, -1), "200.0");
    EXPECT_EQ(DisplayText(Kind::kGlide, 0.5F), "50.0");
    EXPECT_EQ(DisplayText(Kind::kTiming, 0.036F), "18.0");
}

TEST(HostParameters, AValueIsShownWithItsUnitBehindIt) {
    EXPECT_EQ(HostParameterDisplayForValue(0, 0), "-oo dB ");
    EXPECT_EQ(HostParameterDisplayForValue(6, 1), "2.5 dB ");
    EXPECT_EQ(HostParameterDisplayForValue(1, 0.75F), "0.5 L-R ");
    EXPECT_EQ(HostParameterDisplayForValue(2, 0.5F), "50.0 ms ");
    EXPECT_EQ(HostParameterDisplayForValue(3, 1), "100.0 % ");
    EXPECT_EQ(HostParameterDisplayForValue(4, 0), "-8.0 semitones ");
    EXPECT_EQ(HostParameterDisplayForValue(5, 1), "200.0 % ");
    EXPECT_EQ(HostParameterDisplayForValue(24, 0.5F), "50.0 % ");
    EXPECT_EQ(HostParameterDisplayForValue(31, 0.5F), "50.0 % ");
    EXPECT_EQ(HostParameterDisplayForValue(2, kInfinity), "100.0 ms ");
    EXPECT_EQ(HostParameterDisplayForValue(2, kNaN), "0.0 ms ");
}

} // namespace
} // namespace sonorelle
