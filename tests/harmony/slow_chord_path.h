// Chords and the chord path once more: chords are recognised on lists that are sorted anew each round, the
// path is found with fifty candidates a state, and its cost by a search over all paths.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/slow_key.h"

#include <algorithm>
#include <array>
#include <vector>

namespace sonorelle::slow {

using Chord = ConsortierClassic::ChordRecord;

inline Chord Recognise(const std::vector<int>& pitches) {
    std::vector<int> notes;
    for (const int pitch : pitches)
        if (pitch >= 0 && std::find(notes.begin(), notes.end(), pitch % 12) == notes.end())
            notes.push_back(pitch % 12);
    Chord chord{0, static_cast<int>(notes.size()), 5, 13};
    if (notes.size() < 3) return chord;
    std::sort(notes.begin(), notes.end());
    for (std::size_t round = 0; round < notes.size(); ++round) {
        for (std::size_t lower = 0; lower + 1 < notes.size(); ++lower) {
            const int gap = notes[lower + 1] - notes[lower];
            if (gap == 3 || gap == 4) continue;
            for (std::size_t above = lower + 1; above < notes.size(); ++above) notes[above] -= 12;
            break;
        }
        std::sort(notes.begin(), notes.end());
    }
    const int d1 = notes[1] - notes[0];
    const int d2 = notes[2] - notes[0];
    chord.root = (notes[0] + 156) % 12;
    if (notes.size() == 3) {
        if (d2 == 6) chord.triadType = d1 == 3 ? 2 : 4;
        if (d2 == 7) chord.triadType = d1 == 3 ? 1 : d1 == 4 ? 0 : 4;
        if (d2 == 8) chord.triadType = d1 == 4 ? 3 : 4;
        return chord;
    }
    const int d3 = notes[3] - notes[0];
    chord.tetradType = 12;
    if (d1 == 3 && d2 == 6 && d3 == 9) chord.tetradType = 10;
    if (d1 == 3 && d2 == 6 && d3 == 10) chord.tetradType = 9;
    if (d1 == 3 && d2 == 7 && d3 == 10) chord.tetradType = 7;
    if (d1 == 3 && d2 == 7 && d3 == 11) chord.tetradType = 11;
    if (d1 == 4 && d2 == 7 && d3 == 10) chord.tetradType = 8;
    if (d1 == 4 && d2 == 7 && d3 == 11) chord.tetradType = 6;
    return chord;
}

class ChordPath {
public:
    ChordPath(const Key& theKey, const std::vector<int>& pitches) : key(theKey) {
        const int n = static_cast<int>(pitches.size());
        for (int state = 0; state < 25; ++state) {
            inKey[static_cast<std::size_t>(state)] = BelongsToKey(state);
            degrees[static_cast<std::size_t>(state)] = std::min(Degree(state % 12), 6);
        }
        float largest = 0.0F;
        for (int t = 0; t < n; ++t)
            weights.push_back(Weigh(pitches[static_cast<std::size_t>(t)], t == 0 || t == n - 1));
        for (const auto& states : weights)
            for (const float weight : states)
                if (weight > largest) largest = weight;
        if (largest > 0.0F)
            for (auto& states : weights)
                for (float& weight : states) weight /= largest;
    }

    std::vector<std::array<float, 25>> weights; // by note and state, the largest 1

    static Chord ChordOf(int state) { return {state % 12, 3, state / 12, 13}; }

    // What it costs to be in `state` at the first note, and to go on to `to` at note t with `cost` run up in
    // `from`.
    float First(int state) const { return 1.0F - weights[0][static_cast<std::size_t>(state)]; }
    float Step(int from, int to, float cost) const {
        if (from == 24) return cost + 1.0F;
        if (!InKey(to)) return from == 23 ? 1e38F : cost + 1.0F;
        const float b =
            InKey(from)
                ? Table()[degrees[static_cast<std::size_t>(from)]][degrees[static_cast<std::size_t>(to)]]
                : 0.0F;
        return (1.0F - b) + cost;
    }
    float Next(int from, int to, float cost, std::size_t t) const {
        return (Step(from, to, cost) + 1.0F) - weights[t][static_cast<std::size_t>(to)];
    }

    float CostOf(const std::vector<int>& states) const {
        float cost = First(states[0]);
        for (std::size_t t = 1; t < states.size(); ++t) cost = Next(states[t - 1], states[t], cost, t);
        return cost;
    }

    // The least cost over all 25^n paths. No cost is negative, so that a beginning that is dearer already is
    // not followed.
    float LeastCost() const {
        float best = 1e37F;
        for (int state = 0; state < 25; ++state) Follow(state, First(state), 1, best);
        return best;
    }

    // The same with fifty candidates a state, the predecessor j of s at place 25 - s + j.
    std::vector<Chord> Search() const {
        const std::size_t n = weights.size();
        std::vector<std::array<int, 25>> back(n);
        std::array<float, 25> costs{};
        for (int s = 0; s < 25; ++s) costs[static_cast<std::size_t>(s)] = First(s);
        for (std::size_t t = 1; t < n; ++t) {
            std::array<float, 25> next{};
            for (int s = 0; s < 25; ++s) {
                std::array<float, 50> trans;
                trans.fill(1e38F);
                for (int j = 0; j < 25; ++j)
                    trans[static_cast<std::size_t>(25 - s + j)] =
                        Step(j, s, costs[static_cast<std::size_t>(j)]);
                float best = 1e37F;
                int place = 25;
                for (int x = 0; x < 50; ++x) {
                    if (!(best > trans[static_cast<std::size_t>(x)])) continue;
                    best = trans[static_cast<std::size_t>(x)];
                    place = x;
                }
                back[t][static_cast<std::size_t>(s)] = place - 25;
                next[static_cast<std::size_t>(s)] = (best + 1.0F) - weights[t][static_cast<std::size_t>(s)];
            }
            costs = next;
        }
        float best = 1e37F;
        int s = 0;
        for (int state = 0; state < 25; ++state) {
            if (!(best > costs[static_cast<std::size_t>(state)])) continue;
            best = costs[static_cast<std::size_t>(state)];
            s = state;
        }
        std::vector<Chord> chords(n);
        for (std::size_t t = n; t-- > 0;) {
            chords[t] = ChordOf(s);
            s += back[t][static_cast<std::size_t>(s)];
        }
        return chords;
    }

private:
    static constexpr float kEdge[7] = {1.0F, 0.3F, 0.3F, 0.4F, 0.5F, 0.4F, 0.1F};
    static constexpr float kEvery[7] = {1.0F, 0.5F, 0.5F, 0.8F, 0.9F, 0.7F, 0.4F};
    static constexpr float kMajor[7][7] = {
        {0.9090909F, 0.35F, 0.4090909F, 0.8F, 0.6F, 0.5F, 0.25F},
        {0.25F, 0.9090909F, 0.4090909F, 0.4545454F, 0.8F, 0.3181818F, 0.5454546F},
        {0.4090909F, 0.2272727F, 0.9090909F, 0.3181818F, 0.7272727F, 0.5F, 0.5454546F},
        {0.5F, 0.3181818F, 0.4090909F, 0.9090909F, 0.8F, 0.25F, 0.6F},
        {0.8F, 0.25F, 0.3181818F, 0.4545454F, 0.9090909F, 0.6F, 0.4090909F},
        {0.35F, 0.7272727F, 0.5454546F, 0.5F, 0.45F, 0.9090909F, 0.2272727F},
        {0.8F, 0.2272727F, 0.2272727F, 0.45F, 0.4545454F, 0.5454546F, 0.9090909F}};
    static constexpr float kOther[7][7] = {
        {0.9090909F, 0.2272727F, 0.45F, 0.8F, 0.6F, 0.5F, 0.3181818F},
        {0.2272727F, 0.9090909F, 0.7272727F, 0.4090909F, 0.5454546F, 0.3181818F, 0.4545454F},
        {0.5F, 0.2272727F, 0.9090909F, 0.35F, 0.45F, 0.7272727F, 0.5454546F},
        {0.45F, 0.2272727F, 0.35F, 0.9090909F, 0.7272727F, 0.4545454F, 0.6F},
        {0.8F, 0.2272727F, 0.35F, 0.5454546F, 0.9090909F, 0.45F, 0.5454546F},
        {0.45F, 0.2272727F, 0.3181818F, 0.7272727F, 0.6F, 0.9090909F, 0.4545454F},
        {0.5454546F, 0.3181818F, 0.8F, 0.5F, 0.2272727F, 0.4090909F, 0.9090909F}};

    Key key;
    std::array<bool, 25> inKey{}; // by state
    std::array<int, 25> degrees{};

    const float (&Table() const)[7][7] { return key.harmonyScale == 0 ? kMajor : kOther; }
    int Degree(int pitchClass) const { return key.Steps(0, key.Position(pitchClass)); }
    int WeightAt(int pitchClass) const { return std::min(Degree(pitchClass), 6); }
    int TriadType(int pitchClass) const {
        const int q = key.Position(pitchClass);
        return Recognise({key.Walk(q, 1, 1), key.Walk(q, 1, 3), key.Walk(q, 1, 5)}).triadType;
    }
    bool InKey(int state) const { return inKey[static_cast<std::size_t>(state)]; }
    bool BelongsToKey(int state) const {
        return key.Flag(key.Position(state % 12)) && TriadType(state % 12) == state / 12 &&
               Degree(state % 12) < 7;
    }

    std::array<float, 25> Weigh(int pitch, bool edge) const {
        const int p = key.Prepared(pitch);
        const int q = key.Position(p);
        int roots[3];
        int types[3];
        float w[3] = {1.0F, 1.0F, 1.0F};
        for (int i = 0; i < 3; ++i) {
            roots[i] = key.Flag(q) ? Reduce(p - key.Walk(q, -1, 2 * i + 1)) : Reduce(p);
            types[i] = key.Flag(q) ? TriadType(roots[i]) : 5;
        }
        if (edge) {
            for (int i = 0; i < 3; ++i) w[i] = types[i] == 5 ? 0.0F : kEdge[WeightAt(roots[i])];
            const float largest = std::max({w[0], w[1], w[2]});
            for (float& weight : w) weight /= largest;
        }
        std::array<float, 25> states{};
        for (int i = 0; i < 3; ++i) {
            int mode = types[i] == 1 || types[i] == 2 ? 1 : 0;
            if (types[i] > 3) mode = key.Walk(key.Position(roots[i]), 1, 3) == 4 ? 0 : 1;
            states[static_cast<std::size_t>(roots[i] + 12 * mode)] = w[i] * kEvery[WeightAt(roots[i])];
        }
        return states;
    }

    void Follow(int state, float cost, std::size_t t, float& best) const {
        if (!(cost < best)) return;
        if (t == weights.size()) {
            best = cost;
            return;
        }
        for (int to = 0; to < 25; ++to) Follow(to, Next(state, to, cost, t), t + 1, best);
    }
};

} // namespace sonorelle::slow
