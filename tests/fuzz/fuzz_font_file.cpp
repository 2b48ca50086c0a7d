// Fuzzes the font-file parser with arbitrary bytes: it must read nothing outside the input, and a
// font it accepts must keep every cell inside its glyph plane, which printing then relies on.
#include "text/font_file.h"
#include "text/print_loop.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    vell::FontImage font;
    if (!vell::parseFontFile(data, size, font)) return 0;
    const std::size_t extent = vell::fontFileExtent(data, size);
    if (extent == 0 || extent > size || font.glyphs.size() != std::size_t(font.width) * font.height)
        std::abort();
    std::uint32_t next = 0;
    for (unsigned k = 0; k < font.count; ++k) {
        if (font.cells[k].position != next) std::abort();
        next += font.cells[k].width;
    }
    if (next > font.width || font.count > vell::kMaxFontChars) std::abort();

    std::uint16_t pixels[24 * 16] = {};
    const unsigned char text[] = {' ', '!', 10, '#', 0xFF, 0};
    vell::printGlyphs({reinterpret_cast<std::uint8_t *>(pixels), 48, 24, 16},
                      {font.glyphs.data(), font.width, font.height, font.cells, font.count}, -3, -2,
                      text, 0xFFFF, 0, 2);
    return 0;
}
