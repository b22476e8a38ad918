#!/usr/bin/env python3
"""Tells whether a host's recording of the plug-in is the music that it should be.

    compare_sound.py HEARD.wav EXPECTED.wav [LEAST [LATE]]

Both are 16-bit WAV files of one rate. Of stereo files the two sides are added; but if HEARD has one side, it is compared with
the left one. Prints the peak, by how many frames HEARD
comes later, its gain, and the correlation at that shift. Fails when the correlation is below LEAST (0.98), or when HEARD is
more than LATE frames away from its place (0; what a host's own latency is not made up for).
"""

import array
import math
import operator
import sys
import wave

FARTHEST = 2048  # frames that are searched for the shift, both ways
WINDOW = 6000  # frames compared while searching: some periods of a voice, some formants


def read(name, left=False):
    with wave.open(name, "rb") as file:
        if file.getsampwidth() != 2:
            sys.exit(f"{name}: not 16 bits wide")
        samples = array.array("h", file.readframes(file.getnframes()))
        channels = file.getnchannels()
        mono = samples[0::channels]
        if channels > 1 and not left:
            mono = map(operator.add, mono, samples[1::channels])
        return list(mono), file.getframerate(), max(map(abs, samples), default=0) / 32768, channels


def product(a, b):
    return sum(map(operator.mul, a, b))


def correlation(a, b):
    power = math.sqrt(product(a, a) * product(b, b))
    return product(a, b) / power if power else 0.0


def find_shift(heard, expected):
    """By how many frames the loudest stretch of what is expected comes later in what was heard."""
    starts = range(FARTHEST, max(FARTHEST + 1, len(expected) - FARTHEST - WINDOW), WINDOW)
    start = max(starts, key=lambda at: product(expected[at : at + WINDOW], expected[at : at + WINDOW]))
    stretch = expected[start : start + WINDOW]
    return max(range(-FARTHEST, FARTHEST + 1),
               key=lambda shift: product(heard[start + shift : start + shift + WINDOW], stretch))


def main():
    heard, rate, peak, sides = read(sys.argv[1])
    expected, expected_rate, *_ = read(sys.argv[2], left=sides == 1)
    least = float(sys.argv[3]) if len(sys.argv) > 3 else 0.98
    late = int(sys.argv[4]) if len(sys.argv) > 4 else 0
    if rate != expected_rate:
        sys.exit(f"rates differ: {rate} and {expected_rate} Hz")
    if peak < 0.01:
        sys.exit(f"silence: the highest sample is {peak:.4f}")
    if len(heard) < 0.95 * len(expected):
        sys.exit(f"too short: {len(heard) / rate:.2f} s of {len(expected) / rate:.2f} s")
    shift = find_shift(heard, expected)
    moved = heard[shift:] if shift >= 0 else [0] * -shift + heard
    frames = min(len(moved), len(expected))
    a, b = moved[:frames], expected[:frames]
    alike = correlation(a, b)
    gain = product(a, b) / max(1, product(b, b))
    print(f"peak {peak:.3f}, {shift} frames late, gain {gain:.3f}, correlation {alike:.5f} over {frames / rate:.2f} s")
    if alike < least or abs(shift) > late:
        sys.exit(1)


if __name__ == "__main__":
    main()
