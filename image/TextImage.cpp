// Images made from text: rendered by GDI on a scratch surface and reduced, or copied from a
// bitmap font. The reduction and the glyph copy are platform-free (image/text_image.h).
#include "VellBase.h"

#include "image/text_image.h"
#include "text/FontGlyphs.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// A plain off-screen surface of the display, or null (CreateSurface has shown its box).
IDirectDrawSurface2 *scratchSurface(TDirectDraw *display, int width, int height) {
    IDirectDrawSurface2 *surface = nullptr;
    if (!display->CreateSurface(surface, width, height, nullptr)) return nullptr;
    return surface;
}

// Draws text into the surface's device context in the font logFont describes; with DT_CALCRECT
// in format it only measures, into rect. A scale other than 0 first enlarges the caller's font
// (height times scale, width 0), once the device context is there. False when there is none.
bool drawText(IDirectDrawSurface2 *surface, LOGFONTA &logFont, const char *text, RECT &rect,
              UINT format, unsigned scale = 0) {
    HDC dc = nullptr;
    if (FAILED(surface->GetDC(&dc))) return false;
    if (scale != 0) {
        logFont.lfHeight *= static_cast<LONG>(scale);
        logFont.lfWidth = 0;
    }
    if ((format & DT_CALCRECT) == 0) {
        SetTextColor(dc, RGB(255, 255, 255));
        SetBkMode(dc, TRANSPARENT);
    }
    HFONT font = CreateFontIndirectA(&logFont);
    HGDIOBJ previous = SelectObject(dc, font);
    DrawTextA(dc, text, -1, &rect, format);
    SelectObject(dc, previous);
    DeleteObject(font);
    surface->ReleaseDC(dc);
    return true;
}

} // namespace

// A factor of 0 counts as 1. When the text cannot be measured (no 1 x 1 surface or no device
// context for it), the image stays empty: its size is unknown.
TBitmap::TBitmap(TDirectDraw *display, LOGFONTA *logFont, const char *text, unsigned char factor)
    : TBitmap(display) {
    const unsigned f = factor == 0 ? 1 : factor;
    RECT rect = {0, 0, 0, 0};
    bool measured = false;
    if (IDirectDrawSurface2 *probe = scratchSurface(display, 1, 1)) {
        measured = drawText(probe, *logFont, text, rect, DT_CALCRECT | DT_SINGLELINE, f);
        if (!measured) lpBase->DebugOut("TBitmap::TBitmap (...) no HDC\n");
        probe->Release();
    } else {
        lpBase->DebugOut("TBitmap::TBitmap (...) no Surface\n");
    }
    if (!measured || rect.right <= 0 || rect.bottom <= 0) return;

    const auto right = static_cast<DWORD>(rect.right), bottom = static_cast<DWORD>(rect.bottom);
    const DWORD width = right / f + (right % f != 0), height = bottom / f + (bottom % f != 0);
    IDirectDrawSurface2 *surface =
        scratchSurface(display, static_cast<int>(width * f), static_cast<int>(height * f));
    if (surface == nullptr) {
        lpBase->DebugOut("TBitmap::TBitmap (...) no Surface\n");
        return;
    }
    lpAlpha = static_cast<BYTE *>(std::calloc(std::size_t{width} * height, 1));
    if (lpAlpha == nullptr) {
        lpBase->DebugOut("TBitmap::TBitmap(TDirectFont) not enough memory for alpha channel\n");
        surface->Release();
        return;
    }
    dwWidth = width;
    dwHeight = height;

    display->ClearSurface(surface, 0);
    RECT whole = {0, 0, rect.right, rect.bottom};
    if (!drawText(surface, *logFont, text, whole, DT_SINGLELINE))
        lpBase->DebugOut("TBitmap::TBitmap (...) no HDC\n");
    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    const HRESULT hr = surface->Lock(nullptr, &desc, DDLOCK_WAIT, nullptr);
    if (FAILED(hr)) { // the plane stays cleared: a transparent image of the right size
        char error[128];
        display->getErrorString(hr, error);
        lpBase->DebugOut("TBitmap::TBitmap(LOGFONT) - SurfaceLock failed!\n\n%s\n", error);
    } else {
        vell::reduceRendering(static_cast<const std::uint8_t *>(desc.lpSurface), desc.lPitch,
                              display->wWhite, f, width, height, lpAlpha);
        surface->Unlock(nullptr);
    }
    surface->Release();
}

TBitmap::TBitmap(TDirectDraw *display, TDirectFont *font, const char *text) : TBitmap(display) {
    if (font == nullptr || font->getFontData() == nullptr || text == nullptr) return;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    const vell::FontGlyphs glyphs(*font);
    const std::uint64_t width = vell::lineWidth(glyphs.font, bytes);
    const std::uint64_t height = font->dwHeight * vell::textLines(bytes);
    if (width == 0 || height == 0) return;
    // Sizes beyond what a plane can hold are refused like a failed allocation.
    if (width > UINT32_MAX || height > UINT32_MAX || width * height > SIZE_MAX ||
        (lpAlpha = static_cast<BYTE *>(std::malloc(width * height))) == nullptr) {
        lpBase->DebugOut("TBitmap::TBitmap(TDirectFont) not enough memory for alpha channel\n");
        return;
    }
    dwWidth = static_cast<DWORD>(width);
    dwHeight = static_cast<DWORD>(height);
    vell::copyGlyphs(glyphs.font, bytes, dwWidth, dwHeight, lpAlpha);
}
