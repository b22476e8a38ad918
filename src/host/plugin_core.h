// The plug-in behind every way in: a host's bridge, the command line, the desktop program. It loads
// recordings and sessions, keeps what outlives them (presets, snapshot store, toolbar), and turns what a host
// calls into calls of the application, of which there is one for each recording.
//
//     CvirelainePlugIn plugIn(&host, toolkit);
//     if (plugIn.LoadAudioFile("song.wav") == kOk) {
//         plugIn.ProcessEvents(events);            // the audio thread, before each block that has some
//         plugIn.Process(nullptr, outputs, 512);   // ten outputs, block after block
//     }
//     const void* data = nullptr;
//     const std::int32_t size = plugIn.GetChunk(data, false);
//
// Without a recording there is an application as well, the start-up screen: it is silent and has no state.
//
// Locks, in the order in which one thread may hold them:
//   GuiLock    timers, idle work and toolbar against a change of the application; held by a load or a restore
//              from beginning to end. Recursive: events run meanwhile.
//   FileLock   IsLoaded, and the life of the application as the audio thread sees it. The audio thread holds
//   it
//              for a whole block, everybody else for moments.
//   AudioLock  the voices; the application's own business, innermost.
// Nobody waits for GuiLock with FileLock in hand, so that no block ever waits for a load. The audio thread
// never asks for GuiLock. A debug build asserts the order.
//
// Threads.
// - Audio: Process and ProcessEvents. From the first block on they allocate nothing and touch no file.
// - Any: all other host calls. Those which load or restore, GetChunk of a session, and DropFile wait for
//   GuiLock, that is for the event pass or the load of another thread.
// - Interface (where the toolkit says so): RunEventPass and the toolbar's operations. What another thread's
//   restore has to ask or to say waits for the next RunEventPass.
// - Construction and destruction: any one thread. Loads, saves and restores that other threads have begun end
//   first, as cancelled or with nothing; no other call is under way, and none begins. Not from within an
//   operation of the same plug-in.

#pragma once

#include "app/snapshot_store.h"
#include "app/voice_preset_bank.h"
#include "formats/audio_file.h"
#include "host/host_operations.h"
#include "host/outgoing_events.h"
#include "host/plugin_base.h"
#include "host/plugin_options.h"
#include "host/transport_tracker.h"
#include "host/user_state.h"
#include "platform/critical_section.h"
#include "synthesis/midi_event_container.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace sonorelle {

class CkvoToolkit;
class CkvovirelaineApp;

class CvirelainePlugIn final : public CkvoPlugInBase {
public:
    static constexpr std::int32_t kOutputs = 10; // the mix, then a pair for each voice
    static constexpr std::int32_t kVendorVersion = 1112;
    static constexpr std::int32_t kCategorySynth = 2;
    static constexpr std::int32_t kMostChannels = 2;  // of a recording
    static constexpr float kLowestSampleRate = 11025; // Hz, of a recording
    static constexpr float kStartTempo = 120;         // quarter notes per minute, until a host tells one
    static constexpr std::int32_t kMidiEventsPerBlock = COutgoingEvents::kMostEvents; // the others wait

    // `pluginHost` may be null. Both are borrowed and outlive this. Throws std::bad_alloc.
    CvirelainePlugIn(CkvoHost* pluginHost, CkvoToolkit& plugInToolkit,
                     const PlugInOptions& plugInOptions = {});
    ~CvirelainePlugIn() override;

    // --- The audio thread, plugin_audio.cpp ---

    // A block of `frames` samples into ten outputs; the list may end early with a null, and nothing is heard
    // without the first two. Without a recording those two are zeroed and the others left as they are.
    // `inputs` are ignored. Any number of frames; below 1 nothing is written.
    void Process(const float* const* inputs, float* const* outputs, std::int32_t frames) override;
    // The keys of the coming block. 1.
    std::int32_t ProcessEvents(const VstEvents* events) override;
    bool IsClipping() override;
    bool HasSeenNoteOn() const { return noteOnSeen.load(std::memory_order_relaxed); }
    float GetHostTempo() const {
        return hostTempo.load(std::memory_order_relaxed);
    } // quarter notes per minute

    // --- Programs and parameters, plugin_parameters.cpp ---

    void SetProgram(std::int32_t index) override;          // a bad index changes nothing
    void SetProgramName(const std::string& name) override; // of the current one
    void GetProgramName(std::string& text) override;
    bool GetProgramNameIndexed(std::int32_t category, std::int32_t index, std::string& text) override; // true
    CVoicePresetBank& Presets() { return presets; }

    // 0 to 31, values 0 to 1 (held); nothing, or 0, without a recording.
    void SetParameter(std::int32_t index, float value) override;
    float GetParameter(std::int32_t index) override;
    void GetParameterRange(std::int32_t index, float& least, float& most, bool& logarithmic) override;
    void GetParameterLabel(std::int32_t index, std::string& text) override;
    void GetParameterDisplay(std::int32_t index, std::string& text) override;
    void GetParameterName(std::int32_t index, std::string& text) override;
    void GetParameterDisplayForValue(std::int32_t index, std::string& text, float value) override;

    void GetEffectName(std::string& text) override;
    void GetVendorString(std::string& text) override;
    void GetProductString(std::string& text) override;
    std::int32_t GetVendorVersion() override { return kVendorVersion; }
    std::int32_t GetPlugCategory() override { return kCategorySynth; }
    void SetBlockSizeAndSampleRate(std::int32_t blockSize, float sampleRate) override;
    void SetBlockSize(std::int32_t blockSize) override;

    // --- Recordings, plugin_load.cpp ---

    // Replaces whatever is loaded. Blocks until the recording is analysed; the toolkit's events run
    // meanwhile. 0; kCannotOpen; kBadArgument: more than two channels; kSampleRateTooLow; kRunFailed:
    // cancelled. The user is told of all but the last, and an empty plug-in remains. kNothingThere, and
    // nothing happens, from within another load.
    std::int32_t LoadAudioFile(const std::string& path);
    void DropFile(const std::string& path) override; // loads it if it is a recording at all
    // What was dropped on the window: a path, or a session's document, of which the recording is loaded.
    // Anything else changes nothing, and so does a `mode` other than kDroppedText.
    void DropText(std::int32_t mode, const std::string& text);
    static constexpr std::int32_t kDroppedText = 0; // the others are a press and a release of the mouse
    // Unloads: back to the start-up screen.
    void CreateEmptyApplication();
    void CancelLoad(); // any thread: a load that is under way ends soon, as cancelled
    bool IsLoaded() const;
    std::string GetAudioPath() const; // of the last recording that was loaded, or tried

    // --- The host's document, plugin_state.cpp ---

    // A session (`isPreset` false) or the current program. Gives its size and memory that is good until the
    // next GetChunk; 0 and null without a recording. A session that could not be restored whole is handed out
    // as it came in, until the user has changed something or loaded another recording.
    std::int32_t GetChunk(const void*& data, bool isPreset) override;
    // 1 when the document was taken: all of it, or what fits. A session replaces whatever is loaded.
    std::int32_t SetChunk(const void* data, std::int32_t size, bool isPreset) override;

    // --- The interface, plugin_interface.cpp ---

    // What an editor's idle call does: pending questions, messages and rebuilding, then one pass of the
    // toolkit's events. False, with nothing done, on another thread than the interface's, from within itself,
    // and while another thread loads or restores.
    bool RunEventPass();
    // The 0.1 second timer.
    void PollApplication();
    // Shows it, or keeps it for the next RunEventPass when this is no thread to show it on, or holds GuiLock.
    void ShowMessage(const std::string& title, const std::string& text);
    void AttachToHostWindow(void* parent) { hostWindow = parent; }

    ToolbarState GetToolbar() const; // any thread
    // Buttons that are not active do nothing and give false.
    bool PressLoad(); // asks for a recording; true when one was loaded
    bool PressSave();
    bool PressUndo(); // false: nothing to undo
    bool PressRedo();
    bool PressViewAll();
    bool PressFitPlayRegion();
    bool PressFitVertically();
    bool PressFitHorizontally();
    bool ToggleCutMode();
    bool ToggleFollowCursor();
    bool ToggleSingleVoice();
    static std::string AboutText();  // the version
    static std::string UpdatePage(); // path and query of the page that tells of newer versions

    // The start-up screen's application, or the recording's. Only with GuiLock held, as in WithApplication
    // and everything that the toolkit's events call.
    CkvovirelaineApp* Application() { return application.get(); }
    void WithApplication(const std::function<void(CkvovirelaineApp&)>& work);
    CCriticalSection& GuiLock() { return guiLock; }
    CSnapshotStore& Store() { return store; } // GuiLock, and AudioLock for whatever changes it

    // Called on the interface thread with GuiLock held: with null when the faces of the application must go,
    // with an application when its faces are to be made. After a restore on another thread there is no call
    // with null: the old application is gone by then, and must not be touched. Set before the first pass; the
    // destructor still calls it.
    using FaceCallback = std::function<void(CkvovirelaineApp*)>;
    void SetFaceCallback(FaceCallback callback);
    bool PanelsNeedRebuild() const { return panelsNeedRebuild.load(std::memory_order_relaxed); }

private:
    using Document = std::shared_ptr<const std::string>;
    class InterfaceScope;
    class CallScope;
    struct Message {
        std::string title;
        std::string text;
    };

    // Audio; FileLock is held.
    bool IsPlayable() const { return isLoaded && application != nullptr; }
    std::optional<VstTimeInfo> AskTime(std::int32_t filter) const;
    void TrackTransport(const VstTimeInfo& time, std::int32_t frames);
    void TakeHostTempo(const VstTimeInfo& time);
    void PassHostTempo(const VstTimeInfo& time);
    void SendMidi(std::int32_t frames);
    void HandleMidiEvent(const VstMidiEvent& event);

    // Life of the application; GuiLock is held.
    float HostSampleRate() const;
    void MakeApplication(CkvoAudioFile* audio);
    void MakeRestoring();
    void DestroyApplication();
    void TearDown(Document keep);
    void BecomeEmpty();
    std::int32_t RunExclusively(const std::function<std::int32_t()>& work);

    // Loading, step by step; GuiLock is held.
    std::int32_t Load(const std::string& path);
    std::int32_t OpenRecording(const std::string& path);
    std::int32_t CheckRecording(const CkvoAudioFile& audio);
    void WarnOfOtherRate();
    std::int32_t RunApplication();
    void PassTempoOfHost();
    void ConnectApplication();
    void OnParameterChanged(std::int32_t index);
    void ApplyCurrentProgram();
    void AutomateAll();
    void ActivateToolbar(bool active);
    void PublishLoaded(Document keep);

    // Documents.
    std::int32_t Restore(const void* data, std::int32_t size);
    std::int32_t RestoreDocument(const Document& document);
    std::int32_t RestoreLocated(const Document& document, const std::string& path);
    std::int32_t FinishRestore(const Document& document, std::int32_t result);
    void TakeProgramOfSession();
    std::int32_t LoadProgram(const void* data, std::int32_t size);
    UserState ReadUserState();
    Document SaveSession();
    Document KeptDocument() const; // takes FileLock
    std::int32_t HandOut(Document document, const void*& data);

    // Interface.
    bool IsAlive() const { return alive->load(std::memory_order_relaxed); }
    bool HoldsGuiLock() const;
    void ArmPoll();
    void DisarmPoll();
    void ForgetTimer();
    void RebuildFaces();
    void TellUser();
    std::optional<Message> TakeMessage();
    Document TakeQuestion();
    bool AskForMissingRecording();
    bool WithRecording(const std::function<void(CkvovirelaineApp&)>& work);

    CkvoToolkit& toolkit;
    const PlugInOptions options;

    mutable CCriticalSection audioLock{LockRank::kAudio};
    mutable CCriticalSection guiLock{LockRank::kInterface};
    mutable CCriticalSection fileLock{LockRank::kFile};

    // Written with GuiLock and FileLock held, read with either.
    std::unique_ptr<CkvovirelaineApp> application;
    bool isLoaded = false; // under FileLock
    std::string audioPath; // under FileLock
    Document keptDocument; // under FileLock: what GetChunk hands out instead of a document of its own
    Document handedOut;    // under FileLock: the memory that the host holds

    CkvoAudioFile audioFile; // of whoever loads; of the audio thread while isLoaded
    CSnapshotStore store;
    CVoicePresetBank presets;

    // Under GuiLock.
    bool loading = false;
    Document queuedDocument;               // to be restored when the load that is under way has ended
    std::optional<UserState> refusedState; // what the user saw when only a part of keptDocument was taken
    std::int32_t scopeDepth = 0;
    bool passRuns = false;
    FaceCallback faces;
    std::atomic<std::thread::id> guiHolder{}; // none while nobody holds it

    // The audio thread's, under FileLock.
    CTransportTracker transport;
    COutgoingEvents outgoing;
    std::vector<MidiEventRecord> midiRecords;

    std::atomic<float> hostTempo{kStartTempo};
    std::atomic<float> givenSampleRate{0};          // Hz, of a caller that is no host
    std::atomic<std::int32_t> storedBlockSize{128}; // told by hosts; every block brings its own length
    std::atomic<bool> noteOnSeen{false};
    std::atomic<bool> userChanged{false}; // a strip, since refusedState
    std::atomic<bool> panelsNeedRebuild{true};
    std::atomic<bool> pollWanted{false};
    std::atomic<bool> pollArmed{false};

    std::atomic<bool> editActive{false};
    std::atomic<bool> saveActive{false};
    std::atomic<bool> singleVoiceActive{false};
    std::atomic<bool> cutMode{false};
    std::atomic<bool> followCursor{false};
    std::atomic<bool> singleVoice{false};

    // For the interface thread; under pendingLock.
    mutable CCriticalSection pendingLock;
    std::deque<Message> messages;
    Document question; // whose recording is to be asked for

    std::atomic<std::int32_t> callsUnderWay{0};

    // False once this is gone: a dialog may outlast it.
    const std::shared_ptr<std::atomic<bool>> alive = std::make_shared<std::atomic<bool>>(true);
};

} // namespace sonorelle
