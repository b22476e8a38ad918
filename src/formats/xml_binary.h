// Bytes as hexadecimal digits, as a document of state holds them.
//
// The digits tell 32-bit words, highest byte first: byte 3, 2, 1, 0, then 7, 6, 5, 4. An integer in the
// memory of a little-endian machine so stands in the text as one would write it. The order is that of the
// places in the data, on every machine.

#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

inline constexpr std::size_t kBytesOfWord = 4;

// Appends two lower-case digits a byte: 01 02 03 04 gives "04030201". The count of bytes is a multiple of 4.
void AppendHexWords(std::string& text, std::span<const std::byte> bytes);

// The bytes that such a text means, one for each two characters; a single last one is left out. Their memory
// is aligned for any number. Upper-case digits count as well. A pair counts up to its first character that is
// no digit: "1g" is 1, "g1" is 0. Of a last word with less than four bytes only the places below the count
// remain.
std::vector<std::byte> DecodeHexWords(std::string_view text);

} // namespace sonorelle
