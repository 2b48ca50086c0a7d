#!/usr/bin/env python3
"""Writes the small 24-bit BMP files used by the tests and the demo (run it after changing them).

tests/win/data/quad16.bmp     16x16: quadrants red (top left), green (top right), blue (bottom
                              left), white (bottom right)
tests/win/data/strip32.bmp    32x16: a red 16x16 cell, then a blue one
tests/win/data/green8.bmp     8x8 solid green
demo/tile.bmp                 32x32 background tile
demo/ship.bmp, demo/rock.bmp  sprites for the demo
"""
import math
import os
import struct

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def write_bmp(path, width, height, pixel):
    """pixel(x, y) -> (r, g, b), y = 0 at the top."""
    stride = (width * 3 + 3) & ~3
    rows = []
    for y in reversed(range(height)):  # bottom-up
        row = bytearray()
        for x in range(width):
            r, g, b = pixel(x, y)
            row += bytes((b, g, r))
        row += b"\0" * (stride - len(row))
        rows.append(bytes(row))
    data = b"".join(rows)
    header = struct.pack("<2sIHHI", b"BM", 54 + len(data), 0, 0, 54)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 2835, 2835, 0, 0)
    with open(os.path.join(ROOT, path), "wb") as f:
        f.write(header + info + data)


RED, GREEN, BLUE, WHITE = (255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255)


def quad(x, y):
    return [[RED, GREEN], [BLUE, WHITE]][y // 8][x // 8]


def tile(x, y):
    # a dark blue stone tile with a lighter rim and a diagonal groove
    if x == 0 or y == 0:
        return (40, 60, 120)
    if x == 31 or y == 31:
        return (8, 16, 40)
    if (x + y) % 16 == 0:
        return (12, 24, 60)
    return (20, 36 + (x * y) % 8, 84)


def ship(x, y):
    # a yellow arrow on magenta (the demo treats magenta as background)
    cx = abs(x - 15.5)
    if y >= 4 and cx <= (y - 4) / 2 and y < 28:
        return (255, 220, 40) if cx > 2 else (255, 120, 0)
    return (255, 0, 255)


def rock(x, y):
    d = math.hypot(x - 11.5, y - 11.5)
    if d < 11:
        shade = int(150 - d * 6)
        return (shade, shade - 20, shade - 40)
    return (255, 0, 255)


if __name__ == "__main__":
    os.makedirs(os.path.join(ROOT, "tests/win/data"), exist_ok=True)
    write_bmp("tests/win/data/quad16.bmp", 16, 16, quad)
    write_bmp("tests/win/data/strip32.bmp", 32, 16, lambda x, y: RED if x < 16 else BLUE)
    write_bmp("tests/win/data/green8.bmp", 8, 8, lambda x, y: GREEN)
    write_bmp("demo/tile.bmp", 32, 32, tile)
    write_bmp("demo/ship.bmp", 32, 32, ship)
    write_bmp("demo/rock.bmp", 24, 24, rock)
