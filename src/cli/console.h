// What a command has of the terminal it was started from.

#pragma once

#include <atomic>
#include <cstdio>
#include <string>
#include <string_view>

namespace sonorelle {

enum ExitCode : int {
    kExitDone = 0,
    kExitFailed = 1,       // at least one file failed; the others were done
    kExitWrongUse = 2,     // nothing was done
    kExitCancelled = 130,  // by Ctrl-C; the number that shells give a program that it ended
    kExitNobodyReads = 141 // the reader of standard output left early; likewise
};

inline constexpr const char* kNoMemory = "Not enough memory!";

enum class Written {
    kYes,
    kNobodyReads, // the other end of a pipe is closed, as by `| head`
    kNo           // as by a full disk
};

struct Console {
    std::FILE* out = nullptr;
    std::FILE* err = nullptr;
    // Set from a signal handler; commands look at it between their steps.
    const std::atomic<bool>* cancelled = nullptr;
    // What stands in front of each complaint while a script runs: its file and line. May be null.
    const std::string* place = nullptr;

    bool IsCancelled() const { return cancelled != nullptr && cancelled->load(std::memory_order_relaxed); }
    // Columns of the terminal that `err` is; 0 when it is none.
    int ErrorColumns() const;
    // Brings the text on its way at once. Needs a program that ignores SIGPIPE to tell that nobody reads.
    Written Write(std::string_view text) const;
    // The exit code after a last answer of Write; complains when something was lost.
    int ExitCodeOf(Written written) const;
    // "sonorelle: NAME: TEXT", or "sonorelle: TEXT" when the name is empty, on `err`. Control characters of
    // either are escaped, so that a hostile file name cannot steer the terminal.
    void Complain(std::string_view name, std::string_view text) const;
};

} // namespace sonorelle
