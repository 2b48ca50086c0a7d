// Painting and blending an image onto locked 16-bit memory (platform-free). These are the plain
// scalar reference loops: any faster path must write exactly the same words.
//
// The rule for every image pixel with source word s and alpha a over the destination word d:
//   a == 0    d is left as it is
//   a == 255  d = s exactly
//   otherwise d = mix<mode>(d, s, a)        (pixel_format.h: per channel, truncating)
// Pixels are visited row by row from the top, each row from the left. The image is clipped to the
// target: only the part on it is visited, whatever the position (negative ones included).
#ifndef VELL_COMPOSE_H
#define VELL_COMPOSE_H

#include "image/pixel_format.h"
#include "image/planes.h"

#include <cstdint>

namespace vell {

// What is drawn: the image's size and, for colour and for alpha, a plane or one value for all.
struct Sources {
    std::uint32_t width, height;
    const std::uint16_t *rgb;  // the colour plane, or null: every pixel is colour
    const std::uint8_t *alpha; // the alpha plane, or null: every pixel has constantAlpha
    std::uint16_t colour;
    std::uint8_t constantAlpha;
};

// Reads the colour and alpha arguments of Paint and Blend against the planes the image has:
//   colour -1: the colour plane, or 0xFFFF for an image without one; any other value: its low
//              16 bits for every pixel;
//   alpha  -1: the alpha plane, or 255 for an image without one; any other value: that alpha
//              clamped into 0..255 for every pixel (the plane is then ignored).
Sources paintSources(const ImagePlanes &image, std::int32_t colour, std::int32_t alpha);

// The part of a w x h image at (x, y) that lies on a W x H target, in target coordinates; false
// when nothing does. Computed in 64 bits, so no position or size overflows.
bool visiblePart(std::int32_t W, std::int32_t H, std::int32_t x, std::int32_t y, std::uint32_t w,
                 std::uint32_t h, ClipRect &part);

// Paints the image with its top-left pixel at (x, y) of the target. With per-pixel alpha the
// graphics mode must be 1 or 2; with a constant alpha, 0 draws nothing and 255 copies the colour
// in any mode, every other value mixes and needs mode 1 or 2. Returns false, having written
// nothing, when the mode was needed and is neither.
bool paintImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t mode);

// The same at an opacity: every alpha a is first scaled to (a * opacity) >> 8 (so an opaque
// pixel at opacity 128 is mixed at 127). Opacity 0 draws nothing; 255 and above is paintImage.
bool blendImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t opacity, std::uint32_t mode);

} // namespace vell

#endif
