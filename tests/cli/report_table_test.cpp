#include "cli/report_table.h"

#include "cli/sample_report.h"
#include "cli/text_columns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace sonorelle {
namespace {

using test::SampleReport;

TEST(FormatTable, ShowsTheRecordingAndItsNotes) {
    EXPECT_EQ(FormatTable(SampleReport()), "song.wav\n"
                                           "  Rate      44100 Hz\n"
                                           "  Channels  1 (mono)\n"
                                           "  Length    30.000 s (1323000 frames)\n"
                                           "  Marks     5\n"
                                           "  Tuning    441.27 Hz (+5 cents)\n"
                                           "  Key       A major\n"
                                           "  Cache     written\n"
                                           "  Time      0.123 s\n"
                                           "\n"
                                           "  Note  Start (s)  End (s)  Length (s)  Pitch    Level\n"
                                           "     1      0.100    1.100       1.000  A#3 +12  0.412\n"
                                           "     2     10.000   10.500       0.500  C4   +0  0.500\n"
                                           "     3     25.000   25.250       0.250  F7   -3  0.030\n");
}

TEST(FormatTable, SaysSoWhenThereAreNoNotes) {
    MelodyReport report = SampleReport();
    report.notes.clear();
    report.key = -1;
    report.cache = CacheUse::kLoaded;
    report.channels = 2;
    report.sampleRate = 22050.5F;
    report.tuningOffset = -0.25F;
    const std::string table = FormatTable(report);
    EXPECT_NE(table.find("\n\n  No notes.\n"), std::string::npos) << table;
    EXPECT_NE(table.find("  Key       none\n"), std::string::npos) << table;
    EXPECT_NE(table.find("  Cache     loaded\n"), std::string::npos) << table;
    EXPECT_NE(table.find("  Channels  2 (stereo)\n"), std::string::npos) << table;
    EXPECT_NE(table.find("  Rate      22050.50 Hz\n"), std::string::npos) << table;
    EXPECT_NE(table.find("(-25 cents)\n"), std::string::npos) << table;
}

TEST(FormatTable, ColumnsStayAlignedForAnyWidth) {
    MelodyReport report = SampleReport();
    report.notes.resize(1200, report.notes[0]);
    report.notes[1100].start = 2000000000;
    report.notes[7].pitch = std::nanf("");
    report.notes[8].pitch = -13.3F;
    std::istringstream lines(FormatTable(report));
    std::string line;
    std::vector<std::string> rows;
    while (std::getline(lines, line)) rows.push_back(line);
    const std::size_t heading = 10;
    ASSERT_EQ(rows.size(), heading + 1 + 1200);
    for (std::size_t i = heading; i < rows.size(); ++i)
        EXPECT_EQ(rows[i].size(), rows[heading].size()) << rows[i];
    EXPECT_NE(rows[heading + 8].find("  -  "), std::string::npos) << rows[heading + 8];
}

TEST(FormatTable, HostileNamesAndValuesDoNoHarm) {
    MelodyReport report = SampleReport();
    report.file = "a\x1b]0;x\a\n.wav";
    report.tuningOffset = std::nanf("");
    report.tuningHz = std::nanf("");
    report.notes[0].level = 3e38F;
    const std::string table = FormatTable(report);
    EXPECT_EQ(table.rfind("a\\x1b]0;x\\x07\\n.wav\n", 0), 0U) << table;
    EXPECT_EQ(table.find('\x1b'), std::string::npos);
}

TEST(FormatColumns, CountsCharactersNotBytes) {
    EXPECT_EQ(FormatColumns({Align::kLeft, Align::kRight}, {{"éü", "1"}, {"a", "22"}}),
              "  éü   1\n  a   22\n");
}

TEST(FormatColumns, LeavesNoBlanksAtLineEnds) {
    EXPECT_EQ(FormatColumns({Align::kLeft, Align::kLeft}, {{"a", "bb"}, {"a", "b"}, {"a"}, {}}),
              "  a  bb\n  a  b\n  a\n\n");
}

} // namespace
} // namespace sonorelle
