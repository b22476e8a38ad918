// The harmony's panels, the ways in which the choir is run, and what undo, redo and recall bring back.
//
// The panels' values are loaded into the driver and its voices made anew; what comes of it goes to bank, view
// and panels. Three styles of that: intelligent (chords are found first), parallel (intervals by hand), and
// all others. In Edit nothing is run, since the user moves single notes; in the two live modes the driver
// runs in the intelligent style, and keys choose its harmony.

#include "app/application.h"

#include "app/snapshot_store.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

constexpr std::int32_t kVoicesForChordTips = 3; // two voices are no chord
constexpr float kNoteHeight = 1;                // semitones

// The shorter of the ways from one root to another: at most six semitones, up or down.
std::int32_t ShortestShift(std::int32_t fromRoot, std::int32_t toRoot) {
    std::int32_t shift = toRoot - fromRoot;
    if (std::abs(shift - kSemitonesInOctave) < std::abs(shift)) shift -= kSemitonesInOctave;
    if (std::abs(shift + kSemitonesInOctave) < std::abs(shift)) shift += kSemitonesInOctave;
    return shift;
}

} // namespace

void CkvovirelaineApp::OnChoirSettingsChanged() { ChoirChanged(false); }
void CkvovirelaineApp::OnMelodyPropertiesChanged() { ChoirChanged(true); }

void CkvovirelaineApp::ChoirChanged(bool byMelody) {
    if (!HasAudio()) return;
    const std::int32_t mode = choirPanel.GetMode();
    melodyChanged = false;
    if (!updating) {
        melodyChanged = byMelody;
        EndAudition();
        if (melodyPanel.GetTempo() != GetMelodyTempo() && GetMelodyTempo() != kUnknownTempo) {
            SetMelodyTempo(melodyPanel.GetTempo());
            return;
        }
        if (melodyChanged) {
            choirPanel.SetScale(melodyPanel.GetScale());
            choirPanel.SetRoot(melodyPanel.GetRoot());
        }
        TakeTransposeFromPanels();
        PassTranspose();
        snapshotPanel.SetEnabled(true);
        EnterMode(mode);
        PushUndo();
        {
            const SpinGuard guard(wiring.audioLock);
            bank.AllNotesOff();
        }
        wiring.toolkit.RequestRedraw();
    }
    lastMode = mode;
}

// A root on the choir's panel moves the whole arrangement, while the driver keeps working in the melody's
// key.
void CkvovirelaineApp::TakeTransposeFromPanels() {
    const SpinGuard guard(wiring.audioLock);
    transpose = static_cast<float>(ShortestShift(melodyPanel.GetRoot(), choirPanel.GetRoot()));
}

float CkvovirelaineApp::GetTranspose() const {
    const SpinGuard guard(wiring.audioLock);
    return transpose;
}

void CkvovirelaineApp::SetTranspose(float semitones) {
    if (!HasAudio() || !std::isfinite(semitones) || semitones == GetTranspose()) return;
    {
        const SpinGuard guard(wiring.audioLock);
        transpose = semitones;
        HoldStoredValues();
    }
    PassTranspose();
    ReloadPanels();
    PushUndo();
}

void CkvovirelaineApp::EnterMode(std::int32_t mode) {
    ShowMode(mode);
    switch (mode) {
    case kModeIntelligent:
        RunIntelligent();
        break;
    case kModeParallel:
        RunManual();
        break;
    case kModeEdit:
    case kModeEdit + 1:
        ShowVoices();
        break;
    case kModeHarmonies:
        EnterLiveHarmonies();
        break;
    case kModePitches:
        EnterLivePitches();
        break;
    default:
        RunMixed(mode);
        break;
    }
    ShowVoiceCount();
    if (mode != kModeIntelligent && !IsLiveMode(mode)) view.SetChordTips(VoiceCount() >= kVoicesForChordTips);
}

// What the view and the panels let the user do in a mode.
void CkvovirelaineApp::ShowMode(std::int32_t mode) {
    const bool live = IsLiveMode(mode);
    const bool edit = PageOfMode(mode) == ChoirPage::kEdit;
    if (!live) {
        const SpinGuard guard(wiring.audioLock);
        driver.StartLive(false, false);
        driver.SetRecordLive(false);
        FreeHeldKeys(); // nobody listens to their release any more
    }
    choirPanel.SetLiveControlsActive(live);
    view.SetNoteEdit(edit);
    view.SetChordEdit(mode == kModeIntelligent);
    view.SetChordTips(false);
    view.SetBackground(live   ? PitchViewBackground::kLive
                       : edit ? PitchViewBackground::kEdit
                              : PitchViewBackground::kNormal);
    melodyPanel.SetActive(!live && !edit);
    snapshotPanel.SetEnabled(!live);
}

// The three ways of running the choir.

void CkvovirelaineApp::LoadDriverFromPanels() {
    driver.SetArrangement(choirPanel.GetDriverStyle().arrangement);
    driver.SetRoot(melodyPanel.GetRoot());
    driver.SetMelodyScale(melodyPanel.GetScale());
    driver.SetSnapToScale(choirPanel.GetSnapToScale());
    driver.SetMapScale(choirPanel.GetSnapToScale());
    driver.SetHarmonyScale(choirPanel.GetScale());
}

// The sound goes on in the old voices until the new ones are made. False when a key has recalled a snapshot
// meanwhile: that is what holds then, and the next poll shows it.
bool CkvovirelaineApp::RunDriver() {
    CChoirRun run;
    {
        const SpinGuard guard(wiring.audioLock);
        if (!driver.BeginRun(run)) { // no memory for it: at once, then
            driver.Run();
            return true;
        }
    }
    run.Make();
    const SpinGuard guard(wiring.audioLock);
    return driver.FinishRun(run);
}

void CkvovirelaineApp::RunIntelligent() {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetManualOnly(false);
        driver.SetStyle(kStyleIntelligent);
        const bool anew = choirPanel.GetChordsChanged();
        driver.SetChordsDirty(anew || melodyChanged || chordsDirty);
        melodyChanged = false;
        chordsDirty = false;
        view.SetRebuild(true);
        driver.SetAutoKey(false);
        LoadDriverFromPanels();
        driver.SetSpread(choirPanel.GetVoiceRange());
        driver.SetVoiceRange(choirPanel.GetVoiceArrangement());
    }
    if (!RunDriver()) {
        view.SetRebuild(false); // the notes that stand there are those to draw until the next poll
        return;
    }
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetChordsDirty(false);
    }
    FinishRun();
}

void CkvovirelaineApp::RunManual() {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetManualOnly(true);
        driver.SetStyle(kStyleParallel);
        LoadDriverFromPanels();
        for (std::int32_t voice = 0; voice < kVoices; ++voice)
            driver.SetManualInterval(voice, IntervalAtListPosition(choirPanel.GetInterval(voice)));
        driver.Run();
    }
    FinishRun();
}

void CkvovirelaineApp::RunMixed(std::int32_t mode) {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetManualOnly(false);
        driver.SetStyle(mode == kModeBlock         ? kStyleBlock
                        : mode == kModeFauxbourdon ? kStyleFauxbourdon
                        : mode == kModeOrganum     ? kStyleOrganum
                        : mode == kModeHarmonies   ? kStyleIntelligent
                                                   : mode);
        LoadDriverFromPanels();
        driver.Run();
    }
    FinishRun();
}

void CkvovirelaineApp::RunByMode() {
    switch (const std::int32_t mode = choirPanel.GetMode()) {
    case kModeIntelligent:
        chordsDirty = true;
        RunIntelligent();
        break;
    case kModeParallel:
        RunManual();
        break;
    case kModeEdit:
    case kModeEdit + 1:
    case kModeHarmonies:
    case kModePitches:
        ShowVoices();
        break;
    default:
        RunMixed(mode);
        break;
    }
}

void CkvovirelaineApp::FinishRun() {
    PassTranspose();
    if (GetMelodyTempo() != kUnknownTempo) SetMelodyTempo(melodyPanel.GetTempo());
    ShowScale();
    ShowVoices();
    view.SetRebuild(false);
}

// What a document brings may be any number.
std::int32_t CkvovirelaineApp::TransposedSteps() const {
    const SpinGuard guard(wiring.audioLock);
    constexpr auto kMost = static_cast<std::int32_t>(CVoiceBank::kLargestTranspose);
    return std::clamp(TruncateToI32(static_cast<double>(transpose)), -kMost, kMost);
}

void CkvovirelaineApp::PassTranspose() {
    const SpinGuard guard(wiring.audioLock);
    bank.SetTranspose(transpose);
    view.SetTransposeShift(transpose);
}

// Live.

// The chords stay, those that were chosen or played by hand too.
void CkvovirelaineApp::RunWithPresentChords() {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetChordsDirty(false);
    }
    RunDriver();
}

// A take that is being recorded while the melody plays is not disturbed by a new run.
void CkvovirelaineApp::EnterLiveHarmonies() {
    {
        const SpinGuard guard(wiring.audioLock);
        choirPanel.SetMode(kModeIntelligent);
        const std::int32_t voices = driver.VoiceCount();
        const std::int32_t arrangement = voices == kVoices               ? kFourVoices
                                         : voices == kVoicesForChordTips ? kThreeVoices
                                                                         : kTwoVoices;
        const bool busy = (driver.GetRecordLive() || choirPanel.IsRecording()) && IsPlaying();
        driver.SetManualOnly(false);
        driver.SetStyle(kStyleIntelligent);
        driver.SetArrangement(arrangement);
        choirPanel.SetDriverStyle(kStyleIntelligent, arrangement);
        StartLive(kModeHarmonies);
        if (busy) return;
    }
    RunWithPresentChords();
    ShowVoices();
}

void CkvovirelaineApp::EnterLivePitches() {
    bool busy = false;
    bool anew = false;
    {
        const SpinGuard guard(wiring.audioLock);
        busy = (driver.GetRecordLive() || choirPanel.IsRecording()) && IsPlaying();
        anew = driver.GetStyle() != kStyleIntelligent || driver.VoiceCount() != kVoices;
        if (anew) {
            choirPanel.SetMode(kModeIntelligent);
            choirPanel.SetStyle(0);
            driver.SetManualOnly(false);
            driver.SetStyle(kStyleIntelligent);
            driver.SetArrangement(kFourVoices);
        }
    }
    if (anew) RunWithPresentChords();
    StartLive(kModePitches);
    if (!busy) ShowVoices();
}

void CkvovirelaineApp::StartLive(std::int32_t mode) {
    const SpinGuard guard(wiring.audioLock);
    choirPanel.SetMode(mode);
    driver.StartLive(true, mode == kModeHarmonies);
    driver.SetRecordLive(choirPanel.IsRecording());
}

// What is shown.

void CkvovirelaineApp::ShowScale() {
    std::array<std::int32_t, CkvoPitchView::kMostScaleTones> tones{};
    std::size_t count = 0;
    const SpinGuard guard(wiring.audioLock);
    for (std::int32_t pitchClass = 0; pitchClass < kSemitonesInOctave && count < tones.size(); ++pitchClass)
        if (driver.IsInScale(pitchClass)) tones[count++] = pitchClass;
    view.SetScale({tones.data(), count}, driver.GetRoot());
}

void CkvovirelaineApp::ShowVoices() {
    const SpinGuard guard(wiring.audioLock);
    const std::int32_t count = driver.GetNoteCount();
    if (view.GetVoiceCount() != driver.VoiceCount() || view.GetNoteCount() != count)
        view.Resize(driver.VoiceCount(), count);
    for (std::int32_t note = 0; note < count; ++note) ShowNote(note);
    wiring.toolkit.RequestRedraw();
}

void CkvovirelaineApp::ShowNote(std::int32_t note) {
    const SpinGuard guard(wiring.audioLock);
    const auto start = static_cast<float>(driver.GetNoteStart(note));
    const auto length = static_cast<float>(driver.GetNoteLength(note));
    for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice) {
        float deviation = 0;
        float gain = 1;
        const std::int32_t pitch = driver.GetVoice(note, voice, deviation, gain, false);
        view.SetNote(note, voice, start, static_cast<float>(pitch), deviation, gain, length, kNoteHeight,
                     note);
    }
    const ChordRecord chord = driver.GetChord(note);
    view.SetChord(note, chord.root, TypeOf(chord));
}

// A recall by key may change it at any time.
std::int32_t CkvovirelaineApp::VoiceCount() const {
    const SpinGuard guard(wiring.audioLock);
    return driver.VoiceCount();
}

void CkvovirelaineApp::ShowVoiceCount() {
    voicePanel.SetVisibleVoices(VoiceCount());
    ShowAudibleVoices();
}

void CkvovirelaineApp::ReloadPanels() {
    updating = true;
    {
        const SpinGuard guard(wiring.audioLock);
        melodyPanel.SetRoot(driver.GetRoot());
        melodyPanel.SetScale(driver.GetMelodyScale());
        if (melodyTempo != kUnknownTempo) melodyPanel.SetTempo(melodyTempo);
        const std::int32_t shift = TransposedSteps();
        choirPanel.SetRoot(PitchClass(driver.GetRoot() + shift));
        choirPanel.SetScale(driver.GetHarmonyScale());
        choirPanel.SetSnapToScale(driver.GetSnapToScale());
        choirPanel.SetDriverStyle(driver.GetStyle(), driver.GetArrangement());
        choirPanel.SetVoiceArrangement(driver.GetVoiceRange());
        choirPanel.SetVoiceRange(driver.GetSpread());
        for (std::int32_t voice = 0; voice < kVoices; ++voice)
            choirPanel.SetInterval(voice, ListPositionOfInterval(driver.GetManualInterval(voice)));
    }
    ShowScale();
    ShowVoices();
    updating = false;
}

// Undo.

void CkvovirelaineApp::RefreshFromStore() {
    if (!HasAudio()) return;
    ShowStoredArrangement();
    const SpinGuard guard(wiring.audioLock);
    bank.AllNotesOff();
}

// Without the end of the notes that go out: those of a snapshot that a key has recalled sound already.
void CkvovirelaineApp::ShowStoredArrangement() {
    EndAudition();
    {
        const SpinGuard guard(wiring.audioLock);
        HoldStoredValues();
        driver.DropRecording(); // the arrangement that came back counts, not what was played meanwhile
        driver.RefreshFromStore();
        choirPanel.ReadModeFromStore();
        driver.StartLive(false, false);
        driver.SetRecordLive(false);
    }
    const std::int32_t mode = choirPanel.GetMode();
    voicePanel.Refresh();
    ShowPlayRegion();
    PassTranspose();
    PassSpeed();
    PassTempoGrid();
    ShowMode(mode);
    ReloadPanels();
    if (IsLiveMode(mode)) {
        ReturnToLive(mode);
    } else if (PageOfMode(mode) == ChoirPage::kEdit) {
        view.SetChordTips(VoiceCount() >= kVoicesForChordTips);
    }
    ShowVoiceCount();
    wiring.toolkit.RequestRedraw();
}

// The "Initial Snapshot" is older than any tempo, and a document may hold anything: a tempo that is known
// stays known. The panel has the last one.
void CkvovirelaineApp::HoldStoredValues() {
    const SpinGuard guard(wiring.audioLock);
    if (!(melodyTempo > 0) || !std::isfinite(melodyTempo))
        melodyTempo = GetHostTempo() > 0 ? melodyPanel.GetTempo() : kUnknownTempo;
    constexpr float kFarthest = CVoiceBank::kLargestTranspose;
    transpose = std::isfinite(transpose) ? std::clamp(transpose, -kFarthest, kFarthest) : 0;
}

void CkvovirelaineApp::ReturnToLive(std::int32_t mode) {
    {
        const SpinGuard guard(wiring.audioLock);
        choirPanel.SetMode(kModeIntelligent);
        const std::int32_t voices = driver.VoiceCount();
        driver.SetManualOnly(false);
        driver.SetStyle(kStyleIntelligent);
        driver.SetArrangement(voices == kVoices               ? kFourVoices
                              : voices == kVoicesForChordTips ? kThreeVoices
                                                              : kTwoVoices);
    }
    RunWithPresentChords();
    StartLive(mode);
    ShowVoices();
}

bool CkvovirelaineApp::Undo() {
    {
        const SpinGuard guard(wiring.audioLock);
        if (!wiring.store.Undo()) return false;
    }
    RefreshFromStore();
    return true;
}

bool CkvovirelaineApp::Redo() {
    {
        const SpinGuard guard(wiring.audioLock);
        if (!wiring.store.Redo()) return false;
    }
    RefreshFromStore();
    return true;
}

void CkvovirelaineApp::PushUndo() {
    const SpinGuard guard(wiring.audioLock);
    wiring.store.PushUndo();
}

} // namespace sonorelle
