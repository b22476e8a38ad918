#include "cli/console.h"

#include "cli/unicode_text.h"

#include <cerrno>
#include <sys/ioctl.h>
#include <unistd.h>

namespace sonorelle {

namespace {

// Where a terminal does not tell its width (a serial line, some editors' panes).
constexpr int kUsualColumns = 80;

} // namespace

int Console::ErrorColumns() const {
    const int descriptor = fileno(err);
    if (descriptor < 0 || isatty(descriptor) == 0) return 0;
    winsize size = {};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
    return size.ws_col;
}

Written Console::Write(std::string_view text) const {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), out) == text.size() && std::fflush(out) == 0)
        return Written::kYes;
    return errno == EPIPE ? Written::kNobodyReads : Written::kNo;
}

int Console::ExitCodeOf(Written written) const {
    if (written == Written::kYes) return kExitDone;
    if (written == Written::kNobodyReads) return kExitNobodyReads;
    Complain("standard output", "Could not write file!");
    return kExitFailed;
}

void Console::Complain(std::string_view name, std::string_view text) const {
    std::string line = "sonorelle: ";
    if (place != nullptr && !place->empty()) line += PrintableText(*place) + ": ";
    if (!name.empty()) line += PrintableText(name) + ": ";
    line += PrintableText(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), err);
    std::fflush(err);
}

} // namespace sonorelle
