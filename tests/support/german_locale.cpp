#include "support/german_locale.h"

#include "support/temporary_folder.h"

#include <clocale>
#include <cstdlib>

namespace sonorelle::test {

namespace {

constexpr const char* kName = "de_DE.UTF-8";
constexpr const char* kFolderVariable = "LOCPATH"; // asked by the C library when it looks for a locale

// Empty when there is no compiler of locales, or not the sources.
const std::string& CompiledLocales() {
    static const TemporaryFolder folder;
    static const std::string path = [] {
        const std::string target = folder.File(kName).string();
        const std::string command = "localedef -i de_DE -f UTF-8 '" + target + "' >/dev/null 2>&1";
        return std::system(command.c_str()) == 0 ? folder.Path().string() : std::string();
    }();
    return path;
}

bool SetFromCompiled() {
    const std::string& folder = CompiledLocales();
    if (folder.empty()) return false;
    const char* const variable = std::getenv(kFolderVariable);
    const std::string kept = variable != nullptr ? variable : "";
    setenv(kFolderVariable, folder.c_str(), 1);
    const bool set = std::setlocale(LC_ALL, kName) != nullptr;
    if (variable != nullptr) {
        setenv(kFolderVariable, kept.c_str(), 1);
    } else {
        unsetenv(kFolderVariable);
    }
    return set;
}

} // namespace

GermanLocale::GermanLocale() : before(std::setlocale(LC_ALL, nullptr)) {
    there = std::setlocale(LC_ALL, kName) != nullptr || SetFromCompiled();
}

GermanLocale::~GermanLocale() { std::setlocale(LC_ALL, before.c_str()); }

} // namespace sonorelle::test
