// sonorelle_sound_check [--markdown FILE] [FOLDER]: lets the engine sing the songs of a synthetic singer and
// the recordings (.wav) of FOLDER at known distances from the melody, every setting at rest, and measures the
// result with Praat as an independent judge: pitch, formants, colour, clicks, onsets, level, consonants, and
// how true the unison is. FOLDER is by default what SONORELLE_RECORDINGS names. The tables go to stdout and,
// as Markdown, into FILE; a figure that misses its target is marked. Exit code 0, or 1 when something could
// not be measured.

#include "praat_judge.h"
#include "sound_report.h"
#include "sound_session.h"

#include "support/temporary_folder.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace sonorelle::tools {
namespace {

struct Arguments {
    std::filesystem::path markdown;
    std::filesystem::path folder;
};

Arguments ReadArguments(int count, char** words) {
    Arguments arguments;
    if (const char* const folder = std::getenv("SONORELLE_RECORDINGS")) arguments.folder = folder;
    for (int i = 1; i < count; ++i) {
        if (std::string_view(words[i]) == "--markdown" && i + 1 < count)
            arguments.markdown = words[++i];
        else
            arguments.folder = words[i];
    }
    return arguments;
}

// The whole line, in place of the one before, on a terminal alone.
void Tell(const std::string& what) {
    if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "\r%s\033[K", what.c_str());
}

std::string Machine() {
    std::string processor = "unknown processor";
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("model name")) continue;
        processor = line.substr(line.find(':') + 2);
        break;
    }
    utsname system{};
    uname(&system);
    return processor + ", " + system.sysname + " " + system.machine;
}

std::string Today() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    char text[16] = "";
    if (gmtime_r(&now, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
    return text;
}

struct Results {
    std::vector<SoundResult> songs;
    std::vector<SoundResult> recordings;
    std::size_t failed = 0;
};

using Check = std::function<std::optional<SoundResult>(const std::filesystem::path& folder)>;

// One thread a core: most of the time is Praat's, a process of its own for each sound. In the order of
// `checks`.
std::vector<std::optional<SoundResult>> RunAll(const std::vector<Check>& checks) {
    std::vector<std::optional<SoundResult>> results(checks.size());
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < checks.size(); i = next++) {
            Tell("sound " + std::to_string(i + 1) + " of " + std::to_string(checks.size()));
            const test::TemporaryFolder folder;
            results[i] = checks[i](folder.Path());
        }
    };
    std::vector<std::thread> workers;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        workers.emplace_back(work);
    for (std::thread& worker : workers) worker.join();
    Tell("");
    return results;
}

Results CheckAll(const std::filesystem::path& recordings) {
    const std::vector<Song> songs = Songs();
    std::vector<Check> checks;
    for (const Song& song : songs)
        checks.push_back([&song](const std::filesystem::path& folder) { return CheckSong(song, folder); });
    if (recordings.empty())
        std::fprintf(stderr, "No recordings: name a folder, or set SONORELLE_RECORDINGS.\n");
    for (const std::filesystem::path& file : RecordingsIn(recordings))
        checks.push_back(
            [file](const std::filesystem::path& folder) { return CheckRecording(file, folder); });

    Results results;
    std::vector<std::optional<SoundResult>> checked = RunAll(checks);
    for (std::size_t i = 0; i < checked.size(); ++i) {
        if (checked[i])
            (i < songs.size() ? results.songs : results.recordings).push_back(std::move(*checked[i]));
        else
            ++results.failed;
    }
    return results;
}

bool WriteMarkdown(const std::filesystem::path& path, const std::vector<ReportTable>& tables,
                   const std::string& judge, std::size_t failed) {
    std::ofstream file(path);
    file << "# How true the voices are\n\n"
         << "Measured " << Today() << " on " << Machine() << ", judged by " << judge << ", with\n\n"
         << "    tools/sound_check.sh FOLDER-OF-RECORDINGS\n\n"
         << "which builds and runs `sonorelle_sound_check`, and writes this page. Each sound is analysed "
            "afresh and sung by\n"
         << "the whole engine in blocks of 64 samples, every setting at rest. Shifted voices follow a lead "
            "at its own pitch.\n"
         << CountMissed(tables) << " figures miss their targets.";
    if (failed > 0) file << ' ' << failed << " sounds could not be measured.";
    file << "\n\n";
    for (const ReportTable& table : tables) file << AsMarkdown(table);
    file.close();
    return static_cast<bool>(file);
}

int Main(int count, char** words) {
    const Arguments arguments = ReadArguments(count, words);
    const test::TemporaryFolder folder;
    const std::string judge = PraatVersion(folder.Path());
    if (judge.empty()) {
        std::fprintf(stderr, "praat is missing (Debian: apt install praat)\n");
        return 1;
    }
    const Results results = CheckAll(arguments.folder);
    const std::vector<ReportTable> tables = MakeTables(results.songs, results.recordings);
    for (const ReportTable& table : tables) std::printf("%s\n", AsText(table).c_str());
    std::printf("%zu figures miss their targets.\n", CountMissed(tables));
    if (results.failed > 0) std::printf("%zu sounds could not be measured.\n", results.failed);
    if (!arguments.markdown.empty() && !WriteMarkdown(arguments.markdown, tables, judge, results.failed)) {
        std::fprintf(stderr, "cannot write %s\n", arguments.markdown.c_str());
        return 1;
    }
    return results.failed == 0 ? 0 : 1;
}

} // namespace
} // namespace sonorelle::tools

int main(int count, char** words) { return sonorelle::tools::Main(count, words); }
