#pragma once

namespace sonorelle {

// The same as in the project line of CMakeLists.txt; a test compares them.
inline constexpr const char* kVersion = "0.1.0";

} // namespace sonorelle
