// From a heard melody to its arrangement: sets up the choir, runs it, collects what came of it, and writes
// the MIDI files.

#pragma once

#include "app/snapshot_store.h"
#include "cli/arrangement_report.h"
#include "cli/arrangement_settings.h"
#include "harmony/choir_driver.h"

#include <cstdint>
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

    // The region of the report as MIDI files: all voices, each on a channel of its own, and the chords. False
    // when the file could not be written; an old one is then untouched.
    bool WriteVoices(const ArrangementReport& report, const std::string& path);
    bool WriteChords(const ArrangementReport& report, const std::string& path);

private:
    bool TakeKeyFromMelody();
    bool ApplySettings();
    bool SetStyle();
    UsedSettings SettingsUsed(const MelodyReport& melody) const;
    bool Write(const ArrangementReport& report, const std::string& path, std::int32_t voice);

    ArrangementSettings settings_;
    CSnapshotStore store_; // keeps addresses in the driver, and goes after it
    CChoirDriver driver_;
};

} // namespace sonorelle
