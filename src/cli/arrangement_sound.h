// From an arrangement to its sound files: sets up the voices and renders them.

#pragma once

#include "app/audio_export.h"

#include <cstdint>
#include <span>

namespace sonorelle {

class CChoirDriver;
struct UsedSettings;

// Whether the sound of the settings' region fits into a WAV file, whose size is 32 bits: at 44.1 kHz some
// three hours.
bool FitsIntoSoundFile(const UsedSettings& settings);

// Renders the region of the settings into all files in one pass. The driver has run and its recording is
// open. `limited`: how many frames of the first file were cut off at full scale. Gives what CAudioExport
// does, or the voice bank's code when the voices could not be made; unless it is 0, no file is there that was
// not before.
std::int32_t RenderSound(CChoirDriver& driver, const UsedSettings& settings,
                         std::span<const AudioExportFile> files, const CAudioExport::Progress& progress,
                         std::int64_t& limited);

} // namespace sonorelle
