#include "analysis/melody_cache.h"

#include "analysis/analysis_job.h"
#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "formats/audio_file.h"
#include "platform/regular_file.h"
#include "support/analysis_results.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sonorelle::test {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::int64_t kSecond = 1'000'000'000;              // nanoseconds
constexpr std::int64_t kAudioTime = 1'234'567'890 * kSecond; // of every audio file here

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return {text.begin(), text.end()};
}

void WriteFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

void Put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<unsigned char>(value >> (24 - 8 * i) & 0xFF);
}

void PutFloat(Bytes& bytes, std::size_t offset, float value) {
    Put32(bytes, offset, std::bit_cast<std::uint32_t>(value));
}

std::uint32_t Get32(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes.at(offset + i);
    return value;
}

// Where things lie in a cache.
constexpr std::size_t kMarkCountAt = 12;
constexpr std::size_t kNoteCountAt = 16;
constexpr std::size_t MarkAt(std::size_t mark, std::size_t word) { return 20 + 24 * mark + 4 * word; }
std::size_t NoteAt(const Bytes& bytes, std::size_t note, std::size_t word) {
    return 20 + 24 * Get32(bytes, kMarkCountAt) + 28 * note + 4 * word;
}

// A short song on the disk, analysed once, with its cache and what was found.
class MelodyCacheFile : public testing::Test {
protected:
    void SetUp() override {
        SingerSettings settings;
        settings.sampleRate = 22050.0;
        settings.beatsPerMinute = 180.0;
        std::vector<MelodyNote> melody(2);
        melody[1].midiPitch = 64.0;
        melody[1].consonant = Consonant::kPlosive;
        const Recording recording = Sing(melody, settings);
        length = static_cast<std::int32_t>(recording.Frames());
        ASSERT_TRUE(WriteWav(path, recording));
        SetModificationTime(path, kAudioTime);
        ASSERT_EQ(Analyse(), AnalysisOutcome::kWritten);
        ASSERT_EQ(results.notes.size(), 2U);
        fresh = results;
        good = ReadFile(cache);
    }

    AnalysisOutcome Analyse() {
        CkvoAudioFile audio;
        EXPECT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        const AnalysisOutcome outcome = AnalyseMelody(analyzer, true, nullptr);
        results = AnalysisResults(analyzer);
        return outcome;
    }

    // Puts a cache beside the song, newer than it, and expects a fresh analysis that replaces it.
    void ExpectRefused(const Bytes& bytes) {
        WriteFile(cache, bytes);
        ASSERT_EQ(Analyse(), AnalysisOutcome::kWritten);
        EXPECT_TRUE(results.SameBits(fresh));
        EXPECT_TRUE(ReadFile(cache) == good) << "the cache was not replaced";
    }

    std::vector<std::string> NamesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    const TemporaryFolder folder;
    const std::string path = folder.File("song.wav").string();
    const std::string cache = path + ".kva";
    std::int32_t length = 0; // frames
    AnalysisResults results; // of the last analysis
    AnalysisResults fresh;   // without a cache
    Bytes good;              // the cache as it was written
};

} // namespace

TEST(MelodyCache, IsWrittenByteForByte) {
    const TemporaryFolder folder;
    const std::string path = folder.File("x.kva").string();
    // The mark's words: position, energy, transient, voicing, change of pitch, period.
    const std::vector<PitchMarkRecord> marks = {{0, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F},
                                                {0x01020304, 0.25F, 0.5F, 12.0F, -0.125F, 100.0F}};
    const std::vector<NoteRecord> notes = {{69.5F, 1.0F, 0x100, 0x200, 0x300, 1, 0x01000000}};
    ASSERT_TRUE(WriteMelodyCache(path, 0x0000000102030405, marks, notes));
    const Bytes expected = {'k',  'v',  'o',  0,                            // magic
                            0x00, 0x00, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, // time stamp
                            0x00, 0x00, 0x00, 0x02,                         // marks
                            0x00, 0x00, 0x00, 0x01,                         // notes
                            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // first mark
                            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, //
                            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, //
                            0x01, 0x02, 0x03, 0x04, 0x3E, 0x80, 0x00, 0x00, // second mark: position, 0.25
                            0x3F, 0x00, 0x00, 0x00, 0x41, 0x40, 0x00, 0x00, // 0.5, 12
                            0xBE, 0x00, 0x00, 0x00, 0x42, 0xC8, 0x00, 0x00, // -0.125, 100
                            0x42, 0x8B, 0x00, 0x00, 0x3F, 0x80, 0x00, 0x00, // note: 69.5, 1
                            0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, // length, start
                            0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01, // end, first frame
                            0x01, 0x00, 0x00, 0x00};                        // last frame
    EXPECT_EQ(ReadFile(path), expected);
}

TEST(MelodyCache, StampBefore1970IsWrittenAsItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.File("x.kva").string();
    ASSERT_TRUE(WriteMelodyCache(path, -2, std::vector<PitchMarkRecord>(1), {}));
    const Bytes bytes = ReadFile(path);
    ASSERT_EQ(bytes.size(), 44U);
    EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 12),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST(MelodyCache, ReadsBackWhatWasWrittenInPortions) {
    // More records than are written at once.
    const TemporaryFolder folder;
    const std::string path = folder.File("x.kva").string();
    std::vector<PitchMarkRecord> marks(5000);
    for (std::size_t i = 0; i < marks.size(); ++i)
        marks[i] = {static_cast<std::int32_t>(i * 7), 0.1F * static_cast<float>(i), 0, 3.0F, -0.5F, 7.0F};
    std::vector<NoteRecord> notes(3001);
    for (std::size_t i = 0; i < notes.size(); ++i) notes[i].pitch = static_cast<float>(i) / 64.0F;
    ASSERT_TRUE(WriteMelodyCache(path, 5, marks, notes));

    CRegularFile file;
    ASSERT_TRUE(file.Open(path));
    MelodyCacheHeader header;
    ASSERT_TRUE(ReadMelodyCacheHeader(file, header));
    EXPECT_EQ(header.timeStamp, 5);
    EXPECT_TRUE(IsMelodyCache(header, file.Length()));
    EXPECT_FALSE(IsMelodyCache(header, file.Length() - 1));
    EXPECT_FALSE(IsMelodyCache(header, file.Length() + 1));
    MelodyCacheContent content;
    ASSERT_TRUE(ReadMelodyCacheContent(file, header, content));
    EXPECT_TRUE(SameRecords(content.marks, marks));
    EXPECT_TRUE(SameRecords(content.notes, notes));
}

TEST(MelodyCache, HeaderIsWeighedBeforeAnythingElseIsRead) {
    MelodyCacheHeader header;
    EXPECT_FALSE(IsMelodyCache(header, 20)) << "no marks";
    header.noteCount = 1;
    EXPECT_FALSE(IsMelodyCache(header, 48));
    header.markCount = 1;
    EXPECT_TRUE(IsMelodyCache(header, 72));
    header.markCount = 0x80000000;
    EXPECT_FALSE(IsMelodyCache(header, 20 + 24 * 0x80000000LL + 28)) << "more than an i32 can count";

    header.markCount = 11; // one for each of 10 frames, and the end
    header.noteCount = 11;
    EXPECT_TRUE(FitsRecording(header, 10));
    EXPECT_FALSE(FitsRecording(header, 9));
    header.noteCount = 12;
    EXPECT_FALSE(FitsRecording(header, 10));
    header.markCount = 0x7FFFFFFF;
    EXPECT_TRUE(FitsRecording(header, 0x7FFFFFFF));
}

TEST_F(MelodyCacheFile, HoldsStampCountsMarksAndNotes) {
    const std::size_t marks = fresh.marks.size();
    const std::size_t notes = fresh.notes.size();
    ASSERT_EQ(good.size(), 20 + 24 * marks + 28 * notes);
    EXPECT_EQ(Bytes(good.begin(), good.begin() + 4), (Bytes{'k', 'v', 'o', 0}));
    EXPECT_EQ(Get32(good, 4), 0U);
    EXPECT_EQ(Get32(good, 8), 1'234'567'890U) << "the audio file's time in seconds";
    EXPECT_EQ(Get32(good, kMarkCountAt), marks);
    EXPECT_EQ(Get32(good, kNoteCountAt), notes);
    for (std::size_t i = 0; i < marks; ++i) {
        const PitchMarkRecord& mark = fresh.marks[i];
        ASSERT_EQ(Get32(good, MarkAt(i, 0)), static_cast<std::uint32_t>(mark.position)) << i;
        ASSERT_EQ(Get32(good, MarkAt(i, 1)), std::bit_cast<std::uint32_t>(mark.energy)) << i;
        ASSERT_EQ(Get32(good, MarkAt(i, 2)), std::bit_cast<std::uint32_t>(mark.transient)) << i;
        ASSERT_EQ(Get32(good, MarkAt(i, 3)), std::bit_cast<std::uint32_t>(mark.voicing)) << i;
        ASSERT_EQ(Get32(good, MarkAt(i, 4)), std::bit_cast<std::uint32_t>(mark.pitchChange)) << i;
        ASSERT_EQ(Get32(good, MarkAt(i, 5)), std::bit_cast<std::uint32_t>(mark.period)) << i;
    }
    for (std::size_t i = 0; i < notes; ++i) {
        const NoteRecord& note = fresh.notes[i];
        EXPECT_EQ(Get32(good, NoteAt(good, i, 0)), std::bit_cast<std::uint32_t>(note.pitch));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 1)), std::bit_cast<std::uint32_t>(note.level));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 2)), static_cast<std::uint32_t>(note.length));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 3)), static_cast<std::uint32_t>(note.start));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 4)), static_cast<std::uint32_t>(note.end));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 5)), static_cast<std::uint32_t>(note.firstFrame));
        EXPECT_EQ(Get32(good, NoteAt(good, i, 6)), static_cast<std::uint32_t>(note.lastFrame));
    }
}

TEST_F(MelodyCacheFile, NewerThanTheAudioOpensWithoutAnalysisWhateverItsStamp) {
    for (const std::uint32_t stamp : {0U, 1U, 1'234'567'889U, 1'234'567'891U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Bytes bytes = good;
        Put32(bytes, 4, stamp > 0x7FFFFFFFU ? stamp : 0);
        Put32(bytes, 8, stamp);
        WriteFile(cache, bytes);
        EXPECT_EQ(Analyse(), AnalysisOutcome::kLoaded) << stamp;
        EXPECT_TRUE(results.SameBits(fresh));
        EXPECT_TRUE(ReadFile(cache) == bytes) << "a valid cache stays as it is";
    }
}

TEST_F(MelodyCacheFile, NewerByOneNanosecondIsNewer) {
    SetModificationTime(cache, kAudioTime + 1);
    EXPECT_EQ(Analyse(), AnalysisOutcome::kLoaded);
}

TEST_F(MelodyCacheFile, TouchedAudioOrEqualTimesForceAnAnalysisThatOverwritesTheCache) {
    for (const std::int64_t ahead : {std::int64_t{0}, std::int64_t{-1}, -kSecond, -86'400 * kSecond}) {
        // A cache that would show by its content that it was used.
        Bytes other = good;
        PutFloat(other, NoteAt(good, 0, 0), 33.0F);
        WriteFile(cache, other);
        SetModificationTime(cache, kAudioTime + ahead);
        CkvoAudioFile audio;
        ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        EXPECT_EQ(analyzer.ReadCacheHeader(), 1) << "stale";
        EXPECT_EQ(analyzer.LoadCache(), 0);
        EXPECT_EQ(Analyse(), AnalysisOutcome::kWritten) << ahead;
        EXPECT_TRUE(results.SameBits(fresh));
        EXPECT_TRUE(ReadFile(cache) == good);
    }
}

TEST_F(MelodyCacheFile, WrongMagicIsIgnoredAndReplaced) {
    for (std::size_t i = 0; i < 4; ++i) {
        Bytes bytes = good;
        bytes[i] ^= 1;
        ExpectRefused(bytes);
    }
}

TEST_F(MelodyCacheFile, EmptyShortOrLongIsRefused) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{4}, std::size_t{19}, std::size_t{20}, std::size_t{44},
          good.size() / 2, good.size() - 28, good.size() - 1, good.size() + 1, good.size() + 28}) {
        SCOPED_TRACE(size);
        Bytes bytes = good;
        bytes.resize(size);
        ExpectRefused(bytes);
    }
}

TEST_F(MelodyCacheFile, CountsThatDoNotMatchItsSizeAreRefused) {
    const std::uint32_t marks = Get32(good, kMarkCountAt);
    const std::uint32_t notes = Get32(good, kNoteCountAt);
    for (const std::uint32_t count : {0U, marks - 1, marks + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(count);
        Bytes bytes = good;
        Put32(bytes, kMarkCountAt, count);
        ExpectRefused(bytes);
    }
    for (const std::uint32_t count : {0U, notes - 1, notes + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(count);
        Bytes bytes = good;
        Put32(bytes, kNoteCountAt, count);
        ExpectRefused(bytes);
    }
    // Both, so that the size would fit: seven marks less, six notes more.
    Bytes bytes = good;
    Put32(bytes, kMarkCountAt, marks - 7);
    Put32(bytes, kNoteCountAt, notes + 6);
    ExpectRefused(bytes);
}

TEST_F(MelodyCacheFile, NoMarksAreRefusedEvenInARightSize) {
    Bytes bytes(20 + 28);
    std::copy_n(good.begin(), 4, bytes.begin());
    Put32(bytes, kNoteCountAt, 1);
    ExpectRefused(bytes);
    bytes.resize(20);
    Put32(bytes, kNoteCountAt, 0);
    ExpectRefused(bytes);
}

TEST_F(MelodyCacheFile, MoreMarksThanFramesAreRefusedBeforeRoomIsMadeForThem) {
    // 25 GB long with nothing in it: a file of holes.
    Bytes header(good.begin(), good.begin() + 20);
    constexpr std::uint32_t kCount = 1U << 30;
    Put32(header, kMarkCountAt, kCount);
    Put32(header, kNoteCountAt, 0);
    WriteFile(cache, header);
    std::error_code error;
    std::filesystem::resize_file(cache, 20 + 24ULL * kCount, error);
    ASSERT_FALSE(error) << "no files with holes here: " << error.message();
    EXPECT_EQ(Analyse(), AnalysisOutcome::kWritten);
    EXPECT_TRUE(results.SameBits(fresh));

    Put32(header, kMarkCountAt, 1);
    Put32(header, kNoteCountAt, kCount);
    WriteFile(cache, header);
    std::filesystem::resize_file(cache, 20 + 24 + 28ULL * kCount, error);
    ASSERT_FALSE(error);
    EXPECT_EQ(Analyse(), AnalysisOutcome::kWritten);
    EXPECT_TRUE(results.SameBits(fresh));
}

TEST_F(MelodyCacheFile, MarksThatDoNotRiseFromZeroAreRefused) {
    const std::size_t last = fresh.marks.size() - 1;
    struct Change {
        std::size_t mark;
        std::int64_t position;
    };
    const std::int32_t third = fresh.marks[3].position;
    for (const Change& change :
         {Change{0, 1}, Change{0, -1}, Change{1, 0}, Change{3, fresh.marks[2].position},
          Change{3, fresh.marks[4].position}, Change{5, third}, Change{4, -5}, Change{last, length + 1LL},
          Change{last, 0x7FFFFFFF}, Change{last, std::numeric_limits<std::int32_t>::min()}}) {
        SCOPED_TRACE(std::to_string(change.mark) + " at " + std::to_string(change.position));
        Bytes bytes = good;
        Put32(bytes, MarkAt(change.mark, 0), static_cast<std::uint32_t>(change.position));
        ExpectRefused(bytes);
    }
}

TEST_F(MelodyCacheFile, ValuesThatAreNotFiniteAreRefused) {
    const std::size_t last = fresh.marks.size() - 1;
    int turn = 0;
    for (const float value : {INFINITY, -INFINITY, std::numeric_limits<float>::quiet_NaN()}) {
        for (std::size_t word = 1; word < 6; ++word)
            for (const std::size_t mark : {std::size_t{0}, last / 2, last}) {
                if (!InSanitizerShare(turn++, 4)) continue;
                SCOPED_TRACE(word);
                Bytes bytes = good;
                PutFloat(bytes, MarkAt(mark, word), value);
                ExpectRefused(bytes);
            }
        for (std::size_t word = 0; word < 2; ++word) {
            SCOPED_TRACE(word);
            Bytes bytes = good;
            PutFloat(bytes, NoteAt(good, 1, word), value);
            ExpectRefused(bytes);
        }
    }
}

TEST_F(MelodyCacheFile, NotesOutsideOfTheFileOrItsMarksAreRefused) {
    const auto marks = static_cast<std::int64_t>(fresh.marks.size());
    const NoteRecord& note = fresh.notes[1];
    struct Change {
        std::size_t word; // 2 length, 3 start, 4 end, 5 first frame, 6 last frame
        std::int64_t value;
    };
    for (const Change& change :
         {Change{2, -1}, Change{2, length + 1LL}, Change{3, -1}, Change{3, note.end + 1LL},
          Change{4, length + 1LL}, Change{4, note.start - 1LL}, Change{4, 0x7FFFFFFF}, Change{5, -1},
          Change{5, note.lastFrame + 1LL}, Change{6, note.firstFrame - 1LL}, Change{6, marks},
          Change{6, 0x7FFFFFFF}, Change{5, std::numeric_limits<std::int32_t>::min()}}) {
        SCOPED_TRACE("word " + std::to_string(change.word) + ": " + std::to_string(change.value));
        Bytes bytes = good;
        Put32(bytes, NoteAt(good, 1, change.word), static_cast<std::uint32_t>(change.value));
        ExpectRefused(bytes);
    }
}

TEST_F(MelodyCacheFile, AbsurdButFiniteValuesAreLoadedAndHarmNobody) {
    for (const float value : {3.4e38F, -3.4e38F, 1e-42F, -1.0F, 2.2e9F, -2.2e9F}) {
        Bytes bytes = good;
        for (std::size_t mark = 0; mark < fresh.marks.size(); ++mark)
            for (std::size_t word = 1; word < 6; ++word)
                if ((mark + word) % 3 == 0) PutFloat(bytes, MarkAt(mark, word), value);
        PutFloat(bytes, NoteAt(good, 0, 0), value);
        PutFloat(bytes, NoteAt(good, 1, 1), value);
        WriteFile(cache, bytes);
        CkvoAudioFile audio;
        ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        ASSERT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kLoaded);
        const std::int32_t key = analyzer.EstimateKey(0);
        EXPECT_GE(key, -1);
        EXPECT_LE(key, 23);
        EXPECT_GE(analyzer.GetTuningOffset(), -0.5F);
        EXPECT_LE(analyzer.GetTuningOffset(), 0.5F);
        for (const AnalysisFrame& frame : AnalysisResults(analyzer).frames)
            ASSERT_TRUE(std::isfinite(frame.pitch));
        analyzer.MeasureRange(0, length);
    }
}

TEST_F(MelodyCacheFile, FolderOfItsNameIsLeftAlone) {
    std::filesystem::remove(cache);
    std::filesystem::create_directory(cache);
    EXPECT_EQ(Analyse(), AnalysisOutcome::kComputed);
    EXPECT_TRUE(results.SameBits(fresh));
    EXPECT_TRUE(std::filesystem::is_directory(cache));
    EXPECT_EQ(NamesInFolder(), (std::vector<std::string>{"song.wav", "song.wav.kva"}));
}

TEST_F(MelodyCacheFile, PipeOfItsNameIsNeitherWaitedForNorReplaced) {
    std::filesystem::remove(cache);
    ASSERT_EQ(::mkfifo(cache.c_str(), 0600), 0);
    EXPECT_EQ(Analyse(), AnalysisOutcome::kComputed);
    EXPECT_TRUE(results.SameBits(fresh));
    EXPECT_TRUE(std::filesystem::is_fifo(cache));
}

TEST_F(MelodyCacheFile, FolderThatCannotBeWrittenCostsOnlyTheCache) {
    // Not even the system's owner can write there.
    const Bytes audioBytes = ReadFile(path);
    const int descriptor = ::memfd_create("song", MFD_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(::write(descriptor, audioBytes.data(), audioBytes.size()),
              static_cast<ssize_t>(audioBytes.size()));
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead("/proc/self/fd/" + std::to_string(descriptor), kAudioCacheFrames, -1, -1), 0);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    EXPECT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kComputed);
    EXPECT_TRUE(AnalysisResults(analyzer).SameBits(fresh));
    ::close(descriptor);
}

TEST_F(MelodyCacheFile, ReplacedWhileItIsReadTheOldOneIsReadToItsEnd) {
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
    CMelodyAnalyzer analyzer;
    analyzer.Attach(&audio);
    ASSERT_EQ(analyzer.ReadCacheHeader(), 0);
    // Another process writes a cache of fewer marks and puts it in place.
    ASSERT_TRUE(WriteMelodyCache(cache, 0, std::vector<PitchMarkRecord>(1), {}));
    ASSERT_EQ(analyzer.LoadCache(), 1);
    EXPECT_TRUE(AnalysisResults(analyzer).SameBits(fresh));
}

TEST_F(MelodyCacheFile, ChangedInPlaceBehindItsHeaderItIsRefusedAndTheFileAnalysed) {
    Bytes falling = good;
    Put32(falling, MarkAt(2, 0), 0);
    for (const Bytes& changed : {Bytes(good.begin(), good.end() - 40), Bytes(), falling}) {
        WriteFile(cache, good);
        CkvoAudioFile audio;
        ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), 0);
        CMelodyAnalyzer analyzer;
        analyzer.Attach(&audio);
        ASSERT_EQ(analyzer.ReadCacheHeader(), 0);
        WriteFile(cache, changed);
        EXPECT_EQ(analyzer.LoadCache(), 0);
        EXPECT_FALSE(analyzer.IsAnalysed());
        EXPECT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kWritten);
        EXPECT_TRUE(AnalysisResults(analyzer).SameBits(fresh));
        EXPECT_TRUE(ReadFile(cache) == good);
    }
}

TEST_F(MelodyCacheFile, InterruptedWriteLeavesTheOldOne) {
    // The disk is full after 4 KB.
    std::vector<PitchMarkRecord> marks(10'000);
    struct rlimit old = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    struct rlimit full = old;
    full.rlim_cur = 4096;
    auto* const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    const bool written = WriteMelodyCache(cache, 0, marks, {});
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(written);
    EXPECT_TRUE(ReadFile(cache) == good);
    EXPECT_EQ(NamesInFolder(), (std::vector<std::string>{"song.wav", "song.wav.kva"}))
        << "nothing left behind";
}

} // namespace sonorelle::test
