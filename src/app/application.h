// One loaded recording: its analysis, its harmony, the four voices, the panels that show and set them, and
// the position at which it all plays.
//
//     CkvovirelaineApp application({toolkit, audioLock, &audioFile, store});
//     application.SetPresets(presets);
//     if (application.Run() == 0) {                     // analyses, or reads the cache; -1: cancelled
//         application.SynchronizeToHost(0, true, true, frames);
//         application.ProcessAudio(outputs, frames);    // on the audio thread, block after block
//     }
//
// Without a recording (a null file) it only stands for the start-up screen: nothing of the engine is called,
// and its audio is silence.
//
// Threads.
// - The audio thread: ProcessAudio, ProcessBlock, SynchronizeToHost, NoteOn, NoteOff, AllNotesOff,
//   SetHostTempo, SetSampleRate, SetHostLatency and the outgoing MIDI. None of them allocates, and none takes
//   a lock but AudioLock, for one block of 64 samples at most.
// - Any thread: the host parameters, ApplyPreset, Start, Stop, GetPosition, IsClipping, the flags.
// - All else belongs to the interface: whoever holds the lock that guards timers and idle work. It takes
//   AudioLock around each single change.
// The owner sees to it that no call is under way when the application is destroyed.
//
// What the audio thread does to the arrangement itself (a snapshot recalled by a key, a chord played live)
// reaches panels and view at the next Poll, or with the next operation of the interface.

#pragma once

#include "analysis/melody_analyzer.h"
#include "app/audio_export.h"
#include "app/choir_settings_panel.h"
#include "app/export_dialog.h"
#include "app/host_parameters.h"
#include "app/melody_properties.h"
#include "app/midi_export.h"
#include "app/pitch_view.h"
#include "app/playback_settings.h"
#include "app/seam.h"
#include "app/snapshots.h"
#include "app/state_document.h"
#include "app/sub_application.h"
#include "app/toolkit.h"
#include "app/tuning_freq.h"
#include "app/voice_mix.h"
#include "app/voice_preset_bank.h"
#include "app/voice_settings.h"
#include "harmony/choir_driver.h"
#include "platform/critical_section.h"
#include "synthesis/voice_bank.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

class CkvoAudioFile;
class CSnapshotStore;
class AnalysisJob;

// What an application is built on; all of it is borrowed and outlives it.
struct ApplicationWiring {
    // As in all use: the voices decide their pitches once in so many samples.
    static constexpr std::int32_t kBlockSize = 64;

    CkvoToolkit& toolkit;
    CCriticalSection& audioLock;
    CkvoAudioFile* audio = nullptr; // open, or to be opened by LoadState; null for the start-up screen
    CSnapshotStore& store;
    std::int32_t blockSize = kBlockSize;
    bool hosted = true;   // in a host: the analysis is kept in a cache, and the master gain is the host's
    bool useCache = true; // read and write the analysis beside the recording
};

class CkvovirelaineApp final : public CkvoSubApplicationBase {
public:
    static constexpr std::int32_t kVoices = 4;
    static constexpr std::int32_t kHeldKeys = CChoirDriver::kHeldKeys;
    static constexpr float kUnknownTempo = -1;
    static constexpr std::int32_t kDefaultTriggerNote = 60;
    static constexpr double kPollSeconds = 0.1;
    static constexpr std::int32_t kCancelled = -1; // an answer of Run

    explicit CkvovirelaineApp(const ApplicationWiring& applicationWiring);
    ~CkvovirelaineApp() override;

    // --- Life, application_run.cpp ---

    // Analyses the recording, or reads its cache, makes the first arrangement and fills the panels. Returns
    // when all that is done; meanwhile the toolkit's events run. 0; kCancelled.
    std::int32_t Run() override;
    bool HasAudio() const { return audioReady.load(std::memory_order_relaxed); } // since Run
    void Poll() override;
    // The user, or whoever owns this, wants the running analysis to end. Any thread.
    void CancelAnalysis() { cancelAnalysis.store(true, std::memory_order_relaxed); }
    std::int32_t GetAnalysisState() const { return analysisState.load(std::memory_order_relaxed); }

    // --- Sound, application_mix.cpp ---

    // One block of the host. `outputs`: up to 10 pointers, ended early by a null; fewer than 2 give 1 and
    // nothing is written, else 0. Outputs 0 and 1 are the mix, the others a pair for each voice, silent
    // unless SetSingleVoiceOutput. `frames` may be any number. They may be the same memory but for the first
    // two.
    std::int32_t ProcessAudio(float* const* outputs, std::int32_t frames);
    // One inner block as interleaved stereo, for a caller without a host. 0, or 1 at the end of the region.
    std::int32_t ProcessBlock(float* interleaved) override;
    bool IsClipping() const { return mix.IsClipped(); }
    void SetSingleVoiceOutput(bool on) { singleVoiceOutput.store(on, std::memory_order_relaxed); }
    bool GetSingleVoiceOutput() const { return singleVoiceOutput.load(std::memory_order_relaxed); }

    // --- Transport, application_playback.cpp ---

    void Start() override;
    void Stop() override;
    // Plays on for `frames` (at least 1024) samples of the recording while the sound fades, and then cuts.
    void StopAt(double frames);
    void NextNote() override;
    void PreviousNote() override;
    void Rewind() override;
    void SetLoop(bool on) override { loop.store(on, std::memory_order_relaxed); }
    void SetBlockSizeHint() override {}
    std::int32_t GetPosition() const override;
    double GetExactPosition() const { return position.load(std::memory_order_relaxed); }
    void SetPosition(std::int32_t offset) override;
    bool IsPlaying() const { return playing.load(std::memory_order_relaxed); }
    std::int32_t GetPlayStart() const { return playStart.load(std::memory_order_relaxed); }
    std::int32_t GetPlayEnd() const { return playEnd.load(std::memory_order_relaxed); }
    std::int32_t GetMelodyEnd() const { return melodyEnd.load(std::memory_order_relaxed); }

    // At the start of each block of the host. `samplePos`: the host's position in its samples; `changed`: it
    // has jumped, or its transport has.
    void SynchronizeToHost(double samplePos, bool hostPlaying, bool changed, std::int32_t sampleFrames);
    // A key of the host, `deltaFrames` samples into the coming block, `position` being the same in the host's
    // samples.
    void NoteOn(std::int32_t note, std::int32_t deltaFrames, double hostSample);
    void NoteOff(std::int32_t note, std::int32_t deltaFrames, double hostSample);
    void AllNotesOff(std::int32_t deltaFrames, double hostSample);

    // Quarter notes per minute; above 0 and below 999, else nothing happens. A metre below 1 counts as 4.
    void SetHostTempo(float tempo, std::int32_t numerator, std::int32_t denominator);
    void SetMelodyTempo(float tempo); // above 0, else nothing happens
    void SetSampleRate(float rate);   // of the host, in Hz
    void SetHostLatency(std::int32_t samples) { hostLatency.store(samples, std::memory_order_relaxed); }
    float GetHostTempo() const { return hostTempo.load(std::memory_order_relaxed); }
    float GetMelodyTempo() const; // takes AudioLock
    std::int32_t GetTimeSigNumerator() const { return timeSigNumerator.load(std::memory_order_relaxed); }
    std::int32_t GetTimeSigDenominator() const { return timeSigDenominator.load(std::memory_order_relaxed); }
    float GetTempoRescaleSyncFactor() const { return tempoRescaleSyncFactor.load(std::memory_order_relaxed); }
    double GetMasterPlaybackStart() const { return masterPlaybackStart.load(std::memory_order_relaxed); }
    bool IsSyncingTempo() const { return syncTempoToHost.load(std::memory_order_relaxed); }
    bool IsTriggeredBySnapshots() const { return doSnapshotTrigger.load(std::memory_order_relaxed); }

    // The bank's notes on their way to the host. GetOutgoingMidi reuses the room of `out`; the others go by
    // the index in it.
    std::int32_t GetOutgoingMidi(std::vector<MidiEventRecord>& out) const;
    void MarkMidiSent(std::int32_t index);
    void DelayMidi(std::int32_t index, std::int32_t newOffset);
    void PurgeSentMidi();

    // --- Host parameters, application_parameters.cpp: any thread; a bad index does nothing, or gives 0 or ""
    // ---

    void SetParameter(std::int32_t index, float value);
    float GetParameter(std::int32_t index) const;
    std::string GetParameterDisplay(std::int32_t index) const;
    // Called with the index of a parameter that a strip has changed. Set before audio runs.
    void SetParameterChanged(std::function<void(std::int32_t)> callback) {
        parameterChanged = std::move(callback);
    }

    // --- Presets and the state document, application_state.cpp ---

    // Borrowed; without it there are none.
    void SetPresets(CVoicePresetBank* presetBank) {
        presets = presetBank;
        currentPreset.store(0, std::memory_order_relaxed);
    }
    std::int32_t GetPresetCount() const { return presets != nullptr ? presets->GetCount() : 0; }
    std::int32_t GetCurrentPreset() const { return currentPreset.load(std::memory_order_relaxed); }
    void ApplyPreset(std::int32_t index); // to the strips; any thread; a bad index does nothing
    void StorePreset(std::int32_t index); // from the strips
    void PushVoiceSettings();             // the strips' values to the bank

    // The arrangement as a document. 0 bytes without a recording.
    std::int32_t SaveState(const void*& data) override;
    // 0; kCannotOpen: no path in the document, another file, or it cannot be opened; kRunFailed. `openFile`:
    // open the document's file, else it must bear the name of the one that is open.
    std::int32_t LoadState(const void* data, std::int32_t size, bool openFile) override;
    // Why a document that LoadState took (0) was not read to its end.
    enum class StateRefusal : std::int32_t { kNone, kNewerVersion, kOtherAnalysis };
    StateRefusal GetStateRefusal() const { return stateRefusal; }
    std::int32_t LoadPreset(std::int32_t index, const void* data, std::int32_t size); // 0
    std::string SavePreset(std::int32_t index); // the document that LoadPreset reads

    // --- Arrangement, application_choir.cpp: the panels' callbacks, and what undo brings back ---

    void RefreshFromStore() override;
    void OnChoirSettingsChanged();
    void OnMelodyPropertiesChanged();
    void OnPlaybackChanged();
    void OnVoiceSettingsChanged();
    void OnTuningChanged();
    // Semitones by which everything sounds above the melody's key, octaves included; the panels' roots tell
    // less, and whatever changes on them brings it back to what they tell. One undo step if it differs.
    void SetTranspose(float semitones);
    float GetTranspose() const; // takes AudioLock
    bool Undo();                // false when there is nothing to undo
    bool Redo();
    void PushUndo();

    // --- The view, application_view.cpp ---

    void OnViewEvent();
    // What the chord menu does: the note sings in this chord; one undo step.
    void SetChord(std::int32_t note, const ConsortierClassic::ChordRecord& chord);
    // What dragging a note, its menu, cutting and joining do; one undo step each. False, and nothing happens,
    // where there is no such note or voice, or nothing to cut or to join.
    bool SetNotePitch(std::int32_t note, std::int32_t voice, std::int32_t midiPitch); // 0 to 127
    bool SetNoteGain(std::int32_t note, std::int32_t voice, float gain);              // 0 to 1
    bool SplitAt(std::int32_t samplePosition);
    bool MergeNotes(std::int32_t first, std::int32_t last); // neighbours
    void SetCutMode(bool on);
    bool GetCutMode() const { return cutMode.load(std::memory_order_relaxed); }
    void SetFollowCursor(bool on) { followCursor.store(on, std::memory_order_relaxed); }
    bool GetFollowCursor() const { return followCursor.load(std::memory_order_relaxed); }

    // --- Exports, application_export.cpp ---

    // What the Save button asks (AskForExport, without a lock), and what then happens, with a window of
    // progress. Gives what TellOfExport wants; 0, and nothing happens, when another recording has been loaded
    // meanwhile.
    ExportQuestion MakeExportQuestion() const;
    std::int32_t Export(const ExportWish& wish);
    PopupMenu ExportMenu() const;          // what it offers
    std::int32_t ExportVoiceCount() const; // voices in it
    // The play region as 16-bit stereo WAV: one voice (0 to 3), or -1 for all. 0; kCannotWrite;
    // CAudioExport::kCancelled. Playback is silent meanwhile. An old file stays unless it gives 0.
    std::int32_t ExportAudio(const std::string& path, std::int32_t voice,
                             const CAudioExport::Progress& progress = nullptr);
    // Several files in one pass; `limited`: frames of each that were cut off at the limit.
    std::int32_t ExportAudioFiles(std::span<const AudioExportFile> files,
                                  const CAudioExport::Progress& progress,
                                  std::vector<std::int64_t>* limited = nullptr);
    // -1: all voices; VoiceCount(): the chords. 0; kCannotWrite; kBadArgument.
    std::int32_t ExportMidi(const std::string& path, std::int32_t voice);
    std::int32_t ExportTriggerMidi(const std::string& path);
    void OnSnapshotDragged(); // callback of the snapshot panel
    const std::string& GetTempMidiPath() const { return tempMidiPath; }

    // --- What it consists of ---

    CkvoPitchView& View() { return view; }
    CkvovirelaineVoiceSettings& VoicePanel() { return voicePanel; }
    CkvovirelaineChoirSettings& ChoirPanel() { return choirPanel; }
    CkvovirelaineMelodyProperties& MelodyPanel() { return melodyPanel; }
    CkvovirelaineTuningFreq& TuningPanel() { return tuningPanel; }
    CkvovirelaineSnapshots& SnapshotPanel() { return snapshotPanel; }
    CkvovirelainePlaybackSettings& PlaybackPanel() { return playbackPanel; }
    CMelodyAnalyzer& Analyzer() { return analyzer; }
    CChoirDriver& Driver() { return driver; }
    CVoiceBank& Bank() { return bank; }
    CkvoAudioFile* AudioFile() const { return wiring.audio; }
    bool PanelsActive() const { return panelsActive; } // the start-up screen has none
    // How the last Run came to its analysis.
    bool WasCacheLoaded() const { return cacheLoaded; }
    bool WasCacheWritten() const { return cacheWritten; }

private:
    // Run, step by step.
    CSnapshotStore& RegisterOwnElements();
    void ConnectPanels();
    float ShownSampleRate() const;
    std::int32_t Analyse();
    bool WaitForAnalysis(AnalysisJob& job);
    void MakeArrangement();
    void ShowCurve();
    void ShowNotes();
    bool SetUpBank();
    void FillPanels();

    // Sound.
    std::int32_t CountOutputs(float* const* outputs) const;
    double Speed() const; // samples of the recording that pass with one of the output; AudioLock is held
    bool BeginHostBlock(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                        std::int32_t& done);
    void DeliverTail(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                     std::int32_t& done);
    void DeliverLeadIn(std::int32_t frames, std::int32_t& done);
    bool DeliverBlock(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                      std::int32_t& done);
    std::int32_t RenderBlock();
    void MixBlock(float* const* outputs, std::int32_t outputCount, std::int32_t from, std::int32_t to,
                  std::int32_t count);
    bool IsInsideRegion() const;
    void EndMidi();
    void SetMidiOut(bool on);
    void MoveTo(double newPosition);
    bool HasReachedStop() const;
    void CutSound(std::int32_t at);
    void EndAtStop();
    void FadeToStop(float* const* outputs, std::int32_t outputCount, std::int32_t frames, std::int32_t done);
    void FollowLiveNote();

    // Playback; positions in samples of the host and of the recording.
    double MelodyFromHost(double hostSample) const;
    double TempoRatio() const; // hostTempo / melodyTempo when the melody follows the host, else 1
    void PassSpeed();
    void PassTempoGrid();
    void ShowHostPosition(double hostSample);
    void ShowPlayRegion();
    void GoTo(double target);
    void TakeBankPosition();
    void FollowHostPlaying(double samplePos, std::int32_t sampleFrames);
    void FollowHostStopped(double samplePos, bool changed);
    std::int32_t OffsetInMelody(std::int32_t deltaFrames) const;
    std::int32_t KeyInMelody(std::int32_t note) const;
    bool IsTriggerMode() const;
    bool IsPlayedLive();
    void Trigger(std::int32_t note, std::int32_t deltaFrames);
    bool RecallByKey(std::int32_t key);
    void TakeRecalledRegion();
    void PressKey(std::int32_t note, std::int32_t deltaFrames, double hostSample);
    void ReleaseKey(std::int32_t note, std::int32_t deltaFrames, double hostSample);
    void FreeHeldKeys();
    void TakePlaybackValues();
    void TakeAnchor();

    // Arrangement.
    void ChoirChanged(bool byMelody);
    void TakeTransposeFromPanels();
    void EnterMode(std::int32_t mode);
    void EnterLiveHarmonies();
    void EnterLivePitches();
    void RunWithPresentChords();
    void ShowMode(std::int32_t mode);
    void LoadDriverFromPanels();
    bool RunDriver();
    void RunIntelligent();
    void RunManual();
    void RunMixed(std::int32_t mode);
    void RunByMode();
    void FinishRun();
    void PassTranspose();
    std::int32_t TransposedSteps() const; // whole semitones of `transpose`
    std::int32_t VoiceCount() const;      // of the arrangement
    void StartLive(std::int32_t mode);
    void ShowAudibleVoices();
    void PassControl(std::int32_t voice, VoiceControl control);
    void ReloadPanels();
    void ShowScale();
    void ShowVoices();
    void ShowNote(std::int32_t note);
    void ShowVoiceCount();
    void ReturnToLive(std::int32_t mode);
    void HoldStoredValues();      // any thread
    void ShowStoredArrangement(); // after the store has written it
    void FlushPending();          // what the audio thread has left for the interface

    // View.
    void EndDrag(std::int32_t note, std::int32_t voice);
    void ChangeNotePitch(std::int32_t note, std::int32_t voice);
    void ShowDetectedChord(std::int32_t note);
    void BeginAudition(std::int32_t note);
    void EndAudition();
    void ChooseChord(std::int32_t note);
    PopupMenu ChordMenu(std::int32_t note, std::vector<ConsortierClassic::ChordRecord>& chords);
    void TakeViewRegion(std::int32_t start, std::int32_t end);
    bool IsNoteOfVoice(std::int32_t note, std::int32_t voice) const;

    // Exports.
    AudioExportSettings ExportSettings() const;
    double BeginExport();
    void EndExport(double offset);
    MidiExportSettings MidiSettings() const;
    std::int32_t SaveSound(const std::string& path, std::int32_t voice);
    void PutOnSelection(const std::string& path, std::int32_t result);
    std::string MakeTempMidiPath(); // empty when there is no folder to make it in
    void RemoveTempMidi();

    // State.
    SavedFileSettings PresentFileSettings() const;
    SavedSnapshots PresentSnapshots() const;
    SavedVoices PresentMixer() const;
    std::vector<SavedPreset> PresentPresets() const;
    std::int32_t OpenForState(const std::string& path, bool openFile);
    void RestoreFileSettings(const SavedFileSettings& saved);
    void RestoreTiming(const SavedFileSettings& saved);
    void ForgetSnapshots();
    bool RestoreSnapshots(const SavedSnapshots& saved);
    SnapshotEntry TakeEntry(const SavedSnapshot& saved);
    void RestoreMixer(const SavedVoices& saved);
    void RestorePresets(const std::vector<SavedPreset>& saved);
    void ReturnToSavedArrangement(bool endsWithIt);
    void TakeVoicesOf(std::int32_t snapshot);

    // Wiring.
    ApplicationWiring wiring;
    std::function<void(std::int32_t)> parameterChanged;
    CVoicePresetBank* presets = nullptr;
    std::atomic<std::int32_t> currentPreset{0};

    // Elements of the store: plain memory under AudioLock.
    float melodyTempo = kUnknownTempo; // quarter notes per minute
    float transpose = 0;               // semitones

    CMelodyAnalyzer analyzer;
    CChoirDriver driver;
    CVoiceBank bank;

    CkvoPitchView view;
    CkvovirelaineMelodyProperties melodyPanel;
    CkvovirelaineChoirSettings choirPanel;
    CkvovirelaineVoiceSettings voicePanel;
    CkvovirelaineSnapshots snapshotPanel;
    CkvovirelainePlaybackSettings playbackPanel;
    CkvovirelaineTuningFreq tuningPanel;

    // The play region in samples of the recording, and what an audition puts aside.
    std::atomic<std::int32_t> playStart{0};
    std::atomic<std::int32_t> playEnd{0};
    std::int32_t savedStart = 0;
    std::int32_t savedEnd = 0;
    double savedOffset = 0;
    std::atomic<std::int32_t> melodyEnd{0};

    // The block that is being delivered; under AudioLock.
    std::int32_t channels = 0;
    std::int32_t blockFill = 0;                 // samples of it already delivered
    double blockStart = 0;                      // position of its first sample
    bool bankAway = false;                      // an export has moved the voices
    double blockSpeed = 1;                      // samples of the recording per sample of it
    std::atomic<std::int32_t> triggerOffset{0}; // samples by which a trigger lies inside the host's block
    std::vector<float> voiceSamples;
    std::array<std::array<float*, 2>, kVoices> voiceBuffers{};
    std::array<bool, kVoices> rendered{};      // voices that the block holds
    std::array<bool, kVoices> leavingVoices{}; // those of them that were switched off, and fade
    std::array<StripGain, kVoices> gains{};    // of the block, and of the one before
    std::array<StripGain, kVoices> gainsBefore{};
    std::int32_t leadIn = 0; // samples of silence before the recording begins
    bool midiOut = false;    // the bank sends notes
    CVoiceMix mix;
    CSeam seam;            // where the sound is cut
    bool sounding = false; // the last block was mixed

    // State of the run.
    std::atomic<std::int32_t> analysisState{0}; // 1 running, 0 done, -1 cancelled
    std::atomic<bool> cancelAnalysis{false};
    std::atomic<bool> audioReady{false};
    std::atomic<bool> loop{false};
    std::atomic<bool> playing{false};
    bool syncedOnce = false; // under AudioLock, as the next
    bool transportStopped = true;
    std::atomic<bool> stopPending{false};
    std::atomic<double> stopPosition{0};
    std::atomic<bool> doSnapshotTrigger{false};
    std::atomic<bool> syncTempoToHost{false};
    std::atomic<bool> followCursor{false};
    std::atomic<bool> singleVoiceOutput{false};
    std::atomic<bool> auditioning{false};
    std::atomic<bool> exporting{false};
    std::atomic<bool> missedChange{false}; // the host has jumped while an export was under way
    std::atomic<bool> cutMode{false};
    bool updating = false;
    bool melodyChanged = false;
    bool chordsDirty = false;
    bool panelsActive = false;
    bool cacheLoaded = false;
    bool cacheWritten = false;
    std::int32_t lastMode = 0;
    StateRefusal stateRefusal = StateRefusal::kNone;

    // Tempo and time.
    std::atomic<float> hostTempo{kUnknownTempo};
    std::atomic<float> tempoRescaleSyncFactor{1};
    std::atomic<std::int32_t> timeSigNumerator{4};
    std::atomic<std::int32_t> timeSigDenominator{4};
    std::atomic<float> sampleRate{44100};
    std::atomic<bool> hostRateKnown{false}; // sampleRate is the host's
    std::atomic<double> position{0};        // of the melody; written under AudioLock
    double shownPosition = -1;
    std::atomic<double> hostPosition{0};
    std::atomic<double> masterPlaybackStart{0}; // where the melody begins, in samples of the host
    std::atomic<std::int32_t> hostLatency{0};
    std::int32_t pollCount = 0;

    // Keys.
    std::atomic<std::int32_t> triggerNote{kDefaultTriggerNote};
    std::atomic<std::int32_t> liveNote{-1};
    std::int32_t heldKeyCount = 0; // these two under AudioLock
    std::int32_t heldKeys[kHeldKeys] = {-1, -1, -1, -1, -1, -1, -1, -1};

    // Left by the audio thread for the interface.
    std::atomic<bool> recallPending{false}; // a key has recalled a snapshot
    std::int32_t liveShown = -1;            // the last live note that the view shows

    CCriticalSection panelLock;  // the panels' texts against a full reload
    CCriticalSection exportLock; // an audition against an export
    std::string tempMidiFolder;  // of this instance; empty before the first drag
    std::string tempMidiPath;
};

} // namespace sonorelle
