// Off-screen surfaces and bitmaps: resources against files, tiling, stretching, the fallback to
// system memory, and the log lines of each failure.
#include "display_fixture.h"

namespace {

using vtest::dataFile;
using vtest::DisplayTest;
using vtest::kBlue565;
using vtest::kGreen565;
using vtest::kRed565;
using vtest::kWhite565;
using vtest::SurfaceLock;

// The quadrant bitmap's colour at (x, y) when it is drawn at scale times its size from (0, 0),
// repeating every 16 * scale pixels.
std::uint32_t quadrant(int x, int y, int scale = 1) {
    const int cx = (x / (8 * scale)) % 2, cy = (y / (8 * scale)) % 2;
    const std::uint32_t colours[2][2] = {{kRed565, kGreen565}, {kBlue565, kWhite565}};
    return colours[cy][cx];
}

// Every pixel of the surface against expected(x, y); reports the first difference.
template <class F> void expectPixels(IDirectDrawSurface2 *s, int w, int h, F expected) {
    SurfaceLock lock(s);
    ASSERT_TRUE(lock.ok()) << std::hex << lock.result();
    ASSERT_EQ(lock.width(), w);
    ASSERT_EQ(lock.height(), h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            ASSERT_EQ(lock.at(x, y), expected(x, y)) << "at " << x << "," << y;
}

class SurfaceTest : public DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        VELL_NEEDS_16_BIT_SCREEN();
        ASSERT_NE(open(1).lpPrimary, nullptr);
    }
};

TEST_F(SurfaceTest, BitmapOfItsOwnSizeFromTheResourceNotTheFile) {
    // A file of the same name holds another picture: the executable's resource wins.
    ASSERT_TRUE(CopyFileA(dataFile("green8.bmp").c_str(), "TILE", FALSE));
    IDirectDrawSurface2 *s = nullptr;
    ASSERT_TRUE(display->CreateSurface(s, 0, 0, "TILE"));
    expectPixels(s, 16, 16, [](int x, int y) { return quadrant(x, y); });
    s->Release();
}

TEST_F(SurfaceTest, BitmapFileIsTiledAcrossALargerSurface) {
    IDirectDrawSurface2 *s = nullptr;
    ASSERT_TRUE(display->CreateSurface(s, 64, 32, dataFile("quad16.bmp").c_str()));
    expectPixels(s, 64, 32, [](int x, int y) { return quadrant(x, y); });
    s->Release();

    // A size that is no multiple of the tile: the last tiles are cut at the edge.
    ASSERT_TRUE(display->CreateSurface(s, 20, 9, dataFile("quad16.bmp").c_str()));
    expectPixels(s, 20, 9, [](int x, int y) { return quadrant(x, y); });
    s->Release();
}

TEST_F(SurfaceTest, EmptySurfaceOfTheGivenSize) {
    IDirectDrawSurface2 *s = nullptr;
    ASSERT_TRUE(display->CreateSurface(s, 37, 5, nullptr));
    SurfaceLock lock(s);
    EXPECT_EQ(lock.width(), 37);
    EXPECT_EQ(lock.height(), 5);
    EXPECT_EQ(lock.bits(), 16);
    s->Release();
}

TEST_F(SurfaceTest, StretchedBitmapFillsTheSurface) {
    IDirectDrawSurface2 *s = surface(32, 32);
    ASSERT_TRUE(display->LoadBitmap(s, "TILE", true));
    expectPixels(s, 32, 32, [](int x, int y) { return quadrant(x, y, 2); });
    s->Release();
}

TEST_F(SurfaceTest, CopyBitmapTilesOneCellOfTheBitmap) {
    HBITMAP strip =
        static_cast<HBITMAP>(LoadImageA(nullptr, dataFile("strip32.bmp").c_str(), IMAGE_BITMAP, 0,
                                        0, LR_CREATEDIBSECTION | LR_LOADFROMFILE));
    ASSERT_NE(strip, nullptr);
    IDirectDrawSurface2 *s = surface(48, 40);
    EXPECT_TRUE(display->CopyBitmap(s, strip, 16, 0, 16, 16, false)); // the second (blue) cell
    expectPixels(s, 48, 40, [](int, int) { return kBlue565; });

    // The whole bitmap stretched: red left half, blue right half.
    EXPECT_TRUE(display->CopyBitmap(s, strip, 0, 0, 0, 0, true));
    expectPixels(s, 48, 40, [](int x, int) { return x < 24 ? kRed565 : kBlue565; });

    EXPECT_FALSE(display->CopyBitmap(s, nullptr, 0, 0, 0, 0, false));
    EXPECT_FALSE(display->CopyBitmap(nullptr, strip, 0, 0, 0, 0, false));
    // Negative sizes copy one cell instead of looping.
    EXPECT_TRUE(display->CopyBitmap(s, strip, 0, 0, -16, -16, false));
    DeleteObject(strip);
    s->Release();
}

TEST_F(SurfaceTest, MissingBitmapsAreLogged) {
    IDirectDrawSurface2 *s = reinterpret_cast<IDirectDrawSurface2 *>(1);
    EXPECT_FALSE(display->CreateSurface(s, 0, 0, "no such bitmap"));
    EXPECT_EQ(s, nullptr);
    IDirectDrawSurface2 *t = surface(8, 8);
    EXPECT_FALSE(display->LoadBitmap(t, "nope.bmp", false));
    EXPECT_FALSE(display->LoadBitmap(t, nullptr, false));
    t->Release();
    EXPECT_TRUE(boxes->boxes().empty());

    const std::string log = closeAndReadLog();
    EXPECT_NE(log.find("CreateSurface(LPSURFACE, int, int, const char*) - LoadImage() failed.\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("LoadBitmap(\"nope.bmp\") - LoadImage() failed,\n"), std::string::npos)
        << log;
}

TEST_F(SurfaceTest, DescriptionFormAsksForVideoMemoryFirst) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    desc.dwWidth = 24;
    desc.dwHeight = 12;
    desc.ddsCaps.dwCaps = DDSCAPS_SYSTEMMEMORY; // cleared: the platform chooses
    IDirectDrawSurface2 *s = nullptr;
    ASSERT_TRUE(display->CreateSurface(s, desc));
    EXPECT_EQ(desc.ddsCaps.dwCaps, static_cast<DWORD>(DDSCAPS_OFFSCREENPLAIN));
    s->Release();
}

TEST_F(SurfaceTest, SurfaceThatCannotBeMadeShowsTheSecondAttemptsCode) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    desc.dwWidth = 0; // no surface has width 0
    desc.dwHeight = 12;
    IDirectDrawSurface2 *s = reinterpret_cast<IDirectDrawSurface2 *>(1);
    EXPECT_FALSE(display->CreateSurface(s, desc));
    EXPECT_EQ(s, nullptr);
    // Tried in video memory, then in system memory, which stays set for the caller to see.
    EXPECT_EQ(desc.ddsCaps.dwCaps,
              static_cast<DWORD>(DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY));
    const auto shown = boxes->take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].caption, "DirectDraw");
    EXPECT_EQ(shown[0].text.rfind("CreateSurface() failed!\n\n", 0), 0u) << shown[0].text;

    // The size-and-name form logs it too.
    EXPECT_FALSE(display->CreateSurface(s, 0, 5, nullptr));
    EXPECT_EQ(boxes->take().size(), 1u);
    EXPECT_NE(closeAndReadLog().find("CreateSurface(LPSURFACE, int, int, const char*) - "
                                     "CreateSurface(LPSURFACE, DDSURFACEDESC) faile.\n"),
              std::string::npos);
}

TEST_F(SurfaceTest, LostSurfacesFailUntilCopyBitmapBringsThemBack) {
    IDirectDrawSurface2 *s = surface(16, 16);
    // Losing every surface: another full-screen mode change drops them.
    ASSERT_EQ(display->lpDD->SetDisplayMode(640, 480, 16), DD_OK);
    ASSERT_EQ(s->IsLost(), DDERR_SURFACELOST);

    // Nothing restores them by itself: flips fail. (Wine's Blt does not look at the lost state,
    // so Blit's side of this cannot be shown here.)
    ASSERT_EQ(display->lpPrimary->IsLost(), DDERR_SURFACELOST);
    EXPECT_EQ(display->Flip(), 0);
    EXPECT_EQ(display->Flip(), 0);

    ASSERT_TRUE(display->LoadBitmap(s, "TILE", false));
    EXPECT_EQ(s->IsLost(), DD_OK);
    expectPixels(s, 16, 16, [](int x, int y) { return quadrant(x, y); });
    s->Release();
}

} // namespace
