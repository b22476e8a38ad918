// Between interleaved samples as they lie in a file and one float array a channel.
//
// 16-bit samples convert at 1/32768 and 32768, so that reading and writing back is exact to the bit. All
// loops run over contiguous memory and allocate nothing. `channelCount` is at least 1; `first` is the frame
// at which each channel's array is entered.

#pragma once

#include <cstdint>

namespace sonorelle {

// Shorts to floats in -1 to just below 1.
void SplitShorts(const std::int16_t* interleaved, std::int32_t channelCount, std::int32_t frames,
                 float* const* channels, std::int32_t first);

// Floats as they are, but for those that are not finite: they become 0.
void SplitFloats(const float* interleaved, std::int32_t channelCount, std::int32_t frames,
                 float* const* channels, std::int32_t first);

// Floats to shorts, rounded to the nearest (halves to the even one) and clipped; what is not a number becomes
// 0.
void JoinAsShorts(const float* const* channels, std::int32_t first, std::int32_t channelCount,
                  std::int32_t frames, std::int16_t* interleaved);

// Floats as they are, whatever they are.
void JoinFloats(const float* const* channels, std::int32_t first, std::int32_t channelCount,
                std::int32_t frames, float* interleaved);

} // namespace sonorelle
