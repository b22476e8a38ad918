#include "harmony/note_lookup.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <vector>

namespace sonorelle {
namespace {

using Notes = std::vector<NoteRecord>;

constexpr unsigned kGenerator = 7411;

NoteRecord Note(std::int32_t start, std::int32_t end) {
    NoteRecord note;
    note.start = start;
    note.end = end;
    note.length = end - start;
    return note;
}

// The rules once more, one comparison after the other.

std::int32_t SlowHolding(const Notes& notes, std::int32_t position, std::int32_t from) {
    const auto count = static_cast<std::int32_t>(notes.size());
    const auto holds = [&](std::int32_t i) {
        const NoteRecord& note = notes[static_cast<std::size_t>(i)];
        return note.start <= position && position <= note.end;
    };
    for (std::int32_t i = from < 0 ? 0 : from; i < count; ++i)
        if (holds(i)) return i;
    if (count == 0 || position > notes.back().end) return -1;
    for (std::int32_t i = 0; i < count; ++i)
        if (holds(i)) return i;
    return -1;
}

std::int32_t SlowNearest(const Notes& notes, std::int32_t position) {
    const std::size_t count = notes.size();
    if (count == 0) return -1;
    if (position < notes[0].start) return 0;
    if (position > notes[count - 1].start) return static_cast<std::int32_t>(count - 1);
    if (count == 1) return -1;
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const std::int32_t next = notes[i + 1].start;
        if (position == next) continue; // the next note
        const bool within = position <= notes[i].end;
        const bool between = position > notes[i].end && position < next;
        if (within || between) return static_cast<std::int32_t>(i);
    }
    return static_cast<std::int32_t>(count - 1);
}

std::int32_t SlowMeant(const Notes& notes, std::int32_t position) {
    const std::size_t count = notes.size();
    if (count == 0) return -1;
    if (position > notes[count - 1].start) return static_cast<std::int32_t>(count - 1);
    if (position < notes[0].start) return 0;
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const auto index = static_cast<std::int32_t>(i);
        const double d1 = static_cast<double>(position) - notes[i].start;
        const double d2 = static_cast<double>(notes[i + 1].start) - position;
        if (d1 < 1 || d2 < 1) continue;
        if (static_cast<double>(position) - notes[i].end > -0.25 * notes[i].length) return index + 1;
        if (d1 < 2 * d2) return index;
        if (d1 > 2 * d2) return index + 1;
    }
    return -1;
}

// Notes in order: touching, a frame apart, or with rests; some of them splits at a last position, which hold
// nothing.
Notes RandomNotes(std::mt19937& random) {
    Notes notes;
    const unsigned count = random() % 9;
    auto position = static_cast<std::int32_t>(random() % 20);
    for (unsigned i = 0; i < count; ++i) {
        const auto length = static_cast<std::int32_t>(random() % 25);
        notes.push_back(Note(position, position + length));
        position += length;
        if (random() % 4 == 0) notes.push_back(Note(position + 1, position));
        position += random() % 2 == 0 ? static_cast<std::int32_t>(random() % 2)
                                      : static_cast<std::int32_t>(random() % 30);
    }
    return notes;
}

TEST(NoteLookup, EqualsTheLiteralRulesAtEveryPositionOfRandomMelodies) {
    std::mt19937 random(kGenerator);
    int found = 0;
    int between = 0;
    for (int melody = 0; melody < 3000; ++melody) {
        const Notes notes = RandomNotes(random);
        const std::int32_t end = notes.empty() ? 10 : notes.back().end + 10;
        for (std::int32_t position = -5; position < end; ++position) {
            const std::int32_t from = static_cast<std::int32_t>(random() % 15) - 2;
            const std::int32_t holding = NoteHolding(notes, position, from);
            ASSERT_EQ(holding, SlowHolding(notes, position, from))
                << melody << ' ' << position << ' ' << from;
            ASSERT_EQ(NoteNearest(notes, position), SlowNearest(notes, position))
                << melody << ' ' << position;
            ASSERT_EQ(NoteMeant(notes, position), SlowMeant(notes, position)) << melody << ' ' << position;
            ++(holding < 0 ? between : found);
        }
    }
    EXPECT_GT(found, 50000);
    EXPECT_GT(between, 50000);
}

TEST(NoteLookup, AnyRecordsAndPositionsGiveAnIndexOrNone) {
    std::mt19937 random(kGenerator);
    const auto anything = [&random] {
        switch (random() % 4) {
        case 0:
            return INT_MIN + static_cast<std::int32_t>(random() % 3);
        case 1:
            return INT_MAX - static_cast<std::int32_t>(random() % 3);
        default:
            return static_cast<std::int32_t>(random());
        }
    };
    for (int melody = 0; melody < 20000; ++melody) {
        Notes notes(random() % 6);
        for (NoteRecord& note : notes) {
            note.start = anything();
            note.end = anything();
            note.length = anything();
        }
        const auto count = static_cast<std::int32_t>(notes.size());
        const std::int32_t position = anything();
        for (const std::int32_t note : {NoteHolding(notes, position, anything()),
                                        NoteNearest(notes, position), NoteMeant(notes, position)}) {
            ASSERT_GE(note, -1);
            ASSERT_LT(note, count);
        }
    }
}

TEST(NoteLookup, WithoutNotesThereIsNone) {
    EXPECT_EQ(NoteHolding({}, 5, 0), -1);
    EXPECT_EQ(NoteNearest({}, 5), -1);
    EXPECT_EQ(NoteMeant({}, 5), -1);
}

TEST(NoteLookup, NoteHoldsItsStartAndItsEnd) {
    const Notes notes = {Note(10, 20), Note(30, 40)};
    EXPECT_EQ(NoteHolding(notes, 9, 0), -1);
    EXPECT_EQ(NoteHolding(notes, 10, 0), 0);
    EXPECT_EQ(NoteHolding(notes, 20, 0), 0);
    EXPECT_EQ(NoteHolding(notes, 21, 0), -1);
    EXPECT_EQ(NoteHolding(notes, 30, 0), 1);
    EXPECT_EQ(NoteHolding(notes, 40, 0), 1);
    EXPECT_EQ(NoteHolding(notes, 41, 0), -1);
}

TEST(NoteLookup, SharedPositionBelongsToTheNoteThatTheSearchBeginsAt) {
    const Notes notes = {Note(10, 20), Note(20, 30)};
    EXPECT_EQ(NoteHolding(notes, 20, -1), 0);
    EXPECT_EQ(NoteHolding(notes, 20, 0), 0);
    EXPECT_EQ(NoteHolding(notes, 20, 1), 1);
    EXPECT_EQ(NoteHolding(notes, 20, 2), 0);
}

TEST(NoteLookup, NearestHoldsUntilTheNextNoteStarts) {
    const Notes notes = {Note(10, 20), Note(30, 40), Note(40, 50)};
    EXPECT_EQ(NoteNearest(notes, 3), 0);
    EXPECT_EQ(NoteNearest(notes, 25), 0);
    EXPECT_EQ(NoteNearest(notes, 29), 0);
    EXPECT_EQ(NoteNearest(notes, 30), 1);
    EXPECT_EQ(NoteNearest(notes, 39), 1);
    EXPECT_EQ(NoteNearest(notes, 40), 2) << "also where the note before ends on it";
    EXPECT_EQ(NoteNearest(notes, 5000), 2);
}

TEST(NoteLookup, SingleNoteIsNotNearestToItsOwnStart) {
    const Notes notes = {Note(10, 20)};
    EXPECT_EQ(NoteNearest(notes, 9), 0);
    EXPECT_EQ(NoteNearest(notes, 10), -1);
    EXPECT_EQ(NoteNearest(notes, 11), 0);
    EXPECT_EQ(NoteMeant(notes, 10), -1);
    EXPECT_EQ(NoteMeant(notes, 9), 0);
    EXPECT_EQ(NoteMeant(notes, 11), 0);
}

TEST(NoteLookup, LastQuarterOfANoteMeansTheNextOne) {
    // A long rest behind the note: by the way to the next one it would be the first for long.
    const Notes notes = {Note(100, 200), Note(1000, 1100)};
    EXPECT_EQ(NoteMeant(notes, 175), 0) << "just before its last quarter has begun";
    EXPECT_EQ(NoteMeant(notes, 176), 1);
    EXPECT_EQ(NoteMeant(notes, 200), 1);
    EXPECT_EQ(NoteMeant(notes, 300), 1);
}

TEST(NoteLookup, FirstThreeQuartersGoByTwiceTheWayToTheNextNote) {
    // A note that ends behind the start of the next, so that its last quarter does not decide.
    Notes notes = {Note(100, 1000), Note(400, 1100)};
    EXPECT_EQ(NoteMeant(notes, 299), 0);
    EXPECT_EQ(NoteMeant(notes, 300), -1) << "exactly two thirds of the way: nothing decides";
    EXPECT_EQ(NoteMeant(notes, 301), 1);
    notes.push_back(Note(1200, 1300));
    EXPECT_EQ(NoteMeant(notes, 300), -1) << "the later notes lie ahead";
}

TEST(NoteLookup, PositionBehindTheLastStartIsTheLastNoteAlsoBehindItsEnd) {
    const Notes notes = {Note(10, 20), Note(30, 40)};
    EXPECT_EQ(NoteMeant(notes, 31), 1);
    EXPECT_EQ(NoteMeant(notes, 40), 1);
    EXPECT_EQ(NoteMeant(notes, 4000), 1);
}

TEST(NoteLookup, AtTheVeryStartOfANoteNoneIsMeant) {
    const Notes notes = {Note(10, 20), Note(30, 40), Note(50, 60)};
    EXPECT_EQ(NoteMeant(notes, 10), -1);
    EXPECT_EQ(NoteMeant(notes, 30), -1);
    EXPECT_EQ(NoteMeant(notes, 50), -1);
    EXPECT_EQ(NoteMeant(notes, 9), 0);
}

} // namespace
} // namespace sonorelle
