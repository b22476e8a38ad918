// The strips as the host's parameters, and what a moved strip does.

#include "app/application.h"

#include <algorithm>

namespace sonorelle {

void CkvovirelaineApp::SetParameter(std::int32_t index, float value) {
    const std::optional<HostParameter> parameter = HostParameterAt(index);
    if (!parameter) return;
    const std::int32_t voice = parameter->voice;
    VoiceSettings settings = voicePanel.GetSettings(voice);
    const std::optional<float> model = ModelChangeFromHost(parameter->kind, settings, value);
    if (!model) return;
    switch (parameter->kind) {
    case HostParameterKind::kVolume:
        voicePanel.SetVol(voice, *model);
        break;
    case HostParameterKind::kPan:
        voicePanel.SetPan(voice, *model);
        break;
    case HostParameterKind::kDelay: {
        voicePanel.SetDelay(voice, *model);
        const SpinGuard guard(wiring.audioLock);
        bank.SetDelay(voice, voicePanel.GetDelay(voice));
        break;
    }
    case HostParameterKind::kTune:
        voicePanel.SetQuantize(voice, *model);
        bank.SetQuantize(voice, voicePanel.GetQuantize(voice));
        break;
    case HostParameterKind::kShape:
        voicePanel.SetFormantShift(voice, *model);
        bank.SetFormantShift(voice, voicePanel.GetFormantShift(voice));
        break;
    case HostParameterKind::kDrift:
        voicePanel.SetDrift(voice, *model);
        bank.SetDrift(voice, voicePanel.GetDrift(voice));
        break;
    case HostParameterKind::kGlide:
        // A quirk that stays: as automated, the glide follows the tune. Mended, automated projects would
        // sound different.
        voicePanel.SetGlide(voice, *model);
        bank.SetGlide(voice, voicePanel.GetQuantize(voice));
        break;
    case HostParameterKind::kTiming:
        voicePanel.SetTiming(voice, *model);
        bank.SetTiming(voice, voicePanel.GetTiming(voice));
        break;
    }
    wiring.toolkit.RequestRedraw();
}

float CkvovirelaineApp::GetParameter(std::int32_t index) const {
    const std::optional<HostParameter> parameter = HostParameterAt(index);
    return parameter ? GetHostValue(parameter->kind, voicePanel.GetSettings(parameter->voice)) : 0.0F;
}

std::string CkvovirelaineApp::GetParameterDisplay(std::int32_t index) const {
    const std::optional<HostParameter> parameter = HostParameterAt(index);
    if (!parameter) return {};
    return DisplayText(parameter->kind,
                       GetModelValue(parameter->kind, voicePanel.GetSettings(parameter->voice)));
}

void CkvovirelaineApp::OnVoiceSettingsChanged() {
    const std::int32_t voice = voicePanel.GetLastStrip();
    const VoiceControl control = voicePanel.GetChangedControl(voice);
    if (control == VoiceControl::kSwitch) {
        ShowAudibleVoices();
    } else if (HasAudio()) {
        PassControl(voice, control);
    }
    const std::int32_t index = HostParameterIndex(voice, control);
    if (index != kNoHostParameter && parameterChanged) parameterChanged(index);
    wiring.toolkit.RequestRedraw();
}

void CkvovirelaineApp::PassControl(std::int32_t voice, VoiceControl control) {
    const SpinGuard guard(wiring.audioLock);
    switch (control) {
    case VoiceControl::kDelay:
        bank.SetDelay(voice, voicePanel.GetDelay(voice));
        break;
    case VoiceControl::kShape:
        bank.SetFormantShift(voice, voicePanel.GetFormantShift(voice));
        break;
    case VoiceControl::kTune:
        bank.SetQuantize(voice, voicePanel.GetQuantize(voice));
        break;
    case VoiceControl::kDrift:
        bank.SetDrift(voice, voicePanel.GetDrift(voice));
        break;
    case VoiceControl::kGlide:
        bank.SetGlide(voice, voicePanel.GetGlide(voice));
        break;
    case VoiceControl::kTime:
        bank.SetTiming(voice, voicePanel.GetTiming(voice));
        break;
    default: // volume and pan: the mix reads them
        break;
    }
}

// Solo and mute decide which voices the view shows; the next block asks the view.
void CkvovirelaineApp::ShowAudibleVoices() {
    const auto audible = voicePanel.GetAudibleVoices();
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        view.SetVoiceEnabled(voice, audible[static_cast<std::size_t>(voice)]);
}

void CkvovirelaineApp::OnTuningChanged() {
    const SpinGuard guard(wiring.audioLock);
    bank.SetOutputTuning(tuningPanel.GetFrequency());
    wiring.toolkit.RequestRedraw();
}

} // namespace sonorelle
