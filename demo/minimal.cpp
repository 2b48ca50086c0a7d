// The smallest complete VellBase client: a window, the base object, the display full screen, a
// sound, and a frame loop until Escape. Built with the demo to keep the README's example honest.
#include "VellBase.h"

#include "demo_ids.h" // IDS_DEMO_APPNAME "VellDemo", IDS_DEMO_REGKEY "Software\VellBase\Demo"

static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcA(window, message, wParam, lParam);
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
