#include "cli/script_session.h"

#include "cli/named_numbers.h"
#include "cli/result_file.h"
#include "platform/saturate.h"

#include <cmath>

namespace sonorelle {

ScriptResult ScriptSession::With(const std::function<ScriptResult(CkvovirelaineApp&)>& work) {
    if (!session.IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    ScriptResult result;
    session.With([&](CkvovirelaineApp& app) { result = work(app); });
    return result;
}

std::optional<std::int32_t> ScriptSession::FrameOf(std::string_view seconds) {
    const std::optional<double> number = ReadNumber(seconds);
    if (!number || *number < 0) return std::nullopt;
    return TruncateToI32(std::round(*number * SampleRate()));
}

bool ScriptSession::IsRecording(const std::string& path) const {
    return !session.RecordingPath().empty() && AreTheSameFile(path, session.RecordingPath());
}

ScriptResult WrongWord(std::string_view word, std::string_view allowed) {
    std::string text = "'";
    text.append(word).append("' is not allowed; allowed: ").append(allowed);
    return ScriptResult::Failed(text);
}

std::optional<bool> ReadSwitch(std::string_view word) {
    if (word == "on") return true;
    if (word == "off") return false;
    return std::nullopt;
}

} // namespace sonorelle
