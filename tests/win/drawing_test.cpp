// Blits with their one-sided clipping, fills, flips and colour matching, read back from locked
// surfaces.
#include "display_fixture.h"

namespace {

using vtest::DisplayTest;
using vtest::pixel16;
using vtest::SurfaceLock;

// Source pixel (x, y) of the 32x32 pattern: unique per pixel, never 0.
std::uint16_t pattern(int x, int y) {
    return static_cast<std::uint16_t>(1 + x + 32 * y);
}

class DrawingTest : public DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        VELL_NEEDS_16_BIT_SCREEN();
        ASSERT_NE(open(1).lpBack, nullptr);
        source = surface(32, 32);
        SurfaceLock lock(source);
        ASSERT_TRUE(lock.ok());
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
                lock.at(x, y) = pattern(x, y);
    }
    void TearDown() override {
        if (source != nullptr) source->Release();
        DisplayTest::TearDown();
    }

    // Blits the whole pattern to (x, y) on a black back buffer; returns Blit's result and leaves
    // the clipped rectangle in rect.
    int blitAt(int x, int y) {
        EXPECT_EQ(display->ClearSurface(display->lpBack, 0), DD_OK);
        rect = display->CreateRect(0, 0, 32, 32);
        return display->Blit(display->lpBack, x, y, source, &rect, 0);
    }

    // The back buffer holds the pattern's columns sx.. and rows sy.. at (dx, dy), w by h, and
    // black everywhere else.
    void expectCopied(int dx, int dy, int sx, int sy, int w, int h) {
        SurfaceLock back(display->lpBack);
        ASSERT_TRUE(back.ok());
        for (int y = 0; y < 480; ++y)
            for (int x = 0; x < 640; ++x) {
                const bool inside = x >= dx && x < dx + w && y >= dy && y < dy + h;
                const std::uint16_t want = inside ? pattern(sx + x - dx, sy + y - dy) : 0;
                ASSERT_EQ(back.at(x, y), want) << "at " << x << "," << y;
            }
    }

    IDirectDrawSurface2 *source = nullptr;
    RECT rect = {};
};

TEST_F(DrawingTest, BlitInsideCopiesTheWholeRectangle) {
    EXPECT_EQ(blitAt(100, 50), 1);
    expectCopied(100, 50, 0, 0, 32, 32);
    EXPECT_EQ(rect.left, 0);
    EXPECT_EQ(rect.right, 32);
}

TEST_F(DrawingTest, BlitOffTheLeftEdgeClipsTheCallersRectangle) {
    EXPECT_EQ(blitAt(-8, 10), 1);
    expectCopied(0, 10, 8, 0, 24, 32);
    EXPECT_EQ(rect.left, 8);
    EXPECT_EQ(rect.top, 0);
    EXPECT_EQ(rect.right, 32);
}

TEST_F(DrawingTest, BlitOffTheBottomRightKeepsTheTopLeftPart) {
    EXPECT_EQ(blitAt(620, 470), 1);
    expectCopied(620, 470, 0, 0, 20, 10);
    EXPECT_EQ(rect.right, 20);
    EXPECT_EQ(rect.bottom, 10);
}

TEST_F(DrawingTest, BlitStartingInTheLastColumnOrOffTheEdgeCopiesNothing) {
    for (POINT at : {POINT{639, 0}, POINT{0, 479}, POINT{-32, 0}, POINT{0, -32}, POINT{5000, 5}}) {
        EXPECT_EQ(blitAt(at.x, at.y), 1) << at.x << "," << at.y;
        expectCopied(0, 0, 0, 0, 0, 0);
        EXPECT_EQ(rect.left, 0);
        EXPECT_EQ(rect.right, 32);
    }
}

TEST_F(DrawingTest, SourceWiderThanTheDestinationOffItsLeftEdgeFails) {
    IDirectDrawSurface2 *wide = surface(700, 8);
    RECT r = display->CreateRect(0, 0, 700, 8);
    // Clipped on the left only: the destination rectangle still reaches past the right edge.
    EXPECT_EQ(display->Blit(display->lpBack, -10, 0, wide, &r, 0), 0);
    EXPECT_EQ(r.left, 10);
    wide->Release();
}

TEST_F(DrawingTest, NullSurfacesFailInsteadOfCrashing) {
    RECT r = display->CreateRect(0, 0, 32, 32);
    EXPECT_EQ(display->Blit(nullptr, 0, 0, source, &r, 0), 0);
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, nullptr, &r, 0), 0);
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, source, nullptr, 0), 0);
    EXPECT_NE(display->ClearSurface(nullptr, 0), DD_OK);
    EXPECT_EQ(display->ColorMatch(nullptr, 0), 0xFFFFFFFFul);
}

TEST_F(DrawingTest, ClearSurfaceFillsEveryPixel) {
    EXPECT_EQ(display->ClearSurface(display->lpBack, 0x1234), DD_OK);
    {
        SurfaceLock back(display->lpBack);
        for (int y = 0; y < 480; ++y)
            for (int x = 0; x < 640; ++x)
                ASSERT_EQ(back.at(x, y), 0x1234) << x << "," << y;
    }
    EXPECT_EQ(display->ClearSurface(display->lpBack, 0), DD_OK);
    expectCopied(0, 0, 0, 0, 0, 0);
}

TEST_F(DrawingTest, FlipShowsTheBackBuffer) {
    EXPECT_EQ(display->ClearSurface(display->lpBack, 0xF800), DD_OK);
    EXPECT_EQ(display->ClearSurface(display->lpPrimary, 0x001F), DD_OK);
    EXPECT_EQ(display->Flip(), 1);
    EXPECT_EQ(pixel16(display->lpPrimary, 320, 240), 0xF800u);
    EXPECT_EQ(pixel16(display->lpBack, 320, 240), 0x001Fu);
}

TEST_F(DrawingTest, ColorMatchOn5_6_5) {
    IDirectDrawSurface2 *s = surface(4, 4);
    {
        SurfaceLock lock(s);
        lock.at(0, 0) = 0x1234;
        lock.at(1, 0) = 0xABCD; // the second pixel never leaks into the result
    }
    EXPECT_EQ(display->ColorMatch(s, RGB(255, 255, 255)), 0xFFFFul);
    EXPECT_EQ(display->ColorMatch(s, RGB(255, 0, 0)), 0xF800ul);
    EXPECT_EQ(display->ColorMatch(s, RGB(0, 0, 255)), 0x001Ful);
    EXPECT_EQ(pixel16(s, 0, 0), 0x1234u); // put back
    EXPECT_EQ(display->ColorMatch(s, CLR_INVALID), 0x1234ul);
    EXPECT_EQ(pixel16(s, 1, 0), 0xABCDu);
    s->Release();
}

TEST_F(DrawingTest, ColorMatchOn5_5_5) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    desc.dwWidth = 8;
    desc.dwHeight = 8;
    desc.ddpfPixelFormat.dwSize = sizeof desc.ddpfPixelFormat;
    desc.ddpfPixelFormat.dwFlags = DDPF_RGB;
    desc.ddpfPixelFormat.dwRGBBitCount = 16;
    desc.ddpfPixelFormat.dwRBitMask = 0x7C00;
    desc.ddpfPixelFormat.dwGBitMask = 0x03E0;
    desc.ddpfPixelFormat.dwBBitMask = 0x001F;
    IDirectDrawSurface2 *s = nullptr;
    ASSERT_TRUE(display->CreateSurface(s, desc));
    EXPECT_EQ(display->ColorMatch(s, RGB(255, 255, 255)), 0x7FFFul);
    EXPECT_EQ(display->ColorMatch(s, RGB(0, 255, 0)), 0x03E0ul);
    s->Release();
}

TEST_F(DrawingTest, OneOfEachAfterTheDisplayIsClosed) {
    display->Exit();
    RECT r = display->CreateRect(0, 0, 32, 32);
    EXPECT_EQ(display->Flip(), 0);
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, source, &r, 0), 0);
    IDirectDrawSurface2 *s = nullptr;
    EXPECT_FALSE(display->CreateSurface(s, 8, 8, nullptr)); // shown like any failed surface
    EXPECT_EQ(s, nullptr);
    EXPECT_EQ(boxes->take().size(), 1u);
}

TEST_F(DisplayTest, CreateRectIsPositionAndSize) {
    const RECT r = open(0).CreateRect(10, 20, 30, 40);
    EXPECT_EQ(r.left, 10);
    EXPECT_EQ(r.top, 20);
    EXPECT_EQ(r.right, 40);
    EXPECT_EQ(r.bottom, 60);
}

} // namespace
