// What the user is told of an option whose value is not allowed.

#pragma once

#include <string>
#include <string_view>

namespace sonorelle {

inline std::string WrongOption(const char* option, std::string_view text, const std::string& allowed) {
    return std::string(option) + ": '" + std::string(text) + "' is not allowed; allowed: " + allowed;
}

} // namespace sonorelle
