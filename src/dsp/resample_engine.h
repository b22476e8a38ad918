// The band-limited resampler, once for both sample types (J. O. Smith and P. Gossett, "A flexible
// sampling-rate conversion method", ICASSP 1984).
//
// Stages of Process, portion by portion:
//   1. the ratio sets the table step, the wings of the filter, and the look-ahead `history`, which only
//   grows;
//   2. the new frames are appended to one buffer a channel;
//   3. the number of outputs that the input allows is counted (ResampleClock::CountOutputs);
//   4. for each output the filter taps for its fraction of a frame are looked up or made, and convolved with
//      the samples around its place;
//   5. what lies more than the left wing behind the next place is dropped, the rest moves to the front. When
//      the next place lies beyond all input, those frames are dropped as they come in.
//
// The taps of an output depend only on the table step and on the 15-bit fraction of its place, and ratios of
// usual rates come back to the same fractions again and again (1 of them for 44100 to 11025 Hz, 147 for
// 48000). Interpolated taps are therefore kept in a small direct-mapped cache, as one contiguous row from the
// end of the left wing to the end of the right one, so that an output is a plain dot product. Where the cache
// does not hit, the taps are made anew; the result is the same to the bit.
//
// `Arithmetic` is FloatArithmetic or IntArithmetic: the sample, table and gain types and what is done with
// them.

#pragma once

#include "dsp/kaiser_sinc.h"
#include "dsp/resample_base.h"
#include "dsp/resample_clock.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

template<typename Arithmetic>
class ResampleEngine : public CResampleBase {
public:
    using Sample = typename Arithmetic::Sample;
    using Entry = typename Arithmetic::Entry;
    using Tap = typename Arithmetic::Tap;

    // Arguments as CreateResampler checks them. Allocates all that will ever be needed.
    ResampleEngine(std::int32_t order, std::int32_t blockSize, std::int32_t channels);

    std::int32_t Process(const void* in, void* out, std::int32_t inputRate, std::int32_t outputRate,
                         std::int32_t channels, std::int32_t count) override;
    void Reset() override;
    std::int32_t BuildTable(std::int32_t size) override;

    std::int32_t HeldFrames() const override;
    std::int32_t GetHistory() const override { return history; }
    std::int32_t GetHalfLength() const override { return halfLength; }
    bool HasRun() const override { return !first; }

private:
    void PrepareRatio();
    void MakeRoomBehind(std::int32_t frames);
    void Append(const Sample* in, std::int32_t count);
    std::int32_t MakeOutputs(Sample* out);
    void DropPassedFrames();
    const Tap* TapsFor(std::int32_t fraction15);
    void MakeTaps(std::int32_t fraction15, Tap* taps) const;

    std::int32_t order;
    std::int32_t blockSize; // frames of the largest portion
    std::int32_t channels;
    float rolloff;                           // band edge of the filter, of the lower Nyquist frequency
    std::int32_t tableSize = 0;              // entries in use
    std::vector<Entry> table, deltas;        // the half filter, and its first differences
    std::int32_t halfLength = 0;             // frames of look-ahead at equal rates
    std::int32_t history = 0;                // frames of look-ahead
    std::int32_t behind = 0;                 // frames kept in front of the next place; only grows
    bool first = true;                       // no call yet since the reset
    ResampleClock clock;                     // its whole place counts from the start of the buffers
    std::vector<std::vector<Sample>> buffer; // one a channel
    std::int32_t filled = 0;                 // frames in each buffer

    // Of the ratio in use:
    typename Arithmetic::Gain gain{};
    std::int32_t reach = 0;    // taps at most on either side of the place
    std::int32_t tapCount = 0; // taps of a row: both wings, filled up with zeros on the far left

    std::vector<Tap> cachedTaps;              // rows of tapCount
    std::vector<std::int32_t> cachedFraction; // the fraction that a row holds, or kNothing
    std::int32_t cacheShift = 0;              // fraction >> cacheShift is the row
};

} // namespace sonorelle
