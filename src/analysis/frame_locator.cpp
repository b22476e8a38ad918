#include "analysis/frame_locator.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace sonorelle {

namespace {

constexpr std::int32_t kWordBits = 64;

std::uint64_t Bit(std::int32_t index) { return std::uint64_t{1} << (index % kWordBits); }
std::size_t Word(std::int32_t index) { return static_cast<std::size_t>(index / kWordBits); }

// The first set bit from `index` on in the first `count` bits, or `count`.
std::int32_t FirstSet(const std::vector<std::uint64_t>& words, std::int32_t index, std::int32_t count) {
    if (index >= count) return count;
    std::uint64_t word = words[Word(index)] & ~(Bit(index) - 1);
    for (std::int32_t base = index - index % kWordBits;;) {
        if (word != 0) return std::min(base + std::countr_zero(word), count);
        base += kWordBits;
        if (base >= count) return count;
        word = words[Word(base)];
    }
}

} // namespace

FrameSet::FrameSet(std::size_t size)
    : count(static_cast<std::int32_t>(size)), members(size / kWordBits + 1, 0),
      occupied(members.size() / kWordBits + 1, 0) {}

bool FrameSet::Contains(std::int32_t index) const { return (members[Word(index)] & Bit(index)) != 0; }

void FrameSet::Insert(std::int32_t index) {
    members[Word(index)] |= Bit(index);
    const std::int32_t word = index / kWordBits;
    occupied[Word(word)] |= Bit(word);
}

void FrameSet::Remove(std::int32_t index) {
    members[Word(index)] &= ~Bit(index);
    const std::int32_t word = index / kWordBits;
    if (members[Word(index)] == 0) occupied[Word(word)] &= ~Bit(word);
}

std::int32_t FrameSet::FirstFrom(std::int32_t index) const {
    if (index >= count) return count;
    const std::int32_t endOfWord = std::min(index - index % kWordBits + kWordBits, count);
    const std::int32_t near = FirstSet(members, index, endOfWord);
    if (near < endOfWord) return near;
    const auto words = static_cast<std::int32_t>(members.size());
    const std::int32_t word = FirstSet(occupied, index / kWordBits + 1, words);
    return word < words ? FirstSet(members, word * kWordBits, count) : count;
}

FrameLocator::FrameLocator(const std::vector<AnalysisFrame>& frames)
    : positions(frames.size()), voiced(frames.size()), unvoiced(frames.size()) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        positions[i] = i == 0 ? frames[i].position : std::max(frames[i].position, positions[i - 1]);
        (frames[i].voiced != 0 ? voiced : unvoiced).Insert(static_cast<std::int32_t>(i));
    }
}

void FrameLocator::SetUnvoiced(std::int32_t index) {
    voiced.Remove(index);
    unvoiced.Insert(index);
}

std::int32_t FrameLocator::FirstVoiced(std::int32_t index) const {
    return std::min(voiced.FirstFrom(index), LastIndex());
}

std::int32_t FrameLocator::FirstNotBefore(std::int64_t position) const {
    const auto found = std::lower_bound(positions.begin(), positions.end(), position);
    return std::min(static_cast<std::int32_t>(found - positions.begin()), LastIndex());
}

std::int32_t FrameLocator::FirstBehind(std::int64_t position, std::int32_t guess) const {
    // Windows move by little: strides that double from the guess on close in sooner than halving the list.
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
        const std::int32_t stop =
            std::min(unvoiced.FirstFrom(next), std::max(FirstBehind(start + length, window.last), next));
        last = std::max(stop - 1, 0);
    }
    if (Position(last) - start < minLength) {
        first = FirstVoiced(std::min(last + 1, lastIndex));
        start = Position(first);
        const std::int32_t next = std::min(first + 1, lastIndex);
        last = std::min(unvoiced.FirstFrom(next), std::max(FirstNotBefore(start + nextLength), next));
        last = std::min(last, lastIndex);
    }
    window = {first, last, Position(first), Position(last)};
}

} // namespace sonorelle
