// A TDirectFont as the platform-free readers take it (text/glyph_font.h): its glyph plane and a
// copy of its cell table. The one place where the font's public fields are read: every width,
// position and cell of the font, TDirectFont's own getters included, is looked up through it.
#ifndef VELL_FONT_GLYPHS_H
#define VELL_FONT_GLYPHS_H

#include "VellBase.h"

#include "text/glyph_font.h"

#include <algorithm>

namespace vell {

struct FontGlyphs {
    FontCell cells[kMaxFontChars];
    GlyphFont font;

    // The font holds codes 32 .. 32 + bLastIndex, or none at all while it has no table or no
    // characters (wCharCount 0, which bLastIndex cannot say).
    explicit FontGlyphs(const TDirectFont &f)
        : font{f.lpFontData, f.dwWidth, f.dwHeight, cells,
               f.lpSpacings != nullptr && f.wCharCount != 0
                   ? std::min<unsigned>(f.bLastIndex + 1u, kMaxFontChars)
                   : 0} {
        for (unsigned k = 0; k < font.count; ++k)
            cells[k] = {f.lpSpacings[k][0], f.lpSpacings[k][1]};
    }
    FontGlyphs(const FontGlyphs &) = delete;
    FontGlyphs &operator=(const FontGlyphs &) = delete;
};

} // namespace vell

#endif
