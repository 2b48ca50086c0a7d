// Painting and blending an image onto locked 16-bit memory (platform-free).
//
// The rule for every image pixel with source word s and alpha a over the destination word d:
//   a == 0    d is left as it is
//   a == 255  d = s exactly
//   otherwise d = mix<mode>(d, s, a)        (pixel_format.h: per channel, truncating)
// Pixels are visited row by row from the top, each row from the left. The image is clipped to the
// target: only the part on it is visited, whatever the position (negative ones included).
//
// What a call comes to is decided once, before any pixel is visited (composition()); the scalar
// reference loops and the SIMD row loops (image/row_kernels.h) both carry out that decision, so
// they differ only in how fast they walk the rows.
#ifndef VELL_COMPOSE_H
#define VELL_COMPOSE_H

#include "image/pixel_format.h"
#include "image/planes.h"
#include "image/row_kernels.h"
#include "image/simd.h"

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

// What drawing sources at an opacity comes to. Every alpha a is first scaled to
// (a * opacity) >> 8 (so an opaque pixel at opacity 128 is mixed at 127); an opacity of 255 or
// more leaves alphas as they are (a paint). Then:
//   kInvisible  opacity 0: nothing is drawn, and the target need not even be locked;
//   kNothing    one alpha for every pixel, and it is 0: nothing is drawn;
//   kFill       one alpha, 255: every pixel becomes its source word, in any layout;
//   kMix        the rule above, in `mode` (1 or 2), alpha as `alpha` and `value` say;
//   kRefuse     the rule needs a layout and mode is neither 1 nor 2: nothing is drawn.
struct Composition {
    enum Action { kInvisible, kNothing, kFill, kMix, kRefuse } action;
    RowAlpha alpha; // kMix: kPlaneAlpha, kScaledAlpha (by value, 1..254) or kConstantAlpha (value)
    unsigned value;
    std::uint32_t mode;
    std::uint32_t opacity; // 0..255: 255 is a paint
};
Composition composition(const Sources &src, std::uint32_t opacity, std::uint32_t mode);

// Carries out a composition of src with the image's top-left pixel at (x, y) of the target, on a
// given path (one that simdPaths() lists) or the one chosen at run time. False, having written
// nothing, for kRefuse.
bool compose(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
             const Sources &src, const Composition &plan);

// Paint: composition at opacity 255; blend: at the given opacity.
inline bool paintImage(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
                       const Sources &src, std::uint32_t mode) {
    return compose(path, target, x, y, src, composition(src, 255, mode));
}
inline bool blendImage(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
                       const Sources &src, std::uint32_t opacity, std::uint32_t mode) {
    return compose(path, target, x, y, src, composition(src, opacity, mode));
}
inline bool paintImage(const PixelTarget &target, std::int32_t x, std::int32_t y,
                       const Sources &src, std::uint32_t mode) {
    return paintImage(simdPath(), target, x, y, src, mode);
}
inline bool blendImage(const PixelTarget &target, std::int32_t x, std::int32_t y,
                       const Sources &src, std::uint32_t opacity, std::uint32_t mode) {
    return blendImage(simdPath(), target, x, y, src, opacity, mode);
}

// The fast paths' part of compose (compose_simd.cpp): a kFill or kMix over the visible part of the
// image, whose first pixel has plane index `first`.
void composeRows(const RowKernels &kernels, const PixelTarget &target, const ClipRect &part,
                 std::size_t first, const Sources &src, const Composition &plan);

} // namespace vell

#endif
