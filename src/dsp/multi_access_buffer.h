// One stream of samples, one writer, several readers that each follow it at their own pace.
//
// A linear window that slides: new samples go behind the held ones; what every reader has passed is dropped
// and the rest moves to the front, but never the `keep` newest of the passed samples, and only once at least
// `keep` of them can go, so that the moves stay rare. A reader that never reads keeps everything in the
// buffer.
//
//     buffer->SetKeep(4096);
//     if (buffer->Write(channels, 64) == kOk) voice.Feed(buffer->Read(reader, out, 64));
//
// Positions are absolute: samples since the last Reset. They may pass 2^31 (13 hours at 44.1 kHz); only
// differences between them count. Planar f32, 1 or 2 channels. One thread writes and reads in turn. Only
// Create allocates; Read may move the held samples once (at most `capacity`, seldom).

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class CMultiAccessBuffer {
public:
    // `capacity` in samples a channel. kBadArgument unless channelCount is 1 or 2 and both other numbers are
    // at least 1; kOutOfMemory; `buffer` is then untouched.
    static std::int32_t Create(std::unique_ptr<CMultiAccessBuffer>& buffer, std::int32_t capacity,
                               std::int32_t channelCount, std::int32_t readerCount);

    // Forgets all samples; every reader stands at 0 again. `keep` stays.
    void Reset() noexcept;

    // How many samples behind the slowest reader always stay readable. 0 at first; negative counts as 0.
    void SetKeep(std::int32_t samples) noexcept;

    // Moves a reader to an absolute position, behind or ahead of what is held. An unknown reader is ignored.
    void SetReadPosition(std::int32_t reader, std::int32_t position) noexcept;

    // Appends n samples a channel. kBadArgument, and nothing is written, when n is negative or the samples do
    // not fit: whoever owns the buffer sizes it by the slowest reader. n = 0 is kOk.
    std::int32_t Write(const float* const* channelBuffers, std::int32_t n) noexcept;

    // Samples that `reader` has yet to read; negative when it stands ahead of the writer, 0 if unknown.
    std::int32_t GetAvailable(std::int32_t reader) const noexcept;

    // Copies the next n samples a channel, or as many as are available, and gives their number. 0 when there
    // are none, or when the reader was set to samples that are no longer held.
    std::int32_t Read(std::int32_t reader, float* const* channelBuffers, std::int32_t n) noexcept;

    std::int32_t GetFill() const noexcept { return fill; }            // samples held a channel
    std::int32_t GetRoom() const noexcept { return capacity - fill; } // what the next Write may bring
    std::int32_t GetWritten() const noexcept { return written; }      // absolute position of the writer

private:
    CMultiAccessBuffer(std::int32_t samples, std::int32_t channels, std::int32_t readers);

    bool IsReader(std::int32_t reader) const noexcept { return reader >= 0 && reader < readerCount; }
    std::int32_t LargestLag() const noexcept; // samples that the slowest reader has yet to read, at least 0
    void DropPassedSamples() noexcept;

    std::int32_t capacity;
    std::int32_t readerCount;
    std::int32_t channelCount;
    std::int32_t fill = 0;
    std::int32_t keep = 0;
    std::vector<std::int32_t> readPositions;
    std::vector<float> data[2];
    std::int32_t written = 0;
};

} // namespace sonorelle
