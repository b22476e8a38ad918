// The whole program from the outside: recordings of the synthetic singer in, MIDI files, pictures, JSON and
// exit codes out.
#include "cli/arrange_program.h"
#include "cli/arrangement_names.h"
#include "cli/program_runner.h"
#include "cli/xml_check.h"
#include "support/melodies.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"
#include "support/wav_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <set>

namespace sonorelle {
namespace {

using test::ArrangeProgram;
using test::CountOf;
using test::JsonValue;
using test::NotesByChannel;
using test::ProgramResult;
using test::ReadFile;
using test::RunProgram;
using test::RunProgramWith;
using test::WriteFile;
using test::XmlFault;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST_F(ArrangeProgram, WritesSoundVoicesChordsAndPicture) {
    Sing("song.wav");
    const ProgramResult result = Arrange({"song.wav", "-o", "a/b"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("song.wav\n  Key      C Major (as found in the recording)\n"
                                      "  Style    Intelligent 4 Voices\n  Notes    7\n  Chords   "));
    EXPECT_THAT(result.out, HasSubstr("  Written  a/b/Out_song.wav\n           a/b/Out_song.mid\n"
                                      "           a/b/Out_song_chords.mid\n"
                                      "           a/b/Out_song.svg\n"));
    EXPECT_EQ(FilesIn("a/b"),
              (std::set<std::string>{"Out_song.wav", "Out_song.mid", "Out_song_chords.mid", "Out_song.svg"}));
    EXPECT_EQ(XmlFault(ReadFile(folder_.File("a/b/Out_song.svg"))), "");
    EXPECT_TRUE(std::filesystem::exists(folder_.File("song.wav.kva")));

    const auto voices = NotesByChannel(ReadFile(folder_.File("a/b/Out_song.mid")));
    std::vector<int> lead;
    for (const auto& [key, tick] : voices[0]) lead.push_back(key);
    EXPECT_THAT(lead, ElementsAre(60, 64, 67, 65, 64, 62, 60)); // what was sung
    for (std::size_t voice = 1; voice < 4; ++voice) EXPECT_EQ(voices[voice].size(), 7U) << voice;
    EXPECT_TRUE(voices[4].empty());
    const auto chords = NotesByChannel(ReadFile(folder_.File("a/b/Out_song_chords.mid")));
    EXPECT_GE(chords[0].size(), 6U); // two chords at the least
    EXPECT_EQ(chords[0].size() % 3, 0U);
}

TEST_F(ArrangeProgram, WritesIntoTheCurrentFolderByDefault) {
    Sing("song.wav");
    EXPECT_EQ(Arrange({"song.wav", "--no-cache"}).exitCode, 0);
    EXPECT_EQ(FilesIn(""), (std::set<std::string>{"song.wav", "Out_song.wav", "Out_song.mid",
                                                  "Out_song_chords.mid", "Out_song.svg"}));
}

TEST_F(ArrangeProgram, JsonTellsSettingsAndEveryNote) {
    Sing("song.wav");
    const JsonValue json = ArrangeToJson({"-o", "out", "--no-cache"});
    EXPECT_EQ(json["file"], "song.wav");
    EXPECT_EQ(json["cache"], "none");
    EXPECT_EQ(json["key"], 0);
    EXPECT_EQ(json["voiceCount"], 4);
    EXPECT_EQ(json["settings"]["styleName"], "Intelligent 4 Voices");
    EXPECT_EQ(json["settings"]["root"], 0);
    EXPECT_EQ(json["settings"]["scaleName"], "Major");
    EXPECT_EQ(json["settings"]["harmonyScaleName"], "Major");
    EXPECT_EQ(json["settings"]["range"], 1);
    EXPECT_EQ(json["settings"]["spread"].get<float>(), 0.6F);
    EXPECT_EQ(json["settings"]["region"]["end"], json["frames"]);
    EXPECT_THAT(
        json["files"].get<std::vector<std::string>>(),
        ElementsAre("out/Out_song.wav", "out/Out_song.mid", "out/Out_song_chords.mid", "out/Out_song.svg"));
    EXPECT_TRUE(json["oldFiles"].empty());
    ASSERT_EQ(json["notes"].size(), 7U);
    const auto midi = NotesByChannel(ReadFile(folder_.File("out/Out_song.mid")));
    for (std::size_t i = 0; i < 7; ++i) {
        const JsonValue note = json["notes"][i];
        for (const char* field : {"pitch", "level", "length", "start", "end", "firstFrame", "lastFrame"})
            EXPECT_TRUE(note[field].is_number()) << field;
        EXPECT_EQ(note["chord"]["noteCount"], 3);
        EXPECT_EQ(note["chord"]["tetradType"], 13);
        EXPECT_NE(note["chord"]["name"], "--");
        const auto voices = note["voices"].get<std::vector<int>>();
        ASSERT_EQ(voices.size(), 4U);
        for (std::size_t voice = 0; voice < 4; ++voice) EXPECT_EQ(voices[voice], midi[voice].at(i).first);
        EXPECT_EQ(std::count_if(voices.begin() + 1, voices.end(), [&](int v) { return v > voices[0]; }), 1)
            << "one voice above the melody: " << note["voices"];
        EXPECT_THAT(note["gains"].get<std::vector<float>>(), ElementsAre(1, 1, 1, 1));
    }
}

TEST_F(ArrangeProgram, EveryStyleAndArrangementGivesItsVoices) {
    Sing("song.wav");
    const std::array<int, 8> voiceCounts = {4, 3, 2, 4, 3, 2, 4, 2};
    const std::array<int, 8> arrangementCounts = {1, 1, 1, 9, 4, 7, 1, 1};
    for (int style = 0; style < 8; ++style) {
        for (int arrangement = 0; arrangement < arrangementCounts.at(style); ++arrangement) {
            if (!test::InSanitizerShare(arrangement, 3)) continue;
            const std::string out = "out" + std::to_string(style) + "_" + std::to_string(arrangement);
            std::vector<std::string> arguments = {"--style", std::to_string(style), "-o", out};
            if (arrangementCounts.at(style) > 1)
                arguments.insert(arguments.end(), {"--arrangement", std::to_string(arrangement)});
            const JsonValue json = ArrangeToJson(arguments);
            const int voices = style == 5 && arrangement == 6 ? 3 : voiceCounts.at(style);
            EXPECT_EQ(json["voiceCount"], voices) << out;
            EXPECT_EQ(json["settings"]["listPosition"], style);
            EXPECT_EQ(FilesIn(out).count("Out_song_chords.mid"), style < 3 ? 1U : 0U) << out;
            EXPECT_EQ(json["notes"][0]["chord"]["name"] == "--", style >= 3) << out;
            const auto midi = NotesByChannel(ReadFile(folder_.File(out + "/Out_song.mid")));
            for (std::size_t voice = 0; voice < 4; ++voice) {
                const bool sounds = static_cast<int>(voice) < voices;
                EXPECT_EQ(midi[voice].size(), sounds ? 7U : 0U) << out;
                EXPECT_EQ(json["notes"][3]["voices"][voice] == -1, !sounds) << out;
            }
            EXPECT_EQ(XmlFault(ReadFile(folder_.File(out + "/Out_song.svg"))), "");
        }
    }
}

TEST_F(ArrangeProgram, ManualIntervalsMoveAlongTheScale) {
    Sing("song.wav");
    const JsonValue json = ArrangeToJson({"--style", "parallel manual 4", "--intervals",
                                          "-7,down third,prime,+2", "--root", "c", "--scale", "major"});
    EXPECT_THAT(json["notes"][0]["voices"].get<std::vector<int>>(), ElementsAre(48, 57, 60, 64)); // on C
    EXPECT_THAT(json["notes"][2]["voices"].get<std::vector<int>>(), ElementsAre(55, 64, 67, 71)); // on G
}

TEST_F(ArrangeProgram, KeyAndScalesCanBeChosen) {
    Sing("song.wav");
    const JsonValue json = ArrangeToJson(
        {"--root", "Eb", "--scale", "AEOLIC minor", "--style", "organum", "--arrangement", "octave above"});
    EXPECT_EQ(json["key"], 0); // what was found stays told
    EXPECT_EQ(json["settings"]["root"], 3);
    EXPECT_EQ(json["settings"]["scale"], 5);
    EXPECT_EQ(json["settings"]["harmonyScale"], 5); // follows
    const std::set<int> scale = {3, 5, 6, 8, 10, 11, 1};
    for (const JsonValue& note : json["notes"])
        EXPECT_EQ(scale.count(note["voices"][0].get<int>() % 12), 1U) << note["voices"];
    EXPECT_EQ(ArrangeToJson({"--harmony-scale", "7"})["settings"]["harmonyScale"], 7);

    const JsonValue free = ArrangeToJson(
        {"--root", "Eb", "--scale", "major", "--snap", "off", "--style", "organum", "--arrangement", "4"});
    EXPECT_EQ(free["settings"]["snap"], false);
    EXPECT_EQ(free["notes"][0]["voices"][0], 60);
    EXPECT_EQ(free["notes"][1]["voices"][0], 64); // not of the scale, and not moved
}

TEST_F(ArrangeProgram, ChordsAreThoseOfTheChosenKey) {
    Sing("song.wav");
    const JsonValue json = ArrangeToJson({"--root", "Eb", "--scale", "aeolic minor"});
    const std::set<int> scale = {3, 5, 6, 8, 10, 11, 1};
    for (const JsonValue& note : json["notes"])
        EXPECT_EQ(scale.count(note["chord"]["root"].get<int>()), 1U) << note["chord"];
}

TEST_F(ArrangeProgram, WithoutSnapTheMelodyIsNotCarriedOverToAnotherScaleEither) {
    Sing("song.wav");
    const std::vector<std::string> options = {"--style", "7",     "--root",          "c",
                                              "--scale", "major", "--harmony-scale", "aeolic minor"};
    EXPECT_EQ(ArrangeToJson(options)["notes"][1]["voices"][0], 63); // E becomes E flat
    std::vector<std::string> free = options;
    free.insert(free.end(), {"--snap", "off"});
    EXPECT_EQ(ArrangeToJson(free)["notes"][1]["voices"][0], 64);
}

TEST_F(ArrangeProgram, RangeTellsHowManyVoicesLieAbove) {
    Sing("song.wav");
    for (const int range : {0, 1, 2, 3}) {
        const JsonValue json = ArrangeToJson({"--range", std::to_string(range)});
        const auto voices = json["notes"][3]["voices"].get<std::vector<int>>();
        EXPECT_EQ(std::count_if(voices.begin() + 1, voices.end(), [&](int v) { return v > voices[0]; }),
                  range)
            << json["notes"][3]["voices"];
    }
}

TEST_F(ArrangeProgram, TransposeMovesTheFilesAndNotTheJson) {
    Sing("song.wav");
    const JsonValue plain = ArrangeToJson({"-o", "plain"});
    const JsonValue moved = ArrangeToJson({"-o", "moved", "--transpose", "-2"});
    EXPECT_EQ(plain["notes"][0]["voices"], moved["notes"][0]["voices"]);
    const auto a = NotesByChannel(ReadFile(folder_.File("plain/Out_song.mid")));
    const auto b = NotesByChannel(ReadFile(folder_.File("moved/Out_song.mid")));
    ASSERT_EQ(a[1].size(), b[1].size());
    for (std::size_t i = 0; i < a[1].size(); ++i) EXPECT_EQ(a[1][i].first - 2, b[1][i].first);
    EXPECT_THAT(ReadFile(folder_.File("moved/Out_song.svg")), HasSubstr("transposed -2"));
}

TEST_F(ArrangeProgram, RegionAndTempoShapeTheMidiFile) {
    Sing("song.wav");
    const JsonValue json = ArrangeToJson({"--region", "1:3.5", "--tempo", "60"});
    const double rate = json["sampleRate"].get<double>();
    EXPECT_EQ(json["settings"]["region"]["start"], static_cast<int>(rate));
    std::size_t inside = 0;
    double firstStart = -1;
    for (const JsonValue& note : json["notes"]) {
        const double start = note["start"].get<double>() / rate;
        if (start >= 3.5 || note["end"].get<double>() / rate <= 1) continue;
        if (firstStart < 0) firstStart = std::max(start - 1, 0.0);
        ++inside;
    }
    const auto midi = NotesByChannel(ReadFile(folder_.File("Out_song.mid")));
    ASSERT_EQ(midi[0].size(), inside);
    ASSERT_LT(inside, 7U);
    EXPECT_NEAR(midi[0][0].second, firstStart * 384, 1.5); // a second is a quarter note; both are truncated
}

TEST_F(ArrangeProgram, TheFilesAreReadByMido) {
    constexpr const char* kPython = "/usr/bin/python3"; // Debian's own, which sees Debian's packages
    if (std::system((std::string(kPython) + " -c 'import mido' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "mido is missing (Debian: apt install python3-mido)";
    Sing("song.wav");
    ASSERT_EQ(Arrange({"song.wav", "--no-cache"}).exitCode, 0);
    WriteFile(folder_.File("count.py"), R"(import sys, mido
held, count, pairs = {}, 0, 0
for message in mido.MidiFile(sys.argv[1]).tracks[0]:
    if message.type == 'note_on':
        assert (message.channel, message.note) not in held, message
        held[(message.channel, message.note)] = 1
        count += 1
    elif message.type == 'note_off':
        pairs += held.pop((message.channel, message.note))
assert not held and count == pairs == 28, (held, count, pairs)
)");
    const std::string command = std::string(kPython) + " '" + folder_.File("count.py").string() + "' '" +
                                folder_.File("Out_song.mid").string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
}

TEST_F(ArrangeProgram, TheSameRunGivesTheSameBytes) {
    Sing("song.wav");
    for (const char* style : {"0", "3"}) {
        const std::vector<std::string> options = {"song.wav", "--style", style};
        auto arguments = options;
        if (*style == '3') arguments.insert(arguments.end(), {"--arrangement", "drop2 randomized"});
        arguments.push_back("-o");
        auto again = arguments;
        arguments.emplace_back("one");
        again.emplace_back("two");
        ASSERT_EQ(Arrange(arguments).exitCode, 0); // analyses
        ASSERT_EQ(Arrange(again).exitCode, 0);     // reads the cache
        for (const char* name : {"Out_song.wav", "Out_song.mid", "Out_song.svg"})
            EXPECT_EQ(ReadFile(folder_.File("one") / name), ReadFile(folder_.File("two") / name)) << name;
    }
}

TEST_F(ArrangeProgram, SilenceGivesEmptyResults) {
    test::SingerSettings settings;
    ASSERT_TRUE(test::WriteWav(folder_.File("song.wav"), test::Silence(1.0, settings)));
    for (const char* style : {"0", "3", "4", "5", "6"}) {
        const JsonValue json = ArrangeToJson({"--style", style, "-o", "out"});
        EXPECT_TRUE(json["notes"].empty()) << style;
        EXPECT_EQ(json["settings"]["listPosition"].get<int>(), std::stoi(style));
        EXPECT_TRUE(NotesByChannel(ReadFile(folder_.File("out/Out_song.mid")))[0].empty());
        EXPECT_EQ(XmlFault(ReadFile(folder_.File("out/Out_song.svg"))), "");
    }
}

TEST_F(ArrangeProgram, OneNoteIsArranged) {
    Sing("song.wav", {57});
    EXPECT_EQ(ArrangeToJson({})["notes"].size(), 1U);
    EXPECT_EQ(NotesByChannel(ReadFile(folder_.File("Out_song.mid")))[3].size(), 1U);
}

TEST_F(ArrangeProgram, SeveralRecordingsFollowOneAnother) {
    Sing("a.wav");
    Sing("b.wav", {57, 60, 64});
    WriteFile(folder_.File("text.wav"), "This is no recording.");
    const ProgramResult result = Arrange({"a.wav", "text.wav", "missing.wav", "b.wav", "-o", "out"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: text.wav: Could not load audio file!\n"
                          "sonorelle: missing.wav: Could not load audio file!\n");
    EXPECT_THAT(result.out, HasSubstr("out/Out_a.svg\n\nb.wav\n"));
    EXPECT_EQ(FilesIn("out").size(), 8U);
    const ProgramResult json = Arrange({"a.wav", "b.wav", "--json", "-o", "out"});
    EXPECT_EQ(CountOf(json.out, "\n"), 2U);
}

TEST_F(ArrangeProgram, ListNeedsNoRecording) {
    const ProgramResult result = Arrange({"--list"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, FormatChoices());
    EXPECT_TRUE(FilesIn("").empty());
}

TEST_F(ArrangeProgram, WrongUseIsTwoAndDoesNothing) {
    Sing("song.wav");
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {"song.wav", "--style", "choir"},
                                                         {"song.wav", "--style"},
                                                         {"song.wav", "--arrangement", "0"},
                                                         {"song.wav", "--scale", "11"},
                                                         {"song.wav", "--transpose", "-25"},
                                                         {"song.wav", "--intervals", "-1,0,0"},
                                                         {"song.wav", "--region", "-1:2"},
                                                         {"song.wav", "--preset", "loud"},
                                                         {"song.wav", "--voice", "4:mute"},
                                                         {"song.wav", "--voice", "0:vol=2"},
                                                         {"--voice", "0:mute"},
                                                         {"song.wav", "--voice"},
                                                         {"song.wav", "--tuning", "349"},
                                                         {"song.wav", "--speed", "0"},
                                                         {"song.wav", "--nonsense"},
                                                         {"song.wav", "-o", ""},
                                                         {"song.wav", "song.wav"},
                                                         {"--list", "--tempo", "0"}};
    for (const std::vector<std::string>& arguments : wrong) {
        const ProgramResult result = Arrange(arguments);
        EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("sonorelle: ", 0), 0U) << result.err;
        EXPECT_THAT(result.err, ::testing::EndsWith("Try 'sonorelle arrange --help'.\n"));
    }
    EXPECT_EQ(FilesIn(""), (std::set<std::string>{"song.wav"}));
}

TEST_F(ArrangeProgram, AFolderThatCannotBeMadeIsKnownAtOnce) {
    Sing("song.wav");
    WriteFile(folder_.File("taken"), "a file");
    for (const char* folder : {"taken", "taken/below"}) {
        const ProgramResult result = Arrange({"song.wav", "-o", folder});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, std::string("sonorelle: ") + folder + ": Could not make this folder!\n");
    }
    EXPECT_EQ(FilesIn(""), (std::set<std::string>{"song.wav", "taken"}));
    EXPECT_EQ(ReadFile(folder_.File("taken")), "a file");
}

TEST_F(ArrangeProgram, AResultThatCannotBeWrittenIsToldAndLeavesTheOthersAlone) {
    Sing("song.wav");
    std::filesystem::create_directories(folder_.File("out/Out_song.mid")); // in the way of the file
    WriteFile(folder_.File("out/Out_song.svg"), "old");
    const ProgramResult result = Arrange({"song.wav", "-o", "out"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sonorelle: out/Out_song.mid: Could not write file!\n");
    EXPECT_EQ(ReadFile(folder_.File("out/Out_song.svg")), "old");
    EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"Out_song.mid", "Out_song.svg"}));
}

TEST_F(ArrangeProgram, OldResultsAreReplaced) {
    Sing("song.wav");
    for (const char* name : {"Out_song.wav", "Out_song.mid", "Out_song_chords.mid", "Out_song.svg"})
        WriteFile(folder_.File(name), "old");
    EXPECT_EQ(Arrange({"song.wav"}).exitCode, 0);
    EXPECT_EQ(ReadFile(folder_.File("Out_song.wav")).rfind("RIFF", 0), 0U);
    for (const char* name : {"Out_song.mid", "Out_song_chords.mid"})
        EXPECT_EQ(ReadFile(folder_.File(name)).rfind("MThd", 0), 0U);
    EXPECT_EQ(XmlFault(ReadFile(folder_.File("Out_song.svg"))), "");
}

TEST_F(ArrangeProgram, FilesAreFinishedThoughTheReaderLeaves) {
    Sing("song.wav");
    const ProgramResult result = RunProgram({.arguments = {"arrange", "song.wav", "-o", "out"},
                                             .folder = folder_.Path().string(),
                                             .closesOutAtOnce = true});
    EXPECT_EQ(result.exitCode, 141);
    EXPECT_EQ(FilesIn("out").size(), 4U);
}

TEST_F(ArrangeProgram, CancellingLeavesNothingBehind) {
    test::SingerSettings settings;
    ASSERT_TRUE(test::WriteWav(folder_.File("long.wav"), test::WhiteNoise(120, settings)));
    const ProgramResult result = RunProgram({.arguments = {"arrange", "long.wav"},
                                             .folder = folder_.Path().string(),
                                             .errIsTerminal = true,
                                             .signalAtOutput = SIGINT});
    EXPECT_EQ(result.exitCode, 130) << "signal " << result.signal;
    EXPECT_TRUE(result.err.ends_with(" \rsonorelle: long.wav: Cancelled.\r\n")) << result.err;
    EXPECT_EQ(FilesIn(""), (std::set<std::string>{"long.wav"}));
}

TEST_F(ArrangeProgram, HelpNamesEveryOption) {
    const ProgramResult help = Arrange({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* word :
         {"--output", "--style",  "--arrangement", "--root",      "--scale",     "--harmony-scale",
          "--snap",   "--range",  "--spread",      "--intervals", "--transpose", "--tempo",
          "--region", "--preset", "--voice",       "--tuning",    "--speed",     "--stems",
          "--json",   "--list",   "--no-cache",    "--quiet"})
        EXPECT_THAT(help.out, HasSubstr(word));
    EXPECT_THAT(RunProgramWith({"--help"}).out, HasSubstr("arrange"));
}

// Melodies whose key is known: what is found is theirs, and the intelligent voices stay in it.
TEST_F(ArrangeProgram, HarmonyStaysInTheKeyOfTheMelody) {
    for (const std::uint64_t seed : {11U, 12U, 13U}) {
        const test::Melody melody =
            test::RandomDiatonicMelody({.key = 2, .lowestMidiPitch = 55, .phrases = 2}, seed);
        ASSERT_TRUE(test::WriteWav(folder_.File("song.wav"), test::Sing(melody, test::SingerSettings{})));
        const JsonValue json = ArrangeToJson({"--root", "D", "--scale", "major"});
        const std::set<int> scale = {2, 4, 6, 7, 9, 11, 1};
        for (const JsonValue& note : json["notes"])
            for (const int voice : note["voices"].get<std::vector<int>>())
                EXPECT_EQ(scale.count(voice % 12), 1U) << "seed " << seed << " " << note["voices"];
    }
}

} // namespace
} // namespace sonorelle
