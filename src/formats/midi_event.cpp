#include "formats/midi_event.h"

#include "platform/saturate.h"

#include <algorithm>
#include <utility>

namespace sonorelle {

CkvoMidiFileEvent::CkvoMidiFileEvent(bool isMeta, std::uint32_t time, std::int32_t type, std::int32_t channel,
                                     std::vector<std::uint8_t> data)
    : isMeta_(isMeta), time_(time), type_(type), channel_(channel), data_(std::move(data)) {}

CkvoMidiFileNoteEvent::CkvoMidiFileNoteEvent(std::uint32_t milliseconds, std::int32_t status,
                                             std::int32_t channel, std::int32_t key, std::int32_t velocity)
    : CkvoMidiFileEvent(false, milliseconds, status, channel,
                        {static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(velocity)}) {}

CkvoMidiFileTempoEvent::CkvoMidiFileTempoEvent(float bpm)
    : CkvoMidiFileEvent(true, 0, kMidiMetaTempo, 0, MidiTempoBytes(bpm)), bpm_(bpm) {}

CkvoMidiFileTimeSigEvent::CkvoMidiFileTimeSigEvent(std::uint8_t numerator, std::uint8_t denominatorPowerOf2,
                                                   std::uint8_t clocksPerClick,
                                                   std::uint8_t thirtySecondsPerQuarter)
    : CkvoMidiFileEvent(true, 0, kMidiMetaTimeSignature, 0,
                        {numerator, denominatorPowerOf2, clocksPerClick, thirtySecondsPerQuarter}) {}

std::vector<std::uint8_t> MidiTempoBytes(float bpm) {
    constexpr float kSecondsPerMinute = 60.0F;
    constexpr float kMicrosecondsPerSecond = 1000000.0F;
    constexpr std::int32_t kSlowest = 0xFFFFFF; // three bytes
    const float perQuarter = kSecondsPerMinute / bpm * kMicrosecondsPerSecond;
    const std::int32_t microseconds = std::clamp(TruncateToI32(static_cast<double>(perQuarter)), 0, kSlowest);
    return {static_cast<std::uint8_t>(microseconds >> 16), static_cast<std::uint8_t>(microseconds >> 8),
            static_cast<std::uint8_t>(microseconds)};
}

} // namespace sonorelle
