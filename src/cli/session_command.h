// `sonorelle session`: a session without a window, led by a script.

#pragma once

#include <optional>
#include <string>

namespace sonorelle {

struct Console;

struct SessionOptions {
    std::string script;                // its file
    std::optional<std::string> blocks; // frames of what is played
    bool list = false;                 // print the commands, and do nothing else
    bool useCache = true;
    bool quiet = false;
};

// What is wrong with the options. Empty when all is well.
std::string FindWrongUse(const SessionOptions& options);

// Runs the lines of the script in their order, to the first that fails; gives an ExitCode. Messages go to the
// console, with file and line. `options` passed FindWrongUse.
int RunSession(const SessionOptions& options, const Console& console);

} // namespace sonorelle
