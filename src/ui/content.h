// All that lies below the toolbar: the frames of the panels, and the text that stands in the middle while
// there is no recording.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/content_layout.h"
#include "ui/tool_window.h"

#include <FL/Fl_Group.H>

#include <array>

namespace sonorelle {

class CkvoContent final : public Fl_Group {
public:
    static constexpr std::size_t kFrames = 6; // those with a title

    explicit CkvoContent(Placement place);
    void ShowStartText(bool shown);
    void RedrawPanels() {} // none yet has anything that changes
    bool IsStartTextShown() const { return startText; }
    const CkvoToolWindow& Frame(std::size_t index) const { return *frames[index]; }

private:
    std::array<CkvoToolWindow*, kFrames> frames{}; // owned by the toolkit, as widgets are
    Fl_Group* middle = nullptr;
    bool startText = true;
};

} // namespace sonorelle
