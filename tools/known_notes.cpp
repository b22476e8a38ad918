#include "known_notes.h"

#include "cli/note_names.h"
#include "support/synthetic_singer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace sonorelle::tools {
namespace {

constexpr int kKeys = 24;

std::vector<std::string> Cells(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');) {
        if (!cell.empty() && cell.back() == '\r') cell.pop_back();
        cells.push_back(cell);
    }
    return cells;
}

std::optional<double> Number(const std::string& text) {
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
    return value;
}

// The value of a member of a flat JSON object as text, without its quotation marks.
std::optional<std::string> Member(const std::string& json, const std::string& name) {
    std::size_t start = json.find('"' + name + '"');
    if (start == std::string::npos) return std::nullopt;
    start = json.find(':', start);
    if (start == std::string::npos) return std::nullopt;
    start = json.find_first_not_of(" \t\r\n\"", start + 1);
    if (start == std::string::npos) return std::nullopt;
    return json.substr(start, json.find_first_of(",\"\n}", start) - start);
}

} // namespace

std::optional<std::vector<test::TimedNote>> ReadKnownNotes(const std::filesystem::path& csvFile) {
    std::ifstream file(csvFile);
    std::string line;
    if (!std::getline(file, line)) return std::nullopt;
    const std::vector<std::string> headings = Cells(line);
    const auto column = [&headings](const char* name) {
        return static_cast<std::size_t>(std::find(headings.begin(), headings.end(), name) - headings.begin());
    };
    const std::size_t onset = column("onset_s");
    const std::size_t offset = column("offset_s");
    const std::size_t hertz = column("hz");
    const std::size_t cents = column("intonation_cents");

    std::vector<test::TimedNote> notes;
    while (std::getline(file, line)) {
        const std::vector<std::string> cells = Cells(line);
        if (cells.empty()) continue;
        const auto cell = [&cells](std::size_t i) {
            return i < cells.size() ? Number(cells[i]) : std::nullopt;
        };
        const std::optional<double> start = cell(onset);
        const std::optional<double> end = cell(offset);
        const std::optional<double> pitch = cell(hertz);
        if (!start || !end || !pitch || !(*pitch > 0.0)) return std::nullopt;
        notes.push_back({*start, *end, test::MidiPitchFromHertz(*pitch) + cell(cents).value_or(0.0) / 100.0});
    }
    return notes;
}

KnownTruth ReadTruth(const std::filesystem::path& jsonFile) {
    std::ifstream file(jsonFile);
    const std::string json{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    KnownTruth truth;
    if (const auto tuning = Member(json, "tuning_a4_hz")) truth.tuningHertz = Number(*tuning);
    const std::string name = Member(json, "key").value_or("");
    for (int key = 0; key < kKeys; ++key)
        if (KeyName(key) == name) truth.key = key;
    return truth;
}

} // namespace sonorelle::tools
