#include "synthesis/virelaine_synthesis.h"

#include "platform/saturate.h"
#include "synthesis/sample_counts.h"
#include "synthesis/voice_grain.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonorelle {

namespace {

// The human swing: a triangle between -1 and 1 with 0.6 added to it, so that a voice mostly lags. It reads up
// to 0.8 of the amount behind the timeline, and up to 0.2 ahead.
constexpr double kSwingPeriod = 2;
constexpr double kSwingCentre = 0.6;
constexpr double kSwingScale = 0.5;
// A quirk that stays: the amount itself shifts the phase, so that moving the control moves the voice at once.
constexpr double kPhasePerAmount = 0.25;

// Grains in a row that add no output: half-sample periods at the highest pitch. More are no recording.
constexpr std::int32_t kMostIdleVoiceGrains = 4096;

bool IsRatio(float value) { return std::isfinite(value) && value > 0; }

} // namespace

CvirelaineSynthesis::CvirelaineSynthesis(const CPitchMarksIf& pitchMarks, std::int32_t samples,
                                         std::int32_t channelCount, const VoiceLimits& voiceLimits,
                                         std::shared_ptr<const GrainTables> grainTables)
    : CPSOLASynthesis(pitchMarks, samples, channelCount, std::move(grainTables)), limits(voiceLimits) {
    input.Reserve(limits.InputCapacity());
    output.Reserve(limits.OutputCapacity());
}

std::int32_t CvirelaineSynthesis::SetPosition(std::int32_t position) {
    const std::int32_t reached = CPSOLASynthesis::SetPosition(position);
    inputEnd = std::max(inputEnd, 0); // nothing lies before the recording
    timeline = static_cast<double>(reached);
    return reached;
}

std::int32_t CvirelaineSynthesis::PeriodAt(std::int32_t mark) const {
    const std::int32_t period = marks.GetDistance(mark);
    return period < 1 ? kMarksExhausted : std::min(period, limits.longestPeriod);
}

// Walks the marks that the next block will use, as RenderGrains does.
std::int32_t CvirelaineSynthesis::CalcRequiredInput() {
    if (marks.GetCount() == 0) return kMarksExhausted;
    if (outputMark > blockSize) return 0;
    const float span = readSpan * timeSpan;
    const std::int32_t largestSpan = limits.LargestSpan();
    std::int64_t ready = outputMark;
    std::int32_t spacing = outputEnd - outputMark;
    double at = readPosition;
    std::int32_t from = prevMarkIndex;
    std::int64_t required = 0;
    for (;;) {
        std::int32_t mark = marks.FindNearest(from, TruncateToI32(at));
        if (mark < 0) return mark;
        if (transientHandling && mark > from + 1 && IsTransient(mark - 1)) --mark;
        const std::int32_t period = PeriodAt(mark);
        if (period < 0) return kMarksExhausted;
        const std::int32_t ahead = std::min(WholeSamples(static_cast<float>(period) * span), largestSpan);
        required = std::max(required, std::int64_t{marks.GetPosition(mark)} + ahead - inputEnd);
        ready += spacing;
        from = mark;
        if (ready > blockSize) break;
        const float distance = static_cast<float>(period) * invPitchFactor;
        at += static_cast<double>(distance * invTimeFactor);
        spacing = std::max(NearestSamples(distance), 2);
    }
    return static_cast<std::int32_t>(std::min<std::int64_t>(required, limits.LargestTake()));
}

void CvirelaineSynthesis::SetPitchAndFormant(float pitch, float formant) {
    if (!IsRatio(pitch) || !IsRatio(formant)) return;
    pitchFactor = std::clamp(pitch, VoiceLimits::kLowestPitch, VoiceLimits::kHighestPitch);
    formantRatio = std::clamp(formant, VoiceLimits::kLowestFormant, VoiceLimits::kHighestFormant);
    invPitchFactor = 1.0F / pitchFactor;
    invFormantRatio = 1.0F / formantRatio;
    constexpr float kHeadroom = 0.99F; // as of the resampled grains
    if (invFormantRatio > 1.0F) {
        readSpan = invFormantRatio;
        resampleGain = formantRatio * kHeadroom;
        grainLimit = formantRatio;
    } else {
        readSpan = formantRatio;
        resampleGain = kHeadroom;
        grainLimit = 1.0F;
    }
    if (invPitchFactor > 1.0F) readSpan *= invPitchFactor;
    invReadSpan = 1.0F / readSpan;
}

void CvirelaineSynthesis::SetTiming(float amountSamples, float rate) {
    if (!std::isfinite(amountSamples) || !std::isfinite(rate)) return;
    timingAmount = std::clamp(amountSamples, 0.0F, static_cast<float>(limits.longestTiming));
    timingRate = rate;
}

double CvirelaineSynthesis::HumanisedPosition() const {
    const double amount = static_cast<double>(timingAmount);
    const double phase = static_cast<double>(timingRate) * timeline / static_cast<double>(blockSize) +
                         amount * kPhasePerAmount;
    const double triangle = std::fabs(std::fmod(phase, kSwingPeriod) - 1.0) * 2.0 - 1.0;
    return std::max(timeline - (triangle + kSwingCentre) * amount * kSwingScale, 0.0);
}

std::int32_t CvirelaineSynthesis::RenderBlock(const float* const* in, std::int32_t count, float* const* out,
                                              float gain) {
    Append(in, count);
    if (inputFill < 1) {
        if (outputMark >= blockSize) {
            HandOut(out);
        } else {
            for (std::int32_t channel = 0; channel < channels; ++channel)
                std::fill_n(out[channel], blockSize, 0.0F);
        }
        return 0;
    }
    const double base = HumanisedPosition();
    if (RenderGrains(std::isfinite(gain) ? gain : 0.0F) != 0) return kMarksExhausted;
    // Whatever the grains did, the next block reads from the humanised position one block on.
    readPosition = static_cast<double>(static_cast<float>(blockSize) * invTimeFactor) + base;
    DiscardInput(std::int64_t{markPos} - inputEnd - limits.History() + inputFill -
                 WholeSamples(timingAmount));
    HandOut(out);
    FadeInOutput(out);
    return 0;
}

std::int32_t CvirelaineSynthesis::RenderGrains(float gain) {
    std::int32_t idle = 0;
    while (outputMark <= blockSize) {
        const std::int32_t mark = marks.FindNearest(prevMarkIndex, TruncateToI32(readPosition));
        if (mark < 0) return kMarksExhausted;
        const std::int32_t period = PeriodAt(mark);
        if (period < 0) return kMarksExhausted;
        markIndex = mark;
        inPeriod = period;
        markPos = marks.GetPosition(mark);
        RenderGrain(gain);
        prevMarkIndex = markIndex;
        const float distance = static_cast<float>(inPeriod) * invPitchFactor;
        outPeriod = std::max(NearestSamples(distance), 0);
        const auto advance = static_cast<double>(distance * invTimeFactor);
        readPosition += advance;
        timeline += advance;
        idle = outPeriod > 0 ? 0 : idle + 1;
        if (idle > kMostIdleVoiceGrains) return kMarksExhausted;
    }
    return 0;
}

// The rise is added to the fall of the grain before, the fall is written over what lies there; both meet at
// the mark. A grain that is read slower or spaced wider than it was sung gets shorter sides: it never reaches
// into the next period of the recording.
void CvirelaineSynthesis::RenderGrain(float gain) {
    const auto spacing = static_cast<float>(outPeriod);
    std::int32_t rise = outPeriod;
    if (pitchFactor < grainLimit)
        rise = WholeSamples(
            std::min(spacing * grainLimit, static_cast<float>(WholeSamples(spacing * pitchFactor))));
    rise = std::min(rise, outputEnd);
    const auto period = static_cast<float>(inPeriod);
    const std::int32_t fall = WholeSamples(
        std::min(static_cast<float>(WholeSamples(period * invPitchFactor)), period / grainLimit));
    const std::int32_t next = NearestSamples(period * invPitchFactor);

    outputMark = outputEnd;
    if (grainsActive) {
        const VoiceGrain grain{*tables, InputIndex(markPos), inputFill, formantRatio, gain};
        for (std::int32_t channel = 0; channel < channels; ++channel) {
            float* const centre = output.Channel(channel) + outputMark;
            grain.AddRise(input.Channel(channel), rise, centre - rise);
            grain.WriteFall(input.Channel(channel), fall, centre);
            std::fill(centre + fall, centre + std::max(next, fall), 0.0F);
        }
    }
    outputEnd = outputMark + next;
}

void CvirelaineSynthesis::FadeInOutput(float* const* out) {
    if (fadeInCount < kFadeIn) {
        const Fade fade(*tables, kFadeIn);
        const auto done = static_cast<std::int32_t>(fadeInCount);
        const std::int32_t faded = std::min(blockSize, kFadeIn - done);
        for (std::int32_t channel = 0; channel < channels; ++channel) {
            for (std::int32_t i = 0; i < faded; ++i) out[channel][i] *= fade[done + i];
        }
    }
    fadeInCount += blockSize;
}

void CvirelaineSynthesis::RestartFade() {
    outPeriod = 0;
    inPeriod = 0;
    fadeInCount = 0;
}

void CvirelaineSynthesis::Restart() {
    outPeriod = 0;
    outputEnd = 0;
    outputMark = 0;
}

void CvirelaineSynthesis::SwitchOn() {
    output.Clear(outputEnd); // what lies behind is written before it is read
    fadeInCount = 0;
    grainsActive = true;
}

} // namespace sonorelle
