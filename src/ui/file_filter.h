// The file types of a file dialog, from "WAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}" to the form that the
// toolkit's own dialog takes.
//
//     ToolkitFilter("WAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}")
//         == "WAV Files (*.wav)\tAIFF Files (*.{aif,aiff})"
//
// Pure values for any thread.

#pragma once

#include <string>
#include <string_view>

namespace sonorelle {

inline constexpr const char* kDefaultFilter = "All Files\t*.*";

// Empty counts as kDefaultFilter. "*.*" stands for all files, also those without a dot.
std::string ToolkitFilter(std::string_view filter);
// ".wav" of "WAV File\t*.wav": what the names of such files end with. Empty where there is a choice of
// several.
std::string ExtensionOfFilter(std::string_view filter);

} // namespace sonorelle
