#!/usr/bin/python3
"""Draws the small 24-bit BMP pictures of the tests and the demo (Pillow, Debian python3-pil).

Usage: tools/make_bitmaps.py   (from anywhere; run it after changing a picture below)

tests/win/data/quad16.bmp     16x16: quadrants red (top left), green (top right), blue (bottom
                              left), white (bottom right)
tests/win/data/strip32.bmp    32x16: a red 16x16 cell, then a blue one
tests/win/data/green8.bmp     8x8 solid green
demo/tile.bmp                 32x32 background tile
demo/ship.bmp, demo/rock.bmp  sprites for the demo, on magenta (the demo's background colour)
"""
import math
import os

from PIL import Image, ImageDraw

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
RED, GREEN, BLUE, WHITE = (255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255)
MAGENTA = (255, 0, 255)


def save(image, path):
    image.save(os.path.join(ROOT, path), "BMP")


def quadrants():
    image = Image.new("RGB", (16, 16))
    draw = ImageDraw.Draw(image)
    draw.rectangle((0, 0, 7, 7), RED)
    draw.rectangle((8, 0, 15, 7), GREEN)
    draw.rectangle((0, 8, 7, 15), BLUE)
    draw.rectangle((8, 8, 15, 15), WHITE)
    return image


def strip():
    image = Image.new("RGB", (32, 16), RED)
    ImageDraw.Draw(image).rectangle((16, 0, 31, 15), BLUE)
    return image


def tile():
    """A dark blue stone with a faint grain, diagonal grooves, lit from the top left."""
    image = Image.new("RGB", (32, 32))
    image.putdata([(20, 36 + (x * y) % 8, 84) for y in range(32) for x in range(32)])
    draw = ImageDraw.Draw(image)
    for d in (16, 32, 48):
        draw.line((0, d, d, 0), (12, 24, 60))
    draw.line((0, 31, 31, 31), (8, 16, 40))  # shadowed edges
    draw.line((31, 0, 31, 31), (8, 16, 40))
    draw.line((0, 0, 31, 0), (40, 60, 120))  # lit edges
    draw.line((0, 0, 0, 31), (40, 60, 120))
    return image


def ship():
    """An arrow pointing up, half as wide as it is long: yellow, with an orange spine."""
    image = Image.new("RGB", (32, 32), MAGENTA)
    draw = ImageDraw.Draw(image)
    draw.polygon(((15, 5), (16, 5), (27, 27), (4, 27)), (255, 220, 40))
    draw.polygon(((15, 5), (16, 5), (17, 7), (17, 27), (14, 27), (14, 7)), (255, 120, 0))
    return image


def rock():
    """A round boulder, darker towards its rim."""
    image = Image.new("RGB", (24, 24), MAGENTA)
    for y in range(24):
        for x in range(24):
            d = math.hypot(x - 11.5, y - 11.5)
            if d < 11:
                shade = int(150 - d * 6)
                image.putpixel((x, y), (shade, shade - 20, shade - 40))
    return image


if __name__ == "__main__":
    os.makedirs(os.path.join(ROOT, "tests/win/data"), exist_ok=True)
    save(quadrants(), "tests/win/data/quad16.bmp")
    save(strip(), "tests/win/data/strip32.bmp")
    save(Image.new("RGB", (8, 8), GREEN), "tests/win/data/green8.bmp")
    save(tile(), "demo/tile.bmp")
    save(ship(), "demo/ship.bmp")
    save(rock(), "demo/rock.bmp")
