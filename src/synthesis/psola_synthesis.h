// Resynthesis of one recording by pitch-synchronous overlap-add, driven by its pitch marks.
//
// Three factors that do not depend on one another: time (how fast the read position moves through the
// recording), pitch (how far apart the grains lie in the output) and, where formants move with the pitch, the
// rate that a grain is read at.
//
// E. Moulines and F. Charpentier, "Pitch-synchronous waveform processing techniques for text-to-speech
// synthesis using diphones" (1990), for the method; its windows span two periods, those here are two
// one-sided fades that meet at the mark, and the falling one is written over what lies there.
//
//     CPSOLASynthesis synthesis(marks, 64, channelCount);
//     synthesis.SetPitchFactor(1.26F);                      // a major third up
//     synthesis.SetPosition(0);
//     while ((need = synthesis.CalcRequiredInput()) >= 0) { // samples to read from the recording
//         ...
//         synthesis.Process(in, need, out);                 // 64 samples
//     }
//
// Memory: the constructor allocates, and throws std::bad_alloc; Process allocates only when more input is
// given than there is room for. Numbers that no buffer could hold are held to what it can.

#pragma once

#include "analysis/pitch_marks_if.h"
#include "synthesis/grain_tables.h"
#include "synthesis/psola_synthesis_if.h"
#include "synthesis/sliding_samples.h"

#include <cstdint>
#include <memory>

namespace sonorelle {

class SincInterpolation;

class CPSOLASynthesis : public CPSOLASynthesisIf {
public:
    // Limits of both factors: far beyond what a voice survives, near enough that no count overflows.
    static constexpr float kSmallestFactor = 0.001F;
    static constexpr float kLargestFactor = 1000.0F;

    static constexpr std::int32_t kUsualCapacity = 131072; // samples a channel of either buffer
    // Samples that stay in front of the grain in use: the longest rise that an ordinary voice reads back.
    static constexpr std::int32_t kUsualHistory = 4096;

    // `channelCount` 1 or 2, `samples` (a block) from 1 on. The marks are borrowed and only read; the tables
    // may be shared, and are built when there are none.
    CPSOLASynthesis(const CPitchMarksIf& pitchMarks, std::int32_t samples, std::int32_t channelCount,
                    std::shared_ptr<const GrainTables> grainTables = nullptr);

    std::int32_t SetPosition(std::int32_t position) override;
    void Reset() override;
    void ShiftMarkIndices(std::int32_t delta) override;
    std::int32_t Process(const float* const* in, std::int32_t count, float* const* out) override;
    std::int32_t GetRequiredInput(std::int32_t samples) override;
    std::int32_t CalcRequiredInput() override;
    void SetPitchFactor(float factor) override;
    void SetFormantPreservation(bool on) override;
    void SetTimeFactor(float factor) override;
    void SetTransientHandling(bool on) override;
    void SetTransientSearchLength(std::int32_t samples) override;
    void SetTransientThreshold(float strength) override;
    std::int32_t GetOutputFill() const override { return outputMark; }
    float GetCurrentPeriod() const override;
    float GetMarkEnergy() const override;
    float GetMarkPitchChange() const override;
    void SetFreeze(bool on) override;
    double GetReadPosition() const override { return readPosition; }
    void SetReadPosition(double position) override;

protected:
    // Index in `input` of a position of the recording; one that no i32 holds is held to it.
    std::int32_t InputIndex(std::int32_t position) const;
    bool IsTransient(std::int32_t mark) const { return marks.GetTransient(mark) > transientThreshold; }

    // Appends input behind what is there; a negative count counts as none. Grows `input` when it is too
    // small.
    void Append(const float* const* in, std::int32_t count);
    // Forgets the oldest n samples of the input; nothing for n < 1, all for more than there are.
    void DiscardInput(std::int64_t n) noexcept;
    // Copies the first block of the output to `out` and moves the output on.
    void HandOut(float* const* out) noexcept;

    const CPitchMarksIf& marks;
    std::shared_ptr<const GrainTables> tables;
    SlidingSamples input;  // history of the recording
    SlidingSamples output; // what is being added up

    float timeFactor = 1;
    float invTimeFactor = 1; // 1 / timeFactor, or 0 while frozen
    float pitchFactor = 1;   // also the read rate of resampled grains
    float invPitchFactor = 1;
    float transientThreshold = 0.7F; // the strength from which on the analysis itself counts an attack
    float readSpan = 1;              // most input samples that a grain reads per output sample
    float invReadSpan = 1;
    float timeSpan = 1;      // max(invTimeFactor, 1)
    float resampleGain = 1;  // of the sinc interpolator
    double readPosition = 0; // of the next grain

    std::int32_t channels;
    std::int32_t blockSize;
    std::int32_t inputFill = 0;   // valid samples in `input`
    std::int32_t inputEnd = 0;    // position behind the newest of them
    std::int32_t outputEnd = 0;   // index in `output` behind the last sample written
    std::int32_t outputMark = 0;  // index in `output` of the centre of the current grain: all before is ready
    std::int32_t outPeriod = 0;   // from the previous grain's centre to this one's, in `output`
    std::int32_t inPeriod = 0;    // at the mark in use
    std::int32_t prevMarkPos = 0; // position of the mark of the previous transient
    std::int32_t markPos = 0;     // position of the mark in use
    std::int32_t markIndex = 0;   // the mark in use
    std::int32_t prevMarkIndex = 0;      // the mark used last; where the search for the next one starts
    std::int32_t repeatCount = 1;        // how many grains in a row took the same mark
    std::int32_t transientSearch = 1024; // how far to look for the end of an attack, samples
    std::int32_t sincStep = 32768;       // table step of one input sample, in 1/128 of an entry
    bool inTransient = false;            // the previous grain was a copied attack
    bool resampleGrains = true;          // formants move with the pitch
    bool transientHandling = false;      // attacks are copied rather than overlapped

private:
    struct Walk;
    // How a copied attack lies in the output.
    struct AttackCopy {
        std::int32_t lead;    // input samples in front of the mark that are copied too
        std::int32_t start;   // index in `output` of the first sample of the crossfade
        std::int32_t fade;    // samples of the crossfade
        std::int32_t samples; // behind the crossfade
        std::int32_t end;     // becomes outputEnd
        std::int32_t centre;  // becomes outputMark
    };

    // The walk from grain to grain, for the grains themselves and for looking ahead. Lengths are samples, a
    // negative one is kMarksExhausted; `end` is the end of the output then.
    bool ReadsAtUnity() const { return !resampleGrains || pitchFactor == 1.0F; }
    std::int32_t FindMark(std::int32_t from, double position) const;
    std::int32_t PeriodAt(std::int32_t mark) const;
    std::int32_t HoldPeriod(std::int32_t period, std::int32_t end) const;
    std::int32_t HoldSpan(std::int32_t span, std::int32_t end) const;
    std::int32_t KeptOutput(std::int32_t spacing, std::int32_t repeats) const;
    std::int32_t FindAttackSpan(std::int32_t mark) const;
    AttackCopy PlanAttack(std::int32_t span, std::int32_t kept, std::int64_t sinceLast,
                          std::int32_t end) const;
    std::int32_t Advance(Walk& walk, std::int32_t mark) const;

    std::int32_t RenderGrains();
    std::int32_t RenderNextGrain();
    void RenderGrain();
    void RenderUnityGrain();
    void RenderResampledGrain();
    void CopyAttack();

    // From index `first` of the input to index `at` of the output, `samples` samples of each channel.
    void AddRise(std::int32_t at, std::int64_t first, std::int32_t samples);
    void WriteFall(std::int32_t at, std::int64_t first, std::int32_t samples);
    void WriteSilence(std::int32_t at, std::int32_t samples);
    void WriteCopied(std::int32_t at, std::int64_t first, std::int32_t samples);
    void BlendCopied(std::int32_t at, std::int64_t first, std::int32_t samples);
    void WriteResampled(std::int32_t at, std::int64_t first, std::int32_t samples);
    void BlendResampled(std::int32_t at, std::int64_t first, std::int32_t samples);
    SincInterpolation Interpolation(std::int32_t channel) const;
};

} // namespace sonorelle
