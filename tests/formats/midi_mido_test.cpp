// Whether a reader that others have written reads our files: Debian's python3-mido.

#include "formats/midi_file.h"

#include "platform/result_codes.h"
#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include <sys/wait.h>

namespace sonorelle {
namespace {

// Standard output of a command, with its exit status. Standard error goes with it.
std::string Output(const std::string& command, int& status) {
    std::string output;
    FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) output += static_cast<char>(c);
    const int ended = ::pclose(pipe);
    status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    return output;
}

// Debian's own: another python3 that comes first in the path does not see Debian's packages.
constexpr char kPython[] = "/usr/bin/python3";

constexpr char kPrintFile[] = R"(import sys, mido
file = mido.MidiFile(sys.argv[1])
print('type', file.type, 'ticks', file.ticks_per_beat, 'tracks', len(file.tracks))
for track in file.tracks:
    for message in track:
        print(message)
print('seconds %.3f' % file.length)
)";

TEST(CkvoMidiFile, IsReadByMido) {
    int status = -1;
    Output(std::string(kPython) + " -c 'import mido'", status);
    if (status != 0) GTEST_SKIP() << "mido is missing (Debian: apt install python3-mido)";

    CkvoMidiTrack track;
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(120.0F));
    track.AddEvent(std::make_shared<CkvoMidiFileTimeSigEvent>(6, 3, 36, 8));
    for (std::int32_t voice = 0; voice < 4; ++voice) {
        track.AddEvent(
            std::make_shared<CkvoMidiFileNoteEvent>(250, kMidiNoteOn, voice, 60 + 4 * voice, 90 + voice));
        track.AddEvent(
            std::make_shared<CkvoMidiFileNoteEvent>(30250, kMidiNoteOff, voice, 60 + 4 * voice, 0));
    }
    CkvoMidiFile file;
    file.AddTrack(track);
    const CScratchFolder folder;
    ASSERT_EQ(file.Write(folder.File("voices.mid"), 0, 384, 120.0F), kOk);
    folder.Put("print.py", kPrintFile);

    const std::string seen = Output(std::string(kPython) + " '" + folder.File("print.py") + "' '" +
                                        folder.File("voices.mid") + "'",
                                    status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(seen, "type 0 ticks 384 tracks 1\n"
                    "MetaMessage('set_tempo', tempo=500000, time=0)\n"
                    "MetaMessage('time_signature', numerator=6, denominator=8, clocks_per_click=36, "
                    "notated_32nd_notes_per_beat=8, time=0)\n"
                    "note_on channel=0 note=60 velocity=90 time=192\n"
                    "note_on channel=1 note=64 velocity=91 time=0\n"
                    "note_on channel=2 note=68 velocity=92 time=0\n"
                    "note_on channel=3 note=72 velocity=93 time=0\n"
                    "note_off channel=0 note=60 velocity=0 time=23040\n"
                    "note_off channel=1 note=64 velocity=0 time=0\n"
                    "note_off channel=2 note=68 velocity=0 time=0\n"
                    "note_off channel=3 note=72 velocity=0 time=0\n"
                    "MetaMessage('end_of_track', time=0)\n"
                    "seconds 30.250\n");
}

} // namespace
} // namespace sonorelle
