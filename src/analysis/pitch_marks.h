// The list of pitch marks of one recording.

#pragma once

#include "analysis/pitch_marks_if.h"

#include <vector>

namespace sonorelle {

class CPitchMarks final : public CPitchMarksIf {
public:
    void Clear() override;
    void KeepLast(std::int32_t n) override;
    std::int32_t Allocate(std::int32_t records) override;
    std::int32_t GetData(const PitchMarkRecord*& data) const override;
    std::int32_t GetCount() const override { return count; }
    std::int32_t SetData(const PitchMarkRecord* data, std::int32_t n) override;
    void AddWithPeriod(std::int32_t position, float voicing, float energy, float transient, float pitchChange,
                       float period) override;
    void Add(std::int32_t position, float voicing, float energy, float transient, float pitchChange) override;
    void RemoveLast() override;
    std::int32_t GetLastPosition() const override;
    std::int32_t GetPosition(std::int32_t index) const override;
    std::int32_t GetDistance(std::int32_t index) const override;
    std::int32_t GetPeriod(std::int32_t index) const override;
    float GetTransient(std::int32_t index) const override;
    float GetEnergy(std::int32_t index) const override;
    float GetVoicing(std::int32_t index) const override;
    float GetPitchChange(std::int32_t index) const override;
    std::int32_t FindNearest(std::int32_t from, std::int32_t position) const override;
    std::int32_t FindSpan(std::int32_t& index, std::int32_t distance) const override;

    // Records that the list holds without growing. An append to a full list raises it by one.
    std::int32_t GetCapacity() const { return capacity; }

private:
    bool Contains(std::int32_t index) const { return index >= 0 && index < count; }
    const PitchMarkRecord& At(std::int32_t index) const { return records[static_cast<std::size_t>(index)]; }

    // Of rising marks from `from` on the last one at or before `position`; `from` when there is none.
    std::int32_t LastBefore(std::int32_t from, std::int32_t position) const;

    std::int32_t capacity = 0;
    std::int32_t count = 0;
    std::vector<PitchMarkRecord> records; // at least `capacity` of them
    bool allocated = false;
    bool rising = true; // each position lies behind the one before
};

} // namespace sonorelle
