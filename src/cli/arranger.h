// From a session to what `sonorelle arrange` leaves of it: the report, and the sound and MIDI files.

#pragma once

#include "app/audio_export.h"
#include "cli/arrangement_report.h"
#include "cli/arrangement_settings.h"

#include <cstdint>
#include <span>
#include <string>

namespace sonorelle {

class CkvovirelaineApp;
class CommandLineSession;

class Arranger {
public:
    // A recording is loaded. `settings`: what the user asked for, filled in for a session that was restored.
    // Both are borrowed.
    Arranger(CommandLineSession& lentSession, const ArrangementSettings& wanted)
        : session(lentSession), settings(wanted) {}

    // As the session stands now.
    ArrangementReport Report();

    // The play region into all files in one pass; gives what CAudioExport does. The report learns how much
    // of the first file was cut off at full scale.
    std::int32_t WriteSound(ArrangementReport& report, std::span<const AudioExportFile> files,
                            const CAudioExport::Progress& progress);

    // The play region as MIDI files: all voices, each on a channel of its own, and the chords. False when the
    // file could not be written; an old one is then untouched.
    bool WriteVoices(const std::string& path);
    bool WriteChords(const std::string& path);

private:
    UsedSettings SettingsUsed(CkvovirelaineApp& app, const MelodyReport& melody) const;
    bool WriteMidi(const std::string& path, bool chords);

    CommandLineSession& session;
    const ArrangementSettings& settings;
};

} // namespace sonorelle
