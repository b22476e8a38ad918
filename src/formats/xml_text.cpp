#include "formats/xml_text.h"

namespace sonorelle {

namespace {

bool NeedsReference(unsigned char byte) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7F;
    return byte < kFirstPrintable || byte == kDelete ||
           std::string_view("\"<>&").find(static_cast<char>(byte)) != std::string_view::npos;
}

} // namespace

std::string WithCharacterReferences(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (NeedsReference(byte))
            result.append("&#").append(std::to_string(byte)).append(";");
        else
            result += character;
    }
    return result;
}

} // namespace sonorelle
