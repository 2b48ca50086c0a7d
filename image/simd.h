// Which pixel loops run: the plain scalar ones, or their SSE2, AVX2 or AVX-512 twins
// (platform-free).
//
// The choice is made once, at the first drawing call, from what the processor and its operating
// system support (CPUID and XGETBV), and can be held down by the environment variable VELL_SIMD:
//
//   VELL_SIMD=0      the scalar loops only (the reference every fast path must equal)
//   VELL_SIMD=sse2   nothing beyond SSE2
//   VELL_SIMD=avx2   nothing beyond AVX2
//   unset, or any other value: the fastest path this processor runs
//
// SSE2 is part of every x86_64 processor and the floor of the 32-bit build too, so it is never
// detected; AVX2 and AVX-512 (with its byte and word instructions and its 128- and 256-bit forms)
// are, and their loops are compiled for them alone, so the library still runs on a processor
// without them. Every path writes exactly the words of the scalar loops.
#ifndef VELL_SIMD_H
#define VELL_SIMD_H

#include <cstddef>

namespace vell {

enum class SimdPath { Scalar, Sse2, Avx2, Avx512 };

const char *simdPathName(SimdPath path); // "scalar", "sse2", "avx2", "avx512"

// The paths this process may use, plainest first: scalar always, then what the processor and
// VELL_SIMD allow. The last one is the one paintImage, blendImage and printGlyphs use.
struct SimdPaths {
    SimdPath path[4];
    std::size_t count;
    SimdPath best() const { return path[count - 1]; }
};
const SimdPaths &simdPaths();

// What simdPaths() holds on a processor with these features, VELL_SIMD having the value limit
// (null when it is not set).
struct CpuFeatures {
    bool avx2, avx512;
};
SimdPaths choosePaths(const char *limit, CpuFeatures cpu);
CpuFeatures cpuFeatures(); // this processor's, as the operating system lets them be used

inline SimdPath simdPath() {
    return simdPaths().best();
}

} // namespace vell

#endif
