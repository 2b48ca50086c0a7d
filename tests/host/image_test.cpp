// The pixel rules proved exhaustively, the painting loops against a pixel-by-pixel reading of the
// rules on random images, and the TGA loader on crafted files.
#include "image/compose.h"
#include "image/tga.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace vell;

template <std::uint32_t Mode> void proveLayout() {
    const unsigned greenBits = Mode == kMode555 ? 5 : 6, redShift = 5 + greenBits;
    for (unsigned v = 0; v < 0x10000; ++v) {
        const Channels c = split<Mode>(static_cast<std::uint16_t>(v));
        ASSERT_EQ(c.blue, v % 32);
        ASSERT_EQ(c.green, (v >> 5) % (1u << greenBits));
        ASSERT_EQ(c.red, (v >> redShift) % 32);
        const std::uint16_t word = join<Mode>(c);
        ASSERT_EQ(word, Mode == kMode555 ? v & 0x7FFF : v);
        // Every word is the packing of its channels, whatever the dropped low bits hold.
        const unsigned r = c.red << 3, g = c.green << (8 - greenBits), b = c.blue << 3;
        ASSERT_EQ(packRGB(Mode, r, g, b), word);
        ASSERT_EQ(packRGB(Mode, r | 7, g | ((1 << (8 - greenBits)) - 1), b | 7), word);
    }
    // Mixing, every destination channel value, source channel value and alpha; the three channels
    // run through their ranges together, bit 15 set on every other alpha (never in the result).
    for (unsigned a = 1; a < 255; ++a)
        for (unsigned d = 0; d < 64; ++d)
            for (unsigned s = 0; s < 64; ++s) {
                const unsigned high = a % 2 == 0 && Mode == kMode555 ? 0x8000 : 0;
                const Channels dc = {d % 32, d % (1u << greenBits), 31 - d % 32};
                const Channels sc = {s % 32, s % (1u << greenBits), 31 - s % 32};
                const auto dw = std::uint16_t(join<Mode>(dc) | high);
                const auto sw = std::uint16_t(join<Mode>(sc) | high);
                const std::uint16_t mixed = mix<Mode>(dw, sw, a);
                const Channels out = split<Mode>(mixed);
                auto want = [a](unsigned dv, unsigned sv) {
                    return (dv * (256 - a) + sv * a) / 256;
                };
                ASSERT_EQ(out.blue, want(dc.blue, sc.blue)) << d << " " << s << " " << a;
                ASSERT_EQ(out.green, want(dc.green, sc.green)) << d << " " << s << " " << a;
                ASSERT_EQ(out.red, want(dc.red, sc.red)) << d << " " << s << " " << a;
                ASSERT_EQ(mixed & high, 0); // bit 15 of 5:5:5 stays clear
                ASSERT_EQ(mixPixel(Mode, dw, sw, a), mixed);
            }
}

TEST(PixelFormat, SplitJoinPackAndMixForEveryValue) {
    proveLayout<kMode555>();
    proveLayout<kMode565>();
}

// Paint (opacity -1 here) and Blend on random images, against the rules read pixel by pixel.
TEST(Compose, LoopsFollowTheRulesPixelByPixel) {
    std::mt19937 random(20261123);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 3000; ++trial) {
        const int w = pick(0, 70) | (trial % 2), h = pick(0, 70), W = pick(1, 80), H = pick(1, 60);
        const int x = pick(-w - 4, W + 4), y = pick(-h - 4, H + 4);
        const std::uint32_t mode = pick(0, 3);
        const int colourArg =
            std::vector<int>{-1, -1, pick(0, 0xFFFF), pick(-70000, 70000)}[pick(0, 3)];
        const int alphaArg =
            std::vector<int>{-1, -1, 0, 255, pick(1, 254), pick(-300, 300)}[pick(0, 5)];
        const int opacity = std::vector<int>{-1, -1, 0, 255, 300, pick(1, 254)}[pick(0, 5)];
        std::vector<std::uint16_t> rgb(w * h);
        std::vector<std::uint8_t> alpha(w * h);
        for (auto &v : rgb)
            v = static_cast<std::uint16_t>(pick(0, 0xFFFF));
        for (auto &v : alpha)
            v = static_cast<std::uint8_t>(std::vector<int>{0, 255, pick(0, 255)}[pick(0, 2)]);
        const ImagePlanes image = {std::uint32_t(w), std::uint32_t(h),
                                   pick(0, 1) ? alpha.data() : nullptr,
                                   pick(0, 1) ? rgb.data() : nullptr};
        // Rows of odd pitches, starting at an odd word: no alignment is assumed.
        const int pitchWords = W + pick(0, 3), start = 1 + pick(0, 1);
        std::vector<std::uint16_t> memory(start + pitchWords * H + 3);
        for (auto &v : memory)
            v = static_cast<std::uint16_t>(pick(0, 0xFFFF));
        std::vector<std::uint16_t> want = memory;

        // The rules: sources by the arguments, alpha scaled by the opacity, then per pixel.
        const bool blend = opacity != -1 && opacity < 255;
        const bool colourPlane = colourArg == -1 && image.rgb != nullptr;
        const bool alphaPlane = alphaArg == -1 && image.alpha != nullptr;
        const unsigned constant = alphaArg == -1 ? 255 : std::min(std::max(alphaArg, 0), 255);
        auto alphaAt = [&](int i) {
            const unsigned raw = alphaPlane ? image.alpha[i] : constant;
            return blend ? raw * opacity >> 8 : raw;
        };
        const bool mixes = alphaPlane || (alphaAt(0) != 0 && alphaAt(0) != 255);
        const bool modeKnown = mode == 1 || mode == 2;
        if (opacity != 0 && (modeKnown || !mixes))
            for (int iy = 0; iy < h; ++iy)
                for (int ix = 0; ix < w; ++ix) {
                    const int tx = x + ix, ty = y + iy, i = iy * w + ix;
                    if (tx < 0 || ty < 0 || tx >= W || ty >= H || alphaAt(i) == 0) continue;
                    const std::uint16_t s = colourPlane       ? image.rgb[i]
                                            : colourArg == -1 ? 0xFFFF
                                                              : colourArg & 0xFFFF;
                    std::uint16_t &d = want[start + ty * pitchWords + tx];
                    d = alphaAt(i) == 255 ? s : mixPixel(mode, d, s, alphaAt(i));
                }

        const PixelTarget target = {reinterpret_cast<std::uint8_t *>(memory.data() + start),
                                    pitchWords * 2, W, H};
        const Sources src = paintSources(image, colourArg, alphaArg);
        const bool drawn = opacity == -1 ? paintImage(target, x, y, src, mode)
                                         : blendImage(target, x, y, src, opacity, mode);
        ASSERT_EQ(drawn, opacity == 0 || modeKnown || !mixes) << "trial " << trial;
        ASSERT_EQ(memory, want) << "trial " << trial << ": " << w << "x" << h << " at " << x << ","
                                << y << " on " << W << "x" << H << ", mode " << mode << ", colour "
                                << colourArg << ", alpha " << alphaArg << ", opacity " << opacity;
    }
}

// A crafted TGA file: the header's fields, then idLength bytes of ID and the pixel rows; stored
// pixel n (in file order) has the bytes 3n, 3n + 1, 3n + 2 (blue, green, red) and 255 - n.
std::string tgaFile(int width, int height, int depth, int descriptor, int idLength = 0,
                    int imageType = 2, int mapType = 0) {
    std::string f(18, '\0');
    f[0] = char(idLength), f[1] = char(mapType), f[2] = char(imageType);
    f[12] = char(width), f[13] = char(width >> 8), f[14] = char(height), f[15] = char(height >> 8);
    f[16] = char(depth), f[17] = char(descriptor);
    f += std::string(idLength, 'I');
    for (int n = 0; n < width * height && depth % 8 == 0; ++n)
        for (int k = 0; k < depth / 8; ++k)
            f += char(k < 3 ? 3 * n + k : 255 - n);
    return f;
}

// Only the header of a file of width x height (too large to craft whole).
std::string tgaHeader(int width, int height, int depth) {
    std::string f = tgaFile(0, 0, depth, 0);
    f[12] = char(width), f[13] = char(width >> 8), f[14] = char(height), f[15] = char(height >> 8);
    return f;
}

// A reader whose size claims `extra` bytes more than it holds, as a file that shrinks might.
struct Lying {
    std::string data;
    std::size_t at = 0;
    static std::size_t read(void *self, void *buffer, std::size_t size) {
        auto &in = *static_cast<Lying *>(self);
        size = std::min(size, in.data.size() - in.at);
        std::memcpy(buffer, in.data.data() + in.at, size);
        in.at += size;
        return size;
    }
};

struct TgaCase {
    std::string name, file;
    std::uint32_t planes;
    int extra;                   // bytes the reader claims beyond the file
    std::uint32_t width, height; // loaded size; 0 x 0 for a refused file
    bool rgb, alpha, topDown;
    std::string log;
};

TEST(Tga, CraftedFiles) {
    const std::string p = "TBitmap::TBitmap(char*) - ";
    const std::string cut = p + "File too short: picture data missing!\n";
    const std::string unknown = p + "Picture has unknown alpha channel! Ignoring alpha channel!\n";
    const std::string whole = tgaFile(3, 2, 32, 0x28);
    const TgaCase cases[] = {
        {"24 bits bottom-up", tgaFile(5, 3, 24, 0), 0, 0, 5, 3, true, false, false, ""},
        {"32 bits, 8 alpha bits, top-down", whole, 0, 0, 3, 2, true, true, true, ""},
        {"alpha plane only", whole, 1, 0, 3, 2, false, true, true, ""},
        {"colour plane only", tgaFile(3, 2, 32, 0x08), 2, 0, 3, 2, true, false, false, ""},
        {"32 bits without alpha", tgaFile(3, 2, 32, 0x20), 0, 0, 3, 2, true, false, true, ""},
        {"4 alpha bits", tgaFile(3, 2, 32, 0x04), 0, 0, 3, 2, true, false, false, unknown},
        {"alpha only of a file without", tgaFile(4, 2, 24, 0), 1, 0, 4, 2, false, false, false, ""},
        {"image ID skipped", tgaFile(3, 2, 24, 0, 9), 0, 0, 3, 2, true, false, false, ""},
        {"no pixels", tgaFile(0, 7, 24, 0), 0, 0, 0, 0, false, false, false, ""},
        {"colour map", tgaFile(3, 2, 24, 0, 0, 1, 1), 0, 0, 0, 0, false, false, false,
         p + "Wrong file type: Picture has a color table!"},
        {"run-length encoded", tgaFile(3, 2, 24, 0, 0, 10), 0, 0, 0, 0, false, false, false,
         p + "Wrong file type: Picture has compression and/or isn't stored in TrueColor format!\n"},
        {"16 bits", tgaFile(3, 2, 16, 0), 0, 0, 0, 0, false, false, false,
         p + "Wrong file type: Picture has 16 and not 24/32 bits color depth!\n"},
        {"alpha at 24 bits", tgaFile(3, 2, 24, 0x08), 0, 0, 0, 0, false, false, false,
         p + "Wrong file type: Picture must have depth of 32 with or 24 without alpha channel!\n"},
        {"too large", tgaHeader(65535, 32769, 24), 0, 0, 0, 0, false, false, false,
         p + "Picture is too large (65535 x 32769 pixels)!\n"},
        {"largest, truncated", tgaHeader(65535, 32768, 32), 0, 0, 0, 0, false, false, false, cut},
        {"header cut", whole.substr(0, 17), 0, 0, 0, 0, false, false, false, cut},
        {"last byte missing", whole.substr(0, whole.size() - 1), 0, 0, 0, 0, false, false, false,
         cut},
        {"unknown alpha, then cut", tgaFile(3, 2, 32, 0x04).substr(0, 30), 0, 0, 0, 0, false, false,
         false, unknown + cut},
        {"ID cut, size claimed", tgaFile(3, 2, 24, 0, 9).substr(0, 20), 0, 30, 0, 0, false, false,
         false, cut},
        {"row cut, size claimed", whole.substr(0, whole.size() - 1), 0, 1, 0, 0, false, false,
         false, cut},
    };
    for (const TgaCase &c : cases)
        for (std::uint32_t mode : {kMode555, kMode565}) {
            SCOPED_TRACE(c.name + ", mode " + std::to_string(mode));
            std::string log;
            const LogSink sink = {
                [](void *out, const char *line) { *static_cast<std::string *>(out) += line; },
                &log};
            ImagePlanes image;
            Lying file = {c.file};
            ByteReader in = {Lying::read, &file, c.file.size() + c.extra};
            EXPECT_EQ(loadTga(in, mode, c.planes, image, sink), c.log.empty() || c.log == unknown);
            EXPECT_EQ(log, c.log);
            EXPECT_EQ(image.width, c.width);
            EXPECT_EQ(image.height, c.height);
            EXPECT_EQ(image.rgb != nullptr, c.rgb);
            EXPECT_EQ(image.alpha != nullptr, c.alpha);
            for (std::uint32_t row = 0; row < image.height; ++row)
                for (std::uint32_t x = 0; x < image.width; ++x) {
                    const int n = (c.topDown ? row : image.height - 1 - row) * image.width + x;
                    const std::size_t i = row * image.width + x;
                    if (image.rgb)
                        EXPECT_EQ(image.rgb[i], packRGB(mode, 3 * n + 2, 3 * n + 1, 3 * n));
                    if (image.alpha) EXPECT_EQ(image.alpha[i], 255 - n);
                }
            freePlanes(image);
        }
    // From memory: a bottom-up file's top left pixel is the first of its second stored row.
    ImagePlanes image;
    const std::string file = tgaFile(3, 2, 32, 0x08);
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(file.data());
    ASSERT_TRUE(loadTga(bytes, file.size(), kMode565, 0, image, {}));
    EXPECT_EQ(image.alpha[0], 255 - 3);
    freePlanes(image);
}

} // namespace
