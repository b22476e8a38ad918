#include "platform/regular_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sonorelle {

bool CRegularFile::Open(const std::string& path) {
    descriptor_.Close();
    if (path.find('\0') != std::string::npos) return false;
    // O_NONBLOCK: opening a pipe that nobody writes to would wait for ever. It means nothing to a regular
    // file.
    CFileDescriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status = {};
    if (!opened.IsOpen() || ::fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    descriptor_ = std::move(opened);
    return true;
}

void CRegularFile::Close() { descriptor_.Close(); }

std::int64_t CRegularFile::Length() const {
    struct stat status = {};
    return IsOpen() && ::fstat(descriptor_.Get(), &status) == 0 ? status.st_size : 0;
}

std::size_t CRegularFile::ReadAt(std::int64_t offset, void* data, std::size_t bytes) const {
    if (!IsOpen() || offset < 0) return 0;
    auto* const to = static_cast<unsigned char*>(data);
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t got =
            ::pread(descriptor_.Get(), to + done, bytes - done, offset + static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

} // namespace sonorelle
