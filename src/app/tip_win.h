// The small window with one line of text that stands beside the pointer while a control is held: its text,
// its size, and when it is there.
//
//     TipWin tip;
//     tip.Show("1:02.500");
//     const TipSize size = SizeOfTip(textWidth, textHeight); // of the text as the font draws it, in pixels
//     tip.Hide();                                            // the button is released
//
// For the thread of the interface.

#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace sonorelle {

struct TipSize {
    std::int32_t width = 0; // pixels
    std::int32_t height = 0;

    bool operator==(const TipSize&) const = default;
};

constexpr TipSize SizeOfTip(std::int32_t textWidth, std::int32_t textHeight) {
    return {textWidth + 10, textHeight + 2};
}

class TipWin {
public:
    // Shows `newText` as it stands; while it is shown already, the text changes.
    void Show(std::string newText) {
        text = std::move(newText);
        visible = true;
    }
    void Hide() { visible = false; }
    bool IsVisible() const { return visible; }
    const std::string& GetText() const { return text; }

private:
    std::string text;
    bool visible = false;
};

// The tip of a time display.
class CTimeTipWin : public TipWin {};

} // namespace sonorelle
