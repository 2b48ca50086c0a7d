// The row loops of the SIMD paths: one table of functions per instruction set (platform-free),
// shared by compositing (image/compose.cpp decides and clips, compose_simd.cpp picks the entry)
// and printing (text/print_simd.cpp). Each picks one entry before its loops and hands it a
// rectangle or one row of pixels at a time; every entry writes exactly what the scalar loops write.
#ifndef VELL_ROW_KERNELS_H
#define VELL_ROW_KERNELS_H

#include "image/simd.h"

#include <cstddef>
#include <cstdint>

// Forced inlining, the one spelling of it in the row loops: GCC would otherwise stop inlining
// the vector helpers once a file holds as many loops as the row-loop files do, and a call per
// block costs more than the block.
#define VELL_FORCE_INLINE inline __attribute__((always_inline))

namespace vell {

// d: n destination words; rgb: n source words, or null for `colour` everywhere; alpha: n bytes, or
// null where the alpha is `value` for every pixel. What value means depends on the loop.
using RowKernel = void (*)(std::uint16_t *d, const std::uint16_t *rgb, const std::uint8_t *alpha,
                           std::size_t n, std::uint16_t colour, unsigned value);

// The same over a rectangle of `rows` rows of n pixels: the rows of d lie `pitch` bytes apart,
// those of rgb and alpha `stride` elements apart. Painting hands a whole image to one call, so
// that rows a few pixels wide cost no call each.
using RectKernel = void (*)(std::uint16_t *d, std::ptrdiff_t pitch, const std::uint16_t *rgb,
                            const std::uint8_t *alpha, std::size_t stride, std::size_t n,
                            std::size_t rows, std::uint16_t colour, unsigned value);

// The painting rule's alpha: from the plane (0 leaves a pixel, 255 copies the source, anything
// between mixes), from the plane scaled to (a * value) >> 8 for an opacity value of 1..254, or
// one alpha value of 1..254 for the whole row (alpha is null).
enum RowAlpha { kPlaneAlpha, kScaledAlpha, kConstantAlpha, kRowAlphaKinds };

struct RowKernels {
    RectKernel paint[2][2][kRowAlphaKinds]; // [5:6:5][colour plane][alpha]
    // The printing rule: the colour mixed at every coverage (0 and 255 included), the coverage
    // itself [0] or scaled to (g * value) >> 8 [1] for an opacity value of 0..254.
    RowKernel print[2][2]; // [5:6:5][scaled]
};

const RowKernels &sse2RowKernels();
const RowKernels &avx2RowKernels();
const RowKernels &avx512RowKernels();

// The table of a path; null for the scalar path (and any path this build has no loops for).
const RowKernels *rowKernelsOf(SimdPath path);

} // namespace vell

#endif
