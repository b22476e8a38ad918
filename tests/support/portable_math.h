// The few elementary functions that the synthetic singer needs, from additions and multiplications alone: a
// libm's results differ in the last bit from version to version and from processor to processor. All are good
// to about 1e-15, relative.
#pragma once

#include <cmath>

namespace sonorelle::test {

inline constexpr double kPi = 3.14159265358979323846;

inline double Exp2(double x) {
    const double whole = std::floor(x + 0.5);
    const double y = (x - whole) * 0.69314718055994530942; // at most 0.35: 14 terms reach 1e-17
    double sum = 1.0;
    for (int i = 14; i > 0; --i) sum = 1.0 + sum * y / i;
    return std::ldexp(sum, static_cast<int>(whole));
}

inline double Exp(double x) { return Exp2(x * 1.44269504088896340736); }

// x must be positive.
inline double Log2(double x) {
    int exponent = 0;
    double mantissa = std::frexp(x, &exponent);
    if (mantissa < 0.70710678118654752440) {
        mantissa *= 2.0;
        --exponent;
    }
    const double s =
        (mantissa - 1.0) / (mantissa + 1.0); // at most 0.172: log = 2 (s + s^3 / 3 + s^5 / 5 ...)
    double sum = 0.0;
    for (int i = 25; i > 0; i -= 2) sum = sum * s * s + 1.0 / i;
    return exponent + 2.0 * s * sum * 1.44269504088896340736;
}

// Sine and cosine of an angle in whole turns.
inline double SinTurns(double turns) {
    double r = turns - std::floor(turns + 0.5); // -0.5 to 0.5
    if (r > 0.25) r = 0.5 - r;
    if (r < -0.25) r = -0.5 - r;
    const double y = 2.0 * kPi * r;
    double sum = 1.0;
    for (int i = 22; i > 0; i -= 2) sum = 1.0 - sum * y * y / (i * (i + 1.0));
    return y * sum;
}

inline double CosTurns(double turns) { return SinTurns(turns + 0.25); }

// 0 below 0, 1 above 1, and without a corner between.
inline double SmoothStep(double x) {
    if (x <= 0.0) return 0.0;
    if (x >= 1.0) return 1.0;
    return x * x * (3.0 - 2.0 * x);
}

} // namespace sonorelle::test
