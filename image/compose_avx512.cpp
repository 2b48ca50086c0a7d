// The row loops for AVX-512 (its byte and word instructions, AVX512BW, and its 128- and 256-bit
// forms, AVX512VL), thirty-two 16-bit pixels per vector, one vector per block. Compiled for AVX-512
// alone and called only where the processor and the operating system have it (image/simd.cpp).
// Where processors split a 512-bit instruction in two 256-bit halves it still gains on the AVX2
// loops, from fewer instructions and its masks.
//
// GCC for Windows does not align the stack to 64 bytes, yet it spills 512-bit registers with
// aligned moves; as for AVX2, the Windows builds assemble this file with
// -Wa,-muse-unaligned-vector-move.
//
// The last pixels of a row (fewer than 32) go through one vector whose loads and stores are
// masked: lanes past the row are neither read nor written.
#include "image/row_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cstring>
#include <immintrin.h>

namespace vell {
namespace {

struct Avx512 {
    using W = __m512i;
    using Bytes = __m256i; // the alpha bytes of a block
    using Mask = __mmask32;
    using Tail = void;
    static constexpr std::size_t kLanes = 32, kBlockVectors = 1;
    static constexpr bool kPacksRows = true;

    // Loads are hidden from the compiler, which would otherwise load a vector again for each use.
    static W load(const std::uint16_t *p) { return hide(_mm512_loadu_si512(p)); }
    static void store(std::uint16_t *p, W v) { _mm512_storeu_si512(p, v); }
    static Bytes loadBytes(const std::uint8_t *p) {
        return _mm256_loadu_si256(reinterpret_cast<const Bytes *>(p));
    }
    static Mask first(std::size_t n) { return Mask((std::uint64_t(1) << n) - 1); }
    static W loadPart(const std::uint16_t *p, std::size_t n) {
        return hide(_mm512_maskz_loadu_epi16(first(n), p));
    }
    static Bytes loadBytesPart(const std::uint8_t *p, std::size_t n) {
        // The low half of the vector (not _mm512_castsi512_si256, which GCC 12 warns about).
        const __m512i v = _mm512_maskz_loadu_epi8((std::uint64_t(1) << n) - 1, p);
        Bytes b;
        std::memcpy(&b, &v, sizeof b);
        return b;
    }
    static void storePart(std::uint16_t *p, std::size_t n, W v) {
        _mm512_mask_storeu_epi16(p, first(n), v);
    }
    static W widenPart(Bytes b, std::size_t) { return hide(_mm512_cvtepu8_epi16(b)); }
    static W hide(W v) {
        __asm__("" : "+v"(v));
        return v;
    }

    // One row's last n <= 16 pixels in a 256-bit half, loaded and stored under a mask of its lanes;
    // two rows in one vector, the second in lanes 16 on (the masked forms of the insertions and
    // extractions: GCC 12 warns about the others). Four rows of up to 8 pixels in one vector were
    // slower where rows four apart are 4096 bytes apart (a target 512 pixels wide): loads of the
    // next four rows waited for the stores of the last four.
    struct Half {
        using Lanes = Avx512;
        // Rows of up to 16 pixels (no whole vectors) are mixed without the branches for all 0 and
        // all 255: noisy alpha changes their outcome often, and a missed branch cost more than
        // the mix; after whole vectors the branches gained (docs/performance.md).
        static constexpr bool shortcuts(bool whole) { return whole; }
        __mmask16 row;
        explicit Half(std::size_t n) : row(__mmask16((1u << n) - 1)) {}
        __m256i load(const std::uint16_t *p) const { return _mm256_maskz_loadu_epi16(row, p); }
        void store(std::uint16_t *p, __m256i v) const { _mm256_mask_storeu_epi16(p, row, v); }
        __m128i loadBytes(const std::uint8_t *p) const { return _mm_maskz_loadu_epi8(row, p); }
        static W join(__m256i low, __m256i high) {
            return _mm512_maskz_inserti64x4(
                0xFF, _mm512_maskz_inserti64x4(0xFF, _mm512_setzero_si512(), low, 0), high, 1);
        }
        static Bytes joinBytes(__m128i low, __m128i high) {
            return _mm256_inserti128_si256(_mm256_zextsi128_si256(low), high, 1);
        }
        static __m256i low(W v) { return _mm512_maskz_extracti64x4_epi64(0xFF, v, 0); }
        static __m256i high(W v) { return _mm512_maskz_extracti64x4_epi64(0xFF, v, 1); }
    };
    static bool none(Bytes b) { return _mm256_testz_si256(b, b); }
    static bool mixed(Bytes b) { return _mm256_testnzc_si256(b, _mm256_set1_epi8(-1)); }
    // As for AVX2: widened straight from memory, with the address and the result hidden.
    static W widen(const std::uint8_t *p, Bytes, std::size_t k) {
        p += 32 * k;
        __asm__("" : "+r"(p));
        W a = _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)));
        __asm__("" : "+v"(a));
        return a;
    }
    static bool isZero(W v) { return _mm512_test_epi16_mask(v, v) == 0; }

    static W set(int v) { return _mm512_set1_epi16(static_cast<short>(v)); }
    static W and_(W a, W b) { return _mm512_and_si512(a, b); }
    static W or_(W a, W b) { return _mm512_or_si512(a, b); }
    static W add(W a, W b) { return _mm512_add_epi16(a, b); }
    static W sub(W a, W b) { return _mm512_sub_epi16(a, b); }
    static W mullo(W a, W b) { return _mm512_mullo_epi16(a, b); }
    static W mulhi(W a, W b) { return _mm512_mulhi_epi16(a, b); }
    static Mask equal(W a, W b) { return _mm512_cmpeq_epi16_mask(a, b); }
    static W select(Mask m, W a, W b) { return _mm512_mask_blend_epi16(m, b, a); }
    static W plusOneAt255(W a) { return _mm512_mask_add_epi16(a, equal(a, set(255)), a, set(1)); }
    template <int N> static W srli(W v) { return _mm512_srli_epi16(v, N); }
    template <int N> static W slli(W v) { return _mm512_slli_epi16(v, N); }
    template <int N> static W srai(W v) { return _mm512_srai_epi16(v, N); }
};

} // namespace
} // namespace vell

#include "image/mix_rows.h"

namespace vell {

const RowKernels &avx512RowKernels() {
    static const RowKernels kernels = rowKernels<Avx512>();
    return kernels;
}

} // namespace vell
#endif
