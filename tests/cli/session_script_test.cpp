// `sonorelle session`: sessions led by a script.
#include "cli/console.h"
#include "cli/script_commands.h"
#include "cli/script_words.h"
#include "cli/session_program.h"
#include "cli/wav_sound.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace sonorelle {
namespace {

using test::ProgramResult;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::vector<std::string> WordsOf(const std::string& line) {
    std::vector<std::string> words;
    EXPECT_TRUE(SplitScriptLine(line, words)) << line;
    return words;
}

TEST(ScriptWords, StandBetweenBlanks) {
    EXPECT_THAT(WordsOf("set\t style   block\r"), ElementsAre("set", "style", "block"));
    EXPECT_THAT(WordsOf("  \t"), IsEmpty());
}

TEST(ScriptWords, MayBeQuotedWholeOrInPart) {
    EXPECT_THAT(WordsOf(R"(load "my song.wav")"), ElementsAre("load", "my song.wav"));
    EXPECT_THAT(WordsOf(R"(a"b c"d 'e f'g)"), ElementsAre("ab cd", "e fg"));
    EXPECT_THAT(WordsOf(R"("a \"b\" \\c" '\"')"), ElementsAre(R"(a "b" \c)", R"(\")"));
    EXPECT_THAT(WordsOf(R"("" '')"), ElementsAre("", ""));
}

TEST(ScriptWords, EndAtAComment) {
    EXPECT_THAT(WordsOf("set root C# # the key"), ElementsAre("set", "root", "C#"));
    EXPECT_THAT(WordsOf("# nothing"), IsEmpty());
    EXPECT_THAT(WordsOf(R"(load "#1.wav")"), ElementsAre("load", "#1.wav"));
}

TEST(ScriptWords, RefuseAQuotationWithoutAnEnd) {
    std::vector<std::string> words;
    for (const char* line : {"load \"song", "load 'song", "load \"song\\", "\""})
        EXPECT_FALSE(SplitScriptLine(line, words)) << line;
}

TEST(ScriptCommandTable, HasHelpForEachAndNoNameTwice) {
    std::set<std::string> names;
    for (const ScriptCommand& command : ScriptCommands()) {
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
        EXPECT_STRNE(command.help, "") << command.name;
        EXPECT_LE(command.least, command.most) << command.name;
        EXPECT_EQ(*command.arguments == '\0', command.most == 0) << command.name;
        EXPECT_NE(command.run, nullptr) << command.name;
    }
    EXPECT_GE(names.size(), 50U);
}

class SessionScript : public test::SessionProgram {
protected:
    // The last line that a script prints, with a recording loaded.
    std::string After(const std::string& script) const {
        std::string out = PlayScript("load song.wav\n" + script + "\nprint\n");
        EXPECT_FALSE(out.empty());
        if (out.empty()) return out;
        out.pop_back();
        return out.substr(out.rfind('\n') + 1);
    }
    // "[60,55,52,48]", of a note in what was printed.
    static std::string PitchesOf(const std::string& printed, int note) {
        std::size_t at = printed.find("\"notes\":");
        for (int i = 0; i <= note && at != std::string::npos; ++i) at = printed.find("\"pitches\":", at + 1);
        if (at == std::string::npos) return "";
        const std::size_t begin = printed.find('[', at);
        return printed.substr(begin, printed.find(']', begin) + 1 - begin);
    }
    static int CountOf(const std::string& text, const std::string& part) {
        int count = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
        return count;
    }
};

TEST_F(SessionScript, RunsTheExampleOfTheManual) {
    const std::string manual =
        ReadBytes(std::filesystem::path(SONORELLE_SOURCE_FOLDER) / "docs/command-line.md");
    const std::size_t begin = manual.find("```script\n");
    ASSERT_NE(begin, std::string::npos);
    const std::size_t end = manual.find("```", begin + 3);
    const std::string out = PlayScript(manual.substr(begin + 10, end - begin - 10));
    EXPECT_THAT(out, HasSubstr("\"Second verse\""));
    for (const char* name :
         {"played.wav", "mix.wav", "red.wav", "notes.mid", "keyed.wav", "song.state", "choir.program"})
        EXPECT_FALSE(Read(name).empty()) << name;
    EXPECT_GT(test::ReadWav(Read("keyed.wav")).Peak(0), 500);
}

TEST_F(SessionScript, TheManualNamesEveryCommand) {
    const std::string manual =
        ReadBytes(std::filesystem::path(SONORELLE_SOURCE_FOLDER) / "docs/command-line.md");
    for (const ScriptCommand& command : ScriptCommands())
        EXPECT_THAT(manual, HasSubstr("| `" + std::string(command.name))) << command.name;
}

TEST_F(SessionScript, SetsTheHarmony) {
    EXPECT_THAT(After("set style block\nset arrangement \"shearing int\""),
                AllOf(HasSubstr("\"style\":\"Block Chord 4 Voices\""),
                      HasSubstr("\"arrangement\":\"Shearing Intelligent\"")));
    EXPECT_THAT(
        After("set root Eb\nset scale dorian\nset harmony-scale 5"),
        AllOf(HasSubstr("\"root\":3,\"scale\":\"Dorian\""), Not(HasSubstr("\"harmonyScale\":\"Dorian\""))));
    EXPECT_THAT(After("set root C\nset harmony-root E"),
                AllOf(HasSubstr("\"harmonyRoot\":4"), HasSubstr("\"transpose\":4")));
    EXPECT_THAT(After("set snap off\nset range 3\nset spread 0.25"),
                HasSubstr("\"snap\":false,\"range\":3,\"spread\":0.25"));
    EXPECT_THAT(After("set style 6\nset interval red -4\nset interval 3 \"up octave\""),
                HasSubstr("\"intervals\":[0,-4,2,7]"));
    EXPECT_THAT(After("set transpose -19\nset tuning 433.5"),
                HasSubstr("\"transpose\":-19,\"tuning\":433.5"));
}

TEST_F(SessionScript, SetsStripsProgramsAndParameters) {
    EXPECT_THAT(After("voice red vol=0.7 pan=-0.5 mute\nvoice red unmute\nvoice 2 solo\nvoice green solo"),
                AllOf(HasSubstr("\"name\":\"red\",\"vol\":0.7,\"pan\":-0.5"),
                      HasSubstr("\"mute\":false,\"solo\":true}]"), Not(HasSubstr("\"mute\":true"))));
    EXPECT_EQ(CountOf(After("voice 2 solo\nvoice green solo"), "\"solo\":true"), 1);
    EXPECT_THAT(After("parameter 6 0.5"), HasSubstr("\"name\":\"red\",\"vol\":0.6665"));
    EXPECT_THAT(
        After("program choose flat\nprogram name \"My choir\""),
        AllOf(HasSubstr("\"program\":\"My choir\""), HasSubstr("\"name\":\"green\",\"vol\":1,\"pan\":0,")));
    EXPECT_THAT(After("voice red vol=0.3\nprogram save p.program\nvoice red vol=0.9\nprogram load p.program"),
                HasSubstr("\"name\":\"red\",\"vol\":0.3"));
}

TEST_F(SessionScript, EditsNotesAndTakesThemBack) {
    const std::string before = After("mode edit");
    const std::string moved = After("mode edit\nnote 2 voice 1 pitch 50");
    EXPECT_NE(PitchesOf(before, 2), PitchesOf(moved, 2));
    EXPECT_THAT(PitchesOf(moved, 2), HasSubstr(",50,"));
    EXPECT_EQ(PitchesOf(After("mode edit\nnote 2 voice 1 pitch 50\nundo"), 2), PitchesOf(before, 2));
    EXPECT_EQ(After("mode edit\nnote 2 voice 1 pitch 50\nundo\nredo"), moved);
    EXPECT_EQ(CountOf(After("gain 1 red 0\ngain 2 green 0.5"), "\"gains\":[1,0,1,1]"), 1);
}

TEST_F(SessionScript, SplitsAndJoinsNotes) {
    const int notes = CountOf(After(""), "\"pitches\"");
    EXPECT_EQ(CountOf(After("split 0.6"), "\"pitches\""), notes + 1);
    EXPECT_EQ(CountOf(After("split 0.6\nmerge 0"), "\"pitches\""), notes);
    EXPECT_THAT(ComplaintOf("load song.wav\nsplit 0"), HasSubstr(":2: there is no note to split"));
    EXPECT_THAT(ComplaintOf("load song.wav\nmerge " + std::to_string(notes - 1)),
                HasSubstr("no note behind it"));
}

TEST_F(SessionScript, ChoosesAChordOfANote) {
    std::set<std::string> voicings;
    for (const std::string index : {"0", "1", "2", "3"})
        voicings.insert(PitchesOf(After("chord 2 " + index), 2));
    EXPECT_GE(voicings.size(), 3U);
    EXPECT_THAT(ComplaintOf("load song.wav\nset style block\nchord 2 1"), HasSubstr("intelligent"));
    EXPECT_THAT(ComplaintOf("load song.wav\nchord 2 7"), HasSubstr("allowed: 0 to 6"));
}

TEST_F(SessionScript, KeepsSnapshots) {
    const std::string script = "set style block\nsnapshot add Block 62\nset style 4\nsnapshot add Other\n";
    EXPECT_THAT(After(script), AllOf(HasSubstr("\"name\":\"Block\",\"key\":62"),
                                     HasSubstr("\"name\":\"Other\",\"key\":60"), HasSubstr("Fauxbourdon")));
    EXPECT_THAT(After(script + "snapshot recall 1"),
                AllOf(HasSubstr("\"style\":\"Block"), HasSubstr("\"selected\":1")));
    EXPECT_THAT(After(script + "snapshot rename 1 \"a \\\"b\\\"\""), HasSubstr(R"("name":"a \"b\"")"));
    EXPECT_THAT(After(script + "snapshot remove 1"), Not(HasSubstr("\"name\":\"Block\"")));
    EXPECT_THAT(After(script + "snapshot replace 1\nset style 0\nsnapshot recall 1"),
                HasSubstr("\"style\":\"Fauxbourdon"));
    EXPECT_THAT(ComplaintOf("load song.wav\nsnapshot recall 1"),
                HasSubstr("allowed: a snapshot from 0 to 0"));
    std::string many = "load song.wav\n";
    for (int i = 0; i < 32; ++i) many += "snapshot add x\n";
    EXPECT_THAT(ComplaintOf(many), HasSubstr(":33: the list of snapshots is full"));
}

TEST_F(SessionScript, SetsPlayback) {
    EXPECT_THAT(After("region 1 2.5"), HasSubstr("\"region\":[22050,55125]"));
    EXPECT_EQ(After("region 1 2.5\nregion all"), After(""));
    EXPECT_THAT(After("drive keys\ntrigger 48"), HasSubstr("\"drive\":\"keys\",\"trigger\":48"));
    EXPECT_THAT(
        After("tempo host 90\ntempo melody 60.5\nsync on\nmetre 3 8\noffset 2"),
        HasSubstr("\"sync\":true,\"offset\":44100,\"hostTempo\":90,\"melodyTempo\":60.5,\"metre\":[3,8]"));
    EXPECT_THAT(After("cut on"), HasSubstr("\"cut\":true"));
    EXPECT_THAT(After("cut on\ncut off"), HasSubstr("\"cut\":false"));
}

TEST_F(SessionScript, MovesTheTransport) {
    EXPECT_THAT(After("play 0.5"),
                HasSubstr("\"hostPosition\":11025,\"running\":true,\"position\":11025,\"playing\":true"));
    EXPECT_THAT(After("play 0.5\nstop"), HasSubstr("\"hostPosition\":11025,\"running\":false"));
    EXPECT_THAT(After("locate 1\nplay 1"), HasSubstr("\"hostPosition\":44100"));
    EXPECT_THAT(After("play 2"), Not(HasSubstr("\"sentNotes\":0,")));
}

TEST_F(SessionScript, PlaysPiecesThatFitTogether) {
    PlayScript("load song.wav\nplay 2 to whole.wav");
    PlayScript("load song.wav\nplay 0.7 to one.wav\nplay 1.3 to two.wav");
    test::WavSound whole = test::ReadWav(Read("whole.wav"));
    test::WavSound pieces = test::ReadWav(Read("one.wav"));
    const test::WavSound second = test::ReadWav(Read("two.wav"));
    for (const std::size_t side : {0U, 1U})
        pieces.sides[side].insert(pieces.sides[side].end(), second.sides[side].begin(),
                                  second.sides[side].end());
    EXPECT_GT(whole.Peak(0), 500);
    EXPECT_TRUE(whole.sides == pieces.sides);
}

constexpr const char* kBusyScript = R"(
load song.wav
set style block
snapshot add Block 62
set style "intelligent 2"
snapshot add Two 64
play 1 to a.wav
voice red vol=0.9
tempo host 100
tempo melody 90
sync on
play 1 to b.wav
play region to c.wav
drive keys
key down 64
play 1 to d.wav
key down 62
play 1 to e.wav
state save s.state
)";

TEST_F(SessionScript, SoundsTheSameForEveryBlockSize) {
    PlayScript(kBusyScript, {"--blocks", "64"});
    std::vector<std::string> expected;
    const std::vector<std::string> names = {"a.wav", "b.wav", "c.wav", "d.wav", "e.wav", "s.state"};
    for (const std::string& name : names) expected.push_back(Read(name));
    for (const char* size : {"1", "17", "100", "4096"}) {
        PlayScript(kBusyScript, {"--blocks", size});
        for (std::size_t i = 0; i < names.size(); ++i)
            EXPECT_TRUE(Read(names[i]) == expected[i]) << names[i] << " in blocks of " << size;
    }
    EXPECT_GT(test::ReadWav(expected[4]).Peak(0), 500);
}

TEST_F(SessionScript, SavesRestoresAndSavesTheSame) {
    const std::string first =
        PlayScript(std::string(kBusyScript) + "drive time\nmode edit\nnote 1 voice 1 pitch 47\n"
                                              "region 1 3\nexport audio a.wav\nexport midi a.mid\n"
                                              "state save a.state\nprint\n");
    const std::string again = PlayScript("state load a.state\nexport audio b.wav\nexport midi b.mid\n"
                                         "state save b.state\nprint\n");
    EXPECT_TRUE(Read("a.wav") == Read("b.wav"));
    EXPECT_TRUE(Read("a.mid") == Read("b.mid"));
    EXPECT_TRUE(Read("a.state") == Read("b.state"));
    for (const char* part : {"\"snapshots\":", "\"voices\":", "\"notes\":"}) {
        const auto partOf = [&](const std::string& text) {
            const std::size_t at = text.find(part);
            return text.substr(at, text.find(']', at) - at);
        };
        EXPECT_EQ(partOf(first), partOf(again));
    }
}

TEST_F(SessionScript, RecordsKeysThatArePlayedLive) {
    const std::string after =
        After("mode pitches\nrecord on\nplay 0.4\nkey down 50\nkey down 53\nkey down 57\n"
              "key down 65\nplay 6\nkey up 50\nrecord off\nmode edit");
    for (const char* pitch : {"50", "53", "57", "65"}) EXPECT_THAT(PitchesOf(after, 3), HasSubstr(pitch));
    EXPECT_THAT(After("mode harmonies"), HasSubstr("\"mode\":\"harmonies\""));
    EXPECT_THAT(ComplaintOf("load song.wav\nrecord on"), HasSubstr("only with 'mode harmonies'"));
    EXPECT_THAT(ComplaintOf("load song.wav\ndrive keys\nmode pitches"), HasSubstr("only with 'drive time'"));
    EXPECT_THAT(ComplaintOf("load song.wav\nmode pitches\nsnapshot add x"),
                HasSubstr("not while keys are played"));
}

TEST_F(SessionScript, ExportsWhatIsAskedFor) {
    PlayScript("load song.wav\nexport audio all.wav\nexport audio red.wav red\nexport midi all.mid\n"
               "export midi one.mid 0\nexport midi chords.mid chords\nexport trigger trigger.mid\n");
    EXPECT_FALSE(Read("all.wav") == Read("red.wav"));
    EXPECT_FALSE(KeysOf("all.mid", 2).empty());
    EXPECT_TRUE(KeysOf("one.mid", 2).empty());
    EXPECT_FALSE(KeysOf("chords.mid", 0).empty());
    EXPECT_THAT(KeysOf("trigger.mid", 0), ElementsAre(60));
    EXPECT_THAT(ComplaintOf("load song.wav\nset style block\nexport midi c.mid chords"),
                HasSubstr("goes without chords"));
    EXPECT_THAT(ComplaintOf("load song.wav\nexport audio nix/a.wav"),
                HasSubstr("nix/a.wav: Could not write file!"));
    EXPECT_THAT(ComplaintOf("load song.wav\nexport audio song.wav"),
                HasSubstr("would replace the recording"));
    EXPECT_THAT(ComplaintOf("load song.wav\nstate save ./song.wav"),
                HasSubstr("would replace the recording"));
    EXPECT_THAT(ComplaintOf("load song.wav\nplay 1 to song.wav"), HasSubstr("would replace the recording"));
}

TEST_F(SessionScript, FindsARecordingThatHasMoved) {
    PlayScript("load song.wav\nset style block\nstate save a.state");
    std::filesystem::create_directory(folder_.File("new"));
    std::filesystem::rename(folder_.File("song.wav"), folder_.File("new/song.wav"));
    EXPECT_THAT(ComplaintOf("state load a.state"), HasSubstr(":1: song.wav: Could not load audio file!"));
    EXPECT_THAT(PlayScript("state load a.state new/song.wav\nprint"),
                AllOf(HasSubstr("\"file\":\"new/song.wav\""), HasSubstr("Block Chord")));
}

TEST_F(SessionScript, AnErrorTellsFileLineAndReasonAndEndsTheRun) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"nix", "there is no command 'nix'"},
        {"snapshot", "'snapshot' needs more: snapshot add, snapshot recall"},
        {"load", "write it so: load RECORDING"},
        {"load a b", "write it so: load RECORDING"},
        {"load \"song.wav", "a quotation has no end"},
        {"load nix.wav", "nix.wav: Could not load audio file!"},
        {"state load nix", "nix: Could not read this file!"},
        {"state load song.wav", "song.wav: This is no session!"},
        {"set style 9", "'9' is not allowed; allowed: 0 to 7"},
        {"set spread nan", "'nan' is not allowed"},
        {"set tuning 1e9", "allowed: 350 to 500 Hz"},
        {"note 99 voice 0 pitch 60", "allowed: a note from 0 to "},
        {"note 0 voice 0 pitch 60", "only with 'mode edit'"},
        {"note 0 red pitch 60 x", "write it so: note N voice VOICE pitch KEY"},
        {"voice pink vol=1", "'pink' is not allowed"},
        {"voice red vol=9", "'vol=9' is not allowed; allowed: vol=0 to 1.333"},
        {"parameter 32 0", "allowed: 0 to 31"},
        {"parameter 0 1.5", "allowed: 0 to 1"},
        {"region 2 1", "from a start from 0 on to an end behind it"},
        {"region 1", "write it so: region START END"},
        {"tempo host 0", "allowed: 1 to 998"},
        {"tempo host 999", "allowed: 1 to 998"},
        {"metre 4 3", "a metre is 1 to 64 over 1, 2, 4"},
        {"play x", "allowed: seconds from 0 to a day"},
        {"play 1e300", "allowed: seconds from 0 to a day"},
        {"play region", "write it so: play SECONDS"},
        {"key up 128", "allowed: a key from 0 to 127"},
        {"key press 60", "allowed: down, up"},
        {"drive time-machine", "allowed: time, keys"},
        {"undo", "there is nothing to undo"},
        {"redo", "there is nothing to redo"},
        {"sync maybe", "allowed: on, off"}};
    for (const auto& [line, reason] : cases) {
        const std::string complaint =
            ComplaintOf("# one\n\nload song.wav\n" + line + "\nexport audio late.wav\n");
        EXPECT_THAT(complaint, StartsWith("sonorelle: test.script:4: ")) << line;
        EXPECT_THAT(complaint, HasSubstr(reason));
        EXPECT_EQ(std::count(complaint.begin(), complaint.end(), '\n'), 1) << complaint;
        EXPECT_FALSE(Exists("late.wav")) << line;
    }
}

TEST_F(SessionScript, NothingWorksBeforeALoadButLoading) {
    for (const char* line :
         {"set style block", "split 1", "snapshot add x", "region all", "play 1", "locate 1",
          "export audio a.wav", "state save a.state", "program save p", "program choose flat",
          "parameter 0 1", "cut on", "voice red mute", "mode edit", "chord 0 0", "drive keys"})
        EXPECT_EQ(ComplaintOf(line), "sonorelle: test.script:1: nothing is loaded\n") << line;
    EXPECT_EQ(PlayScript("print"), "{\"loaded\":false}\n");
}

TEST_F(SessionScript, TheSameSessionLoadsOneRecordingAfterAnother) {
    Put("other.wav", Song());
    const std::string out =
        PlayScript("load song.wav\nset style block\nplay 1\nload other.wav\nprint\nload song.wav");
    EXPECT_THAT(out, AllOf(HasSubstr("\"file\":\"other.wav\""), HasSubstr("Intelligent 4 Voices")));
    EXPECT_THAT(ComplaintOf("load song.wav\nload nix.wav\n"), HasSubstr(":2: nix.wav: Could not load"));
}

TEST_F(SessionScript, ReadsScriptsOfOtherSystemsAndRefusesWhatIsNoText) {
    PlayScript("load song.wav\r\n\r\nset style block\r\n");
    EXPECT_THAT(ComplaintOf(std::string("load song.wav\n\0", 15)), HasSubstr(":2: this is no text"));
    const ProgramResult folder = Run({"session", "--script", "."});
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_EQ(folder.err, "sonorelle: .: Could not read this file!\n");
}

TEST_F(SessionScript, WrongOptionsAreWrongUse) {
    EXPECT_EQ(Run({"session"}).exitCode, 2);
    EXPECT_EQ(RunScript("print", {"--blocks", "0"}).exitCode, 2);
    EXPECT_EQ(RunScript("print", {"--blocks", "many"}).exitCode, 2);
    EXPECT_THAT(Run({"session", "--list"}).out, HasSubstr("snapshot add NAME [KEY]"));
}

TEST_F(SessionScript, CtrlCEndsIt) {
    Put("test.script", "load song.wav\nplay 80000\n");
    const ProgramResult result = test::RunProgram({.arguments = {"session", "--script", "test.script"},
                                                   .folder = folder_.Path().string(),
                                                   .errIsTerminal = true,
                                                   .signalAtOutput = SIGINT,
                                                   .signalText = "Analysing"});
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.err, HasSubstr("Cancelled."));
}

} // namespace
} // namespace sonorelle
