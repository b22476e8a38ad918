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
    SilentFile(std::int32_t frames, float rate, std::string path)
        : MemoryAudioFile({{}}, rate, std::move(path)), length(frames) {}
    std::int32_t GetLength() const override { return length; }

private:
    std::int32_t length;
};

namespace {

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
            mark.period = static_cast<float>(std::round(static_cast<double>(sampleRate) / hertz));
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
    const std::string path = folder.File("song.wav").string();
    std::ofstream(path) << "silence";
    constexpr std::int64_t kLongAgo = 1'000'000'000'000'000'000; // older than the cache: nanoseconds in 2001
    SetModificationTime(path, kLongAgo);
    audio = std::make_unique<SilentFile>(length, sampleRate, path);
    const std::vector<PitchMarkRecord> marks = MarksOf(records, length, sampleRate);
    const bool loaded = WriteMelodyCache(path + ".kva", 0, marks, records) &&
                        analyzer.Attach(audio.get()) == 0 && analyzer.ReadCacheHeader() == 0 &&
                        analyzer.LoadCache() == 1;
    if (!loaded) throw std::runtime_error("the analyser does not take the cache of the melody");
}

AnalysedMelody::~AnalysedMelody() = default;

} // namespace sonorelle::test
