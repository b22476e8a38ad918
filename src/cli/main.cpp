// The program `sonorelle`: lends the commands its terminal, and turns Ctrl-C into a request to stop.

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

// Listens to one signal for its lifetime. A signal that is ignored stays so (a program in the background of a
// script). The second one finds the system's own handling and ends the program at once.
class SignalListener {
public:
    explicit SignalListener(int signal) : signal_(signal) {
        struct sigaction action = {};
        action.sa_handler = Cancel;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        if (sigaction(signal_, nullptr, &previous_) != 0 || previous_.sa_handler == SIG_IGN) return;
        isListening_ = sigaction(signal_, &action, nullptr) == 0;
    }
    ~SignalListener() {
        if (isListening_) sigaction(signal_, &previous_, nullptr);
    }
    SignalListener(const SignalListener&) = delete;
    SignalListener& operator=(const SignalListener&) = delete;

private:
    int signal_;
    struct sigaction previous_ = {};
    bool isListening_ = false;
};

} // namespace

int main(int argc, char** argv) {
    const SignalListener interrupt(SIGINT);
    const SignalListener terminate(SIGTERM);
    const sonorelle::Console console{stdout, stderr, &cancelled};
    return sonorelle::RunCommandLine(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                                     console);
}
