// From a recording to a session that can be played:
//   1. the analysis, from its cache or on a thread of its own while the toolkit's events run;
//   2. the first arrangement, whose key stays for all later ones;
//   3. view, bank and panels filled from it;
//   4. "Initial Snapshot", so that the way back to the beginning is never lost.

#include "app/application.h"

#include "analysis/analysis_job.h"
#include "app/snapshot_store.h"
#include "formats/audio_file.h"
#include "platform/file_system.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

namespace sonorelle {

namespace {

constexpr const char* kInitialSnapshot = "Initial Snapshot";
// How the arrangement of a new recording is set.
constexpr std::int32_t kFirstVoiceRange = 1; // one harmony voice above the melody
constexpr float kFirstSpread = 0.6F;
constexpr std::array<std::int32_t, CChoirDriver::kVoiceSlots> kFirstIntervals = {0, -2, 2, 5}; // scale steps
// Of the pitch drag: it lands on whole semitones.
constexpr float kPitchGrid = 1.0F;
constexpr float kWholeMelody = 1.0F; // zoom

// The spinner's tick.
constexpr std::chrono::milliseconds kSpinnerTick{100};
constexpr std::int32_t kSpinnerStep = 45; // degrees
constexpr std::int32_t kFullTurn = 360;
// Between two looks at the events while an analysis runs: a bar that moves smoothly costs nothing.
constexpr std::chrono::milliseconds kEventInterval{10};

constexpr float kRateWithoutFile = 44100; // Hz

} // namespace

CkvovirelaineApp::CkvovirelaineApp(const ApplicationWiring& applicationWiring)
    : wiring(applicationWiring), driver(analyzer, RegisterOwnElements()), choirPanel(wiring.audioLock),
      snapshotPanel(wiring.store, wiring.audioLock) {
    choirPanel.RegisterWith(wiring.store);
    if (wiring.audio != nullptr) channels = wiring.audio->GetNumChannels();
    const auto size = static_cast<std::size_t>(wiring.blockSize);
    voiceSamples.resize(kVoices * voiceBuffers[0].size() * size);
    for (std::size_t v = 0; v < voiceBuffers.size(); ++v)
        for (std::size_t side = 0; side < voiceBuffers[v].size(); ++side)
            voiceBuffers[v][side] = voiceSamples.data() + (v * voiceBuffers[v].size() + side) * size;
    ConnectPanels();
}

CkvovirelaineApp::~CkvovirelaineApp() {
    CancelAnalysis();
    RemoveTempMidi();
}

// Before the driver registers its own: the order of the elements is the layout of saved work.
CSnapshotStore& CkvovirelaineApp::RegisterOwnElements() {
    constexpr float kFirstVersion = 1.0F;
    wiring.store.AddElement(&melodyTempo, sizeof melodyTempo, kFirstVersion, true, this);
    wiring.store.AddElement(&transpose, sizeof transpose, kFirstVersion, true, this);
    return wiring.store;
}

void CkvovirelaineApp::ConnectPanels() {
    view.SetCallback([this](CkvoPitchView&) { OnViewEvent(); });
    choirPanel.SetOnChanged([this] { OnChoirSettingsChanged(); });
    melodyPanel.SetCallback([this](CkvovirelaineMelodyProperties&) { OnMelodyPropertiesChanged(); });
    voicePanel.SetCallback([this](CkvovirelaineVoiceSettings&) { OnVoiceSettingsChanged(); });
    playbackPanel.SetOnChanged([this] { OnPlaybackChanged(); });
    tuningPanel.SetCallback([this](CkvovirelaineTuningFreq&) { OnTuningChanged(); });
    snapshotPanel.SetOnChanged([this] { OnSnapshotDragged(); });
}

std::int32_t CkvovirelaineApp::Run() {
    mix.ClearClipped();
    panelsActive = false;
    if (wiring.audio == nullptr || !wiring.audio->IsOpen()) {
        playbackPanel.SetSampleRate(kRateWithoutFile);
        return kOk;
    }
    if (Analyse() != kOk) return kCancelled;
    channels = wiring.audio->GetNumChannels();
    playbackPanel.SetSampleRate(ShownSampleRate());
    MakeArrangement();
    ShowCurve();
    if (!SetUpBank()) return kCancelled;
    ShowNotes();
    FillPanels();
    panelsActive = true;
    snapshotPanel.Add(kInitialSnapshot);
    audioReady.store(true, std::memory_order_relaxed);
    wiring.toolkit.RequestRedraw();
    return kOk;
}

// Times are shown as the host plays them, in its samples; without a host that tells its rate, in the file's.
float CkvovirelaineApp::ShownSampleRate() const {
    return hostRateKnown.load(std::memory_order_relaxed) ? sampleRate.load(std::memory_order_relaxed)
                                                         : wiring.audio->GetSampleRate();
}

// A part of a file has no cache: its times are its own.
std::int32_t CkvovirelaineApp::Analyse() {
    if (analyzer.Attach(wiring.audio) != kOk) return kCancelled;
    const bool partial = wiring.audio->HasLimits();
    const bool keep = wiring.useCache && !partial;
    if (wiring.useCache && analyzer.ReadCacheHeader() == 0) {
        if (keep && analyzer.LoadCache() != 0) {
            cacheLoaded = true;
            return kOk;
        }
        analyzer.CloseCache();
    }
    AnalysisJob job(analyzer);
    analysisState.store(1, std::memory_order_relaxed);
    const bool complete = WaitForAnalysis(job) && job.Join() == kOk;
    analysisState.store(complete ? 0 : kCancelled, std::memory_order_relaxed);
    if (!complete) return kCancelled;
    cacheWritten = analyzer.StoreResults(wiring.hosted && keep) != 0;
    return analyzer.IsAnalysed() ? kOk : kCancelled;
}

// False when it is to end before its time.
bool CkvovirelaineApp::WaitForAnalysis(AnalysisJob& job) {
    CkvoToolkit& toolkit = wiring.toolkit;
    const bool shown = toolkit.IsInterfaceThread();
    const auto start = std::chrono::steady_clock::now();
    if (shown) toolkit.OpenProgress();
    bool cancelled = false;
    do {
        if (shown) {
            const auto ticks = (std::chrono::steady_clock::now() - start) / kSpinnerTick;
            const auto degrees = static_cast<std::int32_t>(ticks * kSpinnerStep % kFullTurn);
            toolkit.ShowProgress(job.GetPercent(), degrees);
            toolkit.RunEvents();
            if (toolkit.IsProgressCancelled()) CancelAnalysis();
        }
        cancelled = cancelAnalysis.load(std::memory_order_relaxed);
    } while (!cancelled && !job.WaitFor(kEventInterval));
    if (cancelled) job.Cancel();
    if (shown) toolkit.CloseProgress();
    return !cancelled;
}

void CkvovirelaineApp::MakeArrangement() {
    const SpinGuard guard(wiring.audioLock);
    driver.SetSnapToScale(true);
    driver.SetMapScale(true);
    driver.SetVoiceRange(kFirstVoiceRange);
    driver.SetSpread(kFirstSpread);
    for (std::size_t voice = 0; voice < kFirstIntervals.size(); ++voice)
        driver.SetManualInterval(static_cast<std::int32_t>(voice), kFirstIntervals[voice]);
    driver.Run();
    driver.SetAutoKey(false);
    driver.SetFollowScale(false);
}

// A recording without a frame, all silence, is as long as its file.
void CkvovirelaineApp::ShowCurve() {
    const AnalysisFrame* frames = nullptr;
    const std::int32_t count = analyzer.GetFrames(frames);
    std::vector<PitchCurvePoint> curve;
    curve.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (std::int32_t i = 0; i < count; ++i) {
        const AnalysisFrame& frame = frames[i];
        curve.push_back({frame.position, frame.pitch, std::sqrt(frame.level), frame.voiced != 0});
    }
    view.SetCurve(curve);
    const std::int32_t end = count > 0 ? frames[count - 1].position : analyzer.GetLength();
    melodyEnd.store(end, std::memory_order_relaxed);
    view.SetTuningOffset(analyzer.GetTuningOffset());
}

void CkvovirelaineApp::ShowNotes() {
    view.SetSampleRate(ShownSampleRate());
    view.SetPitchGrid(kPitchGrid);
    view.SetTotal(0, GetMelodyEnd());
    view.SetZoom(kWholeMelody);
    ShowScale();
    ShowVoices();
    view.ResetView();
}

bool CkvovirelaineApp::SetUpBank() {
    const SpinGuard guard(wiring.audioLock);
    if (bank.Init(driver) != kOk) return false;
    bank.SetBlockSize(wiring.blockSize);
    MoveTo(0);
    playing.store(false, std::memory_order_relaxed);
    loop.store(false, std::memory_order_relaxed);
    return true;
}

void CkvovirelaineApp::FillPanels() {
    ReloadPanels();
    choirPanel.GetChordsChanged(); // these chords are new: those that the user chooses next are to stay
    ShowVoiceCount();
    playStart.store(0, std::memory_order_relaxed);
    playEnd.store(GetMelodyEnd(), std::memory_order_relaxed);
    playbackPanel.SetMelodyLength(GetMelodyEnd());
    ShowPlayRegion();
    tuningPanel.SetFrequency(analyzer.GetTuningFrequency());
    OnTuningChanged();
    PushVoiceSettings();
}

void CkvovirelaineApp::ShowPlayRegion() {
    snapshotPanel.SetTriggerNote(triggerNote.load(std::memory_order_relaxed));
    playbackPanel.SetTriggerNote(triggerNote.load(std::memory_order_relaxed));
    snapshotPanel.SetRegion(GetPlayStart(), GetPlayEnd());
    playbackPanel.SetRegion(GetPlayStart(), GetPlayEnd());
    view.SetPlayRegion(GetPlayStart(), GetPlayEnd());
}

void CkvovirelaineApp::Poll() {
    if (!HasAudio()) return;
    FlushPending();
    if (!auditioning.load(std::memory_order_relaxed)) {
        shownPosition = position.load(std::memory_order_relaxed);
        view.SetPlayPosition(shownPosition, IsPlaying());
        if (GetFollowCursor()) view.FollowPosition();
    }
    ++pollCount;
    for (std::int32_t voice = 0; voice < kVoices; ++voice)
        voicePanel.SetPeak(voice, mix.GetPeak(voice, 0), mix.GetPeak(voice, 1));
    mix.DecayPeaks();
    wiring.toolkit.RequestRedraw();
}

// What the audio thread has done to the arrangement, brought to panels and view.
void CkvovirelaineApp::FlushPending() {
    if (recallPending.exchange(false, std::memory_order_relaxed)) {
        ShowStoredArrangement();
    }
    const std::int32_t reached = liveNote.load(std::memory_order_relaxed);
    if (reached < 0 || !driver.IsLive()) {
        liveShown = -1;
        return;
    }
    // Playback may have gone back meanwhile, and other keys may have given the same note other voices.
    const std::int32_t first = reached > liveShown ? liveShown + 1 : reached == liveShown ? reached : 0;
    for (std::int32_t note = first; note <= reached; ++note) ShowNote(note);
    ShowDetectedChord(reached);
    liveShown = reached;
}

} // namespace sonorelle
