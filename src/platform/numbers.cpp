#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace sonorelle {

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

} // namespace sonorelle
