#include "cli/script_words.h"

#include <cstddef>

namespace sonorelle {

namespace {

bool IsBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }

// Reads the quotation that begins at `at`, which is behind it afterwards.
bool ReadQuotation(std::string_view line, std::size_t& at, std::string& word) {
    const char quote = line[at++];
    for (; at < line.size() && line[at] != quote; ++at) {
        if (quote == '"' && line[at] == '\\' && ++at == line.size()) return false;
        word += line[at];
    }
    if (at >= line.size()) return false;
    ++at;
    return true;
}

} // namespace

bool SplitScriptLine(std::string_view line, std::vector<std::string>& words) {
    words.clear();
    for (std::size_t at = 0; at < line.size();) {
        if (IsBlank(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == '#') return true;
        std::string word;
        while (at < line.size() && !IsBlank(line[at])) {
            if (line[at] != '"' && line[at] != '\'') {
                word += line[at++];
            } else if (!ReadQuotation(line, at, word)) {
                return false;
            }
        }
        words.push_back(std::move(word));
    }
    return true;
}

} // namespace sonorelle
