#include "support/voiced_melody_fixture.h"

#include "analysis/melody_cache.h"
#include "formats/audio_file.h"
#include "harmony/styles.h"
#include "support/analysis_results.h"
#include "support/synthetic_singer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace sonorelle::test {

namespace {

constexpr float kVoicing = 20.0F; // dB of a voiced mark
constexpr float kMarkEnergy = 0.5F;

struct Formant {
    double hertz;
    double bandwidth; // Hz
    double strength;
};
constexpr std::array<std::array<Formant, 3>, 2> kVowelFormants = {{
    {{{500, 80, 1.0}, {1100, 100, 0.6}, {2500, 150, 0.3}}},
    {{{400, 80, 0.6}, {1600, 120, 0.5}, {2700, 150, 0.2}}},
}};
constexpr double kRingSeconds = 0.03; // the slowest formant is 65 dB down by then

// One pulse that rings from its mark on.
std::vector<double> Pulse(const std::array<Formant, 3>& formants, double sampleRate) {
    std::vector<double> pulse(static_cast<std::size_t>(kRingSeconds * sampleRate));
    for (std::size_t i = 0; i < pulse.size(); ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        for (const Formant& formant : formants) {
            if (formant.hertz >= sampleRate / 2) continue;
            pulse[i] += formant.strength * std::exp(-std::numbers::pi * formant.bandwidth * seconds) *
                        std::sin(2 * std::numbers::pi * formant.hertz * seconds);
        }
    }
    return pulse;
}

void AddRest(VoicedSong& song, std::int32_t from, std::int32_t end, std::int32_t distance) {
    for (std::int32_t position = from; position < end; position += distance) {
        PitchMarkRecord mark;
        mark.position = position;
        mark.energy = kMarkEnergy;
        song.marks.push_back(mark);
    }
}

// Gives the position behind the last period.
std::int32_t AddTone(VoicedSong& song, const SungTone& tone, std::int32_t start) {
    const std::int32_t periods = std::max(tone.length / tone.period, 2);
    NoteRecord note;
    note.firstFrame = static_cast<std::int32_t>(song.marks.size());
    for (std::int32_t i = 0; i < periods; ++i) {
        PitchMarkRecord mark;
        mark.position = start + i * tone.period;
        mark.energy = kMarkEnergy;
        mark.voicing = kVoicing;
        mark.period = static_cast<float>(tone.period);
        song.marks.push_back(mark);
    }
    note.lastFrame = static_cast<std::int32_t>(song.marks.size()) - 1;
    note.start = start;
    note.end = song.marks.back().position;
    note.length = note.end - note.start;
    note.level = tone.level;
    const double hertz = static_cast<double>(song.sampleRate) / tone.period;
    note.pitch = static_cast<float>(MidiPitchFromHertz(hertz));
    if (tone.hasNote) song.notes.push_back(note);
    return start + periods * tone.period;
}

void RenderSong(VoicedSong& song, std::int32_t length, const VoicedSongSettings& settings) {
    RandomNumbers random(settings.seed);
    double loudest = 0;
    std::vector<std::vector<double>> sums;
    for (std::int32_t c = 0; c < settings.channels; ++c) {
        const auto pulse = Pulse(kVowelFormants[static_cast<std::size_t>(c)], settings.sampleRate);
        std::vector<double> sum(static_cast<std::size_t>(length));
        for (const PitchMarkRecord& mark : song.marks) {
            if (mark.voicing <= 0) continue;
            const auto at = static_cast<std::size_t>(mark.position);
            for (std::size_t i = 0; i < pulse.size() && at + i < sum.size(); ++i) sum[at + i] += pulse[i];
        }
        for (const double sample : sum) loudest = std::max(loudest, std::fabs(sample));
        sums.push_back(std::move(sum));
    }
    const double gain = loudest > 0 ? settings.peak / loudest : 0.0;
    for (const auto& sum : sums) {
        std::vector<float> samples;
        for (const double sample : sum) samples.push_back(static_cast<float>(sample * gain));
        for (std::size_t m = 0; m < song.marks.size(); ++m) {
            if (song.marks[m].voicing > 0) continue;
            const auto end = m + 1 < song.marks.size() ? song.marks[m + 1].position : length;
            for (auto i = static_cast<std::size_t>(song.marks[m].position); i < static_cast<std::size_t>(end);
                 ++i)
                samples[i] += static_cast<float>(settings.restNoise * random.Symmetric());
        }
        song.channels.push_back(std::move(samples));
    }
}

} // namespace

std::int32_t VoicedSong::Length() const {
    return channels.empty() ? 0 : static_cast<std::int32_t>(channels[0].size());
}

double VoicedSong::HertzOf(std::size_t note) const {
    const auto mark = static_cast<std::size_t>(notes.at(note).firstFrame);
    return static_cast<double>(sampleRate) / static_cast<double>(marks.at(mark).period);
}

VoicedSong MakeVoicedSong(const std::vector<SungTone>& tones, const VoicedSongSettings& settings) {
    VoicedSong song;
    song.sampleRate = settings.sampleRate;
    std::int32_t position = 0;
    for (const SungTone& tone : tones) {
        AddRest(song, position, position + tone.restBefore, settings.restMarks);
        position = AddTone(song, tone, position + tone.restBefore);
    }
    AddRest(song, position, position + settings.tail, settings.restMarks);
    RenderSong(song, position + settings.tail, settings);
    return song;
}

// Counts what it is asked for and allocates nothing, so that it can be read where allocation is trapped.
class VoicedMelody::SampleFile : public CkvoAudioFile {
public:
    SampleFile(const VoicedSong& voicedSong, std::string filePath)
        : song(voicedSong), path(std::move(filePath)), end(voicedSong.Length()) {}

    std::int32_t Seek(std::int32_t frame) override {
        lastSeek = frame;
        position = frame;
        return position;
    }
    std::int32_t Tell() override { return position; }
    std::int32_t GetLength() const override { return song.Length(); }
    std::int32_t Read(float* const* buffers, std::int32_t frames) override {
        ++readCount;
        if (frames < 1) return frames;
        if (position < 0 || position >= end) return 0;
        const std::int32_t count = std::min(frames, end - position);
        for (std::size_t c = 0; c < song.channels.size(); ++c)
            std::copy_n(song.channels[c].begin() + position, count, buffers[c]);
        position += count;
        framesRead += count;
        return count;
    }
    std::int32_t GetNumChannels() const override { return static_cast<std::int32_t>(song.channels.size()); }
    float GetSampleRate() const override { return song.sampleRate; }
    std::string GetPath() const override { return path; }
    bool IsOpen() const override { return true; }
    std::int64_t GetModificationTime() const override { return 1'000'000'000; }
    bool HasLimits() const override { return false; }

    void CutAt(std::int32_t frame) { end = std::clamp(frame, 0, song.Length()); }

    std::int64_t framesRead = 0;
    std::int32_t readCount = 0;
    std::int32_t lastSeek = 0;

private:
    const VoicedSong& song;
    std::string path;
    std::int32_t end;
    std::int32_t position = 0;
};

VoicedMelody::VoicedMelody(VoicedSong voicedSong, std::int32_t arrangement, std::int32_t voicesAbove)
    : song(std::move(voicedSong)), driver(analyzer, store) {
    const std::string path = folder.File("song.wav").string();
    std::ofstream(path) << "in memory";
    constexpr std::int64_t kLongAgo = 1'000'000'000'000'000'000; // older than the cache: nanoseconds in 2001
    SetModificationTime(path, kLongAgo);
    audio = std::make_unique<SampleFile>(song, path);
    if (!WriteMelodyCache(path + ".kva", 0, song.marks, song.notes) || analyzer.Attach(audio.get()) != 0 ||
        analyzer.ReadCacheHeader() != 0 || analyzer.LoadCache() != 1) {
        throw std::runtime_error("the analyser does not take the cache of the song");
    }
    driver.SetStyle(ConsortierClassic::kStyleIntelligent);
    driver.SetArrangement(arrangement);
    driver.SetVoiceRange(voicesAbove);
    driver.Run();
}

VoicedMelody::~VoicedMelody() = default;

void VoicedMelody::SetInterval(std::int32_t voice, std::int32_t semitones) {
    for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
        driver.SetVoicePitch(note, voice, driver.GetNotePitch(note) + semitones);
        driver.SetVoiceGain(note, voice, 1.0F);
    }
}

void VoicedMelody::SetIntervals(const std::array<std::int32_t, 4>& semitones) {
    for (std::size_t voice = 0; voice < semitones.size(); ++voice)
        SetInterval(static_cast<std::int32_t>(voice), semitones[voice]);
}

std::int64_t VoicedMelody::FramesRead() const { return audio->framesRead; }
std::int32_t VoicedMelody::ReadCount() const { return audio->readCount; }
std::int32_t VoicedMelody::LastSeek() const { return audio->lastSeek; }
void VoicedMelody::CutAt(std::int32_t frame) { audio->CutAt(frame); }

} // namespace sonorelle::test
