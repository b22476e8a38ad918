// Sanitizers make code five to ten times as slow. What repeats a test over many lists, rates or melodies then
// takes a fair share of them: every case runs, with every kind of input, and the optimised build holds the
// full count.
#pragma once

#include <algorithm>

namespace sonorelle::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kUnderSanitizer = true;
#else
inline constexpr bool kUnderSanitizer = false;
#endif

// `count`, or under a sanitizer one in `part` of it, and at least one. For counts of rounds, and for what is
// expected of their sum.
template<class Integer>
constexpr Integer SanitizerShare(Integer count, Integer part = 4) {
    return kUnderSanitizer ? std::max<Integer>(count / part, 1) : count;
}

// Whether round `index`, counted from 0, is among those that run: every one, or under a sanitizer one in
// `part`.
constexpr bool InSanitizerShare(int index, int part) { return !kUnderSanitizer || index % part == 0; }

} // namespace sonorelle::test
