#include "cli/sound_options.h"

#include "cli/arrange_command.h"
#include "cli/arrangement_names.h"
#include "cli/arrangement_settings.h"
#include "cli/named_numbers.h"
#include "cli/wrong_option.h"
#include "harmony/styles.h"
#include "platform/numbers.h"

#include <optional>
#include <string_view>

namespace sonorelle {

namespace {

std::string ReadPreset(const ArrangeOptions& options, SoundSettings& sound) {
    if (!options.preset) return "";
    const std::optional<std::int32_t> preset = FindPreset(*options.preset);
    if (!preset) return WrongOption("--preset", *options.preset, PresetChoices());
    sound.preset = *preset;
    sound.voices = sound.presets[static_cast<std::size_t>(*preset)];
    return "";
}

// "1:vol=0.5,pan=-0.3,mute"
std::string ReadVoice(std::string_view option, const ArrangementSettings& settings, SoundSettings& sound) {
    const std::int32_t voiceCount = ConsortierClassic::CountVoices(settings.style, settings.arrangement);
    const std::size_t colon = option.find(':');
    const std::optional<std::int32_t> found = FindVoice(option.substr(0, colon), voiceCount);
    if (!found || colon == std::string_view::npos)
        return WrongOption("--voice", option,
                           "a voice, a colon and what to set, with the voices " + VoiceChoices(voiceCount) +
                               " of " + StyleName(settings.style, settings.arrangement));
    VoiceStrip& strip = sound.voices[static_cast<std::size_t>(*found)];
    std::string_view rest = option.substr(colon + 1);
    for (bool isLast = false; !isLast;) {
        const std::size_t comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        const bool hadSolo = strip.solo;
        if (const std::string allowed = SetStripControl(strip, item); !allowed.empty())
            return WrongOption("--voice", item, allowed);
        if (strip.solo && !hadSolo) {
            for (VoiceStrip& other : sound.voices) other.solo = &other == &strip; // solo is exclusive
        }
        isLast = comma == std::string_view::npos;
        if (!isLast) rest.remove_prefix(comma + 1);
    }
    return "";
}

std::string ReadTuning(const ArrangeOptions& options, SoundSettings& sound) {
    constexpr double kLowest = SoundSettings::kLowestTuning;
    constexpr double kHighest = SoundSettings::kHighestTuning;
    if (!options.tuning) return "";
    const std::optional<double> hertz = ReadNumber(*options.tuning);
    if (!hertz || *hertz < kLowest || *hertz > kHighest)
        return WrongOption("--tuning", *options.tuning,
                           FormatFloat(static_cast<float>(kLowest)) + " to " +
                               FormatFloat(static_cast<float>(kHighest)) + " Hz");
    sound.tuning = static_cast<float>(*hertz);
    return "";
}

std::string ReadSpeed(const ArrangeOptions& options, SoundSettings& sound) {
    constexpr double kSlowest = SoundSettings::kSlowestSpeed;
    constexpr double kFastest = SoundSettings::kFastestSpeed;
    if (!options.speed) return "";
    const std::optional<double> speed = ReadNumber(*options.speed);
    if (!speed || *speed < kSlowest || *speed > kFastest)
        return WrongOption("--speed", *options.speed,
                           FormatFloat(static_cast<float>(kSlowest)) + " to " +
                               FormatFloat(static_cast<float>(kFastest)) + " times as fast");
    sound.speed = static_cast<float>(*speed);
    return "";
}

} // namespace

// The preset comes first wherever it stands: it is what the voices' own settings depart from.
std::string ReadSoundSettings(const ArrangeOptions& options, ArrangementSettings& settings) {
    SoundSettings& sound = settings.sound;
    if (std::string wrong = ReadPreset(options, sound); !wrong.empty()) return wrong;
    for (const std::string& voice : options.voices)
        if (std::string wrong = ReadVoice(voice, settings, sound); !wrong.empty()) return wrong;
    if (std::string wrong = ReadTuning(options, sound); !wrong.empty()) return wrong;
    return ReadSpeed(options, sound);
}

} // namespace sonorelle
