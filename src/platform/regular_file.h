// An ordinary file, open for reading at any place. Folders, pipes and devices are refused, and refusing them
// never waits.

#pragma once

#include "platform/file_descriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace sonorelle {

class CRegularFile {
public:
    // Opens `path`, in place of what was open before. False when it is not a regular file or may not be read.
    bool Open(const std::string& path);
    void Close();
    bool IsOpen() const noexcept { return descriptor_.IsOpen(); }

    // Length in bytes now, not at the time of opening; 0 when closed.
    std::int64_t Length() const;

    // Reads up to `bytes` bytes from `offset` on, and gives how many: fewer only at the end of the file or on
    // an error.
    std::size_t ReadAt(std::int64_t offset, void* data, std::size_t bytes) const;

private:
    CFileDescriptor descriptor_;
};

} // namespace sonorelle
