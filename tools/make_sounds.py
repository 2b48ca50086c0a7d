#!/usr/bin/python3
"""Writes the demo's sound effects, 22050 Hz 16-bit mono wave files.

Usage: tools/make_sounds.py   (from anywhere; run it after changing a sound below)

demo/blip.wav     0.12 s rising tone, played when the ship turns
demo/whoosh.wav   0.30 s falling noise sweep, played when a rock leaves the screen
"""
import math
import os
import random
import wave

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RATE = 22050


def write_wave(path, samples):
    """Writes samples (numbers, full scale +-32767) as a mono 16-bit wave file."""
    clipped = (max(-32767, min(32767, int(s))) for s in samples)
    with wave.open(os.path.join(ROOT, path), "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(b"".join(s.to_bytes(2, "little", signed=True) for s in clipped))


def blip():
    """A tone gliding from 700 to 1400 Hz with a third harmonic, fading out."""
    n = int(0.12 * RATE)
    phase = 0.0
    for i in range(n):
        t = i / n
        phase += 2 * math.pi * (700 + 700 * t) / RATE
        envelope = min(1.0, i / 200) * (1 - t) ** 2
        yield 9000 * envelope * (math.sin(phase) + 0.3 * math.sin(3 * phase))


def whoosh():
    """White noise through a low-pass filter that closes over time, swelling and fading."""
    rng = random.Random(7)
    n = int(0.30 * RATE)
    low = 0.0
    for i in range(n):
        t = i / n
        cutoff = 0.35 * (1 - t) + 0.03  # a one-pole low-pass
        low += cutoff * (rng.uniform(-1, 1) - low)
        envelope = math.sin(math.pi * t) ** 2
        yield 20000 * envelope * low


if __name__ == "__main__":
    write_wave("demo/blip.wav", blip())
    write_wave("demo/whoosh.wav", whoosh())
