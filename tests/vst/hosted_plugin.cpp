#include "vst/hosted_plugin.h"

#include "vst/process_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace sonorelle::test {

namespace {

// Looks at the process when it is made, and again when it goes.
class Untouched {
public:
    explicit Untouched(const char* what, std::int32_t number = 0)
        : call(what), index(number), before(ProcessState::Take()) {}
    ~Untouched() { EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "") << call << ' ' << index; }
    Untouched(const Untouched&) = delete;
    Untouched& operator=(const Untouched&) = delete;

private:
    const char* call;
    std::int32_t index;
    ProcessState before;
};

// Bytes at the very end of what may be read.
class EdgeMemory {
public:
    explicit EdgeMemory(const std::string& bytes) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t readable = (bytes.size() + page - 1) / page * page;
        size = readable + page;
        base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED) throw std::bad_alloc();
        mprotect(static_cast<char*>(base) + readable, page, PROT_NONE);
        start = static_cast<char*>(base) + readable - bytes.size();
        std::memcpy(start, bytes.data(), bytes.size());
    }
    ~EdgeMemory() { munmap(base, size); }
    EdgeMemory(const EdgeMemory&) = delete;
    EdgeMemory& operator=(const EdgeMemory&) = delete;
    char* Start() const { return start; }

private:
    void* base = nullptr;
    std::size_t size = 0;
    char* start = nullptr;
};

} // namespace

HostBlock::HostBlock(std::int32_t frames) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].assign(static_cast<std::size_t>(frames), kUntouched);
        pointers[i] = samples[i].data();
    }
}

void HostBlock::Refill(float value) {
    for (auto& channel : samples) std::fill(channel.begin(), channel.end(), value);
}

void HostBlock::AliasFrom(std::size_t output) {
    for (std::size_t i = output; i < pointers.size(); ++i) pointers[i] = pointers[output];
}

bool HostBlock::IsAll(std::size_t output, float value) const {
    return std::all_of(samples[output].begin(), samples[output].end(),
                       [&](float sample) { return sample == value; });
}

bool HostBlock::IsFinite() const {
    return std::all_of(samples.begin(), samples.end(), [](const auto& channel) {
        return std::all_of(channel.begin(), channel.end(), [](float s) { return std::isfinite(s); });
    });
}

float HostBlock::Peak(std::size_t output) const {
    float peak = 0;
    for (const float sample : samples[output]) peak = std::max(peak, std::fabs(sample));
    return peak;
}

HostedPlugIn::HostedPlugIn(TestHost& testHost, const PlugInLibrary& library) : host(testHost) {
    const VstEntry entry = library.Entry();
    if (entry == nullptr) throw std::runtime_error("no entry point");
    {
        const Untouched check("entry");
        effect = host.Make(entry);
    }
    if (effect == nullptr) throw std::runtime_error("the plug-in refuses");
    Do(Call::kOpen);
    Do(Call::kMainsChanged, 0, 1);
}

HostedPlugIn::~HostedPlugIn() {
    if (effect == nullptr) return;
    Do(Call::kMainsChanged, 0, 0);
    Do(Call::kClose);
}

HostedEffect* HostedPlugIn::Abandon() { return std::exchange(effect, nullptr); }

std::intptr_t HostedPlugIn::Do(Call call, std::int32_t index, std::intptr_t value, void* pointer,
                               float option) {
    const Untouched check("call", static_cast<std::int32_t>(call));
    return Raw(call, index, value, pointer, option);
}

std::intptr_t HostedPlugIn::Raw(Call call, std::int32_t index, std::intptr_t value, void* pointer,
                                float option) const {
    return effect->dispatcher(effect, static_cast<std::int32_t>(call), index, value, pointer, option);
}

void HostedPlugIn::Set(std::int32_t parameter, float value) {
    const Untouched check("setParameter", parameter);
    effect->setParameter(effect, parameter, value);
}

float HostedPlugIn::Get(std::int32_t parameter) {
    const Untouched check("getParameter", parameter);
    return effect->getParameter(effect, parameter);
}

std::string HostedPlugIn::Text(Call call, std::size_t room, std::int32_t index, std::intptr_t value) {
    constexpr char kMark = '~';
    std::array<char, 256> buffer;
    buffer.fill(kMark);
    Do(call, index, value, buffer.data());
    const auto* const end = static_cast<const char*>(std::memchr(buffer.data(), 0, buffer.size()));
    if (end == nullptr) {
        ADD_FAILURE() << "no text: call " << static_cast<std::int32_t>(call);
        return {};
    }
    EXPECT_LT(end, buffer.data() + room);
    EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(room), buffer.end(),
                            [](char c) { return c == kMark; }));
    return buffer.data();
}

std::string HostedPlugIn::Chunk(bool program) {
    void* data = nullptr;
    const std::intptr_t size = Do(Call::kGetChunk, program ? 1 : 0, 0, static_cast<void*>(&data));
    EXPECT_EQ(data == nullptr, size == 0);
    return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                    : std::string();
}

std::intptr_t HostedPlugIn::SetChunk(const std::string& document, bool program) {
    const Untouched check("setChunk");
    return RawSetChunk(document, program);
}

std::intptr_t HostedPlugIn::RawSetChunk(const std::string& document, bool program) const {
    const EdgeMemory memory(document);
    return Raw(Call::kSetChunk, program ? 1 : 0, static_cast<std::intptr_t>(document.size()), memory.Start());
}

std::intptr_t HostedPlugIn::SendMidi(const std::vector<HostMidiEvent>& events) {
    std::vector<HostMidiEvent> own = events;
    std::vector<std::intptr_t> list(2 + own.size());
    const auto count = static_cast<std::int32_t>(own.size());
    std::memcpy(list.data(), &count, sizeof count);
    for (std::size_t i = 0; i < own.size(); ++i) list[2 + i] = reinterpret_cast<std::intptr_t>(&own[i]);
    return Do(Call::kProcessEvents, 0, 0, list.data());
}

void HostedPlugIn::PlayBlock(HostBlock& block, std::int32_t frames) {
    const Untouched check("processReplacing", frames);
    RawPlayBlock(block, frames);
}

void HostedPlugIn::RawPlayBlock(HostBlock& block, std::int32_t frames) const {
    effect->processReplacing(effect, nullptr, block.Pointers(), frames);
    host.Advance(frames);
}

std::array<std::vector<float>, kHostOutputs> HostedPlugIn::PlayAll(std::int32_t total, std::int32_t frames) {
    std::array<std::vector<float>, kHostOutputs> all;
    HostBlock block(frames);
    for (std::int32_t done = 0; done < total; done += frames) {
        const std::int32_t now = std::min(frames, total - done);
        RawPlayBlock(block, now);
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i].insert(all[i].end(), block[i].begin(), block[i].begin() + now);
    }
    return all;
}

std::vector<float> HostedPlugIn::PlayOut(std::int32_t total, std::int32_t frames, std::size_t output) {
    return PlayAll(total, frames)[output];
}

HostMidiEvent MidiOf(int status, int first, int second, std::int32_t deltaFrames) {
    HostMidiEvent event{};
    event.type = 1;
    event.byteSize = sizeof event;
    event.deltaFrames = deltaFrames;
    event.midiData[0] = static_cast<unsigned char>(status);
    event.midiData[1] = static_cast<unsigned char>(first);
    event.midiData[2] = static_cast<unsigned char>(second);
    return event;
}

std::string SessionNaming(const std::string& recording, const std::string& settings) {
    return "<?xml version=\"1.0\"?>\n<quillon-xml version=\"1.0\">\n<FileSettings>\n<AudioFileName str=\"" +
           recording + "\"/>\n" + settings + "</FileSettings>\n</quillon-xml>\n";
}

} // namespace sonorelle::test
