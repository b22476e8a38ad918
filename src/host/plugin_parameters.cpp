// Programs, parameters and names: what hosts ask for from any thread.

#include "host/plugin_core.h"

#include "app/application.h"
#include "app/host_parameters.h"

#include <cmath>

namespace sonorelle {

namespace {

constexpr const char* kProductName = "sonorelle";
constexpr const char* kVendorName = "quillon.development";

} // namespace

// While a recording is being loaded only the index counts: the load ends by applying it.
void CvirelainePlugIn::SetProgram(std::int32_t index) {
    if (!presets.IsPreset(index)) return;
    const SpinGuard guard(fileLock);
    if (!application) return;
    currentProgram.store(index, std::memory_order_relaxed);
    if (isLoaded) application->ApplyPreset(index);
}

void CvirelainePlugIn::SetProgramName(const std::string& name) { presets.SetName(GetProgram(), name); }

void CvirelainePlugIn::GetProgramName(std::string& text) { text = presets.GetName(GetProgram()); }

// A number that is no program's names the current one.
bool CvirelainePlugIn::GetProgramNameIndexed(std::int32_t, std::int32_t index, std::string& text) {
    text = presets.GetName(presets.IsPreset(index) ? index : GetProgram());
    return true;
}

void CvirelainePlugIn::SetParameter(std::int32_t index, float value) {
    if (!std::isfinite(value)) return;
    const SpinGuard guard(fileLock);
    if (IsPlayable() && audioFile.IsOpen()) application->SetParameter(index, value);
}

float CvirelainePlugIn::GetParameter(std::int32_t index) {
    const SpinGuard guard(fileLock);
    return IsPlayable() ? application->GetParameter(index) : 0.0F;
}

void CvirelainePlugIn::GetParameterRange(std::int32_t index, float& least, float& most, bool& logarithmic) {
    const HostParameterRange range = GetHostParameterRange(index);
    least = range.least;
    most = range.most;
    logarithmic = range.logarithmic;
}

void CvirelainePlugIn::GetParameterLabel(std::int32_t index, std::string& text) {
    text = HostParameterUnit(index);
}

void CvirelainePlugIn::GetParameterDisplay(std::int32_t index, std::string& text) {
    const SpinGuard guard(fileLock);
    text = application ? application->GetParameterDisplay(index) : std::string();
}

void CvirelainePlugIn::GetParameterName(std::int32_t index, std::string& text) {
    text = HostParameterName(index);
}

void CvirelainePlugIn::GetParameterDisplayForValue(std::int32_t index, std::string& text, float value) {
    text = HostParameterDisplayForValue(index, value);
}

void CvirelainePlugIn::GetEffectName(std::string& text) { text = kProductName; }
void CvirelainePlugIn::GetVendorString(std::string& text) { text = kVendorName; }
void CvirelainePlugIn::GetProductString(std::string& text) { text = kProductName; }

void CvirelainePlugIn::SetBlockSizeAndSampleRate(std::int32_t blockSize, float sampleRate) {
    SetBlockSize(blockSize);
    if (!std::isfinite(sampleRate) || !(sampleRate > 0)) return;
    givenSampleRate.store(sampleRate, std::memory_order_relaxed);
    const SpinGuard guard(fileLock);
    if (IsPlayable()) application->SetSampleRate(sampleRate);
}

void CvirelainePlugIn::SetBlockSize(std::int32_t blockSize) {
    storedBlockSize.store(blockSize, std::memory_order_relaxed);
}

} // namespace sonorelle
