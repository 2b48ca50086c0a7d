// The one-sided clipping rule of Blit.
#include "display/blit_clip.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

using vell::BlitClip;
using vell::ClipRect;

std::array<int, 4> edges(const ClipRect &r) {
    return {r.left, r.top, r.right, r.bottom};
}

TEST(BlitClip, OnA640By480Destination) {
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    const ClipRect s32 = {0, 0, 32, 32};
    const struct {
        int x, y;
        ClipRect src;
        BlitClip result;
        ClipRect clippedSrc, dest; // dest only for Copy
    } cases[] = {
        {100, 50, s32, BlitClip::Copy, s32, {100, 50, 132, 82}},
        {-8, 10, s32, BlitClip::Copy, {8, 0, 32, 32}, {0, 10, 24, 42}},
        {10, -30, s32, BlitClip::Copy, {0, 30, 32, 32}, {10, 0, 42, 2}},
        {620, 470, s32, BlitClip::Copy, {0, 0, 20, 10}, {620, 470, 640, 480}},
        {638, 478, s32, BlitClip::Copy, {0, 0, 2, 2}, {638, 478, 640, 480}},
        {-31, -31, s32, BlitClip::Copy, {31, 31, 32, 32}, {0, 0, 1, 1}},
        // a copy starting in the last column or row, or entirely off the left or top edge
        {639, 10, s32, BlitClip::Nothing, s32, {}},
        {10, 479, s32, BlitClip::Nothing, s32, {}},
        {-32, 10, s32, BlitClip::Nothing, s32, {}},
        {10, -32, s32, BlitClip::Nothing, s32, {}},
        {kMin, kMin, s32, BlitClip::Nothing, s32, {}},
        {kMax, 0, s32, BlitClip::Nothing, s32, {}},
        // wider than the destination and left of it: clipped on the left only
        {-10, 0, {0, 0, 700, 10}, BlitClip::Copy, {10, 0, 700, 10}, {0, 0, 690, 10}},
        {600, 0, {40, 8, 104, 24}, BlitClip::Copy, {40, 8, 80, 24}, {600, 0, 640, 16}},
        // numbers beyond an int: refused, or back in range once clipped on the right
        {-1, 0, {kMin, 0, kMax, 10}, BlitClip::Invalid, {kMin, 0, kMax, 10}, {}},
        {0, 0, {kMin, 0, kMax, 10}, BlitClip::Copy, {kMin, 0, kMin + 640, 10}, {0, 0, 640, 10}},
        {-5, 0, {kMax - 10, 0, kMax, 10}, BlitClip::Copy, {kMax - 5, 0, kMax, 10}, {0, 0, 5, 10}},
    };
    for (const auto &c : cases) {
        ClipRect src = c.src, dest = {};
        EXPECT_EQ(vell::clipBlit(640, 480, c.x, c.y, src, dest), c.result) << c.x << "," << c.y;
        EXPECT_EQ(edges(src), edges(c.clippedSrc)) << c.x << "," << c.y;
        if (c.result == BlitClip::Copy) EXPECT_EQ(edges(dest), edges(c.dest)) << c.x << "," << c.y;
    }
    ClipRect src = s32, dest;
    EXPECT_EQ(vell::clipBlit(0, 0, 0, 0, src, dest), BlitClip::Nothing); // an empty destination
    // CreateRect's edges stop at the ends of the range
    EXPECT_EQ(vell::clampedSum(kMax, 1), kMax);
    EXPECT_EQ(vell::clampedSum(kMin, -1), kMin);
    EXPECT_EQ(vell::clampedSum(10, 30), 40);
}

} // namespace
