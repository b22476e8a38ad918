// A score for every choice of three candidates (i, j, k), the lowest, middle and highest harmony voice. The
// stages of the voicing multiply factors into it, and the best score wins.
//
// With fewer harmony voices the further indices mean nothing, and a factor goes on a whole row (i, j) or
// plane (i). Rows are contiguous and padded to a multiple of four, so that these loops run over whole
// vectors. The storage is part of the object and large enough for every window: nothing here allocates.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

inline constexpr std::int32_t kMostCandidates = 11;       // chord tones in the widest window
inline constexpr std::int32_t kNothingToChoose = 9999999; // answered by PickBest

class CScoreCube {
public:
    static constexpr std::int32_t kRowLength = 12; // kMostCandidates, up to the next multiple of four

    // Some contiguous rows, that one factor goes on.
    class Rows {
    public:
        void operator*=(float factor) {
            for (float* score = first; score != last; ++score) *score *= factor;
        }
        Rows& operator=(float value) {
            for (float* score = first; score != last; ++score) *score = value;
            return *this;
        }

    private:
        friend class CScoreCube;
        Rows(float* begin, std::int32_t rowCount) : first(begin), last(begin + rowCount * kRowLength) {}
        float* first;
        float* last;
    };

    struct Choice {
        std::int32_t i, j, k;
    };

    // Scores of 1 for the choices among `candidateCount` (0 to kMostCandidates), 0 in the padding.
    void Reset(std::int32_t candidateCount);
    std::int32_t GetCandidateCount() const { return count; }

    float& At(std::int32_t i, std::int32_t j, std::int32_t k) { return scores[Index(i, j, k)]; }
    float At(std::int32_t i, std::int32_t j, std::int32_t k) const { return scores[Index(i, j, k)]; }
    Rows Row(std::int32_t i, std::int32_t j) { return {&At(i, j, 0), 1}; }
    Rows Plane(std::int32_t i) { return {&At(i, 0, 0), count}; }

    // A factor on all choices with the candidate x as lowest, middle or highest voice.
    void ScaleLowest(std::int32_t x, float factor) { Plane(x) *= factor; }
    void ScaleMiddle(std::int32_t x, float factor);
    void ScaleHighest(std::int32_t x, float factor);

    // The choice of the highest score. Of equal scores the last wins, in the order of i, then j, then k;
    // scores are often equal, so that order and comparison are heard. kNothingToChoose if the highest score
    // is 0 (`best` is then the last choice of all) or if there are no candidates (`best` is left alone).
    std::int32_t PickBest(Choice& best) const;

private:
    static std::size_t Index(std::int32_t i, std::int32_t j, std::int32_t k) {
        const std::int32_t place = (i * kMostCandidates + j) * kRowLength + k;
        return static_cast<std::size_t>(place);
    }

    std::int32_t count = 0;
    alignas(16)
        std::array<float, static_cast<std::size_t>(kMostCandidates* kMostCandidates* kRowLength)> scores{};
};

} // namespace sonorelle::ConsortierClassic
