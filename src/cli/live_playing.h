// The region of a session played through its blocks, with or without keys from a MIDI file, into a sound
// file: what `sonorelle arrange --blocks` does in place of the export.

#pragma once

#include "cli/playing_settings.h"

#include <cstdint>
#include <functional>
#include <string>

namespace sonorelle {

class CommandLineSession;

struct PlayedSound {
    std::int32_t result = 0;        // kOk, kCannotWrite, CAudioExport::kCancelled
    std::int64_t limitedFrames = 0; // cut off at the limit
};

// `settings`: with blocks. Played along with the transport, the keys choose the harmony, or the pitches, of
// the running melody; in kTrigger they play the region or a snapshot, and the transport does not matter.
//
// Afterwards the session is as before, unless the keys were recorded: then it stands in Edit, with what was
// played as its voices.
PlayedSound PlayIntoFile(CommandLineSession& session, const PlayingSettings& settings,
                         const std::string& path, const std::function<bool(double share)>& progress);

} // namespace sonorelle
