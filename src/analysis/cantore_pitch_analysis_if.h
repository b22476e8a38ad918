// From a stream of samples to frames and notes, as its users see it.
//
// Results are 0 for success, kNothingThere when there are no marks, kBadArgument for a bad argument.

#pragma once

#include "analysis/records.h"

#include <cstdint>

namespace sonorelle {

class CCANTOREPitchAnalysisIf {
public:
    static constexpr std::int32_t kStageCount = 9;

    virtual ~CCANTOREPitchAnalysisIf() = default;

    // The stream: `count` samples of each channel, normalised to a peak of about 1. Finish comes after the
    // last.
    virtual std::int32_t Process(const float* const* channelBuffers, std::int32_t count) = 0;
    virtual std::int32_t Finish() = 0;
    virtual std::int32_t Reset() = 0;

    // The stages over the finished marks, 0 to 8 in order; another index does nothing and gives 0.
    // RunAllStages ends at the first that fails.
    virtual std::int32_t RunStage(std::int32_t index) = 0;
    virtual std::int32_t RunAllStages() = 0;

    // Both give the number of records, valid until the next stage or setter.
    virtual std::int32_t GetNotes(const NoteRecord*& notes) const = 0;
    virtual std::int32_t GetFrames(const AnalysisFrame*& frames) const = 0;

    // Trimmed mean pitch and mean level of the frames from `first` up to below `last`. kBadArgument unless
    // 0 <= first <= last and both are frames; the outputs are then untouched. Not during a stage.
    virtual std::int32_t MeasureRange(float& pitch, float& level, std::int32_t first, std::int32_t last) = 0;
    // See CPSOLAAnalysisEnhIf.
    virtual std::int32_t ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                        std::int32_t markIndex, float pitch) = 0;

    virtual float EstimateTuning() const = 0; // semitones off 440 Hz, -0.5 to 0.5
    // 0 to 11 major from C, 12 to 23 minor, -1 none; `offset` in semitones is added to all notes.
    virtual std::int32_t EstimateKey(std::int32_t offset) = 0;

    // Replace frames or notes by a copy. 0, kBadArgument for a negative count or missing records,
    // kOutOfMemory.
    virtual std::int32_t SetFrames(const AnalysisFrame* records, std::int32_t count) = 0;
    virtual std::int32_t SetNotes(const NoteRecord* records, std::int32_t count) = 0;

    virtual std::int32_t BuildFrames() = 0;     // stage 0
    virtual std::int32_t NormaliseFrames() = 0; // stage 1

    // How near in pitch notes are that may be one, in semitones (0.75).
    virtual void SetPitchTolerance(float semitones) = 0;
    virtual float GetPitchTolerance() const = 0;
    // The shortest note (0.042 s), the longest rest within a note (0.092 s), and a length kept for callers
    // (0.184 s), all held in whole sample frames.
    virtual void SetMinNoteLength(float seconds) = 0;
    virtual float GetMinNoteLength() const = 0;
    virtual void SetMaxGap(float seconds) = 0;
    virtual float GetMaxGap() const = 0;
    virtual void SetReserveLength(float seconds) = 0;
    virtual float GetReserveLength() const = 0;

    // Trimmed mean pitch of the voiced frames from `first` up to below `last` of any frames; not a number
    // without one.
    virtual float GetMeanPitch(const AnalysisFrame* frameArray, std::int32_t first, std::int32_t last) = 0;

    // The pitch tracker's voicing threshold in dB.
    virtual void SetVoicingThreshold(float decibels) = 0;
    virtual float GetVoicingThreshold() const = 0;
};

} // namespace sonorelle
