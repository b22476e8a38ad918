#include "cli/arrangement_sound.h"

#include "app/strip_gain.h"
#include "app/voice_preset.h"
#include "cli/arrangement_report.h"
#include "harmony/choir_driver.h"
#include "platform/result_codes.h"
#include "synthesis/voice_bank.h"

#include <algorithm>
#include <limits>

namespace sonorelle {

namespace {

// As in playback: pitches are decided once a block, so that another size would sound different.
constexpr std::int32_t kBlockSize = 64;
constexpr double kBytesPerFrame = 4; // two channels of 16 bits

void PushSettings(CVoiceBank& bank, const UsedSettings& settings, const VoiceSettingsOfAll& voices) {
    for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
        SendVoiceSettings(bank, voice, voices[static_cast<std::size_t>(voice)]);
    bank.SetTranspose(static_cast<float>(settings.transpose));
    bank.SetOutputTuning(settings.tuning);
    bank.SetSpeed(1 / settings.speed); // the bank counts how much longer the sound lasts
}

AudioExportSettings ExportSettingsOf(const UsedSettings& settings, const VoiceSettingsOfAll& voices) {
    AudioExportSettings result;
    result.playStart = settings.regionStart;
    result.playEnd = settings.regionEnd;
    std::transform(voices.begin(), voices.end(), result.gains.begin(),
                   [](const VoiceSettings& voice) { return StripGainFromVolAndPan(voice.vol, voice.pan); });
    result.enabled = AudibleVoices(voices);
    result.tempoRatio = static_cast<double>(settings.speed);
    return result;
}

} // namespace

bool FitsIntoSoundFile(const UsedSettings& settings) {
    const double frames =
        (static_cast<double>(settings.regionEnd) - static_cast<double>(settings.regionStart)) /
        static_cast<double>(settings.speed);
    return frames * kBytesPerFrame < static_cast<double>(std::numeric_limits<std::int32_t>::max());
}

std::int32_t RenderSound(CChoirDriver& driver, const UsedSettings& settings,
                         std::span<const AudioExportFile> files, const CAudioExport::Progress& progress,
                         std::int64_t& limited) {
    CVoiceBank bank;
    if (const std::int32_t result = bank.Init(driver); result != kOk) return result;
    bank.SetBlockSize(kBlockSize);
    const VoiceSettingsOfAll voices = SettingsOfStrips(settings.voices);
    PushSettings(bank, settings, voices);
    CAudioExport exporter(bank, driver, ExportSettingsOf(settings, voices));
    const std::int32_t result = exporter.ExportFiles(files, progress);
    limited = exporter.GetLimitedFrames(0);
    return result;
}

} // namespace sonorelle
