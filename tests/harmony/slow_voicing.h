// The voicing of a note once more, as a literal scorer: every stage visits every element that it is about,
// builds the voices anew, and multiplies one factor at a time in single precision.

#pragma once

#include "harmony/chord_record.h"
#include "harmony/slow_key.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace sonorelle::slow {

using Chord = ConsortierClassic::ChordRecord;

struct Voicing {
    static constexpr float D[8] = {0.9F, 0, 0.7F, 0, 0.8F, 0, 0.5F, 0};
    static constexpr float R[8] = {1.0F, 0, 0.7F, 0, 0.6F, 0, 0.7F, 0};
    static constexpr float I[8] = {0.1F, 0.5F, 1.0F, 0.6F, 0.5F, 1.0F, 0.8F, 0};
    static constexpr float T[8] = {0.1F, 0.001F, 1.4F, 0.05F, 0.001F, 1.4F, 0.001F, 0.002F};

    Key key;
    int h = 3;
    int range = 1;
    float spread = 0.5F;
    std::array<int, 4> previous = {-1, -1, -1, -1};
    int stepMemory = 0;
    enum {
        AsUsual,
        Always,
        Never
    } elementStages = AsUsual; // step bonus and spacing, for a test of when they apply

    // The note at hand.
    Chord chord;
    int p = 0;
    std::vector<int> c;
    int n = 0;
    float cube[11][11][11] = {};

    int Low() const {
        const int w = (range - h) * 12;
        if (range >= h) return 0;
        return w >= -11 ? -12 : std::max(w, -16);
    }
    int High() const { return range < 1 && range < h ? 0 : std::min(range * 12, 16); }
    static float At(const float* table, int steps) { return table[std::clamp(steps, 0, 7)]; }

    std::vector<int> V(int i, int j, int k, int voices) const {
        std::vector<int> v;
        for (const int index : {i, j, k})
            if (static_cast<int>(v.size()) < voices) v.push_back(c[static_cast<std::size_t>(index)]);
        std::size_t place = 0;
        while (place < v.size() && v[place] < p) ++place;
        v.insert(v.begin() + static_cast<std::ptrdiff_t>(place), p);
        return v;
    }
    static bool Valid(const std::vector<int>& v) { return std::is_sorted(v.begin(), v.end()); }

    // What a factor goes on: the element, the row, or the plane.
    std::vector<float*> Cells(int i, int j, int k) {
        std::vector<float*> cells;
        for (int jj = 0; jj < n; ++jj)
            for (int kk = 0; kk < n; ++kk)
                if ((h < 2 || jj == j) && (h < 3 || kk == k)) cells.push_back(&cube[i][jj][kk]);
        return cells;
    }
    void Times(int i, int j, int k, float factor) {
        for (float* cell : Cells(i, j, k)) *cell *= factor;
    }
    void Clear(int i, int j, int k) {
        for (float* cell : Cells(i, j, k)) *cell = 0.0F;
    }

    template<typename Each>
    void All(Each each) {
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < (h >= 2 ? n : 1); ++j)
                for (int k = 0; k < (h >= 3 ? n : 1); ++k) each(i, j, k);
    }

    void BuildCandidates() {
        const int b = key.Position(chord.root);
        std::vector<int> tones = {b};
        for (int t = 1; t <= chord.noteCount - 1; ++t) tones.push_back((b + key.Walk(b, 1, 2 * t + 1)) % 12);
        c.clear();
        for (int x = p + Low(); x <= p + High(); ++x)
            if (std::find(tones.begin(), tones.end(), key.Position(x)) != tones.end()) c.push_back(x);
        n = static_cast<int>(c.size());
    }

    void RangeOrder() {
        const int b = h - range;
        const int a = 3 - b;
        const auto scale = [&](auto chosen) {
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    for (int k = 0; k < n; ++k)
                        if (chosen(i, j, k)) cube[i][j][k] *= 1e-5F;
        };
        for (int x = 0; x < n; ++x) {
            if (c[static_cast<std::size_t>(x)] > p) {
                if (b >= 1) scale([x](int i, int, int) { return i == x; });
                if (b >= 2) scale([x](int, int j, int) { return j == x; });
                if (b >= 3) scale([x](int, int, int k) { return k == x; });
            }
            if (c[static_cast<std::size_t>(x)] < p) {
                if (a >= 1) scale([x](int, int, int k) { return k == x; });
                if (a >= 2) scale([x](int, int j, int) { return j == x; });
                if (a >= 3) scale([x](int i, int, int) { return i == x; });
            }
        }
        scale([](int x, int y, int z) { return x > y && y > z; });
        scale([](int x, int z, int y) { return x > y && y > z; });
        scale([](int z, int x, int y) { return x > y && y > z; });
    }

    float FitScore(const std::vector<int>& v) const {
        const auto s = [&](int pitch) {
            return key.Steps(key.Position(chord.root), Reduce(pitch - chord.root));
        };
        float score = 1.0F;
        bool noUnison = true;
        for (std::size_t a = 0; a < v.size(); ++a) {
            for (std::size_t b = a + 1; b < v.size(); ++b) {
                if (Reduce(v[a] - v[b]) != 0) continue;
                if (v[a] == v[b]) {
                    score *= 0.15F;
                    noUnison = false;
                }
                score *= At(D, s(v[a]));
            }
        }
        if (noUnison) score *= 4.0F;
        bool present[8] = {};
        for (const int pitch : v)
            for (const int tone : {0, 2, 4, 6})
                if (s(pitch) == tone) present[tone] = true;
        if (chord.noteCount != 3) {
            float sum = 0.0F;
            sum += present[0] ? 0.5F : 0.0F;
            sum += present[2] ? 0.4F : 0.0F;
            sum += present[4] ? 0.1F : 0.0F;
            sum += present[6] ? 0.7F : 0.0F;
            return sum * score;
        }
        if (!present[0] || !present[2]) return present[6] ? score : score * 0.1F;
        return present[4] || present[6] ? score : score * 0.1F;
    }

    void ChordFit() {
        All([&](int i, int j, int k) {
            const auto v = V(i, j, k, h);
            if (!Valid(v))
                Clear(i, j, k);
            else if (h > 1)
                Times(i, j, k, FitScore(v));
            else if ((v[1] - v[0]) % 12 == 0)
                Times(i, j, k, 0.15F);
        });
    }

    void RootAffinity() {
        if (h - range < 1) return;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                for (int k = 0; k < n; ++k)
                    cube[i][j][k] *= At(R, key.Steps(key.Position(chord.root),
                                                     Reduce(c[static_cast<std::size_t>(i)] - chord.root)));
    }

    void IntervalPreference() {
        if (h != 1) return;
        All([&](int i, int j, int k) {
            const auto v = V(i, j, k, 1);
            if (!Valid(v))
                Clear(i, j, k);
            else
                Times(i, j, k, At(I, key.StepsFull(v[0], v[1])));
        });
    }

    // t outside, elements inside: the other way round than the engine.
    void VoiceLeading() {
        if (previous[0] < 0) return;
        for (int t = 0; t <= h; ++t) {
            if (h > 1 && t == h - range) continue;
            const int w = previous[static_cast<std::size_t>(t)];
            All([&](int i, int j, int k) {
                const auto v = V(i, j, k, h);
                if (!Valid(v)) return Clear(i, j, k);
                const int pitch = v[static_cast<std::size_t>(t)];
                if (h == 1 && pitch == p) return;
                int s = key.StepsFull(w, pitch);
                if (t == 0) s = static_cast<int>(std::floor(s / 2.0));
                float f = static_cast<float>(std::pow(0.5, std::abs(s)));
                if (std::abs(pitch - w) == 1) f *= 1.6F;
                Times(i, j, k, f);
            });
        }
    }

    void Spread() {
        const float sigma = h == 3 ? 0.1F : h == 2 ? 0.2F : 0.3F;
        All([&](int i, int j, int k) {
            const auto v = V(i, j, k, h);
            const float share =
                static_cast<float>(std::abs(v.back() - v.front())) / static_cast<float>(High() - Low());
            const float x = (share - spread) / sigma;
            double factor = std::exp(-(static_cast<double>(x) * static_cast<double>(x)));
            if (factor < 1e-10) factor = 1e-10;
            Times(i, j, k, static_cast<float>(factor));
        });
    }

    void Parallels() {
        if (previous[0] < 0) return;
        All([&](int i, int j, int k) {
            const auto v = V(i, j, k, h);
            if (!Valid(v)) return Clear(i, j, k);
            for (std::size_t a = 0; a < v.size(); ++a) {
                for (std::size_t b = a + 1; b < v.size(); ++b) {
                    int motionA = key.Steps12(previous[a], v[a]);
                    int motionB = key.Steps12(previous[b], v[b]);
                    if (motionA == 0 && v[a] == previous[a]) continue;
                    if (motionB == 0 && v[b] == previous[b]) continue;
                    if (motionA == 0) motionA = 7;
                    if (motionB == 0) motionB = 7;
                    if (motionA != motionB) continue;
                    if (h == 1) {
                        Times(i, j, k, 0.002F);
                        continue;
                    }
                    int iv = key.Steps12(v[a], v[b]);
                    if (iv == 0 && v[a] == v[b]) continue;
                    if (iv == 0) iv = 7;
                    if (h == 3) {
                        Times(i, j, k, At(T, iv));
                        if (iv == 2 && motionA != 1) Times(i, j, k, 0.7214286F);
                    } else {
                        Times(i, j, k, iv == 2 && motionA != 1 ? 1.01F : At(T, iv));
                    }
                }
            }
        });
    }

    template<typename Factor>
    void OnFirstElements(Factor factor) {
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                for (int k = 0; k < n; ++k) {
                    if ((h < 3 && k > 0) || (h < 2 && j > 0) || cube[i][j][k] == 0.0F) continue;
                    for (std::size_t t = 0; t < 3; ++t) cube[i][j][k] *= factor(V(i, j, k, h), t);
                }
    }

    void StepBonus() {
        if (previous[0] < 0) return;
        OnFirstElements([&](const std::vector<int>& v, std::size_t t) {
            return t < v.size() && key.Steps12(previous[t], v[t]) == 1 ? 5.0F : 1.0F;
        });
    }

    void Spacing() {
        OnFirstElements([&](const std::vector<int>& v, std::size_t t) {
            if (t + 1 >= v.size()) return 1.0F;
            const int s = key.StepsT(v[t], v[t + 1]);
            return s == 1 ? 0.05F : s == 2 ? 0.15F : 1.0F;
        });
    }

    void LineContinuation() {
        if (previous[0] < 0 || stepMemory == 0) return;
        for (int i = 0; i < n; ++i) {
            const auto v = V(i, 0, 0, h);
            for (int j = 0; j < n; ++j) {
                for (int k = 0; k < n; ++k) {
                    if (!Valid(v)) cube[i][j][k] = 0.0F;
                    if (!Valid(v)) continue;
                    for (std::size_t t = 0; t < v.size(); ++t) {
                        if (v[t] == p) continue;
                        const int s = key.StepsT(previous[t], v[t]);
                        if ((s == 1 && stepMemory == 2) || (s == -1 && stepMemory == 1))
                            cube[i][j][k] *= 2.0F;
                    }
                }
            }
        }
    }

    void Generate(int pitch, int* row, const Chord& given) {
        chord = given;
        p = key.Prepared(pitch);
        if (chord.triadType == 5 && chord.tetradType == 13) {
            row[0] = p;
            int slot = 1;
            for (int t = 0; t < 4; ++t)
                if (t != h - range) row[slot++] = previous[static_cast<std::size_t>(t)];
            return;
        }
        BuildCandidates();
        for (auto& plane : cube)
            for (auto& line : plane) std::fill(std::begin(line), std::end(line), 1.0F);
        RangeOrder();
        ChordFit();
        RootAffinity();
        IntervalPreference();
        VoiceLeading();
        Spread();
        Parallels();
        if (elementStages == Always || (elementStages == AsUsual && (h < 3 || chord.noteCount != 3))) {
            StepBonus();
            Spacing();
        }
        if (h < 3) LineContinuation();
        float best = 0.0F;
        int bi = 0, bj = 0, bk = 0;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                for (int k = 0; k < n; ++k)
                    if (cube[i][j][k] >= best) {
                        best = cube[i][j][k];
                        bi = i, bj = j, bk = k;
                    }
        const int chosen[3] = {c[static_cast<std::size_t>(bi)], c[static_cast<std::size_t>(bj)],
                               c[static_cast<std::size_t>(bk)]};
        row[0] = p;
        for (int t = 0; t < 3; ++t) row[t + 1] = t < h ? chosen[t] : -1;
        if (h < 3 && previous[1] != -1) {
            const int s = key.StepsT(previous[1], chosen[0]);
            stepMemory = s == 1 ? 2 : s == -1 ? 1 : 0;
        }
        const auto all = V(bi, bj, bk, 3);
        std::copy(all.begin(), all.end(), previous.begin());
    }
};

} // namespace sonorelle::slow
