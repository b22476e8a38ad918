#include "app/voice_mix.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

namespace sonorelle {

namespace {

constexpr std::int32_t kChunk = 64; // samples of the fade's curve that are held at once: the usual block

// 60 dB above full scale. A meter that had followed a broken sample farther up would be minutes on its way
// down.
constexpr float kHighestPeak = 1e6F;

static_assert(std::numeric_limits<float>::is_iec559);

// Fades `voice` in place by `curve`, adds it to `out` at `gain`, and gives the largest square of what was
// added; a sample that is not a number has none. Squares are compared as integers: for positive floats the
// order is the same, and the compiler may then take several at once.
float FadeAndAdd(float* __restrict voice, const float* __restrict curve, float gain, float* __restrict out,
                 std::int32_t count) {
    std::int32_t largest = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        const float faded = voice[i] * curve[i];
        const float x = faded * gain;
        const float square = x * x;
        const std::int32_t bits = square >= 0 ? std::bit_cast<std::int32_t>(square) : 0;
        voice[i] = faded;
        out[i] += x;
        largest = std::max(largest, bits);
    }
    return std::bit_cast<float>(largest);
}

// The gain of one side over a block: `start` and what is added with each sample.
struct GainLine {
    float start = 0;
    float step = 0;
};

GainLine LineOfGain(const VoiceMixInput& voices, const VoiceMixBlock& block, std::size_t voice,
                    std::int32_t side) {
    const StripGain& now = voices.gains[voice];
    const StripGain& before = voices.gainsBefore[voice];
    const float end = side == 0 ? now.left : now.right;
    const float begin = side == 0 ? before.left : before.right;
    if (block.length < 1 || begin == end) return {end, 0};
    const float step = (end - begin) / static_cast<float>(block.length);
    return {begin + step, step}; // so that the last sample has the new gain
}

// FadeAndAdd with a gain that moves; `from`: the index of the first sample in the block that it moves over.
float FadeAndAddMoving(float* __restrict voice, const float* __restrict curve, GainLine line,
                       std::int32_t from, float* __restrict out, std::int32_t count) {
    float largest = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        const float faded = voice[i] * curve[i];
        const float x = faded * (line.start + line.step * static_cast<float>(from + i));
        voice[i] = faded;
        out[i] += x;
        largest = std::max(largest, x * x >= 0 ? x * x : 0.0F);
    }
    return largest;
}

void RaiseTo(std::atomic<float>& held, float value) {
    if (value > held.load(std::memory_order_relaxed)) held.store(value, std::memory_order_relaxed);
}

bool IsMeter(std::int32_t voice, std::int32_t side) {
    return voice >= 0 && voice < CVoiceMix::kVoices && side >= 0 && side < CVoiceMix::kSides;
}

} // namespace

void CVoiceMix::Mix(const VoiceMixInput& voices, const VoiceMixBlock& block) {
    if (std::none_of(voices.enabled.begin(), voices.enabled.end(), [](bool on) { return on; })) return;
    for (std::int32_t offset = 0; offset < block.count; offset += kChunk)
        MixChunk(voices, block, offset, std::min(block.count - offset, kChunk));
}

void CVoiceMix::MixChunk(const VoiceMixInput& voices, const VoiceMixBlock& block, std::int32_t offset,
                         std::int32_t count) {
    float curve[kChunk];
    fade.Next(curve, count);
    const std::int32_t from = block.from + offset;
    const std::int32_t to = block.to + offset;
    for (std::int32_t voice = 0; voice < kVoices; ++voice) {
        const auto v = static_cast<std::size_t>(voice);
        if (!voices.enabled[v]) continue;
        float* const* const buffer = voices.buffers[v];
        for (std::int32_t side = 0; side < kSides; ++side) {
            const GainLine line = LineOfGain(voices, block, v, side);
            float* const source = buffer[side % voices.channels] + from;
            float* const target = block.outputs[side] + to;
            Measure(voice, side,
                    line.step == 0 ? FadeAndAdd(source, curve, line.start, target, count)
                                   : FadeAndAddMoving(source, curve, line, from, target, count));
        }
        if (block.singleVoiceOutput) CopyVoice(voices, voice, block, offset, count);
    }
}

void CVoiceMix::CopyVoice(const VoiceMixInput& voices, std::int32_t voice, const VoiceMixBlock& block,
                          std::int32_t offset, std::int32_t count) {
    float* const* const buffer = voices.buffers[static_cast<std::size_t>(voice)];
    const std::int32_t first = kSides + voice * kSides;
    for (std::int32_t output = first; output < std::min(first + kSides, block.outputCount); ++output)
        std::copy_n(buffer[output % voices.channels] + block.from + offset, count,
                    block.outputs[output] + block.to + offset);
}

void CVoiceMix::MixInterleaved(const VoiceMixInput& voices, StripGain master, float* interleaved,
                               std::int32_t count) {
    std::fill_n(interleaved, kSides * count, 0.0F);
    for (std::int32_t voice = 0; voice < kVoices; ++voice) {
        const auto v = static_cast<std::size_t>(voice);
        if (!voices.enabled[v]) continue;
        for (std::int32_t side = 0; side < kSides; ++side) {
            const float* const source = voices.buffers[v][side % voices.channels];
            const float gain = side == 0 ? voices.gains[v].left : voices.gains[v].right;
            float largest = 0;
            for (std::int32_t i = 0; i < count; ++i) {
                const float x = source[i] * gain;
                interleaved[kSides * i + side] += x;
                largest = std::max(largest, x * x >= 0 ? x * x : 0.0F);
            }
            Measure(voice, side, largest);
        }
    }
    for (std::int32_t i = 0; i < count; ++i) {
        interleaved[kSides * i] *= master.left;
        interleaved[kSides * i + 1] *= master.right;
    }
}

// A square reaches 1 exactly when the sample reaches full scale: the largest f32 below 1 has a square
// below 1.
void CVoiceMix::Measure(std::int32_t voice, std::int32_t side, float squaredPeak) {
    Meter& meter = meters[static_cast<std::size_t>(voice)][static_cast<std::size_t>(side)];
    if (squaredPeak >= 1) clipped.store(true, std::memory_order_relaxed);
    RaiseTo(meter.blockPeak, std::min(squaredPeak, kHighestPeak));
    RaiseTo(meter.peak, meter.blockPeak.load(std::memory_order_relaxed));
}

float CVoiceMix::GetPeak(std::int32_t voice, std::int32_t side) const {
    if (!IsMeter(voice, side)) return 0;
    return meters[static_cast<std::size_t>(voice)][static_cast<std::size_t>(side)].peak.load(
        std::memory_order_relaxed);
}

void CVoiceMix::DecayPeaks() {
    for (auto& sides : meters) {
        for (Meter& meter : sides) {
            // A peak that the audio thread raises meanwhile is lost to neither.
            const float recent = meter.blockPeak.exchange(0, std::memory_order_relaxed);
            const float peak = std::max(meter.peak.load(std::memory_order_relaxed), recent);
            meter.peak.store(peak * kPeakDecay + kPeakFloor, std::memory_order_relaxed);
        }
    }
}

} // namespace sonorelle
