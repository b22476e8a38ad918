// Float to integer for numbers that come from outside: a cast of a value that the integer cannot hold is
// undefined.

#pragma once

#include <cstdint>
#include <limits>

namespace sonorelle {

// The integer part, rounded towards zero; the nearest i32 beyond its range; 0 for what is not a number.
inline std::int32_t TruncateToI32(double value) noexcept {
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    if (!(value == value)) return 0;
    if (value <= kLowest) return std::numeric_limits<std::int32_t>::min();
    if (value >= kHighest) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

} // namespace sonorelle
