// The pitch tracker: fundamental frequency and voicing of a mono signal, frame by frame.
//
// Frames of 1024 samples at 11025 Hz (93 ms), one every 512 (46 ms), are cut from a ring into which the input
// runs at whatever rate it has. The mark finder feeds it with just as much as the next frame needs, and
// follows its word.
//
// One thread. Construction allocates; Process does not.

#pragma once

#include "analysis/pt_analysis.h"
#include "analysis/pt_pre_process.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

struct RingBuffer;

// How frames are cut. The system uses the fine spectrum.
enum class PitchTrackMode : std::int32_t {
    kQuick = 0, // FFT 2048, hop 64, window 512
    kFine = 1   // FFT 8192, hop 512, window 1024
};

class CPitchTrack {
public:
    CPitchTrack();
    ~CPitchTrack();

    // See CreatePitchTrack.
    std::int32_t Init(std::int32_t sampleRate, std::int32_t channelCount, std::int32_t mode);

    // Input frames that the next hop needs, at the input rate.
    std::int32_t GetRequiredInput() const;

    // Takes `count` interleaved frames, which are used as working space, and gives the result of the last
    // frame that they complete; without one, `output` stays. 0; kBadArgument for a count below 0 or above
    // 16384.
    std::int32_t Process(float* samples, std::int32_t count, PitchTrackResult& output);

    // Forgets all input. 0 or kOutOfMemory.
    std::int32_t Reset();

    float GetMaxRms() const { return maxRms; } // of all frames so far
    float GetThreshold() const { return analysis.GetThreshold(); }
    void SetThreshold(float decibels) { analysis.SetThreshold(decibels); }

private:
    void RewindRing();
    void AnalyseFrames(PitchTrackResult& output);

    CPTPreProcess preProcess;
    CPTAnalysis analysis;
    std::unique_ptr<RingBuffer> ring;
    std::int32_t frameBufferSize = 0;
    std::int32_t channels = 1;
    std::int32_t hop = 0;
    std::int32_t windowLength = 0;
    std::vector<float> frameBuffer;
    float maxRms = 0;
    PitchTrackResult result;
};

// Makes a tracker for input of `sampleRate` Hz. 0; kSampleRateTooLow below 11025 Hz; kBadArgument for another
// mode or no channels; kOutOfMemory. On failure `tracker` stays as it is.
std::int32_t CreatePitchTrack(std::unique_ptr<CPitchTrack>& tracker, std::int32_t sampleRate,
                              std::int32_t channels, std::int32_t mode);

} // namespace sonorelle
