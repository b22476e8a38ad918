// Feeds any bytes to ParseMidiFile.

#include "formats/midi_file_reader.h"
#include "platform/result_codes.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

void Check(bool holds) {
    if (!holds) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sonorelle;
    constexpr std::size_t kFewestBytes = 3; // of a message: its distance from the one before, and two of data
    MidiFileContents contents;
    const std::int32_t result = ParseMidiFile(std::as_bytes(std::span(data, size)), contents);
    Check(result == kOk || result == kCannotOpen);
    Check(result == kOk || contents.messages.empty());
    Check(contents.messages.size() <= size / kFewestBytes);
    double before = 0;
    for (const MidiFileMessage& message : contents.messages) {
        Check(std::isfinite(message.seconds) && message.seconds >= before);
        before = message.seconds;
        const int kind = message.status & 0xF0;
        Check(kind == 0x80 || kind == 0x90 || kind == 0xB0);
        Check(message.data1 < 0x80 && message.data2 < 0x80);
    }
    return 0;
}
