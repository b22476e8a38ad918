#include "cli/terminal_toolkit.h"

#include "cli/console.h"

#include <utility>

namespace sonorelle {

std::int32_t TerminalToolkit::TakeMessageCount() { return std::exchange(messageCount, 0); }

// The title says no more than that it is an error or a warning, and so does the line by being there.
void TerminalToolkit::ShowMessage(const std::string&, const std::string& text) {
    if (bar) bar->Clear();
    console.Complain(subject, text);
    ++messageCount;
}

std::string TerminalToolkit::ChooseFileToOpen(const std::string&, const std::string&) {
    askedForFile = true;
    return std::exchange(openAnswer, std::string());
}

void TerminalToolkit::OpenProgress() {
    bar.emplace(console.err, progressLabel.empty() ? 0 : console.ErrorColumns(), progressLabel);
}

void TerminalToolkit::ShowProgress(std::int32_t percent, std::int32_t) {
    if (bar) bar->Show(percent);
}

bool TerminalToolkit::IsProgressCancelled() { return console.IsCancelled(); }

void TerminalToolkit::CloseProgress() { bar.reset(); }

} // namespace sonorelle
