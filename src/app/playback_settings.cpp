#include "app/playback_settings.h"

#include "harmony/pitch_class.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

constexpr std::int32_t kUnlimited = std::numeric_limits<std::int32_t>::max();

static_assert(std::atomic<double>::is_always_lock_free && std::atomic<float>::is_always_lock_free &&
              std::atomic<std::int32_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

constexpr std::int32_t KeyOf(std::int32_t octave, std::int32_t note) {
    return (octave - CkvovirelainePlaybackSettings::kLowestOctave) * ConsortierClassic::kSemitonesInOctave +
           note;
}

} // namespace

CkvovirelainePlaybackSettings::CkvovirelainePlaybackSettings() : melodyLength(kUnlimited) {
    SetRegion(0, 0);
    offsetDisplay.SetOnChanged([this] { OnOffsetEdited(); });
    startDisplay.SetOnChanged([this] { OnMarkerEdited(); });
    endDisplay.SetOnChanged([this] { OnMarkerEdited(); });
}

// Values.

void CkvovirelainePlaybackSettings::SetMode(std::int32_t newMode) {
    if (newMode == kTime || newMode == kMidi) mode.store(newMode, std::memory_order_relaxed);
}

void CkvovirelainePlaybackSettings::SetOffset(double samples) {
    if (!std::isfinite(samples)) return;
    offsetDisplay.SetValue(samples);
    changeCode.store(kOffsetCode, std::memory_order_relaxed);
}

std::int32_t CkvovirelainePlaybackSettings::GetStartMarker() const {
    return TruncateToI32(startDisplay.GetValue());
}

std::int32_t CkvovirelainePlaybackSettings::GetEndMarker() const {
    return TruncateToI32(endDisplay.GetValue());
}

void CkvovirelainePlaybackSettings::GetRegion(std::int32_t& start, std::int32_t& end) const {
    start = GetStartMarker();
    end = GetEndMarker();
}

void CkvovirelainePlaybackSettings::SetRegion(std::int32_t start, std::int32_t end) {
    const std::int32_t length = GetMelodyLength();
    const std::int32_t heldEnd = std::clamp(end, 0, length);
    endDisplay.SetRange(0, length);
    endDisplay.SetValue(heldEnd);
    startDisplay.SetRange(0, heldEnd);
    startDisplay.SetValue(start);
}

void CkvovirelainePlaybackSettings::SetMelodyLength(std::int32_t samples) {
    melodyLength.store(std::max(samples, 0), std::memory_order_relaxed);
    SetRegion(GetStartMarker(), GetEndMarker());
}

void CkvovirelainePlaybackSettings::SetTriggerNote(std::int32_t key) {
    if (key < kNoKey || key > kHighestKey) return;
    triggerKey.store(key, std::memory_order_relaxed);
    if (key != kNoKey) shownKey.store(key, std::memory_order_relaxed);
}

std::int32_t CkvovirelainePlaybackSettings::GetNote() const {
    return shownKey.load(std::memory_order_relaxed) % ConsortierClassic::kSemitonesInOctave;
}

std::int32_t CkvovirelainePlaybackSettings::GetOctave() const {
    return shownKey.load(std::memory_order_relaxed) / ConsortierClassic::kSemitonesInOctave + kLowestOctave;
}

void CkvovirelainePlaybackSettings::SetSampleRate(float hertz) {
    offsetDisplay.SetSampleRate(hertz);
    startDisplay.SetSampleRate(hertz);
    endDisplay.SetSampleRate(hertz);
}

void CkvovirelainePlaybackSettings::SetHostPosition(double melody, double host) {
    if (!std::isfinite(melody) || !std::isfinite(host)) return;
    melodyPosition.store(melody, std::memory_order_relaxed);
    hostPosition.store(host, std::memory_order_relaxed);
}

// The user.

void CkvovirelainePlaybackSettings::OnOffsetEdited() {
    changeCode.store(kOffsetCode, std::memory_order_relaxed);
    Changed();
}

// The other marker gives way to an end before the start.
void CkvovirelainePlaybackSettings::OnMarkerEdited() {
    SetRegion(GetStartMarker(), GetEndMarker());
    Changed();
}

void CkvovirelainePlaybackSettings::PressTime() { PressMode(kTime); }
void CkvovirelainePlaybackSettings::PressMidi() { PressMode(kMidi); }

void CkvovirelainePlaybackSettings::PressMode(Mode newMode) {
    SetRegion(GetStartMarker(), GetEndMarker());
    SetMode(newMode);
    Changed();
}

void CkvovirelainePlaybackSettings::ChooseNote(std::int32_t row) {
    if (row < 0 || row >= ConsortierClassic::kSemitonesInOctave) return;
    ChooseKey(KeyOf(GetOctave(), row));
}

void CkvovirelainePlaybackSettings::ChangeOctave(std::int32_t octave) {
    ChooseKey(KeyOf(std::clamp(octave, kLowestOctave, kHighestOctave), GetNote()));
}

void CkvovirelainePlaybackSettings::ChooseKey(std::int32_t key) {
    if (key == GetTriggerNote()) return;
    SetTriggerNote(key);
    Changed();
}

double CkvovirelainePlaybackSettings::PositionInMelody() const {
    return GetShownMelodyPosition() - GetOffset();
}

void CkvovirelainePlaybackSettings::PressSetOffset() {
    if (!IsOffsetRowVisible()) return;
    SetOffset(GetShownHostPosition());
    Changed();
}

void CkvovirelainePlaybackSettings::PressSetStart() {
    if (!AreMarkerButtonsActive()) return;
    const double position = PositionInMelody();
    const std::int32_t start = GetStartMarker();
    const std::int32_t end = GetEndMarker();
    const std::int32_t newStart = std::max(TruncateToI32(position), 0);
    std::int64_t newEnd = end;
    if (end <= position) newEnd = std::int64_t{newStart} + (end - start);
    SetMarkers(newStart, newEnd);
}

void CkvovirelainePlaybackSettings::PressSetEnd() {
    if (!AreMarkerButtonsActive()) return;
    const double position = PositionInMelody();
    const std::int32_t start = GetStartMarker();
    const std::int32_t end = GetEndMarker();
    const std::int32_t newEnd = std::min(TruncateToI32(position), GetMelodyLength());
    std::int64_t newStart = start;
    if (position <= start) newStart = std::int64_t{newEnd} - (end - start);
    SetMarkers(newStart, newEnd);
}

void CkvovirelainePlaybackSettings::SetMarkers(std::int64_t start, std::int64_t end) {
    const auto length = std::int64_t{GetMelodyLength()};
    const auto held = [length](std::int64_t marker) {
        return static_cast<std::int32_t>(std::clamp(marker, std::int64_t{0}, length));
    };
    SetRegion(held(start), held(end));
    ClearOffsetSet();
    Changed();
}

void CkvovirelainePlaybackSettings::ToggleSync() {
    SetSyncTempo(!GetSyncTempo());
    Changed();
}

void CkvovirelainePlaybackSettings::Changed() {
    if (onChanged) onChanged();
}

} // namespace sonorelle
