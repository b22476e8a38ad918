// The pitch view's notes and values. Gestures, looks and menus stand in sources of their own.

#include "app/pitch_view.h"

#include "dsp/finite.h"
#include "harmony/chord_names.h"
#include "harmony/pitch_class.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {
namespace {

using ConsortierClassic::kSemitonesInOctave;

// Of the loudness strip: a few points for each pixel of a wide screen are as good as all frames.
constexpr std::size_t kMostEnvelopePoints = 4096;
constexpr float kMostTranspose = 127; // semitones: beyond it no pitch stays one

// The transposed root as a pitch class, in the octave of the given one.
std::int32_t TransposedRoot(std::int32_t root, float semitones) {
    const std::int32_t held = ConsortierClassic::HoldPitch(root);
    const std::int32_t octave = held - ConsortierClassic::PitchClass(held);
    const std::int32_t moved = TruncateToI32(double{1} * held + kSemitonesInOctave + double{semitones});
    return octave + ConsortierClassic::PitchClass(moved);
}

// The loudest point of each stretch of frames.
std::vector<PitchCurvePoint> EnvelopeOf(const std::vector<PitchCurvePoint>& curve) {
    const std::size_t stretch = (curve.size() + kMostEnvelopePoints - 1) / kMostEnvelopePoints;
    std::vector<PitchCurvePoint> envelope;
    for (std::size_t i = 0; i < curve.size(); i += stretch) {
        PitchCurvePoint point = curve[i];
        const std::size_t end = std::min(i + stretch, curve.size());
        for (std::size_t k = i; k < end; ++k) point.level = std::max(point.level, curve[k].level);
        envelope.push_back(point);
    }
    return envelope;
}

} // namespace

CkvoPitchView::CkvoPitchView() {
    for (std::atomic<bool>& visible : voiceVisible) visible.store(true, std::memory_order_relaxed);
    Resize(kVoices, 0);
}

// --- Events ---

std::int32_t CkvoPitchView::GetEvent(PitchViewEventData& data) const {
    data = eventData;
    return lastEvent;
}

void CkvoPitchView::Report(std::int32_t code, PitchViewEventData data) {
    lastEvent = code;
    eventData = data;
    if (callback) callback(*this);
}

// --- Notes ---

void CkvoPitchView::Resize(std::int32_t voices, std::int32_t noteCount) {
    voiceCount = std::clamp(voices, 1, kVoices);
    const auto notes = static_cast<std::size_t>(std::clamp(noteCount, 0, kMostNotes));
    noteRows.resize(static_cast<std::size_t>(voiceCount));
    for (std::size_t voice = 0; voice < noteRows.size(); ++voice) {
        noteRows[voice].assign(notes, PitchViewNote{});
        for (std::size_t note = 0; note < notes; ++note) {
            CkvoPitchObject& object = noteRows[voice][note].object;
            object.note = static_cast<std::int32_t>(note);
            object.voice = static_cast<std::int32_t>(voice);
            object.colour = WidgetColour(kVoiceColours[voice]);
            object.selectColour = kVoiceColours[voice];
        }
    }
    selection.clear();
    hotNote = -1;
    hotVoice = -1;
    menuKind = MenuKind::kNone;
    EndGesture();
    Redraw(kDamageAll);
}

std::int32_t CkvoPitchView::GetNoteCount() const { return static_cast<std::int32_t>(noteRows[0].size()); }

PitchViewNote* CkvoPitchView::FindNote(std::int32_t note, std::int32_t voice) {
    if (voice < 0 || voice >= voiceCount || note < 0 || note >= GetNoteCount()) return nullptr;
    return &noteRows[static_cast<std::size_t>(voice)][static_cast<std::size_t>(note)];
}

const PitchViewNote* CkvoPitchView::GetNote(std::int32_t note, std::int32_t voice) const {
    return const_cast<CkvoPitchView*>(this)->FindNote(note, voice);
}

void CkvoPitchView::SetNote(std::int32_t note, std::int32_t voice, float start, float midiPitch, float offset,
                            float gain, float length, float height, std::int32_t id) {
    PitchViewNote* const record = FindNote(note, voice);
    if (record == nullptr) return;
    record->isSilent = !IsFinite(midiPitch) || midiPitch < 0;
    record->start = FiniteOrZero(start);
    record->pitch = FiniteOrZero(midiPitch) + GetTransposeShift();
    record->length = std::max(0.0F, FiniteOrZero(length));
    record->height = height > 0 && IsFinite(height) ? height : 1;
    record->offset = FiniteOrZero(offset);
    record->noteId = id;
    record->gain = FiniteOrZero(gain);
    record->object.isOff = record->gain != PitchViewNote::kActiveGain ? 1 : 0;
    MarkDoubled(note);
    Redraw(kDamagePart | kDamageNotes);
}

// A voice that sings what one of a lower number sings is marked; those that sing nothing never are.
void CkvoPitchView::MarkDoubled(std::int32_t note) {
    const auto at = static_cast<std::size_t>(note);
    for (std::size_t voice = 0; voice < noteRows.size(); ++voice) {
        PitchViewNote& record = noteRows[voice][at];
        record.object.doubled = 0;
        for (std::size_t lower = 0; lower < voice; ++lower) {
            const PitchViewNote& other = noteRows[lower][at];
            const bool both = !record.isSilent && !other.isSilent;
            if (both && other.pitch == record.pitch) record.object.doubled = 1;
        }
    }
}

void CkvoPitchView::SetChord(std::int32_t note, std::int32_t root, std::int32_t type) {
    if (FindNote(note, 0) == nullptr) return;
    for (auto& row : noteRows) {
        PitchViewNote& record = row[static_cast<std::size_t>(note)];
        record.chordRoot = TransposedRoot(root, GetTransposeShift());
        record.chordType = type;
    }
    Redraw(kDamagePart | kDamageHeader);
}

void CkvoPitchView::SetDetectedChord(std::int32_t note, std::int32_t root, std::int32_t type) {
    if (FindNote(note, 0) == nullptr) return;
    for (auto& row : noteRows) {
        PitchViewNote& record = row[static_cast<std::size_t>(note)];
        record.detectedRoot = TransposedRoot(root, GetTransposeShift());
        record.detectedType = type;
    }
    if (chordWindow && gesture == Gesture::kNote && note == dragNote) ShowChordTip(note);
    Redraw(kDamagePart | kDamageHeader);
}

float CkvoPitchView::GetNotePitch(std::int32_t note, std::int32_t voice) const {
    const PitchViewNote* const record = GetNote(note, voice);
    if (record == nullptr) return 0;
    return record->isSilent ? ConsortierClassic::kNoPitch : record->pitch - GetTransposeShift();
}

std::int32_t CkvoPitchView::FindNoteAt(double sample) const {
    const std::vector<PitchViewNote>& row = noteRows[0];
    for (std::size_t note = 0; note < row.size(); ++note) {
        const bool holds = sample >= double{row[note].start} && sample <= double{row[note].End()};
        if (holds && row[note].length > 0) return static_cast<std::int32_t>(note);
    }
    return -1;
}

bool CkvoPitchView::IsInView(const PitchViewNote& note) const {
    return note.End() >= axes.viewStart && note.start <= axes.viewEnd;
}

bool CkvoPitchView::IsDrawn(std::int32_t voice, const PitchViewNote& note) const {
    return !note.isSilent && IsVoiceEnabled(voice) && IsInView(note);
}

bool CkvoPitchView::IsSelected(std::int32_t note, std::int32_t voice) const {
    return std::find(selection.begin(), selection.end(), PitchViewSelection{note, voice}) != selection.end();
}

void CkvoPitchView::SetCurve(std::span<const PitchCurvePoint> points) {
    curve.assign(points.begin(), points.end());
    for (PitchCurvePoint& point : curve) {
        point.level = std::clamp(FiniteOrZero(point.level), 0.0F, 1.0F);
        if (!IsFinite(point.pitch)) point.voiced = false;
    }
    envelope = EnvelopeOf(curve);
    Redraw(kDamageAll);
}

void CkvoPitchView::SetScale(std::span<const std::int32_t> pitchClasses, std::int32_t root) {
    scaleToneCount = std::min(pitchClasses.size(), kMostScaleTones);
    for (std::size_t i = 0; i < scaleToneCount; ++i) {
        scaleTones[i] = ConsortierClassic::PitchClass(pitchClasses[i]);
    }
    scaleRoot = ConsortierClassic::PitchClass(root);
    Redraw(kDamageAll);
}

void CkvoPitchView::SetTuningOffset(float semitones) {
    tuningOffset = FiniteOrZero(semitones);
    Redraw(kDamagePart | kDamageNotes);
}

// --- Values ---

void CkvoPitchView::SetSampleRate(float hertz) {
    if (!(hertz > 0) || !IsFinite(hertz)) return;
    sampleRate.store(hertz, std::memory_order_relaxed);
    Redraw(kDamageAll);
}

void CkvoPitchView::SetTotal(std::int32_t start, std::int32_t end) {
    firstSample = start;
    lastSample = std::max(start, end);
    axes.totalStart = static_cast<float>(firstSample);
    axes.totalEnd = static_cast<float>(lastSample);
    FitHorizontally();
}

void CkvoPitchView::SetPitchGrid(float divisor) {
    if (divisor > 0 && IsFinite(divisor)) pitchGrid = divisor;
}

void CkvoPitchView::SetPlayRegion(std::int32_t start, std::int32_t end) {
    markers.store({std::min(start, end), end}, std::memory_order_relaxed);
    Redraw(kDamagePart | kDamageHeader);
}

void CkvoPitchView::GetPlayRegion(std::int32_t& start, std::int32_t& end) const {
    const MarkerPair pair = markers.load(std::memory_order_relaxed);
    start = pair.start;
    end = pair.end;
}

void CkvoPitchView::SetTempoGrid(float melodyTempo, float hostTempo, double anchor, std::int32_t numerator,
                                 std::int32_t denominator) {
    if (!(melodyTempo > 0) || !IsFinite(melodyTempo)) return;
    const bool hostIsKnown = hostTempo > 0 && IsFinite(hostTempo);
    const double stretch = hostIsKnown ? double{hostTempo} / double{melodyTempo} : 1;
    const double bars = -anchor * stretch; // where the host's first bar lies in the recording
    tempoGrid.store(melodyTempo, std::memory_order_relaxed);
    gridAnchor.store(std::isfinite(bars) ? bars : 0, std::memory_order_relaxed);
    gridNumerator.store(numerator, std::memory_order_relaxed);
    gridDenominator.store(denominator, std::memory_order_relaxed);
    Redraw(kDamagePart | kDamageHeader);
}

float CkvoPitchView::GetTempoGrid() const {
    const float held = draggedTempo.load(std::memory_order_relaxed);
    return held > 0 ? held : tempoGrid.load(std::memory_order_relaxed);
}

BeatGrid CkvoPitchView::GetBeatGrid() const {
    BeatGrid grid;
    grid.tempo = GetTempoGrid();
    grid.sampleRate = GetSampleRate();
    grid.anchor = gridAnchor.load(std::memory_order_relaxed);
    grid.numerator = gridNumerator.load(std::memory_order_relaxed);
    grid.denominator = gridDenominator.load(std::memory_order_relaxed);
    return grid.Cleaned();
}

void CkvoPitchView::SetVoiceEnabled(std::int32_t voice, bool on) {
    if (voice < 0 || voice >= kVoices) return;
    voiceVisible[static_cast<std::size_t>(voice)].store(on, std::memory_order_relaxed);
    Redraw(kDamagePart | kDamageNotes);
}

bool CkvoPitchView::IsVoiceEnabled(std::int32_t voice) const {
    if (voice < 0 || voice >= kVoices) return false;
    return voiceVisible[static_cast<std::size_t>(voice)].load(std::memory_order_relaxed);
}

void CkvoPitchView::SetTransposeShift(float semitones) {
    const float held = std::clamp(FiniteOrZero(semitones), -kMostTranspose, kMostTranspose);
    transposeShift.store(held, std::memory_order_relaxed);
    Redraw(kDamageAll);
}

void CkvoPitchView::SetPlayPosition(double sample, bool playing) {
    isPlaying.store(playing, std::memory_order_relaxed);
    if (std::isfinite(sample)) playPosition.store(sample, std::memory_order_relaxed);
    Redraw(kDamagePart | kDamagePosition);
}

// --- Names ---

std::string CkvoPitchView::NameOfChord(std::int32_t root, std::int32_t type) const {
    return ChordDisplayName(root, type, useFlats);
}

std::string CkvoPitchView::NameOfPitch(std::int32_t pitch) const {
    const std::int32_t held = ConsortierClassic::HoldPitch(pitch);
    const std::int32_t octave = (held - ConsortierClassic::PitchClass(held)) / kSemitonesInOctave - 1;
    return ConsortierClassic::NoteName(held, useFlats) + std::to_string(octave);
}

void CkvoPitchView::SetChordDisplay(std::int32_t root, std::int32_t type) {
    displayRoot = TransposedRoot(root, GetTransposeShift());
    displayType = type;
    Redraw(kDamagePart | kDamageHeader);
}

std::string CkvoPitchView::GetChordDisplay() const { return NameOfChord(displayRoot, displayType); }

} // namespace sonorelle
