// A terminal as the application's toolkit: messages are lines on standard error, a running analysis is a
// progress bar, Ctrl-C is its cancel button. Nobody sits there to be asked: a question stays unanswered
// unless the answer was given beforehand.
//
//     TerminalToolkit toolkit(console);
//     toolkit.SetSubject("song.wav");          // "sonorelle: song.wav: Could not load audio file!"
//     toolkit.AnswerOpen("moved/song.wav");    // to the next question for a file, once
//     CvirelainePlugIn plugIn(&host, toolkit);
//
// One thread: the one that made it.

#pragma once

#include "app/toolkit.h"
#include "cli/progress_bar.h"

#include <cstdint>
#include <optional>
#include <string>
#include <thread>

namespace sonorelle {

struct Console;

class TerminalToolkit final : public CkvoToolkit {
public:
    // Borrowed; outlives this.
    explicit TerminalToolkit(const Console& terminal) : console(terminal) {}

    // What the messages are about: the name in front of them. Empty for nothing in particular.
    void SetSubject(std::string name) { subject = std::move(name); }
    // What the progress bar says; an empty label shows none.
    void SetProgressLabel(std::string label) { progressLabel = std::move(label); }
    void AnswerOpen(std::string path) { openAnswer = std::move(path); }
    bool WasAskedForFile() const { return askedForFile; } // since AnswerOpen, or ever
    // Messages since this was last asked.
    std::int32_t TakeMessageCount();

    bool IsInterfaceThread() const override { return std::this_thread::get_id() == owner; }
    void ShowMessage(const std::string& title, const std::string& text) override;
    std::string ChooseFileToOpen(const std::string& title, const std::string& filter) override;
    void OpenProgress() override;
    void ShowProgress(std::int32_t percent, std::int32_t spinnerDegrees) override;
    bool IsProgressCancelled() override;
    void CloseProgress() override;

private:
    const Console& console;
    const std::thread::id owner = std::this_thread::get_id();
    std::string subject;
    std::string progressLabel;
    std::string openAnswer;
    bool askedForFile = false;
    std::int32_t messageCount = 0;
    std::optional<ProgressBar> bar;
};

} // namespace sonorelle
