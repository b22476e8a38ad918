// How long the sound of an arrangement may be.

#pragma once

namespace sonorelle {

struct UsedSettings;

// Whether the sound of the settings' region fits into a WAV file, whose size is 32 bits: at 44.1 kHz some
// three hours.
bool FitsIntoSoundFile(const UsedSettings& settings);

} // namespace sonorelle
