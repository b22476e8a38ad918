#include "cli/command_line_host.h"

#include "app/beat_grid.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr double kSecondsPerMinute = 60;
constexpr std::int32_t kRealtimeLevel = 2; // blocks as they are played

} // namespace

CommandLineHost::CommandLineHost() {
    time.tempo = kUsualTempo;
    time.flags = kVstTempoValid | kVstTimeSigValid;
    SetMetre(kUsualMetre, kUsualMetre);
}

void CommandLineHost::SetSampleRate(float hertz) {
    sampleRate = hertz;
    time.sampleRate = static_cast<double>(hertz);
}

void CommandLineHost::SetMetre(std::int32_t numerator, std::int32_t denominator) {
    time.timeSigNumerator = numerator;
    time.timeSigDenominator = denominator;
}

void CommandLineHost::Play(double samplePos) {
    time.flags |= kVstTransportPlaying;
    Locate(samplePos);
}

void CommandLineHost::Stop() {
    time.flags &= ~kVstTransportPlaying;
    TellOfChange();
}

void CommandLineHost::Locate(double samplePos) {
    time.samplePos = samplePos;
    if (time.sampleRate > 0) time.ppqPos = samplePos / time.sampleRate * time.tempo / kSecondsPerMinute;
    TellOfChange();
}

void CommandLineHost::Advance(std::int32_t frames) {
    if (IsPlaying()) Locate(time.samplePos + frames);
    time.flags &= ~kVstTransportChanged;
}

std::int32_t CommandLineHost::GetCurrentProcessLevel() {
    return offline ? kVstProcessLevelOffline : kRealtimeLevel;
}

void CommandLineHost::SendVstEventsToHost(VstEvents* events) {
    VstEvent* const* const slots = EventSlots(*events);
    for (std::int32_t i = 0; i < events->numEvents; ++i) {
        if (slots[i] == nullptr || slots[i]->type != kVstMidiType) continue;
        const auto& event = *reinterpret_cast<const VstMidiEvent*>(slots[i]);
        sent.push_back(
            {time.samplePos + event.deltaFrames, event.midiData[0], event.midiData[1], event.midiData[2]});
    }
}

} // namespace sonorelle
