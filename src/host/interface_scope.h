// GuiLock for the length of a scope, with what is counted while it is held; and the length of a call. Only
// for the sources of CvirelainePlugIn.

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

// A call that may wait for GuiLock, from its beginning to its end: the destructor waits for those under way.
// Not around a question to the user, from within which the plug-in may be destroyed.
class CvirelainePlugIn::CallScope {
public:
    explicit CallScope(CvirelainePlugIn& owner) : plugIn(owner) {
        plugIn.callsUnderWay.fetch_add(1, std::memory_order_relaxed);
    }
    ~CallScope() { plugIn.callsUnderWay.fetch_sub(1, std::memory_order_release); } // its last touch
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    CvirelainePlugIn& plugIn;
};

} // namespace sonorelle
