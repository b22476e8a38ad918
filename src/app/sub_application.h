// What the plug-in core knows of an application: one loaded recording with everything that belongs to it.
//
// All operations are called with the lock held that guards the application's life; see application.h for the
// threads of each.

#pragma once

#include <cstdint>
#include <string>

namespace sonorelle {

class CkvoSubApplicationBase {
public:
    CkvoSubApplicationBase() = default;
    virtual ~CkvoSubApplicationBase() = default;
    CkvoSubApplicationBase(const CkvoSubApplicationBase&) = delete;
    CkvoSubApplicationBase& operator=(const CkvoSubApplicationBase&) = delete;

    // Frees what the last SaveState handed out.
    virtual void ReleaseStateBuffer();

    virtual std::int32_t Run() = 0;                            // 0, or -1 when cancelled
    virtual std::int32_t ProcessBlock(float* interleaved) = 0; // 0, or 1 at the end
    virtual void Poll() = 0;                                   // every 0.1 s, display work

    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void NextNote() = 0;
    virtual void PreviousNote() = 0;
    virtual void Rewind() = 0;
    virtual void SetLoop(bool on) = 0;
    virtual void SetBlockSizeHint() = 0;
    virtual std::int32_t GetPosition() const = 0;          // samples of the recording
    virtual void SetPosition(std::int32_t offset) = 0;     // samples from the start of the play region
    virtual void RefreshFromStore() = 0;                   // after undo, redo and recall
    virtual std::int32_t SaveState(const void*& data) = 0; // bytes; good until the next SaveState or release
    virtual std::int32_t LoadState(const void* data, std::int32_t size, bool openFile) = 0;

protected:
    std::string stateBuffer;
};

} // namespace sonorelle
