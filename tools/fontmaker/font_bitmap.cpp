#include "tools/fontmaker/font_bitmap.h"

namespace vell::fontmaker {
namespace {

void put16(std::vector<std::uint8_t> &out, std::uint32_t v) {
    out.push_back(static_cast<std::uint8_t>(v));
    out.push_back(static_cast<std::uint8_t>(v >> 8));
}
void put32(std::vector<std::uint8_t> &out, std::uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

} // namespace

std::vector<std::uint8_t> fontBitmap(const GlyphStrip &strip, bool topDown) {
    // The strip's width is a multiple of 4, so its rows need no padding and glyph row r starts
    // at r * width in the file and in the loaded glyph plane alike.
    const std::uint32_t rows = strip.height + 1, headers = 14 + 40 + 256 * 4;
    const std::uint32_t pixels = strip.width * rows;
    std::vector<std::uint8_t> out;
    out.reserve(headers + pixels);
    out.push_back('B');
    out.push_back('M');
    put32(out, headers + pixels);
    put32(out, 0); // two reserved words
    put32(out, headers);
    put32(out, 40);
    put32(out, strip.width);
    put32(out, topDown ? static_cast<std::uint32_t>(-static_cast<std::int32_t>(rows)) : rows);
    put16(out, 1); // planes
    put16(out, 8); // bits per pixel
    put32(out, 0); // uncompressed
    put32(out, pixels);
    put32(out, 2835); // 72 dots per inch, both ways
    put32(out, 2835);
    put32(out, 0); // 0: all 256 palette entries
    put32(out, 0);
    for (std::uint32_t i = 0; i < 256; ++i)
        put32(out, i * 0x010101);

    std::vector<std::uint8_t> spacing(strip.width, 0);
    for (std::uint32_t end : strip.ends)
        spacing[end] = 255;
    const auto row = [&](std::uint32_t r) {
        const std::uint8_t *first = &strip.glyphs[std::size_t{r} * strip.width];
        out.insert(out.end(), first, first + strip.width);
    };
    if (topDown) {
        for (std::uint32_t r = 0; r < strip.height; ++r)
            row(r);
        out.insert(out.end(), spacing.begin(), spacing.end());
    } else {
        out.insert(out.end(), spacing.begin(), spacing.end());
        for (std::uint32_t r = strip.height; r-- > 0;)
            row(r);
    }
    return out;
}

} // namespace vell::fontmaker
