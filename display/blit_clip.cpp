#include "display/blit_clip.h"

#include <limits>

namespace vell {

namespace {
bool fits(std::int64_t v) {
    return v >= std::numeric_limits<std::int32_t>::min() &&
           v <= std::numeric_limits<std::int32_t>::max();
}
} // namespace

BlitClip clipBlit(std::int32_t destWidth, std::int32_t destHeight, std::int32_t x, std::int32_t y,
                  ClipRect &src, ClipRect &dest) {
    std::int64_t left = src.left, top = src.top, right = src.right, bottom = src.bottom;
    std::int64_t dx = x, dy = y;
    const std::int64_t w = right - left, h = bottom - top;
    const std::int64_t W = destWidth, H = destHeight;

    if (dx + w <= 0 || dy + h <= 0 || dx >= W - 1 || dy >= H - 1) return BlitClip::Nothing;

    if (dx < 0) {
        left -= dx;
        dx = 0;
    } else if (dx + w > W) {
        right -= dx + w - W;
    }
    if (dy < 0) {
        top -= dy;
        dy = 0;
    } else if (dy + h > H) {
        bottom -= dy + h - H;
    }

    const std::int64_t destRight = dx + (right - left), destBottom = dy + (bottom - top);
    if (!fits(left) || !fits(top) || !fits(right) || !fits(bottom) || !fits(destRight) ||
        !fits(destBottom))
        return BlitClip::Invalid;

    src = {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top),
           static_cast<std::int32_t>(right), static_cast<std::int32_t>(bottom)};
    dest = {static_cast<std::int32_t>(dx), static_cast<std::int32_t>(dy),
            static_cast<std::int32_t>(destRight), static_cast<std::int32_t>(destBottom)};
    return BlitClip::Copy;
}

} // namespace vell
