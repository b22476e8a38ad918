// The binary interface between a VST 2 host and a plug-in: the effect record, the numbers of the calls in
// both directions, and the small records that they carry. Time and events are in vst_records.h.
//
// All calls use the C calling convention; records have natural alignment. Sizes and offsets are checked
// below, and against an independent declaration in the tests.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonorelle {

struct AEffect;

// From the plug-in to the host.
using AudioMasterCallback = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                              std::intptr_t value, void* pointer, float option);

// From the host to the plug-in.
using EffectDispatcher = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                           std::intptr_t value, void* pointer, float option);
using EffectProcess = void (*)(AEffect* effect, float** inputs, float** outputs, std::int32_t frames);
using EffectProcessDouble = void (*)(AEffect* effect, double** inputs, double** outputs, std::int32_t frames);
using EffectSetParameter = void (*)(AEffect* effect, std::int32_t index, float value);
using EffectGetParameter = float (*)(AEffect* effect, std::int32_t index);

// A code of four characters, the first in the highest byte.
constexpr std::int32_t FourCharacterCode(const char (&text)[5]) {
    return static_cast<std::int32_t>(
        static_cast<std::uint32_t>(text[0]) << 24 | static_cast<std::uint32_t>(text[1]) << 16 |
        static_cast<std::uint32_t>(text[2]) << 8 | static_cast<std::uint32_t>(text[3]));
}

inline constexpr std::int32_t kEffectMagic = FourCharacterCode("VstP");

// Bits of AEffect::flags.
inline constexpr std::int32_t kEffFlagsHasEditor = 1;
inline constexpr std::int32_t kEffFlagsCanReplacing = 1 << 4;
inline constexpr std::int32_t kEffFlagsProgramChunks = 1 << 5;
inline constexpr std::int32_t kEffFlagsIsSynth = 1 << 8;

struct AEffect {
    std::int32_t magic = kEffectMagic;
    EffectDispatcher dispatcher = nullptr;
    EffectProcess process = nullptr; // accumulating; no host of today calls it
    EffectSetParameter setParameter = nullptr;
    EffectGetParameter getParameter = nullptr;
    std::int32_t numPrograms = 0;
    std::int32_t numParams = 0;
    std::int32_t numInputs = 0;
    std::int32_t numOutputs = 0;
    std::int32_t flags = 0;
    std::intptr_t resvd1 = 0;
    std::intptr_t resvd2 = 0;
    std::int32_t initialDelay = 0;
    std::int32_t realQualities = 0;
    std::int32_t offQualities = 0;
    float ioRatio = 1;
    void* object = nullptr; // the effect's own
    void* user = nullptr;
    std::int32_t uniqueID = 0;
    std::int32_t version = 0;
    EffectProcess processReplacing = nullptr;
    EffectProcessDouble processDoubleReplacing = nullptr;
    char future[56] = {};
};
static_assert(offsetof(AEffect, dispatcher) == sizeof(void*));
static_assert(offsetof(AEffect, numPrograms) == 5 * sizeof(void*));
static_assert(offsetof(AEffect, resvd1) == (sizeof(void*) == 8 ? 64 : 40));
static_assert(sizeof(AEffect) == (sizeof(void*) == 8 ? 192 : 144));

// The host's calls.
enum EffectOpcode : std::int32_t {
    kEffOpen = 0,
    kEffClose = 1,
    kEffSetProgram = 2,
    kEffGetProgram = 3,
    kEffSetProgramName = 4,
    kEffGetProgramName = 5,
    kEffGetParamLabel = 6,
    kEffGetParamDisplay = 7,
    kEffGetParamName = 8,
    kEffSetSampleRate = 10,
    kEffSetBlockSize = 11,
    kEffMainsChanged = 12,
    kEffEditGetRect = 13,
    kEffEditOpen = 14,
    kEffEditClose = 15,
    kEffEditIdle = 19,
    kEffEditTop = 20,
    kEffIdentify = 22,
    kEffGetChunk = 23,
    kEffSetChunk = 24,
    kEffProcessEvents = 25,
    kEffCanBeAutomated = 26,
    kEffString2Parameter = 27,
    kEffGetProgramNameIndexed = 29,
    kEffGetInputProperties = 33,
    kEffGetOutputProperties = 34,
    kEffGetPlugCategory = 35,
    kEffSetSpeakerArrangement = 42,
    kEffSetBlockSizeAndSampleRate = 43,
    kEffSetBypass = 44,
    kEffGetEffectName = 45,
    kEffGetVendorString = 47,
    kEffGetProductString = 48,
    kEffGetVendorVersion = 49,
    kEffCanDo = 51,
    kEffGetTailSize = 52,
    kEffIdle = 53,
    kEffGetParameterProperties = 56,
    kEffKeysRequired = 57,
    kEffGetVstVersion = 58,
    kEffEditKeyDown = 59,
    kEffEditKeyUp = 60,
    kEffSetEditKnobMode = 61,
    kEffBeginSetProgram = 67,
    kEffEndSetProgram = 68,
    kEffGetSpeakerArrangement = 69,
    kEffStartProcess = 71,
    kEffStopProcess = 72,
    kEffSetProcessPrecision = 77,
    kEffGetNumMidiInputChannels = 78,
    kEffGetNumMidiOutputChannels = 79,
};
inline constexpr std::int32_t kIdentity = FourCharacterCode("NvEf"); // the answer to kEffIdentify

// The plug-in's calls.
enum MasterOpcode : std::int32_t {
    kMasterAutomate = 0,
    kMasterVersion = 1,
    kMasterWantMidi = 6,
    kMasterGetTime = 7,
    kMasterProcessEvents = 8,
    kMasterIOChanged = 13,
    kMasterGetOutputLatency = 19,
    kMasterGetCurrentProcessLevel = 23,
};

inline constexpr std::int32_t kPlugCategSynth = 2;

// The editor's rectangle, in pixels.
struct ERect {
    std::int16_t top = 0;
    std::int16_t left = 0;
    std::int16_t bottom = 0;
    std::int16_t right = 0;
};
static_assert(sizeof(ERect) == 8);

// One output, as a host's mixer shows it.
struct VstPinProperties {
    static constexpr std::int32_t kActive = 1;
    static constexpr std::int32_t kStereo = 2; // the first or second of a pair

    char label[64] = {};
    std::int32_t flags = 0;
    std::int32_t arrangementType = 0;
    char shortLabel[8] = {};
    char future[48] = {};
};
static_assert(sizeof(VstPinProperties) == 128 && offsetof(VstPinProperties, flags) == 64);

// Room that hosts give for texts, the closing zero included. Hosts give more for parameters' texts than the
// eight bytes of the interface's letter, which no name of ours would fit in.
inline constexpr std::size_t kParameterTextRoom = 32;
inline constexpr std::size_t kProgramNameRoom = 24;
inline constexpr std::size_t kEffectNameRoom = 32;
inline constexpr std::size_t kVendorTextRoom = 64;

} // namespace sonorelle
