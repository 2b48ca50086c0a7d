// The row loops for SSE2, eight 16-bit pixels per vector (image/sse2_lanes.h): the floor of both
// Windows builds.
#include "image/row_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include "image/sse2_lanes.h"

#include "image/mix_rows.h"

namespace vell {

const RowKernels &sse2RowKernels() {
    static const RowKernels kernels = rowKernels<Sse2Lanes<2>>();
    return kernels;
}

} // namespace vell
#endif
