// The whole program, from the outside: recordings in, output and exit codes out.
#include "cli/arrange_program.h"
#include "cli/json_value.h"
#include "cli/program_runner.h"
#include "cli/xml_check.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace sonorelle {
namespace {

using test::CountOf;
using test::JsonValue;
using test::ProgramResult;
using test::ReadFile;
using test::RunProgram;
using test::RunProgramWith;
using test::WriteFile;
using test::XmlFault;

std::vector<std::string> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// An hour before now: a cache written in the same tick of the clock as its recording would count as stale.
void MakeOld(const std::filesystem::path& path) {
    std::filesystem::last_write_time(path,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
}

class AnalyseProgram : public ::testing::Test {
protected:
    // Three long notes: C4, E4, G4.
    std::filesystem::path Sing(const std::string& name) {
        test::SingerSettings settings;
        settings.vibratoCents = 10;
        std::vector<test::MelodyNote> melody;
        for (const double pitch : {60.0, 64.0, 67.0}) {
            test::MelodyNote note;
            note.midiPitch = pitch;
            note.restBeatsAfter = 0.5;
            melody.push_back(note);
        }
        return Save(name, test::Sing(melody, settings));
    }
    std::filesystem::path Save(const std::string& name, const test::Recording& recording) {
        const std::filesystem::path path = folder_.File(name);
        EXPECT_TRUE(test::WriteWav(path, recording));
        MakeOld(path);
        return path;
    }
    std::filesystem::path SaveSilence(const std::string& name, double rate, int channels) {
        test::Recording recording;
        recording.sampleRate = rate;
        recording.channels.assign(static_cast<std::size_t>(channels), std::vector<float>(4000, 0.0F));
        return Save(name, recording);
    }
    ProgramResult Analyse(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "analyse");
        return RunProgramWith(arguments, folder_.Path().string());
    }
    ProgramResult AnalyseOnTerminal(std::vector<std::string> arguments, int signal = 0) {
        arguments.insert(arguments.begin(), "analyse");
        return RunProgram({.arguments = arguments,
                           .folder = folder_.Path().string(),
                           .errIsTerminal = true,
                           .signalAtOutput = signal});
    }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_.Path()), {}));
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(folder_.File(name)); }

    test::TemporaryFolder folder_;
};

TEST_F(AnalyseProgram, PrintsATableAndKeepsACache) {
    Sing("song.wav");
    const ProgramResult first = Analyse({"song.wav"});
    EXPECT_EQ(first.exitCode, 0) << first.err;
    EXPECT_EQ(first.err, "");
    EXPECT_EQ(first.out.rfind("song.wav\n  Rate      44100 Hz\n  Channels  1 (mono)\n", 0), 0U) << first.out;
    EXPECT_NE(first.out.find("  Cache     written\n"), std::string::npos) << first.out;
    for (const char* name : {"C4 ", "E4 ", "G4 "}) EXPECT_EQ(CountOf(first.out, name), 1U) << first.out;
    EXPECT_TRUE(Exists("song.wav.kva"));

    const ProgramResult second = Analyse({"song.wav"});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_NE(second.out.find("  Cache     loaded\n"), std::string::npos) << second.out;
    const auto notes = [](const std::string& text) { return text.substr(text.find("\n\n")); };
    EXPECT_EQ(notes(second.out), notes(first.out));
}

TEST_F(AnalyseProgram, NoCacheNeitherWritesNorReadsOne) {
    Sing("song.wav");
    const ProgramResult fresh = Analyse({"song.wav", "--no-cache"});
    EXPECT_EQ(fresh.exitCode, 0);
    EXPECT_NE(fresh.out.find("  Cache     none\n"), std::string::npos) << fresh.out;
    EXPECT_EQ(FilesInFolder(), 1U);
    Analyse({"song.wav"});
    const auto written = std::filesystem::last_write_time(folder_.File("song.wav.kva"));
    EXPECT_NE(Analyse({"--no-cache", "song.wav"}).out.find("  Cache     none\n"), std::string::npos);
    EXPECT_EQ(std::filesystem::last_write_time(folder_.File("song.wav.kva")), written);
}

TEST_F(AnalyseProgram, JsonIsOneObjectALine) {
    Sing("a.wav");
    Sing("b.wav");
    const ProgramResult result = Analyse({"--json", "a.wav", "b.wav"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::vector<std::string> lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 2U);
    const JsonValue a = JsonValue::Parse(lines[0]);
    EXPECT_EQ(a["file"], "a.wav");
    EXPECT_EQ(JsonValue::Parse(lines[1])["file"], "b.wav");
    EXPECT_EQ(a["sampleRate"], 44100);
    EXPECT_EQ(a["channels"], 1);
    EXPECT_EQ(a["cache"], "written");
    EXPECT_GT(a["markCount"].get<int>(), 100);
    EXPECT_NEAR(a["tuningHz"].get<double>(), 440, 2); // sung in tune
    ASSERT_EQ(a["notes"].size(), 3U);
    EXPECT_NEAR(a["notes"][0]["pitch"].get<double>(), 60, 0.5);
    EXPECT_NEAR(a["notes"][2]["pitch"].get<double>(), 67, 0.5);
    EXPECT_EQ(a["notes"][0]["length"].get<int>(),
              a["notes"][0]["end"].get<int>() - a["notes"][0]["start"].get<int>());
    EXPECT_LT(a["notes"][2]["end"].get<int>(), a["frames"].get<int>());

    std::string again = Lines(Analyse({"a.wav", "--json"}).out).at(0);
    const std::size_t cache = again.find("\"loaded\"");
    ASSERT_NE(cache, std::string::npos) << again;
    again.replace(cache, 8, "\"written\"");
    EXPECT_EQ(again, lines[0]);
}

TEST_F(AnalyseProgram, CsvIsOneLineAMark) {
    Sing("a.wav");
    Sing("b.wav");
    const ProgramResult one = Analyse({"--csv", "a.wav"});
    EXPECT_EQ(one.exitCode, 0) << one.err;
    const std::vector<std::string> lines = Lines(one.out);
    const auto marks = JsonValue::Parse(Analyse({"--json", "a.wav"}).out)["markCount"].get<std::size_t>();
    ASSERT_EQ(lines.size(), marks + 1);
    EXPECT_EQ(lines[0], "seconds,pitch,voiced,level,period,salience");
    EXPECT_EQ(lines[1].rfind("0.000000,", 0), 0U) << lines[1];
    std::size_t voiced = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_EQ(CountOf(lines[i], ","), 5U) << lines[i];
        double seconds = 0;
        double pitch = 0;
        int isVoiced = -1;
        double level = 0;
        double period = 0;
        double salience = -1;
        ASSERT_EQ(std::sscanf(lines[i].c_str(), "%lf,%lf,%d,%lf,%lf,%lf", &seconds, &pitch, &isVoiced, &level,
                              &period, &salience),
                  6)
            << lines[i];
        if (isVoiced != 1) continue;
        ++voiced;
        EXPECT_GT(salience, 0) << lines[i]; // what the pitch tracker heard
        ASSERT_GT(period, 0) << lines[i];
        EXPECT_NEAR(pitch, 69 + 12 * std::log2(44100 / period / 440), 1e-4) << lines[i]; // f32 below 128
    }
    EXPECT_GT(voiced, marks / 4);

    const std::vector<std::string> both = Lines(Analyse({"--csv", "a.wav", "b.wav"}).out);
    ASSERT_EQ(both.size(), 2 * marks + 1);
    EXPECT_EQ(both[0], "file," + lines[0]);
    EXPECT_EQ(both[1], "a.wav," + lines[1]);
    EXPECT_EQ(both[marks + 1], "b.wav," + lines[1]);
}

TEST_F(AnalyseProgram, OneRunGivesEverything) {
    Sing("song.wav");
    const ProgramResult result =
        Analyse({"song.wav", "--picture", "song.svg", "--json-file", "song.json", "--csv-file", "song.csv"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Cache     written"), std::string::npos);
    EXPECT_EQ(JsonValue::Parse(ReadFile(folder_.File("song.json")))["notes"].size(), 3U);
    EXPECT_EQ(ReadFile(folder_.File("song.csv")).rfind("seconds,", 0), 0U);
    const std::string svg = ReadFile(folder_.File("song.svg"));
    EXPECT_EQ(XmlFault(svg), "");
    EXPECT_EQ(CountOf(svg, "stroke=\"#ff5f00\""), 3U);
    EXPECT_EQ(FilesInFolder(), 5U); // and nothing left over
}

TEST_F(AnalyseProgram, GoesOnAfterAFileThatFails) {
    Sing("a.wav");
    Sing("b.wav");
    WriteFile(folder_.File("text.wav"), "This is no recording.");
    const ProgramResult result = Analyse({"--json", "a.wav", "missing.wav", "text.wav", "b.wav"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(Lines(result.out).size(), 2U);
    EXPECT_EQ(result.err, "sonorelle: missing.wav: Could not load audio file!\n"
                          "sonorelle: text.wav: Could not load audio file!\n");
}

TEST_F(AnalyseProgram, TellsWhyAFileIsRefused) {
    SaveSilence("three.wav", 44100, 3);
    SaveSilence("slow.wav", 8000, 1);
    SaveSilence("edge.wav", 11024, 1);
    SaveSilence("fast.wav", 384000, 1);
    std::filesystem::create_directory(folder_.File("folder"));
    WriteFile(folder_.File("empty.wav"), "");
    const ProgramResult result =
        Analyse({"three.wav", "slow.wav", "edge.wav", "fast.wav", "folder", "empty.wav"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sonorelle: three.wav: Only mono and stereo audio files are supported!\n"
                          "sonorelle: slow.wav: Samplerate below 11kHz not supported!\n"
                          "sonorelle: edge.wav: Samplerate below 11kHz not supported!\n"
                          "sonorelle: fast.wav: Samplerate of 256kHz and above not supported!\n"
                          "sonorelle: folder: Could not load audio file!\n"
                          "sonorelle: empty.wav: Could not load audio file!\n");
}

TEST_F(AnalyseProgram, SilenceHasNoNotes) {
    SaveSilence("silence.wav", 11025, 2);
    const ProgramResult result = Analyse({"silence.wav", "--picture", "silence.svg"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("  No notes.\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  Key       none\n"), std::string::npos) << result.out;
    EXPECT_EQ(XmlFault(ReadFile(folder_.File("silence.svg"))), "");
}

TEST_F(AnalyseProgram, TakesFileNamesOfAnyBytes) {
    for (const std::string& name :
         {std::string("two words.wav"), std::string("Für Elise 日本.wav"), std::string("caf\xe9.wav"),
          std::string("line\nend\x1b[31m.wav"), std::string("[a,b]"), std::string("analyse")}) {
        SaveSilence(name, 22050, 1);
        const ProgramResult result = Analyse({"--json", name});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(Lines(result.out).size(), 1U);
        EXPECT_FALSE(JsonValue::Parse(result.out)["file"].get<std::string>().empty());
        EXPECT_EQ(result.out.find('\x1b'), std::string::npos);
        EXPECT_TRUE(Exists(name + ".kva")) << name;
    }
    SaveSilence("--json", 22050, 1);
    EXPECT_EQ(Analyse({"--", "--json"}).exitCode, 0);
}

TEST_F(AnalyseProgram, HostileNamesDoNotReachTheTerminal) {
    const ProgramResult result = Analyse({"no\x1b]0;gotcha\a\n.wav"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: no\\x1b]0;gotcha\\x07\\n.wav: Could not load audio file!\n");
}

TEST_F(AnalyseProgram, WrongUseIsTwoAndDoesNothing) {
    Sing("a.wav");
    Sing("b.wav");
    const std::vector<std::vector<std::string>> wrong = {{"analyse"},
                                                         {"analyse", "--nonsense", "a.wav"},
                                                         {"analyse", "--json", "--csv", "a.wav"},
                                                         {"analyse", "--picture", "p.svg", "a.wav", "b.wav"},
                                                         {"analyse", "--picture", "a.wav"},
                                                         {"analyse", "--picture", "a.wav", "b.wav"},
                                                         {"analyse", "--csv-file", "a.wav", "b.wav"},
                                                         {"analyse", "--json-file", "x.svg", "a.wav"},
                                                         {"analyse", "a.wav", "--picture"},
                                                         {"analyse", "--json=x", "a.wav"},
                                                         {"bogus", "a.wav"},
                                                         {"a.wav"},
                                                         {}};
    for (const std::vector<std::string>& arguments : wrong) {
        const ProgramResult result = RunProgramWith(arguments, folder_.Path().string());
        EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("sonorelle: ", 0), 0U) << result.err;
        EXPECT_NE(result.err.find("--help'"), std::string::npos) << result.err;
    }
    EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(AnalyseProgram, NamesTheCommandThatItDoesNotKnow) {
    EXPECT_EQ(RunProgramWith({"b\x1b"
                              "ogus"})
                  .err,
              "sonorelle: There is no command 'b\\x1bogus'\nTry 'sonorelle --help'.\n");
}

TEST_F(AnalyseProgram, NeverReplacesARecordingByAResult) {
    std::filesystem::create_symlink(Sing("a.wav"), folder_.File("a.svg"));
    const std::string before = ReadFile(folder_.File("a.wav"));
    EXPECT_EQ(Analyse({"a.wav", "--picture", "a.svg"}).exitCode, 2);
    EXPECT_EQ(ReadFile(folder_.File("a.wav")), before);
}

TEST_F(AnalyseProgram, HelpAndVersion) {
    const ProgramResult help = RunProgramWith({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("analyse"), std::string::npos);
    EXPECT_NE(help.out.find("sonorelle analyse song.wav"), std::string::npos);
    const ProgramResult analyseHelp = RunProgramWith({"analyse", "--help"});
    EXPECT_EQ(analyseHelp.exitCode, 0);
    for (const char* word :
         {"FILE", "--no-cache", "--json", "--csv", "--picture", "--quiet", "middle C is C4", "130"}) {
        EXPECT_NE(analyseHelp.out.find(word), std::string::npos) << word;
    }
    EXPECT_EQ(RunProgramWith({"--version"}).out.rfind("sonorelle ", 0), 0U);
    EXPECT_EQ(RunProgramWith({"--version"}).exitCode, 0);
}

TEST_F(AnalyseProgram, AFullDiskIsAFailure) {
    Sing("song.wav");
    for (const char* option : {"--json", "--csv", "--no-cache"}) {
        const ProgramResult result = RunProgram({.arguments = {"analyse", option, "song.wav"},
                                                 .folder = folder_.Path().string(),
                                                 .outPath = "/dev/full"});
        EXPECT_EQ(result.exitCode, 1) << option;
        EXPECT_EQ(result.err, "sonorelle: standard output: Could not write file!\n");
    }
    EXPECT_EQ(RunProgram({.arguments = {"--help"}, .outPath = "/dev/full"}).exitCode, 1);
}

TEST_F(AnalyseProgram, AReaderThatLeavesEndsItQuietly) {
    Sing("a.wav");
    Sing("b.wav");
    const ProgramResult result = RunProgram({.arguments = {"analyse", "--csv", "a.wav", "b.wav"},
                                             .folder = folder_.Path().string(),
                                             .closesOutAtOnce = true});
    EXPECT_EQ(result.exitCode, 141) << "signal " << result.signal;
    EXPECT_EQ(result.err, "");
    EXPECT_FALSE(Exists("b.wav.kva")); // for whom?
}

TEST_F(AnalyseProgram, ResultFilesAreFinishedThoughTheReaderLeaves) {
    Sing("a.wav");
    const ProgramResult result =
        RunProgram({.arguments = {"analyse", "a.wav", "--csv-file", "a.csv", "--picture", "a.svg"},
                    .folder = folder_.Path().string(),
                    .closesOutAtOnce = true});
    EXPECT_EQ(result.exitCode, 141);
    EXPECT_EQ(XmlFault(ReadFile(folder_.File("a.svg"))), "");
    EXPECT_GT(Lines(ReadFile(folder_.File("a.csv"))).size(), 100U);
    EXPECT_EQ(FilesInFolder(), 4U); // recording, cache, two results, nothing left over
}

TEST_F(AnalyseProgram, AResultThatCannotBeWrittenIsKnownAtOnce) {
    Sing("song.wav");
    const ProgramResult result = Analyse({"song.wav", "--picture", "nowhere/song.svg"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: nowhere/song.svg: Could not write file!\n");
    EXPECT_FALSE(Exists("song.wav.kva"));
}

TEST_F(AnalyseProgram, AFailedRunLeavesOldResultsAlone) {
    WriteFile(folder_.File("old.svg"), "old");
    EXPECT_EQ(Analyse({"missing.wav", "--picture", "old.svg"}).exitCode, 1);
    EXPECT_EQ(ReadFile(folder_.File("old.svg")), "old");
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(AnalyseProgram, ShowsABarOnATerminalAndCleansItsLine) {
    Sing("song.wav");
    const ProgramResult result = AnalyseOnTerminal({"--no-cache", "song.wav"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("\rAnalysing ["), std::string::npos) << result.err;
    EXPECT_NE(result.err.find('%'), std::string::npos);
    EXPECT_TRUE(result.err.ends_with(" \r")) << result.err;
    EXPECT_EQ(result.err.find('\n'), std::string::npos);
}

TEST_F(AnalyseProgram, IsSilentWhenQuietOrPiped) {
    Sing("song.wav");
    EXPECT_EQ(AnalyseOnTerminal({"--quiet", "--no-cache", "song.wav"}).err, "");
    EXPECT_EQ(Analyse({"--no-cache", "song.wav"}).err, "");
}

TEST_F(AnalyseProgram, CancellingLeavesNothingBehind) {
    test::SingerSettings settings;
    Save("long.wav", test::WhiteNoise(120, settings)); // far longer to analyse than a signal takes to arrive
    for (const int signal : {SIGINT, SIGTERM}) {
        const ProgramResult result =
            AnalyseOnTerminal({"long.wav", "--picture", "long.svg", "--csv-file", "long.csv"}, signal);
        EXPECT_EQ(result.exitCode, 130) << "signal " << result.signal;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.ends_with(" \rsonorelle: long.wav: Cancelled.\r\n")) << result.err;
        EXPECT_EQ(FilesInFolder(), 1U);
    }
}

} // namespace
} // namespace sonorelle
