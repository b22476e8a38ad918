// Numbers as text, the same under every locale: the decimal point is always a point.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sonorelle {

// The shortest text that reads back to the same bits: 0.1f gives "0.1", 16777216 "16777216", 1e-24f "1e-24".
// Values that are not finite give "nan", "-nan", "inf" and "-inf", which JSON does not know.
std::string FormatFloat(float value);

// With `decimals` (0 to 20) digits behind the point, rounded to nearest: 2.0 with 3 gives "2.000".
std::string FormatFixed(double value, int decimals);

// The number at the beginning of a text, behind white space and a plus sign if there are any; what follows it
// does not matter: "0.5" gives 0.5, " +1e3 Hz" 1000, "0,5" 0. Nothing for a text that begins with no number,
// and for a number that is not finite or that a double cannot hold.
std::optional<double> ReadLeadingNumber(std::string_view text);

// The same for whole numbers: "12.7" gives 12. Nothing for a number beyond an i32.
std::optional<std::int32_t> ReadLeadingInteger(std::string_view text);

} // namespace sonorelle
