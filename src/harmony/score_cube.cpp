#include "harmony/score_cube.h"

#include "platform/result_codes.h"

#include <algorithm>

namespace sonorelle::ConsortierClassic {

void CScoreCube::Reset(std::int32_t candidateCount) {
    count = std::clamp(candidateCount, 0, kMostCandidates);
    for (std::int32_t i = 0; i < count; ++i) {
        for (std::int32_t j = 0; j < count; ++j) {
            float* const row = &At(i, j, 0);
            std::fill(row, row + count, 1.0F);
            std::fill(row + count, row + kRowLength, 0.0F);
        }
    }
}

void CScoreCube::ScaleMiddle(std::int32_t x, float factor) {
    for (std::int32_t i = 0; i < count; ++i) Row(i, x) *= factor;
}

void CScoreCube::ScaleHighest(std::int32_t x, float factor) {
    for (std::int32_t i = 0; i < count; ++i)
        for (std::int32_t j = 0; j < count; ++j) At(i, j, x) *= factor;
}

std::int32_t CScoreCube::PickBest(Choice& best) const {
    float highest = 0.0F;
    for (std::int32_t i = 0; i < count; ++i) {
        for (std::int32_t j = 0; j < count; ++j) {
            for (std::int32_t k = 0; k < count; ++k) {
                if (At(i, j, k) < highest) continue;
                highest = At(i, j, k);
                best = {i, j, k};
            }
        }
    }
    return highest == 0.0F ? kNothingToChoose : kOk;
}

} // namespace sonorelle::ConsortierClassic
