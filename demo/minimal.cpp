// The smallest complete VellBase client: a window, the base object, the display full screen, a
// sound, and a frame loop until Escape that survives the player switching to another program and
// back. Built with the demo to keep the README's example honest.
#include "VellBase.h"

#include "demo_ids.h" // IDS_DEMO_APPNAME "VellDemo", IDS_DEMO_REGKEY "Software\VellBase\Demo"

static bool active = true; // false while another program has the foreground

static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ACTIVATEAPP) active = wParam != 0;
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcA(window, message, wParam, lParam);
}

// After a switch away and back the display mode and every surface are lost: release the
// surfaces, open the display again on the same device, and make them again.
static bool reopen(TDirectDraw &display, IDirectDrawSurface2 *&tiles) {
    if (tiles != nullptr) tiles->Release();
    tiles = nullptr;
    if (!display.setDevice(display.guidDevice)) return false; // a message box said why
    return display.CreateSurface(tiles, 640, 480, "TILE");
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = "MinimalClient";
    RegisterClassA(&windowClass);

    TVellBase base(instance, IDS_DEMO_APPNAME, IDS_DEMO_REGKEY, true); // true: VellDemo.log
    base.hWnd = CreateWindowExA(0, "MinimalClient", "Minimal", WS_POPUP | WS_VISIBLE, 0, 0, 640,
                                480, nullptr, nullptr, instance, nullptr);
    TDirectDraw display(&base, 1); // 1: full screen, 640x480 at 16 bits
    TDirectSound sound(&base);
    if (display.lpBack == nullptr) return 1; // a message box has told the user why

    IDirectDrawSurface2 *tiles = nullptr;
    display.CreateSurface(tiles, 640, 480, "TILE"); // a bitmap resource, tiled
    structDirectSoundBuffer *blip = sound.newSound("blip.wav", 4);

    for (MSG message = {}; message.message != WM_QUIT;) {
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&message);
        if (!active) { // in the background: draw nothing, sleep until a message comes
            if (message.message != WM_QUIT) WaitMessage();
            continue;
        }
        if (display.lpPrimary->IsLost() != DD_OK && !reopen(display, tiles)) break;
        RECT all = display.CreateRect(0, 0, 640, 480);
        display.Blit(display.lpBack, 0, 0, tiles, &all, 0);
        if (GetAsyncKeyState(VK_SPACE) & 1) sound.playSound(blip);
        if (GetAsyncKeyState(VK_ESCAPE) & 1) DestroyWindow(base.hWnd);
        display.Flip();
    }
    sound.deleteSound(blip);
    if (tiles != nullptr) tiles->Release();
    return 0; // sound, display and base are destroyed in that order
}
