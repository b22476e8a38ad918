#include "support/synthetic_singer.h"

#include "support/glottal_source.h"
#include "support/portable_math.h"
#include "support/vocal_tract.h"

#include <algorithm>
#include <cmath>

namespace sonorelle::test {

namespace {

constexpr double kStep = Recording::kCurveStepSeconds;

// Shorter rests and consonants are not sung: the voice could neither fall nor rise in them.
constexpr double kShortestGapSeconds = 0.02;
constexpr double kAttackSeconds = 0.02; // from nothing to full: soon enough to be heard on the beat
constexpr double kReleaseSeconds = 0.04;
constexpr double kNasalSeconds = 0.07;
constexpr double kNasalLevel = 0.35;   // of the vowel's
constexpr double kBurstSeconds = 0.02; // of a plosive; the rest of it is silence
constexpr double kBurstLevel = 0.25;   // of the voice's peak; also the hiss of a fricative is given so
constexpr double kHissLevel = 0.05;
constexpr double kVowelGlideSeconds = 0.015; // time constant of the formants on their way to the next vowel
constexpr double kShortestInhaleRest = 0.4;

// Streams of random numbers, one for each use, so that a change of one does not change the others.
enum Stream : std::uint64_t { kIntonation = 1, kGlottis, kBreath, kMouth, kRoom };

RandomNumbers StreamOf(const SingerSettings& settings, Stream stream) {
    return RandomNumbers(RandomNumbers(settings.seed * 16 + stream).Next());
}

struct PlannedNote {
    SungNote truth;
    double startLog2 = 0.0; // pitch as log2 of Hz, which glides evenly from start to end
    double endLog2 = 0.0;
    bool legato = false; // the voice comes over from the note before without a gap
};

struct Plan {
    std::vector<PlannedNote> notes;
    double seconds = 0.0;
};

bool IsUnvoiced(Consonant consonant) {
    return consonant == Consonant::kPlosive || consonant == Consonant::kFricative;
}

// ---- 1. Plan
// ---------------------------------------------------------------------------------------------------------

Plan PlanMelody(const std::vector<MelodyNote>& melody, const SingerSettings& settings) {
    RandomNumbers random = StreamOf(settings, kIntonation);
    const double secondsPerBeat = 60.0 / settings.beatsPerMinute;
    Plan plan;
    double now = settings.leadInSeconds;
    for (const MelodyNote& note : melody) {
        PlannedNote planned;
        SungNote& truth = planned.truth;
        truth.onsetSeconds = now;
        truth.offsetSeconds = now + note.beats * secondsPerBeat;
        truth.midiPitch = note.midiPitch;
        const double error = random.Symmetric() * settings.intonationCents / 100.0;
        truth.hertz = HertzFromMidiPitch(note.midiPitch + error, settings.tuningHertz);
        truth.midiPitchAt440 = MidiPitchFromHertz(truth.hertz);
        truth.vowel = note.vowel;
        truth.consonant = note.consonant;
        planned.startLog2 = planned.endLog2 = Log2(truth.hertz);

        double earliest = 0.0; // where an unvoiced consonant may begin
        if (!plan.notes.empty()) {
            const SungNote& before = plan.notes.back().truth;
            earliest = 0.5 * (before.onsetSeconds + before.offsetSeconds);
        }
        const double room = std::min(settings.consonantSeconds, now - earliest);
        if (IsUnvoiced(note.consonant) && room >= kShortestGapSeconds) truth.consonantSeconds = room;
        if (!plan.notes.empty()) {
            double& offset = plan.notes.back().truth.offsetSeconds;
            if (now - offset < kShortestGapSeconds) offset = now;
            offset = std::min(offset, now - truth.consonantSeconds);
            planned.legato = offset == now;
        }
        plan.notes.push_back(planned);
        now += (note.beats + note.restBeatsAfter) * secondsPerBeat;
    }
    plan.seconds = now + settings.leadOutSeconds;
    return plan;
}

Plan PlanGlide(double fromHertz, double toHertz, double seconds, const SingerSettings& settings) {
    PlannedNote note;
    note.truth.onsetSeconds = settings.leadInSeconds;
    note.truth.offsetSeconds = settings.leadInSeconds + seconds;
    note.truth.hertz = fromHertz;
    note.truth.midiPitch = MidiPitchFromHertz(fromHertz, settings.tuningHertz);
    note.truth.midiPitchAt440 = MidiPitchFromHertz(fromHertz);
    note.startLog2 = Log2(fromHertz);
    note.endLog2 = Log2(toHertz);
    return {{note}, settings.leadInSeconds + seconds + settings.leadOutSeconds};
}

std::vector<VoicedSpan> VoicedSpans(const Plan& plan) {
    std::vector<VoicedSpan> spans;
    for (const PlannedNote& note : plan.notes) {
        if (note.legato)
            spans.back().endSeconds = note.truth.offsetSeconds;
        else
            spans.push_back({note.truth.onsetSeconds, note.truth.offsetSeconds});
    }
    return spans;
}

// ---- 2. Curve
// --------------------------------------------------------------------------------------------------------

double PortamentoAt(const PlannedNote& before, const PlannedNote& after, const SingerSettings& settings) {
    const double shorter = std::min(before.truth.offsetSeconds - before.truth.onsetSeconds,
                                    after.truth.offsetSeconds - after.truth.onsetSeconds);
    return std::min(settings.portamentoSeconds, 0.5 * shorter);
}

// Intended pitch at every knot. Between notes with a gap the pitch changes in the middle of it.
std::vector<double> PitchCurve(const Plan& plan, const SingerSettings& settings) {
    const auto knots = static_cast<std::size_t>(std::ceil(plan.seconds / kStep)) + 2;
    std::vector<double> curve(knots, 0.0);
    std::size_t knot = 0;
    for (std::size_t i = 0; i < plan.notes.size(); ++i) {
        const PlannedNote& note = plan.notes[i];
        const double onset = note.truth.onsetSeconds;
        const double offset = note.truth.offsetSeconds;
        const PlannedNote* before = note.legato ? &plan.notes[i - 1] : nullptr;
        const PlannedNote* next = i + 1 < plan.notes.size() ? &plan.notes[i + 1] : nullptr;
        const PlannedNote* after = next != nullptr && next->legato ? next : nullptr;
        const double glideIn = before != nullptr ? PortamentoAt(*before, note, settings) : 0.0;
        const double glideOut = after != nullptr ? PortamentoAt(note, *after, settings) : 0.0;
        const double end =
            next != nullptr ? 0.5 * (offset + next->truth.onsetSeconds) : plan.seconds + 3.0 * kStep;
        for (; knot < knots && static_cast<double>(knot) * kStep < end; ++knot) {
            const double now = static_cast<double>(knot) * kStep;
            const double share = std::clamp((now - onset) / (offset - onset), 0.0, 1.0);
            double pitch = note.startLog2 + share * (note.endLog2 - note.startLog2);
            if (glideIn > 0.0 && now < onset + 0.5 * glideIn)
                pitch += (before->endLog2 - pitch) * (1.0 - SmoothStep((now - onset) / glideIn + 0.5));
            if (glideOut > 0.0 && now > offset - 0.5 * glideOut)
                pitch += (after->startLog2 - pitch) * SmoothStep((now - offset) / glideOut + 0.5);
            const double sinceDelay = now - onset - settings.vibratoDelaySeconds;
            if (sinceDelay >= 0.0) { // also behind the last offset, so that the line that crosses it is right
                double depth = settings.vibratoCents / 1200.0;
                if (settings.vibratoFadeSeconds > 0.0)
                    depth *= SmoothStep(sinceDelay / settings.vibratoFadeSeconds);
                // A legato note is steady when the glide begins, so that the curve has no break at the
                // boundary.
                if (glideOut > 0.0)
                    depth *= SmoothStep((offset - 0.5 * glideOut - now) / settings.portamentoSeconds);
                pitch += depth * SinTurns(settings.vibratoHertz * sinceDelay);
            }
            curve[knot] = Exp2(pitch);
        }
    }
    return curve;
}

double Interpolated(const std::vector<double>& curve, double seconds) {
    const double at = std::clamp(seconds / kStep, 0.0, static_cast<double>(curve.size() - 2));
    const auto index = static_cast<std::size_t>(at);
    return curve[index] + (at - static_cast<double>(index)) * (curve[index + 1] - curve[index]);
}

// ---- 3. Pulses
// -------------------------------------------------------------------------------------------------------

// Calls found(seconds) for each glottal closure within the span. The curve's lines are integrated exactly;
// within one, a closure is the root of a quadratic equation.
template<typename Found>
void ForEachClosure(const VoicedSpan& span, const std::vector<double>& curve, const SingerSettings& settings,
                    RandomNumbers& random, Found found) {
    double now = span.startSeconds;
    double phase = 1.0 - settings.openQuotient; // the first opening is where the span begins
    double target = 1.0;
    auto knot = static_cast<std::size_t>(now / kStep);
    while (now < span.endSeconds) {
        const double next = std::min(static_cast<double>(knot + 1) * kStep, span.endSeconds);
        if (next > now) {
            const double hertz = Interpolated(curve, now);
            const double length = next - now;
            const double slope = (Interpolated(curve, next) - hertz) / length;
            const double gain = length * (hertz + 0.5 * slope * length);
            while (phase + gain >= target) {
                const double missing = target - phase;
                found(now + 2.0 * missing / (hertz + std::sqrt(hertz * hertz + 2.0 * slope * missing)));
                target += std::max(0.5, 1.0 + settings.jitter * random.Normal());
            }
            phase += gain;
        }
        now = next;
        ++knot;
    }
}

// ---- 4. Source
// -------------------------------------------------------------------------------------------------------

// Strength of the voice and of the breath at every knot.
struct Levels {
    std::vector<double> voice;
    std::vector<double> breath;
};

Levels PlanLevels(const Plan& plan, const std::vector<VoicedSpan>& spans, const SingerSettings& settings,
                  std::size_t knots) {
    Levels levels{std::vector<double>(knots, 0.0), std::vector<double>(knots, 0.0)};
    const auto forKnots = [knots](double start, double end, auto set) {
        const auto from = static_cast<std::size_t>(std::max(0.0, std::ceil(start / kStep)));
        for (std::size_t i = from; i < knots && static_cast<double>(i) * kStep < end; ++i)
            set(i, static_cast<double>(i) * kStep);
    };
    double restStart = 0.0;
    for (const VoicedSpan& span : spans) {
        forKnots(span.startSeconds, span.endSeconds, [&](std::size_t i, double now) {
            levels.voice[i] = SmoothStep((now - span.startSeconds) / kAttackSeconds) *
                              SmoothStep((span.endSeconds - now) / kReleaseSeconds);
        });
        // Breath is taken in the rest's end, and is over before a consonant begins.
        const double inhaleEnd = span.startSeconds - settings.consonantSeconds - 0.02;
        if (restStart > 0.0 && span.startSeconds - restStart >= kShortestInhaleRest) {
            const double start = std::max(restStart + 0.05, inhaleEnd - 0.35);
            const double middle = 0.5 * (start + inhaleEnd);
            forKnots(start, inhaleEnd, [&](std::size_t i, double now) {
                levels.breath[i] =
                    settings.inhale * SmoothStep(1.0 - std::abs(now - middle) / (inhaleEnd - middle));
            });
        }
        restStart = span.endSeconds;
    }
    for (const PlannedNote& note : plan.notes) {
        if (note.truth.consonant != Consonant::kNasal) continue;
        const double onset = note.truth.onsetSeconds;
        forKnots(onset, onset + kNasalSeconds, [&](std::size_t i, double now) {
            const double edge = std::min(now - onset, onset + kNasalSeconds - now) / 0.015;
            levels.voice[i] *= 1.0 - (1.0 - kNasalLevel) * SmoothStep(edge);
        });
    }
    for (std::size_t i = 0; i < knots; ++i) levels.breath[i] += settings.breath * levels.voice[i];
    return levels;
}

void RenderPulses(Recording& recording, const Levels& levels, const SingerSettings& settings) {
    const GlottalSource source;
    RandomNumbers random = StreamOf(settings, kGlottis);
    std::vector<float>& frames = recording.channels[0];
    for (const VoicedSpan& span : recording.voiced) {
        ForEachClosure(span, recording.intendedHertz, settings, random, [&](double seconds) {
            const double closure = seconds * settings.sampleRate;
            const double period = settings.sampleRate / Interpolated(recording.intendedHertz, seconds);
            const double strength =
                Interpolated(levels.voice, seconds) * (1.0 + settings.shimmer * random.Normal());
            recording.pulseFrames.push_back(closure);
            source.AddPulse(frames.data(), frames.size(), closure, settings.openQuotient * period, strength);
        });
    }
}

// ---- 5. Tract
// --------------------------------------------------------------------------------------------------------

Formants NasalFormants(const Formants& vowel) {
    Formants nasal = vowel;
    nasal.centreHertz[0] = 250.0; // the murmur of closed lips
    for (double& bandwidth : nasal.bandwidthHertz) bandwidth *= 2.5;
    return nasal;
}

// The formants wanted at a time; of the next note from its consonant on, as the mouth makes ready.
class FormantScore {
public:
    FormantScore(const Plan& ofPlan, VoiceRegister ofVoice) : plan(ofPlan), voice(ofVoice) {}

    // Times must rise from call to call.
    Formants At(double seconds) {
        const auto& notes = plan.notes;
        if (notes.empty()) return VowelFormants(voice, Vowel::kA);
        while (index + 1 < notes.size() && seconds >= Begin(notes[index + 1])) ++index;
        const SungNote& note = notes[index].truth;
        const Formants& vowel = VowelFormants(voice, note.vowel);
        const bool nasal = note.consonant == Consonant::kNasal && seconds < note.onsetSeconds + kNasalSeconds;
        return nasal ? NasalFormants(vowel) : vowel;
    }

private:
    static double Begin(const PlannedNote& note) {
        return note.truth.onsetSeconds - std::max(note.truth.consonantSeconds, 1.5 * kVowelGlideSeconds);
    }
    const Plan& plan;
    VoiceRegister voice;
    std::size_t index = 0;
};

// A singer opens the mouth so that the first formant never lies below the pitch, which would swallow the
// sound.
Formants TunedToPitch(Formants formants, double hertz) {
    formants.centreHertz[0] = std::max(formants.centreHertz[0], hertz);
    formants.centreHertz[1] = std::max(formants.centreHertz[1], 1.3 * formants.centreHertz[0]);
    return formants;
}

// Moves one knot's time towards the goal, and arrives.
void Approach(Formants& now, const Formants& goal) {
    const double share = 1.0 - Exp(-kStep / kVowelGlideSeconds);
    const auto move = [share](double& value, double target) {
        value += share * (target - value);
        if (std::abs(target - value) < 0.05) value = target;
    };
    for (int i = 0; i < Formants::kCount; ++i) {
        move(now.centreHertz[i], goal.centreHertz[i]);
        move(now.bandwidthHertz[i], goal.bandwidthHertz[i]);
    }
}

bool Equal(const Formants& a, const Formants& b) {
    return std::equal(a.centreHertz, a.centreHertz + Formants::kCount, b.centreHertz) &&
           std::equal(a.bandwidthHertz, a.bandwidthHertz + Formants::kCount, b.bandwidthHertz);
}

void RenderTract(Recording& recording, const Plan& plan, const Levels& levels,
                 const SingerSettings& settings) {
    RandomNumbers random = StreamOf(settings, kBreath);
    // White noise spreads over the whole band: louder at a higher rate, so that it is equally loud within the
    // tract's.
    const double noiseOfRate = std::sqrt(settings.sampleRate / 44100.0);
    std::vector<float>& frames = recording.channels[0];
    VocalTract tract(settings.sampleRate);
    FormantScore score(plan, settings.voice);
    Formants shape = score.At(0.0);
    Formants used{};
    std::size_t begin = 0;
    for (std::size_t knot = 0; begin < frames.size() && knot + 1 < levels.voice.size(); ++knot) {
        const auto end = std::min(frames.size(), static_cast<std::size_t>(static_cast<double>(knot + 1) *
                                                                          kStep * settings.sampleRate));
        Approach(shape, score.At(static_cast<double>(knot) * kStep));
        const Formants wanted = TunedToPitch(shape, recording.intendedHertz[knot]);
        if (!Equal(wanted, used)) tract.SetFormants(wanted);
        used = wanted;
        const double breath = 0.5 * (levels.breath[knot] + levels.breath[knot + 1]) * noiseOfRate;
        if (breath > 0.0)
            for (std::size_t n = begin; n < end; ++n)
                frames[n] += static_cast<float>(breath * random.Symmetric());
        tract.Process(frames.data() + begin, end - begin);
        begin = end;
    }
}

// ---- 6. Mouth, room, channels
// ----------------------------------------------------------------------------------------

float PeakOf(const std::vector<float>& frames) {
    float peak = 0.0f;
    for (const float x : frames) peak = std::max(peak, std::abs(x));
    return peak;
}

// Noise through one resonator and a zero at 0 Hz, of variance 1: a hiss has hardly anything below its band.
class BandNoise {
public:
    BandNoise(double centreHertz, double bandwidthHertz, double sampleRate) {
        const double radius = Exp(-kPi * bandwidthHertz / sampleRate);
        const double square = radius * radius;
        b = 2.0 * radius * CosTurns(centreHertz / sampleRate);
        c = -square;
        const double resonated =
            (1.0 + square) / (1.0 - square) /
            (1.0 - 2.0 * square * CosTurns(2.0 * centreHertz / sampleRate) + square * square);
        const double neighbours = b / (1.0 - c);                     // correlation of one frame with the next
        a = std::sqrt(3.0 / (2.0 * resonated * (1.0 - neighbours))); // the generator's own variance is 1/3
    }
    double Next(RandomNumbers& random) {
        const double y = a * random.Symmetric() + b * last + c * beforeLast;
        beforeLast = last;
        last = y;
        return last - beforeLast;
    }

private:
    double a = 0.0, b = 0.0, c = 0.0, last = 0.0, beforeLast = 0.0;
};

void AddConsonants(Recording& recording, double voicePeak, const SingerSettings& settings) {
    RandomNumbers random = StreamOf(settings, kMouth);
    std::vector<float>& frames = recording.channels[0];
    for (const SungNote& note : recording.notes) {
        if (note.consonantSeconds <= 0.0) continue;
        const bool plosive = note.consonant == Consonant::kPlosive;
        const double centre = std::min(plosive ? 3500.0 : 5500.0, 0.35 * settings.sampleRate);
        BandNoise noise(centre, 2000.0, settings.sampleRate);
        const double seconds =
            plosive ? std::min(kBurstSeconds, 0.5 * note.consonantSeconds) : note.consonantSeconds;
        const double start = note.onsetSeconds - seconds;
        auto n = static_cast<std::size_t>(std::ceil(std::max(0.0, start) * settings.sampleRate));
        for (; n < frames.size() && static_cast<double>(n) < note.onsetSeconds * settings.sampleRate; ++n) {
            const double share = (static_cast<double>(n) / settings.sampleRate - start) / seconds; // 0 to 1
            const double level = plosive
                                     ? kBurstLevel * Exp(-4.0 * share) * SmoothStep(20.0 * share)
                                     : kHissLevel * SmoothStep(4.0 * share) * SmoothStep(4.0 * (1.0 - share));
            frames[n] += static_cast<float>(voicePeak * level * noise.Next(random));
        }
    }
}

// Brings the peak to settings.peak, with the room's noise in it. A recording without voice has the room's
// noise alone.
void AddRoomAndSetPeak(std::vector<float>& frames, bool hasVoice, const SingerSettings& settings) {
    if (!hasVoice) {
        RandomNumbers random = StreamOf(settings, kRoom);
        for (float& x : frames) x = static_cast<float>(settings.roomNoise * random.Symmetric());
        return;
    }
    const double soundPeak = static_cast<double>(PeakOf(frames));
    if (settings.roomNoise > 0.0) {
        RandomNumbers random = StreamOf(settings, kRoom);
        const double noise = settings.roomNoise * soundPeak / settings.peak;
        for (float& x : frames) x += static_cast<float>(noise * random.Symmetric());
    }
    const double gain = settings.peak / static_cast<double>(PeakOf(frames));
    for (float& x : frames) x = static_cast<float>(gain * static_cast<double>(x));
}

void SpreadToChannels(Recording& recording, const SingerSettings& settings) {
    recording.channels.resize(static_cast<std::size_t>(settings.channels), recording.channels[0]);
    if (settings.channels < 2) return;
    const double balance = std::clamp(settings.balance, -1.0, 1.0);
    const auto scale = [](std::vector<float>& frames, double gain) {
        for (float& x : frames) x = static_cast<float>(gain * static_cast<double>(x));
    };
    if (balance > 0.0) scale(recording.channels[0], 1.0 - balance);
    if (balance < 0.0) scale(recording.channels[1], 1.0 + balance);
}

Recording EmptyRecording(double seconds, const SingerSettings& settings) {
    Recording recording;
    recording.sampleRate = settings.sampleRate;
    recording.tuningHertz = settings.tuningHertz;
    recording.key = settings.key;
    const double frames = std::floor(seconds * settings.sampleRate + 0.5);
    recording.channels.assign(1, std::vector<float>(static_cast<std::size_t>(frames), 0.0f));
    const auto knots = static_cast<std::size_t>(std::ceil(seconds / kStep)) + 2;
    recording.curveHertz.assign(knots, 0.0);
    recording.intendedHertz.assign(knots, 0.0);
    return recording;
}

Recording Perform(const Plan& plan, const SingerSettings& settings) {
    Recording recording = EmptyRecording(plan.seconds, settings);
    for (const PlannedNote& note : plan.notes) recording.notes.push_back(note.truth);
    recording.voiced = VoicedSpans(plan);
    recording.intendedHertz = PitchCurve(plan, settings);
    for (std::size_t i = 0; i < recording.curveHertz.size(); ++i)
        recording.curveHertz[i] = recording.HertzAt(static_cast<double>(i) * kStep);

    const Levels levels = PlanLevels(plan, recording.voiced, settings, recording.intendedHertz.size());
    RenderPulses(recording, levels, settings);
    RenderTract(recording, plan, levels, settings);
    const double voicePeak = static_cast<double>(PeakOf(recording.channels[0]));
    AddConsonants(recording, voicePeak, settings);
    AddRoomAndSetPeak(recording.channels[0], voicePeak > 0.0, settings);
    SpreadToChannels(recording, settings);
    return recording;
}

} // namespace

double Recording::HertzAt(double seconds) const {
    const auto after =
        std::upper_bound(voiced.begin(), voiced.end(), seconds,
                         [](double time, const VoicedSpan& span) { return time < span.startSeconds; });
    if (after == voiced.begin() || seconds >= std::prev(after)->endSeconds) return 0.0;
    return Interpolated(intendedHertz, seconds);
}

Recording Sing(const std::vector<MelodyNote>& melody, const SingerSettings& settings) {
    return Perform(PlanMelody(melody, settings), settings);
}

Recording SteadyTone(double hertz, double seconds, const SingerSettings& settings) {
    SingerSettings steady = settings;
    steady.vibratoCents = 0.0;
    return Perform(PlanGlide(hertz, hertz, seconds, steady), steady);
}

Recording VibratoTone(double hertz, double seconds, const SingerSettings& settings) {
    SingerSettings vibrato = settings;
    vibrato.vibratoDelaySeconds = 0.0;
    vibrato.vibratoFadeSeconds = 0.0;
    return Perform(PlanGlide(hertz, hertz, seconds, vibrato), vibrato);
}

Recording Glissando(double fromHertz, double toHertz, double seconds, const SingerSettings& settings) {
    SingerSettings steady = settings;
    steady.vibratoCents = 0.0;
    Recording recording = Perform(PlanGlide(fromHertz, toHertz, seconds, steady), steady);
    recording.notes.clear();
    return recording;
}

Recording WhiteNoise(double seconds, const SingerSettings& settings) {
    Recording recording = EmptyRecording(seconds, settings);
    RandomNumbers random = StreamOf(settings, kRoom);
    for (float& x : recording.channels[0]) x = static_cast<float>(settings.peak * random.Symmetric());
    SpreadToChannels(recording, settings);
    return recording;
}

Recording Silence(double seconds, const SingerSettings& settings) {
    Recording recording = EmptyRecording(seconds, settings);
    SpreadToChannels(recording, settings);
    return recording;
}

double HertzFromMidiPitch(double midiPitch, double tuningHertz) {
    return tuningHertz * Exp2((midiPitch - 69.0) / 12.0);
}

double MidiPitchFromHertz(double hertz, double tuningHertz) {
    return 69.0 + 12.0 * Log2(hertz / tuningHertz);
}

// The sum of twelve even distributions has variance 1; of four, scaled, it is near enough to a bell here.
double RandomNumbers::Normal() {
    return (Uniform() + Uniform() + Uniform() + Uniform() - 2.0) * 1.73205080756887729353;
}

} // namespace sonorelle::test
