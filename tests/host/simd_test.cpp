// Every pixel path this processor runs (image/simd.h) against the scalar loops, word for word, on
// seeded random images, fonts and targets. Built into the host tests and the Windows image tests;
// with VELL_SIMD=0 only the scalar path is listed, so the same cases then run on it alone.
#include "image/compose.h"
#include "text/print_loop.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace vell;

struct Random {
    std::mt19937 engine{20261124};
    int operator()(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(engine); }
    // Bytes of noise (0, 255 or between, pixel by pixel) or of runs of one kind, long enough to
    // fill whole vectors with 0 or 255.
    std::vector<std::uint8_t> alpha(std::size_t n) {
        std::vector<std::uint8_t> v(n);
        const bool runs = (*this)(0, 1);
        for (std::size_t i = 0, left = 0, kind = 0; i < n; ++i, --left) {
            if (!runs || left == 0) kind = (*this)(0, 2), left = (*this)(1, 80);
            v[i] = std::uint8_t(kind == 0 ? 0 : kind == 1 ? 255 : (*this)(0, 255));
        }
        return v;
    }
};

// A target of W x H pixels inside memory with odd pitches and start words; every path draws on
// its own copy of the same memory.
struct Target {
    int W, H, pitch, start;
    std::vector<std::uint16_t> memory;
    Target(Random &r, int maxW, int maxH)
        : W(r(1, maxW)), H(r(1, maxH)), pitch(W + r(0, 3)), start(r(0, 3)),
          memory(start + pitch * H + 3) {
        for (auto &v : memory)
            v = std::uint16_t(r(0, 0xFFFF));
    }
    PixelTarget on(std::vector<std::uint16_t> &m) const {
        return {reinterpret_cast<std::uint8_t *>(&m[start]), 2 * pitch, W, H};
    }
};

std::string pathNames() {
    std::string names;
    for (std::size_t k = 0; k < simdPaths().count; ++k)
        names += std::string(" ") + simdPathName(simdPaths().path[k]);
    return names;
}

TEST(SimdPaths, PaintAndBlendEqualTheScalarLoops) {
    std::printf("pixel paths:%s (drawing with %s)\n", pathNames().c_str(),
                simdPathName(simdPath()));
    Random r;
    for (int trial = 0; trial < 4000; ++trial) {
        const bool large = trial % 10 == 0;
        const int w = large ? r(100, 1100) : r(0, 70), h = large ? r(1, 4) : r(0, 70);
        const Target target(r, large ? 1200 : 80, large ? 6 : 80);
        const int x = r(-w - 4, target.W + 4), y = r(-h - 4, target.H + 4);
        const std::uint32_t mode = r(0, 9) == 0 ? r(0, 3) : r(1, 2);
        // Planes start 0 to 3 elements into their memory, so no alignment is assumed.
        const int offset = r(0, 3);
        std::vector<std::uint16_t> rgb(offset + w * h);
        for (auto &v : rgb)
            v = std::uint16_t(r(0, 0xFFFF)); // 5:5:5 words with bit 15 set among them
        const std::vector<std::uint8_t> alpha = r.alpha(offset + w * h);
        const ImagePlanes image = {std::uint32_t(w), std::uint32_t(h),
                                   r(0, 3) ? const_cast<std::uint8_t *>(alpha.data() + offset)
                                           : nullptr,
                                   r(0, 3) ? rgb.data() + offset : nullptr};
        const int colour = r(0, 1) ? -1 : r(0, 0xFFFF);
        const int level = 1 + trial % 254, alphas[] = {-1, -1, 0, 255, level, level, -20, 280};
        const int opacities[] = {-1, -1, 0, 255, 300, level, level, level};
        const int alphaArg = alphas[r(0, 7)], opacity = opacities[r(0, 7)];
        const Sources src = paintSources(image, colour, alphaArg);

        std::vector<std::uint16_t> want = target.memory;
        const bool wanted = opacity == -1
                                ? paintImageScalar(target.on(want), x, y, src, mode)
                                : blendImageScalar(target.on(want), x, y, src, opacity, mode);
        for (std::size_t k = 0; k < simdPaths().count; ++k) {
            const SimdPath path = simdPaths().path[k];
            std::vector<std::uint16_t> got = target.memory;
            EXPECT_EQ(opacity == -1 ? paintImage(path, target.on(got), x, y, src, mode)
                                    : blendImage(path, target.on(got), x, y, src, opacity, mode),
                      wanted);
            ASSERT_EQ(got, want) << simdPathName(path) << ", trial " << trial;
        }
    }
}

TEST(SimdPaths, PrintingEqualsTheScalarLoop) {
    Random r;
    for (int trial = 0; trial < 3000; ++trial) {
        // A font of random coverage with cells of every kind: empty, wider than the strip of
        // columns gathered at once, and damaged ones reaching past the plane's row.
        const std::uint32_t stride = r(1, 120), height = r(0, 20);
        const std::vector<std::uint8_t> plane = r.alpha(stride * height + 1);
        std::vector<FontCell> cells(r(0, 224));
        for (auto &cell : cells)
            cell = {std::uint32_t(r(0, stride + 2)),
                    std::uint32_t(r(0, 30) == 0 ? r(0, 700) : r(0, 20))};
        const GlyphFont font = {plane.data() + 1, stride, height, cells.data(),
                                unsigned(cells.size())};
        std::string text(r(0, 60), ' ');
        for (char &c : text)
            c = char(r(0, 8) == 0 ? (r(0, 1) ? 10 : r(1, 31)) : r(32, 255));
        const bool wide = trial % 8 == 0;
        const Target target(r, wide ? 1500 : 100, 50);
        const int x = r(-40, target.W), y = r(-int(height) - 2, target.H);
        const std::uint32_t mode = r(0, 2);
        const auto colour = std::uint16_t(r(0, 0xFFFF));
        const auto transparency = std::uint8_t(r(0, 2) ? r(0, 1) * 255 : r(0, 255));
        const auto *bytes = reinterpret_cast<const unsigned char *>(text.c_str());

        std::vector<std::uint16_t> want = target.memory;
        printGlyphsScalar(target.on(want), font, x, y, bytes, colour, transparency, mode);
        for (std::size_t k = 0; k < simdPaths().count; ++k) {
            std::vector<std::uint16_t> got = target.memory;
            printGlyphs(simdPaths().path[k], target.on(got), font, x, y, bytes, colour,
                        transparency, mode);
            ASSERT_EQ(got, want) << simdPathName(simdPaths().path[k]) << ", trial " << trial;
        }
    }
}

} // namespace
