// Reads Standard MIDI Files: the notes and controllers of all tracks in one row, each at its time in seconds.
//
//     MidiFileContents contents;
//     if (ReadMidiFile("take.mid", contents) == kOk)
//         for (const MidiFileMessage& message : contents.messages) { ... }
//
// Formats 0 and 1, with a tempo map or with SMPTE frames. System exclusive and meta events are skipped, and
// so are chunks of unknown kinds. Files come from anywhere: sizes are checked before anything is read, and
// memory grows with what a file holds, whatever it says.
//
// Any thread; no state. Throws nothing.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

// A message of a channel: note on or off, or a controller.
struct MidiFileMessage {
    double seconds = 0; // from the beginning of the file; rises from message to message
    std::uint8_t status = 0;
    std::uint8_t data1 = 0; // 0 to 127, as the next
    std::uint8_t data2 = 0;

    bool operator==(const MidiFileMessage&) const = default;
};

struct MidiFileContents {
    // In the order of their times; at one time in the order of the tracks, and within one as written.
    std::vector<MidiFileMessage> messages;
};

// No file of notes is as large as that.
inline constexpr std::int64_t kLargestMidiFile = std::int64_t{64} << 20; // bytes

// 0; kCannotOpen for a file that cannot be read, is too large, or is no whole MIDI file of these formats;
// kOutOfMemory. `contents` is untouched unless it gives 0.
std::int32_t ReadMidiFile(const std::string& path, MidiFileContents& contents) noexcept;
// The same of bytes in memory.
std::int32_t ParseMidiFile(std::span<const std::byte> bytes, MidiFileContents& contents) noexcept;

} // namespace sonorelle
