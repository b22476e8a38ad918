// GuiLock for the length of a scope, with what is counted while it is held. Only for the sources of
// CvirelainePlugIn.

#pragma once

#include "host/plugin_core.h"

namespace sonorelle {

class CvirelainePlugIn::InterfaceScope {
public:
    explicit InterfaceScope(CvirelainePlugIn& owner) : plugIn(owner) {
        SpinEnter(plugIn.guiLock);
        Count();
    }
    // For GuiLock that was entered already.
    InterfaceScope(CvirelainePlugIn& owner, std::adopt_lock_t) : plugIn(owner) { Count(); }
    ~InterfaceScope() {
        if (--plugIn.scopeDepth == 0) plugIn.guiHolder.store({}, std::memory_order_relaxed);
        plugIn.guiLock.LeaveCriticalSection();
    }
    InterfaceScope(const InterfaceScope&) = delete;
    InterfaceScope& operator=(const InterfaceScope&) = delete;

private:
    void Count() {
        ++plugIn.scopeDepth;
        plugIn.guiHolder.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }

    CvirelainePlugIn& plugIn;
};

} // namespace sonorelle
