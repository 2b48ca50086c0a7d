// The image object: its constructors, Paint and Blend. Loading, clipping and the pixel loops are
// platform-free (image/tga.h, image/planes.h, image/compose.h); this file opens files, locks
// surfaces and writes the log.
#include "VellBase.h"

#include "display/Surfaces.h"
#include "image/compose.h"
#include "image/tga.h"

#include <cstdlib>
#include <cstring>

#ifdef _WIN64
static_assert(sizeof(TBitmap) == 40, "TBitmap must stay byte-packed");
#else
static_assert(sizeof(TBitmap) == 24, "TBitmap must be 24 bytes on 32-bit Windows");
#endif

namespace {

void logLine(void *base, const char *text) {
    static_cast<TVellBase *>(base)->DebugOut("%s", text);
}

std::size_t readFile(void *file, void *buffer, std::size_t size) {
    DWORD got = 0;
    if (!ReadFile(static_cast<HANDLE>(file), buffer, static_cast<DWORD>(size), &got, nullptr))
        return 0;
    return got;
}

HRESULT lockSurface(IDirectDrawSurface2 *surface, RECT *rect, DDSURFACEDESC &desc) {
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    return surface->Lock(rect, &desc, DDLOCK_WAIT, nullptr);
}

// Paint (opacity 255) and Blend: what the call comes to is decided first (vell::composition);
// then the part of the surface that the image covers at (dwX, dwY) is locked and the decision
// carried out there. The position is read as signed 32-bit. A null surface counts as one of size 0:
// like any image entirely off the surface, nothing is locked. The log lines are Paint's at opacity
// 255 and above, Blend's below.
bool draw(const TBitmap &image, IDirectDrawSurface2 *surface, unsigned long dwX, unsigned long dwY,
          std::uint32_t opacity, long lColor, long lAlpha) {
    const vell::Sources src =
        vell::paintSources({image.dwWidth, image.dwHeight, image.lpAlpha, image.lpRGB},
                           static_cast<std::int32_t>(lColor), static_cast<std::int32_t>(lAlpha));
    const vell::Composition plan =
        vell::composition(src, opacity, image.lpDirectDraw->dwGraphicsMode);
    if (plan.action == vell::Composition::kInvisible) return true;
    const bool paint = plan.opacity == 255;
    DWORD width = 0, height = 0;
    if (surface != nullptr) vell::surfaceSize(surface, width, height);
    const auto x = static_cast<std::int32_t>(dwX), y = static_cast<std::int32_t>(dwY);
    vell::ClipRect part;
    if (!vell::visiblePart(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), x,
                           y, image.dwWidth, image.dwHeight, part))
        return true;
    RECT rect = {part.left, part.top, part.right, part.bottom};
    DDSURFACEDESC desc;
    const HRESULT hr = lockSurface(surface, &rect, desc);
    if (FAILED(hr)) {
        char text[128];
        image.lpDirectDraw->getErrorString(hr, text);
        image.lpBase->DebugOut(paint ? "TBitmap::Paint - SurfaceLock failed!\n\n%s\n"
                                     : "TBitmap::Blend - SurfaceLock failed!\n  %s\n",
                               text);
        return true;
    }
    const vell::PixelTarget target = {static_cast<std::uint8_t *>(desc.lpSurface), desc.lPitch,
                                      part.right - part.left, part.bottom - part.top};
    const bool drawn =
        vell::compose(vell::simdPath(), target, x - part.left, y - part.top, src, plan);
    surface->Unlock(nullptr);
    if (!drawn)
        image.lpBase->DebugOut(paint ? "TBitmap::Paint (...) unknown graphicsmode\n"
                                     : "TBitmap::Blend (...) unknown graphicsmode\n");
    return true;
}

} // namespace

TBitmap::TBitmap(TDirectDraw *display)
    : dwWidth(0), dwHeight(0), lpAlpha(nullptr), lpRGB(nullptr), lpBase(display->lpBase),
      lpDirectDraw(display) {}

TBitmap::TBitmap(TDirectDraw *display, const char *file, unsigned long dwPlanes)
    : TBitmap(display) {
    HANDLE handle =
        CreateFileA(file, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        lpBase->DebugOut("TBitmap::TBitmap(char*) - Could not open file \"%s\"!\n",
                         file != nullptr ? file : "(null)");
        return;
    }
    LARGE_INTEGER size = {};
    GetFileSizeEx(handle, &size);
    vell::ByteReader in = {readFile, handle, static_cast<std::uint64_t>(size.QuadPart)};
    vell::ImagePlanes planes;
    vell::loadTga(in, lpDirectDraw->dwGraphicsMode, dwPlanes, planes, {logLine, lpBase});
    CloseHandle(handle);
    dwWidth = planes.width;
    dwHeight = planes.height;
    lpAlpha = planes.alpha;
    lpRGB = planes.rgb;
}

// The rectangle is clipped to the surface first. Nothing to cut (an inverted or empty rectangle,
// or one off the surface) gives an empty image without a plane, without locking anything.
TBitmap::TBitmap(TDirectDraw *display, IDirectDrawSurface2 *lpDDS, const RECT &rect)
    : TBitmap(display) {
    DWORD width = 0, height = 0;
    if (lpDDS != nullptr) vell::surfaceSize(lpDDS, width, height);
    vell::ClipRect part = {rect.left, rect.top, rect.right, rect.bottom};
    if (!vell::clipToArea(part, width, height) || part.left == part.right ||
        part.top == part.bottom)
        return;
    const DWORD w = part.right - part.left, h = part.bottom - part.top;
    if (vell::planesFit(w, h)) lpRGB = static_cast<WORD *>(std::malloc(std::size_t(w) * h * 2));
    if (lpRGB == nullptr) {
        lpBase->DebugOut("TBitmap::TBitmap(LPSURFACE) - Not enough memory for RGB data!\n");
        return;
    }
    DDSURFACEDESC desc;
    const HRESULT hr = lockSurface(lpDDS, nullptr, desc);
    if (FAILED(hr)) { // the plane stays, the size stays 0
        char text[128];
        lpDirectDraw->getErrorString(hr, text);
        lpBase->DebugOut("TBitmap::TBitmap(LPSURFACE) - SurfaceLock failed!\n\n%s\n", text);
        return;
    }
    dwWidth = w;
    dwHeight = h;
    vell::copyRect(desc.lpSurface, desc.lPitch, 2, part, lpRGB);
    lpDDS->Unlock(nullptr);
}

// The size comes from whichever plane was copied, so a source without plane or without pixels
// gives an empty copy (and asks malloc for no 0-byte plane).
TBitmap::TBitmap(const TBitmap &src)
    : dwWidth(0), dwHeight(0), lpAlpha(nullptr), lpRGB(nullptr), lpBase(src.lpBase),
      lpDirectDraw(src.lpDirectDraw) {
    const std::size_t pixels = std::size_t(src.dwWidth) * src.dwHeight;
    if (pixels == 0) return;
    if (src.lpAlpha != nullptr) {
        lpAlpha = static_cast<BYTE *>(std::malloc(pixels));
        if (lpAlpha != nullptr) {
            dwWidth = src.dwWidth;
            dwHeight = src.dwHeight;
            std::memcpy(lpAlpha, src.lpAlpha, pixels);
        } else {
            lpBase->DebugOut(
                "TBitmap::TBitmap(TBitmap&) - Not enough memory for alpha channel (%d bytes)!\n",
                static_cast<int>(pixels));
        }
    }
    if (src.lpRGB != nullptr) {
        lpRGB = static_cast<WORD *>(std::malloc(pixels * 2));
        if (lpRGB != nullptr) {
            dwWidth = src.dwWidth;
            dwHeight = src.dwHeight;
            std::memcpy(lpRGB, src.lpRGB, pixels * 2);
        } else {
            lpBase->DebugOut(
                "TBitmap::TBitmap(TBitmap&) - Not enough memory for RGB data (%d bytes)!\n",
                static_cast<int>(pixels * 2));
        }
    }
}

// The rectangle is clipped to the source; the copy has the clipped size, and no plane when that
// has no pixels. An inverted rectangle gives an empty image (0 x 0).
TBitmap::TBitmap(const TBitmap &src, const RECT &rect)
    : dwWidth(0), dwHeight(0), lpAlpha(nullptr), lpRGB(nullptr), lpBase(src.lpBase),
      lpDirectDraw(src.lpDirectDraw) {
    vell::ClipRect part = {rect.left, rect.top, rect.right, rect.bottom};
    if (!vell::clipToArea(part, src.dwWidth, src.dwHeight)) return;
    dwWidth = part.right - part.left;
    dwHeight = part.bottom - part.top;
    const std::size_t pixels = std::size_t(dwWidth) * dwHeight;
    if (pixels == 0) return;
    if (src.lpAlpha != nullptr) {
        lpAlpha = static_cast<BYTE *>(std::malloc(pixels));
        if (lpAlpha != nullptr)
            vell::copyRect(src.lpAlpha, src.dwWidth, 1, part, lpAlpha);
        else
            lpBase->DebugOut("TBitmap::TBitmap(TBitmap&, RECT&) - Not enough memory for alpha "
                             "channel (%d bytes)!\n",
                             static_cast<int>(pixels));
    }
    if (src.lpRGB != nullptr) {
        lpRGB = static_cast<WORD *>(std::malloc(pixels * 2));
        if (lpRGB != nullptr)
            vell::copyRect(src.lpRGB, std::ptrdiff_t(src.dwWidth) * 2, 2, part, lpRGB);
        else
            lpBase->DebugOut(
                "TBitmap::TBitmap(TBitmap&, RECT&) - Not enough memory for RGB data (%d bytes)!\n",
                static_cast<int>(pixels * 2));
    }
}

TBitmap::~TBitmap() {
    if (lpAlpha != nullptr) std::free(lpAlpha);
    lpAlpha = nullptr;
    if (lpRGB != nullptr) std::free(lpRGB);
    lpRGB = nullptr;
    dwWidth = dwHeight = 0;
}

bool TBitmap::Paint(IDirectDrawSurface2 *lpDDS, unsigned long dwX, unsigned long dwY, long lColor,
                    long lAlpha) {
    return draw(*this, lpDDS, dwX, dwY, 255, lColor, lAlpha);
}

bool TBitmap::Blend(IDirectDrawSurface2 *lpDDS, unsigned long dwX, unsigned long dwY,
                    unsigned long dwOpacity, long lColor, long lAlpha) {
    return draw(*this, lpDDS, dwX, dwY, static_cast<std::uint32_t>(dwOpacity), lColor, lAlpha);
}
