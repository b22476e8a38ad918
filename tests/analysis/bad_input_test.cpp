// Whatever a file holds, its analysis ends with results that are whole and finite, or says that there are
// none.

#include "analysis/analysis_job.h"
#include "analysis/melody_analyzer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "support/analysis_results.h"
#include "support/note_matching.h"
#include "support/sanitizer_share.h"
#include "support/synthetic_singer.h"
#include "support/temporary_folder.h"
#include "support/wav_writer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

#include <unistd.h>

namespace sonorelle::test {

namespace {

using Bytes = std::vector<unsigned char>;

void Append(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<unsigned char>(value >> (8 * i) & 0xFF));
}

void Append(Bytes& bytes, const char* text) {
    bytes.insert(bytes.end(), text, text + std::char_traits<char>::length(text));
}

struct WavShape {
    std::uint32_t rate = 44100;
    std::uint32_t channels = 1;
    std::uint32_t bits = 16;
    bool floating = false;
};

Bytes WavHeader(const WavShape& shape, std::uint32_t dataBytes) {
    const std::uint32_t frame = shape.channels * shape.bits / 8;
    Bytes bytes;
    Append(bytes, "RIFF");
    Append(bytes, 36 + dataBytes, 4);
    Append(bytes, "WAVEfmt ");
    Append(bytes, 16, 4);
    Append(bytes, shape.floating ? 3 : 1, 2);
    Append(bytes, shape.channels, 2);
    Append(bytes, shape.rate, 4);
    Append(bytes, shape.rate * frame, 4);
    Append(bytes, frame, 2);
    Append(bytes, shape.bits, 2);
    Append(bytes, "data");
    Append(bytes, dataBytes, 4);
    return bytes;
}

// A WAV file of any sample format, channels all alike.
Bytes Wav(const WavShape& shape, const std::vector<float>& samples) {
    const auto frames = static_cast<std::uint32_t>(samples.size());
    Bytes bytes = WavHeader(shape, frames * shape.channels * shape.bits / 8);
    const double scale = std::ldexp(1.0, static_cast<int>(shape.bits) - 1);
    for (const float sample : samples) {
        std::uint32_t word = std::bit_cast<std::uint32_t>(sample);
        if (!shape.floating) {
            const double held = std::clamp(static_cast<double>(sample) * scale, -scale, scale - 1.0);
            word = static_cast<std::uint32_t>(std::lround(held) + (shape.bits == 8 ? 128 : 0));
        }
        for (std::uint32_t c = 0; c < shape.channels; ++c)
            Append(bytes, word, static_cast<int>(shape.bits) / 8);
    }
    return bytes;
}

std::vector<float> Tone(double hertz, double rate, std::size_t frames) {
    std::vector<float> samples(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = std::fmod(static_cast<double>(i) * hertz / rate, 1.0);
        // A few harmonics, as a voice has them.
        double sum = 0.0;
        for (int h = 1; h <= 5; ++h) sum += std::cos(2.0 * std::numbers::pi * h * phase) / (h * 4.0);
        samples[i] = static_cast<float>(sum);
    }
    return samples;
}

std::vector<float> Noise(std::size_t frames) {
    RandomNumbers random(7);
    std::vector<float> samples(frames);
    for (float& sample : samples) sample = static_cast<float>(random.Symmetric());
    return samples;
}

class BadInput : public testing::Test {
protected:
    void Write(const Bytes& bytes) {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(file.good());
        file.close();
        SetModificationTime(path, 1'000'000'000'000'000'000);
    }

    // Analyses the file, loads it again from its cache, and expects sound and equal results.
    void ExpectAnalysed(std::int32_t frames) {
        AnalysisResults first;
        for (const AnalysisOutcome expected : {AnalysisOutcome::kWritten, AnalysisOutcome::kLoaded}) {
            CkvoAudioFile audio;
            ASSERT_EQ(audio.OpenRead(path, kAudioCacheFrames, -1, -1), kOk);
            ASSERT_EQ(audio.GetLength(), frames);
            CMelodyAnalyzer analyzer;
            ASSERT_EQ(analyzer.Attach(&audio), kOk);
            ASSERT_EQ(AnalyseMelody(analyzer, true, nullptr), expected);
            results = AnalysisResults(analyzer);
            EXPECT_EQ(WhatIsWrong(results, frames), "");
            const std::int32_t key = analyzer.EstimateKey(0);
            EXPECT_TRUE(key >= -1 && key < 24);
            EXPECT_TRUE(std::isfinite(analyzer.GetTuningFrequency()));
            if (expected == AnalysisOutcome::kWritten) first = results;
        }
        EXPECT_TRUE(SameRecords(first.marks, results.marks));
        EXPECT_TRUE(SameRecords(first.notes, results.notes));
        EXPECT_EQ(first.tuningOffset, results.tuningOffset);
        std::filesystem::remove(path + ".kva");
    }

    void ExpectNotOpened(const std::string& name) {
        CkvoAudioFile audio;
        EXPECT_EQ(audio.OpenRead(name, kAudioCacheFrames, -1, -1), kCannotOpen);
        CMelodyAnalyzer analyzer;
        EXPECT_EQ(analyzer.Attach(&audio), kCannotOpen);
        EXPECT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kFailed);
    }

    bool AnyVoiced() const {
        return std::any_of(results.frames.begin(), results.frames.end(),
                           [](const AnalysisFrame& frame) { return frame.voiced != 0; });
    }

    const TemporaryFolder folder;
    std::string path = folder.File("song.wav").string();
    AnalysisResults results;
};

} // namespace

TEST_F(BadInput, WhatIsNoSoundFileIsNotOpened) {
    const Bytes text = {'n', 'o', ' ', 's', 'o', 'u', 'n', 'd', '\n'};
    Bytes raw;
    for (const float sample : Tone(220.0, 44100.0, 5000))
        Append(raw, static_cast<std::uint32_t>(std::lround(sample * 20'000.0F)), 2);
    for (const Bytes& bytes : {Bytes(), text, raw, Bytes{'R', 'I', 'F', 'F'}}) {
        Write(bytes);
        ExpectNotOpened(path);
    }
    ExpectNotOpened(folder.Path().string());
    ExpectNotOpened(folder.File("missing.wav").string());
    ExpectNotOpened("");
}

TEST_F(BadInput, HeaderWithoutSamplesHasNoNotes) {
    Write(WavHeader({}, 0));
    ExpectAnalysed(0);
    ASSERT_EQ(results.marks.size(), 1U) << "the start is the end";
    EXPECT_TRUE(results.notes.empty());
}

TEST_F(BadInput, LengthsAroundABlock) {
    const std::vector<float> tone = Tone(441.0, 44100.0, 5000);
    for (const int frames : {1, 2, 3, 15, 16, 1023, 1024, 1025, 2047, 2048, 2049, 4095, 4096, 4097}) {
        SCOPED_TRACE(frames);
        Write(Wav({}, {tone.begin(), tone.begin() + frames}));
        ExpectAnalysed(frames);
    }
}

TEST_F(BadInput, TruncatedDataIsAnalysedAsFarAsItGoes) {
    Bytes bytes = Wav({}, Tone(220.5, 44100.0, 30'000));
    bytes.resize(44 + 2 * 20'000 + 1); // half a frame is none
    Write(bytes);
    ExpectAnalysed(20'000);
    EXPECT_EQ(results.notes.size(), 1U);
}

TEST_F(BadInput, SizesThatLieAreNotBelieved) {
    const std::vector<float> tone = Tone(220.5, 44100.0, 20'000);
    for (const std::uint32_t size : {0x7FFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFF0U}) {
        Bytes bytes = Wav({}, tone);
        for (std::size_t i = 0; i < 4; ++i) bytes[40 + i] = static_cast<unsigned char>(size >> (8 * i));
        Write(bytes);
        ExpectAnalysed(20'000);
    }
}

TEST_F(BadInput, EverySampleFormatGivesTheSameNote) {
    const std::vector<float> tone = Tone(220.5, 44100.0, 30'000); // a period of 200 frames
    for (const WavShape& shape :
         {WavShape{44100, 1, 8, false}, WavShape{44100, 1, 16, false}, WavShape{44100, 1, 24, false},
          WavShape{44100, 1, 32, false}, WavShape{44100, 1, 32, true}, WavShape{44100, 2, 16, false},
          WavShape{44100, 3, 24, false}, WavShape{44100, 8, 32, true}}) {
        SCOPED_TRACE(std::to_string(shape.bits) + " bits, " + std::to_string(shape.channels) + " channels");
        Write(Wav(shape, tone));
        ExpectAnalysed(30'000);
        ASSERT_EQ(results.notes.size(), 1U);
        EXPECT_NEAR(static_cast<double>(results.notes[0].pitch), 69.0 + 12.0 * std::log2(220.5 / 440.0),
                    1e-4);
    }
}

TEST_F(BadInput, AiffBesideWavGivesTheSameResults) {
    const std::vector<float> tone = Tone(220.5, 44100.0, 30'000);
    Write(Wav({}, tone));
    ExpectAnalysed(30'000);
    const AnalysisResults wav = results;
    path = folder.File("song.aiff").string();
    {
        CkvoAudioFile writer;
        ASSERT_EQ(writer.OpenWrite(path, 1, 44100.0F, kAudioCacheFrames, kAiff16), kOk);
        const float* const channels[] = {tone.data()};
        ASSERT_EQ(writer.Write(channels, 30'000), kOk);
        ASSERT_EQ(writer.Close(), kOk);
    }
    SetModificationTime(path, 1'000'000'000'000'000'000);
    ExpectAnalysed(30'000);
    EXPECT_TRUE(results.SameBits(wav));
}

TEST_F(BadInput, EveryRateThatTheAnalysisTakes) {
    // Below 11025 Hz there is no tracker to say what is voiced: marks, but no more is promised.
    for (const std::uint32_t rate : {8000U, 11024U, 11025U, 16000U, 22050U, 31999U, 32000U, 44100U, 48000U,
                                     64000U, 96000U, 176'400U, 192'000U, 255'999U}) {
        SCOPED_TRACE(rate);
        const auto frames = static_cast<std::int32_t>(rate);
        Write(Wav({rate, 1, 16, false}, Tone(rate / 100.0, rate, static_cast<std::size_t>(frames))));
        ExpectAnalysed(frames);
        if (rate >= 16000 && rate <= 96000) {
            ASSERT_EQ(results.notes.size(), 1U);
            // The period is 100 frames. It may be found a frame short: the tracker's is cut off to a whole
            // number, and the correlation weighs lags by how much of the two stretches overlaps, in favour of
            // that number.
            const double sung = 69.0 + 12.0 * std::log2(rate / 44000.0);
            EXPECT_GE(static_cast<double>(results.notes[0].pitch), sung - 0.001);
            EXPECT_LE(static_cast<double>(results.notes[0].pitch),
                      sung + 12.0 * std::log2(100.0 / 99.0) + 0.001);
        }
    }
}

TEST_F(BadInput, RatesBeyondFailWithoutACache) {
    for (const std::uint32_t rate : {1U, 7999U, 256'000U, 384'000U, 0x7FFFFFFFU}) {
        SCOPED_TRACE(rate);
        Write(Wav({rate, 1, 16, false}, Tone(220.0, 44100.0, 5000)));
        CkvoAudioFile audio;
        if (audio.OpenRead(path, kAudioCacheFrames, -1, -1) == kOk) {
            CMelodyAnalyzer analyzer;
            ASSERT_EQ(analyzer.Attach(&audio), kOk);
            EXPECT_EQ(AnalyseMelody(analyzer, true, nullptr), AnalysisOutcome::kFailed);
        }
        EXPECT_FALSE(std::filesystem::exists(path + ".kva"));
    }
}

TEST_F(BadInput, SilenceHasNothingVoiced) {
    Write(Wav({}, std::vector<float>(50'000)));
    ExpectAnalysed(50'000);
    EXPECT_FALSE(AnyVoiced());
}

TEST_F(BadInput, SignalsWithoutAMelody) {
    constexpr std::size_t kFrames = 50'000;
    std::vector<float> click(kFrames);
    click[25'000] = 1.0F;
    std::vector<float> nyquist(kFrames);
    for (std::size_t i = 0; i < kFrames; ++i) nyquist[i] = i % 2 == 0 ? 1.0F : -1.0F;
    std::vector<float> extremes(kFrames);
    for (std::size_t i = 0; i < kFrames; ++i) extremes[i] = i % 777 < 300 ? -1.0F : 1.0F;
    const std::vector<std::pair<const char*, std::vector<float>>> signals = {
        {"full-scale noise", Noise(kFrames)},
        {"constant", std::vector<float>(kFrames, 0.5F)},
        {"negative constant", std::vector<float>(kFrames, -1.0F)},
        {"one click", click},
        {"square wave at half the rate", nyquist},
        {"jumps between the extremes", extremes}};
    for (const auto& [name, samples] : signals) {
        SCOPED_TRACE(name);
        for (const bool floating : {false, true}) {
            Write(Wav({44100, 2, floating ? 32U : 16U, floating}, samples));
            ExpectAnalysed(kFrames);
        }
    }
}

TEST_F(BadInput, SamplesThatAreNotFiniteCountAsZero) {
    std::vector<float> clean = Tone(220.5, 44100.0, 30'000);
    for (std::size_t i = 0; i < clean.size(); i += 997) clean[i] = 0.0F;
    Write(Wav({44100, 1, 32, true}, clean));
    ExpectAnalysed(30'000);
    const AnalysisResults expected = results;
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float bad : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()}) {
        std::vector<float> samples = clean;
        for (std::size_t i = 0; i < samples.size(); i += 997) samples[i] = bad;
        Write(Wav({44100, 1, 32, true}, samples));
        ExpectAnalysed(30'000);
        EXPECT_TRUE(results.SameBits(expected));
    }
    Write(Wav({44100, 2, 32, true}, std::vector<float>(30'000, infinity)));
    ExpectAnalysed(30'000);
    EXPECT_FALSE(AnyVoiced());
}

TEST_F(BadInput, AbsurdLevelsStayFinite) {
    constexpr float kLargest = std::numeric_limits<float>::max();
    constexpr float kDenormal = std::numeric_limits<float>::denorm_min();
    for (const float level : {kLargest, kLargest / 4, 1e30F, 1e-20F, 1e-30F, 1e-40F, kDenormal}) {
        SCOPED_TRACE(level);
        std::vector<float> samples = Tone(220.5, 44100.0, 20'000);
        const float peak = *std::max_element(samples.begin(), samples.end());
        for (float& sample : samples) sample = sample / peak * level;
        for (const std::uint32_t channels : {1U, 2U}) {
            Write(Wav({44100, channels, 32, true}, samples));
            ExpectAnalysed(20'000);
            if (level > 1e-21F) {
                EXPECT_EQ(results.notes.size(), 1U);
            }
        }
    }
}

TEST_F(BadInput, OneHugeSampleDrownsTheRest) {
    std::vector<float> samples = Tone(220.5, 44100.0, 30'000);
    samples[15'000] = std::numeric_limits<float>::max();
    Write(Wav({44100, 1, 32, true}, samples));
    ExpectAnalysed(30'000);
}

TEST_F(BadInput, NameWithSpacesAndForeignLetters) {
    path = folder.File("Ein Lied für Zoë – 歌 #1 %s.wav").string();
    Write(Wav({}, Tone(220.5, 44100.0, 20'000)));
    ExpectAnalysed(20'000);
    path = folder.File("not \xFF\xFE UTF-8.wav").string();
    Write(Wav({}, Tone(220.5, 44100.0, 20'000)));
    ExpectAnalysed(20'000);
}

TEST_F(BadInput, FileReadFromDiskGivesTheResultsOfTheOneHeldInMemory) {
    Write(Wav({44100, 2, 16, false}, Tone(220.5, 44100.0, 30'000)));
    std::vector<AnalysisResults> runs;
    for (const std::int32_t limit : {30'000, 29'999, 0}) {
        CkvoAudioFile audio;
        ASSERT_EQ(audio.OpenRead(path, limit, -1, -1), kOk);
        CMelodyAnalyzer analyzer;
        ASSERT_EQ(analyzer.Attach(&audio), kOk);
        ASSERT_EQ(AnalyseMelody(analyzer, false, nullptr), AnalysisOutcome::kComputed);
        runs.emplace_back(analyzer);
    }
    EXPECT_EQ(runs[0].notes.size(), 1U);
    EXPECT_TRUE(runs[1].SameBits(runs[0]));
    EXPECT_TRUE(runs[2].SameBits(runs[0]));
}

TEST_F(BadInput, TenMinutesAndOneFrameMore) {
    // Silence, so that the disk holds no more than the header. Under a sanitizer only what is read from disk.
    for (const std::int32_t frames : {kAudioCacheFrames + 1, kAudioCacheFrames}) {
        if (UnderSanitizer() && frames == kAudioCacheFrames) continue;
        SCOPED_TRACE(frames);
        Write(
            WavHeader({.rate = UnderSanitizer() ? 192000U : 44100U}, 2 * static_cast<std::uint32_t>(frames)));
        std::filesystem::resize_file(path, 44 + 2 * static_cast<std::uintmax_t>(frames));
        SetModificationTime(path, 1'000'000'000'000'000'000);
        ExpectAnalysed(frames);
        EXPECT_FALSE(AnyVoiced());
    }
}

TEST_F(BadInput, FileThatShrinksWhileItIsReadEndsInSoundResults) {
    Write(Wav({}, Tone(220.5, 44100.0, 60'000)));
    CkvoAudioFile audio;
    ASSERT_EQ(audio.OpenRead(path, 0, -1, -1), kOk);
    CMelodyAnalyzer analyzer;
    ASSERT_EQ(analyzer.Attach(&audio), kOk);
    for (int step = 0; step < 3; ++step) ASSERT_EQ(analyzer.RunStep(), CMelodyAnalyzer::kReadAudio);
    std::filesystem::resize_file(path, 44 + 2 * 20'000);
    int steps = 0;
    while (analyzer.RunStep() != CMelodyAnalyzer::kComplete && ++steps < 1000) {
    }
    EXPECT_LT(steps, 1000);
    EXPECT_TRUE(analyzer.IsAnalysed());
    analyzer.StoreResults(false);
    results = AnalysisResults(analyzer);
    ASSERT_FALSE(results.marks.empty());
    EXPECT_LE(results.marks.back().position, 60'000);
    EXPECT_EQ(WhatIsWrong(results, results.marks.back().position), "");
}

} // namespace sonorelle::test
