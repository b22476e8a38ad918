#include "app/export_dialog.h"

#include "app/audio_export.h"
#include "app/toolkit.h"
#include "app/voice_controls.h"
#include "platform/file_system.h"
#include "platform/result_codes.h"

#include <cstddef>

namespace sonorelle {

namespace {

struct FileKind {
    const char* title;
    const char* filter;
    const char* extension;
};
constexpr FileKind kSoundFile = {"Save as Audio File", "WAV File\t*.wav", ".wav"};
constexpr FileKind kMidiFile = {"Save as MIDI File", "MIDI File\t*.mid", ".mid"};

PopupItem VoicesSubmenu(const char* text, std::int32_t voiceCount, std::int32_t firstId) {
    PopupItem submenu{text, PopupItem::kNothing, {{"all voices", firstId, {}}}};
    for (std::int32_t voice = 0; voice < voiceCount; ++voice)
        submenu.children.push_back({kVoiceTitles[static_cast<std::size_t>(voice)], firstId + 1 + voice, {}});
    return submenu;
}

} // namespace

PopupMenu MakeExportMenu(std::int32_t voices, bool withChords) {
    PopupMenu menu;
    menu.items.push_back(VoicesSubmenu("Audio", voices, 0));
    menu.items.push_back(VoicesSubmenu("MIDI", voices, kMidiExports));
    if (withChords) menu.items.back().children.push_back({"chords", kMidiExports + 1 + voices, {}});
    return menu;
}

std::optional<ExportWish> AskForExport(CkvoToolkit& toolkit, const ExportQuestion& question) {
    if (question.menu.items.empty()) return std::nullopt;
    const std::int32_t chosen = toolkit.ChooseFromMenu(question.menu);
    if (chosen < 0) return std::nullopt;
    ExportWish wish;
    wish.isMidi = chosen >= kMidiExports;
    wish.voice = chosen - (wish.isMidi ? kMidiExports : 0) - 1;
    wish.recording = question.recording;
    const FileKind& kind = wish.isMidi ? kMidiFile : kSoundFile;
    const std::string preset = "Out_" + FileStemPart(question.recording) + kind.extension;
    toolkit.ActivateMainWindow(false);
    wish.path = toolkit.ChooseFileToSave(kind.title, kind.filter, preset);
    toolkit.ActivateMainWindow(true);
    if (wish.path.empty()) return std::nullopt;
    if (FileNamePart(wish.path).find(kind.extension) == std::string::npos) wish.path += kind.extension;
    return wish;
}

void TellOfExport(CkvoToolkit& toolkit, std::int32_t result) {
    if (result != kOk && result != CAudioExport::kCancelled)
        toolkit.ShowMessage(kErrorTitle, "Could not write file!");
}

} // namespace sonorelle
