// The font file: an uncompressed 8-bit BMP whose glyph rows carry coverage (the pixel's palette
// index is its coverage, 0 to 255) and whose bottom row marks the character cells (platform-free).
//
//   file header (14 bytes)   "BM" ...
//   info header (40 bytes)   width, height (negative: top row first), 1 plane, 8 bits,
//   uncompressed,
//                            colours used (0 means 256)
//   palette                  colours-used entries of 4 bytes, skipped; its values play no part
//   pixel rows               height rows of ((8 * width + 31) / 32) * 4 bytes, read straight after
//                            the palette whatever the file header's offset says
//
// The bottom row is the spacing row: each non-zero byte is a marker closing the cell of the next
// character, from code 32 on. The markers at m1, m2, ... give code 32 the columns 0 .. m1 - 1,
// code 33 m1 .. m2 - 1, and so on; columns after the last marker belong to no character. At most
// 224 markers count (codes 32 to 255).
//
// Choices of this library, made where the file leaves room:
//   - the glyph plane keeps only the image's own columns: row r starts at r * width, whatever the
//     file's row padding (every reader steps by the width);
//   - only the image's columns of the spacing row are scanned, so a marker in the padding after
//     the last column makes no cell and every cell lies inside the glyph plane;
//   - a file shorter than its headers, palette and rows say, an image height of 0 or 1 (no glyph
//     row), a width of 0 or below, a palette of more than 256 entries, and sizes beyond
//     kMaxFontWidth, kMaxFontHeight or kMaxFontRowBytes are refused like a file of the wrong kind.
#ifndef VELL_FONT_FILE_H
#define VELL_FONT_FILE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vell {

constexpr unsigned kMaxFontChars = 224;
constexpr std::size_t kFontHeaderSize = 54; // file header and info header
constexpr std::uint32_t kMaxFontWidth = 1u << 16;
constexpr std::uint32_t kMaxFontHeight = 1u << 14;
constexpr std::uint64_t kMaxFontRowBytes = 64u << 20; // all pixel rows of the file together

struct FontCell {
    std::uint32_t position, width;
};

struct FontImage {
    std::uint32_t width = 0;          // glyph row stride: the file's width
    std::uint32_t height = 0;         // glyph rows: the image height - 1
    std::vector<std::uint8_t> glyphs; // height rows of `width` bytes, top row first
    FontCell cells[kMaxFontChars] = {};
    unsigned count = 0; // characters 32 .. 31 + count
};

// The number of bytes a font file must hold (headers, palette and pixel rows), read from its
// first kFontHeaderSize bytes; 0 when those are not the headers of an acceptable font file.
std::size_t fontFileExtent(const std::uint8_t *header, std::size_t size);

// Reads a font file held in memory; false (out unchanged) when it is not an acceptable font file.
// Bytes after the pixel rows are ignored.
bool parseFontFile(const std::uint8_t *data, std::size_t size, FontImage &out);

// Builds the cell table from a spacing row of `columns` bytes; returns the number of characters.
unsigned scanSpacingRow(const std::uint8_t *row, std::size_t columns,
                        FontCell (&cells)[kMaxFontChars]);

// The cell of character c in a table of `count` characters; {0, 0} when the font lacks it. Codes
// below 32 never have a cell.
inline FontCell fontCell(const FontCell *cells, unsigned count, unsigned char c) {
    const unsigned k = static_cast<unsigned char>(c - 32);
    return k < count ? cells[k] : FontCell{0, 0};
}

// The width of the first line of a zero-terminated text: the sum of its characters' widths up to
// the first byte 0, 10 or 13. A null text is 0 wide.
std::uint64_t textLineWidth(const FontCell *cells, unsigned count, const unsigned char *text);

} // namespace vell

#endif
