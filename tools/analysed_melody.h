// The results of one analysis, copied out of the analyser.
#pragma once

#include "analysis/records.h"
#include "support/synthetic_singer.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace sonorelle {
class CkvoAudioFile;
class CMelodyAnalyzer;
} // namespace sonorelle

namespace sonorelle::tools {

struct AnalysedMelody {
    double sampleRate = 0.0; // Hz
    double tuningHertz = 0.0;
    double tuningOffset = 0.0; // semitones
    std::int32_t key = -1;     // 0 to 11 major from C, 12 to 23 minor, -1 none
    std::vector<NoteRecord> notes;
    std::vector<AnalysisFrame> frames;
    std::vector<PitchMarkRecord> marks;
};

// Opens the file as `audio`, which must outlive what `analyzer` is used for, and analyses it; a cache is
// neither read nor written. Whether it could be read and analysed.
bool AnalyseAfresh(const std::filesystem::path& file, CkvoAudioFile& audio, CMelodyAnalyzer& analyzer);

// The same, keeping the results alone. Nothing when it cannot be read or analysed.
std::optional<AnalysedMelody> AnalyseFile(const std::filesystem::path& file);

// Writes the recording as 16-bit WAV, as a user would have it, and analyses that.
std::optional<AnalysedMelody> AnalyseRecording(const test::Recording& recording);

} // namespace sonorelle::tools
