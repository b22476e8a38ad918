// Texts that a user chose, such as names and paths, as values of a document that escapes nothing by itself.

#pragma once

#include <string>
#include <string_view>

namespace sonorelle {

// The text with quotation marks, angle brackets, ampersands and control characters as decimal character
// references, which every reader of the document turns back: `a&b` gives `a&#38;b`. All other bytes stay,
// whatever their encoding. A zero byte ends a value for its reader.
std::string WithCharacterReferences(std::string_view text);

} // namespace sonorelle
