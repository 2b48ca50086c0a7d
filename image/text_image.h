// The pixel work of images made from text (platform-free): an alpha plane reduced from a
// supersampled rendering, or copied from a bitmap font's glyphs.
#ifndef VELL_TEXT_IMAGE_H
#define VELL_TEXT_IMAGE_H

#include <cstddef>
#include <cstdint>

#include "text/glyph_font.h"

namespace vell {

// Every pixel of a width x height alpha plane from a rendering `factor` times larger in each
// direction (16-bit words, `pitch` bytes a row): n, the number of the factor x factor block's
// words that are exactly `white`, gives alpha min(255, n * (256 / factor^2)). Only exact white
// counts as ink. A factor of 17 or more gives a unit of 0, so every alpha is 0.
void reduceRendering(const std::uint8_t *bits, std::ptrdiff_t pitch, std::uint16_t white,
                     unsigned factor, std::uint32_t width, std::uint32_t height,
                     std::uint8_t *alpha);

// The number of lines of a text: 1 + its line feeds.
std::uint64_t textLines(const unsigned char *text);

// Copies the glyphs of text into a width x height alpha plane, line below line from column 0,
// every coverage byte as it is. Pixels no glyph covers are 0: right of a shorter line and, in
// every line, where nothing was drawn. A line wider than the plane is cut at its right edge.
void copyGlyphs(const GlyphFont &font, const unsigned char *text, std::uint32_t width,
                std::uint32_t height, std::uint8_t *alpha);

} // namespace vell

#endif
