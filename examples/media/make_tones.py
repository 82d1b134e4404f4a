#!/usr/bin/env python3
"""Writes tones.wav: four seconds of a low pulse and a high chirp for the audio-reactive example.

A 70 Hz tone thumps twice a second with a fast decay; a 2400 Hz tone swells on the off-beats.
Mono, 16-bit, 22050 Hz. Only the standard library is used, so the output is the same everywhere.
"""

import math
import struct
import wave
from pathlib import Path

RATE = 22050
SECONDS = 4.0
LOW_HZ = 70.0
HIGH_HZ = 2400.0
BEAT = 0.5  # seconds between low pulses


def sample(t: float) -> float:
    beat_phase = t % BEAT
    low = math.exp(-beat_phase * 9.0) * math.sin(2.0 * math.pi * LOW_HZ * t)
    off_phase = (t + BEAT / 2.0) % (2.0 * BEAT)
    swell = math.sin(math.pi * min(off_phase / BEAT, 1.0)) ** 2 if off_phase < BEAT else 0.0
    high = swell * math.sin(2.0 * math.pi * HIGH_HZ * t)
    return 0.6 * low + 0.3 * high


def main() -> None:
    frames = bytearray()
    for n in range(int(RATE * SECONDS)):
        value = max(-1.0, min(1.0, sample(n / RATE)))
        frames += struct.pack("<h", int(round(value * 32767)))
    out = Path(__file__).with_name("tones.wav")
    with wave.open(str(out), "wb") as wav:
        wav.setnchannels(1)
        wav.setsampwidth(2)
        wav.setframerate(RATE)
        wav.writeframes(bytes(frames))


if __name__ == "__main__":
    main()
