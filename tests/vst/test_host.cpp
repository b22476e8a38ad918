#include "vst/test_host.h"

#include <cstring>
#include <utility>

namespace sonorelle::test {

namespace {

// Whose plug-in is being made: its record does not name its host yet.
thread_local TestHost* maker = nullptr;

constexpr std::size_t kMostKept = 5000; // a host's memory must not grow with the length of a test

} // namespace

HostedEffect* TestHost::Make(VstEntry entry) {
    maker = this;
    HostedEffect* const effect = entry(&Answer);
    maker = nullptr;
    if (effect != nullptr) effect->user = this;
    return effect;
}

void TestHost::Play(double samplePosition) {
    const std::lock_guard guard(lock);
    time.samplePos = samplePosition;
    time.flags = kTimeTempoValid | kTimeMetreValid | kTimePlaying | kTimeChanged;
}

void TestHost::Stop() {
    const std::lock_guard guard(lock);
    time.flags = kTimeTempoValid | kTimeMetreValid | kTimeChanged;
}

void TestHost::Advance(std::int32_t frames) {
    const std::lock_guard guard(lock);
    if ((time.flags & kTimePlaying) != 0) time.samplePos += frames;
    time.flags &= ~kTimeChanged;
}

void TestHost::SetTime(const HostTime& now) {
    const std::lock_guard guard(lock);
    time = now;
}

HostTime TestHost::Time() const {
    const std::lock_guard guard(lock);
    return time;
}

std::int32_t TestHost::CountOf(Request request) const {
    const std::lock_guard guard(lock);
    return counts[static_cast<std::size_t>(request)];
}

std::vector<std::int32_t> TestHost::Requests() const {
    const std::lock_guard guard(lock);
    return requests;
}

std::vector<TestHost::Automation> TestHost::TakeAutomations() {
    const std::lock_guard guard(lock);
    return std::exchange(automations, {});
}

std::vector<HostMidiEvent> TestHost::TakeMidi() {
    const std::lock_guard guard(lock);
    return std::exchange(midi, {});
}

std::vector<TestHost::OutputsTold> TestHost::OutputsTellings() const {
    const std::lock_guard guard(lock);
    return tellings;
}

std::intptr_t TestHost::Answer(HostedEffect* effect, std::int32_t opcode, std::int32_t index,
                               std::intptr_t value, void* pointer, float option) {
    auto* const host =
        effect != nullptr && effect->user != nullptr ? static_cast<TestHost*>(effect->user) : maker;
    if (host == nullptr) return 0;
    {
        const std::lock_guard guard(host->lock);
        if (opcode >= 0 && static_cast<std::size_t>(opcode) < host->counts.size())
            ++host->counts[static_cast<std::size_t>(opcode)];
        if (host->requests.size() < kMostKept) host->requests.push_back(opcode);
    }
    return host->Answer(static_cast<Request>(opcode), effect, index, value, pointer, option);
}

std::intptr_t TestHost::Answer(Request request, HostedEffect* effect, std::int32_t index, std::intptr_t value,
                               void* pointer, float option) {
    switch (request) {
    case Request::kVersion:
        if (effect != nullptr || index != 0 || value != 0 || pointer != nullptr || option != 0)
            versionAskedPlainly = false;
        return version;
    case Request::kGetTime:
        timeFilter = static_cast<std::int32_t>(value);
        return AnswerTime();
    case Request::kGetCurrentProcessLevel:
        return processLevel;
    case Request::kGetOutputLatency:
        return latency;
    case Request::kWantMidi:
        wantMidi = value;
        return 1;
    case Request::kAutomate: {
        const std::lock_guard guard(lock);
        if (automations.size() < kMostKept) automations.push_back({index, option});
        return 1;
    }
    case Request::kProcessEvents:
        Keep(*static_cast<const HostEventList*>(pointer));
        return 1;
    case Request::kIOChanged: {
        const std::lock_guard guard(lock);
        tellings.push_back({effect->numInputs, effect->numOutputs, effect->flags, effect->uniqueID});
        return 1;
    }
    default:
        return 0;
    }
}

// A record for each thread that asks: the next block must not change what another one still reads.
std::intptr_t TestHost::AnswerTime() {
    if (!hasTime) return 0;
    thread_local HostTime answer;
    answer = Time();
    return reinterpret_cast<std::intptr_t>(&answer);
}

void TestHost::Keep(const HostEventList& events) {
    const std::lock_guard guard(lock);
    const auto* const slots = reinterpret_cast<const std::byte*>(&events) + offsetof(HostEventList, events);
    for (std::int32_t i = 0; i < events.numEvents && midi.size() < kMostKept; ++i) {
        const HostMidiEvent* event = nullptr;
        std::memcpy(&event, slots + static_cast<std::size_t>(i) * sizeof event, sizeof event);
        midi.push_back(*event);
    }
}

} // namespace sonorelle::test
