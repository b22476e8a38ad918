// A melody whose notes are known because they were written down: an analyser that has loaded them from a
// cache file, as it does with those of an earlier analysis, beside a recording that is nothing but silence.
#pragma once

#include "analysis/melody_analyzer.h"
#include "analysis/records.h"
#include "support/temporary_folder.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::test {

inline constexpr std::int32_t kFramesPerMark = 50;

// Notes of equal length with equal rests between them, the first one beginning after a rest.
std::vector<NoteRecord> EvenNotes(const std::vector<float>& midiPitches, std::int32_t length = 1000,
                                  std::int32_t rest = 200);

class AnalysedMelody {
public:
    // The recording ends `tail` frames behind the last note (or lasts that long without notes). Marks lie
    // every kFramesPerMark frames, voiced within notes, with the period of the note's pitch in whole samples.
    // Throws std::runtime_error when the analyser does not take the cache.
    explicit AnalysedMelody(std::vector<NoteRecord> notes, std::int32_t tail = 1000,
                            float sampleRate = 44100.0F);
    ~AnalysedMelody();
    AnalysedMelody(const AnalysedMelody&) = delete;
    AnalysedMelody& operator=(const AnalysedMelody&) = delete;

    // The same recording with other notes, as a fresh analysis might find them. Whether the analyser took
    // them.
    bool Reload(const std::vector<NoteRecord>& notes);

    CMelodyAnalyzer& Analyzer() { return analyzer; }
    const std::vector<NoteRecord>& Notes() const { return records; }
    std::int32_t Length() const { return length; } // frames

private:
    class SilentFile;

    std::vector<NoteRecord> records;
    std::int32_t length = 0;
    TemporaryFolder folder;
    std::string path;
    std::unique_ptr<SilentFile> audio;
    CMelodyAnalyzer analyzer;
};

} // namespace sonorelle::test
