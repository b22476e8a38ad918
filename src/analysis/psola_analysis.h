// Places one pitch mark per period of a voice.
//
// The finder walks through the mono sum of a recording from mark to mark. It correlates the stretch behind
// the last mark with one half a window later; the lag of the highest correlation tells how long the period
// is, and there the next mark is set. The pitch tracker runs alongside on the same samples: it says how long
// the period should be, which sets the length of the window (two periods) and the range of the search (a
// sixteenth of a period, an eighth where there is no voice), and it says whether there is a voice at all. See
// E. Moulines and F. Charpentier, "Pitch-synchronous waveform processing techniques for text-to-speech
// synthesis using diphones", Speech Communication 9 (1990).
//
// In a voiced stretch a mark is moved to the strongest sample near by, when one is clearly stronger. An
// attack strength comes from the peaks of two filtered forms of each period against those of the period
// before.
//
// One thread. Construction allocates; Process and Finish allocate only what the list of marks grows by.

#pragma once

#include "analysis/pitch_track.h"
#include "analysis/psola_analysis_if.h"
#include "analysis/sample_queue.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle {

class CKKF;
class CPitchMarks;
class CPitchMarksIf;
class CSimpleFIRFilter;
class CSimpleIIRFilter;

// How a mark finder is to be built.
struct MarkFinderSettings {
    float sampleRate = 44100; // Hz
    std::int32_t channels = 1;
    // Correlation window at 44.1 kHz in samples, 64 to 65536. Two special values, both without tracking: 0
    // takes a short window by rate and searches wide; -1 does the same and lets marks lie closer.
    std::int32_t blockSize = 2048;
    bool tracking = true;
    std::int32_t bufferSize = 0; // samples; 0: by rate
};

class CPSOLAAnalysis : public CPSOLAAnalysisEnhIf {
public:
    // `output` is borrowed. Init must have given 0 before use.
    explicit CPSOLAAnalysis(CPitchMarksIf* output);
    ~CPSOLAAnalysis() override;
    CPSOLAAnalysis(const CPSOLAAnalysis&) = delete;
    CPSOLAAnalysis& operator=(const CPSOLAAnalysis&) = delete;

    // 0, kBadArgument or kOutOfMemory. When only the pitch tracker cannot be built, tracking is switched off.
    std::int32_t Init(const MarkFinderSettings& settings);

    std::int32_t Reset() override;
    std::int32_t Process(const float* const* channelBuffers, std::int32_t count) override;
    std::int32_t AddTailMark() override;
    std::int32_t Finish() override;
    std::int32_t GetFreeSpace() const override { return bufferSize - buffer.Size(); }
    std::int32_t ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                std::int32_t markIndex, float pitch) override;

    bool IsTracking() const { return tracking; }
    float GetVoicingThreshold() const;                            // dB; 0 without tracking
    void SetVoicingThreshold(float decibels);                     // no effect without tracking
    std::int32_t GetPeriodsTried() const { return blockCounter; } // marks placed and passed over since Reset

private:
    struct Attack {
        float peak = 0;     // of the filtered period
        float previous = 0; // the same of the period before
    };

    void SetSizes(const MarkFinderSettings& settings);
    std::int32_t CreateCorrelators();
    std::int32_t CreateFilters();
    void ClearState();

    void Append(const float* const* channelBuffers, std::int32_t offset, std::int32_t count);
    void PlaceMarks();
    void FollowTracker();
    void ExpectPeriod(float searchShare);
    CKKF& CorrelatorFor(std::int32_t length);
    std::int32_t FindLag();
    std::int32_t SnapToWaveform(std::int32_t found) const;
    bool ResolveTooClose();
    float MeasureAttack();
    float AttackOf(Attack& attack, float smallestPeak) const;
    float MeanSquare() const;
    void DropPeriod();

    void PlaceMarksAtPeriod(std::int32_t fromMark, std::int32_t count, CPitchMarks& found);
    void SpliceMarks(std::int32_t markIndex, const CPitchMarks& found);

    CPitchMarksIf* marks;
    CKKF* correlation = nullptr;                      // the one in use
    std::array<std::unique_ptr<CKKF>, 5> correlators; // the first alone with tracking off
    std::unique_ptr<CSimpleIIRFilter> attackIir;
    std::unique_ptr<CSimpleFIRFilter> attackFir;
    std::int32_t blockSize = 0; // B
    std::int32_t bufferSize = 0;
    std::int32_t windowLength = 0; // of the correlation
    std::int32_t half = 0;         // windowLength / 2
    std::int32_t quarter = 0;      // windowLength / 4
    std::int32_t radius = 0;       // half width of the lag search
    std::int32_t initialRadius = 0;
    std::int32_t channels = 0;
    std::int32_t lastMark = 0;    // position of the last mark, and of the first sample in `buffer`
    std::int32_t nextMark = 0;    // position of the mark being placed
    std::int32_t lag = 0;         // found
    std::int32_t expectedLag = 0; // where the search is centred
    std::int32_t blockCounter = 0;
    std::int32_t minPeriod = 0;  // marks lie at least a quarter of this apart
    std::int32_t lastPeriod = 0; // distance of the last two marks
    std::int32_t defaultPeriod = 0;
    std::int32_t maxLength = 0;
    std::int32_t tailAdvance = 0;
    std::int32_t trackNeed = 0;    // samples that the tracker wants next
    std::int32_t period = 0;       // from lastMark to nextMark
    SampleQueue buffer;            // mono sum from lastMark on
    SampleQueue trackBuffer;       // mono sum that waits for the tracker
    std::vector<float> scratch;    // 4 x B, filtered samples
    std::vector<float> trackBlock; // the tracker's working space
    Attack firAttack;
    Attack iirAttack;
    float expectedPeriod = 0; // samples, from the tracker; -1 when unknown
    float sampleRate = 0;
    float energy = 0; // of the period before nextMark
    float previousVoicing = 0;
    bool transientHold1 = false; // the last mark was a transient
    bool transientHold2 = false; // the one before it was
    bool tracking = false;
    std::unique_ptr<CPitchTrack> tracker;
    PitchTrackResult result; // `salience` is the mark's voicing
};

// The mark finder of the melody analysis.
class CCANTOREExtendedAnalysis final : public CPSOLAAnalysis {
public:
    using CPSOLAAnalysis::CPSOLAAnalysis;
};

} // namespace sonorelle
