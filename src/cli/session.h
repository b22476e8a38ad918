// A session without a window: the plug-in, with a terminal for its toolkit and the command line for its host.
//
//     CommandLineSession session(console, {});
//     if (session.Load("song.wav") == Hearing::kDone) {
//         session.With([](CkvovirelaineApp& app) { app.ChoirPanel().ChooseStyle(3); });
//         session.SaveState("song.kvo");
//     }
//
// Messages go to the console. One thread.

#pragma once

#include "cli/command_line_host.h"
#include "cli/heard_recording.h"
#include "cli/terminal_toolkit.h"
#include "host/plugin_core.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace sonorelle {

struct Console;
class CkvovirelaineApp;

class CommandLineSession {
public:
    CommandLineSession(const Console& terminal, const HearingWish& hearingWish);

    // A new session of a recording. kFailed comes after a message, kCancelled without.
    Hearing Load(const std::string& path);
    // The session that a document holds. `recording`: stands in for one that is no longer where the document
    // says; may be empty.
    Hearing Restore(const std::string& documentPath, const std::string& recording);
    bool IsLoaded() const { return plugIn.IsLoaded(); }
    // The recording in work, as the user or the document named it.
    const std::string& RecordingPath() const { return recordingPath; }

    // Writes what the plug-in hands out, or gives it what was read. False after a message.
    bool SaveState(const std::string& path) { return Save(path, false); }
    bool SaveProgram(const std::string& path) { return Save(path, true); }
    bool LoadProgram(const std::string& path);

    // A recording is loaded.
    void With(const std::function<void(CkvovirelaineApp&)>& work) { plugIn.WithApplication(work); }
    // A block of a stopped transport: tempo, metre and rate come through.
    void PassTransport();
    void SetTempo(double quarterNotesPerMinute); // of the host
    // With all that was heard, from the file on.
    MelodyReport ReportMelody();

    CvirelainePlugIn& PlugIn() { return plugIn; }
    CommandLineHost& Host() { return host; }
    TerminalToolkit& Toolkit() { return toolkit; }
    const Console& Terminal() const { return console; }
    const HearingWish& Wish() const { return wish; }

private:
    Hearing TellOfFailure(std::int32_t result);
    bool Save(const std::string& path, bool isProgram);
    std::string WhyNotRestored(const std::string& name);
    void TakeTempoOfDocument();

    const Console& console;
    const HearingWish wish;
    CommandLineHost host;
    TerminalToolkit toolkit;
    CvirelainePlugIn plugIn;
    std::string recordingPath;
    std::chrono::steady_clock::time_point start;
};

// Whether a recording can be taken at all: it opens, and is one that LoadAudioFile accepts. Says nothing.
bool IsRecording(const std::string& path);

// The whole file, as a text. Nothing when it cannot be read, and when it is larger than a document can be.
std::optional<std::string> ReadDocumentFile(const std::string& path);

} // namespace sonorelle
