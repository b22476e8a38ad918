// A file is encoded into memory, track by track, and written in one go. All numbers are big-endian; running
// status is not used.

#include "formats/midi_file.h"

#include "platform/atomic_file_writer.h"
#include "platform/byte_order.h"
#include "platform/result_codes.h"

#include <cstdio>
#include <limits>
#include <new>
#include <string_view>

namespace sonorelle {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kMeta = 0xFF;
constexpr std::uint8_t kMetaEndOfTrack = 0x2F;
constexpr std::int32_t kHeaderBytes = 6; // behind the header's own length
constexpr std::int32_t kHighestChannel = 15;

void PutByte(Bytes& bytes, std::int32_t value) { bytes.push_back(static_cast<std::uint8_t>(value)); }

void PutText(Bytes& bytes, std::string_view text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

void PutI16(Bytes& bytes, std::int32_t value) {
    PutByte(bytes, value >> 8);
    PutByte(bytes, value);
}

void PutU32(Bytes& bytes, std::uint32_t value) {
    bytes.resize(bytes.size() + sizeof value);
    WriteBigEndianU32(&bytes[bytes.size() - sizeof value], value);
}

// Seven bits a byte, high byte first, bit 7 set on all but the last.
void PutVariableLength(Bytes& bytes, std::uint32_t value) {
    int shift = 28;
    while (shift > 0 && value >> shift == 0) shift -= 7;
    for (; shift > 0; shift -= 7) PutByte(bytes, static_cast<std::int32_t>(value >> shift & 0x7F) | 0x80);
    PutByte(bytes, static_cast<std::int32_t>(value & 0x7F));
}

void PutHeader(Bytes& bytes, std::int32_t format, std::size_t trackCount, std::int32_t division, float bpm) {
    PutText(bytes, "MThd");
    PutU32(bytes, kHeaderBytes);
    PutI16(bytes, format);
    PutI16(bytes, static_cast<std::int32_t>(trackCount));
    PutI16(bytes, division);
    if (format != 1) return;
    const Bytes tempo = MidiTempoBytes(bpm);
    bytes.insert(bytes.end(), {0, kMeta, kMidiMetaTempo, static_cast<std::uint8_t>(tempo.size())});
    bytes.insert(bytes.end(), tempo.begin(), tempo.end());
}

// Computed in f32 from left to right. A tempo that is no tempo gives 0.
std::uint32_t TicksFromMilliseconds(std::uint32_t milliseconds, std::int32_t division, float bpm) {
    constexpr float kSecondsPerMinute = 60.0F;
    constexpr float kMillisecondsPerSecond = 1000.0F;
    constexpr float kBeyondU32 = 4294967296.0F;
    const float millisecondsPerQuarter = kSecondsPerMinute / bpm * kMillisecondsPerSecond;
    const float ticks =
        static_cast<float>(milliseconds) * static_cast<float>(division) / millisecondsPerQuarter;
    if (!(ticks > 0.0F)) return 0;
    return ticks < kBeyondU32 ? static_cast<std::uint32_t>(ticks) : std::numeric_limits<std::uint32_t>::max();
}

void PutEvent(Bytes& bytes, const CkvoMidiFileEvent& event) {
    if (event.IsMeta()) {
        PutByte(bytes, kMeta);
        PutByte(bytes, event.GetType());
        PutVariableLength(bytes, static_cast<std::uint32_t>(event.GetData().size()));
    } else {
        if (event.GetChannel() > kHighestChannel) std::perror("error: MIDI channel greater than 16\n");
        PutByte(bytes, event.GetType() | event.GetChannel());
    }
    bytes.insert(bytes.end(), event.GetData().begin(), event.GetData().end());
}

// The tempo that one track ends with is the one that the next begins with.
void PutEvents(Bytes& bytes, const CkvoMidiTrack& track, std::int32_t division, float& bpm) {
    std::uint32_t last = 0;
    for (const auto& event : track.GetEvents()) {
        if (const auto* const tempo = dynamic_cast<const CkvoMidiFileTempoEvent*>(event.get()))
            bpm = tempo->GetBpm();
        PutVariableLength(bytes, TicksFromMilliseconds(event->GetTime() - last, division, bpm));
        last = event->GetTime();
        PutEvent(bytes, *event);
    }
}

void PutTrack(Bytes& bytes, const CkvoMidiTrack& track, std::int32_t division, float& bpm) {
    PutText(bytes, "MTrk");
    const std::size_t lengthAt = bytes.size();
    PutU32(bytes, 0); // not known yet
    const std::size_t start = bytes.size();
    PutEvents(bytes, track, division, bpm);
    bytes.insert(bytes.end(), {0, kMeta, kMetaEndOfTrack, 0});
    WriteBigEndianU32(&bytes[lengthAt], static_cast<std::uint32_t>(bytes.size() - start));
}

} // namespace

void CkvoMidiFile::AddTrack(const CkvoMidiTrack& track) { tracks_.push_back(track); }

std::int32_t CkvoMidiFile::Write(const std::string& fileName, std::int32_t format, std::int32_t division,
                                 float bpm) const noexcept try {
    CAtomicFileWriter writer;
    if (!writer.Open(fileName)) return kCannotWrite;
    Bytes bytes;
    PutHeader(bytes, format, tracks_.size(), division, bpm);
    for (const CkvoMidiTrack& track : tracks_) PutTrack(bytes, track, division, bpm);
    writer.Write(bytes.data(), bytes.size());
    return writer.Commit() ? kOk : kCannotWrite;
} catch (const std::bad_alloc&) {
    return kCannotWrite;
}

} // namespace sonorelle
