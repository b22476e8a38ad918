// The names and numbers under which styles, arrangements, keys, intervals, presets and voices are asked for.
//
// Names are found in any case, with blanks around them, and by a beginning that fits one name alone:
// "organum" is "Organum 2/3 Voices". Each search gives nothing when the text fits none, or several.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sonorelle {

// By name or position in the Style list: the position, 0 to 7.
std::optional<std::int32_t> FindStyle(std::string_view text);
// By name or number: the code of an arrangement that the style (a code) has a name for.
std::optional<std::int32_t> FindArrangement(std::int32_t style, std::string_view text);
// "C#", "db", "E", or 0 (C) to 11: a pitch class.
std::optional<std::int32_t> FindRoot(std::string_view text);
// By name or number: a row of the scales, a named one.
std::optional<std::int32_t> FindScale(std::string_view text);
// The same, and the row of all twelve tones by its number.
std::optional<std::int32_t> FindHarmonyScale(std::string_view text);
// "Up Third", or scale steps -7 to 7.
std::optional<std::int32_t> FindInterval(std::string_view text);

// By name or number: kDefaultPreset or kFlatPreset.
std::optional<std::int32_t> FindPreset(std::string_view text);
// By colour or number: one of the first `voiceCount` voices; 0 is the melody's.
std::optional<std::int32_t> FindVoice(std::string_view text, std::int32_t voiceCount);

// What may be asked for, in one line for a message.
std::string StyleChoices();
std::string ArrangementChoices(std::int32_t style);
std::string ScaleChoices();
std::string IntervalChoices();
std::string PresetChoices();
std::string VoiceChoices(std::int32_t voiceCount);

// "Block Chord 4 Voices"; empty for a style and arrangement that no list knows.
std::string StyleName(std::int32_t style, std::int32_t arrangement);
// "Drop2"; empty where the style has no arrangements to choose from.
std::string ArrangementName(std::int32_t style, std::int32_t arrangement);
// "Aeolic Minor", or "all twelve tones" for the row without a name.
std::string ScaleName(std::int32_t scale);
// Whether the key is written with flats: its signature has some, as that of F major or of D minor.
bool IsWrittenWithFlats(std::int32_t root, std::int32_t scale);
// "Eb Major", "C# Aeolic Minor".
std::string KeyAndScaleName(std::int32_t root, std::int32_t scale);

// "default".
std::string PresetName(std::int32_t preset);
// "orange", "red", "blue", "green"; empty for another voice.
std::string VoiceName(std::int32_t voice);

// "Prime, Down Third" for {0, -2}; numbers that are no interval are left out.
std::string IntervalNames(std::span<const std::int32_t> intervals);

// "+3", "-12", "0".
std::string SignedText(std::int32_t number);

// Everything that can be asked for by number or name, as a text of several lines.
std::string FormatChoices();

} // namespace sonorelle
