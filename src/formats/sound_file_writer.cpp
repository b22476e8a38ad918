#include "formats/sound_file_writer.h"

#include "formats/sample_conversion.h"

#include <algorithm>
#include <limits>
#include <new>

namespace sonorelle {

namespace {

constexpr std::int32_t kWriteSamples = 32768; // converted and handed on at once

// Two channels of 16 bits reach this after three hours.
constexpr std::int64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();

} // namespace

// Without Commit the file is given up: the library completes a header that nobody will see.
CSoundFileWriter::~CSoundFileWriter() {
    if (sound_ != nullptr) ::sf_close(sound_);
}

bool CSoundFileWriter::Open(const std::string& path, std::int32_t channelCount, std::int32_t sampleRateHertz,
                            int format) {
    if (IsOpen() || channelCount < 1 || sampleRateHertz < 1) return false;
    SF_INFO info = {};
    info.channels = channelCount;
    info.samplerate = sampleRateHertz;
    info.format = format;
    if (::sf_format_check(&info) == 0 || !file_.Open(path)) return false;

    SF_VIRTUAL_IO io = {OnLength, OnSeek, nullptr, OnWrite, OnTell};
    sound_ = ::sf_open_virtual(&io, SFM_WRITE, &info, this);
    const bool isShort = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
    chunkFrames_ = std::max(kWriteSamples / channelCount, 1);
    const auto samples = static_cast<std::size_t>(chunkFrames_) * static_cast<std::size_t>(channelCount);
    shorts_.reset(isShort ? new (std::nothrow) std::int16_t[samples] : nullptr);
    floats_.reset(isShort ? nullptr : new (std::nothrow) float[samples]);
    channelCount_ = channelCount;
    bytesPerSample_ = isShort ? 2 : 4;
    bytesWritten_ = 0;
    failed_ = sound_ == nullptr || (!shorts_ && !floats_);
    if (failed_) return Commit();

    // The peak chunk carries the time of writing: the same samples would give another file each time. Without
    // it the header is written anew and is shorter than the one that opening has written.
    ::sf_command(sound_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    failed_ = !file_.CutOff();
    return true;
}

bool CSoundFileWriter::Write(const float* const* channels, std::int32_t frames) {
    if (!IsOpen()) return false;
    bytesWritten_ += std::max(frames, 0) * std::int64_t{bytesPerSample_} * channelCount_;
    failed_ = failed_ || bytesWritten_ > kMaxBytes;
    for (std::int32_t done = 0; done < frames && !failed_; done += chunkFrames_)
        failed_ = !WriteChunk(channels, done, std::min(frames - done, chunkFrames_));
    return !failed_;
}

bool CSoundFileWriter::WriteChunk(const float* const* channels, std::int32_t first, std::int32_t frames) {
    if (shorts_) {
        JoinAsShorts(channels, first, channelCount_, frames, shorts_.get());
        return ::sf_writef_short(sound_, shorts_.get(), frames) == frames;
    }
    JoinFloats(channels, first, channelCount_, frames, floats_.get());
    return ::sf_writef_float(sound_, floats_.get(), frames) == frames;
}

bool CSoundFileWriter::Commit() {
    if (sound_ != nullptr && ::sf_close(sound_) != 0) failed_ = true;
    sound_ = nullptr;
    shorts_.reset();
    floats_.reset();
    if (!failed_) return file_.Commit();
    file_.Abandon();
    return false;
}

void CSoundFileWriter::Abandon() {
    failed_ = true;
    Commit();
}

sf_count_t CSoundFileWriter::OnLength(void* self) {
    return static_cast<CSoundFileWriter*>(self)->file_.Length();
}

sf_count_t CSoundFileWriter::OnSeek(sf_count_t offset, int whence, void* self) {
    auto& file = static_cast<CSoundFileWriter*>(self)->file_;
    const std::int64_t base = whence == SEEK_CUR ? file.Tell() : whence == SEEK_END ? file.Length() : 0;
    return file.Seek(base + offset) ? file.Tell() : -1;
}

sf_count_t CSoundFileWriter::OnWrite(const void* data, sf_count_t bytes, void* self) {
    if (bytes <= 0) return 0;
    return static_cast<CSoundFileWriter*>(self)->file_.Write(data, static_cast<std::size_t>(bytes)) ? bytes
                                                                                                    : 0;
}

sf_count_t CSoundFileWriter::OnTell(void* self) { return static_cast<CSoundFileWriter*>(self)->file_.Tell(); }

} // namespace sonorelle
