// The arrangement as a Standard MIDI File: the voices of a region, its chords, or the one key that triggers
// it.
//
//     MidiExportSettings settings;
//     settings.playEnd = audio.GetLength();
//     settings.sampleRate = audio.GetSampleRate();
//     const CMidiExport exporter(driver, settings);
//     const std::int32_t result = exporter.ExportMidi("Out_song.mid", CMidiExport::kAllVoices);
//
// What every file begins with: tempo and metre. A note counts when some of it lies within the region, which
// is open at both ends; what sticks out is cut off. The host's tempo gives the ticks their length; the times
// are those of the recording, stretched when the melody follows the host's tempo.
//
// Threads: the interface thread; whoever lets audio run beside it names AudioLock in the settings.
// Live input is bypassed during an export. Allocates; throws nothing. A file that cannot be written leaves
// the old one, or none.

#pragma once

#include <cstdint>
#include <string>

namespace sonorelle {

class CCriticalSection;
class CChoirDriver;

struct MidiExportSettings {
    static constexpr float kUnknownTempo = -1;

    std::int32_t playStart = 0; // the region, in sample frames; empty unless the end lies behind the start
    std::int32_t playEnd = 0;
    float sampleRate = 44100;          // Hz, of the recording
    float hostTempo = kUnknownTempo;   // quarter notes per minute; unknown, it counts as 120
    float melodyTempo = kUnknownTempo; // of the recording; unknown, it counts as the host's
    bool syncTempoToHost = false;      // the melody is stretched to the host's tempo
    float transpose = 0;               // semitones, added to every voice and chord
    std::int32_t timeSigNumerator = 4; // below 1, each counts as 4
    std::int32_t timeSigDenominator = 4;
    // Held while the driver is asked, where other threads play from it meanwhile, and not while the file is
    // written; may be null.
    CCriticalSection* lock = nullptr;
};

// How hard a note of this level (0 to 1, a mean energy) is struck, 0 to 127: full at 1, and nothing from
// about 0.001 (30 dB below) on.
std::int32_t MidiVelocityFromLevel(float level);

class CMidiExport {
public:
    static constexpr std::int32_t kAllVoices = -1;

    // The driver is borrowed for the lifetime of this object.
    CMidiExport(CChoirDriver& choirDriver, const MidiExportSettings& exportSettings)
        : driver_(choirDriver), settings_(exportSettings) {}

    // `voice`: kAllVoices, a voice, or the driver's VoiceCount() for the chords. Each voice has the MIDI
    // channel of its own number. A silent voice, and a key outside 0 to 127, leave no event. Gives 0;
    // kCannotWrite; kBadArgument, and no file, for another voice.
    //
    // A quirk of the chords that stays: at a change, each of the four places ends its old key and begins its
    // new one before the next place has its turn. A key that moves down by a place is thereby struck again
    // and ended at once.
    std::int32_t ExportMidi(const std::string& path, std::int32_t voice) const noexcept;

    // One note of the region's length on `triggerNote`: what a sequencer plays to trigger the arrangement. A
    // key outside 0 to 127 leaves no event. Gives 0 or kCannotWrite.
    std::int32_t ExportTriggerMidi(const std::string& path, std::int32_t triggerNote) const noexcept;

private:
    CChoirDriver& driver_;
    MidiExportSettings settings_;
};

} // namespace sonorelle
