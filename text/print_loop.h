// The printing rule of the library (platform-free): text in a bitmap font mixed into 16-bit
// pixels.
//
// The text is walked as text/glyph_font.h says. Inside a drawn cell every pixel is mixed with the
// colour at the effective alpha
//
//   a = g                       at transparency 0
//   a = (g * (255 - t)) >> 8    at transparency t > 0
//
// where g is the glyph's coverage, by the truncating mix of image/pixel_format.h. Unlike the
// painters, printing mixes at every alpha, 0 and 255 included: a pixel of coverage 0 keeps its
// channels but, in 5:5:5, loses bit 15. Cells are clipped to the target: text partly off any edge
// shows its visible part and nothing is written outside the target.
#ifndef VELL_PRINT_LOOP_H
#define VELL_PRINT_LOOP_H

#include <cstdint>

#include "image/pixel_format.h"
#include "image/simd.h"
#include "text/glyph_font.h"

namespace vell {

// Prints text with its top-left at (x, y), clipped to the target; the printing rule of the library.
// Runs on the path chosen at run time (image/simd.h).
void printGlyphs(const PixelTarget &target, const GlyphFont &font, int x, int y,
                 const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                 std::uint32_t mode);

// The same on a given path (one that simdPaths() lists), and the scalar reference loop.
void printGlyphs(SimdPath path, const PixelTarget &target, const GlyphFont &font, int x, int y,
                 const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                 std::uint32_t mode);
void printGlyphsScalar(const PixelTarget &target, const GlyphFont &font, int x, int y,
                       const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                       std::uint32_t mode);

} // namespace vell

#endif
