// All that lies below the toolbar: the frames of the panels, and in the middle the pitch view, or a text
// while there is no recording.
//
// Threads: within a ToolkitScope.

#pragma once

#include "ui/content_layout.h"
#include "ui/tool_window.h"

#include <FL/Fl_Group.H>

#include <array>
#include <functional>

namespace sonorelle {

class CkvoPitchView;

class CkvoContent final : public Fl_Group {
public:
    static constexpr std::size_t kFrames = 6; // those with a title

    // `pitchView` gives what is to be drawn, or null; it is asked while the widgets are at work.
    CkvoContent(Placement place, std::function<CkvoPitchView*()> pitchView);
    void FollowView();          // what it shows came or went
    void RedrawPanels();        // what it shows has changed
    void ShowDropHint(bool on); // something is over the window that it would take
    const CkvoToolWindow& Frame(std::size_t index) const { return *frames[index]; }
    Placement PlaceOfView() const { return viewPlace; } // from the window's corner

private:
    std::array<CkvoToolWindow*, kFrames> frames{}; // owned by the toolkit, as widgets are
    Fl_Group* middle = nullptr;                    // owned likewise
    Placement viewPlace;
    std::function<CkvoPitchView*()> currentView;
    bool viewShown = false;
    bool dropHint = false;
};

} // namespace sonorelle
