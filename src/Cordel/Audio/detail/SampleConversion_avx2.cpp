// The AVX2 build of the 24-bit loops, the dispatch table's entry for AVX2.
// The compiler cannot vectorise three-byte samples well, so the bulk is written out with
// shuffles; each vector step computes exactly what the portable loop computes for its samples,
// and the portable loop does the ends.

#include <Cordel/Audio/detail/SampleConversion.h>
#include <Cordel/Audio/detail/SampleKernels.h>

#include <immintrin.h>

namespace Cordel::Audio::detail::avx2 {

namespace {

// Eight samples take 24 bytes, but each half of a step moves 16: a step may touch 4 bytes past
// its own, so the vector loops stop while 10 samples remain.
constexpr std::size_t stepMargin = 10;

// The masks are made by functions, not held in globals: a global would be set up by AVX2 code
// when the library loads, on any processor.

// The three bytes of sample k of a 128-bit lane go to the top of 32-bit word k (bytes 1 to 3).
__m256i unpackMask()
{
    return _mm256_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, //
                            -1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
}

// The low three bytes of each 32-bit word, packed into the first 12 bytes of its lane.
__m256i packMask()
{
    return _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, //
                            0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
}

} // namespace

void int24ToFloat(std::size_t n, unsigned char const* in, float* out)
{
    __m256 const scale = _mm256_set1_ps(1.1920928955078125e-07f);
    std::size_t i = 0;
    for (; i + stepMargin <= n; i += 8) {
        unsigned char const* p = in + 3 * i;
        __m256i const bytes = _mm256_loadu2_m128i(reinterpret_cast<__m128i const*>(p + 12), reinterpret_cast<__m128i const*>(p));
        __m256i const words = _mm256_srai_epi32(_mm256_shuffle_epi8(bytes, unpackMask()), 8);
        _mm256_storeu_ps(out + i, _mm256_mul_ps(_mm256_cvtepi32_ps(words), scale));
    }
    kernels::int24ToFloat(n - i, in + 3 * i, out + i);
}

void floatToInt24(std::size_t n, float const* in, unsigned char* out)
{
    __m256d const factor = _mm256_set1_pd(8388607.0);
    __m256d const half = _mm256_set1_pd(0.5);
    __m256d const minusHalf = _mm256_set1_pd(-0.5);
    __m256d const zero = _mm256_setzero_pd();
    __m256d const limit = _mm256_set1_pd(2147483647.0);
    __m256d const absMask = _mm256_castsi256_pd(_mm256_set1_epi64x(0x7FFFFFFFFFFFFFFF));
    std::size_t i = 0;
    for (; i + stepMargin <= n; i += 8) {
        __m256d x[2] = {_mm256_cvtps_pd(_mm_loadu_ps(in + i)), _mm256_cvtps_pd(_mm_loadu_ps(in + i + 4))};
        __m128i v[2];
        int outside = 0;
        for (int h = 0; h < 2; ++h) {
            __m256d const bias = _mm256_blendv_pd(half, minusHalf, _mm256_cmp_pd(x[h], zero, _CMP_LT_OQ));
            __m256d const scaled = _mm256_add_pd(_mm256_mul_pd(x[h], factor), bias);
            // Not less than the limit: too large for 32 bits, or not a number.
            outside |= _mm256_movemask_pd(_mm256_cmp_pd(_mm256_and_pd(scaled, absMask), limit, _CMP_NLT_UQ));
            v[h] = _mm256_cvttpd_epi32(scaled);
        }
        if (outside) {
            kernels::floatToInt24(8, in + i, out + 3 * i);
            continue;
        }
        __m256i const packed = _mm256_shuffle_epi8(_mm256_set_m128i(v[1], v[0]), packMask());
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * i), _mm256_castsi256_si128(packed));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * i + 12), _mm256_extracti128_si256(packed, 1));
    }
    kernels::floatToInt24(n - i, in + i, out + 3 * i);
}

} // namespace Cordel::Audio::detail::avx2
