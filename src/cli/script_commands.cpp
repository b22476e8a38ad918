#include "cli/script_commands.h"

#include <vector>

namespace sonorelle {

namespace {

const std::vector<ScriptCommand>& AllCommands() {
    static const std::vector<ScriptCommand> all = [] {
        std::vector<ScriptCommand> commands;
        for (const auto part :
             {DocumentCommands(), SettingCommands(), NoteCommands(), SnapshotCommands(), TransportCommands()})
            commands.insert(commands.end(), part.begin(), part.end());
        return commands;
    }();
    return all;
}

// How many words of the line are the command's name; 0 when it is another.
std::size_t MatchName(const ScriptCommand& command, ScriptWords line) {
    const std::string_view name = command.name;
    const std::size_t blank = name.find(' ');
    if (blank == std::string_view::npos) return line[0] == name ? 1 : 0;
    return line.size() > 1 && line[0] == name.substr(0, blank) && line[1] == name.substr(blank + 1) ? 2 : 0;
}

std::string UsageOf(const ScriptCommand& command) {
    std::string usage = command.name;
    if (*command.arguments != '\0') usage.append(" ").append(command.arguments);
    return usage;
}

// The command's siblings, when only its first word is known.
ScriptResult UnknownCommand(ScriptWords line) {
    std::string siblings;
    for (const ScriptCommand& command : AllCommands())
        if (std::string_view(command.name).substr(0, line[0].size() + 1) == line[0] + " ")
            siblings.append(siblings.empty() ? "" : ", ").append(command.name);
    if (!siblings.empty()) return ScriptResult::Failed("'" + line[0] + "' needs more: " + siblings);
    return ScriptResult::Failed("there is no command '" + line[0] + "'");
}

} // namespace

std::span<const ScriptCommand> ScriptCommands() { return AllCommands(); }

ScriptResult RunScriptLine(ScriptSession& session, ScriptWords line) {
    for (const ScriptCommand& command : AllCommands()) {
        const std::size_t nameWords = MatchName(command, line);
        if (nameWords == 0) continue;
        const ScriptWords words = line.subspan(nameWords);
        if (words.size() < command.least || words.size() > command.most)
            return ScriptResult::Failed("write it so: " + UsageOf(command));
        return command.run(session, words);
    }
    return UnknownCommand(line);
}

std::string FormatScriptCommands() {
    std::string text;
    for (const ScriptCommand& command : AllCommands())
        text.append("  ").append(UsageOf(command)).append("\n      ").append(command.help).append("\n");
    return text;
}

} // namespace sonorelle
