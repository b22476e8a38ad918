// One effect in the hands of the test host, and what is played into it.
//
// Each operation but the Raw ones checks that the call has left the process as it was, and reports a failure
// of the running test if not. They are for one thread at a time; the Raw ones are for several.
#pragma once

#include "vst/plugin_library.h"
#include "vst/test_host.h"
#include "vst/vst_interface.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle::test {

inline constexpr std::size_t kHostOutputs = 10;

// Ten outputs, and a number in each place that no block leaves by chance.
class HostBlock {
public:
    static constexpr float kUntouched = 77;

    explicit HostBlock(std::int32_t frames);
    HostBlock(HostBlock&&) = default;
    HostBlock& operator=(HostBlock&&) = default;

    void Refill(float value = kUntouched);
    // Output `output` and those behind it share the memory of the first of them.
    void AliasFrom(std::size_t output);
    float** Pointers() { return pointers.data(); }
    const std::vector<float>& operator[](std::size_t output) const { return samples[output]; }
    bool IsAll(std::size_t output, float value) const;
    bool IsFinite() const;
    float Peak(std::size_t output) const;

private:
    std::array<std::vector<float>, kHostOutputs> samples;
    std::array<float*, kHostOutputs> pointers{};
};

class HostedPlugIn {
public:
    // Throws std::runtime_error when the plug-in refuses. Opened and resumed.
    HostedPlugIn(TestHost& testHost, const PlugInLibrary& library);
    ~HostedPlugIn(); // closes
    HostedPlugIn(const HostedPlugIn&) = delete;
    HostedPlugIn& operator=(const HostedPlugIn&) = delete;

    HostedEffect* Effect() const { return effect; }
    HostedEffect* Abandon(); // gives it away: nobody closes it

    std::intptr_t Do(Call call, std::int32_t index = 0, std::intptr_t value = 0, void* pointer = nullptr,
                     float option = 0);
    std::intptr_t Raw(Call call, std::int32_t index = 0, std::intptr_t value = 0, void* pointer = nullptr,
                      float option = 0) const;
    void Set(std::int32_t parameter, float value);
    float Get(std::int32_t parameter);

    // What a call writes; nothing may be written behind `room` bytes, the closing zero included.
    std::string Text(Call call, std::size_t room, std::int32_t index = 0, std::intptr_t value = 0);
    std::string Chunk(bool program = false);
    // From memory behind which lies nothing that could be read.
    std::intptr_t SetChunk(const std::string& document, bool program = false);
    std::intptr_t RawSetChunk(const std::string& document, bool program = false) const;

    void SetSampleRate(float hertz) { Do(Call::kSetSampleRate, 0, 0, nullptr, hertz); }
    std::intptr_t SendMidi(const std::vector<HostMidiEvent>& events);
    void PlayBlock(HostBlock& block, std::int32_t frames); // and the transport runs on
    void RawPlayBlock(HostBlock& block, std::int32_t frames) const;
    // So many frames in blocks of `frames`; gives output `output` of all of them.
    std::vector<float> PlayOut(std::int32_t total, std::int32_t frames, std::size_t output = 0);
    // The same of all outputs.
    std::array<std::vector<float>, kHostOutputs> PlayAll(std::int32_t total, std::int32_t frames);

private:
    TestHost& host;
    HostedEffect* effect;
};

HostMidiEvent MidiOf(int status, int first, int second, std::int32_t deltaFrames = 0);

// The least session there is: the recording's path. `settings`: more lines of its file settings.
std::string SessionNaming(const std::string& recording, const std::string& settings = {});

} // namespace sonorelle::test
