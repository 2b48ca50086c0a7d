#!/usr/bin/env python3
"""Writes the demo's sound effects: 22050 Hz, 16-bit mono PCM wave files (run after changing them).

demo/blip.wav     0.12 s rising tone, played when the ship turns
demo/whoosh.wav   0.30 s falling noise sweep, played when a rock leaves the screen
"""
import math
import os
import random
import struct

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RATE = 22050


def write_wave(path, samples):
    data = b"".join(struct.pack("<h", max(-32767, min(32767, int(s)))) for s in samples)
    fmt = struct.pack("<HHIIHH", 1, 1, RATE, 2 * RATE, 2, 16)
    body = b"WAVE" + b"fmt " + struct.pack("<I", len(fmt)) + fmt
    body += b"data" + struct.pack("<I", len(data)) + data
    with open(os.path.join(ROOT, path), "wb") as f:
        f.write(b"RIFF" + struct.pack("<I", len(body)) + body)


def blip():
    n = int(0.12 * RATE)
    phase = 0.0
    for i in range(n):
        t = i / n
        phase += 2 * math.pi * (700 + 700 * t) / RATE
        envelope = min(1.0, i / 200) * (1 - t) ** 2
        yield 9000 * envelope * (math.sin(phase) + 0.3 * math.sin(3 * phase))


def whoosh():
    rng = random.Random(7)
    n = int(0.30 * RATE)
    low = 0.0
    for i in range(n):
        t = i / n
        cutoff = 0.35 * (1 - t) + 0.03  # a one-pole low-pass closing over time
        low += cutoff * (rng.uniform(-1, 1) - low)
        envelope = math.sin(math.pi * t) ** 2
        yield 20000 * envelope * low


if __name__ == "__main__":
    write_wave("demo/blip.wav", blip())
    write_wave("demo/whoosh.wav", whoosh())
