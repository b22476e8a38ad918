#include "cli/colour.h"

namespace sonorelle {

std::string HexText(Colour colour) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "#";
    for (const std::uint8_t channel : {colour.red, colour.green, colour.blue}) {
        text += kDigits[channel >> 4];
        text += kDigits[channel & 15];
    }
    return text;
}

} // namespace sonorelle
