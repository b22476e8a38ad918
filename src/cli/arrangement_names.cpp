#include "cli/arrangement_names.h"

#include "app/voice_preset.h"
#include "cli/named_numbers.h"
#include "cli/text_columns.h"
#include "harmony/chord_names.h"
#include "harmony/scales.h"
#include "harmony/styles.h"

#include <algorithm>
#include <array>
#include <vector>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

std::vector<NamedNumber> NamedStyles() {
    std::vector<NamedNumber> result;
    for (const StyleEntry& entry : StyleList())
        result.push_back({static_cast<std::int32_t>(result.size()), entry.name});
    return result;
}

std::vector<NamedNumber> NamedArrangements(std::int32_t style) {
    std::vector<NamedNumber> result;
    for (const ArrangementEntry& entry : ArrangementList(style))
        result.push_back({entry.arrangement, entry.name});
    return result;
}

std::vector<NamedNumber> NamedScales() {
    std::vector<NamedNumber> result;
    for (const char* name : kScaleNames) result.push_back({static_cast<std::int32_t>(result.size()), name});
    return result;
}

std::vector<NamedNumber> NamedIntervals() {
    std::vector<NamedNumber> result;
    for (const char* name : ManualIntervalList())
        result.push_back({IntervalAtListPosition(static_cast<std::int32_t>(result.size())), name});
    return result;
}

std::vector<NamedNumber> NamedPresets() {
    std::vector<NamedNumber> result;
    for (const VoicePreset& preset : FactoryPresets())
        result.push_back({static_cast<std::int32_t>(result.size()), preset.name});
    return result;
}

// The colours that the voices have in the picture.
constexpr std::array<const char*, kPresetVoices> kFileVoiceNames = {"orange", "red", "blue", "green"};

std::vector<NamedNumber> NamedVoices(std::int32_t voiceCount) {
    std::vector<NamedNumber> result;
    for (std::int32_t voice = 0; voice < std::min(voiceCount, kPresetVoices); ++voice)
        result.push_back({voice, VoiceName(voice)});
    return result;
}

void AppendList(std::string& text, const std::string& heading, const std::vector<NamedNumber>& list) {
    std::vector<std::vector<std::string>> rows;
    for (const NamedNumber& entry : list) rows.push_back({std::to_string(entry.number), entry.name});
    if (!text.empty()) text += "\n";
    text += heading + "\n" + FormatColumns({Align::kRight, Align::kLeft}, rows);
}

// Semitones from the root of a scale up to the root of the major scale that has its signature.
std::int32_t ToSignature(std::int32_t scale) {
    // By row of ScaleTable. The scales without a church mode count by their third, as major or minor.
    constexpr std::array<std::int32_t, kScaleCount> kShifts = {0, 10, 8, 7, 5, 3, 1, 3, 3, 0, 0, 0};
    return IsHarmonyScale(scale) ? kShifts[static_cast<std::size_t>(scale)] : 0;
}

} // namespace

std::optional<std::int32_t> FindStyle(std::string_view text) { return FindIn(NamedStyles(), text); }

std::optional<std::int32_t> FindArrangement(std::int32_t style, std::string_view text) {
    return FindIn(NamedArrangements(style), text);
}

std::optional<std::int32_t> FindRoot(std::string_view text) {
    constexpr std::string_view kLetters = "c d ef g a b"; // each at its pitch class
    const std::string wanted = LowerCase(TrimBlanks(text));
    if (const std::optional<std::int32_t> number = ReadInteger(wanted))
        return IsKeyRoot(*number) ? number : std::nullopt;
    if (wanted.empty() || wanted.size() > 2 || wanted[0] == ' ') return std::nullopt;
    const std::size_t letter = kLetters.find(wanted[0]);
    if (letter == std::string_view::npos) return std::nullopt;
    std::int32_t pitchClass = static_cast<std::int32_t>(letter);
    if (wanted.size() == 2) {
        if (wanted[1] != '#' && wanted[1] != 'b') return std::nullopt;
        pitchClass += wanted[1] == '#' ? 1 : -1;
    }
    return PitchClass(pitchClass);
}

std::optional<std::int32_t> FindScale(std::string_view text) { return FindIn(NamedScales(), text); }

std::optional<std::int32_t> FindHarmonyScale(std::string_view text) {
    if (ReadInteger(TrimBlanks(text)) == kChromaticScale) return kChromaticScale;
    return FindScale(text);
}

std::optional<std::int32_t> FindInterval(std::string_view text) { return FindIn(NamedIntervals(), text); }

std::optional<std::int32_t> FindPreset(std::string_view text) { return FindIn(NamedPresets(), text); }

std::optional<std::int32_t> FindVoice(std::string_view text, std::int32_t voiceCount) {
    return FindIn(NamedVoices(voiceCount), text);
}

std::string StyleChoices() { return Choices(NamedStyles()); }
std::string ArrangementChoices(std::int32_t style) { return Choices(NamedArrangements(style)); }
std::string ScaleChoices() { return Choices(NamedScales()); }
std::string IntervalChoices() { return Choices(NamedIntervals()); }
std::string PresetChoices() { return Choices(NamedPresets()); }
std::string VoiceChoices(std::int32_t voiceCount) { return Choices(NamedVoices(voiceCount)); }

std::string StyleName(std::int32_t style, std::int32_t arrangement) {
    const std::int32_t position = StyleListPosition(style, arrangement);
    return position < 0 ? "" : StyleList()[static_cast<std::size_t>(position)].name;
}

std::string ArrangementName(std::int32_t style, std::int32_t arrangement) {
    for (const ArrangementEntry& entry : ArrangementList(style))
        if (entry.arrangement == arrangement) return entry.name;
    return "";
}

std::string ScaleName(std::int32_t scale) {
    if (scale == kChromaticScale) return "all twelve tones";
    return IsMelodyScale(scale) ? kScaleNames[static_cast<std::size_t>(scale)] : "";
}

bool IsWrittenWithFlats(std::int32_t root, std::int32_t scale) {
    switch (PitchClass(root + ToSignature(scale))) { // as a major key
    case 1:                                          // Db, five flats
    case 3:                                          // Eb, three
    case 5:                                          // F, one
    case 8:                                          // Ab, four
    case 10:                                         // Bb, two
        return true;
    default:
        return false;
    }
}

std::string KeyAndScaleName(std::int32_t root, std::int32_t scale) {
    return std::string(NoteName(root, IsWrittenWithFlats(root, scale))) + " " + ScaleName(scale);
}

std::string PresetName(std::int32_t preset) {
    const bool isOne = preset >= 0 && preset < kPresetCount;
    return isOne ? FactoryPresets()[static_cast<std::size_t>(preset)].name : "";
}

std::string VoiceName(std::int32_t voice) {
    const bool isOne = voice >= 0 && voice < kPresetVoices;
    return isOne ? kFileVoiceNames[static_cast<std::size_t>(voice)] : "";
}

std::string IntervalNames(std::span<const std::int32_t> intervals) {
    std::string text;
    for (const std::int32_t interval : intervals) {
        if (!IsManualInterval(interval)) continue;
        if (!text.empty()) text += ", ";
        text += ManualIntervalList()[static_cast<std::size_t>(ListPositionOfInterval(interval))];
    }
    return text;
}

std::string SignedText(std::int32_t number) {
    std::string text = number > 0 ? "+" : "";
    return text.append(std::to_string(number));
}

std::string FormatChoices() {
    std::string text;
    AppendList(text, "Styles (--style)", NamedStyles());
    for (const StyleEntry& entry : StyleList()) {
        if (ArrangementList(entry.style).empty()) continue;
        AppendList(text, "Arrangements of " + std::string(entry.name) + " (--arrangement)",
                   NamedArrangements(entry.style));
    }
    std::vector<NamedNumber> scales = NamedScales();
    NamedNumber& chromatic = scales.emplace_back();
    chromatic.number = kChromaticScale;
    chromatic.name = ScaleName(kChromaticScale) + " (--harmony-scale alone)";
    AppendList(text, "Scales (--scale, --harmony-scale)", scales);
    AppendList(text, "Intervals in scale steps (--intervals)", NamedIntervals());
    return text;
}

} // namespace sonorelle
