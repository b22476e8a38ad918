#include "sound_material.h"

#include "support/melodies.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <system_error>

namespace sonorelle::tools {
namespace {

using test::Consonant;
using test::FrameRange;
using test::VoiceRegister;
using test::Vowel;

constexpr double kEdgeSeconds = 0.05; // of a voiced stretch: attack, release, and half of Praat's window
constexpr double kHissEdgeSeconds = 0.015;
constexpr double kShortestVowelSeconds = 0.16;
constexpr double kShortestHissSeconds = 0.05;
constexpr double kOnsetSeconds = 0.12; // to either side
constexpr double kRestBeforeOnset = 0.06;
constexpr double kSteepestHissFall = 45.0; // dB below the vowels: below, it is a rest
constexpr double kHissCrossings = 2000.0;  // zero crossings a second; a vowel has fewer
constexpr double kLowVoiceHertz = 180.0;   // a man's
constexpr double kManFormants = 5000.0;    // where Praat's manual tells to look for five formants
constexpr double kWomanFormants = 5500.0;
// The range of pitches given to the judge, beside the song's lowest and highest.
constexpr double kBelow = 0.75;
constexpr double kAbove = 1.4;

struct Register {
    const char* name;
    VoiceRegister voice;
    int lowVowels; // MIDI pitch
    int highVowels;
    int lowestWord;
};
constexpr Register kRegisters[] = {
    {"bass", VoiceRegister::kBass, 43, 50, 41},       // 98 and 147 Hz
    {"tenor", VoiceRegister::kTenor, 50, 57, 48},     // 147 and 220 Hz
    {"alto", VoiceRegister::kAlto, 57, 64, 55},       // 220 and 330 Hz
    {"soprano", VoiceRegister::kSoprano, 69, 76, 62}, // 440 and 659 Hz
};

std::vector<test::MelodyNote> Vowels(const Register& of) {
    std::vector<test::MelodyNote> melody;
    for (const int pitch : {of.lowVowels, of.highVowels}) // each after a rest
        for (int vowel = 0; vowel < 5; ++vowel)
            melody.push_back(
                {static_cast<double>(pitch), 1.2, static_cast<Vowel>(vowel), Consonant::kNone, 0.3});
    return melody;
}

FrameRange Range(double begin, double end, double sampleRate) {
    const auto frame = [sampleRate](double seconds) {
        return static_cast<std::size_t>(std::max(0.0, std::floor(seconds * sampleRate + 0.5)));
    };
    return {frame(begin), frame(end)};
}

PitchRange Around(double lowest, double highest) { return {kBelow * lowest, kAbove * highest}; }

double CrossingsASecond(test::Samples sound, FrameRange range, double sampleRate) {
    std::size_t count = 0;
    for (std::size_t i = range.begin + 1; i < std::min(range.end, sound.size()); ++i)
        if ((sound[i] < 0.0F) != (sound[i - 1] < 0.0F)) ++count;
    return range.Count() > 0 ? static_cast<double>(count) * sampleRate / static_cast<double>(range.Count())
                             : 0.0;
}

// A stretch of the judge's frames that are all voiced, or none.
struct Run {
    bool voiced;
    double begin; // seconds
    double end;
};

std::vector<Run> Runs(const HeardSound& heard) {
    std::vector<Run> runs;
    for (const HeardFrame& frame : heard.frames) {
        const bool voiced = !std::isnan(frame.hertz);
        if (runs.empty() || runs.back().voiced != voiced)
            runs.push_back({voiced, frame.seconds, frame.seconds});
        runs.back().end = frame.seconds;
    }
    return runs;
}

} // namespace

test::Recording Song::Sung(int semitones) const {
    std::vector<test::MelodyNote> moved = melody;
    for (test::MelodyNote& note : moved) note.midiPitch += semitones;
    return test::Sing(moved, settings);
}

std::vector<Song> Songs() {
    std::vector<Song> songs;
    std::uint64_t seed = 1;
    for (const Register& of : kRegisters) {
        test::SingerSettings settings;
        settings.voice = of.voice;
        settings.seed = ++seed;
        songs.push_back({std::string(of.name) + ", vowels", Vowels(of), settings});
        test::MelodyWish wish;
        wish.lowestMidiPitch = of.lowestWord;
        wish.phrases = 2;
        settings.beatsPerMinute = 120.0;
        settings.seed = ++seed;
        songs.push_back(
            {std::string(of.name) + ", words", test::RandomDiatonicMelody(wish, seed).notes, settings});
    }
    // Without the small irregularities of a voice, what remains is the engine's own.
    test::SingerSettings exact;
    exact.voice = VoiceRegister::kTenor;
    exact.jitter = exact.shimmer = exact.breath = exact.vibratoCents = 0.0;
    songs.push_back({"tenor, vowels as of a machine", Vowels(kRegisters[1]), exact});
    return songs;
}

Places PlacesOf(const test::Recording& recording, VoiceRegister voice) {
    Places places;
    const double rate = recording.sampleRate;
    double lowest = std::numeric_limits<double>::infinity(), highest = 0.0;
    for (const test::SungNote& note : recording.notes) {
        lowest = std::min(lowest, note.hertz);
        highest = std::max(highest, note.hertz);
        const double onset = note.onsetSeconds, before = onset - note.consonantSeconds;
        if (note.offsetSeconds - onset >= kShortestVowelSeconds)
            places.vowels.push_back(Range(onset + kEdgeSeconds, note.offsetSeconds - kEdgeSeconds, rate));
        if (note.consonant == Consonant::kFricative && note.consonantSeconds >= kShortestHissSeconds)
            places.hisses.push_back(Range(before + kHissEdgeSeconds, onset - kHissEdgeSeconds, rate));
        if (recording.HertzAt(onset - 0.005) == 0.0)
            places.onsets.push_back(Range(onset - 0.3 * kOnsetSeconds, onset + kOnsetSeconds, rate));
    }
    places.pitch = Around(lowest, highest);
    const bool man = voice == VoiceRegister::kBass || voice == VoiceRegister::kTenor;
    places.formantCeilingHertz = man ? kManFormants : kWomanFormants;
    return places;
}

Places PlacesOf(const HeardSound& heard, test::Samples sound, double sampleRate) {
    std::vector<double> pitches;
    for (const HeardFrame& frame : heard.frames)
        if (!std::isnan(frame.hertz)) pitches.push_back(frame.hertz);
    Places places;
    places.pitch = Around(test::Percentile(pitches, 0.02), test::Percentile(pitches, 0.98));
    const bool man = test::Percentile(pitches, 0.5) < kLowVoiceHertz;
    places.formantCeilingHertz = man ? kManFormants : kWomanFormants;

    double loudest = test::kSilenceDecibels;
    double restSeconds = 1.0;
    for (const Run& run : Runs(heard)) {
        const FrameRange range = Range(run.begin, run.end, sampleRate);
        const double seconds = run.end - run.begin;
        if (run.voiced) {
            if (seconds >= kShortestVowelSeconds) {
                places.vowels.push_back(Range(run.begin + kEdgeSeconds, run.end - kEdgeSeconds, sampleRate));
                loudest = std::max(loudest, test::LevelDecibels(sound, places.vowels.back()));
                if (restSeconds >= kRestBeforeOnset)
                    places.onsets.push_back(
                        Range(run.begin - kOnsetSeconds, run.begin + kOnsetSeconds, sampleRate));
            }
        } else if (seconds >= kShortestHissSeconds + 2.0 * kHissEdgeSeconds &&
                   CrossingsASecond(sound, range, sampleRate) > kHissCrossings) {
            places.hisses.push_back(
                Range(run.begin + kHissEdgeSeconds, run.end - kHissEdgeSeconds, sampleRate));
        }
        restSeconds = run.voiced ? 0.0 : seconds;
    }
    std::erase_if(places.hisses, [&](const FrameRange& hiss) {
        return test::LevelDecibels(sound, hiss) < loudest - kSteepestHissFall;
    });
    return places;
}

double SungHertz(const test::Recording& recording, double seconds, double floorHertz, double lagSeconds) {
    const std::vector<double>& pulses = recording.pulseFrames;
    const double half = 1.5 / floorHertz; // seconds
    const auto hann = [half](double offset) {
        return std::fabs(offset) < half ? 0.5 + 0.5 * std::cos(std::numbers::pi * offset / half) : 0.0;
    };
    auto next = std::lower_bound(pulses.begin(), pulses.end(), (seconds - half) * recording.sampleRate);
    double weights = 0.0, sum = 0.0;
    for (; next != pulses.end() && next + 1 != pulses.end(); ++next) {
        const double begin = *next / recording.sampleRate - seconds;
        const double end = *(next + 1) / recording.sampleRate - seconds;
        if (begin > half) break;
        const double middle = 0.5 * (begin + end);
        const double weight =
            hann(middle - 0.5 * lagSeconds) * hann(middle + 0.5 * lagSeconds) * (end - begin);
        weights += weight;
        sum += weight * (end - begin);
    }
    return sum > 0.0 ? weights / sum : std::numeric_limits<double>::quiet_NaN();
}

std::vector<std::filesystem::path> RecordingsIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".wav") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace sonorelle::tools
