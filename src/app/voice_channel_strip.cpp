#include "app/voice_channel_strip.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {

namespace {

bool IsFoldingSection(VoiceSection section) {
    return section == VoiceSection::kPerformance || section == VoiceSection::kFineTuning;
}

} // namespace

CkvoVoiceChannelStrip::CkvoVoiceChannelStrip() {
    SetSettings({});
    gainsInForce.store(false, std::memory_order_relaxed); // nothing has been changed yet
}

float CkvoVoiceChannelStrip::Get(VoiceControl control) const {
    if (control == VoiceControl::kVolume) return dial.GetVol();
    if (control == VoiceControl::kPan) return dial.GetPan();
    if (!IsVoiceSlider(control)) return 0;
    return values[static_cast<std::size_t>(control)].load(std::memory_order_relaxed);
}

float CkvoVoiceChannelStrip::GetPanelValue(VoiceControl control) const {
    return PanelFromStored(control, Get(control));
}

void CkvoVoiceChannelStrip::Set(VoiceControl control, float stored) {
    if (!IsVoiceSlider(control) || !std::isfinite(stored)) return;
    const StoredRange range = GetStoredRange(control);
    const float held = std::clamp(stored, range.least, range.most);
    if (control == VoiceControl::kVolume) {
        dial.SetVol(held);
        RefreshGain();
    } else if (control == VoiceControl::kPan) {
        dial.SetPan(held);
        RefreshGain();
    } else {
        values[static_cast<std::size_t>(control)].store(held, std::memory_order_relaxed);
    }
}

VoiceSettings CkvoVoiceChannelStrip::GetSettings() const {
    VoiceSettings settings;
    for (const VoiceControlInfo& info : kVoiceControls) settings.*info.stored = Get(info.control);
    settings.mute = IsMuted();
    settings.solo = IsSoloed();
    return settings;
}

void CkvoVoiceChannelStrip::SetSettings(const VoiceSettings& settings) {
    for (const VoiceControlInfo& info : kVoiceControls) Set(info.control, settings.*info.stored);
    SetMute(settings.mute);
    SetSolo(settings.solo);
}

StripGain CkvoVoiceChannelStrip::GetGain() const {
    if (!gainsInForce.load(std::memory_order_relaxed)) return {};
    return StripGainFromVolAndPan(dial.GetVol(), dial.GetPan());
}

bool CkvoVoiceChannelStrip::IsSectionOpen(VoiceSection section) const {
    return IsFoldingSection(section) && openSections[static_cast<std::size_t>(section)];
}

void CkvoVoiceChannelStrip::OpenSection(VoiceSection section, bool open) {
    if (IsFoldingSection(section)) openSections[static_cast<std::size_t>(section)] = open;
}

const char* CkvoVoiceChannelStrip::GetSectionLabel(VoiceSection section) const {
    if (!IsFoldingSection(section) || IsSectionOpen(section)) return "";
    return kVoiceSectionLabels[static_cast<std::size_t>(section)];
}

} // namespace sonorelle
