#include "analysis/cantore_pitch_analysis.h"

#include "analysis/frame_stages.h"
#include "analysis/mean_pitch.h"
#include "analysis/pitch_marks_if.h"
#include "analysis/psola_analysis.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <cmath>
#include <new>
#include <stdexcept>
#include <utility>

namespace sonorelle {

namespace {

constexpr float kLowestRate = 7999.0F;    // Hz, excluded
constexpr float kHighestRate = 256000.0F; // Hz, excluded
constexpr std::int32_t kMostChannels = 47;

constexpr std::int32_t kMarkFinderBlock = 2048;
constexpr float kPitchTolerance = 0.75F; // semitones
constexpr float kMinNoteSeconds = 0.042F;
constexpr float kMaxGapSeconds = 0.092F;
constexpr float kReserveSeconds = 0.184F;

// Containers throw when memory fails; here a stage that cannot run gives a code.
template<class Work>
std::int32_t WithinMemory(Work work) {
    try {
        work();
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (const std::length_error&) {
        return kOutOfMemory;
    }
}

} // namespace

CCANTOREPitchAnalysis::CCANTOREPitchAnalysis(CPitchMarksIf* output) : marks(output) {}
CCANTOREPitchAnalysis::~CCANTOREPitchAnalysis() = default;

std::int32_t CCANTOREPitchAnalysis::Init(float rate, std::int32_t channelCount) {
    lengths = AnalysisLengths::For(rate);
    rules.sampleRate = rate;
    rules.pitchTolerance = kPitchTolerance;
    SetMinNoteLength(kMinNoteSeconds);
    SetMaxGap(kMaxGapSeconds);
    SetReserveLength(kReserveSeconds);
    markFinder = std::make_unique<CCANTOREExtendedAnalysis>(marks);
    MarkFinderSettings settings;
    settings.sampleRate = rate;
    settings.channels = channelCount;
    settings.blockSize = kMarkFinderBlock;
    return markFinder->Init(settings);
}

std::int32_t CCANTOREPitchAnalysis::Process(const float* const* channelBuffers, std::int32_t count) {
    std::int32_t result = kOk;
    const std::int32_t memory = WithinMemory([&] { result = markFinder->Process(channelBuffers, count); });
    return memory != kOk ? memory : result;
}

std::int32_t CCANTOREPitchAnalysis::Finish() {
    return WithinMemory([&] { markFinder->Finish(); });
}

std::int32_t CCANTOREPitchAnalysis::Reset() {
    frames.clear();
    frames1.clear();
    frames2.clear();
    notes.clear();
    return markFinder->Reset();
}

std::int32_t CCANTOREPitchAnalysis::RunStage(std::int32_t index) {
    switch (index) {
    case 0:
        return BuildFramesFromMarks();
    case 1:
        return WithinMemory([&] { NormaliseLevels(frames); });
    case 2:
        return WithinMemory([&] {
            CutOctaveJumps(frames, lengths);
            frames1 = frames;
        });
    case 3:
        return WithinMemory([&] { FlattenVibrato(frames, frames1, lengths); });
    case 4:
        return WithinMemory([&] {
            BridgeDeviations(frames1, lengths);
            frames2 = frames1;
        });
    case 5:
        return WithinMemory([&] { SmoothByMedian(frames1, frames2, lengths); });
    case 6:
        return WithinMemory([&] { SplitAtSteps(frames2, lengths); });
    case 7:
        return WithinMemory([&] { notes = BuildNotes(frames, frames2); });
    case 8:
        return WithinMemory([&] { CleanUpNotes(notes, frames, rules); });
    default:
        return kOk;
    }
}

std::int32_t CCANTOREPitchAnalysis::BuildFramesFromMarks() {
    if (marks->GetCount() < 1) return kNothingThere;
    return WithinMemory([&] { TakeFrames(FramesFromMarks(*marks, lengths.sampleRate)); });
}

std::int32_t CCANTOREPitchAnalysis::RunAllStages() {
    for (std::int32_t stage = 0; stage < kStageCount; ++stage) {
        if (const std::int32_t result = RunStage(stage); result != kOk) return result;
    }
    return kOk;
}

std::int32_t CCANTOREPitchAnalysis::GetNotes(const NoteRecord*& records) const {
    records = notes.data();
    return static_cast<std::int32_t>(notes.size());
}

std::int32_t CCANTOREPitchAnalysis::GetFrames(const AnalysisFrame*& records) const {
    records = frames.data();
    return static_cast<std::int32_t>(frames.size());
}

std::int32_t CCANTOREPitchAnalysis::MeasureRange(float& pitch, float& level, std::int32_t first,
                                                 std::int32_t last) {
    const auto count = static_cast<std::int32_t>(frames.size());
    if (first < 0 || first > last || last >= count) return kBadArgument;
    double sum = 0;
    for (std::int32_t i = first; i < last; ++i)
        sum += static_cast<double>(frames[static_cast<std::size_t>(i)].level);
    pitch = GetMeanPitch(frames.data(), first, last);
    level = static_cast<float>(sum / (last - first));
    return kOk;
}

std::int32_t CCANTOREPitchAnalysis::ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                                   std::int32_t markIndex, float pitch) {
    std::int32_t result = kOk;
    const std::int32_t memory =
        WithinMemory([&] { result = markFinder->ReanalyseRange(channelBuffers, count, markIndex, pitch); });
    return memory != kOk ? memory : result;
}

float CCANTOREPitchAnalysis::EstimateTuning() const { return sonorelle::EstimateTuning(notes); }

std::int32_t CCANTOREPitchAnalysis::EstimateKey(std::int32_t offset) {
    histogram = CountPitchClasses(notes, EstimateTuning(), offset);
    return sonorelle::EstimateKey(histogram);
}

std::int32_t CCANTOREPitchAnalysis::SetFrames(const AnalysisFrame* records, std::int32_t count) {
    if (count < 0 || (records == nullptr && count > 0)) return kBadArgument;
    return WithinMemory([&] {
        // A copy first: the records may be the very ones that GetFrames gave out.
        TakeFrames(std::vector<AnalysisFrame>(records, records + count));
    });
}

void CCANTOREPitchAnalysis::TakeFrames(std::vector<AnalysisFrame> taken) {
    // All copies or none: the later stages take the three lists for one length.
    std::vector<AnalysisFrame> flattened = taken;
    std::vector<AnalysisFrame> smoothed = taken;
    frames = std::move(taken);
    frames1 = std::move(flattened);
    frames2 = std::move(smoothed);
}

std::int32_t CCANTOREPitchAnalysis::SetNotes(const NoteRecord* records, std::int32_t count) {
    if (count < 0 || (records == nullptr && count > 0)) return kBadArgument;
    return WithinMemory([&] { notes = std::vector<NoteRecord>(records, records + count); });
}

float CCANTOREPitchAnalysis::GetMeanPitch(const AnalysisFrame* frameArray, std::int32_t first,
                                          std::int32_t last) {
    return MeanPitch(frameArray, first, last, false, scratchValues);
}

void CCANTOREPitchAnalysis::SetVoicingThreshold(float decibels) { markFinder->SetVoicingThreshold(decibels); }

float CCANTOREPitchAnalysis::GetVoicingThreshold() const { return markFinder->GetVoicingThreshold(); }

std::int32_t CCANTOREPitchAnalysis::ToFrames(float seconds) const {
    // An f32 product: what f32 keeps of 0.042 s lies below it, and an f64 product would fall short of 2016 at
    // 48 kHz.
    return TruncateToI32(static_cast<double>(std::floor(seconds * lengths.sampleRate)));
}

float CCANTOREPitchAnalysis::ToSeconds(std::int32_t sampleFrames) const {
    return static_cast<float>(sampleFrames / static_cast<double>(lengths.sampleRate));
}

std::int32_t CreatePitchAnalysis(std::unique_ptr<CCANTOREPitchAnalysis>& analysis, CPitchMarksIf* marks,
                                 float sampleRate, std::int32_t channels) {
    const bool rateFits = sampleRate > kLowestRate && sampleRate < kHighestRate;
    if (marks == nullptr || !rateFits || channels < 1 || channels > kMostChannels) return kBadArgument;
    std::unique_ptr<CCANTOREPitchAnalysis> made;
    std::int32_t result = kOk;
    const std::int32_t memory = WithinMemory([&] {
        made = std::make_unique<CCANTOREPitchAnalysis>(marks);
        result = made->Init(sampleRate, channels);
    });
    if (memory != kOk) return memory;
    if (result == kOk) analysis = std::move(made);
    return result;
}

} // namespace sonorelle
