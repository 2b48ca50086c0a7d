// The clipping rule of TDirectDraw::Blit (platform-free).
#ifndef VELL_BLIT_CLIP_H
#define VELL_BLIT_CLIP_H

#include <cstdint>

namespace vell {

struct ClipRect {
    std::int32_t left, top, right, bottom; // right and bottom exclusive
};

enum class BlitClip {
    Copy,    // copy src (clipped in place) onto dest
    Nothing, // nothing to copy: the blit succeeds without touching anything
    Invalid, // the numbers do not fit a rectangle: the blit fails
};

// Clips a copy of src to (x, y) on a destination W by H. The rule is one-sided on purpose, as the
// library has always clipped:
//   - rejected when x + w <= 0, y + h <= 0, x >= W - 1 or y >= H - 1 (a copy starting in the last
//     column or row is dropped);
//   - horizontally: if x < 0 the left edge moves right by -x and x becomes 0; otherwise, if the
//     copy reaches past W, the right edge moves left. Never both, so a source wider than the
//     destination that starts left of it stays too wide (the platform then refuses it);
//   - vertically the same with the top and bottom edges.
// Computed in 64 bits: hostile numbers give Invalid, never an overflow.
// a + b, held to the 32-bit range instead of overflowing (CreateRect's right and bottom edges).
constexpr std::int32_t clampedSum(std::int32_t a, std::int32_t b) {
    const std::int64_t sum = std::int64_t{a} + b;
    return sum > INT32_MAX   ? INT32_MAX
           : sum < INT32_MIN ? INT32_MIN
                             : static_cast<std::int32_t>(sum);
}

BlitClip clipBlit(std::int32_t destWidth, std::int32_t destHeight, std::int32_t x, std::int32_t y,
                  ClipRect &src, ClipRect &dest);

} // namespace vell

#endif
