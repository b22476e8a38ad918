// `sonorelle analyse`: recordings in; a table, JSON, CSV or a picture of their melodies out.

#pragma once

#include <string>
#include <vector>

namespace sonorelle {

struct Console;

struct AnalyseOptions {
    std::vector<std::string> files;
    bool useCache = true;
    bool quiet = false;
    bool json = false; // JSON on standard output in place of the table
    bool csv = false;  // CSV on standard output in place of the table
    // Files to write besides; empty for none.
    std::string jsonFile;
    std::string csvFile;
    std::string pictureFile;
};

// What the parser of the command line cannot see: two results for one place, one picture of several files, a
// result that would replace an input. Empty when all is well, else a text for the user.
std::string FindWrongUse(const AnalyseOptions& options);

// Analyses the files in their order and gives an ExitCode. Messages go to the console; a file that fails does
// not stop the ones behind it. The files named in the options appear whole at the end, or not at all: not
// when the user cancels, and not when no recording could be analysed.
int RunAnalyse(const AnalyseOptions& options, const Console& console);

} // namespace sonorelle
