// From settings to the panels of a session, and back.

#pragma once

#include "cli/arrangement_settings.h"

namespace sonorelle {

class CkvovirelaineApp;
class CommandLineSession;

// How the session stands, every choice filled in: what options then depart from.
ArrangementSettings PresentSettings(CommandLineSession& session);

// Sets what differs between the two. Notes that were edited by hand stay as long as nothing is asked of the
// harmony: another style, key or interval makes the voices anew.
void ChangeSettings(CommandLineSession& session, const ArrangementSettings& present,
                    const ArrangementSettings& wanted);

// Of a session that was just loaded: sets everything.
void SetUpArrangement(CommandLineSession& session, const ArrangementSettings& settings);

// The strips alone. A value that is the same in both keeps its last bit.
VoiceStrips PresentStrips(CkvovirelaineApp& app);
void ChangeStrips(CkvovirelaineApp& app, const VoiceStrips& present, const VoiceStrips& wanted);

// How many times as fast as the recording a session plays.
float SpeedOf(const CkvovirelaineApp& app);

} // namespace sonorelle
