// The four styles that know a note alone: "Parallel manual", "Block Chord", "Fauxbourdon" and "Organum".
//
// Each writes a whole row: the melody in slot 0, the harmony in slots 1 to 3, and the melody again in the
// slots that a style of fewer voices leaves over. A row that is missing, or an arrangement or interval that
// no table knows, is answered with kBadArgument, and then nothing is written. Nothing allocates; each is a
// few lookups and fit for any thread.

#pragma once

#include "harmony/key.h"
#include "harmony/random_bits.h"

#include <cstdint>

namespace sonorelle::ConsortierClassic {

// Each slot at its interval of the harmony scale from the melody: 2 a third above, -3 a fourth below, 7 and
// -7 an octave, 0 the melody. The interval of slot 0 moves the melody voice itself.
std::int32_t GenerateParallel(const CKey& key, std::int32_t pitch, std::int32_t* row,
                              const std::int32_t* intervals);

// Four voices in close or open position below the melody. `next` is the pitch of the note after this one, as
// it was sung; the "Intelligent" arrangements harmonise passing notes by it. The randomised arrangements take
// one bit of `random` each time.
std::int32_t GenerateBlock(const CKey& key, CRandomBits& random, std::int32_t pitch, std::int32_t next,
                           std::int32_t* row, std::int32_t arrangement);

std::int32_t GenerateFauxbourdon(const CKey& key, std::int32_t pitch, std::int32_t* row,
                                 std::int32_t arrangement);

// With the key's mapScale set it follows the scale; without, it ignores key and scales altogether.
std::int32_t GenerateOrganum(const CKey& key, std::int32_t pitch, std::int32_t* row,
                             std::int32_t arrangement);

} // namespace sonorelle::ConsortierClassic
