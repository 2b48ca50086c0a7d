// The compositing decision, the clipping, and the scalar reference loops (platform-free).
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

// Above 255 the opacity counts as 255, so no alpha ever exceeds 255. One alpha for the whole
// rectangle settles everything here: 0 draws nothing and 255 copies whatever the layout, without
// asking for one.
Composition composition(const Sources &src, std::uint32_t opacity, std::uint32_t mode) {
    opacity = std::min(opacity, 255u);
    const bool layout = mode == kMode555 || mode == kMode565;
    Composition plan = {Composition::kRefuse, kPlaneAlpha, opacity, mode, opacity};
    if (opacity == 0) {
        plan.action = Composition::kInvisible;
    } else if (src.alpha != nullptr) {
        if (layout) plan.action = Composition::kMix;
        if (opacity != 255) plan.alpha = kScaledAlpha;
    } else {
        plan.value = opacity == 255 ? src.constantAlpha : (src.constantAlpha * opacity) >> 8;
        plan.alpha = kConstantAlpha;
        if (plan.value == 0)
            plan.action = Composition::kNothing;
        else if (plan.value == 255)
            plan.action = Composition::kFill;
        else if (layout)
            plan.action = Composition::kMix;
    }
    return plan;
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

// The one scalar pixel loop over the visible part. Each combination of layout and sources is its
// own instance, chosen before the loop starts.
template <std::uint32_t Mode, class Colour, class Alpha>
void composeLoop(const PixelTarget &target, const ClipRect &part, std::size_t first,
                 std::uint32_t width, Colour colour, Alpha alpha) {
    for (std::int32_t ty = part.top; ty < part.bottom; ++ty, first += width) {
        auto *row = reinterpret_cast<std::uint16_t *>(target.bits + ty * target.pitch);
        std::size_t i = first;
        for (std::int32_t tx = part.left; tx < part.right; ++tx, ++i) {
            const unsigned a = alpha(i);
            if (a == 0) continue;
            row[tx] = a == 255 ? colour(i) : mix<Mode>(row[tx], colour(i), a);
        }
    }
}

// The scalar loops' part of compose: a kFill (as a mix at 255 in either layout) or a kMix.
void composeScalar(const PixelTarget &target, const ClipRect &part, std::size_t first,
                   const Sources &src, const Composition &plan) {
    auto withAlpha = [&](auto colour) {
        auto run = [&](auto alpha) {
            if (plan.mode == kMode555 && plan.action == Composition::kMix)
                composeLoop<kMode555>(target, part, first, src.width, colour, alpha);
            else
                composeLoop<kMode565>(target, part, first, src.width, colour, alpha);
        };
        if (plan.action == Composition::kFill)
            run(Constant{255});
        else if (plan.alpha == kPlaneAlpha)
            run(AlphaPlane{src.alpha});
        else if (plan.alpha == kScaledAlpha)
            run(ScaledAlphaPlane{src.alpha, plan.value});
        else
            run(Constant{plan.value});
    };
    if (src.rgb != nullptr)
        withAlpha(ColourPlane{src.rgb});
    else
        withAlpha(Constant{src.colour});
}

} // namespace

bool compose(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
             const Sources &src, const Composition &plan) {
    if (plan.action == Composition::kRefuse) return false;
    ClipRect part;
    if (plan.action != Composition::kFill && plan.action != Composition::kMix) return true;
    if (!visiblePart(target.width, target.height, x, y, src.width, src.height, part)) return true;
    const std::size_t first = std::size_t(part.top - std::int64_t(y)) * src.width +
                              std::size_t(part.left - std::int64_t(x));
    if (const RowKernels *kernels = rowKernelsOf(path))
        composeRows(*kernels, target, part, first, src, plan);
    else
        composeScalar(target, part, first, src, plan);
    return true;
}

} // namespace vell
