#include "harmony/voicing_stages.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace sonorelle::ConsortierClassic {
namespace {

// --- Weights
// ---------------------------------------------------------------------------------------------------------

constexpr std::int32_t kWeightCount = 8; // from the prime to the octave

// Intervals in scale steps.
enum StepInterval : std::int32_t {
    kPrime = 0,
    kSecond = 1,
    kThird = 2,
    kFifth = 4,
    kSeventh = 6,
    kOctave = 7
};

// clang-format off
// For a note that is doubled, and for the bass: by its interval above the chord root. For the interval of two
// voices. For two voices at an interval that move together: parallel seconds, fifths, sevenths and octaves are
// as good as forbidden.
//                                                 prime second  third fourth fifth   sixth seventh octave
constexpr float kDoublingWeights[kWeightCount] = { 0.9F, 0.0F,   0.7F, 0.0F,  0.8F,   0.0F, 0.5F,   0.0F   };
constexpr float kBassWeights[kWeightCount]     = { 1.0F, 0.0F,   0.7F, 0.0F,  0.6F,   0.0F, 0.7F,   0.0F   };
constexpr float kIntervalWeights[kWeightCount] = { 0.1F, 0.5F,   1.0F, 0.6F,  0.5F,   1.0F, 0.8F,   0.0F   };
constexpr float kParallelWeights[kWeightCount] = { 0.1F, 0.001F, 1.4F, 0.05F, 0.001F, 1.4F, 0.001F, 0.002F };
// clang-format on

constexpr float kWrongSideFactor =
    1e-5F; // a voice on the wrong side of the melody, or two in the wrong order

constexpr float kUnisonFactor = 0.15F;
constexpr float kNoUnisonFactor = 4.0F;     // doubling at the octave stays possible, a unison is a voice lost
constexpr float kOctaveOfTwoFactor = 0.15F; // two voices in octaves or unison are hardly two
constexpr float kIncompleteTriadFactor = 0.1F;

// What each note adds to a four-note chord: the seventh makes it, the fifth is missed least.
constexpr float kRootPresence = 0.5F;
constexpr float kThirdPresence = 0.4F;
constexpr float kFifthPresence = 0.1F;
constexpr float kSeventhPresence = 0.7F;

constexpr float kStepHalving = 0.5F;          // for each step that a voice moves
constexpr float kSemitoneFactor = 1.6F;       // so that a semitone is the best move of all
constexpr std::int32_t kFewestHalvings = 160; // 2^-160 is 0 in single precision

constexpr float kSpreadTolerance[kVoiceSlots] = {0.0F, 0.3F, 0.2F, 0.1F}; // by the number of harmony voices
constexpr double kSmallestSpreadFactor = 1e-10;
constexpr std::int32_t kWidestWindow = 32; // semitones; the widest that is used spans 28

constexpr float kLeapingThirdsFactor = 0.7214286F; // four voices: parallel thirds that leap
constexpr float kLeapingThirdsOfThree = 1.01F;     // three voices: in place of the weight of thirds

constexpr float kRisingStepFactor = 5.0F;
constexpr std::int32_t kStepBonusVoices = 3; // the lowest ones, the melody among them
constexpr float kSecondApartFactor = 0.05F;
constexpr float kThirdApartFactor = 0.15F;
constexpr float kLineFactor = 2.0F;

// A step count as the index of a table of weights. It is -1 within one place outside the scale, and beyond
// the octave the octave's weight holds.
std::int32_t Held(std::int32_t steps) { return std::clamp<std::int32_t>(steps, kPrime, kOctave); }

// --- Walking the cube
// ---------------------------------------------------------------------------------------------------------

// Hands every voicing of the task to visit(voices, scores), with the scores that it stands for: an element
// with three harmony voices, a row with two, a plane with one. `scores *= factor` scales them. A voicing that
// falls anywhere is scored 0 and not handed over; since the candidates rise, it falls where its indices do.
template<typename Visit>
void ForEachVoicing(const VoicingTask& task, CScoreCube& cube, Visit visit) {
    const std::int32_t n = task.candidateCount;
    const std::int32_t p = task.melody;
    for (std::int32_t i = 0; i < n; ++i) {
        if (task.harmonyVoices == 1) {
            auto scores = cube.Plane(i);
            visit(InsertMelody(p, task.Candidate(i)), scores);
            continue;
        }
        for (std::int32_t j = 0; j < i; ++j) cube.Row(i, j) = 0.0F;
        for (std::int32_t j = i; j < n; ++j) {
            if (task.harmonyVoices == 2) {
                auto scores = cube.Row(i, j);
                visit(InsertMelody(p, task.Candidate(i), task.Candidate(j)), scores);
                continue;
            }
            for (std::int32_t k = 0; k < j; ++k) cube.At(i, j, k) = 0.0F;
            for (std::int32_t k = j; k < n; ++k) {
                float& score = cube.At(i, j, k);
                if (score == 0.0F) continue;
                visit(InsertMelody(p, task.Candidate(i), task.Candidate(j), task.Candidate(k)), score);
            }
        }
    }
}

// The same for the two stages that know elements alone. With fewer harmony voices they reach only the first
// element of a row or plane.
//
// A quirk that stays: the other elements of the row or plane keep a score without the factor, so that with
// two or three voices a bonus can win, but a penalty is passed by. To reach them all would change nearly
// every voicing of these modes.
template<typename Visit>
void ForEachFirstElement(const VoicingTask& task, CScoreCube& cube, Visit visit) {
    const std::int32_t n = task.candidateCount;
    const std::int32_t columns = task.harmonyVoices >= 2 ? n : 1;
    const std::int32_t depth = task.harmonyVoices >= 3 ? n : 1;
    for (std::int32_t i = 0; i < n; ++i) {
        for (std::int32_t j = 0; j < columns; ++j) {
            for (std::int32_t k = 0; k < depth; ++k) {
                float& score = cube.At(i, j, k);
                if (score == 0.0F) continue;
                const std::int32_t a = task.Candidate(i);
                const std::int32_t b = task.Candidate(j);
                const std::int32_t c = task.Candidate(k);
                if (task.harmonyVoices == 1)
                    visit(InsertMelody(task.melody, a), score);
                else if (task.harmonyVoices == 2)
                    visit(InsertMelody(task.melody, a, b), score);
                else
                    visit(InsertMelody(task.melody, a, b, c), score);
            }
        }
    }
}

std::int32_t Previous(const VoicingTask& task, std::int32_t voice) {
    return task.previous[static_cast<std::size_t>(voice)];
}

// --- What the stages ask
// ---------------------------------------------------------------------------------------------------------

// Scale steps from the chord root up to a pitch, within an octave.
std::int32_t StepsAboveChordRoot(const VoicingTask& task, std::int32_t pitch) {
    return task.key.StepsUpwards(task.chordRoot, pitch);
}

struct ChordPresence {
    bool root = false;
    bool third = false;
    bool fifth = false;
    bool seventh = false;
};

ChordPresence FindPresent(const VoicingTask& task, const VoiceVector& voices) {
    ChordPresence present;
    for (std::int32_t voice = 0; voice < voices.count; ++voice) {
        switch (StepsAboveChordRoot(task, voices[voice])) {
        case kPrime:
            present.root = true;
            break;
        case kThird:
            present.third = true;
            break;
        case kFifth:
            present.fifth = true;
            break;
        case kSeventh:
            present.seventh = true;
            break;
        default:
            break;
        }
    }
    return present;
}

float TetradCompleteness(const ChordPresence& present) {
    float sum = 0.0F;
    if (present.root) sum += kRootPresence;
    if (present.third) sum += kThirdPresence;
    if (present.fifth) sum += kFifthPresence;
    if (present.seventh) sum += kSeventhPresence;
    return sum;
}

// A seventh stands in for what is missing.
float TriadCompleteness(const ChordPresence& present) {
    const bool complete = present.root && present.third && present.fifth;
    return complete || present.seventh ? 1.0F : kIncompleteTriadFactor;
}

// How welcome a voice's move from the note before is.
//
// A quirk that stays: in the lowest voice steps are halved by an arithmetic shift, so that three down count
// as two and three up as one. The bass leans upward by it.
float VoiceLeadingFactor(const VoicingTask& task, std::int32_t voice, std::int32_t pitch) {
    const std::int32_t before = Previous(task, voice);
    std::int32_t steps = task.key.StepsBetween(before, pitch);
    if (voice == 0) steps >>= 1;
    const std::int32_t halvings = std::min(std::abs(steps), kFewestHalvings);
    float factor = 1.0F;
    for (std::int32_t step = 0; step < halvings; ++step) factor *= kStepHalving;
    return std::abs(pitch - before) == 1 ? factor * kSemitoneFactor : factor;
}

// How a voice moves from the note before, in scale steps upward within an octave; a falling second is a six.
struct Motion {
    std::int32_t steps = 0;
    bool held = false;
};

Motion MotionOf(const VoicingTask& task, std::int32_t voice, std::int32_t pitch) {
    const std::int32_t before = Previous(task, voice);
    const std::int32_t steps = task.key.StepsUpwards(before, pitch);
    if (steps != kPrime) return {steps, false};
    return {kOctave, pitch == before};
}

// The factors for two voices at `interval` that move alike, by the number of voices.
template<typename Scores>
void ScaleParallels(const VoicingTask& task, std::int32_t interval, std::int32_t motion, Scores& scores) {
    const bool leapingThirds = interval == kThird && motion != kSecond;
    const float weight = kParallelWeights[Held(interval)];
    if (task.harmonyVoices == 2) {
        scores *= leapingThirds ? kLeapingThirdsOfThree : weight;
        return;
    }
    scores *= weight;
    if (leapingThirds) scores *= kLeapingThirdsFactor;
}

// Two voices that move by the same number of steps, at whatever interval, count as parallel octaves. It is
// meant so: with two voices independence is all there is.
template<typename Scores>
void ScaleParallelPair(const VoicingTask& task, const VoiceVector& voices, Scores& scores) {
    const Motion low = MotionOf(task, 0, voices[0]);
    const Motion high = MotionOf(task, 1, voices[1]);
    if (!low.held && !high.held && low.steps == high.steps) scores *= kParallelWeights[kOctave];
}

} // namespace

// --- Stages
// ---------------------------------------------------------------------------------------------------------

// The third, fifth and seventh are taken along the harmony scale whatever the chord's type: a chord from
// outside the scale is voiced with the tones that the scale has above its root.
void BuildCandidates(VoicingTask& task) {
    const std::int32_t root = task.key.Position(task.chordRoot);
    std::array<bool, kSemitonesInOctave> isChordTone{};
    isChordTone[static_cast<std::size_t>(root)] = true;
    const std::int32_t notes = std::min(task.chordNotes, kTetradNotes);
    for (std::int32_t note = 1; note < notes; ++note) {
        const std::int32_t semitones = task.key.ScaleWalk(root, Direction::kUp, 2 * note + 1);
        isChordTone[static_cast<std::size_t>(PitchClass(root + semitones))] = true;
    }
    task.candidates.fill(kNoPitch);
    task.candidateCount = 0;
    for (std::int32_t x = task.melody + task.rangeLow; x <= task.melody + task.rangeHigh; ++x) {
        if (!isChordTone[static_cast<std::size_t>(task.key.Position(x))]) continue;
        if (task.candidateCount == kMostCandidates) return;
        task.candidates[static_cast<std::size_t>(task.candidateCount++)] = x;
    }
}

// The lowest of the three indices must lie below the melody when one voice does, and so on. A choice may be
// scaled more than once.
void ApplyRangeOrder(const VoicingTask& task, CScoreCube& cube) {
    const std::int32_t n = task.candidateCount;
    const std::int32_t below = task.VoicesBelow();
    const std::int32_t above = 3 - below;
    for (std::int32_t x = 0; x < n; ++x) {
        if (task.Candidate(x) > task.melody) {
            if (below >= 1) cube.ScaleLowest(x, kWrongSideFactor);
            if (below >= 2) cube.ScaleMiddle(x, kWrongSideFactor);
            if (below >= 3) cube.ScaleHighest(x, kWrongSideFactor);
        }
        if (task.Candidate(x) < task.melody) {
            if (above >= 1) cube.ScaleHighest(x, kWrongSideFactor);
            if (above >= 2) cube.ScaleMiddle(x, kWrongSideFactor);
            if (above >= 3) cube.ScaleLowest(x, kWrongSideFactor);
        }
    }
    for (std::int32_t x = 2; x < n; ++x) {
        for (std::int32_t y = 1; y < x; ++y) {
            for (std::int32_t z = 0; z < y; ++z) {
                cube.At(x, y, z) *= kWrongSideFactor;
                cube.At(x, z, y) *= kWrongSideFactor;
                cube.At(z, x, y) *= kWrongSideFactor;
            }
        }
    }
}

void ApplyChordFit(const VoicingTask& task, CScoreCube& cube) {
    ForEachVoicing(task, cube, [&task](const VoiceVector& voices, auto& scores) {
        if (task.harmonyVoices > 1)
            scores *= ChordFitScore(task, voices);
        else if (IntervalUp(voices[0], voices[1]) == 0)
            scores *= kOctaveOfTwoFactor;
    });
}

float ChordFitScore(const VoicingTask& task, const VoiceVector& voices) {
    float score = 1.0F;
    bool noUnison = true;
    for (std::int32_t a = 0; a < voices.count; ++a) {
        for (std::int32_t b = a + 1; b < voices.count; ++b) {
            if (IntervalUp(voices[a], voices[b]) != 0) continue;
            if (voices[a] == voices[b]) {
                score *= kUnisonFactor;
                noUnison = false;
            }
            score *= kDoublingWeights[Held(StepsAboveChordRoot(task, voices[a]))];
        }
    }
    if (noUnison) score *= kNoUnisonFactor;
    const ChordPresence present = FindPresent(task, voices);
    return task.chordNotes == kTriadNotes ? score * TriadCompleteness(present)
                                          : TetradCompleteness(present) * score;
}

// The lowest harmony voice is the bass only where one lies below the melody.
void ApplyRootAffinity(const VoicingTask& task, CScoreCube& cube) {
    if (task.VoicesBelow() < 1) return;
    for (std::int32_t i = 0; i < task.candidateCount; ++i)
        cube.ScaleLowest(i, kBassWeights[Held(StepsAboveChordRoot(task, task.Candidate(i)))]);
}

void ApplyIntervalPreference(const VoicingTask& task, CScoreCube& cube) {
    ForEachVoicing(task, cube, [&task](const VoiceVector& voices, auto& scores) {
        scores *= kIntervalWeights[Held(task.key.StepsBetween(voices[0], voices[1]))];
    });
}

void ApplyVoiceLeading(const VoicingTask& task, CScoreCube& cube) {
    if (!task.HasPrevious()) return;
    ForEachVoicing(task, cube, [&task](const VoiceVector& voices, auto& scores) {
        for (std::int32_t voice = 0; voice < voices.count; ++voice) {
            const bool isMelody =
                task.harmonyVoices > 1 ? voice == task.MelodySlot() : voices[voice] == task.melody;
            if (!isMelody) scores *= VoiceLeadingFactor(task, voice, voices[voice]);
        }
    });
}

void ApplySpread(const VoicingTask& task, CScoreCube& cube) {
    const auto window = static_cast<float>(task.rangeHigh - task.rangeLow);
    const float tolerance = kSpreadTolerance[task.harmonyVoices];
    std::array<float, kWidestWindow + 1> factors; // by width; there are far fewer widths than voicings
    for (std::size_t width = 0; width < factors.size(); ++width) {
        const float share = static_cast<float>(width) / window;
        const double x = static_cast<double>((share - task.spreadTarget) / tolerance);
        factors[width] = static_cast<float>(std::max(std::exp(-x * x), kSmallestSpreadFactor));
    }
    ForEachVoicing(task, cube, [&](const VoiceVector& voices, auto& scores) {
        scores *= factors[static_cast<std::size_t>(voices.Highest() - voices.Lowest())];
    });
}

void ApplyParallels(const VoicingTask& task, CScoreCube& cube) {
    if (!task.HasPrevious()) return;
    ForEachVoicing(task, cube, [&task](const VoiceVector& voices, auto& scores) {
        if (task.harmonyVoices == 1) {
            ScaleParallelPair(task, voices, scores);
            return;
        }
        std::array<Motion, kVoiceSlots> motions;
        for (std::int32_t voice = 0; voice < voices.count; ++voice)
            motions[static_cast<std::size_t>(voice)] = MotionOf(task, voice, voices[voice]);
        for (std::int32_t a = 0; a < voices.count; ++a) {
            for (std::int32_t b = a + 1; b < voices.count; ++b) {
                const Motion& low = motions[static_cast<std::size_t>(a)];
                const Motion& high = motions[static_cast<std::size_t>(b)];
                if (low.held || high.held || low.steps != high.steps) continue;
                std::int32_t interval = task.key.StepsUpwards(voices[a], voices[b]);
                if (interval == kPrime && voices[a] == voices[b]) continue;
                if (interval == kPrime) interval = kOctave;
                ScaleParallels(task, interval, low.steps, scores);
            }
        }
    });
}

// Steps read upward, so that a falling one is no step here.
void ApplyStepBonus(const VoicingTask& task, CScoreCube& cube) {
    if (!task.HasPrevious()) return;
    ForEachFirstElement(task, cube, [&task](const VoiceVector& voices, float& score) {
        for (std::int32_t voice = 0; voice < std::min(voices.count, kStepBonusVoices); ++voice)
            if (task.key.StepsUpwards(Previous(task, voice), voices[voice]) == kSecond)
                score *= kRisingStepFactor;
    });
}

// Whatever octaves lie between the neighbours.
void ApplySpacing(const VoicingTask& task, CScoreCube& cube) {
    ForEachFirstElement(task, cube, [&task](const VoiceVector& voices, float& score) {
        for (std::int32_t voice = 0; voice + 1 < voices.count; ++voice) {
            const std::int32_t steps = task.key.StepsWithinOctave(voices[voice], voices[voice + 1]);
            if (steps == kSecond) score *= kSecondApartFactor;
            if (steps == kThird) score *= kThirdApartFactor;
        }
    });
}

// A quirk that stays: with three voices the upper harmony voice is taken to be the lowest candidate. Every
// choice whose lower voice is another one falls by that and is out, so that after a step the lower voice goes
// to the bottom of the window. To mend it would change nearly every three-voice arrangement.
void ApplyLineContinuation(const VoicingTask& task, CScoreCube& cube) {
    if (!task.HasPrevious() || task.stepMemory == kNoStep) return;
    const std::int32_t onward = task.stepMemory == kStepUp ? 1 : -1;
    for (std::int32_t i = 0; i < task.candidateCount; ++i) {
        const VoiceVector voices = task.harmonyVoices == 1
                                       ? InsertMelody(task.melody, task.Candidate(i))
                                       : InsertMelody(task.melody, task.Candidate(i), task.Candidate(0));
        if (!voices.IsRising()) {
            cube.Plane(i) = 0.0F;
            continue;
        }
        for (std::int32_t voice = 0; voice < voices.count; ++voice) {
            if (voices[voice] == task.melody) continue;
            if (task.key.StepsWithinOctave(Previous(task, voice), voices[voice]) == onward)
                cube.Plane(i) *= kLineFactor;
        }
    }
}

} // namespace sonorelle::ConsortierClassic
