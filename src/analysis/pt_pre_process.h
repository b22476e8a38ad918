// The road of samples into the pitch tracker: mixed to mono, resampled to 11025 Hz, band-limited, into the
// ring.
//
// One thread. Construction allocates; processing does not.

#pragma once

#include <cstdint>
#include <memory>

namespace sonorelle {

class CResampleBase;
class CEqIf;
struct RingBuffer;

class CPTPreProcess {
public:
    // The rate at which pitch is tracked: high enough for the harmonics up to 4 kHz that tell a pitch, low
    // enough to be cheap.
    static constexpr std::int32_t kOutputRate = 11025; // Hz
    // The largest block that Process takes.
    static constexpr std::int32_t kBlockSize = 16384; // frames

    CPTPreProcess();
    ~CPTPreProcess();

    // `rate`: of the input, at least 11025 Hz. 0, kBadArgument or kOutOfMemory.
    std::int32_t Init(std::int32_t rate, std::int32_t channelCount);

    // Takes `count` interleaved frames in `samples`, which is used as working space (count x channels values,
    // at least 1), and appends the result to `ring`; `count` becomes the number of frames written.
    void Process(float* samples, std::int32_t& count, RingBuffer& ring);

    // Forgets all input: the resampler is made anew, the filters are cleared.
    std::int32_t Reset();

    // Input frames that `hop` more output frames need.
    std::int32_t GetRequiredInput(std::int32_t hop) const;

private:
    std::int32_t CreateResamplerAnew();

    std::unique_ptr<CResampleBase> resampler;
    std::unique_ptr<CEqIf> lowPass;
    std::unique_ptr<CEqIf> highPass;
    std::int32_t channels = 1;
    std::int32_t inputRate = kOutputRate;
};

} // namespace sonorelle
