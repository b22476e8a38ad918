// What is known about a recording from the files beside it.
//
//     NAME.notes.csv   a heading, then one line a note; columns onset_s, offset_s and hz are read, and
//     intonation_cents
//                      where there is such a column: how far the note was sung from hz
//     NAME.truth.json  "key" ("A minor") and "tuning_a4_hz"
#pragma once

#include "support/note_matching.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace sonorelle::tools {

// The notes as they were sung; nothing when the file is missing, lacks a column, or holds a line that is no
// note.
std::optional<std::vector<test::TimedNote>> ReadKnownNotes(const std::filesystem::path& csvFile);

struct KnownTruth {
    std::optional<int> key; // 0 to 23; nothing for another mode or none
    std::optional<double> tuningHertz;
};

// What the file tells; a missing file tells nothing.
KnownTruth ReadTruth(const std::filesystem::path& jsonFile);

} // namespace sonorelle::tools
