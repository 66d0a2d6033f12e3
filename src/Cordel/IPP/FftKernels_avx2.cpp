// AVX2 + FMA kernels of the fast FFT engine.

#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftStages.h>

#include <immintrin.h>

namespace Cordel::IPP::detail {

namespace {

// Everything here has internal linkage (the stage templates too, being instantiated with these
// local types), so that no code built for AVX2 can be picked by the linker for a baseline caller.
struct F8 {
    using V = __m256;
    using T = float;
    static constexpr unsigned int width = 8;
    static V load(T const* p) { return _mm256_loadu_ps(p); }
    static void store(T* p, V v) { _mm256_storeu_ps(p, v); }
    static V add(V a, V b) { return _mm256_add_ps(a, b); }
    static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
    static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
    static V fmadd(V a, V b, V c) { return _mm256_fmadd_ps(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm256_fmsub_ps(a, b, c); }
};

struct D4 {
    using V = __m256d;
    using T = double;
    static constexpr unsigned int width = 4;
    static V load(T const* p) { return _mm256_loadu_pd(p); }
    static void store(T* p, V v) { _mm256_storeu_pd(p, v); }
    static V add(V a, V b) { return _mm256_add_pd(a, b); }
    static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
    static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
    static V fmadd(V a, V b, V c) { return _mm256_fmadd_pd(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm256_fmsub_pd(a, b, c); }
};

// One radix-2 step inside a register: lanes lo and hi combined as lo + sign·hi, then twiddled.
inline void butterfly(__m256& r, __m256& i, __m256 lor, __m256 loi, __m256 hir, __m256 hii, __m256 sign)
{
    r = _mm256_fmadd_ps(hir, sign, lor);
    i = _mm256_fmadd_ps(hii, sign, loi);
}

inline void twiddle(__m256& r, __m256& i, __m256 wr, __m256 wi)
{
    __m256 const nr = _mm256_fmsub_ps(r, wr, _mm256_mul_ps(i, wi));
    i = _mm256_fmadd_ps(r, wi, _mm256_mul_ps(i, wr));
    r = nr;
}

} // namespace

void deinterleaveAvx2(unsigned int n, float const* src, float* re, float* im)
{
    unsigned int j = 0;
    for (; j + 8 <= n; j += 8) {
        __m256 const v0 = _mm256_loadu_ps(src + 2 * j);
        __m256 const v1 = _mm256_loadu_ps(src + 2 * j + 8);
        __m256 const r = _mm256_shuffle_ps(v0, v1, _MM_SHUFFLE(2, 0, 2, 0));
        __m256 const i = _mm256_shuffle_ps(v0, v1, _MM_SHUFFLE(3, 1, 3, 1));
        _mm256_storeu_ps(re + j, _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(r), _MM_SHUFFLE(3, 1, 2, 0))));
        _mm256_storeu_ps(im + j, _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(i), _MM_SHUFFLE(3, 1, 2, 0))));
    }
    for (; j < n; ++j) {
        re[j] = src[2 * j];
        im[j] = src[2 * j + 1];
    }
}

void deinterleaveAvx2(unsigned int n, double const* src, double* re, double* im)
{
    unsigned int j = 0;
    for (; j + 4 <= n; j += 4) {
        __m256d const v0 = _mm256_loadu_pd(src + 2 * j);
        __m256d const v1 = _mm256_loadu_pd(src + 2 * j + 4);
        __m256d const r = _mm256_unpacklo_pd(v0, v1); // r0 r2 r1 r3
        __m256d const i = _mm256_unpackhi_pd(v0, v1);
        _mm256_storeu_pd(re + j, _mm256_permute4x64_pd(r, _MM_SHUFFLE(3, 1, 2, 0)));
        _mm256_storeu_pd(im + j, _mm256_permute4x64_pd(i, _MM_SHUFFLE(3, 1, 2, 0)));
    }
    for (; j < n; ++j) {
        re[j] = src[2 * j];
        im[j] = src[2 * j + 1];
    }
}

void radix2Avx2(float* re, float* im, unsigned int n, unsigned int h, float const* tw)
{
    radix2<F8>(re, im, n, h, tw);
}

void radix2Avx2(double* re, double* im, unsigned int n, unsigned int h, double const* tw)
{
    radix2<D4>(re, im, n, h, tw);
}

void radix4Avx2(float* re, float* im, unsigned int n, unsigned int q, float const* tw)
{
    radix4<F8>(re, im, n, q, tw);
}

void radix4Avx2(double* re, double* im, unsigned int n, unsigned int q, double const* tw)
{
    radix4<D4>(re, im, n, q, tw);
}

// The last three stages on blocks of 8 points, each block held in one register pair.
void tailAvx2(float* re, float* im, unsigned int n)
{
    float const c = 0.70710678118654752f;
    __m256 const signA = _mm256_setr_ps(1, 1, 1, 1, -1, -1, -1, -1);
    __m256 const wAr = _mm256_setr_ps(1, 1, 1, 1, 1, c, 0, -c);
    __m256 const wAi = _mm256_setr_ps(0, 0, 0, 0, 0, -c, -1, -c);
    __m256 const signB = _mm256_setr_ps(1, 1, -1, -1, 1, 1, -1, -1);
    __m256 const wBr = _mm256_setr_ps(1, 1, 1, 0, 1, 1, 1, 0);
    __m256 const wBi = _mm256_setr_ps(0, 0, 0, -1, 0, 0, 0, -1);
    __m256 const signC = _mm256_setr_ps(1, -1, 1, -1, 1, -1, 1, -1);
    for (unsigned int b = 0; b < n; b += 8) {
        __m256 r = _mm256_loadu_ps(re + b);
        __m256 i = _mm256_loadu_ps(im + b);
        butterfly(r, i, _mm256_permute2f128_ps(r, r, 0x00), _mm256_permute2f128_ps(i, i, 0x00),
                  _mm256_permute2f128_ps(r, r, 0x11), _mm256_permute2f128_ps(i, i, 0x11), signA);
        twiddle(r, i, wAr, wAi);
        butterfly(r, i, _mm256_shuffle_ps(r, r, _MM_SHUFFLE(1, 0, 1, 0)), _mm256_shuffle_ps(i, i, _MM_SHUFFLE(1, 0, 1, 0)),
                  _mm256_shuffle_ps(r, r, _MM_SHUFFLE(3, 2, 3, 2)), _mm256_shuffle_ps(i, i, _MM_SHUFFLE(3, 2, 3, 2)),
                  signB);
        twiddle(r, i, wBr, wBi);
        butterfly(r, i, _mm256_moveldup_ps(r), _mm256_moveldup_ps(i), _mm256_movehdup_ps(r), _mm256_movehdup_ps(i),
                  signC);
        _mm256_storeu_ps(re + b, r);
        _mm256_storeu_ps(im + b, i);
    }
}

// The last two stages on blocks of 4 points.
void tailAvx2(double* re, double* im, unsigned int n)
{
    __m256d const signA = _mm256_setr_pd(1, 1, -1, -1);
    __m256d const wAr = _mm256_setr_pd(1, 1, 1, 0);
    __m256d const wAi = _mm256_setr_pd(0, 0, 0, -1);
    __m256d const signB = _mm256_setr_pd(1, -1, 1, -1);
    for (unsigned int b = 0; b < n; b += 4) {
        __m256d r = _mm256_loadu_pd(re + b);
        __m256d i = _mm256_loadu_pd(im + b);
        r = _mm256_fmadd_pd(_mm256_permute2f128_pd(r, r, 0x11), signA, _mm256_permute2f128_pd(r, r, 0x00));
        i = _mm256_fmadd_pd(_mm256_permute2f128_pd(i, i, 0x11), signA, _mm256_permute2f128_pd(i, i, 0x00));
        __m256d const nr = _mm256_fmsub_pd(r, wAr, _mm256_mul_pd(i, wAi));
        i = _mm256_fmadd_pd(r, wAi, _mm256_mul_pd(i, wAr));
        r = nr;
        r = _mm256_fmadd_pd(_mm256_permute_pd(r, 0xF), signB, _mm256_movedup_pd(r));
        i = _mm256_fmadd_pd(_mm256_permute_pd(i, 0xF), signB, _mm256_movedup_pd(i));
        _mm256_storeu_pd(re + b, r);
        _mm256_storeu_pd(im + b, i);
    }
}

} // namespace Cordel::IPP::detail
