// A result file of a command: it is opened at the start, so that a folder which cannot be written is known
// before the work is done, and takes its place at the end, whole.

#pragma once

#include "platform/atomic_file_writer.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace sonorelle {

class ResultFile {
public:
    // An empty path: the file is not wanted, and everything succeeds.
    explicit ResultFile(std::string path) : path_(std::move(path)) {}

    bool IsWanted() const { return !path_.empty(); }
    bool Open() { return !IsWanted() || writer_.Open(path_); }
    void Write(const std::string& text) {
        if (writer_.IsOpen()) writer_.Write(text.data(), text.size());
    }
    bool Commit() { return !IsWanted() || writer_.Commit(); }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
    CAtomicFileWriter writer_;
};

// Whether two names lead to one file, through whatever links.
inline bool AreTheSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace sonorelle
