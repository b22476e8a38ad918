// The row of buttons above the editor, as a table.
//
// Pure values for any thread.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sonorelle {

// In pixels; from the window's left upper corner, unless its user says otherwise.
struct Placement {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Placement&) const = default;
};

inline constexpr int kWindowWidth = 959;
inline constexpr int kWindowHeight = 599;

inline constexpr Placement kMainRow{1, 0, kWindowWidth - 2, 24};     // Load, Save, the logo
inline constexpr Placement kEditRow{120, 1, kWindowWidth - 160, 22}; // all else
inline constexpr Placement kContent{0, 26, kWindowWidth, kWindowHeight - 26};

enum class ToolbarButton : std::int32_t {
    kLoad,
    kSave,
    kUndo,
    kRedo,
    kCutMode,
    kViewAll,
    kFitPlayRegion,
    kFitVertically,
    kFitHorizontally,
    kFollowCursor,
    kSingleVoice,
    kLogo,
};
inline constexpr std::size_t kToolbarButtons = 12;

enum class ToolbarRow : std::int32_t { kMain, kEdit };

struct ToolbarEntry {
    ToolbarButton button;
    ToolbarRow row;
    Placement place; // from the corner of its row
    bool toggle;
    const char* label; // null: a picture instead
    const char* tip;   // null: none
};

// clang-format off
inline constexpr std::array<ToolbarEntry, kToolbarButtons> kToolbar = {{
    {ToolbarButton::kLoad,            ToolbarRow::kMain, { 10, 5,  40, 15}, false, "Load",  "load monophonic audio file"},
    {ToolbarButton::kSave,            ToolbarRow::kMain, { 55, 5,  40, 15}, false, "Save",  "save audio & midi"},
    {ToolbarButton::kUndo,            ToolbarRow::kEdit, {  0, 4,  35, 15}, false, nullptr, "undo"},
    {ToolbarButton::kRedo,            ToolbarRow::kEdit, { 40, 4,  35, 15}, false, nullptr, "redo"},
    {ToolbarButton::kCutMode,         ToolbarRow::kEdit, {100, 4,  35, 15}, true,  nullptr, "enable cut mode"},
    {ToolbarButton::kViewAll,         ToolbarRow::kEdit, {160, 4,  35, 15}, false, nullptr, "view all"},
    {ToolbarButton::kFitPlayRegion,   ToolbarRow::kEdit, {200, 4,  35, 15}, false, nullptr, "scale to current play region"},
    {ToolbarButton::kFitVertically,   ToolbarRow::kEdit, {240, 4,  35, 15}, false, nullptr, "scale vertically"},
    {ToolbarButton::kFitHorizontally, ToolbarRow::kEdit, {280, 4,  35, 15}, false, nullptr, "scale horizontally"},
    {ToolbarButton::kFollowCursor,    ToolbarRow::kEdit, {340, 4,  35, 15}, true,  nullptr, "follow cursor"},
    {ToolbarButton::kSingleVoice,     ToolbarRow::kEdit, {400, 4,  35, 15}, true,  nullptr, "enable single voice output"},
    {ToolbarButton::kLogo,            ToolbarRow::kMain, {kMainRow.width - 100, 7, 100, 16}, false, nullptr, nullptr},
}};
// clang-format on

// From the window's corner.
constexpr Placement PlaceOf(const ToolbarEntry& entry) {
    const Placement row = entry.row == ToolbarRow::kMain ? kMainRow : kEditRow;
    return {row.x + entry.place.x, row.y + entry.place.y, entry.place.width, entry.place.height};
}

// Which buttons answer, and where the toggles stand.
struct ToolbarLook {
    bool editActive = false; // undo to follow cursor
    bool saveActive = false;
    bool singleVoiceActive = false;

    bool cutMode = false;
    bool followCursor = false;
    bool singleVoice = false;

    bool operator==(const ToolbarLook&) const = default;
};

constexpr bool IsActive(const ToolbarLook& look, ToolbarButton button) {
    switch (button) {
    case ToolbarButton::kLoad:
    case ToolbarButton::kLogo:
        return true;
    case ToolbarButton::kSave:
        return look.saveActive;
    case ToolbarButton::kSingleVoice:
        return look.editActive && look.singleVoiceActive;
    default:
        return look.editActive;
    }
}

constexpr bool IsOn(const ToolbarLook& look, ToolbarButton button) {
    switch (button) {
    case ToolbarButton::kCutMode:
        return look.cutMode;
    case ToolbarButton::kFollowCursor:
        return look.followCursor;
    case ToolbarButton::kSingleVoice:
        return look.singleVoice;
    default:
        return false;
    }
}

} // namespace sonorelle
