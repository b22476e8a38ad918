#include "synthesis/voice_bank.h"

#include "analysis/melody_analyzer.h"
#include "analysis/pitch_marks.h"
#include "dsp/multi_access_buffer.h"
#include "formats/audio_file.h"
#include "harmony/choir_driver.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"
#include "synthesis/sample_counts.h"
#include "synthesis/voice_bank_voice.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace sonorelle {

namespace {

constexpr float kGapSeconds = 0.03F; // a shorter break is a consonant, and the voice glides over it
constexpr float kGlideScale = 0.5F;  // seconds for the whole of the control

// As many samples of the recording that all voices have passed stay.
constexpr std::int32_t kFlushThreshold = 4096;
constexpr std::int32_t kUsualSourceBuffer = 32768;
constexpr std::int32_t kUsualScratch = 32768;

// The analysis sets no two marks further apart than 4096 samples up to 64 kHz, and twice, four and eight
// times that at the next octaves of the rate.
constexpr std::int32_t kLongestPeriodAtLowRates = 4096;
constexpr float kLongestPeriodSeconds = 0.13F;

// What the play controls mean by "the note before": this one, once it has sounded for so long.
constexpr double kRestartsNoteAfterSeconds = 0.75;

} // namespace

CVoiceBank::CVoiceBank() {
    for (std::unique_ptr<Voice>& voice : voices) voice = std::make_unique<Voice>();
}

CVoiceBank::~CVoiceBank() = default;

// Making.

std::int32_t CVoiceBank::Init(CChoirDriver& choir) {
    TearDown();
    CMelodyAnalyzer& analyzer = choir.GetAnalysis();
    CkvoAudioFile* file = nullptr;
    if (!analyzer.IsAnalysed() || analyzer.GetMarks() == nullptr) return kBadArgument;
    if (analyzer.GetAudioFile(file) != kOk || file == nullptr) return kBadArgument;
    analysis = &analyzer;
    source = file;
    marks = analyzer.GetMarks();
    sampleRate = file->GetSampleRate();
    channels = file->GetNumChannels();
    std::int32_t result = kBadArgument;
    try {
        if (channels >= 1 && channels <= 2 && std::isfinite(sampleRate) && sampleRate > 0) result = Create();
    } catch (const std::bad_alloc&) {
        result = kOutOfMemory;
    }
    if (result != kOk) {
        TearDown();
        return result;
    }
    harmony = &choir;
    source->Seek(0);
    FindGapLimit();
    RefreshEnabled();
    return kOk;
}

std::int32_t CVoiceBank::LongestPeriod() const {
    std::int32_t longest = 1;
    for (std::int32_t i = 0; i < marks->GetCount(); ++i) longest = std::max(longest, marks->GetDistance(i));
    const std::int32_t most =
        std::max(kLongestPeriodAtLowRates, WholeSamples(sampleRate * kLongestPeriodSeconds));
    return std::min(longest, most);
}

std::int32_t CVoiceBank::Create() {
    const std::shared_ptr<const GrainTables> tables = GrainTables::Create();
    if (tables == nullptr) return kOutOfMemory;
    const VoiceLimits limits{LongestPeriod(), WholeSamples(sampleRate * kLongestTiming) + 1};
    for (std::int32_t index = 0; index < kVoices; ++index) {
        const std::int32_t result = CreateVoice(index, limits, tables);
        if (result != kOk) return result;
    }
    const std::int32_t take = limits.LargestTake();
    // The slowest voice may lie behind the fastest by a whole swing and by what a grain of theirs reads
    // ahead.
    const std::int32_t spread = limits.longestTiming + 2 * take;
    const std::int32_t capacity = std::max(kUsualSourceBuffer, spread + 2 * kFlushThreshold + kReadAtLeast);
    scratchLength = std::max({kUsualScratch, 2 * take, kLargestBlockSize});
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        std::vector<float>& samples = scratch[static_cast<std::size_t>(channel)];
        samples.assign(static_cast<std::size_t>(scratchLength), 0.0F);
        scratchChannels[static_cast<std::size_t>(channel)] = samples.data();
    }
    const std::int32_t result = CMultiAccessBuffer::Create(sourceBuffer, capacity, channels, kVoices);
    if (result == kOk) sourceBuffer->SetKeep(kFlushThreshold);
    return result;
}

std::int32_t CVoiceBank::CreateVoice(std::int32_t index, const VoiceLimits& limits,
                                     const std::shared_ptr<const GrainTables>& tables) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    voice.synthesis = std::make_unique<CvirelaineSynthesis>(*marks, blockSize, channels, limits, tables);
    voice.synthesis->SetFormantPreservation(true);
    voice.synthesis->SetTransientHandling(false);
    const std::int32_t made = CPitch2Freq::Create(voice.law, sampleRate, blockSize);
    if (made != kOk) return made;
    voice.law->SetInputTuning(analysis->GetTuningFrequency());
    voice.law->SetOutputTuning(analysis->GetTuningFrequency());
    const auto longest = static_cast<std::uint32_t>(WholeSamples(sampleRate * kLongestDelay));
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        const std::int32_t result =
            RingBuffer::Create(voice.delayLines[static_cast<std::size_t>(channel)], longest);
        if (result != kOk) return result;
    }
    voice.interval = 0;
    voice.pitchRatio = 1;
    voice.gain = 1;
    voice.gapBlocks = 0;
    voice.exhausted = false;
    voice.enabled = true;
    voice.lastNote = -1;
    voice.soundingKey = 0;
    PushSettings(voice);
    return kOk;
}

void CVoiceBank::PushSettings(Voice& voice) const {
    voice.synthesis->SetTimeFactor(speed);
    ApplyDelay(voice);
}

void CVoiceBank::TearDown() {
    harmony = nullptr;
    analysis = nullptr;
    source = nullptr;
    marks = nullptr;
    sampleRate = 0;
    channels = 0;
    position = 0;
    blockOrigin = 0;
    sourceBuffer.reset();
    for (const std::unique_ptr<Voice>& voice : voices) {
        voice->synthesis.reset();
        voice->law.reset();
        for (std::unique_ptr<RingBuffer>& line : voice->delayLines) line.reset();
    }
    for (std::vector<float>& samples : scratch) samples = {};
    scratchChannels = {};
    scratchLength = 0;
}

void CVoiceBank::SetBlockSize(std::int32_t samples) {
    blockSize = std::clamp(samples, 1, kLargestBlockSize);
    FindGapLimit();
}

void CVoiceBank::FindGapLimit() {
    gapLimit = WholeSamples(sampleRate * kGapSeconds / static_cast<float>(blockSize));
}

// Positions.

void CVoiceBank::Seek(double& target) {
    if (target != position) Locate(target);
}

void CVoiceBank::Locate(double& target) {
    if (IsReady() && std::isfinite(target)) GoTo(target);
}

// The voices snap to marks of their own, and read the recording from where their first grain begins: their
// cursors keep these offsets to one another.
void CVoiceBank::GoTo(double& target) {
    sourceBuffer->Reset();
    std::array<std::int32_t, kVoices> starts{};
    for (std::size_t index = 0; index < voices.size(); ++index) {
        Voice& voice = *voices[index];
        voice.synthesis->SetPosition(TruncateToI32(target));
        starts[index] = voice.synthesis->GetInputEnd();
        voice.law->Reset();
        voice.law->SetInputTuning(analysis->GetTuningFrequency());
        voice.pitchRatio = 1;
        voice.interval = 0;
        voice.gapBlocks = gapLimit;
        voice.exhausted = false;
        ApplyRatio(voice);
    }
    const std::int32_t first = *std::min_element(starts.begin(), starts.end());
    for (std::int32_t index = 0; index < kVoices; ++index)
        sourceBuffer->SetReadPosition(index, starts[static_cast<std::size_t>(index)] - first);
    source->Seek(first);
    position = voices[0]->synthesis->GetReadPosition();
    target = position;
}

void CVoiceBank::JumpToNextNote() {
    if (!IsReady()) return;
    const std::int32_t note = harmony->FindNearestNote(TruncateToI32(GetReadPosition(0) + 1));
    const std::int32_t start = harmony->GetNoteStart(note + 1);
    if (start < 0) return;
    auto target = static_cast<double>(start);
    Seek(target);
}

void CVoiceBank::JumpToPreviousNote() {
    if (!IsReady()) return;
    const double before = kRestartsNoteAfterSeconds * static_cast<double>(sampleRate);
    const std::int32_t note = harmony->FindNearestNote(TruncateToI32(GetReadPosition(0) - before));
    const std::int32_t start = harmony->GetNoteStart(note);
    if (start < 0) return;
    auto target = static_cast<double>(start);
    Seek(target);
}

void CVoiceBank::SetBlockOrigin(double origin) {
    if (!std::isfinite(origin)) return;
    position = origin;
    blockOrigin = origin;
}

double CVoiceBank::GetReadPosition(std::int32_t voice) const {
    if (!IsReady() || !IsVoice(voice)) return 0;
    return voices[static_cast<std::size_t>(voice)]->synthesis->GetReadPosition();
}

std::int32_t CVoiceBank::GetNoteAtPosition() const {
    return IsReady() ? harmony->FindNoteAt(TruncateToI32(position)) : -1;
}

// Settings.

void CVoiceBank::SetSpeed(float factor) {
    if (!std::isfinite(factor)) return;
    speed = std::clamp(factor, kSmallestSpeed, kLargestSpeed);
    if (!IsReady()) return;
    for (const std::unique_ptr<Voice>& voice : voices) voice->synthesis->SetTimeFactor(speed);
}

void CVoiceBank::SetTranspose(float semitones) {
    if (!std::isfinite(semitones)) return;
    transpose = std::clamp(semitones, -kLargestTranspose, kLargestTranspose);
    transposeRatio = std::exp2(transpose / 12.0F);
}

void CVoiceBank::SetOutputTuning(float hertz) {
    if (!IsReady() || !std::isfinite(hertz) || hertz <= 0) return;
    for (const std::unique_ptr<Voice>& voice : voices) voice->law->SetOutputTuning(hertz);
}

void CVoiceBank::SetDelay(std::int32_t index, float seconds) {
    if (!IsVoice(index) || !std::isfinite(seconds)) return;
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    voice.delay = std::clamp(seconds, 0.0F, kLongestDelay);
    if (IsReady()) ApplyDelay(voice);
}

void CVoiceBank::ApplyDelay(Voice& voice) const {
    const auto delaySamples = static_cast<std::uint32_t>(WholeSamples(sampleRate * voice.delay));
    for (const std::unique_ptr<RingBuffer>& line : voice.delayLines)
        if (line) line->readIndex = (line->writeIndex - std::min(delaySamples, line->mask)) & line->mask;
}

void CVoiceBank::SetTiming(std::int32_t index, float seconds) {
    if (!IsVoice(index) || !std::isfinite(seconds)) return;
    voices[static_cast<std::size_t>(index)]->timing.store(std::clamp(seconds, 0.0F, kLongestTiming),
                                                          std::memory_order_relaxed);
}

void CVoiceBank::SetFormantShift(std::int32_t index, float ratio) {
    if (!IsVoice(index) || !std::isfinite(ratio)) return;
    voices[static_cast<std::size_t>(index)]->formantShift.store(
        std::clamp(ratio, VoiceLimits::kLowestFormant, VoiceLimits::kHighestFormant),
        std::memory_order_relaxed);
}

void CVoiceBank::SetQuantize(std::int32_t index, float amount) {
    if (!IsVoice(index) || !std::isfinite(amount)) return;
    voices[static_cast<std::size_t>(index)]->quantize.store(std::clamp(amount, 0.0F, 1.0F),
                                                            std::memory_order_relaxed);
}

void CVoiceBank::SetDrift(std::int32_t index, float amount) {
    if (!IsVoice(index) || !std::isfinite(amount)) return;
    voices[static_cast<std::size_t>(index)]->drift.store(std::clamp(amount, -1.0F, 1.0F),
                                                         std::memory_order_relaxed);
}

void CVoiceBank::SetGlide(std::int32_t index, float amount) {
    if (!IsVoice(index) || !std::isfinite(amount)) return;
    voices[static_cast<std::size_t>(index)]->glideTime.store(std::clamp(amount, 0.0F, 1.0F) * kGlideScale,
                                                             std::memory_order_relaxed);
}

// Enabling.

void CVoiceBank::SetVoiceEnabled(std::int32_t index, bool on) {
    if (!IsVoice(index)) return;
    voices[static_cast<std::size_t>(index)]->switchedOn = on;
    if (IsReady()) RefreshEnabled();
}

bool CVoiceBank::IsVoiceEnabled(std::int32_t index) const {
    return IsReady() && IsVoice(index) && voices[static_cast<std::size_t>(index)]->enabled;
}

// The arrangement may have changed its number of voices.
void CVoiceBank::RefreshEnabled() {
    const std::int32_t voiceCount = harmony->VoiceCount();
    for (std::int32_t index = 0; index < kVoices; ++index)
        SetEnabled(index, voices[static_cast<std::size_t>(index)]->switchedOn && index < voiceCount);
}

void CVoiceBank::SetEnabled(std::int32_t index, bool on) {
    Voice& voice = *voices[static_cast<std::size_t>(index)];
    if (voice.enabled == on) return;
    voice.enabled = on;
    if (on) {
        for (const std::unique_ptr<RingBuffer>& line : voice.delayLines)
            if (line) line->Clear();
        ApplyDelay(voice);
        voice.synthesis->SwitchOn();
    } else {
        voice.synthesis->SetGrainsActive(false);
        if (voice.HasNoteSounding()) EndMidiNote(index, 0);
    }
}

// Playback.

void CVoiceBank::RestartVoices() {
    if (!IsReady()) return;
    for (const std::unique_ptr<Voice>& voice : voices) {
        voice->gapBlocks = gapLimit;
        voice->synthesis->Restart();
        for (const std::unique_ptr<RingBuffer>& line : voice->delayLines)
            if (line) line->Clear();
        ApplyDelay(*voice);
        voice->lastNote = -1;
        voice->soundingKey = 0;
    }
}

void CVoiceBank::ClearVoices() {
    if (!IsReady()) return;
    for (const std::unique_ptr<Voice>& voice : voices) voice->synthesis->RestartFade();
}

void CVoiceBank::AllNotesOff() {
    for (std::int32_t index = 0; index < kVoices; ++index)
        if (voices[static_cast<std::size_t>(index)]->HasNoteSounding()) EndMidiNote(index, 0);
}

} // namespace sonorelle
