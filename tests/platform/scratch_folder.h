// A folder of its own for one test, with what tests of files ask of it.

#pragma once

#include "support/temporary_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace sonorelle {

class CScratchFolder {
public:
    std::string Path() const { return folder_.Path().string(); }
    std::string File(const std::string& name) const { return Path() + "/" + name; }

    // Writes a file and gives its path.
    std::string Put(const std::string& name, const std::string& bytes) const {
        std::ofstream(File(name), std::ios::binary) << bytes;
        return File(name);
    }

    std::size_t CountFiles() const {
        const std::filesystem::directory_iterator entries(Path());
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    static std::string Content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

private:
    test::TemporaryFolder folder_;
};

} // namespace sonorelle
