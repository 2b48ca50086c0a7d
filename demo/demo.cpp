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
// turns; without a sound device the demo runs silently. Escape ends it early, P pauses the scene.
// Started by hand (no seconds given), it ends by asking for the player's name in the line editor.
//
// Switching to another program and back: while the demo is in the background it draws nothing and
// its scene clock stands still; on the return it opens the display again, makes its surfaces
// again and goes on from the frame it left. A sound the platform reports lost is loaded again.
//
//   VellDemo.exe [seconds]      (default 3; seconds of the scene, pauses not counted)
#include "VellBase.h"

#include "demo_ids.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

bool active = true;    // false while another program has the foreground
bool paused = false;   // P: the scene clock stands still
bool editing = false;  // the line editor runs
bool cutShort = false; // the line editor was ended by a switch away, not by the player
TVellBase *logTo = nullptr;
char title[128] = "VellBase demo";

// The window's title (the taskbar's) says what the demo is doing: " - paused", " - your name?".
void retitle(HWND window) {
    char text[160];
    std::snprintf(text, sizeof text, "%s%s", title,
                  editing  ? " - your name?"
                  : paused ? " - paused"
                           : "");
    SetWindowTextA(window, text);
}

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE) DestroyWindow(window);
        if (wParam == 'P') {
            paused = !paused;
            retitle(window);
        }
        return 0;
    case WM_ACTIVATEAPP:
        active = wParam != 0;
        if (logTo != nullptr)
            logTo->DebugOut("VellDemo: %s\n", active ? "in front" : "in the background");
        // The editor draws on the screen, which is gone until the demo has reopened it: end it
        // now (as Enter would), and the demo opens it again on the return with the text so far.
        if (!active && editing && !cutShort) {
            cutShort = true;
            PostMessageA(window, WM_CHAR, VK_RETURN, 0);
        }
        return DefWindowProcA(window, message, wParam, lParam);
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

// A sound effect and the file it comes from. A sound whose buffer the platform reports lost
// (playSound logs DSERR_BUFFERLOST) is loaded again from its file and played.
struct Effect {
    TDirectSound &sound;
    std::string file;
    int voices;
    structDirectSoundBuffer *s;

    Effect(TDirectSound &to, const char *name, int n)
        : sound(to), file(besideProgram(name)), voices(n), s(to.newSound(file.c_str(), n)) {}
    ~Effect() { sound.deleteSound(s); }
    Effect(const Effect &) = delete;
    Effect &operator=(const Effect &) = delete;

    DWORD play() {
        if (sound.playSound(s)) return 1;
        DWORD status = 0;
        if (s == nullptr || s->lpdsBuffer == nullptr || s->lpdsBuffer[0] == nullptr ||
            FAILED(s->lpdsBuffer[0]->GetStatus(&status)) || !(status & DSBSTATUS_BUFFERLOST))
            return 0;
        sound.deleteSound(s);
        s = sound.newSound(file.c_str(), voices);
        return static_cast<DWORD>(sound.playSound(s));
    }
};

// Everything on the screen. A frame is a function of the scene time alone, so a paused scene, or
// one that comes back from another program, shows the very frame it showed before.
struct Scene {
    TVellBase &base;
    TDirectDraw &display;
    Effect blip, whoosh;
    // Surfaces go with the display; the images, the font and the label live in memory.
    IDirectDrawSurface2 *background = nullptr, *ship = nullptr, *rock = nullptr;
    TBitmap orb, crate, saucer;
    TDirectFont font;
    TBitmap label;
    DWORD frames = 0, sounds = 0;
    int previousX[10] = {};
    float previousShipX = 0, previousStep = 0;

    static LOGFONTA *labelFont() {
        // The crate's label: GDI renders it four times larger, the reduction smooths its edges,
        // and it is painted through its alpha in one colour.
        static LOGFONTA font = {};
        font.lfHeight = -10;
        font.lfWeight = FW_BOLD;
        font.lfQuality = NONANTIALIASED_QUALITY; // the reduction does the smoothing
        lstrcpyA(font.lfFaceName, "Tahoma");
        return &font;
    }

    Scene(TVellBase &b, TDirectDraw &d, TDirectSound &sound)
        : base(b), display(d), blip(sound, "blip.wav", 2), whoosh(sound, "whoosh.wav", 4),
          // Alpha images, packed in the display's layout as they load.
          orb(&d, besideProgram("orb.tga").c_str(), 0),
          crate(&d, besideProgram("crate.tga").c_str(), 0),
          saucer(&d, besideProgram("saucer.tga").c_str(), 0),
          // The demo's font: DejaVu Sans at 16 pixels, made by vell-fontmaker.
          font(besideProgram("font.bmp").c_str()), label(&d, labelFont(), "CARGO", 4) {
        makeSurfaces();
    }
    ~Scene() { releaseSurfaces(); }
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    void makeSurfaces() {
        display.CreateSurface(background, 640, 480, "TILE"); // tiled from the resource
        ship = loadSprite(display, "ship.bmp");
        rock = loadSprite(display, "rock.bmp");
    }
    void releaseSurfaces() {
        for (IDirectDrawSurface2 **s : {&background, &ship, &rock}) {
            if (*s != nullptr) (*s)->Release();
            *s = nullptr;
        }
    }

    // After a switch away and back the display mode and every surface are lost. The surfaces are
    // released before the display object that made them, the display opens again on the same
    // device, and the surfaces are made again. False when the display does not open (a message
    // box has said why).
    bool reopen() {
        releaseSurfaces();
        if (!display.setDevice(display.guidDevice)) return false;
        makeSurfaces();
        base.DebugOut("VellDemo: back from another program, the display opened again\n");
        return true;
    }

    void draw(float t, bool withSounds) {
        RECT whole = display.CreateRect(0, 0, 640, 480);
        if (background != nullptr)
            display.Blit(display.lpBack, 0, 0, background, &whole, 0);
        else
            display.ClearSurface(display.lpBack, 0);

        // Rocks drift across and leave the screen on every side; the blits clip them.
        static const Mover rocks[] = {
            {-20, 60, 90, 25},   {600, 420, -110, -45}, {300, -20, 15, 80},  {100, 300, 60, -95},
            {500, 100, -80, 70}, {20, 200, -70, 10},    {620, 250, 50, -20}, {400, 470, -30, 60},
            {200, 10, 40, -55},  {560, 30, 100, 100}};
        for (std::size_t i = 0; i < sizeof rocks / sizeof rocks[0]; ++i) {
            const Mover &r = rocks[i];
            // Wrapped into [-40, 680) and [-40, 520): every rock crosses every edge.
            const int x =
                static_cast<int>(std::fmod(std::fmod(r.x + 40 + r.vx * t, 720.f) + 720.f, 720.f)) -
                40;
            const int y =
                static_cast<int>(std::fmod(std::fmod(r.y + 40 + r.vy * t, 560.f) + 560.f, 560.f)) -
                40;
            // A jump of the wrapped position: the rock left the screen.
            if (withSounds && frames > 0 && std::abs(x - previousX[i]) > 300)
                sounds += whoosh.play();
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
        const auto opacity = static_cast<unsigned long>(127.5f - 127.5f * std::cos(3.14159f * t));
        orb.Blend(display.lpBack, 470, 140, opacity, -1, -1);
        // Across the bottom edge, leaving on the right and coming back on the left: the positions
        // go negative and Paint clips.
        const int saucerX = static_cast<int>(std::fmod(140 * t + 490, 704.f)) - 64;
        saucer.Paint(display.lpBack, static_cast<unsigned long>(saucerX), 454, -1, -1);

        const float shipX = 330 * std::sin(1.3f * t);
        const float step = shipX - previousShipX;
        if (withSounds && frames > 1 && step != 0 && (step > 0) != (previousStep > 0))
            sounds += blip.play(); // turned
        if (step != 0) previousStep = step;
        previousShipX = shipX;
        RECT part = display.CreateRect(0, 0, 32, 32);
        if (ship != nullptr)
            display.Blit(display.lpBack, 304 + static_cast<int>(shipX),
                         380 + static_cast<int>(40 * std::sin(2.6f * t)), ship, &part,
                         DDBLT_KEYSRC | DDBLT_WAIT);

        // Text: a score at the top right and a message fading in and out.
        char score[32];
        std::snprintf(score, sizeof score, "SCORE %06lu", static_cast<unsigned long>(t * 600));
        const auto *scoreBytes = reinterpret_cast<const unsigned char *>(score);
        display.PrintText(&font, display.lpBack, 630 - font.getStringWidth(scoreBytes), 8, score,
                          display.wWhite, 0);
        const char message[] = "Welcome to VellBase\nanti-aliased text, fading in and out";
        const auto fade = static_cast<unsigned char>(110 + 110 * std::sin(2.0f * t));
        display.PrintText(&font, display.lpBack, 150, 200, message,
                          display.dwGraphicsMode == 1 ? 0x7FE0 : 0xFFE0, fade); // yellow

        char text[96];
        std::snprintf(text, sizeof text, "VellBase demo - %.2f s%s", t, paused ? " (paused)" : "");
        drawStatus(display.lpBack, text);
    }
};

// Pumps the queue; false once the window has gone (a quit message). In the background it waits
// for messages instead of drawing, until the player comes back.
bool pump() {
    MSG message;
    for (;;) {
        if (!active) {
            if (GetMessageA(&message, nullptr, 0, 0) <= 0) return false;
        } else if (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (active) return true;
            continue; // the deactivation, sent while PeekMessage looked, came in between
        } else if (message.message == WM_QUIT) {
            return false;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int) {
    const bool byHand = commandLine == nullptr || *commandLine == 0; // tools/demo.sh gives seconds
    const DWORD seconds = byHand ? 3 : std::strtoul(commandLine, nullptr, 10);

    TVellBase base(instance, IDS_DEMO_APPNAME, IDS_DEMO_REGKEY, true);
    logTo = &base;
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
        base.DebugOut("VellDemo: sound %s\n", sound.lpDS != nullptr ? "on" : "off");
        if (display.lpBack == nullptr) {
            base.DebugOut("VellDemo: the display did not open full screen\n");
            status = 1;
        } else {
            base.DebugOut("VellDemo: graphics mode %lu, white 0x%04X\n", display.dwGraphicsMode,
                          display.wWhite);
            Scene scene(base, display, sound);
            // The scene clock runs only while the demo is in front and not paused; frames are
            // paced at 60 per second.
            DWORD sceneTime = 0, last = GetTickCount(), paced = 0, paceStart = last;
            float t = 0;
            bool running = true;
            base.DebugOut("VellDemo: the scene opens\n"); // tools/demo.sh waits for this line
            // The scene opens with a whoosh: even a short run is heard.
            scene.sounds += scene.whoosh.play();
            while (running && sceneTime < seconds * 1000) {
                if (!pump()) {
                    running = false;
                    break;
                }
                // pump() returns only with the demo in front: the display is the demo's to take.
                if (display.lpPrimary == nullptr || display.lpPrimary->IsLost() != DD_OK) {
                    if (!scene.reopen()) {
                        status = 1;
                        break;
                    }
                    last = paceStart = GetTickCount(); // the time away does not count
                    paced = 0;
                }
                const DWORD now = GetTickCount();
                if (!paused) sceneTime += now - last;
                last = now;
                t = static_cast<float>(sceneTime) / 1000.0f;
                scene.draw(t, true);
                if (!display.Flip()) Sleep(10);
                ++scene.frames;
                const DWORD due = paceStart + ++paced * 1000 / 60;
                const DWORD after = GetTickCount();
                if (static_cast<LONG>(due - after) > 0) Sleep(due - after);
            }
            base.DebugOut("VellDemo: %lu frames, %lu ms of the scene\n", scene.frames, sceneTime);
            base.DebugOut("VellDemo: %lu sounds started\n", scene.sounds);
            // The line editor on the last frame: Enter takes the name, Escape keeps "Player". A
            // switch away ends it early (see windowProc); on the return the frame is drawn again
            // and the editor goes on with the text so far.
            char name[24] = "Player";
            for (bool asking = byHand && running && status == 0; asking;) {
                display.PrintText(&scene.font, display.lpPrimary, 200, 290,
                                  "Your name:", display.wWhite, 0);
                editing = true;
                retitle(base.hWnd);
                display.Input(&scene.font, 200, 310, name, 20, display.wWhite);
                editing = false;
                retitle(base.hWnd);
                asking = cutShort;
                cutShort = false;
                if (!asking) break;
                if (!pump() || !scene.reopen()) break; // pump() waits for the return
                scene.draw(t, false);
                display.Flip();
            }
            if (byHand) base.DebugOut("VellDemo: the player is %s\n", name);
        }
    }
    if (IsWindow(base.hWnd)) DestroyWindow(base.hWnd);
    logTo = nullptr;
    base.DebugOut("VellDemo: done\n");
    return status;
}
