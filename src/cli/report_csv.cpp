#include "cli/report_csv.h"

#include "cli/melody_report.h"
#include "cli/unicode_text.h"
#include "platform/numbers.h"

#include <string_view>

namespace sonorelle {

namespace {

// A microsecond tells sample frames apart up to 192 kHz, where they are 5.2 of them wide.
constexpr int kCurveSecondsDecimals = 6;

// Quoted only where it must be. Line ends are escaped before, so that a frame stays one line.
std::string CsvField(std::string_view name) {
    const std::string printable = PrintableText(name);
    if (printable.find_first_of(",\" ") == std::string::npos) return printable;
    std::string quoted = "\"";
    for (const char c : printable) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

} // namespace

std::string CsvHeading(bool withFile) {
    return std::string(withFile ? "file," : "") + "seconds,pitch,voiced,level,period,salience\n";
}

std::string FormatCsv(const MelodyReport& report, bool withFile) {
    const std::string first = withFile ? CsvField(report.file) + "," : "";
    std::string text;
    for (const CurvePoint& point : report.curve) {
        text += first;
        text += FormatFixed(SecondsOf(report, point.position), kCurveSecondsDecimals);
        text += ',';
        text += FormatFloat(point.midiPitch);
        text += point.voiced ? ",1," : ",0,";
        text += FormatFloat(point.level);
        text += ',';
        text += std::to_string(point.period);
        text += ',';
        text += FormatFloat(point.salience);
        text += '\n';
    }
    return text;
}

} // namespace sonorelle
