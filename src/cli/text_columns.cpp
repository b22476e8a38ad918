#include "cli/text_columns.h"

#include "cli/unicode_text.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr const char* kGap = "  ";

std::vector<std::size_t> ColumnWidths(std::size_t columns,
                                      const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(columns, 0);
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i < std::min(columns, row.size()); ++i) {
            widths[i] = std::max(widths[i], CountCharacters(row[i]));
        }
    }
    return widths;
}

} // namespace

std::string Pad(const std::string& text, std::size_t width, Align align) {
    const std::size_t length = CountCharacters(text);
    const std::string blanks(width > length ? width - length : 0, ' ');
    return align == Align::kLeft ? text + blanks : blanks + text;
}

std::string FormatColumns(const std::vector<Align>& alignments,
                          const std::vector<std::vector<std::string>>& rows) {
    const std::vector<std::size_t> widths = ColumnWidths(alignments.size(), rows);
    std::string text;
    for (const std::vector<std::string>& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < std::min(alignments.size(), row.size()); ++i) {
            line += kGap + Pad(row[i], widths[i], alignments[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

} // namespace sonorelle
