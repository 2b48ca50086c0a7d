// An image's planes as the platform-free code sees them, and the rectangle rules of cutting and
// copying (platform-free).
//
// Both planes are row-major, top row first, without row padding: element (x, y) is at index
// y * width + x. The colour plane holds 16-bit pixel words in the layout the image was made in,
// the alpha plane 0 (transparent) to 255 (opaque). Either may be missing: no alpha plane means
// opaque, no colour plane means a mask drawn in a given colour. Planes are allocated with malloc.
#ifndef VELL_IMAGE_PLANES_H
#define VELL_IMAGE_PLANES_H

#include "display/blit_clip.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace vell {

struct ImagePlanes {
    std::uint32_t width, height;
    std::uint8_t *alpha; // width * height bytes, or null
    std::uint16_t *rgb;  // width * height words, or null
};

inline void freePlanes(ImagePlanes &image) {
    std::free(image.alpha);
    std::free(image.rgb);
    image = {};
}

// Plane sizes must stay below 2^32 bytes: a colour plane of width * height * 2 bytes.
constexpr bool planesFit(std::uint64_t width, std::uint64_t height) {
    return width * height * 2 < (std::uint64_t(1) << 32);
}

// A rectangle to cut or copy, clipped to an area of width x height: each edge is moved into
// 0..width (0..height), so the result is the part inside the area, possibly of zero size.
// Returns false for an inverted rectangle (right < left or bottom < top), which copies nothing.
inline bool clipToArea(ClipRect &r, std::int64_t width, std::int64_t height) {
    if (r.right < r.left || r.bottom < r.top) return false;
    auto clamp = [](std::int32_t v, std::int64_t limit) {
        return static_cast<std::int32_t>(v < 0 ? 0 : v > limit ? limit : v);
    };
    r = {clamp(r.left, width), clamp(r.top, height), clamp(r.right, width),
         clamp(r.bottom, height)};
    return true;
}

// Copies rectangle r (inside the source) row by row into dest, which receives its rows one after
// the other without padding. The source's rows are pitch bytes apart; elements are size bytes.
inline void copyRect(const void *source, std::ptrdiff_t pitch, std::size_t size, const ClipRect &r,
                     void *dest) {
    const std::size_t rowBytes = static_cast<std::size_t>(r.right - r.left) * size;
    auto *out = static_cast<std::uint8_t *>(dest);
    for (std::int32_t y = r.top; y < r.bottom; ++y, out += rowBytes)
        std::memcpy(out, static_cast<const std::uint8_t *>(source) + y * pitch + r.left * size,
                    rowBytes);
}

} // namespace vell

#endif
