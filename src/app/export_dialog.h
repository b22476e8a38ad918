// What the Save button asks the user: which voices, as sound or as MIDI, and into which file.
//
//     if (const auto wish = AskForExport(toolkit, app.MakeExportQuestion()))
//         TellOfExport(toolkit, app.Export(*wish));
//
// The question holds all that it shows. Nobody has to wait, and no lock to be held, while it is open.
//
// Threads: the interface thread.

#pragma once

#include "app/popup_menu.h"

#include <cstdint>
#include <optional>
#include <string>

namespace sonorelle {

class CkvoToolkit;

struct ExportQuestion {
    PopupMenu menu; // empty: nothing can be exported now
    std::string recording;
};

struct ExportWish {
    bool isMidi = false;
    std::int32_t voice = -1; // -1: all of them; of MIDI, the number of voices stands for the chords
    std::string path;
    std::string recording; // of the question

    bool operator==(const ExportWish&) const = default;
};

// The menu of the Save button. Its entries give the voice plus one, 0 for all, and MIDI from kMidiExports on.
inline constexpr std::int32_t kMidiExports = 16;
PopupMenu MakeExportMenu(std::int32_t voices, bool withChords);

// Nothing when the user thinks better of it. The main window does not answer meanwhile.
std::optional<ExportWish> AskForExport(CkvoToolkit& toolkit, const ExportQuestion& question);

// A message when an export gave neither 0 nor CAudioExport::kCancelled: a silent failure would lose work.
void TellOfExport(CkvoToolkit& toolkit, std::int32_t result);

} // namespace sonorelle
