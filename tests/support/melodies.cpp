#include "support/melodies.h"

#include <algorithm>
#include <cstdlib>

namespace sonorelle::test {

namespace {

constexpr int kScaleNotes = 7;
constexpr int kMajorSteps[kScaleNotes] = {0, 2, 4, 5, 7, 9, 11};
constexpr int kMinorSteps[kScaleNotes] = {0, 2, 3, 5, 7, 8, 10};

// A degree is a count of scale steps from the lowest tonic within the range; 0, 7 and -7 are tonics.
constexpr int kLowestDegree = -7;
constexpr int kHighestDegree = 14;
constexpr int kRangeSemitones = 19; // an octave and a fifth, what an untrained singer has

int StepOfDegree(int degree) { return (degree + 10 * kScaleNotes) % kScaleNotes; }

int MidiPitchOfDegree(int degree, const MelodyWish& wish) {
    const int* scale = wish.key >= 12 ? kMinorSteps : kMajorSteps;
    const int lowestTonic = wish.lowestMidiPitch + ((wish.key - wish.lowestMidiPitch) % 12 + 12) % 12;
    const int octave = (degree + 10 * kScaleNotes) / kScaleNotes - 10;
    return lowestTonic + 12 * octave + scale[StepOfDegree(degree)];
}

bool IsInRange(int degree, const MelodyWish& wish) {
    const int above = MidiPitchOfDegree(degree, wish) - wish.lowestMidiPitch;
    return above >= 0 && above <= kRangeSemitones;
}

bool IsTonicChord(int degree) {
    const int step = StepOfDegree(degree);
    return step == 0 || step == 2 || step == 4;
}

// Six of ten moves are steps, the rest thirds and, into the tonic chord, fourths and fifths. A leap turns
// back.
int NextDegree(int degree, int lastMove, bool strongBeat, const MelodyWish& wish, RandomNumbers& random) {
    for (;;) {
        const int way = std::abs(lastMove) > 1 ? (lastMove > 0 ? -1 : 1) : (random.Below(2) == 0 ? -1 : 1);
        const int kind = random.Below(10);
        const int size = std::abs(lastMove) > 1 || kind < 6 ? 1 : kind < 8 ? 2 : kind < 9 ? 3 : 4;
        const int next = degree + way * size;
        lastMove = 0; // a second try is free in its direction
        if (!IsInRange(next, wish)) continue;
        if (size > 2 && !IsTonicChord(next)) continue;
        if (strongBeat && !IsTonicChord(next) && random.Below(4) != 0) continue;
        return next;
    }
}

// The nearest degree that is the given step of the scale, 0 the tonic and 4 the fifth. The range holds at
// least one.
int NearestOfStep(int degree, int step, const MelodyWish& wish) {
    int best = degree + 100;
    for (int candidate = kLowestDegree; candidate <= kHighestDegree; ++candidate) {
        if (StepOfDegree(candidate) != step || !IsInRange(candidate, wish)) continue;
        if (std::abs(candidate - degree) < std::abs(best - degree)) best = candidate;
    }
    return best;
}

} // namespace

Melody RandomDiatonicMelody(const MelodyWish& wish, std::uint64_t seed) {
    RandomNumbers random(seed);
    constexpr Consonant kOnsets[4] = {Consonant::kNone, Consonant::kPlosive, Consonant::kFricative,
                                      Consonant::kNone};
    Melody melody;
    melody.key = wish.key;
    int degree = NearestOfStep(3, random.Below(2) == 0 ? 0 : 4, wish);
    int lastMove = 0;
    int lastPitch = -1;
    for (int phrase = 0; phrase < wish.phrases; ++phrase) {
        const bool lastPhrase = phrase + 1 == wish.phrases;
        for (int i = 0; i < wish.notesPerPhrase; ++i) {
            const bool lastNote = i + 1 == wish.notesPerPhrase;
            const bool strongBeat = i % 2 == 0;
            if (lastNote) {
                const int goal = NearestOfStep(degree, lastPhrase || phrase % 2 == 1 ? 0 : 4, wish);
                lastMove = 0;
                degree = goal;
            } else if (phrase + i > 0) {
                const int next = NextDegree(degree, lastMove, strongBeat, wish, random);
                lastMove = next - degree;
                degree = next;
            }
            MelodyNote note;
            const int pitch = MidiPitchOfDegree(degree, wish);
            note.midiPitch = pitch;
            note.vowel = static_cast<Vowel>(random.Below(5));
            note.consonant = kOnsets[random.Below(4)];
            if (i == 0 && note.consonant == Consonant::kNone) note.consonant = Consonant::kPlosive;
            if (pitch == lastPitch && note.consonant == Consonant::kNone)
                note.consonant = Consonant::kPlosive;
            // Long notes belong to the tonic chord, which is what makes the key heard.
            if (lastNote)
                note.beats = lastPhrase ? 3.0 : 2.0;
            else
                note.beats = IsTonicChord(degree) ? (random.Below(3) == 0 ? 1.5 : 1.0)
                                                  : (random.Below(3) == 0 ? 0.5 : 1.0);
            note.restBeatsAfter = lastNote && !lastPhrase ? 1.0 : 0.0;
            melody.notes.push_back(note);
            lastPitch = pitch;
        }
    }
    return melody;
}

Recording Sing(const Melody& melody, SingerSettings settings) {
    settings.key = melody.key;
    return Sing(melody.notes, settings);
}

} // namespace sonorelle::test
