#include "platform/file_system.h"

#include <cstdlib>
#include <limits>

#include <sys/stat.h>

namespace sonorelle {

namespace {

constexpr char kSeparator = '/';

bool Status(const std::string& path, struct stat& status) {
    if (path.find('\0') != std::string::npos) return false; // the system would look for the part before it
    return ::stat(path.c_str(), &status) == 0;
}

std::int64_t ToNanoseconds(std::int64_t seconds, std::int64_t rest) {
    constexpr std::int64_t kPerSecond = 1000000000;
    std::int64_t whole = 0;
    std::int64_t sum = 0;
    if (__builtin_mul_overflow(seconds, kPerSecond, &whole) || __builtin_add_overflow(whole, rest, &sum))
        return seconds < 0 ? std::numeric_limits<std::int64_t>::min()
                           : std::numeric_limits<std::int64_t>::max();
    return sum;
}

// Where the name starts: behind the last separator, at 0 without one.
std::size_t NameStart(std::string_view path) {
    const std::size_t separator = path.rfind(kSeparator);
    return separator == std::string_view::npos ? 0 : separator + 1;
}

// Where the extension starts within a name; its length when there is none. A leading dot starts no extension.
std::size_t ExtensionStart(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 || name == ".." ? name.size() : dot;
}

std::string_view WithoutTrailingSeparators(std::string_view folder) {
    while (folder.size() > 1 && folder.back() == kSeparator) folder.remove_suffix(1);
    return folder;
}

} // namespace

bool FileModificationTimeNanoseconds(const std::string& path, std::int64_t& nanoseconds) {
    struct stat status = {};
    if (!Status(path, status)) return false;
    nanoseconds = ToNanoseconds(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    return true;
}

bool FileModificationTimeSeconds(const std::string& path, std::int64_t& seconds) {
    struct stat status = {};
    if (!Status(path, status)) return false;
    seconds = status.st_mtim.tv_sec;
    return true;
}

bool FileSize(const std::string& path, std::int64_t& bytes) {
    struct stat status = {};
    if (!Status(path, status) || !S_ISREG(status.st_mode)) return false;
    bytes = status.st_size;
    return true;
}

std::string FolderPart(std::string_view path) {
    return std::string(WithoutTrailingSeparators(path.substr(0, NameStart(path))));
}

std::string FileNamePart(std::string_view path) { return std::string(path.substr(NameStart(path))); }

std::string FileStemPart(std::string_view path) {
    const std::string_view name = path.substr(NameStart(path));
    return std::string(name.substr(0, ExtensionStart(name)));
}

std::string FileExtensionPart(std::string_view path) {
    const std::string_view name = path.substr(NameStart(path));
    return std::string(name.substr(ExtensionStart(name)));
}

std::string JoinPath(std::string_view folder, std::string_view name) {
    if (folder.empty() || (!name.empty() && name.front() == kSeparator)) return std::string(name);
    std::string path(folder);
    if (path.back() != kSeparator) path += kSeparator;
    path += name;
    return path;
}

std::string TemporaryFolder() {
    const char* const chosen = std::getenv("TMPDIR");
    const std::string_view folder = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
    return std::string(WithoutTrailingSeparators(folder));
}

} // namespace sonorelle
