// The fast paths' part of compose (compose.cpp has decided and clipped): the rectangle loop of the
// chosen instruction set over the visible rows, or, for kFill, a plain copy or fill.
#include "image/compose.h"
#include "image/row_kernels.h"

#include <algorithm>
#include <cstring>

namespace vell {

void composeRows(const RowKernels &kernels, const PixelTarget &target, const ClipRect &part,
                 std::size_t first, const Sources &src, const Composition &plan) {
    const std::size_t n = std::size_t(part.right - part.left);
    const std::uint16_t *rgb = src.rgb != nullptr ? src.rgb + first : nullptr;
    auto *row =
        reinterpret_cast<std::uint16_t *>(target.bits + part.top * target.pitch) + part.left;
    if (plan.action == Composition::kMix) {
        const RectKernel kernel =
            kernels.paint[plan.mode == kMode565][src.rgb != nullptr][plan.alpha];
        kernel(row, target.pitch, rgb, src.alpha != nullptr ? src.alpha + first : nullptr,
               src.width, n, std::size_t(part.bottom - part.top), src.colour, plan.value);
        return;
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
}

} // namespace vell
