// Times TBitmap::Paint and Blend of a 64x64 sprite with soft edges on the full-screen back buffer,
// the same loop on ordinary memory, and a bare Lock and Unlock of the sprite's rectangle, and
// prints the cost of each per call in microseconds (best of several rounds). Run under Wine with
// a 16-bit screen by tools/bench.sh.
#include "VellBase.h"

#include "image/compose.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(window, message, wParam, lParam);
}

// The time of one call of f in microseconds: the median and the best of 41 rounds of n calls.
struct Cost {
    double median, best;
};
template <class F> Cost microseconds(int n, F f) {
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    std::vector<double> rounds;
    for (int round = 0; round < 41; ++round) {
        QueryPerformanceCounter(&start);
        for (int i = 0; i < n; ++i)
            f();
        QueryPerformanceCounter(&end);
        rounds.push_back(double(end.QuadPart - start.QuadPart) / frequency.QuadPart / n * 1e6);
    }
    std::sort(rounds.begin(), rounds.end());
    return {rounds[rounds.size() / 2], rounds[0]};
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = "VellPaintCall";
    RegisterClassA(&windowClass);
    TVellBase base(instance, 1, 2, false); // no string table: no name, no key, no log
    base.hWnd = CreateWindowExA(0, "VellPaintCall", "Paint call", WS_POPUP | WS_VISIBLE, 0, 0, 640,
                                480, nullptr, nullptr, instance, nullptr);
    TDirectDraw display(&base, 1);
    if (display.lpBack == nullptr) {
        std::printf("the 640x480x16 display did not open\n");
        return 1;
    }

    const int size = 64, x = 101, y = 77;
    TBitmap sprite(&display);
    sprite.dwWidth = sprite.dwHeight = size;
    sprite.lpAlpha = static_cast<BYTE *>(std::malloc(size * size));
    sprite.lpRGB = static_cast<WORD *>(std::malloc(2 * size * size));
    for (int i = 0; i < size * size; ++i) {
        const double edge = (30 - std::hypot(i % size - 31.5, i / size - 31.5)) / 10;
        sprite.lpAlpha[i] = BYTE(edge <= 0 ? 0 : edge >= 1 ? 255 : 1 + int(edge * 253));
        sprite.lpRGB[i] = WORD(i * 2654435761u >> 16);
    }
    std::vector<std::uint16_t> memory(640 * 480);
    const vell::PixelTarget target = {reinterpret_cast<std::uint8_t *>(memory.data()), 1280, 640,
                                      480};
    const vell::ImagePlanes planes = {size, size, sprite.lpAlpha, sprite.lpRGB};
    const vell::Sources src = vell::paintSources(planes, -1, -1);
    const std::uint32_t mode = display.dwGraphicsMode;
    RECT rect = {x, y, x + size, y + size};

    const int n = 500;
    microseconds(n / 10, [&] { sprite.Paint(display.lpBack, x, y, -1, -1); }); // settles Wine
    const Cost paint = microseconds(n, [&] { sprite.Paint(display.lpBack, x, y, -1, -1); });
    const Cost blend = microseconds(n, [&] { sprite.Blend(display.lpBack, x, y, 100, -1, -1); });
    const Cost loop = microseconds(n, [&] { vell::paintImage(target, x, y, src, mode); });
    const Cost blendLoop = microseconds(n, [&] { vell::blendImage(target, x, y, src, 100, mode); });
    const Cost lock = microseconds(n, [&] {
        DDSURFACEDESC desc = {};
        desc.dwSize = sizeof desc;
        if (display.lpBack->Lock(&rect, &desc, DDLOCK_WAIT, nullptr) == DD_OK)
            display.lpBack->Unlock(nullptr);
    });
    const Cost touch = microseconds(n, [&] {
        DDSURFACEDESC desc = {};
        desc.dwSize = sizeof desc;
        if (display.lpBack->Lock(&rect, &desc, DDLOCK_WAIT, nullptr) == DD_OK) {
            *static_cast<volatile WORD *>(desc.lpSurface) ^= 1;
            display.lpBack->Unlock(nullptr);
        }
    });
    std::printf("64x64 sprite at (%d, %d) on the back buffer, %s pixel path, %d-bit build;\n"
                "microseconds per call, median (best) of 41 rounds of %d calls:\n",
                x, y, vell::simdPathName(vell::simdPath()), int(8 * sizeof(void *)), n);
    const std::pair<const char *, Cost> rows[] = {{"Paint call", paint},
                                                  {"  its loop on memory", loop},
                                                  {"Blend call (opacity 100)", blend},
                                                  {"  its loop on memory", blendLoop},
                                                  {"Lock and Unlock alone", lock},
                                                  {"  writing one pixel between", touch}};
    for (const auto &[what, cost] : rows)
        std::printf("  %-26s %8.2f (%.2f)\n", what, cost.median, cost.best);
    return 0;
}
