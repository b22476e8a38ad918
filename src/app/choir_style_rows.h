// The rows of the "Style " choice and what lies behind them: which control shows the details, which mode the
// application works in, and which style and arrangement the driver gets.
//
//     const DriverStyle style = DriverStyleOfRow({3, 4}); // "Block Chord 4 Voices", "Drop2": style 2, 4
//     const StyleRow row = StyleRowOfDriver(4, 6);        // row 5, detail 6: "Organum", "Octave Around"
//
// Pure functions for any thread; nothing allocates.

#pragma once

#include "harmony/styles.h"

#include <cstdint>

namespace sonorelle {

// What the choir settings tell the application to do. The numbers stand in saved work.
enum ChoirMode : std::int32_t {
    kModeIntelligent = 0, // rows 0 to 2
    kModeParallel = 1,    // rows 6 and 7
    kModeEdit = 2,
    kModeBlock = 4,
    kModeFauxbourdon = 8,
    kModeOrganum = 16,
    kModeHarmonies = 0x10000, // live
    kModePitches = 0x10001,   // live
};

enum class ChoirPage : std::int32_t { kAutomatic, kEdit, kLive };

// What shows the details of a style.
enum class StyleDetail : std::int32_t {
    kArrangementSlider,
    kBlockList,
    kFauxbourdonList,
    kOrganumList,
    kIntervalRows,
};

inline constexpr std::int32_t kStyleRows = ConsortierClassic::kStyleListLength;

struct StyleRow {
    std::int32_t row = 0;    // of the "Style " choice, 0 to 7
    std::int32_t detail = 0; // of the style's detail list; 0 where it has none

    bool operator==(const StyleRow&) const = default;
};

struct DriverStyle {
    std::int32_t style = 0;
    std::int32_t arrangement = 0;

    bool operator==(const DriverStyle&) const = default;
};

constexpr bool IsStyleRow(std::int32_t row) { return row >= 0 && row < kStyleRows; }

// A bad row counts as row 0, a bad detail as detail 0.
DriverStyle DriverStyleOfRow(StyleRow row);
StyleRow StyleRowOfDriver(std::int32_t style, std::int32_t arrangement); // row 0 for what no row stands for
StyleDetail DetailOfRow(std::int32_t row);
std::int32_t DetailCountOfRow(std::int32_t row); // entries of the detail list; 0 where there is none
std::int32_t VoicesOfRow(StyleRow row);          // 2 to 4
ChoirMode ModeOfRow(std::int32_t row);

ChoirPage PageOfMode(std::int32_t mode); // 2 and 3 are Edit; unknown modes are Automatic
constexpr bool IsLiveMode(std::int32_t mode) { return mode == kModeHarmonies || mode == kModePitches; }
// The row that `mode` stands for: `current` if that fits or if the mode says nothing of a style, else the
// first that does.
std::int32_t RowOfMode(std::int32_t mode, std::int32_t current);

} // namespace sonorelle
