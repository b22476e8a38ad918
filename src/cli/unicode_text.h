// Text from outside (file names, arguments) made safe to show.
//
// A file name may hold any bytes but '/' and 0: control bytes that would steer a terminal, line ends, bytes
// that are not UTF-8, characters that turn the direction of writing.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sonorelle {

// One step through UTF-8 text.
struct Utf8Character {
    char32_t codePoint = 0; // U+FFFD where the bytes are not UTF-8
    std::size_t length = 1; // bytes that it takes; 1 where they are not UTF-8
    bool isValid = false;
};

// The character at `position`, which must lie within the text.
Utf8Character ReadUtf8(std::string_view text, std::size_t position);

void AppendUtf8(std::string& text, char32_t codePoint);

// Control characters (C0, DEL, C1), line and paragraph separators, and marks that turn the direction of
// writing.
bool IsControl(char32_t codePoint);

// For terminals and messages, one line: control characters appear as "\n", "\t", "\x1b" or "\u202e", bytes
// that are not UTF-8 as "\xff". Everything else stays as it is.
std::string PrintableText(std::string_view text);

// Each byte that is not UTF-8 becomes U+FFFD; nothing else changes.
std::string ValidUtf8(std::string_view text);

// Number of characters (code points; a byte that is not UTF-8 counts as one).
std::size_t CountCharacters(std::string_view text);

// At most `limit` characters (at least 3): a longer text loses its middle, where an ellipsis stands instead.
std::string ShortenMiddle(std::string_view text, std::size_t limit);

} // namespace sonorelle
