// Pitch-synchronous overlap-add of one recording, as its users see it.
//
// Positions are sample frames of the recording, periods and block sizes sample frames. An i32 result is 0 for
// success and kMarksExhausted when the pitch marks cannot give what was asked. No lock: one thread at a time
// (the voice bank's users hold AudioLock).

#pragma once

#include <cstdint>

namespace sonorelle {

class CPSOLASynthesisIf {
public:
    // The pitch marks cannot give what was asked: there are none here, or they do not rise.
    static constexpr std::int32_t kMarksExhausted = -1;

    virtual ~CPSOLASynthesisIf() = default;

    // Jumps to the mark nearest to `position`; gives the position that input must be supplied from next.
    // Audio that is already rendered plays out. A negative position is taken as it is.
    virtual std::int32_t SetPosition(std::int32_t position) = 0;
    // Forgets all input and output; both factors 1.
    virtual void Reset() = 0;
    virtual void ShiftMarkIndices(std::int32_t delta) = 0;
    // Appends `count` input samples a channel, renders grains, writes one block a channel.
    virtual std::int32_t Process(const float* const* in, std::int32_t count, float* const* out) = 0;
    // Sets the length of a block and gives CalcRequiredInput().
    virtual std::int32_t GetRequiredInput(std::int32_t samples) = 0;
    // Input samples a channel that the next block needs.
    virtual std::int32_t CalcRequiredInput() = 0;
    // Ratio of the output's pitch to the recording's. Held to kSmallestFactor .. kLargestFactor; what is not
    // a number is ignored.
    virtual void SetPitchFactor(float factor) = 0;
    // On: grains are read at the recording's own rate, so that formants stay where they are.
    virtual void SetFormantPreservation(bool on) = 0;
    // Ratio of the output's duration to the recording's, held like the pitch factor.
    virtual void SetTimeFactor(float factor) = 0;
    // On: attacks are copied sample for sample.
    virtual void SetTransientHandling(bool on) = 0;
    virtual void SetTransientSearchLength(std::int32_t samples) = 0;
    virtual void SetTransientThreshold(float strength) = 0;
    // Samples that are ready to hand out.
    virtual std::int32_t GetOutputFill() const = 0;
    // Period in samples of the mark nearest to the read position; -1 where the recording is not voiced.
    virtual float GetCurrentPeriod() const = 0;
    virtual float GetMarkEnergy() const = 0;      // of the mark in use
    virtual float GetMarkPitchChange() const = 0; // of the mark in use, its magnitude
    // Holds the read position still, or lets it go on.
    virtual void SetFreeze(bool on) = 0;
    virtual double GetReadPosition() const = 0;
    // `position` is meant for what the listener hears now: audio that is already rendered is added.
    virtual void SetReadPosition(double position) = 0;
};

} // namespace sonorelle
