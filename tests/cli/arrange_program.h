// What the tests of `sonorelle arrange` share: a folder with recordings of the synthetic singer, the program,
// and readers of its results.
#pragma once

#include "cli/json_value.h"
#include "cli/program_runner.h"
#include "formats/midi_reader.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle::test {

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// The notes of a MIDI file by channel, each as key and tick of its beginning.
inline std::array<std::vector<std::pair<int, std::uint32_t>>, 16> NotesByChannel(const std::string& bytes) {
    std::array<std::vector<std::pair<int, std::uint32_t>>, 16> notes;
    const MidiRead read = CMidiReader(bytes).Read();
    std::uint32_t tick = 0;
    for (const MidiRead::Event& event : read.tracks.at(0)) {
        tick += event.delta;
        if ((event.status & 0xF0) == 0x90)
            notes[static_cast<std::size_t>(event.status & 0x0F)].emplace_back(event.data[0], tick);
    }
    return notes;
}

class ArrangeProgram : public ::testing::Test {
protected:
    // The usual song: notes of half a second with rests between them.
    void Sing(const std::string& name) {
        Sing(name, {60, 64, 67, 65, 64, 62, 60});
        isUsualSong_ = name == "song.wav";
    }
    void Sing(const std::string& name, const std::vector<double>& pitches) {
        SingerSettings settings;
        settings.vibratoCents = 10;
        Sing(name, pitches, settings);
    }
    void Sing(const std::string& name, const std::vector<double>& pitches, const SingerSettings& settings) {
        std::vector<MelodyNote> melody;
        for (const double pitch : pitches) {
            MelodyNote note;
            note.midiPitch = pitch;
            note.restBeatsAfter = 0.5;
            melody.push_back(note);
        }
        isUsualSong_ = false;
        ASSERT_TRUE(WriteWav(folder_.File(name), test::Sing(melody, settings)));
    }
    ProgramResult Arrange(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "arrange");
        return RunProgramWith(arguments, folder_.Path().string());
    }
    // The object of the first line that the program prints. The usual song is analysed once for all tests.
    JsonValue ArrangeToJson(std::vector<std::string> arguments) {
        const std::filesystem::path analysis = folder_.File("song.wav.kva");
        if (isUsualSong_ && !std::filesystem::exists(analysis) && !usualAnalysis_.empty())
            WriteFile(analysis, usualAnalysis_);
        arguments.insert(arguments.begin(), {"song.wav", "--json"});
        const ProgramResult result = Arrange(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        if (isUsualSong_ && usualAnalysis_.empty()) usualAnalysis_ = ReadFile(analysis); // empty without one
        return JsonValue::Parse(result.out.substr(0, result.out.find('\n')));
    }
    std::set<std::string> FilesIn(const std::string& name) const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.File(name)))
            names.insert(entry.path().filename().string());
        return names;
    }

    TemporaryFolder folder_;
    bool isUsualSong_ = false; // song.wav is
    inline static std::string usualAnalysis_;
};

} // namespace sonorelle::test
