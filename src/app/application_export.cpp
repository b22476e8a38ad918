// What leaves the session: sound and MIDI files of the play region, and what a snapshot carries when it is
// dragged to a sequencer.

#include "app/application.h"

#include "formats/audio_file.h"
#include "harmony/styles.h"
#include "platform/file_system.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <unistd.h>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

constexpr const char* kTempMidiName = "~sonorelle.mid";

// Does what it was given when it goes out of scope, also by an exception of a progress callback.
template<class Action>
class AtEnd {
public:
    explicit AtEnd(Action lastAction) : action(lastAction) {}
    ~AtEnd() { action(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

private:
    Action action;
};

} // namespace

// By style and arrangement, as the menus have always listed them.
std::int32_t CkvovirelaineApp::ExportVoiceCount() const { return VoiceCount(); }

PopupMenu CkvovirelaineApp::ExportMenu() const {
    const SpinGuard guard(wiring.audioLock);
    return MakeExportMenu(ExportVoiceCount(), driver.GetStyle() == kStyleIntelligent);
}

ExportQuestion CkvovirelaineApp::MakeExportQuestion() const {
    if (!HasAudio() || driver.IsLive()) return {};
    return {ExportMenu(), wiring.audio->GetPath()};
}

std::int32_t CkvovirelaineApp::Export(const ExportWish& wish) {
    if (!HasAudio() || wiring.audio->GetPath() != wish.recording) return kOk;
    wiring.toolkit.ActivateMainWindow(false);
    const std::int32_t result =
        wish.isMidi ? ExportMidi(wish.path, wish.voice) : SaveSound(wish.path, wish.voice);
    wiring.toolkit.ActivateMainWindow(true);
    return result;
}

// With a progress window, since a long recording takes its time.
std::int32_t CkvovirelaineApp::SaveSound(const std::string& path, std::int32_t voice) {
    constexpr double kWholePercent = 100;
    CkvoToolkit& toolkit = wiring.toolkit;
    toolkit.OpenProgress();
    const std::int32_t result = ExportAudio(path, voice, [&toolkit](double share) {
        toolkit.ShowProgress(TruncateToI32(share * kWholePercent), 0);
        toolkit.RunEvents();
        return !toolkit.IsProgressCancelled();
    });
    toolkit.CloseProgress();
    return result;
}

AudioExportSettings CkvovirelaineApp::ExportSettings() const {
    AudioExportSettings settings;
    settings.playStart = GetPlayStart();
    settings.playEnd = GetPlayEnd();
    for (std::int32_t voice = 0; voice < kVoices; ++voice) {
        const auto v = static_cast<std::size_t>(voice);
        settings.gains[v] = voicePanel.GetStripGain(voice);
        settings.enabled[v] = view.IsVoiceEnabled(voice);
    }
    settings.tempoRatio = TempoRatio();
    settings.lock = &wiring.audioLock;
    return settings;
}

std::int32_t CkvovirelaineApp::ExportAudio(const std::string& path, std::int32_t voice,
                                           const CAudioExport::Progress& progress) {
    const AudioExportFile file{path, voice};
    return ExportAudioFiles({&file, 1}, progress);
}

// While `exporting` is up, the audio thread leaves the bank alone. Playback goes on afterwards where it was.
std::int32_t CkvovirelaineApp::ExportAudioFiles(std::span<const AudioExportFile> files,
                                                const CAudioExport::Progress& progress,
                                                std::vector<std::int64_t>* limited) {
    if (!HasAudio()) return kBadArgument;
    const SpinGuard exportGuard(exportLock);
    if (exporting.load(std::memory_order_relaxed)) return kCannotWrite; // out of the progress of another
    const double offset = BeginExport();
    const AtEnd end([this, offset] { EndExport(offset); });
    CAudioExport exporter(bank, driver, ExportSettings());
    const std::int32_t result = exporter.ExportFiles(files, progress);
    if (limited != nullptr) {
        limited->clear();
        for (std::size_t i = 0; i < files.size(); ++i) limited->push_back(exporter.GetLimitedFrames(i));
    }
    return result;
}

// Gives where in the region playback stands.
double CkvovirelaineApp::BeginExport() {
    const SpinGuard guard(wiring.audioLock);
    exporting.store(true, std::memory_order_relaxed);
    bankAway = true;
    EndMidi();
    shownPosition = -1;
    if (auditioning.load(std::memory_order_relaxed) && !IsPlaying()) return savedOffset;
    return position.load(std::memory_order_relaxed) - GetPlayStart();
}

void CkvovirelaineApp::EndExport(double offset) {
    const SpinGuard guard(wiring.audioLock);
    exporting.store(false, std::memory_order_relaxed);
    bank.ClearVoices();
    PassSpeed();
    SetPosition(TruncateToI32(offset));
}

MidiExportSettings CkvovirelaineApp::MidiSettings() const {
    const SpinGuard guard(wiring.audioLock);
    MidiExportSettings settings;
    settings.lock = &wiring.audioLock;
    settings.playStart = GetPlayStart();
    settings.playEnd = GetPlayEnd();
    settings.sampleRate = analyzer.GetSampleRate();
    settings.hostTempo = GetHostTempo();
    settings.melodyTempo = GetMelodyTempo();
    settings.syncTempoToHost = IsSyncingTempo();
    settings.transpose = transpose;
    settings.timeSigNumerator = GetTimeSigNumerator();
    settings.timeSigDenominator = GetTimeSigDenominator();
    return settings;
}

std::int32_t CkvovirelaineApp::ExportMidi(const std::string& path, std::int32_t voice) {
    if (!HasAudio()) return kBadArgument;
    const std::int32_t result = CMidiExport(driver, MidiSettings()).ExportMidi(path, voice);
    PutOnSelection(path, result);
    return result;
}

std::int32_t CkvovirelaineApp::ExportTriggerMidi(const std::string& path) {
    if (!HasAudio()) return kBadArgument;
    const CMidiExport exporter(driver, MidiSettings());
    const std::int32_t result = exporter.ExportTriggerMidi(path, triggerNote.load(std::memory_order_relaxed));
    PutOnSelection(path, result);
    return result;
}

void CkvovirelaineApp::PutOnSelection(const std::string& path, std::int32_t result) {
    if (result == kOk) {
        wiring.toolkit.SetSelection(path);
    } else {
        wiring.toolkit.ClearSelection();
    }
}

// A snapshot was recalled, by index or by the mouse, or is being dragged out.
void CkvovirelaineApp::OnSnapshotDragged() {
    if (!HasAudio()) return;
    if (snapshotPanel.GetSelected() >= 0 && !snapshotPanel.IsShiftHeld()) {
        EndAudition();
        TakeRecalledRegion();
        RefreshFromStore();
    }
    if (snapshotPanel.GetRecalled() != CkvovirelaineSnapshots::kByMouse || !snapshotPanel.IsShiftHeld())
        return;
    const std::string path = MakeTempMidiPath();
    if (path.empty()) {
        wiring.toolkit.ClearSelection();
    } else if (snapshotPanel.IsCtrlHeld()) {
        ExportTriggerMidi(path);
    } else {
        ExportMidi(path, CMidiExport::kAllVoices);
    }
}

// The file that a drag carries stands in a folder of this process and instance, so that two never overwrite
// each other's. It is made with the first drag, and goes with the application.
std::string CkvovirelaineApp::MakeTempMidiPath() {
    std::error_code ignored;
    if (!tempMidiFolder.empty() && std::filesystem::is_directory(tempMidiFolder, ignored))
        return tempMidiPath;
    std::string pattern = JoinPath(TemporaryFolder(), "sonorelle-" + std::to_string(getpid()) + "-XXXXXX");
    if (mkdtemp(pattern.data()) == nullptr) return {};
    tempMidiFolder = pattern;
    tempMidiPath = JoinPath(tempMidiFolder, kTempMidiName);
    return tempMidiPath;
}

void CkvovirelaineApp::RemoveTempMidi() {
    if (tempMidiFolder.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(tempMidiFolder, ignored);
}

} // namespace sonorelle
