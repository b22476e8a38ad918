#include "support/slow_voice_bank.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sonorelle::test {

namespace {

constexpr int kSmallestRead = 4096;
constexpr std::array<float, 4> kTimingRates = {0.98F, 1.02F, 0.96F, 1.04F};
constexpr float kSemitonesPerE = 17.31234F; // 12 / ln 2

int Trunc(double value) { return static_cast<int>(value); }

} // namespace

SlowVoiceBank::SlowVoiceBank(SlowArrangement arrangementToSing, int samplesPerBlock)
    : song(std::move(arrangementToSing)), marks(song.marks), blockSize(samplesPerBlock),
      outputTuning(song.tuning) {
    const auto channels = static_cast<int>(song.channels.size());
    for (std::size_t v = 0; v < kVoices; ++v) {
        voices[v].synthesis = std::make_unique<SlowVoiceSynthesis>(marks, channels);
        voices[v].delayLine.resize(song.channels.size());
        voices[v].enabled = static_cast<int>(v) < song.voiceCount;
        voices[v].synthesis->grainsActive = voices[v].enabled;
    }
    SetBlockSize(samplesPerBlock);
}

// --- Settings ---

void SlowVoiceBank::SetBlockSize(int samples) {
    blockSize = samples;
    gapLimit = Trunc(static_cast<double>(song.sampleRate * 0.03F / static_cast<float>(samples)));
}

void SlowVoiceBank::SetSpeed(float factor) {
    speed = factor;
    for (Voice& voice : voices) voice.synthesis->SetTimeFactor(factor);
}

void SlowVoiceBank::SetTranspose(float semitones) {
    transpose = semitones;
    transposeRatio = std::exp2(semitones / 12.0F);
}

void SlowVoiceBank::SetDelay(std::size_t voice, float seconds) {
    voices[voice].delay = Trunc(static_cast<double>(song.sampleRate * seconds));
}

void SlowVoiceBank::SetTiming(std::size_t voice, float seconds) {
    voices[voice].synthesis->timingAmount = song.sampleRate * seconds;
    voices[voice].synthesis->timingRate = kTimingRates[voice] * 0.001F;
}

void SlowVoiceBank::SetVoiceEnabled(std::size_t index, bool on) {
    voices[index].wanted = on;
    for (std::size_t v = 0; v < kVoices; ++v) RefreshEnabled(v);
}

void SlowVoiceBank::RefreshEnabled(std::size_t index) {
    Voice& voice = voices[index];
    const bool sounds = voice.wanted && static_cast<int>(index) < song.voiceCount;
    if (sounds == voice.enabled) return;
    voice.enabled = sounds;
    voice.synthesis->grainsActive = sounds;
    if (sounds) {
        for (EndlessSamples& line : voice.delayLine) line.Forget();
        voice.synthesis->SwitchOn();
    } else if (voice.lastNote != -1) {
        EndNote(index, 0);
        voice.lastNote = -1;
    }
}

void SlowVoiceBank::AllNotesOff() {
    for (std::size_t v = 0; v < kVoices; ++v) {
        if (voices[v].lastNote == -1) continue;
        EndNote(v, 0);
        voices[v].lastNote = -1;
    }
}

void SlowVoiceBank::ClearVoices() {
    for (Voice& voice : voices) voice.synthesis->RestartFade();
}

void SlowVoiceBank::RestartVoices() {
    for (Voice& voice : voices) {
        voice.gapBlocks = gapLimit;
        voice.synthesis->Restart();
        for (EndlessSamples& line : voice.delayLine) line.Forget();
        voice.lastNote = -1;
        voice.soundingKey = 0;
    }
}

// --- Places ---

int SlowVoiceBank::FindNoteAt(int at) {
    const auto holds = [&](int note) { return NoteOf(note).start <= at && at <= NoteOf(note).end; };
    const auto count = static_cast<int>(song.notes.size());
    int found = -1;
    for (int note = std::max(noteCursor, 0); note < count && found < 0; ++note)
        if (holds(note)) found = note;
    if (count > 0 && at <= NoteOf(count - 1).end)
        for (int note = 0; note < count && found < 0; ++note)
            if (holds(note)) found = note;
    if (at >= static_cast<int>(song.channels[0].size())) found = -1;
    noteCursor = found;
    return found;
}

int SlowVoiceBank::FindNearestNote(int at) {
    const auto count = static_cast<int>(song.notes.size());
    int found = -1;
    if (count > 0 && at < NoteOf(0).start) {
        found = 0;
    } else if (count > 0 && at > NoteOf(count - 1).start) {
        found = count - 1;
    } else if (count > 1) {
        for (int note = 0; note < count; ++note)
            if (NoteOf(note).start <= at) found = note;
    }
    noteCursor = found;
    return found;
}

void SlowVoiceBank::Seek(double& target) {
    if (target == position) return;
    int first = 0;
    for (std::size_t v = 0; v < kVoices; ++v) {
        Voice& voice = voices[v];
        voice.synthesis->SetPosition(Trunc(target));
        voice.synthesis->inputEnd = std::max(voice.synthesis->inputEnd, 0);
        voice.cursor = voice.synthesis->inputEnd;
        voice.outOfMarks = false;
        voice.pitchRatio = 1;
        voice.interval = 0;
        voice.gapBlocks = gapLimit;
        voice.synthesis->SetPitchAndFormant(std::clamp(transposeRatio, 0.125F, 8.0F), voice.formantShift);
        first = v == 0 ? voice.cursor : std::min(first, voice.cursor);
    }
    sourceEnd = first;
    position = voices[0].synthesis->GetReadPosition();
    target = position;
}

void SlowVoiceBank::JumpToNextNote() {
    const int note = FindNearestNote(Trunc(GetReadPosition(0) + 1)) + 1;
    if (!HasNote(note)) return;
    double target = NoteOf(note).start;
    Seek(target);
}

void SlowVoiceBank::JumpToPreviousNote() {
    const double back = static_cast<double>(song.sampleRate) * 0.75;
    const int note = FindNearestNote(Trunc(GetReadPosition(0) - back));
    if (!HasNote(note)) return;
    double target = NoteOf(note).start;
    Seek(target);
}

// --- One block ---

int SlowVoiceBank::Render(std::array<SlowBlock, kVoices>& out) {
    for (std::size_t v = 0; v < kVoices; ++v) RefreshEnabled(v);
    for (std::size_t v = 0; v < kVoices; ++v) FindPitch(v);
    Feed();
    int result = 0;
    for (std::size_t v = 0; v < kVoices; ++v) {
        const bool made = RenderVoice(v, out[v]);
        if (!voices[v].heard) continue;
        if (made)
            result = 0;
        else if (v == 0)
            result = -1;
    }
    return result;
}

void SlowVoiceBank::FindPitch(std::size_t index) {
    Voice& voice = voices[index];
    const int at = Trunc(voice.synthesis->GetReadPosition());
    const int note = FindNoteAt(at);
    int length = NoteLength(note);
    int nextLength = NoteLength(note + 1);
    if (length == -1) length = nextLength;
    if (nextLength == -1) nextLength = length;
    const int longest =
        std::max(Trunc(static_cast<double>(static_cast<float>(std::min(length, nextLength)) * 0.35F)), 0);
    const float span = std::min(static_cast<float>(longest), song.sampleRate * voice.glideTime);
    int ahead = FindNoteAt(Trunc(at + static_cast<double>(span) * 0.5));
    if (note < 0 || !voice.enabled) {
        PassGap(index, at);
        return;
    }
    const int period = voice.synthesis->GetCurrentPeriod();
    const SlowNote& now = NoteOf(note);
    const int pitch = now.voices[index];
    voice.gain = pitch == -1 ? 0.0F : now.gains[index];
    if (voice.gain == 0) voice.gapBlocks = gapLimit;
    if (ahead == -1 || NoteOf(ahead).voices[index] == -1) ahead = note;

    const float glide = std::min(voice.glideTime, static_cast<float>(longest) / song.sampleRate);
    const float blocks = song.sampleRate / static_cast<float>(blockSize) * glide;
    const float c = blocks > 0 ? std::exp(-2.2F / blocks) : 0.0F;
    if (pitch != -1) {
        if (voice.gapBlocks < gapLimit) {
            const auto target = static_cast<float>(NoteOf(ahead).voices[index] - NoteOf(ahead).pitch);
            voice.interval = target * (1 - c) + c * voice.interval;
        } else {
            voice.interval = static_cast<float>(pitch - now.pitch);
        }
        if (period > 0) {
            const float source = song.sampleRate / static_cast<float>(period);
            const auto base = static_cast<float>(now.pitch);
            voice.pitchRatio =
                Calc(voice, base + voice.interval + now.deviation, source, base + now.deviation) / source;
        }
    }
    if (midiOut) PlayMidi(index, note, pitch, period);
    if (voice.gain != 0) voice.gapBlocks = 0;
    const float ratio = std::clamp(voice.pitchRatio * transposeRatio, 0.125F, 8.0F);
    voice.synthesis->SetPitchAndFormant(ratio, voice.formantShift);
}

// Outside of all notes, and a voice that is off.
void SlowVoiceBank::PassGap(std::size_t index, int at) {
    Voice& voice = voices[index];
    const int nearest = FindNearestNote(at);
    voice.gain = 1;
    if (nearest >= 0) voice.gain = NoteOf(nearest).voices[index] == -1 ? 0.0F : NoteOf(nearest).gains[index];
    if (midiOut && voice.lastNote != -1 && voice.enabled) EndNote(index, MidiDelta());
    ++voice.gapBlocks;
    voice.lastNote = -1;
}

void SlowVoiceBank::PlayMidi(std::size_t index, int note, int pitch, int period) {
    Voice& voice = voices[index];
    if (note != voice.lastNote && period >= 1) {
        if (voice.lastNote != -1) EndNote(index, MidiDelta());
        voice.lastNote = -1;
        if (pitch == -1) return; // silent: nothing begins
        voice.soundingKey = Trunc(static_cast<double>(static_cast<float>(pitch) + transpose));
        const double level = static_cast<double>(NoteOf(note).level);
        const int velocity = Trunc(127 - std::log(level) * 127 / -6.9);
        AddEvent(0x90, index, voice.soundingKey, velocity, MidiDelta());
        voice.lastNote = note;
    } else if (voice.lastNote != -1 && period < 1) {
        EndNote(index, MidiDelta());
        voice.lastNote = -1;
    }
}

float SlowVoiceBank::Calc(const Voice& voice, float target, float measured, float base) const {
    const float s = std::log(measured / song.tuning) * kSemitonesPerE;
    const float v = s + (target - base);
    const float u =
        (target - 69 - v) * voice.correction + v + (std::floor(target + 0.5F) - target) * voice.quantize;
    return std::exp2(u / 12) * outputTuning;
}

void SlowVoiceBank::Feed() {
    position += static_cast<double>(static_cast<float>(blockSize) * speed);
    int missing = 0;
    for (Voice& voice : voices) {
        voice.need = voice.synthesis->GetRequiredInput(blockSize);
        missing = std::max(missing, voice.need - (sourceEnd - voice.cursor));
    }
    if (missing == 0) return;
    const auto length = static_cast<int>(song.channels[0].size());
    sourceEnd = std::max(sourceEnd, std::min(sourceEnd + std::max(missing, kSmallestRead), length));
}

bool SlowVoiceBank::RenderVoice(std::size_t index, SlowBlock& out) {
    Voice& voice = voices[index];
    // All that is needed or nothing: what is too little now may do for a smaller need later. A voice that has
    // no more marks waits for the next seek.
    if (voice.need < 0) voice.outOfMarks = true;
    const bool fed = !voice.outOfMarks && voice.need >= 0 && sourceEnd - voice.cursor >= voice.need;
    const int taken = fed ? voice.need : 0;
    SlowBlock block(song.channels.size(), std::vector<double>(static_cast<std::size_t>(blockSize)));
    std::vector<std::vector<float>> in;
    for (const std::vector<float>& channel : song.channels)
        in.emplace_back(channel.begin() + (taken > 0 ? voice.cursor : 0),
                        channel.begin() + (taken > 0 ? voice.cursor + taken : 0));
    voice.cursor += taken;
    if (index == 0)
        leadTimeline = voice.synthesis->timeline;
    else
        voice.synthesis->timeline = leadTimeline;

    if (!fed || voice.synthesis->RenderBlock(in, block, voice.gain) != 0) {
        if (index == 0) voice.synthesis->PassBlock();
        for (std::vector<double>& channel : out) channel.assign(static_cast<std::size_t>(blockSize), 0.0);
        return false;
    }
    if (!voice.enabled) return true;
    for (std::size_t c = 0; c < block.size(); ++c) {
        out[c].clear();
        for (int i = 0; i < blockSize; ++i) {
            voice.delayLine[c].Set(voice.written + i, block[c][static_cast<std::size_t>(i)]);
        }
        for (int i = 0; i < blockSize; ++i)
            out[c].push_back(voice.delayLine[c].At(voice.written + i - voice.delay));
    }
    voice.written += blockSize;
    return true;
}

// --- MIDI ---

int SlowVoiceBank::MidiDelta() const { return Trunc(std::max(position - blockOrigin, 0.0)); }

void SlowVoiceBank::EndNote(std::size_t voice, int delta) {
    AddEvent(0x80, voice, voices[voice].soundingKey, 0, delta);
}

void SlowVoiceBank::AddEvent(int status, std::size_t voice, int key, int velocity, int delta) {
    events.push_back({status + static_cast<int>(voice), key & 0x7F, velocity & 0x7F, delta});
}

std::vector<SlowMidiEvent> SlowVoiceBank::TakeMidiEvents() { return std::exchange(events, {}); }

} // namespace sonorelle::test
