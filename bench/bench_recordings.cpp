#include "bench_recordings.h"

#include "support/melodies.h"
#include "support/wav_writer.h"

#include <cmath>
#include <cstdlib>

namespace sonorelle::bench {
namespace {

constexpr std::uint64_t kSeed = 20261121;
constexpr double kSecondsPerPhrase = 4.0; // less than any phrase takes at 100 beats a minute

test::SingerSettings Singer() {
    test::SingerSettings settings;
    settings.sampleRate = kSampleRate;
    settings.seed = kSeed;
    return settings;
}

test::Recording SingMelody(double seconds) {
    test::MelodyWish wish;
    wish.key = 7;
    wish.lowestMidiPitch = 47; // a tenor: 123 Hz and an octave and a fifth above
    wish.phrases = static_cast<int>(std::ceil(seconds / kSecondsPerPhrase)) + 1;
    return test::Sing(test::RandomDiatonicMelody(wish, kSeed), Singer());
}

} // namespace

test::Recording MakeRecording(const std::string& kind, double seconds) {
    test::Recording recording;
    if (kind == "melody") recording = SingMelody(seconds);
    if (kind == "noise") {
        test::SingerSettings settings = Singer();
        settings.peak = 1.0;
        recording = test::WhiteNoise(seconds, settings);
    }
    if (kind == "silence") recording = test::Silence(seconds, Singer());
    if (kind.starts_with("tone_")) {
        test::SingerSettings settings = Singer();
        settings.leadInSeconds = settings.leadOutSeconds = 0.0;
        recording = test::SteadyTone(std::strtod(kind.c_str() + 5, nullptr), seconds, settings);
    }
    const auto frames = static_cast<std::size_t>(std::llround(seconds * kSampleRate));
    for (std::vector<float>& channel : recording.channels)
        if (channel.size() > frames) channel.resize(frames);
    return recording;
}

bool WriteRecording(const std::string& kind, double seconds, const std::filesystem::path& file) {
    const test::Recording recording = MakeRecording(kind, seconds);
    return recording.Frames() > 0 && test::WriteWav(file, recording);
}

} // namespace sonorelle::bench
