#include "app/choir_settings_panel.h"

#include "app/snapshot_store.h"
#include "harmony/scales.h"
#include "harmony/styles.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sonorelle {
namespace {

using ConsortierClassic::kLargestManualInterval;
using ConsortierClassic::kManualIntervalCount;

constexpr float kModeWordVersion = 1.0F;
constexpr std::int32_t kPrime = kLargestManualInterval; // list position
constexpr std::int32_t kLowestChoiceRow = kManualIntervalCount - 1;
constexpr double kTenths = 10; // steps of the range slider in 1

bool IsIntervalRow(std::int32_t row) { return row >= 0 && row < CkvovirelaineChoirSettings::kIntervalRows; }
bool IsIntervalPosition(std::int32_t position) { return position >= 0 && position < kManualIntervalCount; }
bool IsInterpretation(std::int32_t row) { return row == 0 || row == 1; }

} // namespace

// The mode word.

void CkvovirelaineChoirSettings::RegisterWith(CSnapshotStore& store) {
    const SpinGuard guard(audioLock);
    store.AddElement(&modeWord, sizeof modeWord, kModeWordVersion, true, this);
}

void CkvovirelaineChoirSettings::SetMode(std::int32_t newMode) {
    StoreMode(IsLiveMode(newMode) && !allowLive ? static_cast<std::int32_t>(kModeEdit) : newMode);
    style = RowOfMode(mode, style);
    if (IsLiveMode(mode)) interpretation = mode - kModeHarmonies;
}

void CkvovirelaineChoirSettings::ReadModeFromStore() {
    const SpinGuard guard(audioLock);
    SetMode(modeWord);
}

void CkvovirelaineChoirSettings::StoreMode(std::int32_t newMode) {
    const SpinGuard guard(audioLock);
    mode = newMode;
    modeWord = newMode;
}

std::int32_t CkvovirelaineChoirSettings::LiveMode() const { return kModeHarmonies + interpretation; }

bool CkvovirelaineChoirSettings::SetAllowLive(bool on) {
    allowLive = on;
    if (on || !IsLiveMode(mode)) return false;
    StoreMode(kModeEdit);
    return true;
}

// Values.

void CkvovirelaineChoirSettings::SetRoot(std::int32_t pitchClass) {
    if (ConsortierClassic::IsKeyRoot(pitchClass)) root = pitchClass;
}

void CkvovirelaineChoirSettings::SetScale(std::int32_t row) {
    if (ConsortierClassic::IsHarmonyScale(row)) scale = row;
}

void CkvovirelaineChoirSettings::SetStyle(std::int32_t row) {
    if (!IsStyleRow(row)) return;
    style = row;
    if (GetPage() == ChoirPage::kAutomatic) StoreMode(ModeOfRow(style));
}

std::int32_t CkvovirelaineChoirSettings::DetailList() const {
    switch (DetailOfRow(style)) {
    case StyleDetail::kBlockList:
        return 0;
    case StyleDetail::kFauxbourdonList:
        return 1;
    case StyleDetail::kOrganumList:
        return 2;
    case StyleDetail::kArrangementSlider:
    case StyleDetail::kIntervalRows:
        break;
    }
    return -1;
}

std::int32_t CkvovirelaineChoirSettings::GetDetailRow() const {
    const std::int32_t list = DetailList();
    return list < 0 ? 0 : detailRows[static_cast<std::size_t>(list)];
}

void CkvovirelaineChoirSettings::SetDetailRow(std::int32_t row) {
    const std::int32_t list = DetailList();
    if (list >= 0 && row >= 0 && row < DetailCountOfRow(style))
        detailRows[static_cast<std::size_t>(list)] = row;
}

void CkvovirelaineChoirSettings::SetDriverStyle(std::int32_t driverStyle, std::int32_t arrangement) {
    if (!ConsortierClassic::IsArrangement(driverStyle, arrangement)) return;
    const StyleRow row = StyleRowOfDriver(driverStyle, arrangement);
    SetStyle(row.row);
    SetDetailRow(row.detail);
}

std::int32_t CkvovirelaineChoirSettings::GetVoiceArrangement() const {
    return std::min(voiceArrangement, GetMostVoicesAbove());
}

void CkvovirelaineChoirSettings::SetVoiceArrangement(std::int32_t voicesAbove) {
    voiceArrangement = std::clamp(voicesAbove, 0, kMostVoiceRows - 1);
}

void CkvovirelaineChoirSettings::SetVoiceRange(float range) {
    if (std::isfinite(range)) voiceRangeValue = std::clamp(range, 0.0F, 1.0F);
}

std::int32_t CkvovirelaineChoirSettings::GetInterval(std::int32_t row) const {
    return IsIntervalRow(row) ? intervals[static_cast<std::size_t>(row)] : kPrime;
}

void CkvovirelaineChoirSettings::SetInterval(std::int32_t row, std::int32_t position) {
    if (IsIntervalRow(row) && IsIntervalPosition(position))
        intervals[static_cast<std::size_t>(row)] = position;
}

void CkvovirelaineChoirSettings::SetInterpretation(std::int32_t row) {
    if (!IsInterpretation(row)) return;
    interpretation = row;
    if (IsLiveMode(mode)) StoreMode(LiveMode());
}

bool CkvovirelaineChoirSettings::GetChordsChanged() { return std::exchange(chordsChanged, false); }

// What the face shows.

VoiceRows CkvovirelaineChoirSettings::GetVoiceRows(std::int32_t panelHeight) const {
    return LayOutVoiceRows(GetVoiceCount(), voiceRangeValue, panelHeight);
}

VoiceOrder CkvovirelaineChoirSettings::GetVoiceOrder() const {
    return OrderOfVoices(GetVoiceCount(), GetVoiceArrangement());
}

bool CkvovirelaineChoirSettings::IsIntervalRowVisible(std::int32_t row) const {
    return GetStyleDetail() == StyleDetail::kIntervalRows && row >= 0 && row < GetVoiceCount();
}

std::int32_t CkvovirelaineChoirSettings::GetIntervalChoiceRow(std::int32_t row) const {
    return kLowestChoiceRow - GetInterval(row);
}

const char* CkvovirelaineChoirSettings::IntervalChoiceText(std::int32_t choiceRow) {
    if (!IsIntervalPosition(choiceRow)) return "";
    return ConsortierClassic::ManualIntervalList()[static_cast<std::size_t>(kLowestChoiceRow - choiceRow)];
}

// The user.

void CkvovirelaineChoirSettings::PressAutomatic() {
    StoreMode(ModeOfRow(style));
    Changed();
}

void CkvovirelaineChoirSettings::PressEdit(bool down) {
    StoreMode(down ? kModeEdit : ModeOfRow(style));
    Changed();
}

void CkvovirelaineChoirSettings::PressLive(bool down) {
    if (!allowLive) return;
    StoreMode(down ? LiveMode() : static_cast<std::int32_t>(ModeOfRow(style)));
    Changed();
}

void CkvovirelaineChoirSettings::ChooseRoot(std::int32_t pitchClass) {
    if (!ConsortierClassic::IsKeyRoot(pitchClass) || pitchClass == root) return;
    root = pitchClass;
    choiceChanged = true;
    Changed();
}

void CkvovirelaineChoirSettings::ChooseScale(std::int32_t row) {
    if (!ConsortierClassic::IsMelodyScale(row) || row == scale) return;
    scale = row;
    choiceChanged = true;
    chordsChanged = true;
    Changed();
}

void CkvovirelaineChoirSettings::ChooseStyle(std::int32_t row) {
    if (!IsStyleRow(row) || row == style) return;
    SetStyle(row);
    Changed();
}

void CkvovirelaineChoirSettings::ChooseDetail(std::int32_t row) {
    const std::int32_t before = GetDetailRow();
    SetDetailRow(row);
    if (GetDetailRow() != before) Changed();
}

void CkvovirelaineChoirSettings::ChooseInterval(std::int32_t row, std::int32_t choiceRow) {
    if (!IsIntervalPosition(choiceRow)) return;
    const std::int32_t before = GetInterval(row);
    SetInterval(row, kLowestChoiceRow - choiceRow);
    if (GetInterval(row) != before) Changed();
}

void CkvovirelaineChoirSettings::MoveArrangement(double value) {
    if (!std::isfinite(value)) return;
    const std::int32_t before = GetVoiceArrangement();
    SetVoiceArrangement(std::min(TruncateToI32(value), GetMostVoicesAbove()));
    if (GetVoiceArrangement() != before) Changed();
}

void CkvovirelaineChoirSettings::MoveRange(double value) {
    if (!std::isfinite(value)) return;
    const auto range = static_cast<float>(std::round(std::clamp(value, 0.0, 1.0) * kTenths) / kTenths);
    if (range == voiceRangeValue) return;
    voiceRangeValue = range;
    Changed();
}

void CkvovirelaineChoirSettings::ToggleSnap() {
    snapToScale = !snapToScale;
    chordsChanged = true;
    Changed();
}

void CkvovirelaineChoirSettings::ChooseInterpretation(std::int32_t row) {
    if (!IsInterpretation(row) || row == interpretation) return;
    SetInterpretation(row);
    Changed();
}

void CkvovirelaineChoirSettings::ToggleRecord() {
    recording = !recording;
    Changed();
}

void CkvovirelaineChoirSettings::Changed() {
    if (onChanged) onChanged();
}

} // namespace sonorelle
