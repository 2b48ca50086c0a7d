// The font-file parser and the printing loop.
#include "tests/host/font_bytes.h"
#include "text/font_file.h"
#include "text/print_loop.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using vell::FontCell;
using vell::FontImage;
using vtest::fontFileBytes;
using vtest::FontPicture;

TEST(FontFile, BothRowOrdersGiveTheImageColumnsWhateverThePaletteAndPadding) {
    std::mt19937 rng(7);
    for (std::uint32_t width = 1; width <= 9; ++width)
        for (std::uint32_t colours : {0u, 1u, 16u, 256u}) {
            const FontPicture p = vtest::randomPicture(rng, width, 1 + width % 3, 3);
            FontImage up, down;
            const auto upBytes = fontFileBytes(p, false, colours, 0xEE);
            const auto downBytes = fontFileBytes(p, true, colours, 0xEE);
            ASSERT_TRUE(vell::parseFontFile(upBytes.data(), upBytes.size(), up));
            ASSERT_TRUE(vell::parseFontFile(downBytes.data(), downBytes.size(), down));
            EXPECT_EQ(up.glyphs, p.glyphs) << width << " " << colours;
            EXPECT_EQ(down.glyphs, p.glyphs) << width << " " << colours;
            EXPECT_EQ(up.width, width);
            EXPECT_EQ(down.height, p.glyphs.size() / width);
            EXPECT_EQ(0, std::memcmp(up.cells, down.cells, sizeof up.cells));
            EXPECT_EQ(up.count, down.count);
        }
}

TEST(FontFile, MarkersCloseTheCells) {
    const struct {
        std::uint32_t width;
        std::vector<std::uint32_t> markers;
        std::vector<FontCell> cells;
    } cases[] = {
        {16, {5, 9, 12}, {{0, 5}, {5, 4}, {9, 3}}},
        {6, {0, 3}, {{0, 0}, {0, 3}}},
        {7, {}, {}}, // padding (0xEE) holds no markers
    };
    for (const auto &c : cases) {
        FontPicture p{c.width, std::vector<std::uint8_t>(c.width),
                      std::vector<std::uint8_t>(c.width)};
        for (auto m : c.markers)
            p.spacing[m] = 9;
        const auto bytes = fontFileBytes(p, false, 0, 0xEE);
        FontImage font;
        ASSERT_TRUE(vell::parseFontFile(bytes.data(), bytes.size(), font));
        ASSERT_EQ(font.count, c.cells.size());
        for (unsigned k = 0; k < font.count; ++k) {
            EXPECT_EQ(font.cells[k].position, c.cells[k].position) << c.width << ": " << k;
            EXPECT_EQ(font.cells[k].width, c.cells[k].width) << c.width << ": " << k;
        }
    }
    // 230 markers: only the first 224 count, and code 255 is the last of them.
    FontPicture p{240, std::vector<std::uint8_t>(240), std::vector<std::uint8_t>(240)};
    for (int i = 1; i <= 230; ++i)
        p.spacing[i] = 1;
    const auto bytes = fontFileBytes(p, true);
    FontImage font;
    ASSERT_TRUE(vell::parseFontFile(bytes.data(), bytes.size(), font));
    EXPECT_EQ(font.count, vell::kMaxFontChars);
    EXPECT_EQ(vell::fontCell(font.cells, font.count, 255).position, 223u);
    for (unsigned char code : {0, 10, 31})
        EXPECT_EQ(vell::fontCell(font.cells, font.count, code).width, 0u) << int(code);
    const unsigned char lines[][6] = {
        {'A', 'B', 10, 'X', 'Y'}, {'A', 'B', 13, 'X', 'Y'}, {'A', 'B'}};
    for (const auto *text : lines)
        EXPECT_EQ(vell::textLineWidth(font.cells, font.count, text), 2u);
    EXPECT_EQ(vell::textLineWidth(font.cells, font.count, nullptr), 0u);
}

TEST(FontFile, RefusalsLeaveTheFontAsItWas) {
    const FontPicture p = {4, {1, 2, 3, 4}, {0, 7, 0, 7}};
    const struct {
        std::size_t at;
        std::uint32_t value;
        int bytes;
    } patches[] = {
        {0, 'B' | 'B' << 8, 2},
        {26, 2, 2},
        {28, 4, 2},
        {28, 24, 2},
        {30, 1, 4},
        {18, 0, 4},
        {18, 0xFFFFFFFF, 4},
        {18, 0x10001, 4},
        {22, 0, 4},
        {22, 1, 4},
        {22, 0xFFFFFFFF, 4},
        {22, 0x80000000, 4},
        {22, 0x4001, 4},
        {46, 257, 4},
        {18, 0x10000, 4}, // rows beyond the file
    };
    FontImage font;
    font.width = 77;
    for (const auto &patch : patches) {
        auto bytes = fontFileBytes(p, false);
        for (int i = 0; i < patch.bytes; ++i)
            bytes[patch.at + i] = static_cast<std::uint8_t>(patch.value >> 8 * i);
        EXPECT_FALSE(vell::parseFontFile(bytes.data(), bytes.size(), font)) << patch.at;
    }
    const auto whole = fontFileBytes(p, false), palette257 = fontFileBytes(p, false, 257);
    for (std::size_t size : {std::size_t(0), std::size_t(53), whole.size() - 1})
        EXPECT_FALSE(vell::parseFontFile(whole.data(), size, font)) << size;
    EXPECT_FALSE(vell::parseFontFile(palette257.data(), palette257.size(), font));
    auto huge = whole; // 65536 x 16384: a GiB of rows is refused from the headers alone
    huge[18] = 0, huge[20] = 1;
    huge[22] = 0, huge[23] = 0x40;
    EXPECT_EQ(vell::fontFileExtent(huge.data(), huge.size()), 0u);
    EXPECT_EQ(font.width, 77u);
    EXPECT_TRUE(font.glyphs.empty());
}

// The printing rule read pixel by pixel: which cells of the text cover a pixel, and each one's mix.
std::uint16_t printedPixel(std::uint16_t d, int px, int py, const FontImage &font, int x0, int y0,
                           const unsigned char *text, std::uint16_t colour, unsigned t, bool m555) {
    const int greenBits = m555 ? 5 : 6, redShift = m555 ? 10 : 11;
    long long x = x0, y = y0;
    for (; *text; ++text) {
        if (*text == 10) x = x0, y += font.height;
        if (*text < 32) continue;
        const unsigned k = *text - 32u, w = k < font.count ? font.cells[k].width : 0;
        if (px >= x && px < x + w && py >= y && py < y + font.height) {
            const unsigned g =
                font.glyphs[font.cells[k].position + (px - x) + (py - y) * font.width];
            const unsigned a = t == 0 ? g : g * (255 - t) / 256;
            const unsigned shift[3] = {0, 5, unsigned(redShift)},
                           bits[3] = {5, unsigned(greenBits), 5};
            unsigned out = 0;
            for (int c = 0; c < 3; ++c) {
                const unsigned range = 1u << bits[c];
                const unsigned dc = d / (1u << shift[c]) % range,
                               sc = colour / (1u << shift[c]) % range;
                out += (dc * (256 - a) + sc * a) / 256 << shift[c];
            }
            d = static_cast<std::uint16_t>(out);
        }
        x += w;
    }
    return d;
}

TEST(PrintLoop, EveryPixelFollowsTheRuleAndNothingOutsideTheTargetChanges) {
    std::mt19937 rng(1);
    const unsigned char alphabet[] = {' ', '!', '"', '#', '$', '%', 'A', 0xE4, 10, 13, 3};
    for (int round = 0; round < 3000; ++round) {
        const std::uint32_t fontWidth = 1 + rng() % 40;
        const FontPicture p = vtest::randomPicture(rng, fontWidth, 1 + rng() % 9, 1 + rng() % 4);
        FontImage font;
        const auto bytes = fontFileBytes(p, rng() % 2);
        ASSERT_TRUE(vell::parseFontFile(bytes.data(), bytes.size(), font));
        if (rng() % 8 == 0) font.cells[font.count > 0 ? font.count - 1 : 0] = {0, 0};
        unsigned char text[13] = {};
        for (unsigned i = 0, n = rng() % 12; i < n; ++i)
            text[i] = alphabet[rng() % sizeof alphabet];
        const int w = 1 + rng() % 40, h = 1 + rng() % 30, pitchPixels = w + rng() % 4;
        const int x = static_cast<int>(rng() % 90) - 40, y = static_cast<int>(rng() % 70) - 30;
        const std::uint32_t mode = rng() % 4; // 1 is 5:5:5, the others 5:6:5
        const std::uint16_t colour = static_cast<std::uint16_t>(rng());
        const std::uint8_t t =
            rng() % 3 == 0 ? (rng() % 2) * 255 : static_cast<std::uint8_t>(rng());
        // One guard row above and below the target, and the pitch's slack beside it.
        std::vector<std::uint16_t> memory((h + 2) * pitchPixels), before;
        for (auto &v : memory)
            v = static_cast<std::uint16_t>(rng());
        before = memory;
        const vell::PixelTarget target = {reinterpret_cast<std::uint8_t *>(&memory[pitchPixels]),
                                          2 * pitchPixels, w, h};
        const vell::GlyphFont glyphs = {font.glyphs.data(), font.width, font.height, font.cells,
                                        font.count};
        vell::printGlyphs(target, glyphs, x, y, text, colour, t, mode);
        for (int py = -1; py <= h; ++py)
            for (int px = 0; px < pitchPixels; ++px) {
                const std::uint16_t old = before[(py + 1) * pitchPixels + px];
                const bool inside = py >= 0 && py < h && px < w;
                const std::uint16_t want =
                    inside ? printedPixel(old, px, py, font, x, y, text, colour, t, mode == 1)
                           : old;
                ASSERT_EQ(memory[(py + 1) * pitchPixels + px], want)
                    << "round " << round << " at " << px << "," << py;
            }
    }
}

TEST(PrintLoop, RuleSpotValues) {
    // Full white ink on black leaves 1/256 of the background; half ink gives 15 of 31.
    const FontCell cells[1] = {{0, 2}};
    const std::uint8_t plane[2] = {255, 128};
    std::uint16_t pixels[2] = {0x8000, 0};
    const unsigned char space[] = " ";
    vell::printGlyphs({reinterpret_cast<std::uint8_t *>(pixels), 4, 2, 1}, {plane, 2, 1, cells, 1},
                      0, 0, space, 0x7FFF, 0, 1);
    EXPECT_EQ(pixels[0], 30 | 30 << 5 | 30 << 10);
    EXPECT_EQ(pixels[1], 15 | 15 << 5 | 15 << 10);
}

} // namespace
