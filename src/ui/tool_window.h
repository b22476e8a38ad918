// A frame around one panel, with a title in a row above it. The frame's line runs at half the height of that
// row, and the title stands in a gap of it, so that a panel may begin close below.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/toolbar_layout.h"

#include <FL/Fl_Group.H>

#include <string>

namespace sonorelle {

class CkvoToolWindow : public Fl_Group {
public:
    static constexpr int kTitleHeight = 18; // pixels

    CkvoToolWindow(Placement place, std::string frameTitle); // with markup; empty: no gap
    const std::string& Title() const { return title; }

protected:
    void draw() override;

private:
    std::string title;
};

} // namespace sonorelle
