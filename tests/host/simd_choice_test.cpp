// How VELL_SIMD and the processor's features choose the pixel paths.
#include "image/simd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string names(const vell::SimdPaths &paths) {
    std::string all;
    for (std::size_t k = 0; k < paths.count; ++k)
        all += std::string(k ? " " : "") + vell::simdPathName(paths.path[k]);
    return all;
}

TEST(SimdChoice, EnvironmentHoldsThePathsDownAndAnythingElseLeavesThemFree) {
    const std::string all = "scalar sse2 avx2 avx512";
    const struct {
        const char *limit;
        vell::CpuFeatures cpu;
        std::string want;
    } cases[] = {
        {nullptr, {true, true}, all},
        {"0", {true, true}, "scalar"},
        {"sse2", {true, true}, "scalar sse2"},
        {"avx2", {true, true}, "scalar sse2 avx2"},
        {"avx512", {true, true}, all},
        {"avx2", {false, false}, "scalar sse2"}, // a limit never adds what the processor lacks
        {nullptr, {true, false}, "scalar sse2 avx2"},
        {"AVX2", {true, true}, all}, // another case, a typo: no limit at all
        {"avx2 ", {true, true}, all},
    };
    for (const auto &c : cases)
        EXPECT_EQ(names(vell::choosePaths(c.limit, c.cpu)), c.want)
            << (c.limit ? c.limit : "unset") << ", avx2 " << c.cpu.avx2;
}

// The process's own paths, plainest first: scalar, then SSE2, which every x86 processor runs,
// unless VELL_SIMD is 0. ctest also runs this with VELL_SIMD set and the best path it must give in
// VELL_SIMD_EXPECT.
TEST(SimdChoice, TheProcessReadsVellSimd) {
    const char *limit = std::getenv("VELL_SIMD"), *expected = std::getenv("VELL_SIMD_EXPECT");
    const bool scalarOnly = limit != nullptr && std::string(limit) == "0";
    EXPECT_EQ(names(vell::simdPaths()).substr(0, 11), scalarOnly ? "scalar" : "scalar sse2");
    if (expected != nullptr) {
        EXPECT_STREQ(vell::simdPathName(vell::simdPath()), expected);
    }
}

} // namespace
