// The one-sided clipping rule of Blit.
#include "display/blit_clip.h"

#include <gtest/gtest.h>

#include <limits>

namespace vell {
bool operator==(const ClipRect &a, const ClipRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
void PrintTo(const ClipRect &r, std::ostream *os) {
    *os << "(" << r.left << "," << r.top << "," << r.right << "," << r.bottom << ")";
}
} // namespace vell

namespace {

using vell::BlitClip;
using vell::ClipRect;

struct Case {
    int x, y;
    ClipRect src;
    BlitClip result;
    ClipRect clippedSrc, dest;
};

TEST(BlitClip, OnA640By480Destination) {
    const ClipRect s32 = {0, 0, 32, 32};
    const Case cases[] = {
        // inside: unchanged
        {100, 50, s32, BlitClip::Copy, s32, {100, 50, 132, 82}},
        // off the left edge: columns 8..31 go to 0..23, the caller's left edge moves by 8
        {-8, 10, s32, BlitClip::Copy, {8, 0, 32, 32}, {0, 10, 24, 42}},
        // off the top edge
        {10, -30, s32, BlitClip::Copy, {0, 30, 32, 32}, {10, 0, 42, 2}},
        // bottom right: the left 20 columns and the top 10 rows
        {620, 470, s32, BlitClip::Copy, {0, 0, 20, 10}, {620, 470, 640, 480}},
        // one column/row before the last still copies
        {638, 478, s32, BlitClip::Copy, {0, 0, 2, 2}, {638, 478, 640, 480}},
        // a copy starting in the last column or row is dropped
        {639, 10, s32, BlitClip::Nothing, s32, {}},
        {10, 479, s32, BlitClip::Nothing, s32, {}},
        // entirely off the left or top edge
        {-32, 10, s32, BlitClip::Nothing, s32, {}},
        {10, -32, s32, BlitClip::Nothing, s32, {}},
        {-31, -31, s32, BlitClip::Copy, {31, 31, 32, 32}, {0, 0, 1, 1}},
        // a source wider than the destination starting left of it: clipped on the left only
        {-10, 0, {0, 0, 700, 10}, BlitClip::Copy, {10, 0, 700, 10}, {0, 0, 690, 10}},
        // a source rectangle that does not start at 0
        {600, 0, {40, 8, 104, 24}, BlitClip::Copy, {40, 8, 80, 24}, {600, 0, 640, 16}},
    };
    for (const Case &c : cases) {
        ClipRect src = c.src, dest = {};
        EXPECT_EQ(vell::clipBlit(640, 480, c.x, c.y, src, dest), c.result)
            << "at " << c.x << "," << c.y;
        EXPECT_EQ(src, c.clippedSrc) << "at " << c.x << "," << c.y;
        if (c.result == BlitClip::Copy) EXPECT_EQ(dest, c.dest) << "at " << c.x << "," << c.y;
    }
}

TEST(BlitClip, HostileNumbersNeverOverflow) {
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    ClipRect dest;
    ClipRect wide = {kMin, 0, kMax, 10}; // wider than any int
    EXPECT_EQ(vell::clipBlit(640, 480, -1, 0, wide, dest), BlitClip::Invalid);
    // clipped on the right it becomes 640 wide again
    EXPECT_EQ(vell::clipBlit(640, 480, 0, 0, wide, dest), BlitClip::Copy);
    EXPECT_EQ(dest.right, 640);
    ClipRect s = {0, 0, 32, 32};
    EXPECT_EQ(vell::clipBlit(640, 480, kMin, kMin, s, dest), BlitClip::Nothing);
    EXPECT_EQ(vell::clipBlit(640, 480, kMax, 0, s, dest), BlitClip::Nothing);
    ClipRect far = {kMax - 10, 0, kMax, 10};
    EXPECT_EQ(vell::clipBlit(640, 480, -5, 0, far, dest), BlitClip::Copy);
    EXPECT_EQ(far.left, kMax - 5);
    // an empty destination takes nothing
    EXPECT_EQ(vell::clipBlit(0, 0, 0, 0, s, dest), BlitClip::Nothing);
    // CreateRect's edges stop at the ends of the range
    EXPECT_EQ(vell::clampedSum(kMax, 1), kMax);
    EXPECT_EQ(vell::clampedSum(kMin, -1), kMin);
    EXPECT_EQ(vell::clampedSum(10, 30), 40);
}

} // namespace
