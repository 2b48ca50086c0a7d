// Off-screen surfaces and bitmaps copied onto them through GDI.
#include "VellBase.h"

#include "display/Surfaces.h"

#include <cstdint>
#include <cstring>

// The member itself, not the name windows.h gives it (VellBase.h forwards that name here).
#undef LoadBitmap

namespace vell {

const GUID kIIDSurface2 = {
    0x57805885, 0x6EEC, 0x11CF, {0x94, 0x41, 0xA8, 0x23, 0x03, 0xC1, 0x0E, 0x27}};

void surfaceSize(IDirectDrawSurface2 *surface, DWORD &width, DWORD &height) {
    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_HEIGHT | DDSD_WIDTH;
    surface->GetSurfaceDesc(&desc);
    width = desc.dwWidth;
    height = desc.dwHeight;
}

} // namespace vell

namespace {

// A bitmap resource of the executable (not of this library) wins over a file of the same name.
// Loaded as a DIB section so its pixels keep their own format until they are copied.
HBITMAP loadBitmapByName(const char *name) {
    HANDLE image =
        LoadImageA(GetModuleHandleA(nullptr), name, IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION);
    if (image == nullptr)
        image =
            LoadImageA(nullptr, name, IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION | LR_LOADFROMFILE);
    return static_cast<HBITMAP>(image);
}

} // namespace

bool TDirectDraw::CreateSurface(IDirectDrawSurface2 *&lpSurface, int width, int height,
                                const char *bitmap) {
    lpSurface = nullptr;
    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH;
    if (bitmap != nullptr) {
        HBITMAP loaded = loadBitmapByName(bitmap);
        if (loaded == nullptr) {
            lpBase->DebugOut(
                "CreateSurface(LPSURFACE, int, int, const char*) - LoadImage() failed.\n");
            return false;
        }
        BITMAP info = {};
        GetObjectA(loaded, sizeof info, &info);
        desc.dwWidth = static_cast<DWORD>(width != 0 ? width : info.bmWidth);
        desc.dwHeight = static_cast<DWORD>(height != 0 ? height : info.bmHeight);
        DeleteObject(loaded);
    } else {
        desc.dwWidth = static_cast<DWORD>(width);
        desc.dwHeight = static_cast<DWORD>(height);
    }
    desc.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN;
    desc.dwBackBufferCount = 0;

    if (!CreateSurface(lpSurface, desc)) {
        lpBase->DebugOut("CreateSurface(LPSURFACE, int, int, const char*) - "
                         "CreateSurface(LPSURFACE, DDSURFACEDESC) faile.\n");
        return false;
    }
    if (bitmap == nullptr) return true;
    // Loaded again and tiled at its own size: a surface of the bitmap's size gets it one to one.
    if (!LoadBitmap(lpSurface, bitmap, false)) {
        lpBase->DebugOut(
            "CreateSurface(LPSURFACE, int, int, const char*) - LoadBitmap() failed.\n");
        return false; // the surface stays in lpSurface; the caller releases it
    }
    return true;
}

bool TDirectDraw::CreateSurface(IDirectDrawSurface2 *&lpSurface, _DDSURFACEDESC &desc) {
    lpSurface = nullptr;
    desc.ddsCaps.dwCaps |= DDSCAPS_OFFSCREENPLAIN;
    desc.ddsCaps.dwCaps &= ~static_cast<DWORD>(DDSCAPS_SYSTEMMEMORY);
    if (lpDD == nullptr) return ErrorMessage(DDERR_NOTINITIALIZED, "CreateSurface() failed!");

    IDirectDrawSurface *surface = nullptr;
    HRESULT hr = lpDD->CreateSurface(&desc, &surface, nullptr);
    if (FAILED(hr)) {
        // Video memory is full (or refused): system memory, and the caller sees it in desc.
        desc.ddsCaps.dwCaps |= DDSCAPS_SYSTEMMEMORY;
        surface = nullptr;
        hr = lpDD->CreateSurface(&desc, &surface, nullptr);
        if (FAILED(hr)) return ErrorMessage(hr, "CreateSurface() failed!");
    }
    hr = vell::querySurface2(surface, lpSurface);
    if (FAILED(hr)) return ErrorMessage(hr, "CreateSurface() failed at querying interface!");
    return true;
}

bool TDirectDraw::LoadBitmapA(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch) {
    return LoadBitmap(lpSurface, bitmap, bStretch);
}

bool TDirectDraw::LoadBitmapW(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch) {
    return LoadBitmap(lpSurface, bitmap, bStretch);
}

bool TDirectDraw::LoadBitmap(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch) {
    if (bitmap == nullptr) return false;
    HBITMAP loaded = loadBitmapByName(bitmap);
    if (loaded == nullptr) {
        lpBase->DebugOut("LoadBitmap(\"%s\") - LoadImage() failed,\n", bitmap);
        return false;
    }
    CopyBitmap(lpSurface, loaded, 0, 0, 0, 0, bStretch); // its failures are in the log
    DeleteObject(loaded);
    return true;
}

bool TDirectDraw::CopyBitmap(IDirectDrawSurface2 *lpSurface, void *hBitmap, int x, int y, int dx,
                             int dy, bool bStretch) {
    if (hBitmap == nullptr || lpSurface == nullptr) return false;
    HBITMAP bitmap = static_cast<HBITMAP>(hBitmap);

    // Always, lost or not: copying a bitmap is how a client brings a lost surface back.
    const HRESULT hr = lpSurface->Restore();
    if (FAILED(hr)) {
        char text[256];
        getErrorString(hr, text);
        lpBase->DebugOut("CopyBitmap() - Surface->Restore() failed: %s\n", text);
        return false;
    }
    HDC source = CreateCompatibleDC(nullptr);
    if (source == nullptr) {
        lpBase->DebugOut("CopyBitmap() - CreateCompatibleDC() failed.\n");
        return false;
    }
    HGDIOBJ previous = SelectObject(source, bitmap);

    BITMAP info = {};
    GetObjectA(bitmap, sizeof info, &info);
    if (dx == 0) dx = info.bmWidth;
    if (dy == 0) dy = info.bmHeight;

    DWORD width = 0, height = 0;
    vell::surfaceSize(lpSurface, width, height);

    HDC target = nullptr;
    if (FAILED(lpSurface->GetDC(&target))) {
        SelectObject(source, previous);
        DeleteDC(source);
        lpBase->DebugOut("CopyBitmap - Surface->GetDC() failed.\n");
        return false;
    }
    if (bStretch) {
        StretchBlt(target, 0, 0, static_cast<int>(width), static_cast<int>(height), source, x, y,
                   dx, dy, SRCCOPY);
    } else {
        // Unsigned steps: a negative size makes one huge step, so one tile. A zero size (a bitmap
        // without pixels) also copies one tile instead of looping for ever.
        const std::uint32_t stepX = static_cast<std::uint32_t>(dx);
        const std::uint32_t stepY = static_cast<std::uint32_t>(dy);
        for (std::uint64_t X = 0; X < width; X += stepX) {
            for (std::uint64_t Y = 0; Y < height; Y += stepY) {
                StretchBlt(target, static_cast<int>(X), static_cast<int>(Y), dx, dy, source, x, y,
                           dx, dy, SRCCOPY);
                if (stepY == 0) break;
            }
            if (stepX == 0) break;
        }
    }
    lpSurface->ReleaseDC(target);
    SelectObject(source, previous);
    DeleteDC(source);
    return true;
}
