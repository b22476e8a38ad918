// Plays a song through the voice bank and keeps all that comes out.
//
// A pulse train shows grains one by one: the recording is a single sample of kPulse on each mark and 0
// between them, so that each grain leaves exactly one pulse, on the sample of its centre and as high as its
// gain.
#pragma once

#include "support/voiced_melody_fixture.h"
#include "synthesis/voice_bank.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

namespace sonorelle::test {

inline constexpr float kPulse = 0.5F;
inline constexpr float kUntouched = 7.0F; // what the buffers hold before a block

// A voiced pulse on each mark, `period` samples apart, the first at 0; no notes.
inline VoicedSong PulseTrain(std::int32_t period, std::int32_t length, float sampleRate = 44100.0F) {
    VoicedSong song;
    song.sampleRate = sampleRate;
    song.channels.assign(1, std::vector<float>(static_cast<std::size_t>(length), 0.0F));
    for (std::int32_t position = 0; position < length; position += period) {
        PitchMarkRecord mark;
        mark.position = position;
        mark.energy = 0.1F;
        mark.voicing = 20.0F;
        mark.period = static_cast<float>(period);
        song.marks.push_back(mark);
        song.channels[0][static_cast<std::size_t>(position)] = kPulse;
    }
    return song;
}

// A note from `start` to `end`, its last position, sung at the pitch of the marks there.
inline void AddNote(VoicedSong& song, std::int32_t start, std::int32_t end, float level = 0.5F) {
    NoteRecord note;
    note.start = start;
    note.end = end;
    note.length = end - start;
    note.level = level;
    const auto last = static_cast<std::int32_t>(song.marks.size()) - 1;
    while (note.firstFrame < last && song.marks[static_cast<std::size_t>(note.firstFrame)].position < start)
        ++note.firstFrame;
    note.lastFrame = note.firstFrame;
    while (note.lastFrame < last && song.marks[static_cast<std::size_t>(note.lastFrame) + 1].position <= end)
        ++note.lastFrame;
    const double period = static_cast<double>(song.marks[static_cast<std::size_t>(note.firstFrame)].period);
    note.pitch =
        static_cast<float>(69.0 + 12.0 * std::log2(static_cast<double>(song.sampleRate) / period / 440.0));
    song.notes.push_back(note);
}

class BankPlayer {
public:
    using Samples = std::vector<float>;

    explicit BankPlayer(VoicedSong song, std::int32_t samples = 32, std::int32_t arrangement = 0)
        : melody(std::move(song), arrangement), blockSize(samples) {
        melody.SetIntervals({0, 0, 0, 0});
        EXPECT_EQ(bank.Init(melody.Driver()), 0);
        bank.SetBlockSize(samples);
        for (auto& voice : buffers)
            voice.assign(melody.Song().channels.size(), Samples(static_cast<std::size_t>(samples)));
        for (auto& voice : sound) voice.resize(melody.Song().channels.size());
    }

    // `voice` sings `semitones` above the note.
    void SetInterval(std::int32_t note, std::int32_t voice, std::int32_t semitones) {
        CChoirDriver& driver = melody.Driver();
        driver.SetVoicePitch(note, voice, driver.GetNotePitch(note) + semitones);
    }

    // One block; what comes out goes behind `sound`.
    std::int32_t Render() {
        std::array<std::array<float*, 2>, 4> pointers{};
        for (std::size_t v = 0; v < 4; ++v) {
            readAt[v].push_back(bank.GetReadPosition(static_cast<std::int32_t>(v)));
            for (std::size_t c = 0; c < buffers[v].size(); ++c) {
                buffers[v][c].assign(static_cast<std::size_t>(blockSize), kUntouched);
                pointers[v][c] = buffers[v][c].data();
            }
        }
        const auto out = [&](std::size_t v) { return leaveOut[v] ? nullptr : pointers[v].data(); };
        const std::int32_t result = bank.Render(out(0), out(1), out(2), out(3));
        for (std::size_t v = 0; v < 4; ++v)
            for (std::size_t c = 0; c < buffers[v].size(); ++c)
                sound[v][c].insert(sound[v][c].end(), buffers[v][c].begin(), buffers[v][c].end());
        return result;
    }

    // Blocks until one is not 0, at most `most`; gives how many were.
    int Play(int most) {
        int blocks = 0;
        while (blocks < most && Render() == 0) ++blocks;
        return blocks;
    }

    // Until voice `v` reads from `position` on.
    void PlayTo(double position, std::int32_t v = 0) {
        while (bank.GetReadPosition(v) < position) ASSERT_EQ(Render(), 0);
    }

    std::size_t BlocksPlayed() const { return readAt[0].size(); }
    std::size_t SamplesPlayed() const { return sound[0][0].size(); }

    // All events so far, which are then gone.
    std::vector<MidiEventRecord> TakeEvents() {
        std::vector<MidiEventRecord> events;
        const std::int32_t count = bank.GetMidiEvents(events);
        for (std::int32_t i = 0; i < count; ++i) bank.MarkMidiConsumed(i);
        bank.PurgeConsumedMidi();
        return events;
    }

    VoicedMelody melody;
    CVoiceBank bank;
    std::int32_t blockSize;
    std::array<bool, 4> leaveOut{};              // voices whose arrays are null
    std::array<std::vector<Samples>, 4> sound;   // [voice][channel]
    std::array<std::vector<double>, 4> readAt{}; // where each voice read, block by block

private:
    std::array<std::vector<Samples>, 4> buffers;
};

// A grain as its pulse shows it.
struct Pulse {
    std::size_t at = 0;      // sample
    std::size_t spacing = 0; // to the next one
    std::size_t block = 0;   // in which the grain was made, and so its spacing was decided
    float height = 0;
};

// From the second audible pulse on. A block makes grains until one is centred behind its last sample: a grain
// is made in the first block whose end the grain before lies behind, or on.
inline std::vector<Pulse> PulsesOf(const std::vector<float>& sound, std::int32_t blockSize) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < sound.size(); ++i)
        if (std::fabs(sound[i]) > kPulse * 0.01F) places.push_back(i);
    std::vector<Pulse> pulses;
    const auto block = static_cast<std::size_t>(blockSize);
    for (std::size_t j = 1; j + 1 < places.size(); ++j) {
        const std::size_t before = (places[j - 1] + block - 1) / block;
        pulses.push_back(
            {places[j], places[j + 1] - places[j], before == 0 ? 0 : before - 1, sound[places[j]]});
    }
    return pulses;
}

// Weight of sample i of the fade-in of 1024 samples: a quarter of a sine, cubed.
inline double FadeInWeight(double i) {
    return i < 1024 ? std::pow(std::sin(std::numbers::pi / 2 * i / 1023), 3.0) : 1.0;
}

// Distance of the grains of a voice that sings `semitones` above marks `period` samples apart.
inline double SpacingFor(double period, double semitones) {
    return std::floor(period * std::exp2(-semitones / 12.0) + 0.5);
}

} // namespace sonorelle::test
