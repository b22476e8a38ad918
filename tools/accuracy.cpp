// sonorelle_accuracy [FOLDER]: one table of how well the analysis agrees with what was sung, over a seeded
// set of synthetic melodies and over the recordings with known notes in FOLDER (NAME.wav with NAME.notes.csv
// beside it; default: the folder that SONORELLE_RECORDINGS names). It reports and judges nothing: the exit
// code is always 0.

#include "analysed_melody.h"
#include "known_notes.h"
#include "synthetic_figures.h"

#include "cli/note_names.h"
#include "cli/text_columns.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace sonorelle::tools {
namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// What the figures ought to be.
constexpr double kTargetF = 0.97;
constexpr double kTargetCurve = 0.995;
constexpr double kTargetKeys = 0.95;
constexpr double kTargetTuningCents = 3.0;
constexpr double kTargetMarks = 0.99;

[[gnu::format(printf, 1, 2)]] std::string Text(const char* format, ...) {
    char buffer[160];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

std::string Percent(double share) { return Text("%.2f%%", 100.0 * share); }
std::string Ratio(double value) { return Text("%.3f", value); }

double Median(std::vector<double> values) {
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    return 0.5 * (values[(values.size() - 1) / 2] + values[values.size() / 2]);
}

double MeanMagnitude(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += std::fabs(value);
    return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

double LargestMagnitude(const std::vector<double>& values) {
    double largest = 0.0;
    for (const double value : values) largest = std::max(largest, std::fabs(value));
    return largest;
}

void Print(const std::string& title, const std::vector<Align>& alignments, const Rows& rows) {
    std::printf("%s\n\n%s\n", title.c_str(), FormatColumns(alignments, rows).c_str());
    std::fflush(stdout);
}

// On a terminal, one line that counts up.
Progress Counter(const char* what) {
    return [what](std::size_t done, std::size_t all) {
        if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "\r%s %zu of %zu\033[K", what, done + 1, all);
    };
}

void EndProgress() {
    if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "\r\033[K");
}

// Synthetic melodies
// ---------------------------------------------------------------------------------------------------------

Row Figure(const std::string& name, const std::string& value, const std::string& target, bool holds) {
    return {name, value, target, holds ? "holds" : "MISSED"};
}

void AddNoteFigures(Rows& rows, const MelodyFigures& figures) {
    const test::NoteScore& notes = figures.notes;
    rows.push_back(
        {"notes known / found / matched", Text("%zu / %zu / %zu", notes.known, notes.found, notes.matched)});
    rows.push_back({"notes, precision", Ratio(notes.Precision())});
    rows.push_back({"notes, recall", Ratio(notes.Recall())});
    rows.push_back(Figure("notes, F (50 ms, 50 cents)", Ratio(notes.FMeasure()), ">= 0.970",
                          notes.FMeasure() >= kTargetF));
    rows.push_back({"notes, F with onsets within 100 ms", Ratio(figures.notesLate.FMeasure())});
    rows.push_back({"onset, median error", Text("%+.1f ms", 1e3 * Median(figures.onsetErrorsSeconds))});
}

void AddCurveFigures(Rows& rows, const test::CurveScore& curve) {
    rows.push_back(Figure("pitch curve within 50 cents", Percent(curve.Accuracy()), ">= 99.50%",
                          curve.Accuracy() >= kTargetCurve));
    const auto voiced = static_cast<double>(std::max<std::size_t>(curve.voiced, 1));
    rows.push_back({"pitch curve off by octaves", Percent(static_cast<double>(curve.octaves) / voiced)});
    rows.push_back({"sung frames found unvoiced", Percent(static_cast<double>(curve.missed) /
                                                          (voiced + static_cast<double>(curve.missed)))});
}

void AddKeyAndTuning(Rows& rows, const MelodyFigures& figures) {
    const KeyScore& keys = figures.keys;
    const auto melodies = static_cast<double>(std::max<std::size_t>(keys.melodies, 1));
    const double right = static_cast<double>(keys.same) / melodies;
    rows.push_back(Figure(Text("key right (of %zu melodies)", keys.melodies), Percent(right), ">= 95.00%",
                          right >= kTargetKeys));
    rows.push_back(
        {"key: the relative major or minor", Percent(static_cast<double>(keys.relative) / melodies)});
    rows.push_back({"key: right, but for the quarter tone between",
                    Percent(static_cast<double>(keys.shifted) / melodies)});
    const double worst = LargestMagnitude(figures.tuningErrorsCents);
    rows.push_back({"tuning, mean error", Text("%.2f cents", MeanMagnitude(figures.tuningErrorsCents))});
    rows.push_back(Figure("tuning, largest error", Text("%.2f cents", worst), "<= 3 cents",
                          worst <= kTargetTuningCents));
}

void AddMarks(Rows& rows, const std::string& name, const test::MarkScore& marks) {
    rows.push_back(Figure(name, Percent(marks.Share()), ">= 99.00%", marks.Share() >= kTargetMarks));
}

const std::vector<Align> kFigureColumns{Align::kLeft, Align::kRight, Align::kLeft, Align::kLeft};

Row GroupRow(const std::string& name, const MelodyFigures& figures) {
    return {name,
            Text("%zu", figures.keys.melodies),
            Ratio(figures.notes.Precision()),
            Ratio(figures.notes.Recall()),
            Ratio(figures.notes.FMeasure()),
            Ratio(figures.notesLate.FMeasure()),
            Percent(figures.curve.Accuracy()),
            Percent(figures.marks.Share()),
            Text("%zu", figures.keys.same),
            Text("%.2f", LargestMagnitude(figures.tuningErrorsCents))};
}

void PrintGroups(const MelodySet& set) {
    Rows rows{{"", "melodies", "precision", "recall", "F", "F 100 ms", "curve", "marks", "key right",
               "tuning max"}};
    for (const auto& [lowest, figures] : set.byLowestPitch)
        rows.push_back(GroupRow(Text("from %.0f Hz up", test::HertzFromMidiPitch(lowest)), figures));
    for (const auto& [rate, figures] : set.byRate) rows.push_back(GroupRow(Text("at %d Hz", rate), figures));
    rows.push_back(GroupRow("all", set.all));
    std::vector<Align> alignments(rows.front().size(), Align::kRight);
    alignments.front() = Align::kLeft;
    Print("The same melodies by register and by sample rate (targets: F 0.970, curve 99.5%, marks 99%, "
          "tuning 3 cents)",
          alignments, rows);
}

// The three sets side by side.
using Sets = std::array<const MelodyFigures*, 3>;

void PrintLosses(const Sets& sets) {
    Rows rows{{"", "set 1", "without s", "set 2"}};
    for (std::size_t i = 0; i < kLossKinds; ++i) {
        Row row{LossName(i)};
        for (const MelodyFigures* set : sets) row.push_back(Text("%zu", set->lost.counts[i]));
        rows.push_back(row);
    }
    Print("Where notes are lost (onset within 50 ms, pitch within 50 cents)",
          {Align::kLeft, Align::kRight, Align::kRight, Align::kRight}, rows);
}

void PrintTruths(const Sets& sets) {
    Rows rows{{"", "F set 1", "F without s", "F set 2", "tuning set 1", "without s", "set 2"}};
    for (std::size_t i = 0; i < kTruths; ++i) {
        Row row{TruthName(i)};
        for (const MelodyFigures* set : sets) row.push_back(Ratio(set->notesOnTruth[i].FMeasure()));
        for (const MelodyFigures* set : sets)
            row.push_back(Text("%.2f cents", LargestMagnitude(set->tuningErrorsOnTruth[i])));
        rows.push_back(row);
    }
    std::vector<Align> alignments(rows.front().size(), Align::kRight);
    alignments.front() = Align::kLeft;
    Print("The note stages alone, on marks that tell the truth: F and the largest error of the tuning",
          alignments, rows);
}

void ReportMelodies() {
    const MelodySet set = MeasureMelodies(Hisses::kAsWritten, Counter("melody"));
    const MelodySet plosives = MeasureMelodies(Hisses::kPlosivesInstead, Counter("melody without s"));
    const MelodyFigures keys = MeasureKeys(Counter("melody for keys"));
    const std::map<int, test::MarkScore> vowels = MeasureSteadyVowels(Counter("steady vowel"));
    EndProgress();

    Rows rows{{"", "measured", "target", ""}};
    AddNoteFigures(rows, set.all);
    AddCurveFigures(rows, set.all.curve);
    AddKeyAndTuning(rows, set.all);
    AddMarks(rows, "marks one a true period, inner parts of notes", set.all.marks);
    if (set.all.failed > 0) rows.push_back({"melodies that were not analysed", Text("%zu", set.all.failed)});
    Print("Set 1, synthetic melodies with words: 70 to 1000 Hz, 11025 to 96000 Hz, any key, any tuning",
          kFigureColumns, rows);
    PrintGroups(set);

    rows = {{"", "measured", "target", ""}};
    AddNoteFigures(rows, plosives.all);
    AddCurveFigures(rows, plosives.all.curve);
    Print("Set 1 without s: the same melodies with a t wherever they have an s", kFigureColumns, rows);

    rows = {{"", "measured", "target", ""}};
    AddNoteFigures(rows, keys);
    AddCurveFigures(rows, keys.curve);
    AddKeyAndTuning(rows, keys);
    Print("Set 2, five random diatonic melodies in each of the 24 keys, at 22050 Hz, 100 and 160 beats a "
          "minute",
          kFigureColumns, rows);

    rows = {{"", "measured", "target", ""}};
    test::MarkScore all;
    for (const auto& [hertz, score] : vowels) {
        AddMarks(rows, Text("%d Hz", hertz), score);
        all += score;
    }
    AddMarks(rows, "all", all);
    Print("Steady vowels of 2 s at every rate: true periods with exactly one mark", kFigureColumns, rows);

    const Sets sets{&set.all, &plosives.all, &keys};
    PrintLosses(sets);
    PrintTruths(sets);
}

// Recordings
// ---------------------------------------------------------------------------------------------------------

std::string KeyText(std::int32_t found, const KnownTruth& truth) {
    if (!truth.key) return KeyName(found);
    return KeyName(found) + (found == *truth.key ? " (right)" : " (is " + KeyName(*truth.key) + ")");
}

std::string TuningText(const AnalysedMelody& melody, const KnownTruth& truth) {
    if (!truth.tuningHertz) return Text("%.2f Hz", melody.tuningHertz);
    return Text("%.2f Hz (%+.1f cents)", melody.tuningHertz,
                test::TuningErrorCents(melody.tuningOffset, *truth.tuningHertz));
}

Row RecordingRow(const std::string& name, const AnalysedMelody& melody,
                 const std::vector<test::TimedNote>& known, const KnownTruth& truth) {
    const test::NoteTolerance late{0.1, test::NoteTolerance{}.semitones};
    const std::vector<test::TimedNote> found = test::FoundNotes(melody.notes, melody.sampleRate);
    const test::NoteScore score = test::ScoreNotes(known, found);
    std::vector<double> errors;
    for (const test::NotePair& pair : test::MatchNotes(known, found, late))
        errors.push_back(found[pair.found].onsetSeconds - known[pair.known].onsetSeconds);
    return {name,
            Text("%zu / %zu", score.found, score.known),
            Ratio(score.Precision()),
            Ratio(score.Recall()),
            Ratio(score.FMeasure()),
            Ratio(test::ScoreNotes(known, found, late).FMeasure()),
            errors.empty() ? "-" : Text("%+.0f ms", 1e3 * Median(errors)),
            KeyText(melody.key, truth),
            TuningText(melody, truth)};
}

std::vector<std::filesystem::path> RecordingsWithNotes(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".wav" && extension != ".aiff") continue;
        if (std::filesystem::exists(std::filesystem::path(entry.path()).replace_extension(".notes.csv"),
                                    error))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void ReportRecordings(const std::filesystem::path& folder) {
    if (folder.empty()) {
        std::printf("No recordings: name their folder, or set SONORELLE_RECORDINGS.\n");
        return;
    }
    Rows rows{{"", "found / known", "precision", "recall", "F", "F 100 ms", "onset", "key", "tuning"}};
    for (const std::filesystem::path& file : RecordingsWithNotes(folder)) {
        const std::filesystem::path stem = std::filesystem::path(file).replace_extension();
        const auto known = ReadKnownNotes(stem.string() + ".notes.csv");
        const auto melody = AnalyseFile(file);
        const std::string name = file.filename().string();
        if (!known || !melody)
            rows.push_back({name, known ? "not analysed" : "notes not readable"});
        else
            rows.push_back(RecordingRow(name, *melody, *known, ReadTruth(stem.string() + ".truth.json")));
    }
    if (rows.size() == 1) {
        std::printf("No recordings with known notes in %s.\n", folder.string().c_str());
        return;
    }
    std::vector<Align> alignments(rows.front().size(), Align::kRight);
    alignments.front() = Align::kLeft;
    alignments[alignments.size() - 2] = alignments.back() = Align::kLeft;
    Print("Recordings with known notes (onset within 50 ms, or 100 ms; pitch within 50 cents)", alignments,
          rows);
}

} // namespace
} // namespace sonorelle::tools

int main(int count, char** arguments) {
    const char* const variable = std::getenv("SONORELLE_RECORDINGS");
    const char* const folder = count > 1 ? arguments[1] : variable != nullptr ? variable : "";
    sonorelle::tools::ReportMelodies();
    sonorelle::tools::ReportRecordings(folder);
    return 0;
}
