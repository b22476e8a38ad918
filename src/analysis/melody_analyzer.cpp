#include "analysis/melody_analyzer.h"

#include "analysis/cantore_pitch_analysis.h"
#include "analysis/melody_cache.h"
#include "analysis/pitch_marks.h"
#include "dsp/sample_math.h"
#include "formats/audio_file.h"
#include "platform/file_system.h"
#include "platform/regular_file.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace sonorelle {

namespace {

constexpr std::int32_t kMarksAtStart = 8192; // room for some 30 s of a middle voice before the list grows

// States of RunStep; from 0 on they are the stages.
constexpr std::int32_t kFindingPeak = -2;
constexpr std::int32_t kAnalysing = -1;
constexpr std::int32_t kFirstStage = 0;

// Keeps the gain of a silent file finite.
constexpr float kSmallestPeak = 1e-24F;

// Positions are i32, and the mark finder looks up to this far behind the end.
constexpr std::int32_t kLongestFile = std::numeric_limits<std::int32_t>::max() - (1 << 20); // frames

constexpr double kStandardPitch = 440.0; // Hz

} // namespace

CMelodyAnalyzer::CMelodyAnalyzer() = default;
CMelodyAnalyzer::~CMelodyAnalyzer() = default;

std::int32_t CMelodyAnalyzer::Attach(CkvoAudioFile* file) {
    if (file == nullptr || !file->IsOpen()) return kCannotOpen;
    audio = file;
    audio->Seek(0);
    cachePath = audio->GetPath() + ".kva";
    analysed = false;
    return kOk;
}

std::int32_t CMelodyAnalyzer::ReadCacheHeader() {
    cacheFile.reset();
    if (audio == nullptr || !audio->IsOpen()) return -1;
    auto file = std::make_unique<CRegularFile>();
    MelodyCacheHeader header;
    if (!file->Open(cachePath) || !ReadMelodyCacheHeader(*file, header)) return -1;
    magic = header.magic;
    markCount = header.markCount;
    noteCount = header.noteCount;
    if (!IsMelodyCache(header, file->Length())) return -1;

    // The file system's times alone decide, in its finest unit: the stamp inside tells when the cache was
    // written, and a copied or restored folder would make it lie. Equal times count as stale.
    std::int64_t audioTime = 0;
    std::int64_t cacheTime = 0;
    if (!FileModificationTimeNanoseconds(cachePath, cacheTime)) return -1;
    FileModificationTimeSeconds(cachePath, timeStamp);
    if (!FileModificationTimeNanoseconds(audio->GetPath(), audioTime)) return -1;
    if (audioTime >= cacheTime) return 1;
    cacheFile = std::move(file);
    return 0;
}

std::int32_t CMelodyAnalyzer::CloseCache() {
    cacheFile.reset();
    return 1;
}

std::int32_t CMelodyAnalyzer::LoadCache() {
    const std::unique_ptr<CRegularFile> file = std::move(cacheFile);
    if (audio == nullptr || !audio->IsOpen() || !file) return 0;
    try {
        MelodyCacheHeader header;
        header.magic = magic;
        header.markCount = markCount;
        header.noteCount = noteCount;
        MelodyCacheContent content;
        if (!FitsRecording(header, audio->GetLength())) return 0;
        if (!ReadMelodyCacheContent(*file, header, content) || !IsPlausible(content, audio->GetLength()))
            return 0;
        if (!CreateMarks() ||
            marks->SetData(content.marks.data(), static_cast<std::int32_t>(markCount)) != kOk)
            return 0;
        if (!CreateAnalysis() ||
            analysis->SetNotes(content.notes.data(), static_cast<std::int32_t>(noteCount)) != kOk) {
            marks.reset();
            analysis.reset();
            return 0;
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    marks->GetData(markData);
    analysis->GetNotes(notes);
    analysis->BuildFrames();
    analysis->NormaliseFrames();
    analysis->GetFrames(frames);
    tuningOffset = analysis->EstimateTuning();
    analysed = true;
    return 1;
}

bool CMelodyAnalyzer::CreateMarks() {
    if (marks) return true;
    marks.reset(new (std::nothrow) CPitchMarks);
    return marks != nullptr;
}

bool CMelodyAnalyzer::CreateAnalysis() {
    if (analysis) return true;
    if (audio->GetLength() > kLongestFile) return false;
    return CreatePitchAnalysis(analysis, marks.get(), audio->GetSampleRate(), audio->GetNumChannels()) == kOk;
}

bool CMelodyAnalyzer::CreateBlockBuffers() try {
    const auto channels = static_cast<std::size_t>(audio->GetNumChannels());
    blockBuffers.assign(channels, std::vector<float>(kBlockLength));
    blockPointers.clear();
    for (std::vector<float>& buffer : blockBuffers) blockPointers.push_back(buffer.data());
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

std::int32_t CMelodyAnalyzer::RunStep() {
    if (audio == nullptr || !audio->IsOpen() || cacheFile || analysed) return kComplete;
    if (!marks) {
        if (!CreateMarks()) return kComplete;
        marks->Allocate(kMarksAtStart);
    }
    if (!analysis) {
        if (!CreateAnalysis()) return kComplete;
        if (!CreateBlockBuffers()) {
            analysis.reset();
            return kComplete;
        }
        audio->Seek(0);
        state = kFindingPeak;
        peak = 0;
    }
    // The read goes on through the stages, where the file has ended and it gives nothing.
    const std::int32_t read = std::max(audio->Read(blockPointers.data(), kBlockLength), 0);
    if (state < kFirstStage) return RunReadingStep(read);
    if (state < CCANTOREPitchAnalysisIf::kStageCount) {
        // A stage that fails leaves the later ones to work on what there is.
        analysis->RunStage(state);
        ++state;
        return kRanStage;
    }
    analysed = true;
    tuningOffset = analysis->EstimateTuning();
    return kComplete;
}

std::int32_t CMelodyAnalyzer::RunReadingStep(std::int32_t read) {
    const bool ended = read < kBlockLength;
    if (state == kFindingPeak) {
        ReadPeak(read);
        if (ended) {
            audio->Seek(0);
            state = kAnalysing;
            gain = 1.0F / (peak + kSmallestPeak);
        }
    } else {
        AnalyseBlock(read);
        if (ended) {
            analysis->Finish();
            state = kFirstStage;
        }
    }
    return kReadAudio;
}

void CMelodyAnalyzer::ReadPeak(std::int32_t read) {
    for (const std::vector<float>& buffer : blockBuffers)
        peak = std::max(peak, LargestMagnitude(buffer.data(), read));
}

void CMelodyAnalyzer::AnalyseBlock(std::int32_t read) {
    for (std::vector<float>& buffer : blockBuffers) {
        for (std::int32_t i = 0; i < read; ++i) buffer[static_cast<std::size_t>(i)] *= gain;
    }
    analysis->Process(blockPointers.data(), read);
}

std::int32_t CMelodyAnalyzer::StoreResults(bool write) {
    if (audio == nullptr || !audio->IsOpen() || !marks || !analysis) return 0;
    magic = MelodyCacheHeader::kMagic;
    timeStamp = audio->GetModificationTime();
    const std::int32_t marksFound = marks->GetData(markData);
    const std::int32_t notesFound = analysis->GetNotes(notes);
    markCount = static_cast<std::uint32_t>(marksFound);
    noteCount = static_cast<std::uint32_t>(notesFound);
    if (!write) return 0;
    const bool written = WriteMelodyCache(cachePath, timeStamp, {markData, markCount}, {notes, noteCount});
    return written ? 1 : 0;
}

std::int32_t CMelodyAnalyzer::GetBlockCount() const {
    return audio != nullptr ? audio->GetLength() / kBlockLength : 0;
}

std::int32_t CMelodyAnalyzer::GetLength() const { return audio != nullptr ? audio->GetLength() : 0; }

std::int32_t CMelodyAnalyzer::GetAudioFile(CkvoAudioFile*& file) const {
    if (audio == nullptr || !audio->IsOpen()) return kCannotOpen;
    file = audio;
    return kOk;
}

CPitchMarks* CMelodyAnalyzer::GetMarks() const { return marks.get(); }

std::int32_t CMelodyAnalyzer::GetFrames(const AnalysisFrame*& records) const {
    records = nullptr;
    return analysis ? analysis->GetFrames(records) : 0;
}

std::int32_t CMelodyAnalyzer::GetNotes(const NoteRecord*& records) const {
    records = notes;
    return notes != nullptr ? static_cast<std::int32_t>(noteCount) : 0;
}

bool CMelodyAnalyzer::IsAnalysed() const { return analysed; }

float CMelodyAnalyzer::GetTuningOffset() const { return tuningOffset; }

float CMelodyAnalyzer::GetTuningFrequency() const {
    return static_cast<float>(kStandardPitch * std::exp2(static_cast<double>(tuningOffset) / 12.0));
}

float CMelodyAnalyzer::GetSampleRate() const { return audio != nullptr ? audio->GetSampleRate() : 0.0F; }

std::int32_t CMelodyAnalyzer::EstimateKey(std::int32_t offset) {
    return analysis ? analysis->EstimateKey(offset) : -1;
}

float CMelodyAnalyzer::MeasureRange(std::int32_t startPosition, std::int32_t endPosition) {
    float pitch = -1;
    float level = 0;
    if (!marks || !analysis) return pitch;
    const std::int32_t first = marks->FindNearest(0, startPosition);
    const std::int32_t last = marks->FindNearest(first, endPosition);
    analysis->MeasureRange(pitch, level, first, last);
    return pitch;
}

const std::string& CMelodyAnalyzer::GetCachePath() const { return cachePath; }

} // namespace sonorelle
