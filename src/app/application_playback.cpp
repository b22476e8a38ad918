// The two time lines, the recording's and the host's, and what starts and stops playback.
//
// The recording begins at the host's sample masterPlaybackStart. It passes at the host's pace, or, when it
// follows the host's tempo, at hostTempo / melodyTempo of it. Three things drive the position: the host's
// transport; keys that trigger snapshots; and keys that choose the harmony of the running melody.

#include "app/application.h"

#include "app/beat_grid.h"
#include "app/snapshot_store.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kLeastNotice = 1024; // samples that a stop is given to fade in
constexpr float kTempoLimit = 999;    // of the host; not reached
constexpr std::int32_t kLowestKey = 0;
constexpr std::int32_t kHighestKey = 127;
constexpr std::int32_t kFreePlace = -1;
// Beyond these a voice is a crackle, or a standing tone (see CVoiceBank::SetSpeed).
constexpr double kSlowest = 0.01;
constexpr double kFastest = 100;
// A host that counts farther than this has lost its way.
constexpr double kFarthestSample = 1e15;

} // namespace

float CkvovirelaineApp::GetMelodyTempo() const {
    const SpinGuard guard(wiring.audioLock);
    return melodyTempo;
}

double CkvovirelaineApp::TempoRatio() const {
    if (!IsSyncingTempo()) return 1;
    const double ratio = static_cast<double>(GetHostTempo()) / static_cast<double>(GetMelodyTempo());
    return std::isfinite(ratio) && ratio > 0 ? std::clamp(ratio, kSlowest, kFastest) : 1;
}

double CkvovirelaineApp::MelodyFromHost(double hostSample) const {
    return (hostSample - GetMasterPlaybackStart()) * TempoRatio();
}

void CkvovirelaineApp::PassSpeed() {
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return; // passed at its end
    bank.SetSpeed(static_cast<float>(1 / TempoRatio()));
}

void CkvovirelaineApp::PassTempoGrid() {
    const float tempo = IsSyncingTempo() ? GetMelodyTempo() : GetHostTempo();
    view.SetTempoGrid(tempo, GetHostTempo(), GetMasterPlaybackStart(), GetTimeSigNumerator(),
                      GetTimeSigDenominator());
}

// The panel takes its offset off again, when the user sets a marker there.
void CkvovirelaineApp::ShowHostPosition(double hostSample) {
    playbackPanel.SetHostPosition(MelodyFromHost(hostSample) + GetMasterPlaybackStart(), hostSample);
}

std::int32_t CkvovirelaineApp::GetPosition() const {
    return TruncateToI32(position.load(std::memory_order_relaxed));
}

void CkvovirelaineApp::Start() {
    if (!HasAudio()) return;
    const SpinGuard guard(wiring.audioLock);
    mix.ClearClipped();
    if (!auditioning.load(std::memory_order_relaxed))
        view.SetPlayPosition(
            position.load(std::memory_order_relaxed) - hostLatency.load(std::memory_order_relaxed), true);
    stopPending.store(false, std::memory_order_relaxed);
    stopPosition.store(0, std::memory_order_relaxed);
    mix.Fade().FadeIn();
    if (!IsPlaying()) bank.RestartVoices();
    playing.store(true, std::memory_order_relaxed);
}

void CkvovirelaineApp::Stop() {
    if (!HasAudio()) return;
    const SpinGuard guard(wiring.audioLock);
    if (!IsPlaying()) return;
    mix.ClearClipped();
    playing.store(false, std::memory_order_relaxed);
    mix.Fade().FadeOut();
    bank.AllNotesOff();
    SetMidiOut(false);
    if (!auditioning.load(std::memory_order_relaxed))
        view.SetPlayPosition(position.load(std::memory_order_relaxed), false);
    driver.ResetLive();
    liveNote.store(-1, std::memory_order_relaxed);
}

void CkvovirelaineApp::StopAt(double frames) {
    const SpinGuard guard(wiring.audioLock);
    const double notice = frames > kLeastNotice && std::isfinite(frames) ? frames : kLeastNotice;
    stopPosition.store(position.load(std::memory_order_relaxed) + notice, std::memory_order_relaxed);
    mix.Fade().FadeOut();
    liveNote.store(-1, std::memory_order_relaxed);
    stopPending.store(true, std::memory_order_relaxed);
}

void CkvovirelaineApp::NextNote() {
    if (!HasAudio()) return;
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return;
    const double before = bank.GetPosition();
    bank.JumpToNextNote();
    if (bank.GetPosition() != before) TakeBankPosition();
}

void CkvovirelaineApp::PreviousNote() {
    if (!HasAudio()) return;
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return;
    const double before = bank.GetPosition();
    bank.JumpToPreviousNote();
    if (bank.GetPosition() != before) TakeBankPosition();
}

void CkvovirelaineApp::TakeBankPosition() {
    leadIn = 0;
    blockFill = 0;
    MoveTo(bank.GetPosition());
}

void CkvovirelaineApp::Rewind() {
    if (HasAudio()) GoTo(GetPlayStart());
}

void CkvovirelaineApp::SetPosition(std::int32_t offset) {
    if (!HasAudio()) return;
    const SpinGuard guard(wiring.audioLock);
    const double target = static_cast<double>(GetPlayStart()) + offset;
    if (position.load(std::memory_order_relaxed) != target) {
        driver.ResetLive();
        liveNote.store(-1, std::memory_order_relaxed);
    }
    GoTo(target);
}

// What was rendered for another place is dropped, so that the sound goes on from `target` in the next sample.
// Before the recording there is silence, of the length that is left to its beginning.
//
// Nothing is dropped when playback stands there already: a host that tells of a change where none was is not
// heard. This is asked here and not of the bank, whose own position runs ahead of what has been delivered by
// the rest of a block, and at another pace when the melody is stretched.
void CkvovirelaineApp::GoTo(double target) {
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return; // the bank is the export's
    const bool isThere = IsPlaying() && !bankAway && position.load(std::memory_order_relaxed) == target;
    if (!isThere) {
        if (IsPlaying() && sounding) seam.Cut();
        double reached = std::max(target, 0.0);
        leadIn = target < 0 ? TruncateToI32(std::round(-target / TempoRatio())) : 0;
        blockFill = 0;
        MoveTo(target);
        bank.Locate(reached);
        bankAway = false;
    }
    if (!auditioning.load(std::memory_order_relaxed)) view.SetPlayPosition(target, IsPlaying());
}

// The host's transport.

// An export has the voices for as long as it takes: meanwhile nothing follows the host, and a jump that was
// missed counts afterwards.
void CkvovirelaineApp::SynchronizeToHost(double samplePos, bool hostPlaying, bool changed,
                                         std::int32_t sampleFrames) {
    if (!HasAudio() || !(std::fabs(samplePos) <= kFarthestSample)) return;
    if (!exportLock.TryEnterCriticalSection()) {
        if (changed) missedChange.store(true, std::memory_order_relaxed);
        return;
    }
    const bool steered = !IsTriggeredBySnapshots() && !auditioning.load(std::memory_order_relaxed);
    exportLock.LeaveCriticalSection();
    if (!steered) return;
    const bool moved = missedChange.exchange(false, std::memory_order_relaxed) || changed;
    const SpinGuard guard(wiring.audioLock);
    triggerOffset.store(0, std::memory_order_relaxed);
    if (IsPlaying() && !moved && hostPlaying) return;
    if (hostPlaying) {
        FollowHostPlaying(samplePos, sampleFrames);
    } else {
        FollowHostStopped(samplePos, moved);
    }
}

// The host has started, or has jumped while it plays. Whether it stands within the melody is asked in the
// host's samples, also when the melody is stretched: a coarse test, which lets a slowed melody end early.
void CkvovirelaineApp::FollowHostPlaying(double samplePos, std::int32_t sampleFrames) {
    hostPosition.store(samplePos, std::memory_order_relaxed);
    transportStopped = true;
    const double begin = GetMasterPlaybackStart();
    const bool outside = samplePos + sampleFrames < begin || samplePos > begin + GetMelodyEnd();
    if (outside) {
        Stop();
    } else {
        SetPosition(
            TruncateToI32(TruncateToI32(MelodyFromHost(samplePos)) - static_cast<double>(GetPlayStart())));
    }
    if (!syncedOnce) ShowHostPosition(samplePos);
    syncedOnce = true;
    if (!outside) Start();
}

void CkvovirelaineApp::FollowHostStopped(double samplePos, bool changed) {
    syncedOnce = false;
    if (IsPlaying()) {
        hostPosition.store(samplePos, std::memory_order_relaxed);
        Stop();
        return;
    }
    if (changed && !transportStopped) {
        hostPosition.store(samplePos, std::memory_order_relaxed);
        GoTo(MelodyFromHost(samplePos));
        ShowHostPosition(samplePos);
        syncedOnce = true;
    }
    transportStopped = false;
}

// Keys.

bool CkvovirelaineApp::IsTriggerMode() const {
    const SpinGuard guard(wiring.audioLock);
    return IsTriggeredBySnapshots() && !auditioning.load(std::memory_order_relaxed);
}

bool CkvovirelaineApp::IsPlayedLive() {
    const SpinGuard guard(wiring.audioLock);
    return HasAudio() && !IsTriggeredBySnapshots() && driver.IsLive();
}

std::int32_t CkvovirelaineApp::OffsetInMelody(std::int32_t deltaFrames) const {
    return TruncateToI32(std::max(deltaFrames, 0) * TempoRatio());
}

void CkvovirelaineApp::NoteOn(std::int32_t note, std::int32_t deltaFrames, double hostSample) {
    if (!HasAudio()) return;
    if (IsTriggerMode()) {
        Trigger(note, std::max(deltaFrames, 0));
    } else if (IsPlayedLive()) {
        PressKey(note, deltaFrames, hostSample);
    }
}

// The position is set so far before the region that it begins at the key's own sample of the block.
//
// A quirk that stays: the snapshots' keys look back by the host's samples even when the melody is stretched,
// the region's own key by the melody's. Nothing but the silence before the region depends on it.
void CkvovirelaineApp::Trigger(std::int32_t note, std::int32_t deltaFrames) {
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return; // what is written stays one arrangement
    mix.ClearClipped();
    const std::int32_t offset = OffsetInMelody(deltaFrames);
    if (note == triggerNote.load(std::memory_order_relaxed)) {
        triggerOffset.store(offset, std::memory_order_relaxed);
    } else {
        if (!RecallByKey(note)) return;
        triggerOffset.store(deltaFrames, std::memory_order_relaxed);
    }
    SetPosition(-offset);
    Start();
}

// Copies the snapshot of a key; panels and view follow at the next poll.
bool CkvovirelaineApp::RecallByKey(std::int32_t key) {
    const std::int32_t index = snapshotPanel.FindByKey(key);
    if (index < 0 || !snapshotPanel.RecallQuietly(index)) return false;
    driver.RefreshFromStore();
    bank.AllNotesOff(); // they belong to what was there before
    HoldStoredValues();
    bank.SetTranspose(transpose);
    PassSpeed();
    ShowVoiceCount(); // a voice that comes in is heard at once, not with the next poll
    TakeRecalledRegion();
    recallPending.store(true, std::memory_order_relaxed);
    return true;
}

void CkvovirelaineApp::TakeRecalledRegion() {
    std::int32_t start = 0;
    std::int32_t end = 0;
    snapshotPanel.GetRegion(start, end);
    triggerNote.store(snapshotPanel.GetTriggerNote(), std::memory_order_relaxed);
    playStart.store(std::clamp(start, 0, GetMelodyEnd()), std::memory_order_relaxed);
    playEnd.store(std::clamp(end, GetPlayStart(), GetMelodyEnd()), std::memory_order_relaxed);
}

void CkvovirelaineApp::PressKey(std::int32_t note, std::int32_t deltaFrames, double hostSample) {
    const SpinGuard guard(wiring.audioLock);
    if (heldKeyCount >= kHeldKeys) return;
    triggerOffset.store(OffsetInMelody(deltaFrames), std::memory_order_relaxed);
    const std::int32_t key = KeyInMelody(note);
    if (key < kLowestKey || key > kHighestKey) return;
    *std::find(std::begin(heldKeys), std::end(heldKeys), kFreePlace) = key;
    ++heldKeyCount;
    const double place = MelodyFromHost(hostSample);
    liveNote.store(driver.NoteInput(heldKeys, place, heldKeyCount), std::memory_order_relaxed);
    liveNote.store(driver.UpdateLive(true, place), std::memory_order_relaxed);
}

std::int32_t CkvovirelaineApp::KeyInMelody(std::int32_t note) const {
    return TruncateToI32(static_cast<float>(std::clamp(note, kLowestKey, kHighestKey)) - transpose);
}

void CkvovirelaineApp::NoteOff(std::int32_t note, std::int32_t deltaFrames, double hostSample) {
    if (!HasAudio()) return;
    if (IsTriggerMode()) {
        if (note != triggerNote.load(std::memory_order_relaxed)) return;
        StopAt(OffsetInMelody(deltaFrames));
        triggerOffset.store(0, std::memory_order_relaxed);
    } else if (IsPlayedLive()) {
        ReleaseKey(note, deltaFrames, hostSample);
    }
}

void CkvovirelaineApp::ReleaseKey(std::int32_t note, std::int32_t deltaFrames, double hostSample) {
    const SpinGuard guard(wiring.audioLock);
    triggerOffset.store(OffsetInMelody(deltaFrames), std::memory_order_relaxed);
    const std::int32_t key = KeyInMelody(note);
    const double place = MelodyFromHost(hostSample);
    for (std::int32_t& held : heldKeys) {
        if (held != key || key < kLowestKey) continue;
        held = kFreePlace;
        --heldKeyCount;
        liveNote.store(driver.NoteInput(heldKeys, place, heldKeyCount), std::memory_order_relaxed);
    }
    if (heldKeyCount == 0) liveNote.store(driver.UpdateLive(false, place), std::memory_order_relaxed);
}

void CkvovirelaineApp::AllNotesOff(std::int32_t deltaFrames, double hostSample) {
    if (!HasAudio()) return;
    if (IsTriggerMode()) {
        StopAt(OffsetInMelody(deltaFrames));
        triggerOffset.store(0, std::memory_order_relaxed);
    } else if (IsPlayedLive()) {
        const SpinGuard guard(wiring.audioLock);
        FreeHeldKeys();
        triggerOffset.store(std::max(deltaFrames, 0), std::memory_order_relaxed);
        const double place = MelodyFromHost(hostSample);
        driver.NoteInput(heldKeys, place, kHeldKeys);
        driver.UpdateLive(false, place);
        liveNote.store(-1, std::memory_order_relaxed);
    }
}

void CkvovirelaineApp::FreeHeldKeys() {
    std::fill(std::begin(heldKeys), std::end(heldKeys), kFreePlace);
    heldKeyCount = 0;
}

// Tempo and rate.

void CkvovirelaineApp::SetHostTempo(float tempo, std::int32_t numerator, std::int32_t denominator) {
    if (!(tempo > 0 && tempo < kTempoLimit)) return;
    hostTempo.store(tempo, std::memory_order_relaxed);
    timeSigNumerator.store(numerator < 1 ? kUsualMetre : numerator, std::memory_order_relaxed);
    timeSigDenominator.store(denominator < 1 ? kUsualMetre : denominator, std::memory_order_relaxed);
    const SpinGuard guard(wiring.audioLock);
    if (melodyTempo == kUnknownTempo) melodyTempo = tempo;
    if (!HasAudio()) return;
    PassSpeed();
    melodyPanel.SetTempo(melodyTempo);
    PassTempoGrid();
}

void CkvovirelaineApp::SetMelodyTempo(float tempo) {
    if (!(tempo > 0) || !std::isfinite(tempo)) return;
    const SpinGuard guard(wiring.audioLock);
    const float before = melodyTempo;
    melodyTempo = tempo;
    if (GetHostTempo() == kUnknownTempo) hostTempo.store(tempo, std::memory_order_relaxed);
    if (!HasAudio()) return;
    PassSpeed();
    melodyPanel.SetTempo(tempo);
    const float factor = before * GetTempoRescaleSyncFactor() / tempo;
    if (factor > 0 && std::isfinite(factor)) tempoRescaleSyncFactor.store(factor, std::memory_order_relaxed);
    PassTempoGrid();
}

// The anchor keeps its time, and what follows from it is done at once: no interface may be running. The rate
// is no part of what can be undone.
void CkvovirelaineApp::SetSampleRate(float rate) {
    const float before = sampleRate.load(std::memory_order_relaxed);
    if (!(rate > 0) || !std::isfinite(rate)) return;
    hostRateKnown.store(true, std::memory_order_relaxed);
    if (rate == before) return;
    sampleRate.store(rate, std::memory_order_relaxed);
    if (!HasAudio()) return;
    playbackPanel.SetSampleRate(rate);
    playbackPanel.SetOffset(playbackPanel.GetOffset() * static_cast<double>(rate) /
                            static_cast<double>(before));
    view.SetSampleRate(rate);
    const SpinGuard guard(wiring.audioLock);
    TakePlaybackValues();
    Stop();
    if (!IsTriggeredBySnapshots()) TakeAnchor();
}

// The playback panel.

void CkvovirelaineApp::OnPlaybackChanged() {
    TakePlaybackValues();
    Stop();
    const bool modeChanged = choirPanel.SetAllowLive(!IsTriggeredBySnapshots());
    if (!IsTriggeredBySnapshots()) TakeAnchor();
    if (modeChanged) OnChoirSettingsChanged();
    PushUndo();
    wiring.toolkit.RequestRedraw();
}

void CkvovirelaineApp::TakePlaybackValues() {
    std::int32_t start = 0;
    std::int32_t end = 0;
    playbackPanel.GetRegion(start, end);
    playStart.store(start, std::memory_order_relaxed);
    playEnd.store(end, std::memory_order_relaxed);
    triggerNote.store(playbackPanel.GetTriggerNote(), std::memory_order_relaxed);
    snapshotPanel.SetTriggerNote(playbackPanel.GetTriggerNote());
    snapshotPanel.SetRegion(start, end);
    view.SetPlayRegion(start, end);
    doSnapshotTrigger.store(playbackPanel.GetMode() == CkvovirelainePlaybackSettings::kMidi,
                            std::memory_order_relaxed);
    syncTempoToHost.store(playbackPanel.GetSyncTempo(), std::memory_order_relaxed);
    PassSpeed();
}

void CkvovirelaineApp::TakeAnchor() {
    Stop();
    if (playbackPanel.IsOffsetSet()) {
        masterPlaybackStart.store(playbackPanel.GetOffset(), std::memory_order_relaxed);
        if (IsSyncingTempo())
            tempoRescaleSyncFactor.store(static_cast<float>(TempoRatio()), std::memory_order_relaxed);
    }
    PassTempoGrid();
    const double host = hostPosition.load(std::memory_order_relaxed);
    SetPosition(TruncateToI32(MelodyFromHost(host) - GetPlayStart()));
    ShowHostPosition(host);
}

} // namespace sonorelle
