#!/usr/bin/env python3
"""Takes a stereo recording apart, for two things that were recorded side by side to be compared.

    split_sides.py BOTH.wav LEFT.wav RIGHT.wav
"""

import array
import sys
import wave


def main():
    with wave.open(sys.argv[1], "rb") as both:
        if both.getnchannels() != 2 or both.getsampwidth() != 2:
            sys.exit(f"{sys.argv[1]}: not a 16-bit stereo file")
        samples = array.array("h", both.readframes(both.getnframes()))
        rate = both.getframerate()
    for side, name in enumerate(sys.argv[2:4]):
        with wave.open(name, "wb") as file:
            file.setnchannels(1)
            file.setsampwidth(2)
            file.setframerate(rate)
            file.writeframes(samples[side::2].tobytes())


if __name__ == "__main__":
    main()
