#include "app/voice_preset.h"

#include "synthesis/voice_bank.h"

#include <algorithm>
#include <cstddef>

namespace sonorelle {

namespace {

// Where a voice of the choir stands: the lead a little left of the middle, two voices far out on either side,
// one near the lead; the three behind it softer and, like singers who listen, late.
struct ChoirPlace {
    float vol;
    float pan;
    float timing; // s
};

// clang-format off
constexpr std::array<ChoirPlace, kPresetVoices> kChoirPlaces = {{
    //  vol    pan    timing
    {   1.0F, -0.1F,  0      }, // orange, the lead
    {   0.5F, -0.9F,  0.036F }, // red
    {   0.5F,  0.9F,  0.032F }, // blue
    {   0.5F,  0.1F,  0.042F }, // green
}};
// clang-format on

} // namespace

std::array<VoicePreset, kPresetCount> FactoryPresets() {
    std::array<VoicePreset, kPresetCount> presets;
    presets[kDefaultPreset].name = "default";
    presets[kFlatPreset].name = "flat";
    for (std::size_t voice = 0; voice < kChoirPlaces.size(); ++voice) {
        VoiceSettings& settings = presets[kDefaultPreset].voices[voice];
        settings.vol = kChoirPlaces[voice].vol;
        settings.pan = kChoirPlaces[voice].pan;
        settings.timing = kChoirPlaces[voice].timing;
    }
    return presets;
}

std::array<bool, kPresetVoices> AudibleVoices(const VoiceSettingsOfAll& voices) {
    const bool anySolo =
        std::any_of(voices.begin(), voices.end(), [](const auto& voice) { return voice.solo; });
    std::array<bool, kPresetVoices> audible{};
    std::transform(voices.begin(), voices.end(), audible.begin(),
                   [&](const auto& voice) { return anySolo ? voice.solo : !voice.mute; });
    return audible;
}

void SendVoiceSettings(CVoiceBank& bank, std::int32_t voice, const VoiceSettings& settings) {
    bank.SetDelay(voice, settings.delay);
    bank.SetTiming(voice, settings.timing);
    bank.SetFormantShift(voice, settings.formantShift);
    bank.SetQuantize(voice, settings.quantize);
    bank.SetDrift(voice, settings.drift);
    bank.SetGlide(voice, settings.glide);
}

} // namespace sonorelle
