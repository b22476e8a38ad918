// A region becomes a track in these steps:
//   1. tempo and metre stand first, at time 0;
//   2. the notes that overlap the region are walked in their order (MidiRegion);
//   3. voices: each sounding voice of a note is a note-on and a note-off;
//      chords: the keys change where the chord does, and are held from chord to chord;
//   4. the track is written in one go.

#include "app/midi_export.h"

#include "app/live_bypass.h"
#include "formats/midi_file.h"
#include "harmony/choir_driver.h"
#include "harmony/pitch_class.h"
#include "platform/critical_section.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"
#include "platform/units.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace sonorelle {

namespace {

constexpr float kDefaultTempo = 120;
constexpr std::int32_t kDefaultTimeSig = 4;
constexpr std::int32_t kLargestTimeSig = 255; // a byte of the file
constexpr std::uint8_t kClocksPerClick = 36;
constexpr std::uint8_t kThirtySecondsPerQuarter = 8;
constexpr std::int32_t kVoicesDivision = 384; // ticks per quarter note
constexpr std::int32_t kTriggerDivision = 96;

constexpr std::int32_t kLastMidiKey = 127;
constexpr std::int32_t kFullVelocity = 127;
constexpr double kQuietestLevelLog = -6.9; // ln 0.001: the level that velocity 0 stands for

constexpr std::int32_t kChordChannel = 0;
constexpr std::int32_t kNothingHeld = -1;
constexpr std::int32_t kChordShift = -12; // chords lie an octave below the voices' middle

bool IsTempo(float tempo) { return std::isfinite(tempo) && tempo > 0; }

bool IsMidiKey(std::int32_t key) { return key >= 0 && key <= kLastMidiKey; }

std::int32_t TimeSigOr4(std::int32_t value) {
    return value < 1 ? kDefaultTimeSig : std::min(value, kLargestTimeSig);
}

std::uint32_t TruncateToMilliseconds(double milliseconds) {
    constexpr double kBeyond = 4294967296.0;
    if (!(milliseconds > 0)) return 0;
    return milliseconds < kBeyond ? static_cast<std::uint32_t>(milliseconds)
                                  : std::numeric_limits<std::uint32_t>::max();
}

// The region's own time: where in it a position lies, in milliseconds.
class MidiRegion {
public:
    explicit MidiRegion(const MidiExportSettings& settings)
        : playStart_(settings.playStart), playEnd_(settings.playEnd),
          sampleRate_(static_cast<double>(settings.sampleRate)),
          hostTempo_(IsTempo(settings.hostTempo) ? settings.hostTempo : kDefaultTempo) {
        if (settings.syncTempoToHost && IsTempo(settings.melodyTempo))
            factor_ = static_cast<double>(settings.melodyTempo) / static_cast<double>(hostTempo_);
    }

    float HostTempo() const { return hostTempo_; }
    bool Overlaps(std::int32_t start, std::int32_t end) const {
        return playStart_ < playEnd_ && start < playEnd_ && end > playStart_;
    }
    std::uint32_t OnTime(std::int32_t start) const {
        return Milliseconds(std::max<std::int64_t>(start - playStart_, 0));
    }
    std::uint32_t OffTime(std::int32_t end) const {
        return Milliseconds(std::min(end - playStart_, playEnd_ - playStart_));
    }
    std::uint32_t Length() const { return Milliseconds(playEnd_ - playStart_); }

private:
    std::uint32_t Milliseconds(std::int64_t frames) const {
        return TruncateToMilliseconds(static_cast<double>(frames) * factor_ * kMillisecondsPerSecond /
                                      sampleRate_);
    }

    std::int64_t playStart_; // 64 bits: differences of any two positions fit
    std::int64_t playEnd_;
    double sampleRate_;
    float hostTempo_;
    double factor_ = 1;
};

void BeginTrack(CkvoMidiTrack& track, const MidiExportSettings& settings, const MidiRegion& region) {
    const auto denominator = static_cast<std::uint32_t>(TimeSigOr4(settings.timeSigDenominator));
    track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(region.HostTempo()));
    track.AddEvent(std::make_shared<CkvoMidiFileTimeSigEvent>(
        static_cast<std::uint8_t>(TimeSigOr4(settings.timeSigNumerator)),
        static_cast<std::uint8_t>(std::bit_width(denominator) - 1), kClocksPerClick,
        kThirtySecondsPerQuarter));
}

void AddNoteOn(CkvoMidiTrack& track, std::uint32_t time, std::int32_t channel, std::int32_t key,
               std::int32_t velocity) {
    if (IsMidiKey(key))
        track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(time, kMidiNoteOn, channel, key, velocity));
}

void AddNoteOff(CkvoMidiTrack& track, std::uint32_t time, std::int32_t channel, std::int32_t key) {
    if (IsMidiKey(key))
        track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(time, kMidiNoteOff, channel, key, 0));
}

// Calls onNote(note, onTime, offTime) for each note that overlaps the region, in their order.
template<class OnNote>
void ForEachNote(CChoirDriver& driver, const MidiExportSettings& settings, const MidiRegion& region,
                 OnNote onNote) {
    const std::int32_t first = std::max(driver.FindNearestNote(settings.playStart), 0);
    for (std::int32_t note = first; note < driver.GetNoteCount(); ++note) {
        std::int32_t start = 0;
        std::int32_t end = 0;
        if (!driver.GetNoteRange(note, start, end) || !region.Overlaps(start, end)) continue;
        onNote(note, region.OnTime(start), region.OffTime(end));
    }
}

// The key of a voice in a note; kNothingHeld where it is silent or lies outside of MIDI's keys.
std::int32_t KeyOfVoice(CChoirDriver& driver, std::int32_t note, std::int32_t voice, float transpose) {
    float deviation = 0;
    float gain = 0;
    const std::int32_t pitch = driver.GetVoice(note, voice, deviation, gain, false);
    if (pitch == ConsortierClassic::kNoPitch) return kNothingHeld;
    const std::int32_t key = TruncateToI32(static_cast<double>(pitch) + static_cast<double>(transpose));
    return IsMidiKey(key) ? key : kNothingHeld;
}

void AddVoices(CkvoMidiTrack& track, CChoirDriver& driver, const MidiExportSettings& settings,
               const MidiRegion& region, std::int32_t firstVoice, std::int32_t lastVoice) {
    ForEachNote(driver, settings, region, [&](std::int32_t note, std::uint32_t on, std::uint32_t off) {
        const std::int32_t velocity = MidiVelocityFromLevel(driver.GetNoteLevel(note));
        for (std::int32_t voice = firstVoice; voice <= lastVoice; ++voice) {
            const std::int32_t key = KeyOfVoice(driver, note, voice, settings.transpose);
            AddNoteOn(track, on, voice, key, velocity);
            AddNoteOff(track, off, voice, key);
        }
    });
}

bool IsSameHarmony(const CChoirDriver::ChordRecord& a, const CChoirDriver::ChordRecord& b) {
    return a.root == b.root && a.triadType == b.triadType && a.tetradType == b.tetradType;
}

std::array<std::int32_t, 4> KeysOfChord(CChoirDriver::ChordRecord chord, float transpose) {
    const std::int64_t shift = TruncateToI32(static_cast<double>(transpose));
    chord.root = ConsortierClassic::PitchClass(chord.root + shift);
    std::int32_t keys[4];
    CChoirDriver::ChordToPitches(chord, keys);
    std::array<std::int32_t, 4> shifted{};
    std::transform(std::begin(keys), std::end(keys), shifted.begin(),
                   [](std::int32_t key) { return key < 0 ? kNothingHeld : key + kChordShift; });
    return shifted;
}

void AddChords(CkvoMidiTrack& track, CChoirDriver& driver, const MidiExportSettings& settings,
               const MidiRegion& region) {
    std::array<std::int32_t, 4> held = {kNothingHeld, kNothingHeld, kNothingHeld, kNothingHeld};
    std::optional<CChoirDriver::ChordRecord> previous;
    std::uint32_t lastOff = 0;
    ForEachNote(driver, settings, region, [&](std::int32_t note, std::uint32_t on, std::uint32_t off) {
        lastOff = off;
        const CChoirDriver::ChordRecord chord = driver.GetChord(note);
        if (previous && IsSameHarmony(*previous, chord)) return;
        previous = chord;
        const std::array<std::int32_t, 4> keys = KeysOfChord(chord, settings.transpose);
        for (std::size_t place = 0; place < keys.size(); ++place) {
            AddNoteOff(track, on, kChordChannel, held[place]);
            AddNoteOn(track, on, kChordChannel, keys[place], kFullVelocity);
        }
        held = keys;
    });
    for (const std::int32_t key : held) AddNoteOff(track, lastOff, kChordChannel, key);
}

std::int32_t WriteTrack(const CkvoMidiTrack& track, const std::string& path, std::int32_t division,
                        float tempo) {
    CkvoMidiFile file;
    file.AddTrack(track);
    return file.Write(path, 0, division, tempo);
}

} // namespace

std::int32_t MidiVelocityFromLevel(float level) {
    const double full = kFullVelocity;
    const double velocity = full - full * std::log(static_cast<double>(level)) / kQuietestLevelLog;
    if (!(velocity > 0)) return 0; // also for a level that has no logarithm
    return static_cast<std::int32_t>(std::min(velocity, full));
}

std::int32_t CMidiExport::ExportMidi(const std::string& path, std::int32_t voice) const noexcept try {
    std::optional<SpinGuard> guard;
    if (settings_.lock != nullptr) guard.emplace(*settings_.lock);
    const std::int32_t voiceCount = driver_.VoiceCount();
    if (voice < kAllVoices || voice > voiceCount) return kBadArgument;
    std::optional<LiveBypass> bypass(std::in_place, driver_);
    const MidiRegion region(settings_);
    CkvoMidiTrack track;
    BeginTrack(track, settings_, region);
    if (voice == voiceCount) {
        AddChords(track, driver_, settings_, region);
    } else {
        const bool all = voice == kAllVoices;
        AddVoices(track, driver_, settings_, region, all ? 0 : voice, all ? voiceCount - 1 : voice);
    }
    bypass.reset();
    guard.reset();
    return WriteTrack(track, path, kVoicesDivision, region.HostTempo());
} catch (const std::bad_alloc&) {
    return kCannotWrite;
}

std::int32_t CMidiExport::ExportTriggerMidi(const std::string& path, std::int32_t triggerNote) const noexcept
    try {
    const MidiRegion region(settings_);
    CkvoMidiTrack track;
    BeginTrack(track, settings_, region);
    AddNoteOn(track, 0, 0, triggerNote, kFullVelocity);
    AddNoteOff(track, region.Length(), 0, triggerNote);
    return WriteTrack(track, path, kTriggerDivision, region.HostTempo());
} catch (const std::bad_alloc&) {
    return kCannotWrite;
}

} // namespace sonorelle
