#include "platform/file_descriptor.h"

#include <unistd.h>

namespace sonorelle {

bool CFileDescriptor::Close() noexcept {
    if (descriptor_ < 0) return true;
    // The descriptor is gone even when this fails: closing it again could hit another thread's file.
    return ::close(std::exchange(descriptor_, -1)) == 0;
}

} // namespace sonorelle
