// The voices of one note from the lowest to the highest, the melody among them.

#pragma once

#include "harmony/pitch_class.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace sonorelle::ConsortierClassic {

struct VoiceVector {
    std::array<std::int32_t, kVoiceSlots> pitches{};
    std::int32_t count = 0;

    std::int32_t operator[](std::int32_t voice) const { return pitches[static_cast<std::size_t>(voice)]; }
    std::int32_t Lowest() const { return pitches[0]; }
    std::int32_t Highest() const { return (*this)[count - 1]; }
    // Whether the voices fall nowhere. Equal pitches are no fall.
    bool IsRising() const {
        for (std::int32_t voice = 1; voice < count; ++voice)
            if ((*this)[voice] < (*this)[voice - 1]) return false;
        return true;
    }
};

// The melody goes before the first harmony voice that is not below it, so that it stands under a voice of its
// own pitch. The harmony voices keep their order, also one that falls.
inline VoiceVector InsertMelody(std::int32_t p, std::int32_t a) {
    if (p <= a) return {{p, a}, 2};
    return {{a, p}, 2};
}

inline VoiceVector InsertMelody(std::int32_t p, std::int32_t a, std::int32_t b) {
    if (p <= a) return {{p, a, b}, 3};
    if (p <= b) return {{a, p, b}, 3};
    return {{a, b, p}, 3};
}

inline VoiceVector InsertMelody(std::int32_t p, std::int32_t a, std::int32_t b, std::int32_t c) {
    if (p <= a) return {{p, a, b, c}, 4};
    if (p <= b) return {{a, p, b, c}, 4};
    if (p <= c) return {{a, b, p, c}, 4};
    return {{a, b, c, p}, 4};
}

} // namespace sonorelle::ConsortierClassic
