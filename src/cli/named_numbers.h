// Numbers as a user writes them: as digits, or by the name that they have in a list.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

struct NamedNumber {
    std::int32_t number;
    std::string name;
};

// A number of the list, a whole name, or the beginning of one name alone; in any case, with blanks around it.
// Nothing when the text fits none, or several.
std::optional<std::int32_t> FindIn(const std::vector<NamedNumber>& list, std::string_view text);

// "0 to 3, or orange, red, blue, green": what may be asked for. The list is not empty and in order.
std::string Choices(const std::vector<NamedNumber>& list);

// A whole number and nothing else; nothing when it is none or does not fit. A plus is allowed.
std::optional<std::int32_t> ReadInteger(std::string_view text);
// A finite number and nothing else, with a decimal point whatever the locale. A plus is allowed.
std::optional<double> ReadNumber(std::string_view text);

// Without the blanks around it.
std::string_view TrimBlanks(std::string_view text);
// A to Z alone.
std::string LowerCase(std::string_view text);

} // namespace sonorelle
