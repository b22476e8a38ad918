// The list of pitch marks, as its readers see it.
//
// Indices are i32. Getters give -1 (or -1.0) for an index outside the list. Marks are written on the analysis
// thread before any reader exists; after that they are read without a lock.

#pragma once

#include "analysis/records.h"

#include <cstdint>

namespace sonorelle {

class CPitchMarksIf {
public:
    virtual ~CPitchMarksIf() = default;

    // Zeroes all records of the capacity and empties the list.
    virtual void Clear() = 0;
    // Moves the last n records to the front and forgets the others; more than there are keep them all.
    virtual void KeepLast(std::int32_t n) = 0;
    // Makes room for `records` marks. 0; kNothingThere when there is a list already; kBadArgument for less
    // than 1; kOutOfMemory.
    virtual std::int32_t Allocate(std::int32_t records) = 0;
    // Points at the records; gives their number. Valid until the list is next changed.
    virtual std::int32_t GetData(const PitchMarkRecord*& data) const = 0;
    virtual std::int32_t GetCount() const = 0;
    // Replaces the list by a copy of n records. 0; kBadArgument when a capacity other than n was set without
    // Allocate, for n below 0 or missing data; kOutOfMemory.
    virtual std::int32_t SetData(const PitchMarkRecord* data, std::int32_t n) = 0;

    virtual void AddWithPeriod(std::int32_t position, float voicing, float energy, float transient,
                               float pitchChange, float period) = 0;
    virtual void Add(std::int32_t position, float voicing, float energy, float transient,
                     float pitchChange) = 0;
    virtual void RemoveLast() = 0;

    virtual std::int32_t GetLastPosition() const = 0; // -1 when empty
    virtual std::int32_t GetPosition(std::int32_t index) const = 0;
    virtual std::int32_t GetDistance(std::int32_t index) const = 0; // to the next mark; -1 for the last
    virtual std::int32_t GetPeriod(std::int32_t index) const = 0;   // whole samples
    virtual float GetTransient(std::int32_t index) const = 0;
    virtual float GetEnergy(std::int32_t index) const = 0;
    virtual float GetVoicing(std::int32_t index) const = 0;
    virtual float GetPitchChange(std::int32_t index) const = 0;

    // The mark nearest to `position`, walking upward from mark `from` as long as the distance falls; of two
    // equally near ones the earlier. -1 with fewer than two marks, or with `from` at or behind the second to
    // last.
    virtual std::int32_t FindNearest(std::int32_t from, std::int32_t position) const = 0;
    // The first mark more than `distance` samples behind mark `index`: moves `index` there and gives how far
    // it lies from the mark it started at; -1, and `index` stays, if there is none.
    virtual std::int32_t FindSpan(std::int32_t& index, std::int32_t distance) const = 0;
};

} // namespace sonorelle
