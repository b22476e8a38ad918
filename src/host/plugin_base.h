// What a plug-in bridge knows of a plug-in: the operations that hosts call, with defaults that do nothing.
//
// Instances are counted for the whole process, under a lock which also guards whatever a toolkit shared by
// all of them does once: see InstanceLock.
//
// Threads: any, for count and lock; the operations as the plug-in tells.

#pragma once

#include "host/host_operations.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace sonorelle {

class CkvoPlugInBase {
public:
    explicit CkvoPlugInBase(CkvoHost* pluginHost);
    virtual ~CkvoPlugInBase();
    CkvoPlugInBase(const CkvoPlugInBase&) = delete;
    CkvoPlugInBase& operator=(const CkvoPlugInBase&) = delete;

    virtual bool IsClipping() { return false; }
    virtual void Process(const float* const* /*inputs*/, float* const* /*outputs*/, std::int32_t /*frames*/) {
    }
    virtual std::int32_t ProcessEvents(const VstEvents* /*events*/) { return 0; }

    virtual void SetProgram(std::int32_t /*index*/) {}
    virtual void SetProgramName(const std::string& /*name*/) {}
    virtual std::int32_t GetProgram() { return currentProgram.load(std::memory_order_relaxed); }
    virtual void GetProgramName(std::string& text) { text.clear(); }
    virtual bool GetProgramNameIndexed(std::int32_t /*category*/, std::int32_t /*index*/, std::string& text) {
        text.clear();
        return false;
    }

    virtual void SetParameter(std::int32_t /*index*/, float /*value*/) {}
    virtual float GetParameter(std::int32_t /*index*/) { return 0; }
    virtual void GetParameterRange(std::int32_t /*index*/, float& least, float& most, bool& logarithmic) {
        least = 0;
        most = 0;
        logarithmic = false;
    }
    virtual void GetParameterLabel(std::int32_t /*index*/, std::string& text) { text.clear(); }
    virtual void GetParameterDisplay(std::int32_t /*index*/, std::string& text) { text.clear(); }
    virtual void GetParameterName(std::int32_t /*index*/, std::string& text) { text.clear(); }
    virtual void GetParameterDisplayForValue(std::int32_t /*index*/, std::string& text, float /*value*/) {
        text.clear();
    }

    virtual std::int32_t GetChunk(const void*& data, bool /*isPreset*/) {
        data = nullptr;
        return 0;
    }
    virtual std::int32_t SetChunk(const void* /*data*/, std::int32_t /*size*/, bool /*isPreset*/) {
        return 0;
    }

    virtual void GetEffectName(std::string& text) { text.clear(); }
    virtual void GetVendorString(std::string& text) { text.clear(); }
    virtual void GetProductString(std::string& text) { text.clear(); }
    virtual std::int32_t GetVendorVersion() { return 0; }

    virtual void SetBlockSizeAndSampleRate(std::int32_t /*blockSize*/, float /*sampleRate*/) {}
    virtual void SetBlockSize(std::int32_t /*blockSize*/) {}
    virtual std::int32_t GetPlugCategory() { return 0; }
    virtual void DropFile(const std::string& /*path*/) {}
    virtual void Resume() {}
    virtual void Suspend() {}

    // Plug-ins of this process.
    static std::int32_t InstanceCount();
    // Held while a window is shown, and by whatever else the instances share.
    static std::mutex& InstanceLock();

protected:
    CkvoHost* const host; // borrowed; may be null
    std::atomic<std::int32_t> currentProgram{0};

    // Of the editor, in the window system's own terms; the interface thread's.
    void* hostWindow = nullptr;
    void* nativeWindow = nullptr;
    void* previousFocus = nullptr;
};

} // namespace sonorelle
