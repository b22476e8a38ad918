#include "app/voice_settings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {

namespace {

constexpr std::int32_t kVoices = CkvovirelaineVoiceSettings::kVoices;

bool IsVoice(std::int32_t voice) { return voice >= 0 && voice < kVoices; }

std::size_t StripIndex(std::int32_t voice) { return IsVoice(voice) ? static_cast<std::size_t>(voice) : 0; }

// What keeps a voice out of the question who sounds.
VoiceSettings Silent() {
    VoiceSettings settings;
    settings.mute = true;
    return settings;
}

} // namespace

float CkvovirelaineVoiceSettings::Get(std::int32_t voice, VoiceControl control) const {
    if (!IsVoice(voice)) return VoiceSettings().*GetVoiceControl(control).stored;
    return GetStrip(voice).Get(control);
}

void CkvovirelaineVoiceSettings::Set(std::int32_t voice, VoiceControl control, float stored) {
    if (IsVoice(voice)) GetStrip(voice).Set(control, stored);
}

float CkvovirelaineVoiceSettings::GetVol(std::int32_t voice) const {
    return Get(voice, VoiceControl::kVolume);
}
float CkvovirelaineVoiceSettings::GetPan(std::int32_t voice) const { return Get(voice, VoiceControl::kPan); }
float CkvovirelaineVoiceSettings::GetDelay(std::int32_t voice) const {
    return Get(voice, VoiceControl::kDelay);
}
float CkvovirelaineVoiceSettings::GetTiming(std::int32_t voice) const {
    return Get(voice, VoiceControl::kTime);
}
float CkvovirelaineVoiceSettings::GetQuantize(std::int32_t voice) const {
    return Get(voice, VoiceControl::kTune);
}
float CkvovirelaineVoiceSettings::GetDrift(std::int32_t voice) const {
    return Get(voice, VoiceControl::kDrift);
}
float CkvovirelaineVoiceSettings::GetGlide(std::int32_t voice) const {
    return Get(voice, VoiceControl::kGlide);
}
float CkvovirelaineVoiceSettings::GetFormantShift(std::int32_t voice) const {
    return Get(voice, VoiceControl::kShape);
}

bool CkvovirelaineVoiceSettings::IsMuted(std::int32_t voice) const {
    return IsVoice(voice) && GetStrip(voice).IsMuted();
}

bool CkvovirelaineVoiceSettings::IsSoloed(std::int32_t voice) const {
    return IsVoice(voice) && GetStrip(voice).IsSoloed();
}

VoiceSettings CkvovirelaineVoiceSettings::GetSettings(std::int32_t voice) const {
    return IsVoice(voice) ? GetStrip(voice).GetSettings() : VoiceSettings();
}

void CkvovirelaineVoiceSettings::SetVol(std::int32_t voice, float vol) {
    Set(voice, VoiceControl::kVolume, vol);
}
void CkvovirelaineVoiceSettings::SetPan(std::int32_t voice, float pan) {
    Set(voice, VoiceControl::kPan, pan);
}
void CkvovirelaineVoiceSettings::SetDelay(std::int32_t voice, float seconds) {
    Set(voice, VoiceControl::kDelay, seconds);
}
void CkvovirelaineVoiceSettings::SetTiming(std::int32_t voice, float seconds) {
    Set(voice, VoiceControl::kTime, seconds);
}
void CkvovirelaineVoiceSettings::SetQuantize(std::int32_t voice, float amount) {
    Set(voice, VoiceControl::kTune, amount);
}
void CkvovirelaineVoiceSettings::SetDrift(std::int32_t voice, float amount) {
    Set(voice, VoiceControl::kDrift, amount);
}
void CkvovirelaineVoiceSettings::SetGlide(std::int32_t voice, float amount) {
    Set(voice, VoiceControl::kGlide, amount);
}
void CkvovirelaineVoiceSettings::SetFormantShift(std::int32_t voice, float ratio) {
    Set(voice, VoiceControl::kShape, ratio);
}

void CkvovirelaineVoiceSettings::SetMute(std::int32_t voice, bool on) {
    if (IsVoice(voice)) GetStrip(voice).SetMute(on);
}

void CkvovirelaineVoiceSettings::SetSolo(std::int32_t voice, bool on) {
    if (IsVoice(voice)) GetStrip(voice).SetSolo(on);
}

void CkvovirelaineVoiceSettings::SetSettings(std::int32_t voice, const VoiceSettings& settings) {
    if (IsVoice(voice)) GetStrip(voice).SetSettings(settings);
}

float CkvovirelaineVoiceSettings::GetPanelValue(std::int32_t voice, VoiceControl control) const {
    return IsVoice(voice) ? GetStrip(voice).GetPanelValue(control) : GetVoiceControl(control).preset;
}

float CkvovirelaineVoiceSettings::GetGain(std::int32_t voice, std::int32_t channel) const {
    const StripGain gain = GetStripGain(voice);
    if (channel == 0) return gain.left;
    return channel == 1 ? gain.right : 0;
}

StripGain CkvovirelaineVoiceSettings::GetStripGain(std::int32_t voice) const {
    return IsVoice(voice) ? GetStrip(voice).GetGain() : StripGain();
}

float CkvovirelaineVoiceSettings::GetMasterGain(std::int32_t channel) const {
    return channel == 0 || channel == 1 ? 1.0F : 0.0F;
}

void CkvovirelaineVoiceSettings::Refresh() {
    for (CkvoVoiceChannelStrip& strip : strips) strip.RefreshGain();
}

void CkvovirelaineVoiceSettings::SetVisibleVoices(std::int32_t count) {
    visibleVoices.store(std::clamp(count, 0, kVoices), std::memory_order_relaxed);
}

bool CkvovirelaineVoiceSettings::IsStripActive(std::int32_t voice) const {
    return IsVoice(voice) && voice < GetVisibleVoices();
}

std::array<bool, kVoices> CkvovirelaineVoiceSettings::GetAudibleVoices() const {
    VoiceSettingsOfAll voices;
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        voices[StripIndex(voice)] = IsStripActive(voice) ? GetSettings(voice) : Silent();
    return AudibleVoices(voices);
}

bool CkvovirelaineVoiceSettings::MoveControl(std::int32_t voice, VoiceControl control, float panelValue) {
    if (!IsStripActive(voice) || !IsVoiceSlider(control) || !std::isfinite(panelValue)) return false;
    const float before = Get(voice, control);
    Set(voice, control, StoredFromPanel(control, panelValue));
    if (Get(voice, control) == before) return false;
    Report(voice, control);
    return true;
}

bool CkvovirelaineVoiceSettings::DragDial(std::int32_t voice, std::int32_t x, std::int32_t y, DialSize size) {
    if (!IsStripActive(voice)) return false;
    const DialPlace place = DialPlaceAt(x, y, size);
    const bool volMoves = place.vol != GetVol(voice);
    const bool panMoves = place.pan != GetPan(voice);
    SetVol(voice, place.vol);
    SetPan(voice, place.pan);
    if (volMoves) Report(voice, VoiceControl::kVolume);
    if (panMoves) Report(voice, VoiceControl::kPan);
    return volMoves || panMoves;
}

bool CkvovirelaineVoiceSettings::ToggleMute(std::int32_t voice) {
    if (!IsStripActive(voice)) return false;
    SetMute(voice, !IsMuted(voice));
    ReportSwitch(voice);
    return true;
}

bool CkvovirelaineVoiceSettings::ToggleSolo(std::int32_t voice) {
    if (!IsStripActive(voice)) return false;
    SetSolo(voice, !IsSoloed(voice));
    ReportSwitch(voice);
    return true;
}

bool CkvovirelaineVoiceSettings::PressReset(std::int32_t voice) {
    if (!IsStripActive(voice)) return false;
    SetPan(voice, 0);
    SetVol(voice, 1);
    Report(voice, VoiceControl::kPan);
    Report(voice, VoiceControl::kVolume);
    return true;
}

// All switches stand right before anybody is told, so that no two voices sound on solo even for a moment.
void CkvovirelaineVoiceSettings::ReportSwitch(std::int32_t voice) {
    std::array<bool, kVoices> switchedOff{};
    for (std::int32_t other = 0; other < kVoices; ++other) {
        if (other == voice || !IsSoloed(voice) || !IsSoloed(other)) continue;
        switchedOff[StripIndex(other)] = true;
        SetSolo(other, false);
    }
    Report(voice, VoiceControl::kSwitch);
    for (std::int32_t other = 0; other < kVoices; ++other)
        if (switchedOff[StripIndex(other)]) Report(other, VoiceControl::kSwitch);
}

void CkvovirelaineVoiceSettings::Report(std::int32_t voice, VoiceControl control) {
    GetStrip(voice).SetChangedControl(control);
    lastStrip = voice;
    if (onChanged) onChanged(*this);
}

VoiceControl CkvovirelaineVoiceSettings::GetChangedControl(std::int32_t voice) const {
    return IsVoice(voice) ? GetStrip(voice).GetChangedControl() : VoiceControl::kNone;
}

bool CkvovirelaineVoiceSettings::IsSectionOpen(std::int32_t voice, VoiceSection section) const {
    return IsVoice(voice) && GetStrip(voice).IsSectionOpen(section);
}

void CkvovirelaineVoiceSettings::OpenSection(std::int32_t voice, VoiceSection section, bool open) {
    if (IsVoice(voice)) GetStrip(voice).OpenSection(section, open);
}

void CkvovirelaineVoiceSettings::CloseSections() {
    for (CkvoVoiceChannelStrip& strip : strips) {
        strip.OpenSection(VoiceSection::kPerformance, false);
        strip.OpenSection(VoiceSection::kFineTuning, false);
    }
}

void CkvovirelaineVoiceSettings::SetPeak(std::int32_t voice, float left, float right) {
    if (IsVoice(voice)) GetStrip(voice).Dial().SetPeak(left, right);
}

CkvoVoiceChannelStrip& CkvovirelaineVoiceSettings::GetStrip(std::int32_t voice) {
    return strips[StripIndex(voice)];
}

const CkvoVoiceChannelStrip& CkvovirelaineVoiceSettings::GetStrip(std::int32_t voice) const {
    return strips[StripIndex(voice)];
}

} // namespace sonorelle
