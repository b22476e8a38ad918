// Numbers that no caller should hand over, and some do.

#pragma once

#include <cstdint>
#include <limits>

namespace sonorelle {

inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr std::int32_t kLargestI32 = std::numeric_limits<std::int32_t>::max();
inline constexpr std::int32_t kSmallestI32 = std::numeric_limits<std::int32_t>::min();
inline constexpr double kDoubleNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kDoubleInfinity = std::numeric_limits<double>::infinity();

} // namespace sonorelle
