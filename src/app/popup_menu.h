// A menu that pops up at the pointer, as data: what it offers, without how it looks.
//
//     PopupMenu menu;
//     menu.items = {{"Audio", PopupItem::kNothing, {{"all voices", 0}, {"orange voice", 1}}}};
//     const std::int32_t chosen = toolkit.ChooseFromMenu(menu); // 0, 1, or PopupItem::kNothing

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

// A picture in front of, or in place of, an entry's text.
enum class PopupMark : std::int32_t { kNone, kOff, kOn };

struct PopupItem {
    static constexpr std::int32_t kNothing = -1;

    std::string text;
    std::int32_t id = kNothing;      // what choosing it gives; kNothing for a submenu
    std::vector<PopupItem> children; // of a submenu
    PopupMark mark = PopupMark::kNone;
    bool separatorBehind = false;

    bool operator==(const PopupItem&) const = default;
};

struct PopupMenu {
    std::vector<PopupItem> items;

    bool operator==(const PopupMenu&) const = default;
};

} // namespace sonorelle
