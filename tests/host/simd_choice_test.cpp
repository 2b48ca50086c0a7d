// How VELL_SIMD and the processor's features choose the pixel paths (the process hands its
// VELL_SIMD and its processor's features to this choice once, in image/simd.cpp).
#include "image/simd.h"

#include <gtest/gtest.h>

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

} // namespace
