#!/usr/bin/env python3
"""Writes the TGA images of the demo and the tests with Pillow (run it after changing them).

demo/orb.tga        64x64, 32 bits: a glowing orb whose alpha falls off smoothly to its rim
demo/saucer.tga     64x32, 32 bits: a flying saucer with anti-aliased edges and a see-through dome
demo/crate.tga      40x40, 24 bits: an opaque wooden crate (the demo gives it a drop shadow)
tests/win/data/pattern32.tga   7x5, 32 bits with 8 alpha bits, rows bottom-up (Pillow's default)
tests/win/data/pattern24.tga   7x5, 24 bits, rows top-down (descriptor bit 5 set)
tests/fuzz/corpus/fuzz_tga/*   small seeds for the loader's fuzz target

Pillow writes a TGA's rows bottom-up with descriptor bit 5 clear, and top-down with it set when
saved with orientation=1; both were checked by loading the files with the library's own loader
(the Windows image tests read pattern32.tga and pattern24.tga back pixel by pixel).

Run with the system Python, which has Debian's python3-pil:  /usr/bin/python3 tools/make_images.py
"""
import math
import os

from PIL import Image, ImageDraw

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SCALE = 4  # shapes are drawn this many times larger and reduced, for smooth edges


def path(name):
    full = os.path.join(ROOT, name)
    os.makedirs(os.path.dirname(full), exist_ok=True)
    return full


def pattern(x, y):
    """The test pattern's (r, g, b, a) at column x, row y (row 0 at the top); tests/win repeats it."""
    alphas = (0, 255, 128, 1, 254, 64, 200)
    return (40 * x, 60 * y, 255 - 30 * x, alphas[(x + 2 * y) % 7])


def pattern_image(mode):
    im = Image.new("RGBA", (7, 5))
    im.putdata([pattern(x, y) for y in range(5) for x in range(7)])
    return im.convert(mode)


def orb():
    im = Image.new("RGBA", (64, 64))
    for y in range(64):
        for x in range(64):
            d = math.hypot(x - 31.5, y - 31.5) / 32  # 0 at the centre, 1 at the rim
            edge = min(1.0, max(0.0, (1 - d) / 0.45))  # opaque inside, fading over the outer part
            light = max(0.0, 1 - math.hypot(x - 24, y - 22) / 30)  # a highlight up and left
            im.putpixel((x, y), (int(60 + 195 * light), int(120 + 135 * light), 255,
                                 int(255 * edge * edge * (3 - 2 * edge))))
    return im


def saucer():
    w, h = 64 * SCALE, 32 * SCALE
    im = Image.new("RGBA", (w, h), (0, 0, 0, 0))
    draw = ImageDraw.Draw(im)
    s = SCALE
    draw.ellipse((18 * s, 2 * s, 46 * s, 24 * s), fill=(120, 220, 255, 150))  # dome
    draw.ellipse((2 * s, 12 * s, 62 * s, 28 * s), fill=(150, 155, 170, 255))  # hull
    draw.ellipse((8 * s, 13 * s, 56 * s, 21 * s), fill=(205, 210, 220, 255))  # upper rim
    for i, cx in enumerate(range(12, 56, 8)):
        colour = ((255, 80, 60), (255, 220, 60), (90, 255, 120))[i % 3]
        draw.ellipse(((cx - 2) * s, 21 * s, (cx + 2) * s, 25 * s), fill=colour + (255,))
    return im.resize((64, 32), Image.LANCZOS)


def crate():
    w = 40 * SCALE
    im = Image.new("RGB", (w, w), (150, 100, 50))
    draw = ImageDraw.Draw(im)
    s = SCALE
    for i in range(0, 40, 8):  # planks
        draw.line((0, i * s, w, i * s), fill=(120, 78, 38), width=s)
    draw.rectangle((0, 0, w - 1, w - 1), outline=(80, 50, 20), width=4 * s)
    draw.line((4 * s, 4 * s, 36 * s, 36 * s), fill=(95, 60, 25), width=4 * s)  # brace
    return im.resize((40, 40), Image.LANCZOS)


def fuzz_seeds():
    seeds = os.path.join("tests", "fuzz", "corpus", "fuzz_tga")
    small = pattern_image("RGBA").crop((0, 0, 3, 2))
    small.save(path(os.path.join(seeds, "alpha_bottom_up.tga")))
    small.save(path(os.path.join(seeds, "alpha_top_down_id.tga")), orientation=1,
               id_section=b"seed")
    small.convert("RGB").save(path(os.path.join(seeds, "rgb24.tga")))
    small.convert("RGB").save(path(os.path.join(seeds, "rle.tga")), compression="tga_rle")
    small.convert("P").save(path(os.path.join(seeds, "palette.tga")))


if __name__ == "__main__":
    orb().save(path("demo/orb.tga"))
    saucer().save(path("demo/saucer.tga"))
    crate().save(path("demo/crate.tga"))
    pattern_image("RGBA").save(path("tests/win/data/pattern32.tga"))
    pattern_image("RGB").save(path("tests/win/data/pattern24.tga"), orientation=1)
    fuzz_seeds()
