// What the main window asks of whoever it is the face of.
//
// Threads: the one that idles the window. None of it is called while the toolkit is at work on an event, but
// for the two that enter and leave.

#pragma once

#include "ui/toolbar_layout.h"

#include <string>

namespace sonorelle {

class CkvoPitchView;

class CkvoMainWindowOwner {
public:
    CkvoMainWindowOwner() = default;
    virtual ~CkvoMainWindowOwner() = default;
    CkvoMainWindowOwner(const CkvoMainWindowOwner&) = delete;
    CkvoMainWindowOwner& operator=(const CkvoMainWindowOwner&) = delete;

    virtual void PressToolbar(ToolbarButton button) = 0; // any but the logo; may ask the user, may take long
    virtual ToolbarLook GetToolbarLook() = 0;
    // Null: nothing is loaded. Only between TryEnterInterface and LeaveInterface.
    virtual CkvoPitchView* PitchView() = 0;
    // The text as it was dropped, or the path where it was that of a file.
    virtual void DropText(const std::string& text) = 0;
    virtual std::string AboutText() = 0;     // the version
    virtual std::string UpdateAddress() = 0; // of the page with newer versions; empty: none

    // Around everything that widgets do with what they show: false while it is being replaced elsewhere.
    // Never waits.
    virtual bool TryEnterInterface() = 0;
    virtual void LeaveInterface() = 0;
};

} // namespace sonorelle
