#include "support/song_files.h"

#include "analysis/melody_cache.h"
#include "support/wav_writer.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>

namespace sonorelle::test {

std::string WriteSongFiles(const TemporaryFolder& folder, const std::string& name, const VoicedSong& song) {
    const std::filesystem::path path = folder.File(name);
    Recording recording;
    recording.sampleRate = static_cast<double>(song.sampleRate);
    recording.channels = song.channels;
    // A cache counts when it is younger than its recording.
    const bool written = WriteWav(path, recording, WavSamples::kFloat32);
    std::filesystem::last_write_time(path,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    if (!written || !WriteMelodyCache(path.string() + ".kva", 0, song.marks, song.notes))
        throw std::runtime_error("cannot write the song's files at " + path.string());
    return path.string();
}

} // namespace sonorelle::test
