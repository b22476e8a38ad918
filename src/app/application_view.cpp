// What the user does in the pitch view: notes moved, cut, joined and switched off, chords chosen, single
// notes heard.

#include "app/application.h"

#include "harmony/chord_names.h"
#include "platform/saturate.h"

#include <cmath>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

constexpr std::int32_t kChordsOfNote = 7; // those of the scale that hold it
constexpr std::int32_t kTriadsOfNote = 3; // the first of them; behind them the four-note chords
constexpr bool kUseFlats = false;

} // namespace

void CkvovirelaineApp::OnViewEvent() {
    PitchViewEventData data{};
    const std::int32_t event = view.GetEvent(data);
    if (!HasAudio()) return;
    switch (event) {
    case kEventChordClicked:
        if (choirPanel.GetMode() == kModeIntelligent) ChooseChord(data[0]);
        break;
    case kEventDragEnded:
        EndDrag(data[0], data[1]);
        break;
    case kEventNoteMoved:
        ChangeNotePitch(data[0], data[1]);
        BeginAudition(data[0]);
        break;
    case kEventNotePressed:
        BeginAudition(data[0]);
        break;
    case kEventNoteReleased:
        EndAudition();
        break;
    case kEventTempoDragged:
        SetMelodyTempo(view.GetTempoGrid());
        break;
    case kEventPlayRegionMoved:
        TakeViewRegion(data[0], data[1]);
        break;
    case kEventGainChanged:
        SetNoteGain(data[0], data[1], static_cast<float>(data[2]));
        break;
    case kEventCut:
        SplitAt(data[0]);
        break;
    case kEventJoin:
        MergeNotes(data[0], data[1]);
        break;
    default:
        break;
    }
    wiring.toolkit.RequestRedraw();
}

void CkvovirelaineApp::SetCutMode(bool on) {
    cutMode.store(on, std::memory_order_relaxed);
    view.SetCutMode(on);
}

// Notes that were dragged together are told one by one, and are one step of undo.
void CkvovirelaineApp::EndDrag(std::int32_t note, std::int32_t voice) {
    ChangeNotePitch(note, voice);
    EndAudition();
    const auto& dragged = view.GetSelection();
    if (dragged.empty() || dragged.back() == PitchViewSelection{note, voice}) PushUndo();
}

void CkvovirelaineApp::ChangeNotePitch(std::int32_t note, std::int32_t voice) {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetVoicePitch(note, voice, TruncateToI32(std::round(view.GetNotePitch(note, voice))));
    }
    ShowDetectedChord(note);
}

bool CkvovirelaineApp::IsNoteOfVoice(std::int32_t note, std::int32_t voice) const {
    return HasAudio() && note >= 0 && note < driver.GetNoteCount() && voice >= 0 && voice < VoiceCount();
}

bool CkvovirelaineApp::SetNotePitch(std::int32_t note, std::int32_t voice, std::int32_t midiPitch) {
    constexpr std::int32_t kHighestPitch = 127;
    if (midiPitch < 0 || midiPitch > kHighestPitch || !IsNoteOfVoice(note, voice)) return false;
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetVoicePitch(note, voice, midiPitch);
    }
    ShowNote(note);
    ShowDetectedChord(note);
    PushUndo();
    return true;
}

bool CkvovirelaineApp::SetNoteGain(std::int32_t note, std::int32_t voice, float gain) {
    if (!(gain >= 0 && gain <= 1) || !IsNoteOfVoice(note, voice)) return false;
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetVoiceGain(note, voice, gain);
    }
    ShowNote(note);
    PushUndo();
    return true;
}

// The chord that the voices now form.
void CkvovirelaineApp::ShowDetectedChord(std::int32_t note) {
    std::int32_t pitches[kVoices] = {-1, -1, -1, -1};
    {
        const SpinGuard guard(wiring.audioLock);
        for (std::int32_t voice = 0; voice < driver.VoiceCount(); ++voice) {
            float deviation = 0;
            float gain = 0;
            pitches[voice] = driver.GetVoice(note, voice, deviation, gain, false);
        }
    }
    const ChordRecord chord = CConsortier::RecogniseChord(pitches[0], pitches[1], pitches[2], pitches[3]);
    view.SetDetectedChord(note, chord.root, TypeOf(chord));
    view.SetChordDisplay(chord.root, TypeOf(chord));
}

void CkvovirelaineApp::TakeViewRegion(std::int32_t start, std::int32_t end) {
    if (auditioning.load(std::memory_order_relaxed)) {
        savedStart = start;
        savedEnd = end;
    } else {
        playStart.store(start, std::memory_order_relaxed);
        playEnd.store(end, std::memory_order_relaxed);
    }
    snapshotPanel.SetRegion(start, end);
    playbackPanel.SetRegion(start, end);
}

// One note alone is heard, from its beginning; the region comes back with the release.
void CkvovirelaineApp::BeginAudition(std::int32_t note) {
    const SpinGuard exportGuard(exportLock);
    const SpinGuard guard(wiring.audioLock);
    const bool again = auditioning.load(std::memory_order_relaxed);
    if (driver.IsLive() || (IsPlaying() && !again) || exporting.load(std::memory_order_relaxed)) return;
    std::int32_t start = 0;
    std::int32_t end = 0;
    if (!driver.GetNoteRange(note, start, end)) return;
    if (!again) {
        savedStart = GetPlayStart();
        savedEnd = GetPlayEnd();
        savedOffset = position.load(std::memory_order_relaxed) - GetPlayStart();
    }
    playStart.store(start, std::memory_order_relaxed);
    playEnd.store(end, std::memory_order_relaxed);
    auditioning.store(true, std::memory_order_relaxed);
    triggerOffset.store(0, std::memory_order_relaxed);
    SetPosition(0);
    shownPosition = -1;
    Start();
}

void CkvovirelaineApp::EndAudition() {
    const SpinGuard exportGuard(exportLock);
    const SpinGuard guard(wiring.audioLock);
    if (driver.IsLive() || !auditioning.load(std::memory_order_relaxed)) return;
    playStart.store(savedStart, std::memory_order_relaxed);
    playEnd.store(savedEnd, std::memory_order_relaxed);
    auditioning.store(false, std::memory_order_relaxed);
    SetPosition(TruncateToI32(savedOffset));
    Stop();
}

// The chord menu: the triads that hold the note at the top, then its four-note chords, then all of the scale.
PopupMenu CkvovirelaineApp::ChordMenu(std::int32_t note, std::vector<ChordRecord>& chords) {
    const SpinGuard guard(wiring.audioLock);
    const auto ofNote = driver.ChordsForNote(note, kChordsOfNote);
    chords.assign(ofNote.begin(), ofNote.end());
    const auto ofScale = driver.AllChords();
    chords.insert(chords.end(), ofScale.begin(), ofScale.end());
    const std::int32_t shift = TransposedSteps();
    const auto entry = [&](std::size_t index) {
        ChordRecord shown = chords[index];
        shown.root = PitchClass(shown.root + shift);
        return PopupItem{ChordName(shown, kUseFlats), static_cast<std::int32_t>(index), {}};
    };
    PopupMenu menu;
    PopupItem seventh{kSeventhChordsHeading, PopupItem::kNothing, {}};
    PopupItem all{kAllChordsHeading, PopupItem::kNothing, {}};
    for (std::size_t i = 0; i < ofNote.size(); ++i)
        (i < kTriadsOfNote ? menu.items : seventh.children).push_back(entry(i));
    for (std::size_t i = ofNote.size(); i < chords.size(); ++i) all.children.push_back(entry(i));
    if (!seventh.children.empty()) menu.items.push_back(std::move(seventh));
    if (!all.children.empty()) menu.items.push_back(std::move(all));
    return menu;
}

void CkvovirelaineApp::ChooseChord(std::int32_t note) {
    std::vector<ChordRecord> chords;
    const std::int32_t chosen = wiring.toolkit.ChooseFromMenu(ChordMenu(note, chords));
    if (chosen < 0 || static_cast<std::size_t>(chosen) >= chords.size()) return;
    SetChord(note, chords[static_cast<std::size_t>(chosen)]);
}

void CkvovirelaineApp::SetChord(std::int32_t note, const ChordRecord& chord) {
    {
        const SpinGuard guard(wiring.audioLock);
        driver.SetChord(note, chord);
    }
    RunWithPresentChords();
    ShowVoices();
    ShowDetectedChord(note);
    PushUndo();
}

bool CkvovirelaineApp::SplitAt(std::int32_t samplePosition) {
    if (!HasAudio()) return false;
    {
        const SpinGuard guard(wiring.audioLock);
        if (driver.SplitNote(samplePosition) == 0) return false;
    }
    RunByMode();
    PushUndo();
    return true;
}

bool CkvovirelaineApp::MergeNotes(std::int32_t first, std::int32_t last) {
    if (!HasAudio()) return false;
    {
        const SpinGuard guard(wiring.audioLock);
        if (driver.MergeNotes(first, last) == 0) return false;
    }
    RunByMode();
    PushUndo();
    return true;
}

} // namespace sonorelle
