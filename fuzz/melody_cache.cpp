// Feeds any bytes to CMelodyAnalyzer as the cache of a recording. What it accepts must be whole, must harm
// nobody who uses it, and must come out again as it went in.

#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "formats/audio_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using sonorelle::CMelodyAnalyzer;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

void Check(bool holds) {
    if (!holds) std::abort();
}

// A recording of which only the name, an old date and a length exist.
class NamedAudioFile final : public sonorelle::CkvoAudioFile {
public:
    explicit NamedAudioFile(std::string filePath) : path(std::move(filePath)) {}
    std::int32_t Seek(std::int32_t) override { return 0; }
    std::int32_t Read(float* const*, std::int32_t) override { return 0; }
    std::int32_t GetLength() const override { return 20'000; }
    std::int32_t GetNumChannels() const override { return 1; }
    float GetSampleRate() const override { return 44100.0F; }
    std::string GetPath() const override { return path; }
    bool IsOpen() const override { return true; }
    std::int64_t GetModificationTime() const override { return 1; }

private:
    std::string path;
};

// A folder with the recording's file in it; gone at the end of the process's work on one input.
class Folder {
public:
    Folder() {
        Check(::mkdtemp(name.data()) != nullptr);
        song = name + "/song.wav";
        const int file = ::open(song.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        Check(file >= 0);
        const struct timespec times[2] = {{1, 0}, {1, 0}};
        Check(::futimens(file, times) == 0);
        ::close(file);
    }
    ~Folder() {
        ::unlink(song.c_str());
        ::unlink((song + ".kva").c_str());
        ::rmdir(name.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::string& Song() const { return song; }

private:
    std::string name = "/tmp/sonorelle-fuzz-XXXXXX";
    std::string song;
};

void WriteFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
    const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    Check(file >= 0 && ::write(file, data, size) == static_cast<ssize_t>(size));
    ::close(file);
}

std::vector<std::uint8_t> ReadFile(const std::string& path) {
    std::vector<std::uint8_t> bytes(1 << 20);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    Check(file >= 0);
    const ssize_t got = ::read(file, bytes.data(), bytes.size());
    Check(got >= 0);
    bytes.resize(static_cast<std::size_t>(got));
    ::close(file);
    return bytes;
}

void UseResults(CMelodyAnalyzer& analyzer) {
    const float tuning = analyzer.GetTuningOffset();
    Check(tuning >= -0.5F && tuning <= 0.5F && std::isfinite(analyzer.GetTuningFrequency()));
    for (const std::int32_t offset : {0, 7, -13, kMax, kMin}) {
        const std::int32_t key = analyzer.EstimateKey(offset);
        Check(key >= -1 && key <= 23);
    }
    for (const std::int32_t start : {0, 1, 5000, kMax, kMin})
        for (const std::int32_t end : {0, 300, 19'999, kMax, kMin}) analyzer.MeasureRange(start, end);
    const sonorelle::AnalysisFrame* frames = nullptr;
    const std::int32_t count = analyzer.GetFrames(frames);
    Check(count == analyzer.GetMarks()->GetCount());
    std::int32_t previous = -1;
    for (std::int32_t i = 0; i < count; ++i) {
        Check(frames[i].position > previous && std::isfinite(frames[i].pitch));
        previous = frames[i].position;
    }
    const sonorelle::NoteRecord* notes = nullptr;
    const std::int32_t noteCount = analyzer.GetNotes(notes);
    for (std::int32_t i = 0; i < noteCount; ++i)
        Check(notes[i].firstFrame >= 0 && notes[i].lastFrame < count && notes[i].end <= 20'000);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 100'000) return 0;
    const Folder folder;
    const std::string cache = folder.Song() + ".kva";
    WriteFile(cache, data, size);
    NamedAudioFile audio(folder.Song());
    CMelodyAnalyzer analyzer;
    Check(analyzer.Attach(&audio) == 0);
    if (analyzer.ReadCacheHeader() != 0 || analyzer.LoadCache() == 0) {
        // Refused: the way is free for an analysis.
        Check(analyzer.RunStep() == CMelodyAnalyzer::kReadAudio);
        return 0;
    }
    UseResults(analyzer);
    Check(analyzer.StoreResults(true) == 1);
    const std::vector<std::uint8_t> written = ReadFile(cache);
    Check(written.size() == size && std::equal(data, data + 4, written.begin()) &&
          std::equal(data + 12, data + size, written.begin() + 12)); // the stamp between them is new
    return 0;
}
