// Writes sound files for the tests byte by byte, independent of the code that they test.
#pragma once

#include "support/synthetic_singer.h"

#include <filesystem>

namespace sonorelle::test {

enum class WavSamples { kInt16, kInt24, kFloat32 };

// Integers are rounded to nearest with full scale at 32768 (8388608) and held to their range. False when the
// file cannot be written whole.
bool WriteWav(const std::filesystem::path& path, const Recording& recording,
              WavSamples samples = WavSamples::kInt16);

} // namespace sonorelle::test
