// Feeds any bytes to CkvoAudioFile as a file, with and without a cache, whole and in part.

#include "formats/audio_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

using sonorelle::CkvoAudioFile;

constexpr std::int32_t kBlockFrames = 61;

void Check(bool holds) {
    if (!holds) std::abort();
}

// A file that lives in memory only, under a path as any other.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size)
        : descriptor_(::memfd_create("sound", MFD_CLOEXEC)) {
        Check(descriptor_ >= 0 && ::write(descriptor_, data, size) == static_cast<ssize_t>(size));
    }
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

void ReadBlock(CkvoAudioFile& file, const std::vector<float*>& channels) {
    const std::int32_t got = file.Read(channels.data(), kBlockFrames);
    Check(got >= 0 && got <= kBlockFrames);
    for (const float* channel : channels)
        Check(std::all_of(channel, channel + got, [](float sample) { return std::isfinite(sample); }));
}

void Exercise(const std::string& path, std::size_t size, std::int32_t cacheLimit, std::int32_t first,
              std::int32_t end) {
    CkvoAudioFile file;
    if (file.OpenRead(path, cacheLimit, first, end) != 0) {
        Check(!file.IsOpen() && file.GetPath() == path);
        return;
    }
    const std::int32_t length = file.GetLength();
    // No encoding that is read puts more than one sample into a byte.
    Check(length >= 0 && file.GetNumChannels() > 0);
    Check(static_cast<std::uint64_t>(length) * static_cast<std::uint64_t>(file.GetNumChannels()) <= size);

    std::vector<std::vector<float>> arrays(static_cast<std::size_t>(file.GetNumChannels()),
                                           std::vector<float>(kBlockFrames));
    std::vector<float*> channels;
    for (auto& array : arrays) channels.push_back(array.data());
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    for (const std::int32_t frame : {0, length / 2, length - 1, length, -1, kMax, kMin}) {
        file.Seek(frame);
        ReadBlock(file, channels);
        file.Tell();
    }
    // The length is what the file holds: its last frame can be read.
    file.Seek(length - 1);
    Check(length == 0 || file.HasLimits() || file.Read(channels.data(), kBlockFrames) == 1);
    Check(file.Close() == 0 && !file.IsOpen());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    const std::string path = file.Path();
    Exercise(path, size, sonorelle::kAudioCacheFrames, -1, -1);
    Exercise(path, size, 3, -1, -1);
    Exercise(path, size, sonorelle::kAudioCacheFrames, 2, 5);
    return 0;
}
