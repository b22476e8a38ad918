// From the texts of the options to settings: one small reader an option. A reader gives a text when something
// is wrong: what, and what is allowed.

#include "cli/arrange_command.h"
#include "cli/arrangement_files.h"
#include "cli/arrangement_names.h"
#include "cli/named_numbers.h"
#include "cli/playing_options.h"
#include "cli/result_file.h"
#include "cli/sound_options.h"
#include "cli/wrong_option.h"
#include "harmony/pitch_class.h"
#include "harmony/styles.h"
#include "platform/numbers.h"

#include <set>
#include <string_view>
#include <utility>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

std::string ReadStyle(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (options.style) {
        const std::optional<std::int32_t> position = FindStyle(*options.style);
        if (!position) return WrongOption("--style", *options.style, StyleChoices());
        const StyleEntry& entry = StyleList()[static_cast<std::size_t>(*position)];
        settings.style = entry.style;
        settings.arrangement = entry.arrangement;
    }
    if (!options.arrangement) return "";
    if (ArrangementList(settings.style).empty())
        return "--arrangement: the style " + StyleName(settings.style, settings.arrangement) +
               " has none to choose from";
    const std::optional<std::int32_t> found = FindArrangement(settings.style, *options.arrangement);
    if (!found) return WrongOption("--arrangement", *options.arrangement, ArrangementChoices(settings.style));
    settings.arrangement = *found;
    return "";
}

std::string ReadKey(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (options.root && !(settings.root = FindRoot(*options.root)))
        return WrongOption("--root", *options.root, "a note such as C, C# or Db, or 0 (C) to 11 (B)");
    if (options.scale && !(settings.scale = FindScale(*options.scale)))
        return WrongOption("--scale", *options.scale, ScaleChoices());
    if (options.harmonyScale && !(settings.harmonyScale = FindHarmonyScale(*options.harmonyScale)))
        return WrongOption("--harmony-scale", *options.harmonyScale,
                           ScaleChoices() + ", or 11 for all twelve tones");
    return "";
}

std::string ReadSnap(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (!options.snap) return "";
    if (*options.snap != "on" && *options.snap != "off")
        return WrongOption("--snap", *options.snap, "on, off");
    settings.snap = *options.snap == "on";
    return "";
}

// In the intelligent style no more voices can lie above the melody than there are; the others do not ask.
std::string ReadRange(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (!options.range) return "";
    const std::int32_t most = settings.style == kStyleIntelligent
                                  ? CountVoices(settings.style, settings.arrangement) - 1
                                  : kVoiceSlots - 1;
    const std::optional<std::int32_t> range = ReadInteger(*options.range);
    if (!range || *range < 0 || *range > most)
        return WrongOption("--range", *options.range,
                           std::string("0 to ") + std::to_string(most) + " harmony voices above the melody");
    settings.voiceRange = *range;
    return "";
}

std::string ReadSpread(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (!options.spread) return "";
    const std::optional<double> spread = ReadNumber(*options.spread);
    if (!spread || *spread < 0 || *spread > 1)
        return WrongOption("--spread", *options.spread, "0 (close) to 1 (wide)");
    settings.spread = static_cast<float>(*spread);
    return "";
}

std::string ReadIntervals(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (!options.intervals) return "";
    const std::string allowed = "four intervals with commas between them, each " + IntervalChoices();
    std::string_view rest = *options.intervals;
    for (std::size_t voice = 0; voice < settings.intervals.size(); ++voice) {
        const bool isLast = voice + 1 == settings.intervals.size();
        const std::size_t comma = rest.find(',');
        if (isLast != (comma == std::string_view::npos))
            return WrongOption("--intervals", *options.intervals, allowed);
        const std::optional<std::int32_t> interval = FindInterval(rest.substr(0, comma));
        if (!interval) return WrongOption("--intervals", *options.intervals, allowed);
        settings.intervals[voice] = *interval;
        if (!isLast) rest.remove_prefix(comma + 1);
    }
    return "";
}

std::string ReadTranspose(const ArrangeOptions& options, ArrangementSettings& settings) {
    constexpr std::int32_t kMost = ArrangementSettings::kLargestTranspose;
    if (!options.transpose) return "";
    const std::optional<std::int32_t> semitones = ReadInteger(*options.transpose);
    if (!semitones || *semitones < -kMost || *semitones > kMost)
        return WrongOption("--transpose", *options.transpose,
                           SignedText(-kMost) + " to " + SignedText(kMost) + " semitones");
    settings.transpose = *semitones;
    return "";
}

std::string ReadTempo(const ArrangeOptions& options, ArrangementSettings& settings) {
    constexpr float kSlowest = ArrangementSettings::kSlowestTempo;
    constexpr float kFastest = ArrangementSettings::kFastestTempo;
    if (!options.tempo) return "";
    const std::optional<double> tempo = ReadNumber(*options.tempo);
    if (!tempo || *tempo < static_cast<double>(kSlowest) || *tempo > static_cast<double>(kFastest))
        return WrongOption("--tempo", *options.tempo,
                           FormatFloat(kSlowest) + " to " + FormatFloat(kFastest) +
                               " quarter notes per minute");
    settings.tempo = static_cast<float>(*tempo);
    return "";
}

std::string ReadRegion(const ArrangeOptions& options, ArrangementSettings& settings) {
    if (!options.region) return "";
    const std::string wrong =
        WrongOption("--region", *options.region,
                    "START:END in seconds, the start from 0 on and before the end; either may be left out");
    const std::string_view text = *options.region;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return wrong;
    const std::string_view start = text.substr(0, colon);
    const std::string_view end = text.substr(colon + 1);
    RegionWish region;
    if (!start.empty()) {
        const std::optional<double> seconds = ReadNumber(start);
        if (!seconds || *seconds < 0) return wrong;
        region.startSeconds = *seconds;
    }
    if (!end.empty() && !(region.endSeconds = ReadNumber(end))) return wrong;
    if (region.endSeconds && !(*region.endSeconds > region.startSeconds)) return wrong;
    settings.region = region;
    return "";
}

} // namespace

std::string ReadSettings(const ArrangeOptions& options, ArrangementSettings& settings) {
    for (const auto read : {ReadStyle, ReadKey, ReadSnap, ReadRange, ReadSpread, ReadIntervals, ReadTranspose,
                            ReadTempo, ReadRegion}) {
        if (std::string wrong = read(options, settings); !wrong.empty()) return wrong;
    }
    return ReadSoundSettings(options, settings);
}

std::string FindWrongPlaces(const ArrangeOptions& options, const std::vector<std::string>& recordings,
                            const ArrangementSettings& settings) {
    std::set<std::string> places;
    for (const std::string& file : recordings) {
        for (const std::string& path :
             ArrangementFiles(options.folder, file).Wanted(settings, options.stems)) {
            if (!places.insert(path).second)
                return file + ": the results of another recording would have the same names";
            for (const std::string& recording : recordings)
                if (AreTheSameFile(path, recording)) return path + ": would replace the recording";
            if (options.midiIn && AreTheSameFile(path, *options.midiIn))
                return path + ": would replace the keys";
        }
    }
    return "";
}

std::string FindWrongUse(const ArrangeOptions& options, const ArrangementSettings& settings) {
    if (options.list) return "";
    if (options.files.empty() && !options.state) return "FILE is required";
    if (options.folder.empty()) return "--output: the folder has no name";
    if (std::string wrong = FindWrongSessionUse(options); !wrong.empty()) return wrong;
    return FindWrongPlaces(options, options.files, settings);
}

} // namespace sonorelle
