// The bodies of ResampleEngine, for the two files that compile it.

#pragma once

#include "dsp/resample_engine.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>

namespace sonorelle {

namespace resample_detail {

// Kaiser's beta: side lobes about 90 dB down, below the noise of 16-bit recordings; more would widen the
// transition band for nothing.
inline constexpr double kBeta = 9.0;

// The output is 0.99 of the input, so that the overshoot of a full-scale signal has a little room.
inline constexpr double kHeadroom = 0.99;

// Units of a table place for one entry, and their number as a shift.
inline constexpr std::int32_t kEntryShift = 7;
inline constexpr std::int32_t kEntryUnits = 1 << kEntryShift;
inline constexpr std::int32_t kPartMask = kEntryUnits - 1;

inline constexpr std::int32_t kFractionMask = 32767; // 15 bits

// The table step at a ratio of 1000 between the rates, the smallest there is: trunc(256 x 128 / 1000 + 0.5).
inline constexpr std::int32_t kSmallestStep = 33;

// Rows are a multiple of this long, so that the dot product has no rest.
inline constexpr std::int32_t kRowUnit = 8;

// 128 KB of taps stay in the second-level cache; enough for every ratio of usual rates.
inline constexpr std::int32_t kCachedTaps = 32768;
inline constexpr std::int32_t kMostRowsBits = 9; // 441 fractions for 16000 or 32000 to 11025 Hz
inline constexpr std::int32_t kNothing = -1;

// Frames that may stay unused beside the look-ahead when an output was held back by the counting in
// hundredths.
inline constexpr std::int32_t kCountingSlack = 2;

inline std::int32_t Reach(std::int32_t tableSize, std::int32_t step) {
    return (tableSize * kEntryUnits + step - 1) / step;
}

inline std::int32_t RowLength(std::int32_t reach) { return (2 * reach + kRowUnit - 1) / kRowUnit * kRowUnit; }

inline std::int32_t HalfLength(std::int32_t tableSize) { return (tableSize / 128 + 2) / 2; }

} // namespace resample_detail

template<typename Arithmetic>
ResampleEngine<Arithmetic>::ResampleEngine(std::int32_t crossings, std::int32_t longestBlock,
                                           std::int32_t channelCount)
    : order(crossings), blockSize(longestBlock), channels(channelCount),
      rolloff(static_cast<float>(order * 0.025 * 0.03125 + 0.9)) {
    using namespace resample_detail;
    const std::int32_t largestTable = order * kSamplesPerCrossing;
    const std::int32_t widestReach = Reach(largestTable, kSmallestStep);
    const std::int32_t longestRow = RowLength(widestReach);
    const auto longestHistory = static_cast<std::int32_t>(HalfLength(largestTable) * kMaxResampleRatio) + 1;
    const std::int64_t frames =
        std::int64_t{blockSize} + longestRow + std::max(longestHistory, widestReach) + kCountingSlack;
    table.reserve(static_cast<std::size_t>(largestTable));
    deltas.reserve(static_cast<std::size_t>(largestTable));
    cachedTaps.resize(static_cast<std::size_t>(std::max(longestRow, kCachedTaps)));
    cachedFraction.resize(std::size_t{1} << kMostRowsBits);
    buffer.resize(static_cast<std::size_t>(channels));
    for (auto& samples : buffer) samples.resize(static_cast<std::size_t>(frames));
    BuildTable(largestTable);
}

template<typename Arithmetic>
std::int32_t ResampleEngine<Arithmetic>::BuildTable(std::int32_t size) {
    using namespace resample_detail;
    if (size < kSamplesPerCrossing || size > order * kSamplesPerCrossing || size % kSamplesPerCrossing != 0) {
        return kBadArgument;
    }
    tableSize = size;
    table.resize(static_cast<std::size_t>(size));
    deltas.assign(static_cast<std::size_t>(size), Entry{0});
    table[0] = Arithmetic::CentreEntry(static_cast<double>(rolloff));
    for (std::int32_t i = 1; i < size; ++i) {
        const auto at = static_cast<std::size_t>(i);
        table[at] = Arithmetic::TableEntry(KaiserSinc(i, size, static_cast<double>(rolloff), kBeta));
        deltas[at - 1] = static_cast<Entry>(table[at] - table[at - 1]);
    }
    halfLength = HalfLength(size);
    Reset();
    return kOk;
}

template<typename Arithmetic>
void ResampleEngine<Arithmetic>::Reset() {
    clock.Reset();
    history = 2 * halfLength;
    behind = 0;
    filled = 0;
    first = true;
}

template<typename Arithmetic>
std::int32_t ResampleEngine<Arithmetic>::HeldFrames() const {
    return static_cast<std::int32_t>(filled - clock.whole - history);
}

template<typename Arithmetic>
std::int32_t ResampleEngine<Arithmetic>::Process(const void* in, void* out, std::int32_t inputRate,
                                                 std::int32_t outputRate, std::int32_t channelCount,
                                                 std::int32_t count) {
    if (channelCount != channels || count < 0 || inputRate < 1 || outputRate < 1) return 0;
    if (inputRate > kMaxResampleRatio * outputRate || outputRate > kMaxResampleRatio * inputRate) return 0;
    if (clock.SetRates(inputRate, outputRate)) PrepareRatio();
    first = false;

    const auto* from = static_cast<const Sample*>(in);
    auto* to = static_cast<Sample*>(out);
    std::int32_t produced = 0;
    do {
        const std::int32_t portion = std::min(count, blockSize);
        Append(from, portion);
        const std::int32_t outputs = MakeOutputs(to);
        DropPassedFrames();
        from += std::ptrdiff_t{portion} * channels;
        to += std::ptrdiff_t{outputs} * channels;
        produced += outputs;
        count -= portion;
    } while (count > 0);
    return produced;
}

// Sets what follows from the ratio. The look-ahead and the frames kept behind the place only grow, so that a
// ratio that comes and goes leaves no gap.
template<typename Arithmetic>
void ResampleEngine<Arithmetic>::PrepareRatio() {
    using namespace resample_detail;
    const double stretch = std::max(clock.Inverse(), 1.0);
    history = std::max(history, static_cast<std::int32_t>(halfLength * stretch + 1.0));
    gain = Arithmetic::MakeGain(clock.Ratio() >= 1.0 ? kHeadroom : kHeadroom * clock.Ratio());
    reach = Reach(tableSize, clock.TableStep());
    tapCount = RowLength(reach);
    if (tapCount > behind) MakeRoomBehind(tapCount);

    const std::size_t rowsThatFit = cachedTaps.size() / static_cast<std::size_t>(tapCount);
    const std::int32_t rowBits = static_cast<std::int32_t>(std::bit_width(rowsThatFit)) - 1;
    cacheShift = 15 - std::min(rowBits, kMostRowsBits);
    std::fill(cachedFraction.begin(), cachedFraction.end(), kNothing);
}

// Lets `behind` grow to `frames`, with silence in front of what is held.
template<typename Arithmetic>
void ResampleEngine<Arithmetic>::MakeRoomBehind(std::int32_t frames) {
    const std::int32_t added = frames - behind;
    for (auto& samples : buffer) {
        std::move_backward(samples.begin(), samples.begin() + filled, samples.begin() + filled + added);
        std::fill_n(samples.begin(), added, Sample{0});
    }
    behind = frames;
    filled += added;
    clock.whole += added;
}

template<typename Arithmetic>
void ResampleEngine<Arithmetic>::Append(const Sample* in, std::int32_t count) {
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        Sample* const to = buffer[static_cast<std::size_t>(channel)].data() + filled;
        assert(filled + count <= static_cast<std::int64_t>(buffer[0].size()));
        const std::ptrdiff_t stride = channels;
        if (stride == 1) {
            for (std::int32_t n = 0; n < count; ++n) to[n] = Arithmetic::Clean(in[n]);
        } else {
            for (std::int32_t n = 0; n < count; ++n) to[n] = Arithmetic::Clean(in[n * stride + channel]);
        }
    }
    filled += count;
}

// Makes all outputs that the input allows, and gives their number. An output whose right wing would reach
// beyond the held samples waits: the look-ahead covers the wing but where a table step is cut off far (orders
// above 60 at extreme ratios).
template<typename Arithmetic>
std::int32_t ResampleEngine<Arithmetic>::MakeOutputs(Sample* out) {
    const std::int64_t wanted = clock.CountOutputs(HeldFrames());
    const std::int32_t leftOfPlace = tapCount - reach - 1;
    const std::int32_t row = tapCount;
    const auto rowGain = gain;
    ResampleClock place = clock;
    std::int32_t made = 0;
    for (; made < wanted && place.whole + reach < filled; ++made) {
        const Tap* const taps = TapsFor(place.Fraction15());
        const auto from = static_cast<std::ptrdiff_t>(place.whole - leftOfPlace);
        for (const auto& samples : buffer) {
            *out++ = Arithmetic::Convolve(taps, samples.data() + from, row, rowGain);
        }
        place.Advance();
    }
    clock = place;
    return made;
}

template<typename Arithmetic>
void ResampleEngine<Arithmetic>::DropPassedFrames() {
    const auto dropped = static_cast<std::int32_t>(std::min<std::int64_t>(clock.whole - behind, filled));
    if (dropped < 1) return;
    filled -= dropped;
    clock.whole -= dropped;
    for (auto& samples : buffer) {
        std::copy_n(samples.begin() + dropped, filled, samples.begin());
    }
}

template<typename Arithmetic>
auto ResampleEngine<Arithmetic>::TapsFor(std::int32_t fraction15) -> const Tap* {
    const auto row = static_cast<std::size_t>(fraction15 >> cacheShift);
    Tap* const taps = cachedTaps.data() + row * static_cast<std::size_t>(tapCount);
    if (cachedFraction[row] != fraction15) {
        MakeTaps(fraction15, taps);
        cachedFraction[row] = fraction15;
    }
    return taps;
}

// One row of taps, by walking the table from the place outwards, in 1/128 entries. The left wing has the
// frame of the place itself; when the place lies exactly on it, the right wing starts with the next frame.
template<typename Arithmetic>
void ResampleEngine<Arithmetic>::MakeTaps(std::int32_t fraction15, Tap* taps) const {
    using namespace resample_detail;
    const std::int32_t step = clock.TableStep();
    const auto tapAt = [this](std::int32_t p) {
        const auto entry = static_cast<std::size_t>(p >> kEntryShift);
        return Arithmetic::Interpolate(table[entry], deltas[entry], p & kPartMask);
    };
    std::fill_n(taps, tapCount, Tap{0});

    const std::int32_t leftEnd = tableSize * kEntryUnits;
    Tap* left = taps + (tapCount - reach);
    for (std::int32_t p = (fraction15 * step) >> 15; p < leftEnd; p += step) *--left = tapAt(p);

    const std::int32_t rightFraction = -fraction15 & kFractionMask;
    const std::int32_t rightEnd = leftEnd - kEntryUnits;
    Tap* right = taps + (tapCount - reach);
    std::int32_t p = (rightFraction * step) >> 15;
    if (rightFraction == 0) p += step;
    for (; p < rightEnd; p += step) *right++ = tapAt(p);
}

} // namespace sonorelle
