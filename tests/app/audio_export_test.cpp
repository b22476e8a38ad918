#include "app/audio_export.h"

#include "app/voice_preset.h"
#include "formats/audio_file.h"
#include "platform/file_size_limit.h"
#include "platform/result_codes.h"
#include "platform/scratch_folder.h"
#include "support/allocation_trap.h"
#include "support/voiced_melody_fixture.h"
#include "synthesis/voice_bank.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle {
namespace {

using test::MakeVoicedSong;
using test::VoicedMelody;
using test::VoicedSongSettings;

constexpr std::int32_t kBlockSize = 64;
constexpr float kStep = 1.0F / 32768;     // of a 16-bit sample
constexpr float kRounding = 0.5F / 32768; // of one written sample, half a step

// A sound file as it lies on the disk.
struct Sound {
    explicit Sound(const std::string& path) {
        CkvoAudioFile file;
        EXPECT_EQ(file.OpenRead(path, kAudioCacheFrames, -1, -1), kOk) << path;
        rate = file.GetSampleRate();
        sides.assign(static_cast<std::size_t>(file.GetNumChannels()),
                     std::vector<float>(static_cast<std::size_t>(file.GetLength())));
        std::vector<float*> pointers;
        for (auto& side : sides) pointers.push_back(side.data());
        EXPECT_EQ(file.Read(pointers.data(), file.GetLength()), file.GetLength());
    }
    std::int32_t Frames() const { return sides.empty() ? 0 : static_cast<std::int32_t>(sides[0].size()); }
    float Peak(std::size_t side) const {
        float peak = 0;
        for (const float sample : sides.at(side)) peak = std::max(peak, std::abs(sample));
        return peak;
    }

    float rate = 0;
    std::vector<std::vector<float>> sides;
};

// The fixture's voices end with its last mark, 21,872 frames in.
constexpr std::int32_t kRegion = 20000;

// Two sung notes and a bank that sings them in four parts.
class AudioExport : public ::testing::Test {
protected:
    void Load(const VoicedSongSettings& songSettings, std::int32_t arrangement = 0) {
        bank_.reset();
        melody_ = std::make_unique<VoicedMelody>(
            MakeVoicedSong({{200, 8000, 2000}, {160, 8000, 2000}}, songSettings), arrangement);
        melody_->SetIntervals({0, 4, 7, -5});
        bank_ = std::make_unique<CVoiceBank>();
        bank_->SetBlockSize(kBlockSize);
        ASSERT_EQ(bank_->Init(melody_->Driver()), kOk);
        settings_ = AudioExportSettings{};
        settings_.playEnd = kRegion;
        settings_.gains.fill({0.25F, 0.25F});
    }
    void SetUp() override {
        VoicedSongSettings stereo;
        stereo.channels = 2;
        Load(stereo);
    }

    std::int32_t TryExport(const std::string& name, std::int32_t voice,
                           const CAudioExport::Progress& progress = nullptr) {
        return CAudioExport(*bank_, melody_->Driver(), settings_)
            .ExportAudio(folder_.File(name), voice, progress);
    }
    Sound Export(std::int32_t voice) {
        EXPECT_EQ(TryExport("out.wav", voice), kOk);
        return Sound(folder_.File("out.wav"));
    }
    // Compared with ==: a difference printed in full would be long.
    std::string ExportBytes(std::int32_t voice) {
        EXPECT_EQ(TryExport("bytes.wav", voice), kOk);
        return CScratchFolder::Content(folder_.File("bytes.wav"));
    }

    CScratchFolder folder_;
    std::unique_ptr<VoicedMelody> melody_;
    std::unique_ptr<CVoiceBank> bank_;
    AudioExportSettings settings_;
};

// --- The file ---

TEST_F(AudioExport, IsA16BitStereoWavAtTheRecordingsRateAndOfTheRegionsLength) {
    const Sound sound = Export(CAudioExport::kAllVoices);
    EXPECT_EQ(sound.rate, 44100);
    ASSERT_EQ(sound.sides.size(), 2U);
    EXPECT_EQ(sound.Frames(), kRegion);
    const std::string bytes = CScratchFolder::Content(folder_.File("out.wav"));
    EXPECT_EQ(bytes.size(), 44U + 4U * static_cast<std::size_t>(sound.Frames()));
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 4), "RIFFWAVE");
    EXPECT_EQ(bytes[34], 16);
    EXPECT_GT(sound.Peak(0), 0.1F);
    EXPECT_GT(sound.Peak(1), 0.03F); // the fixture's second channel is softer
}

TEST_F(AudioExport, OfAMonoFileWritesTwoChannels) {
    VoicedSongSettings mono;
    mono.sampleRate = 22050;
    Load(mono);
    const Sound sound = Export(CAudioExport::kAllVoices);
    EXPECT_EQ(sound.rate, 22050);
    ASSERT_EQ(sound.sides.size(), 2U);
    EXPECT_GT(sound.Peak(0), 0.1F);
    EXPECT_TRUE(sound.sides[0] == sound.sides[1]);
}

TEST_F(AudioExport, ARegionThatIsNoWholeNumberOfBlocksKeepsItsLength) {
    for (const std::int32_t length : {1, 63, 64, 65, 1000}) {
        settings_.playEnd = length;
        EXPECT_EQ(Export(CAudioExport::kAllVoices).Frames(), length);
    }
}

TEST_F(AudioExport, BeginsAtTheMarkNearestToTheStart) {
    const std::int32_t mark = 2000 + 10 * 200; // of the first note
    settings_.playEnd = 12000;
    settings_.playStart = mark + 30;
    EXPECT_EQ(Export(0).Frames(), 12000 - mark);
    settings_.playStart = mark - 30;
    EXPECT_EQ(Export(0).Frames(), 12000 - mark);
}

TEST_F(AudioExport, OfAnEmptyRegionHasNoSamples) {
    settings_.playEnd = 0;
    EXPECT_EQ(Export(CAudioExport::kAllVoices).Frames(), 0);
    settings_.playStart = 9000;
    settings_.playEnd = 3000;
    EXPECT_EQ(Export(CAudioExport::kAllVoices).Frames(), 0);
}

TEST_F(AudioExport, EndsWithTheRecordingHoweverFarTheRegionReaches) {
    settings_.playStart = std::numeric_limits<std::int32_t>::min();
    settings_.playEnd = std::numeric_limits<std::int32_t>::max();
    const std::int32_t frames = Export(CAudioExport::kAllVoices).Frames();
    EXPECT_GT(frames, melody_->Song().Length() - 1000);
    EXPECT_LE(frames, melody_->Song().Length());
}

// --- What is in it ---

// A voice as the bank gives it, block by block from the start.
std::array<std::vector<std::vector<float>>, 4> RenderVoices(CVoiceBank& bank, std::int32_t frames) {
    std::array<std::vector<std::vector<float>>, 4> voices;
    std::array<std::array<std::array<float, kBlockSize>, 2>, 4> block{};
    std::array<std::array<float*, 2>, 4> pointers{};
    for (std::size_t v = 0; v < 4; ++v) {
        pointers[v] = {block[v][0].data(), block[v][1].data()};
        voices[v].resize(2);
        bank.SetVoiceEnabled(static_cast<std::int32_t>(v), true);
    }
    double start = 0;
    bank.ClearVoices();
    bank.RestartVoices();
    bank.Seek(start);
    for (std::int32_t done = 0; done < frames; done += kBlockSize) {
        EXPECT_EQ(bank.Render(pointers[0].data(), pointers[1].data(), pointers[2].data(), pointers[3].data()),
                  kOk);
        for (std::size_t v = 0; v < 4; ++v)
            for (std::size_t c = 0; c < 2; ++c)
                voices[v][c].insert(voices[v][c].end(), block[v][c].begin(), block[v][c].end());
    }
    return voices;
}

TEST_F(AudioExport, IsTheSumOfTheVoicesAtTheirGainsWithoutAFade) {
    settings_.gains = {StripGain{0.5F, 0.25F}, {0.125F, 0.5F}, {0, 0.375F}, {0.25F, 0}};
    const Sound sound = Export(CAudioExport::kAllVoices);
    const auto voices = RenderVoices(*bank_, settings_.playEnd);
    for (std::size_t side = 0; side < 2; ++side)
        for (std::size_t i = 0; i < 20000; ++i) {
            double expected = 0;
            for (std::size_t v = 0; v < 4; ++v) {
                const StripGain gain = settings_.gains[v];
                expected += static_cast<double>(voices[v][side][i]) *
                            static_cast<double>(side == 0 ? gain.left : gain.right);
            }
            ASSERT_LT(std::abs(expected), 0.9);
            // Half a step of 16 bits, and a little for sums in f32.
            ASSERT_NEAR(sound.sides[side][i], expected, static_cast<double>(kRounding) * 1.01)
                << side << " at " << i;
        }
}

TEST_F(AudioExport, OfASingleVoiceTakesItsPanAndGain) {
    settings_.gains[2] = {0.5F, 0.25F};
    const Sound even = Export(2);
    settings_.gains[2] = StripGainFromVolAndPan(0.5F, -1); // 0.7071 on the left alone
    const Sound left = Export(2);
    EXPECT_GT(even.Peak(0), 0.1F);
    EXPECT_EQ(left.Peak(1), 0);
    for (std::size_t i = 0; i < even.sides[0].size(); ++i)
        ASSERT_NEAR(left.sides[0][i], even.sides[0][i] * std::sqrt(2.0F), 1.3F * kStep) << i; // both round
}

TEST_F(AudioExport, SingleVoicesAddUpToAllOfThem) {
    const Sound all = Export(CAudioExport::kAllVoices);
    std::vector<Sound> stems;
    for (std::int32_t voice = 0; voice < 4; ++voice) stems.push_back(Export(voice));
    for (std::size_t side = 0; side < 2; ++side)
        for (std::size_t i = 0; i < all.sides[side].size(); ++i) {
            float sum = 0;
            for (const Sound& stem : stems) sum += stem.sides[side][i];
            ASSERT_NEAR(sum, all.sides[side][i], 5 * kRounding) << side << " at " << i; // of five files
        }
}

TEST_F(AudioExport, OfAMutedVoiceRendersSilence) {
    settings_.enabled[1] = false;
    const Sound muted = Export(1);
    EXPECT_EQ(muted.Frames(), kRegion);
    EXPECT_EQ(muted.Peak(0), 0);
    EXPECT_EQ(muted.Peak(1), 0);
}

TEST_F(AudioExport, LeavesMutedVoicesOutOfTheWhole) {
    settings_.enabled = {false, false, true, false};
    const Sound all = Export(CAudioExport::kAllVoices);
    const Sound voice = Export(2);
    EXPECT_GT(all.Peak(0), 0.05F);
    EXPECT_TRUE(all.sides == voice.sides);
}

TEST_F(AudioExport, AVoiceThatWasOffSoundsFromTheFirstBlockOnIfItIsEnabledNow) {
    settings_.playStart = 4000; // within the first note
    const std::string before = ExportBytes(3);
    bank_->SetVoiceEnabled(3, false);
    EXPECT_TRUE(ExportBytes(3) == before);
}

TEST_F(AudioExport, OfAVoiceThatTheArrangementDoesNotHaveIsSilent) {
    VoicedSongSettings stereo;
    stereo.channels = 2;
    Load(stereo, 2);
    ASSERT_EQ(melody_->Driver().VoiceCount(), 2);
    EXPECT_GT(Export(1).Peak(0), 0.05F);
    EXPECT_EQ(Export(2).Peak(0), 0);
    EXPECT_EQ(Export(3).Frames(), kRegion);
}

TEST_F(AudioExport, CutsOffWhatExceeds999ThousandthsOfFullScale) {
    settings_.gains.fill({4, 0.01F});
    const Sound sound = Export(CAudioExport::kAllVoices);
    const float limit = 32735.0F / 32768; // 0.999 in 16 bits
    const auto [lowest, highest] = std::minmax_element(sound.sides[0].begin(), sound.sides[0].end());
    EXPECT_EQ(*highest, limit);
    EXPECT_EQ(*lowest, -limit);
    EXPECT_LT(sound.Peak(1), 0.1F); // each side for itself
}

TEST_F(AudioExport, TellsHowManyFramesWereCutOff) {
    settings_.gains.fill({4, 0.01F});
    CAudioExport exporter(*bank_, melody_->Driver(), settings_);
    ASSERT_EQ(exporter.ExportAudio(folder_.File("out.wav"), CAudioExport::kAllVoices), kOk);
    const Sound sound(folder_.File("out.wav"));
    // 0.999 and the little that rounds to it in 16 bits: few samples of a sung note lie within 0.00002.
    const auto cutOff = std::count_if(sound.sides[0].begin(), sound.sides[0].end(),
                                      [](float sample) { return std::fabs(sample) == 32735.0F / 32768; });
    EXPECT_GT(cutOff, 100);
    EXPECT_NEAR(static_cast<double>(exporter.GetLimitedFrames(0)), static_cast<double>(cutOff), 10);
    EXPECT_EQ(exporter.GetLimitedFrames(1), 0);
    settings_.gains.fill({0.1F, 0.1F});
    CAudioExport soft(*bank_, melody_->Driver(), settings_);
    ASSERT_EQ(soft.ExportAudio(folder_.File("out.wav"), CAudioExport::kAllVoices), kOk);
    EXPECT_EQ(soft.GetLimitedFrames(0), 0);
}

TEST_F(AudioExport, GivesTheSameBitsEachTime) {
    const std::string first = ExportBytes(CAudioExport::kAllVoices);
    EXPECT_TRUE(ExportBytes(CAudioExport::kAllVoices) == first);
    double elsewhere = 9000;
    bank_->Seek(elsewhere);
    EXPECT_TRUE(ExportBytes(CAudioExport::kAllVoices) == first);
}

// The settings reach what comes before the first note in a fresh bank, too.
TEST_F(AudioExport, OfAFreshBankIsThatOfAUsedOne) {
    melody_ =
        std::make_unique<VoicedMelody>(MakeVoicedSong({{180, 4000, 0, false}, {200, 8000, 2000}}, {}), 0);
    bank_ = std::make_unique<CVoiceBank>();
    bank_->SetBlockSize(kBlockSize);
    ASSERT_EQ(bank_->Init(melody_->Driver()), kOk);
    bank_->SetTranspose(5);
    for (std::int32_t voice = 0; voice < 4; ++voice) bank_->SetFormantShift(voice, 1.2F);
    const std::string first = ExportBytes(CAudioExport::kAllVoices);
    EXPECT_TRUE(ExportBytes(CAudioExport::kAllVoices) == first);
}

TEST_F(AudioExport, OfHumanisedVoicesGivesTheSameBitsEachTime) {
    for (std::int32_t voice = 0; voice < 4; ++voice)
        SendVoiceSettings(*bank_, voice,
                          FactoryPresets()[kDefaultPreset].voices[static_cast<std::size_t>(voice)]);
    const std::string first = ExportBytes(CAudioExport::kAllVoices);
    EXPECT_TRUE(ExportBytes(CAudioExport::kAllVoices) == first);
}

TEST_F(AudioExport, IgnoresWhatIsPlayedLive) {
    CChoirDriver& driver = melody_->Driver();
    const std::string stored = ExportBytes(CAudioExport::kAllVoices);
    driver.StartLive(true, false);
    driver.NoteInput({48, 55, 62, 69, -1, -1, -1, -1}, 0.0, 4);
    driver.ResetLive();
    EXPECT_TRUE(ExportBytes(CAudioExport::kAllVoices) == stored);
    EXPECT_TRUE(driver.IsLive());
}

// --- Several files in one pass ---

TEST_F(AudioExport, AllFilesOfOnePassHaveTheBitsOfTheirOwnExports) {
    settings_.enabled[2] = false;
    settings_.gains = {StripGain{0.5F, 0.25F}, {0.125F, 0.5F}, {1, 1}, {0.25F, 0}};
    std::vector<AudioExportFile> files;
    for (std::int32_t voice = -1; voice < 4; ++voice)
        files.push_back({folder_.File("pass" + std::to_string(voice)), voice});
    ASSERT_EQ(CAudioExport(*bank_, melody_->Driver(), settings_).ExportFiles(files), kOk);
    for (const AudioExportFile& file : files)
        EXPECT_TRUE(CScratchFolder::Content(file.path) == ExportBytes(file.voice)) << file.voice;
}

TEST_F(AudioExport, WhenOneFileOfAPassCannotBeOpenedNoneIsLeft) {
    folder_.Put("mix.wav", "old");
    const std::vector<AudioExportFile> files = {{folder_.File("mix.wav"), CAudioExport::kAllVoices},
                                                {folder_.File("no folder/stem.wav"), 0}};
    EXPECT_EQ(CAudioExport(*bank_, melody_->Driver(), settings_).ExportFiles(files), kCannotWrite);
    EXPECT_EQ(CScratchFolder::Content(folder_.File("mix.wav")), "old");
    EXPECT_EQ(folder_.CountFiles(), 1U);
}

// --- Tempo ---

TEST_F(AudioExport, HasTheHostsLengthWhenTheMelodyFollowsItsTempo) {
    bank_->SetSpeed(2); // twice as slow
    settings_.tempoRatio = 0.5;
    EXPECT_NEAR(Export(0).Frames(), 40000, kBlockSize);
    bank_->SetSpeed(0.5F);
    settings_.tempoRatio = 2;
    EXPECT_NEAR(Export(0).Frames(), 10000, kBlockSize);
    bank_->SetSpeed(1 / 1.37F);
    settings_.tempoRatio = 1.37;
    EXPECT_NEAR(Export(0).Frames(), 20000 / 1.37, kBlockSize);
}

TEST_F(AudioExport, AFractionOfASampleBeforeTheEndIsOneMoreSampleOfTheFile) {
    settings_.playEnd = 49;
    settings_.tempoRatio = 0.75; // blocks of 49, 12, 3 and 1 samples come to 48.75
    EXPECT_EQ(Export(0).Frames(), 66);
}

TEST_F(AudioExport, AnAbsurdTempoIsHeldAndComesToAnEnd) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    settings_.playEnd = 300;
    settings_.tempoRatio = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Export(0).Frames(), 300);
    for (const double huge : {1e300, kInfinity}) {
        settings_.tempoRatio = huge;
        EXPECT_EQ(Export(0).Frames(), kBlockSize); // a block passes all of the region
    }
    bank_->SetSpeed(100);
    for (const double tiny : {0.0, -3.0, 1e-300, -kInfinity}) {
        settings_.tempoRatio = tiny;
        EXPECT_NEAR(Export(0).Frames(), 30000, 100);
    }
}

// --- Progress and giving up ---

TEST_F(AudioExport, TellsItsProgressInAboutAHundredRisingSteps) {
    std::vector<double> shares;
    EXPECT_EQ(TryExport("out.wav", 0,
                        [&](double share) {
                            shares.push_back(share);
                            return true;
                        }),
              kOk);
    ASSERT_GE(shares.size(), 95U);
    EXPECT_LE(shares.size(), 101U);
    EXPECT_EQ(shares.front(), 0);
    EXPECT_EQ(shares.back(), 1);
    for (std::size_t i = 1; i < shares.size(); ++i) EXPECT_GT(shares[i], shares[i - 1]);
}

TEST_F(AudioExport, TheProgressOfARecordingThatEndsEarlyComesToItsEndToo) {
    settings_.playEnd *= 3;
    double last = 0;
    EXPECT_EQ(TryExport("out.wav", 0, [&](double share) { return last = share, true; }), kOk);
    EXPECT_EQ(last, 1);
}

TEST_F(AudioExport, ACancelledOneLeavesNoFileAndAnOldOneUntouched) {
    for (const double when : {0.0, 0.5, 1.0}) {
        const auto cancel = [&](double share) { return share < when; };
        EXPECT_EQ(TryExport("new.wav", 0, cancel), CAudioExport::kCancelled);
        EXPECT_EQ(folder_.CountFiles(), 0U) << when;
    }
    folder_.Put("old.wav", "old");
    EXPECT_EQ(TryExport("old.wav", 0, [](double share) { return share < 0.5; }), CAudioExport::kCancelled);
    EXPECT_EQ(CScratchFolder::Content(folder_.File("old.wav")), "old");
    EXPECT_EQ(folder_.CountFiles(), 1U);
}

TEST_F(AudioExport, AfterACancelledOneTheNextIsAsAlways) {
    const std::string whole = ExportBytes(0);
    EXPECT_EQ(TryExport("new.wav", 0, [](double share) { return share < 0.5; }), CAudioExport::kCancelled);
    EXPECT_TRUE(ExportBytes(0) == whole);
}

TEST_F(AudioExport, AProgressThatThrowsLeavesNoFile) {
    const auto fail = [](double share) -> bool {
        if (share > 0.5) throw std::runtime_error("no more");
        return true;
    };
    EXPECT_THROW(TryExport("new.wav", 0, fail), std::runtime_error);
    EXPECT_EQ(folder_.CountFiles(), 0U);
}

TEST_F(AudioExport, AFileThatCannotBeCreatedIsToldSo) {
    EXPECT_EQ(TryExport("no folder/out.wav", 0), kCannotWrite);
    EXPECT_EQ(TryExport("", 0), kCannotWrite); // the folder itself
}

TEST_F(AudioExport, AFullDiskLeavesTheOldFile) {
    folder_.Put("out.wav", "old");
    {
        const FileSizeLimit limit(30000);
        EXPECT_EQ(TryExport("out.wav", 0), kCannotWrite);
    }
    EXPECT_EQ(CScratchFolder::Content(folder_.File("out.wav")), "old");
    EXPECT_EQ(folder_.CountFiles(), 1U);
}

TEST_F(AudioExport, AVoiceThatDoesNotExistIsABadArgument) {
    for (const std::int32_t voice : {-2, 4, std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(TryExport("out.wav", voice), kBadArgument) << voice;
    EXPECT_EQ(folder_.CountFiles(), 0U);
}

TEST_F(AudioExport, ABankWithoutARecordingIsABadArgument) {
    CVoiceBank empty;
    EXPECT_EQ(CAudioExport(empty, melody_->Driver(), settings_).ExportAudio(folder_.File("out.wav"), 0),
              kBadArgument);
    EXPECT_EQ(folder_.CountFiles(), 0U);
}

TEST_F(AudioExport, WithoutMemoryItCannotWrite) {
    const std::string path = folder_.File("out.wav");
    std::int32_t result = kCannotWrite;
    std::int64_t allowed = 0;
    for (; result != kOk && allowed < 200; ++allowed) {
        ASSERT_EQ(folder_.CountFiles(), 0U) << allowed;
        CAudioExport exporter(*bank_, melody_->Driver(), settings_);
        const test::AllocationLimit limit(allowed);
        result = exporter.ExportAudio(path, CAudioExport::kAllVoices);
        if (result != kOk && result != kCannotWrite) break;
    }
    EXPECT_EQ(result, kOk);
    EXPECT_GT(allowed, 5);
}

// --- The settings of the voices reach the bank ---

TEST_F(AudioExport, EachSettingOfAVoiceIsHeard) {
    // The second note follows at once and at another interval, so that there is something to glide over.
    bank_.reset();
    test::VoicedSong song = MakeVoicedSong({{200, 8000, 2000}, {160, 8000, 0}});
    song.notes[0].pitch += 0.3F; // it is sung lower than it is on the whole, which drift scales
    melody_ = std::make_unique<VoicedMelody>(std::move(song));
    melody_->SetIntervals({0, 4, 7, -5});
    melody_->Driver().SetVoicePitch(1, 1, melody_->Driver().GetNotePitch(1) - 3);
    bank_ = std::make_unique<CVoiceBank>();
    bank_->SetBlockSize(kBlockSize);
    ASSERT_EQ(bank_->Init(melody_->Driver()), kOk);
    settings_.playEnd = 17000;

    const auto render = [&](const VoiceSettings& settings) {
        SendVoiceSettings(*bank_, 1, settings);
        return ExportBytes(1);
    };
    const VoiceSettings base;
    const std::string plain = render(base);
    const auto differs = [&](auto change) {
        VoiceSettings changed = base;
        change(changed);
        return render(changed) != plain;
    };
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.delay = 0.05F; }));
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.timing = 0.1F; }));
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.formantShift = 1.2F; }));
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.quantize = 1; }));
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.drift = 1; }));
    EXPECT_TRUE(differs([](VoiceSettings& voice) { voice.glide = 0; }));
    EXPECT_TRUE(render(base) == plain);
}

} // namespace
} // namespace sonorelle
