#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace sonorelle {

namespace {

// Without what the conversion itself does not take: white space, and a plus sign that no other sign follows.
std::string_view NumberPart(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    if (text.front() == '+' && !text.starts_with("+-")) text.remove_prefix(1);
    return text;
}

template<typename Number>
std::optional<Number> ReadFront(std::string_view text) {
    const std::string_view part = NumberPart(text);
    Number value = 0;
    const auto result = std::from_chars(part.data(), part.data() + part.size(), value);
    if (result.ec != std::errc()) return std::nullopt;
    return value;
}

} // namespace

std::string FormatFloat(float value) {
    std::array<char, 64> text; // the longest is 15 characters
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return std::string(text.data(), result.ptr);
}

std::string FormatFixed(double value, int decimals) {
    constexpr int kMaxDecimals = 20;
    std::array<char, 384> text; // sign, up to 309 digits before the point and 20 behind it
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed,
                                      std::clamp(decimals, 0, kMaxDecimals));
    return std::string(text.data(), result.ptr);
}

std::optional<double> ReadLeadingNumber(std::string_view text) {
    const std::optional<double> value = ReadFront<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int32_t> ReadLeadingInteger(std::string_view text) {
    return ReadFront<std::int32_t>(text);
}

} // namespace sonorelle
