// Lays out cells of text in columns, each as wide as its widest cell.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace sonorelle {

enum class Align { kLeft, kRight };

// Two blanks between columns and in front of the first; no blanks at line ends. A row with fewer cells than
// there are alignments ends early.
std::string FormatColumns(const std::vector<Align>& alignments,
                          const std::vector<std::vector<std::string>>& rows);

// `text` with blanks up to `width` characters.
std::string Pad(const std::string& text, std::size_t width, Align align);

} // namespace sonorelle
