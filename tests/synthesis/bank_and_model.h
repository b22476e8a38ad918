// The bank and its slow model side by side: always told the same, and compared block by block in every sample
// of every voice, in where the voices read, and in the MIDI notes.
#pragma once

#include "synthesis/voice_bank.h"

#include "support/slow_voice_bank.h"
#include "support/voiced_melody_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle::test {
inline constexpr double kUnwritten = 7.0; // what the output buffers hold before anything is written

// Of a full scale of 1. The bank interpolates between samples and steps through its fade in f32; the fade
// table alone moves by 7e-5 from one entry to the next.
inline constexpr double kSampleTolerance = 2e-4;

// Samples. Read positions are sums of steps that depend on pitch ratios, which logarithm and power of the
// bank and of the model may give with another last bit: 1e-7 of some 200 samples a grain.
inline constexpr double kReadTolerance = 0.02;

inline SlowArrangement ArrangementOf(VoicedMelody& melody) {
    SlowArrangement arrangement;
    CChoirDriver& driver = melody.Driver();
    arrangement.sampleRate = melody.Song().sampleRate;
    arrangement.channels = melody.Song().channels;
    arrangement.marks = melody.Song().marks;
    arrangement.voiceCount = driver.VoiceCount();
    arrangement.tuning = melody.Analyzer().GetTuningFrequency();
    for (std::int32_t n = 0; n < driver.GetNoteCount(); ++n) {
        SlowNote note;
        driver.GetNoteRange(n, note.start, note.end);
        note.length = driver.GetNoteLength(n);
        note.pitch = driver.GetNotePitch(n);
        note.deviation = driver.GetDeviation(n);
        note.level = driver.GetNoteLevel(n);
        for (std::size_t v = 0; v < 4; ++v) {
            float deviation = 0;
            note.voices[v] =
                driver.GetVoice(n, static_cast<std::int32_t>(v), deviation, note.gains[v], false);
        }
        arrangement.notes.push_back(note);
    }
    return arrangement;
}

inline std::string TextOf(const std::vector<SlowMidiEvent>& events) {
    std::string text;
    for (const SlowMidiEvent& event : events) {
        text += std::to_string(event.status) + ' ' + std::to_string(event.key) + ' ' +
                std::to_string(event.velocity) + " at " + std::to_string(event.delta) + "; ";
    }
    return text;
}

// Both, always told the same.
class BankAndModel {
public:
    BankAndModel(VoicedSong song, std::int32_t arrangement, std::int32_t samples)
        : melody(std::move(song), arrangement), model(ArrangementOf(melody), samples), blockSize(samples) {
        EXPECT_EQ(bank.Init(melody.Driver()), 0);
        SetBlockSize(samples);
        Both([](auto& bankOrModel) { bankOrModel.RestartVoices(); });
    }

    void SetBlockSize(std::int32_t samples) {
        blockSize = samples;
        Both([=](auto& it) { it.SetBlockSize(samples); });
        const auto channels = melody.Song().channels.size();
        const auto size = static_cast<std::size_t>(samples);
        for (std::size_t v = 0; v < 4; ++v) {
            made[v].assign(channels, std::vector<float>(size, static_cast<float>(kUnwritten)));
            expected[v].assign(channels, std::vector<double>(size, kUnwritten));
            for (std::size_t c = 0; c < channels; ++c) pointers[v][c] = made[v][c].data();
        }
    }

    // 0: four voices, 1: three, 2: two.
    void SetArrangement(std::int32_t arrangement) {
        melody.Driver().SetArrangement(arrangement);
        model.SetVoiceCount(melody.Driver().VoiceCount());
    }

    // Nobody listens to it from now on.
    void LeaveOut(std::size_t voice) {
        heard[voice] = false;
        model.SetHeard(voice, false);
    }

    template<class Operation>
    void Both(Operation operation) {
        operation(bank);
        operation(model);
    }

    void Seek(double target) {
        double reached = target;
        double expectedPlace = target;
        bank.Seek(reached);
        model.Seek(expectedPlace);
        EXPECT_EQ(reached, expectedPlace) << "seek to " << target;
    }

    void SetVoice(std::size_t note, std::size_t voice, std::int32_t pitch, float gain) {
        melody.Driver().SetVoicePitch(static_cast<std::int32_t>(note), static_cast<std::int32_t>(voice),
                                      pitch);
        melody.Driver().SetVoiceGain(static_cast<std::int32_t>(note), static_cast<std::int32_t>(voice), gain);
        model.SetVoicePitch(note, voice, pitch);
        model.SetVoiceGain(note, voice, gain);
    }

    // Renders and compares; stops at the first difference. Whether all was the same.
    bool Render(int blocks) {
        for (int i = 0; i < blocks; ++i, ++block)
            if (!RenderBlock()) return false;
        return true;
    }

    // Until the bank says that it is at its end.
    bool RenderToTheEnd(int mostBlocks) {
        for (int i = 0; i < mostBlocks && !ended; ++i, ++block)
            if (!RenderBlock()) return false;
        return true;
    }

    VoicedMelody melody;
    CVoiceBank bank;
    SlowVoiceBank model;
    std::int32_t blockSize;
    bool ended = false;
    double loudest = 0;
    std::size_t events = 0;
    int block = 0;

private:
    bool RenderBlock() {
        const auto array = [this](std::size_t v) { return heard[v] ? pointers[v].data() : nullptr; };
        const std::int32_t result = bank.Render(array(0), array(1), array(2), array(3));
        const int wanted = model.Render(expected);
        ended = result != 0;
        EXPECT_EQ(result, wanted) << "block " << block;
        return result == wanted && CompareSamples() && ComparePlaces() && CompareEvents();
    }

    bool CompareSamples() {
        for (std::size_t v = 0; v < 4; ++v) {
            if (!heard[v]) continue;
            for (std::size_t c = 0; c < made[v].size(); ++c)
                for (std::size_t i = 0; i < made[v][c].size(); ++i) {
                    const double sample = static_cast<double>(made[v][c][i]);
                    const double wanted = expected[v][c][i];
                    if (wanted != kUnwritten) loudest = std::max(loudest, std::fabs(wanted));
                    if (std::fabs(sample - wanted) <= kSampleTolerance) continue;
                    ADD_FAILURE() << "voice " << v << ", channel " << c << ", block " << block << ", sample "
                                  << i << ": " << sample << " instead of " << wanted << ", read at "
                                  << model.GetReadPosition(v);
                    return false;
                }
        }
        return true;
    }

    bool ComparePlaces() {
        bool same = bank.GetPosition() == model.GetPosition();
        EXPECT_EQ(bank.GetPosition(), model.GetPosition()) << "block " << block;
        for (std::size_t v = 0; v < 4; ++v) {
            const double place = bank.GetReadPosition(static_cast<std::int32_t>(v));
            EXPECT_NEAR(place, model.GetReadPosition(v), kReadTolerance)
                << "voice " << v << ", block " << block;
            same = same && std::fabs(place - model.GetReadPosition(v)) <= kReadTolerance;
        }
        return same;
    }

    bool CompareEvents() {
        std::vector<MidiEventRecord> sent;
        std::vector<SlowMidiEvent> got;
        const std::int32_t count = bank.GetMidiEvents(sent);
        for (const MidiEventRecord& event : sent)
            got.push_back({event.status, event.key, event.velocity, event.deltaFrames});
        for (std::int32_t i = 0; i < count; ++i) bank.MarkMidiConsumed(i);
        bank.PurgeConsumedMidi();
        const std::vector<SlowMidiEvent> wanted = model.TakeMidiEvents();
        events += wanted.size();
        EXPECT_EQ(TextOf(got), TextOf(wanted)) << "block " << block;
        return got == wanted;
    }

    std::array<std::vector<std::vector<float>>, 4> made;
    std::array<SlowBlock, 4> expected;
    std::array<std::array<float*, 2>, 4> pointers{};
    std::array<bool, 4> heard{true, true, true, true};
};

} // namespace sonorelle::test
