// From a stream of samples to marks, and from the finished marks in nine stages to frames and notes:
//
//   0  frames from marks            5  median smoothing
//   1  levels, first clean-up       6  splitting at steps of the pitch
//   2  octave jumps cut             7  notes from voiced runs
//   3  vibrato flattened            8  notes stretched, joined, dropped
//   4  short deviations bridged
//
// The raw frames keep the pitch as it was sung; `frames1` and `frames2` are copies that get smoother from
// stage to stage and say where notes begin and end. One thread.

#pragma once

#include "analysis/analysis_lengths.h"
#include "analysis/cantore_pitch_analysis_if.h"
#include "analysis/note_stages.h"
#include "analysis/tuning_and_key.h"

#include <memory>
#include <vector>

namespace sonorelle {

class CCANTOREExtendedAnalysis;
class CPitchMarksIf;

class CCANTOREPitchAnalysis final : public CCANTOREPitchAnalysisIf {
public:
    // `output` is borrowed. Init must have given 0 before use; see CreatePitchAnalysis.
    explicit CCANTOREPitchAnalysis(CPitchMarksIf* output);
    ~CCANTOREPitchAnalysis() override;
    std::int32_t Init(float rate, std::int32_t channelCount);

    std::int32_t Process(const float* const* channelBuffers, std::int32_t count) override;
    std::int32_t Finish() override;
    std::int32_t Reset() override;
    std::int32_t RunStage(std::int32_t index) override;
    std::int32_t RunAllStages() override;
    std::int32_t GetNotes(const NoteRecord*& records) const override;
    std::int32_t GetFrames(const AnalysisFrame*& records) const override;
    std::int32_t MeasureRange(float& pitch, float& level, std::int32_t first, std::int32_t last) override;
    std::int32_t ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                std::int32_t markIndex, float pitch) override;
    float EstimateTuning() const override;
    std::int32_t EstimateKey(std::int32_t offset) override;
    std::int32_t SetFrames(const AnalysisFrame* records, std::int32_t count) override;
    std::int32_t SetNotes(const NoteRecord* records, std::int32_t count) override;
    std::int32_t BuildFrames() override { return RunStage(0); }
    std::int32_t NormaliseFrames() override { return RunStage(1); }
    void SetPitchTolerance(float semitones) override { rules.pitchTolerance = semitones; }
    float GetPitchTolerance() const override { return rules.pitchTolerance; }
    void SetMinNoteLength(float seconds) override { rules.minNoteLength = ToFrames(seconds); }
    float GetMinNoteLength() const override { return ToSeconds(rules.minNoteLength); }
    void SetMaxGap(float seconds) override { rules.maxGap = ToFrames(seconds); }
    float GetMaxGap() const override { return ToSeconds(rules.maxGap); }
    void SetReserveLength(float seconds) override { reserveLength = ToFrames(seconds); }
    float GetReserveLength() const override { return ToSeconds(reserveLength); }
    float GetMeanPitch(const AnalysisFrame* frameArray, std::int32_t first, std::int32_t last) override;
    void SetVoicingThreshold(float decibels) override;
    float GetVoicingThreshold() const override;

    // The smoothed copies, for whoever wants to see the stages at work.
    const std::vector<AnalysisFrame>& GetFlattenedFrames() const { return frames1; }
    const std::vector<AnalysisFrame>& GetSmoothedFrames() const { return frames2; }

private:
    std::int32_t BuildFramesFromMarks();
    void TakeFrames(std::vector<AnalysisFrame> taken);
    std::int32_t ToFrames(float seconds) const;
    float ToSeconds(std::int32_t sampleFrames) const;

    CPitchMarksIf* marks;
    std::unique_ptr<CCANTOREExtendedAnalysis> markFinder;
    std::vector<NoteRecord> notes;
    std::vector<AnalysisFrame> frames;  // raw
    std::vector<AnalysisFrame> frames1; // after vibrato flattening and bridging
    std::vector<AnalysisFrame> frames2; // after median smoothing
    std::vector<float> scratchValues;
    PitchClassHistogram histogram{};
    AnalysisLengths lengths;
    NoteRules rules;
    std::int32_t reserveLength = 0; // settable, used by nobody yet
};

// Makes the analysis on `marks`, which it borrows. kBadArgument for missing marks, a rate not above 7999 or
// not below 256000 Hz, or a number of channels outside 1 to 47; kOutOfMemory; `analysis` is then untouched.
std::int32_t CreatePitchAnalysis(std::unique_ptr<CCANTOREPitchAnalysis>& analysis, CPitchMarksIf* marks,
                                 float sampleRate, std::int32_t channels);

} // namespace sonorelle
