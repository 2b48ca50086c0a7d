// Printing on the path chosen at run time. Glyph cells are only a few pixels wide, too narrow for
// blocks of 16 or 32 pixels; but the cells of a line sit side by side, so each of the line's rows
// is gathered from the glyph plane into one strip of coverage bytes and mixed in one go. Within a
// text no pixel is drawn twice (cells of a line never overlap, lines lie one under the other), so
// the order of drawing does not matter. A gap between cells (a damaged cell table may draw a cell
// narrower than its advance) ends a strip: the pixels in between must not be touched.
#include "text/print_loop.h"

#include "image/row_kernels.h"

#include <algorithm>
#include <cstring>

namespace vell {

namespace {

constexpr std::size_t kStrip = 512; // columns gathered at most before they are mixed

// The pieces of cells gathered into a strip, left to right without gaps.
class Strip {
public:
    Strip(RowKernel kernel, const PixelTarget &target, const GlyphFont &font, std::uint16_t colour,
          unsigned opacity)
        : kernel_(kernel), target_(target), font_(font), colour_(colour), opacity_(opacity) {}

    // Adds columns [glyph, glyph + width) of the glyph plane at target column x of the line at y.
    void add(std::size_t glyph, std::int64_t x, std::size_t width, std::int64_t y) {
        if (count_ == 0 || y != y_) line(y);
        while (width > 0) {
            if (columns_ != 0 && x != left_ + std::int64_t(columns_)) flush();
            if (columns_ == 0) left_ = x;
            const std::size_t take = std::min(width, kStrip - columns_);
            // A piece of up to 16 columns is copied as 16 bytes (the strip has room behind its
            // end, and the next piece overwrites the excess) where every row holds them.
            pieces_[count_++] = {glyph, std::uint32_t(take),
                                 take <= 16 && glyph + 16 <= font_.stride};
            columns_ += take;
            glyph += take;
            x += std::int64_t(take);
            width -= take;
            if (columns_ == kStrip) flush();
        }
    }

    // Mixes the gathered columns into rows [top, bottom) of the line at y, and starts afresh.
    // Rows are gathered several at a time before any is mixed: a wide load of coverage bytes
    // right after the small stores that put them there would wait for those stores to finish.
    void flush() {
        const std::size_t pitch = (columns_ + 16 + 63) / 64 * 64;
        const std::int64_t batch = std::int64_t(sizeof coverage_ / pitch);
        for (std::int64_t first = top_; first < bottom_ && columns_ != 0; first += batch) {
            const std::int64_t last = std::min(bottom_, first + batch);
            for (std::int64_t r = first; r < last; ++r) {
                std::uint8_t *out = coverage_ + std::size_t(r - first) * pitch;
                const std::uint8_t *row = font_.plane + std::size_t(r) * font_.stride;
                for (std::size_t k = 0; k < count_; out += pieces_[k++].width) {
                    if (pieces_[k].short_)
                        std::memcpy(out, row + pieces_[k].glyph, 16);
                    else
                        std::memcpy(out, row + pieces_[k].glyph, pieces_[k].width);
                }
            }
            for (std::int64_t r = first; r < last; ++r)
                kernel_(reinterpret_cast<std::uint16_t *>(target_.bits + (y_ + r) * target_.pitch) +
                            left_,
                        nullptr, coverage_ + std::size_t(r - first) * pitch, columns_, colour_,
                        opacity_);
        }
        count_ = columns_ = 0;
    }

private:
    // A new line at y: the rows of it that lie on the target.
    void line(std::int64_t y) {
        flush();
        y_ = y;
        top_ = std::max<std::int64_t>(0, -y);
        bottom_ = std::min<std::int64_t>(font_.height, target_.height - y);
    }

    struct Piece {
        std::size_t glyph;
        std::uint32_t width;
        bool short_; // copied as 16 bytes
    };
    RowKernel kernel_;
    const PixelTarget &target_;
    const GlyphFont &font_;
    std::uint16_t colour_;
    unsigned opacity_;
    std::int64_t y_ = 0, top_ = 0, bottom_ = 0, left_ = 0;
    std::size_t count_ = 0, columns_ = 0;
    Piece pieces_[kStrip];
    // Rows of coverage, gathered a batch at a time: 14 of a full strip (512 columns and 16 bytes of
    // room behind them, a pitch of 576 bytes), more of a narrower one.
    alignas(64) std::uint8_t coverage_[8192];
};

} // namespace

void printGlyphs(SimdPath path, const PixelTarget &target, const GlyphFont &font, int x, int y,
                 const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                 std::uint32_t mode) {
    const RowKernels *kernels = rowKernelsOf(path);
    if (kernels == nullptr)
        return printGlyphsScalar(target, font, x, y, text, colour, transparency, mode);
    if (text == nullptr || font.plane == nullptr || font.cells == nullptr || target.bits == nullptr)
        return;
    const unsigned opacity = 255u - transparency;
    Strip strip(kernels->print[mode != kMode555][opacity != 255], target, font, colour, opacity);
    walkText(font, text, x, y, target.width, target.height,
             [&strip](std::size_t glyph, std::int64_t left, std::size_t columns, std::int64_t top) {
                 strip.add(glyph, left, columns, top);
             });
    strip.flush();
}

void printGlyphs(const PixelTarget &target, const GlyphFont &font, int x, int y,
                 const unsigned char *text, std::uint16_t colour, std::uint8_t transparency,
                 std::uint32_t mode) {
    printGlyphs(simdPath(), target, font, x, y, text, colour, transparency, mode);
}

} // namespace vell
