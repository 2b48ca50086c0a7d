// Painting and blending on the path chosen at run time: the same decisions as the scalar loops of
// compose.cpp (shortcuts, layout, clipping), then the rectangle loop of the chosen instruction set
// over the visible rows. Alpha 255 for the whole rectangle is a plain copy or fill on every path.
#include "image/compose.h"
#include "image/row_kernels.h"

#include <algorithm>
#include <cstring>

namespace vell {

namespace {

// opacity: 1..254 scales every alpha to (a * opacity) >> 8; 255 leaves them as they are.
bool composeRows(const RowKernels &kernels, const PixelTarget &target, std::int32_t x,
                 std::int32_t y, const Sources &src, unsigned opacity, std::uint32_t mode) {
    const bool knownMode = mode == kMode555 || mode == kMode565;
    const auto &paint = kernels.paint[mode == kMode565][src.rgb != nullptr];
    RectKernel kernel = nullptr; // null: a copy or fill
    unsigned value = opacity;
    if (src.alpha != nullptr) {
        if (!knownMode) return false;
        kernel = paint[opacity == 255 ? kPlaneAlpha : kScaledAlpha];
    } else {
        value = opacity == 255 ? src.constantAlpha : (src.constantAlpha * opacity) >> 8;
        if (value == 0) return true;
        if (value != 255) {
            if (!knownMode) return false;
            kernel = paint[kConstantAlpha];
        }
    }
    ClipRect part;
    if (!visiblePart(target.width, target.height, x, y, src.width, src.height, part)) return true;
    const std::size_t n = std::size_t(part.right - part.left);
    const std::size_t i = std::size_t(part.top - std::int64_t(y)) * src.width +
                          std::size_t(part.left - std::int64_t(x));
    const std::uint16_t *rgb = src.rgb != nullptr ? src.rgb + i : nullptr;
    auto *row =
        reinterpret_cast<std::uint16_t *>(target.bits + part.top * target.pitch) + part.left;
    if (kernel != nullptr) {
        kernel(row, target.pitch, rgb, src.alpha != nullptr ? src.alpha + i : nullptr, src.width, n,
               std::size_t(part.bottom - part.top), src.colour, value);
        return true;
    }
    for (std::int32_t ty = part.top; ty < part.bottom; ++ty) {
        if (rgb != nullptr) {
            std::memcpy(row, rgb, 2 * n);
            rgb += src.width;
        } else {
            std::fill_n(row, n, src.colour);
        }
        row =
            reinterpret_cast<std::uint16_t *>(reinterpret_cast<std::uint8_t *>(row) + target.pitch);
    }
    return true;
}

} // namespace

bool paintImage(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
                const Sources &src, std::uint32_t mode) {
    const RowKernels *kernels = rowKernelsOf(path);
    if (kernels == nullptr) return paintImageScalar(target, x, y, src, mode);
    return composeRows(*kernels, target, x, y, src, 255, mode);
}

bool blendImage(SimdPath path, const PixelTarget &target, std::int32_t x, std::int32_t y,
                const Sources &src, std::uint32_t opacity, std::uint32_t mode) {
    const RowKernels *kernels = rowKernelsOf(path);
    if (kernels == nullptr) return blendImageScalar(target, x, y, src, opacity, mode);
    if (opacity == 0) return true;
    return composeRows(*kernels, target, x, y, src, std::min(opacity, 255u), mode);
}

bool paintImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t mode) {
    return paintImage(simdPath(), target, x, y, src, mode);
}

bool blendImage(const PixelTarget &target, std::int32_t x, std::int32_t y, const Sources &src,
                std::uint32_t opacity, std::uint32_t mode) {
    return blendImage(simdPath(), target, x, y, src, opacity, mode);
}

} // namespace vell
