// The AVX-512 build of the 24-bit loops, the dispatch table's entry for AVX-512. Sixteen
// samples per step: the arithmetic is the AVX2 build's on twice the lanes, and the three bytes
// of each sample are gathered with a byte shuffle inside each 128-bit lane followed by a 32-bit
// permutation across lanes. The portable loop does the ends.

#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>

#include <immintrin.h>

// The AVX-512 intrinsics start some results from a deliberately undefined register, which GCC 12
// then reports as uninitialised.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace Cordel::Audio::detail::avx512 {

namespace {

// Sixteen samples take 48 bytes, but a step loads or stores 64: it may touch 16 bytes past its
// own, so the vector loops stop while 22 samples remain.
constexpr std::size_t stepMargin = 22;

// Sample k of a 128-bit lane (after the permutation below) to the top of 32-bit word k.
__m512i unpackMask()
{
    return _mm512_broadcast_i32x4(_mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11));
}
// Words 0-2, 3-5, 6-8 and 9-11 of the packed bytes to the start of lanes 0, 1, 2 and 3.
__m512i spreadWords()
{
    return _mm512_setr_epi32(0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0);
}
// The low three bytes of each 32-bit word, packed into the first 12 bytes of its lane.
__m512i packMask()
{
    return _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
}
// The first 12 bytes of each lane, one after the other.
__m512i gatherWords()
{
    return _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
}

} // namespace

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    __m512 const scale = _mm512_set1_ps(1.1920928955078125e-07f);
    __m512i const spread = spreadWords();
    __m512i const unpack = unpackMask();
    std::size_t i = 0;
    for (; i + stepMargin <= n; i += 16) {
        __m512i const bytes = _mm512_permutexvar_epi32(spread, _mm512_loadu_si512(in + 3 * i));
        __m512i const words = _mm512_srai_epi32(_mm512_shuffle_epi8(bytes, unpack), 8);
        _mm512_storeu_ps(out + i, _mm512_mul_ps(_mm512_cvtepi32_ps(words), scale));
    }
    kernels::int24ToFloat(n - i, in + 3 * i, out + i);
}

void floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    // The product of a float and 2^23 - 1 is exact in double, so the fused multiply-add rounds
    // only the addition of the half, as the portable loop does.
    __m512d const factor = _mm512_set1_pd(8388607.0);
    __m512d const half = _mm512_set1_pd(0.5);
    __m512d const minusHalf = _mm512_set1_pd(-0.5);
    __m512d const zero = _mm512_setzero_pd();
    __m512d const limit = _mm512_set1_pd(2147483647.0);
    __m512i const pack = packMask();
    __m512i const gather = gatherWords();
    std::size_t i = 0;
    for (; i + stepMargin <= n; i += 16) {
        __m256i v[2];
        __mmask8 outside = 0;
        for (int h = 0; h < 2; ++h) {
            __m512d const x = _mm512_cvtps_pd(_mm256_loadu_ps(in + i + 8 * h));
            __m512d const bias = _mm512_mask_blend_pd(_mm512_cmp_pd_mask(x, zero, _CMP_LT_OQ), half, minusHalf);
            __m512d const scaled = _mm512_fmadd_pd(x, factor, bias);
            // Not less than the limit: too large for 32 bits, or not a number.
            outside |= _mm512_cmp_pd_mask(_mm512_abs_pd(scaled), limit, _CMP_NLT_UQ);
            v[h] = _mm512_cvttpd_epi32(scaled);
        }
        if (outside) {
            kernels::floatToInt24(16, in + i, out + 3 * i);
            continue;
        }
        __m512i const words = _mm512_inserti64x4(_mm512_castsi256_si512(v[0]), v[1], 1);
        __m512i const packed = _mm512_permutexvar_epi32(gather, _mm512_shuffle_epi8(words, pack));
        _mm512_storeu_si512(out + 3 * i, packed);
    }
    kernels::floatToInt24(n - i, in + i, out + 3 * i);
}

} // namespace Cordel::Audio::detail::avx512
