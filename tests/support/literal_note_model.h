// The note analysis a second time, as slow and as plain as it can be said: the oracle of the tests.
//
// Every look-up walks the list from its beginning, every window is measured anew from its first frame to its
// last, every mean is summed again; nothing is remembered from one round to the next. Arithmetic is in f64
// and rounds to f32 where a value enters a record; levels are compared with limits in f32, so that a level of
// 0.05 is not above 0.05. Lists must rise strictly in position and hold finite pitches.
#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <vector>

namespace sonorelle::test {

// The voiced run under a window of sample positions, both frames included.
struct LiteralWindow {
    int first = 0;
    int last = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
};

void LiteralLocate(const std::vector<AnalysisFrame>& array, LiteralWindow& window, std::int64_t minLength,
                   std::int64_t nextLength);

// Trimmed mean pitch of the voiced frames from `first` up to below `last`.
float LiteralMeanPitch(const std::vector<AnalysisFrame>& array, int first, int last, bool stable);

float LiteralTuning(const std::vector<NoteRecord>& notes);
int LiteralKey(const std::vector<NoteRecord>& notes, int offset);

struct LiteralNoteModel {
    explicit LiteralNoteModel(float rate);

    // Stage 0 takes the marks; without one it gives false and changes nothing. The others are stages 1 to 8.
    bool BuildFrames(const std::vector<PitchMarkRecord>& marks);
    void NormaliseFrames();
    void CutOctaveJumps();
    void FlattenVibrato();
    void BridgeDeviations();
    void SmoothByMedian();
    void SplitAtSteps();
    void BuildNotes();
    void CleanUpNotes();
    void RunStage(int index); // 1 to 8

    bool IsGlide(const NoteRecord& note) const;
    void Extend(int index, bool withUpperStop);
    double MeanLevel(const std::vector<AnalysisFrame>& array, int first, int last) const;

    double sampleRate;
    double pitchTolerance = 0.75;
    std::int64_t lengthLong;
    std::int64_t lengthShort;
    std::int64_t lengthWindow;
    std::int64_t lengthHalf;
    std::int64_t minNoteLength;
    std::int64_t maxGap;
    std::vector<AnalysisFrame> frames;
    std::vector<AnalysisFrame> frames1;
    std::vector<AnalysisFrame> frames2;
    std::vector<NoteRecord> notes;

private:
    void MergePass();
    void DropPass();
};

} // namespace sonorelle::test
