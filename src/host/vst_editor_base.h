// The editor of an effect, as a host's dispatcher knows it.

#pragma once

#include "host/vst_effect_record.h"

namespace sonorelle {

class AEffEditor {
public:
    AEffEditor() = default;
    virtual ~AEffEditor() = default;
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;

    virtual bool getRect(ERect*& rect) {
        rect = nullptr;
        return false;
    }
    virtual bool open(void* /*parent*/) { return false; } // the parent window, as the system knows it
    virtual void close() {}
    virtual void idle() {} // called by the host some 25 times a second
};

} // namespace sonorelle
