#include "app/choir_style_rows.h"

#include <cstddef>

namespace sonorelle {
namespace {

struct RowRules {
    ChoirMode mode;
    StyleDetail detail;
};

// clang-format off
constexpr RowRules kRows[kStyleRows] = {
    { kModeIntelligent, StyleDetail::kArrangementSlider }, // Intelligent 4 Voices
    { kModeIntelligent, StyleDetail::kArrangementSlider }, // Intelligent 3 Voices
    { kModeIntelligent, StyleDetail::kArrangementSlider }, // Intelligent 2 Voices
    { kModeBlock,       StyleDetail::kBlockList         }, // Block Chord 4 Voices
    { kModeFauxbourdon, StyleDetail::kFauxbourdonList   }, // Fauxbourdon 3 Voices
    { kModeOrganum,     StyleDetail::kOrganumList       }, // Organum 2/3 Voices
    { kModeParallel,    StyleDetail::kIntervalRows      }, // Parallel manual 4 Voices
    { kModeParallel,    StyleDetail::kIntervalRows      }, // Parallel manual 2 Voices
};
// clang-format on

constexpr std::int32_t kOtherEditMode = 3; // of old work; acts as Edit does

const RowRules& RulesOf(std::int32_t row) { return kRows[IsStyleRow(row) ? row : 0]; }

const ConsortierClassic::StyleEntry& EntryOf(std::int32_t row) {
    return ConsortierClassic::StyleList()[static_cast<std::size_t>(IsStyleRow(row) ? row : 0)];
}

} // namespace

DriverStyle DriverStyleOfRow(StyleRow row) {
    const auto& entry = EntryOf(row.row);
    const bool known = row.detail >= 0 && row.detail < entry.arrangementCount;
    return {entry.style, entry.arrangement + (known ? row.detail : 0)};
}

StyleRow StyleRowOfDriver(std::int32_t style, std::int32_t arrangement) {
    const std::int32_t row = ConsortierClassic::StyleListPosition(style, arrangement);
    if (!IsStyleRow(row)) return {};
    return {row, arrangement - EntryOf(row).arrangement};
}

StyleDetail DetailOfRow(std::int32_t row) { return RulesOf(row).detail; }

std::int32_t DetailCountOfRow(std::int32_t row) {
    const std::int32_t count = EntryOf(row).arrangementCount;
    return count > 1 ? count : 0;
}

std::int32_t VoicesOfRow(StyleRow row) {
    const DriverStyle driver = DriverStyleOfRow(row);
    return ConsortierClassic::CountVoices(driver.style, driver.arrangement);
}

ChoirMode ModeOfRow(std::int32_t row) { return RulesOf(row).mode; }

ChoirPage PageOfMode(std::int32_t mode) {
    if (IsLiveMode(mode)) return ChoirPage::kLive;
    return mode == kModeEdit || mode == kOtherEditMode ? ChoirPage::kEdit : ChoirPage::kAutomatic;
}

std::int32_t RowOfMode(std::int32_t mode, std::int32_t current) {
    if (ModeOfRow(current) == mode) return current;
    for (std::int32_t row = 0; row < kStyleRows; ++row)
        if (kRows[row].mode == mode) return row;
    return current;
}

} // namespace sonorelle
