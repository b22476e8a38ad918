#include "formats/sound_file_reader.h"

#include "formats/sample_conversion.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string_view>

namespace sonorelle {

namespace {

// Samples that are fetched at once: few calls, and small enough to stay in the processor's cache until they
// are converted.
constexpr std::int32_t kChunkSamples = 32768;

struct Container {
    std::string_view start;   // the file's first bytes
    std::size_t secondOffset; // where the second mark lies, 0 for none
    std::string_view second;
};

using namespace std::string_view_literals;

// Looked at before the sound library sees the file, so that its decoders for compressed sound never run on
// it.
constexpr std::array<Container, 10> kContainers = {{
    {"RIFF"sv, 8, "WAVE"sv},
    {"RIFX"sv, 8, "WAVE"sv},
    {"RF64"sv, 8, "WAVE"sv},
    {"riff\x2e\x91\xcf\x11"sv, 24, "wave"sv}, // W64
    {"FORM"sv, 8, "AIFF"sv},
    {"FORM"sv, 8, "AIFC"sv},
    {".snd"sv, 0, {}},
    {"dns."sv, 0, {}},
    {"caff"sv, 0, {}},
    {"\0ds."sv, 0, {}}, // AU as written by old machines
}};

bool IsKnownContainer(const CRegularFile& file) {
    std::array<char, 28> head = {};
    const std::string_view text(head.data(), file.ReadAt(0, head.data(), head.size()));
    return std::any_of(kContainers.begin(), kContainers.end(), [&](const Container& container) {
        return text.starts_with(container.start) &&
               (container.secondOffset == 0 ||
                text.substr(std::min(container.secondOffset, text.size())).starts_with(container.second));
    });
}

// Bytes of one sample in the file; 0 for encodings that are not read.
std::int32_t BytesPerSample(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
        return 1;
    case SF_FORMAT_PCM_16:
        return 2;
    case SF_FORMAT_PCM_24:
        return 3;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        return 4;
    case SF_FORMAT_DOUBLE:
        return 8;
    default:
        return 0;
    }
}

} // namespace

bool CSoundFileReader::Open(const std::string& path) {
    Close();
    if (file_.Open(path) && IsKnownContainer(file_)) {
        SF_VIRTUAL_IO io = {OnLength, OnSeek, OnRead, nullptr, OnTell};
        SF_INFO info = {};
        sound_.reset(::sf_open_virtual(&io, SFM_READ, &info, this));
        if (sound_ && TakeHeader(info)) return true;
    }
    Close();
    return false;
}

void CSoundFileReader::Close() {
    sound_.reset();
    file_.Close();
    fileOffset_ = 0;
    channelCount_ = 0;
    sampleRate_ = 0;
    frameCount_ = 0;
    position_ = 0;
    chunkFrames_ = 0;
    shorts_.reset();
    floats_.reset();
}

bool CSoundFileReader::TakeHeader(const SF_INFO& info) {
    const std::int32_t bytesPerSample = BytesPerSample(info.format);
    if (bytesPerSample == 0 || info.channels < 1 || info.frames < 0) return false;
    channelCount_ = info.channels;
    sampleRate_ = info.samplerate;
    if (!AllocateChunk(bytesPerSample == 2)) return false;

    // The library has held the header against the length of its data already; what memory is allocated by is
    // not left to that.
    const std::int64_t bytesPerFrame = std::int64_t{bytesPerSample} * info.channels;
    const std::int64_t frames = std::min<std::int64_t>(info.frames, file_.Length() / bytesPerFrame);
    if (frames > std::numeric_limits<std::int32_t>::max()) return false;
    frameCount_ = static_cast<std::int32_t>(frames);
    return true;
}

bool CSoundFileReader::AllocateChunk(bool forShorts) {
    chunkFrames_ = std::max(kChunkSamples / channelCount_, 1);
    const auto samples = static_cast<std::size_t>(chunkFrames_) * static_cast<std::size_t>(channelCount_);
    if (forShorts) {
        shorts_.reset(new (std::nothrow) std::int16_t[samples]);
        return shorts_ != nullptr;
    }
    floats_.reset(new (std::nothrow) float[samples]);
    return floats_ != nullptr;
}

void CSoundFileReader::Seek(std::int32_t frame) {
    position_ = std::clamp(frame, 0, frameCount_);
    if (sound_) ::sf_seek(sound_.get(), position_, SEEK_SET);
}

std::int32_t CSoundFileReader::Read(float* const* channels, std::int32_t first, std::int32_t frames) {
    frames = std::min(frames, frameCount_ - position_);
    std::int32_t done = 0;
    while (done < frames) {
        const std::int32_t got = FetchChunk(std::min(frames - done, chunkFrames_));
        if (got <= 0) break;
        if (shorts_)
            SplitShorts(shorts_.get(), channelCount_, got, channels, first + done);
        else
            SplitFloats(floats_.get(), channelCount_, got, channels, first + done);
        done += got;
    }
    position_ += done;
    return done;
}

std::int32_t CSoundFileReader::FetchChunk(std::int32_t frames) {
    return static_cast<std::int32_t>(shorts_ ? ::sf_readf_short(sound_.get(), shorts_.get(), frames)
                                             : ::sf_readf_float(sound_.get(), floats_.get(), frames));
}

sf_count_t CSoundFileReader::OnLength(void* self) {
    return static_cast<CSoundFileReader*>(self)->file_.Length();
}

sf_count_t CSoundFileReader::OnSeek(sf_count_t offset, int whence, void* self) {
    auto& reader = *static_cast<CSoundFileReader*>(self);
    const std::int64_t base = whence == SEEK_CUR   ? reader.fileOffset_
                              : whence == SEEK_END ? reader.file_.Length()
                                                   : 0;
    std::int64_t target = 0;
    if (__builtin_add_overflow(base, offset, &target) || target < 0) return -1;
    return reader.fileOffset_ = target;
}

sf_count_t CSoundFileReader::OnRead(void* data, sf_count_t bytes, void* self) {
    if (bytes <= 0) return 0;
    auto& reader = *static_cast<CSoundFileReader*>(self);
    const std::size_t got = reader.file_.ReadAt(reader.fileOffset_, data, static_cast<std::size_t>(bytes));
    reader.fileOffset_ += static_cast<std::int64_t>(got);
    return static_cast<sf_count_t>(got);
}

sf_count_t CSoundFileReader::OnTell(void* self) { return static_cast<CSoundFileReader*>(self)->fileOffset_; }

} // namespace sonorelle
