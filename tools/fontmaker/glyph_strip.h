// The glyphs of a font file, rendered by FreeType into one strip of cells: the picture a font file
// of the library holds, before it is written.
#ifndef VELL_FONTMAKER_GLYPH_STRIP_H
#define VELL_FONTMAKER_GLYPH_STRIP_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/fontmaker/code_pages.h"

namespace vell::fontmaker {

struct StripOptions {
    unsigned size = 16; // glyph rows, the line height of printed text: 1 to 255
    const CodePage *codePage = nullptr;
    bool mono = false;    // hinted black-and-white glyphs (0 or 255) instead of coverage
    unsigned spacing = 1; // blank columns after each glyph
    unsigned first = 32;  // codes from 32 to first - 1 get narrow blank cells
    unsigned last = 255;  // the last code in the font
};

// How the size maps to the font: the glyphs are drawn at the largest whole pixels-per-em size at
// which the font's ascender plus descender (each rounded up to whole pixels) fill at most `size`
// rows. The baseline lies `ascender` rows below the top of the cell, or lower where a glyph of the
// range reaches above the ascender; a size at which the glyphs then need more than `size` rows is
// not taken. Rows left over stay blank at the bottom. A glyph's cell is its advance, widened
// where its ink reaches left of its origin or right of its advance, then `spacing` blank columns;
// a code without a glyph (none in the code page, or none in the font) gets a blank cell of one
// column, so every later code keeps its place.
struct GlyphStrip {
    std::uint32_t width = 0;          // image width: past the last marker, a multiple of 4
    std::uint32_t height = 0;         // glyph rows
    std::vector<std::uint8_t> glyphs; // height rows of width coverage bytes, top row first
    std::vector<std::uint32_t> ends;  // the column where each cell ends, codes 32 upward
    unsigned pixelsPerEm = 0, ascender = 0, descender = 0;
    unsigned baseline = 0; // rows from the top of the cell to the baseline
    unsigned blanks = 0;   // codes from `first` to `last` without a glyph
    std::string family;    // the font's family and style, for messages
};

// A font's file in memory, read from a path or taken from an installed font (installed_font.h).
struct FontSource {
    std::string name;                  // the path or the face name, for messages
    std::vector<std::uint8_t> bytes;   // the whole file
    std::string family;                // of a collection, the face of this family is taken
    bool bold = false, italic = false; // and the face must be bold or italic itself
};

// Reads the file at path (UTF-8). False, with one line in error, when it cannot be read.
bool readFontFile(const std::string &path, FontSource &font, std::string &error);

// Renders the strip of the font. False, with one line in error, when the font is not a scalable
// font with Unicode characters (or lacks the style asked for), or when no size fits.
bool makeGlyphStrip(const FontSource &font, const StripOptions &options, GlyphStrip &strip,
                    std::string &error);

} // namespace vell::fontmaker

#endif
