// Every pixel path this processor runs (image/simd.h) against the scalar loops, word for word: each
// row loop at every row length around its blocks and at several start words, and seeded random
// fonts and targets through whole printing calls (painting's random images are checked against
// the rules themselves, on every path, in image_test.cpp). Built into the host tests and the
// Windows image tests; with VELL_SIMD=0 only the scalar path is listed and there is nothing to
// compare.
#include "image/compose.h"
#include "text/print_loop.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/mman.h>
#include <unistd.h>
#endif

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

// One page of memory. On the host an inaccessible page follows it, so that a loop reading or
// writing past the end of a row placed at the page's end faults.
class Page {
public:
    static constexpr std::size_t kSize = 4096;
    std::uint8_t *data() const { return data_; }
    std::uint8_t *end() const { return data_ + kSize; }

private:
#ifndef _WIN32
    std::uint8_t *data_ = [] { // kept mapped until the program ends
        const std::size_t system = std::size_t(sysconf(_SC_PAGESIZE));
        void *m =
            mmap(nullptr, 2 * system, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED || mprotect(static_cast<char *>(m) + system, system, PROT_NONE) != 0)
            std::abort();
        return static_cast<std::uint8_t *>(m) + system - kSize;
    }();
#else
    std::vector<std::uint8_t> memory_ = std::vector<std::uint8_t>(kSize + 64);
    std::uint8_t *data_ = memory_.data() + (64 - std::uintptr_t(memory_.data()) % 64);
#endif
};

// Every row loop (paint with an alpha plane, scaled alpha or one alpha, each over a colour plane
// or one colour; printing at full and scaled coverage; both layouts) on five rows of every length
// from 1 to two blocks and one, whose pixels, colour words and alpha bytes start at several words
// from a 64-byte line, or on four rows (the last two a pair) that end where the page does; with
// alpha of noise, all 255 and all 0.
TEST(SimdPaths, EveryRowLoopAtEveryLengthAndStart) {
    struct Loop {
        const char *name;
        bool colourPlane;
        int alpha, opacity; // alpha -1: the plane; opacity -1: paint, -2: print
    };
    const Loop loops[] = {{"plane", true, -1, -1},      {"plane, colour", false, -1, -1},
                          {"scaled", true, -1, 100},    {"scaled, colour", false, -1, 100},
                          {"one alpha", true, 100, -1}, {"one alpha, colour", false, 100, -1},
                          {"print", false, -1, -2},     {"print scaled", false, -1, -3}};
    const Page page, rgbPage, alphaPage;
    std::mt19937 random(19);
    std::vector<std::uint8_t> memory(Page::kSize), noise(Page::kSize / 4);
    for (auto &b : memory)
        b = std::uint8_t(random());
    for (auto &b : noise)
        b = std::uint8_t(random() % 3 == 0 ? 0 : random() % 3 == 0 ? 255 : random());
    std::memcpy(rgbPage.data(), memory.data(), Page::kSize);
    for (const Loop &loop : loops)
        for (std::uint32_t mode : {kMode555, kMode565})
            for (int fill : {-1, 0, 255})
                for (std::size_t n = 1; n <= 65; ++n)
                    for (int start : {0, 1, 7, 31, -1}) {
                        // start -1: the row, its colour words and alpha bytes end with the page.
                        const bool atEnd = start < 0;
                        const int x = atEnd ? 0 : start;
                        const std::size_t h = atEnd ? 4 : 5, pitch = 2 * (x + n) + 6;
                        std::uint8_t *alpha =
                            atEnd ? alphaPage.end() - n * h : alphaPage.data() + start;
                        std::memcpy(alpha, noise.data(), n * h);
                        if (fill >= 0) std::memset(alpha, fill, n * h);
                        auto *rgb = reinterpret_cast<std::uint16_t *>(
                            atEnd ? rgbPage.end() - 2 * n * h : rgbPage.data() + 2 * start);
                        const ImagePlanes image = {std::uint32_t(n), std::uint32_t(h), alpha,
                                                   loop.colourPlane ? rgb : nullptr};
                        const Sources src =
                            paintSources(image, loop.colourPlane ? -1 : 0x7A5C, loop.alpha);
                        const FontCell cell = {0, std::uint32_t(n)};
                        const GlyphFont font = {alpha, std::uint32_t(n), std::uint32_t(h), &cell,
                                                1};
                        const PixelTarget target = {atEnd ? page.end() - pitch * (h - 1) - 2 * n
                                                          : page.data(),
                                                    int(pitch), int(x + n), int(h)};
                        auto draw = [&](SimdPath path) {
                            std::memcpy(page.data(), memory.data(), Page::kSize);
                            if (loop.opacity == -1)
                                paintImage(path, target, x, 0, src, mode);
                            else if (loop.opacity >= 0)
                                blendImage(path, target, x, 0, src, loop.opacity, mode);
                            else
                                printGlyphs(path, target, font, x, 0,
                                            reinterpret_cast<const unsigned char *>(" "), 0x7A5C,
                                            loop.opacity == -2 ? 0 : 150, mode);
                            const auto *words = reinterpret_cast<std::uint16_t *>(page.data());
                            return std::vector<std::uint16_t>(words, words + Page::kSize / 2);
                        };
                        const std::vector<std::uint16_t> want = draw(SimdPath::Scalar);
                        for (std::size_t k = 1; k < simdPaths().count; ++k)
                            ASSERT_EQ(draw(simdPaths().path[k]), want)
                                << simdPathName(simdPaths().path[k]) << ", " << loop.name
                                << ", mode " << mode << ", alpha " << fill << ", " << n
                                << " pixels at " << start;
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
        for (std::size_t k = 1; k < simdPaths().count; ++k) {
            std::vector<std::uint16_t> got = target.memory;
            printGlyphs(simdPaths().path[k], target.on(got), font, x, y, bytes, colour,
                        transparency, mode);
            ASSERT_EQ(got, want) << simdPathName(simdPaths().path[k]) << ", trial " << trial;
        }
    }
}

} // namespace
