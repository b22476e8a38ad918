#include "support/analysed_melody_fixture.h"

#include "analysis/melody_cache.h"
#include "support/analysis_results.h"
#include "support/memory_audio_file.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace sonorelle::test {

// Of any length, without its samples.
class AnalysedMelody::SilentFile : public MemoryAudioFile {
public:
    SilentFile(std::int32_t frames, float rate, std::string filePath)
        : MemoryAudioFile({{}}, rate, std::move(filePath)), length(frames) {}
    std::int32_t GetLength() const override { return length; }

private:
    std::int32_t length;
};

namespace {

constexpr double kLongestPeriod = 1e6; // samples; what is lower than any voice has none

std::vector<PitchMarkRecord> MarksOf(const std::vector<NoteRecord>& notes, std::int32_t length,
                                     float sampleRate) {
    std::vector<PitchMarkRecord> marks;
    std::size_t note = 0;
    for (std::int32_t position = 0; position <= length; position += kFramesPerMark) {
        PitchMarkRecord mark;
        mark.position = position;
        mark.energy = 0.5F;
        while (note < notes.size() && notes[note].end < position) ++note;
        if (note < notes.size() && notes[note].start <= position) {
            const double hertz = 440.0 * std::exp2((static_cast<double>(notes[note].pitch) - 69.0) / 12.0);
            mark.voicing = 20.0F;
            const double period = static_cast<double>(sampleRate) / hertz;
            if (period < kLongestPeriod) mark.period = static_cast<float>(std::round(period));
        }
        marks.push_back(mark);
    }
    return marks;
}

} // namespace

std::vector<NoteRecord> EvenNotes(const std::vector<float>& midiPitches, std::int32_t length,
                                  std::int32_t rest) {
    std::vector<NoteRecord> notes;
    std::int32_t position = rest;
    for (const float pitch : midiPitches) {
        NoteRecord note;
        note.pitch = pitch;
        note.level = 0.5F;
        note.length = length;
        note.start = position;
        note.end = position + length;
        note.firstFrame = note.start / kFramesPerMark;
        note.lastFrame = note.end / kFramesPerMark;
        notes.push_back(note);
        position = note.end + rest;
    }
    return notes;
}

AnalysedMelody::AnalysedMelody(std::vector<NoteRecord> notes, std::int32_t tail, float sampleRate)
    : records(std::move(notes)), length((records.empty() ? 0 : records.back().end) + tail) {
    path = folder.File("song.wav").string();
    std::ofstream(path) << "silence";
    constexpr std::int64_t kLongAgo = 1'000'000'000'000'000'000; // older than the cache: nanoseconds in 2001
    SetModificationTime(path, kLongAgo);
    audio = std::make_unique<SilentFile>(length, sampleRate, path);
    if (!Reload(records)) throw std::runtime_error("the analyser does not take the cache of the melody");
}

bool AnalysedMelody::Reload(const std::vector<NoteRecord>& notes) {
    records = notes;
    return WriteMelodyCache(path + ".kva", 0, MarksOf(records, length, audio->GetSampleRate()), records) &&
           analyzer.Attach(audio.get()) == 0 && analyzer.ReadCacheHeader() == 0 && analyzer.LoadCache() == 1;
}

AnalysedMelody::~AnalysedMelody() = default;

} // namespace sonorelle::test
