// What stands in a session, as JSON: one object on a line, for other programs and for tests.

#include "app/application.h"
#include "cli/arrangement_names.h"
#include "cli/arrangement_setup.h"
#include "cli/json_writer.h"
#include "cli/script_commands.h"

namespace sonorelle {

namespace {

const char* ModeName(std::int32_t mode) {
    if (mode == kModeHarmonies) return "harmonies";
    if (mode == kModePitches) return "pitches";
    return PageOfMode(mode) == ChoirPage::kEdit ? "edit" : "automatic";
}

void WriteHarmony(JsonWriter& json, CkvovirelaineApp& app) {
    const CChoirDriver& driver = app.Driver();
    json.Key("mode").String(ModeName(app.ChoirPanel().GetMode()));
    json.Key("recording").Boolean(app.ChoirPanel().IsRecording());
    json.Key("style").String(StyleName(driver.GetStyle(), driver.GetArrangement()));
    json.Key("arrangement").String(ArrangementName(driver.GetStyle(), driver.GetArrangement()));
    json.Key("root").Integer(driver.GetRoot());
    json.Key("scale").String(ScaleName(driver.GetMelodyScale()));
    json.Key("harmonyRoot").Integer(app.ChoirPanel().GetRoot());
    json.Key("harmonyScale").String(ScaleName(driver.GetHarmonyScale()));
    json.Key("snap").Boolean(driver.GetSnapToScale());
    json.Key("range").Integer(driver.GetVoiceRange());
    json.Key("spread").Float(driver.GetSpread());
    json.Key("intervals").BeginArray();
    for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
        json.Integer(driver.GetManualInterval(voice));
    json.EndArray();
    json.Key("transpose").Float(app.GetTranspose());
    json.Key("tuning").Float(app.TuningPanel().GetFrequency());
}

void WritePlayback(JsonWriter& json, CkvovirelaineApp& app, CommandLineHost& host) {
    const auto number = [](double value) { return static_cast<float>(value); };
    json.Key("region").BeginArray();
    json.Integer(app.GetPlayStart());
    json.Integer(app.GetPlayEnd());
    json.EndArray();
    json.Key("drive").String(app.IsTriggeredBySnapshots() ? "keys" : "time");
    json.Key("trigger").Integer(app.PlaybackPanel().GetTriggerNote());
    json.Key("sync").Boolean(app.IsSyncingTempo());
    json.Key("offset").Float(number(app.GetMasterPlaybackStart()));
    json.Key("hostTempo").Float(app.GetHostTempo());
    json.Key("melodyTempo").Float(app.GetMelodyTempo());
    json.Key("metre").BeginArray();
    json.Integer(app.GetTimeSigNumerator());
    json.Integer(app.GetTimeSigDenominator());
    json.EndArray();
    json.Key("hostPosition").Integer(static_cast<std::int64_t>(host.GetPosition()));
    json.Key("running").Boolean(host.IsPlaying());
    json.Key("position").Float(number(app.GetExactPosition()));
    json.Key("playing").Boolean(app.IsPlaying());
    json.Key("sentNotes").Integer(static_cast<std::int64_t>(host.SentNotes().size()));
}

void WriteVoices(JsonWriter& json, CkvovirelaineApp& app) {
    json.Key("voices").BeginArray();
    const VoiceStrips strips = PresentStrips(app);
    for (std::int32_t voice = 0; voice < app.Driver().VoiceCount(); ++voice) {
        const VoiceStrip& strip = strips[static_cast<std::size_t>(voice)];
        json.BeginObject();
        json.Key("name").String(VoiceName(voice));
        for (const StripControl& control : StripControls()) json.Key(control.key).Float(strip.*control.value);
        json.Key("mute").Boolean(strip.mute);
        json.Key("solo").Boolean(strip.solo);
        json.EndObject();
    }
    json.EndArray();
}

void WriteSnapshots(JsonWriter& json, CkvovirelaineSnapshots& panel) {
    json.Key("snapshots").BeginArray();
    for (std::int32_t i = 0; i < panel.GetCount(); ++i) {
        std::int32_t start = 0;
        std::int32_t end = 0;
        panel.GetMarkers(i, start, end);
        json.BeginObject();
        json.Key("name").String(panel.GetName(i));
        json.Key("key").Integer(panel.GetKey(i));
        json.Key("region").BeginArray();
        json.Integer(start);
        json.Integer(end);
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
    json.Key("selected").Integer(panel.GetSelected());
}

void WriteNotes(JsonWriter& json, CkvovirelaineApp& app) {
    CChoirDriver& driver = app.Driver();
    json.Key("notes").BeginArray();
    for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
        const ConsortierClassic::ChordRecord chord = driver.GetChord(note);
        json.BeginObject();
        json.Key("start").Integer(driver.GetNoteStart(note));
        json.Key("length").Integer(driver.GetNoteLength(note));
        json.Key("chord").BeginArray();
        for (const std::int32_t part : {chord.root, chord.noteCount, chord.triadType, chord.tetradType})
            json.Integer(part);
        json.EndArray();
        std::array<float, kPresetVoices> gains{};
        json.Key("pitches").BeginArray();
        for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice) {
            float deviation = 0;
            json.Integer(
                driver.GetVoice(note, voice, deviation, gains[static_cast<std::size_t>(voice)], false));
        }
        json.EndArray();
        json.Key("gains").BeginArray();
        for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice)
            json.Float(gains[static_cast<std::size_t>(voice)]);
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
}

} // namespace

ScriptResult PrintSession(ScriptSession& script, ScriptWords) {
    CommandLineSession& session = script.Session();
    JsonWriter json;
    json.BeginObject();
    json.Key("loaded").Boolean(session.IsLoaded());
    if (session.IsLoaded()) {
        json.Key("file").String(session.RecordingPath());
        std::string program;
        session.PlugIn().GetProgramName(program);
        json.Key("program").String(program);
        json.Key("cut").Boolean(session.PlugIn().GetToolbar().cutMode);
        session.With([&](CkvovirelaineApp& app) {
            WriteHarmony(json, app);
            WritePlayback(json, app, session.Host());
            WriteVoices(json, app);
            WriteSnapshots(json, app.SnapshotPanel());
            WriteNotes(json, app);
        });
    }
    json.EndObject();
    const Written written = script.Terminal().Write(json.Text() + "\n");
    if (written == Written::kNo)
        return ScriptResult::Failed("standard output: " + std::string(kCannotWriteFile));
    return ScriptResult::Done();
}

} // namespace sonorelle
