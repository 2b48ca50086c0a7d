// TDirectDraw::PrintText: one lock of the surface, then the platform-free printing loop.
#include "VellBase.h"

#include "text/FontGlyphs.h"
#include "text/print_loop.h"

#include <algorithm>
#include <cstring>

int TDirectDraw::PrintText(TDirectFont *font, IDirectDrawSurface2 *surface, int x, int y,
                           const char *text, unsigned short colour, unsigned char transparency) {
    if (font == nullptr || font->getFontData() == nullptr || surface == nullptr || text == nullptr)
        return 0;
    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    if (surface->Lock(nullptr, &desc, DDLOCK_WAIT, nullptr) != DD_OK) return 0;

    // Never wider than the pitch holds 16-bit pixels, whatever the surface's depth.
    const vell::PixelTarget target = {
        static_cast<std::uint8_t *>(desc.lpSurface), desc.lPitch,
        static_cast<std::int32_t>(std::min<std::int64_t>(desc.dwWidth, desc.lPitch / 2)),
        static_cast<std::int32_t>(desc.dwHeight)};
    const vell::FontGlyphs glyphs(*font);
    vell::printGlyphs(target, glyphs.font, x, y, reinterpret_cast<const unsigned char *>(text),
                      colour, transparency, dwGraphicsMode);
    surface->Unlock(nullptr);
    return static_cast<int>(std::strlen(text)) + 1;
}
