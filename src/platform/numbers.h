// Numbers as text, the same under every locale: the decimal point is always a point.

#pragma once

#include <string>

namespace sonorelle {

// The shortest text that reads back to the same bits: 0.1f gives "0.1", 16777216 "16777216", 1e-24f "1e-24".
// Values that are not finite give "nan", "-nan", "inf" and "-inf", which JSON does not know.
std::string FormatFloat(float value);

// With `decimals` (0 to 20) digits behind the point, rounded to nearest: 2.0 with 3 gives "2.000".
std::string FormatFixed(double value, int decimals);

} // namespace sonorelle
