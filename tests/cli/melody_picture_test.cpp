#include "cli/melody_picture.h"

#include "cli/piano_roll.h"
#include "cli/sample_report.h"
#include "cli/xml_check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace sonorelle {
namespace {

using test::CountOf;
using test::SampleReport;
using test::XmlFault;

constexpr const char* kBarOutline = "fill=\"#ff8f4c\" stroke=\"#ff5f00\"";

MelodyReport LongReport(std::int32_t frames) {
    MelodyReport report = SampleReport();
    report.notes.clear();
    report.curve.clear();
    std::mt19937 random(11);
    std::uniform_real_distribution<float> anyPitch(55, 67);
    for (std::int32_t position = 0; position < frames; position += 100) {
        report.curve.push_back({position, anyPitch(random), position % 40000 != 0, 0.5F, 100, 10});
    }
    report.frames = frames;
    return report;
}

TEST(DrawMelody, IsAWellFormedPictureOfEveryNote) {
    const std::string svg = DrawMelody(SampleReport());
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(CountOf(svg, kBarOutline), 3U) << svg;
    EXPECT_EQ(CountOf(svg, "<title>A#3 +12, 0.100 to 1.100 s</title>"), 1U);
    EXPECT_EQ(CountOf(svg, "bold\">C4</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">loudness</text>"), 1U);
    EXPECT_NE(svg.find("Key: A major"), std::string::npos);
    EXPECT_NE(svg.find("A4 = 441.3 Hz"), std::string::npos);
    EXPECT_NE(svg.find("fill=\"#d2d7dd\""), std::string::npos); // the ground
}

TEST(DrawMelody, TheCurveBreaksWhereNothingIsVoiced) {
    MelodyReport report = SampleReport();
    report.curve.clear();
    for (int i = 0; i < 60; ++i) {
        const bool hasNoPeriod = i == 45;
        report.curve.push_back({i * 22050, hasNoPeriod ? 0.0F : 60.0F, i / 10 % 2 == 0, 0.5F, 100, 10});
    }
    const std::string svg = DrawMelody(report);
    EXPECT_EQ(CountOf(svg, "<polyline"), 4U)
        << "three voiced runs, the last cut in two by a frame without a period";
}

TEST(DrawMelody, ATenMinuteCurveIsAsLongAsThePictureIsWide) {
    const std::string minute = DrawMelody(LongReport(44100 * 60));
    const std::string tenMinutes = DrawMelody(LongReport(44100 * 600));
    EXPECT_EQ(XmlFault(tenMinutes), "");
    EXPECT_LT(minute.size(), 1000000U);
    EXPECT_LT(tenMinutes.size(), 1000000U); // 9600 columns of at most 4 points of some 16 bytes
    EXPECT_GT(tenMinutes.size(), 100000U);
}

TEST(DrawMelody, OutliersDoNotFlattenTheRest) {
    MelodyReport report = LongReport(44100 * 10);
    report.curve[100].midiPitch = 120;
    report.curve[200].midiPitch = 10;
    const std::string svg = DrawMelody(report);
    EXPECT_EQ(CountOf(svg, "bold\">C8</text>"), 0U);
    EXPECT_EQ(CountOf(svg, "bold\">C0</text>"), 0U);
    EXPECT_EQ(CountOf(svg, "bold\">C4</text>"), 1U);
}

TEST(DrawMelody, HostileValuesStillGiveAPicture) {
    const float infinity = std::numeric_limits<float>::infinity();
    MelodyReport report = SampleReport();
    report.file = "dir/<&\"'>\x1b\n\xff\xef\xbf\xbe.wav";
    report.tuningHz = std::nanf("");
    report.notes[0].pitch = 3e38F;
    report.notes[1].pitch = std::nanf("");
    report.notes[2].start = std::numeric_limits<std::int32_t>::max();
    report.notes[2].end = std::numeric_limits<std::int32_t>::min();
    report.curve[1].midiPitch = infinity;
    report.curve[2].level = -1;
    report.curve[3].level = std::nanf("");
    report.curve[4].level = infinity;
    const std::string svg = DrawMelody(report);
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(svg.find("inf"), std::string::npos);
}

TEST(DrawMelody, OfNothingIsAnEmptyRoll) {
    const std::string svg = DrawMelody(MelodyReport{});
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(CountOf(svg, kBarOutline), 0U);
    EXPECT_NE(svg.find("0 notes"), std::string::npos);
}

TEST(DrawPianoRoll, NamesStandOnlyWhereTheyFit) {
    PianoRoll roll;
    roll.seconds = 10;
    roll.span = SpanOf({60.0F});
    roll.voices = {{0, {{1.0, 2.0, 62.25F}, {3.0, 3.2, 62.0F}, {4.0, 4.05, 62.0F}}}};
    const std::string svg = DrawPianoRoll(roll); // some 110 pixels a second
    EXPECT_EQ(CountOf(svg, ">D4 +25</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">D4</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">D4 +0</text>"), 0U);
}

TEST(DrawPianoRoll, EachVoiceHasItsColour) {
    PianoRoll roll;
    roll.seconds = 10;
    roll.span = SpanOf({60.0F});
    for (std::size_t voice = 0; voice < 4; ++voice) roll.voices.push_back({voice, {{1.0, 2.0, 60.0F}}});
    const std::string svg = DrawPianoRoll(roll);
    for (const char* outline :
         {"stroke=\"#ff5f00\"", "stroke=\"#c81405\"", "stroke=\"#2e2ed5\"", "stroke=\"#147405\""}) {
        EXPECT_EQ(CountOf(svg, outline), 1U) << outline;
    }
}

} // namespace
} // namespace sonorelle
