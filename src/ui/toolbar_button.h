// A button of the toolbar: a picture or a word on a small plastic box, which grows lighter under the pointer.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/toolbar_layout.h"

#include <FL/Fl_Button.H>

namespace sonorelle {

class CkvoToolbarButton final : public Fl_Button {
public:
    explicit CkvoToolbarButton(const ToolbarEntry& toolbarEntry);

    void Show(bool isActive, bool isOn);
    bool IsOn() const { return on; }
    ToolbarButton Which() const { return entry.button; }

    int handle(int event) override;

protected:
    void draw() override;

private:
    const ToolbarEntry& entry;
    bool on = false;
    bool hovered = false;
};

} // namespace sonorelle
