// Font files built in memory for the tests: an 8-bit BMP of glyph rows and a spacing row.
#ifndef VELL_TEST_FONT_BYTES_H
#define VELL_TEST_FONT_BYTES_H

#include <cstdint>
#include <random>
#include <vector>

namespace vtest {

struct FontPicture {
    std::uint32_t width = 0;
    std::vector<std::uint8_t> glyphs;  // rows of `width` coverage bytes, top row first
    std::vector<std::uint8_t> spacing; // `width` bytes, non-zero: a marker
};

// The file: rows padded to 4 bytes with `pad`, bottom-up unless topDown, `colours` palette
// entries (0: 256), and a pixel-row offset that points nowhere (readers must not use it).
inline std::vector<std::uint8_t> fontFileBytes(const FontPicture &p, bool topDown,
                                               std::uint32_t colours = 0, std::uint8_t pad = 0) {
    const auto rows = static_cast<std::uint32_t>(p.glyphs.size() / p.width + 1);
    std::vector<std::uint8_t> f(54 + 4 * (colours ? colours : 256), 0x55);
    auto put = [&](std::size_t at, std::uint32_t v, int n) {
        for (int i = 0; i < n; ++i)
            f[at + i] = static_cast<std::uint8_t>(v >> 8 * i);
    };
    put(0, 'B' | 'M' << 8, 2);
    put(10, 0x7FFF0000, 4);
    put(14, 40, 4);
    put(18, p.width, 4);
    put(22, topDown ? 0u - rows : rows, 4);
    put(26, 1, 2);
    put(28, 8, 2);
    put(30, 0, 4);
    put(46, colours, 4);
    for (std::uint32_t i = 0; i < rows; ++i) {
        const std::uint32_t r = topDown ? i : rows - 1 - i;
        const std::uint8_t *row = r + 1 == rows ? p.spacing.data() : &p.glyphs[r * p.width];
        f.insert(f.end(), row, row + p.width);
        f.insert(f.end(), (4 - p.width % 4) % 4, pad);
    }
    return f;
}

// A random picture: width by glyphRows of random coverage, about one marker in `gap` columns.
inline FontPicture randomPicture(std::mt19937 &rng, std::uint32_t width, std::uint32_t glyphRows,
                                 unsigned gap) {
    FontPicture p{width, std::vector<std::uint8_t>(width * glyphRows), {}};
    for (auto &g : p.glyphs)
        g = static_cast<std::uint8_t>(rng());
    for (std::uint32_t i = 0; i < width; ++i)
        p.spacing.push_back(rng() % gap == 0 ? static_cast<std::uint8_t>(1 + rng() % 255) : 0);
    return p;
}

} // namespace vtest

#endif
