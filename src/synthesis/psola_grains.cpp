// One grain: the samples around a mark, under a rise as long as the distance to the grain before and a fall
// as long as the mark's own period.

#include "synthesis/grain_range.h"
#include "synthesis/psola_synthesis.h"
#include "synthesis/sample_counts.h"
#include "synthesis/sinc_interpolation.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

void CPSOLASynthesis::RenderGrain() {
    outputMark = outputEnd; // the end of the grain before is the centre of this one
    if (ReadsAtUnity()) {
        RenderUnityGrain();
    } else {
        RenderResampledGrain();
    }
    const std::int32_t length = NearestSamples(static_cast<float>(inPeriod) * invPitchFactor);
    outputEnd = std::min(outputMark + length, output.GetCapacity());
}

// Formants stay. The rise is added to the fall of the grain before, the fall is written over what lies
// there. Where grains are set wider than they were sung, both sides are as long as in the recording, and
// there is silence between them.
void CPSOLASynthesis::RenderUnityGrain() {
    const std::int64_t centre = InputIndex(markPos);
    std::int32_t rise = outPeriod;
    if (pitchFactor < 1.0F) rise = std::min(WholeSamples(static_cast<float>(rise) * pitchFactor), rise);
    const float length = static_cast<float>(inPeriod) * invPitchFactor;
    const std::int32_t fall = std::min(inPeriod, WholeSamples(length));
    // One sample more than the length: the rounding of the next rise may reach it.
    const std::int32_t silence = WholeSamples(std::floor(length + 1.5F)) - fall;

    AddRise(outputMark - rise, centre - rise, rise);
    WriteFall(outputMark, centre, fall);
    WriteSilence(outputMark + fall, silence);
}

void CPSOLASynthesis::AddRise(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity())
                                 .And(GrainRange::Inside(first, samples, inputFill));
    if (range.IsEmpty()) return;
    const Fade fade(*tables, samples);
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        const float* const from = input.Channel(channel) + (first + range.begin);
        float* const to = output.Channel(channel) + (at + range.begin);
        for (std::int32_t i = 0; i < range.Count(); ++i) to[i] += fade[range.begin + i] * from[i];
    }
}

void CPSOLASynthesis::WriteFall(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity())
                                 .And(GrainRange::Inside(first, samples, inputFill));
    if (range.Count() < samples) WriteSilence(at, samples);
    if (range.IsEmpty()) return;
    const Fade fade(*tables, samples);
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        const float* const from = input.Channel(channel) + (first + range.begin);
        float* const to = output.Channel(channel) + (at + range.begin);
        for (std::int32_t i = 0; i < range.Count(); ++i) to[i] = (1.0F - fade[range.begin + i]) * from[i];
    }
}

void CPSOLASynthesis::WriteSilence(std::int32_t at, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity());
    if (range.IsEmpty()) return;
    for (std::int32_t channel = 0; channel < channels; ++channel)
        std::fill_n(output.Channel(channel) + (at + range.begin), range.Count(), 0.0F);
}

// Formants move with the pitch. The fall is written without a weight: the next grain's rise fades out what
// it finds while it fades in.
void CPSOLASynthesis::RenderResampledGrain() {
    const std::int64_t centre = InputIndex(markPos);
    const std::int64_t first = centre - NearestSamples(static_cast<float>(outPeriod) * pitchFactor);
    BlendResampled(outputMark - outPeriod, first, outPeriod);
    WriteResampled(outputMark, centre, NearestSamples(static_cast<float>(inPeriod) * invPitchFactor));
}

void CPSOLASynthesis::BlendResampled(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity());
    if (range.IsEmpty()) return;
    const Fade fade(*tables, samples);
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        float* const to = output.Channel(channel) + (at + range.begin);
        const std::int32_t begin = range.begin;
        Interpolation(channel).Run(first, begin, range.end, [&fade, to, begin](std::int32_t i, float sample) {
            const float weight = fade[i];
            to[i - begin] = to[i - begin] * (1.0F - weight) + sample * weight;
        });
    }
}

void CPSOLASynthesis::WriteResampled(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity());
    if (range.IsEmpty()) return;
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        float* const to = output.Channel(channel) + (at + range.begin);
        const std::int32_t begin = range.begin;
        Interpolation(channel).Run(first, begin, range.end,
                                   [to, begin](std::int32_t i, float sample) { to[i - begin] = sample; });
    }
}

SincInterpolation CPSOLASynthesis::Interpolation(std::int32_t channel) const {
    return {*tables, sincStep, pitchFactor, resampleGain, input.Channel(channel), inputFill};
}

} // namespace sonorelle
