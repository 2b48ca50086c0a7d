// A glyph strip as a font file of the library: an uncompressed 8-bit BMP whose palette index is
// the coverage (the palette is a grey ramp, so viewers show white ink on black), with one more
// row at the bottom, the spacing row, holding a marker (255) in the column where each cell ends.
#ifndef VELL_FONTMAKER_FONT_BITMAP_H
#define VELL_FONTMAKER_FONT_BITMAP_H

#include <cstdint>
#include <vector>

#include "tools/fontmaker/glyph_strip.h"

namespace vell::fontmaker {

// The file's bytes; rows bottom row first unless topDown.
std::vector<std::uint8_t> fontBitmap(const GlyphStrip &strip, bool topDown);

} // namespace vell::fontmaker

#endif
