// Starts the built program as its users do, and tells what came of it.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace sonorelle::test {

struct ProgramResult {
    int exitCode = -1; // -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err; // what the terminal got, when there was one
};

struct ProgramWish {
    std::vector<std::string> arguments = {};
    std::string folder = ".";
    std::string outPath = {};     // where standard output goes; empty: into the result
    bool errIsTerminal = false;   // a pseudo terminal of 80 columns
    int signalAtOutput = 0;       // sent when standard error holds ...
    std::string signalText = {};  // ... this; empty: anything
    bool closesOutAtOnce = false; // nobody reads standard output
};

namespace detail {

struct Pipe {
    std::array<int, 2> ends = {-1, -1};
    ~Pipe() {
        CloseEnd(0);
        CloseEnd(1);
    }
    void CloseEnd(std::size_t i) {
        if (ends[i] >= 0) close(ends[i]);
        ends[i] = -1;
    }
    // Marked so that the program inherits only what it is given.
    bool Open() { return pipe2(ends.data(), O_CLOEXEC) == 0; }
    bool OpenTerminal() {
        winsize size = {};
        size.ws_col = 80;
        size.ws_row = 24;
        if (openpty(&ends[0], &ends[1], nullptr, nullptr, &size) != 0) return false;
        return fcntl(ends[0], F_SETFD, FD_CLOEXEC) == 0 && fcntl(ends[1], F_SETFD, FD_CLOEXEC) == 0;
    }
};

// False at the end of the stream (a terminal whose other side is closed answers with an error).
inline bool ReadSome(int descriptor, std::string& text) {
    std::array<char, 65536> buffer;
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

} // namespace detail

// The program that was built with the tests: the sanitized one for the sanitized tests.
const char* ProgramPath();

inline ProgramResult RunProgram(const ProgramWish& wish) {
    ProgramResult result;
    detail::Pipe out;
    detail::Pipe err;
    const bool opened = out.Open() && (wish.errIsTerminal ? err.OpenTerminal() : err.Open());
    EXPECT_TRUE(opened);
    if (!opened) return result;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, wish.folder.c_str());
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    if (wish.outPath.empty()) {
        posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
    } else {
        posix_spawn_file_actions_addopen(&actions, 1, wish.outPath.c_str(), O_WRONLY | O_CREAT, 0600);
    }
    posix_spawn_file_actions_adddup2(&actions, err.ends[1], 2);

    std::vector<std::string> words = {ProgramPath()};
    words.insert(words.end(), wish.arguments.begin(), wish.arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    pid_t child = -1;
    const int spawned = posix_spawn(&child, ProgramPath(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(spawned, 0) << ProgramPath();
    if (spawned != 0) return result;

    out.CloseEnd(1);
    err.CloseEnd(1);
    if (wish.closesOutAtOnce) out.CloseEnd(0);
    int signalToSend = wish.signalAtOutput;
    bool outIsOpen = !wish.closesOutAtOnce;
    bool errIsOpen = true;
    while (outIsOpen || errIsOpen) {
        std::array<pollfd, 2> streams = {
            {{outIsOpen ? out.ends[0] : -1, POLLIN, 0}, {errIsOpen ? err.ends[0] : -1, POLLIN, 0}}};
        if (poll(streams.data(), streams.size(), -1) < 0) break;
        if (streams[0].revents != 0) outIsOpen = detail::ReadSome(out.ends[0], result.out);
        if (streams[1].revents != 0) errIsOpen = detail::ReadSome(err.ends[0], result.err);
        const bool isTime = !result.err.empty() && result.err.find(wish.signalText) != std::string::npos;
        if (signalToSend != 0 && isTime) kill(child, std::exchange(signalToSend, 0));
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
}

inline ProgramResult RunProgramWith(const std::vector<std::string>& arguments,
                                    const std::string& folder = ".") {
    return RunProgram({.arguments = arguments, .folder = folder});
}

} // namespace sonorelle::test
