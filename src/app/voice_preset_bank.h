// The presets of a session, one for each program of the host.
//
// Any thread: hosts ask for program names from wherever they are. A lock of its own is held for the copy of
// one preset; nothing on the audio path asks for it. Copies allocate where a name does.

#pragma once

#include "app/voice_preset.h"
#include "platform/critical_section.h"

#include <array>
#include <cstdint>
#include <string>

namespace sonorelle {

class CVoicePresetBank {
public:
    CVoicePresetBank() : presets(FactoryPresets()) {}

    std::int32_t GetCount() const { return kPresetCount; }
    bool IsPreset(std::int32_t index) const { return index >= 0 && index < GetCount(); }

    // A bad index gives an empty name, settings as of a new voice, or changes nothing.
    std::string GetName(std::int32_t index) const;
    void SetName(std::int32_t index, const std::string& name);
    VoiceSettingsOfAll GetVoices(std::int32_t index) const;
    void SetVoices(std::int32_t index, const VoiceSettingsOfAll& voices);

private:
    mutable CCriticalSection lock;
    std::array<VoicePreset, kPresetCount> presets;
};

} // namespace sonorelle
