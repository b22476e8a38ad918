#include "cli/gather_report.h"

#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "formats/audio_file.h"

#include <utility>

namespace sonorelle {

namespace {

// Frames and marks are numbered alike: a frame takes from its mark what the frame itself does not keep.
std::vector<CurvePoint> GatherCurve(const CMelodyAnalyzer& analyzer, const CPitchMarksIf& marks) {
    const AnalysisFrame* frames = nullptr;
    const std::int32_t count = analyzer.GetFrames(frames);
    std::vector<CurvePoint> curve;
    curve.reserve(static_cast<std::size_t>(count > 0 ? count : 0));
    for (std::int32_t i = 0; i < count; ++i) {
        const AnalysisFrame& frame = frames[i];
        curve.push_back({frame.position, frame.pitch, frame.voiced != 0, frame.level, marks.GetPeriod(i),
                         marks.GetVoicing(i)});
    }
    return curve;
}

} // namespace

MelodyReport GatherReport(std::string file, CacheUse cache, const CkvoAudioFile& audio,
                          CMelodyAnalyzer& analyzer) {
    MelodyReport report;
    report.file = std::move(file);
    report.sampleRate = audio.GetSampleRate();
    report.channels = audio.GetNumChannels();
    report.frames = audio.GetLength();
    report.cache = cache;
    report.tuningOffset = analyzer.GetTuningOffset();
    report.tuningHz = analyzer.GetTuningFrequency();
    report.key = analyzer.EstimateKey(0);
    const NoteRecord* notes = nullptr;
    const std::int32_t noteCount = analyzer.GetNotes(notes);
    if (noteCount > 0) report.notes.assign(notes, notes + noteCount);
    if (const CPitchMarks* marks = analyzer.GetMarks()) {
        report.markCount = marks->GetCount();
        report.curve = GatherCurve(analyzer, *marks);
    }
    return report;
}

} // namespace sonorelle
