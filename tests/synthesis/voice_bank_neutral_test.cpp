// With neutral settings (the voices sing the note, nothing quantised, drawn or shifted) the bank gives the
// recording back: a singer, analysed as any recording is.

#include "analysis/analysis_job.h"
#include "analysis/melody_analyzer.h"
#include "app/snapshot_store.h"
#include "harmony/choir_driver.h"
#include "support/memory_audio_file.h"
#include "support/synthetic_singer.h"
#include "synthesis/voice_bank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonorelle::test {
namespace {

constexpr std::int32_t kBlock = 64;
constexpr std::ptrdiff_t kFadeIn = 1024;

using Samples = std::vector<float>;

// The lead's voice of the whole recording.
Samples SingBack(const Recording& recording) {
    MemoryAudioFile file(recording);
    CMelodyAnalyzer analyzer;
    EXPECT_EQ(analyzer.Attach(&file), 0);
    EXPECT_EQ(AnalyseMelody(analyzer, false, nullptr), AnalysisOutcome::kComputed);
    CSnapshotStore store;
    CChoirDriver driver(analyzer, store);
    EXPECT_EQ(driver.Run(), 0);
    for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note)
        driver.SetVoicePitch(note, 0, driver.GetNotePitch(note));
    CVoiceBank bank;
    EXPECT_EQ(bank.Init(driver), 0);
    bank.SetBlockSize(kBlock);
    bank.RestartVoices();
    Samples sound;
    Samples block(kBlock);
    float* out[] = {block.data(), block.data()};
    while (bank.Render(out, nullptr, nullptr, nullptr) == 0)
        sound.insert(sound.end(), block.begin(), block.end());
    return sound;
}

double Decibels(double ratio) { return 10 * std::log10(std::max(ratio, 1e-12)); }

// Signal to error of sound[at + shift ..] against recording[at ..], `count` samples.
double SignalToError(const Samples& recording, const Samples& sound, std::ptrdiff_t at, std::ptrdiff_t count,
                     std::ptrdiff_t shift) {
    double signal = 0;
    double error = 0;
    for (std::ptrdiff_t i = at; i < at + count; ++i) {
        const double wanted = static_cast<double>(recording[static_cast<std::size_t>(i)]);
        const double got = static_cast<double>(sound[static_cast<std::size_t>(i + shift)]);
        signal += wanted * wanted;
        error += (got - wanted) * (got - wanted);
    }
    return Decibels(signal / std::max(error, 1e-20));
}

double BestAligned(const Samples& recording, const Samples& sound, std::ptrdiff_t at, std::ptrdiff_t count,
                   std::ptrdiff_t furthest) {
    double best = -100;
    for (std::ptrdiff_t shift = -furthest; shift <= furthest; ++shift)
        if (at + shift >= 0 && at + shift + count <= static_cast<std::ptrdiff_t>(sound.size()))
            best = std::max(best, SignalToError(recording, sound, at, count, shift));
    return best;
}

SingerSettings Steady(VoiceRegister voice) {
    SingerSettings settings;
    settings.voice = voice;
    settings.roomNoise = 0;
    settings.leadInSeconds = 0.1;
    return settings;
}

// All of the vowel but a tenth of a second at either end, where it begins and dies away.
struct Middle {
    explicit Middle(const Recording& recording)
        : begin(static_cast<std::ptrdiff_t>((recording.voiced.front().startSeconds + 0.1) *
                                            recording.sampleRate)),
          count(
              static_cast<std::ptrdiff_t>((recording.voiced.back().endSeconds - 0.1) * recording.sampleRate) -
              begin) {}
    std::ptrdiff_t begin;
    std::ptrdiff_t count;
};

TEST(VoiceBankNeutral, VowelsUnder345HertzComeBackWithin30Decibels) {
    const struct {
        VoiceRegister voice;
        double hertz;
    } tones[] = {{VoiceRegister::kBass, 87},   {VoiceRegister::kBass, 131}, {VoiceRegister::kTenor, 165},
                 {VoiceRegister::kTenor, 220}, {VoiceRegister::kAlto, 262}, {VoiceRegister::kSoprano, 330}};
    for (const auto& tone : tones) {
        SCOPED_TRACE(tone.hertz);
        const Recording recording = SteadyTone(tone.hertz, 1.0, Steady(tone.voice));
        const Samples sound = SingBack(recording);
        const Middle middle(recording);
        ASSERT_GE(middle.begin, kFadeIn);
        ASSERT_GE(static_cast<std::ptrdiff_t>(sound.size()), middle.begin + middle.count);
        EXPECT_GE(SignalToError(recording.channels[0], sound, middle.begin, middle.count, 0), 30.0);
    }
}

TEST(VoiceBankNeutral, SoDoesAVibrato) {
    const Recording recording = VibratoTone(196, 1.5, Steady(VoiceRegister::kTenor));
    const Samples sound = SingBack(recording);
    const Middle middle(recording);
    EXPECT_GE(SignalToError(recording.channels[0], sound, middle.begin, middle.count, 0), 30.0);
}

// Where the period is below two blocks marks are repeated and skipped: stretches of 512 samples find their
// place within two periods.
TEST(VoiceBankNeutral, HigherVowelsComeBackWithin25DecibelsAfterLocalAlignment) {
    for (const double hertz : {392.0, 523.25, 659.26, 784.0}) {
        SCOPED_TRACE(hertz);
        const Recording recording = SteadyTone(hertz, 1.0, Steady(VoiceRegister::kSoprano));
        const Samples sound = SingBack(recording);
        const Middle middle(recording);
        const auto furthest = static_cast<std::ptrdiff_t>(2 * recording.sampleRate / hertz);
        std::vector<double> stretches;
        for (std::ptrdiff_t at = middle.begin; at + 512 <= middle.begin + middle.count; at += 512)
            stretches.push_back(BestAligned(recording.channels[0], sound, at, 512, furthest));
        std::sort(stretches.begin(), stretches.end());
        ASSERT_GT(stretches.size(), 50u);
        EXPECT_GE(stretches[stretches.size() / 2], 25.0);
    }
}

// The distance at which a signal is most like itself, refined by a parabola.
double Period(const Samples& samples, std::ptrdiff_t at, double expected) {
    const auto likeness = [&](std::ptrdiff_t lag) {
        double sum = 0;
        for (std::ptrdiff_t i = at; i < at + 4096; ++i)
            sum += static_cast<double>(samples[static_cast<std::size_t>(i)]) *
                   static_cast<double>(samples[static_cast<std::size_t>(i + lag)]);
        return sum;
    };
    constexpr int kPeriods = 8; // far apart, so that a part of a sample weighs little
    const auto middle = static_cast<std::ptrdiff_t>(std::lround(kPeriods * expected));
    std::ptrdiff_t best = middle - 12;
    for (std::ptrdiff_t lag = middle - 12; lag <= middle + 12; ++lag)
        if (likeness(lag) > likeness(best)) best = lag;
    const double before = likeness(best - 1);
    const double here = likeness(best);
    const double after = likeness(best + 1);
    return (static_cast<double>(best) + 0.5 * (before - after) / (before - 2 * here + after)) / kPeriods;
}

TEST(VoiceBankNeutral, ThePitchComesBackWithinThreeCents) {
    for (const double hertz : {110.0, 220.0, 330.0, 523.25}) {
        SCOPED_TRACE(hertz);
        const Recording recording =
            SteadyTone(hertz, 1.0, Steady(hertz > 300 ? VoiceRegister::kSoprano : VoiceRegister::kTenor));
        const Samples sound = SingBack(recording);
        const Middle middle(recording);
        std::vector<double> cents;
        const double period = recording.sampleRate / hertz;
        for (std::ptrdiff_t at = middle.begin; at + 12000 < middle.begin + middle.count; at += 2000) {
            const double sung = Period(recording.channels[0], at, period);
            cents.push_back(std::fabs(1200 * std::log2(Period(sound, at, period) / sung)));
        }
        std::sort(cents.begin(), cents.end());
        ASSERT_GT(cents.size(), 8u);
        EXPECT_LE(cents[cents.size() / 2], 3.0);
    }
}

double LargestStep(const Samples& samples) {
    double largest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(static_cast<double>(samples[i] - samples[i - 1])));
    return largest;
}

// A melody with rests, consonants and legato: no step from one sample to the next that is larger than the
// recording's own by more than half.
TEST(VoiceBankNeutral, NothingClicks) {
    SingerSettings settings = Steady(VoiceRegister::kTenor);
    settings.roomNoise = 3e-5;
    const Recording recording = Sing({{57, 1, Vowel::kA, Consonant::kPlosive},
                                      {60, 1, Vowel::kE},
                                      {64, 1, Vowel::kO, Consonant::kFricative, 0.5},
                                      {62, 2, Vowel::kI, Consonant::kNasal}},
                                     settings);
    const Samples sound = SingBack(recording);
    EXPECT_LE(LargestStep(sound), 1.5 * LargestStep(recording.channels[0]));
    EXPECT_GE(LargestStep(sound), 0.5 * LargestStep(recording.channels[0]));
}

} // namespace
} // namespace sonorelle::test
