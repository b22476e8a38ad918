#include "cli/report_csv.h"

#include "cli/sample_report.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

using test::SampleReport;

TEST(FormatCsv, IsOneLineAFrame) {
    EXPECT_EQ(CsvHeading(false), "seconds,pitch,voiced,level,period,salience\n");
    EXPECT_EQ(FormatCsv(SampleReport(), false), "0.000000,0,0,0,0,0\n"
                                                "0.100000,58.1,1,0.25,196,12.5\n"
                                                "1.100000,58.2,1,0.5,195,11\n"
                                                "10.500000,60,1,1,169,10\n"
                                                "25.250000,100.9,1,0.0625,16,6\n");
}

TEST(FormatCsv, AFirstColumnNamesTheFile) {
    MelodyReport report = SampleReport();
    report.curve.resize(1);
    EXPECT_EQ(CsvHeading(true), "file,seconds,pitch,voiced,level,period,salience\n");
    EXPECT_EQ(FormatCsv(report, true), "song.wav,0.000000,0,0,0,0,0\n");
    report.file = "one, \"two\".wav";
    EXPECT_EQ(FormatCsv(report, true), "\"one, \"\"two\"\".wav\",0.000000,0,0,0,0,0\n");
    report.file = "a\nb\x1b.wav"; // still one line a frame
    EXPECT_EQ(FormatCsv(report, true), "a\\nb\\x1b.wav,0.000000,0,0,0,0,0\n");
}

TEST(FormatCsv, ARateOfNothingDoesNotDivide) {
    MelodyReport report = SampleReport();
    report.sampleRate = 0;
    report.curve.resize(2);
    EXPECT_EQ(FormatCsv(report, false), "0.000000,0,0,0,0,0\n0.000000,58.1,1,0.25,196,12.5\n");
}

} // namespace
} // namespace sonorelle
