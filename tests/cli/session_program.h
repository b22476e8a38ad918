// What the tests of sessions share: a folder with a recording of the synthetic singer, the program in it, and
// readers of what it leaves.
#pragma once

#include "cli/program_runner.h"
#include "formats/midi_file.h"
#include "formats/midi_file_reader.h"
#include "platform/result_codes.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace sonorelle::test {

class SessionProgram : public ::testing::Test {
protected:
    static constexpr int kRate = 22050; // Hz: quick to analyse

    // Seven notes, sung once for all tests: "song.wav", some five seconds.
    void SetUp() override { Put("song.wav", Song()); }

    static const std::string& Song() {
        static const std::string bytes = [] {
            SingerSettings settings;
            settings.sampleRate = kRate;
            settings.vibratoCents = 10;
            settings.peak = 0.15; // four voices stay below the limit of the mix
            std::vector<MelodyNote> melody;
            for (const double pitch : {60, 64, 67, 65, 64, 62, 60})
                melody.push_back({.midiPitch = pitch, .restBeatsAfter = 0.2});
            const TemporaryFolder folder;
            EXPECT_TRUE(WriteWav(folder.File("song.wav"), Sing(melody, settings)));
            return ReadBytes(folder.File("song.wav"));
        }();
        return bytes;
    }

    static std::string ReadBytes(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string Read(const std::string& name) const { return ReadBytes(folder_.File(name)); }
    void Put(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(folder_.File(name).parent_path());
        std::ofstream(folder_.File(name), std::ios::binary) << bytes;
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(folder_.File(name)); }

    ProgramResult Run(const std::vector<std::string>& arguments) const {
        return RunProgramWith(arguments, folder_.Path().string());
    }
    // `arrange`, which must succeed in silence.
    std::string Arrange(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "arrange");
        const ProgramResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }
    ProgramResult RunScript(const std::string& script, std::vector<std::string> options = {}) const {
        Put("test.script", script);
        options.insert(options.begin(), {"session", "--script", "test.script"});
        return Run(options);
    }
    // What the script prints; it must succeed in silence.
    std::string PlayScript(const std::string& script, const std::vector<std::string>& options = {}) const {
        const ProgramResult result = RunScript(script, options);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }
    // What a script complains of; it must fail.
    std::string ComplaintOf(const std::string& script) const {
        const ProgramResult result = RunScript(script);
        EXPECT_EQ(result.exitCode, 1) << result.out;
        return result.err;
    }

    struct KeyAt {
        double seconds;
        bool down;
        int key;
    };
    void PutKeys(const std::string& name, const std::vector<KeyAt>& keys) const {
        CkvoMidiTrack track;
        track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(120.0F));
        for (const KeyAt& key : keys)
            track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(
                static_cast<std::uint32_t>(std::lround(key.seconds * 1000)),
                key.down ? kMidiNoteOn : kMidiNoteOff, 0, key.key, key.down ? 100 : 0));
        CkvoMidiFile file;
        file.AddTrack(track);
        EXPECT_EQ(file.Write(folder_.File(name).string(), 0, 500, 120.0F), kOk); // a tick is a millisecond
    }

    // The keys that a channel strikes in a MIDI file.
    std::vector<int> KeysOf(const std::string& name, int channel) const {
        MidiFileContents contents;
        EXPECT_EQ(ReadMidiFile(folder_.File(name).string(), contents), kOk);
        std::vector<int> keys;
        for (const MidiFileMessage& message : contents.messages)
            if (message.status == (kMidiNoteOn | channel) && message.data2 > 0) keys.push_back(message.data1);
        return keys;
    }

    TemporaryFolder folder_;
};

} // namespace sonorelle::test
