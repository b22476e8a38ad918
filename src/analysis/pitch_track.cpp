#include "analysis/pitch_track.h"

#include "dsp/ring_buffer.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr std::uint32_t kRingSize = 16384;
// What goes into the ring at once. A whole block at 11025 Hz would run over what waits there to be read.
constexpr std::int32_t kPortion = 8192; // frames

struct Framing {
    std::int32_t frameBufferSize;
    std::int32_t hop;
    std::int32_t windowLength;
};

constexpr std::array<Framing, 2> kFramings = {{{2048, 64, 512}, {8192, 512, 1024}}};

} // namespace

CPitchTrack::CPitchTrack() = default;
CPitchTrack::~CPitchTrack() = default;

std::int32_t CPitchTrack::Init(std::int32_t sampleRate, std::int32_t channelCount, std::int32_t mode) {
    if (sampleRate < CPTPreProcess::kOutputRate) return kSampleRateTooLow;
    if (mode < 0 || mode >= static_cast<std::int32_t>(kFramings.size())) return kBadArgument;
    const Framing& framing = kFramings[static_cast<std::size_t>(mode)];
    frameBufferSize = framing.frameBufferSize;
    channels = channelCount;
    hop = framing.hop;
    windowLength = framing.windowLength;
    frameBuffer.assign(static_cast<std::size_t>(frameBufferSize), 0.0F);
    if (const std::int32_t made = preProcess.Init(sampleRate, channelCount); made != kOk) return made;
    if (const std::int32_t made = analysis.Init(CPTPreProcess::kOutputRate, frameBufferSize, windowLength);
        made != kOk) {
        return made;
    }
    if (const std::int32_t made = RingBuffer::Create(ring, kRingSize); made != kOk) return made;
    RewindRing();
    return kOk;
}

// The first frame holds a window less a hop of silence in front of the signal.
void CPitchTrack::RewindRing() {
    ring->Clear();
    ring->readIndex = (ring->size - static_cast<std::uint32_t>(windowLength - hop)) & ring->mask;
}

std::int32_t CPitchTrack::GetRequiredInput() const { return preProcess.GetRequiredInput(hop); }

std::int32_t CPitchTrack::Process(float* samples, std::int32_t count, PitchTrackResult& output) {
    if (count < 0 || count > CPTPreProcess::kBlockSize) return kBadArgument;
    for (std::int32_t taken = 0; taken < count; taken += kPortion) {
        std::int32_t frames = std::min(kPortion, count - taken);
        preProcess.Process(samples + static_cast<std::ptrdiff_t>(taken) * channels, frames, *ring);
        AnalyseFrames(output);
    }
    return kOk;
}

void CPitchTrack::AnalyseFrames(PitchTrackResult& output) {
    while (ring->Available() >= static_cast<std::uint32_t>(windowLength)) {
        ring->Peek(frameBuffer.data(), static_cast<std::uint32_t>(windowLength));
        analysis.Process(frameBuffer.data(), result);
        maxRms = std::max(maxRms, result.rms);
        output = result;
        ring->Skip(static_cast<std::uint32_t>(hop));
    }
}

std::int32_t CPitchTrack::Reset() {
    RewindRing();
    maxRms = 0;
    result = {};
    std::fill(frameBuffer.begin(), frameBuffer.end(), 0.0F);
    analysis.Reset();
    return preProcess.Reset();
}

std::int32_t CreatePitchTrack(std::unique_ptr<CPitchTrack>& tracker, std::int32_t sampleRate,
                              std::int32_t channels, std::int32_t mode) {
    try {
        auto made = std::make_unique<CPitchTrack>();
        const std::int32_t result = made->Init(sampleRate, channels, mode);
        if (result == kOk) tracker = std::move(made);
        return result;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

} // namespace sonorelle
