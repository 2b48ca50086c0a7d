// The two 16-bit pixel layouts: packing 8-bit channels, splitting a pixel into channels, and
// mixing two pixels at an alpha (platform-free). These are the reference rules: every loop that
// draws pixels, scalar or SIMD, must give exactly what these functions give.
//
//   mode 1, 5:5:5   bit 15 unused, red 14-10, green 9-5, blue 4-0
//   mode 2, 5:6:5   red 15-11, green 10-5, blue 4-0
//
// Packing drops the low bits of each channel (no rounding, no dithering). Any mode other than 1
// packs as 5:6:5. Mixing weighs the source by a/256 and the destination by (256 - a)/256 per
// channel and truncates:
//
//   out_c = (d_c * (256 - a) + s_c * a) >> 8
//
// so a mix never quite reaches the source (channel 31 over 0 at a = 254 gives 30). The painters
// copy at alpha 255 and skip at 0 instead of mixing; text printing mixes at every coverage, 0 and
// 255 included. In 5:5:5 bit 15 of either input takes part in no channel and the result's is 0.
#ifndef VELL_PIXEL_FORMAT_H
#define VELL_PIXEL_FORMAT_H

#include <cstddef>
#include <cstdint>

#include "display/graphics_mode.h"

namespace vell {

// The layout is a template parameter of the loops (chosen once, before a loop).
template <std::uint32_t Mode> struct Layout;

template <> struct Layout<kMode555> {
    static constexpr unsigned kRedShift = 10;
    static constexpr unsigned kGreenMask = 0x1F;
};
template <> struct Layout<kMode565> {
    static constexpr unsigned kRedShift = 11;
    static constexpr unsigned kGreenMask = 0x3F;
};

constexpr std::uint16_t packRGB(std::uint32_t mode, std::uint8_t r, std::uint8_t g,
                                std::uint8_t b) {
    if (mode == kMode555)
        return static_cast<std::uint16_t>(((r & 0xF8u) << 7) | ((g & 0xF8u) << 2) | (b >> 3));
    return static_cast<std::uint16_t>(((r & 0xF8u) << 8) | ((g & 0xFCu) << 3) | (b >> 3));
}

struct Channels {
    unsigned blue, green, red;
};

template <std::uint32_t Mode> constexpr Channels split(std::uint16_t v) {
    return {v & 0x1Fu, (v >> 5) & Layout<Mode>::kGreenMask, (v >> Layout<Mode>::kRedShift) & 0x1Fu};
}

template <std::uint32_t Mode> constexpr std::uint16_t join(Channels c) {
    return static_cast<std::uint16_t>(c.blue | (c.green << 5) | (c.red << Layout<Mode>::kRedShift));
}

// The mix of d (destination) and s (source) at alpha a, 0 <= a <= 255.
template <std::uint32_t Mode>
constexpr std::uint16_t mix(std::uint16_t d, std::uint16_t s, unsigned a) {
    const Channels dc = split<Mode>(d), sc = split<Mode>(s);
    const unsigned na = 256 - a;
    return join<Mode>({(dc.blue * na + sc.blue * a) >> 8, (dc.green * na + sc.green * a) >> 8,
                       (dc.red * na + sc.red * a) >> 8});
}

// Locked 16-bit surface memory as the drawing loops see it: pixel (x, y), 0 <= x < width,
// 0 <= y < height, is the word at bits + y * pitch + 2 * x. Loops clip to width and height.
struct PixelTarget {
    std::uint8_t *bits;
    std::ptrdiff_t pitch; // bytes from one row to the next
    std::int32_t width, height;
};

// The same with the mode chosen at run time: 1 is 5:5:5, anything else 5:6:5.
constexpr std::uint16_t mixPixel(std::uint32_t mode, std::uint16_t d, std::uint16_t s, unsigned a) {
    return mode == kMode555 ? mix<kMode555>(d, s, a) : mix<kMode565>(d, s, a);
}

} // namespace vell

#endif
