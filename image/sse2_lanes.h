// The vector operations of the SSE2 row loops (see image/mix_rows.h), eight 16-bit pixels per
// vector: blocks of two vectors (16 pixels), or one (8 pixels) for the last pixels of a row.
// Included by compose_sse2.cpp, and by compose_avx2.cpp for loadFirstBytes and storeFirstBytes,
// which load and store its partial vectors in halves (compiled there for AVX2, hence everything
// in an anonymous namespace).
#ifndef VELL_SSE2_LANES_H
#define VELL_SSE2_LANES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <emmintrin.h>

#include "image/row_kernels.h"

namespace vell {
namespace {

// The first k bytes (0 < k < 16) at p in the low bytes of a vector, zeros above: from loads that
// stay within those k bytes (two overlapping ones, the second shifted into place).
VELL_FORCE_INLINE __m128i loadFirstBytes(const void *p, std::size_t k) {
    const auto *b = static_cast<const std::uint8_t *>(p);
    if (k >= 8) {
        const __m128i high = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(b + k - 8));
        return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(b)),
                                  _mm_srl_epi64(high, _mm_cvtsi32_si128(int(8 * (16 - k)))));
    }
    std::uint32_t low, high;
    if (k >= 4) {
        std::memcpy(&low, b, 4);
        std::memcpy(&high, b + k - 4, 4);
        return _mm_unpacklo_epi32(_mm_cvtsi32_si128(int(low)),
                                  _mm_cvtsi32_si128(int(std::uint64_t(high) >> (8 * (8 - k)))));
    }
    if (k == 1) return _mm_cvtsi32_si128(b[0]);
    std::uint16_t first, last;
    std::memcpy(&first, b, 2);
    std::memcpy(&last, b + k - 2, 2);
    return _mm_cvtsi32_si128(int(first | std::uint32_t(last) << (8 * (k - 2))));
}

// Stores the low k bytes (0 < k < 16) of v at p, and nothing beyond them.
VELL_FORCE_INLINE void storeFirstBytes(void *p, std::size_t k, __m128i v) {
    auto *b = static_cast<std::uint8_t *>(p);
    if (k >= 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i *>(b), v);
        const __m128i last = _mm_or_si128(
            _mm_srl_epi64(v, _mm_cvtsi32_si128(int(8 * (k - 8)))),
            _mm_sll_epi64(_mm_unpackhi_epi64(v, v), _mm_cvtsi32_si128(int(8 * (16 - k)))));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(b + k - 8), last);
        return;
    }
    const std::uint64_t low = std::uint32_t(_mm_cvtsi128_si32(v)) |
                              std::uint64_t(std::uint32_t(_mm_cvtsi128_si32(_mm_srli_si128(v, 4))))
                                  << 32;
    if (k >= 4) {
        const auto first = std::uint32_t(low), last = std::uint32_t(low >> (8 * (k - 4)));
        std::memcpy(b, &first, 4);
        std::memcpy(b + k - 4, &last, 4);
    } else if (k >= 2) {
        const auto first = std::uint16_t(low), last = std::uint16_t(low >> (8 * (k - 2)));
        std::memcpy(b, &first, 2);
        std::memcpy(b + k - 2, &last, 2);
    } else {
        b[0] = std::uint8_t(low);
    }
}

template <std::size_t Vectors> struct Sse2Lanes {
    using W = __m128i;
    using Bytes = __m128i; // the alpha bytes of a block
    using Mask = __m128i;
    // The last pixels of a row: one vector, then fewer than eight through loadPart and storePart.
    using Tail = typename std::conditional<Vectors == 2, Sse2Lanes<1>, void>::type;
    static constexpr std::size_t kLanes = 8, kBlockVectors = Vectors;
    static constexpr bool kPacksRows = false;

    // Loads are hidden from the compiler, which would otherwise load a vector again for each use.
    static W load(const std::uint16_t *p) {
        return hide(_mm_loadu_si128(reinterpret_cast<const W *>(p)));
    }
    static void store(std::uint16_t *p, W v) { _mm_storeu_si128(reinterpret_cast<W *>(p), v); }
    static Bytes loadBytes(const std::uint8_t *p) {
        return Vectors == 2 ? _mm_loadu_si128(reinterpret_cast<const W *>(p))
                            : _mm_loadl_epi64(reinterpret_cast<const W *>(p));
    }
    static W loadPart(const std::uint16_t *p, std::size_t n) { return loadFirstBytes(p, 2 * n); }
    static Bytes loadBytesPart(const std::uint8_t *p, std::size_t n) {
        return loadFirstBytes(p, n);
    }
    static void storePart(std::uint16_t *p, std::size_t n, W v) { storeFirstBytes(p, 2 * n, v); }
    static bool none(Bytes b) { return isZero(b); }
    static bool mixed(Bytes b) {
        const int all = Vectors == 2 ? 0xFFFF : 0xFF;
        return !none(b) && (_mm_movemask_epi8(_mm_cmpeq_epi8(b, _mm_set1_epi8(-1))) & all) != all;
    }
    static W widen(const std::uint8_t *, Bytes b, std::size_t k) { return widenPart(b, k); }
    static W widenPart(Bytes b, std::size_t k) {
        return hide(k == 0 ? _mm_unpacklo_epi8(b, _mm_setzero_si128())
                           : _mm_unpackhi_epi8(b, _mm_setzero_si128()));
    }
    static bool isZero(W v) {
        return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) == 0xFFFF;
    }
    // The compiler knows that widened bytes stay below 256 and would test "a == 255" on the bytes
    // and widen the result, two instructions more per vector than the 16-bit compare: it is kept
    // from knowing.
    static W hide(W v) {
        __asm__("" : "+x"(v));
        return v;
    }

    static W set(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
    static W and_(W a, W b) { return _mm_and_si128(a, b); }
    static W or_(W a, W b) { return _mm_or_si128(a, b); }
    static W add(W a, W b) { return _mm_add_epi16(a, b); }
    static W sub(W a, W b) { return _mm_sub_epi16(a, b); }
    static W mullo(W a, W b) { return _mm_mullo_epi16(a, b); }
    static W mulhi(W a, W b) { return _mm_mulhi_epi16(a, b); }
    static Mask equal(W a, W b) { return _mm_cmpeq_epi16(a, b); }
    static W select(Mask m, W a, W b) {
        return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b));
    }
    static W plusOneAt255(W a) { return sub(a, equal(a, set(255))); }
    template <int N> static W srli(W v) { return _mm_srli_epi16(v, N); }
    template <int N> static W slli(W v) { return _mm_slli_epi16(v, N); }
    template <int N> static W srai(W v) { return _mm_srai_epi16(v, N); }
};

} // namespace
} // namespace vell

#endif
