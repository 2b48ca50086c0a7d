// The printing rule of the library (platform-free): text in a bitmap font mixed into 16-bit
// pixels.
//
// Every byte of the text is one character. A line feed (10) goes back to the start column and one
// glyph height down; other codes below 32 draw nothing and do not advance; any other code draws
// its cell (none when the font lacks it) and advances by the cell's width. Inside a drawn cell
// every pixel is mixed with the colour at the effective alpha
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

#include <algorithm>
#include <cstdint>

#include "image/pixel_format.h"
#include "image/simd.h"
#include "text/font_file.h"

namespace vell {

struct GlyphFont {
    const std::uint8_t *plane; // height rows of `stride` bytes
    std::uint32_t stride, height;
    const FontCell *cells; // each cell inside the plane: position + width <= stride
    unsigned count;
};

// The columns of a cell that lie in the plane's row: a cell reaching past it (only a damaged
// table has one) is cut at its end, so no reader goes past a glyph row.
inline std::uint32_t columnsInPlane(const GlyphFont &font, const FontCell &cell) {
    return cell.position < font.stride ? std::min(cell.width, font.stride - cell.position) : 0;
}

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
