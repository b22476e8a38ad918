// Sanitizers make code five to ten times as slow. What repeats a test over many lists, rates or melodies then
// takes a fair share of them: every case runs, with every kind of input, and the optimised build holds the
// full count.
#pragma once

#include <algorithm>

namespace sonorelle::test {

// Whether the code under test is sanitized. Decided when the program is linked: the same compiled test runs
// with plain libraries and with sanitized ones.
bool UnderSanitizer();

// `count`, or under a sanitizer one in `part` of it, and at least one. For counts of rounds, and for what is
// expected of their sum.
template<class Integer>
Integer SanitizerShare(Integer count, Integer part = 4) {
    return UnderSanitizer() ? std::max<Integer>(count / part, 1) : count;
}

// Whether round `index`, counted from 0, is among those that run: every one, or under a sanitizer one in
// `part`.
inline bool InSanitizerShare(int index, int part) { return !UnderSanitizer() || index % part == 0; }

} // namespace sonorelle::test
