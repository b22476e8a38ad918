// A block of the four voices: their pitch, their input, their sound.

#include "dsp/multi_access_buffer.h"
#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "synthesis/voice_bank_voice.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr std::int32_t kEndOfRecording = -1;

// Rates of the four human swings, in thousandths of half a swing per block: a little apart, so that no two
// voices lag together for long. At a block of 32 the lead's swing lasts 65306 samples.
constexpr std::array<float, CVoiceBank::kVoices> kTimingRates = {0.98F, 1.02F, 0.96F, 1.04F};
constexpr float kTimingRateUnit = 0.001F;

} // namespace

std::int32_t CVoiceBank::Render(float* const* out0, float* const* out1, float* const* out2,
                                float* const* out3) {
    if (!IsReady()) return kEndOfRecording;
    RefreshEnabled();
    for (std::int32_t index = 0; index < kVoices; ++index) {
        TakeSettings(index);
        FindPitch(index);
    }
    position += static_cast<double>(static_cast<float>(blockSize) * speed);
    Feed();
    float* const* const outputs[kVoices] = {out0, out1, out2, out3};
    return RenderVoices(outputs);
}

// What any thread may have set at any time; glide is read where it is used.
void CVoiceBank::TakeSettings(std::int32_t index) {
    const auto slot = static_cast<std::size_t>(index);
    Voice& voice = *voices[slot];
    const float amount = sampleRate * voice.timing.load(std::memory_order_relaxed);
    voice.synthesis->SetTiming(amount, kTimingRates[slot] * kTimingRateUnit);
    voice.law->SetQuantize(voice.quantize.load(std::memory_order_relaxed));
    voice.law->SetCorrection(voice.drift.load(std::memory_order_relaxed));
}

// Reads as much of the recording as the most advanced voice asks for, and at least a whole piece of it.
void CVoiceBank::Feed() {
    std::int32_t missing = FindMissingInput();
    while (missing > 0) {
        const std::int32_t room = std::min(sourceBuffer->GetRoom(), scratchLength);
        const std::int32_t asked = std::min(std::max(missing, kReadAtLeast), room);
        const std::int32_t read = asked > 0 ? source->Read(scratchChannels.data(), asked) : 0;
        if (read < 1 || sourceBuffer->Write(scratchChannels.data(), read) != kOk) return;
        missing -= read;
    }
}

std::int32_t CVoiceBank::FindMissingInput() {
    std::int32_t missing = 0;
    for (std::int32_t index = 0; index < kVoices; ++index) {
        Voice& voice = *voices[static_cast<std::size_t>(index)];
        voice.need = voice.exhausted ? CvirelaineSynthesis::kMarksExhausted
                                     : voice.synthesis->GetRequiredInput(blockSize);
        voice.exhausted = voice.need < 0;
        // An exhausted voice takes nothing more, and must not hold back what the others have passed.
        if (voice.exhausted)
            sourceBuffer->SetReadPosition(index, sourceBuffer->GetWritten());
        else
            missing = std::max(missing, voice.need - sourceBuffer->GetAvailable(index));
    }
    return missing;
}

// The human voices run on the lead's clock. At the end of the recording the lead's clock goes on, so that
// they come to their own end.
std::int32_t CVoiceBank::RenderVoices(float* const* const (&outputs)[kVoices]) {
    std::int32_t result = kOk;
    const double clock = voices[0]->synthesis->GetTimeline();
    for (std::int32_t index = 0; index < kVoices; ++index) {
        CvirelaineSynthesis& synthesis = *voices[static_cast<std::size_t>(index)]->synthesis;
        if (index > 0) synthesis.SetTimeline(clock);
        float* const* const out = outputs[index];
        const bool sounds = RenderVoice(index, out);
        if (index == 0 && !sounds) {
            synthesis.SkipBlock();
            result = kEndOfRecording;
        } else if (sounds && out != nullptr) {
            result = kOk;
        }
    }
    return result;
}

// Whether the voice could be fed. One that is left out (a null `out`) moves on all the same.
bool CVoiceBank::RenderVoice(std::int32_t index, float* const* out) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    float* const* const block = scratchChannels.data();
    if (voice.exhausted || sourceBuffer->GetAvailable(index) < voice.need) {
        Silence(out);
        return false;
    }
    const std::int32_t taken = sourceBuffer->Read(index, block, voice.need);
    if (taken < voice.need || voice.synthesis->RenderBlock(block, taken, block, voice.gain) != 0) {
        voice.exhausted = true;
        Silence(out);
        return false;
    }
    if (!voice.enabled) return true;
    Delay(voice, block, out);
    return true;
}

// Through the voice's delay line, in pieces that leave the delayed samples in the ring until they are read.
void CVoiceBank::Delay(Voice& voice, float* const* block, float* const* out) const {
    const auto samples = static_cast<std::uint32_t>(blockSize);
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        RingBuffer& line = *voice.delayLines[static_cast<std::size_t>(channel)];
        const std::uint32_t longest = line.size - line.Available();
        for (std::uint32_t done = 0; done < samples;) {
            const std::uint32_t piece = std::min(samples - done, longest);
            line.Write(block[channel] + done, piece);
            if (out != nullptr)
                line.Read(out[channel] + done, piece);
            else
                line.Skip(piece);
            done += piece;
        }
    }
}

void CVoiceBank::Silence(float* const* out) const {
    if (out == nullptr) return;
    for (std::int32_t channel = 0; channel < channels; ++channel) std::fill_n(out[channel], blockSize, 0.0F);
}

} // namespace sonorelle
