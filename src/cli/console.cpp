#include "cli/console.h"

#include "cli/unicode_text.h"

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

bool Console::Write(std::string_view text) const {
    return std::fwrite(text.data(), 1, text.size(), out) == text.size();
}

bool Console::Flush() const { return std::fflush(out) == 0 && std::ferror(out) == 0; }

void Console::Complain(std::string_view name, std::string_view text) const {
    std::string line = "sonorelle: ";
    if (!name.empty()) line += PrintableText(name) + ": ";
    line += PrintableText(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), err);
    std::fflush(err);
}

} // namespace sonorelle
