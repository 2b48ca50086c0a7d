// The row loops of the SIMD paths, written once over a set of vector operations V and compiled
// once per instruction set: included only by compose_sse2.cpp, compose_avx2.cpp and
// compose_avx512.cpp, which define V.
//
// Everything here lives in an anonymous namespace and calls no library function template (no
// std::min and the like): the AVX2 and AVX-512 files are compiled for those instructions as a
// whole, and any inline function they shared with the rest of the library could be the copy the
// linker keeps for everyone, which would then run them on a processor without them.
//
// A row is walked in blocks of 32 pixels (16 with SSE2). Painting skips a block whose alpha bytes
// are all 0 and copies one whose bytes are all 255; every other block is mixed lane by lane
// without a branch. The last pixels of a row go through the narrower blocks of V::Tail where they
// fill one, and the very last through a partial block of the narrowest: its loads and stores
// (V::loadPart, V::storePart) touch only the pixels of the row, and zeros (alpha 0) fill the
// lanes beyond them. With AVX2 and AVX-512, whose vectors take two rows' last pixels (V::Half),
// rows go in pairs when those fit half a vector: see mixRowPairs.
//
// What V must provide (Sse2Lanes, Avx2, Avx512 are the three):
//   types     W        a vector of kLanes 16-bit lanes
//             Bytes    the alpha bytes of one block (kBlockVectors * kLanes of them)
//             Mask     what equal() gives and select() takes (a vector, or a mask register)
//             Tail     the lanes that take a row's last pixels after its whole blocks, or void:
//                      the row ends in a partial block of V itself
//   constants kLanes, kBlockVectors (vectors per block), kPacksRows (rows go in pairs: needs Half)
//   memory    load(p), store(p, w)                      one whole vector of words
//             loadBytes(p)                              one block's alpha bytes
//             loadPart(p, n), storePart(p, n, w)        the first n < kLanes words, nothing beyond
//             loadBytesPart(p, n)                       the first n alpha bytes, zeros above
//             widen(p, bytes, k), widenPart(bytes, k)   vector k of a block's alpha in 16-bit lanes
//                                                       (widen may load again from p instead)
//   tests     none(bytes), mixed(bytes)                 all 0; neither all 0 nor all 255
//             isZero(w)
//   lanes     set, and_, or_, add, sub, mullo, mulhi, equal, select(mask, a, b) (a where set),
//             srli<N>, slli<N>, srai<N>, plusOneAt255 (255 becomes 256, others stay),
//             hide(w) (the value made opaque to the compiler: see the loads)
//   Half      (kPacksRows only) one row's last n pixels in half a vector, built from n once per
//             rectangle: load(p), store(p, h), loadBytes(p); and the static join(low, high),
//             joinBytes(low, high), low(w), high(w) that put two rows' halves into one vector of
//             Half::Lanes and take them out again; shortcuts(whole): whether a pair tells all-0
//             and all-255 blocks by a branch (see the lane files for why each answers as it does)
//
// And what a block adaptor A (Whole, Part, PackedRows below: where a block's pixels are) provides
// to Block::run: kShortcuts; dest(k), source(k) (vector k of the destination and source words);
// loadBytes() and widen(bytes, k) (the alpha); store(k, w).
//
// The exact mix in 16-bit lanes. Per channel the rule is out = (d * (256 - a) + s * a) >> 8; as
// d * 256 + (s - d) * a is never negative, that equals d + floor((s - d) * a / 256), and the
// delta floor((s - d) * a / 256) is computed per channel with the channel left where it is:
//   blue  (bits 0-4):  x = s_b - d_b (|x| < 32);   x * a fits 16 bits; an arithmetic shift right
//                      by 8 is the floor
//   green (5:6:5 bits 5-10, 5:5:5 bits 5-9): x = (s_g - d_g) << 5, masked in place; the high half
//                      of x * (a << 3) is (x * a * 8) >> 16 = floor((s_g - d_g) * a / 256),
//                      shifted back up by 5
//   red   (5:6:5 bits 11-15): x = s_r - d_r; the low half of x * (a << 3) masked with 0xF800 is
//                      floor(x * a / 256) << 11 modulo 2^16; 5:5:5 (bits 10-14): x * (a << 2)
//                      masked with 0xFC00
// and the three deltas are added to d: each channel stays in its range, so no carry crosses into
// the next one and the word sum modulo 2^16 is the result. At a = 256 the delta is s - d exactly,
// which is how 5:6:5 paints opaque pixels (copies) inside a step that also mixes. In 5:5:5 bit 15
// is cleared first; where the rule keeps a pixel or copies a source word whole, a select does.
#ifndef VELL_MIX_ROWS_H
#define VELL_MIX_ROWS_H

#include "display/graphics_mode.h"
#include "image/row_kernels.h"

#include <type_traits>

namespace vell {
namespace {

// The pieces of a row are inlined into the loop over the rows (VELL_FORCE_INLINE), where what
// they set up (constants, masks) is done once for the rectangle; and the kernels that rowKernels()
// hands out inline everything they call (VELL_KERNEL).
#define VELL_KERNEL __attribute__((flatten))

template <class V> struct SourceFields {
    typename V::W word, blue, green, red; // the source word and its channels as mix() wants them
};

// The channel masks of a layout, set once for a rectangle and hidden from the compiler, which
// would otherwise broadcast some of them again inside the loops (GCC does with AVX-512).
template <class V, std::uint32_t Mode> struct Masks {
    typename V::W blue = V::hide(V::set(0x001F)),
                  green = V::hide(V::set(Mode == kMode565 ? 0x07E0 : 0x03E0)),
                  red = V::hide(V::set(Mode == kMode565 ? 0xF800 : 0xFC00));
};

template <class V, std::uint32_t Mode>
VELL_FORCE_INLINE SourceFields<V> sourceFields(typename V::W s, const Masks<V, Mode> &m) {
    if (Mode == kMode565)
        return {s, V::and_(s, m.blue), V::and_(s, m.green), V::template srli<11>(s)};
    return {s, V::and_(s, m.blue), V::and_(s, m.green), V::and_(V::template srli<10>(s), m.blue)};
}

// d mixed towards s at alpha a (0..256 in each lane). In 5:5:5 the result's bit 15 is 0.
template <class V, std::uint32_t Mode>
VELL_FORCE_INLINE typename V::W mix(typename V::W d, const SourceFields<V> &s, typename V::W a,
                                    const Masks<V, Mode> &m) {
    using W = typename V::W;
    const W a8 = V::template slli<3>(a);
    const W base = Mode == kMode565 ? d : V::and_(d, V::set(0x7FFF));
    const W blue = V::template srai<8>(V::mullo(V::sub(s.blue, V::and_(d, m.blue)), a));
    const W green = V::template slli<5>(V::mulhi(V::sub(s.green, V::and_(d, m.green)), a8));
    const W red =
        Mode == kMode565
            ? V::and_(V::mullo(V::sub(s.red, V::template srli<11>(d)), a8), m.red)
            : V::and_(V::mullo(V::sub(s.red, V::template srli<10>(base)), V::template slli<2>(a)),
                      m.red);
    return V::add(V::add(base, blue), V::add(green, red));
}

enum class Rule { Plane, Scaled, Constant, Coverage, CoverageScaled };

// Where the pixels of a block are, and how they are loaded and stored: a whole block at d, rgb and
// alpha; its first n pixels (Part, on V's blocks of one vector only); or, with AVX2 and AVX-512,
// the last n pixels of two rows packed into one vector (PackedRows).
template <class V> struct Whole {
    std::uint16_t *d;
    const std::uint16_t *rgb;
    const std::uint8_t *alpha;
    // Whether a block of alpha all 0 or all 255 is told from a mixed one by a branch, and skipped
    // or copied, rather than mixed like any other.
    static constexpr bool kShortcuts = true;
    using W = typename V::W;
    W dest(std::size_t k) const { return V::load(d + k * V::kLanes); }
    W source(std::size_t k) const { return V::load(rgb + k * V::kLanes); }
    typename V::Bytes loadBytes() const { return V::loadBytes(alpha); }
    W widen(typename V::Bytes bytes, std::size_t k) const { return V::widen(alpha, bytes, k); }
    void store(std::size_t k, W v) const { V::store(d + k * V::kLanes, v); }
};

template <class V> struct Part {
    std::uint16_t *d;
    const std::uint16_t *rgb;
    const std::uint8_t *alpha;
    std::size_t n;
    static constexpr bool kShortcuts = true;
    using W = typename V::W;
    W dest(std::size_t) const { return V::loadPart(d, n); }
    W source(std::size_t) const { return V::loadPart(rgb, n); }
    typename V::Bytes loadBytes() const { return V::loadBytesPart(alpha, n); }
    W widen(typename V::Bytes bytes, std::size_t k) const { return V::widenPart(bytes, k); }
    void store(std::size_t, W v) const { V::storePart(d, n, v); }
};

// Two rows' last n pixels in one vector of V::Half::Lanes, the row at d in the low half and the row
// below it in the high half; each half loaded and stored by V::Half, which alone differs between
// AVX2 (128-bit halves, partial ones in pieces) and AVX-512 (256-bit halves under a lane mask).
template <class V, bool WholeBlocks> struct PackedRows {
    using H = typename V::Half;
    using L = typename H::Lanes;
    using W = typename L::W;
    static constexpr bool kShortcuts = H::shortcuts(WholeBlocks);
    std::uint16_t *d = nullptr;
    const std::uint16_t *rgb = nullptr;
    const std::uint8_t *alpha = nullptr;
    std::ptrdiff_t pitch, stride;
    H half;
    PackedRows(std::size_t n, std::ptrdiff_t pitchBytes, std::size_t step)
        : pitch(pitchBytes), stride(std::ptrdiff_t(step)), half(n) {}

    template <class T> static T *next(T *p, std::ptrdiff_t step) {
        return reinterpret_cast<T *>(reinterpret_cast<std::uintptr_t>(p) + std::uintptr_t(step));
    }
    W gather(const std::uint16_t *p, std::ptrdiff_t step) const {
        return L::hide(H::join(half.load(p), half.load(next(p, step))));
    }
    W dest(std::size_t) const { return gather(d, pitch); }
    W source(std::size_t) const { return gather(rgb, 2 * stride); }
    typename L::Bytes loadBytes() const {
        return H::joinBytes(half.loadBytes(alpha), half.loadBytes(next(alpha, stride)));
    }
    W widen(typename L::Bytes b, std::size_t k) const { return L::widenPart(b, k); }
    void store(std::size_t, W v) const {
        half.store(d, H::low(v));
        half.store(next(d, pitch), H::high(v));
    }
};

// One block of V::kBlockVectors vectors, of kPixels pixels, at the place A tells: the destination
// words at A::d, their source words at A::rgb (with ColourPlane) and their alpha bytes at A::alpha
// (except for Rule::Constant), loaded by A::dest, A::source and A::loadBytes.
template <class V, std::uint32_t Mode, bool ColourPlane, Rule R> struct Block {
    using W = typename V::W;
    static constexpr std::size_t kVectors = V::kBlockVectors, kPixels = kVectors * V::kLanes;
    Masks<V, Mode> masks;
    SourceFields<V> colour;
    W value;

    Block(std::uint16_t colourWord, unsigned alphaValue)
        : colour(sourceFields<V, Mode>(V::set(colourWord), masks)), value(V::set(int(alphaValue))) {
    }

    template <class A> VELL_FORCE_INLINE void run(const A &at) const {
        W a[kVectors];
        if (R == Rule::Constant) {
            for (W &ak : a)
                ak = value;
        } else if (R == Rule::Scaled || R == Rule::CoverageScaled) {
            const typename V::Bytes bytes = at.loadBytes();
            W any = V::set(0);
            for (std::size_t k = 0; k < kVectors; ++k)
                any = V::or_(any, a[k] = V::template srli<8>(V::mullo(at.widen(bytes, k), value)));
            // A mix at 0 keeps d whole, except that printing clears bit 15 in 5:5:5.
            if (A::kShortcuts && (Mode == kMode565 || R == Rule::Scaled) && V::isZero(any)) return;
        } else {
            const typename V::Bytes bytes = at.loadBytes();
            // One test tells a block of 0 and 255 mixed from one that is all 0 or all 255.
            if (A::kShortcuts && !V::mixed(bytes)) {
                if (V::none(bytes)) {
                    if (R == Rule::Plane || Mode == kMode565) return;
                    // Printing at coverage 0 keeps the channels and clears bit 15.
                    for (std::size_t k = 0; k < kVectors; ++k)
                        at.store(k, V::and_(at.dest(k), V::set(0x7FFF)));
                    return;
                }
                if (R == Rule::Plane) {
                    for (std::size_t k = 0; k < kVectors; ++k)
                        at.store(k, ColourPlane ? at.source(k) : colour.word);
                    return;
                }
            }
            for (std::size_t k = 0; k < kVectors; ++k)
                a[k] = at.widen(bytes, k);
        }
        for (std::size_t k = 0; k < kVectors; ++k) {
            const W dk = at.dest(k);
            const SourceFields<V> s =
                ColourPlane ? sourceFields<V, Mode>(at.source(k), masks) : colour;
            W ak = a[k];
            if (R == Rule::Plane && Mode == kMode565) ak = V::plusOneAt255(ak); // 256: a copy
            W out = mix<V, Mode>(dk, s, ak, masks);
            if (Mode == kMode555 && R == Rule::Plane)
                out = V::select(V::equal(ak, V::set(255)), s.word, out);
            if (Mode == kMode555 && (R == Rule::Plane || R == Rule::Scaled))
                out = V::select(V::equal(ak, V::set(0)), dk, out);
            at.store(k, out);
        }
    }
    VELL_FORCE_INLINE void run(std::uint16_t *d, const std::uint16_t *rgb,
                               const std::uint8_t *alpha) const {
        run(Whole<V>{d, rgb, alpha});
    }
};

// The last n pixels of a row, fewer than one block of the instruction set whose tail V is: a block
// of V where they fill one, the rest on V's own tail, or, on the narrowest, a partial block.
template <class V, std::uint32_t Mode, bool ColourPlane, Rule R>
VELL_FORCE_INLINE void mixRowEnd(std::uint16_t *d, const std::uint16_t *rgb,
                                 const std::uint8_t *alpha, std::size_t n, std::uint16_t colour,
                                 unsigned value) {
    using B = Block<V, Mode, ColourPlane, R>;
    const B block(colour, value);
    if (n >= B::kPixels) {
        block.run(d, rgb, alpha);
        n -= B::kPixels;
        if (n == 0) return;
        d += B::kPixels;
        if (ColourPlane) rgb += B::kPixels;
        if (R != Rule::Constant) alpha += B::kPixels;
    }
    if constexpr (std::is_void<typename V::Tail>::value)
        block.run(Part<V>{d, rgb, alpha, n});
    else
        mixRowEnd<typename V::Tail, Mode, ColourPlane, R>(d, rgb, alpha, n, colour, value);
}

template <class V, std::uint32_t Mode, bool ColourPlane, Rule R>
VELL_FORCE_INLINE void mixRow(std::uint16_t *d, const std::uint16_t *rgb, const std::uint8_t *alpha,
                              std::size_t n, std::uint16_t colour, unsigned value) {
    using B = Block<V, Mode, ColourPlane, R>;
    const B block(colour, value);
    const std::size_t step = B::kPixels;
    std::size_t i = 0;
    for (; i + step <= n; i += step)
        block.run(d + i, ColourPlane ? rgb + i : nullptr,
                  R == Rule::Constant ? nullptr : alpha + i);
    if (i == n) return;
    const std::uint16_t *rgbEnd = ColourPlane ? rgb + i : nullptr;
    const std::uint8_t *alphaEnd = R == Rule::Constant ? nullptr : alpha + i;
    if constexpr (std::is_void<typename V::Tail>::value)
        block.run(Part<V>{d + i, rgbEnd, alphaEnd, n - i});
    else
        mixRowEnd<typename V::Tail, Mode, ColourPlane, R>(d + i, rgbEnd, alphaEnd, n - i, colour,
                                                          value);
}

// One row (printing), or every row of a rectangle (painting).
template <class V, std::uint32_t Mode, bool ColourPlane, Rule R>
VELL_KERNEL void mixOneRow(std::uint16_t *d, const std::uint16_t *rgb, const std::uint8_t *alpha,
                           std::size_t n, std::uint16_t colour, unsigned value) {
    mixRow<V, Mode, ColourPlane, R>(d, rgb, alpha, n, colour, value);
}

// Rows two at a time where their last n % kLanes pixels fit in half a vector: the whole vectors
// of both rows, then both rows' last pixels packed into one vector (V::Rows), so that a row of 33
// pixels costs one and a half vectors rather than two with AVX-512, and two rows of up to half a
// vector one; an odd last row on its own. (Not inlined into mixRect: GCC keeps its pointers in
// registers only in a function of its own.)
template <class V, std::uint32_t Mode, bool ColourPlane, Rule R, bool WholeBlocks>
__attribute__((noinline)) VELL_KERNEL void
mixRowPairs(std::uint16_t *d, std::ptrdiff_t pitch, const std::uint16_t *rgb,
            const std::uint8_t *alpha, std::size_t stride, std::size_t n, std::size_t rows,
            std::uint16_t colour, unsigned value) {
    using B = Block<V, Mode, ColourPlane, R>;
    // One vector: for the pair, and for AVX2's last 16 whole pixels of a row.
    using L = typename V::Half::Lanes;
    const B block(colour, value);
    const Block<L, Mode, ColourPlane, R> packed(colour, value);
    const std::size_t whole = WholeBlocks ? n - n % V::kLanes : 0;
    PackedRows<V, WholeBlocks> at(n - whole, pitch, stride);
    for (; rows >= 2; rows -= 2) {
        // The two rows' blocks side by side: each pair of them is independent work.
        auto *below =
            reinterpret_cast<std::uint16_t *>(reinterpret_cast<std::uint8_t *>(d) + pitch);
        const std::uint16_t *rgbBelow = ColourPlane ? rgb + stride : nullptr;
        const std::uint8_t *alphaBelow = R == Rule::Constant ? nullptr : alpha + stride;
        std::size_t i = 0;
        for (; i + B::kPixels <= whole; i += B::kPixels) {
            block.run(d + i, ColourPlane ? rgb + i : nullptr,
                      R == Rule::Constant ? nullptr : alpha + i);
            block.run(below + i, ColourPlane ? rgbBelow + i : nullptr,
                      R == Rule::Constant ? nullptr : alphaBelow + i);
        }
        if (i < whole) {
            packed.run(d + i, ColourPlane ? rgb + i : nullptr,
                       R == Rule::Constant ? nullptr : alpha + i);
            packed.run(below + i, ColourPlane ? rgbBelow + i : nullptr,
                       R == Rule::Constant ? nullptr : alphaBelow + i);
        }
        at.d = d + whole;
        at.rgb = ColourPlane ? rgb + whole : nullptr;
        at.alpha = R == Rule::Constant ? nullptr : alpha + whole;
        packed.run(at);
        d = reinterpret_cast<std::uint16_t *>(reinterpret_cast<std::uint8_t *>(d) + 2 * pitch);
        if (ColourPlane) rgb += 2 * stride;
        if (R != Rule::Constant) alpha += 2 * stride;
    }
    if (rows != 0) mixRow<V, Mode, ColourPlane, R>(d, rgb, alpha, n, colour, value);
}

template <class V, std::uint32_t Mode, bool ColourPlane, Rule R>
VELL_KERNEL void mixRect(std::uint16_t *d, std::ptrdiff_t pitch, const std::uint16_t *rgb,
                         const std::uint8_t *alpha, std::size_t stride, std::size_t n,
                         std::size_t rows, std::uint16_t colour, unsigned value) {
    // Where rows two apart lie a multiple of 4096 bytes apart, give or take 64 (a pitch of 2048
    // bytes: a surface 1024 pixels wide), the processor takes the loads of the next two rows to
    // depend on the stores to the last two and waits for them: such rows go one at a time.
    if constexpr (V::kPacksRows) {
        const std::size_t apart = std::size_t(2 * (pitch < 0 ? -pitch : pitch));
        const bool pairs = apart < 4096 - 64 || (apart + 64) % 4096 >= 128;
        if (pairs && n <= V::kLanes / 2)
            return mixRowPairs<V, Mode, ColourPlane, R, false>(d, pitch, rgb, alpha, stride, n,
                                                               rows, colour, value);
        // 1 <= n % kLanes <= kLanes / 2: some last pixels, no more than half a vector. The
        // subtraction is unsigned on purpose: a remainder of 0 wraps to the largest value.
        if (pairs && n % V::kLanes - 1 < V::kLanes / 2)
            return mixRowPairs<V, Mode, ColourPlane, R, true>(d, pitch, rgb, alpha, stride, n, rows,
                                                              colour, value);
    }
    for (; rows > 0; --rows) {
        mixRow<V, Mode, ColourPlane, R>(d, rgb, alpha, n, colour, value);
        d = reinterpret_cast<std::uint16_t *>(reinterpret_cast<std::uint8_t *>(d) + pitch);
        if (ColourPlane) rgb += stride;
        if (R != Rule::Constant) alpha += stride;
    }
}

#undef VELL_KERNEL

template <std::uint32_t M> struct ModeTag { static constexpr std::uint32_t value = M; };

template <class V> RowKernels rowKernels() {
    RowKernels k = {};
    auto fill = [&k](auto mode) {
        constexpr std::uint32_t M = decltype(mode)::value;
        auto &paint = k.paint[M == kMode565];
        paint[0][kPlaneAlpha] = mixRect<V, M, false, Rule::Plane>;
        paint[1][kPlaneAlpha] = mixRect<V, M, true, Rule::Plane>;
        paint[0][kScaledAlpha] = mixRect<V, M, false, Rule::Scaled>;
        paint[1][kScaledAlpha] = mixRect<V, M, true, Rule::Scaled>;
        paint[0][kConstantAlpha] = mixRect<V, M, false, Rule::Constant>;
        paint[1][kConstantAlpha] = mixRect<V, M, true, Rule::Constant>;
        k.print[M == kMode565][0] = mixOneRow<V, M, false, Rule::Coverage>;
        k.print[M == kMode565][1] = mixOneRow<V, M, false, Rule::CoverageScaled>;
    };
    fill(ModeTag<kMode555>{});
    fill(ModeTag<kMode565>{});
    return k;
}

} // namespace
} // namespace vell

#endif
