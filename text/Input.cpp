// TDirectDraw::Input: the modal line editor on the primary surface.
#include "VellBase.h"

#include "display/Surfaces.h"

#include <cstdlib>
#include <cstring>

namespace {

// The off-screen strip that keeps what the line covers: width by height, in system memory.
IDirectDrawSurface2 *createSaveSurface(IDirectDraw *dd, DWORD width, DWORD height) {
    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH;
    desc.dwWidth = width;
    desc.dwHeight = height;
    desc.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY;
    IDirectDrawSurface *surface = nullptr;
    IDirectDrawSurface2 *surface2 = nullptr;
    if (dd->CreateSurface(&desc, &surface, nullptr) == DD_OK)
        vell::querySurface2(surface, surface2);
    return surface2;
}

bool printable(unsigned char c) {
    return (c >= 0x20 && c <= 0x7E) || c >= 0x91;
}

} // namespace

int TDirectDraw::Input(TDirectFont *font, int x, int y, char *text, int maxLength,
                       unsigned short colour) {
    if (text == nullptr) return 0;
    int len = static_cast<int>(std::strlen(text));
    if (font == nullptr || lpDD == nullptr || lpPrimary == nullptr) return len;
    DWORD width = 0, height = 0;
    vell::surfaceSize(lpPrimary, width, height);
    const int W = static_cast<int>(width), H = static_cast<int>(font->dwHeight);
    // The strip under the line must lie on the screen; otherwise nothing is drawn at all.
    if (x < 0 || y < 0 || x >= W || static_cast<long long>(y) + H > height) return len;
    // Without memory for the copy that Escape restores, it is as if the strip could not be made.
    auto *backup = static_cast<char *>(std::malloc(static_cast<std::size_t>(len) + 1));
    if (backup == nullptr) return len;
    std::memcpy(backup, text, static_cast<std::size_t>(len) + 1);
    IDirectDrawSurface2 *save = createSaveSurface(lpDD, width, font->dwHeight);
    if (save == nullptr) {
        std::free(backup);
        return len;
    }

    const auto *bytes = reinterpret_cast<unsigned char *>(text);
    const int cw = font->getCharWidth('_');
    int cx = x + font->getStringWidth(bytes);
    RECT strip = CreateRect(x, y, W - x, H);
    Blit(save, 0, 0, lpPrimary, &strip, 0);
    PrintText(font, lpPrimary, x, y, text, colour, 0);
    PrintText(font, lpPrimary, cx, y, "_", colour, 0);

    MSG message;
    while (PeekMessageA(&message, hWnd, WM_KEYDOWN, 0x108, PM_REMOVE)) {
    }
    bool quit = false;
    WPARAM quitCode = 0;
    for (bool editing = true; editing;) {
        const BOOL got = GetMessageA(&message, hWnd, WM_KEYDOWN, 0x108);
        if (got == -1) { // the window is gone: no key can come any more, so it ends as Escape
            std::strcpy(text, backup);
            len = static_cast<int>(std::strlen(text));
            break;
        }
        // A quit message (which Windows hands on despite the filter) is posted again at the end,
        // for the client's loop.
        if (got == 0) {
            quit = true;
            quitCode = message.wParam;
            continue;
        }
        TranslateMessage(&message);
        if (message.message == WM_KEYDOWN || message.message == WM_KEYUP) continue;
        if (message.message != WM_CHAR) {
            DispatchMessageA(&message);
            continue;
        }
        const unsigned char ch = static_cast<unsigned char>(message.wParam & 0xFF);
        if (printable(ch)) {
            const int w = font->getCharWidth(ch);
            // A character whose cursor would end past the right edge is not taken.
            if (w == 0 || len >= maxLength || static_cast<long long>(cx) + w + cw > W) continue;
            RECT cursor = CreateRect(cx - x, 0, cw, H);
            Blit(lpPrimary, cx, y, save, &cursor, 0);
            text[len++] = static_cast<char>(ch);
            const char typed[3] = {static_cast<char>(ch), '_', 0};
            PrintText(font, lpPrimary, cx, y, typed, colour, 0);
            cx += w;
        } else if (ch == 13) {
            editing = false;
        } else if (ch == 27) {
            std::strcpy(text, backup);
            len = static_cast<int>(std::strlen(text));
            editing = false;
        } else if (ch == 8 && len > 0) {
            const int w = font->getCharWidth(static_cast<unsigned char>(text[--len]));
            cx -= w;
            RECT gone = CreateRect(cx - x, 0, w + cw, H);
            Blit(lpPrimary, cx, y, save, &gone, 0);
            PrintText(font, lpPrimary, cx, y, "_", colour, 0);
        }
    }

    lpDD->WaitForVerticalBlank(DDWAITVB_BLOCKBEGIN, nullptr);
    strip = CreateRect(0, 0, W - x, H);
    Blit(lpPrimary, x, y, save, &strip, 0);
    text[len] = 0;
    PrintText(font, lpPrimary, x, y, text, colour, 0);
    save->Release();
    std::free(backup);
    if (quit) PostQuitMessage(static_cast<int>(quitCode));
    return len;
}
