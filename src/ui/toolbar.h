// The row of buttons above the editor.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/toolbar_layout.h"

#include <FL/Fl_Group.H>

#include <array>
#include <cstddef>
#include <functional>

namespace sonorelle {

class CkvoToolbarButton;

class CkvoToolbar final : public Fl_Group {
public:
    using Callback = std::function<void(ToolbarButton)>;

    // `onPress` is called within the toolkit's events.
    explicit CkvoToolbar(Callback onPress);

    void Show(const ToolbarLook& newLook);
    void SetInputActive(bool active); // false: nothing answers
    bool TakesInput() const { return inputActive; }
    const CkvoToolbarButton& Button(ToolbarButton which) const {
        return *buttons[static_cast<std::size_t>(which)];
    }

protected:
    void draw() override;

private:
    void Apply();

    Callback callback;
    std::array<CkvoToolbarButton*, kToolbarButtons> buttons{}; // owned by the toolkit, as widgets are
    ToolbarLook look;
    bool inputActive = true;
};

} // namespace sonorelle
