// The arrangement as sound files: the play region rendered through the voice bank to 16-bit stereo WAV at the
// recording's rate, all voices together or one by one.
//
//     AudioExportSettings settings;
//     settings.playEnd = audio.GetLength();
//     settings.gains[0] = StripGainFromVolAndPan(1, -0.1F);
//     CAudioExport exporter(bank, driver, settings);
//     exporter.ExportAudio("Out_song.wav", CAudioExport::kAllVoices, [&](double share) { ...; return true;
//     });
//
// The bank is sent to the start of the region and renders it block by block, as in playback, but for two
// things: the mix has no fade (each voice still fades in by itself, over 1024 samples), and what exceeds the
// limit is cut off there instead of clipping in the host. The render begins at the mark nearest to the start,
// so that the file may be some milliseconds longer or shorter than the region.
//
// Several files are made in one pass: every pass renders all four voices, and each file takes its own from
// them. A file comes out the same, to the bit, whether it is made alone or with others.
//
// The caller's part: before, to silence playback (ExportLock, the exporting flag) and to remember where it
// stood; afterwards, to put the bank's position back. Bank, driver and the recording are the caller's alone
// meanwhile. Settings of the voices (speed, delays, transposition...) are the bank's own.
//
// Threads: the interface thread, which is busy until the end. Allocates. Only the progress callback throws,
// if it does; all is then as after a cancellation.

#pragma once

#include "app/strip_gain.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

class CCriticalSection;
class CChoirDriver;
class CVoiceBank;

struct AudioExportSettings {
    static constexpr std::int32_t kVoices = 4;

    // The region, in samples of the recording; empty unless the end lies behind the start. It ends with the
    // recording at the latest, that is with the last mark from which the lead can sing.
    std::int32_t playStart = 0;
    std::int32_t playEnd = 0;
    std::array<StripGain, kVoices> gains{};
    std::array<bool, kVoices> enabled{true, true, true, true}; // a voice that is not renders silence
    // Samples of the recording that pass with one sample of the file: hostTempo / melodyTempo when the melody
    // follows the host's tempo, else 1. The bank's speed is the inverse of it. Held to 0.01 to 100; what is
    // not a number counts as 1.
    double tempoRatio = 1;
    // Held for each block that is rendered, where other threads set the voices meanwhile; may be null.
    CCriticalSection* lock = nullptr;
};

// One of the files of a pass.
struct AudioExportFile {
    std::string path;
    std::int32_t voice = -1; // CAudioExport::kAllVoices or 0 to 3
};

class CAudioExport {
public:
    static constexpr std::int32_t kAllVoices = -1;
    static constexpr std::int32_t kCancelled = -1; // an answer; no error
    static constexpr float kLimit = 0.999F;        // of full scale, either way

    // Called about a hundred times with the share that is done, rising from 0 to 1. False: cancel.
    using Progress = std::function<bool(double share)>;

    // Bank (initialised, its block size set) and driver are borrowed for the lifetime of this object.
    CAudioExport(CVoiceBank& voiceBank, CChoirDriver& choirDriver, const AudioExportSettings& exportSettings)
        : bank(voiceBank), driver(choirDriver), settings(exportSettings) {}

    // `voice`: kAllVoices, or 0 to 3; one that the arrangement does not have is silent. Gives 0;
    // kCannotWrite; kBadArgument for another voice, or a bank without a recording; kCancelled. Unless it
    // gives 0 no file is left, and an old one of that name is untouched.
    std::int32_t ExportAudio(const std::string& path, std::int32_t voice, const Progress& progress = nullptr);

    // The same for several files at once. Unless it gives 0 none is left, but for one case: when the disk
    // refuses a file at its very end, those before it stand.
    std::int32_t ExportFiles(std::span<const AudioExportFile> files, const Progress& progress = nullptr);

    // How many frames of file `index` of the last pass were cut off at the limit; 0 for another index.
    std::int64_t GetLimitedFrames(std::size_t index) const {
        return index < limitedFrames.size() ? limitedFrames[index] : 0;
    }

private:
    class Output;
    class VoiceBuffers;

    double GoToStart();
    std::int32_t Render(const std::vector<std::unique_ptr<Output>>& outputs, const Progress& progress);

    CVoiceBank& bank;
    CChoirDriver& driver;
    AudioExportSettings settings;
    std::vector<std::int64_t> limitedFrames;
};

} // namespace sonorelle
