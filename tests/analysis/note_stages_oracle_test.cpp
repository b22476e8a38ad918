// The nine stages beside a plain model of them, stage by stage, over random lists, sung melodies and
// recordings.
//
// Before each stage both have the very same frames and notes, so that rounding does not add up. Voicing and
// all positions and indices must then be equal. Pitches may differ by 1e-4 semitones: the model works in f64,
// the analysis partly in f32, whose step is up to 7.6e-6 at MIDI pitches from 64 on, and the weighted mean of
// two joined notes takes some ten roundings. Levels may differ by 4e-6 of themselves for the same reason.
// Random pitches are whole 64ths of a semitone and random levels whole 4096ths, so that sums of them are
// exact in both and no threshold is passed by rounding alone.

#include "analysis/cantore_pitch_analysis.h"
#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/literal_note_model.h"
#include "support/melodies.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace sonorelle {
namespace {

using test::LiteralNoteModel;
using test::RandomNumbers;

constexpr float kPitchTolerance = 1e-4F; // semitones
constexpr float kLevelTolerance = 4e-6F; // relative

std::vector<AnalysisFrame> RawFrames(const CCANTOREPitchAnalysis& analysis) {
    const AnalysisFrame* records = nullptr;
    const std::int32_t count = analysis.GetFrames(records);
    return {records, records + count};
}

std::vector<NoteRecord> Notes(const CCANTOREPitchAnalysis& analysis) {
    const NoteRecord* records = nullptr;
    const std::int32_t count = analysis.GetNotes(records);
    return {records, records + count};
}

void ExpectSameFrames(const std::vector<AnalysisFrame>& found, const std::vector<AnalysisFrame>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i].position, expected[i].position) << "frame " << i;
        ASSERT_EQ(found[i].voiced, expected[i].voiced) << "frame " << i;
        ASSERT_NEAR(found[i].pitch, expected[i].pitch, kPitchTolerance) << "frame " << i;
        ASSERT_NEAR(found[i].level, expected[i].level, kLevelTolerance * expected[i].level) << "frame " << i;
    }
}

void ExpectSameNotes(const std::vector<NoteRecord>& found, const std::vector<NoteRecord>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i].firstFrame, expected[i].firstFrame) << "note " << i;
        ASSERT_EQ(found[i].lastFrame, expected[i].lastFrame) << "note " << i;
        ASSERT_EQ(found[i].start, expected[i].start) << "note " << i;
        ASSERT_EQ(found[i].end, expected[i].end) << "note " << i;
        ASSERT_EQ(found[i].length, expected[i].length) << "note " << i;
        ASSERT_NEAR(found[i].pitch, expected[i].pitch, kPitchTolerance) << "note " << i;
        ASSERT_NEAR(found[i].level, expected[i].level, kLevelTolerance * expected[i].level) << "note " << i;
    }
}

void ExpectSameState(const CCANTOREPitchAnalysis& analysis, const LiteralNoteModel& model) {
    {
        SCOPED_TRACE("raw frames");
        ASSERT_NO_FATAL_FAILURE(ExpectSameFrames(RawFrames(analysis), model.frames));
    }
    {
        SCOPED_TRACE("flattened frames");
        ASSERT_NO_FATAL_FAILURE(ExpectSameFrames(analysis.GetFlattenedFrames(), model.frames1));
    }
    {
        SCOPED_TRACE("smoothed frames");
        ASSERT_NO_FATAL_FAILURE(ExpectSameFrames(analysis.GetSmoothedFrames(), model.frames2));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameNotes(Notes(analysis), model.notes));
}

// What the stages did, to see that lists exercise them.
struct Activity {
    std::size_t cutAtOctaves = 0;
    std::size_t flattened = 0;
    std::size_t bridged = 0;
    std::size_t smoothed = 0;
    std::size_t split = 0;
    std::size_t notesBuilt = 0;
    std::size_t notesKept = 0;
};

std::size_t CountChanges(const std::vector<AnalysisFrame>& before, const std::vector<AnalysisFrame>& after) {
    std::size_t changes = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i].pitch != after[i].pitch || before[i].voiced != after[i].voiced) ++changes;
    }
    return changes;
}

// Stages 1 to 8 from the state that both have.
void CompareStages(CCANTOREPitchAnalysis& analysis, LiteralNoteModel& model, Activity& activity) {
    for (int stage = 1; stage < CCANTOREPitchAnalysisIf::kStageCount; ++stage) {
        SCOPED_TRACE("stage " + std::to_string(stage));
        model.frames = RawFrames(analysis);
        model.frames1 = analysis.GetFlattenedFrames();
        model.frames2 = analysis.GetSmoothedFrames();
        model.notes = Notes(analysis);
        const LiteralNoteModel before = model;
        ASSERT_EQ(analysis.RunStage(stage), kOk);
        model.RunStage(stage);
        ASSERT_NO_FATAL_FAILURE(ExpectSameState(analysis, model));
        if (stage == 2) activity.cutAtOctaves += CountChanges(before.frames, model.frames);
        if (stage == 3) activity.flattened += CountChanges(before.frames1, model.frames1);
        if (stage == 4) activity.bridged += CountChanges(before.frames1, model.frames1);
        if (stage == 5) activity.smoothed += CountChanges(before.frames2, model.frames2);
        if (stage == 6) activity.split += CountChanges(before.frames2, model.frames2);
        if (stage == 7) activity.notesBuilt += model.notes.size();
        if (stage == 8) activity.notesKept += model.notes.size();
    }
    EXPECT_NEAR(analysis.EstimateTuning(), test::LiteralTuning(model.notes), 1e-6F);
    for (int offset = -13; offset <= 13; ++offset) {
        EXPECT_EQ(analysis.EstimateKey(offset), test::LiteralKey(model.notes, offset)) << "offset " << offset;
    }
}

void CompareFrames(const std::vector<AnalysisFrame>& frames, float sampleRate, Activity& activity) {
    CPitchMarks marks;
    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    ASSERT_EQ(CreatePitchAnalysis(analysis, &marks, sampleRate, 1), kOk);
    ASSERT_EQ(analysis->SetFrames(frames.data(), static_cast<std::int32_t>(frames.size())), kOk);
    LiteralNoteModel model(sampleRate);
    CompareStages(*analysis, model, activity);
}

// Analyses a file as its users do; then the same from its marks on beside the model.
void CompareFile(const std::filesystem::path& path, Activity& activity) {
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead(path.string(), kAudioCacheFrames, -1, -1), kOk);
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    while (analyzer.RunStep() != CMelodyAnalyzer::kComplete) {
    }
    ASSERT_TRUE(analyzer.IsAnalysed());
    analyzer.StoreResults(false);
    CPitchMarks* marks = analyzer.GetMarks();
    const PitchMarkRecord* records = nullptr;
    const std::int32_t count = marks->GetData(records);

    std::unique_ptr<CCANTOREPitchAnalysis> analysis;
    ASSERT_EQ(CreatePitchAnalysis(analysis, marks, audio.GetSampleRate(), 1), kOk);
    LiteralNoteModel model(audio.GetSampleRate());
    ASSERT_TRUE(model.BuildFrames({records, records + count}));
    ASSERT_EQ(analysis->RunStage(0), kOk);
    ASSERT_NO_FATAL_FAILURE(ExpectSameState(*analysis, model));
    ASSERT_NO_FATAL_FAILURE(CompareStages(*analysis, model, activity));

    const NoteRecord* notes = nullptr;
    const std::int32_t noteCount = analyzer.GetNotes(notes);
    ExpectSameNotes({notes, notes + noteCount}, model.notes);
}

constexpr double kPitchSteps = 64;   // of a semitone
constexpr double kLevelSteps = 4096; // of the loudest frame

float WholeStep(double value, double steps) { return static_cast<float>(std::round(value * steps) / steps); }

// A list of frames as a voice, and as no voice, could make it.
class RandomFrames {
public:
    RandomFrames(std::uint64_t seed, float sampleRate)
        : random(seed), rate(static_cast<double>(sampleRate)) {}

    std::vector<AnalysisFrame> Make(std::size_t count) {
        const double restShare = random.Uniform();
        while (frames.size() < count) {
            if (random.Uniform() < restShare) AddRest();
            AddRun();
        }
        frames.resize(count);
        frames[static_cast<std::size_t>(random.Below(static_cast<int>(count)))].level =
            1; // so that levels stay whole steps
        return frames;
    }

private:
    void AddRest() {
        const int length = 1 + random.Below(random.Below(4) == 0 ? 60 : 6);
        const double level = random.Below(2) == 0 ? 0 : 0.3 * random.Uniform();
        for (int i = 0; i < length; ++i)
            Add(pitch + 10 * random.Symmetric(), level * random.Uniform(), false);
    }

    void AddRun() {
        const double seconds = random.Below(4) == 0 ? 0.06 * random.Uniform() : 1.2 * random.Uniform();
        const double from = Seconds();
        if (random.Below(3) == 0) pitch = 38 + 45 * random.Uniform();
        const double start = pitch;
        const int kind = random.Below(7);
        const double vibratoHertz = 3 + 22 * random.Uniform();
        const double depth = random.Below(3) == 0 ? 4 * random.Uniform() : 0.8 * random.Uniform();
        const double glide = 14 * random.Symmetric();
        const double jitter = random.Below(2) == 0 ? 0 : 0.15 * random.Uniform();
        const double loudness = std::exp2(-9 * random.Uniform());
        const int contour = random.Below(4);
        while (Seconds() - from < seconds) {
            const double t = Seconds() - from;
            double sung = start;
            if (kind == 1) pitch += 0.4 * random.Symmetric();
            if (kind == 1) sung = pitch;
            if (kind == 2 || kind == 3) sung += depth * std::sin(2 * std::numbers::pi * vibratoHertz * t);
            if (kind == 3 || kind == 4) sung += glide * t / seconds;
            if (kind == 5) sung += 0.5 * random.Below(3) * std::floor(t / 0.11);
            if (kind == 6 && std::fmod(t, 0.13) > 0.1)
                sung += random.Below(2) == 0 ? 6 : 12 * random.Symmetric();
            double level = loudness;
            if (contour == 1) level *= std::exp2(-8 * t / seconds);
            if (contour == 2) level *= std::min(1.0, t / 0.08);
            if (contour == 3) level *= 0.1 + random.Uniform();
            Add(sung + jitter * random.Symmetric(), level, true);
        }
    }

    double Seconds() const { return position / rate; }

    void Add(double midiPitch, double level, bool voiced) {
        AnalysisFrame frame;
        frame.pitch = WholeStep(std::clamp(midiPitch, 30.0, 90.0), kPitchSteps);
        frame.level = WholeStep(std::clamp(level, 0.0, 1.0), kLevelSteps);
        frame.voiced = voiced ? 1 : 0;
        frame.position = static_cast<std::int32_t>(position);
        frames.push_back(frame);
        const double period = rate / test::HertzFromMidiPitch(std::clamp(midiPitch, 30.0, 90.0));
        position += std::max(1.0, std::round(period * (1 + 0.2 * random.Symmetric())));
    }

    RandomNumbers random;
    double rate;
    double position = 0;
    double pitch = 60;
    std::vector<AnalysisFrame> frames;
};

struct ListSize {
    std::size_t frames;
    std::uint64_t lists;
};

class RandomFrameLists : public testing::TestWithParam<ListSize> {};

TEST_P(RandomFrameLists, AgreeWithThePlainModel) {
    static constexpr float kRates[] = {44100.0F, 48000.0F, 11025.0F, 8000.0F, 96000.0F};
    Activity activity;
    for (std::uint64_t seed = 1; seed <= test::SanitizerShare<std::uint64_t>(GetParam().lists, 8); ++seed) {
        SCOPED_TRACE("generator " + std::to_string(seed));
        const float rate = kRates[seed % 5];
        const std::vector<AnalysisFrame> frames = RandomFrames(seed, rate).Make(GetParam().frames);
        ASSERT_NO_FATAL_FAILURE(CompareFrames(frames, rate, activity));
    }
    if (GetParam().frames < 5000) return;
    EXPECT_GT(activity.cutAtOctaves, 0U);
    EXPECT_GT(activity.flattened, 0U);
    EXPECT_GT(activity.bridged, 0U);
    EXPECT_GT(activity.smoothed, 0U);
    EXPECT_GT(activity.split, 0U);
    EXPECT_GT(activity.notesKept, 0U);
    EXPECT_GT(activity.notesBuilt, activity.notesKept);
}

INSTANTIATE_TEST_SUITE_P(Lengths, RandomFrameLists,
                         testing::Values(ListSize{1, 40}, ListSize{2, 200}, ListSize{3, 200},
                                         ListSize{31, 300}, ListSize{32, 300}, ListSize{33, 300},
                                         ListSize{34, 300}, ListSize{100, 400}, ListSize{5000, 60}),
                         [](const testing::TestParamInfo<ListSize>& size) {
                             return "Frames" + std::to_string(size.param.frames);
                         });

TEST(NoteStagesBesideThePlainModel, SungMelodiesAgree) {
    const test::TemporaryFolder folder;
    Activity activity;
    for (std::uint64_t seed = 1; seed <= test::SanitizerShare<std::uint64_t>(6, 2); ++seed) {
        SCOPED_TRACE("melody " + std::to_string(seed));
        test::SingerSettings settings;
        settings.seed = seed;
        settings.sampleRate = seed % 2 == 0 ? 44100.0 : 22050.0;
        settings.vibratoCents = 20.0 * static_cast<double>(seed);
        settings.tuningHertz = 436.0 + static_cast<double>(seed);
        test::MelodyWish wish;
        wish.key = static_cast<int>(seed * 5 % 24);
        wish.lowestMidiPitch = 43 + 4 * static_cast<int>(seed);
        wish.phrases = 2;
        const test::Recording recording = test::Sing(test::RandomDiatonicMelody(wish, seed), settings);
        const std::filesystem::path path = folder.File("melody" + std::to_string(seed) + ".wav");
        ASSERT_TRUE(test::WriteWav(path, recording));
        ASSERT_NO_FATAL_FAILURE(CompareFile(path, activity));
    }
    EXPECT_GT(activity.notesKept, test::SanitizerShare(30U, 2U));
    EXPECT_GT(activity.flattened, 0U);
}

TEST(NoteStagesBesideThePlainModel, RecordingsAgree) {
    const char* folder = std::getenv("SONORELLE_RECORDINGS");
    if (folder == nullptr || *folder == '\0')
        GTEST_SKIP() << "SONORELLE_RECORDINGS names no folder of recordings";
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension == ".wav" || extension == ".aiff") paths.push_back(entry.path());
    }
    if (paths.empty()) GTEST_SKIP() << "no recordings in " << folder;
    std::sort(paths.begin(), paths.end());
    Activity activity;
    for (const std::filesystem::path& path : paths) {
        SCOPED_TRACE(path.filename().string());
        CompareFile(path, activity);
    }
    EXPECT_GT(activity.notesKept, 0U);
}

} // namespace
} // namespace sonorelle
