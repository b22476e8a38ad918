#include "praat_judge.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

namespace sonorelle::tools {
namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

// Whether it ran and succeeded. What it prints goes into the file, if there is a name.
bool RunProgram(std::vector<std::string> words, const std::filesystem::path& printed) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!printed.empty())
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, printed.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = 0;
    const int spawned = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return spawned == 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// Praat writes "--undefined--" where there is nothing.
double Number(const std::string& text) {
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && std::isfinite(value) ? value : kNothing;
}

HeardSound Read(const std::filesystem::path& result) {
    HeardSound heard;
    std::ifstream frames(result.string() + ".frames");
    for (std::string line; std::getline(frames, line);) {
        std::istringstream stream(line);
        std::array<double, 6> cells{};
        cells.fill(kNothing);
        std::string cell;
        for (double& value : cells)
            if (std::getline(stream, cell, '\t')) value = Number(cell);
        heard.frames.push_back({cells[0], cells[1], {cells[2], cells[3], cells[4]}, cells[5]});
    }
    std::ifstream envelope(result.string() + ".envelope");
    for (std::string line; std::getline(envelope, line);) heard.envelopeDecibels.push_back(Number(line));
    return heard;
}

} // namespace

const HeardFrame* HeardSound::At(double seconds) const {
    const double index = std::floor(seconds / kStepSeconds + 0.5) - 1.0;
    if (!(index >= 0.0 && index < static_cast<double>(frames.size()))) return nullptr;
    return &frames[static_cast<std::size_t>(index)];
}

std::vector<HeardSound> Listen(const std::vector<PraatJob>& jobs, const std::filesystem::path& folder) {
    const std::filesystem::path list = folder / "jobs.tsv";
    std::ofstream file(list);
    file << "sound\tfloor\tceiling\tformants\tresult\n";
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        file << jobs[i].sound.string() << '\t' << jobs[i].pitch.floorHertz << '\t'
             << jobs[i].pitch.ceilingHertz << '\t' << jobs[i].formantCeilingHertz << '\t'
             << (folder / ("heard" + std::to_string(i))).string() << '\n';
    }
    file.close();
    if (!file || !RunProgram({"praat", "--run", SONORELLE_PRAAT_SCRIPT, list.string()}, {})) return {};
    std::vector<HeardSound> heard;
    for (std::size_t i = 0; i < jobs.size(); ++i)
        heard.push_back(Read(folder / ("heard" + std::to_string(i))));
    return heard;
}

std::string PraatVersion(const std::filesystem::path& folder) {
    const std::filesystem::path printed = folder / "version";
    std::string line;
    if (!RunProgram({"praat", "--version"}, printed)) return line;
    std::ifstream file(printed);
    std::getline(file, line);
    return line;
}

} // namespace sonorelle::tools
