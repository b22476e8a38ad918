// Sessions and programs as files of `sonorelle arrange`.
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/session_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace sonorelle {
namespace {

using test::ProgramResult;
using ::testing::HasSubstr;
using ::testing::Not;

class ArrangeSession : public test::SessionProgram {
protected:
    // Everything but the picture, whose curve differs between an analysis and its cache.
    void ExpectSameResults(const std::string& a, const std::string& b) {
        for (const char* name : {"/Out_song.wav", "/Out_song.mid"}) {
            EXPECT_FALSE(Read(a + name).empty());
            EXPECT_TRUE(Read(a + name) == Read(b + name)) << name;
        }
    }
};

const std::vector<std::string> kManyOptions = {
    "--style",         "block",
    "--arrangement",   "drop2",
    "--root",          "Eb",
    "--harmony-scale", "11",
    "--snap",          "off",
    "--speed",         "1.3",
    "--tempo",         "93.7",
    "--region",        "0.7:4",
    "--transpose",     "14",
    "--tuning",        "433.3",
    "--voice",         "red:vol=0.7,drift=120,shape=3.3,time=13,delay=12.7",
    "--voice",         "0:pan=0.013,tune=33,glide=7",
    "--voice",         "blue:mute"};

std::vector<std::string> With(std::vector<std::string> options, const std::vector<std::string>& more) {
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

TEST_F(ArrangeSession, SavedRestoredAndExportedAgainIsTheSame) {
    for (const auto& options : {std::vector<std::string>{}, kManyOptions}) {
        Arrange(
            With({"song.wav", "-o", "a", "--save-state", "a.state", "--save-program", "a.program"}, options));
        Arrange({"--state", "a.state", "-o", "b", "--save-state", "b.state", "--save-program", "b.program"});
        ExpectSameResults("a", "b");
        EXPECT_GT(Read("a.state").size(), 1000U);
        EXPECT_TRUE(Read("a.state") == Read("b.state"));
        EXPECT_TRUE(Read("a.program") == Read("b.program"));
    }
}

TEST_F(ArrangeSession, TellsTheSettingsOfTheSession) {
    Arrange(With({"song.wav", "-o", "a", "--save-state", "a.state"}, kManyOptions));
    const std::string summary = Arrange({"--state", "a.state", "-o", "b"});
    for (const char* part : {"Block Chord 4 Voices, Drop2", "+14 semitones", "1.3 times as fast", "433.3 Hz",
                             "red:vol=0.7,delay=12.7,shape=3.3,drift=120,time=13", "0.700 to 4.000 s"})
        EXPECT_THAT(summary, HasSubstr(part));
}

TEST_F(ArrangeSession, OptionsOverrideWhatTheSessionSays) {
    Arrange(With({"song.wav", "-o", "a", "--save-state", "a.state"}, kManyOptions));
    const std::vector<std::string> others = {
        "--style",  "fauxbourdon", "--arrangement", "descant int", "--tempo", "77",
        "--region", "1:3",         "--transpose",   "-3",          "--voice", "red:vol=0.2,shape=-2"};
    const std::string summary = Arrange(With({"--state", "a.state", "-o", "b"}, others));
    for (const char* part : {"Fauxbourdon 3 Voices, Descant Intelligent", "-3 semitones", "1.3 times as fast",
                             "red:vol=0.2,delay=12.7,shape=-2", "1.000 to 3.000 s"})
        EXPECT_THAT(summary, HasSubstr(part));
    // The same asked for at once; in the session one strip after the other was set.
    std::vector<std::string> both = kManyOptions;
    both[1] = "fauxbourdon";
    both[3] = "descant int";
    both[13] = "77";
    both[15] = "1:3";
    both[17] = "-3";
    Arrange(With({"song.wav", "-o", "c", "--voice", "red:vol=0.2,shape=-2"}, both));
    EXPECT_TRUE(Read("b/Out_song.mid") == Read("c/Out_song.mid"));
}

TEST_F(ArrangeSession, OptionsDependOnTheStyleOfTheSession) {
    Arrange({"song.wav", "-o", "a", "--style", "block", "--save-state", "a.state"});
    Arrange({"--state", "a.state", "-o", "b", "--arrangement", "drop2"});
    const ProgramResult wrong =
        Run({"arrange", "--state", "a.state", "-o", "c", "--arrangement", "descant int"});
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_THAT(wrong.err, HasSubstr("--arrangement: 'descant int' is not allowed"));
    EXPECT_FALSE(Exists("c"));
}

TEST_F(ArrangeSession, FindsARecordingThatHasMovedUnderItsName) {
    Arrange({"song.wav", "-o", "a", "--save-state", "a.state"});
    std::filesystem::create_directory(folder_.File("new"));
    std::filesystem::rename(folder_.File("song.wav"), folder_.File("new/song.wav"));
    Arrange({"--state", "a.state", "new/song.wav", "-o", "b", "--save-state", "b.state"});
    ExpectSameResults("a", "b");
    EXPECT_THAT(Read("b.state"), HasSubstr("new/song.wav"));
}

TEST_F(ArrangeSession, RefusesARecordingOfAnotherName) {
    Arrange({"song.wav", "-o", "a", "--save-state", "a.state"});
    std::filesystem::rename(folder_.File("song.wav"), folder_.File("other.wav"));
    const ProgramResult result = Run({"arrange", "--state", "a.state", "other.wav", "-o", "b"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: other.wav: The session is one of a recording named song.wav!\n");
}

TEST_F(ArrangeSession, TellsOfAMissingRecordingAndOfFilesThatAreNoSessions) {
    Arrange({"song.wav", "-o", "a", "--save-state", "a.state", "--save-program", "a.program"});
    EXPECT_EQ(Run({"arrange", "--state", "a.program"}).err, "sonorelle: a.program: This is no session!\n");
    EXPECT_EQ(Run({"arrange", "--state", "nix"}).err, "sonorelle: nix: Could not read this file!\n");
    EXPECT_EQ(Run({"arrange", "--state", "."}).err, "sonorelle: .: Could not read this file!\n");
    EXPECT_EQ(Run({"arrange", "song.wav", "--program", "a.state", "-o", "b"}).err,
              "sonorelle: a.state: This is no program!\n");
    std::filesystem::remove(folder_.File("song.wav"));
    const ProgramResult gone = Run({"arrange", "--state", "a.state"});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_EQ(gone.err, "sonorelle: song.wav: Could not load audio file!\n");
}

TEST_F(ArrangeSession, TellsWhenTheArrangementDoesNotFitTheRecording) {
    Arrange({"song.wav", "-o", "a", "--save-state", "a.state"});
    std::string state = Read("a.state");
    const std::size_t at = state.find("InitNumElem str=\"") + 17;
    ASSERT_LT(at, state.size());
    state.replace(at, state.find('"', at) - at, "999");
    Put("b.state", state);
    const ProgramResult result = Run({"arrange", "--state", "b.state", "-o", "b", "--save-state", "c.state"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err,
              "sonorelle: song.wav: The saved arrangement does not fit this recording's analysis!\n");
    EXPECT_TRUE(Read("c.state") == state) << "what could not be used is not lost";
}

TEST_F(ArrangeSession, ProgramsCarryTheStripsAlone) {
    Arrange({"song.wav", "-o", "a", "--voice", "red:vol=0.3,pan=0.5,shape=4", "--save-program", "a.program"});
    Arrange({"song.wav", "-o", "b", "--program", "a.program"});
    ExpectSameResults("a", "b");
    const std::string summary = Arrange(
        {"song.wav", "-o", "c", "--program", "a.program", "--voice", "red:pan=-1", "--style", "block"});
    EXPECT_THAT(summary, HasSubstr("red:vol=0.3,pan=-1,shape=4"));
}

TEST_F(ArrangeSession, WrongUseIsToldInOneLineAndDoesNothing) {
    Put("other.wav", Song());
    PutKeys("keys.mid", {{0, true, 60}});
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"song.wav", "other.wav", "--save-state", "x"}, "one recording only"},
        {{"song.wav", "--save-state", "song.wav"}, "song.wav: would replace the recording"},
        {{"song.wav", "--save-program", "song.wav"}, "song.wav: would replace the recording"},
        {{"song.wav", "--save-state", "x", "--save-program", "x"}, "the same file"},
        {{"song.wav", "--save-state", "keys.mid", "--midi-in", "keys.mid"}, "would replace the keys"},
        {{"song.wav", "--live", "pitches"}, "--live: needs --midi-in"},
        {{"song.wav", "--record"}, "--record: needs --midi-in"},
        {{"song.wav", "--midi-in", "keys.mid", "--live", "loud"}, "allowed: harmonies, pitches, trigger"},
        {{"song.wav", "--midi-in", "keys.mid", "--live", "trigger", "--record"}, "nothing to record"},
        {{"song.wav", "--midi-in", "song.wav"}, "song.wav: Could not read this MIDI file!"},
        {{"song.wav", "--blocks", "0"}, "allowed: 1 to 8192 frames"},
        {{"song.wav", "--blocks", "8193"}, "allowed: 1 to 8192 frames"},
        {{"song.wav", "--blocks", "64", "--stems"}, "--stems: not with --blocks"}};
    for (auto [arguments, reason] : cases) {
        arguments.insert(arguments.begin(), {"arrange", "-o", "out"});
        const ProgramResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 2) << reason;
        EXPECT_THAT(result.err.substr(0, result.err.find('\n')), HasSubstr(reason));
        EXPECT_FALSE(Exists("out"));
    }
}

TEST_F(ArrangeSession, ADocumentThatCannotBeWrittenIsKnownBeforeTheWork) {
    const ProgramResult result = Run({"arrange", "song.wav", "-o", "a", "--save-state", "nix/a.state"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "sonorelle: nix/a.state: Could not write file!\n");
    EXPECT_FALSE(Exists("a/Out_song.wav"));
}

// A locale with a decimal comma, for the life of this object. Made by hand, since few machines have one.
class CommaLocale {
public:
    explicit CommaLocale(const std::string& folder) : before(std::setlocale(LC_ALL, nullptr)) {
        const std::string make = "localedef -i de_DE -f UTF-8 '" + folder + "/de_DE.UTF-8' > /dev/null 2>&1";
        [[maybe_unused]] const int ignored = std::system(make.c_str());
        setenv("LOCPATH", folder.c_str(), 1);
        isSet = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr &&
                std::string(std::localeconv()->decimal_point) == ",";
    }
    ~CommaLocale() {
        unsetenv("LOCPATH");
        std::setlocale(LC_ALL, before.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    bool IsSet() const { return isSet; }

private:
    std::string before;
    bool isSet = false;
};

TEST_F(ArrangeSession, IsTheSameUnderAGermanLocale) {
    const std::vector<std::string> options =
        With({"song.wav", "-o", "a", "--save-state", "a.state", "--quiet"}, kManyOptions);
    Arrange(options);
    const CommaLocale german(folder_.Path().string());
    if (!german.IsSet()) GTEST_SKIP() << "this machine has no locale with a decimal comma";
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.Path());
    std::FILE* const nowhere = std::fopen("/dev/null", "w");
    const Console console{nowhere, nowhere};
    std::vector<std::string> german1 = With({"arrange"}, options);
    german1[3] = "b";
    german1[5] = "b.state";
    EXPECT_EQ(RunCommandLine(german1, console), 0);
    EXPECT_EQ(
        RunCommandLine({"arrange", "--state", "b.state", "-o", "c", "--save-state", "c.state"}, console), 0);
    std::fclose(nowhere);
    std::filesystem::current_path(before);
    ExpectSameResults("a", "b");
    ExpectSameResults("a", "c");
    EXPECT_TRUE(Read("a.state") == Read("b.state"));
    EXPECT_TRUE(Read("a.state") == Read("c.state"));
}

} // namespace
} // namespace sonorelle
