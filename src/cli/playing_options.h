// The options of sessions, programs and playing, checked against each other.

#pragma once

#include <string>

namespace sonorelle {

struct ArrangeOptions;
struct PlayingSettings;

// Reads --blocks, --midi-in, --live and --record; the MIDI file is read too. Empty when all is well, else
// what is wrong.
std::string ReadPlaying(const ArrangeOptions& options, PlayingSettings& playing);

// What does not go together, or would replace a recording. Empty when all is well.
std::string FindWrongSessionUse(const ArrangeOptions& options);

} // namespace sonorelle
