// The row loops for AVX2, sixteen 16-bit pixels per vector. This file alone is compiled for AVX2
// (see CMakeLists.txt) and is only called where the processor has it (image/simd.cpp).
//
// GCC for Windows does not align the stack to 32 bytes, yet it spills 256-bit registers with
// aligned moves (a long-standing GCC fault); the Windows builds therefore assemble this file with
// -Wa,-muse-unaligned-vector-move, which turns every such move into its unaligned twin.
//
// Blocks are of two vectors (32 pixels); the last pixels of a row go through one vector, then a
// partial one, loaded and stored in 128-bit halves. Where at most 8 pixels are left after a row's
// whole vectors, two rows' last pixels share one vector.
#include "image/row_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include "image/sse2_lanes.h"

#include <cstring>
#include <immintrin.h>

namespace vell {
namespace {

// The alpha bytes of a block of two vectors, or of one.
template <std::size_t Vectors> struct Avx2Bytes { using T = __m256i; };
template <> struct Avx2Bytes<1> { using T = __m128i; };

template <std::size_t Vectors> struct Avx2 {
    using W = __m256i;
    using Bytes = typename Avx2Bytes<Vectors>::T;
    using Mask = __m256i;
    using Tail = typename std::conditional<Vectors == 2, Avx2<1>, void>::type;
    static constexpr std::size_t kLanes = 16, kBlockVectors = Vectors;
    static constexpr bool kPacksRows = true;

    // Loads are hidden from the compiler, which would otherwise load a vector again for each use.
    static W load(const std::uint16_t *p) {
        W v = _mm256_loadu_si256(reinterpret_cast<const W *>(p));
        __asm__("" : "+x"(v));
        return v;
    }
    static void store(std::uint16_t *p, W v) { _mm256_storeu_si256(reinterpret_cast<W *>(p), v); }
    static Bytes loadBytes(const std::uint8_t *p) {
        Bytes b;
        std::memcpy(&b, p, sizeof b);
        return b;
    }
    // The first n < 16 pixels at p, in two halves; zeros above them. Forced inline, like the
    // partial stores: GCC for Windows would call them once per block.
    VELL_FORCE_INLINE static W loadPart(const std::uint16_t *p, std::size_t n) {
        const __m128i low = n >= 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i *>(p))
                                   : loadFirstBytes(p, 2 * n);
        const __m128i high = n > 8 ? loadFirstBytes(p + 8, 2 * (n - 8)) : _mm_setzero_si128();
        return hide(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1));
    }
    VELL_FORCE_INLINE static void storePart(std::uint16_t *p, std::size_t n, W v) {
        const __m128i low = _mm256_castsi256_si128(v), high = _mm256_extracti128_si256(v, 1);
        if (n < 8) return storeFirstBytes(p, 2 * n, low);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p), low);
        if (n > 8) storeFirstBytes(p + 8, 2 * (n - 8), high);
    }
    VELL_FORCE_INLINE static __m128i loadBytesPart(const std::uint8_t *p, std::size_t n) {
        return loadFirstBytes(p, n);
    }
    static W widenPart(__m128i b, std::size_t) { return hide(_mm256_cvtepu8_epi16(b)); }
    static W hide(W v) {
        __asm__("" : "+x"(v));
        return v;
    }

    // One row's last n <= 8 pixels in a 128-bit half (whole when n is 8, else in pieces that stay
    // within the row); two rows in one vector, the second in lanes 8 on.
    struct Half {
        using Lanes = Avx2<1>;
        // Pairs are mixed without the all-0/all-255 branches, after whole vectors or not: noisy
        // rows were mixed faster so (docs/performance.md).
        static constexpr bool shortcuts(bool) { return false; }
        std::size_t n;
        explicit Half(std::size_t pixels) : n(pixels) {}
        __m128i load(const std::uint16_t *p) const {
            return n == 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i *>(p))
                          : loadFirstBytes(p, 2 * n);
        }
        void store(std::uint16_t *p, __m128i v) const {
            if (n == 8)
                _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
            else
                storeFirstBytes(p, 2 * n, v);
        }
        __m128i loadBytes(const std::uint8_t *p) const { return loadFirstBytes(p, n); }
        static W join(__m128i low, __m128i high) {
            return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
        }
        static __m128i joinBytes(__m128i low, __m128i high) {
            return _mm_unpacklo_epi64(low, high);
        }
        static __m128i low(W v) { return _mm256_castsi256_si128(v); }
        static __m128i high(W v) { return _mm256_extracti128_si256(v, 1); }
    };

    static bool none(__m256i b) { return isZero(b); }
    static bool none(__m128i b) { return _mm_testz_si128(b, b); }
    static bool mixed(__m256i b) { return _mm256_testnzc_si256(b, _mm256_set1_epi8(-1)); }
    static bool mixed(__m128i b) { return _mm_testnzc_si128(b, _mm_set1_epi8(-1)); }
    // The alpha bytes of vector k widened to 16 bits, loaded again from memory where loading and
    // widening is one instruction. The address is hidden, or the compiler would split the bytes
    // already loaded into halves instead, one instruction more; and so is the result, or it would
    // test "a == 255" on the bytes and widen that, two more per vector than the 16-bit compare.
    static W widen(const std::uint8_t *p, Bytes, std::size_t k) {
        p += 16 * k;
        __asm__("" : "+r"(p));
        W a = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
        __asm__("" : "+x"(a));
        return a;
    }
    static bool isZero(W v) { return _mm256_testz_si256(v, v); }

    static W set(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
    static W and_(W a, W b) { return _mm256_and_si256(a, b); }
    static W or_(W a, W b) { return _mm256_or_si256(a, b); }
    static W add(W a, W b) { return _mm256_add_epi16(a, b); }
    static W sub(W a, W b) { return _mm256_sub_epi16(a, b); }
    static W mullo(W a, W b) { return _mm256_mullo_epi16(a, b); }
    static W mulhi(W a, W b) { return _mm256_mulhi_epi16(a, b); }
    static Mask equal(W a, W b) { return _mm256_cmpeq_epi16(a, b); }
    static W select(Mask m, W a, W b) { return _mm256_blendv_epi8(b, a, m); }
    static W plusOneAt255(W a) { return sub(a, equal(a, set(255))); }
    template <int N> static W srli(W v) { return _mm256_srli_epi16(v, N); }
    template <int N> static W slli(W v) { return _mm256_slli_epi16(v, N); }
    template <int N> static W srai(W v) { return _mm256_srai_epi16(v, N); }
};

} // namespace
} // namespace vell

#include "image/mix_rows.h"

namespace vell {

const RowKernels &avx2RowKernels() {
    static const RowKernels kernels = rowKernels<Avx2<2>>();
    return kernels;
}

} // namespace vell
#endif
