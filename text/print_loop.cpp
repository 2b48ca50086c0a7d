#include "text/print_loop.h"

#include <algorithm>

namespace vell {

namespace {

// One loop per layout.
template <std::uint32_t Mode>
void printLoop(const PixelTarget &target, const GlyphFont &font, int x, int y,
               const unsigned char *text, std::uint16_t colour, unsigned opacity) {
    walkText(font, text, x, y, target.width, target.height,
             [&](std::size_t glyph, std::int64_t left, std::size_t columns, std::int64_t top) {
                 const std::int64_t first = std::max<std::int64_t>(0, -top);
                 const std::int64_t end = std::min<std::int64_t>(font.height, target.height - top);
                 const std::uint8_t *glyphRow = font.plane + glyph + first * font.stride;
                 std::uint8_t *pixelRow = target.bits + (top + first) * target.pitch + 2 * left;
                 for (std::int64_t r = first; r < end; ++r) {
                     auto *pixel = reinterpret_cast<std::uint16_t *>(pixelRow);
                     for (std::size_t i = 0; i < columns; ++i) {
                         const unsigned g = glyphRow[i];
                         const unsigned a = opacity == 255 ? g : (g * opacity) >> 8;
                         pixel[i] = mix<Mode>(pixel[i], colour, a);
                     }
                     glyphRow += font.stride;
                     pixelRow += target.pitch;
                 }
             });
}

} // namespace

void printGlyphsScalar(const PixelTarget &target, const GlyphFont &font, int x, int y,
                       const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                       std::uint32_t mode) {
    if (text == nullptr || font.plane == nullptr || font.cells == nullptr || target.bits == nullptr)
        return;
    const unsigned opacity = 255u - transparency;
    if (mode == kMode555)
        printLoop<kMode555>(target, font, x, y, text, colour, opacity);
    else
        printLoop<kMode565>(target, font, x, y, text, colour, opacity);
}

} // namespace vell
