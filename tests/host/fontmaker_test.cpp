// The font maker: what it writes, the library reads, and each glyph is FreeType's own rendering of
// the code page's character, placed on the common baseline.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "text/font_file.h"
#include "tools/fontmaker/font_bitmap.h"
#include "tools/fontmaker/glyph_strip.h"

namespace {

using namespace vell::fontmaker;

// Runs the tool on DejaVu Sans and returns the file it wrote.
std::vector<std::uint8_t> runTool(const std::string &options) {
    const std::string out = testing::TempDir() + "fontmaker_test.bmp";
    std::remove(out.c_str());
    const std::string command = std::string(VELL_FONTMAKER) + " " + options + " " +
                                VELL_DEJAVU_SANS + " " + out + " >/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream file(out, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    Face() { FT_Init_FreeType(&library), FT_New_Face(library, VELL_DEJAVU_SANS, 0, &face); }
    ~Face() { FT_Done_Face(face), FT_Done_FreeType(library); }
};

TEST(FontMaker, GlyphsAreFreeTypesRenderingOnOneBaseline) {
    const struct {
        const char *codePage;
        unsigned size, spacing, first, last;
        bool mono;
    } cases[] = {
        {"1252", 16, 1, 32, 255, false}, {"1251", 20, 0, 32, 255, false},
        {"437", 20, 2, 32, 255, false}, // box drawing reaches above the ascender
        {"1250", 11, 1, 32, 255, true},  {"latin1", 40, 3, 65, 90, false},
    };
    Face ft;
    ASSERT_NE(ft.face, nullptr);
    for (const auto &test : cases) {
        SCOPED_TRACE(std::string("code page ") + test.codePage + ", size " +
                     std::to_string(test.size));
        StripOptions options{
            test.size, findCodePage(test.codePage), test.mono, test.spacing, test.first, test.last};
        GlyphStrip strip;
        std::string error;
        FontSource source;
        ASSERT_TRUE(readFontFile(VELL_DEJAVU_SANS, source, error)) << error;
        ASSERT_TRUE(makeGlyphStrip(source, options, strip, error)) << error;
        const std::vector<std::uint8_t> file = fontBitmap(strip, false);
        vell::FontImage font;
        ASSERT_TRUE(vell::parseFontFile(file.data(), file.size(), font));
        ASSERT_EQ(font.count, test.last - 31);
        ASSERT_EQ(font.height, test.size);
        if (&test == cases) { // the tool's defaults: it writes this file, or its rows top first
            EXPECT_EQ(runTool(""), file);
            const std::vector<std::uint8_t> topDown = runTool("--top-down");
            vell::FontImage again;
            ASSERT_TRUE(vell::parseFontFile(topDown.data(), topDown.size(), again));
            ASSERT_EQ(again.glyphs.size(), font.glyphs.size());
            EXPECT_EQ(std::memcmp(again.glyphs.data(), font.glyphs.data(), font.glyphs.size()), 0);
            EXPECT_EQ(std::memcmp(again.cells, font.cells, sizeof font.cells), 0);
        }

        FT_Set_Pixel_Sizes(ft.face, 0, strip.pixelsPerEm);
        for (unsigned code = 32; code <= test.last; ++code) {
            const vell::FontCell cell = font.cells[code - 32];
            const char32_t ch = code < test.first ? 0 : toUnicode(*options.codePage, code);
            std::vector<std::uint8_t> expected(font.height * cell.width, 0);
            if (ch == 0 || FT_Get_Char_Index(ft.face, ch) == 0) {
                ASSERT_EQ(cell.width, 1u) << "code " << code;
            } else {
                ASSERT_EQ(FT_Load_Char(ft.face, ch,
                                       FT_LOAD_RENDER | (test.mono ? FT_LOAD_TARGET_MONO : 0)),
                          0);
                const FT_GlyphSlot slot = ft.face->glyph;
                const FT_Bitmap &bitmap = slot->bitmap;
                // The origin lies far enough right for the ink; the cell holds advance and ink.
                const int origin = std::max(0, -slot->bitmap_left);
                const int advance = static_cast<int>((slot->advance.x + 32) >> 6);
                const int left = origin + slot->bitmap_left;
                ASSERT_EQ(cell.width,
                          std::max(origin + advance, left + int(bitmap.width)) + test.spacing)
                    << "code " << code;
                for (unsigned r = 0; r < bitmap.rows; ++r)
                    for (unsigned c = 0; c < bitmap.width; ++c) {
                        const std::uint8_t *row = bitmap.buffer + r * bitmap.pitch;
                        const int y = static_cast<int>(strip.baseline) - slot->bitmap_top + r;
                        expected.at(y * cell.width + left + c) =
                            test.mono ? (row[c / 8] >> (7 - c % 8) & 1) * 255 : row[c];
                    }
            }
            std::vector<std::uint8_t> actual;
            for (unsigned r = 0; r < font.height; ++r)
                actual.insert(actual.end(), &font.glyphs[r * font.width + cell.position],
                              &font.glyphs[r * font.width + cell.position + cell.width]);
            EXPECT_EQ(actual, expected) << "code " << code;
        }
    }
}

} // namespace
