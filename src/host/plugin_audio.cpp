// What the audio thread does: the transport, the block, the keys that come in, the notes that go out.

#include "app/beat_grid.h"
#include "host/plugin_core.h"

#include "app/application.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr std::int32_t kBlockFilter =
    kVstTimeSigValid | kVstTempoValid | kVstTransportPlaying | kVstTransportChanged;
constexpr std::int32_t kEventFilter = kVstTransportPlaying | kVstTransportChanged;

// Quarter notes per minute, without its ends: what lies beyond is no tempo.
constexpr double kFastestTempo = 999;
bool IsTempo(double tempo) { return tempo > 0 && tempo < kFastestTempo; }

// A host that counts no beats sends zeros.
std::int32_t CleanMetre(std::int32_t count) { return count < 1 ? kUsualMetre : count; }

// MIDI.
constexpr std::uint8_t kNoteOff = 0x80;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kAllNotesOffController = 123;
constexpr std::uint8_t kMonoModeController = 126; // ends all notes as well

void ClearFirstPair(float* const* outputs, std::int32_t frames) {
    if (outputs == nullptr || outputs[0] == nullptr || outputs[1] == nullptr || frames < 1) return;
    std::fill_n(outputs[0], frames, 0.0F);
    std::fill_n(outputs[1], frames, 0.0F);
}

} // namespace

void CvirelainePlugIn::Process(const float* const*, float* const* outputs, std::int32_t frames) {
    frames = std::max(frames, 0);
    const SpinGuard guard(fileLock);
    const std::optional<VstTimeInfo> time = AskTime(kBlockFilter);
    if (!IsPlayable()) {
        if (time) TakeHostTempo(*time);
        ClearFirstPair(outputs, frames);
        return;
    }
    if (time) {
        TrackTransport(*time, frames);
        PassHostTempo(*time);
    }
    if (outputs != nullptr) application->ProcessAudio(outputs, frames);
    SendMidi(frames);
}

// A copy: the record is the host's, and what it holds is not to be trusted.
std::optional<VstTimeInfo> CvirelainePlugIn::AskTime(std::int32_t filter) const {
    const VstTimeInfo* const told = host != nullptr ? host->GetTimeInfo(filter) : nullptr;
    if (told == nullptr) return std::nullopt;
    VstTimeInfo time = *told;
    if (!std::isfinite(time.samplePos)) time.samplePos = transport.GetExpected();
    return time;
}

void CvirelainePlugIn::TakeHostTempo(const VstTimeInfo& time) {
    if (IsTempo(time.tempo)) hostTempo.store(static_cast<float>(time.tempo), std::memory_order_relaxed);
}

// Hosts do not always tell of a jump.
void CvirelainePlugIn::TrackTransport(const VstTimeInfo& time, std::int32_t frames) {
    const bool jumped = transport.Follow(time.samplePos, frames);
    const float rate = host->GetSampleRate();
    if (std::isfinite(rate) && rate > 0) application->SetSampleRate(rate);
    application->SynchronizeToHost(time.samplePos, (time.flags & kVstTransportPlaying) != 0,
                                   jumped || (time.flags & kVstTransportChanged) != 0, frames);
}

void CvirelainePlugIn::PassHostTempo(const VstTimeInfo& time) {
    if (!IsTempo(time.tempo)) return;
    const auto tempo = static_cast<float>(time.tempo);
    const std::int32_t numerator = CleanMetre(time.timeSigNumerator);
    const std::int32_t denominator = CleanMetre(time.timeSigDenominator);
    if (tempo != application->GetHostTempo() || numerator != application->GetTimeSigNumerator() ||
        denominator != application->GetTimeSigDenominator()) {
        application->SetHostTempo(tempo, numerator, denominator);
    }
}

// Nobody plays along with an offline render: its notes are dropped.
void CvirelainePlugIn::SendMidi(std::int32_t frames) {
    if (application->GetOutgoingMidi(midiRecords) == 0) return;
    const bool offline = host != nullptr && host->GetCurrentProcessLevel() == kVstProcessLevelOffline;
    ShareOutMidi(*application, midiRecords, frames, offline, outgoing);
    if (!offline && host != nullptr) host->SendVstEventsToHost(&outgoing.List());
    application->PurgeSentMidi();
}

std::int32_t CvirelainePlugIn::ProcessEvents(const VstEvents* events) {
    constexpr std::int32_t kTaken = 1;
    noteOnSeen.store(false, std::memory_order_relaxed);
    if (events == nullptr) return kTaken;
    const SpinGuard guard(fileLock);
    if (!IsPlayable()) return kTaken;
    VstEvent* const* const slots = EventSlots(*events);
    for (std::int32_t i = 0; i < events->numEvents; ++i) {
        const VstEvent* const event = slots[i];
        if (event != nullptr && event->type == kVstMidiType)
            HandleMidiEvent(*reinterpret_cast<const VstMidiEvent*>(event));
    }
    return kTaken;
}

void CvirelainePlugIn::HandleMidiEvent(const VstMidiEvent& event) {
    const auto status = static_cast<std::uint8_t>(event.midiData[0] & 0xF0);
    const std::int32_t note = event.midiData[1] & 0x7F;
    const std::int32_t velocity = event.midiData[2] & 0x7F;
    const std::int32_t delta = std::max(event.deltaFrames, 0);
    const std::optional<VstTimeInfo> time = AskTime(kEventFilter);
    const double position = delta + (time ? time->samplePos : 0.0);
    if (status == kNoteOff || (status == kNoteOn && velocity == 0)) {
        application->NoteOff(note, delta, position);
    } else if (status == kNoteOn) {
        if (host != nullptr) application->SetHostLatency(host->GetOutputLatency());
        application->NoteOn(note, delta, position);
        noteOnSeen.store(true, std::memory_order_relaxed);
    } else if (status == kController &&
               (event.midiData[1] == kAllNotesOffController || event.midiData[1] == kMonoModeController)) {
        application->AllNotesOff(delta, position);
        noteOnSeen.store(false, std::memory_order_relaxed);
    }
}

bool CvirelainePlugIn::IsClipping() {
    const SpinGuard guard(fileLock);
    return application != nullptr && application->IsClipping();
}

} // namespace sonorelle
