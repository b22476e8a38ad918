#include "sound_report.h"

#include "sound_tables.h"

#include "cli/text_columns.h"

#include <cstdarg>
#include <cstdio>

namespace sonorelle::tools {
namespace {

// What the pitch ought to keep to.
constexpr PitchTargets kOnSongs{3.0, 15.0};
constexpr PitchTargets kOnRecordings{5.0, 25.0};

} // namespace

std::string Text(const char* format, ...) {
    char buffer[900];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

std::string Marked(const std::string& text, bool holds) { return holds ? text : text + kMissed; }

std::string Interval(int semitones) { return semitones == 0 ? "0" : Text("%+d", semitones); }

SoundFigures Pooled(const SoundResults& results, std::map<int, SoundFigures> SoundResult::*which,
                    int interval) {
    SoundFigures all;
    for (const SoundResult& result : results) {
        const auto found = (result.*which).find(interval);
        if (found != (result.*which).end()) all += found->second;
    }
    return all;
}

std::vector<ReportTable> MakeTables(const SoundResults& songs, const SoundResults& recordings) {
    std::vector<ReportTable> tables;
    SoundResults all = songs;
    all.insert(all.end(), recordings.begin(), recordings.end());
    tables.push_back(UnisonTable(all));
    for (const SoundResults* results : {&songs, &recordings}) {
        if (results->empty()) continue;
        const bool ofSongs = results == &songs;
        const char* const what = ofSongs ? "synthetic singer" : "recordings";
        const PitchTargets& targets = ofSongs ? kOnSongs : kOnRecordings;
        tables.push_back(PitchTable(*results, targets, ofSongs));
        tables.push_back(PitchBySound(*results, targets, what));
        tables.push_back(FormantTable(*results, ofSongs));
        tables.push_back(ColourTable(*results, ofSongs));
        tables.push_back(TimeTable(*results, what));
        tables.push_back(HissTable(*results, what));
    }
    tables.push_back(LeadTable(all));
    return tables;
}

std::size_t CountMissed(const std::vector<ReportTable>& tables) {
    std::size_t count = 0;
    for (const ReportTable& table : tables)
        for (const ReportRow& row : table.rows)
            for (const std::string& cell : row)
                if (cell.find(kMissed) != std::string::npos) ++count;
    return count;
}

std::string AsText(const ReportTable& table) {
    std::vector<Align> alignments(table.rows.front().size(), Align::kRight);
    alignments.front() = Align::kLeft;
    return table.title + "\n" + table.note + "\n\n" + FormatColumns(alignments, table.rows) + "\n";
}

std::string AsMarkdown(const ReportTable& table) {
    std::string text = "## " + table.title + "\n\n";
    if (!table.note.empty()) text += table.note + "\n\n";
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        for (std::string cell : table.rows[i]) {
            const std::size_t at = cell.find(kMissed);
            if (at != std::string::npos) cell = "**" + cell.substr(0, at) + ", missed**";
            text += "| " + cell + " ";
        }
        text += "|\n";
        if (i > 0) continue;
        for (std::size_t column = 0; column < table.rows[0].size(); ++column)
            text += column == 0 ? "|---" : "|---:";
        text += "|\n";
    }
    return text + "\n";
}

} // namespace sonorelle::tools
