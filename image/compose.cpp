// The scalar painting and blending loops (platform-free).
#include "image/compose.h"

#include <algorithm>

namespace vell {

Sources paintSources(const ImagePlanes &image, std::int32_t colour, std::int32_t alpha) {
    Sources src = {image.width, image.height, nullptr, nullptr, 0xFFFF, 255};
    if (colour != -1)
        src.colour = static_cast<std::uint16_t>(colour); // the low 16 bits
    else if (image.rgb != nullptr)
        src.rgb = image.rgb;
    // Clamped, so that no alpha ever exceeds 255 (an opaque pixel is copied, never over-mixed).
    if (alpha != -1)
        src.constantAlpha = static_cast<std::uint8_t>(alpha < 0 ? 0 : alpha > 255 ? 255 : alpha);
    else if (image.alpha != nullptr)
        src.alpha = image.alpha;
    return src;
}

bool visiblePart(std::int32_t W, std::int32_t H, std::int32_t x, std::int32_t y, std::uint32_t w,
                 std::uint32_t h, ClipRect &part) {
    const std::int64_t left = x < 0 ? 0 : x, top = y < 0 ? 0 : y;
    const std::int64_t right = std::min<std::int64_t>(std::int64_t(x) + w, W);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t(y) + h, H);
    if (left >= right || top >= bottom) return false;
    part = {std::int32_t(left), std::int32_t(top), std::int32_t(right), std::int32_t(bottom)};
    return true;
}

namespace {

// The sources of one pixel by its plane index i: a plane, or one value for all.
struct ColourPlane {
    const std::uint16_t *plane;
    std::uint16_t operator()(std::size_t i) const { return plane[i]; }
};
struct AlphaPlane {
    const std::uint8_t *plane;
    unsigned operator()(std::size_t i) const { return plane[i]; }
};
struct ScaledAlphaPlane {
    const std::uint8_t *plane;
    std::uint32_t opacity; // 1..254
    unsigned operator()(std::size_t i) const { return (plane[i] * opacity) >> 8; }
};
struct Constant {
    unsigned value;
    unsigned operator()(std::size_t) const { return value; }
};

// The one pixel loop. Each combination of layout and sources is its own instance, chosen before
// the loop starts.
template <std::uint32_t Mode, class Colour, class Alpha>
void compose(const PixelTarget &target, std::int32_t x, std::int32_t y, std::uint32_t width,
             std::uint32_t height, Colour colour, Alpha alpha) {
    ClipRect part;
    if (!visiblePart(target.width, target.height, x, y, width, height, part)) return;
    for (std::int32_t ty = part.top; ty < part.bottom; ++ty) {
        auto *row = reinterpret_cast<std::uint16_t *>(target.bits + ty * target.pitch);
        std::size_t i =
            std::size_t(ty - std::int64_t(y)) * width + std::size_t(part.left - std::int64_t(x));
        for (std::int32_t tx = part.left; tx < part.right; ++tx, ++i) {
            const unsigned a = alpha(i);
            if (a == 0) continue;
            row[tx] = a == 255 ? colour(i) : mix<Mode>(row[tx], colour(i), a);
        }
    }
}

// Picks the loop for the layout and the colour source; false for an unknown layout.
template <class Alpha>
bool composeIn(std::uint32_t mode, const PixelTarget &target, std::int32_t x, std::int32_t y,
               const Sources &src, Alpha alpha) {
    auto run = [&](auto colour) {
        if (mode == kMode555)
            compose<kMode555>(target, x, y, src.width, src.height, colour, alpha);
        else if (mode == kMode565)
            compose<kMode565>(target, x, y, src.width, src.height, colour, alpha);
        else
            return false;
        return true;
    };
    return src.rgb != nullptr ? run(ColourPlane{src.rgb}) : run(Constant{src.colour});
}

// One alpha for the whole rectangle: 0 draws nothing and 255 copies whatever the layout, without
// asking for one (no mixing happens, so either loop does it).
bool composeConstant(std::uint32_t mode, const PixelTarget &target, std::int32_t x, std::int32_t y,
                     const Sources &src, unsigned alpha) {
    if (alpha == 0) return true;
    if (alpha == 255) return composeIn(kMode565, target, x, y, src, Constant{255});
    return composeIn(mode, target, x, y, src, Constant{alpha});
}

} // namespace

bool paintImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t mode) {
    if (src.alpha != nullptr) return composeIn(mode, target, x, y, src, AlphaPlane{src.alpha});
    return composeConstant(mode, target, x, y, src, src.constantAlpha);
}

bool blendImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t opacity, std::uint32_t mode) {
    if (opacity == 0) return true;
    if (opacity >= 255) return paintImage(target, x, y, src, mode);
    if (src.alpha != nullptr)
        return composeIn(mode, target, x, y, src, ScaledAlphaPlane{src.alpha, opacity});
    return composeConstant(mode, target, x, y, src, (src.constantAlpha * opacity) >> 8);
}

} // namespace vell
