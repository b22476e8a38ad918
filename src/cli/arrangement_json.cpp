#include "cli/arrangement_json.h"

#include "cli/arrangement_names.h"
#include "cli/arrangement_report.h"
#include "cli/json_writer.h"
#include "cli/report_json.h"
#include "harmony/chord_names.h"
#include "harmony/styles.h"

namespace sonorelle {

namespace {

void WriteStrings(JsonWriter& json, const char* key, const std::vector<std::string>& texts) {
    json.Key(key).BeginArray();
    for (const std::string& text : texts) json.String(text);
    json.EndArray();
}

void WriteSound(JsonWriter& json, const UsedSettings& settings) {
    json.Key("speed").Float(settings.speed);
    json.Key("tuning").Float(settings.tuning);
    json.Key("preset").String(PresetName(settings.preset));
    json.Key("voices").BeginArray();
    for (std::size_t voice = 0; voice < settings.voices.size(); ++voice) {
        const VoiceStrip& strip = settings.voices[voice];
        json.BeginObject();
        json.Key("name").String(VoiceName(static_cast<std::int32_t>(voice)));
        for (const StripControl& control : StripControls()) json.Key(control.key).Float(strip.*control.value);
        json.Key("mute").Boolean(strip.mute);
        json.Key("solo").Boolean(strip.solo);
        json.Key("heard").Boolean(settings.heard[voice]);
        json.EndObject();
    }
    json.EndArray();
}

void WriteSettings(JsonWriter& json, const UsedSettings& settings) {
    json.Key("settings").BeginObject();
    json.Key("listPosition")
        .Integer(ConsortierClassic::StyleListPosition(settings.style, settings.arrangement));
    json.Key("style").Integer(settings.style);
    json.Key("styleName").String(StyleName(settings.style, settings.arrangement));
    json.Key("arrangement").Integer(settings.arrangement);
    json.Key("arrangementName").String(ArrangementName(settings.style, settings.arrangement));
    json.Key("root").Integer(settings.root);
    json.Key("rootName")
        .String(
            ConsortierClassic::NoteName(settings.root, IsWrittenWithFlats(settings.root, settings.scale)));
    json.Key("scale").Integer(settings.scale);
    json.Key("scaleName").String(ScaleName(settings.scale));
    json.Key("harmonyScale").Integer(settings.harmonyScale);
    json.Key("harmonyScaleName").String(ScaleName(settings.harmonyScale));
    json.Key("snap").Boolean(settings.snap);
    json.Key("range").Integer(settings.voiceRange);
    json.Key("spread").Float(settings.spread);
    json.Key("intervals").BeginArray();
    for (const std::int32_t interval : settings.intervals) json.Integer(interval);
    json.EndArray();
    json.Key("transpose").Integer(settings.transpose);
    json.Key("tempo").Float(settings.tempo);
    json.Key("region").BeginObject();
    json.Key("start").Integer(settings.regionStart);
    json.Key("end").Integer(settings.regionEnd);
    json.EndObject();
    WriteSound(json, settings);
    json.EndObject();
}

void WriteNote(JsonWriter& json, const ArrangementReport& report, const ArrangedNote& note) {
    json.BeginObject();
    WriteNoteMembers(json, note.melody);
    json.Key("chord").BeginObject();
    json.Key("root").Integer(note.chord.root);
    json.Key("noteCount").Integer(note.chord.noteCount);
    json.Key("triadType").Integer(note.chord.triadType);
    json.Key("tetradType").Integer(note.chord.tetradType);
    json.Key("name").String(ChordText(report, note.chord));
    json.EndObject();
    json.Key("voices").BeginArray();
    for (const std::int32_t pitch : note.voices) json.Integer(pitch);
    json.EndArray();
    json.Key("gains").BeginArray();
    for (const float gain : note.gains) json.Float(gain);
    json.EndArray();
    json.EndObject();
}

} // namespace

std::string FormatArrangementJson(const ArrangementReport& report) {
    JsonWriter json;
    json.BeginObject();
    WriteMelodyMembers(json, report.melody);
    WriteSettings(json, report.settings);
    json.Key("voiceCount").Integer(report.voiceCount);
    WriteStrings(json, "files", report.files);
    json.Key("limitedFrames").Integer(report.limitedFrames);
    WriteStrings(json, "oldFiles", report.oldFiles);
    json.Key("notes").BeginArray();
    for (const ArrangedNote& note : report.notes) WriteNote(json, report, note);
    json.EndArray();
    json.EndObject();
    return json.Text() + "\n";
}

} // namespace sonorelle
