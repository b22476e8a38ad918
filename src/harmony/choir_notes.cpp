// The elements of the store, per note in the order of time:
//
//   note list         28 bytes a note   1.1
//   voices of a note  16 bytes          1.0
//   gains of a note   16 bytes          1.1
//   old chords         8 bytes a note   1.0   a placeholder; only documents of that version have them
//   chords            16 bytes a note   1.1
//
// The store keeps elements of one version in the order in which they came, so that a kind is registered as a
// whole. Notes that come later bring voices and gains in turns, behind everything else.

#include "harmony/choir_notes.h"

#include "app/snapshot_store.h"

#include <algorithm>

namespace sonorelle {

namespace {

using ConsortierClassic::ChordRecord;
using ConsortierClassic::kNoPitch;

constexpr float kVoicesVersion = 1.0F;
constexpr float kOldChordsVersion = 1.0F;
constexpr float kNotesVersion = 1.1F;
constexpr float kGainsVersion = 1.1F;
constexpr float kChordsVersion = 1.1F;
constexpr float kLaterVoicesVersion = kSecondSequence + 1.0F;
constexpr float kLaterGainsVersion = kSecondSequence + 1.1F;

constexpr std::int32_t kOldChordSize = 8; // bytes

std::unique_ptr<CChoirNotes::Row> SilentRow() {
    auto row = std::make_unique<CChoirNotes::Row>();
    row->voices.fill(kNoPitch);
    row->liveVoices.fill(kNoPitch);
    row->gains.fill(1.0F);
    return row;
}

template<class Record>
std::int32_t SizeOf(const std::vector<Record>& records) {
    return static_cast<std::int32_t>(records.size() * sizeof(Record));
}

// Puts a larger copy in the place of `records` and tells the store, which still knows the old one.
template<class Record>
void Move(CSnapshotStore& store, std::vector<Record>& records, std::vector<Record>& larger) {
    std::copy(records.begin(), records.end(), larger.begin());
    store.ReplaceElement(records.data(), SizeOf(records), larger.data(), SizeOf(larger));
    records = std::move(larger);
}

} // namespace

CChoirNotes::CChoirNotes(CSnapshotStore& snapshotStore, std::uint32_t& count)
    : store(snapshotStore), noteCount(count) {}

std::int32_t CChoirNotes::Count() const {
    return static_cast<std::int32_t>(std::min(static_cast<std::size_t>(noteCount), rows.size()));
}

void CChoirNotes::Fill(std::span<const NoteRecord> records, SnapshotConvert convertChords, void* context) {
    records = records.first(std::min(records.size(), static_cast<std::size_t>(kMostNotes)));
    std::vector<NoteRecord> filledNotes(records.begin(), records.end());
    std::vector<ChordRecord> filledChords(records.size());
    std::vector<std::int32_t> filledPitches(records.size(), kNoPitch);
    std::vector<std::unique_ptr<Row>> filledRows(records.size());
    for (std::unique_ptr<Row>& row : filledRows) row = SilentRow();

    notes = std::move(filledNotes);
    chords = std::move(filledChords);
    pitches = std::move(filledPitches);
    rows = std::move(filledRows);
    noteCount = static_cast<std::uint32_t>(rows.size());

    store.AddElement(notes.data(), SizeOf(notes), kNotesVersion, true, this);
    for (const auto& row : rows)
        store.AddElement(row->voices.data(), sizeof row->voices, kVoicesVersion, true, this);
    for (const auto& row : rows)
        store.AddElement(row->gains.data(), sizeof row->gains, kGainsVersion, true, this);
    const std::int32_t oldChords =
        store.AddElement(nullptr, kOldChordSize * GetCapacity(), kOldChordsVersion, false, this);
    const std::int32_t newChords =
        store.AddElement(chords.data(), SizeOf(chords), kChordsVersion, true, this);
    store.SetConversion(oldChords, newChords, convertChords, context);
}

void CChoirNotes::Grow(std::int32_t capacity) {
    const std::size_t present = rows.size();
    const auto wanted = static_cast<std::size_t>(std::clamp(capacity, 0, kMostNotes));
    if (wanted <= present) return;
    std::vector<NoteRecord> largerNotes(wanted);
    std::vector<ChordRecord> largerChords(wanted);
    std::vector<std::unique_ptr<Row>> laterRows(wanted - present);
    for (std::unique_ptr<Row>& row : laterRows) row = SilentRow();
    pitches.reserve(wanted);
    rows.reserve(wanted);

    // From here on nothing fails. (A store without memory for one more element leaves it out: the note is
    // there, and not restored.)
    noteCount = static_cast<std::uint32_t>(Count()); // the new room is no note of a count that was too large
    Move(store, notes, largerNotes);
    Move(store, chords, largerChords);
    pitches.resize(wanted, kNoPitch);
    for (std::unique_ptr<Row>& row : laterRows) {
        store.AddElement(row->voices.data(), sizeof row->voices, kLaterVoicesVersion, true, this);
        store.AddElement(row->gains.data(), sizeof row->gains, kLaterGainsVersion, true, this);
        rows.push_back(std::move(row));
    }
}

void CChoirNotes::Duplicate(std::int32_t index) {
    const std::int32_t count = Count();
    const auto first = static_cast<std::ptrdiff_t>(index);
    const auto last = static_cast<std::ptrdiff_t>(count);
    std::copy_backward(notes.begin() + first, notes.begin() + last, notes.begin() + last + 1);
    std::copy_backward(chords.begin() + first, chords.begin() + last, chords.begin() + last + 1);
    for (std::int32_t i = count; i > index; --i) Voicing(i) = Voicing(i - 1);
    noteCount = static_cast<std::uint32_t>(count + 1);
}

void CChoirNotes::Remove(std::int32_t index) {
    const std::int32_t count = Count();
    const auto next = static_cast<std::ptrdiff_t>(index) + 1;
    const auto last = static_cast<std::ptrdiff_t>(count);
    std::copy(notes.begin() + next, notes.begin() + last, notes.begin() + next - 1);
    std::copy(chords.begin() + next, chords.begin() + last, chords.begin() + next - 1);
    for (std::int32_t i = index; i + 1 < count; ++i) Voicing(i) = Voicing(i + 1);
    noteCount = static_cast<std::uint32_t>(count - 1);
}

} // namespace sonorelle
