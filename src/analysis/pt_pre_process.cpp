#include "analysis/pt_pre_process.h"

#include "dsp/eq.h"
#include "dsp/resample_base.h"
#include "dsp/ring_buffer.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr std::int32_t kResamplerOrder = 3; // zero crossings a side: enough in front of a low-pass at 4 kHz
constexpr std::int32_t kLowPassType = 3;
constexpr std::int32_t kHighPassType = 4;
constexpr float kLowPassHertz = 4000.0F;
// At 11025 Hz this lies below what the high-pass takes for a frequency, so that it passes its input on
// unchanged. The thresholds of the tracker were set with it that way: rumble goes in, and the salience test
// keeps it out.
constexpr float kHighPassHertz = 30.0F;
constexpr float kFlat = 0.0F;    // dB
constexpr float kQuality = 1.0F; // unused by these two types
// Keeps a channel that has gone silent from turning denormal in the mean.
constexpr float kAntiDenormal = 1e-15F;

// Each frame becomes the mean of its channels, in place.
void MixToMono(float* samples, std::int32_t frames, std::int32_t channels) {
    const float share = 1.0F / static_cast<float>(channels);
    for (std::int32_t i = 0; i < frames; ++i) {
        const float* frame = samples + static_cast<std::ptrdiff_t>(i) * channels;
        float sum = frame[0];
        for (std::int32_t c = 1; c < channels; ++c) sum += frame[c] + kAntiDenormal;
        samples[i] = sum * share;
    }
}

std::int32_t CreateFilter(std::unique_ptr<CEqIf>& filter, std::int32_t type, float hertz) {
    const std::int32_t result = CreateEq(filter, static_cast<float>(CPTPreProcess::kOutputRate), 1, type);
    if (result == kOk) filter->SetParameters(hertz, kFlat, kQuality);
    return result;
}

} // namespace

CPTPreProcess::CPTPreProcess() = default;
CPTPreProcess::~CPTPreProcess() = default;

std::int32_t CPTPreProcess::Init(std::int32_t rate, std::int32_t channelCount) {
    if (rate < kOutputRate) return kSampleRateTooLow;
    if (channelCount < 1) return kBadArgument;
    inputRate = rate;
    channels = channelCount;
    if (const std::int32_t result = CreateResamplerAnew(); result != kOk) return result;
    if (const std::int32_t result = CreateFilter(lowPass, kLowPassType, kLowPassHertz); result != kOk)
        return result;
    return CreateFilter(highPass, kHighPassType, kHighPassHertz);
}

std::int32_t CPTPreProcess::CreateResamplerAnew() {
    return CreateResampler(resampler, kResamplerOrder, kBlockSize, 1, kResampleFloat);
}

void CPTPreProcess::Process(float* samples, std::int32_t& count, RingBuffer& ring) {
    if (channels > 1) MixToMono(samples, count, channels);
    count = resampler->Process(samples, samples, inputRate, kOutputRate, 1, count);
    float* const buffers[] = {samples};
    lowPass->ProcessInPlace(buffers, count);
    highPass->ProcessInPlace(buffers, count);
    ring.Write(samples, static_cast<std::uint32_t>(count));
}

std::int32_t CPTPreProcess::Reset() {
    lowPass->Reset();
    highPass->Reset();
    return CreateResamplerAnew();
}

std::int32_t CPTPreProcess::GetRequiredInput(std::int32_t hop) const {
    const double ratio = static_cast<double>(inputRate) / kOutputRate;
    double frames = hop * ratio;
    if (resampler->HasRun()) {
        frames -= resampler->HeldFrames();
    } else {
        frames += std::max<double>(resampler->GetHistory(),
                                   resampler->GetHalfLength() * std::max(ratio, 1.0) + 1.0);
    }
    return static_cast<std::int32_t>(std::max(std::ceil(frames), 0.0));
}

} // namespace sonorelle
