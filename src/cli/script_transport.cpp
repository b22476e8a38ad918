// Commands for when and how fast the melody plays, for the host's transport, and for keys.

#include "app/application.h"
#include "cli/live_playing.h"
#include "cli/mix_file.h"
#include "cli/named_numbers.h"
#include "cli/playing_settings.h"
#include "cli/script_commands.h"
#include "formats/midi_event.h"
#include "platform/result_codes.h"

#include <array>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kSlowestTempo = 1;
constexpr double kTempoLimit = 999; // not included
constexpr const char* kTempoChoices = "1 to 998 quarter notes per minute";
constexpr double kLongestPlay = 24 * 3600; // seconds
constexpr std::int32_t kHighestKey = 127;

ScriptResult SetRegion(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        std::optional<std::int32_t> start = 0;
        std::optional<std::int32_t> end = app.GetMelodyEnd();
        if (words.size() == 1 && words[0] != "all")
            return ScriptResult::Failed("write it so: region START END, or region all");
        if (words.size() == 2) {
            start = script.FrameOf(words[0]);
            end = script.FrameOf(words[1]);
        }
        if (!start || !end || *start >= *end)
            return ScriptResult::Failed(
                "a region goes from a start from 0 on to an end behind it, in seconds");
        app.PlaybackPanel().SetRegion(*start, *end);
        app.OnPlaybackChanged();
        return ScriptResult::Done();
    });
}

ScriptResult SetDrive(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        if (words[0] == "time") {
            app.PlaybackPanel().PressTime();
        } else if (words[0] == "keys") {
            app.PlaybackPanel().PressMidi();
        } else {
            return WrongWord(words[0], "time, keys");
        }
        return ScriptResult::Done();
    });
}

ScriptResult SetTrigger(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> key = ReadInteger(words[0]);
        if (!key || *key < 0 || *key > kHighestKey) return WrongWord(words[0], "a key from 0 to 127");
        app.PlaybackPanel().SetTriggerNote(*key);
        app.OnPlaybackChanged();
        return ScriptResult::Done();
    });
}

std::optional<double> ReadTempo(const std::string& word) {
    const std::optional<double> tempo = ReadNumber(word);
    return tempo && *tempo >= kSlowestTempo && *tempo < kTempoLimit ? tempo : std::nullopt;
}

ScriptResult SetHostTempo(ScriptSession& script, ScriptWords words) {
    const std::optional<double> tempo = ReadTempo(words[0]);
    if (!tempo) return WrongWord(words[0], kTempoChoices);
    script.Session().SetTempo(*tempo);
    return ScriptResult::Done();
}

ScriptResult SetMelodyTempo(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<double> tempo = ReadTempo(words[0]);
        if (!tempo) return WrongWord(words[0], kTempoChoices);
        app.SetMelodyTempo(static_cast<float>(*tempo));
        return ScriptResult::Done();
    });
}

ScriptResult SetMetre(ScriptSession& script, ScriptWords words) {
    constexpr std::int32_t kMost = 64;
    const std::optional<std::int32_t> numerator = ReadInteger(words[0]);
    const std::optional<std::int32_t> denominator = ReadInteger(words[1]);
    const bool isPower = denominator && *denominator > 0 && (*denominator & (*denominator - 1)) == 0;
    if (!numerator || *numerator < 1 || *numerator > kMost || !isPower || *denominator > kMost)
        return ScriptResult::Failed("a metre is 1 to 64 over 1, 2, 4 and so on to 64");
    script.Session().Host().SetMetre(*numerator, *denominator);
    script.Session().PassTransport();
    return ScriptResult::Done();
}

ScriptResult SetSync(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<bool> on = ReadSwitch(words[0]);
        if (!on) return WrongWord(words[0], "on, off");
        if (*on != app.PlaybackPanel().GetSyncTempo()) app.PlaybackPanel().ToggleSync();
        return ScriptResult::Done();
    });
}

ScriptResult SetOffset(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> frame = script.FrameOf(words[0]);
        if (!frame) return WrongWord(words[0], "seconds from 0 on");
        app.PlaybackPanel().SetOffset(*frame);
        app.OnPlaybackChanged();
        return ScriptResult::Done();
    });
}

// Of the host, from where it stands.
std::int64_t FramesOf(ScriptSession& script, const std::string& word) {
    const std::optional<double> seconds = ReadNumber(word);
    if (!seconds || *seconds < 0 || *seconds > kLongestPlay) return -1;
    return std::llround(*seconds * script.SampleRate());
}

ScriptResult PlaySeconds(ScriptSession& script, std::int64_t frames, const std::string& path) {
    MixFile mix;
    const float rate = script.Session().Host().GetSampleRate();
    if (!path.empty() && !mix.Open(path, rate)) return ScriptResult::Failed(path + ": " + kCannotWriteFile);
    CommandLineHost& host = script.Session().Host();
    if (!host.IsPlaying()) host.Play(host.GetPosition());
    bool written = true;
    const bool played =
        script.Player().Run(frames, [&](const float* left, const float* right, std::int32_t count) {
            written = path.empty() || mix.Write(left, right, count);
            return written && !script.Terminal().IsCancelled();
        });
    if (!written || (played && !path.empty() && !mix.Close()))
        return ScriptResult::Failed(path + ": " + kCannotWriteFile);
    return played ? ScriptResult::Done() : ScriptResult::Cancelled();
}

// As `sonorelle arrange --blocks` does it.
ScriptResult PlayRegion(ScriptSession& script, const std::string& path) {
    PlayingSettings playing;
    playing.blocks = script.BlockFrames();
    const PlayedSound sound = PlayIntoFile(script.Session(), playing, path,
                                           [&](double) { return !script.Terminal().IsCancelled(); });
    if (sound.result == CAudioExport::kCancelled) return ScriptResult::Cancelled();
    return sound.result == kOk ? ScriptResult::Done() : ScriptResult::Failed(path + ": " + kCannotWriteFile);
}

ScriptResult Play(ScriptSession& script, ScriptWords words) {
    const bool isRegion = words[0] == "region";
    if ((words.size() > 1 && words[1] != "to") || words.size() == 2 || (isRegion && words.size() == 1))
        return ScriptResult::Failed("write it so: play SECONDS [to FILE.wav], or play region to FILE.wav");
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    const std::string path = words.size() > 2 ? words[2] : std::string();
    if (script.IsRecording(path)) return ScriptResult::Failed(path + ": would replace the recording");
    if (isRegion) return PlayRegion(script, path);
    const std::int64_t frames = FramesOf(script, words[0]);
    return frames < 0 ? WrongWord(words[0], "seconds from 0 to a day") : PlaySeconds(script, frames, path);
}

ScriptResult Stop(ScriptSession& script, ScriptWords) {
    script.Session().Host().Stop();
    script.Session().PassTransport();
    return ScriptResult::Done();
}

ScriptResult Locate(ScriptSession& script, ScriptWords words) {
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    const std::int64_t frames = FramesOf(script, words[0]);
    if (frames < 0) return WrongWord(words[0], "seconds from 0 to a day");
    script.Session().Host().Locate(static_cast<double>(frames));
    return ScriptResult::Done();
}

ScriptResult PressKey(ScriptSession& script, ScriptWords words) {
    constexpr std::int32_t kUsualVelocity = 100;
    const bool down = words[0] == "down";
    if (!down && words[0] != "up") return WrongWord(words[0], "down, up");
    const std::optional<std::int32_t> key = ReadInteger(words[1]);
    if (!key || *key < 0 || *key > kHighestKey) return WrongWord(words[1], "a key from 0 to 127");
    const std::optional<std::int32_t> velocity = words.size() > 2 ? ReadInteger(words[2]) : kUsualVelocity;
    if (!velocity || *velocity < 1 || *velocity > kHighestKey) return WrongWord(words[2], "1 to 127");
    script.Player().AddKey(static_cast<std::uint8_t>(down ? kMidiNoteOn : kMidiNoteOff),
                           static_cast<std::uint8_t>(*key), static_cast<std::uint8_t>(*velocity));
    return ScriptResult::Done();
}

// clang-format off
constexpr std::array<ScriptCommand, 12> kTransportCommands = {{
    {"region", "START END | all", "What is played and exported, in seconds of the recording", 1, 2, SetRegion},
    {"drive", "time|keys", "What plays the region: the host's transport, or keys", 1, 1, SetDrive},
    {"trigger", "KEY", "The key that plays the region, with 'drive keys'", 1, 1, SetTrigger},
    {"tempo host", "BPM", "Of the host", 1, 1, SetHostTempo},
    {"tempo melody", "BPM", "Of the recording", 1, 1, SetMelodyTempo},
    {"metre", "N D", "Of the host", 2, 2, SetMetre},
    {"sync", "on|off", "Stretch the recording to the host's tempo", 1, 1, SetSync},
    {"offset", "SECONDS", "Where in the host's time the recording begins", 1, 1, SetOffset},
    {"play", "SECONDS [to FILE.wav] | region to FILE.wav", "Let the transport run on, or play the region alone", 1, 3, Play},
    {"stop", "", "Stop the transport", 0, 0, Stop},
    {"locate", "SECONDS", "Move the transport to a time of the host", 1, 1, Locate},
    {"key", "down|up KEY [VELOCITY]", "For the first sample of what is played next", 2, 3, PressKey},
}};
// clang-format on

} // namespace

std::span<const ScriptCommand> TransportCommands() { return kTransportCommands; }

} // namespace sonorelle
