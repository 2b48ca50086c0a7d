// Font files built in memory for the tests: an 8-bit BMP of glyph rows and a spacing row, as bytes.
#ifndef VELL_TEST_FONT_BYTES_H
#define VELL_TEST_FONT_BYTES_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace vtest {

struct FontPicture {
    std::uint32_t width = 0;
    std::vector<std::uint8_t> glyphs, spacing; // rows of `width` bytes, top first; the marker row
};

// Rows padded with `pad`, `colours` palette entries (0: 256), a pixel offset that points nowhere.
// The header's numbers are stored in the machine's order: x86 and x86-64 are little-endian.
inline std::string fontFileBytes(const FontPicture &p, bool topDown, std::uint32_t colours = 0,
                                 std::uint8_t pad = 0) {
    const auto rows = static_cast<std::uint32_t>(p.glyphs.size() / p.width + 1);
    const std::uint32_t header[] = {
        0, 0, 0x7FFF0000, 40,      p.width, topDown ? 0 - rows : rows, 1 | 8 << 16, 0,
        0, 0, 0,          colours, 0};
    std::string f = "BM" + std::string(reinterpret_cast<const char *>(header), sizeof header);
    f.resize(f.size() + 4 * (colours ? colours : 256), 0x55);
    for (std::uint32_t i = 0; i < rows; ++i) {
        const std::uint32_t r = topDown ? i : rows - 1 - i;
        const auto *row = r + 1 == rows ? p.spacing.data() : &p.glyphs[r * p.width];
        f.insert(f.end(), row, row + p.width);
        f.insert(f.end(), (4 - p.width % 4) % 4, pad);
    }
    return f;
}

// Random coverage, width by rows, about one marker in `gap` columns.
inline FontPicture randomPicture(std::mt19937 &rng, std::uint32_t width, std::uint32_t rows,
                                 unsigned gap) {
    FontPicture p{width, std::vector<std::uint8_t>(width * rows), {}};
    for (auto &g : p.glyphs)
        g = static_cast<std::uint8_t>(rng());
    for (std::uint32_t i = 0; i < width; ++i)
        p.spacing.push_back(rng() % gap == 0 ? static_cast<std::uint8_t>(1 + rng() % 255) : 0);
    return p;
}

} // namespace vtest

#endif
