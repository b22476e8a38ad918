// The program's command line: finds the command, checks its use, runs it.

#pragma once

#include <string>
#include <vector>

namespace sonorelle {

struct Console;

// `arguments` without the program's own name. Gives an ExitCode. Does not throw.
int RunCommandLine(const std::vector<std::string>& arguments, const Console& console);

} // namespace sonorelle
