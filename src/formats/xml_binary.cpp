#include "formats/xml_binary.h"

#include <cstdint>

namespace sonorelle {

namespace {

constexpr std::uint32_t kNoDigit = 16;

// Where the i-th byte of the text lies in the data.
constexpr std::size_t SwappedPlace(std::size_t i) {
    return i / kBytesOfWord * kBytesOfWord + (kBytesOfWord - 1) - i % kBytesOfWord;
}

std::uint32_t HexDigit(char character) {
    if (character >= '0' && character <= '9') return static_cast<std::uint32_t>(character - '0');
    if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a' + 10);
    if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A' + 10);
    return kNoDigit;
}

// "0x" is the beginning of a number without digits, and so 0 like the 0 that it begins with.
std::byte HexPair(char high, char low) {
    const std::uint32_t first = HexDigit(high);
    const std::uint32_t second = HexDigit(low);
    if (first == kNoDigit) return std::byte{0};
    if (second == kNoDigit) return static_cast<std::byte>(first);
    return static_cast<std::byte>(first * 16 + second);
}

} // namespace

void AppendHexWords(std::string& text, std::span<const std::byte> bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::size_t at = text.size();
    text.resize(at + 2 * bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = std::to_integer<std::size_t>(bytes[SwappedPlace(i)]);
        text[at++] = kDigits[byte >> 4];
        text[at++] = kDigits[byte & 15];
    }
}

std::vector<std::byte> DecodeHexWords(std::string_view text) {
    const std::size_t count = text.size() / 2;
    std::vector<std::byte> bytes((count + kBytesOfWord - 1) / kBytesOfWord * kBytesOfWord);
    for (std::size_t i = 0; i < count; ++i) bytes[SwappedPlace(i)] = HexPair(text[2 * i], text[2 * i + 1]);
    bytes.resize(count);
    return bytes;
}

} // namespace sonorelle
