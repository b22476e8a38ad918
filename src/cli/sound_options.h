// From the options that say how an arrangement is to sound to settings.

#pragma once

#include <string>

namespace sonorelle {

struct ArrangementSettings;
struct ArrangeOptions;

// Reads preset, voices, tuning and speed. The style in `settings` is known: it says which voices there are.
// Empty when all is well; else a text that says what is wrong and what is allowed.
std::string ReadSoundSettings(const ArrangeOptions& options, ArrangementSettings& settings);

} // namespace sonorelle
