// Fuzzes the font-file parser with arbitrary bytes: it must read nothing outside the input, and a
// font it accepts must have its cells side by side within the stored rows (padding included);
// printing takes only their columns inside the glyph plane.
#include "text/print_loop.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    vell::FontImage font;
    if (!vell::parseFontFile(data, size, font)) return 0;
    std::uint32_t end = 0;
    for (unsigned k = 0; k < font.count; end += font.cells[k++].width)
        if (font.cells[k].position != end) std::abort();
    if (end > (font.width + 3) / 4 * 4 ||
        font.glyphs.size() != std::size_t(font.width) * font.height)
        std::abort();
    std::uint16_t pixels[24 * 16] = {};
    const unsigned char text[] = {' ', '!', 10, '#', 0xFF, 0};
    vell::printGlyphs({reinterpret_cast<std::uint8_t *>(pixels), 48, 24, 16},
                      {font.glyphs.data(), font.width, font.height, font.cells, font.count}, -3, -2,
                      text, 0xFFFF, 0, 2);
    return 0;
}
