// The run-time choice of the pixel loops: processor features and VELL_SIMD, read once.
#include "image/simd.h"

#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#define VELL_X86 1
#endif

namespace vell {

namespace {

#if VELL_X86
// AVX2 needs the processor (CPUID leaf 7, EBX bit 5) and the operating system, which must save
// the 256-bit registers across task switches: OSXSAVE set and XCR0 holding the SSE and AVX state.
bool avx2Usable() {
    unsigned a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return false;
    const unsigned osxsave = 1u << 27, avx = 1u << 28;
    if ((c & (osxsave | avx)) != (osxsave | avx)) return false;
    unsigned xcr0, xcr0High;
    __asm__("xgetbv" : "=a"(xcr0), "=d"(xcr0High) : "c"(0));
    if ((xcr0 & 6) != 6) return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & (1u << 5)) != 0;
}
#endif

SimdPaths detect() {
    SimdPaths paths = {{SimdPath::Scalar}, 1};
#if VELL_X86
    const char *limit = std::getenv("VELL_SIMD");
    if (limit != nullptr && std::strcmp(limit, "0") == 0) return paths;
    paths.path[paths.count++] = SimdPath::Sse2;
    if (limit != nullptr && std::strcmp(limit, "sse2") == 0) return paths;
    if (avx2Usable()) paths.path[paths.count++] = SimdPath::Avx2;
#endif
    return paths;
}

} // namespace

const char *simdPathName(SimdPath path) {
    switch (path) {
    case SimdPath::Sse2:
        return "sse2";
    case SimdPath::Avx2:
        return "avx2";
    default:
        return "scalar";
    }
}

const SimdPaths &simdPaths() {
    static const SimdPaths paths = detect();
    return paths;
}

} // namespace vell
