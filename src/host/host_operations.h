// What the plug-in's core asks of its host. A plug-in bridge, the command line and tests each implement it;
// where there is no host at all, the core is given a null pointer.
//
//     class Transport final : public CkvoHost { ... };
//     CvirelainePlugIn plugIn(&transport, toolkit);
//
// As it stands here it is a host that knows nothing and listens to nothing.
//
// Threads. GetTimeInfo, GetCurrentProcessLevel, GetSampleRate, GetOutputLatency and SendVstEventsToHost are
// called on the audio thread, with a lock of the core held, so that they must not wait for another thread
// that calls into the core, nor allocate. GetTimeInfo and GetSampleRate are asked by loading threads as well,
// and SetParameterAutomated comes from whatever thread loads, restores, or shows the editor.

#pragma once

#include "host/vst_records.h"

#include <cstdint>

namespace sonorelle {

class CkvoHost {
public:
    CkvoHost() = default;
    virtual ~CkvoHost() = default;
    CkvoHost(const CkvoHost&) = delete;
    CkvoHost& operator=(const CkvoHost&) = delete;

    // Time and transport at the start of the coming block; null where the host has none to tell. `filter`:
    // the flags of what is asked for. The record is the host's own: it is read at once, and never written.
    virtual const VstTimeInfo* GetTimeInfo(std::int32_t /*filter*/) { return nullptr; }
    virtual std::int32_t GetCurrentProcessLevel() { return 0; } // kVstProcessLevelOffline, or another level
    virtual float GetSampleRate() { return 0; }                 // Hz; 0: not known
    virtual std::int32_t GetOutputLatency() { return 0; }       // samples

    // A parameter (0 to 31) has this value now (0 to 1), and the host did not set it.
    virtual void SetParameterAutomated(std::int32_t /*index*/, float /*value*/) {}
    // Notes of the voices in the block that was just made. The list is good until the call returns.
    virtual void SendVstEventsToHost(VstEvents* /*events*/) {}
};

} // namespace sonorelle
