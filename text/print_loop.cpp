#include "text/print_loop.h"

#include <algorithm>

namespace vell {

namespace {

// One loop per layout; positions are kept in 64 bits so that no text, however long, overflows them.
template <std::uint32_t Mode>
void printLoop(const PixelTarget &target, const GlyphFont &font, std::int64_t x, std::int64_t y,
               const unsigned char *text, std::uint16_t colour, unsigned opacity) {
    const std::int64_t x0 = x, height = font.height;
    for (; *text != 0; ++text) {
        const unsigned char c = *text;
        if (c == 10) {
            x = x0;
            y += height;
            continue;
        }
        if (c < 32) continue;
        const FontCell cell = fontCell(font.cells, font.count, c);
        const std::int64_t width = columnsInPlane(font, cell);
        const std::int64_t left = std::max<std::int64_t>(0, -x);
        const std::int64_t right = std::min<std::int64_t>(width, target.width - x);
        const std::int64_t top = std::max<std::int64_t>(0, -y);
        const std::int64_t bottom = std::min<std::int64_t>(height, target.height - y);
        if (left < right && top < bottom) {
            const std::uint8_t *glyphRow = font.plane + cell.position + top * font.stride + left;
            std::uint8_t *pixelRow = target.bits + (y + top) * target.pitch + 2 * (x + left);
            for (std::int64_t r = top; r < bottom; ++r) {
                auto *pixel = reinterpret_cast<std::uint16_t *>(pixelRow);
                for (std::int64_t i = 0; i < right - left; ++i) {
                    const unsigned g = glyphRow[i];
                    const unsigned a = opacity == 255 ? g : (g * opacity) >> 8;
                    pixel[i] = mix<Mode>(pixel[i], colour, a);
                }
                glyphRow += font.stride;
                pixelRow += target.pitch;
            }
        }
        x += cell.width;
    }
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
