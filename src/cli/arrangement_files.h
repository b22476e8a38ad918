// Where the results of an arrangement go.

#pragma once

#include "platform/file_system.h"

#include <string>

namespace sonorelle {

// For "a/song.wav" and the folder "out": "out/Out_song.mid", "out/Out_song_chords.mid", "out/Out_song.svg".
struct ArrangementFiles {
    ArrangementFiles(const std::string& folder, const std::string& recording) {
        const std::string name = "Out_" + FileStemPart(recording);
        const std::string inFolder = folder == "." ? "" : folder;
        voices = JoinPath(inFolder, name + ".mid");
        chords = JoinPath(inFolder, name + "_chords.mid");
        picture = JoinPath(inFolder, name + ".svg");
    }

    std::string voices;
    std::string chords;
    std::string picture;
};

} // namespace sonorelle
