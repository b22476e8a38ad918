// How many of one unit go into another.

#pragma once

namespace sonorelle {

inline constexpr double kMillisecondsPerSecond = 1000;

} // namespace sonorelle
