#include "ui/dropped_text.h"

#include <cstddef>
#include <optional>

namespace sonorelle {

namespace {

constexpr std::string_view kScheme = "file:";

std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find_first_of("\r\n");
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

int HexDigit(char sign) {
    if (sign >= '0' && sign <= '9') return sign - '0';
    if (sign >= 'a' && sign <= 'f') return sign - 'a' + 10;
    if (sign >= 'A' && sign <= 'F') return sign - 'A' + 10;
    return -1;
}

// A percent sign that stands for nothing is one itself. A path with a zero in it is none.
std::optional<std::string> Decoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0) {
            decoded += text[i];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    if (decoded.find('\0') != std::string::npos) return std::nullopt;
    return decoded;
}

// Behind two slashes there is the name of a machine, which may be empty.
std::optional<std::string> PathOf(std::string_view address) {
    address.remove_prefix(kScheme.size());
    if (address.starts_with("//")) {
        const std::size_t slash = address.find('/', 2);
        if (slash == std::string_view::npos) return std::nullopt;
        address.remove_prefix(slash);
    }
    if (!address.starts_with('/')) return std::nullopt;
    return Decoded(address);
}

bool IsDocument(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '<';
}

} // namespace

std::string TextOfDrop(std::string_view dropped) {
    if (IsDocument(dropped)) return std::string(dropped);
    while (!dropped.empty()) {
        const std::string_view line = TakeLine(dropped);
        if (line.empty() || line.starts_with('#')) continue; // a comment of the list
        if (!line.starts_with(kScheme)) return std::string(line);
        if (std::optional<std::string> path = PathOf(line)) return *std::move(path);
    }
    return {};
}

std::string AddressOfFile(std::string_view path) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string address = "file://";
    for (const char sign : path) {
        if (kPlain.find(sign) != std::string_view::npos) {
            address += sign;
        } else {
            const auto byte = static_cast<unsigned char>(sign);
            address += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
        }
    }
    return address;
}

} // namespace sonorelle
