#include "cli/report_table.h"

#include "cli/melody_report.h"
#include "cli/note_names.h"
#include "cli/text_columns.h"
#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr int kLevelDecimals = 3;
constexpr float kCents = 100;

std::string Seconds(const MelodyReport& report, std::int32_t position) {
    return FormatFixed(SecondsOf(report, position), kSecondsDecimals);
}

std::string RateText(float hertz) {
    const auto rate = static_cast<double>(hertz);
    return FormatFixed(rate, std::floor(rate) == rate ? 0 : kHertzDecimals) + " Hz";
}

std::string ChannelsText(std::int32_t channels) {
    const char* name = channels == 1 ? " (mono)" : channels == 2 ? " (stereo)" : "";
    return std::to_string(channels) + name;
}

std::string TuningText(const MelodyReport& report) {
    const std::string hertz = FormatFixed(static_cast<double>(report.tuningHz), kHertzDecimals) + " Hz";
    const float cents = report.tuningOffset * kCents;
    if (!(std::fabs(cents) <= kCents)) return hertz;
    return hertz + " (" + CentsText(static_cast<std::int32_t>(std::lround(cents))) + " cents)";
}

std::string Heading(const MelodyReport& report) {
    return PrintableText(report.file) + "\n" +
           FormatColumns({Align::kLeft, Align::kLeft},
                         {{"Rate", RateText(report.sampleRate)},
                          {"Channels", ChannelsText(report.channels)},
                          {"Length", Seconds(report, report.frames) + " s (" + std::to_string(report.frames) +
                                         " frames)"},
                          {"Marks", std::to_string(report.markCount)},
                          {"Tuning", TuningText(report)},
                          {"Key", KeyName(report.key)},
                          {"Cache", CacheUseName(report.cache)},
                          {"Time", FormatFixed(report.elapsedSeconds, kSecondsDecimals) + " s"}});
}

// Names left, cents right: "A#3  +12" above "C4    -3".
std::vector<std::string> PitchColumn(const std::vector<NoteRecord>& notes) {
    std::size_t nameWidth = 0;
    std::size_t centsWidth = 0;
    for (const NoteRecord& note : notes) {
        const std::optional<NamedPitch> named = NearestNote(note.pitch);
        if (!named) continue;
        nameWidth = std::max(nameWidth, NoteName(named->midiNote).size());
        centsWidth = std::max(centsWidth, CentsText(named->cents).size());
    }
    std::vector<std::string> column;
    for (const NoteRecord& note : notes) {
        const std::optional<NamedPitch> named = NearestNote(note.pitch);
        column.push_back(named ? Pad(NoteName(named->midiNote), nameWidth, Align::kLeft) + " " +
                                     Pad(CentsText(named->cents), centsWidth, Align::kRight)
                               : "-");
    }
    return column;
}

std::string NoteTable(const MelodyReport& report) {
    const std::vector<std::string> pitches = PitchColumn(report.notes);
    std::vector<std::vector<std::string>> rows = {
        {"Note", "Start (s)", "End (s)", "Length (s)", "Pitch", "Level"}};
    for (std::size_t i = 0; i < report.notes.size(); ++i) {
        const NoteRecord& note = report.notes[i];
        rows.push_back({std::to_string(i + 1), Seconds(report, note.start), Seconds(report, note.end),
                        Seconds(report, note.length), pitches[i],
                        FormatFixed(static_cast<double>(note.level), kLevelDecimals)});
    }
    return FormatColumns(
        {Align::kRight, Align::kRight, Align::kRight, Align::kRight, Align::kLeft, Align::kRight}, rows);
}

} // namespace

std::string FormatTable(const MelodyReport& report) {
    return Heading(report) + "\n" + (report.notes.empty() ? "  No notes.\n" : NoteTable(report));
}

} // namespace sonorelle
