#include "analysis/pitch_marks.h"

#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <stdexcept>

namespace sonorelle {

namespace {

std::int64_t PositionsApart(std::int32_t a, std::int32_t b) {
    return std::abs(static_cast<std::int64_t>(a) - static_cast<std::int64_t>(b));
}

bool Resize(std::vector<PitchMarkRecord>& records, std::int32_t size) {
    try {
        records.assign(static_cast<std::size_t>(size), PitchMarkRecord{});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
}

} // namespace

void CPitchMarks::Clear() {
    std::fill(records.begin(), records.end(), PitchMarkRecord{});
    count = 0;
    rising = true;
}

void CPitchMarks::KeepLast(std::int32_t n) {
    const std::int32_t kept = std::clamp(n, 0, count);
    std::move(records.begin() + (count - kept), records.begin() + count, records.begin());
    count = kept;
}

std::int32_t CPitchMarks::Allocate(std::int32_t wanted) {
    if (allocated) return kNothingThere;
    if (wanted < 1) return kBadArgument;
    if (!Resize(records, wanted)) return kOutOfMemory;
    capacity = wanted;
    count = 0;
    rising = true;
    allocated = true;
    return kOk;
}

std::int32_t CPitchMarks::GetData(const PitchMarkRecord*& data) const {
    data = records.data();
    return count;
}

std::int32_t CPitchMarks::SetData(const PitchMarkRecord* data, std::int32_t n) {
    if (n < 0 || (data == nullptr && n > 0)) return kBadArgument;
    if (!allocated && capacity != 0 && capacity != n) return kBadArgument;
    std::vector<PitchMarkRecord> copy;
    if (!Resize(copy, n)) return kOutOfMemory;
    std::copy_n(data, n, copy.begin());
    records.swap(copy);
    capacity = n;
    count = n;
    rising = std::adjacent_find(records.begin(), records.end(), [](const auto& mark, const auto& next) {
                 return mark.position >= next.position;
             }) == records.end();
    allocated = true;
    return kOk;
}

void CPitchMarks::AddWithPeriod(std::int32_t position, float voicing, float energy, float transient,
                                float pitchChange, float period) {
    if (count >= capacity) {
        // The vector grows in strides of its own; the capacity that is told follows one by one.
        if (records.size() <= static_cast<std::size_t>(count)) records.emplace_back();
        capacity = count + 1;
    }
    rising = rising && (count == 0 || At(count - 1).position < position);
    records[static_cast<std::size_t>(count)] = {position, energy, transient, voicing, pitchChange, period};
    ++count;
}

void CPitchMarks::Add(std::int32_t position, float voicing, float energy, float transient,
                      float pitchChange) {
    AddWithPeriod(position, voicing, energy, transient, pitchChange, 0.0F);
}

void CPitchMarks::RemoveLast() { count = std::max(count - 1, 0); }

std::int32_t CPitchMarks::GetLastPosition() const { return GetPosition(count - 1); }

std::int32_t CPitchMarks::GetPosition(std::int32_t index) const {
    return Contains(index) ? At(index).position : -1;
}

std::int32_t CPitchMarks::GetDistance(std::int32_t index) const {
    if (!Contains(index) || !Contains(index + 1)) return -1;
    const std::int64_t distance = std::int64_t{At(index + 1).position} - At(index).position;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(distance, INT32_MIN, INT32_MAX));
}

std::int32_t CPitchMarks::GetPeriod(std::int32_t index) const {
    return Contains(index) ? TruncateToI32(static_cast<double>(At(index).period)) : -1;
}

float CPitchMarks::GetTransient(std::int32_t index) const {
    return Contains(index) ? At(index).transient : -1.0F;
}

float CPitchMarks::GetEnergy(std::int32_t index) const { return Contains(index) ? At(index).energy : -1.0F; }

float CPitchMarks::GetVoicing(std::int32_t index) const {
    return Contains(index) ? At(index).voicing : -1.0F;
}

float CPitchMarks::GetPitchChange(std::int32_t index) const {
    return Contains(index) ? At(index).pitchChange : -1.0F;
}

std::int32_t CPitchMarks::FindNearest(std::int32_t from, std::int32_t position) const {
    if (count < 2 || from >= count - 1) return -1;
    std::int32_t nearest = std::max(from, 0);
    if (rising) nearest = std::max(nearest, LastBefore(nearest, position));
    std::int64_t distance = PositionsApart(At(nearest).position, position);
    while (nearest < count - 1) {
        const std::int64_t next = PositionsApart(At(nearest + 1).position, position);
        if (next >= distance) break;
        distance = next;
        ++nearest;
    }
    return nearest;
}

// A seek into a long recording comes from its first mark: strides that double, then halves of the last one.
std::int32_t CPitchMarks::LastBefore(std::int32_t from, std::int32_t position) const {
    std::int32_t below = from; // at or before the position, or the start
    std::int32_t stride = 1;
    while (stride < count - below && At(below + stride).position <= position) {
        below += stride;
        stride *= 2;
    }
    const auto first = records.begin() + below;
    const auto end = records.begin() + std::min(count, below + stride);
    const auto above =
        std::upper_bound(first, end, position,
                         [](std::int32_t at, const PitchMarkRecord& mark) { return at < mark.position; });
    return std::max(static_cast<std::int32_t>(above - records.begin()) - 1, from);
}

std::int32_t CPitchMarks::FindSpan(std::int32_t& index, std::int32_t distance) const {
    if (!Contains(index)) return -1;
    const std::int64_t base = At(index).position;
    for (std::int32_t i = index; i < count; ++i) {
        const std::int64_t span = At(i).position - base;
        if (span > distance) {
            index = i;
            return static_cast<std::int32_t>(std::min<std::int64_t>(span, INT32_MAX));
        }
    }
    return -1;
}

} // namespace sonorelle
