#include "app/state_document.h"

namespace sonorelle {

SavedVoice SavedVoiceFrom(const VoiceSettings& settings) {
    SavedVoice saved;
    saved.vol = settings.vol;
    saved.pan = settings.pan;
    saved.quantize = settings.quantize;
    saved.delay = settings.delay;
    saved.formantShift = settings.formantShift;
    saved.drift = settings.drift;
    saved.glide = settings.glide;
    saved.timing = settings.timing;
    saved.mute = settings.mute;
    saved.solo = settings.solo;
    return saved;
}

void Restore(const SavedVoice& saved, VoiceSettings& settings) {
    settings.vol = saved.vol.value_or(settings.vol);
    settings.pan = saved.pan.value_or(settings.pan);
    settings.quantize = saved.quantize.value_or(settings.quantize);
    settings.delay = saved.delay.value_or(settings.delay);
    settings.formantShift = saved.formantShift.value_or(settings.formantShift);
    settings.drift = saved.drift.value_or(settings.drift);
    settings.glide = saved.glide.value_or(settings.glide);
    settings.timing = saved.timing.value_or(settings.timing);
    settings.mute = saved.mute.value_or(settings.mute);
    settings.solo = saved.solo.value_or(settings.solo);
}

std::string_view DocumentText(const void* data, std::int64_t size) {
    if (data == nullptr || size < 1) return {};
    return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
}

} // namespace sonorelle
