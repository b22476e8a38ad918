#include "sound_tables.h"

#include <algorithm>

namespace sonorelle::tools {
namespace {

constexpr double kUnisonCents = 3.0;
constexpr double kLowUnisonDecibels = 30.0;
constexpr double kHighUnisonDecibels = 25.0;

std::string PitchText(const SoundFigures& figures, int interval, const PitchTargets& targets) {
    const double median = MedianMagnitude(figures.pitchErrorsCents);
    const double high = HighMagnitude(figures.pitchErrorsCents);
    const double limit = interval == 0 ? kUnisonCents : targets.medianCents;
    return Marked(Text("%.1f / %.1f", median, high), median <= limit && high <= targets.highCents);
}

std::string PlainPitchText(const SoundFigures& figures) {
    return Text("%.1f / %.1f", MedianMagnitude(figures.pitchErrorsCents),
                HighMagnitude(figures.pitchErrorsCents));
}

std::string UnheardText(const SoundFigures& figures) {
    return Text("%.1f", 100.0 * static_cast<double>(figures.unheardFrames) /
                            static_cast<double>(std::max<std::size_t>(figures.pitchFrames, 1)));
}

} // namespace

ReportTable PitchTable(const SoundResults& results, const PitchTargets& targets, bool songs) {
    ReportTable table;
    table.title = songs ? "Pitch, synthetic singer" : "Pitch, recordings";
    table.note =
        Text("Error of the pitch in cents: median / 95th percentile of the magnitude (targets: %g / %g, and "
             "%g at 0). Bias is the median of the signed error. No pitch: frames in which Praat hears the "
             "source's pitch but none in the voice.",
             targets.medianCents, targets.highCents, kUnisonCents);
    if (songs)
        table.note +=
            " Ideal: the same singer singing at the pitch of the voice; that is what the judge and the "
            "singer's own jitter contribute.";
    table.rows = {{"semitones", "error, cents", "bias", "no pitch, %"}};
    if (songs) table.rows[0].insert(table.rows[0].begin() + 2, "ideal");
    for (const int interval : kIntervals) {
        const SoundFigures voice = Pooled(results, &SoundResult::voices, interval);
        ReportRow row{Interval(interval), PitchText(voice, interval, targets)};
        if (songs) row.push_back(PlainPitchText(Pooled(results, &SoundResult::ideal, interval)));
        row.push_back(Text("%+.1f", Median(voice.pitchErrorsCents)));
        row.push_back(UnheardText(voice));
        table.rows.push_back(row);
    }
    return table;
}

ReportTable PitchBySound(const SoundResults& results, const PitchTargets& targets, const char* what) {
    ReportTable table;
    table.title = Text("Pitch by sound, %s", what);
    table.note = "Median / 95th percentile of the error in cents, by semitones.";
    ReportRow heading{"", "notes"};
    for (const int interval : kIntervals) heading.push_back(Interval(interval));
    table.rows.push_back(heading);
    for (const SoundResult& result : results) {
        ReportRow row{result.name, Text("%zu", result.analysedNotes)};
        for (const int interval : kIntervals)
            row.push_back(PitchText(result.voices.at(interval), interval, targets));
        table.rows.push_back(row);
    }
    return table;
}

ReportTable UnisonTable(const SoundResults& results) {
    ReportTable table;
    table.title = "Unison: the recording given back";
    table.note = Text("Signal to error in vowels in dB. Periods of 128 samples and more (up to 345 Hz at "
                      "44.1 kHz): median where the "
                      "vowel lies, then median and worst (target: %g) with each vowel moved as a whole to "
                      "where it fits, and the "
                      "largest such move; a vowel lies where the walk over the unvoiced marks before it has "
                      "left it. Shorter periods: "
                      "median where the vowel lies, then median and worst (target: %g) in pieces of 5 ms "
                      "moved by up to a period. "
                      "Start: how much later the whole sound begins, since playback begins on a mark; it is "
                      "taken out of everything.",
                      kLowUnisonDecibels, kHighUnisonDecibels);
    table.rows = {{"", "start, ms", "vowels", "as it lies", "moved", "worst", "moved by, ms", "higher vowels",
                   "as it lies", "aligned", "worst"}};
    for (const SoundResult& result : results) {
        const UnisonFigures& unison = result.unison;
        ReportRow row{result.name, Text("%+.2f", result.startMilliseconds)};
        row.push_back(Text("%zu", unison.lowDecibels.size()));
        if (unison.lowDecibels.empty()) {
            row.insert(row.end(), 4, "");
        } else {
            const double worst = Smallest(unison.lowPlacedDecibels);
            row.insert(row.end(), {Text("%.1f", Median(unison.lowDecibels)),
                                   Text("%.1f", Median(unison.lowPlacedDecibels)),
                                   Marked(Text("%.1f", worst), worst >= kLowUnisonDecibels),
                                   Text("%+.1f", Furthest(unison.lowLagsMilliseconds))});
        }
        row.push_back(Text("%zu", unison.highDecibels.size()));
        if (!unison.highDecibels.empty()) {
            const double worst = Smallest(unison.highAlignedDecibels);
            row.insert(row.end(), {Text("%.1f", Median(unison.highDecibels)),
                                   Text("%.1f", Median(unison.highAlignedDecibels)),
                                   Marked(Text("%.1f", worst), worst >= kHighUnisonDecibels)});
        }
        table.rows.push_back(row);
    }
    return table;
}

ReportTable LeadTable(const SoundResults& results) {
    ReportTable table;
    table.title = "The lead itself moved: the onset that lies furthest from the source's, in ms";
    table.note = "The harmony voices run on the lead's clock. Output periods are whole samples, the clock is "
                 "not: a lead "
                 "that does not sing at its own pitch wanders.";
    ReportRow heading{""};
    for (const int interval : kIntervals) heading.push_back(Interval(interval));
    table.rows.push_back(heading);
    for (const SoundResult& result : results) {
        ReportRow row{result.name};
        for (const int interval : kIntervals) {
            const auto found = result.leadOnsetMilliseconds.find(interval);
            row.push_back(found == result.leadOnsetMilliseconds.end() ? "" : Text("%+.1f", found->second));
        }
        table.rows.push_back(row);
    }
    return table;
}

} // namespace sonorelle::tools
