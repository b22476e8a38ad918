// One report as one JSON object (RFC 8259) on one line, with a line end: several in a row are a stream of
// JSON lines.
//
//     {"file":"song.wav","sampleRate":44100,"channels":1,"frames":544414,"cache":"written","markCount":2345,
//      "tuningOffset":0.0482,"tuningHz":441.2268,"key":0,"keyName":"C
//      major","notes":[{"pitch":60.12,"level":0.31,
//      "length":20480,"start":1024,"end":21504,"firstFrame":5,"lastFrame":61}]}
//
// Each f32 is the shortest text that reads back to the same bits; one that is not finite is null. In a file
// name that is not UTF-8 each wrong byte is U+FFFD.

#pragma once

#include <string>

namespace sonorelle {

class JsonWriter;
struct MelodyReport;
struct NoteRecord;

std::string FormatJson(const MelodyReport& report);

// The members of such an object up to the notes, and those of a note: for other objects that begin alike. An
// object is open.
void WriteMelodyMembers(JsonWriter& json, const MelodyReport& report);
void WriteNoteMembers(JsonWriter& json, const NoteRecord& note);

} // namespace sonorelle
