#include "sound_singer.h"

#include "analysed_melody.h"

#include "harmony/styles.h"
#include "platform/result_codes.h"
#include "synthesis/voice_bank.h"

#include <algorithm>

namespace sonorelle::tools {
namespace {

constexpr std::int32_t kBlock = 64; // what the application renders in

// One block of all voices and channels.
class Block {
public:
    explicit Block(std::int32_t channelCount)
        : channels(static_cast<std::size_t>(channelCount)),
          samples(SoundSinger::kVoices * channels * kBlock) {
        for (std::size_t i = 0; i < SoundSinger::kVoices * channels; ++i)
            pointers.push_back(samples.data() + i * kBlock);
    }
    float* const* Voice(std::size_t voice) const { return pointers.data() + voice * channels; }

private:
    std::size_t channels;
    std::vector<float> samples;
    std::vector<float*> pointers; // [voice][channel]
};

void PutAtRest(CVoiceBank& bank) {
    for (std::int32_t voice = 0; voice < CVoiceBank::kVoices; ++voice) {
        bank.SetDelay(voice, 0);
        bank.SetTiming(voice, 0);
        bank.SetFormantShift(voice, 1);
        bank.SetQuantize(voice, 0);
        bank.SetDrift(voice, 0);
    }
}

} // namespace

std::unique_ptr<SoundSinger> SoundSinger::Open(const std::filesystem::path& file) {
    std::unique_ptr<SoundSinger> singer(new SoundSinger());
    if (!AnalyseAfresh(file, singer->audio, singer->analyzer)) return nullptr;
    singer->driver.SetStyle(ConsortierClassic::kStyleIntelligent);
    singer->driver.SetArrangement(0); // four voices
    if (singer->driver.Run() != kOk) return nullptr;
    return singer;
}

std::vector<float> SoundSinger::Source() {
    const std::int32_t frames = audio.GetLength();
    std::vector<std::vector<float>> channels(static_cast<std::size_t>(audio.GetNumChannels()));
    std::vector<float*> pointers;
    for (std::vector<float>& channel : channels) {
        channel.assign(static_cast<std::size_t>(std::max(frames, 0)), 0.0F);
        pointers.push_back(channel.data());
    }
    audio.Seek(0);
    for (std::int32_t done = 0; done < frames;) {
        const std::int32_t read = audio.Read(pointers.data(), std::min(frames - done, std::int32_t{4096}));
        if (read < 1) break;
        for (float*& pointer : pointers) pointer += read;
        done += read;
    }
    return channels.empty() ? std::vector<float>() : channels.front();
}

std::optional<SoundSinger::Voices> SoundSinger::Sing(const std::array<std::int32_t, kVoices>& semitones) {
    for (std::int32_t note = 0; note < driver.GetNoteCount(); ++note) {
        for (std::size_t voice = 0; voice < kVoices; ++voice) {
            const auto index = static_cast<std::int32_t>(voice);
            driver.SetVoicePitch(note, index, driver.GetNotePitch(note) + semitones[voice]);
            driver.SetVoiceGain(note, index, 1.0F);
        }
    }
    CVoiceBank bank;
    PutAtRest(bank);
    if (bank.Init(driver) != kOk) return std::nullopt;
    bank.SetBlockSize(kBlock);
    const Block block(bank.GetChannelCount());
    const auto frames = static_cast<std::size_t>(std::max(audio.GetLength(), 0));
    Voices voices;
    while (voices[0].size() < frames &&
           bank.Render(block.Voice(0), block.Voice(1), block.Voice(2), block.Voice(3)) == kOk) {
        for (std::size_t voice = 0; voice < kVoices; ++voice) {
            const float* const first = block.Voice(voice)[0];
            voices[voice].insert(voices[voice].end(), first, first + kBlock);
        }
    }
    for (std::vector<float>& voice : voices) voice.resize(frames, 0.0F);
    return voices;
}

} // namespace sonorelle::tools
