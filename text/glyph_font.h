// A loaded bitmap font as its readers see it, the line rule, and the one walk along a text that
// printing and the text images share (platform-free).
//
// Every byte of a text is one character. A line feed (10) goes back to the start column and one
// glyph height down; other codes below 32 take no room; any other code occupies its cell (none
// when the font lacks it, fontCell) and advances by the cell's width. A width is measured of a
// text's first line, which a line feed or a carriage return (13) ends.
#ifndef VELL_GLYPH_FONT_H
#define VELL_GLYPH_FONT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "text/font_file.h"

namespace vell {

struct GlyphFont {
    const std::uint8_t *plane; // height rows of `stride` bytes
    std::uint32_t stride, height;
    const FontCell *cells; // a cell may reach past the stride (a marker in a row's padding)
    unsigned count;
};

constexpr bool startsNewLine(unsigned char c) {
    return c == 10;
}
constexpr bool endsMeasuredLine(unsigned char c) {
    return c == 0 || c == 10 || c == 13;
}

inline FontCell cellOf(const GlyphFont &font, unsigned char c) {
    return fontCell(font.cells, font.count, c);
}

// The width of the first line of a zero-terminated text: the sum of its characters' widths. A
// null text is 0 wide.
inline std::uint64_t lineWidth(const GlyphFont &font, const unsigned char *text) {
    std::uint64_t width = 0;
    for (; text != nullptr && !endsMeasuredLine(*text); ++text)
        width += cellOf(font, *text).width;
    return width;
}

// The columns of a cell that lie in the plane's row: a cell reaching past it (made by a marker in
// the padding of the file's rows, or by a damaged table) is cut at its end, so no reader goes past
// a glyph row; its other columns are blank.
inline std::uint32_t columnsInPlane(const GlyphFont &font, const FontCell &cell) {
    return cell.position < font.stride ? std::min(cell.width, font.stride - cell.position) : 0;
}

// Walks text with its top-left at (x, y) over a plane of width x height pixels, and calls
// visit(glyph, x, columns, y) for each cell's part that lies inside the plane's columns, on a
// line of which at least one row lies inside it: glyph columns [glyph, glyph + columns) of every
// glyph row go to columns [x, x + columns) of the line whose top row is y. Positions are kept in
// 64 bits, so no text, however long, overflows them.
template <class Visit>
void walkText(const GlyphFont &font, const unsigned char *text, std::int64_t x, std::int64_t y,
              std::int64_t width, std::int64_t height, Visit &&visit) {
    const std::int64_t x0 = x;
    for (; *text != 0; ++text) {
        const unsigned char c = *text;
        if (startsNewLine(c)) {
            x = x0;
            y += font.height;
            continue;
        }
        if (c < 32) continue;
        const FontCell cell = cellOf(font, c);
        const std::int64_t left = std::max<std::int64_t>(0, -x);
        const std::int64_t right = std::min<std::int64_t>(columnsInPlane(font, cell), width - x);
        if (left < right && y < height && y + std::int64_t{font.height} > 0)
            visit(std::size_t(cell.position + left), x + left, std::size_t(right - left), y);
        x += cell.width;
    }
}

} // namespace vell

#endif
