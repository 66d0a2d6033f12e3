// The hot loops compiled for AVX2 (the build adds the instruction-set flags to this file). The
// compiler widens most of them well by itself; conversions and interleaving are spelled out.
#define CORDEL_KERNEL_VECTOR_BYTES 32
#include <Cordel/IPP/detail/KernelLoops.h>

#include <immintrin.h>

namespace Cordel::IPP::detail {

namespace {

// The clamps take the bound as first operand: min(bound, v) keeps a NaN v, as the scalar test does,
// and the ordered mask then turns it into 0.
__m256i clampTruncate(__m256 v, __m256 lo, __m256 hi)
{
    v = _mm256_max_ps(lo, _mm256_min_ps(hi, v));
    v = _mm256_and_ps(v, _mm256_cmp_ps(v, v, _CMP_ORD_Q));
    return _mm256_cvttps_epi32(v);
}

void floatToShortAvx2(unsigned int n, float const* src, short* dst, float multiplier, float bias)
{
    __m256 const m = _mm256_set1_ps(multiplier);
    __m256 const b = _mm256_set1_ps(bias);
    __m256 const lo = _mm256_set1_ps(-32768.0f);
    __m256 const hi = _mm256_set1_ps(32767.0f);
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m256 const x0 = _mm256_add_ps(_mm256_mul_ps(_mm256_loadu_ps(src + i), m), b);
        __m256 const x1 = _mm256_add_ps(_mm256_mul_ps(_mm256_loadu_ps(src + i + 8), m), b);
        __m256i const packed = _mm256_packs_epi32(clampTruncate(x0, lo, hi), clampTruncate(x1, lo, hi));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm256_permute4x64_epi64(packed, 0xD8));
    }
    floatToShortLoop(n - i, src + i, dst + i, multiplier, bias);
}

// x·m at float width, which gives the double definition's result for the multipliers the caller
// passes (see Convert.cpp). Clamped to [-2^31, 2^31] first, NaN to 0; the truncation turns 2^31
// into 0x80000000, which the last step flips to 0x7FFFFFFF.
template <bool Round>
__m256i scaleToInt(__m256 x, __m256 m)
{
    __m256 const lo = _mm256_set1_ps(-2147483648.0f);
    __m256 const hi = _mm256_set1_ps(2147483648.0f);
    __m256 v = _mm256_max_ps(lo, _mm256_min_ps(hi, _mm256_mul_ps(x, m)));
    v = _mm256_and_ps(v, _mm256_cmp_ps(v, v, _CMP_ORD_Q));
    __m256i i = _mm256_cvttps_epi32(v);
    if constexpr (Round) {
        // Half away from zero: add trunc(2·fraction), which is −1, 0 or 1.
        __m256 const fraction = _mm256_sub_ps(v, _mm256_round_ps(v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC));
        i = _mm256_add_epi32(i, _mm256_cvttps_epi32(_mm256_add_ps(fraction, fraction)));
    }
    return _mm256_xor_si256(i, _mm256_castps_si256(_mm256_cmp_ps(v, hi, _CMP_GE_OQ)));
}

template <bool Round>
void floatToIntAvx2(unsigned int n, float const* src, int* dst, float multiplier)
{
    __m256 const m = _mm256_set1_ps(multiplier);
    unsigned int i = 0;
    for (; i + 8 <= n; i += 8)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), scaleToInt<Round>(_mm256_loadu_ps(src + i), m));
    floatToIntLoop<Round>(n - i, src + i, dst + i, multiplier);
}

void interleaveFloatAvx2(unsigned int n, float const* left, float const* right, float* dst)
{
    unsigned int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256 const l = _mm256_loadu_ps(left + i);
        __m256 const r = _mm256_loadu_ps(right + i);
        __m256 const lo = _mm256_unpacklo_ps(l, r);
        __m256 const hi = _mm256_unpackhi_ps(l, r);
        _mm256_storeu_ps(dst + 2 * i, _mm256_permute2f128_ps(lo, hi, 0x20));
        _mm256_storeu_ps(dst + 2 * i + 8, _mm256_permute2f128_ps(lo, hi, 0x31));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveFloatAvx2(unsigned int n, float const* src, float* left, float* right)
{
    unsigned int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256 const a = _mm256_loadu_ps(src + 2 * i);
        __m256 const b = _mm256_loadu_ps(src + 2 * i + 8);
        __m256d const evens = _mm256_castps_pd(_mm256_shuffle_ps(a, b, 0x88));
        __m256d const odds = _mm256_castps_pd(_mm256_shuffle_ps(a, b, 0xDD));
        _mm256_storeu_ps(left + i, _mm256_castpd_ps(_mm256_permute4x64_pd(evens, 0xD8)));
        _mm256_storeu_ps(right + i, _mm256_castpd_ps(_mm256_permute4x64_pd(odds, 0xD8)));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

void interleaveShortAvx2(unsigned int n, short const* left, short const* right, short* dst)
{
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m256i const l = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(left + i));
        __m256i const r = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(right + i));
        __m256i const lo = _mm256_unpacklo_epi16(l, r);
        __m256i const hi = _mm256_unpackhi_epi16(l, r);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 2 * i), _mm256_permute2x128_si256(lo, hi, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 2 * i + 16), _mm256_permute2x128_si256(lo, hi, 0x31));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveShortAvx2(unsigned int n, short const* src, short* left, short* right)
{
    // Within each 128-bit lane: the four left samples first, then the four right ones.
    __m256i const split = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15, 0, 1, 4, 5, 8, 9,
                                           12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m256i a = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(src + 2 * i));
        __m256i b = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(src + 2 * i + 16));
        a = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(a, split), 0xD8);
        b = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(b, split), 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(left + i), _mm256_permute2x128_si256(a, b, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(right + i), _mm256_permute2x128_si256(a, b, 0x31));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

constexpr Kernels makeAvx2Kernels()
{
    Kernels k = makeKernels();
    k.floatToShort = floatToShortAvx2;
    k.floatToInt = floatToIntAvx2<false>;
    k.floatToIntRounded = floatToIntAvx2<true>;
    k.interleaveFloat = interleaveFloatAvx2;
    k.deinterleaveFloat = deinterleaveFloatAvx2;
    k.interleaveShort = interleaveShortAvx2;
    k.deinterleaveShort = deinterleaveShortAvx2;
    return k;
}

} // namespace

constinit Kernels const avx2Kernels = makeAvx2Kernels();

} // namespace Cordel::IPP::detail
