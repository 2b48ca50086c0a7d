// The font-file parser, the cell lookup, the line width, the alpha planes of text images (reduced
// from a supersampled rendering, or copied from glyphs) and the walk along a text, which is also
// checked through what it draws: printing in simd_test.cpp, and the text images here.
#include "image/text_image.h"
#include "tests/host/font_bytes.h"
#include "text/glyph_font.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using vtest::fontFileBytes;

const std::uint8_t *bytesOf(const std::string &bytes) {
    return reinterpret_cast<const std::uint8_t *>(bytes.data());
}
bool parse(const std::string &bytes, vell::FontImage &out, std::size_t cut = 0) {
    return vell::parseFontFile(bytesOf(bytes), bytes.size() - cut, out);
}

std::string str(const vell::Bytes &b) {
    return {reinterpret_cast<const char *>(b.data()), b.size()};
}

// The plane holds the image's columns of the stored rows, top row first; the padding (0xEE here)
// is left out. A font of the spacing row alone has no glyph rows.
TEST(FontFile, EitherRowOrderKeepsTheImageColumnsAndScansTheMarkerRowWhole) {
    std::mt19937 rng(7);
    for (std::uint32_t width = 1; width <= 9; ++width) {
        const vtest::FontPicture p = vtest::randomPicture(rng, width, width % 3, 3);
        vell::FontImage up, down;
        ASSERT_TRUE(parse(fontFileBytes(p, false, width * 3 % 17, 0xEE), up));
        ASSERT_TRUE(parse(fontFileBytes(p, true, 0, 0xEE), down));
        EXPECT_EQ(up.width, width);
        EXPECT_EQ(up.height, width % 3);
        EXPECT_EQ(str(up.glyphs), std::string(p.glyphs.begin(), p.glyphs.end())) << width;
        EXPECT_EQ(str(down.glyphs), str(up.glyphs)) << width;
        EXPECT_EQ(0, std::memcmp(up.cells, down.cells, sizeof up.cells)) << width;
        // Every marker counts, those in the padding (0xEE here) too.
        const std::size_t rowSize = (width + 3) / 4 * 4;
        EXPECT_EQ(up.count, rowSize - std::count(p.spacing.begin(), p.spacing.end(), 0));
    }
}

std::string cellsOf(const vell::FontImage &font, unsigned first, unsigned last) {
    std::string all;
    for (unsigned c = first; c <= last; ++c) {
        const vell::FontCell cell = vell::fontCell(font.cells, font.count, c);
        all += std::to_string(cell.position) + "+" + std::to_string(cell.width) + " ";
    }
    return all;
}

TEST(FontFile, MarkersCloseTheCells) {
    // A marker in column 0 closes an empty cell, markers at 5, 9 and 12 cells 5, 4 and 3 wide;
    // markers after the 224th do not count. Codes below 32 have no cell.
    vtest::FontPicture p{240, std::vector<std::uint8_t>(240), std::vector<std::uint8_t>(240)};
    for (int column = 0; column < 240; ++column)
        p.spacing[column] = column > 11 || column == 0 || column == 5 || column == 9;
    vell::FontImage font;
    ASSERT_TRUE(parse(fontFileBytes(p, false), font));
    EXPECT_EQ(font.count, vell::kMaxFontChars);
    EXPECT_EQ(cellsOf(font, 31, 35), "0+0 0+0 0+5 5+4 9+3 ");
    EXPECT_EQ(cellsOf(font, 255, 255), "231+1 ");
    const auto *text = reinterpret_cast<const unsigned char *>("!\"\r#\0!\"\n#");
    const vell::GlyphFont glyphs = {font.glyphs.data(), font.width, font.height, font.cells,
                                    font.count};
    EXPECT_EQ(vell::lineWidth(glyphs, text), 9u);
    EXPECT_EQ(vell::lineWidth(glyphs, text + 5), 9u);
    EXPECT_EQ(vell::lineWidth(glyphs, nullptr), 0u);
}

TEST(FontFile, RefusesWhatIsNotAFont) {
    // Not BM, 2 planes, 4 or 24 bits, compressed, width 0, -1 or 65537, height 0 or INT_MIN.
    const std::uint32_t patches[][3] = {
        {0, 0x4242, 2}, {26, 2, 2},   {28, 4, 2},     {28, 24, 2}, {30, 1, 4},
        {18, 0, 4},     {18, ~0u, 4}, {18, 65537, 4}, {22, 0, 4},  {22, 1u << 31, 4}};
    vell::FontImage font;
    font.width = 77;
    for (const auto &patch : patches) {
        auto bytes = fontFileBytes({4, {1, 2, 3, 4}, {0, 7, 0, 7}}, false);
        std::memcpy(&bytes[patch[0]], &patch[1], patch[2]);
        EXPECT_FALSE(parse(bytes, font)) << patch[0] << " " << patch[1];
    }
    const vtest::FontPicture p{8, std::vector<std::uint8_t>(16), std::vector<std::uint8_t>(8, 1)};
    auto huge = fontFileBytes(p, false);
    huge[18] = 0, huge[20] = 1, huge[22] = 0, huge[23] = 0x40; // 65536 x 16384: a GiB of rows
    EXPECT_EQ(vell::fontFileExtent(bytesOf(huge), huge.size()), 0u);
    EXPECT_FALSE(parse(fontFileBytes(p, false, 257), font)) << "257 colours";
    EXPECT_FALSE(parse(fontFileBytes(p, true), font, 1)) << "a byte short";
    EXPECT_EQ(font.width, 77u);
}

TEST(TextImage, ReductionCountsExactWhiteOnly) {
    constexpr std::uint16_t kWhite = 0xFFFF;
    // A 2-pixel-wide image at each factor: the left block all white, the right one white in one
    // word and near-white (not ink) in the others.
    const struct {
        unsigned factor;
        std::uint8_t left, right;
    } cases[] = {{1, 255, 255}, {2, 255, 64}, {3, 252, 28}, {4, 255, 16}, {17, 0, 0}};
    for (const auto &c : cases) {
        const unsigned f = c.factor, pitchWords = 2 * f + 3; // rows padded
        std::vector<std::uint16_t> rendering(pitchWords * f, 0x1234);
        for (unsigned v = 0; v < f; ++v)
            for (unsigned u = 0; u < 2 * f; ++u)
                rendering[v * pitchWords + u] = u < f || (u == f && v == 0) ? kWhite : 0xFFDF;
        std::uint8_t alpha[2] = {};
        vell::reduceRendering(reinterpret_cast<const std::uint8_t *>(rendering.data()),
                              2 * pitchWords, kWhite, f, 2, 1, alpha);
        EXPECT_EQ(alpha[0], c.left) << "factor " << f;
        EXPECT_EQ(alpha[1], c.right) << "factor " << f;
    }
}

TEST(TextImage, GlyphsAreCopiedLineBelowLine) {
    // Characters 32 ' ' (2 wide), 33 '!' (1 wide), 34 '"' (3 wide) in a 2-row plane of stride 8.
    const std::uint8_t plane[] = {1, 2, 3, 4, 5, 6, 0, 0, 11, 12, 13, 14, 15, 16, 0, 0};
    const vell::FontCell cells[] = {{0, 2}, {2, 1}, {3, 3}};
    const vell::GlyphFont font = {plane, 8, 2, cells, 3};
    const auto *text = reinterpret_cast<const unsigned char *>("! \r#\n\"\"\n!");
    ASSERT_EQ(vell::textLines(text), 3u);
    std::vector<std::uint8_t> alpha(4 * 6, 0xEE);
    vell::copyGlyphs(font, text, 4, 6, alpha.data());
    const std::vector<std::uint8_t> want = {
        3,  1,  2,  0,  // "! ": '\r' and '#' (not in the font) take no room
        13, 11, 12, 0,  //
        4,  5,  6,  4,  // '""' is wider than the plane: cut at its edge
        14, 15, 16, 14, //
        3,  0,  0,  0,  // right of a shorter line: 0
        13, 0,  0,  0};
    EXPECT_EQ(alpha, want);
}

// The walk along a text on its own, on a 5 x 4 plane: glyph@x,y of each visible cell part and its
// columns. Cells: ' ' 0+2, '!' 2+1, '"' 3+3 and '#' 5+4, which reaches past the stride of 6.
TEST(GlyphFont, WalkTextVisitsTheVisiblePartOfEachCell) {
    const vell::FontCell cells[] = {{0, 2}, {2, 1}, {3, 3}, {5, 4}};
    const vell::GlyphFont font = {nullptr, 6, 2, cells, 4};
    std::string visits;
    vell::walkText(font, reinterpret_cast<const unsigned char *>("!\" \r#\n\"#\n\n!"), -1, -1, 5, 4,
                   [&](std::size_t glyph, std::int64_t x, std::size_t columns, std::int64_t y) {
                       visits += std::to_string(glyph) + "@" + std::to_string(x) + "," +
                                 std::to_string(y) + "x" + std::to_string(columns) + " ";
                   });
    // '!' lies left of the plane, '#' right of it or cut at the stride; the last line below it.
    EXPECT_EQ(visits, "3@0,-1x3 0@3,-1x2 4@0,1x2 5@2,1x1 ");
}

} // namespace
