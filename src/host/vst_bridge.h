// The plug-in as a VST 2 host sees it: each call of the host goes to one CvirelainePlugIn, and what that asks
// of its host goes back through the host's callback. There is no logic here but what the interface itself
// demands.
//
//     CsonorelleVST* effect = new CsonorelleVST(audioMaster, std::make_unique<CkvoToolkit>(), nullptr);
//     return effect->GetAEffect();   // deleted by the host's closing call
//
// Threads: as in vst_effect.h; all locking is the core's.

#pragma once

#include "host/host_operations.h"
#include "host/library_pin.h"
#include "host/vst_effect.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace sonorelle {

class CkvoEditorWindow;
class CkvoToolkit;
class CvirelainePlugIn;

// Makes the editor's window, when a host first opens it. Null: this plug-in has none.
using EditorWindowFactory = std::function<std::unique_ptr<CkvoEditorWindow>(CvirelainePlugIn&, CkvoToolkit&)>;

class CsonorelleVST final : public AudioEffectX, private CkvoHost {
public:
    static constexpr std::int32_t kPrograms = 2;
    static constexpr std::int32_t kParameters = 32;
    static constexpr std::int32_t kOutputs = 10;
    static constexpr std::int32_t kUniqueId = FourCharacterCode("vlqn");

    // Throws std::bad_alloc.
    CsonorelleVST(AudioMasterCallback hostCallback, std::unique_ptr<CkvoToolkit> effectToolkit,
                  EditorWindowFactory makeWindow);
    ~CsonorelleVST() override;

    void abandon() override;
    void suspend() override;
    void resume() override;
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;
    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void setProgram(std::int32_t program) override;
    std::int32_t getProgram() override;
    void setProgramName(const std::string& name) override;
    std::string getProgramName() override;
    std::string getParameterLabel(std::int32_t index) override;
    std::string getParameterDisplay(std::int32_t index) override;
    std::string getParameterName(std::int32_t index) override;
    std::int32_t getChunk(const void*& data, bool isPreset) override;
    std::int32_t setChunk(const void* data, std::int32_t size, bool isPreset) override;
    bool getProgramNameIndexed(std::int32_t category, std::int32_t index, std::string& text) override;
    bool getOutputProperties(std::int32_t index, VstPinProperties& properties) override;
    std::int32_t processEvents(const VstEvents* events) override;
    std::string getEffectName() override;
    std::string getVendorString() override;
    std::string getProductString() override;
    std::int32_t getVendorVersion() override;
    std::int32_t getPlugCategory() override;
    bool canDo(const std::string& text) override;

    CvirelainePlugIn& Core() { return *core; }

private:
    // What the core asks of its host.
    const VstTimeInfo* GetTimeInfo(std::int32_t filter) override;
    std::int32_t GetCurrentProcessLevel() override;
    float GetSampleRate() override { return getSampleRate(); }
    std::int32_t GetOutputLatency() override;
    void SetParameterAutomated(std::int32_t index, float value) override;
    void SendVstEventsToHost(VstEvents* events) override;

    CLibraryPin pin;
    std::unique_ptr<CkvoToolkit> toolkit;
    std::unique_ptr<CvirelainePlugIn> core;
    std::atomic<std::int32_t> programOfCore{0}; // as it was last seen
};

} // namespace sonorelle
