// Cross-correlation of two stretches of signal through an FFT, and the search for its peak near an expected
// lag.
//
// The correlation at lag t is the sum over n of x[n + t] y[n]. It is held at `GetResult()[halfSize + t]`,
// times N: neither the transform nor the result is normalised. Stretches of up to N / 2 samples each do not
// wrap around.
//
// One object serves one thread at a time; nothing allocates after Init.

#pragma once

#include "dsp/aligned_array.h"
#include "platform/processor_features.h"

#include <cstdint>
#include <memory>

namespace sonorelle {

class CFFT;

// Lags from `first` to `last`, both included; none when last < first.
struct LagWindow {
    std::int32_t first;
    std::int32_t last;
};

// The plain form, on CFFT's split order.
class CKKF {
public:
    // `wantedSize`: the length asked for; N is the next power of two at or above it. Init must have given 0
    // before use.
    explicit CKKF(std::int32_t wantedSize);
    virtual ~CKKF();
    CKKF(const CKKF&) = delete;
    CKKF& operator=(const CKKF&) = delete;

    // 0, kBadArgument for a size below 2 or beyond 2^30, or kOutOfMemory.
    std::int32_t Init(std::uint32_t features = ProcessorFeatureWord());

    // out = A x conj(B) x (-1)^k, which puts lag 0 into the middle of the result. All three hold N floats.
    virtual void MultiplySpectra(const float* a, const float* b, float* out) const;

    // Correlates `lengthX` samples of x with `lengthY` samples of y, each at most N (longer ones are cut).
    void Correlate(const float* x, const float* y, std::int32_t lengthX, std::int32_t lengthY);

    // The lag of the largest value among those within `radius` of `expectedLag`; the search slides as a whole
    // into -maxLag .. maxLag. Values are compared in steps of 1/10000, and of equals the lowest lag wins.
    // `expectedLag` comes back when no value is above 0: a negative correlation is never a peak.
    std::int32_t FindPeak(std::int32_t maxLag, std::int32_t expectedLag, std::int32_t radius) const;

    // Correlate and FindPeak in one, for a caller who wants nothing but the peak. The values at the few lags
    // in question are summed directly where that is quicker than three transforms: for a high voice, or in
    // noise, by far.
    std::int32_t CorrelateAndFindPeak(const float* x, const float* y, std::int32_t lengthX,
                                      std::int32_t lengthY, std::int32_t maxLag, std::int32_t expectedLag,
                                      std::int32_t radius);

    // The lags that FindPeak looks at.
    static LagWindow SearchWindow(std::int32_t maxLag, std::int32_t expectedLag, std::int32_t radius);

    std::int32_t GetSize() const { return size; }         // N
    std::int32_t GetHalfSize() const { return halfSize; } // index of lag 0
    const float* GetResult() const { return result.Data(); }

private:
    bool IsDirectQuicker(LagWindow lags, std::int32_t lengthX, std::int32_t lengthY) const;
    void CorrelateDirectly(const float* x, const float* y, std::int32_t lengthX, std::int32_t lengthY,
                           LagWindow lags);
    std::int32_t Highest(LagWindow lags, std::int32_t otherwise) const;

    std::int32_t size = 0;
    std::int32_t halfSize = 0;
    std::unique_ptr<CFFT> fft;
    AlignedArray spectrumA;
    AlignedArray spectrumB;
    AlignedArray result;
    AlignedArray padded; // x between zeros, for the direct sums
};

// The vector form, on the interleaved order.
class CKKF_SSE final : public CKKF {
public:
    using CKKF::CKKF;
    void MultiplySpectra(const float* a, const float* b, float* out) const override;
};

// Makes CKKF_SSE when the feature word has either vector bit, else CKKF. 0, or Init's failure; `kkf` is then
// untouched.
std::int32_t CreateKKF(std::unique_ptr<CKKF>& kkf, std::int32_t size,
                       std::uint32_t features = ProcessorFeatureWord());

} // namespace sonorelle
