// What the two band-limited resamplers have in common for their users.
//
//     std::unique_ptr<CResampleBase> resampler;
//     if (CreateResampler(resampler, 3, 16384, 1, kResampleFloat) != kOk) ...
//     frames = resampler->Process(in, out, 44100, 11025, 1, count);
//
// Output k lies at the place k inputRate/outputRate of the input stream, counted from its first frame: no
// delay in the signal, but an output appears only when GetHistory() frames beyond its place have come in.
//
// Samples are interleaved, f32 for CResampleFloat and i16 for CResampleInt. One thread uses a resampler at a
// time. Construction allocates; Process and Reset never allocate, lock or throw.

#pragma once

#include <cstdint>
#include <memory>

namespace sonorelle {

inline constexpr std::int32_t kResampleFloat = 0; // type of CResampleFloat
inline constexpr std::int32_t kResampleInt = 1;   // type of CResampleInt

inline constexpr std::int32_t kMaxResampleOrder = 120;
inline constexpr double kMaxResampleRatio = 1000.0; // between the two rates, either way

class CResampleBase {
public:
    // Takes `count` frames and gives as many output frames as they allow: their number is returned. `out`
    // needs room for (count + max(0, HeldFrames())) outputRate/inputRate + 2 frames. It may be the same array
    // as `in` when outputRate <= inputRate, count is at most the block size of the constructor, and there is
    // that room.
    //
    // Rates are in hertz, and may change from call to call. The first ratio below all earlier ones needs a
    // longer look-ahead: outputs then wait until it is filled, and what lies before the remembered past
    // counts as silence. `channels` is the constructor's. More than the block size is taken in portions.
    //
    // The stream of outputs is the same to the bit however the input is cut into blocks. How far along the
    // stream one call gets may differ, by the outputs of one input frame, from another cut.
    //
    // 0, and nothing is taken, for rates that are not positive or more than 1000 times apart, another number
    // of channels, or a negative count.
    virtual std::int32_t Process(const void* in, void* out, std::int32_t inputRate, std::int32_t outputRate,
                                 std::int32_t channels, std::int32_t count) = 0;

    // Back to the state after construction; the table stays.
    virtual void Reset() = 0;

    virtual ~CResampleBase() = default;

    // Computes the filter table with `size` entries, 256 for each zero crossing of the sinc, and resets. A
    // size that is not a multiple of 256, or is out of 256 to 256 x the constructor's order, is refused with
    // kBadArgument. Done by the constructor; needed again only for a shorter filter.
    virtual std::int32_t BuildTable(std::int32_t size) = 0;

    // Whole frames by which the buffered input, less the look-ahead, goes beyond the whole place of the next
    // output; negative when that place lies ahead of it. n more frames so make n + HeldFrames() usable ones.
    virtual std::int32_t HeldFrames() const = 0;

    virtual std::int32_t GetHistory() const = 0;    // the look-ahead in input frames; it never shrinks
    virtual std::int32_t GetHalfLength() const = 0; // frames of it at equal rates: 4 for order 3
    virtual bool HasRun() const = 0;                // whether Process has taken a call since the last Reset

protected:
    CResampleBase() = default;
    CResampleBase(const CResampleBase&) = default;
    CResampleBase& operator=(const CResampleBase&) = default;
};

// Makes a resampler. `order`, 1 to 120, is the half-width of the filter in zero crossings of its sinc: cost
// and look-ahead grow with it, the transition band narrows. `blockSize` is the largest portion in frames.
// `flag` is kept for callers that pass one, and changes nothing. kBadArgument for an order, type, block size
// or number of channels out of range; kOutOfMemory; `resampler` is then untouched.
std::int32_t CreateResampler(std::unique_ptr<CResampleBase>& resampler, std::int32_t order,
                             std::int32_t blockSize, std::int32_t channels, std::int32_t type,
                             std::int32_t flag = 0);

} // namespace sonorelle
