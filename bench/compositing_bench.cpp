// Compositing speed: this library's painting, blending and printing loops on each path against
// pixman, SDL2 and memcpy of the same bytes, named <impl>/<op>/<workload>, items = pixels drawn.
//
//   impl   vell (the path chosen at run time), vell_sse2, vell_scalar, vell_avx2 (where the
//          chosen path is AVX-512), pixman (OVER of a premultiplied a8r8g8b8 image onto r5g6b5;
//          for paint_colour and print OVER of one colour through an a8 mask onto r5g6b5, pixman's
//          over_n_8_0565), sdl2 (blended blit of an ARGB8888 surface onto an RGB565 one), memcpy
//          (the colour plane into the destination's rows and the alpha plane into a scratch
//          plane: the bytes a paint reads from its image and writes)
//   op     paint (alpha plane), blend (opacity 100: pixman with a solid mask of that alpha, SDL2
//          with the surface's alpha modulation), paint_colour (one colour, alpha plane), print (a
//          line of text), and on this library's paths alone paint_const (constant alpha 100)
//   workload  sprite64 (a round sprite with a soft edge at an odd position in a 640x480 target),
//          disc24, disc40, disc47 (the same at 24, 40 and 47 pixels), smooth256 (smooth alpha
//          shapes, a third each transparent, opaque and between), noise256 (the same mix pixel
//          by pixel), frame640 and frame1080 (whole frames of smooth alpha), line40 (40
//          characters of the demo's 16-pixel font); and the width sweep wNNNa and wNNNu: noisy
//          alpha NNN pixels wide and 256 rows high at x = 128 (rows start on a 64-byte line) and
//          x = 129
#include "image/compose.h"
#include "image/text_image.h"
#include "text/font_file.h"
#include "text/print_loop.h"

#include <SDL.h>
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace vell;

enum class Shape { Disc, Smooth, Noise };

struct Workload {
    std::string name;
    int w, h, W, H, x, y;
    Shape shape;
};

const Workload kWorkloads[] = {
    {"sprite64", 64, 64, 640, 480, 101, 77, Shape::Disc},
    {"disc24", 24, 24, 640, 480, 101, 77, Shape::Disc},
    {"disc40", 40, 40, 640, 480, 101, 77, Shape::Disc},
    {"disc47", 47, 47, 640, 480, 101, 77, Shape::Disc},
    {"smooth256", 256, 256, 640, 480, 129, 111, Shape::Smooth},
    {"noise256", 256, 256, 640, 480, 129, 111, Shape::Noise},
    {"frame640", 640, 480, 640, 480, 0, 0, Shape::Smooth},
    {"frame1080", 1920, 1080, 1920, 1080, 0, 0, Shape::Smooth},
};

// The widths of the sweep: every one up to 33, then around the multiples of 16 and 32.
const int kSweepWidths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,   10,  11,  12,  13,  14,  15,
                            16, 17, 18, 19, 20, 21, 22, 23, 24,  25,  26,  27,  28,  29,  30,
                            31, 32, 33, 47, 48, 63, 64, 65, 100, 127, 128, 129, 200, 255, 256};

// Alpha values: 0 below the first third of a smooth field's values, 255 above the second, a ramp
// between; or per-pixel noise of the same mix; or a disc with a soft rim.
std::vector<std::uint8_t> makeAlpha(const Workload &wl) {
    const std::size_t n = std::size_t(wl.w) * wl.h;
    std::vector<std::uint8_t> alpha(n);
    std::mt19937 random(7);
    std::vector<double> field(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double u = double(i % wl.w) / wl.w, v = double(i / wl.w) / wl.h, pi = M_PI;
        if (wl.shape == Shape::Disc) {
            field[i] = -std::hypot(u - 0.5, v - 0.5);
        } else {
            field[i] = std::sin(4 * pi * u + std::sin(2 * pi * v)) +
                       std::cos(3 * pi * v + 0.8 * std::sin(2.6 * pi * u));
        }
    }
    std::vector<double> sorted = field;
    std::sort(sorted.begin(), sorted.end());
    const double low = sorted[n / 3], high = sorted[2 * n / 3];
    for (std::size_t i = 0; i < n; ++i) {
        if (wl.shape == Shape::Noise) {
            const unsigned kind = random() % 3;
            alpha[i] = std::uint8_t(kind == 0 ? 0 : kind == 1 ? 255 : 1 + random() % 254);
        } else {
            const double t = (field[i] - low) / (high - low);
            alpha[i] = std::uint8_t(t < 0 ? 0 : t >= 1 ? 255 : 1 + int(t * 253));
        }
    }
    return alpha;
}

// pixman wants rows of whole 32-bit words: an 8-bit plane copied with its rows padded to them.
struct PaddedMask {
    std::vector<std::uint32_t> words;
    int stride = 0;
    PaddedMask(const std::uint8_t *plane, int w, int h)
        : words(std::size_t((w + 3) / 4) * h), stride((w + 3) / 4 * 4) {
        auto *bytes = reinterpret_cast<std::uint8_t *>(words.data());
        for (int y = 0; y < h; ++y)
            std::memcpy(bytes + std::size_t(y) * stride, plane + std::size_t(y) * w, w);
    }
    pixman_image_t *image(int w, int h) {
        return pixman_image_create_bits(PIXMAN_a8, w, h, words.data(), stride);
    }
};

constexpr std::uint16_t kColour = 0x07E0; // the one colour of paint_colour: green

// One workload's image and target in the forms each contender takes. The target's rows start on
// 64-byte lines.
struct Scene {
    Workload wl;
    std::vector<std::uint16_t> rgb, memory;
    std::uint16_t *target;
    std::vector<std::uint8_t> alpha, scratch;
    std::vector<std::uint32_t> premultiplied, straight; // a8r8g8b8 for pixman, ARGB8888 for SDL2
    PaddedMask mask;

    explicit Scene(const Workload &w)
        : wl(w), memory(std::size_t(wl.W) * wl.H + 32), alpha(makeAlpha(w)), scratch(alpha.size()),
          mask(alpha.data(), wl.w, wl.h) {
        std::mt19937 random(11);
        for (int i = 0; i < wl.w * wl.h; ++i) {
            const unsigned r = (i % wl.w) * 255 / wl.w, g = (i / wl.w) * 255 / wl.h,
                           b = random() % 256, a = alpha[i];
            const std::uint16_t word = packRGB(kMode565, r, g, b);
            rgb.push_back(word);
            // The 5:6:5 channels widened back to 8 bits, so that every contender draws one image.
            const unsigned r8 = (word >> 11) * 255 / 31, g8 = ((word >> 5) & 63) * 255 / 63,
                           b8 = (word & 31) * 255 / 31;
            straight.push_back(a << 24 | r8 << 16 | g8 << 8 | b8);
            premultiplied.push_back(a << 24 | (r8 * a + 127) / 255 << 16 |
                                    (g8 * a + 127) / 255 << 8 | (b8 * a + 127) / 255);
        }
        for (auto &v : memory)
            v = std::uint16_t(random());
        target = memory.data() + (64 - reinterpret_cast<std::uintptr_t>(memory.data()) % 64) / 2;
    }
    std::size_t pixels() const { return std::size_t(wl.w) * wl.h; }
    PixelTarget on() const {
        return {reinterpret_cast<std::uint8_t *>(target), 2 * wl.W, wl.W, wl.H};
    }
    pixman_image_t *pixmanTarget() const {
        return pixman_image_create_bits(PIXMAN_r5g6b5, wl.W, wl.H,
                                        reinterpret_cast<std::uint32_t *>(target), 2 * wl.W);
    }
};

constexpr unsigned kOpacity = 100;

void vellLoop(benchmark::State &state, Scene *scene, SimdPath path, const std::string &op) {
    Scene &s = *scene;
    const ImagePlanes image = {std::uint32_t(s.wl.w), std::uint32_t(s.wl.h), s.alpha.data(),
                               s.rgb.data()};
    const Sources src = paintSources(image, op == "paint_colour" ? kColour : -1,
                                     op == "paint_const" ? int(kOpacity) : -1);
    const PixelTarget target = s.on();
    for (auto _ : state) {
        if (op == "blend")
            blendImage(path, target, s.wl.x, s.wl.y, src, kOpacity, kMode565);
        else
            paintImage(path, target, s.wl.x, s.wl.y, src, kMode565);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations() * s.pixels()));
}

// pixman's OVER of the image (paint, blend), or of one colour through the alpha plane
// (paint_colour: over_n_8_0565).
void pixmanLoop(benchmark::State &state, Scene *scene, const std::string &op) {
    Scene &s = *scene;
    const pixman_color_t green = {0, 0xFFFF, 0, 0xFFFF};
    pixman_image_t *src = op == "paint_colour"
                              ? pixman_image_create_solid_fill(&green)
                              : pixman_image_create_bits(PIXMAN_a8r8g8b8, s.wl.w, s.wl.h,
                                                         s.premultiplied.data(), 4 * s.wl.w);
    pixman_image_t *dst = s.pixmanTarget();
    const pixman_color_t opacity = {0, 0, 0, std::uint16_t(kOpacity * 257)};
    pixman_image_t *mask = op == "blend"          ? pixman_image_create_solid_fill(&opacity)
                           : op == "paint_colour" ? s.mask.image(s.wl.w, s.wl.h)
                                                  : nullptr;
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, src, mask, dst, 0, 0, 0, 0, s.wl.x, s.wl.y, s.wl.w,
                                 s.wl.h);
        benchmark::ClobberMemory();
    }
    if (mask != nullptr) pixman_image_unref(mask);
    pixman_image_unref(dst);
    pixman_image_unref(src);
    state.SetItemsProcessed(std::int64_t(state.iterations() * s.pixels()));
}

void sdlLoop(benchmark::State &state, Scene *scene, bool blend) {
    Scene &s = *scene;
    SDL_Surface *src = SDL_CreateRGBSurfaceWithFormatFrom(s.straight.data(), s.wl.w, s.wl.h, 32,
                                                          4 * s.wl.w, SDL_PIXELFORMAT_ARGB8888);
    SDL_Surface *dst = SDL_CreateRGBSurfaceWithFormatFrom(s.target, s.wl.W, s.wl.H, 16, 2 * s.wl.W,
                                                          SDL_PIXELFORMAT_RGB565);
    SDL_SetSurfaceBlendMode(src, SDL_BLENDMODE_BLEND);
    if (blend) SDL_SetSurfaceAlphaMod(src, kOpacity);
    for (auto _ : state) {
        SDL_Rect rect = {s.wl.x, s.wl.y, s.wl.w, s.wl.h};
        SDL_BlitSurface(src, nullptr, dst, &rect);
        benchmark::ClobberMemory();
    }
    SDL_FreeSurface(dst);
    SDL_FreeSurface(src);
    state.SetItemsProcessed(std::int64_t(state.iterations() * s.pixels()));
}

void memcpyLoop(benchmark::State &state, Scene *scene) {
    Scene &s = *scene;
    const std::size_t w = s.wl.w;
    for (auto _ : state) {
        for (int y = 0; y < s.wl.h; ++y) {
            std::memcpy(&s.target[(s.wl.y + y) * std::size_t(s.wl.W) + s.wl.x], &s.rgb[y * w],
                        2 * w);
            std::memcpy(&s.scratch[y * w], &s.alpha[y * w], w);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations() * s.pixels()));
}

// A line of 40 characters in the demo's font, printed opaque in yellow onto a 640x480 target; for
// pixman the same coverage as one a8 mask (the cells side by side) through which it draws yellow.
struct TextScene {
    FontImage font;
    std::vector<std::uint16_t> target = std::vector<std::uint16_t>(640 * 480, 0x1234);
    std::string text = "Score 004711 - the quick brown fox jumps";
    std::size_t pixels = 0, width = 0;
    std::vector<std::uint8_t> coverage;
    TextScene() {
        std::ifstream in(VELL_BENCH_FONT, std::ios::binary);
        const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(in), {}};
        if (!parseFontFile(file.data(), file.size(), font)) return;
        const auto *bytes = reinterpret_cast<const unsigned char *>(text.c_str());
        width = lineWidth(glyphs(), bytes);
        pixels = width * font.height;
        coverage.resize(pixels);
        copyGlyphs(glyphs(), bytes, std::uint32_t(width), font.height, coverage.data());
    }
    GlyphFont glyphs() const {
        return {font.glyphs.data(), font.width, font.height, font.cells, font.count};
    }
};

void printLoop(benchmark::State &state, TextScene *scene, SimdPath path) {
    TextScene &t = *scene;
    if (t.pixels == 0) return state.SkipWithError("the demo's font did not load");
    const GlyphFont font = t.glyphs();
    const PixelTarget target = {reinterpret_cast<std::uint8_t *>(t.target.data()), 1280, 640, 480};
    const auto *text = reinterpret_cast<const unsigned char *>(t.text.c_str());
    for (auto _ : state) {
        printGlyphs(path, target, font, 13, 100, text, 0xFFE0, 0, kMode565);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations() * t.pixels));
}

void pixmanPrintLoop(benchmark::State &state, TextScene *scene) {
    TextScene &t = *scene;
    if (t.pixels == 0) return state.SkipWithError("the demo's font did not load");
    const int w = int(t.width), h = int(t.font.height);
    PaddedMask coverage(t.coverage.data(), w, h);
    const pixman_color_t yellow = {0xFFFF, 0xFFFF, 0, 0xFFFF};
    pixman_image_t *src = pixman_image_create_solid_fill(&yellow);
    pixman_image_t *mask = coverage.image(w, h);
    pixman_image_t *dst = pixman_image_create_bits(
        PIXMAN_r5g6b5, 640, 480, reinterpret_cast<std::uint32_t *>(t.target.data()), 1280);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, src, mask, dst, 0, 0, 0, 0, 13, 100, w, h);
        benchmark::ClobberMemory();
    }
    pixman_image_unref(dst);
    pixman_image_unref(mask);
    pixman_image_unref(src);
    state.SetItemsProcessed(std::int64_t(state.iterations() * t.pixels));
}

} // namespace

int main(int argc, char **argv) {
    std::vector<Workload> workloads(std::begin(kWorkloads), std::end(kWorkloads));
    // The sweep's target is 512 pixels wide (a pitch of 1024 bytes); VELL_SWEEP_TARGET_WIDTH sets
    // another, such as 1024 (rows two apart are 4096 bytes apart).
    const char *targetWidth = std::getenv("VELL_SWEEP_TARGET_WIDTH");
    const int sweepW = targetWidth != nullptr ? std::max(512, std::atoi(targetWidth)) : 512;
    for (int w : kSweepWidths)
        for (int x : {128, 129}) {
            char name[8];
            std::snprintf(name, sizeof name, "w%03d%c", w, x == 128 ? 'a' : 'u');
            workloads.push_back({name, w, 256, sweepW, 288, x, 16, Shape::Noise});
        }
    std::vector<std::unique_ptr<Scene>> scenes;
    for (const Workload &wl : workloads)
        scenes.push_back(std::make_unique<Scene>(wl));
    TextScene text;

    // The paths of this library: the chosen one, SSE2 and scalar (vell is SSE2 where AVX2 is
    // missing, and everything scalar under VELL_SIMD=0), and AVX2 where AVX-512 is chosen. The
    // sweep leaves the scalar loop out.
    std::vector<std::pair<const char *, SimdPath>> paths = {
        {"vell", simdPath()},
        {"vell_sse2", simdPaths().count > 1 ? SimdPath::Sse2 : SimdPath::Scalar},
        {"vell_scalar", SimdPath::Scalar}};
    if (simdPaths().count > 3) paths.push_back({"vell_avx2", SimdPath::Avx2});
    auto add = [](const std::string &name, auto... args) {
        benchmark::RegisterBenchmark(name.c_str(), args...);
    };
    for (const std::string op : {"paint", "blend", "paint_const", "paint_colour"})
        for (auto &scene : scenes) {
            Scene *s = scene.get();
            const bool sweep = s->wl.name[0] == 'w';
            if (sweep && op == "paint_const") continue;
            const std::string load = "/" + op + "/" + s->wl.name;
            for (auto [impl, path] : paths)
                if (!sweep || path != SimdPath::Scalar) add(impl + load, vellLoop, s, path, op);
            if (op == "paint_const") continue;
            add("pixman" + load, pixmanLoop, s, op);
            if (op != "paint_colour") add("sdl2" + load, sdlLoop, s, op == "blend");
            if (op == "paint" && !sweep) add("memcpy" + load, memcpyLoop, s);
        }
    for (auto [impl, path] : paths)
        add(std::string(impl) + "/print/line40", printLoop, &text, path);
    add("pixman/print/line40", pixmanPrintLoop, &text);

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
