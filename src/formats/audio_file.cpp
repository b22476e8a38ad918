#include "formats/audio_file.h"

#include "formats/sound_file_reader.h"
#include "formats/sound_file_writer.h"
#include "platform/file_system.h"
#include "platform/large_floats.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace sonorelle {

namespace {

// More is read from the disk instead. Two channels of kAudioCacheFrames need a fifth of it; a file with
// hundreds of channels would take all memory.
constexpr std::int64_t kMaxCacheBytes = std::int64_t{1} << 30;

struct WriteFormat {
    std::int32_t number;
    int format; // as the sound library knows it
};

// The library writes no little-endian floats into AIFF; there they have the container's own order.
constexpr WriteFormat kWriteFormats[] = {
    {kWav16, SF_FORMAT_WAV | SF_FORMAT_PCM_16},
    {kWavFloat, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
    {kAiff16, SF_FORMAT_AIFF | SF_FORMAT_PCM_16 | SF_ENDIAN_LITTLE},
    {kAiffFloat, SF_FORMAT_AIFF | SF_FORMAT_FLOAT},
};

const WriteFormat* FindWriteFormat(std::int32_t number) {
    const auto* const found =
        std::find_if(std::begin(kWriteFormats), std::end(kWriteFormats),
                     [=](const WriteFormat& format) { return format.number == number; });
    return found == std::end(kWriteFormats) ? nullptr : found;
}

// Truncated; 0 for what is no rate.
std::int32_t WholeHertz(float sampleRate) {
    return sampleRate >= 1.0f && sampleRate < 2147483648.0f ? static_cast<std::int32_t>(sampleRate) : 0;
}

} // namespace

struct CkvoAudioFile::Impl {
    CSoundFileReader reader;
    CSoundFileWriter writer;
    std::int32_t position = 0; // frames of the whole file
    std::int32_t cacheLimit = 0;
    std::int32_t numChannels = 0;
    std::int32_t numFrames = 0;
    std::int32_t firstFrame = 0;
    std::int32_t endFrame = 0; // exclusive
    std::string path;
    float sampleRate = 0;
    std::vector<LargeFloats> cache; // one array a channel; empty when not in memory
    bool hasCache = false;
    bool isPartial = false;

    void TakeLimits(std::int32_t first, std::int32_t end);
    void FillCache();
    bool AllocateCache(std::vector<float*>& channels);
};

CkvoAudioFile::CkvoAudioFile() : impl_(std::make_unique<Impl>()) {}

CkvoAudioFile::~CkvoAudioFile() { CkvoAudioFile::Close(); }

std::int32_t CkvoAudioFile::OpenRead(std::string path, std::int32_t cacheLimit, std::int32_t first,
                                     std::int32_t end) {
    if (CkvoAudioFile::IsOpen()) return kCannotOpen;
    Impl& file = *impl_;
    file.position = 0;
    file.cacheLimit = cacheLimit;
    file.isPartial = false;
    file.path = std::move(path);
    if (!file.reader.Open(file.path)) return kCannotOpen;
    file.numChannels = file.reader.ChannelCount();
    file.sampleRate = static_cast<float>(file.reader.SampleRate());
    file.numFrames = file.reader.FrameCount();
    file.TakeLimits(first, end);
    if (file.numFrames <= cacheLimit) file.FillCache();
    return kOk;
}

// A first frame alone, with -1 for the end, counts as no limit, while an end alone counts.
void CkvoAudioFile::Impl::TakeLimits(std::int32_t first, std::int32_t end) {
    const bool hasFirst = first >= 0 && first < numFrames && first < end;
    const bool hasEnd = end >= 0 && end <= numFrames && end > first;
    firstFrame = hasFirst ? first : 0;
    endFrame = hasEnd ? end : numFrames;
    isPartial = hasFirst || hasEnd;
}

// Without memory for it the file stays usable, read from the disk.
void CkvoAudioFile::Impl::FillCache() {
    std::vector<float*> channels;
    hasCache = AllocateCache(channels);
    if (!hasCache) {
        cache.clear();
        return;
    }
    const std::int32_t got = reader.Read(channels.data(), 0, numFrames);
    reader.Seek(0);
    // The disk failed, or somebody cut the file off meanwhile: it is as long as what came.
    numFrames = got;
    endFrame = std::min(endFrame, numFrames);
    firstFrame = std::min(firstFrame, endFrame);
}

bool CkvoAudioFile::Impl::AllocateCache(std::vector<float*>& channels) {
    const std::int64_t bytesPerFrame = std::int64_t{numChannels} * static_cast<std::int64_t>(sizeof(float));
    if (numFrames > kMaxCacheBytes / bytesPerFrame) return false;
    try {
        for (std::int32_t c = 0; c < numChannels; ++c) {
            cache.push_back(AllocateLargeFloats(static_cast<std::size_t>(numFrames)));
            if (!cache.back()) return false;
            channels.push_back(cache.back().get());
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

std::int32_t CkvoAudioFile::OpenWrite(std::string path, std::int32_t channels, float sampleRate,
                                      std::int32_t cacheLimit, std::int32_t format) {
    if (CkvoAudioFile::IsOpen()) return kCannotOpen;
    Impl& file = *impl_;
    file.sampleRate = sampleRate;
    file.numChannels = channels;
    file.cacheLimit = cacheLimit;
    const WriteFormat* const wanted = FindWriteFormat(format);
    if (wanted == nullptr) return kOk;
    if (!file.writer.Open(path, channels, WholeHertz(sampleRate), wanted->format)) {
        file.sampleRate = 0;
        file.numChannels = 0;
        file.cacheLimit = 0;
        return kCannotOpen;
    }
    file.path = std::move(path);
    return kOk;
}

std::int32_t CkvoAudioFile::Close() {
    Impl& file = *impl_;
    const bool whole = !file.writer.IsOpen() || file.writer.Commit();
    file.reader.Close();
    file.path.clear();
    file.position = 0;
    file.cache.clear();
    file.hasCache = false;
    file.numChannels = 0;
    file.sampleRate = 0;
    return whole ? kOk : kCannotWrite;
}

void CkvoAudioFile::Discard() {
    impl_->writer.Abandon();
    CkvoAudioFile::Close();
}

std::int32_t CkvoAudioFile::Seek(std::int32_t frame) {
    Impl& file = *impl_;
    const std::int64_t wanted = std::int64_t{file.firstFrame} + frame;
    file.position = static_cast<std::int32_t>(std::min<std::int64_t>(
        wanted, std::numeric_limits<std::int32_t>::max())); // a sum of i32 >= 0 and i32
    if (!file.hasCache) file.reader.Seek(frame);            // and not to `position`: see the header
    return file.position;
}

std::int32_t CkvoAudioFile::Tell() {
    Impl& file = *impl_;
    if (file.reader.IsOpen() && !file.hasCache) file.position = file.reader.Tell();
    return file.position - file.firstFrame;
}

std::int32_t CkvoAudioFile::GetLength() const { return impl_->endFrame - impl_->firstFrame; }

std::int32_t CkvoAudioFile::Read(float* const* channels, std::int32_t frames) {
    if (frames < 1) return frames;
    Impl& file = *impl_;
    if (!file.reader.IsOpen() || file.position < 0 || file.position >= file.endFrame) return 0;
    std::int32_t count = std::min(frames, file.endFrame - file.position);
    if (file.hasCache) {
        for (std::size_t c = 0; c < file.cache.size(); ++c)
            std::memcpy(channels[c], file.cache[c].get() + file.position,
                        static_cast<std::size_t>(count) * sizeof(float));
    } else {
        count = file.reader.Read(channels, 0, count);
    }
    file.position += count;
    return count;
}

std::int32_t CkvoAudioFile::Write(const float* const* channels, std::int32_t frames) {
    constexpr std::int32_t kFailed = -1;
    Impl& file = *impl_;
    if (!file.writer.IsOpen()) return kFailed;
    if (frames < 1) return kOk;
    return file.writer.Write(channels, frames) ? kOk : kFailed;
}

std::int32_t CkvoAudioFile::GetNumChannels() const { return impl_->numChannels; }
std::int32_t CkvoAudioFile::GetCacheLimit() const { return impl_->cacheLimit; }
float CkvoAudioFile::GetSampleRate() const { return impl_->sampleRate; }
std::string CkvoAudioFile::GetPath() const { return impl_->path; }
bool CkvoAudioFile::IsOpen() const { return impl_->reader.IsOpen() || impl_->writer.IsOpen(); }
bool CkvoAudioFile::HasLimits() const { return impl_->isPartial; }

std::int64_t CkvoAudioFile::GetModificationTime() const {
    std::int64_t seconds = 0;
    FileModificationTimeSeconds(impl_->path, seconds);
    return seconds;
}

} // namespace sonorelle
