// The picture of the choir beside the sliders: a coloured row for each voice, how far the rows lie apart, and
// which voice has which place.
//
//     const VoiceRows rows = LayOutVoiceRows(4, 0.6F, 130); // rows[0] is the topmost
//     const VoiceOrder order = OrderOfVoices(4, 1);         // order[0] is the voice shown there: 3, green
//
// Pure functions for any thread; nothing allocates.

#pragma once

#include <array>
#include <cstdint>

namespace sonorelle {

inline constexpr std::int32_t kMostVoiceRows = 4;

struct VoiceRow {
    std::int32_t x = 0; // pixels, from the upper left corner of the panel
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool visible = false; // the style has this many voices
};

using VoiceRows = std::array<VoiceRow, kMostVoiceRows>; // from top to bottom
using VoiceOrder = std::array<std::int32_t, kMostVoiceRows>;

// The rows of `voices` (1 to 4) voices on a panel of `panelHeight` pixels. They lie the further apart the
// larger `range` is (0 to 1, the "Voice Range"). Values beyond these count as their ends.
VoiceRows LayOutVoiceRows(std::int32_t voices, float range, std::int32_t panelHeight);

// The voices from top to bottom when `voicesAbove` of them lie above the melody (0 to voices - 1): 0 is the
// melody (orange), 1 red, 2 blue, 3 green; kNoVoice in the rows that are not there.
inline constexpr std::int32_t kNoVoice = -1;
VoiceOrder OrderOfVoices(std::int32_t voices, std::int32_t voicesAbove);

} // namespace sonorelle
