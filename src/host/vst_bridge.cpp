#include "host/vst_bridge.h"

#include "app/toolkit.h"
#include "host/plugin_core.h"
#include "host/vst_editor.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace sonorelle {

namespace {

constexpr std::int32_t kOutputsOfPair = 2;
constexpr std::array<const char*, CsonorelleVST::kOutputs / kOutputsOfPair> kPairLabels = {
    "Mix", "orange voice", "red voice", "blue voice", "green voice"};

constexpr std::array<std::string_view, 5> kAbilities = {
    "receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo", "sendVstMidiEvent", "sendVstEvents"};

} // namespace

CsonorelleVST::CsonorelleVST(AudioMasterCallback hostCallback, std::unique_ptr<CkvoToolkit> effectToolkit,
                             EditorWindowFactory makeWindow)
    : AudioEffectX(hostCallback, kPrograms, kParameters), toolkit(std::move(effectToolkit)),
      core(std::make_unique<CvirelainePlugIn>(static_cast<CkvoHost*>(this), *toolkit)) {
    if (makeWindow) SetEditor(std::make_unique<CsonorelleVSTEditor>(*core, *toolkit, std::move(makeWindow)));
    record.numInputs = 0;
    record.numOutputs = kOutputs;
    ioChanged();
    record.uniqueID = kUniqueId;
    record.flags |= kEffFlagsCanReplacing | kEffFlagsProgramChunks | kEffFlagsIsSynth;
    core->Suspend();
}

// The window goes before what it shows.
CsonorelleVST::~CsonorelleVST() {
    SetEditor(nullptr);
    core.reset();
}

void CsonorelleVST::abandon() {
    toolkit->Abandon();
    core->CancelLoad();
}
void CsonorelleVST::suspend() { core->Suspend(); }

void CsonorelleVST::resume() {
    core->Resume();
    wantEvents();
}

void CsonorelleVST::processReplacing(float** inputs, float** outputs, std::int32_t frames) {
    core->Process(inputs, outputs, frames);
}

void CsonorelleVST::setParameter(std::int32_t index, float value) { core->SetParameter(index, value); }
float CsonorelleVST::getParameter(std::int32_t index) { return core->GetParameter(index); }

void CsonorelleVST::setProgram(std::int32_t program) {
    AudioEffectX::setProgram(program);
    core->SetProgram(program);
    programOfCore.store(core->GetProgram(), std::memory_order_relaxed);
}

// A session may bring its own, also when it is restored later: its recording had to be asked for.
std::int32_t CsonorelleVST::getProgram() {
    const std::int32_t now = core->GetProgram();
    if (programOfCore.exchange(now, std::memory_order_relaxed) != now) AudioEffectX::setProgram(now);
    return AudioEffectX::getProgram();
}

void CsonorelleVST::setProgramName(const std::string& name) { core->SetProgramName(name); }

std::string CsonorelleVST::getProgramName() {
    std::string text;
    core->GetProgramName(text);
    return text;
}

std::string CsonorelleVST::getParameterLabel(std::int32_t index) {
    std::string text;
    core->GetParameterLabel(index, text);
    return text;
}

std::string CsonorelleVST::getParameterDisplay(std::int32_t index) {
    std::string text;
    core->GetParameterDisplay(index, text);
    return text;
}

std::string CsonorelleVST::getParameterName(std::int32_t index) {
    std::string text;
    core->GetParameterName(index, text);
    return text;
}

std::int32_t CsonorelleVST::getChunk(const void*& data, bool isPreset) {
    return core->GetChunk(data, isPreset);
}

std::int32_t CsonorelleVST::setChunk(const void* data, std::int32_t size, bool isPreset) {
    return core->SetChunk(data, size, isPreset);
}

bool CsonorelleVST::getProgramNameIndexed(std::int32_t category, std::int32_t index, std::string& text) {
    return core->GetProgramNameIndexed(category, index, text);
}

// Both sides of a pair bear the same name; hosts put their own left and right behind it.
bool CsonorelleVST::getOutputProperties(std::int32_t index, VstPinProperties& properties) {
    if (index < 0 || index >= kOutputs) return false;
    CopyText(kPairLabels[static_cast<std::size_t>(index / kOutputsOfPair)], properties.label,
             sizeof properties.label);
    properties.flags = VstPinProperties::kActive | VstPinProperties::kStereo;
    return true;
}

std::int32_t CsonorelleVST::processEvents(const VstEvents* events) { return core->ProcessEvents(events); }

std::string CsonorelleVST::getEffectName() {
    std::string text;
    core->GetEffectName(text);
    return text;
}

std::string CsonorelleVST::getVendorString() {
    std::string text;
    core->GetVendorString(text);
    return text;
}

std::string CsonorelleVST::getProductString() {
    std::string text;
    core->GetProductString(text);
    return text;
}

std::int32_t CsonorelleVST::getVendorVersion() { return core->GetVendorVersion(); }
std::int32_t CsonorelleVST::getPlugCategory() { return core->GetPlugCategory(); }

bool CsonorelleVST::canDo(const std::string& text) {
    return std::find(kAbilities.begin(), kAbilities.end(), text) != kAbilities.end();
}

const VstTimeInfo* CsonorelleVST::GetTimeInfo(std::int32_t filter) {
    // The host's answer is an address as a number. NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<const VstTimeInfo*>(CallHost(kMasterGetTime, 0, filter, nullptr, 0));
}

std::int32_t CsonorelleVST::GetCurrentProcessLevel() {
    return static_cast<std::int32_t>(CallHost(kMasterGetCurrentProcessLevel, 0, 0, nullptr, 0));
}

std::int32_t CsonorelleVST::GetOutputLatency() {
    return static_cast<std::int32_t>(CallHost(kMasterGetOutputLatency, 0, 0, nullptr, 0));
}

void CsonorelleVST::SetParameterAutomated(std::int32_t index, float value) {
    CallHost(kMasterAutomate, index, 0, nullptr, value);
}

void CsonorelleVST::SendVstEventsToHost(VstEvents* events) {
    CallHost(kMasterProcessEvents, 0, 0, events, 0);
}

} // namespace sonorelle
