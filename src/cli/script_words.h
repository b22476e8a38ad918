// A line of a script in words.
//
//     load "my song.wav"   # a comment
//
// Blanks stand between words. A word may be quoted, whole or in part: between "..." a backslash makes the
// next character count as itself, between '...' everything does. A # that begins a word begins a comment.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

// False when a quotation has no end.
bool SplitScriptLine(std::string_view line, std::vector<std::string>& words);

} // namespace sonorelle
