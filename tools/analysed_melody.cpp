#include "analysed_melody.h"

#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

namespace sonorelle::tools {

bool AnalyseAfresh(const std::filesystem::path& file, CkvoAudioFile& audio, CMelodyAnalyzer& analyzer) {
    if (audio.OpenRead(file.string(), kAudioCacheFrames, -1, -1) != kOk) return false;
    if (analyzer.Attach(&audio) != kOk) return false;
    while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {
    }
    if (!analyzer.IsAnalysed()) return false;
    analyzer.StoreResults(false);
    return true;
}

std::optional<AnalysedMelody> AnalyseFile(const std::filesystem::path& file) {
    CkvoAudioFile audio;
    CMelodyAnalyzer analyzer;
    if (!AnalyseAfresh(file, audio, analyzer)) return std::nullopt;

    AnalysedMelody melody;
    melody.sampleRate = static_cast<double>(analyzer.GetSampleRate());
    melody.tuningHertz = static_cast<double>(analyzer.GetTuningFrequency());
    melody.tuningOffset = static_cast<double>(analyzer.GetTuningOffset());
    melody.key = analyzer.EstimateKey(0);
    const NoteRecord* notes = nullptr;
    const std::int32_t noteCount = analyzer.GetNotes(notes);
    melody.notes.assign(notes, notes + noteCount);
    const AnalysisFrame* frames = nullptr;
    const std::int32_t frameCount = analyzer.GetFrames(frames);
    melody.frames.assign(frames, frames + frameCount);
    const PitchMarkRecord* marks = nullptr;
    const std::int32_t markCount = analyzer.GetMarks()->GetData(marks);
    melody.marks.assign(marks, marks + markCount);
    return melody;
}

std::optional<AnalysedMelody> AnalyseRecording(const test::Recording& recording) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.File("melody.wav");
    if (!test::WriteWav(file, recording)) return std::nullopt;
    return AnalyseFile(file);
}

} // namespace sonorelle::tools
