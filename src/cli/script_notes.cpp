// Commands for single notes, and for going back.

#include "app/application.h"
#include "cli/arrangement_names.h"
#include "cli/named_numbers.h"
#include "cli/script_commands.h"

#include <array>

namespace sonorelle {

namespace {

ScriptResult NoSuchNote(const CChoirDriver& driver, const std::string& word) {
    return WrongWord(word, "a note from 0 to " + std::to_string(driver.GetNoteCount() - 1));
}

std::optional<std::int32_t> ReadNote(const CChoirDriver& driver, const std::string& word) {
    const std::optional<std::int32_t> note = ReadInteger(word);
    return note && *note >= 0 && *note < driver.GetNoteCount() ? note : std::nullopt;
}

// "note 3 voice red pitch 64"
ScriptResult SetNote(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        if (words[1] != "voice" || words[3] != "pitch")
            return ScriptResult::Failed("write it so: note N voice VOICE pitch KEY");
        const std::optional<std::int32_t> note = ReadNote(app.Driver(), words[0]);
        if (!note) return NoSuchNote(app.Driver(), words[0]);
        const std::optional<std::int32_t> voice = FindVoice(words[2], app.Driver().VoiceCount());
        if (!voice) return WrongWord(words[2], VoiceChoices(app.Driver().VoiceCount()));
        if (!app.View().GetNoteEdit()) return ScriptResult::Failed("only with 'mode edit'");
        const std::optional<std::int32_t> pitch = ReadInteger(words[4]);
        if (!pitch || !app.SetNotePitch(*note, *voice, *pitch))
            return WrongWord(words[4], "a key from 0 to 127");
        return ScriptResult::Done();
    });
}

ScriptResult SetGain(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> note = ReadNote(app.Driver(), words[0]);
        if (!note) return NoSuchNote(app.Driver(), words[0]);
        const std::optional<std::int32_t> voice = FindVoice(words[1], app.Driver().VoiceCount());
        if (!voice) return WrongWord(words[1], VoiceChoices(app.Driver().VoiceCount()));
        const std::optional<double> gain = ReadNumber(words[2]);
        if (!gain || !app.SetNoteGain(*note, *voice, static_cast<float>(*gain)))
            return WrongWord(words[2], "0 (off) to 1 (on)");
        return ScriptResult::Done();
    });
}

ScriptResult Split(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> frame = script.FrameOf(words[0]);
        if (!frame) return WrongWord(words[0], "seconds from 0 on");
        return app.SplitAt(*frame) ? ScriptResult::Done() : ScriptResult::Failed("there is no note to split");
    });
}

ScriptResult Merge(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> note = ReadNote(app.Driver(), words[0]);
        if (!note) return NoSuchNote(app.Driver(), words[0]);
        return app.MergeNotes(*note, *note + 1) ? ScriptResult::Done()
                                                : ScriptResult::Failed("there is no note behind it");
    });
}

// One of those that the menu of the note offers: its triads first, then its four-note chords.
ScriptResult SetChord(ScriptSession& script, ScriptWords words) {
    return script.With([&](CkvovirelaineApp& app) {
        const std::optional<std::int32_t> note = ReadNote(app.Driver(), words[0]);
        if (!note) return NoSuchNote(app.Driver(), words[0]);
        if (app.ChoirPanel().GetMode() != kModeIntelligent)
            return ScriptResult::Failed("only with an intelligent style and 'mode automatic'");
        constexpr std::int32_t kChordsOfNote = 7;
        const auto chords = app.Driver().ChordsForNote(*note, kChordsOfNote);
        const std::optional<std::int32_t> index = ReadInteger(words[1]);
        if (!index || *index < 0 || static_cast<std::size_t>(*index) >= chords.size())
            return WrongWord(words[1], "0 to " + std::to_string(static_cast<int>(chords.size()) - 1));
        const ConsortierClassic::ChordRecord chord = chords[static_cast<std::size_t>(*index)];
        app.SetChord(*note, chord);
        return ScriptResult::Done();
    });
}

ScriptResult Undo(ScriptSession& script, ScriptWords) {
    return script.Session().PlugIn().PressUndo() ? ScriptResult::Done()
                                                 : ScriptResult::Failed("there is nothing to undo");
}

ScriptResult Redo(ScriptSession& script, ScriptWords) {
    return script.Session().PlugIn().PressRedo() ? ScriptResult::Done()
                                                 : ScriptResult::Failed("there is nothing to redo");
}

ScriptResult SetCut(ScriptSession& script, ScriptWords words) {
    const std::optional<bool> on = ReadSwitch(words[0]);
    if (!on) return WrongWord(words[0], "on, off");
    CvirelainePlugIn& plugIn = script.Session().PlugIn();
    if (!plugIn.IsLoaded()) return ScriptResult::Failed("nothing is loaded");
    if (plugIn.GetToolbar().cutMode != *on) plugIn.ToggleCutMode();
    return ScriptResult::Done();
}

// clang-format off
constexpr std::array<ScriptCommand, 8> kNoteCommands = {{
    {"note", "N voice VOICE pitch KEY", "Move a note of a voice, with 'mode edit'", 5, 5, SetNote},
    {"gain", "N VOICE X", "Switch a note of a voice off (0) or on (1)", 3, 3, SetGain},
    {"split", "SECONDS", "Cut the note there in two", 1, 1, Split},
    {"merge", "N", "Join a note with the one behind it", 1, 1, Merge},
    {"chord", "N INDEX", "Sing a note in one of its seven chords, triads first", 2, 2, SetChord},
    {"undo", "", "Take back the last change", 0, 0, Undo},
    {"redo", "", "Make it again", 0, 0, Redo},
    {"cut", "on|off", "The toolbar's cut mode", 1, 1, SetCut},
}};
// clang-format on

} // namespace

std::span<const ScriptCommand> NoteCommands() { return kNoteCommands; }

} // namespace sonorelle
