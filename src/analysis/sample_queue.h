// A queue of samples that always lies in one piece: appended at the end, dropped from the front.
//
// Dropping only moves an index; what is left moves to the front once the end of the memory is reached, so
// that a sample is moved about once in its life. Only Reserve allocates.

#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace sonorelle {

class SampleQueue {
public:
    // `samples`: the most that Size will ever be.
    void Reserve(std::int32_t samples) {
        memory.assign(2 * static_cast<std::size_t>(samples), 0.0F);
        Clear();
    }

    void Clear() { first = end = 0; }

    const float* Data() const { return memory.data() + first; }
    std::int32_t Size() const { return static_cast<std::int32_t>(end - first); }
    // Sample `index` from the front; 0 behind the end.
    float At(std::int32_t index) const { return index < Size() ? Data()[index] : 0.0F; }

    // Makes room for `count` more samples behind the end and gives it; their values are undefined.
    float* Append(std::int32_t count) {
        if (end + static_cast<std::size_t>(count) > memory.size()) {
            std::copy(memory.begin() + static_cast<std::ptrdiff_t>(first),
                      memory.begin() + static_cast<std::ptrdiff_t>(end), memory.begin());
            end -= first;
            first = 0;
        }
        float* added = memory.data() + end;
        end += static_cast<std::size_t>(count);
        return added;
    }

    void Drop(std::int32_t count) { first += static_cast<std::size_t>(count); }

private:
    std::vector<float> memory;
    std::size_t first = 0;
    std::size_t end = 0;
};

} // namespace sonorelle
