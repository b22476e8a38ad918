// Result codes of the system. 0 is success everywhere; a failing operation leaves its outputs untouched.

#pragma once

#include <cstdint>

namespace sonorelle {

inline constexpr std::int32_t kOk = 0;
inline constexpr std::int32_t kOutOfMemory = 1000001;
inline constexpr std::int32_t kCannotOpen = 3000001;   // a file that cannot be opened, or is the wrong one
inline constexpr std::int32_t kCannotWrite = 3000004;  // a file that cannot be written
inline constexpr std::int32_t kNothingThere = 5000002; // nothing there, or already allocated
inline constexpr std::int32_t kBadArgument = 5000003;  // a bad argument or a missing object
inline constexpr std::int32_t kSampleRateTooLow = 5000004;
inline constexpr std::int32_t kRunFailed = 5000015;

} // namespace sonorelle
