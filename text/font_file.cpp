#include "text/font_file.h"

#include <cstring>

namespace vell {

namespace {

std::uint32_t read16(const std::uint8_t *p) {
    return p[0] | (p[1] << 8);
}

std::uint32_t read32(const std::uint8_t *p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

// What the headers say, once they have been found acceptable.
struct FontLayout {
    std::uint32_t width, height; // height: the image's, spacing row included
    bool topDown;
    std::size_t rowsOffset, rowSize, extent;
};

bool readLayout(const std::uint8_t *h, std::size_t size, FontLayout &out) {
    if (h == nullptr || size < kFontHeaderSize) return false;
    if (h[0] != 'B' || h[1] != 'M' || read16(h + 26) != 1 || read16(h + 28) != 8 ||
        read32(h + 30) != 0)
        return false;
    const std::int64_t width = static_cast<std::int32_t>(read32(h + 18));
    const std::int64_t signedHeight = static_cast<std::int32_t>(read32(h + 22));
    const std::int64_t height = signedHeight < 0 ? -signedHeight : signedHeight;
    if (width < 1 || width > kMaxFontWidth || height < 1 || height > kMaxFontHeight) return false;
    std::uint64_t colours = read32(h + 46);
    if (colours == 0) colours = 256;
    if (colours > 256) return false;
    const std::uint64_t rowSize = (8 * static_cast<std::uint64_t>(width) + 31) / 32 * 4;
    const std::uint64_t rowBytes = rowSize * static_cast<std::uint64_t>(height);
    if (rowBytes > kMaxFontRowBytes) return false;
    out.width = static_cast<std::uint32_t>(width);
    out.height = static_cast<std::uint32_t>(height);
    out.topDown = signedHeight < 0;
    out.rowsOffset = kFontHeaderSize + 4 * static_cast<std::size_t>(colours);
    out.rowSize = static_cast<std::size_t>(rowSize);
    out.extent = out.rowsOffset + static_cast<std::size_t>(rowBytes);
    return true;
}

} // namespace

std::size_t fontFileExtent(const std::uint8_t *header, std::size_t size) {
    FontLayout layout;
    return readLayout(header, size, layout) ? layout.extent : 0;
}

bool parseFontFile(const std::uint8_t *data, std::size_t size, FontImage &out) {
    FontLayout layout;
    if (!readLayout(data, size, layout) || size < layout.extent) return false;

    Bytes glyphs;
    const std::uint32_t glyphRows = layout.height - 1;
    if (!glyphs.resize(static_cast<std::size_t>(layout.width) * glyphRows)) return false;
    const std::uint8_t *spacing = nullptr;
    for (std::uint32_t f = 0; f < layout.height; ++f) {
        const std::uint8_t *row = data + layout.rowsOffset + f * layout.rowSize;
        const std::uint32_t imageRow = layout.topDown ? f : layout.height - 1 - f;
        if (imageRow == glyphRows)
            spacing = row;
        else
            std::memcpy(glyphs.data() + static_cast<std::size_t>(imageRow) * layout.width, row,
                        layout.width);
    }
    out.width = layout.width;
    out.height = glyphRows;
    out.glyphs = std::move(glyphs);
    out.count = scanSpacingRow(spacing, layout.rowSize, out.cells);
    return true;
}

unsigned scanSpacingRow(const std::uint8_t *row, std::size_t columns,
                        FontCell (&cells)[kMaxFontChars]) {
    for (FontCell &cell : cells)
        cell = {0, 0};
    unsigned count = 0;
    std::uint32_t last = 0;
    for (std::size_t i = 0; i < columns && count < kMaxFontChars; ++i) {
        if (row[i] == 0) continue;
        const auto column = static_cast<std::uint32_t>(i);
        cells[count++] = {last, column - last};
        last = column;
    }
    return count;
}

} // namespace vell
