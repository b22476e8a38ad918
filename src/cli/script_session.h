// What the commands of a script work on: the session, and what plays it.

#pragma once

#include "cli/console.h"
#include "cli/session.h"
#include "cli/session_player.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sonorelle {

// How a command ended. A failure whose reason was told already has no text.
struct ScriptResult {
    enum class Kind { kDone, kFailed, kCancelled };

    Kind kind = Kind::kDone;
    std::string reason;

    static ScriptResult Done() { return {}; }
    static ScriptResult Failed(std::string text) { return {Kind::kFailed, std::move(text)}; }
    static ScriptResult Told() { return {Kind::kFailed, {}}; }
    static ScriptResult Cancelled() { return {Kind::kCancelled, {}}; }
};

// The words behind the name of a command.
using ScriptWords = std::span<const std::string>;

class ScriptSession {
public:
    // The console is borrowed. `framesPerBlock`: of what is played.
    ScriptSession(const Console& terminal, const HearingWish& wish, std::int32_t framesPerBlock)
        : console(terminal), session(terminal, wish), blockFrames(framesPerBlock),
          player(std::make_unique<SessionPlayer>(session, framesPerBlock)) {}

    CommandLineSession& Session() { return session; }
    SessionPlayer& Player() { return *player; }
    const Console& Terminal() const { return console; }
    std::int32_t BlockFrames() const { return blockFrames; }

    // Fails where nothing is loaded.
    ScriptResult With(const std::function<ScriptResult(CkvovirelaineApp&)>& work);

    // A place of the recording or of the host, told in seconds. Nothing for what is no number from 0 on.
    std::optional<std::int32_t> FrameOf(std::string_view seconds);
    double SampleRate() { return static_cast<double>(session.Host().GetSampleRate()); }
    // Whether a result would take the place of the recording.
    bool IsRecording(const std::string& path) const;

private:
    const Console& console;
    CommandLineSession session;
    const std::int32_t blockFrames;
    std::unique_ptr<SessionPlayer> player;
};

// "what", and what is allowed in its place.
ScriptResult WrongWord(std::string_view word, std::string_view allowed);
// on or off.
std::optional<bool> ReadSwitch(std::string_view word);

} // namespace sonorelle
