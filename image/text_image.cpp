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
        lines += startsNewLine(*text);
    return lines;
}

void copyGlyphs(const GlyphFont &font, const unsigned char *text, std::uint32_t width,
                std::uint32_t height, std::uint8_t *alpha) {
    std::memset(alpha, 0, std::size_t{width} * height);
    walkText(font, text, 0, 0, width, height,
             [&](std::size_t glyph, std::int64_t column, std::size_t columns, std::int64_t row) {
                 const std::int64_t rows = std::min<std::int64_t>(font.height, height - row);
                 for (std::int64_t r = 0; r < rows; ++r)
                     std::memcpy(alpha + std::size_t(row + r) * width + std::size_t(column),
                                 font.plane + glyph + std::size_t(r) * font.stride, columns);
             });
}

} // namespace vell
