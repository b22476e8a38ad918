// From a heard melody to its arrangement: sets up the choir, runs it, collects what came of it, and writes
// the sound and MIDI files.

#pragma once

#include "app/audio_export.h"
#include "app/snapshot_store.h"
#include "cli/arrangement_report.h"
#include "cli/arrangement_settings.h"
#include "harmony/choir_driver.h"

#include <cstdint>
#include <span>
#include <string>

namespace sonorelle {

class CMelodyAnalyzer;

class Arranger {
public:
    // The analyzer has finished and outlives this object.
    explicit Arranger(CMelodyAnalyzer& analyzer) : driver_(analyzer, store_) {}

    // Makes the voices of all notes. Called once. False when memory ran out.
    bool Arrange(const ArrangementSettings& settings);

    // After Arrange. `melody`: the report of the same analysis.
    ArrangementReport Report(MelodyReport melody);

    // The region of the report as sound, as RenderSound. The recording of the analyzer is open.
    // The report learns how much of the first file was cut off at full scale.
    std::int32_t WriteSound(ArrangementReport& report, std::span<const AudioExportFile> files,
                            const CAudioExport::Progress& progress);

    // The region of the report as MIDI files: all voices, each on a channel of its own, and the chords. False
    // when the file could not be written; an old one is then untouched.
    bool WriteVoices(const ArrangementReport& report, const std::string& path);
    bool WriteChords(const ArrangementReport& report, const std::string& path);

private:
    bool TakeKeyFromMelody();
    bool ApplySettings();
    bool SetStyle();
    UsedSettings SettingsUsed(const MelodyReport& melody) const;
    void TakeSound(UsedSettings& used, const MelodyReport& melody) const;
    bool Write(const ArrangementReport& report, const std::string& path, std::int32_t voice);

    ArrangementSettings settings_;
    CSnapshotStore store_; // keeps addresses in the driver, and goes after it
    CChoirDriver driver_;
};

} // namespace sonorelle
