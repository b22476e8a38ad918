// The command line as the plug-in's host: a small sequencer with a transport, a tempo and a metre, that runs
// at the recording's rate and keeps the notes that come out.
//
//     CommandLineHost host;
//     host.SetSampleRate(44100);
//     host.SetTempo(120);
//     host.Play(0);                              // the transport runs from its sample 0 on
//     plugIn.Process(nullptr, outputs, 512);
//     host.Advance(512);
//
// One thread.

#pragma once

#include "host/host_operations.h"

#include <cstdint>
#include <vector>

namespace sonorelle {

// A MIDI message of the voices, at its sample of the host.
struct HostMidiNote {
    double samplePos = 0;
    std::uint8_t status = 0;
    std::uint8_t key = 0;
    std::uint8_t velocity = 0;
};

class CommandLineHost final : public CkvoHost {
public:
    static constexpr double kUsualTempo = 120;

    CommandLineHost();

    void SetSampleRate(float hertz);
    void SetTempo(double quarterNotesPerMinute) { time.tempo = quarterNotesPerMinute; }
    double GetTempo() const { return time.tempo; }
    void SetMetre(std::int32_t numerator, std::int32_t denominator);
    // Renders files, as fast as it goes: no note is sent then.
    void SetOffline(bool on) { offline = on; }

    void Play(double samplePos); // from there on
    void Stop();                 // and stays where it is
    void Locate(double samplePos);
    // The block is done. What has changed before it is no news any more.
    void Advance(std::int32_t frames);
    bool IsPlaying() const { return (time.flags & kVstTransportPlaying) != 0; }
    double GetPosition() const { return time.samplePos; } // of the coming block

    const std::vector<HostMidiNote>& SentNotes() const { return sent; }
    void ForgetSentNotes() { sent.clear(); }

    const VstTimeInfo* GetTimeInfo(std::int32_t) override { return &time; }
    std::int32_t GetCurrentProcessLevel() override;
    float GetSampleRate() override { return sampleRate; }
    void SendVstEventsToHost(VstEvents* events) override;

private:
    void TellOfChange() { time.flags |= kVstTransportChanged; }

    VstTimeInfo time;
    float sampleRate = 0;
    bool offline = false;
    std::vector<HostMidiNote> sent;
};

} // namespace sonorelle
