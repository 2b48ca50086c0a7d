// Images from real TGA files painted and blended onto real surfaces (the 5:6:5 back buffer and a
// 5:5:5 off-screen surface), clipped at every edge, cut out of a drawn scene, and the log lines of
// a failed lock and of an unknown graphics mode.
#include "display_fixture.h"

#include "image/compose.h"

#include <tuple>
#include <vector>

namespace {

using vtest::dataFile;
using vtest::SurfaceLock;

// The pattern tools/make_images.py wrote into pattern32.tga (and, without alpha, pattern24.tga).
struct Rgba {
    int r, g, b, a;
};
Rgba pattern(int x, int y) {
    const int alphas[] = {0, 255, 128, 1, 254, 64, 200};
    return {40 * x, 60 * y, 255 - 30 * x, alphas[(x + 2 * y) % 7]};
}

class ImageTest : public vtest::DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        VELL_NEEDS_16_BIT_SCREEN();
        ASSERT_NE(open(1).lpBack, nullptr);
    }

    // Every pixel of the surface, after filling it with a pattern of its own unless told not to.
    static std::vector<std::uint16_t> pixels(IDirectDrawSurface2 *s, bool fill = false) {
        SurfaceLock lock(s);
        std::vector<std::uint16_t> all;
        for (int y = 0; y < lock.height(); ++y)
            for (int x = 0; x < lock.width(); ++x) {
                if (fill) lock.at(x, y) = static_cast<std::uint16_t>(x * 977 + y * 4111);
                all.push_back(lock.at(x, y));
            }
        return all;
    }
};

TEST_F(ImageTest, FilesLoadInTheirRowOrderPackedByTheGraphicsMode) {
    for (DWORD mode : {1ul, 2ul}) {
        display->dwGraphicsMode = mode;
        TBitmap withAlpha(&*display, dataFile("pattern32.tga").c_str(), 0);
        TBitmap plain(&*display, dataFile("pattern24.tga").c_str(), 0); // stored top-down
        ASSERT_NE(withAlpha.lpAlpha, nullptr);
        EXPECT_EQ(plain.lpAlpha, nullptr);
        for (const TBitmap *image : {&withAlpha, &plain}) {
            ASSERT_EQ(image->dwWidth * image->dwHeight, 35u);
            ASSERT_NE(image->lpRGB, nullptr);
            for (int i = 0; i < 35; ++i) {
                const Rgba p = pattern(i % 7, i / 7);
                EXPECT_EQ(image->lpRGB[i], vell::packRGB(mode, p.r, p.g, p.b)) << i;
                if (image->lpAlpha) {
                    EXPECT_EQ(image->lpAlpha[i], p.a) << i;
                }
            }
        }
    }
    { TBitmap missing(&*display, "missing.tga", 0); }
    EXPECT_NE(
        closeAndReadLog().find("TBitmap::TBitmap(char*) - Could not open file \"missing.tga\"!\n"),
        std::string::npos);
}

// What Paint and Blend write is the reference loops' result on a copy of the surface: only the
// visible part of the sprite changes, at any position on or off the surface.
TEST_F(ImageTest, PaintAndBlendOnBothLayoutsClipAtEveryEdge) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    desc.dwWidth = 40;
    desc.dwHeight = 30;
    desc.ddpfPixelFormat.dwSize = sizeof desc.ddpfPixelFormat;
    desc.ddpfPixelFormat.dwFlags = DDPF_RGB;
    desc.ddpfPixelFormat.dwRGBBitCount = 16;
    desc.ddpfPixelFormat.dwRBitMask = 0x7C00;
    desc.ddpfPixelFormat.dwGBitMask = 0x03E0;
    desc.ddpfPixelFormat.dwBBitMask = 0x001F;
    IDirectDrawSurface2 *s555 = nullptr;
    ASSERT_TRUE(display->CreateSurface(s555, desc));

    struct Call {
        unsigned long opacity; // 0xFFFFFFFF: Paint
        long colour, alpha;
    };
    const Call calls[] = {{~0ul, -1, -1}, {~0ul, 0x1234, -1}, {~0ul, -1, 100},
                          {128, -1, -1},  {100, 0, 200},      {300, -1, -1}};
    for (auto [surface, mode, W, H] :
         {std::make_tuple(display->lpBack, 2ul, 640, 480), std::make_tuple(s555, 1ul, 40, 30)}) {
        display->dwGraphicsMode = mode;
        TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
        const POINT places[] = {{10, 10}, {-3, 2},        {4, -2}, {W - 4, 3}, {5, H - 2},
                                {-5, -4}, {W - 3, H - 1}, {-7, 0}, {W, 0}};
        for (POINT at : places)
            for (const Call &call : calls) {
                std::vector<std::uint16_t> want = pixels(surface, true);
                const vell::PixelTarget target = {reinterpret_cast<std::uint8_t *>(want.data()),
                                                  2 * W, W, H};
                const vell::ImagePlanes planes = {7, 5, sprite.lpAlpha, sprite.lpRGB};
                const vell::Sources src = vell::paintSources(planes, call.colour, call.alpha);
                vell::blendImage(target, at.x, at.y, src, call.opacity, mode);
                const auto x = static_cast<unsigned long>(at.x),
                           y = static_cast<unsigned long>(at.y);
                EXPECT_TRUE(
                    call.opacity == ~0ul
                        ? sprite.Paint(surface, x, y, call.colour, call.alpha)
                        : sprite.Blend(surface, x, y, call.opacity, call.colour, call.alpha));
                ASSERT_EQ(pixels(surface), want)
                    << "mode " << mode << " at " << at.x << "," << at.y << ", opacity "
                    << call.opacity << ", colour " << call.colour << ", alpha " << call.alpha;
            }
    }
    s555->Release();
}

TEST_F(ImageTest, UnknownModeAndFailedLocksAreLoggedAndDrawNothing) {
    std::string unknown, lockFailed;
    {
        TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
        display->dwGraphicsMode = 0;
        const std::vector<std::uint16_t> before = pixels(display->lpBack, true);
        EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, -1, -1));
        EXPECT_TRUE(sprite.Blend(display->lpBack, 0, 0, 100, 31, 128));
        EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, -1, 0)); // nothing to mix: no line
        EXPECT_EQ(pixels(display->lpBack), before);
        EXPECT_TRUE(sprite.Paint(display->lpBack, 0, 0, 31, 255)); // copies need no layout
        EXPECT_EQ(vtest::pixel16(display->lpBack, 0, 0), 31u);
        unknown = "TBitmap::Paint (...) unknown graphicsmode\n"
                  "TBitmap::Blend (...) unknown graphicsmode\n";

        display->dwGraphicsMode = 2;
        IDirectDrawSurface2 *s = surface(16, 16);
        ASSERT_EQ(display->lpDD->SetDisplayMode(640, 480, 16), DD_OK); // loses every surface
        EXPECT_TRUE(sprite.Paint(s, 1, 1, -1, -1));
        EXPECT_TRUE(sprite.Blend(s, 1, 1, 100, -1, -1));
        const RECT all = {0, 0, 16, 16};
        TBitmap cut(&*display, s, all);
        EXPECT_EQ(cut.dwWidth + cut.dwHeight, 0u);
        EXPECT_NE(cut.lpRGB, nullptr); // kept for the destructor
        char text[128];
        display->getErrorString(DDERR_SURFACELOST, text);
        lockFailed = std::string("TBitmap::Paint - SurfaceLock failed!\n\n") + text + "\n" +
                     "TBitmap::Blend - SurfaceLock failed!\n  " + text + "\n" +
                     "TBitmap::TBitmap(LPSURFACE) - SurfaceLock failed!\n\n" + text + "\n";
        s->Release();
    }
    const std::string log = closeAndReadLog();
    EXPECT_NE(log.find(unknown), std::string::npos) << log;
    EXPECT_NE(log.find(lockFailed), std::string::npos) << log;
}

TEST_F(ImageTest, CutsOfADrawnSceneAndCopiesAreClippedRectangles) {
    TBitmap sprite(&*display, dataFile("pattern32.tga").c_str(), 0);
    ASSERT_EQ(display->ClearSurface(display->lpBack, 0x0841), DD_OK);
    sprite.Paint(display->lpBack, 632, 100, -1, -1); // half off the right edge
    const std::vector<std::uint16_t> scene = pixels(display->lpBack);
    const RECT off = {630, 98, 700, 104}, inverted = {10, 10, 5, 20};
    TBitmap cut(&*display, display->lpBack, off), none(&*display, display->lpBack, inverted);
    ASSERT_EQ(cut.dwWidth, 10u);
    ASSERT_EQ(cut.dwHeight, 6u);
    EXPECT_EQ(cut.lpAlpha, nullptr);
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(cut.lpRGB[i], scene[(98 + i / 10) * 640 + 630 + i % 10]) << i;
    EXPECT_EQ(none.dwWidth + none.dwHeight, 0u);
    EXPECT_EQ(none.lpRGB, nullptr);

    const RECT part = {8, 4, 20, 9}; // clipped to columns 8-9, rows 4-5
    TBitmap whole(cut), corner(cut, part), alphaPart(sprite, part), flipped(sprite, inverted);
    ASSERT_EQ(whole.dwWidth * whole.dwHeight, 60u);
    EXPECT_EQ(std::vector<WORD>(whole.lpRGB, whole.lpRGB + 60),
              std::vector<WORD>(cut.lpRGB, cut.lpRGB + 60));
    ASSERT_EQ(corner.dwWidth, 2u);
    ASSERT_EQ(corner.dwHeight, 2u);
    EXPECT_EQ(corner.lpRGB[3], cut.lpRGB[59]);
    EXPECT_EQ(alphaPart.dwWidth * alphaPart.dwHeight, 0u); // the sprite is 7 wide
    EXPECT_EQ(alphaPart.lpAlpha, nullptr);
    EXPECT_EQ(flipped.dwWidth + flipped.dwHeight, 0u);
}

} // namespace
