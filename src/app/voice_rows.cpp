#include "app/voice_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {
namespace {

constexpr std::int32_t kRowX = 5; // pixels
constexpr std::int32_t kRowWidth = 50;
constexpr double kHighestRow = 10;
constexpr double kCloseness = 1.3;    // divides the spacing: at the full range the rows take all the height
constexpr double kRangeOffset = 0.3;  // at range 0 they keep this share of it
constexpr double kHeightOffset = 0.1; // at the full range this share of the height is left for a row
constexpr std::int32_t kTallest = 1 << 16; // pixels; no screen has as many

enum Voice : std::int32_t { kOrange = 0, kRed = 1, kBlue = 2, kGreen = 3, kNone = kNoVoice };

// clang-format off
// By voices above the melody, from top to bottom.
constexpr VoiceOrder kOrderOfFour[] = {
    { kOrange, kGreen,  kBlue,   kRed    },
    { kGreen,  kOrange, kBlue,   kRed    },
    { kGreen,  kBlue,   kOrange, kRed    },
    { kGreen,  kBlue,   kRed,    kOrange },
};
constexpr VoiceOrder kOrderOfThree[] = {
    { kOrange, kRed,    kBlue,   kNone   },
    { kBlue,   kOrange, kRed,    kNone   },
    { kBlue,   kRed,    kOrange, kNone   },
};
constexpr VoiceOrder kOrderOfTwo[] = {
    { kOrange, kRed,    kNone,   kNone   },
    { kRed,    kOrange, kNone,   kNone   },
};
constexpr VoiceOrder kMelodyAlone = { kOrange, kNone, kNone, kNone };
// clang-format on

// Truncated; but a pixel more or less must not hang on how 0.6 is rounded in binary, which on a panel of a
// thousand pixels makes less than this.
std::int32_t WholePixels(double pixels) {
    constexpr double kRounding = 1e-3;
    return static_cast<std::int32_t>(pixels + kRounding);
}

} // namespace

VoiceRows LayOutVoiceRows(std::int32_t voices, float range, std::int32_t panelHeight) {
    const std::int32_t count = std::clamp(voices, 1, kMostVoiceRows);
    const std::int32_t height = std::clamp(panelHeight, 0, kTallest);
    const double spread = std::isnan(range) ? 0.0 : std::clamp(static_cast<double>(range), 0.0, 1.0);

    const double spacing = 1.0 / count / kCloseness * (spread + kRangeOffset);
    const std::int32_t step = WholePixels(spacing * height);
    const std::int32_t rowHeight =
        WholePixels(std::min(kHighestRow, (1 - (spread - kHeightOffset)) * height));

    VoiceRows rows;
    std::int32_t y = (height - (count - 1) * step - rowHeight) / 2;
    for (std::int32_t i = 0; i < count; ++i, y += step)
        rows[static_cast<std::size_t>(i)] = {kRowX, y, kRowWidth, rowHeight, true};
    return rows;
}

VoiceOrder OrderOfVoices(std::int32_t voices, std::int32_t voicesAbove) {
    const auto above = static_cast<std::size_t>(std::clamp(voicesAbove, 0, std::clamp(voices, 1, 4) - 1));
    if (voices >= 4) return kOrderOfFour[above];
    if (voices == 3) return kOrderOfThree[above];
    if (voices == 2) return kOrderOfTwo[above];
    return kMelodyAlone;
}

} // namespace sonorelle
