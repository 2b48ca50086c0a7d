// Hours of play, condensed: what a game does every frame and now and then, over and over, with the
// process measured before and after. Under Wine the process counters of Windows read 0, so the
// measures are the busy bytes of every heap (HeapWalk) and the value a new handle gets, which
// grows when handles leak (handles are handed out lowest free slot first).
#include "harness.h"

namespace {

std::size_t heapBytes() {
    HANDLE heaps[256];
    const DWORD n = GetProcessHeaps(256, heaps);
    std::size_t busy = 0;
    for (DWORD i = 0; i < n && i < 256; ++i) {
        if (!HeapLock(heaps[i])) continue;
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry))
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) busy += entry.cbData;
        HeapUnlock(heaps[i]);
    }
    return busy;
}

std::uintptr_t nextHandle() {
    HANDLE event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(event);
    return reinterpret_cast<std::uintptr_t>(event);
}

class LongRun : public vtest::ScreenTest {
protected:
    // One stretch of play: frames of sprites, blended images and text; text images of both
    // kinds; surfaces and sounds made and dropped; files that fail to load; the devices reopened.
    void play(TDirectSound &ds, TDirectFont &font, TBitmap &sprite, int frames) {
        TDirectDraw &dd = *display;
        for (int f = 0; f < frames; ++f) {
            dd.ClearSurface(dd.lpBack, 0);
            // Off every edge now and then: the positions are taken as signed.
            sprite.Paint(dd.lpBack, static_cast<unsigned long>(f * 7 % 700 - 30),
                         static_cast<unsigned long>(f * 5 % 520 - 20), -1, -1);
            sprite.Blend(dd.lpBack, 300, 200, static_cast<unsigned long>(f % 256), -1, -1);
            dd.PrintText(&font, dd.lpBack, 10, f % 470, "SCORE 001234", dd.wWhite,
                         static_cast<unsigned char>(f));
            dd.Flip();
        }
        LOGFONTA face = {};
        face.lfHeight = -12;
        lstrcpyA(face.lfFaceName, "DejaVu Sans");
        TBitmap gdiText(&dd, &face, "Level 2", 2), fontText(&dd, &font, "Level 2");
        gdiText.Paint(dd.lpBack, 20, 20, dd.wWhite, -1);
        fontText.Blend(dd.lpBack, 20, 40, 128, -1, -1);
        IDirectDrawSurface2 *tiles = nullptr;
        dd.CreateSurface(tiles, 64, 64, vtest::dataFile("quad16.bmp").c_str());
        if (tiles != nullptr) tiles->Release();
        structDirectSoundBuffer *click = ds.newSound("click.wav", 3);
        ds.playSound(click);
        ds.deleteSound(click);
        TBitmap missing(&dd, "missing.tga", 0);
        ds.deleteSound(ds.newSound("missing.wav", 2));
        TDirectFont noFont("missing.bmp");
        IDirectDrawSurface2 *none = nullptr;
        dd.CreateSurface(none, 0, 0, "missing.bmp");
        ASSERT_EQ(none, nullptr);
        boxes.clear(); // the missing font's box
    }
    void reopen(TDirectSound &ds) { // the devices closed and opened again
        ASSERT_TRUE(display->setDevice(display->guidDevice));
        ds.setDevice(ds.guidDevice);
    }
};

struct Measure {
    std::size_t heap = heapBytes();
    std::uintptr_t handle = nextHandle();
};

TEST_F(LongRun, HoursOfPlayLeakNothing) {
    const std::string samples(4410, '\x20'); // a tenth of a second of a constant level
    ASSERT_TRUE(vtest::writeFile(
        "click.wav", vtest::riff(vtest::format(22050, 1, 16) + vtest::chunk("data", samples))));
    TDirectSound &ds = openSound();
    boxes.clear(); // a machine without sound says so once
    TDirectFont font(vtest::dataFile("sans16.bmp").c_str());
    TBitmap sprite(&*display, vtest::dataFile("pattern32.tga").c_str(), 0);
    ASSERT_GT(sprite.dwWidth, 0u);
    for (int i = 0; i < 2; ++i) { // first uses: caches, the log's buffer, Wine's own tables
        reopen(ds);
        play(ds, font, sprite, 30);
    }
    const Measure start;
    for (int i = 0; i < 16; ++i)
        play(ds, font, sprite, 30);
    const Measure played;
    for (int i = 0; i < 8; ++i) {
        reopen(ds);
        play(ds, font, sprite, 5);
    }
    const Measure reopened;
    // Play keeps nothing (0 bytes here on both builds): a sound record of 16 bytes lost a round
    // shows. A failure prints the figures.
    EXPECT_LE(played.heap, start.heap + 128);
    EXPECT_EQ(played.handle, start.handle);
    // Wine itself keeps a few hundred bytes of every pair of device objects closed (216 on x86_64,
    // 260 on i686; 120 of them are a DirectDraw object's that filled a surface, as the platform's
    // calls alone show). A surface, device or sound the library failed to release costs kilobytes.
    EXPECT_LE(reopened.heap, played.heap + 8 * 384);
    EXPECT_EQ(reopened.handle, played.handle);
}

} // namespace
