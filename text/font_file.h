// The font file: an uncompressed 8-bit BMP whose glyph rows carry coverage (the pixel's palette
// index is its coverage, 0 to 255) and whose bottom row marks the character cells (platform-free).
//
//   file header (14 bytes)   "BM" ...
//   info header (40 bytes)   width, height (negative: top row first), 1 plane, 8 bits,
//   uncompressed,
//                            colours used (0 means 256)
//   palette                  colours-used entries of 4 bytes, skipped; its values play no part
//   pixel rows               height rows of ((8 * width + 31) / 32) * 4 bytes, read straight after
//                            the palette whatever the file header's offset says
//
// The bottom row is the spacing row: each non-zero byte is a marker closing the cell of the next
// character, from code 32 on. The markers at m1, m2, ... give code 32 the columns 0 .. m1 - 1,
// code 33 m1 .. m2 - 1, and so on; columns after the last marker belong to no character. At most
// 224 markers count (codes 32 to 255).
//
// Choices of this library, made where the file leaves room:
//   - the glyph plane keeps the image's own columns: row r starts at r * width, whatever padding
//     the file's rows carry, and every reader steps by the width. The spacing row is scanned
//     whole from column 0, its padding included, so a marker there makes a character; the
//     columns of such a cell past the width are blank (readers take only a cell's columns that
//     lie in the plane);
//   - an image of one row (the spacing row alone) is a font of glyph height 0;
//   - a file shorter than its headers, palette and rows say, an image height of 0, a width of 0
//     or below, a palette of more than 256 entries, and sizes beyond kMaxFontWidth,
//     kMaxFontHeight or kMaxFontRowBytes are refused like a file of the wrong kind.
#ifndef VELL_FONT_FILE_H
#define VELL_FONT_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace vell {

constexpr unsigned kMaxFontChars = 224;
constexpr std::size_t kFontHeaderSize = 54; // file header and info header
constexpr std::uint32_t kMaxFontWidth = 1u << 16;
constexpr std::uint32_t kMaxFontHeight = 1u << 14;
constexpr std::uint64_t kMaxFontRowBytes = 64u << 20; // all pixel rows of the file together

struct FontCell {
    std::uint32_t position, width;
};

// A block of bytes from malloc, freed with it unless released; it never throws.
class Bytes {
public:
    Bytes() = default;
    Bytes(Bytes &&other) noexcept : data_(other.data_), size_(other.size_) { other.release(); }
    Bytes &operator=(Bytes &&other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Bytes() { std::free(data_); }
    // Makes it size bytes long, keeping what it held up to there; a block of 0 bytes still has an
    // address. False (nothing changed) when there is no memory for it.
    bool resize(std::size_t size) {
        if (data_ != nullptr && size <= size_) {
            size_ = size;
            return true;
        }
        void *grown = std::realloc(data_, size > 0 ? size : 1);
        if (grown == nullptr) return false;
        data_ = static_cast<std::uint8_t *>(grown);
        size_ = size;
        return true;
    }
    std::uint8_t *data() const { return data_; }
    std::size_t size() const { return size_; }
    std::uint8_t &operator[](std::size_t i) const { return data_[i]; }
    std::uint8_t *release() { // the caller frees it
        std::uint8_t *data = data_;
        data_ = nullptr;
        size_ = 0;
        return data;
    }

private:
    std::uint8_t *data_ = nullptr;
    std::size_t size_ = 0;
};

struct FontImage {
    std::uint32_t width = 0;  // the image's width: the glyph row stride
    std::uint32_t height = 0; // glyph rows: the image height - 1
    Bytes glyphs;             // height rows of `width` bytes, top row first
    FontCell cells[kMaxFontChars] = {};
    unsigned count = 0; // characters 32 .. 31 + count
};

// The number of bytes a font file must hold (headers, palette and pixel rows), read from its
// first kFontHeaderSize bytes; 0 when those are not the headers of an acceptable font file.
std::size_t fontFileExtent(const std::uint8_t *header, std::size_t size);

// Reads a font file held in memory; false (out unchanged) when it is not an acceptable font file
// or its glyph plane cannot be allocated. Bytes after the pixel rows are ignored.
bool parseFontFile(const std::uint8_t *data, std::size_t size, FontImage &out);

// Builds the cell table from a spacing row of `columns` bytes; returns the number of characters.
unsigned scanSpacingRow(const std::uint8_t *row, std::size_t columns,
                        FontCell (&cells)[kMaxFontChars]);

// The cell of character c in a table of `count` characters; {0, 0} when the font lacks it. Codes
// below 32 never have a cell.
inline FontCell fontCell(const FontCell *cells, unsigned count, unsigned char c) {
    const unsigned k = static_cast<unsigned char>(c - 32);
    return k < count ? cells[k] : FontCell{0, 0};
}

} // namespace vell

#endif
