// Images from real TGA files painted and blended onto real surfaces (the 5:6:5 back buffer and a
// 5:5:5 off-screen surface), clipped at every edge, cut out of a drawn scene, and the log lines of
// failed locks, an unknown graphics mode and a missing file.
#include "harness.h"

#include "image/compose.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace {

using vtest::dataFile;
using vtest::pixels;

using ImageTest = vtest::ScreenTest;

// An image's size and planes, e.g. "7x5 C A" (C: a colour plane, A: an alpha plane).
std::string shape(const TBitmap &image) {
    return std::to_string(image.dwWidth) + "x" + std::to_string(image.dwHeight) +
           (image.lpRGB ? " C" : "") + (image.lpAlpha ? " A" : "");
}

// Both files hold the pattern of tools/make_images.py, pattern32.tga bottom-up with alpha,
// pattern24.tga top-down without. What Paint and Blend write is the scalar reference loops' result
// on a copy of the surface: only the visible part of the sprite changes, wherever it is placed.
TEST_F(ImageTest, FilesPaintedAndBlendedOnBothLayoutsAtEveryEdge) {
    IDirectDrawSurface2 *s555 = make555(40, 30);
    const std::tuple<unsigned long, long, long> calls[] = {{~0ul, -1, -1},  {~0ul, 0x1234, -1},
                                                           {~0ul, -1, 100}, {128, -1, -1},
                                                           {100, 0, 200},   {300, -1, -1}};
    const int alphas[] = {0, 255, 128, 1, 254, 64, 200};
    for (auto [surface, mode, W, H] :
         {std::make_tuple(display->lpBack, 2ul, 640, 480), std::make_tuple(s555, 1ul, 40, 30)}) {
        display->dwGraphicsMode = mode;
        for (const char *file : {"pattern32.tga", "pattern24.tga"}) {
            TBitmap sprite(&*display, dataFile(file).c_str(), 0);
            ASSERT_EQ(shape(sprite), file[7] == '3' ? "7x5 C A" : "7x5 C");
            for (int i = 0, x = 0, y = 0; i < 35; x = ++i % 7, y = i / 7) {
                EXPECT_EQ(sprite.lpRGB[i], vell::packRGB(mode, 40 * x, 60 * y, 255 - 30 * x)) << i;
                EXPECT_TRUE(!sprite.lpAlpha || sprite.lpAlpha[i] == alphas[(x + 2 * y) % 7]) << i;
            }
            const POINT places[] = {{10, 10}, {-3, 2},        {4, -2}, {W - 4, 3}, {5, H - 2},
                                    {-5, -4}, {W - 3, H - 1}, {-7, 0}, {W, 0}};
            for (POINT at : places)
                for (auto [opacity, colour, alpha] : calls) {
                    std::vector<std::uint16_t> want = pixels(surface, true);
                    const vell::PixelTarget target = {reinterpret_cast<std::uint8_t *>(want.data()),
                                                      2 * W, W, H};
                    const vell::ImagePlanes planes = {7, 5, sprite.lpAlpha, sprite.lpRGB};
                    const vell::Sources src = vell::paintSources(planes, colour, alpha);
                    if (opacity == ~0ul)
                        vell::paintImage(vell::SimdPath::Scalar, target, at.x, at.y, src, mode);
                    else
                        vell::blendImage(vell::SimdPath::Scalar, target, at.x, at.y, src, opacity,
                                         mode);
                    EXPECT_TRUE(opacity == ~0ul
                                    ? sprite.Paint(surface, at.x, at.y, colour, alpha)
                                    : sprite.Blend(surface, at.x, at.y, opacity, colour, alpha));
                    ASSERT_EQ(pixels(surface), want)
                        << file << " in mode " << mode << " at " << at.x << "," << at.y << ": "
                        << opacity << ", " << colour << ", " << alpha;
                }
        }
    }
}

// Without a known layout only what needs none is drawn; a missing file gives an empty image. Both
// are logged.
TEST_F(ImageTest, UnknownModeDrawsOnlyWhatNeedsNoLayoutAndMissingFilesAreLogged) {
    TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
    display->dwGraphicsMode = 0;
    const std::vector<std::uint16_t> before = pixels(display->lpBack, true);
    EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, -1, -1));
    EXPECT_TRUE(sprite.Blend(display->lpBack, 0, 0, 100, 31, 128));
    EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, -1, 0)); // nothing to mix: no line
    EXPECT_EQ(pixels(display->lpBack), before);
    EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, 31, 255)); // copies need no layout
    EXPECT_EQ(pixels(display->lpBack)[4 * 640 + 6], 31u);
    EXPECT_EQ(shape(TBitmap(&*display, "none.tga", 0)), "0x0");
    EXPECT_NE(closeAndReadLog().find("TBitmap::Paint (...) unknown graphicsmode\n"
                                     "TBitmap::Blend (...) unknown graphicsmode\n"
                                     "TBitmap::TBitmap(char*) - Could not open file \"none.tga\"!\n"
                                     "De-init"),
              std::string::npos);
}

TEST_F(ImageTest, FailedLocksAreLoggedAndDrawNothing) {
    TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
    IDirectDrawSurface2 *s = nullptr; // released while the display is open
    ASSERT_TRUE(display->CreateSurface(s, 16, 16, nullptr));
    ASSERT_EQ(display->lpDD->SetDisplayMode(640, 480, 16), DD_OK); // loses every surface
    EXPECT_TRUE(sprite.Paint(s, 1, 1, -1, -1));
    EXPECT_TRUE(sprite.Blend(s, 1, 1, 100, -1, -1));
    EXPECT_TRUE(sprite.Blend(s, 1, 1, 255, -1, -1)); // as Paint, with Paint's line
    const TBitmap cut(&*display, s, RECT{0, 0, 16, 16});
    EXPECT_EQ(shape(cut), "0x0 C"); // the plane is kept for the destructor
    s->Release();
    const std::string lost = "Surface lost!";
    const std::string painted = "TBitmap::Paint - SurfaceLock failed!\n\n" + lost + "\n";
    EXPECT_NE(closeAndReadLog().find(
                  painted + "TBitmap::Blend - SurfaceLock failed!\n  " + lost + "\n" + painted +
                  "TBitmap::TBitmap(LPSURFACE) - SurfaceLock failed!\n\n" + lost + "\n"),
              std::string::npos);
}

TEST_F(ImageTest, CutsOfADrawnSceneAndCopiesAreClippedRectangles) {
    TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
    ASSERT_EQ(display->ClearSurface(display->lpBack, 0x0841), DD_OK);
    sprite.Paint(display->lpBack, 632, 100, -1, -1); // half off the right edge
    const std::vector<std::uint16_t> scene = pixels(display->lpBack);
    const RECT off = {630, 98, 700, 104}, inverted = {10, 10, 5, 20}, part = {8, 4, 20, 9};
    const TBitmap cut(&*display, display->lpBack, off), none(&*display, display->lpBack, inverted);
    ASSERT_EQ(shape(cut), "10x6 C");
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(cut.lpRGB[i], scene[(98 + i / 10) * 640 + 630 + i % 10]) << i;
    EXPECT_EQ(shape(none), "0x0");

    // Copies: whole, of columns 8-9 and rows 4-5, and of a rectangle right of a 7-wide sprite.
    const TBitmap whole(cut), corner(cut, part), outside(sprite, part), flipped(sprite, inverted);
    EXPECT_EQ(std::vector<WORD>(whole.lpRGB, whole.lpRGB + 60),
              std::vector<WORD>(cut.lpRGB, cut.lpRGB + 60));
    ASSERT_EQ(shape(corner), "2x2 C");
    EXPECT_EQ(corner.lpRGB[3], cut.lpRGB[59]);
    EXPECT_EQ(shape(outside), "0x1");
    EXPECT_EQ(shape(flipped), "0x0");
}

// The reduction's counting is text_core_test's; here the font's scaling by the factor (0 counts
// as 1) and a plane of ink and background.
TEST_F(ImageTest, TextImagesFromGdiFonts) {
    LOGFONTA logFont = {};
    logFont.lfHeight = -12;
    logFont.lfWidth = 7;
    logFont.lfQuality = NONANTIALIASED_QUALITY;
    std::strcpy(logFont.lfFaceName, "Tahoma");
    std::vector<BYTE> atOne;
    for (unsigned char f : {1, 0, 2, 3}) {
        SCOPED_TRACE("factor " + std::to_string(f));
        const LONG before = logFont.lfHeight;
        const TBitmap image(&*display, &logFont, "Wine 8\nis one line", f);
        EXPECT_EQ(logFont.lfHeight, before * std::max(1, int(f))); // and the caller keeps it
        EXPECT_EQ(logFont.lfWidth, 0);
        ASSERT_GT(image.dwWidth * image.dwHeight, 0u);
        EXPECT_EQ(image.lpRGB, nullptr);
        const std::vector<BYTE> plane(image.lpAlpha,
                                      image.lpAlpha + image.dwWidth * image.dwHeight);
        if (f == 1) atOne = plane;
        EXPECT_TRUE(f != 0 || plane == atOne);
        EXPECT_EQ(*std::min_element(plane.begin(), plane.end()), 0); // background and ink
        EXPECT_GT(*std::max_element(plane.begin(), plane.end()), 0);
    }

    // Without a surface to measure on, the caller's structure stays as it was.
    display->Exit();
    const LOGFONTA kept = logFont;
    const TBitmap none(&*display, &logFont, "text", 2);
    expectBox("DirectDraw", "CreateSurface() failed!\n\nUnknown HRESULT(0x800401f0)", window);
    EXPECT_EQ(shape(none), "0x0");
    EXPECT_EQ(std::memcmp(&logFont, &kept, sizeof kept), 0);
    EXPECT_NE(closeAndReadLog().find("TBitmap::TBitmap (...) no Surface\n"), std::string::npos);
}

} // namespace
