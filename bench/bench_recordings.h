// The recordings that the benchmarks analyse: mono at 44.1 kHz, 16 bit, written to a file as a user would
// have them.
#pragma once

#include "support/synthetic_singer.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace sonorelle::bench {

inline constexpr double kSampleRate = 44100.0;

// What the analysis may meet. The names are what the command lines take.
inline const std::vector<std::string>& Kinds() {
    static const std::vector<std::string> kinds{"melody",    "tone_110", "tone_220", "tone_440",
                                                "tone_1000", "noise",    "silence"};
    return kinds;
}

// `kind`: "melody" (a tenor, random diatonic, with words and rests), "tone_HZ" (one sung vowel), "noise"
// (white, full scale) or "silence". Cut to `seconds`; empty for a kind that does not exist.
test::Recording MakeRecording(const std::string& kind, double seconds);

// Writes it as WAV. False when that failed.
bool WriteRecording(const std::string& kind, double seconds, const std::filesystem::path& file);

} // namespace sonorelle::bench
