// The note at a position. Three rules, because the question is a different one each time.
//
// `notes` lie in the order of time and do not overlap; a split may have left notes without any position
// (start one above end). Other lists, as a damaged document may bring them, give some index or -1. Positions
// are sample frames; a note holds both its start and its end. Nothing here allocates.

#pragma once

#include "analysis/records.h"

#include <cstdint>
#include <span>

namespace sonorelle {

// The first note from index `from` on that holds the position, or else the first of all; -1 for none. A few
// comparisons: binary search.
std::int32_t NoteHolding(std::span<const NoteRecord> notes, std::int32_t position, std::int32_t from);

// The note that holds the position, or the one before it; before the first note, the first. At the very start
// of a note, that note. -1 without notes, and for the start of a single one.
std::int32_t NoteNearest(std::span<const NoteRecord> notes, std::int32_t position);

// The note that is meant by somebody who plays along at this position: the next one as soon as the last
// quarter of a note has begun, or two thirds of the way to it lie behind. -1 where nothing decides.
std::int32_t NoteMeant(std::span<const NoteRecord> notes, std::int32_t position);

} // namespace sonorelle
