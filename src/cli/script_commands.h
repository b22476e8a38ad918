// The commands of scripts, as one table.

#pragma once

#include "cli/script_session.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace sonorelle {

struct ScriptCommand {
    const char* name;      // of one word, or of two
    const char* arguments; // for the user
    const char* help;
    std::size_t least; // words behind the name
    std::size_t most;
    ScriptResult (*run)(ScriptSession& session, ScriptWords words);
};

// In the order of the help. Of commands that begin alike the longer name comes first.
std::span<const ScriptCommand> ScriptCommands();

// Runs a line in words, of which there is one at least.
ScriptResult RunScriptLine(ScriptSession& session, ScriptWords line);

// Every command with its help, in lines for a terminal.
std::string FormatScriptCommands();

// The commands by subject; each file of them has a list of its own.
std::span<const ScriptCommand> DocumentCommands();
std::span<const ScriptCommand> SettingCommands();
std::span<const ScriptCommand> NoteCommands();
std::span<const ScriptCommand> SnapshotCommands();
std::span<const ScriptCommand> TransportCommands();

// What stands now, as one JSON object on a line.
ScriptResult PrintSession(ScriptSession& session, ScriptWords words);

} // namespace sonorelle
