#include "app/voice_preset_bank.h"

namespace sonorelle {

std::string CVoicePresetBank::GetName(std::int32_t index) const {
    const SpinGuard guard(lock);
    return IsPreset(index) ? presets[static_cast<std::size_t>(index)].name : std::string();
}

void CVoicePresetBank::SetName(std::int32_t index, const std::string& name) {
    const SpinGuard guard(lock);
    if (IsPreset(index)) presets[static_cast<std::size_t>(index)].name = name;
}

VoiceSettingsOfAll CVoicePresetBank::GetVoices(std::int32_t index) const {
    const SpinGuard guard(lock);
    return IsPreset(index) ? presets[static_cast<std::size_t>(index)].voices : VoiceSettingsOfAll();
}

void CVoicePresetBank::SetVoices(std::int32_t index, const VoiceSettingsOfAll& voices) {
    const SpinGuard guard(lock);
    if (IsPreset(index)) presets[static_cast<std::size_t>(index)].voices = voices;
}

} // namespace sonorelle
