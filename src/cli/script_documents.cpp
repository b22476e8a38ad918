// Commands for what is read and written: recordings, sessions, programs, exports.

#include "app/application.h"
#include "app/midi_export.h"
#include "cli/arrangement_names.h"
#include "cli/result_file.h"
#include "cli/script_commands.h"
#include "platform/result_codes.h"

#include <array>

namespace sonorelle {

namespace {

constexpr const char* kWouldReplaceRecording = "would replace the recording";

ScriptResult ResultOf(Hearing heard) {
    switch (heard) {
    case Hearing::kDone:
        return ScriptResult::Done();
    case Hearing::kCancelled:
        return ScriptResult::Cancelled();
    case Hearing::kFailed:
        break;
    }
    return ScriptResult::Told();
}

ScriptResult Load(ScriptSession& script, ScriptWords words) {
    script.Session().Host().Stop();
    return ResultOf(script.Session().Load(words[0]));
}

ScriptResult LoadState(ScriptSession& script, ScriptWords words) {
    script.Session().Host().Stop();
    return ResultOf(script.Session().Restore(words[0], words.size() > 1 ? words[1] : std::string()));
}

ScriptResult Save(ScriptSession& script, const std::string& path, bool isProgram) {
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    if (script.IsRecording(path)) return ScriptResult::Failed(path + ": " + kWouldReplaceRecording);
    const bool saved = isProgram ? script.Session().SaveProgram(path) : script.Session().SaveState(path);
    return saved ? ScriptResult::Done() : ScriptResult::Told();
}

ScriptResult SaveState(ScriptSession& script, ScriptWords words) { return Save(script, words[0], false); }
ScriptResult SaveProgram(ScriptSession& script, ScriptWords words) { return Save(script, words[0], true); }

ScriptResult LoadProgram(ScriptSession& script, ScriptWords words) {
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    return script.Session().LoadProgram(words[0]) ? ScriptResult::Done() : ScriptResult::Told();
}

ScriptResult ChooseProgram(ScriptSession& script, ScriptWords words) {
    const std::optional<std::int32_t> preset = FindPreset(words[0]);
    if (!preset) return WrongWord(words[0], PresetChoices());
    if (!script.Session().IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    script.Session().PlugIn().SetProgram(*preset);
    return ScriptResult::Done();
}

ScriptResult NameProgram(ScriptSession& script, ScriptWords words) {
    script.Session().PlugIn().SetProgramName(words[0]);
    return ScriptResult::Done();
}

// A voice behind the path, or none: all of them.
std::optional<std::int32_t> ReadVoice(ScriptWords words, std::int32_t voiceCount) {
    if (words.size() < 2) return CAudioExport::kAllVoices;
    return FindVoice(words[1], voiceCount);
}

ScriptResult TellOfExport(const std::string& path, std::int32_t result) {
    if (result == kOk) return ScriptResult::Done();
    if (result == CAudioExport::kCancelled) return ScriptResult::Cancelled();
    return ScriptResult::Failed(path + ": " + kCannotWriteFile);
}

ScriptResult ExportAudio(ScriptSession& script, ScriptWords words) {
    if (script.IsRecording(words[0])) return ScriptResult::Failed(words[0] + ": " + kWouldReplaceRecording);
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> voice = ReadVoice(words, app.ExportVoiceCount());
        if (!voice) return WrongWord(words[1], VoiceChoices(app.ExportVoiceCount()));
        script.Session().Host().SetOffline(true);
        const std::int32_t result =
            app.ExportAudio(words[0], *voice, [&](double) { return !script.Terminal().IsCancelled(); });
        script.Session().Host().SetOffline(false);
        return TellOfExport(words[0], result);
    });
}

ScriptResult ExportMidi(ScriptSession& script, ScriptWords words) {
    if (script.IsRecording(words[0])) return ScriptResult::Failed(words[0] + ": " + kWouldReplaceRecording);
    return script.With([&](CkvovirelaineApp& app) {
        const bool chords = words.size() > 1 && words[1] == "chords";
        const std::optional<std::int32_t> voice =
            chords ? app.ExportVoiceCount() : ReadVoice(words, app.ExportVoiceCount());
        if (!voice) return WrongWord(words[1], VoiceChoices(app.ExportVoiceCount()) + ", or chords");
        if (chords && app.Driver().GetStyle() != ConsortierClassic::kStyleIntelligent)
            return ScriptResult::Failed("this style goes without chords");
        return TellOfExport(words[0], app.ExportMidi(words[0], *voice));
    });
}

ScriptResult ExportTrigger(ScriptSession& script, ScriptWords words) {
    if (script.IsRecording(words[0])) return ScriptResult::Failed(words[0] + ": " + kWouldReplaceRecording);
    return script.With(
        [&](CkvovirelaineApp& app) { return TellOfExport(words[0], app.ExportTriggerMidi(words[0])); });
}

// clang-format off
constexpr std::array<ScriptCommand, 11> kDocumentCommands = {{
    {"load", "RECORDING", "A new session of this recording", 1, 1, Load},
    {"state load", "FILE [RECORDING]", "The session in a file; RECORDING stands in for one that has moved", 1, 2, LoadState},
    {"state save", "FILE", "Leave the session in a file", 1, 1, SaveState},
    {"program load", "FILE", "Strips from a file, into the present program", 1, 1, LoadProgram},
    {"program save", "FILE", "Leave the present program in a file", 1, 1, SaveProgram},
    {"program choose", "NAME", "default or flat, with the strips that they stand for", 1, 1, ChooseProgram},
    {"program name", "NAME", "Name the present program", 1, 1, NameProgram},
    {"export audio", "FILE.wav [VOICE]", "Write the region as sung: all voices, or one", 1, 2, ExportAudio},
    {"export midi", "FILE.mid [VOICE|chords]", "Write the notes of the region", 1, 2, ExportMidi},
    {"export trigger", "FILE.mid", "Write the key that triggers the region", 1, 1, ExportTrigger},
    {"print", "", "Print what stands now as a JSON object on a line", 0, 0, PrintSession},
}};
// clang-format on

} // namespace

std::span<const ScriptCommand> DocumentCommands() { return kDocumentCommands; }

} // namespace sonorelle
