// AVX-512 kernels of the fast FFT engine: the radix-4 stages wide enough for 512-bit registers.

#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftStages.h>

#include <immintrin.h>

namespace Cordel::IPP::detail {

namespace {

struct F16 {
    using V = __m512;
    using T = float;
    static constexpr unsigned int width = 16;
    static V load(T const* p) { return _mm512_loadu_ps(p); }
    static void store(T* p, V v) { _mm512_storeu_ps(p, v); }
    static V add(V a, V b) { return _mm512_add_ps(a, b); }
    static V sub(V a, V b) { return _mm512_sub_ps(a, b); }
    static V mul(V a, V b) { return _mm512_mul_ps(a, b); }
    static V fmadd(V a, V b, V c) { return _mm512_fmadd_ps(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm512_fmsub_ps(a, b, c); }
};

struct D8 {
    using V = __m512d;
    using T = double;
    static constexpr unsigned int width = 8;
    static V load(T const* p) { return _mm512_loadu_pd(p); }
    static void store(T* p, V v) { _mm512_storeu_pd(p, v); }
    static V add(V a, V b) { return _mm512_add_pd(a, b); }
    static V sub(V a, V b) { return _mm512_sub_pd(a, b); }
    static V mul(V a, V b) { return _mm512_mul_pd(a, b); }
    static V fmadd(V a, V b, V c) { return _mm512_fmadd_pd(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm512_fmsub_pd(a, b, c); }
};

} // namespace

void radix4Avx512(float* re, float* im, unsigned int n, unsigned int q, float const* tw)
{
    radix4<F16>(re, im, n, q, tw);
}

void radix4Avx512(double* re, double* im, unsigned int n, unsigned int q, double const* tw)
{
    radix4<D8>(re, im, n, q, tw);
}

} // namespace Cordel::IPP::detail
