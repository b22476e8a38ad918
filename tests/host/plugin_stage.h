// A plug-in on the stage: with a scripted host and toolkit, a recording, and ten outputs to play into.
#pragma once

#include "app/application.h"
#include "host/plugin_core.h"
#include "host/scripted_host.h"
#include "platform/result_codes.h"
#include "support/melodies.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonorelle::test {

inline constexpr std::int32_t kStageChannels = 1;

inline Recording SingStageSong(double sampleRate = 44100, int channels = kStageChannels,
                               std::uint64_t seed = 3) {
    MelodyWish wish;
    wish.phrases = 1;
    wish.notesPerPhrase = 6;
    SingerSettings settings;
    settings.sampleRate = sampleRate;
    settings.channels = channels;
    settings.seed = seed;
    settings.beatsPerMinute = 140;
    return Sing(RandomDiatonicMelody(wish, seed), settings);
}

// A song of some seconds, sung once for all tests; the first load leaves its analysis beside it.
inline const std::string& SungSong() {
    static const TemporaryFolder folder;
    static const std::string path = [] {
        const std::string file = folder.File("song.wav").string();
        if (!WriteWav(file, SingStageSong())) throw std::runtime_error("no song");
        return file;
    }();
    return path;
}

// A copy in a folder of the test's own, without its analysis unless `withCache`.
inline std::string CopyOfSong(const TemporaryFolder& folder, const std::string& name,
                              bool withCache = false) {
    const std::filesystem::path song = SungSong();
    const std::filesystem::path copy = folder.File(name);
    std::filesystem::copy_file(song, copy, std::filesystem::copy_options::overwrite_existing);
    if (withCache) {
        for (const auto& entry : std::filesystem::directory_iterator(song.parent_path())) {
            if (entry.path().extension() != ".kva") continue;
            const std::string suffix = entry.path().filename().string().substr(song.stem().string().size());
            std::filesystem::copy_file(entry.path(), copy.parent_path() / (copy.stem().string() + suffix));
        }
    }
    return copy.string();
}

// Ten outputs of `frames` samples, filled with a number that no block leaves by chance.
class OutputBlock {
public:
    static constexpr float kUntouched = 77;

    explicit OutputBlock(std::int32_t frames) {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i].assign(static_cast<std::size_t>(frames), kUntouched);
            pointers[i] = samples[i].data();
        }
    }
    OutputBlock(OutputBlock&&) = default;
    OutputBlock& operator=(OutputBlock&&) = default;
    float* const* Pointers() const { return pointers.data(); }
    const std::vector<float>& operator[](std::size_t output) const { return samples[output]; }
    bool IsAll(std::size_t output, float value) const {
        return std::all_of(samples[output].begin(), samples[output].end(),
                           [&](float s) { return s == value; });
    }
    bool IsFinite() const {
        for (const auto& channel : samples)
            if (!std::all_of(channel.begin(), channel.end(), [](float s) { return std::isfinite(s); }))
                return false;
        return true;
    }
    float Peak(std::size_t output) const {
        float peak = 0;
        for (const float sample : samples[output]) peak = std::max(peak, std::fabs(sample));
        return peak;
    }

private:
    std::array<std::vector<float>, CvirelainePlugIn::kOutputs> samples;
    std::array<float*, CvirelainePlugIn::kOutputs> pointers{};
};

class PlugInStage {
public:
    explicit PlugInStage(const PlugInOptions& options = {})
        : plugIn(std::make_unique<CvirelainePlugIn>(&host, toolkit, options)) {}

    void LoadSong() {
        if (plugIn->LoadAudioFile(SungSong()) != kOk) throw std::runtime_error("the song does not load");
    }
    void PlayBlock(const OutputBlock& block, std::int32_t frames) {
        plugIn->Process(nullptr, block.Pointers(), frames);
        host.Advance(frames);
    }
    // Lets the transport run on for so many blocks; gives the last one.
    OutputBlock PlayBlocks(std::int32_t blocks, std::int32_t frames) {
        OutputBlock block(frames);
        for (std::int32_t i = 0; i < blocks; ++i) PlayBlock(block, frames);
        return block;
    }
    std::string Chunk(bool isPreset = false) {
        const void* data = nullptr;
        const std::int32_t size = plugIn->GetChunk(data, isPreset);
        return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                        : std::string();
    }
    std::int32_t SetChunk(const std::string& document, bool isPreset = false) {
        return plugIn->SetChunk(document.data(), static_cast<std::int32_t>(document.size()), isPreset);
    }
    CkvovirelaineApp& App() { return *plugIn->Application(); }
    std::int32_t VoicePitch(std::int32_t note, std::int32_t voice) {
        float deviation = 0;
        float gain = 0;
        return App().Driver().GetVoice(note, voice, deviation, gain, false);
    }
    // As a hand that drags a note of a harmony voice does.
    void MoveNote(std::int32_t note, std::int32_t voice, std::int32_t semitones) {
        plugIn->WithApplication([&](CkvovirelaineApp& app) {
            app.Driver().SetVoicePitch(note, voice, VoicePitch(note, voice) + semitones);
            app.PushUndo();
        });
    }

    ScriptedHost host;
    ScriptedToolkit toolkit;
    std::unique_ptr<CvirelainePlugIn> plugIn;
};

inline VstMidiEvent MidiMessage(int status, int first, int second, std::int32_t deltaFrames = 0) {
    VstMidiEvent event;
    event.deltaFrames = deltaFrames;
    event.midiData[0] = static_cast<std::uint8_t>(status);
    event.midiData[1] = static_cast<std::uint8_t>(first);
    event.midiData[2] = static_cast<std::uint8_t>(second);
    return event;
}

// A list of MIDI events as hosts send them.
class IncomingEvents {
public:
    explicit IncomingEvents(std::vector<VstMidiEvent> midiEvents)
        : events(std::move(midiEvents)), memory(2 + events.size() + 2) {
        const auto count = static_cast<std::int32_t>(events.size());
        std::memcpy(memory.data(), &count, sizeof count);
        for (std::size_t i = 0; i < events.size(); ++i)
            memory[2 + i] = reinterpret_cast<std::intptr_t>(&events[i]);
    }
    const VstEvents* List() const { return reinterpret_cast<const VstEvents*>(memory.data()); }
    void RemoveEvent(std::size_t index) { memory[2 + index] = 0; }
    VstMidiEvent& operator[](std::size_t index) { return events[index]; }

private:
    std::vector<VstMidiEvent> events;
    std::vector<std::intptr_t> memory;
};

// `text` with the first `from` in it replaced.
inline std::string WithReplaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos) throw std::runtime_error("not in the text: " + from);
    return text.replace(at, from.size(), to);
}

} // namespace sonorelle::test
