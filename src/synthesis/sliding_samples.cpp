#include "synthesis/sliding_samples.h"

#include <algorithm>

namespace sonorelle {

namespace {

std::size_t StorageFor(std::int32_t capacity) { return static_cast<std::size_t>(capacity) * 2; }

} // namespace

SlidingSamples::SlidingSamples(std::int32_t channelCount, std::int32_t samples)
    : capacity(std::max(samples, 0)),
      storage(static_cast<std::size_t>(std::max(channelCount, 0)), std::vector<float>(StorageFor(capacity))) {
}

void SlidingSamples::Reserve(std::int32_t samples) {
    if (samples <= capacity) return;
    // All new channels exist before an old one goes: where memory runs out nothing has changed.
    std::vector<std::vector<float>> larger(storage.size());
    for (std::size_t channel = 0; channel < storage.size(); ++channel) {
        larger[channel].resize(StorageFor(samples));
        std::copy_n(storage[channel].data() + front, capacity, larger[channel].data());
    }
    storage.swap(larger);
    capacity = samples;
    front = 0;
}

void SlidingSamples::Drop(std::int32_t n, std::int32_t used) noexcept {
    n = std::clamp(n, 0, capacity);
    const std::int32_t kept = std::clamp(used, n, capacity) - n;
    if (n <= capacity - front) { // the storage holds `capacity` samples twice
        front += n;
        return;
    }
    for (std::vector<float>& samples : storage) {
        const float* const first = samples.data() + front + n;
        std::copy(first, first + kept, samples.data());
    }
    front = 0;
}

void SlidingSamples::Clear(std::int32_t n) noexcept {
    const std::int32_t cleared = std::clamp(n, 0, capacity);
    for (std::vector<float>& samples : storage) std::fill_n(samples.data() + front, cleared, 0.0F);
}

} // namespace sonorelle
