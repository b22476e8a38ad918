#include "analysis/melody_cache.h"

#include "platform/atomic_file_writer.h"
#include "platform/byte_order.h"
#include "platform/regular_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sonorelle {

namespace {

constexpr std::uint32_t kMostRecords = std::numeric_limits<std::int32_t>::max();

template<class Record>
bool ReadRecords(const CRegularFile& file, std::int64_t offset, std::vector<Record>& records) {
    const std::size_t bytes = records.size() * sizeof(Record);
    if (file.ReadAt(offset, records.data(), bytes) != bytes) return false;
    ConvertBigEndianWords(records.data(), records.data(), bytes / sizeof(std::uint32_t));
    return true;
}

template<class Record>
void WriteRecords(CAtomicFileWriter& writer, std::span<const Record> records) {
    constexpr std::size_t kPortion = 1024; // records
    std::array<Record, kPortion> swapped;
    for (std::size_t first = 0; first < records.size(); first += kPortion) {
        const std::size_t bytes = std::min(kPortion, records.size() - first) * sizeof(Record);
        ConvertBigEndianWords(records.data() + first, swapped.data(), bytes / sizeof(std::uint32_t));
        writer.Write(swapped.data(), bytes);
    }
}

bool IsFinite(const PitchMarkRecord& mark) {
    return std::isfinite(mark.energy) && std::isfinite(mark.transient) && std::isfinite(mark.voicing) &&
           std::isfinite(mark.pitchChange) && std::isfinite(mark.period);
}

bool IsWithin(const NoteRecord& note, std::int32_t length, std::int32_t marks) {
    return std::isfinite(note.pitch) && std::isfinite(note.level) && note.start >= 0 &&
           note.start <= note.end && note.end <= length && note.length >= 0 && note.length <= length &&
           note.firstFrame >= 0 && note.firstFrame <= note.lastFrame && note.lastFrame < marks;
}

} // namespace

bool ReadMelodyCacheHeader(const CRegularFile& file, MelodyCacheHeader& header) {
    std::array<unsigned char, MelodyCacheHeader::kSize> bytes;
    if (file.ReadAt(0, bytes.data(), bytes.size()) != bytes.size()) return false;
    std::copy_n(bytes.begin(), header.magic.size(), header.magic.begin());
    header.timeStamp = ReadBigEndianI64(bytes.data() + 4);
    header.markCount = ReadBigEndianU32(bytes.data() + 12);
    header.noteCount = ReadBigEndianU32(bytes.data() + 16);
    return true;
}

bool IsMelodyCache(const MelodyCacheHeader& header, std::int64_t fileSize) {
    if (header.magic != MelodyCacheHeader::kMagic) return false;
    if (header.markCount < 1 || header.markCount > kMostRecords || header.noteCount > kMostRecords)
        return false;
    constexpr auto kMarkSize = static_cast<std::int64_t>(sizeof(PitchMarkRecord));
    constexpr auto kNoteSize = static_cast<std::int64_t>(sizeof(NoteRecord));
    return fileSize == MelodyCacheHeader::kSize + kMarkSize * header.markCount + kNoteSize * header.noteCount;
}

bool FitsRecording(const MelodyCacheHeader& header, std::int32_t length) {
    // No two marks share a sample frame, with one more at the end; a note has its own first mark.
    return header.markCount <= static_cast<std::int64_t>(length) + 1 && header.noteCount <= header.markCount;
}

bool ReadMelodyCacheContent(const CRegularFile& file, const MelodyCacheHeader& header,
                            MelodyCacheContent& content) {
    content.marks.resize(header.markCount);
    content.notes.resize(header.noteCount);
    const auto notesAt =
        MelodyCacheHeader::kSize + static_cast<std::int64_t>(sizeof(PitchMarkRecord)) * header.markCount;
    return ReadRecords(file, MelodyCacheHeader::kSize, content.marks) &&
           ReadRecords(file, notesAt, content.notes);
}

bool IsPlausible(const MelodyCacheContent& content, std::int32_t length) {
    if (content.marks.empty() || content.marks.front().position != 0 ||
        content.marks.back().position > length) {
        return false;
    }
    const auto falls = [](const PitchMarkRecord& a, const PitchMarkRecord& b) {
        return b.position <= a.position;
    };
    if (std::adjacent_find(content.marks.begin(), content.marks.end(), falls) != content.marks.end())
        return false;
    const auto marks = static_cast<std::int32_t>(content.marks.size());
    return std::all_of(content.marks.begin(), content.marks.end(), IsFinite) &&
           std::all_of(content.notes.begin(), content.notes.end(),
                       [=](const NoteRecord& note) { return IsWithin(note, length, marks); });
}

bool WriteMelodyCache(const std::string& path, std::int64_t timeStamp, std::span<const PitchMarkRecord> marks,
                      std::span<const NoteRecord> notes) {
    CAtomicFileWriter writer;
    if (!writer.Open(path)) return false;
    std::array<unsigned char, MelodyCacheHeader::kSize> bytes;
    std::copy(MelodyCacheHeader::kMagic.begin(), MelodyCacheHeader::kMagic.end(), bytes.begin());
    WriteBigEndianI64(bytes.data() + 4, timeStamp);
    WriteBigEndianU32(bytes.data() + 12, static_cast<std::uint32_t>(marks.size()));
    WriteBigEndianU32(bytes.data() + 16, static_cast<std::uint32_t>(notes.size()));
    writer.Write(bytes.data(), bytes.size());
    WriteRecords(writer, marks);
    WriteRecords(writer, notes);
    return writer.Commit();
}

} // namespace sonorelle
