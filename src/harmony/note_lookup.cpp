#include "harmony/note_lookup.h"

#include <algorithm>

namespace sonorelle {

namespace {

// The share of a note at whose begin a player who is a little early means the next one.
constexpr double kLastQuarter = 0.25;

std::int64_t Distance(std::int32_t from, std::int32_t to) { return static_cast<std::int64_t>(to) - from; }

std::int32_t FirstHolding(std::span<const NoteRecord> notes, std::int32_t position, std::size_t from) {
    const auto isOver = [position](const NoteRecord& note) { return note.end < position; };
    const auto isNothing = [](const NoteRecord& note) { return note.start > note.end; };
    auto found = std::partition_point(notes.begin() + static_cast<std::ptrdiff_t>(from), notes.end(), isOver);
    found = std::find_if_not(found, notes.end(), isNothing);
    if (found == notes.end() || found->start > position) return -1;
    return static_cast<std::int32_t>(found - notes.begin());
}

} // namespace

std::int32_t NoteHolding(std::span<const NoteRecord> notes, std::int32_t position, std::int32_t from) {
    if (notes.empty() || position > notes.back().end) return -1;
    const auto first = static_cast<std::size_t>(std::max(from, 0));
    if (first > 0 && first < notes.size()) {
        if (const std::int32_t note = FirstHolding(notes, position, first); note >= 0) return note;
    }
    return FirstHolding(notes, position, 0);
}

std::int32_t NoteNearest(std::span<const NoteRecord> notes, std::int32_t position) {
    if (notes.empty()) return -1;
    const auto last = static_cast<std::int32_t>(notes.size()) - 1;
    if (position > notes.back().start) return last;
    if (position < notes.front().start) return 0;
    if (last == 0) return -1;
    for (std::size_t i = 0; i + 1 < notes.size(); ++i)
        if (position < notes[i + 1].start) return static_cast<std::int32_t>(i);
    return last;
}

std::int32_t NoteMeant(std::span<const NoteRecord> notes, std::int32_t position) {
    if (notes.empty()) return -1;
    if (position > notes.back().start) return static_cast<std::int32_t>(notes.size()) - 1;
    if (position < notes.front().start) return 0;
    for (std::size_t i = 0; i + 1 < notes.size(); ++i) {
        const NoteRecord& note = notes[i];
        const std::int64_t behind = Distance(note.start, position);
        const std::int64_t ahead = Distance(position, notes[i + 1].start);
        if (behind < 1 || ahead < 1) continue;
        const auto index = static_cast<std::int32_t>(i);
        if (static_cast<double>(Distance(note.end, position)) > -kLastQuarter * note.length) return index + 1;
        if (behind < 2 * ahead) return index;
        if (behind > 2 * ahead) return index + 1;
    }
    return -1;
}

} // namespace sonorelle
