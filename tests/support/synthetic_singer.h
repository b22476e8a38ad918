// A singer whose every note, pitch and glottal pulse is known exactly: the ground truth of the tests and the
// measurements.
//
// The sound is made in these stages:
//   1. plan     the notes get their seconds; what is voiced, and where consonants and breaths lie, follows
//   from them;
//   2. curve    a pitch curve with portamento and vibrato, one knot a millisecond, straight lines between;
//   3. pulses   one glottal closure wherever the integral of the curve, jittered, passes a whole number;
//   4. source   a glottal flow pulse before each closure, band-limited and placed between the samples;
//   5. tract    five formant resonators in cascade, gliding from vowel to vowel; breath noise passes them as
//   well;
//   6. mouth    bursts and hisses of the consonants, room noise, level, channels.
//
// Everything depends on the settings alone. The generator of random numbers and the elementary functions are
// this file's own, and rounding is IEEE's, so that a recording has the same bits on every machine. A
// recording of ten minutes at 44.1 kHz takes about a second and 4 bytes a sample and channel, beside some 40
// bytes for each millisecond.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonorelle::test {

enum class VoiceRegister { kBass, kTenor, kAlto, kSoprano };
enum class Vowel { kA, kE, kI, kO, kU };

// How a note begins. The unvoiced ones cut into the end of the note (or rest) before, so that the vowel
// itself starts on the beat; a nasal is voiced and starts on the beat.
enum class Consonant {
    kNone,      // legato: the voice glides over from the note before
    kPlosive,   // a closure without sound, then a short burst ("t")
    kFricative, // a hiss ("s")
    kNasal,     // the voice goes on, muffled and softer ("m")
};

struct MelodyNote {
    double midiPitch = 60.0; // in the singer's own tuning: 69 is `tuningHertz`; fractions are allowed
    double beats = 1.0;      // from its onset to the next note, or to the rest
    Vowel vowel = Vowel::kA;
    Consonant consonant = Consonant::kNone;
    double restBeatsAfter = 0.0;
};

struct SingerSettings {
    double sampleRate = 44100.0; // Hz, 8000 to 192000
    int channels = 1;
    double balance = 0.0;    // -1 left to 1 right; the far channel is softer by 1 - |balance|
    double peak = 0.5;       // largest absolute sample of the recording, over all channels
    double roomNoise = 3e-5; // peak of a white noise under everything; 0 gives digital silence in rests
    std::uint64_t seed = 1;  // of everything random

    double tuningHertz = 440.0;   // of midiPitch 69
    double intonationCents = 0.0; // each note is off by a random amount up to this, told with the note
    int key = -1; // handed on to the recording: 0 to 11 major from C, 12 to 23 minor, -1 unknown
    double beatsPerMinute = 100.0;
    double leadInSeconds = 0.3;  // silence before the first note ...
    double leadOutSeconds = 0.3; // ... and behind the last

    VoiceRegister voice = VoiceRegister::kTenor; // the formants; any sings any pitch of 70 to 1000 Hz
    double vibratoHertz = 5.5;
    double vibratoCents = 30.0;        // peak deviation to either side
    double vibratoDelaySeconds = 0.25; // steady after the onset, before the vibrato fades in
    double vibratoFadeSeconds = 0.2;   // from none to full
    double portamentoSeconds = 0.06;   // glide between legato notes, its middle at the boundary
    double jitter = 0.003;             // standard deviation of a period, relative
    double shimmer = 0.02;             // standard deviation of a pulse's strength, relative
    double consonantSeconds = 0.1;     // unvoiced ones; held to half of the note before
    double openQuotient = 0.6;         // share of the period in which the glottis is open
    double breath = 0.01;              // noise in the voice, beside pulses of strength 1
    double inhale = 0.02;              // noise of a breath taken in rests of 0.4 s or more; 0 for none
};

// One note as it was sung. [onsetSeconds, offsetSeconds) is the voiced part.
struct SungNote {
    double onsetSeconds = 0.0;
    double offsetSeconds = 0.0;
    double midiPitch = 0.0;      // as in the melody, in the singer's own tuning, without the intonation error
    double hertz = 0.0;          // with tuning and intonation error, without vibrato and portamento
    double midiPitchAt440 = 0.0; // `hertz` as a MIDI pitch when 69 is 440 Hz
    Vowel vowel = Vowel::kA;
    Consonant consonant = Consonant::kNone;
    double consonantSeconds = 0.0; // an unvoiced consonant fills the time of this length before the onset
};

// [startSeconds, endSeconds) is voiced throughout.
struct VoicedSpan {
    double startSeconds = 0.0;
    double endSeconds = 0.0;
};

struct Recording {
    static constexpr double kCurveStepSeconds = 0.001;

    double sampleRate = 0.0;
    std::vector<std::vector<float>> channels; // all of equal length
    std::vector<SungNote> notes;              // rising in time
    std::vector<double> curveHertz;           // one value each kCurveStepSeconds from 0 on, 0 where unvoiced
    std::vector<double> intendedHertz;        // the same, but in rests the pitch that the singer has in mind
    std::vector<VoicedSpan> voiced;           // rising, apart from one another
    std::vector<double> pulseFrames;          // positions of the glottal closures in sample frames, rising
    int key = -1;
    double tuningHertz = 440.0;

    std::size_t Frames() const { return channels.empty() ? 0 : channels[0].size(); }
    double Seconds() const { return static_cast<double>(Frames()) / sampleRate; }

    // The curve at any time, 0 where unvoiced. The curve is exactly the straight lines between its knots.
    double HertzAt(double seconds) const;
};

// Five formants as sung, in Hz.
struct Formants {
    static constexpr int kCount = 5;
    double centreHertz[kCount];
    double bandwidthHertz[kCount];
};

const Formants& VowelFormants(VoiceRegister voice, Vowel vowel);

// Sings the melody. An empty one gives lead-in and lead-out alone.
Recording Sing(const std::vector<MelodyNote>& melody, const SingerSettings& settings);

// One vowel ("a") for `seconds`, between lead-in and lead-out. No vibrato, whatever the settings say.
Recording SteadyTone(double hertz, double seconds, const SingerSettings& settings);

// The same with vibrato from the start, of settings.vibratoHertz and vibratoCents.
Recording VibratoTone(double hertz, double seconds, const SingerSettings& settings);

// One vowel that glides evenly (in semitones a second) from one pitch to the other. It has a curve, but no
// notes.
Recording Glissando(double fromHertz, double toHertz, double seconds, const SingerSettings& settings);

// Evenly distributed noise up to settings.peak, the same in all channels; no notes, nothing voiced. No
// lead-in or lead-out.
Recording WhiteNoise(double seconds, const SingerSettings& settings);

// Zeros. No lead-in or lead-out.
Recording Silence(double seconds, const SingerSettings& settings);

// 69 is tuningHertz.
double HertzFromMidiPitch(double midiPitch, double tuningHertz = 440.0);
double MidiPitchFromHertz(double hertz, double tuningHertz = 440.0);

// A small fast generator with the same numbers everywhere (splitmix64).
class RandomNumbers {
public:
    explicit RandomNumbers(std::uint64_t seed) : state(seed) {}
    std::uint64_t Next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    double Uniform() { return static_cast<double>(Next() >> 11) * 0x1p-53; } // [0, 1)
    double Symmetric() { return 2.0 * Uniform() - 1.0; }                     // [-1, 1)
    double Normal();                                                         // mean 0, variance 1, within 3.5
    int Below(int count) { return static_cast<int>(Uniform() * count); }     // 0 to count - 1

private:
    std::uint64_t state;
};

} // namespace sonorelle::test
