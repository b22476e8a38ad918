// The walk from pitch mark to pitch mark, written a second time: slowly, in one piece, with whole vectors
// erased from the front. The oracle for CPSOLAAnalysis. It takes from the system what has tests of its own:
// the pitch tracker, the two simple filters, and Correlate and FindPeak of the correlator.
#pragma once

#include "analysis/pitch_track.h"
#include "analysis/records.h"
#include "dsp/kkf.h"
#include "dsp/simple_filters.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace sonorelle::test {

class SlowMarkFinder {
public:
    SlowMarkFinder(float sampleRate, int channels, int blockSize, bool tracking);

    void Process(const std::vector<std::vector<float>>& channelSamples, std::size_t first, std::size_t count);
    void Finish();
    void Reset();

    const std::vector<PitchMarkRecord>& Marks() const { return marks; }
    int CountOfSnaps() const { return snaps; }           // marks moved by the waveform
    int CountOfPassedOver() const { return passedOver; } // periods that were too short for a mark

    // Searches in which two lags correlated equally well but for rounding.
    int CountOfTies() const { return ties; }

private:
    void ClearState();
    void PlaceMarks();
    void FollowTracker();
    void Expect(double share);
    int FindLag();
    int SettledTie(int found, const std::vector<float>& stretch, CKKF& correlator);
    int Snapped(int found) const;
    float Attack(const std::vector<float>& filtered, float& previous, float threshold) const;
    float At(int index) const { // 0 behind the end
        return index < static_cast<int>(buffer.size()) ? buffer[static_cast<std::size_t>(index)] : 0.0F;
    }

    float sampleRate;
    int channels;
    bool tracking;
    int block = 0, minPeriod = 0, maxLength = 0;
    int window = 0, half = 0, quarter = 0, radius = 0;
    int lastMark = 0, nextMark = 0, lag = 0, expectedLag = 0, period = 0, lastPeriod = 0;
    float expectedPeriod = 0, voicing = 0;
    float previousFir = 0, previousIir = 0;
    bool hold1 = false, hold2 = false;
    std::vector<float> buffer, trackBuffer;
    PitchTrackResult result;
    std::unique_ptr<CPitchTrack> tracker;
    std::vector<std::unique_ptr<CKKF>> correlators;
    CSimpleFIRFilter fir{-0.5F};
    CSimpleIIRFilter iir{-0.9F};
    std::vector<PitchMarkRecord> marks;
    int snaps = 0, passedOver = 0;
    int ties = 0;
};

} // namespace sonorelle::test
