// An effect of a VST 2 host: the record that the host holds, and one virtual operation for each of its calls.
//
// AudioEffect has what every effect answers; AudioEffectX adds what came later to the interface. An effect
// overrides what it knows, and the rest answers as if there were nothing.
//
// Threads: the host's. Processing and events come on its audio thread, parameters on any, all else on its
// interface thread as a rule. Nothing here locks; the closing call waits for those that other threads have
// under way. No exception reaches the host: a call in which one is
// thrown answers 0.

#pragma once

#include "host/vst_effect_record.h"
#include "host/vst_records.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace sonorelle {

class AEffEditor;

// Writes `text` with a closing zero into `room` bytes, cut where a character of UTF-8 begins. Null is
// ignored.
void CopyText(const std::string& text, void* out, std::size_t room);

class AudioEffect {
public:
    AudioEffect(AudioMasterCallback hostCallback, std::int32_t programs, std::int32_t parameters);
    virtual ~AudioEffect(); // deletes the editor
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;

    AEffect* GetAEffect() { return &record; }

    // The host closes while another of its threads is still in here: what takes long is to end now.
    virtual void abandon() {}
    virtual void suspend() {}
    virtual void resume() {}
    virtual void process(float** inputs, float** outputs, std::int32_t frames); // forwards to the next
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames) = 0;
    virtual void setParameter(std::int32_t /*index*/, float /*value*/) {}
    virtual float getParameter(std::int32_t /*index*/) { return 0; }
    virtual void setProgram(std::int32_t program) { curProgram.store(program, std::memory_order_relaxed); }
    virtual std::int32_t getProgram() { return curProgram.load(std::memory_order_relaxed); }
    virtual void setProgramName(const std::string& /*name*/) {}
    virtual std::string getProgramName() { return {}; }
    virtual std::string getParameterLabel(std::int32_t /*index*/) { return {}; }
    virtual std::string getParameterDisplay(std::int32_t /*index*/) { return {}; }
    virtual std::string getParameterName(std::int32_t /*index*/) { return {}; }
    virtual std::int32_t getChunk(const void*& data, bool /*isPreset*/) {
        data = nullptr;
        return 0;
    }
    virtual std::int32_t setChunk(const void* /*data*/, std::int32_t /*size*/, bool /*isPreset*/) {
        return 0;
    }
    virtual void setSampleRate(float rate) { sampleRate.store(rate, std::memory_order_relaxed); }
    virtual void setBlockSize(std::int32_t frames) { blockSize.store(frames, std::memory_order_relaxed); }

    float getSampleRate() const { return sampleRate.load(std::memory_order_relaxed); } // Hz

    // Calls the host; 0 without one.
    std::intptr_t CallHost(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer,
                           float option) const;

protected:
    // One call of the host.
    virtual std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                   void* pointer, float option);
    void SetEditor(std::unique_ptr<AEffEditor> effectEditor);
    AEffEditor* GetEditor() const { return editor.get(); }

    mutable AEffect record;

private:
    class CallScope;
    static std::intptr_t Dispatch(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                  std::intptr_t value, void* pointer, float option) noexcept;
    static void Process(AEffect* effect, float** inputs, float** outputs, std::int32_t frames) noexcept;
    static void ProcessReplacing(AEffect* effect, float** inputs, float** outputs,
                                 std::int32_t frames) noexcept;
    static void SetParameter(AEffect* effect, std::int32_t index, float value) noexcept;
    static float GetParameter(AEffect* effect, std::int32_t index) noexcept;

    void AwaitCalls();
    std::intptr_t dispatchEditor(std::int32_t opcode, void* pointer);
    std::intptr_t dispatchText(std::int32_t opcode, std::int32_t index, void* pointer);

    AudioMasterCallback callback;
    std::atomic<std::int32_t> callsUnderWay{0};
    std::unique_ptr<AEffEditor> editor;
    std::atomic<float> sampleRate{44100};
    std::atomic<std::int32_t> blockSize{1024}; // told; every block brings its own length
    std::atomic<std::int32_t> curProgram{0};   // hosts set it from wherever they are
};

class AudioEffectX : public AudioEffect {
public:
    using AudioEffect::AudioEffect;

    virtual bool canDo(const std::string& /*text*/) { return false; }
    virtual std::int32_t processEvents(const VstEvents* /*events*/) { return 0; }
    virtual bool getProgramNameIndexed(std::int32_t /*category*/, std::int32_t /*index*/,
                                       std::string& /*text*/) {
        return false;
    }
    virtual bool getInputProperties(std::int32_t /*index*/, VstPinProperties& /*properties*/) {
        return false;
    }
    virtual bool getOutputProperties(std::int32_t /*index*/, VstPinProperties& /*properties*/) {
        return false;
    }
    virtual std::string getEffectName() { return {}; }
    virtual std::string getVendorString() { return {}; }
    virtual std::string getProductString() { return {}; }
    virtual std::int32_t getVendorVersion() { return 0; }
    virtual std::int32_t getPlugCategory() { return 0; }
    virtual std::int32_t getVstVersion() { return 2300; }
    virtual bool canParameterBeAutomated(std::int32_t /*index*/) { return true; }
    virtual void setBlockSizeAndSampleRate(std::int32_t frames, float rate);

    void wantEvents(); // tells the host that events are welcome
    void ioChanged();  // that the number of outputs has changed

protected:
    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer,
                           float option) override;

private:
    std::intptr_t dispatchIdentity(std::int32_t opcode, void* pointer);
};

} // namespace sonorelle
