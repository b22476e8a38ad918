// Reads the samples of one sound file from the disk.
//
// Opened are the containers WAV (RIFF, RIFX, RF64, W64), AIFF and AIFC, AU and CAF, with plain samples: 8 to
// 32-bit integers, 32 and 64-bit floats, mu-law and A-law. Everything else is refused: compressed sound, data
// without a header, whatever is not a regular file. What a header claims is held against the file's size
// before anybody allocates by it. Nothing throws; one thread uses an object at a time.

#pragma once

#include "platform/regular_file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <sndfile.h>

namespace sonorelle {

class CSoundFileReader {
public:
    CSoundFileReader() = default;
    ~CSoundFileReader() { Close(); }
    CSoundFileReader(const CSoundFileReader&) = delete;
    CSoundFileReader& operator=(const CSoundFileReader&) = delete;

    // False when the file cannot be read as one of the above; the object is then closed.
    bool Open(const std::string& path);
    void Close();
    bool IsOpen() const noexcept { return sound_ != nullptr; }

    std::int32_t ChannelCount() const noexcept { return channelCount_; }
    std::int32_t SampleRate() const noexcept { return sampleRate_; } // Hz
    // Never more than the file has room for, whatever its header says.
    std::int32_t FrameCount() const noexcept { return frameCount_; }

    // Moves the read position to `frame`, held to 0 to FrameCount().
    void Seek(std::int32_t frame);
    std::int32_t Tell() const noexcept { return position_; }

    // Reads up to `frames` frames from the position on into channels[c][first] and further, and gives how
    // many; fewer only at the end of the file or when the disk fails. Allocates nothing.
    std::int32_t Read(float* const* channels, std::int32_t first, std::int32_t frames);

private:
    struct Closer {
        void operator()(SNDFILE* sound) const { ::sf_close(sound); }
    };

    bool TakeHeader(const SF_INFO& info);
    bool AllocateChunk(bool forShorts);
    std::int32_t FetchChunk(std::int32_t frames);

    CRegularFile file_;
    std::int64_t fileOffset_ = 0; // bytes; where the sound library reads next
    std::unique_ptr<SNDFILE, Closer> sound_;
    std::int32_t channelCount_ = 0;
    std::int32_t sampleRate_ = 0;
    std::int32_t frameCount_ = 0;
    std::int32_t position_ = 0; // frames
    std::int32_t chunkFrames_ = 0;
    // Interleaved samples on their way: 16-bit integers are fetched as such, everything else as floats.
    std::unique_ptr<std::int16_t[]> shorts_;
    std::unique_ptr<float[]> floats_;

    static sf_count_t OnLength(void* self);
    static sf_count_t OnSeek(sf_count_t offset, int whence, void* self);
    static sf_count_t OnRead(void* data, sf_count_t bytes, void* self);
    static sf_count_t OnTell(void* self);
};

} // namespace sonorelle
