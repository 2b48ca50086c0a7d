// The run-time choice of the pixel loops: processor features and VELL_SIMD, read once.
#include "image/simd.h"

#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#define VELL_X86 1
#endif

namespace vell {

#if VELL_X86
// The processor's features (CPUID leaf 7, EBX: bit 5 AVX2, bit 16 AVX-512F, bit 30 AVX-512BW,
// bit 31 AVX-512VL) count only where the operating system saves the registers across task
// switches: OSXSAVE set, and XCR0 holding the SSE and AVX state (bits 1, 2), for AVX-512 also the
// mask and upper registers (bits 5 to 7).
CpuFeatures cpuFeatures() {
    unsigned a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return {false, false};
    const unsigned osxsave = 1u << 27, avx = 1u << 28;
    if ((c & (osxsave | avx)) != (osxsave | avx)) return {false, false};
    unsigned xcr0, xcr0High;
    __asm__("xgetbv" : "=a"(xcr0), "=d"(xcr0High) : "c"(0));
    if ((xcr0 & 0x06) != 0x06 || !__get_cpuid_count(7, 0, &a, &b, &c, &d)) return {false, false};
    const bool avx2 = (b & (1u << 5)) != 0;
    const unsigned avx512 = (1u << 16) | (1u << 30) | (1u << 31);
    return {avx2, avx2 && (b & avx512) == avx512 && (xcr0 & 0xE6) == 0xE6};
}
#else
CpuFeatures cpuFeatures() {
    return {false, false};
}
#endif

SimdPaths choosePaths(const char *limit, CpuFeatures cpu) {
    SimdPaths paths = {{SimdPath::Scalar}, 1};
    auto capped = [limit](const char *name) {
        return limit != nullptr && std::strcmp(limit, name) == 0;
    };
    if (capped("0")) return paths;
    paths.path[paths.count++] = SimdPath::Sse2;
    if (capped("sse2") || !cpu.avx2) return paths;
    paths.path[paths.count++] = SimdPath::Avx2;
    if (!capped("avx2") && cpu.avx512) paths.path[paths.count++] = SimdPath::Avx512;
    return paths;
}

const char *simdPathName(SimdPath path) {
    switch (path) {
    case SimdPath::Sse2:
        return "sse2";
    case SimdPath::Avx2:
        return "avx2";
    case SimdPath::Avx512:
        return "avx512";
    default:
        return "scalar";
    }
}

const SimdPaths &simdPaths() {
    static const SimdPaths paths = choosePaths(std::getenv("VELL_SIMD"), cpuFeatures());
    return paths;
}

} // namespace vell
