#!/usr/bin/python3
"""Writes the program's sounds beside this script: 16-bit mono WAV files, each under 0.6 s and 60 kB.

A tone is a sine with two quiet overtones, like a soft mallet on wood. It swells for a few milliseconds and
dies away exponentially, so that nothing clicks; the files are the same at every run.
"""

import math
import pathlib
import struct
import wave

RATE = 44100
LOUDEST = 0.45  # Of full scale: a hint beside what the user listens to, not an alarm.
OVERTONES = ((1, 1.0), (2, 0.22), (3, 0.06))  # Multiple of the pitch, loudness.

# Pitch in Hz, beginning and length in seconds, how soon the tone has faded to 1/e, loudness.
SOUNDS = {
    # A fifth upwards: finished.
    "MorvaneDone": ((587.33, 0.00, 0.50, 0.13, 0.8), (880.00, 0.11, 0.44, 0.14, 1.0)),
    # A minor third downwards, low: something is wrong.
    "MorvaneError": ((311.13, 0.00, 0.32, 0.11, 1.0), (261.63, 0.15, 0.43, 0.15, 1.0)),
    # One short low tone: put down.
    "MorvaneCancelled": ((392.00, 0.00, 0.24, 0.06, 0.8),),
}

ATTACK = 0.008
RELEASE = 0.040


def loudness_at(seconds, length, fade):
    """The envelope: a raised cosine into the tone and out of it, exponential in between."""
    swell = 0.5 - 0.5 * math.cos(math.pi * min(seconds / ATTACK, 1.0))
    end = 0.5 - 0.5 * math.cos(math.pi * min((length - seconds) / RELEASE, 1.0))
    return swell * end * math.exp(-seconds / fade)


def samples_of(tones):
    total = max(begin + length for _, begin, length, _, _ in tones)
    mix = [0.0] * round(total * RATE)
    for pitch, begin, length, fade, loudness in tones:
        first = round(begin * RATE)
        for i in range(min(round(length * RATE), len(mix) - first)):
            seconds = i / RATE
            wave_sum = sum(part * math.sin(2 * math.pi * pitch * multiple * seconds)
                           for multiple, part in OVERTONES)
            mix[first + i] += loudness * loudness_at(seconds, length, fade) * wave_sum
    peak = max(abs(value) for value in mix)
    return [round(value / peak * LOUDEST * 32767) for value in mix]


def main():
    folder = pathlib.Path(__file__).resolve().parent
    for name, tones in SOUNDS.items():
        samples = samples_of(tones)
        with wave.open(str(folder / f"{name}.wav"), "wb") as file:
            file.setnchannels(1)
            file.setsampwidth(2)
            file.setframerate(RATE)
            file.writeframes(struct.pack(f"<{len(samples)}h", *samples))


if __name__ == "__main__":
    main()
