#include "sound_tables.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace sonorelle::tools {
namespace {

constexpr double kFormantPercent = 3.0;
constexpr int kFormantsUpTo = 7; // semitones
// At unison, steps up to a fifth above the source's own: the rounding and the crossfades of equal periods.
constexpr double kUnisonStep = 1.2;
constexpr double kHissDecibels = 6.0; // doubled
// Praat itself calls a frame voiced from a correlation of 0.45 on.
constexpr double kBuzz = 0.45;

// Signed medians of the three formants.
std::string FormantText(const SoundFigures& figures, bool judged) {
    std::string text;
    bool holds = true;
    for (const Values& shifts : figures.formantsPercent) {
        if (shifts.empty()) return "";
        const double shift = Median(shifts);
        holds = holds && std::fabs(shift) <= kFormantPercent;
        text += Text("%s%+.1f", text.empty() ? "" : " / ", shift);
    }
    return judged ? Marked(text, holds) : text;
}

std::string FormantSpread(const SoundFigures& figures) {
    std::string text;
    for (const Values& shifts : figures.formantsPercent)
        text += Text("%s%.1f", text.empty() ? "" : " / ", MedianMagnitude(shifts));
    return figures.formantsPercent[0].empty() ? "" : text;
}

} // namespace

ReportTable FormantTable(const SoundResults& results, bool songs) {
    ReportTable table;
    table.title = songs ? "Formants, synthetic singer" : "Formants, recordings";
    table.note = Text(
        "Shift of F1 / F2 / F3 beside the source in per cent: median over the vowels (target: %g up to %d "
        "semitones), and median of the magnitude, where neither pitch lies above 350 Hz. A formant is "
        "only seen through the harmonics near it, so that a single vowel may err by a tenth.",
        kFormantPercent, kFormantsUpTo);
    if (songs)
        table.note += " The ideal voice shows how much of it is that error; the last column is the engine's "
                      "voice beside "
                      "the ideal one, which has the same harmonics.";
    table.rows = {{"semitones", "vowels", "shift", "magnitude"}};
    if (songs)
        table.rows[0].insert(table.rows[0].end(),
                             {"shift of the ideal", "its magnitude", "beside the ideal"});
    for (const int interval : kIntervals) {
        const SoundFigures voice = Pooled(results, &SoundResult::voices, interval);
        ReportRow row{Interval(interval), Text("%zu", voice.formantsPercent[0].size()),
                      FormantText(voice, std::abs(interval) <= kFormantsUpTo), FormantSpread(voice)};
        if (songs) {
            const SoundFigures ideal = Pooled(results, &SoundResult::ideal, interval);
            row.insert(row.end(),
                       {FormantText(ideal, false), FormantSpread(ideal),
                        FormantText(Pooled(results, &SoundResult::againstIdeal, interval), false)});
        }
        table.rows.push_back(row);
    }
    return table;
}

ReportTable ColourTable(const SoundResults& results, bool songs) {
    ReportTable table;
    table.title = songs ? "Colour, synthetic singer" : "Colour, recordings";
    table.note = "Envelope: pitch-corrected long-term spectrum in bands of 100 Hz up to 8 kHz, distance to "
                 "the source in "
                 "dB after the level was taken out, median over the sounds. Harmonicity: loss of the "
                 "harmonics-to-noise ratio in vowels in dB, median over frames; negative is a gain.";
    table.rows = {{"semitones", "envelope", "harmonicity loss"}};
    if (songs) table.rows = {{"semitones", "envelope", "ideal", "harmonicity loss", "ideal"}};
    for (const int interval : kIntervals) {
        const SoundFigures voice = Pooled(results, &SoundResult::voices, interval);
        const SoundFigures ideal = Pooled(results, &SoundResult::ideal, interval);
        ReportRow row{Interval(interval), Text("%.1f", Median(voice.envelopeDecibels))};
        if (songs) row.push_back(Text("%.1f", Median(ideal.envelopeDecibels)));
        row.push_back(Text("%.1f", Median(voice.harmonicityLossDecibels)));
        if (songs) row.push_back(Text("%.1f", Median(ideal.harmonicityLossDecibels)));
        table.rows.push_back(row);
    }
    return table;
}

ReportTable TimeTable(const SoundResults& results, const char* what) {
    ReportTable table;
    table.title = Text("Clicks, onsets and level, %s", what);
    table.note =
        Text("Steps: largest step between two samples over the source's largest, at equal level, worst sound "
             "(target: %g at 0). Nearby: the same for pieces of 2 ms beside the source within 30 ms, median "
             "and worst sound. Onsets: energy onsets after rests and consonants, in ms beside the source's, "
             "median and 95th percentile of the magnitude. Level: of the vowels beside the source, median "
             "and extremes in dB.",
             kUnisonStep);
    table.rows = {{"semitones", "steps", "nearby", "onsets, signed median", "onsets, 95%", "level", "lowest",
                   "highest"}};
    for (const int interval : kIntervals) {
        const SoundFigures voice = Pooled(results, &SoundResult::voices, interval);
        const double step = Largest(voice.stepRatios);
        table.rows.push_back(
            {Interval(interval), Marked(Text("%.2f", step), interval != 0 || step <= kUnisonStep),
             Text("%.2f / %.2f", Median(voice.localStepRatios), Largest(voice.localStepRatios)),
             Text("%+.1f", Median(voice.onsetsMilliseconds)),
             Text("%.1f", HighMagnitude(voice.onsetsMilliseconds)),
             Text("%+.1f", Median(voice.levelsDecibels)), Text("%+.1f", Smallest(voice.levelsDecibels)),
             Text("%+.1f", Largest(voice.levelsDecibels))});
    }
    return table;
}

ReportTable HissTable(const SoundResults& results, const char* what) {
    ReportTable table;
    table.title = Text("Unvoiced consonants, %s", what);
    table.note = Text(
        "Level beside the source in dB (target: below %g). Periodicity: largest normalised correlation "
        "with itself at lags of 80 to 830 Hz (target: 95%% of the consonants below %g). Heard as voiced: "
        "frames in which Praat hears a pitch.",
        kHissDecibels, kBuzz);
    table.rows = {{"semitones", "consonants", "level", "highest", "periodicity", "95%", "source's", "95%",
                   "heard as voiced, %"}};
    for (const int interval : kIntervals) {
        const SoundFigures voice = Pooled(results, &SoundResult::voices, interval);
        const double highest = Largest(voice.hissLevelsDecibels);
        const double buzz = test::Percentile(voice.hissPeriodicity, 0.95);
        const double before = test::Percentile(voice.hissPeriodicityBefore, 0.95);
        table.rows.push_back(
            {Interval(interval), Text("%zu", voice.hissLevelsDecibels.size()),
             Text("%+.1f", Median(voice.hissLevelsDecibels)),
             Marked(Text("%+.1f", highest), highest < kHissDecibels),
             Text("%.2f", Median(voice.hissPeriodicity)),
             Marked(Text("%.2f", buzz), buzz < std::max(kBuzz, before)),
             Text("%.2f", Median(voice.hissPeriodicityBefore)), Text("%.2f", before),
             Text("%.0f", 100.0 * static_cast<double>(voice.voicedHissFrames) /
                              static_cast<double>(std::max<std::size_t>(voice.hissFrames, 1)))});
    }
    return table;
}

} // namespace sonorelle::tools
