// Every pixel path this processor runs (image/simd.h): each row loop against the scalar loop, word
// for word, at every row length around its blocks and at several start words, and whole printing
// calls against the printing rule read pixel by pixel, on seeded random fonts and targets with
// guard rows (painting's random images are checked against the rules, on every path, in
// image_test.cpp). Built into the host tests and the Windows image tests; with VELL_SIMD=0 only
// the scalar path is listed.
#include "image/compose.h"
#include "text/print_loop.h"

#include <gtest/gtest.h>

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

// A page of memory (from a 64-byte line), kept until the program ends. On the host an inaccessible
// page follows it, so that a loop reading or writing past the end of a row placed at the page's
// end faults.
constexpr std::size_t kPage = 4096;
std::uint8_t *newPage() {
#ifndef _WIN32
    const std::size_t system = std::size_t(sysconf(_SC_PAGESIZE));
    void *m = mmap(nullptr, 2 * system, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED || mprotect(static_cast<char *>(m) + system, system, PROT_NONE) != 0)
        std::abort();
    return static_cast<std::uint8_t *>(m) + system - kPage;
#else
    auto *m = new std::uint8_t[kPage + 64];
    return m + (64 - std::uintptr_t(m) % 64);
#endif
}

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
    std::uint8_t *const page = newPage(), *const rgbPage = newPage(), *const alphaPage = newPage();
    std::mt19937 random(19);
    std::vector<std::uint8_t> memory(kPage), noise(kPage / 4);
    for (auto &b : memory)
        b = std::uint8_t(random());
    for (auto &b : noise)
        b = std::uint8_t(random() % 3 == 0 ? 0 : random() % 3 == 0 ? 255 : random());
    std::memcpy(rgbPage, memory.data(), kPage);
    for (const Loop &loop : loops)
        for (std::uint32_t mode : {kMode555, kMode565})
            for (int fill : {-1, 0, 255})
                for (std::size_t n = 1; n <= 65; ++n)
                    for (int start : {0, 1, 7, 31, -1}) {
                        // start -1: the row, its colour words and alpha bytes end with the page.
                        const bool atEnd = start < 0;
                        const int x = atEnd ? 0 : start;
                        const std::size_t h = atEnd ? 4 : 5, pitch = 2 * (x + n) + 6;
                        std::uint8_t *alpha = atEnd ? alphaPage + kPage - n * h : alphaPage + start;
                        std::memcpy(alpha, noise.data(), n * h);
                        if (fill >= 0) std::memset(alpha, fill, n * h);
                        auto *rgb = reinterpret_cast<std::uint16_t *>(
                            atEnd ? rgbPage + kPage - 2 * n * h : rgbPage + 2 * start);
                        const ImagePlanes image = {std::uint32_t(n), std::uint32_t(h), alpha,
                                                   loop.colourPlane ? rgb : nullptr};
                        const Sources src =
                            paintSources(image, loop.colourPlane ? -1 : 0x7A5C, loop.alpha);
                        const FontCell cell = {0, std::uint32_t(n)};
                        const GlyphFont font = {alpha, std::uint32_t(n), std::uint32_t(h), &cell,
                                                1};
                        const PixelTarget target = {atEnd ? page + kPage - pitch * (h - 1) - 2 * n
                                                          : page,
                                                    int(pitch), int(x + n), int(h)};
                        auto draw = [&](SimdPath path) {
                            std::memcpy(page, memory.data(), kPage);
                            if (loop.opacity == -1)
                                paintImage(path, target, x, 0, src, mode);
                            else if (loop.opacity >= 0)
                                blendImage(path, target, x, 0, src, loop.opacity, mode);
                            else
                                printGlyphs(path, target, font, x, 0,
                                            reinterpret_cast<const unsigned char *>(" "), 0x7A5C,
                                            loop.opacity == -2 ? 0 : 150, mode);
                            return std::vector<std::uint8_t>(page, page + kPage);
                        };
                        const std::vector<std::uint8_t> want = draw(SimdPath::Scalar);
                        for (std::size_t k = 1; k < simdPaths().count; ++k)
                            ASSERT_EQ(draw(simdPaths().path[k]), want)
                                << simdPathName(simdPaths().path[k]) << ", " << loop.name
                                << ", mode " << mode << ", alpha " << fill << ", " << n
                                << " pixels at " << start;
                    }
}

// Printing read pixel by pixel, cell after cell in text order: a line feed goes back to the
// start column one glyph height down, codes below 32 and codes past the font's cells take no
// room, and each other cell mixes every pixel of the target it covers with the colour, at the
// coverage g (scaled to g * (255 - t) / 256 at transparency t > 0), 0 and 255 included. A cell's
// columns past the plane's row are blank.
TEST(SimdPaths, EveryPathPrintsByTheRule) {
    std::mt19937 random(20261124);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 3000; ++trial) {
        // A font of random coverage (noise, or runs of 0 and 255) with cells of every kind:
        // empty, wider than the strip of columns gathered at once, and damaged ones reaching past
        // the plane's row.
        const std::uint32_t stride = pick(1, 120), height = pick(0, 20);
        std::vector<std::uint8_t> plane(stride * height + 1);
        const bool runs = pick(0, 1);
        for (std::size_t i = 0, left = 0, kind = 0; i < plane.size(); ++i, --left) {
            if (!runs || left == 0) kind = pick(0, 2), left = pick(1, 80);
            plane[i] = std::uint8_t(kind == 0 ? 0 : kind == 1 ? 255 : pick(0, 255));
        }
        std::vector<FontCell> cells(pick(0, 224));
        for (auto &cell : cells)
            cell = {std::uint32_t(pick(0, stride + 2)),
                    std::uint32_t(pick(0, 30) == 0 ? pick(0, 700) : pick(0, 20))};
        const GlyphFont font = {plane.data() + 1, stride, height, cells.data(),
                                unsigned(cells.size())};
        std::string text(pick(0, 60), ' ');
        for (char &c : text)
            c = char(pick(0, 8) == 0 ? (pick(0, 1) ? 10 : pick(1, 31)) : pick(32, 255));
        // A target of W x H pixels between guard rows, rows of odd pitch.
        const int W = pick(1, trial % 8 == 0 ? 1500 : 100), H = pick(1, 50), pitch = W + pick(0, 3);
        std::vector<std::uint16_t> memory((H + 2) * pitch);
        for (auto &v : memory)
            v = std::uint16_t(pick(0, 0xFFFF));
        const int x = pick(-40, W), y = pick(-int(height) - 2, H);
        int penX = x, penY = y; // where the next cell goes
        const std::uint32_t mode = pick(0, 3);
        const auto colour = std::uint16_t(pick(0, 0xFFFF));
        const auto t = std::uint8_t(pick(0, 2) ? pick(0, 1) * 255 : pick(0, 255));

        std::vector<std::uint16_t> want = memory;
        for (unsigned char c : text) {
            const unsigned k = c - 32u;
            const FontCell cell = c == 10 || k >= font.count ? FontCell{0, 0} : cells[k];
            if (c == 10) penX = x, penY += height;
            for (unsigned r = 0; r < height; ++r)
                for (unsigned i = 0; i < cell.width && cell.position + i < stride; ++i) {
                    const unsigned g = font.plane[r * stride + cell.position + i];
                    const std::int64_t px = std::int64_t(penX) + i, py = std::int64_t(penY) + r;
                    if (px >= 0 && px < W && py >= 0 && py < H) {
                        std::uint16_t &d = want[(py + 1) * pitch + px]; // below the guard row
                        d = mixPixel(mode, d, colour, t == 0 ? g : g * (255 - t) / 256);
                    }
                }
            penX += cell.width;
        }
        for (std::size_t k = 0; k < simdPaths().count; ++k) {
            std::vector<std::uint16_t> got = memory;
            printGlyphs(simdPaths().path[k],
                        {reinterpret_cast<std::uint8_t *>(&got[pitch]), 2 * pitch, W, H}, font, x,
                        y, reinterpret_cast<const unsigned char *>(text.c_str()), colour, t, mode);
            ASSERT_EQ(got, want) << simdPathName(simdPaths().path[k]) << ", trial " << trial;
        }
    }
}

} // namespace
