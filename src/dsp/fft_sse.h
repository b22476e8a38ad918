// The vector forms of CFFT: RealFft behind the same operations, spectra in interleaved order.

#pragma once

#include "dsp/fft.h"
#include "dsp/real_fft.h"

namespace sonorelle {

class CFFT_SSE : public CFFT {
public:
    using CFFT::CFFT;
    void Forward(float* data) override;
    void Inverse(float* data) override;
    void Magnitude(float* data) override;
    void Power(float* data) override;
    void Clean(float* data, std::int32_t count) override;
    std::int32_t Init(std::int32_t windowType) override;

private:
    RealFft transform;
};

// The same in every operation; the class tells which form the processor asked for.
class CFFT_SSE2 final : public CFFT_SSE {
public:
    using CFFT_SSE::CFFT_SSE;
};

} // namespace sonorelle
