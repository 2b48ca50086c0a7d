#include "tools/fontmaker/glyph_strip.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tools/fontmaker/platform.h"

namespace vell::fontmaker {
namespace {

constexpr std::size_t kMaxFontFile = std::size_t{1} << 28; // 256 MiB: no font is that large

struct LibraryDone {
    void operator()(FT_Library library) const { FT_Done_Library(library); }
};
struct FaceDone {
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using Library = std::unique_ptr<std::remove_pointer_t<FT_Library>, LibraryDone>;
using Face = std::unique_ptr<std::remove_pointer_t<FT_Face>, FaceDone>;

// One rendered glyph, its bitmap placed relative to the origin on the baseline.
struct Glyph {
    bool present = false;
    int left = 0, top = 0; // ink's left column and top row, from the origin, rows upward
    unsigned width = 0, rows = 0, advance = 0;
    std::vector<std::uint8_t> coverage; // rows x width, top row first
};

std::string hex(char32_t ch) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(ch));
    return text;
}

bool render(FT_Face face, char32_t ch, bool mono, Glyph &glyph, std::string &error) {
    glyph = Glyph();
    const FT_UInt index = ch == 0 ? 0 : FT_Get_Char_Index(face, ch);
    if (index == 0) return true;
    // FreeType's own rendering: anti-aliased, or hinted for black and white.
    const FT_Int32 flags = FT_LOAD_RENDER | (mono ? FT_LOAD_TARGET_MONO : FT_LOAD_TARGET_NORMAL);
    if (FT_Load_Glyph(face, index, flags) != 0) {
        error = "FreeType cannot render the glyph of " + hex(ch);
        return false;
    }
    const FT_GlyphSlot slot = face->glyph;
    const FT_Bitmap &bitmap = slot->bitmap;
    if (bitmap.rows > 0 && bitmap.pixel_mode != FT_PIXEL_MODE_GRAY &&
        bitmap.pixel_mode != FT_PIXEL_MODE_MONO) {
        error = "the glyph of " + hex(ch) + " is not an outline (a colour or bitmap glyph)";
        return false;
    }
    glyph.present = true;
    glyph.left = slot->bitmap_left;
    glyph.top = slot->bitmap_top;
    glyph.width = bitmap.width;
    glyph.rows = bitmap.rows;
    glyph.advance = static_cast<unsigned>(std::max<FT_Pos>(0, (slot->advance.x + 32) >> 6));
    glyph.coverage.resize(std::size_t{bitmap.width} * bitmap.rows);
    // A negative pitch means the rows are stored bottom row first.
    const unsigned char *top =
        bitmap.pitch >= 0 ? bitmap.buffer
                          : bitmap.buffer + std::ptrdiff_t{-bitmap.pitch} * (bitmap.rows - 1);
    for (unsigned r = 0; r < bitmap.rows; ++r) {
        const unsigned char *row = top + std::ptrdiff_t{bitmap.pitch} * r;
        std::uint8_t *out = &glyph.coverage[std::size_t{r} * bitmap.width];
        for (unsigned c = 0; c < bitmap.width; ++c)
            out[c] = bitmap.pixel_mode == FT_PIXEL_MODE_MONO
                         ? ((row[c >> 3] >> (7 - (c & 7))) & 1 ? 255 : 0)
                         : row[c];
    }
    return true;
}

unsigned ceilScaled(long units, unsigned pixelsPerEm, unsigned unitsPerEm) {
    if (units <= 0) return 0;
    return static_cast<unsigned>((units * static_cast<long long>(pixelsPerEm) + unitsPerEm - 1) /
                                 unitsPerEm);
}

// FreeType's memory: the C heap.
void *allocate(FT_Memory, long size) {
    return std::malloc(static_cast<std::size_t>(size));
}
void release(FT_Memory, void *block) {
    std::free(block);
}
void *reallocate(FT_Memory, long, long size, void *block) {
    return std::realloc(block, static_cast<std::size_t>(size));
}
FT_MemoryRec_ memory{nullptr, allocate, release, reallocate};

bool sameName(const char *a, const std::string &b) {
    if (a == nullptr || std::strlen(a) != b.size()) return false;
    return std::equal(b.begin(), b.end(), a, [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

} // namespace

bool readFontFile(const std::string &path, FontSource &font, std::string &error) {
    font = FontSource();
    font.name = path;
    std::FILE *file = openFile(path, "rb");
    if (file == nullptr) {
        error = "cannot read " + path + ": " + std::strerror(errno);
        return false;
    }
    std::uint8_t block[65536];
    std::size_t got = 0;
    while ((got = std::fread(block, 1, sizeof block, file)) > 0 && font.bytes.size() < kMaxFontFile)
        font.bytes.insert(font.bytes.end(), block, block + got);
    const bool failed = std::ferror(file) != 0;
    const int cause = errno;
    std::fclose(file);
    if (failed)
        error = "cannot read " + path + ": " + std::strerror(cause);
    else if (font.bytes.size() >= kMaxFontFile)
        error = path + " is too large for a font file";
    return error.empty();
}

bool makeGlyphStrip(const FontSource &font, const StripOptions &options, GlyphStrip &strip,
                    std::string &error) {
    strip = GlyphStrip();
    // A library of FreeType's own modules with their built-in settings: FT_Init_FreeType would
    // also take settings from the environment (FREETYPE_PROPERTIES), and one machine's setting
    // would then change the font made from a file.
    FT_Library rawLibrary = nullptr;
    if (FT_New_Library(&memory, &rawLibrary) != 0) {
        error = "FreeType cannot start";
        return false;
    }
    const Library library(rawLibrary);
    FT_Add_Default_Modules(library.get());
    const auto open = [&](FT_Long index) {
        FT_Face face = nullptr;
        FT_New_Memory_Face(library.get(), font.bytes.data(),
                           static_cast<FT_Long>(font.bytes.size()), index, &face);
        return Face(face);
    };
    Face face = open(0);
    if (face == nullptr) {
        error =
            font.name + " is not a font file (TrueType, OpenType or another kind FreeType reads)";
        return false;
    }
    // Of a collection, the face of the family and style asked for.
    const auto wanted = [&](FT_Face f) {
        return sameName(f->family_name, font.family) &&
               font.bold == ((f->style_flags & FT_STYLE_FLAG_BOLD) != 0) &&
               font.italic == ((f->style_flags & FT_STYLE_FLAG_ITALIC) != 0);
    };
    if (!font.family.empty() && face->num_faces > 1 && !wanted(face.get()))
        for (FT_Long index = 1; index < face->num_faces; ++index)
            if (Face other = open(index); other != nullptr && wanted(other.get())) {
                face = std::move(other);
                break;
            }
    if (font.bold && (face->style_flags & FT_STYLE_FLAG_BOLD) == 0) {
        error = "no bold face of " + font.name +
                " is installed (Windows would only thicken the regular one)";
        return false;
    }
    if (font.italic && (face->style_flags & FT_STYLE_FLAG_ITALIC) == 0) {
        error = "no italic face of " + font.name +
                " is installed (Windows would only slant the regular one)";
        return false;
    }
    if (!FT_IS_SCALABLE(face.get()) || face->units_per_EM == 0) {
        error = font.name + " holds no outlines: only a scalable font can be made at any size";
        return false;
    }
    if (FT_Select_Charmap(face.get(), FT_ENCODING_UNICODE) != 0) {
        error = font.name + " has no Unicode character map";
        return false;
    }
    strip.family = std::string(face->family_name ? face->family_name : "?") + " " +
                   (face->style_name ? face->style_name : "");

    // Fonts whose ascender and descender say nothing fall back on the bounding box of all glyphs.
    long ascent = face->ascender, descent = -face->descender;
    if (ascent + descent <= 0) ascent = face->bbox.yMax, descent = -face->bbox.yMin;
    const unsigned unitsPerEm = face->units_per_EM, size = options.size;
    // No size above this one fits: its ascender plus descender exceed `size` rows.
    unsigned pixelsPerEm =
        ascent + descent > 0
            ? static_cast<unsigned>(std::min<long long>(
                  8LL * size, size * static_cast<long long>(unitsPerEm) / (ascent + descent) + 1))
            : size;
    std::vector<Glyph> glyphs(options.last - options.first + 1);
    for (;; --pixelsPerEm) {
        if (pixelsPerEm == 0) {
            error = "no size of " + strip.family + " fits its glyphs into " + std::to_string(size) +
                    " rows";
            return false;
        }
        const unsigned asc = ceilScaled(ascent, pixelsPerEm, unitsPerEm);
        const unsigned desc = ceilScaled(descent, pixelsPerEm, unitsPerEm);
        if (asc + desc > size) continue;
        if (FT_Set_Pixel_Sizes(face.get(), 0, pixelsPerEm) != 0) {
            error = "FreeType cannot scale " + strip.family + " to " + std::to_string(pixelsPerEm) +
                    " pixels per em";
            return false;
        }
        // The baseline moves down where a glyph reaches above the ascender (hinting may round
        // an accent up by a pixel), as long as the rows still hold every glyph.
        unsigned above = asc, below = desc;
        for (unsigned code = options.first; code <= options.last && above + below <= size; ++code) {
            Glyph &glyph = glyphs[code - options.first];
            if (!render(face.get(), toUnicode(*options.codePage, code), options.mono, glyph, error))
                return false;
            if (!glyph.present || glyph.rows == 0) continue;
            above = std::max<long>(above, glyph.top);
            below = std::max<long>(below, static_cast<long>(glyph.rows) - glyph.top);
        }
        if (above + below > size) continue;
        strip.pixelsPerEm = pixelsPerEm;
        strip.ascender = asc;
        strip.descender = desc;
        strip.baseline = above;
        break;
    }

    // Cells side by side; each glyph's origin lies far enough right that no ink is cut off.
    std::vector<unsigned> origins;
    std::uint32_t end = 0;
    for (unsigned code = 32; code <= options.last; ++code) {
        const Glyph *glyph = code >= options.first ? &glyphs[code - options.first] : nullptr;
        unsigned origin = 0, cell = 1;
        if (glyph != nullptr && glyph->present) {
            origin = static_cast<unsigned>(std::max(0, -glyph->left));
            const long inkEnd = static_cast<long>(origin) + glyph->left + glyph->width;
            cell = static_cast<unsigned>(std::max<long>(origin + glyph->advance, inkEnd)) +
                   options.spacing;
            cell = std::max(cell, 1u);
        } else if (glyph != nullptr) {
            ++strip.blanks;
        }
        origins.push_back(end + origin);
        end += cell;
        strip.ends.push_back(end);
    }
    strip.width = (end + 1 + 3) / 4 * 4; // the last marker lies in column `end`
    strip.height = size;
    strip.glyphs.assign(std::size_t{strip.width} * size, 0);
    for (unsigned code = options.first; code <= options.last; ++code) {
        const Glyph &glyph = glyphs[code - options.first];
        const long x = static_cast<long>(origins[code - 32]) + glyph.left;
        const long y = static_cast<long>(strip.baseline) - glyph.top;
        for (unsigned r = 0; r < glyph.rows; ++r)
            std::copy_n(&glyph.coverage[std::size_t{r} * glyph.width], glyph.width,
                        &strip.glyphs[static_cast<std::size_t>((y + r) * strip.width + x)]);
    }
    return true;
}

} // namespace vell::fontmaker
