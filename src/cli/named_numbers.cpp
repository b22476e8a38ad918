#include "cli/named_numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace sonorelle {

std::string_view TrimBlanks(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string LowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::optional<std::int32_t> ReadInteger(std::string_view text) {
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> ReadNumber(std::string_view text) {
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<std::int32_t> FindIn(const std::vector<NamedNumber>& list, std::string_view text) {
    const std::string wanted = LowerCase(TrimBlanks(text));
    if (wanted.empty()) return std::nullopt;
    const std::optional<std::int32_t> number = ReadInteger(wanted);
    std::optional<std::int32_t> found;
    int beginnings = 0;
    for (const NamedNumber& entry : list) {
        const std::string name = LowerCase(entry.name);
        if (entry.number == number || name == wanted) return entry.number;
        if (!name.starts_with(wanted)) continue;
        found = entry.number;
        ++beginnings;
    }
    return beginnings == 1 ? found : std::nullopt;
}

std::string Choices(const std::vector<NamedNumber>& list) {
    std::string text = std::to_string(list.front().number) + " to " + std::to_string(list.back().number);
    for (const NamedNumber& entry : list)
        text += (entry.number == list.front().number ? ", or " : ", ") + entry.name;
    return text;
}

} // namespace sonorelle
