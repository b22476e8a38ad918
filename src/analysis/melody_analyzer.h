// From one audio file to pitch marks, frames, notes, tuning and key, with a cache beside the file.
//
// The work is cut into steps of 1024 sample frames (two passes over the file: the first finds the peak, the
// second analyses the samples scaled to a peak of 1) and nine stages over the finished mark list. One thread
// steps it; it holds no lock. After the last step the results are only read.
//
//     CkvoAudioFile audio;
//     audio.OpenRead(path, kAudioCacheFrames, -1, -1);
//     CMelodyAnalyzer analyzer;
//     analyzer.Attach(&audio);
//     if (analyzer.ReadCacheHeader() != 0 || analyzer.LoadCache() == 0) {
//         while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {}
//         analyzer.StoreResults(true);
//     }

#pragma once

#include "analysis/records.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle {

class CCANTOREPitchAnalysis;
class CkvoAudioFile;
class CPitchMarks;
class CRegularFile;

class CMelodyAnalyzer {
public:
    // Results of RunStep.
    static constexpr std::int32_t kComplete = 0;
    static constexpr std::int32_t kReadAudio = 1;
    static constexpr std::int32_t kRanStage = 2;

    // What a file is read in, in sample frames.
    static constexpr std::int32_t kBlockLength = 1024;

    CMelodyAnalyzer();
    ~CMelodyAnalyzer();
    CMelodyAnalyzer(const CMelodyAnalyzer&) = delete;
    CMelodyAnalyzer& operator=(const CMelodyAnalyzer&) = delete;

    // Takes the file to analyse (borrowed; it must outlive this object) and seeks it to 0.
    // Gives 0, or kCannotOpen when it is missing or not open.
    std::int32_t Attach(CkvoAudioFile* file);

    // Looks for a valid cache beside the file. 0: valid, left open for LoadCache. 1: older than, or as old
    // as, the audio file. -1: none, or not a cache, or of a size that does not match its counts.
    std::int32_t ReadCacheHeader();
    // Reads the cache that ReadCacheHeader opened. 1, or 0 when it was not what it claimed to be; nothing has
    // then changed but that it is closed, and a fresh analysis can run.
    std::int32_t LoadCache();
    std::int32_t CloseCache(); // gives 1

    // One step of the analysis. Gives kReadAudio, kRanStage or kComplete.
    std::int32_t RunStep();

    // Publishes the results; with `write` also into the cache file, replacing an old one whole. 1 when it was
    // written.
    std::int32_t StoreResults(bool write);

    std::int32_t GetBlockCount() const;                    // length in frames / 1024
    std::int32_t GetLength() const;                        // frames of the attached file; 0 without one
    std::int32_t GetAudioFile(CkvoAudioFile*& file) const; // 0 or kCannotOpen
    CPitchMarks* GetMarks() const;
    std::int32_t GetFrames(const AnalysisFrame*& records) const; // count
    std::int32_t GetNotes(const NoteRecord*& records) const; // count, valid after StoreResults or LoadCache
    bool IsAnalysed() const;
    float GetTuningOffset() const;    // semitones, -0.5 to +0.5
    float GetTuningFrequency() const; // Hz of the singer's A4
    float GetSampleRate() const;      // Hz
    // Key, 0 to 11 major from C, 12 to 23 minor from C, -1 none; `offset` in semitones is added to all
    // pitches.
    std::int32_t EstimateKey(std::int32_t offset);
    // Mean pitch (MIDI, fraction) between two sample positions; -1 when they name no frames.
    float MeasureRange(std::int32_t startPosition, std::int32_t endPosition);

    // Path of the cache file: the audio file's own with ".kva" behind it.
    const std::string& GetCachePath() const;

private:
    bool CreateMarks();
    bool CreateAnalysis();
    bool CreateBlockBuffers();
    std::int32_t RunReadingStep(std::int32_t frames);
    void ReadPeak(std::int32_t frames);
    void AnalyseBlock(std::int32_t frames);

    std::array<char, 4> magic{};
    std::int64_t timeStamp = 0; // seconds: of the cache file after reading, of the audio file after writing
    std::uint32_t markCount = 0;
    std::uint32_t noteCount = 0;
    std::unique_ptr<CPitchMarks> marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    const NoteRecord* notes = nullptr;
    const AnalysisFrame* frames = nullptr;
    const PitchMarkRecord* markData = nullptr;
    CkvoAudioFile* audio = nullptr;
    bool analysed = false;
    std::string cachePath;
    std::unique_ptr<CRegularFile> cacheFile;
    std::vector<std::vector<float>> blockBuffers;
    std::vector<float*> blockPointers;
    float tuningOffset = 0;
    std::int32_t state = 0;
    float peak = 0; // of the whole file, largest magnitude of all channels
    float gain = 0; // 1 / (peak + 1e-24)
};

} // namespace sonorelle
