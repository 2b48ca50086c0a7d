// The VellBase demo: a small client program that uses the library the way a game would.
//
// It opens its window, constructs the application base object with the debug log on
// (VellDemo.log in the current directory), opens the display full screen (640x480 at 16 bits),
// builds a tiled background from the bitmap resource TILE, loads two sprites from the bitmap files
// beside the program and three alpha images from TGA files, and runs a frame loop: background,
// sprites moving and clipped at the screen's edges, a crate with a translucent drop shadow, an orb
// fading in and out, a saucer crossing the bottom edge, a line of status text, a score and a fading
// message printed in the font beside the program (font.bmp), flip. Sound effects (wave files beside
// the program) play at a master volume of 70 when a rock leaves the screen and when the ship
// turns; without a sound device the demo runs silently. Escape ends it early. Started by hand
// (no seconds given), it ends by asking for the player's name in the line editor.
//
//   VellDemo.exe [seconds]      (default 3)
#include "VellBase.h"

#include "demo_ids.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE) DestroyWindow(window);
        return 0;
    case WM_SETCURSOR:
        SetCursor(nullptr);
        return TRUE;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, wParam, lParam);
    }
}

HWND createMainWindow(HINSTANCE instance, const char *title) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = instance;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = "VellDemoWindow";
    if (!RegisterClassA(&windowClass)) return nullptr;
    HWND window = CreateWindowExA(WS_EX_TOPMOST, windowClass.lpszClassName, title, WS_POPUP, 0, 0,
                                  640, 480, nullptr, nullptr, instance, nullptr);
    if (window != nullptr) {
        ShowWindow(window, SW_SHOW);
        UpdateWindow(window);
    }
    return window;
}

std::string besideProgram(const char *name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string dir = path;
    dir.resize(dir.find_last_of('\\') + 1);
    return dir + name;
}

// A sprite surface whose magenta pixels are transparent.
IDirectDrawSurface2 *loadSprite(TDirectDraw &display, const char *file) {
    IDirectDrawSurface2 *sprite = nullptr;
    const std::string path = besideProgram(file);
    if (!display.CreateSurface(sprite, 0, 0, path.c_str())) {
        if (sprite != nullptr) sprite->Release();
        return nullptr;
    }
    const unsigned long magenta = display.ColorMatch(sprite, RGB(255, 0, 255));
    DDCOLORKEY key = {magenta, magenta};
    sprite->SetColorKey(DDCKEY_SRCBLT, &key);
    return sprite;
}

struct Mover {
    float x, y, vx, vy;
};

void drawStatus(IDirectDrawSurface2 *surface, const char *text) {
    HDC dc = nullptr;
    if (FAILED(surface->GetDC(&dc))) return;
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, RGB(0, 0, 0));
    TextOutA(dc, 11, 11, text, static_cast<int>(std::strlen(text)));
    SetTextColor(dc, RGB(255, 255, 255));
    TextOutA(dc, 10, 10, text, static_cast<int>(std::strlen(text)));
    surface->ReleaseDC(dc);
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int) {
    const bool byHand = commandLine == nullptr || *commandLine == 0; // tools/demo.sh gives seconds
    const DWORD seconds = byHand ? 3 : std::strtoul(commandLine, nullptr, 10);

    TVellBase base(instance, IDS_DEMO_APPNAME, IDS_DEMO_REGKEY, true);
    char title[128] = "VellBase demo";
    if (const char *text = base.getString(IDS_DEMO_TITLE)) lstrcpynA(title, text, sizeof title);
    base.hWnd = createMainWindow(instance, title);
    if (base.hWnd == nullptr) {
        base.DebugOut("VellDemo: cannot create the main window (error %lu)\n", GetLastError());
        return 1;
    }

    int status = 0;
    {
        TDirectDraw display(&base, 1);
        TDirectSound sound(&base);
        sound.setVolume(70);
        const std::string blipFile = besideProgram("blip.wav");
        const std::string whooshFile = besideProgram("whoosh.wav");
        structDirectSoundBuffer *blip = sound.newSound(blipFile.c_str(), 2);
        structDirectSoundBuffer *whoosh = sound.newSound(whooshFile.c_str(), 4);
        base.DebugOut("VellDemo: sound %s\n", sound.lpDS != nullptr ? "on" : "off");
        if (display.lpBack == nullptr) {
            base.DebugOut("VellDemo: the display did not open full screen\n");
            status = 1;
        } else {
            base.DebugOut("VellDemo: graphics mode %lu, white 0x%04X\n", display.dwGraphicsMode,
                          display.wWhite);
            IDirectDrawSurface2 *background = nullptr;
            display.CreateSurface(background, 640, 480, "TILE"); // tiled from the resource
            IDirectDrawSurface2 *ship = loadSprite(display, "ship.bmp");
            IDirectDrawSurface2 *rock = loadSprite(display, "rock.bmp");
            // Alpha images, packed in the display's layout as they load.
            const std::string orbFile = besideProgram("orb.tga");
            const std::string crateFile = besideProgram("crate.tga");
            const std::string saucerFile = besideProgram("saucer.tga");
            TBitmap orb(&display, orbFile.c_str(), 0);
            TBitmap crate(&display, crateFile.c_str(), 0);
            TBitmap saucer(&display, saucerFile.c_str(), 0);
            // Text: the demo's font (DejaVu Sans at 16 pixels, made by vell-fontmaker).
            const std::string fontFile = besideProgram("font.bmp");
            TDirectFont font(fontFile.c_str());
            // A label for the crate: a text image that GDI renders four times larger, reduced to
            // smooth edges, then painted through its alpha in one colour.
            LOGFONTA labelFont = {};
            labelFont.lfHeight = -10;
            labelFont.lfWeight = FW_BOLD;
            labelFont.lfQuality = NONANTIALIASED_QUALITY; // the reduction does the smoothing
            lstrcpyA(labelFont.lfFaceName, "Tahoma");
            TBitmap label(&display, &labelFont, "CARGO", 4);

            // Rocks drift across and leave the screen on every side; the blits clip them.
            // Motion follows the clock (pixels per second), frames are paced at 60 per second.
            const Mover rocks[] = {{-20, 60, 90, 25},   {600, 420, -110, -45}, {300, -20, 15, 80},
                                   {100, 300, 60, -95}, {500, 100, -80, 70},   {20, 200, -70, 10},
                                   {620, 250, 50, -20}, {400, 470, -30, 60},   {200, 10, 40, -55},
                                   {560, 30, 100, 100}};
            const DWORD start = GetTickCount();
            DWORD frames = 0;
            int previousX[sizeof rocks / sizeof rocks[0]] = {};
            float previousShipX = 0, previousStep = 0;
            MSG message;
            bool running = true;
            base.DebugOut("VellDemo: the scene opens\n"); // tools/demo.sh waits for this line
            // The scene opens with a whoosh: even a short run is heard.
            DWORD sounds = sound.playSound(whoosh);
            for (DWORD now = start; running && now - start < seconds * 1000; now = GetTickCount()) {
                while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
                    if (message.message == WM_QUIT) running = false;
                    TranslateMessage(&message);
                    DispatchMessageA(&message);
                }
                const float t = static_cast<float>(now - start) / 1000.0f;
                RECT whole = display.CreateRect(0, 0, 640, 480);
                if (background != nullptr)
                    display.Blit(display.lpBack, 0, 0, background, &whole, 0);
                else
                    display.ClearSurface(display.lpBack, 0);

                for (std::size_t i = 0; i < sizeof rocks / sizeof rocks[0]; ++i) {
                    const Mover &r = rocks[i];
                    // Wrapped into [-40, 680) and [-40, 520): every rock crosses every edge.
                    const int x = static_cast<int>(std::fmod(
                                      std::fmod(r.x + 40 + r.vx * t, 720.f) + 720.f, 720.f)) -
                                  40;
                    const int y = static_cast<int>(std::fmod(
                                      std::fmod(r.y + 40 + r.vy * t, 560.f) + 560.f, 560.f)) -
                                  40;
                    // A jump of the wrapped position: the rock left the screen.
                    if (frames > 0 && std::abs(x - previousX[i]) > 300)
                        sounds += sound.playSound(whoosh);
                    previousX[i] = x;
                    RECT part = display.CreateRect(0, 0, 24, 24);
                    if (rock != nullptr)
                        display.Blit(display.lpBack, x, y, rock, &part, DDBLT_KEYSRC | DDBLT_WAIT);
                }
                // The crate's shadow is the whole rectangle in black at a constant alpha.
                crate.Paint(display.lpBack, 88, 168, 0, 110);
                crate.Paint(display.lpBack, 80, 160, -1, -1);
                const int labelX = 80 + (40 - static_cast<int>(label.dwWidth)) / 2;
                const int labelY = 160 + (40 - static_cast<int>(label.dwHeight)) / 2;
                label.Paint(display.lpBack, static_cast<unsigned long>(labelX + 1),
                            static_cast<unsigned long>(labelY + 1), 0, -1); // its shadow
                label.Paint(display.lpBack, static_cast<unsigned long>(labelX),
                            static_cast<unsigned long>(labelY), display.wWhite, -1);
                // Invisible to fully there and back every two seconds.
                const auto opacity =
                    static_cast<unsigned long>(127.5f - 127.5f * std::cos(3.14159f * t));
                orb.Blend(display.lpBack, 470, 140, opacity, -1, -1);
                // Across the bottom edge, leaving on the right and coming back on the left: the
                // positions go negative and Paint clips.
                const int saucerX = static_cast<int>(std::fmod(140 * t + 490, 704.f)) - 64;
                saucer.Paint(display.lpBack, static_cast<unsigned long>(saucerX), 454, -1, -1);

                const float shipX = 330 * std::sin(1.3f * t);
                const float step = shipX - previousShipX;
                if (frames > 1 && (step > 0) != (previousStep > 0))
                    sounds += sound.playSound(blip); // turned
                previousShipX = shipX;
                previousStep = step;
                RECT part = display.CreateRect(0, 0, 32, 32);
                if (ship != nullptr)
                    display.Blit(display.lpBack, 304 + static_cast<int>(shipX),
                                 380 + static_cast<int>(40 * std::sin(2.6f * t)), ship, &part,
                                 DDBLT_KEYSRC | DDBLT_WAIT);

                // Text: a score at the top right and a message fading in and out.
                char score[32];
                std::snprintf(score, sizeof score, "SCORE %06lu", frames * 10);
                const auto *scoreBytes = reinterpret_cast<const unsigned char *>(score);
                display.PrintText(&font, display.lpBack, 630 - font.getStringWidth(scoreBytes), 8,
                                  score, display.wWhite, 0);
                const char message[] = "Welcome to VellBase\nanti-aliased text, fading in and out";
                const auto fade = static_cast<unsigned char>(110 + 110 * std::sin(2.0f * t));
                display.PrintText(&font, display.lpBack, 150, 200, message,
                                  display.dwGraphicsMode == 1 ? 0x7FE0 : 0xFFE0, fade); // yellow

                char text[96];
                std::snprintf(text, sizeof text, "VellBase demo - frame %lu, %.1f s", frames, t);
                drawStatus(display.lpBack, text);
                if (!display.Flip()) Sleep(10);
                ++frames;
                const DWORD due = start + frames * 1000 / 60;
                const DWORD after = GetTickCount();
                if (static_cast<LONG>(due - after) > 0) Sleep(due - after);
            }
            base.DebugOut("VellDemo: %lu frames in %lu ms\n", frames, GetTickCount() - start);
            base.DebugOut("VellDemo: %lu sounds started\n", sounds);
            if (byHand && running) {
                // The line editor on the last frame: Enter takes the name, Escape keeps "Player".
                display.PrintText(&font, display.lpPrimary, 200, 290, "Your name:", display.wWhite,
                                  0);
                char name[24] = "Player";
                display.Input(&font, 200, 310, name, 20, display.wWhite);
                base.DebugOut("VellDemo: the player is %s\n", name);
            }
            for (IDirectDrawSurface2 *s : {background, ship, rock})
                if (s != nullptr) s->Release();
        }
        sound.deleteSound(blip);
        sound.deleteSound(whoosh);
    }
    if (IsWindow(base.hWnd)) DestroyWindow(base.hWnd);
    base.DebugOut("VellDemo: done\n");
    return status;
}
