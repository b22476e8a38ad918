#include "cli/arranger.h"

#include "app/midi_export.h"
#include "cli/arrangement_sound.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <utility>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

std::int32_t FrameAt(double seconds, const MelodyReport& melody) {
    return std::clamp(TruncateToI32(seconds * static_cast<double>(melody.sampleRate)), 0, melody.frames);
}

} // namespace

bool Arranger::Arrange(const ArrangementSettings& settings) {
    settings_ = settings;
    return TakeKeyFromMelody() && ApplySettings() && driver_.Run() == kOk;
}

// A first run with the usual settings: it copies the notes, and finds root, scale and chords. Later runs keep
// what they are told.
bool Arranger::TakeKeyFromMelody() {
    const ArrangementSettings usual;
    driver_.SetSnapToScale(true);
    driver_.SetMapScale(true);
    driver_.SetVoiceRange(usual.voiceRange);
    driver_.SetSpread(usual.spread);
    for (std::size_t voice = 0; voice < usual.intervals.size(); ++voice)
        driver_.SetManualInterval(static_cast<std::int32_t>(voice), usual.intervals[voice]);
    if (driver_.Run() != kOk) return false;
    driver_.SetAutoKey(false);
    driver_.SetFollowScale(false);
    return true;
}

bool Arranger::ApplySettings() {
    bool allowed = SetStyle();
    if (settings_.root) allowed = driver_.SetRoot(*settings_.root) == kOk && allowed;
    if (settings_.scale) allowed = driver_.SetMelodyScale(*settings_.scale) == kOk && allowed;
    const std::int32_t harmonyScale = settings_.harmonyScale.value_or(driver_.GetMelodyScale());
    allowed = driver_.SetHarmonyScale(harmonyScale) == kOk && allowed;
    driver_.SetSnapToScale(settings_.snap);
    driver_.SetMapScale(settings_.snap);
    allowed = driver_.SetVoiceRange(settings_.voiceRange) == kOk && allowed;
    allowed = driver_.SetSpread(settings_.spread) == kOk && allowed;
    for (std::size_t voice = 0; voice < settings_.intervals.size(); ++voice)
        allowed =
            driver_.SetManualInterval(static_cast<std::int32_t>(voice), settings_.intervals[voice]) == kOk &&
            allowed;
    driver_.SetChordsDirty(true); // the chords of the first run may stand in another key
    return allowed;
}

bool Arranger::SetStyle() {
    driver_.SetManualOnly(settings_.style == kStyleParallel);
    return driver_.SetStyle(settings_.style) == kOk && driver_.SetArrangement(settings_.arrangement) == kOk;
}

UsedSettings Arranger::SettingsUsed(const MelodyReport& melody) const {
    UsedSettings used;
    used.style = driver_.GetStyle();
    used.arrangement = driver_.GetArrangement();
    used.root = driver_.GetRoot();
    used.scale = driver_.GetMelodyScale();
    used.harmonyScale = driver_.GetHarmonyScale();
    used.snap = driver_.GetSnapToScale();
    used.voiceRange = driver_.GetVoiceRange();
    used.spread = driver_.GetSpread();
    for (std::int32_t voice = 0; voice < kMostVoices; ++voice)
        used.intervals[static_cast<std::size_t>(voice)] = driver_.GetManualInterval(voice);
    used.transpose = settings_.transpose;
    used.tempo = settings_.tempo;
    TakeSound(used, melody);
    used.regionEnd = melody.frames;
    if (settings_.region) {
        used.regionStart = FrameAt(settings_.region->startSeconds, melody);
        if (settings_.region->endSeconds) used.regionEnd = FrameAt(*settings_.region->endSeconds, melody);
    }
    return used;
}

void Arranger::TakeSound(UsedSettings& used, const MelodyReport& melody) const {
    const SoundSettings& sound = settings_.sound;
    used.preset = sound.preset;
    used.voices = sound.voices;
    used.heard = AudibleVoices(SettingsOfStrips(sound.voices));
    for (std::int32_t voice = driver_.VoiceCount(); voice < kMostVoices; ++voice)
        used.heard[static_cast<std::size_t>(voice)] = false;
    used.tuning = sound.tuning.value_or(melody.tuningHz);
    used.speed = sound.speed;
}

ArrangementReport Arranger::Report(MelodyReport melody) {
    ArrangementReport report;
    report.settings = SettingsUsed(melody);
    report.melody = std::move(melody);
    report.voiceCount = driver_.VoiceCount();
    report.hasChords = settings_.HasChords();
    for (std::int32_t i = 0; i < driver_.GetNoteCount(); ++i) {
        ArrangedNote note;
        note.melody = driver_.GetNote(i);
        if (report.hasChords) note.chord = driver_.GetChord(i);
        for (std::int32_t voice = 0; voice < report.voiceCount; ++voice) {
            const auto slot = static_cast<std::size_t>(voice);
            float deviation = 0;
            note.voices[slot] = driver_.GetVoice(i, voice, deviation, note.gains[slot], false);
        }
        report.notes.push_back(note);
    }
    return report;
}

std::int32_t Arranger::WriteSound(ArrangementReport& report, std::span<const AudioExportFile> files,
                                  const CAudioExport::Progress& progress) {
    return RenderSound(driver_, report.settings, files, progress, report.limitedFrames);
}

bool Arranger::Write(const ArrangementReport& report, const std::string& path, std::int32_t voice) {
    MidiExportSettings settings;
    settings.playStart = report.settings.regionStart;
    settings.playEnd = report.settings.regionEnd;
    settings.sampleRate = report.melody.sampleRate;
    settings.hostTempo = report.settings.tempo;
    settings.melodyTempo = report.settings.tempo / report.settings.speed;
    settings.syncTempoToHost = true; // the notes come when they sound
    settings.transpose = static_cast<float>(report.settings.transpose);
    return CMidiExport(driver_, settings).ExportMidi(path, voice) == kOk;
}

bool Arranger::WriteVoices(const ArrangementReport& report, const std::string& path) {
    return Write(report, path, CMidiExport::kAllVoices);
}

bool Arranger::WriteChords(const ArrangementReport& report, const std::string& path) {
    return Write(report, path, report.voiceCount);
}

} // namespace sonorelle
