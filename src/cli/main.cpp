// The program `sonorelle`: lends the commands its terminal, turns Ctrl-C into a request to stop, and a
// closed pipe into an error of writing.

#include "cli/commands.h"
#include "cli/console.h"

#include <atomic>
#include <csignal>
#include <string>
#include <vector>

namespace {

// The one thing that a signal handler can reach.
std::atomic<bool> cancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may take no lock");

extern "C" void Cancel(int) { cancelled.store(true, std::memory_order_relaxed); }

// Handles one signal in its own way for its lifetime. One that is ignored already stays so (a program in the
// background of a script).
class SignalHandling {
public:
    SignalHandling(int signal, void (*handler)(int), int flags) : signal_(signal) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        sigemptyset(&action.sa_mask);
        if (sigaction(signal_, nullptr, &previous_) != 0 || previous_.sa_handler == SIG_IGN) return;
        isHandling_ = sigaction(signal_, &action, nullptr) == 0;
    }
    ~SignalHandling() {
        if (isHandling_) sigaction(signal_, &previous_, nullptr);
    }
    SignalHandling(const SignalHandling&) = delete;
    SignalHandling& operator=(const SignalHandling&) = delete;

private:
    int signal_;
    struct sigaction previous_ = {};
    bool isHandling_ = false;
};

// After the first signal the system's own handling is back: a second one ends the program at once.
constexpr int kOnce = SA_RESTART | static_cast<int>(SA_RESETHAND);

} // namespace

int main(int argc, char** argv) {
    const SignalHandling interrupt(SIGINT, Cancel, kOnce);
    const SignalHandling terminate(SIGTERM, Cancel, kOnce);
    // A reader that leaves is an error of writing, not the end: the files in work are still finished or
    // cleaned up.
    const SignalHandling pipe(SIGPIPE, SIG_IGN, 0);
    const sonorelle::Console console{stdout, stderr, &cancelled};
    return sonorelle::RunCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                                     console);
}
