#include "host/vst_effect.h"

#include "host/vst_editor_base.h"
#include "platform/saturate.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <thread>
#include <utility>

namespace sonorelle {

namespace {

AudioEffect* EffectOf(AEffect* record) {
    return record != nullptr ? static_cast<AudioEffect*>(record->object) : nullptr;
}

std::string TextOf(const void* pointer) {
    return pointer != nullptr ? std::string(static_cast<const char*>(pointer)) : std::string();
}

std::int32_t SizeOf(std::intptr_t value) {
    constexpr std::intptr_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp<std::intptr_t>(value, -1, kMost));
}

} // namespace

void CopyText(const std::string& text, void* out, std::size_t room) {
    if (out == nullptr || room == 0) return;
    std::size_t length = std::min(text.size(), room - 1);
    const auto continues = [&](std::size_t i) {
        constexpr unsigned kLeadBits = 0xC0;
        constexpr unsigned kContinuation = 0x80;
        return i < text.size() && (static_cast<unsigned char>(text[i]) & kLeadBits) == kContinuation;
    };
    while (length > 0 && continues(length)) --length;
    std::memcpy(out, text.data(), length);
    static_cast<char*>(out)[length] = '\0';
}

// A call of the host, for as long as it lasts.
class AudioEffect::CallScope {
public:
    explicit CallScope(AudioEffect& calledEffect) : effect(calledEffect) {
        effect.callsUnderWay.fetch_add(1, std::memory_order_relaxed);
    }
    // The effect may be gone directly behind this.
    ~CallScope() { effect.callsUnderWay.fetch_sub(1, std::memory_order_release); }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    AudioEffect& effect;
};

AudioEffect::AudioEffect(AudioMasterCallback hostCallback, std::int32_t programs, std::int32_t parameters)
    : callback(hostCallback) {
    record.dispatcher = &Dispatch;
    record.process = &Process;
    record.setParameter = &SetParameter;
    record.getParameter = &GetParameter;
    record.processReplacing = &ProcessReplacing;
    record.numPrograms = programs;
    record.numParams = parameters;
    record.numInputs = 1;
    record.numOutputs = 2;
    record.version = 1;
    record.object = this;
}

AudioEffect::~AudioEffect() { record.object = nullptr; }

void AudioEffect::SetEditor(std::unique_ptr<AEffEditor> effectEditor) {
    editor = std::move(effectEditor);
    record.flags |= editor != nullptr ? kEffFlagsHasEditor : 0;
}

std::intptr_t AudioEffect::CallHost(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                    void* pointer, float option) const {
    return callback != nullptr ? callback(&record, opcode, index, value, pointer, option) : 0;
}

void AudioEffect::process(float** inputs, float** outputs, std::int32_t frames) {
    processReplacing(inputs, outputs, frames);
}

std::intptr_t AudioEffect::Dispatch(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                    std::intptr_t value, void* pointer, float option) noexcept try {
    AudioEffect* const self = EffectOf(effect);
    if (self == nullptr) return 0;
    if (opcode == kEffClose) {
        self->AwaitCalls();
        delete self;
        return 1;
    }
    const CallScope scope(*self);
    return self->dispatch(opcode, index, value, pointer, option);
} catch (...) {
    return 0;
}

void AudioEffect::Process(AEffect* effect, float** inputs, float** outputs, std::int32_t frames) noexcept
    try {
    if (AudioEffect* const self = EffectOf(effect)) {
        const CallScope scope(*self);
        self->process(inputs, outputs, frames);
    }
} catch (...) {
}

void AudioEffect::ProcessReplacing(AEffect* effect, float** inputs, float** outputs,
                                   std::int32_t frames) noexcept try {
    if (AudioEffect* const self = EffectOf(effect)) {
        const CallScope scope(*self);
        self->processReplacing(inputs, outputs, frames);
    }
} catch (...) {
}

void AudioEffect::SetParameter(AEffect* effect, std::int32_t index, float value) noexcept try {
    if (AudioEffect* const self = EffectOf(effect)) {
        const CallScope scope(*self);
        self->setParameter(index, value);
    }
} catch (...) {
}

float AudioEffect::GetParameter(AEffect* effect, std::int32_t index) noexcept try {
    AudioEffect* const self = EffectOf(effect);
    if (self == nullptr) return 0;
    const CallScope scope(*self);
    return self->getParameter(index);
} catch (...) {
    return 0;
}

// A host that closes from within a call of its own must not wait for itself for good.
void AudioEffect::AwaitCalls() {
    constexpr std::chrono::seconds kLongestWait{3};
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (callsUnderWay.load(std::memory_order_acquire) > 0 && std::chrono::steady_clock::now() < end) {
        abandon();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::intptr_t AudioEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                    void* pointer, float option) {
    switch (opcode) {
    case kEffSetProgram:
        if (value >= 0 && value < record.numPrograms) setProgram(static_cast<std::int32_t>(value));
        return 0;
    case kEffGetProgram:
        return getProgram();
    case kEffSetProgramName:
        if (pointer != nullptr) setProgramName(TextOf(pointer));
        return 0;
    case kEffSetSampleRate:
        setSampleRate(option);
        return 0;
    case kEffSetBlockSize:
        setBlockSize(SizeOf(value));
        return 0;
    case kEffMainsChanged:
        value != 0 ? resume() : suspend();
        return 0;
    case kEffIdentify:
        return kIdentity;
    case kEffGetChunk: {
        if (pointer == nullptr) return 0;
        const void* data = nullptr;
        const std::int32_t size = getChunk(data, index != 0);
        *static_cast<const void**>(pointer) = data;
        return size;
    }
    case kEffSetChunk:
        return pointer != nullptr ? setChunk(pointer, SizeOf(value), index != 0) : 0;
    case kEffEditGetRect:
    case kEffEditOpen:
    case kEffEditClose:
    case kEffEditIdle:
        return dispatchEditor(opcode, pointer);
    default:
        return dispatchText(opcode, index, pointer);
    }
}

std::intptr_t AudioEffect::dispatchEditor(std::int32_t opcode, void* pointer) {
    if (editor == nullptr) return 0;
    switch (opcode) {
    case kEffEditGetRect: {
        if (pointer == nullptr) return 0;
        ERect* rect = nullptr;
        const bool known = editor->getRect(rect);
        *static_cast<ERect**>(pointer) = rect;
        return known ? 1 : 0;
    }
    case kEffEditOpen:
        return editor->open(pointer) ? 1 : 0;
    case kEffEditClose:
        editor->close();
        return 0;
    default:
        editor->idle();
        return 0;
    }
}

std::intptr_t AudioEffect::dispatchText(std::int32_t opcode, std::int32_t index, void* pointer) {
    switch (opcode) {
    case kEffGetProgramName:
        CopyText(getProgramName(), pointer, kProgramNameRoom);
        break;
    case kEffGetParamLabel:
        CopyText(getParameterLabel(index), pointer, kParameterTextRoom);
        break;
    case kEffGetParamDisplay:
        CopyText(getParameterDisplay(index), pointer, kParameterTextRoom);
        break;
    case kEffGetParamName:
        CopyText(getParameterName(index), pointer, kParameterTextRoom);
        break;
    default:
        break;
    }
    return 0;
}

void AudioEffectX::setBlockSizeAndSampleRate(std::int32_t frames, float rate) {
    setBlockSize(frames);
    setSampleRate(rate);
}

void AudioEffectX::wantEvents() { CallHost(kMasterWantMidi, 0, 1, nullptr, 0); }
void AudioEffectX::ioChanged() { CallHost(kMasterIOChanged, 0, 0, nullptr, 0); }

std::intptr_t AudioEffectX::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                     void* pointer, float option) {
    switch (opcode) {
    case kEffProcessEvents:
        return processEvents(static_cast<const VstEvents*>(pointer));
    case kEffCanBeAutomated:
        return canParameterBeAutomated(index) ? 1 : 0;
    case kEffGetProgramNameIndexed: {
        std::string text;
        const bool known = getProgramNameIndexed(SizeOf(value), index, text);
        if (known) CopyText(text, pointer, kProgramNameRoom);
        return known ? 1 : 0;
    }
    case kEffGetInputProperties:
    case kEffGetOutputProperties: {
        if (pointer == nullptr) return 0;
        auto& properties = *static_cast<VstPinProperties*>(pointer);
        const bool known = opcode == kEffGetInputProperties ? getInputProperties(index, properties)
                                                            : getOutputProperties(index, properties);
        return known ? 1 : 0;
    }
    case kEffSetBlockSizeAndSampleRate:
        setBlockSizeAndSampleRate(SizeOf(value), option);
        return 1;
    case kEffCanDo:
        return canDo(TextOf(pointer)) ? 1 : 0;
    case kEffGetVendorVersion:
        return getVendorVersion();
    case kEffGetPlugCategory:
        return getPlugCategory();
    case kEffGetVstVersion:
        return getVstVersion();
    case kEffGetEffectName:
    case kEffGetVendorString:
    case kEffGetProductString:
        return dispatchIdentity(opcode, pointer);
    default:
        return AudioEffect::dispatch(opcode, index, value, pointer, option);
    }
}

std::intptr_t AudioEffectX::dispatchIdentity(std::int32_t opcode, void* pointer) {
    if (opcode == kEffGetEffectName) {
        CopyText(getEffectName(), pointer, kEffectNameRoom);
    } else {
        CopyText(opcode == kEffGetVendorString ? getVendorString() : getProductString(), pointer,
                 kVendorTextRoom);
    }
    return 1;
}

} // namespace sonorelle
