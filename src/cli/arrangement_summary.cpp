#include "cli/arrangement_summary.h"

#include "cli/arrangement_names.h"
#include "cli/arrangement_report.h"
#include "cli/report_table.h"
#include "cli/text_columns.h"
#include "cli/unicode_text.h"
#include "harmony/styles.h"
#include "platform/numbers.h"

#include <vector>

namespace sonorelle {

namespace {

constexpr std::size_t kLineWidth = 68; // of the chords, beside the headings

using Rows = std::vector<std::vector<std::string>>;

// The key that the analysis found is known as a number of its own: major from C, then minor from C.
bool IsKeyAsFound(const ArrangementReport& report) {
    const std::int32_t key = report.melody.key;
    return key >= 0 && report.settings.root == key % 12 && report.settings.scale == key / 12 * 5;
}

std::string KeyText(const ArrangementReport& report) {
    const UsedSettings& settings = report.settings;
    std::string text = KeyAndScaleName(settings.root, settings.scale);
    if (IsKeyAsFound(report)) {
        text += " (as found in the recording)";
    } else if (report.melody.key < 0) {
        text += " (none was found in the recording)";
    } else {
        text += " (found: " + KeyAndScaleName(report.melody.key % 12, report.melody.key / 12 * 5) + ")";
    }
    return text;
}

std::string StyleText(const ArrangementReport& report) {
    const UsedSettings& settings = report.settings;
    const std::string arrangement = ArrangementName(settings.style, settings.arrangement);
    return StyleName(settings.style, settings.arrangement) + (arrangement.empty() ? "" : ", " + arrangement);
}

// The chords in their order, each as often as it comes anew, in lines of a readable width.
void AddChords(Rows& rows, const ArrangementReport& report) {
    std::string line;
    std::string heading = "Chords";
    const auto endLine = [&] {
        if (!line.empty()) rows.push_back({heading, line});
        heading.clear();
        line.clear();
    };
    for (std::size_t i = 0; i < report.notes.size(); ++i) {
        if (i > 0 && IsSameHarmony(report.notes[i].chord, report.notes[i - 1].chord)) continue;
        const std::string name = ChordText(report, report.notes[i].chord);
        if (!line.empty() && line.size() + 2 + name.size() > kLineWidth) endLine();
        line += (line.empty() ? "" : "  ") + name;
    }
    if (!line.empty()) endLine();
}

// What is not as usual.
void AddSound(Rows& rows, const ArrangementReport& report) {
    const UsedSettings& settings = report.settings;
    if (settings.speed != 1) rows.push_back({"Speed", FormatFloat(settings.speed) + " times as fast"});
    if (settings.tuning != report.melody.tuningHz)
        rows.push_back(
            {"Tuning", FormatFloat(settings.tuning) + " Hz (found: " +
                           FormatFixed(static_cast<double>(report.melody.tuningHz), kHertzDecimals) +
                           " Hz)"});
    if (settings.preset != kDefaultPreset) rows.push_back({"Preset", PresetName(settings.preset)});
    const VoiceStrips usual = StripsOfPreset(settings.preset);
    std::string heading = "Voices";
    for (std::size_t voice = 0; voice < usual.size(); ++voice) {
        const std::string changes = StripChanges(settings.voices[voice], usual[voice]);
        if (changes.empty()) continue;
        rows.push_back({heading, VoiceName(static_cast<std::int32_t>(voice)) + ":" + changes});
        heading.clear();
    }
}

void AddFiles(Rows& rows, std::string heading, const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        rows.push_back({heading, PrintableText(file)});
        heading.clear();
    }
}

// What the user hears as distortion, and what to do about it.
void AddLimited(Rows& rows, const ArrangementReport& report) {
    if (report.limitedFrames < 1) return;
    const double milliseconds =
        1000.0 * static_cast<double>(report.limitedFrames) / static_cast<double>(report.melody.sampleRate);
    rows.push_back({"Clipped", FormatFixed(milliseconds, 1) +
                                   " ms of the mix are cut off at full scale; lower the voices' vol"});
}

std::string RegionText(const ArrangementReport& report) {
    const auto seconds = [&](std::int32_t position) {
        return FormatFixed(SecondsOf(report.melody, position), kSecondsDecimals);
    };
    return seconds(report.settings.regionStart) + " to " + seconds(report.settings.regionEnd) + " s";
}

} // namespace

std::string FormatSummary(const ArrangementReport& report) {
    const UsedSettings& settings = report.settings;
    Rows rows = {{"Key", KeyText(report)}};
    if (settings.harmonyScale != settings.scale)
        rows.push_back({"Harmony", ScaleName(settings.harmonyScale)});
    rows.push_back({"Style", StyleText(report)});
    if (settings.style == ConsortierClassic::kStyleParallel)
        rows.push_back({"Intervals", IntervalsText(report)});
    if (settings.transpose != 0)
        rows.push_back({"Transposed", SignedText(settings.transpose) + " semitones"});
    AddSound(rows, report);
    if (HasRegion(report)) rows.push_back({"Region", RegionText(report)});
    rows.push_back({"Notes", std::to_string(report.notes.size())});
    if (report.hasChords) AddChords(rows, report);
    AddLimited(rows, report);
    AddFiles(rows, "Written", report.files);
    AddFiles(rows, "Left as was", report.oldFiles);
    return PrintableText(report.melody.file) + "\n" + FormatColumns({Align::kLeft, Align::kLeft}, rows);
}

} // namespace sonorelle
