// The editor's window as a bridge sees it: something that can be shown inside a window of the host.
//
// All operations on the host's interface thread, which need not be the same one from call to call, but never
// two at once.

#pragma once

#include <cstdint>
#include <memory>

namespace sonorelle {

class CkvoToolkit;
class CvirelainePlugIn;

class CkvoEditorWindow {
public:
    static constexpr std::int32_t kWidth = 959; // pixels
    static constexpr std::int32_t kHeight = 599;

    CkvoEditorWindow() = default;
    virtual ~CkvoEditorWindow() = default; // closes
    CkvoEditorWindow(const CkvoEditorWindow&) = delete;
    CkvoEditorWindow& operator=(const CkvoEditorWindow&) = delete;

    // Shows the window as a child of the host's, at its left upper corner. False, with nothing shown, where
    // there is no display.
    virtual bool Open(void* hostWindow) = 0;
    virtual void Close() = 0; // hides it, and gives the focus back
    virtual bool IsOpen() const = 0;
    // One pass of events; whether it is open or not, since messages and loads may wait for it.
    virtual void Idle() = 0;
};

} // namespace sonorelle
