// sonorelle_harmony_statistics [FOLDER]: what a teacher of harmony would mark in the voices of each
// intelligent style, per hundred notes, over the recordings in FOLDER (default: the folder that
// SONORELLE_RECORDINGS names) and ten synthetic melodies of fixed seeds. It reports and judges nothing: the
// exit code is always 0.

#include "analysed_melody.h"
#include "voice_statistics.h"

#include "analysis/melody_analyzer.h"
#include "app/snapshot_store.h"
#include "cli/arrangement_settings.h"
#include "cli/note_names.h"
#include "cli/text_columns.h"
#include "formats/audio_file.h"
#include "harmony/choir_driver.h"
#include "harmony/chord_names.h"
#include "support/melodies.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace sonorelle::tools {
namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

struct StyleCase {
    const char* name;
    std::int32_t style;
    std::int32_t arrangement;
};

constexpr std::array kStyles{
    StyleCase{"intelligent, four voices", ConsortierClassic::kStyleIntelligent,
              ConsortierClassic::kFourVoices},
    StyleCase{"intelligent, three voices", ConsortierClassic::kStyleIntelligent,
              ConsortierClassic::kThreeVoices},
    StyleCase{"intelligent, two voices", ConsortierClassic::kStyleIntelligent, ConsortierClassic::kTwoVoices},
    StyleCase{"block intelligent", ConsortierClassic::kStyleBlock, ConsortierClassic::kBlockIntelligent},
    StyleCase{"shearing intelligent", ConsortierClassic::kStyleBlock,
              ConsortierClassic::kShearingIntelligent},
    StyleCase{"drop2 intelligent", ConsortierClassic::kStyleBlock, ConsortierClassic::kDrop2Intelligent},
};

constexpr std::size_t kOutliersNamed = 2; // of each style and kind

constexpr std::uint64_t kSeed = 20261121;
constexpr int kMelodies = 10;
constexpr double kMelodyRate = 44100.0;
constexpr std::array<int, 5> kLowestPitches{43, 48, 53, 57, 60};
constexpr std::array<int, 5> kMajorKeys{0, 7, 2, 5, 10}; // C, G, D, F, Bb
constexpr int kMinor = 12;                               // from a major key to the minor on its root

// Counting
// ---------------------------------------------------------------------------------------------------------

struct Counts {
    std::size_t notes = 0;
    std::array<std::size_t, kFindingKinds> found{};

    Counts& operator+=(const Counts& other) {
        notes += other.notes;
        for (std::size_t kind = 0; kind < kFindingKinds; ++kind) found[kind] += other.found[kind];
        return *this;
    }
};

// A place worth looking at: all findings of one kind at one note.
struct Outlier {
    std::size_t count = 0;
    std::int32_t size = 0; // the largest in semitones
    std::string where;
};

bool IsWorse(const Outlier& a, const Outlier& b) {
    return a.count != b.count ? a.count > b.count : a.size > b.size;
}

struct StyleFigures {
    Counts recordings;
    Counts melodies;
    std::array<std::vector<Outlier>, kFindingKinds> outliers;
};

using Figures = std::array<StyleFigures, kStyles.size()>;

std::string RowText(const VoicedMelody& voiced, std::size_t note) {
    std::string text;
    for (auto slot = voiced.lowToHigh.rbegin(); slot != voiced.lowToHigh.rend(); ++slot) {
        if (!text.empty()) text += ' ';
        const std::int32_t pitch = voiced.notes[note][*slot];
        text += pitch == ConsortierClassic::kNoPitch ? "-" : NoteName(pitch);
        if (*slot == 0) text += '*';
    }
    return text;
}

std::string PlaceText(const std::string& name, const CChoirDriver& driver, const VoicedMelody& voiced,
                      std::size_t note) {
    std::string text = name + ", note " + std::to_string(note + 1) + ": ";
    if (note > 0) text += RowText(voiced, note - 1) + " > ";
    text += RowText(voiced, note);
    if (driver.GetStyle() == ConsortierClassic::kStyleIntelligent)
        text += " (" + ChordName(driver.GetChord(static_cast<std::int32_t>(note)), false) + ")";
    return text;
}

VoicedMelody TakeVoices(CChoirDriver& driver) {
    VoicedMelody voiced;
    voiced.key = driver.GetEngine().GetKey();
    const auto voices = static_cast<std::size_t>(driver.VoiceCount());
    if (driver.GetStyle() == ConsortierClassic::kStyleIntelligent) {
        for (std::size_t slot = 1; slot < voices; ++slot) voiced.lowToHigh.push_back(slot);
        const std::int32_t melodySlot = driver.GetEngine().GetVoiceLeader().GetMelodySlot();
        voiced.lowToHigh.insert(voiced.lowToHigh.begin() + melodySlot, 0);
    } else {
        for (std::size_t slot = voices; slot-- > 0;) voiced.lowToHigh.push_back(slot);
    }
    for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
        VoiceRow& row = voiced.notes.emplace_back();
        float deviation = 0.0F;
        float gain = 0.0F;
        for (std::size_t voice = 0; voice < row.size(); ++voice)
            row[voice] = driver.GetVoice(note, static_cast<std::int32_t>(voice), deviation, gain, true);
    }
    return voiced;
}

void Note(const std::string& name, const CChoirDriver& driver, const VoicedMelody& voiced, Counts& counts,
          std::array<std::vector<Outlier>, kFindingKinds>& outliers) {
    std::array<std::vector<Outlier>, kFindingKinds> byNote;
    for (auto& places : byNote) places.resize(voiced.notes.size());
    counts.notes += voiced.notes.size();
    for (const Finding& finding : FindInVoices(voiced)) {
        ++counts.found[finding.kind];
        Outlier& place = byNote[finding.kind][finding.note];
        ++place.count;
        place.size = std::max(place.size, std::abs(finding.semitones));
    }
    for (std::size_t kind = 0; kind < kFindingKinds; ++kind) {
        for (std::size_t note = 0; note < byNote[kind].size(); ++note) {
            if (byNote[kind][note].count == 0) continue;
            outliers[kind].push_back(byNote[kind][note]);
            outliers[kind].back().where = PlaceText(name, driver, voiced, note);
        }
    }
}

// Voices the analysed melody in every style as `sonorelle arrange` does without options.
void MeasureStyles(const std::string& name, CMelodyAnalyzer& analyzer, bool isRecording, Figures& figures) {
    const ArrangementSettings usual;
    for (std::size_t i = 0; i < kStyles.size(); ++i) {
        CSnapshotStore store;
        CChoirDriver driver(analyzer, store);
        driver.SetVoiceRange(usual.voiceRange);
        driver.SetSpread(usual.spread);
        driver.SetStyle(kStyles[i].style);
        driver.SetArrangement(kStyles[i].arrangement);
        driver.Run();
        StyleFigures& style = figures[i];
        Note(name, driver, TakeVoices(driver), isRecording ? style.recordings : style.melodies,
             style.outliers);
        store.ClearAll();
    }
}

// Material
// ---------------------------------------------------------------------------------------------------------

void MeasureFile(const std::filesystem::path& file, const std::string& name, bool isRecording,
                 Figures& figures) {
    CkvoAudioFile audio;
    CMelodyAnalyzer analyzer;
    if (AnalyseAfresh(file, audio, analyzer))
        MeasureStyles(name, analyzer, isRecording, figures);
    else
        std::fprintf(stderr, "%s: not analysed\n", name.c_str());
}

// One file of each name: the same recording may lie there in two formats.
std::vector<std::filesystem::path> Recordings(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".wav" || extension == ".aiff") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::set<std::string> stems;
    std::erase_if(files, [&stems](const auto& file) { return !stems.insert(file.stem().string()).second; });
    return files;
}

void MeasureMelodies(Figures& figures) {
    const test::TemporaryFolder folder;
    test::RandomNumbers random(kSeed);
    for (std::size_t i = 0; i < kMelodies; ++i) {
        const std::size_t place = i / 2;
        test::MelodyWish wish;
        wish.key = kMajorKeys[place] + (i % 2 == 0 ? 0 : kMinor);
        wish.lowestMidiPitch = kLowestPitches[place];
        test::SingerSettings settings;
        settings.sampleRate = kMelodyRate;
        settings.voice = place < 2   ? test::VoiceRegister::kTenor
                         : place < 4 ? test::VoiceRegister::kAlto
                                     : test::VoiceRegister::kSoprano;
        settings.seed = random.Next();
        const std::filesystem::path file = folder.File("melody.wav");
        if (!test::WriteWav(file, test::Sing(test::RandomDiatonicMelody(wish, random.Next()), settings)))
            continue;
        MeasureFile(file, "melody " + std::to_string(i + 1) + " in " + KeyName(wish.key), false, figures);
    }
}

// Printing
// ---------------------------------------------------------------------------------------------------------

Row CountsRow(const std::string& name, const std::string& material, const Counts& counts) {
    Row row{name, material, std::to_string(counts.notes)};
    for (const std::size_t found : counts.found) {
        char text[32];
        const double notes = static_cast<double>(std::max<std::size_t>(counts.notes, 1));
        std::snprintf(text, sizeof text, "%.1f", 100.0 * static_cast<double>(found) / notes);
        row.emplace_back(text);
    }
    return row;
}

void PrintTable(const Figures& figures) {
    Rows rows{{"per hundred notes", "", "notes"}};
    for (std::size_t kind = 0; kind < kFindingKinds; ++kind) rows.front().emplace_back(FindingName(kind));
    Counts total;
    for (std::size_t i = 0; i < kStyles.size(); ++i) {
        Counts both = figures[i].recordings;
        both += figures[i].melodies;
        total += both;
        rows.push_back(CountsRow(kStyles[i].name, "recordings", figures[i].recordings));
        rows.push_back(CountsRow("", "synthetic", figures[i].melodies));
        rows.push_back(CountsRow("", "all", both));
    }
    rows.push_back(CountsRow("all styles", "all", total));
    std::vector<Align> alignments(rows.front().size(), Align::kRight);
    alignments[0] = alignments[1] = Align::kLeft;
    std::printf("%s\n", FormatColumns(alignments, rows).c_str());
}

void PrintOutliers(Figures& figures) {
    Rows rows{{"worst in", "", "at once", "where: voices from the highest to the lowest, * the melody"}};
    for (std::size_t i = 0; i < kStyles.size(); ++i) {
        for (std::size_t kind = 0; kind < kFindingKinds; ++kind) {
            std::vector<Outlier>& places = figures[i].outliers[kind];
            std::stable_sort(places.begin(), places.end(), IsWorse);
            for (std::size_t place = 0; place < std::min(places.size(), kOutliersNamed); ++place)
                rows.push_back({kStyles[i].name, FindingName(kind), std::to_string(places[place].count),
                                places[place].where});
        }
    }
    std::printf("%s", FormatColumns({Align::kLeft, Align::kLeft, Align::kRight, Align::kLeft}, rows).c_str());
}

void Report(const std::filesystem::path& folder) {
    Figures figures;
    const std::vector<std::filesystem::path> recordings = Recordings(folder);
    if (recordings.empty()) std::printf("No recordings: name their folder, or set SONORELLE_RECORDINGS.\n\n");
    for (const std::filesystem::path& file : recordings)
        MeasureFile(file, file.stem().string(), true, figures);
    MeasureMelodies(figures);
    PrintTable(figures);
    PrintOutliers(figures);
}

} // namespace
} // namespace sonorelle::tools

int main(int count, char** arguments) {
    const char* const variable = std::getenv("SONORELLE_RECORDINGS");
    const char* const folder = count > 1 ? arguments[1] : variable != nullptr ? variable : "";
    sonorelle::tools::Report(folder);
    return 0;
}
