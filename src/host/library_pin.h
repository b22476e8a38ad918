// Keeps the library in memory while an effect lives, whatever the host does: one that unloads it with an
// analysis under way would leave that thread without its code.
//
// A program that the code is linked into has nothing to pin.

#pragma once

namespace sonorelle {

class CLibraryPin {
public:
    CLibraryPin();
    ~CLibraryPin(); // the host holds the library itself during its closing call
    CLibraryPin(const CLibraryPin&) = delete;
    CLibraryPin& operator=(const CLibraryPin&) = delete;

private:
    void* library;
};

} // namespace sonorelle
