#include "cli/unicode_text.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLargestCodePoint = 0x10FFFF;
constexpr char kHexDigits[] = "0123456789abcdef";

std::uint8_t ByteAt(std::string_view text, std::size_t position) {
    return static_cast<std::uint8_t>(text[position]);
}

// Length of the sequence that a first byte announces, 0 when it cannot be one.
std::size_t AnnouncedLength(std::uint8_t first) {
    if (first < 0x80) return 1;
    if (first < 0xC2) return 0; // continuation bytes, and overlong forms of two
    if (first < 0xE0) return 2;
    if (first < 0xF0) return 3;
    return first < 0xF5 ? 4 : 0;
}

bool IsSurrogate(char32_t codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

void AppendHex(std::string& text, char32_t value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += kHexDigits[(value >> shift) & 15];
}

void AppendEscaped(std::string& text, char32_t codePoint) {
    if (codePoint == U'\n') {
        text += "\\n";
    } else if (codePoint == U'\t') {
        text += "\\t";
    } else if (codePoint == U'\r') {
        text += "\\r";
    } else if (codePoint < 0x80) {
        text += "\\x";
        AppendHex(text, codePoint, 2);
    } else {
        text += "\\u";
        AppendHex(text, codePoint, 4);
    }
}

} // namespace

Utf8Character ReadUtf8(std::string_view text, std::size_t position) {
    constexpr Utf8Character kInvalid{kReplacement, 1, false};
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800,
                                      0x10000}; // of each length: longer forms are not valid
    const std::uint8_t first = ByteAt(text, position);
    const std::size_t length = AnnouncedLength(first);
    if (length == 0 || length > text.size() - position) return kInvalid;
    if (length == 1) return {first, 1, true};
    char32_t codePoint = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const std::uint8_t next = ByteAt(text, position + i);
        if ((next & 0xC0U) != 0x80U) return kInvalid;
        codePoint = (codePoint << 6) | (next & 0x3FU);
    }
    if (codePoint < kSmallest[length] || codePoint > kLargestCodePoint || IsSurrogate(codePoint))
        return kInvalid;
    return {codePoint, length, true};
}

void AppendUtf8(std::string& text, char32_t codePoint) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        append(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        append(0xC0U | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            append(0xE0U | (codePoint >> 12));
        } else {
            append(0xF0U | (codePoint >> 18));
            append(0x80U | ((codePoint >> 12) & 0x3FU));
        }
        append(0x80U | ((codePoint >> 6) & 0x3FU));
    }
    append(0x80U | (codePoint & 0x3FU));
}

bool IsControl(char32_t codePoint) {
    const auto within = [codePoint](char32_t low, char32_t high) {
        return codePoint >= low && codePoint <= high;
    };
    return codePoint < 0x20 || within(0x7F, 0x9F) || codePoint == 0x061C || within(0x200E, 0x200F) ||
           within(0x2028, 0x202E) || within(0x2066, 0x2069);
}

std::string PrintableText(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = ReadUtf8(text, i);
        if (!character.isValid) {
            result += "\\x";
            AppendHex(result, ByteAt(text, i), 2);
        } else if (IsControl(character.codePoint)) {
            AppendEscaped(result, character.codePoint);
        } else {
            result += text.substr(i, character.length);
        }
        i += character.length;
    }
    return result;
}

std::string ValidUtf8(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = ReadUtf8(text, i);
        AppendUtf8(result, character.codePoint);
        i += character.length;
    }
    return result;
}

std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); i += ReadUtf8(text, i).length) ++count;
    return count;
}

std::string ShortenMiddle(std::string_view text, std::size_t limit) {
    const std::size_t count = CountCharacters(text);
    if (count <= limit) return std::string(text);
    const std::size_t kept = std::max<std::size_t>(limit, 3) - 1;
    const std::size_t head = kept - kept / 2;
    const std::size_t tailStart = count - kept / 2;
    std::string result;
    std::size_t index = 0;
    for (std::size_t i = 0; i < text.size(); ++index) {
        const std::size_t length = ReadUtf8(text, i).length;
        if (index == head) AppendUtf8(result, 0x2026);
        if (index < head || index >= tailStart) result += text.substr(i, length);
        i += length;
    }
    return result;
}

} // namespace sonorelle
