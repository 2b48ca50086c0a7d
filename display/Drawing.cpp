// Drawing primitives: clipped blits, flips, fills and colour matching.
#include "VellBase.h"

#include "display/blit_clip.h"
#include "display/Surfaces.h"

#include <cstring>

int TDirectDraw::Blit(IDirectDrawSurface2 *lpDest, int x, int y, IDirectDrawSurface2 *lpSrc,
                      tagRECT *lpSrcRect, int flags) {
    if (lpDest == nullptr || lpSrc == nullptr || lpSrcRect == nullptr) return 0;
    DWORD width = 0, height = 0;
    vell::surfaceSize(lpDest, width, height);

    vell::ClipRect src = {lpSrcRect->left, lpSrcRect->top, lpSrcRect->right, lpSrcRect->bottom};
    vell::ClipRect dest = {};
    switch (vell::clipBlit(static_cast<int>(width), static_cast<int>(height), x, y, src, dest)) {
    case vell::BlitClip::Nothing:
        return 1;
    case vell::BlitClip::Invalid:
        return 0;
    case vell::BlitClip::Copy:
        break;
    }
    *lpSrcRect = {src.left, src.top, src.right, src.bottom};
    RECT destRect = {dest.left, dest.top, dest.right, dest.bottom};
    // A lost surface fails until the client restores it, also where the platform's blitter would
    // copy it all the same (Wine's does).
    if (lpDest->IsLost() == DDERR_SURFACELOST || lpSrc->IsLost() == DDERR_SURFACELOST) {
        RestoreAll();
        return 0;
    }
    for (;;) {
        const HRESULT hr =
            lpDest->Blt(&destRect, lpSrc, lpSrcRect, static_cast<DWORD>(flags), nullptr);
        if (hr == DD_OK) return 1;
        if (hr == DDERR_SURFACELOST) {
            RestoreAll();
            return 0;
        }
        if (hr != DDERR_WASSTILLDRAWING) return 0;
    }
}

int TDirectDraw::Flip() {
    if (lpPrimary == nullptr) return 0;
    for (;;) {
        const HRESULT hr = lpPrimary->Flip(nullptr, DDFLIP_WAIT);
        if (hr == DD_OK) return 1;
        if (hr == DDERR_SURFACELOST) {
            RestoreAll();
            return 0;
        }
        if (hr != DDERR_WASSTILLDRAWING) return 0; // windowed: the primary does not flip
    }
}

HRESULT TDirectDraw::ClearSurface(IDirectDrawSurface2 *lpSurface, unsigned long dwColor) {
    if (lpSurface == nullptr) return DDERR_INVALIDPARAMS;
    DDBLTFX effects;
    std::memset(&effects, 0, sizeof effects);
    effects.dwSize = sizeof effects;
    effects.dwFillColor = dwColor;
    return lpSurface->Blt(nullptr, nullptr, nullptr, DDBLT_COLORFILL | DDBLT_WAIT, &effects);
}

// The platform converts the colour by drawing it into the top left pixel through GDI; the pixel is
// read back raw and then given its old colour again.
unsigned long TDirectDraw::ColorMatch(IDirectDrawSurface2 *lpSurface, unsigned long dwRGB) {
    if (lpSurface == nullptr) return CLR_INVALID;
    unsigned long result = CLR_INVALID;
    COLORREF remembered = CLR_INVALID;
    bool drawn = false;
    HDC dc = nullptr;
    if (dwRGB != CLR_INVALID && SUCCEEDED(lpSurface->GetDC(&dc))) {
        remembered = GetPixel(dc, 0, 0);
        SetPixel(dc, 0, 0, dwRGB);
        lpSurface->ReleaseDC(dc);
        drawn = true;
    }

    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    HRESULT hr;
    while ((hr = lpSurface->Lock(nullptr, &desc, 0, nullptr)) == DDERR_WASSTILLDRAWING) {
    }
    if (hr == DD_OK) {
        const DWORD bits = desc.ddpfPixelFormat.dwRGBBitCount;
        // The 32-bit word at the start, kept to its low bit-count bits; only the first pixel's
        // bytes are read (a one-pixel 16-bit surface has no more), none where the count is 0.
        if (desc.lpSurface != nullptr) {
            DWORD word = 0;
            std::memcpy(&word, desc.lpSurface, bits >= 32 ? 4 : (bits + 7) / 8);
            if (bits < 32) word &= (DWORD(1) << bits) - 1;
            result = word;
        }
        lpSurface->Unlock(nullptr);
    }

    if (drawn && remembered != CLR_INVALID && SUCCEEDED(lpSurface->GetDC(&dc))) {
        SetPixel(dc, 0, 0, remembered);
        lpSurface->ReleaseDC(dc);
    }
    return result;
}

tagRECT TDirectDraw::CreateRect(int x, int y, int w, int h) {
    return {x, y, vell::clampedSum(x, w), vell::clampedSum(y, h)};
}
