// Compositing speed: this library's painting, blending and printing loops on each path against
// pixman, SDL2 and memcpy of the same bytes, named <impl>/<op>/<workload>, items = pixels drawn.
//
//   impl   vell (the path chosen at run time), vell_sse2, vell_scalar, vell_avx2 (where the
//          chosen path is AVX-512), pixman (OVER of a
//          premultiplied a8r8g8b8 image onto r5g6b5), sdl2 (blended blit of an ARGB8888 surface
//          onto an RGB565 one), memcpy (the colour plane into the destination's rows and the alpha
//          plane into a scratch plane: the bytes a paint reads from its image and writes)
//   op     paint (alpha plane), blend (opacity 100: pixman with a solid mask of that alpha, SDL2
//          with the surface's alpha modulation), print (a line of text), and on this library's
//          paths alone paint_const (constant alpha 100) and paint_colour (one colour, alpha plane)
//   workload  sprite64 (a round sprite with a soft edge at an odd position in a 640x480 target),
//          smooth256 (smooth alpha shapes, a third each transparent, opaque and between),
//          noise256 (the same mix pixel by pixel), frame640 and frame1080 (whole frames of smooth
//          alpha), line40 (40 characters of the demo's 16-pixel font)
#include "image/compose.h"
#include "text/font_file.h"
#include "text/print_loop.h"

#include <SDL.h>
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <algorithm>
#include <cmath>
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
    const char *name;
    int w, h, W, H, x, y;
    Shape shape;
};

const Workload kWorkloads[] = {
    {"sprite64", 64, 64, 640, 480, 101, 77, Shape::Disc},
    {"smooth256", 256, 256, 640, 480, 129, 111, Shape::Smooth},
    {"noise256", 256, 256, 640, 480, 129, 111, Shape::Noise},
    {"frame640", 640, 480, 640, 480, 0, 0, Shape::Smooth},
    {"frame1080", 1920, 1080, 1920, 1080, 0, 0, Shape::Smooth},
};

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

// One workload's image and target in the forms each contender takes.
struct Scene {
    Workload wl;
    std::vector<std::uint16_t> rgb, target;
    std::vector<std::uint8_t> alpha, scratch;
    std::vector<std::uint32_t> premultiplied, straight; // a8r8g8b8 for pixman, ARGB8888 for SDL2

    explicit Scene(const Workload &w) : wl(w), alpha(makeAlpha(w)), scratch(alpha.size()) {
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
        for (int i = 0; i < wl.W * wl.H; ++i)
            target.push_back(std::uint16_t(random()));
    }
    std::size_t pixels() const { return std::size_t(wl.w) * wl.h; }
    PixelTarget on() {
        return {reinterpret_cast<std::uint8_t *>(target.data()), 2 * wl.W, wl.W, wl.H};
    }
};

constexpr unsigned kOpacity = 100;

void vellLoop(benchmark::State &state, Scene *scene, SimdPath path, const std::string &op) {
    Scene &s = *scene;
    const ImagePlanes image = {std::uint32_t(s.wl.w), std::uint32_t(s.wl.h), s.alpha.data(),
                               s.rgb.data()};
    const Sources src = paintSources(image, op == "paint_colour" ? 0x07E0 : -1,
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

void pixmanLoop(benchmark::State &state, Scene *scene, bool blend) {
    Scene &s = *scene;
    pixman_image_t *src = pixman_image_create_bits(PIXMAN_a8r8g8b8, s.wl.w, s.wl.h,
                                                   s.premultiplied.data(), 4 * s.wl.w);
    pixman_image_t *dst =
        pixman_image_create_bits(PIXMAN_r5g6b5, s.wl.W, s.wl.H,
                                 reinterpret_cast<std::uint32_t *>(s.target.data()), 2 * s.wl.W);
    const pixman_color_t opacity = {0, 0, 0, std::uint16_t(kOpacity * 257)};
    pixman_image_t *mask = blend ? pixman_image_create_solid_fill(&opacity) : nullptr;
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
    SDL_Surface *dst = SDL_CreateRGBSurfaceWithFormatFrom(s.target.data(), s.wl.W, s.wl.H, 16,
                                                          2 * s.wl.W, SDL_PIXELFORMAT_RGB565);
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

// A line of 40 characters in the demo's font, printed opaque in yellow onto a 640x480 target.
struct TextScene {
    FontImage font;
    std::vector<std::uint16_t> target = std::vector<std::uint16_t>(640 * 480, 0x1234);
    std::string text = "Score 004711 - the quick brown fox jumps";
    std::size_t pixels = 0;
    TextScene() {
        std::ifstream in(VELL_BENCH_FONT, std::ios::binary);
        const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(in), {}};
        if (!parseFontFile(file.data(), file.size(), font)) return;
        for (unsigned char c : text)
            pixels += fontCell(font.cells, font.count, c).width * std::size_t(font.height);
    }
};

void printLoop(benchmark::State &state, TextScene *scene, SimdPath path) {
    TextScene &t = *scene;
    if (t.pixels == 0) return state.SkipWithError("the demo's font did not load");
    const GlyphFont font = {t.font.glyphs.data(), t.font.width, t.font.height, t.font.cells,
                            t.font.count};
    const PixelTarget target = {reinterpret_cast<std::uint8_t *>(t.target.data()), 1280, 640, 480};
    const auto *text = reinterpret_cast<const unsigned char *>(t.text.c_str());
    for (auto _ : state) {
        printGlyphs(path, target, font, 13, 100, text, 0xFFE0, 0, kMode565);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(std::int64_t(state.iterations() * t.pixels));
}

} // namespace

int main(int argc, char **argv) {
    std::vector<std::unique_ptr<Scene>> scenes;
    for (const Workload &wl : kWorkloads)
        scenes.push_back(std::make_unique<Scene>(wl));
    TextScene text;

    // The paths of this library: the chosen one, SSE2 and scalar (vell is SSE2 where AVX2 is
    // missing, and everything scalar under VELL_SIMD=0), and AVX2 where AVX-512 is chosen.
    std::vector<std::pair<const char *, SimdPath>> paths = {
        {"vell", simdPath()},
        {"vell_sse2", simdPaths().count > 1 ? SimdPath::Sse2 : SimdPath::Scalar},
        {"vell_scalar", SimdPath::Scalar}};
    if (simdPaths().count > 3) paths.push_back({"vell_avx2", SimdPath::Avx2});
    auto name = [](const char *impl, const std::string &op, const char *workload) {
        return std::string(impl) + "/" + op + "/" + workload;
    };
    for (const std::string op : {"paint", "blend", "paint_const", "paint_colour"})
        for (auto &scene : scenes) {
            Scene *s = scene.get();
            for (auto [impl, path] : paths)
                benchmark::RegisterBenchmark(name(impl, op, s->wl.name).c_str(), vellLoop, s, path,
                                             op);
            if (op != "paint" && op != "blend") continue;
            const bool blend = op == "blend";
            benchmark::RegisterBenchmark(name("pixman", op, s->wl.name).c_str(), pixmanLoop, s,
                                         blend);
            benchmark::RegisterBenchmark(name("sdl2", op, s->wl.name).c_str(), sdlLoop, s, blend);
            if (!blend)
                benchmark::RegisterBenchmark(name("memcpy", op, s->wl.name).c_str(), memcpyLoop, s);
        }
    for (auto [impl, path] : paths)
        benchmark::RegisterBenchmark(name(impl, "print", "line40").c_str(), printLoop, &text, path);

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
