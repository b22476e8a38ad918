// Two steps. First each track is walked through by itself: its notes and controllers are gathered with their
// times in ticks, and its tempo changes with those of the other tracks. Then everything is brought into one
// row, and the ticks become seconds along the tempo map.

#include "formats/midi_file_reader.h"

#include "formats/midi_event.h"
#include "platform/regular_file.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace sonorelle {

namespace {

constexpr std::uint32_t kHeaderChunk = 0x4D546864; // "MThd"
constexpr std::uint32_t kTrackChunk = 0x4D54726B;  // "MTrk"
constexpr std::uint32_t kKnownHeaderBytes = 6;     // that are known; later versions may have more

constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kProgramChange = 0xC0;
constexpr std::uint8_t kChannelPressure = 0xD0;
constexpr std::uint8_t kSystemExclusive = 0xF0;
constexpr std::uint8_t kEscape = 0xF7; // raw bytes, told like the former
constexpr std::uint8_t kMetaEvent = 0xFF;
constexpr std::uint8_t kEndOfTrack = 0x2F;

constexpr std::uint32_t kUsualQuarter = 500000; // microseconds: 120 a minute, until a file tells its tempo
constexpr double kMicrosecondsPerSecond = 1e6;

// Reads on as far as there is something; what would go beyond gives nothing.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> text) : rest(text) {}

    bool AtEnd() const { return rest.empty(); }
    std::optional<std::uint32_t> Number(std::size_t count) { // big endian, up to 4 bytes
        if (rest.size() < count) return std::nullopt;
        std::uint32_t value = 0;
        for (const std::byte byte : rest.first(count))
            value = value << 8 | std::to_integer<std::uint32_t>(byte);
        rest = rest.subspan(count);
        return value;
    }
    std::optional<std::uint8_t> Byte() {
        const std::optional<std::uint32_t> value = Number(1);
        return value ? std::optional(static_cast<std::uint8_t>(*value)) : std::nullopt;
    }
    bool NextIsData() const { return !rest.empty() && std::to_integer<int>(rest.front()) < 0x80; }
    // Seven bits a byte, the last one below 0x80; four bytes at most.
    std::optional<std::uint32_t> VariableLength() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const std::optional<std::uint8_t> byte = Byte();
            if (!byte) return std::nullopt;
            value = value << 7 | (*byte & 0x7FU);
            if (*byte < 0x80) return value;
        }
        return std::nullopt;
    }
    std::optional<std::span<const std::byte>> Take(std::uint32_t count) {
        if (rest.size() < count) return std::nullopt;
        return std::exchange(rest, rest.subspan(count)).first(count);
    }

private:
    std::span<const std::byte> rest;
};

struct TickMessage {
    std::uint64_t tick = 0;
    std::uint8_t status = 0;
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;
};

struct TempoChange {
    std::uint64_t tick = 0;
    std::uint32_t quarter = kUsualQuarter; // microseconds
};

// One after the other, the tracks of a file.
struct Gathered {
    std::vector<TickMessage> messages;
    std::vector<TempoChange> tempos;
};

class Track {
public:
    Track(std::span<const std::byte> text, Gathered& target) : bytes(text), gathered(target) {}

    // False when it is not whole. A track that ends without saying so is.
    bool Read() {
        while (!ended && !bytes.AtEnd()) {
            const std::optional<std::uint32_t> delta = bytes.VariableLength();
            if (!delta) return false;
            tick += *delta;
            if (!ReadEvent()) return false;
        }
        return true;
    }

private:
    bool ReadEvent() {
        if (bytes.NextIsData()) return runningStatus != 0 && ReadMessage(runningStatus);
        const std::optional<std::uint8_t> status = bytes.Byte();
        if (!status) return false;
        if (*status == kMetaEvent) return ReadMeta();
        if (*status == kSystemExclusive || *status == kEscape) {
            const std::optional<std::uint32_t> length = bytes.VariableLength();
            return length && bytes.Take(*length);
        }
        if (*status > kSystemExclusive) return false;
        runningStatus = *status;
        return ReadMessage(*status);
    }

    bool ReadMessage(std::uint8_t status) {
        const auto kind = static_cast<std::uint8_t>(status & 0xF0);
        const bool isShort = kind == kProgramChange || kind == kChannelPressure;
        const std::optional<std::uint8_t> data1 = DataByte();
        const std::optional<std::uint8_t> data2 = isShort ? std::uint8_t{0} : DataByte();
        if (!data1 || !data2) return false;
        if (kind == kMidiNoteOff || kind == kMidiNoteOn || kind == kController)
            gathered.messages.push_back({tick, status, *data1, *data2});
        return true;
    }

    std::optional<std::uint8_t> DataByte() { return bytes.NextIsData() ? bytes.Byte() : std::nullopt; }

    bool ReadMeta() {
        const std::optional<std::uint8_t> type = bytes.Byte();
        const std::optional<std::uint32_t> length = type ? bytes.VariableLength() : std::nullopt;
        const auto data = length ? bytes.Take(*length) : std::nullopt;
        if (!data) return false;
        constexpr std::size_t kTempoBytes = 3;
        if (*type == kMidiMetaTempo && data->size() == kTempoBytes) {
            const std::uint32_t quarter = *ByteReader(*data).Number(kTempoBytes);
            if (quarter > 0) gathered.tempos.push_back({tick, quarter});
        }
        ended = *type == kEndOfTrack;
        return true;
    }

    ByteReader bytes;
    Gathered& gathered;
    std::uint64_t tick = 0;
    std::uint8_t runningStatus = 0;
    bool ended = false;
};

// Ticks in seconds: of a quarter note, or of a frame of film.
struct Division {
    double ticksPerQuarter = 0; // 0: by frames
    double secondsPerTick = 0;  // by frames
};

std::optional<Division> DivisionOf(std::uint32_t word) {
    constexpr std::uint32_t kFramesBit = 0x8000;
    if ((word & kFramesBit) == 0)
        return word > 0 ? std::optional(Division{static_cast<double>(word), 0}) : std::nullopt;
    const auto framesPerSecond = static_cast<std::int32_t>(0x100 - (word >> 8));
    const auto ticksPerFrame = static_cast<double>(word & 0xFF);
    constexpr double kDropFrame = 30000.0 / 1001; // what 29 stands for
    double rate = framesPerSecond;
    if (framesPerSecond == 29) {
        rate = kDropFrame;
    } else if (framesPerSecond != 24 && framesPerSecond != 25 && framesPerSecond != 30) {
        return std::nullopt;
    }
    if (ticksPerFrame < 1) return std::nullopt;
    return Division{0, 1 / (rate * ticksPerFrame)};
}

// Asked in rising order.
class TempoMap {
public:
    TempoMap(const Division& unit, std::vector<TempoChange> changes)
        : division(unit), tempos(std::move(changes)) {
        std::stable_sort(tempos.begin(), tempos.end(),
                         [](const TempoChange& a, const TempoChange& b) { return a.tick < b.tick; });
    }

    double SecondsAt(std::uint64_t tick) {
        if (division.ticksPerQuarter <= 0) return static_cast<double>(tick) * division.secondsPerTick;
        for (; next < tempos.size() && tempos[next].tick <= tick; ++next) {
            seconds += SecondsOf(tempos[next].tick - since);
            since = tempos[next].tick;
            quarter = tempos[next].quarter;
        }
        return seconds + SecondsOf(tick - since);
    }

private:
    double SecondsOf(std::uint64_t ticks) const {
        return static_cast<double>(ticks) * quarter / (division.ticksPerQuarter * kMicrosecondsPerSecond);
    }

    Division division;
    std::vector<TempoChange> tempos;
    std::size_t next = 0;
    std::uint64_t since = 0;
    double seconds = 0;
    std::uint32_t quarter = kUsualQuarter;
};

std::optional<Division> ReadHeader(ByteReader& bytes) {
    if (bytes.Number(4) != kHeaderChunk) return std::nullopt;
    const std::optional<std::uint32_t> length = bytes.Number(4);
    const auto text = length ? bytes.Take(*length) : std::nullopt;
    if (!text || text->size() < kKnownHeaderBytes) return std::nullopt;
    ByteReader header(*text);
    const std::uint32_t format = *header.Number(2);
    constexpr std::uint32_t kLastFormat = 1; // format 2 holds pieces, not the tracks of one
    if (format > kLastFormat) return std::nullopt;
    header.Number(2); // how many tracks: there are as many as there are
    return DivisionOf(*header.Number(2));
}

// False when one is not whole, and when there is none. What follows the last whole chunk is no chunk.
bool ReadTracks(ByteReader& bytes, Gathered& gathered) {
    bool any = false;
    while (!bytes.AtEnd()) {
        const std::optional<std::uint32_t> kind = bytes.Number(4);
        const std::optional<std::uint32_t> length = kind ? bytes.Number(4) : std::nullopt;
        if (!length) return any;
        const auto text = bytes.Take(*length);
        if (*kind != kTrackChunk) {
            if (!text) return any;
            continue;
        }
        if (!text || !Track(*text, gathered).Read()) return false;
        any = true;
    }
    return any;
}

} // namespace

std::int32_t ParseMidiFile(std::span<const std::byte> text, MidiFileContents& contents) noexcept try {
    ByteReader bytes(text);
    const std::optional<Division> division = ReadHeader(bytes);
    Gathered gathered;
    if (!division || !ReadTracks(bytes, gathered)) return kCannotOpen;
    std::stable_sort(gathered.messages.begin(), gathered.messages.end(),
                     [](const TickMessage& a, const TickMessage& b) { return a.tick < b.tick; });
    TempoMap tempos(*division, std::move(gathered.tempos));
    MidiFileContents result;
    result.messages.reserve(gathered.messages.size());
    for (const TickMessage& message : gathered.messages)
        result.messages.push_back(
            {tempos.SecondsAt(message.tick), message.status, message.data1, message.data2});
    contents = std::move(result);
    return kOk;
} catch (const std::bad_alloc&) {
    return kOutOfMemory;
}

std::int32_t ReadMidiFile(const std::string& path, MidiFileContents& contents) noexcept try {
    CRegularFile file;
    if (!file.Open(path)) return kCannotOpen;
    const std::int64_t length = file.Length();
    if (length > kLargestMidiFile) return kCannotOpen;
    std::vector<std::byte> bytes(static_cast<std::size_t>(std::max<std::int64_t>(length, 0)));
    if (file.ReadAt(0, bytes.data(), bytes.size()) != bytes.size()) return kCannotOpen;
    return ParseMidiFile(bytes, contents);
} catch (const std::bad_alloc&) {
    return kOutOfMemory;
}

} // namespace sonorelle
