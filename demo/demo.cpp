// The VellBase demo: a small client program that uses the library the way a game would.
//
// It opens its window, constructs the application base object with the debug log on
// (VellDemo.log in the current directory), and runs a frame loop for a few seconds.
//
//   VellDemo.exe [seconds]      (default 3)
#include "VellBase.h"

#include "demo_ids.h"

#include <cstdlib>

namespace {

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE) DestroyWindow(window);
        return 0;
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
    windowClass.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = "VellDemoWindow";
    if (!RegisterClassA(&windowClass)) return nullptr;
    HWND window =
        CreateWindowExA(0, windowClass.lpszClassName, title, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                        CW_USEDEFAULT, 640, 480, nullptr, nullptr, instance, nullptr);
    if (window != nullptr) {
        ShowWindow(window, SW_SHOW);
        UpdateWindow(window);
    }
    return window;
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int) {
    const DWORD seconds = commandLine && *commandLine ? std::strtoul(commandLine, nullptr, 10) : 3;

    TVellBase base(instance, IDS_DEMO_APPNAME, IDS_DEMO_REGKEY, true);
    base.DebugOut("VellDemo: base object ready, application \"%s\"\n", base.lpszAppName);

    char title[128] = "VellBase demo";
    if (const char *text = base.getString(IDS_DEMO_TITLE)) lstrcpynA(title, text, sizeof title);
    base.hWnd = createMainWindow(instance, title);
    if (base.hWnd == nullptr) {
        base.DebugOut("VellDemo: cannot create the main window (error %lu)\n", GetLastError());
        return 1;
    }
    base.DebugOut("VellDemo: window created\n");

    const DWORD start = GetTickCount();
    DWORD frames = 0;
    MSG message;
    bool running = true;
    while (running && GetTickCount() - start < seconds * 1000) {
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) running = false;
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        ++frames;
        Sleep(16);
    }
    base.DebugOut("VellDemo: %lu frames in %lu ms\n", frames, GetTickCount() - start);
    if (IsWindow(base.hWnd)) DestroyWindow(base.hWnd);
    base.DebugOut("VellDemo: done\n");
    return 0;
}
