#include "cli/session_command.h"

#include "cli/console.h"
#include "cli/named_numbers.h"
#include "cli/script_commands.h"
#include "cli/script_words.h"
#include "cli/wrong_option.h"

#include <string_view>
#include <vector>

namespace sonorelle {

namespace {

std::optional<std::int32_t> BlocksOf(const SessionOptions& options) {
    if (!options.blocks) return SessionPlayer::kUsualFrames;
    const std::optional<std::int32_t> frames = ReadInteger(*options.blocks);
    return frames && *frames >= 1 && *frames <= SessionPlayer::kMostFrames ? frames : std::nullopt;
}

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

ScriptResult RunLine(ScriptSession& session, std::string_view line) {
    std::vector<std::string> words;
    if (line.find('\0') != std::string_view::npos) return ScriptResult::Failed("this is no text");
    if (!SplitScriptLine(line, words)) return ScriptResult::Failed("a quotation has no end");
    return words.empty() ? ScriptResult::Done() : RunScriptLine(session, words);
}

} // namespace

std::string FindWrongUse(const SessionOptions& options) {
    if (options.list) return "";
    if (options.script.empty()) return "--script: needs a file";
    if (!BlocksOf(options))
        return WrongOption("--blocks", *options.blocks,
                           "1 to " + std::to_string(SessionPlayer::kMostFrames) + " frames");
    return "";
}

int RunSession(const SessionOptions& options, const Console& console) {
    if (options.list) return console.ExitCodeOf(console.Write(FormatScriptCommands()));
    const std::optional<std::string> script = ReadDocumentFile(options.script);
    if (!script) {
        console.Complain(options.script, "Could not read this file!");
        return kExitFailed;
    }
    std::string place;
    Console terminal = console;
    terminal.place = &place;
    HearingWish wish;
    wish.useCache = options.useCache;
    wish.showProgress = !options.quiet;
    ScriptSession session(terminal, wish, BlocksOf(options).value_or(SessionPlayer::kUsualFrames));
    std::size_t number = 0;
    for (const std::string_view line : LinesOf(*script)) {
        place = options.script + ":" + std::to_string(++number);
        const ScriptResult result =
            console.IsCancelled() ? ScriptResult::Cancelled() : RunLine(session, line);
        if (result.kind == ScriptResult::Kind::kCancelled) {
            terminal.Complain("", kCancelledText);
            return kExitCancelled;
        }
        if (result.kind == ScriptResult::Kind::kFailed) {
            if (!result.reason.empty()) terminal.Complain("", result.reason);
            return kExitFailed;
        }
    }
    return kExitDone;
}

} // namespace sonorelle
