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
    static V set1(T x) { return _mm256_set1_ps(x); }
    static V add(V a, V b) { return _mm256_add_ps(a, b); }
    static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
    static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
    static V fmadd(V a, V b, V c) { return _mm256_fmadd_ps(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm256_fmsub_ps(a, b, c); }
    static V fnmadd(V a, V b, V c) { return _mm256_fnmadd_ps(a, b, c); }

    static void deinterleave(V a, V b, V& re, V& im)
    {
        // Within each 128-bit lane first, then the 64-bit halves put back in order.
        V const r = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
        V const i = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
        re = _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(r), _MM_SHUFFLE(3, 1, 2, 0)));
        im = _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(i), _MM_SHUFFLE(3, 1, 2, 0)));
    }

    static void interleave(V re, V im, V& a, V& b)
    {
        V const lo = _mm256_unpacklo_ps(re, im); // pairs 0 1 | 4 5
        V const hi = _mm256_unpackhi_ps(re, im); // pairs 2 3 | 6 7
        a = _mm256_permute2f128_ps(lo, hi, 0x20);
        b = _mm256_permute2f128_ps(lo, hi, 0x31);
    }

    static V reverse(V v) { return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0)); }

    template <unsigned int s>
    static void interleave4(V& v0, V& v1, V& v2, V& v3)
    {
        if constexpr (s == 1) {
            V const t0 = _mm256_unpacklo_ps(v0, v1), t1 = _mm256_unpackhi_ps(v0, v1);
            V const t2 = _mm256_unpacklo_ps(v2, v3), t3 = _mm256_unpackhi_ps(v2, v3);
            // u0 holds column 0 | 4, u1 column 1 | 5, u2 column 2 | 6, u3 column 3 | 7.
            V const u0 = _mm256_castpd_ps(_mm256_unpacklo_pd(_mm256_castps_pd(t0), _mm256_castps_pd(t2)));
            V const u1 = _mm256_castpd_ps(_mm256_unpackhi_pd(_mm256_castps_pd(t0), _mm256_castps_pd(t2)));
            V const u2 = _mm256_castpd_ps(_mm256_unpacklo_pd(_mm256_castps_pd(t1), _mm256_castps_pd(t3)));
            V const u3 = _mm256_castpd_ps(_mm256_unpackhi_pd(_mm256_castps_pd(t1), _mm256_castps_pd(t3)));
            v0 = _mm256_permute2f128_ps(u0, u1, 0x20);
            v1 = _mm256_permute2f128_ps(u2, u3, 0x20);
            v2 = _mm256_permute2f128_ps(u0, u1, 0x31);
            v3 = _mm256_permute2f128_ps(u2, u3, 0x31);
        } else {
            static_assert(s == 4);
            V const a = _mm256_permute2f128_ps(v0, v1, 0x20), b = _mm256_permute2f128_ps(v2, v3, 0x20);
            V const c = _mm256_permute2f128_ps(v0, v1, 0x31), d = _mm256_permute2f128_ps(v2, v3, 0x31);
            v0 = a;
            v1 = b;
            v2 = c;
            v3 = d;
        }
    }
};

struct D4 {
    using V = __m256d;
    using T = double;
    static constexpr unsigned int width = 4;
    static V load(T const* p) { return _mm256_loadu_pd(p); }
    static void store(T* p, V v) { _mm256_storeu_pd(p, v); }
    static V set1(T x) { return _mm256_set1_pd(x); }
    static V add(V a, V b) { return _mm256_add_pd(a, b); }
    static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
    static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
    static V fmadd(V a, V b, V c) { return _mm256_fmadd_pd(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm256_fmsub_pd(a, b, c); }
    static V fnmadd(V a, V b, V c) { return _mm256_fnmadd_pd(a, b, c); }

    static void deinterleave(V a, V b, V& re, V& im)
    {
        re = _mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), _MM_SHUFFLE(3, 1, 2, 0));
        im = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), _MM_SHUFFLE(3, 1, 2, 0));
    }

    static void interleave(V re, V im, V& a, V& b)
    {
        V const lo = _mm256_unpacklo_pd(re, im); // pairs 0 | 2
        V const hi = _mm256_unpackhi_pd(re, im); // pairs 1 | 3
        a = _mm256_permute2f128_pd(lo, hi, 0x20);
        b = _mm256_permute2f128_pd(lo, hi, 0x31);
    }

    static V reverse(V v) { return _mm256_permute4x64_pd(v, _MM_SHUFFLE(0, 1, 2, 3)); }

    template <unsigned int s>
    static void interleave4(V& v0, V& v1, V& v2, V& v3)
    {
        static_assert(s == 1);
        V const t0 = _mm256_unpacklo_pd(v0, v1), t1 = _mm256_unpackhi_pd(v0, v1);
        V const t2 = _mm256_unpacklo_pd(v2, v3), t3 = _mm256_unpackhi_pd(v2, v3);
        v0 = _mm256_permute2f128_pd(t0, t2, 0x20);
        v1 = _mm256_permute2f128_pd(t1, t3, 0x20);
        v2 = _mm256_permute2f128_pd(t0, t2, 0x31);
        v3 = _mm256_permute2f128_pd(t1, t3, 0x31);
    }
};

} // namespace

FftKernels<float> const fftAvx2Float = stages::kernels<F8>();
FftKernels<double> const fftAvx2Double = stages::kernels<D4>();

} // namespace Cordel::IPP::detail
