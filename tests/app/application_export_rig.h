// A session whose exports are read back as a sequencer reads them.
//
//     ExportSession session;
//     session.app->ExportMidi(session.File("out.mid"), -1);
//     const std::vector<ExportedKey> keys = ExportedKeys(session.File("out.mid"));
#pragma once

#include "app/application_fixture.h"

#include "formats/midi_reader.h"
#include "platform/result_codes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace sonorelle::test {

inline std::string ExportedBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline Outputs ExportedSound(const std::string& path) {
    CkvoAudioFile file;
    EXPECT_EQ(file.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
    Outputs sound(static_cast<std::size_t>(file.GetNumChannels()),
                  std::vector<float>(static_cast<std::size_t>(file.GetLength())));
    std::vector<float*> pointers;
    for (std::vector<float>& side : sound) pointers.push_back(side.data());
    if (file.GetLength() > 0) file.Read(pointers.data(), file.GetLength());
    return sound;
}

struct ExportedKey {
    std::uint32_t tick = 0;
    int status = 0;
    int key = 0;
    bool operator==(const ExportedKey&) const = default;
};

inline std::vector<ExportedKey> ExportedKeys(const std::string& path) {
    const std::string bytes = ExportedBytes(path);
    const MidiRead read = CMidiReader(bytes).Read();
    std::vector<ExportedKey> keys;
    std::uint32_t tick = 0;
    for (const MidiRead::Event& event : read.tracks.at(0)) {
        tick += event.delta;
        if (event.status < 0xF0)
            keys.push_back({tick, event.status, static_cast<unsigned char>(event.data.at(0))});
    }
    return keys;
}

struct ExportSession : LoadedSession {
    explicit ExportSession(const VoicedSong& voicedSong = SessionSong()) : LoadedSession(voicedSong) {
        app->SetHostTempo(120, 4, 4);
    }
    std::string File(const std::string& name) const { return folder.File(name).string(); }
    void SetRegion(std::int32_t start, std::int32_t end) {
        app->PlaybackPanel().SetRegion(start, end);
        app->OnPlaybackChanged();
    }
    // From the menu of the Save button.
    void Save(std::int32_t choice, const std::string& name) {
        toolkit.menuChoice = choice;
        toolkit.savePath = name.empty() ? "" : File(name);
        OpenExportMenu(*app, toolkit);
    }
    Outputs Exported(std::int32_t voice) {
        EXPECT_EQ(app->ExportAudio(File("exported.wav"), voice), kOk);
        return ExportedSound(File("exported.wav"));
    }
    std::size_t FilesInFolder() const {
        const std::filesystem::directory_iterator all(std::filesystem::path(path).parent_path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
};

} // namespace sonorelle::test
