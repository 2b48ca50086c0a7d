// Which 16-bit layout a display pixel format is (platform-free).
#ifndef VELL_GRAPHICS_MODE_H
#define VELL_GRAPHICS_MODE_H

#include <cstdint>

namespace vell {

enum GraphicsMode : std::uint32_t {
    kModeNone = 0, // not a 16-bit display: painting refuses to draw
    kMode555 = 1,  // bit 15 zero, red 14-10, green 9-5, blue 4-0
    kMode565 = 2,  // red 15-11, green 10-5, blue 4-0
};

constexpr std::uint32_t kGreenMask565 = 0x07E0;

struct DisplayFormat {
    std::uint32_t mode;
    std::uint16_t white;
};

// Full screen the display is 16 bits by construction and only the green mask decides. A windowed
// display shows the desktop, which may have any depth: anything but 16 bits gives mode 0.
constexpr DisplayFormat displayFormat(std::uint32_t bitCount, std::uint32_t greenMask,
                                      bool fullScreen) {
    if (!fullScreen && bitCount != 16) return {kModeNone, 0};
    return greenMask == kGreenMask565 ? DisplayFormat{kMode565, 0xFFFF}
                                      : DisplayFormat{kMode555, 0x7FFF};
}

} // namespace vell

#endif
