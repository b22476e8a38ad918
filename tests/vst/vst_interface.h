// The binary interface between a host and a plug-in, as this test host knows it: declared on its own, so that
// a slip in the plug-in's declarations shows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sonorelle::test {

struct HostedEffect;

using HostCallback = std::intptr_t (*)(HostedEffect*, std::int32_t opcode, std::int32_t index,
                                       std::intptr_t value, void* pointer, float option);
using VstEntry = HostedEffect* (*)(HostCallback);

// The effect record; plain, as it lies in the plug-in's memory.
struct HostedEffect {
    std::int32_t magic;
    std::intptr_t (*dispatcher)(HostedEffect*, std::int32_t, std::int32_t, std::intptr_t, void*, float);
    void (*process)(HostedEffect*, float**, float**, std::int32_t);
    void (*setParameter)(HostedEffect*, std::int32_t, float);
    float (*getParameter)(HostedEffect*, std::int32_t);
    std::int32_t numPrograms;
    std::int32_t numParams;
    std::int32_t numInputs;
    std::int32_t numOutputs;
    std::int32_t flags;
    std::intptr_t resvd1;
    std::intptr_t resvd2;
    std::int32_t initialDelay;
    std::int32_t realQualities;
    std::int32_t offQualities;
    float ioRatio;
    void* object;
    void* user;
    std::int32_t uniqueID;
    std::int32_t version;
    void (*processReplacing)(HostedEffect*, float**, float**, std::int32_t);
    void (*processDoubleReplacing)(HostedEffect*, double**, double**, std::int32_t);
    unsigned char future[56];
};

struct HostTime {
    double samplePos;
    double sampleRate;
    double nanoSeconds;
    double ppqPos;
    double tempo;
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    std::int32_t timeSigNumerator;
    std::int32_t timeSigDenominator;
    std::int32_t smpteOffset;
    std::int32_t smpteFrameRate;
    std::int32_t samplesToNextClock;
    std::int32_t flags;
};

struct HostMidiEvent {
    std::int32_t type;
    std::int32_t byteSize;
    std::int32_t deltaFrames;
    std::int32_t flags;
    std::int32_t noteLength;
    std::int32_t noteOffset;
    unsigned char midiData[4];
    signed char detune;
    unsigned char noteOffVelocity;
    unsigned char reserved1;
    unsigned char reserved2;
};

// Followed by further pointers, numEvents in all.
struct HostEventList {
    std::int32_t numEvents;
    std::intptr_t reserved;
    HostMidiEvent* events[2];
};

struct HostPin {
    char label[64];
    std::int32_t flags;
    std::int32_t arrangementType;
    char shortLabel[8];
    char future[48];
};

struct HostRectangle {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

// Host to plug-in.
enum class Call : std::int32_t {
    kOpen = 0,
    kClose = 1,
    kSetProgram = 2,
    kGetProgram = 3,
    kSetProgramName = 4,
    kGetProgramName = 5,
    kGetParamLabel = 6,
    kGetParamDisplay = 7,
    kGetParamName = 8,
    kSetSampleRate = 10,
    kSetBlockSize = 11,
    kMainsChanged = 12,
    kEditGetRect = 13,
    kEditOpen = 14,
    kEditClose = 15,
    kEditIdle = 19,
    kEditTop = 20,
    kIdentify = 22,
    kGetChunk = 23,
    kSetChunk = 24,
    kProcessEvents = 25,
    kCanBeAutomated = 26,
    kString2Parameter = 27,
    kGetProgramNameIndexed = 29,
    kGetInputProperties = 33,
    kGetOutputProperties = 34,
    kGetPlugCategory = 35,
    kSetSpeakerArrangement = 42,
    kSetBlockSizeAndSampleRate = 43,
    kSetBypass = 44,
    kGetEffectName = 45,
    kGetVendorString = 47,
    kGetProductString = 48,
    kGetVendorVersion = 49,
    kCanDo = 51,
    kGetTailSize = 52,
    kIdle = 53,
    kGetParameterProperties = 56,
    kKeysRequired = 57,
    kGetVstVersion = 58,
    kEditKeyDown = 59,
    kEditKeyUp = 60,
    kSetEditKnobMode = 61,
    kBeginSetProgram = 67,
    kEndSetProgram = 68,
    kGetSpeakerArrangement = 69,
    kStartProcess = 71,
    kStopProcess = 72,
    kSetProcessPrecision = 77,
    kGetNumMidiInputChannels = 78,
    kGetNumMidiOutputChannels = 79,
};

// Plug-in to host.
enum class Request : std::int32_t {
    kAutomate = 0,
    kVersion = 1,
    kWantMidi = 6,
    kGetTime = 7,
    kProcessEvents = 8,
    kIOChanged = 13,
    kGetOutputLatency = 19,
    kGetCurrentProcessLevel = 23,
};

inline constexpr std::int32_t kLevelUntold = 0; // Ardour's answer
inline constexpr std::int32_t kLevelRealtime = 2;
inline constexpr std::int32_t kLevelOffline = 4;

inline constexpr std::int32_t kTimeChanged = 1;
inline constexpr std::int32_t kTimePlaying = 2;
inline constexpr std::int32_t kTimeTempoValid = 1024;
inline constexpr std::int32_t kTimeMetreValid = 8192;

} // namespace sonorelle::test
