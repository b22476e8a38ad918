#include "cli/arranger.h"

#include "app/application.h"
#include "cli/arrangement_setup.h"
#include "cli/session.h"
#include "platform/result_codes.h"

#include <utility>
#include <vector>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

ArrangedNote NoteOf(CChoirDriver& driver, std::int32_t index, bool hasChords) {
    ArrangedNote note;
    note.melody = driver.GetNote(index);
    if (hasChords) note.chord = driver.GetChord(index);
    for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice) {
        const auto slot = static_cast<std::size_t>(voice);
        float deviation = 0;
        note.voices[slot] = driver.GetVoice(index, voice, deviation, note.gains[slot], false);
    }
    return note;
}

} // namespace

// A region up to the end of the melody reaches to the end of the recording: behind it nobody sings.
UsedSettings Arranger::SettingsUsed(CkvovirelaineApp& app, const MelodyReport& melody) const {
    const CChoirDriver& driver = app.Driver();
    UsedSettings used;
    used.style = driver.GetStyle();
    used.arrangement = driver.GetArrangement();
    used.root = driver.GetRoot();
    used.scale = driver.GetMelodyScale();
    used.harmonyScale = driver.GetHarmonyScale();
    used.snap = driver.GetSnapToScale();
    used.voiceRange = settings.voiceRange;
    used.spread = settings.spread;
    used.intervals = settings.intervals;
    used.transpose = settings.transpose;
    used.tempo = settings.tempo;
    used.preset = settings.sound.preset;
    used.voices = settings.sound.voices;
    used.heard = app.VoicePanel().GetAudibleVoices();
    used.tuning = app.TuningPanel().GetFrequency();
    used.speed = settings.sound.speed;
    used.regionStart = app.GetPlayStart();
    used.regionEnd = app.GetPlayEnd() < app.GetMelodyEnd() ? app.GetPlayEnd() : melody.frames;
    return used;
}

ArrangementReport Arranger::Report() {
    ArrangementReport report;
    report.melody = session.ReportMelody();
    session.With([&](CkvovirelaineApp& app) {
        CChoirDriver& driver = app.Driver();
        report.settings = SettingsUsed(app, report.melody);
        report.voiceCount = driver.VoiceCount();
        report.hasChords = driver.GetStyle() == kStyleIntelligent;
        for (std::int32_t i = 0; i < driver.GetNoteCount(); ++i)
            report.notes.push_back(NoteOf(driver, i, report.hasChords));
    });
    return report;
}

std::int32_t Arranger::WriteSound(ArrangementReport& report, std::span<const AudioExportFile> files,
                                  const CAudioExport::Progress& progress) {
    std::int32_t result = kBadArgument;
    std::vector<std::int64_t> limited;
    session.Host().SetOffline(true);
    session.With([&](CkvovirelaineApp& app) { result = app.ExportAudioFiles(files, progress, &limited); });
    session.Host().SetOffline(false);
    if (!limited.empty()) report.limitedFrames = limited.front();
    return result;
}

bool Arranger::WriteMidi(const std::string& path, bool chords) {
    std::int32_t result = kBadArgument;
    session.With([&](CkvovirelaineApp& app) {
        result = app.ExportMidi(path, chords ? app.ExportVoiceCount() : CMidiExport::kAllVoices);
    });
    return result == kOk;
}

bool Arranger::WriteVoices(const std::string& path) { return WriteMidi(path, false); }
bool Arranger::WriteChords(const std::string& path) { return WriteMidi(path, true); }

} // namespace sonorelle
