// A fresh folder that vanishes, with all that is in it, at the end of the scope.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace sonorelle::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "sonorelle-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder at " + name);
        folder = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return folder; }
    // Full path of a file in the folder, which need not exist.
    std::filesystem::path File(const std::string& name) const { return folder / name; }

private:
    std::filesystem::path folder;
};

} // namespace sonorelle::test
