#include "platform/atomic_file_writer.h"

#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sonorelle {

namespace {

// Long enough that a call of the system costs little beside the bytes it moves.
constexpr std::size_t kBufferBytes = 65536;

// As many links in a row as the system itself follows.
constexpr int kMaxLinks = 40;

// The file that a chain of symbolic links leads to, whether it exists or not; false when the chain does not
// end.
bool FollowLinks(std::string& path) {
    for (int links = 0; links < kMaxLinks; ++links) {
        std::array<char, 4096> leadsTo;
        const ssize_t length = ::readlink(path.c_str(), leadsTo.data(), leadsTo.size());
        if (length < 0) return true; // not a link, or nothing there yet
        if (static_cast<std::size_t>(length) == leadsTo.size()) return false;
        path = JoinPath(FolderPart(path), std::string_view(leadsTo.data(), static_cast<std::size_t>(length)));
    }
    return false;
}

// A name that nobody has, short enough for any folder whatever the target's length.
std::string TemporaryName() {
    std::array<unsigned char, 8> random = {};
    if (::getrandom(random.data(), random.size(), 0) < 0) random.fill(0); // a taken name is tried again
    std::string name = ".sonorelle-";
    for (const unsigned char byte : random) {
        constexpr char kDigits[] = "0123456789abcdef";
        name += kDigits[byte >> 4];
        name += kDigits[byte & 15];
    }
    return name + ".tmp";
}

CFileDescriptor CreateTemporary(const std::string& folder, mode_t mode, std::string& path) {
    constexpr int kAttempts = 16;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        path = JoinPath(folder, TemporaryName());
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (descriptor >= 0) return CFileDescriptor(descriptor);
        if (errno != EEXIST && errno != EINTR) break;
    }
    path.clear();
    return {};
}

// Some file systems know no such call; they are taken at their word.
bool SyncToDisk(int descriptor) {
    while (::fsync(descriptor) != 0) {
        if (errno != EINTR) return errno == EINVAL || errno == ENOSYS;
    }
    return true;
}

// Makes the new name last through a power cut. The file is in place already, so a failure here changes
// nothing.
void SyncFolder(const std::string& folder) {
    const CFileDescriptor opened(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) SyncToDisk(opened.Get());
}

} // namespace

bool CAtomicFileWriter::Open(const std::string& path) {
    Abandon();
    std::string target = path;
    if (path.empty() || path.find('\0') != std::string::npos || !FollowLinks(target)) return false;

    struct stat old = {};
    const bool replaces = ::stat(target.c_str(), &old) == 0;
    if (replaces && (!S_ISREG(old.st_mode) || ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0))
        return false;

    // What replaces a file stays private until it has that file's permissions.
    constexpr mode_t kPrivate = 0600;
    constexpr mode_t kAnyNewFile = 0666; // less what the user's mask takes away
    constexpr mode_t kPermissions = 0777;
    CFileDescriptor created =
        CreateTemporary(FolderPart(target), replaces ? kPrivate : kAnyNewFile, temporary_);
    if (!created.IsOpen()) return false;
    descriptor_ = std::move(created);
    if (replaces && ::fchmod(descriptor_.Get(), old.st_mode & kPermissions) != 0) {
        Abandon();
        return false;
    }
    target_ = std::move(target);
    buffer_.resize(kBufferBytes);
    return true;
}

bool CAtomicFileWriter::Write(const void* data, std::size_t bytes) {
    if (!IsOpen() || failed_) return false;
    if (bytes == 0) return true;
    const auto* const from = static_cast<const unsigned char*>(data);
    if (bytes > buffer_.size() - filled_ && !Flush()) return false;
    if (bytes >= buffer_.size()) return WriteThrough(from, bytes);
    std::memcpy(buffer_.data() + filled_, from, bytes);
    filled_ += bytes;
    return true;
}

bool CAtomicFileWriter::Seek(std::int64_t offset) {
    if (!IsOpen() || offset < 0 || !Flush()) return false;
    bufferStart_ = offset;
    return true;
}

std::int64_t CAtomicFileWriter::Length() const noexcept {
    return std::max(length_, filled_ == 0 ? 0 : Tell());
}

bool CAtomicFileWriter::CutOff() {
    if (!IsOpen() || !Flush()) return false;
    failed_ = ::ftruncate(descriptor_.Get(), bufferStart_) != 0;
    length_ = bufferStart_;
    return !failed_;
}

bool CAtomicFileWriter::Flush() {
    const std::size_t bytes = filled_;
    filled_ = 0;
    return WriteThrough(buffer_.data(), bytes);
}

bool CAtomicFileWriter::WriteThrough(const unsigned char* data, std::size_t bytes) {
    std::size_t done = 0;
    while (done < bytes && !failed_) {
        const ssize_t put = ::pwrite(descriptor_.Get(), data + done, bytes - done, bufferStart_);
        if (put < 0 && errno == EINTR) continue;
        failed_ = put <= 0;
        if (failed_) break;
        done += static_cast<std::size_t>(put);
        bufferStart_ += put;
        length_ = std::max(length_, bufferStart_);
    }
    return !failed_;
}

bool CAtomicFileWriter::Commit() {
    const std::string folder = FolderPart(target_); // first: once the file is in place nothing may fail
    bool written = IsOpen() && Flush() && SyncToDisk(descriptor_.Get());
    written = descriptor_.Close() && written;
    written = written && ::rename(temporary_.c_str(), target_.c_str()) == 0;
    if (written) {
        temporary_.clear();
        SyncFolder(folder);
    }
    Abandon();
    return written;
}

void CAtomicFileWriter::Abandon() noexcept {
    descriptor_.Close();
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    temporary_.clear();
    target_.clear();
    bufferStart_ = 0;
    filled_ = 0;
    length_ = 0;
    failed_ = false;
}

} // namespace sonorelle
