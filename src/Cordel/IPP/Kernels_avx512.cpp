// The hot loops compiled for AVX-512 (the build adds the instruction-set flags to this file). The
// compiler widens most of them well by itself; conversions and interleaving are spelled out.
#define CORDEL_KERNEL_VECTOR_BYTES 64
#include "detail/KernelLoops.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

// The AVX-512 intrinsics start some results from a deliberately undefined register, which GCC 12
// then reports as possibly uninitialised.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace Cordel::IPP::detail {

namespace {

// The clamps take the bound as first operand: min(bound, v) keeps a NaN v, as the scalar test does;
// the ordered mask then turns it into 0.
__m512i clampTruncate(__m512 v)
{
    v = _mm512_max_ps(_mm512_set1_ps(-32768.0f), _mm512_min_ps(_mm512_set1_ps(32767.0f), v));
    v = _mm512_maskz_mov_ps(_mm512_cmp_ps_mask(v, v, _CMP_ORD_Q), v);
    return _mm512_cvttps_epi32(v);
}

void floatToShortAvx512(unsigned int n, float const* src, short* dst, float multiplier, float bias)
{
    __m512 const m = _mm512_set1_ps(multiplier);
    __m512 const b = _mm512_set1_ps(bias);
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m512 const x = _mm512_add_ps(_mm512_mul_ps(_mm512_loadu_ps(src + i), m), b);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm512_cvtsepi32_epi16(clampTruncate(x)));
    }
    floatToShortLoop(n - i, src + i, dst + i, multiplier, bias);
}

// x·m at float width, which gives the double definition's result for the multipliers the caller
// passes (see Convert.cpp), truncated and saturated, NaN giving 0. With rounding, the half (with
// the sign of x) is added to the exact product in one fused step rounded toward zero: that sum
// has the integer part of the exact one, because the integer between them would be a float
// closer to it, and integers are floats wherever a fraction is left. No clamp is needed: beyond
// either end of the range the truncation gives 0x80000000, which at the top end is flipped to
// 0x7FFFFFFF.
template <bool Round>
__m512i scaleToInt(__m512 x, __m512 m)
{
    __m512 v;
    if constexpr (Round) {
        __m512i const half = _mm512_set1_epi32(0x3F000000);
        __m512i const sign = _mm512_set1_epi32(INT32_MIN);
        // half | (sign & x), in one step that overwrites a copy of the constant rather than x
        __m512 const signedHalf = _mm512_castsi512_ps(_mm512_ternarylogic_epi32(half, sign, _mm512_castps_si512(x), 0xF8));
        v = _mm512_fmadd_round_ps(x, m, signedHalf, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    } else {
        v = _mm512_mul_ps(x, m);
    }
    __m512i const i = _mm512_maskz_cvttps_epi32(_mm512_cmp_ps_mask(v, v, _CMP_ORD_Q), v);
    __mmask16 const above = _mm512_cmp_ps_mask(v, _mm512_set1_ps(2147483648.0f), _CMP_GE_OQ);
    return _mm512_mask_xor_epi32(i, above, i, _mm512_set1_epi32(-1));
}

// Runs at least this long first store a partial block, so that the rest of the stores fill whole
// cache lines: once the data no longer fits the caches, split stores cost about a fifth of the time.
constexpr unsigned int alignFrom = 4096;

// Elements (of the given size) to handle before dst reaches a cache-line boundary; 0 when dst
// cannot reach one in whole elements.
template <std::size_t ElementBytes>
unsigned int toCacheLine(void const* dst)
{
    auto const address = reinterpret_cast<std::uintptr_t>(dst);
    return address % ElementBytes == 0 ? static_cast<unsigned int>((0 - address) % 64 / ElementBytes) : 0;
}

template <bool Round>
void floatToIntAvx512(unsigned int n, float const* src, int* dst, float multiplier)
{
    __m512 const m = _mm512_set1_ps(multiplier);
    unsigned int i = 0;
    if (n >= alignFrom) {
        i = toCacheLine<sizeof(int)>(dst);
        __mmask16 const head = static_cast<__mmask16>((1u << i) - 1);
        _mm512_mask_storeu_epi32(dst, head, scaleToInt<Round>(_mm512_maskz_loadu_ps(head, src), m));
    }
    for (; i + 16 <= n; i += 16)
        _mm512_storeu_si512(dst + i, scaleToInt<Round>(_mm512_loadu_ps(src + i), m));
    if (i < n) {
        __mmask16 const tail = static_cast<__mmask16>((1u << (n - i)) - 1);
        _mm512_mask_storeu_epi32(dst + i, tail, scaleToInt<Round>(_mm512_maskz_loadu_ps(tail, src + i), m));
    }
}

// Index vectors for the two-source permutes: element k of the first operand is index k, of the
// second 16 + k (32 + k for 16-bit elements).
__m512i zipIndex(int first)
{
    alignas(64) int index[16];
    for (int k = 0; k < 16; ++k)
        index[k] = first / 2 + k / 2 + (k % 2 ? 16 : 0);
    return _mm512_load_si512(index);
}

__m512i zipIndex16(int first)
{
    alignas(64) short index[32];
    for (int k = 0; k < 32; ++k)
        index[k] = static_cast<short>(first / 2 + k / 2 + (k % 2 ? 32 : 0));
    return _mm512_load_si512(index);
}

void interleaveFloatAvx512(unsigned int n, float const* left, float const* right, float* dst)
{
    __m512i const low = zipIndex(0);
    __m512i const high = zipIndex(16);
    unsigned int i = 0;
    if (n >= alignFrom) {
        i = toCacheLine<2 * sizeof(float)>(dst);
        interleaveLoop(i, left, right, dst);
    }
    for (; i + 16 <= n; i += 16) {
        __m512 const l = _mm512_loadu_ps(left + i);
        __m512 const r = _mm512_loadu_ps(right + i);
        _mm512_storeu_ps(dst + 2 * i, _mm512_permutex2var_ps(l, low, r));
        _mm512_storeu_ps(dst + 2 * i + 16, _mm512_permutex2var_ps(l, high, r));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveFloatAvx512(unsigned int n, float const* src, float* left, float* right)
{
    __m512i const evens = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    __m512i const odds = _mm512_add_epi32(evens, _mm512_set1_epi32(1));
    unsigned int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m512 const a = _mm512_loadu_ps(src + 2 * i);
        __m512 const b = _mm512_loadu_ps(src + 2 * i + 16);
        _mm512_storeu_ps(left + i, _mm512_permutex2var_ps(a, evens, b));
        _mm512_storeu_ps(right + i, _mm512_permutex2var_ps(a, odds, b));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

void interleaveShortAvx512(unsigned int n, short const* left, short const* right, short* dst)
{
    __m512i const low = zipIndex16(0);
    __m512i const high = zipIndex16(32);
    unsigned int i = 0;
    for (; i + 32 <= n; i += 32) {
        __m512i const l = _mm512_loadu_si512(left + i);
        __m512i const r = _mm512_loadu_si512(right + i);
        _mm512_storeu_si512(dst + 2 * i, _mm512_permutex2var_epi16(l, low, r));
        _mm512_storeu_si512(dst + 2 * i + 32, _mm512_permutex2var_epi16(l, high, r));
    }
    interleaveLoop(n - i, left + i, right + i, dst + 2 * i);
}

void deinterleaveShortAvx512(unsigned int n, short const* src, short* left, short* right)
{
    alignas(64) short index[32];
    for (int k = 0; k < 32; ++k)
        index[k] = static_cast<short>(2 * k);
    __m512i const evens = _mm512_load_si512(index);
    __m512i const odds = _mm512_add_epi16(evens, _mm512_set1_epi16(1));
    unsigned int i = 0;
    for (; i + 32 <= n; i += 32) {
        __m512i const a = _mm512_loadu_si512(src + 2 * i);
        __m512i const b = _mm512_loadu_si512(src + 2 * i + 32);
        _mm512_storeu_si512(left + i, _mm512_permutex2var_epi16(a, evens, b));
        _mm512_storeu_si512(right + i, _mm512_permutex2var_epi16(a, odds, b));
    }
    deinterleaveLoop(n - i, src + 2 * i, left + i, right + i);
}

constexpr Kernels makeAvx512Kernels()
{
    Kernels k = makeKernels();
    k.floatToShort = floatToShortAvx512;
    k.floatToInt = floatToIntAvx512<false>;
    k.floatToIntRounded = floatToIntAvx512<true>;
    k.interleaveFloat = interleaveFloatAvx512;
    k.deinterleaveFloat = deinterleaveFloatAvx512;
    k.interleaveShort = interleaveShortAvx512;
    k.deinterleaveShort = deinterleaveShortAvx512;
    return k;
}

} // namespace

Kernels const avx512Kernels = makeAvx512Kernels();

} // namespace Cordel::IPP::detail
