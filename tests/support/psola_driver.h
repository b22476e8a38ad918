// What the tests of the resynthesis share: marks, a recording of noise, and a reader that feeds a synthesis
// from it as a player would.
#pragma once

#include "analysis/pitch_marks.h"
#include "synthesis/psola_synthesis.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace sonorelle::test {

using Channels = std::vector<std::vector<float>>;

// Lets the tests see what a derived voice sees.
class OpenPsola : public CPSOLASynthesis {
public:
    using CPSOLASynthesis::CPSOLASynthesis;
    using CPSOLASynthesis::input;
    using CPSOLASynthesis::inputEnd;
    using CPSOLASynthesis::inputFill;
    using CPSOLASynthesis::InputIndex;
    using CPSOLASynthesis::markIndex;
    using CPSOLASynthesis::markPos;
    using CPSOLASynthesis::outPeriod;
    using CPSOLASynthesis::output;
    using CPSOLASynthesis::outputEnd;
    using CPSOLASynthesis::prevMarkIndex;
    using CPSOLASynthesis::repeatCount;
};

inline std::vector<float*> Pointers(Channels& channels) {
    std::vector<float*> pointers;
    for (auto& channel : channels) pointers.push_back(channel.data());
    return pointers;
}

inline CPitchMarks MarksOf(const std::vector<PitchMarkRecord>& records) {
    CPitchMarks marks;
    marks.SetData(records.data(), static_cast<std::int32_t>(records.size()));
    return marks;
}

// Marks at a distance drawn from `shortest` to `longest`, of which the given part are attacks.
inline std::vector<PitchMarkRecord> RandomMarks(std::mt19937& random, int count, int shortest, int longest,
                                                double attacks = 0) {
    std::vector<PitchMarkRecord> records;
    std::uniform_int_distribution<int> distance(shortest, longest);
    std::uniform_real_distribution<double> chance(0, 1);
    int position = 0;
    for (int i = 0; i < count; ++i) {
        const float strength = chance(random) < attacks ? 0.9F : 0.3F;
        records.push_back({position, 0.25F, strength, 20.0F, 0.0F, 0.0F});
        position += distance(random);
    }
    return records;
}

inline std::vector<PitchMarkRecord> EvenMarks(int count, int distance) {
    std::mt19937 random;
    return RandomMarks(random, count, distance, distance);
}

// Full-scale noise: no two stretches are alike, so that a sample from the wrong place shows.
inline Channels NoiseRecording(int channelCount, int samples, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-1, 1);
    Channels recording(static_cast<std::size_t>(channelCount),
                       std::vector<float>(static_cast<std::size_t>(samples)));
    for (auto& channel : recording)
        std::generate(channel.begin(), channel.end(), [&] { return sample(random); });
    return recording;
}

// Samples `from` to `from` + `count` - 1 of the recording; silence outside.
inline Channels Stretch(const Channels& recording, int from, int count) {
    Channels stretch;
    for (const auto& channel : recording) {
        std::vector<float>& samples = stretch.emplace_back(static_cast<std::size_t>(std::max(count, 1)));
        for (int i = 0; i < count; ++i) {
            const int index = from + i;
            if (index >= 0 && index < static_cast<int>(channel.size()))
                samples[static_cast<std::size_t>(i)] = channel[static_cast<std::size_t>(index)];
        }
    }
    return stretch;
}

// Renders until there are `samples` samples a channel or the marks end.
inline Channels Play(OpenPsola& synthesis, const Channels& recording, int samples, int block = 64) {
    Channels played(recording.size());
    Channels out(recording.size(), std::vector<float>(static_cast<std::size_t>(block)));
    while (static_cast<int>(played[0].size()) < samples) {
        const int need = synthesis.GetRequiredInput(block);
        if (need < 0) break;
        Channels in = Stretch(recording, synthesis.inputEnd, need);
        if (synthesis.Process(Pointers(in).data(), need, Pointers(out).data()) != 0) break;
        for (std::size_t channel = 0; channel < out.size(); ++channel)
            played[channel].insert(played[channel].end(), out[channel].begin(), out[channel].end());
    }
    return played;
}

} // namespace sonorelle::test
