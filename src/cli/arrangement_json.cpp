#include "cli/arrangement_json.h"

#include "cli/arrangement_names.h"
#include "cli/arrangement_report.h"
#include "cli/json_writer.h"
#include "cli/report_json.h"
#include "harmony/chord_names.h"
#include "harmony/styles.h"

namespace sonorelle {

namespace {

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
    json.Key("files").BeginArray();
    for (const std::string& file : report.files) json.String(file);
    json.EndArray();
    json.Key("notes").BeginArray();
    for (const ArrangedNote& note : report.notes) WriteNote(json, report, note);
    json.EndArray();
    json.EndObject();
    return json.Text() + "\n";
}

} // namespace sonorelle
