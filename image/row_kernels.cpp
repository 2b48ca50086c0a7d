// The row-kernel table of each path, shared by the compositing and printing drivers.
#include "image/row_kernels.h"

namespace vell {

const RowKernels *rowKernelsOf(SimdPath path) {
#if defined(__x86_64__) || defined(__i386__)
    if (path == SimdPath::Sse2) return &sse2RowKernels();
    if (path == SimdPath::Avx2) return &avx2RowKernels();
    if (path == SimdPath::Avx512) return &avx512RowKernels();
#else
    (void)path;
#endif
    return nullptr;
}

} // namespace vell
