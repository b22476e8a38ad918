#include "cli/arrangement_files.h"

#include "cli/arrangement_names.h"
#include "cli/arrangement_settings.h"
#include "harmony/styles.h"
#include "platform/file_system.h"

namespace sonorelle {

ArrangementFiles::ArrangementFiles(const std::string& folder, const std::string& recording) {
    const std::string begin = JoinPath(folder == "." ? "" : folder, "Out_" + FileStemPart(recording));
    mix = begin + ".wav";
    for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
        stems[static_cast<std::size_t>(voice)] = begin + "_" + VoiceName(voice) + ".wav";
    voices = begin + ".mid";
    chords = begin + "_chords.mid";
    picture = begin + ".svg";
}

std::vector<std::string> ArrangementFiles::Wanted(const ArrangementSettings& settings, bool withStems) const {
    std::vector<std::string> files = {mix};
    const std::int32_t voiceCount = ConsortierClassic::CountVoices(settings.style, settings.arrangement);
    if (withStems) files.insert(files.end(), stems.begin(), stems.begin() + voiceCount);
    files.push_back(voices);
    if (settings.HasChords()) files.push_back(chords);
    files.push_back(picture);
    return files;
}

std::vector<std::string> ArrangementFiles::All() const {
    std::vector<std::string> files = {mix};
    files.insert(files.end(), stems.begin(), stems.end());
    files.insert(files.end(), {voices, chords, picture});
    return files;
}

} // namespace sonorelle
