// Settings, and the making of the voices. The look-ups, live input and edits have sources of their own.

#include "harmony/choir_driver.h"

#include "analysis/melody_analyzer.h"
#include "app/snapshot_store.h"
#include "harmony/styles.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

constexpr std::int32_t kMostVoicesAbove = kVoiceSlots - 1;

// Keys of the estimate: the major ones from 0, then the minor ones from 12.
constexpr std::int32_t ScaleOfKey(std::int32_t key) {
    return key < kSemitonesInOctave ? kMajorScale : kMinorScale;
}

bool IsWithin(std::int32_t value, std::int32_t lowest, std::int32_t highest) {
    return value >= lowest && value <= highest;
}

// Each style numbers its arrangements from 0, so that a number is good when any style has it; the style may
// be set after it.
bool IsArrangementOfAnyStyle(std::int32_t arrangement) {
    for (std::int32_t style = kStyleIntelligent; IsStyle(style); ++style)
        if (IsArrangement(style, arrangement)) return true;
    return false;
}

std::int32_t Store(std::int32_t& field, std::int32_t value, bool good) {
    if (!good) return kBadArgument;
    field = value;
    return kOk;
}

// Turns chords of the old layout, two words each, into records; see CConsortier::LegacyChord. `context` is
// the engine, in whose scale the old chords are read.
std::int32_t ConvertChords(const void* oldData, std::int32_t oldSize, float, void* newData,
                           std::int32_t newSize, float, void* context) {
    using OldChord = std::array<std::int32_t, 2>;
    const auto& engine = *static_cast<const CConsortier*>(context);
    const auto count = std::min(static_cast<std::size_t>(std::max(oldSize, 0)) / sizeof(OldChord),
                                static_cast<std::size_t>(std::max(newSize, 0)) / sizeof(ChordRecord));
    const auto* from = static_cast<const std::byte*>(oldData);
    auto* to = static_cast<std::byte*>(newData);
    for (std::size_t i = 0; i < count; ++i) {
        OldChord entry;
        ChordRecord chord;
        std::memcpy(&entry, from + i * sizeof entry, sizeof entry);
        engine.LegacyChord(chord, entry.data());
        std::memcpy(to + i * sizeof chord, &chord, sizeof chord);
    }
    return static_cast<std::int32_t>(count * sizeof(ChordRecord));
}

} // namespace

CChoirDriver::CChoirDriver(CMelodyAnalyzer& melody, CSnapshotStore& snapshotStore)
    : analysis(melody), notes(snapshotStore, settings.noteCount) {
    settings.RegisterWith(snapshotStore, this);
}

// Settings.

std::int32_t CChoirDriver::SetRoot(std::int32_t pitchClass) {
    return Store(settings.root, pitchClass, IsWithin(pitchClass, 0, kSemitonesInOctave - 1));
}

std::int32_t CChoirDriver::SetMelodyScale(std::int32_t index) {
    return Store(settings.melodyScale, index, engine.SetMelodyScale(index) == kOk);
}

std::int32_t CChoirDriver::SetHarmonyScale(std::int32_t index) {
    return Store(settings.harmonyScale, index, engine.SetHarmonyScale(index) == kOk);
}

std::int32_t CChoirDriver::SetVoiceRange(std::int32_t voicesAbove) {
    return Store(settings.voiceRange, voicesAbove, IsWithin(voicesAbove, 0, kMostVoicesAbove));
}

std::int32_t CChoirDriver::SetSpread(float share) {
    if (!(share >= 0.0F && share <= 1.0F)) return kBadArgument;
    settings.spread = share;
    return kOk;
}

std::int32_t CChoirDriver::SetStyle(std::int32_t newStyle) {
    return Store(settings.style, newStyle, IsStyle(newStyle));
}

std::int32_t CChoirDriver::SetArrangement(std::int32_t arrangement) {
    return Store(settings.arrangement, arrangement, IsArrangementOfAnyStyle(arrangement));
}

std::int32_t CChoirDriver::SetManualInterval(std::int32_t voice, std::int32_t interval) {
    if (!IsWithin(voice, 0, kVoiceSlots - 1)) return kBadArgument;
    return Store(settings.manualIntervals[static_cast<std::size_t>(voice)], interval,
                 IsManualInterval(interval));
}

std::int32_t CChoirDriver::GetManualInterval(std::int32_t voice) const {
    return IsWithin(voice, 0, kVoiceSlots - 1) ? settings.manualIntervals[static_cast<std::size_t>(voice)]
                                               : 0;
}

void CChoirDriver::SetSnapToScale(bool on) { settings.snapToScale = on ? 1 : 0; }
void CChoirDriver::SetMapScale(bool on) { settings.mapScale = on ? 1 : 0; }
void CChoirDriver::SetAutoKey(bool on) { settings.autoKey = on ? 1 : 0; }
void CChoirDriver::SetFollowScale(bool on) { settings.followScale = on ? 1 : 0; }
void CChoirDriver::SetChordsDirty(bool on) { settings.chordsDirty = on ? 1 : 0; }
void CChoirDriver::SetManualOnly(bool on) { settings.manualOnly = on ? 1 : 0; }

std::int32_t CChoirDriver::VoiceCount() const { return CountVoices(settings.style, settings.arrangement); }

// Making the voices.

std::int32_t CChoirDriver::Run() noexcept try {
    if (notes.IsEmpty()) TakeNotes();
    if (notes.Count() == 0) return kOk;
    engine.Reset();
    ApplySettings();
    if (GetManualOnly()) settings.style = kStyleParallel;
    GenerateAll();
    return kOk;
} catch (const std::bad_alloc&) {
    return kOutOfMemory;
}

bool CChoirDriver::BeginRun(CChoirRun& run) noexcept try {
    if (notes.IsEmpty()) TakeNotes();
    if (notes.Count() > 0) {
        engine.Reset();
        ApplySettings();
        if (GetManualOnly()) settings.style = kStyleParallel;
        if (NeedsTuning()) TakeTuning();
    }
    run.engine = engine;
    run.settings = settings;
    run.findChords = FindsChords();
    run.version = version;
    run.pitches.assign(notes.Pitches().begin(), notes.Pitches().end());
    run.chords.assign(notes.Chords().begin(), notes.Chords().end());
    run.voices.clear();
    run.voices.reserve(run.pitches.size());
    for (std::int32_t i = 0; i < notes.Count(); ++i) run.voices.push_back(notes.Voicing(i).voices);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool CChoirDriver::FinishRun(const CChoirRun& run) noexcept {
    const auto count = static_cast<std::size_t>(notes.Count());
    if (run.version != version || run.voices.size() != count) return false;
    engine = run.engine;
    std::copy(run.chords.begin(), run.chords.end(), notes.Chords().begin());
    for (std::size_t i = 0; i < count; ++i)
        notes.Voicing(static_cast<std::int32_t>(i)).voices = run.voices[i];
    return true;
}

void CChoirDriver::Rewind() {
    if (recordLive) KeepRecording();
    liveStartNote = -1;
    liveNote = -1;
    engine.Reset();
    ApplySettings();
}

void CChoirDriver::RefreshFromStore() {
    ++version;
    PassMelodyKey();
    PassHarmonyScale();
    UpdateNotePitches();
}

void CChoirDriver::TakeNotes() {
    const NoteRecord* records = nullptr;
    const std::int32_t count = analysis.GetNotes(records);
    if (count < 1) return;
    notes.Fill({records, static_cast<std::size_t>(count)}, ConvertChords, &engine);
    analysedNoteCount = notes.Count();
    audioLength = analysis.GetLength();
    settings.chordsDirty = 1;
    TakeTuning();
}

void CChoirDriver::TakeTuning() {
    tuningOffset = analysis.GetTuningOffset();
    UpdateNotePitches();
}

void CChoirDriver::UpdateNotePitches() {
    for (std::int32_t i = 0; i < notes.Count(); ++i) notes.Pitch(i) = RoundedPitch(i, tuningOffset);
}

std::int32_t CChoirDriver::RoundedPitch(std::int32_t note, float tuning) const {
    const double midiPitch = static_cast<double>(notes.Note(note).pitch);
    return HoldPitch(TruncateToI32(std::floor(midiPitch + 0.5 - static_cast<double>(tuning))));
}

// The order matters: a new voice mode moves the engine's range, which is then set.
void CChoirDriver::ApplySettings() {
    if (GetAutoKey()) TakeKey();
    PassMelodyKey();
    // Behind the melody scale, so that the harmony does not follow one that was refused.
    if (GetFollowScale()) settings.harmonyScale = settings.melodyScale;
    PassHarmonyScale();
    engine.SetSnapToScale(settings.snapToScale);
    engine.SetMapScale(settings.mapScale);
    if (engine.SetSpread(settings.spread) != kOk) settings.spread = engine.GetVoiceLeader().GetSpread();
    engine.SetVoiceMode(settings.arrangement);
    // A range that the mode has no voices for stays set, for a mode that has; the engine keeps its own.
    if (!IsWithin(settings.voiceRange, 0, kMostVoicesAbove))
        settings.voiceRange = engine.GetVoiceLeader().GetVoiceRange();
    engine.SetVoiceRange(settings.voiceRange);
}

void CChoirDriver::TakeKey() {
    const std::int32_t key = analysis.EstimateKey(0);
    if (key < 0) return;
    settings.root = key % kSemitonesInOctave;
    settings.melodyScale = ScaleOfKey(key);
}

void CChoirDriver::PassMelodyKey() {
    if (engine.SetRoot(settings.root) != kOk) settings.root = engine.GetKey().GetRoot();
    if (engine.SetMelodyScale(settings.melodyScale) != kOk)
        settings.melodyScale = engine.GetKey().GetMelodyScale();
}

void CChoirDriver::PassHarmonyScale() {
    if (engine.SetHarmonyScale(settings.harmonyScale) != kOk)
        settings.harmonyScale = engine.GetKey().GetHarmonyScale();
}

bool CChoirDriver::FindsChords() const { return settings.style == kStyleIntelligent && GetChordsDirty(); }

bool CChoirDriver::NeedsTuning() const { return FindsChords() || settings.style == kStyleParallel; }

void CChoirDriver::GenerateAll() {
    const std::int32_t count = notes.Count();
    if (NeedsTuning()) TakeTuning();
    if (FindsChords()) engine.FindChordPath(notes.Pitches().data(), notes.Chords().data(), count);
    for (std::int32_t i = 0; i < count; ++i)
        CChoirRun::MakeNote(engine, settings, notes.Pitch(i), notes.Pitch(std::min(i + 1, count - 1)),
                            notes.Chord(i), notes.Voicing(i).voices.data());
}

} // namespace sonorelle
