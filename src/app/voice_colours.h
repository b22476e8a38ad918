// The colours of the editor: the voices, their widgets, the panels, the chords.
//
//     const Colour note = WidgetColour(kVoiceColours[2]); // of the blue voice's notes
//
// Pure values for any thread; nothing allocates.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sonorelle {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour&) const = default;
};

// 0xff5f00 is orange.
constexpr Colour ColourFromRgb(std::uint32_t rgb) {
    return {static_cast<std::uint8_t>(rgb >> 16 & 0xffU), static_cast<std::uint8_t>(rgb >> 8 & 0xffU),
            static_cast<std::uint8_t>(rgb & 0xffU)};
}

constexpr std::uint32_t RgbFromColour(Colour colour) {
    return static_cast<std::uint32_t>(colour.red) << 16 | static_cast<std::uint32_t>(colour.green) << 8 |
           static_cast<std::uint32_t>(colour.blue);
}

// `from` at 0, `to` at 1, a straight line between; the toolkit's own rule, channel by channel. Shares beyond
// these ends count as the ends.
constexpr Colour LerpColour(Colour from, Colour to, float share) {
    const float held = share > 0 ? (share < 1 ? share : 1.0F) : 0.0F;
    const auto mix = [held](std::uint8_t a, std::uint8_t b) {
        const float mixed = static_cast<float>(a) * (1 - held) + static_cast<float>(b) * held;
        return static_cast<std::uint8_t>(mixed);
    };
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

inline constexpr Colour kWhite{255, 255, 255};
inline constexpr Colour kBlack{};
inline constexpr Colour kOrange = ColourFromRgb(0xffa500); // a toggle that is on
inline constexpr Colour kLabelColour = kBlack;             // entry 56 of the toolkit's table

inline constexpr std::array<Colour, 4> kVoiceColours = {
    ColourFromRgb(0xff5f00), // lead: orange
    ColourFromRgb(0xc81405), // red
    ColourFromRgb(0x2e2ed5), // blue
    ColourFromRgb(0x147405), // green
};

// The tone of a voice's widgets: its notes, its strip.
constexpr Colour WidgetColour(Colour voice) { return LerpColour(kWhite, voice, 0.7F); }

inline constexpr Colour kPanelColour = LerpColour(kWhite, ColourFromRgb(0xced3da), 0.9F);
inline constexpr Colour kLightBackground = LerpColour(kWhite, kPanelColour, 0.0F);

// The loudness strip: what lies outside the visible part of the recording, and the visible part.
inline constexpr Colour kOverviewOutside = LerpColour(kWhite, kLabelColour, 0.23F);
inline constexpr Colour kOverviewInside = LerpColour(kWhite, kLabelColour, 0.15F);

inline constexpr std::size_t kChordColourCount = 16;

// Entry i is orange with 100 i less red, 49 i more green and 23 i more blue, each modulo 256: neighbours
// differ clearly, and none comes twice.
constexpr std::array<Colour, kChordColourCount> MakeChordColours() {
    std::array<Colour, kChordColourCount> colours{};
    for (std::size_t i = 0; i < kChordColourCount; ++i) {
        colours[i] = {static_cast<std::uint8_t>(kOrange.red - 100 * i),
                      static_cast<std::uint8_t>(kOrange.green + 49 * i),
                      static_cast<std::uint8_t>(kOrange.blue + 23 * i)};
    }
    return colours;
}
inline constexpr std::array<Colour, kChordColourCount> kChordColours = MakeChordColours();

} // namespace sonorelle
