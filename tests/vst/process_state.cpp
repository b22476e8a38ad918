#include "vst/process_state.h"

#include <X11/Xlib.h>

#include <cfenv>
#include <clocale>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <unistd.h>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace sonorelle::test {

namespace {

template<typename Function>
void* AddressOf(Function function) {
    void* address = nullptr;
    static_assert(sizeof function == sizeof address);
    std::memcpy(&address, &function, sizeof address);
    return address;
}

// As the system tells it: the call that tells it would set it.
std::string FileMask() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask:")) return line;
    return {};
}

} // namespace

ProcessState ProcessState::Take() {
    ProcessState state;
    const char* const name = std::setlocale(LC_ALL, nullptr);
    state.locale = name != nullptr ? name : "";
    state.threadLocale = uselocale(locale_t{});
    sigset_t mask;
    sigemptyset(&mask);
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    constexpr int kOfTheLibrary = 0x04000000; // it sets SA_RESTORER with every action
    for (int i = 1; i < kSignals; ++i) {
        struct sigaction action {};
        if (sigaction(i, nullptr, &action) != 0) continue;
        state.handlers[static_cast<std::size_t>(i)] = {AddressOf(action.sa_handler),
                                                       action.sa_flags & ~kOfTheLibrary};
        state.blocked[static_cast<std::size_t>(i)] = sigismember(&mask, i) == 1;
    }
    const XErrorHandler errors = XSetErrorHandler(nullptr);
    XSetErrorHandler(errors);
    state.xErrors = AddressOf(errors);
    const XIOErrorHandler losses = XSetIOErrorHandler(nullptr);
    XSetIOErrorHandler(losses);
    state.xLosses = AddressOf(losses);
    state.rounding = std::fegetround();
#if defined(__x86_64__)
    constexpr std::uint32_t kHappened = 0x3F;
    state.vectorControl = _mm_getcsr() & ~kHappened;
    __asm__("fnstcw %0" : "=m"(state.scalarControl));
#endif
    std::error_code ignored;
    state.folder = std::filesystem::current_path(ignored).string();
    state.fileMask = FileMask();
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        state.environment.emplace_back(*variable);
    return state;
}

std::string ProcessState::DifferenceTo(const ProcessState& other) const {
    std::string found;
    const auto note = [&](bool same, const char* what) {
        if (!same) found += std::string(found.empty() ? "" : ", ") + what;
    };
    note(locale == other.locale, "locale");
    note(threadLocale == other.threadLocale, "the thread's locale");
    note(handlers == other.handlers, "signal handlers");
    note(blocked == other.blocked, "blocked signals");
    note(xErrors == other.xErrors, "X error handler");
    note(xLosses == other.xLosses, "X connection handler");
    note(rounding == other.rounding, "rounding");
    note(vectorControl == other.vectorControl, "vector control word");
    note(scalarControl == other.scalarControl, "floating-point control word");
    note(folder == other.folder, "working folder");
    note(fileMask == other.fileMask, "mask of new files");
    note(environment == other.environment, "environment");
    return found;
}

} // namespace sonorelle::test
