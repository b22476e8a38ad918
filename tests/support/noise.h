// White noise that is the same in every run.

#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace sonorelle::test {

// `count` samples between -peak and peak; another sequence for each `generator`.
inline std::vector<float> Noise(std::size_t count, unsigned generator, float peak = 1.0F) {
    std::mt19937 random(generator);
    std::uniform_real_distribution<float> sample(-peak, peak);
    std::vector<float> noise(count);
    for (float& value : noise) value = sample(random);
    return noise;
}

} // namespace sonorelle::test
