#include "cli/report_json.h"

#include "cli/json_writer.h"
#include "cli/melody_report.h"
#include "cli/note_names.h"

namespace sonorelle {

void WriteMelodyMembers(JsonWriter& json, const MelodyReport& report) {
    json.Key("file").String(report.file);
    json.Key("sampleRate").Float(report.sampleRate);
    json.Key("channels").Integer(report.channels);
    json.Key("frames").Integer(report.frames);
    json.Key("cache").String(CacheUseName(report.cache));
    json.Key("markCount").Integer(report.markCount);
    json.Key("tuningOffset").Float(report.tuningOffset);
    json.Key("tuningHz").Float(report.tuningHz);
    json.Key("key").Integer(report.key);
    json.Key("keyName").String(KeyName(report.key));
}

void WriteNoteMembers(JsonWriter& json, const NoteRecord& note) {
    json.Key("pitch").Float(note.pitch);
    json.Key("level").Float(note.level);
    json.Key("length").Integer(note.length);
    json.Key("start").Integer(note.start);
    json.Key("end").Integer(note.end);
    json.Key("firstFrame").Integer(note.firstFrame);
    json.Key("lastFrame").Integer(note.lastFrame);
}

std::string FormatJson(const MelodyReport& report) {
    JsonWriter json;
    json.BeginObject();
    WriteMelodyMembers(json, report);
    json.Key("notes").BeginArray();
    for (const NoteRecord& note : report.notes) {
        json.BeginObject();
        WriteNoteMembers(json, note);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return json.Text() + "\n";
}

} // namespace sonorelle
