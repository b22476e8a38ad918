// From the voice bank to the host's buffers.
//
// Voices are rendered in whole blocks of 64 samples, whatever the host asks for: what is left of a block
// waits for the next call. So the same sound comes out of every host block size. For each block:
//   1. the voices that the view shows are switched on in the bank, and the bank renders;
//   2. if the position lies in the play region, the voices are mixed, else the output stays silent;
//   3. the position moves on, and a stop that was announced takes place at its sample.

#include "app/application.h"

#include "formats/audio_file.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr std::int32_t kSides = CVoiceMix::kSides;
// So long before the end of the region the sound begins to fade: 23 ms at 44.1 kHz, in which it falls to 11%.
constexpr double kFadeBeforeEnd = 1024;

void Clear(float* const* outputs, std::int32_t outputCount, std::int32_t from, std::int32_t count) {
    for (std::int32_t output = 0; output < outputCount; ++output)
        std::fill_n(outputs[output] + from, count, 0.0F);
}

} // namespace

std::int32_t CkvovirelaineApp::CountOutputs(float* const* outputs) const {
    std::int32_t count = 0;
    while (outputs != nullptr && count < CVoiceMix::kMostOutputs && outputs[count] != nullptr) ++count;
    return count;
}

double CkvovirelaineApp::Speed() const { return TempoRatio(); }

bool CkvovirelaineApp::IsInsideRegion() const {
    const double now = position.load(std::memory_order_relaxed);
    return now >= static_cast<double>(playStart.load(std::memory_order_relaxed)) -
                      triggerOffset.load(std::memory_order_relaxed) &&
           now <= playEnd.load(std::memory_order_relaxed);
}

std::int32_t CkvovirelaineApp::ProcessAudio(float* const* outputs, std::int32_t frames) {
    const std::int32_t outputCount = CountOutputs(outputs);
    if (outputCount < kSides) return 1;
    if (frames < 1) return 0;
    Clear(outputs, outputCount, 0, frames);
    if (!HasAudio()) return 0;
    std::int32_t done = 0;
    if (BeginHostBlock(outputs, outputCount, frames, done)) {
        while (done < frames && DeliverBlock(outputs, outputCount, frames, done)) {
        }
    }
    const SpinGuard guard(wiring.audioLock);
    blockFill = IsPlaying() ? blockFill % wiring.blockSize : 0;
    seam.Close(outputs, outputCount, frames);
    return 0;
}

// False when nothing sounds in this block of the host.
bool CkvovirelaineApp::BeginHostBlock(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                                      std::int32_t& done) {
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) {
        mix.Fade().Silence(); // the bank is the export's
        CutSound(0);
        return false;
    }
    if (!IsPlaying() && blockFill == 0) {
        mix.Fade().Silence();
        bank.ClearVoices();
        CutSound(0);
        return false;
    }
    bank.SetBlockOrigin(position.load(std::memory_order_relaxed));
    DeliverTail(outputs, outputCount, frames, done);
    DeliverLeadIn(frames, done);
    return true;
}

// What the last call has left of its block.
void CkvovirelaineApp::DeliverTail(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                                   std::int32_t& done) {
    if (blockFill == 0) return;
    const std::int32_t count = std::min(frames, wiring.blockSize - blockFill);
    if (IsInsideRegion()) MixBlock(outputs, outputCount, blockFill, 0, count);
    blockFill += count;
    done = count;
    MoveTo(blockStart + blockFill * blockSpeed);
    if (!HasReachedStop()) return;
    const double late =
        position.load(std::memory_order_relaxed) - stopPosition.load(std::memory_order_relaxed);
    const std::int32_t kept = std::clamp(TruncateToI32(done - late), 0, frames);
    EndAtStop();
    Clear(outputs, outputCount, kept, frames - kept);
    CutSound(kept);
    blockFill = 0;
    done = frames;
}

// The position lies before the recording: so many samples of silence, so that it begins at its very sample.
void CkvovirelaineApp::DeliverLeadIn(std::int32_t frames, std::int32_t& done) {
    if (leadIn == 0) return;
    const std::int32_t count = std::min(frames - done, leadIn);
    leadIn -= count;
    done += count;
    MoveTo(leadIn == 0 ? 0 : position.load(std::memory_order_relaxed) + count * Speed());
}

// One block and what goes with it; `done` moves on by it. False when nothing more is to come in this call.
bool CkvovirelaineApp::DeliverBlock(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                                    std::int32_t& done) {
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) {
        CutSound(done);
        return false;
    }
    const std::int32_t count = std::min(frames - done, wiring.blockSize);
    if (RenderBlock() != kOk) Stop();
    if (!IsPlaying() || !IsInsideRegion()) CutSound(done);
    if (!IsPlaying()) {
        if (!IsTriggeredBySnapshots() && midiOut) bank.AllNotesOff();
    } else if (position.load(std::memory_order_relaxed) > playEnd.load(std::memory_order_relaxed)) {
        if (IsTriggeredBySnapshots()) Stop();
        EndMidi();
    } else if (IsInsideRegion()) {
        sounding = true;
        const double left =
            playEnd.load(std::memory_order_relaxed) - position.load(std::memory_order_relaxed);
        if (left < kFadeBeforeEnd && mix.Fade().IsFadingIn()) mix.Fade().FadeOut();
        SetMidiOut(true);
        MixBlock(outputs, outputCount, 0, done, count);
    }
    MoveTo(blockStart + count * blockSpeed);
    if (HasReachedStop()) {
        FadeToStop(outputs, outputCount, frames, done);
        blockFill = 0;
        return false;
    }
    FollowLiveNote();
    blockFill = count;
    done += count;
    return true;
}

// The bank's next block. A voice that has just been switched off sounds for one block more, while it fades:
// cut off, it would click.
std::int32_t CkvovirelaineApp::RenderBlock() {
    blockFill = 0;
    blockStart = position.load(std::memory_order_relaxed);
    blockSpeed = Speed();
    std::array<bool, kVoices> leaving{};
    for (std::size_t v = 0; v < leaving.size(); ++v) {
        const auto voice = static_cast<std::int32_t>(v);
        const bool wanted = view.IsVoiceEnabled(voice);
        leaving[v] = !wanted && rendered[v] && !leavingVoices[v];
        bank.SetVoiceEnabled(voice, wanted || leaving[v]);
    }
    const std::int32_t result = bank.Render(voiceBuffers[0].data(), voiceBuffers[1].data(),
                                            voiceBuffers[2].data(), voiceBuffers[3].data());
    leavingVoices = leaving;
    for (std::size_t v = 0; v < rendered.size(); ++v) {
        const auto voice = static_cast<std::int32_t>(v);
        const bool sounded = rendered[v];
        rendered[v] = bank.IsVoiceEnabled(voice);
        const StripGain gain = voicePanel.GetStripGain(voice);
        gainsBefore[v] = sounded ? gains[v] : gain;
        gains[v] = leaving[v] ? StripGain{0, 0} : gain;
    }
    return result;
}

void CkvovirelaineApp::MixBlock(float* const* outputs, std::int32_t outputCount, std::int32_t from,
                                std::int32_t to, std::int32_t count) {
    VoiceMixInput voices;
    for (std::size_t v = 0; v < voiceBuffers.size(); ++v) voices.buffers[v] = voiceBuffers[v].data();
    voices.channels = channels;
    voices.gains = gains;
    voices.gainsBefore = gainsBefore;
    voices.enabled = rendered;
    VoiceMixBlock block;
    block.outputs = outputs;
    block.outputCount = outputCount;
    block.from = from;
    block.to = to;
    block.count = count;
    block.length = wiring.blockSize;
    block.singleVoiceOutput = GetSingleVoiceOutput();
    mix.Mix(voices, block);
}

void CkvovirelaineApp::MoveTo(double newPosition) { position.store(newPosition, std::memory_order_relaxed); }

void CkvovirelaineApp::SetMidiOut(bool on) {
    if (midiOut == on) return;
    midiOut = on;
    bank.SetMidiOut(on);
}

void CkvovirelaineApp::EndMidi() {
    if (!midiOut) return;
    bank.AllNotesOff();
    SetMidiOut(false);
}

bool CkvovirelaineApp::HasReachedStop() const {
    return stopPending.load(std::memory_order_relaxed) &&
           position.load(std::memory_order_relaxed) >= stopPosition.load(std::memory_order_relaxed);
}

// Nothing sounds from sample `at` of the host's block on.
void CkvovirelaineApp::CutSound(std::int32_t at) {
    if (sounding) seam.CutAt(at);
    sounding = false;
}

void CkvovirelaineApp::EndAtStop() {
    if (IsTriggeredBySnapshots()) Stop();
    bank.AllNotesOff();
}

// The block ends in a straight line to the sample of the stop, and in silence from there.
void CkvovirelaineApp::FadeToStop(float* const* outputs, std::int32_t outputCount, std::int32_t frames,
                                  std::int32_t done) {
    const double late =
        position.load(std::memory_order_relaxed) - stopPosition.load(std::memory_order_relaxed);
    const std::int32_t kept = std::clamp(TruncateToI32(done - late), 0, frames);
    EndAtStop();
    for (std::int32_t output = 0; output < outputCount; ++output)
        for (std::int32_t i = 0; i < kept; ++i)
            outputs[output][i] *= static_cast<float>(kept - i) / static_cast<float>(kept);
    Clear(outputs, outputCount, kept, frames - kept);
    CutSound(kept); // a line of a few samples is a step, too
}

// A note that is reached while keys are held sounds in what they make of it; the view learns of it at the
// next poll.
void CkvovirelaineApp::FollowLiveNote() {
    if (!driver.IsLive()) return;
    const std::int32_t note = bank.GetNoteAtPosition();
    if (note > liveNote.load(std::memory_order_relaxed)) liveNote.store(note, std::memory_order_relaxed);
}

std::int32_t CkvovirelaineApp::ProcessBlock(float* interleaved) {
    if (!HasAudio() || interleaved == nullptr) return 1;
    const SpinGuard guard(wiring.audioLock);
    if (exporting.load(std::memory_order_relaxed)) return 1;
    const bool ended = RenderBlock() != kOk || bank.GetPosition() > playEnd.load(std::memory_order_relaxed);
    if (ended) {
        if (!loop.load(std::memory_order_relaxed)) return 1;
        double start = playStart.load(std::memory_order_relaxed);
        bank.Seek(start);
        if (RenderBlock() != kOk) return 1;
    }
    VoiceMixInput voices;
    for (std::size_t v = 0; v < voiceBuffers.size(); ++v) voices.buffers[v] = voiceBuffers[v].data();
    voices.channels = channels;
    voices.gains = gains;
    voices.gainsBefore = gainsBefore;
    voices.enabled = rendered;
    StripGain master{1, 1};
    if (!wiring.hosted) master = {voicePanel.GetMasterGain(0), voicePanel.GetMasterGain(1)};
    mix.MixInterleaved(voices, master, interleaved, wiring.blockSize);
    TakeBankPosition();
    return 0;
}

std::int32_t CkvovirelaineApp::GetOutgoingMidi(std::vector<MidiEventRecord>& out) const {
    const SpinGuard guard(wiring.audioLock);
    return bank.GetMidiEvents(out);
}

void CkvovirelaineApp::MarkMidiSent(std::int32_t index) {
    const SpinGuard guard(wiring.audioLock);
    bank.MarkMidiConsumed(index);
}

void CkvovirelaineApp::DelayMidi(std::int32_t index, std::int32_t newOffset) {
    const SpinGuard guard(wiring.audioLock);
    bank.SetMidiDelta(index, newOffset);
}

void CkvovirelaineApp::PurgeSentMidi() {
    const SpinGuard guard(wiring.audioLock);
    bank.PurgeConsumedMidi();
}

} // namespace sonorelle
