// The synthesis of one voice of the arrangement: PSOLA with grains that carry their own formant ratio, and a
// read position that may wander for a human touch.
//
// Grain spacing alone decides the pitch. A grain is cut around its mark and read `formantRatio` times as fast
// as it was recorded, so that formants move and the pitch stands. Each block reads from where the timeline
// is, not from where the last grain left off: the grains only decide where the marks of this block lie.
//
// Limits: periods are held to the longest one given, ratios to those below. Within them no block reads or
// writes outside the buffers that were made for it.

#pragma once

#include "synthesis/psola_synthesis.h"
#include "synthesis/voice_limits.h"

#include <cstdint>
#include <memory>

namespace sonorelle {

class CvirelaineSynthesis final : public CPSOLASynthesis {
public:
    // Samples of the first sound after a restart that fade in: 23 ms at 44.1 kHz, no click and no swell.
    static constexpr std::int32_t kFadeIn = 1024;

    // Throws std::bad_alloc.
    CvirelaineSynthesis(const CPitchMarksIf& pitchMarks, std::int32_t samples, std::int32_t channelCount,
                        const VoiceLimits& voiceLimits,
                        std::shared_ptr<const GrainTables> grainTables = nullptr);

    // As the base class; the timeline begins where the result is. The input that follows is expected from
    // GetInputEnd() on.
    std::int32_t SetPosition(std::int32_t position) override;
    std::int32_t CalcRequiredInput() override;

    // Ratios of the output's pitch and formants to the recording's, each held to its limits; one that is not
    // a number changes nothing.
    void SetPitchAndFormant(float pitch, float formant);
    // The swing of the read position: amplitude in samples (held to the longest timing) and rate in half
    // swings per block of input.
    void SetTiming(float amountSamples, float rate);
    // Off: grains advance all counters but write no audio.
    void SetGrainsActive(bool on) { grainsActive = on; }

    // Appends `count` input samples a channel and renders one block to `out`, which may be the arrays of
    // `in`. `gain` weights each grain. 0, or kMarksExhausted with `out` untouched.
    std::int32_t RenderBlock(const float* const* in, std::int32_t count, float* const* out, float gain);
    // One block passes without sound: the clock goes on where no grain can be had.
    void SkipBlock() { timeline += static_cast<double>(static_cast<float>(blockSize) * invTimeFactor); }

    // Undisturbed read position. The harmony voices take the lead's clock.
    double GetTimeline() const { return timeline; }
    void SetTimeline(double position) { timeline = position; }
    std::int32_t GetInputEnd() const { return inputEnd; }

    // The next sound fades in, as after silence.
    void RestartFade();
    // Forgets the output in flight, and begins without a grain before.
    void Restart();
    // Forgets the output in flight and fades in: the voice was switched off for a while.
    void SwitchOn();

private:
    double HumanisedPosition() const;
    std::int32_t RenderGrains(float gain);
    void RenderGrain(float gain); // at the mark in use
    void FadeInOutput(float* const* out);
    std::int32_t PeriodAt(std::int32_t mark) const; // held to the longest; kMarksExhausted below 1

    VoiceLimits limits;
    float formantRatio = 1; // input samples per output sample of a grain
    float invFormantRatio = 1;
    float grainLimit = 1;         // min(formantRatio, 1)
    float timingAmount = 0;       // samples
    float timingRate = 0;         // of the triangle
    double timeline = 0;          // undisturbed read position, samples
    std::int64_t fadeInCount = 0; // samples handed out since the last restart
    bool grainsActive = true;
};

} // namespace sonorelle
