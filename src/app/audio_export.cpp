// A pass over the region takes these steps:
//   1. all files are opened, each under a temporary name;
//   2. the voices that are to sound are switched on, and the bank goes to the start of the region, where they
//      fade in;
//   3. block by block, the bank renders the four voices; each file adds up its own at the strips' gains,
//      limits the sum and writes it;
//   4. all files take their names.

#include "app/audio_export.h"

#include "app/live_bypass.h"
#include "formats/audio_file.h"
#include "harmony/choir_driver.h"
#include "platform/critical_section.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"
#include "synthesis/voice_bank.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace sonorelle {

namespace {

constexpr std::int32_t kFileChannels = 2; // a file has two channels, whatever the recording has
constexpr double kProgressSteps = 100;

static_assert(AudioExportSettings::kVoices == CVoiceBank::kVoices);

// The lock of the bank, where there is one, for the life of this object.
class BankGuard {
public:
    explicit BankGuard(CCriticalSection* bankLock) : lock(bankLock) {
        if (lock != nullptr) SpinEnter(*lock);
    }
    ~BankGuard() {
        if (lock != nullptr) lock->LeaveCriticalSection();
    }
    BankGuard(const BankGuard&) = delete;
    BankGuard& operator=(const BankGuard&) = delete;

private:
    CCriticalSection* lock;
};

double HeldTempoRatio(double ratio) {
    constexpr auto kLowest = static_cast<double>(1 / CVoiceBank::kLargestSpeed);
    constexpr auto kHighest = static_cast<double>(1 / CVoiceBank::kSmallestSpeed);
    return std::isnan(ratio) ? 1 : std::clamp(ratio, kLowest, kHighest);
}

// Tells the progress whenever another hundredth is done.
class ProgressSteps {
public:
    explicit ProgressSteps(const CAudioExport::Progress& callback) : progress(callback) {}

    // False to cancel.
    bool Tell(double share) {
        if (!progress || share * kProgressSteps < next) return true;
        next = std::floor(share * kProgressSteps) + 1;
        return progress(std::min(share, 1.0));
    }

private:
    const CAudioExport::Progress& progress;
    double next = 0; // in steps
};

} // namespace

// One block of each voice.
class CAudioExport::VoiceBuffers {
public:
    VoiceBuffers(std::int32_t channelCount, std::int32_t blockSize)
        : channels(static_cast<std::size_t>(channelCount)), size(static_cast<std::size_t>(blockSize)),
          samples(CVoiceBank::kVoices * channels * size) {
        for (std::size_t i = 0; i < CVoiceBank::kVoices * channels; ++i)
            pointers.push_back(samples.data() + i * size);
    }

    std::int32_t RenderFrom(CVoiceBank& bank, CCriticalSection* lock) {
        const BankGuard guard(lock);
        return bank.Render(Of(0), Of(1), Of(2), Of(3));
    }
    const float* Samples(std::size_t voice, std::size_t side) const {
        return pointers[voice * channels + side % channels];
    }

private:
    float* const* Of(std::size_t voice) const { return pointers.data() + voice * channels; }

    std::size_t channels;
    std::size_t size;
    std::vector<float> samples;
    std::vector<float*> pointers; // [voice][channel]
};

// One file of the pass. It is given up unless Close succeeds.
class CAudioExport::Output {
public:
    Output(const AudioExportSettings& exportSettings, std::int32_t voice, std::int32_t voiceCount,
           std::int32_t blockSize)
        : settings(exportSettings), firstVoice(voice == kAllVoices ? 0 : voice),
          lastVoice(voice == kAllVoices ? voiceCount - 1 : std::min(voice, voiceCount - 1)) {
        for (std::vector<float>& side : sum) side.resize(static_cast<std::size_t>(blockSize));
    }
    ~Output() { file.Discard(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool Open(const std::string& path, const CVoiceBank& bank) {
        return file.OpenWrite(path, kFileChannels, bank.GetSampleRate(), bank.GetBlockSize(), kWav16) == kOk;
    }
    bool Close() { return file.Close() == kOk; }

    // Writes `frames` samples of what the voices have.
    bool Write(const VoiceBuffers& voices, std::int32_t frames) {
        for (std::size_t side = 0; side < kFileChannels; ++side) {
            std::fill_n(sum[side].begin(), frames, 0.0F);
            for (std::int32_t voice = firstVoice; voice <= lastVoice; ++voice)
                Add(voices, static_cast<std::size_t>(voice), side, frames);
        }
        Limit(frames);
        const float* const sides[kFileChannels] = {sum[0].data(), sum[1].data()};
        return file.Write(sides, frames) == kOk;
    }

    std::int64_t GetLimitedFrames() const { return limitedFrames; }

private:
    void Limit(std::int32_t frames) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            const float left = std::clamp(sum[0][i], -kLimit, kLimit);
            const float right = std::clamp(sum[1][i], -kLimit, kLimit);
            limitedFrames += left != sum[0][i] || right != sum[1][i] ? 1 : 0;
            sum[0][i] = left;
            sum[1][i] = right;
        }
    }

    void Add(const VoiceBuffers& voices, std::size_t voice, std::size_t side, std::int32_t frames) {
        if (!settings.enabled[voice]) return;
        const StripGain gains = settings.gains[voice];
        const float gain = side == 0 ? gains.left : gains.right;
        const float* const source = voices.Samples(voice, side);
        float* const target = sum[side].data();
        for (std::int32_t i = 0; i < frames; ++i) target[i] += source[i] * gain;
    }

    const AudioExportSettings& settings;
    std::int32_t firstVoice;
    std::int32_t lastVoice; // included; before the first for a voice that the arrangement does not have
    std::array<std::vector<float>, kFileChannels> sum;
    std::int64_t limitedFrames = 0;
    CkvoAudioFile file;
};

std::int32_t CAudioExport::ExportAudio(const std::string& path, std::int32_t voice,
                                       const Progress& progress) try {
    const AudioExportFile file{path, voice};
    return ExportFiles({&file, 1}, progress);
} catch (const std::bad_alloc&) {
    return kCannotWrite;
}

std::int32_t CAudioExport::ExportFiles(std::span<const AudioExportFile> files, const Progress& progress) try {
    const auto isVoice = [](const AudioExportFile& file) {
        return file.voice >= kAllVoices && file.voice < AudioExportSettings::kVoices;
    };
    if (bank.GetChannelCount() < 1 || !std::all_of(files.begin(), files.end(), isVoice)) return kBadArgument;
    const LiveBypass bypass(driver);
    limitedFrames.clear();

    std::vector<std::unique_ptr<Output>> outputs;
    for (const AudioExportFile& file : files) {
        outputs.push_back(
            std::make_unique<Output>(settings, file.voice, driver.VoiceCount(), bank.GetBlockSize()));
        if (!outputs.back()->Open(file.path, bank)) return kCannotWrite;
    }
    const std::int32_t result = Render(outputs, progress);
    for (const auto& output : outputs) limitedFrames.push_back(output->GetLimitedFrames());
    if (result != kOk) return result;
    const bool closed =
        std::all_of(outputs.begin(), outputs.end(), [](const auto& output) { return output->Close(); });
    return closed ? kOk : kCannotWrite;
} catch (const std::bad_alloc&) {
    return kCannotWrite;
}

// Gives the position reached.
double CAudioExport::GoToStart() {
    const BankGuard guard(settings.lock);
    for (std::size_t voice = 0; voice < settings.enabled.size(); ++voice)
        bank.SetVoiceEnabled(static_cast<std::int32_t>(voice), settings.enabled[voice]);
    double position = std::max(settings.playStart, 0);
    bank.ClearVoices(); // as if nothing had played, so that the file is the same whatever did
    bank.RestartVoices();
    bank.Locate(position); // also where the bank is there already
    return position;
}

// Every pass renders all four voices, so that the bank goes the same way whatever is written.
//
// Two quirks that stay, both where the file's time is not the recording's (tempoRatio): a block counts its
// samples as if they were the recording's, so that the last one is cut short, or the last few are, each to a
// part of what the bank has rendered.
std::int32_t CAudioExport::Render(const std::vector<std::unique_ptr<Output>>& outputs,
                                  const Progress& progress) {
    const std::int32_t blockSize = bank.GetBlockSize();
    const double tempoRatio = HeldTempoRatio(settings.tempoRatio);
    VoiceBuffers voices(bank.GetChannelCount(), blockSize);
    const double start = GoToStart();
    double position = start;
    ProgressSteps steps(progress);
    if (!steps.Tell(0)) return kCancelled;
    while (position < settings.playEnd && voices.RenderFrom(bank, settings.lock) == kOk) {
        // At least one sample, or the fraction that is left before the end would never be passed.
        const std::int32_t frames = std::clamp(TruncateToI32(settings.playEnd - position), 1, blockSize);
        for (const auto& output : outputs)
            if (!output->Write(voices, frames)) return kCannotWrite;
        position += frames * tempoRatio;
        if (!steps.Tell((position - start) / (settings.playEnd - start))) return kCancelled;
    }
    return steps.Tell(1) ? kOk : kCancelled;
}

} // namespace sonorelle
