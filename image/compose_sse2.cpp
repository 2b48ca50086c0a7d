// The row loops for SSE2, eight 16-bit pixels per vector: the floor of both Windows builds.
#include "image/row_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include <emmintrin.h>

namespace vell {
namespace {

struct Sse2 {
    using W = __m128i;
    using Bytes = __m128i; // the alpha bytes of a block
    using Mask = __m128i;
    static constexpr std::size_t kLanes = 8, kBlockVectors = 2;

    static W load(const std::uint16_t *p) {
        return _mm_loadu_si128(reinterpret_cast<const W *>(p));
    }
    static void store(std::uint16_t *p, W v) { _mm_storeu_si128(reinterpret_cast<W *>(p), v); }
    static Bytes loadBytes(const std::uint8_t *p) {
        return load(reinterpret_cast<const std::uint16_t *>(p));
    }
    static bool none(Bytes b) { return isZero(b); }
    static bool mixed(Bytes b) {
        return !none(b) && _mm_movemask_epi8(_mm_cmpeq_epi8(b, _mm_set1_epi8(-1))) != 0xFFFF;
    }
    static W widen(const std::uint8_t *, Bytes b, std::size_t k) {
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

#include "image/mix_rows.h"

namespace vell {

const RowKernels &sse2RowKernels() {
    static const RowKernels kernels = rowKernels<Sse2>();
    return kernels;
}

} // namespace vell
#endif
