#!/usr/bin/env python3
"""Sings the demonstration melody with Debian's festival and writes deck-the-hall.wav and deck-the-hall.notes.csv.

Needs the Debian packages festival and festvox-kallpc16k, and Python 3 alone. Run it anywhere; it writes beside itself.

    assets/demo/make_demo.py

1. The melody below becomes a document of festival's singing mode.
2. festival sings it (16 kHz) and tells where each speech sound lies.
3. The recording is resampled to 44.1 kHz (windowed sinc), its first and last sound faded, silence put around it, and its
   peak brought to -3 dBFS (0.708).
4. A note in the list lasts from the first to the last vowel or sonorant (l, r, w, y, m, n, ng) of its syllable, as these
   carry the pitch; its pitch is the one asked for.
"""

import array
import math
import os
import subprocess
import sys
import tempfile
import wave

NAME = "deck-the-hall"
BEATS_PER_MINUTE = 96.0
# Word, and for each of its syllables: the MIDI pitch and the beats.
MELODY = [
    ("deck", [(55, 1.5)]),
    ("the", [(53, 0.5)]),
    ("hall", [(52, 1.0)]),
    ("with", [(50, 1.0)]),
    ("boughs", [(48, 1.0)]),
    ("of", [(50, 1.0)]),
    ("holly", [(52, 1.0), (48, 1.0)]),
    ("fa", [(50, 0.5)]),
    ("la", [(52, 0.5)]),
    ("la", [(53, 0.5)]),
    ("la", [(50, 0.5)]),
    ("la", [(52, 1.5)]),
    ("la", [(50, 0.5)]),
    ("la", [(48, 1.0)]),
    ("la", [(47, 1.0)]),
    ("la", [(48, 2.0)]),
]
# Sung behind the melody and cut off: before a silence the voice would jump to a louder sound within its last vowel.
NOT_HEARD = ("la", [(48, 1.0)])
SONORANT_CONSONANTS = {"l", "r", "w", "y", "m", "n", "ng", "el", "em", "en"}
SILENCE_SECONDS = 0.3
FADE_IN_SECONDS = 0.01
FADE_OUT_SECONDS = 0.3
PEAK = 10.0 ** (-3.0 / 20.0)
RATE = 44100


def hertz(midi):
    return 440.0 * 2.0 ** ((midi - 69) / 12.0)


def singing_document():
    lines = [
        '<?xml version="1.0"?>',
        '<!DOCTYPE SINGING PUBLIC "-//SINGING//DTD SINGING mark up//EN" "Singing.v0_1.dtd" []>',
        "<SINGING>",
    ]
    for word, notes in MELODY + [NOT_HEARD]:
        seconds = ",".join("%.4f" % (beats * 60.0 / BEATS_PER_MINUTE) for _, beats in notes)
        pitches = ",".join("%.4f" % hertz(midi) for midi, _ in notes)
        lines.append('<DURATION SECONDS="%s"><PITCH FREQ="%s">%s</PITCH></DURATION>' % (seconds, pitches, word))
    return "\n".join(lines + ["</SINGING>", ""])


# Saves the wave, and one line for each speech sound: its end in seconds, its name, the number of its syllable (-1 for
# silences) and whether it is a vowel.
FESTIVAL_SCRIPT = """
(require 'singing-mode)
(voice_kal_diphone)
(define (save_all utt)
  (utt.save.wave utt "%(wave)s" 'riff)
  (let ((file (fopen "%(sounds)s" "w")) (number -1) (last nil))
    (mapcar
      (lambda (segment)
        (let ((syllable (item.parent (item.relation segment 'SylStructure))))
          (if (and syllable (not (equal? syllable last))) (begin (set! number (+ number 1)) (set! last syllable)))
          (format file "%%f %%s %%d %%s\\n" (item.feat segment 'end) (item.name segment)
                  (if syllable number -1) (item.feat segment 'ph_vc))))
      (utt.relation.items utt 'Segment))
    (fclose file))
  utt)
(set! tts_hooks (list utt.synth save_all))
(tts_file "%(song)s" 'singing)
"""


def sing(folder):
    paths = {key: os.path.join(folder, key) for key in ("wave", "sounds", "song")}
    with open(paths["song"], "w", encoding="ascii") as file:
        file.write(singing_document())
    script = os.path.join(folder, "script.scm")
    with open(script, "w", encoding="ascii") as file:
        file.write(FESTIVAL_SCRIPT % paths)
    subprocess.run(["festival", "-b", script], check=True)
    with wave.open(paths["wave"], "rb") as file:
        if file.getnchannels() != 1 or file.getsampwidth() != 2:
            sys.exit("festival gave something else than 16-bit mono")
        rate = file.getframerate()
        samples = array.array("h", file.readframes(file.getnframes()))
    with open(paths["sounds"], encoding="ascii") as file:
        sounds = [line.split() for line in file]
    return rate, [x / 32768.0 for x in samples], sounds


def resampled(samples, rate):
    """Band-limited interpolation: a sinc under a Hann window, 32 samples to either side."""
    reach = 32
    divisor = math.gcd(RATE, rate)
    up, down = RATE // divisor, rate // divisor
    kernels = []
    for phase in range(up):
        kernel = []
        for tap in range(-reach + 1, reach + 1):
            u = tap - phase / up
            sinc = 1.0 if u == 0.0 else math.sin(math.pi * u) / (math.pi * u)
            kernel.append(sinc * (0.5 + 0.5 * math.cos(math.pi * u / reach)))
        kernels.append(kernel)
    padded = [0.0] * (reach - 1) + samples + [0.0] * (reach + 1)
    result = []
    for n in range(len(samples) * up // down):
        whole, phase = divmod(n * down, up)
        result.append(sum(map(lambda a, b: a * b, kernels[phase], padded[whole : whole + 2 * reach])))
    return result


def finished(samples):
    """Fades, silence on both sides, peak, 16 bits."""
    fade_in, fade_out = int(FADE_IN_SECONDS * RATE), int(FADE_OUT_SECONDS * RATE)
    for n in range(fade_in):
        samples[n] *= 0.5 - 0.5 * math.cos(math.pi * (n + 0.5) / fade_in)
    for n in range(fade_out):
        samples[-1 - n] *= 0.5 - 0.5 * math.cos(math.pi * (n + 0.5) / fade_out)
    gain = PEAK / max(abs(x) for x in samples)
    silence = [0] * round(SILENCE_SECONDS * RATE)
    return array.array("h", silence + [round(32768.0 * gain * x) for x in samples] + silence)


def notes_of(sounds):
    """Onset, offset, MIDI pitch for each syllable."""
    pitches = [midi for _, notes in MELODY for midi, _ in notes]
    spans = {}
    start = 0.0
    for end, name, syllable, vowel in sounds:
        end = float(end)
        if int(syllable) >= 0 and (vowel == "+" or name in SONORANT_CONSONANTS):
            first, _ = spans.get(int(syllable), (start, end))
            spans[int(syllable)] = (first, end)
        start = end
    if sorted(spans) != list(range(len(pitches) + 1)):
        sys.exit("festival sang %d syllables instead of %d" % (len(spans), len(pitches) + 1))
    return [(spans[i][0], spans[i][1], pitches[i]) for i in range(len(pitches))]


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    with tempfile.TemporaryDirectory() as folder:
        rate, samples, sounds = sing(folder)
    notes = notes_of(sounds)
    samples = samples[: round(notes[-1][1] * rate)]
    with wave.open(os.path.join(here, NAME + ".wav"), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(finished(resampled(samples, rate)).tobytes())
    with open(os.path.join(here, NAME + ".notes.csv"), "w", encoding="ascii") as file:
        file.write("onset_s,offset_s,midi,hz\n")
        for onset, offset, midi in notes:
            row = (onset + SILENCE_SECONDS, offset + SILENCE_SECONDS, midi, hertz(midi))
            file.write("%.4f,%.4f,%d,%.4f\n" % row)


if __name__ == "__main__":
    main()
