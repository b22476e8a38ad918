#include "ui/file_filter.h"

#include <cstddef>

namespace sonorelle {

std::string ToolkitFilter(std::string_view filter) {
    if (filter.empty()) filter = kDefaultFilter;
    std::string result;
    while (!filter.empty()) {
        const std::size_t end = filter.find('\n');
        const std::string_view entry = filter.substr(0, end);
        filter.remove_prefix(end == std::string_view::npos ? filter.size() : end + 1);
        const std::size_t tab = entry.find('\t');
        const std::string_view name = entry.substr(0, tab);
        std::string_view pattern = tab == std::string_view::npos ? "*" : entry.substr(tab + 1);
        if (pattern == "*.*") pattern = "*";
        if (name.empty() || pattern.empty()) continue;
        if (!result.empty()) result += '\t';
        result.append(name).append(" (").append(pattern).append(")");
    }
    return result;
}

std::string ExtensionOfFilter(std::string_view filter) {
    const std::size_t tab = filter.find('\t');
    if (tab == std::string_view::npos) return {};
    const std::string_view pattern = filter.substr(tab + 1);
    const bool one =
        pattern.starts_with("*.") && pattern.find_first_of("*?{}[]\n", 2) == std::string_view::npos;
    return one && pattern.size() > 2 ? std::string(pattern.substr(1)) : std::string();
}

} // namespace sonorelle
