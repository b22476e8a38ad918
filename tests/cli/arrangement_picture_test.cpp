#include "cli/arrangement_picture.h"

#include "cli/sample_arrangement.h"
#include "cli/xml_check.h"
#include "harmony/styles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace sonorelle {
namespace {

using namespace ConsortierClassic;
using test::CountOf;
using test::SampleArrangement;
using test::XmlFault;

// How many bars, the swatch of the legend among them, have the colour.
std::size_t Bars(const std::string& svg, const std::string& colour) {
    return CountOf(svg, "stroke=\"" + colour + "\" stroke-width=\"1.4\"");
}

// The number of an attribute in the tag that ends at `end`; -1 where it has none.
double AttributeBefore(const std::string& svg, std::size_t end, const std::string& name) {
    if (end == std::string::npos) return -1;
    const std::size_t tag = svg.rfind('<', end);
    const std::string wanted = " " + name + "=\"";
    const std::size_t place = svg.find(wanted, tag);
    return place < end ? std::stod(svg.substr(place + wanted.size())) : -1;
}

// Height of the bar in this colour whose tip begins so; -1 for none.
double HeightOfBar(const std::string& svg, const std::string& colour, const std::string& tip) {
    return AttributeBefore(svg, svg.find(" stroke=\"" + colour + "\" stroke-width=\"1.4\"><title>" + tip),
                           "height");
}

// The base line of a text; -1 where it is not written.
double BaseOf(const std::string& svg, const std::string& text) {
    return AttributeBefore(svg, svg.find(">" + text + "</text>"), "y");
}

TEST(DrawArrangement, ShowsEveryVoiceInItsColour) {
    const std::string svg = DrawArrangement(SampleArrangement(), false);
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(Bars(svg, "#ff5f00"), 4U);
    EXPECT_EQ(Bars(svg, "#c81405"), 4U);
    EXPECT_EQ(Bars(svg, "#2e2ed5"), 3U); // silent in the last note
    EXPECT_EQ(Bars(svg, "#147405"), 4U);
    for (const char* name : {"melody", "red voice", "blue voice", "green voice"})
        EXPECT_EQ(CountOf(svg, std::string(">") + name + "</text>"), 1U) << name;
    EXPECT_EQ(CountOf(svg, "<title>A2 +0, 0.100 to 1.100 s</title>"), 1U);
    EXPECT_GE(CountOf(svg, "<polyline"), 1U); // the sung pitch
    EXPECT_NE(svg.find(">Intelligent 4 Voices   \u00b7   A Major   \u00b7   range 1, spread 0.6</text>"),
              std::string::npos)
        << svg;
}

TEST(DrawArrangement, NamesEachChordWhereItBegins) {
    const std::string svg = DrawArrangement(SampleArrangement(), false);
    EXPECT_EQ(CountOf(svg, ">A</text>"), 1U); // once for the two notes that it lasts
    EXPECT_EQ(CountOf(svg, ">f# m7</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">chords</text>"), 1U);
    ArrangementReport report = SampleArrangement();
    report.hasChords = false;
    EXPECT_EQ(CountOf(DrawArrangement(report, false), ">chords</text>"), 0U);
}

TEST(DrawArrangement, ChordsThatFollowCloselyTakeAnotherLine) {
    ArrangementReport report = SampleArrangement();
    report.notes.resize(2);
    for (std::size_t i = 0; i < 2; ++i)
        report.notes[i].melody.start = static_cast<std::int32_t>(44100 + i * 4410);
    report.notes[0].chord = {6, 4, kNoTriad, kMinorSeventh};
    report.notes[1].chord = {8, 4, kNoTriad, kHalfDiminished};
    const std::string svg = DrawArrangement(report, false);
    ASSERT_GT(BaseOf(svg, "f# m7"), 0);
    ASSERT_GT(BaseOf(svg, "g# m7b5"), 0);
    EXPECT_GT(BaseOf(svg, "f# m7") - BaseOf(svg, "g# m7b5"), 12); // apart by more than a letter's height
}

TEST(DrawArrangement, VoicesOnOnePitchShareTheBar) {
    const std::string svg = DrawArrangement(SampleArrangement(), false);
    const std::string tip = "C#4 +0, 10.000";
    const double whole = HeightOfBar(svg, "#c81405", "A2 +0, 10.000");
    ASSERT_GT(whole, 0);
    EXPECT_NEAR(HeightOfBar(svg, "#ff5f00", tip), whole / 2, 0.01);
    EXPECT_NEAR(HeightOfBar(svg, "#147405", tip), whole / 2, 0.01);
}

TEST(DrawArrangement, IsTransposedAsItSounds) {
    ArrangementReport report = SampleArrangement();
    report.settings.transpose = 3;
    const std::string svg = DrawArrangement(report, false);
    EXPECT_EQ(CountOf(svg, "<title>C3 +0, 0.100 to 1.100 s</title>"), 1U);
    EXPECT_EQ(CountOf(svg, ">C</text>"), 1U); // the chord
    EXPECT_NE(svg.find("   \u00b7   C Major   \u00b7   range 1, spread 0.6   \u00b7   transposed +3<"),
              std::string::npos);
}

TEST(DrawArrangement, TellsTheSettingsThatItsStyleGoesBy) {
    ArrangementReport report = SampleArrangement();
    report.settings.style = kStyleParallel;
    report.settings.arrangement = kParallelTwo;
    report.voiceCount = 2;
    EXPECT_NE(DrawArrangement(report, true)
                  .find(">Parallel manual 2 Voices   \u00b7   A Major   \u00b7   Prime, Down Third<"),
              std::string::npos);
    report.settings.style = kStyleBlock;
    report.settings.arrangement = kDrop2;
    report.settings.harmonyScale = 3;
    EXPECT_NE(DrawArrangement(report, true)
                  .find(">Block Chord 4 Voices, Drop2   \u00b7   A Major, harmony in Lydian<"),
              std::string::npos);
}

TEST(DrawArrangement, VeilsWhatLiesOutsideOfTheRegion) {
    ArrangementReport report = SampleArrangement();
    EXPECT_EQ(CountOf(DrawArrangement(report, false), "fill-opacity"), 0U);
    report.settings.regionStart = 44100;
    EXPECT_EQ(CountOf(DrawArrangement(report, false), "fill-opacity"), 2U);
}

TEST(DrawArrangement, ASmallOneIsNarrowAndWithoutLoudness) {
    const std::string svg = DrawArrangement(SampleArrangement(), true);
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(CountOf(svg, "width=\"860\""), 2U); // of the picture and of its ground
    EXPECT_EQ(CountOf(svg, ">loudness</text>"), 0U);
}

TEST(DrawArrangement, HostileValuesStillGiveAPicture) {
    ArrangementReport report = SampleArrangement();
    report.melody.file = "<&\"'>\x1b\n\xff.wav";
    report.melody.sampleRate = 0;
    report.notes[0].voices = {std::numeric_limits<std::int32_t>::max() - 24, 100000, -100000, 0};
    report.notes[0].chord = {-1000, 4, 99, -99};
    report.notes[1].melody.start = std::numeric_limits<std::int32_t>::min();
    report.notes[1].melody.end = std::numeric_limits<std::int32_t>::max();
    report.settings.transpose = 24;
    EXPECT_EQ(XmlFault(DrawArrangement(report, false)), "");
    EXPECT_EQ(XmlFault(DrawArrangement(ArrangementReport{}, true)), "");
}

} // namespace
} // namespace sonorelle
