#include "synthesis/pitch2freq.h"

#include "dsp/finite.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace sonorelle {

namespace {

constexpr float kTuningKey = 69;                // MIDI key of the tuning frequency
constexpr float kSemitonesPerNeper = 17.31234F; // 12 / ln 2

// The singer begins another note where the pitch moves further than this from one block to the next: no
// vibrato does, and an average across it would be heard as a glide.
constexpr float kLargestAveragedStep = 3; // semitones

bool IsFrequency(float hertz) { return IsFinite(hertz) && hertz > 0; }

} // namespace

std::int32_t CPitch2Freq::Create(std::unique_ptr<CPitch2Freq>& law, float sampleRate, std::int32_t blockSize,
                                 float averageSeconds) {
    if (!IsFrequency(sampleRate) || blockSize < 1) return kBadArgument;
    const float seconds = std::min(std::max(0.0F, averageSeconds), kLongestAverage); // NaN becomes 0
    const float blocks = std::ceil(sampleRate * seconds / static_cast<float>(blockSize));
    constexpr float kMostBlocks = 1 << 24; // what f32 counts without gaps
    try {
        // The constructor is private: std::make_unique cannot reach it.
        std::unique_ptr<CPitch2Freq> made(
            new CPitch2Freq(static_cast<std::uint32_t>(std::min(blocks, kMostBlocks))));
        if (made->averageLength > 0) {
            const std::int32_t result = RingBuffer::Create(made->history, made->averageLength);
            if (result != kOk) return result;
        }
        law = std::move(made);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kOk;
}

CPitch2Freq::CPitch2Freq(std::uint32_t averageBlocks)
    : averageWeight(averageBlocks > 0 ? 1 / static_cast<float>(averageBlocks) : 0.0F),
      averageLength(averageBlocks) {}

void CPitch2Freq::Reset() { frequency = 0; }

void CPitch2Freq::SetInputTuning(float hertz) {
    if (IsFrequency(hertz)) inputTuning = hertz;
}

void CPitch2Freq::SetOutputTuning(float hertz) {
    if (IsFrequency(hertz)) outputTuning = hertz;
}

void CPitch2Freq::SetCorrection(float amount) {
    if (IsFinite(amount)) correction = amount;
}

void CPitch2Freq::SetQuantize(float amount) {
    if (IsFinite(amount)) quantize = amount;
}

float CPitch2Freq::Calc(float target, float measured, float base, bool addInterval, bool average) {
    const float sung = std::log(measured / inputTuning) * kSemitonesPerNeper;
    const float contour = addInterval ? sung + (target - base) : sung;
    const float offGrid = std::floor(target + 0.5F) - target;
    const float pitch = (target - kTuningKey - contour) * correction + contour + offGrid * quantize;
    const float result = std::exp2(pitch / 12) * outputTuning;
    // What is no number, or no frequency, in the arguments comes out here as such.
    if (!IsFrequency(result)) return frequency;

    // Without a last result there is nothing that an average could go on from.
    const bool goesOn = frequency > 0 && std::fabs(sung - previousPitch) <= kLargestAveragedStep;
    frequency = average && averageLength > 0 && goesOn ? Average(result) : RestartAverage(result);
    previousPitch = sung;
    return frequency;
}

// The oldest result leaves the average, this one enters. The sum is made anew: a running one would keep the
// rounding of all that ever passed through it.
float CPitch2Freq::Average(float result) {
    history->Write(&result, 1);
    float mean = 0;
    for (std::uint32_t back = 1; back <= averageLength; ++back)
        mean += averageWeight * history->data[(history->writeIndex - back) & history->mask];
    return IsFrequency(mean) ? mean : result; // at the very ends of f32 a share of a number may be none
}

// As if this result had been there all along.
float CPitch2Freq::RestartAverage(float result) {
    for (std::uint32_t i = 0; i < averageLength; ++i) history->Write(&result, 1);
    return result;
}

} // namespace sonorelle
