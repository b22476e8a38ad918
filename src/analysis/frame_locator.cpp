#include "analysis/frame_locator.h"

#include <algorithm>
#include <bit>

namespace sonorelle {

namespace {

constexpr std::int32_t kWordBits = 64;

std::uint64_t Bit(std::int32_t index) { return std::uint64_t{1} << (index % kWordBits); }
std::size_t Word(std::int32_t index) { return static_cast<std::size_t>(index / kWordBits); }

// The first set bit from `index` on in words made by `wordAt`, or `count`.
template<class WordAt> std::int32_t FirstSet(std::int32_t index, std::int32_t count, WordAt wordAt) {
    if (index >= count) return count;
    std::uint64_t word = wordAt(Word(index)) & ~(Bit(index) - 1);
    for (std::int32_t base = index - index % kWordBits;;) {
        if (word != 0) return std::min(base + std::countr_zero(word), count);
        base += kWordBits;
        if (base >= count) return count;
        word = wordAt(Word(base));
    }
}

} // namespace

FrameLocator::FrameLocator(const std::vector<AnalysisFrame>& frames) :
    positions(frames.size()), voiced(frames.size() / kWordBits + 1, 0) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        positions[i] = frames[i].position;
        const auto index = static_cast<std::int32_t>(i);
        if (frames[i].voiced != 0) voiced[Word(index)] |= Bit(index);
    }
}

bool FrameLocator::IsVoiced(std::int32_t index) const { return (voiced[Word(index)] & Bit(index)) != 0; }

void FrameLocator::SetUnvoiced(std::int32_t index) { voiced[Word(index)] &= ~Bit(index); }

std::int32_t FrameLocator::FirstVoiced(std::int32_t index) const {
    const std::int32_t found = FirstSet(index, Count(), [this](std::size_t word) { return voiced[word]; });
    return std::min(found, LastIndex());
}

std::int32_t FrameLocator::FirstUnvoiced(std::int32_t index) const {
    return FirstSet(index, Count(), [this](std::size_t word) { return ~voiced[word]; });
}

std::int32_t FrameLocator::FirstNotBefore(std::int64_t position) const {
    const auto found = std::lower_bound(positions.begin(), positions.end(), position);
    return std::min(static_cast<std::int32_t>(found - positions.begin()), LastIndex());
}

std::int32_t FrameLocator::FirstBehind(std::int64_t position, std::int32_t guess) const {
    // Windows move by little: strides that double from the guess on close in sooner than halving the whole list.
    std::int32_t low = std::clamp(guess, 0, LastIndex());
    std::int32_t high = low;
    for (std::int32_t stride = 1; low > 0 && Position(low) > position; stride *= 2) {
        high = low;
        low = std::max(low - stride, 0);
    }
    for (std::int32_t stride = 1; high < Count() && Position(high) <= position; stride *= 2) {
        low = high;
        high = std::min(high + stride, Count());
    }
    const auto found = std::upper_bound(positions.begin() + low, positions.begin() + high, position);
    return static_cast<std::int32_t>(found - positions.begin());
}

void FrameLocator::Locate(FrameWindow& window, std::int64_t minLength, std::int64_t nextLength) const {
    const std::int32_t lastIndex = LastIndex();
    const std::int64_t length = window.end - window.start;

    std::int32_t first = std::max(std::min(FirstBehind(window.start, window.first), lastIndex) - 1, 0);
    first = FirstVoiced(first);
    std::int64_t start = Position(first);
    std::int32_t last = first;
    if (start < window.end) {
        const std::int32_t next = std::min(first + 1, lastIndex);
        const std::int32_t stop = std::min(FirstUnvoiced(next), std::max(FirstBehind(start + length, window.last), next));
        last = std::max(stop - 1, 0);
    }
    if (Position(last) - start < minLength) {
        first = FirstVoiced(std::min(last + 1, lastIndex));
        start = Position(first);
        const std::int32_t next = std::min(first + 1, lastIndex);
        last = std::min(FirstUnvoiced(next), std::max(FirstNotBefore(start + nextLength), next));
        last = std::min(last, lastIndex);
    }
    window = {first, last, Position(first), Position(last)};
}

} // namespace sonorelle
