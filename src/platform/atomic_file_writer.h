// Writes a file so that under its name there is always either the whole old file or the whole new one: the
// bytes go to a temporary file in the same folder, which takes the target's name in one step at the end. A
// full disk, a crash or a writer that gives up leave the old file as it was.
//
//     CAtomicFileWriter writer;
//     if (writer.Open(path)) {
//         writer.Write(header, sizeof header);
//         writer.Write(samples, bytes);
//     }
//     const bool written = writer.Commit(); // one question covers every step before it
//
// The new file has the permissions of the one that it replaces, or those of any new file. Where the target is
// a symbolic link, the file that it leads to is replaced and the link stays. One thread uses a writer at a
// time.

#pragma once

#include "platform/file_descriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

class CAtomicFileWriter {
public:
    CAtomicFileWriter() = default;
    ~CAtomicFileWriter() { Abandon(); }
    CAtomicFileWriter(const CAtomicFileWriter&) = delete;
    CAtomicFileWriter& operator=(const CAtomicFileWriter&) = delete;

    // Prepares to replace `path`, abandoning what was being written before. False when the folder cannot be
    // written, or the target is write-protected or something other than a regular file. Allocates the buffer.
    bool Open(const std::string& path);
    bool IsOpen() const noexcept { return descriptor_.IsOpen(); }

    // Writes at the current position, which moves on. Buffered: short writes are cheap. False when it failed,
    // now or before.
    bool Write(const void* data, std::size_t bytes);

    // Moves the position, in bytes from the start; beyond the end is allowed, and a gap then reads as zeros.
    bool Seek(std::int64_t offset);
    std::int64_t Tell() const noexcept { return bufferStart_ + static_cast<std::int64_t>(filled_); }
    std::int64_t Length() const noexcept; // bytes written so far, up to the farthest

    // Cuts off what was written behind the current position.
    bool CutOff();

    // Brings everything to the disk, then replaces the target. False, with the old file untouched, when any
    // step since Open has failed. The writer is closed afterwards either way.
    bool Commit();

    // Gives up: the temporary file is removed, the target untouched.
    void Abandon() noexcept;

private:
    bool Flush();
    bool WriteThrough(const unsigned char* data, std::size_t bytes);

    CFileDescriptor descriptor_;
    std::string target_;
    std::string temporary_;
    std::vector<unsigned char> buffer_;
    std::int64_t bufferStart_ = 0; // where the buffer's first byte belongs in the file
    std::size_t filled_ = 0;       // bytes in the buffer that are not in the file yet
    std::int64_t length_ = 0;      // of what has left the buffer
    bool failed_ = false;
};

} // namespace sonorelle
