// Presets, and the session as a host keeps it.
//
// A save holds the present arrangement as its last snapshot, added for the moment; a load brings back all
// snapshots, recalls that last one, and drops it. What a document lacks stays as it is after the analysis.

#include "app/application.h"

#include "app/snapshot_store.h"
#include "formats/audio_file.h"
#include "platform/file_system.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace sonorelle {

namespace {

constexpr const char* kPresentState = "Last State"; // its snapshot's name

// The snapshot of the present state, for as long as it is written.
class TemporarySnapshot {
public:
    explicit TemporarySnapshot(CkvovirelaineSnapshots& snapshotPanel)
        : panel_(snapshotPanel), isThere_(snapshotPanel.AddTemporary(kPresentState)) {}
    ~TemporarySnapshot() {
        if (isThere_) panel_.RemoveTemporary();
    }
    TemporarySnapshot(const TemporarySnapshot&) = delete;
    TemporarySnapshot& operator=(const TemporarySnapshot&) = delete;

    bool IsThere() const { return isThere_; }

private:
    CkvovirelaineSnapshots& panel_;
    bool isThere_;
};

SavedSnapshot Saved(const CSnapshotStore& store, const CkvovirelaineSnapshots& panel, std::int32_t index) {
    SavedSnapshot saved;
    saved.name = store.GetSnapshotName(index);
    SnapshotEntry entry;
    if (panel.GetEntry(index, entry)) {
        saved.midiTrigger = entry.midiTrigger;
        saved.startTime = entry.markerStart;
        saved.endTime = entry.markerEnd;
    }
    const std::span<const std::byte> data(store.GetSnapshotData(index),
                                          static_cast<std::size_t>(store.GetSnapshotSize(index)));
    saved.data.assign(data.begin(), data.end());
    saved.sizes.emplace(static_cast<std::size_t>(store.GetSizeCount(index)));
    store.GetSizes(index, *saved.sizes);
    return saved;
}

// A snapshot from before notes were cut is shorter than the elements of today. It is written as a load would
// lay it out, with zeros where there was nothing yet, so that what is restored and saved again stays the same
// to the byte. `sizes`: of the elements of today.
void LayOutForToday(SavedSnapshot& saved, const CSnapshotStore& store,
                    const std::vector<std::int32_t>& sizes) {
    if (!saved.sizes || *saved.sizes == sizes || saved.sizes->size() > sizes.size()) return;
    std::vector<std::byte> data;
    auto from = saved.data.begin();
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const SnapshotElement* const element = store.GetElement(static_cast<std::int32_t>(i));
        if (element == nullptr || !element->active) continue;
        const std::ptrdiff_t then = i < saved.sizes->size() ? (*saved.sizes)[i] : 0;
        if (then > sizes[i] || then > saved.data.end() - from) return;
        data.insert(data.end(), from, from + then);
        data.resize(data.size() + static_cast<std::size_t>(sizes[i] - then));
        from += then;
    }
    saved.data = std::move(data);
    saved.sizes = sizes;
}

// A project may have come from a machine that writes its paths with the other slash.
std::string LastNameOf(const std::string& path) {
    const std::string name = FileNamePart(path);
    return name.substr(name.rfind('\\') + 1);
}

SavedVoice WithoutDrift(SavedVoice voice) {
    voice.drift.reset();
    return voice;
}

// Whether a save with this preset as the present one wrote this mixer, which has no drift of its own.
bool IsPresetOfMixer(const SavedState& state, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= state.presets.size()) return false;
    const SavedVoices& preset = state.presets[static_cast<std::size_t>(index)].voices;
    return std::equal(
        preset.begin(), preset.end(), state.mixer.begin(),
        [](const auto& inPreset, const auto& inMixer) { return WithoutDrift(inPreset) == inMixer; });
}

// A document does not tell which preset was the present one of the save, but that one is the mixer. `chosen`
// is kept unless it is the default, which is there without anybody having chosen it.
std::int32_t PresentPresetOf(const SavedState& state, std::int32_t chosen) {
    if (chosen != kDefaultPreset || IsPresetOfMixer(state, chosen)) return chosen;
    for (std::int32_t other = 0; other < kPresetCount; ++other)
        if (IsPresetOfMixer(state, other)) return other;
    return chosen;
}

// A document has the mixer's drift only in the preset that was the present one of the save. Any other preset
// tells nothing of it.
void TakeDriftFromPreset(SavedState& state, std::int32_t present) {
    if (IsPresetOfMixer(state, present))
        state.mixer = state.presets[static_cast<std::size_t>(present)].voices;
}

template<typename Value>
void TakeIfThere(std::atomic<Value>& field, const std::optional<Value>& saved) {
    if (saved) field.store(*saved, std::memory_order_relaxed);
}

} // namespace

// Presets.

void CkvovirelaineApp::ApplyPreset(std::int32_t index) {
    if (presets == nullptr || !presets->IsPreset(index)) return;
    currentPreset.store(index, std::memory_order_relaxed);
    const VoiceSettingsOfAll voices = presets->GetVoices(index);
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        voicePanel.SetSettings(voice, voices[static_cast<std::size_t>(voice)]);
    PushVoiceSettings();
}

void CkvovirelaineApp::StorePreset(std::int32_t index) {
    if (presets == nullptr || !presets->IsPreset(index)) return;
    VoiceSettingsOfAll voices;
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        voices[static_cast<std::size_t>(voice)] = voicePanel.GetSettings(voice);
    presets->SetVoices(index, voices);
}

// Without an analysis nobody hears it, and the bank keeps it: presets may be chosen from any thread while the
// analysis runs, so that this does not ask for it.
void CkvovirelaineApp::PushVoiceSettings() {
    const SpinGuard guard(wiring.audioLock);
    voicePanel.Refresh();
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        SendVoiceSettings(bank, voice, voicePanel.GetSettings(voice));
    ShowAudibleVoices();
}

// A document that holds nothing of a preset, such as a whole session, changes none.
std::int32_t CkvovirelaineApp::LoadPreset(std::int32_t index, const void* data, std::int32_t size) {
    const SavedPreset saved = ReadProgram(DocumentText(data, size));
    if (saved == SavedPreset()) return kOk;
    RestoreMixer(saved.voices);
    StorePreset(index);
    if (saved.name && presets != nullptr) presets->SetName(index, *saved.name);
    PushVoiceSettings();
    return kOk;
}

std::string CkvovirelaineApp::SavePreset(std::int32_t index) {
    if (presets == nullptr || !presets->IsPreset(index)) return {};
    if (index == GetCurrentPreset()) StorePreset(index);
    return WriteProgram(PresentPresets()[static_cast<std::size_t>(index)]);
}

// Saving.

std::int32_t CkvovirelaineApp::SaveState(const void*& data) {
    ReleaseStateBuffer();
    data = nullptr;
    if (!HasAudio()) return 0;
    SavedState state;
    state.fileSettings = PresentFileSettings();
    {
        // Without it a load would take the last of the user's for the present state, and drop that.
        const TemporarySnapshot presentState(snapshotPanel);
        if (!presentState.IsThere()) return 0;
        state.snapshots = PresentSnapshots();
    }
    state.mixer = PresentMixer();
    StorePreset(GetCurrentPreset());
    state.presets = PresentPresets();
    stateBuffer = WriteState(state);
    if (!stateBuffer.empty()) data = stateBuffer.data();
    return static_cast<std::int32_t>(stateBuffer.size());
}

SavedFileSettings CkvovirelaineApp::PresentFileSettings() const {
    SavedFileSettings settings;
    settings.audioFileName = wiring.audio->GetPath();
    settings.masterPlaybackStart = GetMasterPlaybackStart();
    settings.doSnapshotTrigger = IsTriggeredBySnapshots();
    settings.singleVoiceOutput = GetSingleVoiceOutput();
    settings.syncTempoToHost = IsSyncingTempo();
    settings.currentTempo = static_cast<double>(melodyPanel.GetTempo());
    settings.tempoRescaleSyncFactor = GetTempoRescaleSyncFactor();
    settings.timeSigNumerator = GetTimeSigNumerator();
    settings.timeSigDenominator = GetTimeSigDenominator();
    settings.tuningFreq = static_cast<double>(tuningPanel.GetFrequency());
    return settings;
}

SavedSnapshots CkvovirelaineApp::PresentSnapshots() const {
    SavedSnapshots snapshots;
    snapshots.version = wiring.store.GetVersion();
    snapshots.analysedNoteCount = driver.GetAnalysedNoteCount();
    snapshots.noteCapacity = driver.GetNoteCapacity();
    snapshots.selectedSnapshot = snapshotPanel.GetSelected();
    for (std::int32_t i = 0; i < wiring.store.GetSnapshotCount(); ++i)
        snapshots.records.push_back(Saved(wiring.store, snapshotPanel, i));
    if (snapshots.records.empty()) return snapshots;
    const std::vector<std::int32_t> sizes = *snapshots.records.back().sizes; // the present state
    for (SavedSnapshot& record : snapshots.records) LayOutForToday(record, wiring.store, sizes);
    return snapshots;
}

SavedVoices CkvovirelaineApp::PresentMixer() const {
    SavedVoices mixer;
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        mixer[static_cast<std::size_t>(voice)] = SavedVoiceFrom(voicePanel.GetSettings(voice));
    return mixer;
}

std::vector<SavedPreset> CkvovirelaineApp::PresentPresets() const {
    std::vector<SavedPreset> saved(static_cast<std::size_t>(GetPresetCount()));
    std::int32_t index = 0;
    for (SavedPreset& preset : saved) {
        preset.name = presets->GetName(index);
        const VoiceSettingsOfAll voices = presets->GetVoices(index++);
        std::transform(voices.begin(), voices.end(), preset.voices.begin(), SavedVoiceFrom);
    }
    return saved;
}

// Loading.

std::int32_t CkvovirelaineApp::LoadState(const void* data, std::int32_t size, bool openFile) {
    stateRefusal = StateRefusal::kNone;
    const std::string_view document = DocumentText(data, size);
    const std::optional<std::string> path = ReadAudioFileName(document);
    if (!path || OpenForState(*path, openFile) != kOk) return kCannotOpen;
    if (Run() != kOk) return kRunFailed;

    SavedState saved = ReadState(document, wiring.store.GetVersion(), driver.GetAnalysedNoteCount());
    RestoreFileSettings(saved.fileSettings);
    if (saved.snapshots || saved.stop != SavedState::Stop::kNone) ForgetSnapshots();
    if (saved.stop != SavedState::Stop::kNone) {
        stateRefusal = saved.stop == SavedState::Stop::kNewerVersion ? StateRefusal::kNewerVersion
                                                                     : StateRefusal::kOtherAnalysis;
        return kOk;
    }
    if (presets != nullptr)
        currentPreset.store(PresentPresetOf(saved, GetCurrentPreset()), std::memory_order_relaxed);
    TakeDriftFromPreset(saved, GetCurrentPreset());
    const bool endsWithPresentState = saved.snapshots && RestoreSnapshots(*saved.snapshots);
    RestoreMixer(saved.mixer);
    RestorePresets(saved.presets);
    PushVoiceSettings();
    if (saved.snapshots) {
        ReturnToSavedArrangement(endsWithPresentState);
        snapshotPanel.Select(saved.snapshots->selectedSnapshot.value_or(-1));
    }
    return kOk;
}

// The document's file is opened, or it is the one that is open under whatever folder.
std::int32_t CkvovirelaineApp::OpenForState(const std::string& path, bool openFile) {
    if (wiring.audio == nullptr) return kCannotOpen;
    if (openFile) return wiring.audio->OpenRead(path, kAudioCacheFrames, -1, -1);
    const bool isSame = wiring.audio->IsOpen() && LastNameOf(path) == LastNameOf(wiring.audio->GetPath());
    return isSame ? kOk : kCannotOpen;
}

void CkvovirelaineApp::RestoreFileSettings(const SavedFileSettings& saved) {
    if (saved.masterPlaybackStart) {
        playbackPanel.SetOffset(*saved.masterPlaybackStart);
        masterPlaybackStart.store(playbackPanel.GetOffset(), std::memory_order_relaxed);
    }
    if (saved.doSnapshotTrigger) {
        doSnapshotTrigger.store(*saved.doSnapshotTrigger, std::memory_order_relaxed);
        playbackPanel.SetMode(*saved.doSnapshotTrigger ? CkvovirelainePlaybackSettings::kMidi
                                                       : CkvovirelainePlaybackSettings::kTime);
        choirPanel.SetAllowLive(!*saved.doSnapshotTrigger);
    }
    TakeIfThere(singleVoiceOutput, saved.singleVoiceOutput);
    if (saved.currentTempo) melodyPanel.SetTempo(static_cast<float>(*saved.currentTempo));
    RestoreTiming(saved);
}

void CkvovirelaineApp::RestoreTiming(const SavedFileSettings& saved) {
    TakeIfThere(tempoRescaleSyncFactor, saved.tempoRescaleSyncFactor);
    TakeIfThere(timeSigNumerator, saved.timeSigNumerator);
    TakeIfThere(timeSigDenominator, saved.timeSigDenominator);
    if (saved.tuningFreq) {
        tuningPanel.SetFrequency(static_cast<float>(*saved.tuningFreq));
        const SpinGuard guard(wiring.audioLock);
        bank.SetOutputTuning(tuningPanel.GetFrequency());
    }
    if (saved.syncTempoToHost) {
        syncTempoToHost.store(*saved.syncTempoToHost, std::memory_order_relaxed);
        playbackPanel.SetSyncTempo(*saved.syncTempoToHost);
    }
    PassTempoGrid();
    PassSpeed();
}

void CkvovirelaineApp::ForgetSnapshots() {
    snapshotPanel.Clear();
    const SpinGuard guard(wiring.audioLock);
    wiring.store.ClearHistory();
    wiring.store.PushUndo();
}

// True when the last of them is the present state of the save.
bool CkvovirelaineApp::RestoreSnapshots(const SavedSnapshots& saved) {
    if (saved.noteCapacity) {
        const SpinGuard guard(wiring.audioLock);
        driver.GrowNotes(*saved.noteCapacity);
    }
    bool tookLast = false;
    for (const SavedSnapshot& record : saved.records) {
        const SnapshotImport document = {record.data, saved.version, record.sizes.has_value(),
                                         record.sizes ? std::span<const std::int32_t>(*record.sizes)
                                                      : std::span<const std::int32_t>()};
        tookLast = snapshotPanel.Import(record.name, document, TakeEntry(record));
    }
    snapshotPanel.RefreshList();
    ShowPlayRegion();
    return tookLast && saved.endsWithPresentState;
}

// Key and region of a snapshot; those before it are kept for what it does not tell.
SnapshotEntry CkvovirelaineApp::TakeEntry(const SavedSnapshot& saved) {
    const std::int32_t present = triggerNote.load(std::memory_order_relaxed);
    if (!saved.midiTrigger) {
        const SnapshotEntry entry = {present, GetPlayStart(), GetPlayEnd()};
        triggerNote.store(std::min(present + 1, CkvovirelaineSnapshots::kHighestKey),
                          std::memory_order_relaxed);
        return entry;
    }
    const std::int32_t start = saved.startTime.value_or(GetPlayStart());
    const std::int32_t end = saved.endTime.value_or(GetPlayEnd());
    if (start <= end && end <= GetMelodyEnd()) {
        playStart.store(start, std::memory_order_relaxed);
        playEnd.store(end, std::memory_order_relaxed);
    }
    triggerNote.store(*saved.midiTrigger, std::memory_order_relaxed);
    return {*saved.midiTrigger, GetPlayStart(), GetPlayEnd()};
}

void CkvovirelaineApp::RestoreMixer(const SavedVoices& saved) {
    for (std::int32_t voice = 0; voice < kVoices; ++voice) {
        VoiceSettings settings = voicePanel.GetSettings(voice);
        Restore(saved[static_cast<std::size_t>(voice)], settings);
        voicePanel.SetSettings(voice, settings);
    }
}

void CkvovirelaineApp::RestorePresets(const std::vector<SavedPreset>& saved) {
    const std::int32_t count = std::min(static_cast<std::int32_t>(saved.size()), GetPresetCount());
    for (std::int32_t index = 0; index < count; ++index) {
        const SavedPreset& preset = saved[static_cast<std::size_t>(index)];
        if (preset.name) presets->SetName(index, *preset.name);
        VoiceSettingsOfAll voices = presets->GetVoices(index);
        for (std::size_t voice = 0; voice < voices.size(); ++voice)
            Restore(preset.voices[voice], voices[voice]);
        presets->SetVoices(index, voices);
    }
}

// Of a list that ended early the last snapshot is the user's: it is recalled, as the nearest to what was
// saved, and stays.
void CkvovirelaineApp::ReturnToSavedArrangement(bool endsWithIt) {
    const std::int32_t last = snapshotPanel.GetCount() - 1;
    if (last >= 0) snapshotPanel.Recall(last);
    if (IsLiveMode(choirPanel.GetMode())) TakeVoicesOf(last);
    if (endsWithIt) snapshotPanel.Remove(last);
    PushUndo();
}

// A recall into a live mode runs the choir anew. What was edited by hand since the last run is not to be lost
// by saving and loading.
void CkvovirelaineApp::TakeVoicesOf(std::int32_t snapshot) {
    {
        const SpinGuard guard(wiring.audioLock);
        if (!snapshotPanel.RecallQuietly(snapshot)) return;
        driver.RefreshFromStore();
        HoldStoredValues();
    }
    ShowVoices();
}

} // namespace sonorelle
