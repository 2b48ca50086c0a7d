#include "image/text_image.h"

#include <algorithm>
#include <cstring>

namespace vell {

void reduceRendering(const std::uint8_t *bits, std::ptrdiff_t pitch, std::uint16_t white,
                     unsigned factor, std::uint32_t width, std::uint32_t height,
                     std::uint8_t *alpha) {
    const unsigned unit = factor <= 16 ? 256 / (factor * factor) : 0;
    for (std::uint32_t cy = 0; cy < height; ++cy)
        for (std::uint32_t cx = 0; cx < width; ++cx) {
            unsigned n = 0;
            for (unsigned v = 0; v < factor; ++v) {
                const auto *row = reinterpret_cast<const std::uint16_t *>(
                    bits + static_cast<std::ptrdiff_t>(cy * factor + v) * pitch);
                for (unsigned u = 0; u < factor; ++u)
                    n += row[std::size_t{cx} * factor + u] == white;
            }
            alpha[std::size_t{cy} * width + cx] =
                static_cast<std::uint8_t>(std::min(255u, n * unit));
        }
}

std::uint64_t textLines(const unsigned char *text) {
    std::uint64_t lines = 1;
    for (; *text != 0; ++text)
        lines += *text == 10;
    return lines;
}

void copyGlyphs(const GlyphFont &font, const unsigned char *text, std::uint32_t width,
                std::uint32_t height, std::uint8_t *alpha) {
    std::memset(alpha, 0, std::size_t{width} * height);
    std::uint64_t column = 0, row = 0;
    for (; *text != 0; ++text) {
        const unsigned char c = *text;
        if (c == 10) {
            column = 0;
            row += font.height;
            continue;
        }
        if (c < 32) continue;
        const FontCell cell = fontCell(font.cells, font.count, c);
        const std::uint64_t w = columnsInPlane(font, cell);
        const std::uint64_t shown = column < width ? std::min<std::uint64_t>(w, width - column) : 0;
        for (std::uint32_t r = 0; shown > 0 && r < font.height && row + r < height; ++r)
            std::memcpy(alpha + (row + r) * width + column,
                        font.plane + cell.position + std::size_t{r} * font.stride, shown);
        column += cell.width;
    }
}

} // namespace vell
