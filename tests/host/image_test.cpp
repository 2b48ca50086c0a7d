// The pixel rules proved exhaustively, the painting loops of every path against a pixel-by-pixel
// reading of the rules on random images, and the TGA loader on crafted files. Built into the host
// tests and the Windows image tests.
#include "image/compose.h"
#include "image/tga.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace vell;

template <std::uint32_t Mode> void proveLayout() {
    const unsigned greenBits = Mode == kMode555 ? 5 : 6, dropped = (1u << (8 - greenBits)) - 1;
    for (unsigned v = 0; v < 0x10000; ++v) {
        const Channels c = split<Mode>(static_cast<std::uint16_t>(v));
        ASSERT_EQ(c.blue, v % 32);
        ASSERT_EQ(c.green, (v >> 5) % (1u << greenBits));
        ASSERT_EQ(c.red, (v >> (5 + greenBits)) % 32);
        const unsigned word = Mode == kMode555 ? v & 0x7FFF : v;
        ASSERT_EQ(join<Mode>(c), word);
        // Every word is the packing of its channels, whatever the dropped low bits hold.
        const unsigned r = c.red << 3, g = c.green << (8 - greenBits), b = c.blue << 3;
        ASSERT_EQ(packRGB(Mode, r, g, b), word);
        ASSERT_EQ(packRGB(Mode, r | 7, g | dropped, b | 7), word);
    }
    // Every destination value, source value and alpha of each channel: the channels run through
    // their ranges together, with bit 15 set at every other alpha (it takes part in no channel).
    for (unsigned a = 1; a < 255; ++a)
        for (unsigned d = 0; d < 64; ++d)
            for (unsigned s = 0; s < 64; ++s) {
                const unsigned high = a % 2 == 0 && Mode == kMode555 ? 0x8000 : 0;
                const Channels dc = {d % 32, d % (1u << greenBits), 31 - d % 32};
                const Channels sc = {s % 32, s % (1u << greenBits), 31 - s % 32};
                auto want = [a](unsigned dv, unsigned sv) {
                    return (dv * (256 - a) + sv * a) / 256;
                };
                const auto dw = std::uint16_t(join<Mode>(dc) | high);
                const auto sw = std::uint16_t(join<Mode>(sc) | high);
                const std::uint16_t mixed = join<Mode>(
                    {want(dc.blue, sc.blue), want(dc.green, sc.green), want(dc.red, sc.red)});
                ASSERT_EQ(mix<Mode>(dw, sw, a), mixed) << d << " " << s << " " << a;
                ASSERT_EQ(mixPixel(Mode, dw, sw, a), mixed) << d << " " << s << " " << a;
            }
}

TEST(PixelFormat, SplitJoinPackAndMixForEveryValue) {
    proveLayout<kMode555>();
    proveLayout<kMode565>();
}

// The visible part of a w x h image at (x, y) on a 10 x 8 target: left, top, right, bottom, or
// all 0 where none is. (The random images below check it again, through what is drawn.)
TEST(Compose, VisiblePartIsTheImageCutToTheTarget) {
    using Edges = std::array<int, 4>;
    const struct {
        std::int32_t x, y;
        std::uint32_t w, h;
        Edges want;
    } cases[] = {
        {2, 1, 4, 3, {2, 1, 6, 4}},
        {-2, -1, 4, 3, {0, 0, 2, 2}},
        {8, 6, 4, 3, {8, 6, 10, 8}},
        {-4, 0, 4, 3, {}},
        {10, 0, 4, 3, {}},
        {0, 8, 4, 3, {}},
        {1, 1, 0, 3, {}},
        {INT32_MAX, 0, ~0u, 1, {}}, // no overflow
        {INT32_MIN, 2, ~0u, 1, {0, 2, 10, 3}},
    };
    for (const auto &c : cases) {
        ClipRect r = {};
        const bool any = visiblePart(10, 8, c.x, c.y, c.w, c.h, r); // r is only read when true
        const Edges got = {r.left, r.top, r.right, r.bottom};
        EXPECT_EQ(any, c.want[2] != 0) << c.x << "," << c.y << " " << c.w << "x" << c.h;
        EXPECT_EQ(any ? got : Edges{}, c.want) << c.x << "," << c.y << " " << c.w << "x" << c.h;
    }
}

// Paint (opacity -1 here) and Blend on random images, on every path this processor runs, against
// the rules read pixel by pixel. Every tenth image is wide and low (a few long rows); alpha is
// noise or runs long enough to fill whole vectors with 0 or 255; planes and rows start at odd
// words and rows have odd pitches: no alignment is assumed.
TEST(Compose, EveryPathFollowsTheRulesPixelByPixel) {
    std::mt19937 random(20261123);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    auto oneOf = [&](std::vector<int> v) { return v[pick(0, int(v.size()) - 1)]; };
    for (int trial = 0; trial < 4000; ++trial) {
        const bool wide = trial % 10 == 0;
        const int w = wide ? pick(100, 1100) : pick(0, 70) | (trial % 2),
                  h = pick(0, wide ? 4 : 70);
        const int W = pick(1, wide ? 1200 : 80), H = pick(1, wide ? 6 : 60);
        const int x = pick(-w - 4, W + 4), y = pick(-h - 4, H + 4);
        const std::uint32_t mode = oneOf({0, 3, 1, 1, 1, 2, 2, 2});
        const int colourArg = oneOf({-1, -1, pick(0, 0xFFFF), pick(-70000, 70000)});
        const int alphaArg = oneOf({-1, -1, 0, 255, pick(1, 254), pick(-300, 300)});
        const int opacity = oneOf({-1, -1, 0, 255, 300, pick(1, 254), pick(1, 254)});
        const int pitch = W + pick(0, 3), start = pick(0, 3), offset = pick(0, 3);
        std::vector<std::uint16_t> rgb(offset + w * h), memory(start + pitch * H + 3);
        std::vector<std::uint8_t> alpha(offset + w * h);
        for (auto *plane : {&rgb, &memory})
            for (auto &v : *plane)
                v = std::uint16_t(pick(0, 0xFFFF));
        const bool runs = pick(0, 1);
        for (std::size_t i = 0, left = 0, kind = 0; i < alpha.size(); ++i, --left) {
            if (!runs || left == 0) kind = pick(0, 2), left = pick(1, 80);
            alpha[i] = std::uint8_t(kind == 0 ? 0 : kind == 1 ? 255 : pick(0, 255));
        }
        const ImagePlanes image = {std::uint32_t(w), std::uint32_t(h),
                                   pick(0, 3) ? alpha.data() + offset : nullptr,
                                   pick(0, 3) ? rgb.data() + offset : nullptr};

        // The rules: sources by the arguments, alpha scaled by the opacity, then per pixel.
        std::vector<std::uint16_t> want = memory;
        const bool alphaPlane = alphaArg == -1 && image.alpha != nullptr;
        auto alphaAt = [&](int i) {
            const unsigned raw = alphaPlane       ? image.alpha[i]
                                 : alphaArg == -1 ? 255
                                                  : std::clamp(alphaArg, 0, 255);
            return opacity != -1 && opacity < 255 ? raw * opacity >> 8 : raw;
        };
        const bool modeNeeded = alphaPlane || (alphaAt(0) != 0 && alphaAt(0) != 255);
        const bool drawable = opacity != 0 && (mode == 1 || mode == 2 || !modeNeeded);
        for (int i = 0; i < w * h && drawable; ++i) {
            const int tx = x + i % w, ty = y + i / w;
            if (tx < 0 || ty < 0 || tx >= W || ty >= H || alphaAt(i) == 0) continue;
            const std::uint16_t s = colourArg != -1 ? colourArg & 0xFFFF
                                    : image.rgb     ? image.rgb[i]
                                                    : 0xFFFF;
            std::uint16_t &d = want[start + ty * pitch + tx];
            d = alphaAt(i) == 255 ? s : mixPixel(mode, d, s, alphaAt(i));
        }

        const Sources src = paintSources(image, colourArg, alphaArg);
        for (std::size_t k = 0; k < simdPaths().count; ++k) {
            const SimdPath path = simdPaths().path[k];
            std::vector<std::uint16_t> got = memory;
            const PixelTarget target = {reinterpret_cast<std::uint8_t *>(&got[start]), pitch * 2, W,
                                        H};
            ASSERT_EQ(opacity == -1 ? paintImage(path, target, x, y, src, mode)
                                    : blendImage(path, target, x, y, src, opacity, mode),
                      drawable || opacity == 0)
                << simdPathName(path) << ", trial " << trial;
            ASSERT_EQ(got, want) << simdPathName(path) << ", trial " << trial;
        }
    }
}

// A crafted TGA file: the header's fields, idLength bytes of ID and the pixel rows; stored pixel n
// (in file order) has the bytes 3n, 3n + 1, 3n + 2 (blue, green, red) and, at 32 bits, 255 - n.
std::string tgaFile(int width, int height, int depth, int descriptor, int idLength = 0,
                    int imageType = 2, int mapType = 0) {
    std::string f = {char(idLength), char(mapType), char(imageType)};
    f += std::string(9, '\0') + char(width) + char(width >> 8) + char(height) + char(height >> 8) +
         char(depth) + char(descriptor) + std::string(idLength, 'I');
    for (int n = 0; width < 100 && height < 100 && n < width * height; ++n)
        for (int k = 0; k < depth / 8; ++k)
            f += char(k < 3 ? 3 * n + k : 255 - n);
    return f;
}

// Reads a file from a stream: ByteReader's size may claim more bytes than the stream holds (as a
// file shrinking underway might).
std::size_t readStream(void *in, void *buffer, std::size_t size) {
    auto &stream = *static_cast<std::istream *>(in);
    return std::size_t(stream.read(static_cast<char *>(buffer), std::streamsize(size)).gcount());
}

TEST(Tga, CraftedFiles) {
    const std::string p = "TBitmap::TBitmap(char*) - ", wrong = p + "Wrong file type: Picture ";
    const std::string cut = p + "File too short: picture data missing!\n";
    const std::string unknown = p + "Picture has unknown alpha channel! Ignoring alpha channel!\n";
    const std::string whole = tgaFile(3, 2, 32, 0x28), withId = tgaFile(3, 2, 24, 0, 9);
    struct {
        std::string file;
        std::uint32_t planes;
        int extra;
        std::string want, log; // want: width x height, then C for a colour plane, A for alpha
    } cases[] = {
        {tgaFile(5, 3, 24, 0), 0, 0, "5x3 C", ""},
        {whole, 0, 0, "3x2 CA", ""},
        {whole, 1, 0, "3x2 A", ""},
        {tgaFile(3, 2, 32, 0x08), 2, 0, "3x2 C", ""},
        {tgaFile(3, 2, 32, 0x20), 0, 0, "3x2 C", ""},
        {tgaFile(3, 2, 32, 0x18), 0, 0, "3x2 CA", ""}, // bit 4 (right to left) is no alpha bit
        {tgaFile(3, 2, 32, 0x04), 0, 0, "3x2 C", unknown},
        {tgaFile(4, 2, 24, 0), 1, 0, "4x2 ", ""},
        {withId, 0, 0, "3x2 C", ""},
        {tgaFile(0, 7, 24, 0), 0, 0, "0x0 ", ""},
        {tgaFile(3, 0, 24, 0), 0, 0, "0x0 ", ""}, // the header alone holds all 0 rows
        {tgaFile(3, 2, 24, 0, 0, 1, 1), 0, 0, "0x0 ", wrong + "has a color table!"},
        {tgaFile(3, 2, 24, 0, 0, 10), 0, 0, "0x0 ",
         wrong + "has compression and/or isn't stored in TrueColor format!\n"},
        {tgaFile(3, 2, 16, 0), 0, 0, "0x0 ", wrong + "has 16 and not 24/32 bits color depth!\n"},
        {tgaFile(3, 2, 24, 0x08), 0, 0, "0x0 ",
         wrong + "must have depth of 32 with or 24 without alpha channel!\n"},
        {tgaFile(65535, 32769, 24, 0), 0, 0, "0x0 ",
         p + "Picture is too large (65535 x 32769 pixels)!\n"},
        {tgaFile(65535, 32768, 32, 0), 0, 0, "0x0 ", cut}, // the largest size that fits
        {whole.substr(0, 17), 0, 0, "0x0 ", cut},
        {whole.substr(0, whole.size() - 1), 0, 0, "0x0 ", cut},
        {tgaFile(3, 2, 32, 0x04).substr(0, 30), 0, 0, "0x0 ", unknown + cut},
        {withId.substr(0, 20), 0, 30, "0x0 ", cut},
        {whole.substr(0, whole.size() - 1), 0, 1, "0x0 ", cut},
    };
    const auto add = [](void *to, const char *line) { *static_cast<std::string *>(to) += line; };
    for (const auto &c : cases)
        for (std::uint32_t mode : {kMode555, kMode565}) {
            SCOPED_TRACE("case " + std::to_string(&c - cases) + ", mode " + std::to_string(mode));
            std::string log;
            ImagePlanes image;
            std::istringstream file(c.file);
            ByteReader in = {readStream, &file, c.file.size() + c.extra};
            EXPECT_EQ(loadTga(in, mode, c.planes, image, {add, &log}),
                      c.log.empty() || c.log == unknown);
            EXPECT_EQ(log, c.log);
            EXPECT_EQ(std::to_string(image.width) + "x" + std::to_string(image.height) + " " +
                          (image.rgb ? "C" : "") + (image.alpha ? "A" : ""),
                      c.want);
            for (std::uint32_t i = 0; i < image.width * image.height; ++i) {
                const std::uint32_t row = i / image.width, x = i % image.width;
                const int n =
                    ((c.file[17] & 0x20 ? row : image.height - 1 - row) * image.width + x);
                const std::uint16_t word = packRGB(mode, 3 * n + 2, 3 * n + 1, 3 * n);
                EXPECT_EQ(image.rgb ? image.rgb[i] : word, word);
                EXPECT_EQ(image.alpha ? image.alpha[i] : 255 - n, 255 - n);
            }
            freePlanes(image);
        }
}

} // namespace
