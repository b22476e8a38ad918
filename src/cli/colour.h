// The colours of the voices and of the ground that they are drawn on.

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace sonorelle {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    bool operator==(const Colour&) const = default;
};

constexpr Colour FromRgb(std::uint32_t rgb) {
    return {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
            static_cast<std::uint8_t>(rgb)};
}

inline constexpr Colour kWhite = FromRgb(0xffffff);
inline constexpr Colour kBlack = FromRgb(0x000000);

// Voice 0 is the lead.
inline constexpr std::array<Colour, 4> kVoiceColours = {FromRgb(0xff5f00), FromRgb(0xc81405),
                                                        FromRgb(0x2e2ed5), FromRgb(0x147405)};

// `from` at share 0, `to` at share 1. Each channel is cut, not rounded, to a whole number, as the window
// toolkit does: a picture and the editor then show the same colour.
constexpr Colour Lerp(Colour from, Colour to, float share) {
    const float held = share > 0 ? (share < 1 ? share : 1.0F) : 0.0F; // a share that is no number counts as 0
    const auto channel = [held](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(static_cast<float>(b) * held + static_cast<float>(a) * (1 - held));
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

// The tint of a voice on widgets and note bars: strong enough to tell the voices apart, light enough to carry
// dark text.
constexpr Colour WidgetColour(Colour voice) { return Lerp(kWhite, voice, 0.7F); }

// The ground of panels.
constexpr Colour PanelColour() { return Lerp(kWhite, FromRgb(0xced3da), 0.9F); }

// "#ff5f00"
std::string HexText(Colour colour);

} // namespace sonorelle
