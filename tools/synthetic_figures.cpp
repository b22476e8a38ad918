#include "synthetic_figures.h"

#include "analysed_melody.h"
#include "support/melodies.h"

#include <cmath>
#include <cstdint>

namespace sonorelle::tools {
namespace {

constexpr std::uint64_t kSeed = 20261121;
constexpr double kLateOnsetSeconds = 0.1;

// A melody spans an octave and a fifth: from 70 Hz (C#2) up, and to 1000 Hz (B5) in the highest.
constexpr std::array<int, 6> kLowestPitches{37, 43, 48, 53, 59, 64};
constexpr std::array<int, 7> kRates{11025, 16000, 22050, 32000, 44100, 48000, 96000};
constexpr std::array<double, 4> kTempi{80.0, 100.0, 120.0, 144.0}; // beats a minute

constexpr int kSungKeys = 24;
constexpr int kMelodiesPerKey = 5;
constexpr int kKeyRate = 22050;
constexpr std::array<double, 2> kKeyTempi{100.0, 160.0};

constexpr std::array<double, 9> kVowelHertz{70.0, 98.0, 139.0, 196.0, 277.0, 392.0, 554.0, 784.0, 1000.0};
constexpr double kVowelSeconds = 2.0;

test::VoiceRegister VoiceFor(int lowestPitch) {
    if (lowestPitch < 45) return test::VoiceRegister::kBass;
    if (lowestPitch < 52) return test::VoiceRegister::kTenor;
    return lowestPitch < 58 ? test::VoiceRegister::kAlto : test::VoiceRegister::kSoprano;
}

// Any tuning: half a semitone to either side of 440 Hz.
double RandomTuning(test::RandomNumbers& random) {
    return 440.0 * std::exp2(0.5 * random.Symmetric() / 12.0);
}

KeyScore CompareKeys(const AnalysedMelody& melody, const test::Recording& recording) {
    KeyScore score;
    score.melodies = 1;
    const test::KeyAgreement agreement = test::CompareKeys(melody.key, recording.key);
    score.same = agreement == test::KeyAgreement::kSame ? 1 : 0;
    score.relative = agreement == test::KeyAgreement::kRelative ? 1 : 0;
    // A melody in C major a quarter tone sharp is one in C# major a quarter tone flat: near there the names
    // are a matter of a few cents.
    const double sungOffset = test::MidiPitchFromHertz(recording.tuningHertz) - 69.0;
    const int shift = static_cast<int>(std::lround(melody.tuningOffset - sungOffset));
    if (shift != 0 && melody.key >= 0 && score.same == 0) {
        const int mode = melody.key / 12 * 12;
        score.shifted = mode + (melody.key - mode + shift + 12) % 12 == recording.key ? 1 : 0;
    }
    return score;
}

template<typename Value>
void Append(std::vector<Value>& values, const std::vector<Value>& others) {
    values.insert(values.end(), others.begin(), others.end());
}

MelodyFigures Measure(const test::Recording& recording) {
    MelodyFigures figures;
    const std::optional<AnalysedMelody> melody = AnalyseRecording(recording);
    if (!melody) {
        figures.failed = 1;
        return figures;
    }
    const std::vector<test::TimedNote> known = test::SungNotes(recording);
    const std::vector<test::TimedNote> found = test::FoundNotes(melody->notes, melody->sampleRate);
    const test::NoteTolerance late{kLateOnsetSeconds, test::NoteTolerance{}.semitones};
    figures.notes = test::ScoreNotes(known, found);
    figures.notesLate = test::ScoreNotes(known, found, late);
    for (const test::NotePair& pair : test::MatchNotes(known, found, late))
        figures.onsetErrorsSeconds.push_back(found[pair.found].onsetSeconds - known[pair.known].onsetSeconds);
    figures.lost = FindLostNotes(known, found);
    figures.curve = test::ScoreCurve(recording, melody->frames);
    figures.marks = test::ScoreMarks(recording, melody->marks, test::SteadyVowels(recording));
    figures.tuningErrorsCents.push_back(test::TuningErrorCents(melody->tuningOffset, recording.tuningHertz));
    figures.keys = CompareKeys(*melody, recording);
    const std::array<StageScore, kTruths> onTruth = RunStagesOnTruth(recording, *melody);
    for (std::size_t i = 0; i < kTruths; ++i) {
        figures.notesOnTruth[i] = onTruth[i].notes;
        figures.tuningErrorsOnTruth[i].push_back(onTruth[i].tuningErrorCents);
    }
    return figures;
}

} // namespace

MelodyFigures& MelodyFigures::operator+=(const MelodyFigures& other) {
    notes += other.notes;
    notesLate += other.notesLate;
    curve += other.curve;
    marks += other.marks;
    keys.melodies += other.keys.melodies;
    keys.same += other.keys.same;
    keys.relative += other.keys.relative;
    lost += other.lost;
    keys.shifted += other.keys.shifted;
    for (std::size_t i = 0; i < kTruths; ++i) {
        notesOnTruth[i] += other.notesOnTruth[i];
        Append(tuningErrorsOnTruth[i], other.tuningErrorsOnTruth[i]);
    }
    Append(tuningErrorsCents, other.tuningErrorsCents);
    Append(onsetErrorsSeconds, other.onsetErrorsSeconds);
    failed += other.failed;
    return *this;
}

MelodySet MeasureMelodies(Hisses hisses, const Progress& progress) {
    MelodySet set;
    test::RandomNumbers random(kSeed);
    std::size_t done = 0;
    for (const int lowest : kLowestPitches) {
        for (const int rate : kRates) {
            progress(done++, kLowestPitches.size() * kRates.size());
            test::SingerSettings settings;
            settings.sampleRate = rate;
            settings.voice = VoiceFor(lowest);
            settings.tuningHertz = RandomTuning(random);
            settings.beatsPerMinute = kTempi[static_cast<std::size_t>(random.Below(kTempi.size()))];
            settings.seed = random.Next();
            test::MelodyWish wish;
            wish.key = random.Below(kSungKeys);
            wish.lowestMidiPitch = lowest;
            test::Melody melody = test::RandomDiatonicMelody(wish, random.Next());
            if (hisses == Hisses::kPlosivesInstead) {
                for (test::MelodyNote& note : melody.notes)
                    if (note.consonant == test::Consonant::kFricative)
                        note.consonant = test::Consonant::kPlosive;
            }
            const MelodyFigures figures = Measure(test::Sing(melody, settings));
            set.all += figures;
            set.byLowestPitch[lowest] += figures;
            set.byRate[rate] += figures;
        }
    }
    return set;
}

MelodyFigures MeasureKeys(const Progress& progress) {
    MelodyFigures all;
    test::RandomNumbers random(kSeed + 1);
    for (int i = 0; i < kSungKeys * kMelodiesPerKey; ++i) {
        progress(static_cast<std::size_t>(i), kSungKeys * kMelodiesPerKey);
        test::MelodyWish wish;
        wish.key = i % kSungKeys;
        wish.lowestMidiPitch = kLowestPitches[static_cast<std::size_t>(random.Below(kLowestPitches.size()))];
        test::SingerSettings settings;
        settings.sampleRate = kKeyRate;
        settings.voice = VoiceFor(wish.lowestMidiPitch);
        settings.tuningHertz = RandomTuning(random);
        settings.beatsPerMinute = kKeyTempi[static_cast<std::size_t>(i / kSungKeys) % kKeyTempi.size()];
        settings.seed = random.Next();
        all += Measure(test::Sing(test::RandomDiatonicMelody(wish, random.Next()), settings));
    }
    return all;
}

std::map<int, test::MarkScore> MeasureSteadyVowels(const Progress& progress) {
    std::map<int, test::MarkScore> scores;
    test::RandomNumbers random(kSeed + 2);
    std::size_t done = 0;
    for (const double hertz : kVowelHertz) {
        for (const int rate : kRates) {
            progress(done++, kVowelHertz.size() * kRates.size());
            test::SingerSettings settings;
            settings.sampleRate = rate;
            settings.voice = VoiceFor(static_cast<int>(test::MidiPitchFromHertz(hertz)) - 7);
            settings.seed = random.Next();
            const test::Recording recording = test::SteadyTone(hertz, kVowelSeconds, settings);
            const std::optional<AnalysedMelody> melody = AnalyseRecording(recording);
            test::MarkScore& score = scores[static_cast<int>(hertz)];
            if (melody) score += test::ScoreMarks(recording, melody->marks, test::SteadyVowels(recording));
        }
    }
    return scores;
}

} // namespace sonorelle::tools
