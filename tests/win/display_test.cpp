// The display object against Wine's DirectDraw: opening and closing, the device choice in the
// registry, failures and their boxes, surfaces and bitmaps, blits, fills, flips, colour matching.
#include "harness.h"

#include <cstdint>
#include <functional>

using DisplayTest = vtest::VellTest;

const char kDeviceValue[] = "TDirectDraw::guidDevice";
const char kZeroGuid[] = "{00000000-0000-0000-0000-000000000000}";
const std::string kReleasing = "  Releasing DirectDraw interfaces:\n  done.\n";
const std::string kClosing = "De-initializing DirectDraw:\n" + kReleasing + "done.\n";

using vtest::dataFile;
using vtest::screenDepth;

TEST_F(DisplayTest, FullScreenWithoutAWindowShowsOneBoxAndStaysHalfOpen) {
    client().hWnd = nullptr;
    TDirectDraw &dd = openDisplay();
    expectBox("DirectDraw",
              "Unable to set cooperative level of DirectDraw(tm)!\n\nInvalid parameters!", nullptr);
    EXPECT_NE(dd.lpDD, nullptr); // until Exit
    EXPECT_EQ(dd.lpPrimary, nullptr);
    const std::string opening = vtest::expectDeviceList(dd.lpDeviceList, false);
    EXPECT_EQ(closeAndReadLog(), opening + kClosing);
}

TEST_F(DisplayTest, FullScreenOnATrueColourScreenShowsOneBox) {
    if (screenDepth() < 24) GTEST_SKIP() << "needs a true-colour X screen";
    TDirectDraw &dd = openDisplay();
    expectBox("DirectDraw", "Unable to set display mode!\n\nOperation not supported!", window);
    EXPECT_EQ(dd.lpPrimary, nullptr);
    EXPECT_EQ(dd.dwGraphicsMode, 0u);
}

TEST_F(DisplayTest, DeviceChoiceIsReadAtConstructionAndSavedAtDestruction) {
    ASSERT_TRUE(vtest::writeValue(kDeviceValue, vtest::kOtherGuid));
    TDirectDraw &dd = openDisplay(0);
    EXPECT_TRUE(IsEqualGUID(dd.guidDevice, vtest::kOther));
    EXPECT_EQ(dd.setDevice(GUID_NULL), 1);
    EXPECT_EQ(vtest::readValue(kDeviceValue), vtest::kOtherGuid);
    closeAndReadLog();
    EXPECT_EQ(vtest::readValue(kDeviceValue), kZeroGuid);

    ASSERT_TRUE(vtest::writeValue(kDeviceValue, std::string(300, 'A'))); // too long to be read
    EXPECT_TRUE(IsEqualGUID(openDisplay(0).guidDevice, GUID_NULL));
}

// Windowed: no back buffer and no flip; null arguments are refused without a word.
TEST_F(DisplayTest, WindowedDisplayHasNoBackBufferAndRefusesNullArgumentsSilently) {
    TDirectDraw &dd = openDisplay(2); // every mode but 1 is windowed
    IDirectDrawSurface2 *s = dd.lpPrimary;
    EXPECT_NE(s, nullptr);
    EXPECT_EQ(dd.lpBack, nullptr);
    EXPECT_EQ(dd.Flip(), 0); // the desktop does not flip
    // On a desktop of another depth than 16 bits painting must refuse rather than corrupt it.
    EXPECT_EQ(dd.wWhite, screenDepth() == 16 ? 0xFFFF : 0);
    RECT r = dd.CreateRect(0, 0, 32, 32);
    EXPECT_EQ(dd.Blit(nullptr, 0, 0, s, &r, 0), 0);
    EXPECT_EQ(dd.Blit(s, 0, 0, s, nullptr, 0), 0);
    EXPECT_EQ(dd.ClearSurface(nullptr, 0), DDERR_INVALIDPARAMS);
    EXPECT_EQ(dd.ColorMatch(nullptr, 0), 0xFFFFFFFFul);
    EXPECT_FALSE(dd.LoadBitmap(nullptr, nullptr, false));
    const std::string opening = vtest::expectDeviceList(dd.lpDeviceList, false);
    EXPECT_EQ(closeAndReadLog(), opening + kClosing);
}

// Refused surfaces are shown in a box (with the window of construction as owner) and logged.
TEST_F(DisplayTest, RefusedSurfacesAndBitmapsAreShownOrLogged) {
    TDirectDraw &dd = openDisplay(2);
    IDirectDrawSurface2 *made = nullptr;
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    desc.dwHeight = 12; // and width 0: refused in video memory, then in system memory
    EXPECT_FALSE(dd.CreateSurface(made, desc));
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(desc.ddsCaps.dwCaps, DWORD(DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY));
    expectBox("DirectDraw", "CreateSurface() failed!\n\nInvalid parameters!", window);
    EXPECT_FALSE(dd.CreateSurface(made, 0, 5, nullptr));
    expectBox("DirectDraw", "CreateSurface() failed!\n\nInvalid parameters!", window);
    EXPECT_FALSE(dd.CreateSurface(made, 0, 0, "no such bitmap"));
    EXPECT_FALSE(dd.LoadBitmap(nullptr, "nope.bmp", false));
    dd.Exit();
    base->hWnd = vtest::createWindow(); // boxes belong to the window of construction
    EXPECT_FALSE(dd.CreateSurface(made, 8, 8, nullptr));
    expectBox("DirectDraw", "CreateSurface() failed!\n\nUnknown HRESULT(0x800401f0)", window);
    DestroyWindow(base->hWnd);
    const std::string opening = vtest::expectDeviceList(dd.lpDeviceList, false);
    const std::string failed = "CreateSurface(LPSURFACE, int, int, const char*) - ";
    const std::string refused = failed + "CreateSurface(LPSURFACE, DDSURFACEDESC) faile.\n";
    EXPECT_EQ(closeAndReadLog(), opening + refused + failed + "LoadImage() failed.\n" +
                                     "LoadBitmap(\"nope.bmp\") - LoadImage() failed,\n" +
                                     kReleasing + refused + kClosing);
}

// Every pixel of a w by h 16-bit surface against want(x, y); names the first that differs.
void expectPixels(IDirectDrawSurface2 *s, int w, int h,
                  const std::function<std::uint16_t(int, int)> &want) {
    const std::vector<std::uint16_t> got = vtest::pixels(s);
    ASSERT_EQ(got.size(), std::size_t(w * h));
    for (int i = 0; i < w * h; ++i)
        ASSERT_EQ(got[i], want(i % w, i / w)) << "at " << i % w << "," << i / w;
}

// The quadrant bitmap (red, green / blue, white), repeated.
std::uint16_t quadrant(int x, int y) {
    const std::uint16_t colours[2][2] = {{0xF800, 0x07E0}, {0x001F, 0xFFFF}};
    return colours[y / 8 % 2][x / 8 % 2];
}

using FullScreenTest = vtest::ScreenTest;

TEST_F(FullScreenTest, OpensWith5_6_5AndCloses) {
    EXPECT_EQ(display->dwGraphicsMode, 2u);
    EXPECT_EQ(display->wWhite, 0xFFFF);
    const std::string opening = vtest::expectDeviceList(display->lpDeviceList, false);
    EXPECT_EQ(display->Exit(), 1);
    EXPECT_EQ(display->lpBack, nullptr);
    EXPECT_EQ(display->Flip(), 0);
    EXPECT_EQ(display->Init(), 1);
    EXPECT_EQ(display->Flip(), 1);
    EXPECT_EQ(closeAndReadLog(), opening + kReleasing + kClosing);
    EXPECT_EQ(vtest::readValue(kDeviceValue), kZeroGuid);
}

TEST_F(FullScreenTest, BitmapsFromResourcesFilesOrHandlesAreTiledOrStretched) {
    // A file named like the resource holds another picture: the executable's resource wins.
    ASSERT_TRUE(CopyFileA(dataFile("green8.bmp").c_str(), "TILE", FALSE));
    expectPixels(make(0, 0, "TILE"), 16, 16, quadrant);
    const std::string file = dataFile("quad16.bmp");
    expectPixels(make(64, 32, file.c_str()), 64, 32, quadrant);
    expectPixels(make(20, 9, file.c_str()), 20, 9, quadrant); // tiles cut at the edges
    IDirectDrawSurface2 *stretched = make(32, 32, nullptr);
    ASSERT_TRUE(display->LoadBitmap(stretched, "TILE", true));
    expectPixels(stretched, 32, 32, [](int x, int y) { return quadrant(x / 2, y / 2); });
    // CopyBitmap: one cell of a strip, tiled.
    HANDLE strip = LoadImageA(nullptr, dataFile("strip32.bmp").c_str(), IMAGE_BITMAP, 0, 0,
                              LR_CREATEDIBSECTION | LR_LOADFROMFILE);
    IDirectDrawSurface2 *s = make(48, 40, nullptr);
    EXPECT_TRUE(display->CopyBitmap(s, strip, 16, 0, 16, 16, false)); // the blue cell
    expectPixels(s, 48, 40, [](int, int) { return 0x001F; });
    EXPECT_TRUE(display->CopyBitmap(s, strip, 0, 0, -16, -16, false)); // one cell, not a loop
    EXPECT_FALSE(display->CopyBitmap(s, nullptr, 0, 0, 0, 0, false));
    DeleteObject(strip);
}

TEST_F(FullScreenTest, LostSurfacesFailUntilCopyBitmapBringsThemBack) {
    IDirectDrawSurface2 *s = make(16, 16, nullptr);
    ASSERT_EQ(display->lpDD->SetDisplayMode(640, 480, 16), DD_OK); // every surface is lost
    ASSERT_EQ(s->IsLost(), DDERR_SURFACELOST);
    RECT all = display->CreateRect(0, 0, 16, 16);
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, s, &all, 0), 0);
    EXPECT_EQ(display->Flip(), 0);
    EXPECT_EQ(display->Flip(), 0); // nothing restores them by itself
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, s, &all, 0), 0);
    ASSERT_TRUE(display->LoadBitmap(s, "TILE", false));
    EXPECT_EQ(s->IsLost(), DD_OK);
    expectPixels(s, 16, 16, quadrant);
    EXPECT_EQ(display->Blit(display->lpBack, 0, 0, s, &all, 0), 0); // the back buffer is lost yet
}

// The clipping rule itself is tested natively (blit_clip_test); here its use of the platform's
// blitter, and colour matching, which reads back the first pixel of the surface it is given.
TEST_F(FullScreenTest, BlitCopiesWhatFitsAndColorMatchGivesPixelValues) {
    IDirectDrawSurface2 *source = make(0, 0, "TILE");
    RECT r = display->CreateRect(4, 2, 10, 12); // columns 4 to 13, rows 2 to 13
    ASSERT_EQ(display->ClearSurface(display->lpBack, 0), DD_OK);
    EXPECT_EQ(display->Blit(display->lpBack, 639, 0, source, &r, 0), 1); // the last column: nothing
    EXPECT_EQ(display->Blit(display->lpBack, -6, 470, source, &r, 0), 1); // off two edges
    const RECT clipped = {10, 2, 14, 12};
    EXPECT_TRUE(EqualRect(&r, &clipped));
    expectPixels(display->lpBack, 640, 480, [](int x, int y) -> std::uint16_t {
        return x < 4 && y >= 470 ? quadrant(10 + x, y - 468) : 0;
    });
    ASSERT_EQ(display->ClearSurface(source, 0x1234), DD_OK);
    EXPECT_EQ(display->ColorMatch(source, RGB(255, 255, 255)), 0xFFFFul);
    EXPECT_EQ(display->ColorMatch(source, RGB(0, 0, 255)), 0x001Ful);
    EXPECT_EQ(display->ColorMatch(source, CLR_INVALID), 0x1234ul); // the fill, put back
}
