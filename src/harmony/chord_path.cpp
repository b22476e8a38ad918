// The chord path is a Viterbi search over 25 states, the major and minor triads and a spare one:
//
//   1  weights   each note gives weight to the three triads of the key that hold it, by degree; the first
//                and the last note prefer the tonic still more
//   2  normalise the largest weight becomes 1
//   3  forward   the cheapest way to every state of every note: a note costs what its weight lacks of 1, a
//                step from chord to chord what the table of progressions lacks of 1
//   4  backward  from the cheapest end along the recorded steps
//
// After: G. D. Forney, "The Viterbi Algorithm", Proc. IEEE 61 (1973). Costs are sums, not logarithms of
// products. Chords that do not belong to the key are reached at full cost, so that the path never breaks off.
// Of equal costs the lowest state wins.

#include "harmony/chord_path.h"

#include "harmony/chords.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kDegreeCount = 7;

using Progressions = float[kDegreeCount][kDegreeCount];

// clang-format off

// How much a chord belongs to the key: for the first and the last note besides, and for every note.
//                                                 I     II    III   IV    V     VI    VII
constexpr float kEdgeWeights[kDegreeCount]   = { 1.0F, 0.3F, 0.3F, 0.4F, 0.5F, 0.4F, 0.1F };
constexpr float kDegreeWeights[kDegreeCount] = { 1.0F, 0.5F, 0.5F, 0.8F, 0.9F, 0.7F, 0.4F };

// How well a chord (column) follows another (row). To stay is the best of each row.
constexpr Progressions kMajorProgressions = {
    //  I           II          III         IV          V           VI          VII          from
    { 0.9090909F, 0.35F,      0.4090909F, 0.8F,       0.6F,       0.5F,       0.25F      }, // I
    { 0.25F,      0.9090909F, 0.4090909F, 0.4545454F, 0.8F,       0.3181818F, 0.5454546F }, // II
    { 0.4090909F, 0.2272727F, 0.9090909F, 0.3181818F, 0.7272727F, 0.5F,       0.5454546F }, // III
    { 0.5F,       0.3181818F, 0.4090909F, 0.9090909F, 0.8F,       0.25F,      0.6F       }, // IV
    { 0.8F,       0.25F,      0.3181818F, 0.4545454F, 0.9090909F, 0.6F,       0.4090909F }, // V
    { 0.35F,      0.7272727F, 0.5454546F, 0.5F,       0.45F,      0.9090909F, 0.2272727F }, // VI
    { 0.8F,       0.2272727F, 0.2272727F, 0.45F,      0.4545454F, 0.5454546F, 0.9090909F }, // VII
};

// In every scale but major.
constexpr Progressions kOtherProgressions = {
    //  I           II          III         IV          V           VI          VII          from
    { 0.9090909F, 0.2272727F, 0.45F,      0.8F,       0.6F,       0.5F,       0.3181818F }, // I
    { 0.2272727F, 0.9090909F, 0.7272727F, 0.4090909F, 0.5454546F, 0.3181818F, 0.4545454F }, // II
    { 0.5F,       0.2272727F, 0.9090909F, 0.35F,      0.45F,      0.7272727F, 0.5454546F }, // III
    { 0.45F,      0.2272727F, 0.35F,      0.9090909F, 0.7272727F, 0.4545454F, 0.6F       }, // IV
    { 0.8F,       0.2272727F, 0.35F,      0.5454546F, 0.9090909F, 0.45F,      0.5454546F }, // V
    { 0.45F,      0.2272727F, 0.3181818F, 0.7272727F, 0.6F,       0.9090909F, 0.4545454F }, // VI
    { 0.5454546F, 0.3181818F, 0.8F,       0.5F,       0.2272727F, 0.4090909F, 0.9090909F }, // VII
};
// clang-format on

// --- States
// ---------------------------------------------------------------------------------------------------------

constexpr std::int32_t kStateCount = 25;
constexpr std::int32_t kSpareState = 24;      // never given weight by a note
constexpr std::int32_t kUnfollowedState = 23; // see StepCosts
constexpr std::int32_t kChordsOfNote = 3;

constexpr float kFullCost = 1.0F;
constexpr float kNoWay = 1e38F;        // a step that does not exist
constexpr float kWorseThanAny = 1e37F; // what every way that exists is cheaper than
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

// Major triads, then minor ones; the spare state reads as a diminished triad on C.
ChordRecord ChordOf(std::int32_t state) {
    return {state % kSemitonesInOctave, kTriadNotes, state / kSemitonesInOctave, kNoTetrad};
}

std::int32_t DegreeOf(const CKey& key, std::int32_t pitchClass) {
    return key.ScaleSteps(0, key.Position(pitchClass));
}

// Chords with more degrees than seven exist only in the row of all twelve tones; the tables do not reach
// them, and the weight of the last degree holds.
std::size_t WeightIndex(const CKey& key, std::int32_t pitchClass) {
    return static_cast<std::size_t>(std::min(DegreeOf(key, pitchClass), kDegreeCount - 1));
}

bool BelongsToKey(const CKey& key, std::int32_t state) {
    return IsDiatonicChord(key, ChordOf(state)) && DegreeOf(key, state % kSemitonesInOctave) < kDegreeCount;
}

template<typename T>
using PerState = std::array<T, static_cast<std::size_t>(kStateCount)>;

constexpr std::size_t At(std::int32_t index) { return static_cast<std::size_t>(index); }

// --- 1 Weights
// ---------------------------------------------------------------------------------------------------------

struct NoteChords {
    ChordRecord chords[kChordsOfNote];
    float weights[kChordsOfNote] = {1.0F, 1.0F, 1.0F};
};

// The best chord gets weight 1. A note that no triad of the key holds has no best chord: its weights are not
// numbers, lose every comparison, and so their state is never on the path.
void ApplyEdgeWeights(const CKey& key, NoteChords& note) {
    float largest = 0.0F;
    for (std::int32_t i = 0; i < kChordsOfNote; ++i) {
        float& weight = note.weights[i];
        const bool isTriad = note.chords[i].triadType != kNoTriad;
        weight = isTriad ? kEdgeWeights[WeightIndex(key, note.chords[i].root)] * weight : 0.0F;
        largest = std::max(largest, weight);
    }
    for (float& weight : note.weights) weight = largest > 0.0F ? weight / largest : kNotANumber;
}

void ApplyDegreeWeights(const CKey& key, NoteChords& note) {
    for (std::int32_t i = 0; i < kChordsOfNote; ++i)
        note.weights[i] = note.weights[i] * kDegreeWeights[WeightIndex(key, note.chords[i].root)];
}

// An augmented triad counts as major, a diminished one as minor, any other by the third that the scale has
// above its root.
bool CountsAsMinor(const CKey& key, const ChordRecord& chord) {
    constexpr std::int32_t kMajorThird = 4;
    switch (chord.triadType) {
    case kMajorTriad:
    case kAugmentedTriad:
        return false;
    case kMinorTriad:
    case kDiminishedTriad:
        return true;
    default:
        return key.ScaleWalk(key.Position(chord.root), Direction::kUp, kThirdTone) != kMajorThird;
    }
}

void StoreStates(const CKey& key, const NoteChords& note, PerState<float>& weights) {
    weights.fill(0.0F);
    for (std::int32_t i = 0; i < kChordsOfNote; ++i) {
        const ChordRecord& chord = note.chords[i];
        const std::int32_t mode = CountsAsMinor(key, chord) ? kSemitonesInOctave : 0;
        weights[At(chord.root + mode)] = note.weights[i];
    }
}

std::vector<PerState<float>> WeighStates(const CKey& key, const std::int32_t* pitches, std::int32_t n) {
    std::vector<PerState<float>> stateWeights(At(n));
    for (std::int32_t t = 0; t < n; ++t) {
        NoteChords note;
        ChordsForPitch(key, key.Prepare(pitches[t]), note.chords, kChordsOfNote);
        if (t == 0 || t == n - 1) ApplyEdgeWeights(key, note);
        ApplyDegreeWeights(key, note);
        StoreStates(key, note, stateWeights[At(t)]);
    }
    return stateWeights;
}

// --- 2 Normalise
// ---------------------------------------------------------------------------------------------------------

void Normalise(std::vector<PerState<float>>& stateWeights) {
    float largest = 0.0F;
    for (const PerState<float>& weights : stateWeights)
        for (const float weight : weights)
            if (weight > largest) largest = weight;
    if (!(largest > 0.0F)) return;
    for (PerState<float>& weights : stateWeights)
        for (float& weight : weights) weight /= largest;
}

// --- 3 Forward
// ---------------------------------------------------------------------------------------------------------

// What a step costs: row the state that it goes to, column the one that it comes from.
//
// A quirk that stays: a chord outside the key cannot follow the minor triad on B. To mend it would change the
// chords that are found in keys that have this triad.
PerState<PerState<float>> StepCosts(const CKey& key) {
    const Progressions& table =
        key.GetHarmonyScale() == kMajorScale ? kMajorProgressions : kOtherProgressions;
    const auto degree = [&key](std::int32_t state) { return DegreeOf(key, state % kSemitonesInOctave); };
    PerState<PerState<float>> costs;
    for (std::int32_t to = 0; to < kStateCount; ++to) {
        costs[At(to)].fill(kFullCost);
        if (!BelongsToKey(key, to)) {
            costs[At(to)][At(kUnfollowedState)] = kNoWay;
            continue;
        }
        for (std::int32_t from = 0; from < kSpareState; ++from)
            if (BelongsToKey(key, from)) costs[At(to)][At(from)] = 1.0F - table[degree(from)][degree(to)];
    }
    return costs;
}

// The steps back along the cheapest way, as offsets from state to state.
using BackPointers = std::vector<PerState<std::int8_t>>;

PerState<float> FirstCosts(const PerState<float>& weights) {
    PerState<float> costs;
    for (std::int32_t state = 0; state < kStateCount; ++state) costs[At(state)] = 1.0F - weights[At(state)];
    return costs;
}

PerState<float> NextCosts(const PerState<float>& costs, const PerState<PerState<float>>& stepCosts,
                          const PerState<float>& weights, PerState<std::int8_t>& offsets) {
    PerState<float> next;
    for (std::int32_t state = 0; state < kStateCount; ++state) {
        float best = kWorseThanAny;
        std::int32_t bestPredecessor = state;
        for (std::int32_t from = 0; from < kStateCount; ++from) {
            const float cost = stepCosts[At(state)][At(from)] + costs[At(from)];
            if (!(best > cost)) continue;
            best = cost;
            bestPredecessor = from;
        }
        offsets[At(state)] = static_cast<std::int8_t>(bestPredecessor - state);
        next[At(state)] = (best + 1.0F) - weights[At(state)];
    }
    return next;
}

std::int32_t CheapestState(const PerState<float>& costs) {
    float best = kWorseThanAny;
    std::int32_t cheapest = 0;
    for (std::int32_t state = 0; state < kStateCount; ++state) {
        if (!(best > costs[At(state)])) continue;
        best = costs[At(state)];
        cheapest = state;
    }
    return cheapest;
}

// --- 4 Backward
// ---------------------------------------------------------------------------------------------------------

void TrackBack(const BackPointers& backPointers, std::int32_t state, ChordRecord* chords, std::int32_t n) {
    for (std::int32_t t = n - 1; t >= 0; --t) {
        chords[t] = ChordOf(state);
        state += backPointers[At(t)][At(state)];
    }
}

void Search(const CKey& key, const std::int32_t* pitches, ChordRecord* chords, std::int32_t n) {
    std::vector<PerState<float>> stateWeights = WeighStates(key, pitches, n);
    Normalise(stateWeights);
    const PerState<PerState<float>> stepCosts = StepCosts(key);
    BackPointers backPointers(At(n));
    PerState<float> costs = FirstCosts(stateWeights.front());
    for (std::int32_t t = 1; t < n; ++t)
        costs = NextCosts(costs, stepCosts, stateWeights[At(t)], backPointers[At(t)]);
    TrackBack(backPointers, CheapestState(costs), chords, n);
}

} // namespace

std::int32_t FindChordPath(const CKey& key, const std::int32_t* pitches, ChordRecord* chords,
                           std::int32_t n) {
    if (n < 1) return kOk;
    if (pitches == nullptr || chords == nullptr) return kBadArgument;
    try {
        Search(key, pitches, chords, n);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kOk;
}

} // namespace sonorelle::ConsortierClassic
