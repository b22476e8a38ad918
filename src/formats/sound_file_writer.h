// Writes the samples of one sound file, which replaces an old one of its name only when it is whole on the
// disk.
//
// Nothing throws; one thread uses an object at a time.

#pragma once

#include "platform/atomic_file_writer.h"

#include <cstdint>
#include <memory>
#include <string>

#include <sndfile.h>

namespace sonorelle {

class CSoundFileWriter {
public:
    CSoundFileWriter() = default;
    ~CSoundFileWriter();
    CSoundFileWriter(const CSoundFileWriter&) = delete;
    CSoundFileWriter& operator=(const CSoundFileWriter&) = delete;

    // `format` is container and encoding as the sound library knows them, 16-bit integers or 32-bit floats.
    bool Open(const std::string& path, std::int32_t channelCount, std::int32_t sampleRateHertz, int format);
    bool IsOpen() const noexcept { return sound_ != nullptr; }

    // Appends `frames` frames. False when that failed, or when the samples would exceed 2^31 - 1 bytes, which
    // not every reader of such files bears; the file is then given up, and Commit will say so too.
    bool Write(const float* const* channels, std::int32_t frames);

    // Completes the header and puts the file in place. False, with an old file untouched, when anything since
    // Open failed.
    bool Commit();

    // Gives the file up: an old one is untouched.
    void Abandon();

private:
    bool WriteChunk(const float* const* channels, std::int32_t first, std::int32_t frames);

    CAtomicFileWriter file_;
    SNDFILE* sound_ = nullptr;
    std::int32_t channelCount_ = 0;
    std::int32_t bytesPerSample_ = 0;
    std::int64_t bytesWritten_ = 0; // of samples
    bool failed_ = false;
    std::int32_t chunkFrames_ = 0;
    // Interleaved samples on their way; only the one that the format needs exists.
    std::unique_ptr<std::int16_t[]> shorts_;
    std::unique_ptr<float[]> floats_;

    static sf_count_t OnLength(void* self);
    static sf_count_t OnSeek(sf_count_t offset, int whence, void* self);
    static sf_count_t OnWrite(const void* data, sf_count_t bytes, void* self);
    static sf_count_t OnTell(void* self);
};

} // namespace sonorelle
