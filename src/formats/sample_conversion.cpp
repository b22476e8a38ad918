#include "formats/sample_conversion.h"

#include <bit>
#include <cstddef>

namespace sonorelle {

namespace {

constexpr float kShortScale = 32768.0f; // one step of 16 bits is 1/32768 of full scale

// Calls work(channel, stride) for each channel; the distance between two samples of a channel is a constant
// of the compiler for mono and stereo, whose loops then become vector code.
template<typename Work>
void ForEachChannel(std::int32_t channelCount, Work work) {
    if (channelCount == 1) {
        work(0, std::integral_constant<std::ptrdiff_t, 1>());
    } else if (channelCount == 2) {
        work(0, std::integral_constant<std::ptrdiff_t, 2>());
        work(1, std::integral_constant<std::ptrdiff_t, 2>());
    } else {
        for (std::int32_t c = 0; c < channelCount; ++c) work(c, static_cast<std::ptrdiff_t>(channelCount));
    }
}

template<typename Sample, typename Convert>
void Split(const Sample* interleaved, std::int32_t channelCount, std::int32_t frames, float* const* channels,
           std::int32_t first, Convert convert) {
    ForEachChannel(channelCount, [=](std::int32_t c, auto stride) {
        const Sample* const from = interleaved + c;
        float* const to = channels[c] + first;
        for (std::ptrdiff_t i = 0; i < frames; ++i) to[i] = convert(from[i * stride]);
    });
}

template<typename Sample, typename Convert>
void Join(const float* const* channels, std::int32_t first, std::int32_t channelCount, std::int32_t frames,
          Sample* interleaved, Convert convert) {
    ForEachChannel(channelCount, [=](std::int32_t c, auto stride) {
        const float* const from = channels[c] + first;
        Sample* const to = interleaved + c;
        for (std::ptrdiff_t i = 0; i < frames; ++i) to[i * stride] = convert(from[i]);
    });
}

std::int16_t ShortFromFloat(float sample) {
    float value = sample * kShortScale;
    value = value == value ? value : 0.0f;
    value = value < -32768.0f ? -32768.0f : value;
    value = value > 32767.0f ? 32767.0f : value;
    // At 1.5 x 2^23 a float has no bits left behind the point: the addition rounds, and the low bits are the
    // integer. Unlike the library's rounding this is vector code on the baseline processor.
    constexpr float kRounder = 12582912.0f;
    return static_cast<std::int16_t>(std::bit_cast<std::int32_t>(value + kRounder) -
                                     std::bit_cast<std::int32_t>(kRounder));
}

} // namespace

void SplitShorts(const std::int16_t* interleaved, std::int32_t channelCount, std::int32_t frames,
                 float* const* channels, std::int32_t first) {
    Split(interleaved, channelCount, frames, channels, first,
          [](std::int16_t sample) { return static_cast<float>(sample) * (1.0f / kShortScale); });
}

void SplitFloats(const float* interleaved, std::int32_t channelCount, std::int32_t frames,
                 float* const* channels, std::int32_t first) {
    // An infinity less itself is not a number, and what is not a number equals nothing.
    Split(interleaved, channelCount, frames, channels, first,
          [](float sample) { return sample - sample == 0.0f ? sample : 0.0f; });
}

void JoinAsShorts(const float* const* channels, std::int32_t first, std::int32_t channelCount,
                  std::int32_t frames, std::int16_t* interleaved) {
    Join(channels, first, channelCount, frames, interleaved, ShortFromFloat);
}

void JoinFloats(const float* const* channels, std::int32_t first, std::int32_t channelCount,
                std::int32_t frames, float* interleaved) {
    Join(channels, first, channelCount, frames, interleaved, [](float sample) { return sample; });
}

} // namespace sonorelle
