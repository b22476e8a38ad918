// A host for the tests: what a plug-in asks is answered and noted down.
//
//     TestHost host;
//     HostedPlugIn plugIn(host, library);
//     plugIn.SetChunk(SessionNaming(song));
//     host.Play(0);
//     plugIn.PlayBlock(block, 512);
//
// Threads: any; the time is changed by whoever plays.
#pragma once

#include "vst/vst_interface.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace sonorelle::test {

class TestHost {
public:
    struct Automation {
        std::int32_t index;
        float value;
    };
    // What the record looked like when the plug-in told that its outputs have changed.
    struct OutputsTold {
        std::int32_t inputs;
        std::int32_t outputs;
        std::int32_t flags;
        std::int32_t uniqueId;
    };

    explicit TestHost(std::intptr_t hostVersion = 2400) : version(hostVersion) {}
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    // The plug-in's entry, called in the name of this host. Null when it refuses.
    HostedEffect* Make(VstEntry entry);

    // Transport.
    void Play(double samplePosition);
    void Stop();
    void Advance(std::int32_t frames);
    void SetTime(const HostTime& now);
    HostTime Time() const;

    std::int32_t CountOf(Request request) const;
    std::vector<std::int32_t> Requests() const; // in order, but for the first few thousand only
    std::vector<Automation> TakeAutomations();
    std::vector<HostMidiEvent> TakeMidi();
    std::vector<OutputsTold> OutputsTellings() const;
    std::int32_t LastTimeFilter() const { return timeFilter; }
    std::intptr_t LastWantMidi() const { return wantMidi; }
    // Each time with no effect and nothing but zeros.
    bool AskedForVersionPlainly() const { return versionAskedPlainly; }

    std::atomic<bool> hasTime{true};
    std::atomic<std::int32_t> processLevel{kLevelRealtime};
    std::atomic<std::int32_t> latency{256};

private:
    static std::intptr_t Answer(HostedEffect* effect, std::int32_t opcode, std::int32_t index,
                                std::intptr_t value, void* pointer, float option);
    std::intptr_t Answer(Request request, HostedEffect* effect, std::int32_t index, std::intptr_t value,
                         void* pointer, float option);
    std::intptr_t AnswerTime();
    void Keep(const HostEventList& events);

    const std::intptr_t version;
    mutable std::mutex lock;
    HostTime time{0, 44100, 0, 0, 120, 0, 0, 0, 4, 4, 0, 0, 0, kTimeTempoValid | kTimeMetreValid};
    std::array<std::int32_t, 64> counts{};
    std::vector<std::int32_t> requests;
    std::vector<Automation> automations;
    std::vector<HostMidiEvent> midi;
    std::vector<OutputsTold> tellings;
    std::atomic<std::int32_t> timeFilter{0};
    std::atomic<std::intptr_t> wantMidi{0};
    std::atomic<bool> versionAskedPlainly{true};
};

} // namespace sonorelle::test
