// An audio file without a disk: samples in memory, with every read and seek written down.
#pragma once

#include "formats/audio_file.h"
#include "support/synthetic_singer.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle::test {

class MemoryAudioFile : public CkvoAudioFile {
public:
    // All channels of equal length. The path names nothing unless the test puts something there.
    MemoryAudioFile(std::vector<std::vector<float>> channelArrays, float rate,
                    std::string filePath = "/nowhere/song.wav")
        : channels(std::move(channelArrays)), sampleRate(rate), path(std::move(filePath)) {}
    explicit MemoryAudioFile(const Recording& recording)
        : MemoryAudioFile(recording.channels, static_cast<float>(recording.sampleRate)) {}

    std::int32_t Seek(std::int32_t frame) override {
        seeks.push_back(frame);
        position = frame;
        return position;
    }
    std::int32_t Tell() override { return position; }
    std::int32_t GetLength() const override {
        return channels.empty() ? 0 : static_cast<std::int32_t>(channels[0].size());
    }
    std::int32_t Read(float* const* buffers, std::int32_t frames) override {
        const std::int32_t left = GetLength() - position;
        const std::int32_t count = left < frames ? left : frames;
        for (std::size_t c = 0; c < channels.size(); ++c)
            for (std::int32_t i = 0; i < count; ++i)
                buffers[c][i] = channels[c][static_cast<std::size_t>(position + i)];
        position += count;
        reads.push_back(count);
        return count;
    }
    std::int32_t GetNumChannels() const override { return static_cast<std::int32_t>(channels.size()); }
    float GetSampleRate() const override { return sampleRate; }
    std::string GetPath() const override { return path; }
    bool IsOpen() const override { return open; }
    std::int64_t GetModificationTime() const override { return 1'000'000'000; }
    bool HasLimits() const override { return section; }

    std::vector<std::int32_t> reads; // frames that each Read gave
    std::vector<std::int32_t> seeks;
    bool open = true;
    bool section = false;

private:
    std::vector<std::vector<float>> channels;
    float sampleRate;
    std::string path;
    std::int32_t position = 0;
};

} // namespace sonorelle::test
