#include "true_stages.h"

#include "analysis/cantore_pitch_analysis.h"
#include "analysis/pitch_marks.h"
#include "platform/result_codes.h"

#include <memory>
#include <vector>

namespace sonorelle::tools {
namespace {

constexpr float kVoiced = 12.0F; // dB; any value but 0 says voiced
constexpr std::int32_t kStages = 9;

double HertzAtFrame(const test::Recording& recording, std::int32_t position) {
    return recording.HertzAt(position / recording.sampleRate);
}

StageScore Run(const test::Recording& recording, const std::vector<PitchMarkRecord>& markRecords,
               bool truePitch) {
    CPitchMarks marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    const auto rate = static_cast<float>(recording.sampleRate);
    marks.SetData(markRecords.data(), static_cast<std::int32_t>(markRecords.size()));
    if (CreatePitchAnalysis(analysis, &marks, rate, 1) != kOk || analysis->BuildFrames() != kOk) return {};
    if (truePitch) {
        const AnalysisFrame* found = nullptr;
        const std::int32_t count = analysis->GetFrames(found);
        std::vector<AnalysisFrame> frames(found, found + count);
        for (AnalysisFrame& frame : frames)
            if (const double hertz = HertzAtFrame(recording, frame.position); hertz > 0.0)
                frame.pitch = static_cast<float>(test::MidiPitchFromHertz(hertz));
        analysis->SetFrames(frames.data(), count);
    }
    for (std::int32_t stage = 1; stage < kStages; ++stage) analysis->RunStage(stage);

    const NoteRecord* notes = nullptr;
    const auto count = static_cast<std::size_t>(analysis->GetNotes(notes));
    StageScore score;
    score.notes =
        test::ScoreNotes(test::SungNotes(recording), test::FoundNotes({notes, count}, recording.sampleRate));
    score.tuningErrorCents =
        test::TuningErrorCents(static_cast<double>(analysis->EstimateTuning()), recording.tuningHertz);
    return score;
}

} // namespace

const char* TruthName(std::size_t truth) {
    constexpr std::array<const char*, kTruths> kNames{"as found", "voicing as sung", "pitch as sung",
                                                      "voicing and pitch as sung"};
    return kNames[truth];
}

std::array<StageScore, kTruths> RunStagesOnTruth(const test::Recording& recording,
                                                 const AnalysedMelody& melody) {
    std::vector<PitchMarkRecord> sung = melody.marks;
    for (PitchMarkRecord& mark : sung)
        mark.voicing = HertzAtFrame(recording, mark.position) > 0.0 ? kVoiced : 0.0F;
    return {Run(recording, melody.marks, false), Run(recording, sung, false),
            Run(recording, melody.marks, true), Run(recording, sung, true)};
}

} // namespace sonorelle::tools
