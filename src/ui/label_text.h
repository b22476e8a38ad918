// The small markup of labels: "@b Snapshots", "Host @y+1@s5@<@>@n Plug Offset".
//
//     @b        bold from here
//     @n        as the label begins: normal face, its own size, on the line
//     @s5       size 5; @s-8 and @s+2 count from the label's own size, @s0 is that size
//     @y+6      lower by 6 pixels than the line, @y-6 higher; until the next line
//     @< @>     an arrow to the left, to the right
//     @@        the sign itself
//
// A space behind @b or @n belongs to the command. Other signs behind an @ are shown as they stand. Lines end
// with "\n".
//
//     for (const LabelRun& run : ParseLabel("@b Tuning Freq", 12)) ... // {"Tuning Freq", bold, 12, 0, line
//     0}
//
// Pure values for any thread; the parser allocates.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

enum class LabelShape { kText, kArrowLeft, kArrowRight };

// A piece of one line that looks the same all through.
struct LabelRun {
    LabelShape shape = LabelShape::kText;
    std::string text; // of kText
    bool bold = false;
    int size = 0;  // pixels, 1 to kLargestLabel
    int lower = 0; // pixels below the line
    int line = 0;  // 0 is the first

    bool operator==(const LabelRun&) const = default;
};

inline constexpr int kLargestLabel = 200; // pixels

std::vector<LabelRun> ParseLabel(std::string_view label, int size);
// The text alone.
std::string PlainLabel(std::string_view label);

} // namespace sonorelle
