#pragma once
// The 256-bit register types of the fast FFT engine (AVX2 + FMA). Included by the AVX2 kernels and
// by the AVX-512 ones, where the same code gets 32 registers instead of 16. Everything is in an
// unnamed namespace: each including translation unit has its own copy, built for its own
// instruction set, and none can stand in for another's at link time.

#include <immintrin.h>

namespace Cordel::IPP::detail {

namespace {

struct F8 {
    using V = __m256;
    using T = float;
    static constexpr unsigned int width = 8;
    [[gnu::always_inline]] static V load(T const* p) { return _mm256_loadu_ps(p); }
    [[gnu::always_inline]] static void store(T* p, V v) { _mm256_storeu_ps(p, v); }
    [[gnu::always_inline]] static V set1(T x) { return _mm256_set1_ps(x); }
    [[gnu::always_inline]] static V add(V a, V b) { return _mm256_add_ps(a, b); }
    [[gnu::always_inline]] static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
    [[gnu::always_inline]] static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
    [[gnu::always_inline]] static V fmadd(V a, V b, V c) { return _mm256_fmadd_ps(a, b, c); }
    [[gnu::always_inline]] static V fmsub(V a, V b, V c) { return _mm256_fmsub_ps(a, b, c); }
    [[gnu::always_inline]] static V fnmadd(V a, V b, V c) { return _mm256_fnmadd_ps(a, b, c); }

    [[gnu::always_inline]] static void deinterleave(V a, V b, V& re, V& im)
    {
        // Within each 128-bit lane first, then the 64-bit halves put back in order.
        V const r = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
        V const i = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
        re = _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(r), _MM_SHUFFLE(3, 1, 2, 0)));
        im = _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(i), _MM_SHUFFLE(3, 1, 2, 0)));
    }

    [[gnu::always_inline]] static void interleave(V re, V im, V& a, V& b)
    {
        V const lo = _mm256_unpacklo_ps(re, im); // pairs 0 1 | 4 5
        V const hi = _mm256_unpackhi_ps(re, im); // pairs 2 3 | 6 7
        a = _mm256_permute2f128_ps(lo, hi, 0x20);
        b = _mm256_permute2f128_ps(lo, hi, 0x31);
    }

    [[gnu::always_inline]] static V reverse(V v) { return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0)); }
    // p[0], p[−1], ..., p[−7] from the registers at p − 8 and p: when p is on a register boundary,
    // loads that a store of the last pass can forward to, where one across two of them would wait.
    [[gnu::always_inline]] static V mirror(T const* p)
    {
        V const a = _mm256_permutevar8x32_ps(load(p - width), _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1));
        return _mm256_blend_ps(a, load(p), 1);
    }

    template <unsigned int R, unsigned int s>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        if constexpr (s == 4) {
            V t[R];
            for (unsigned int j = 0; j < R / 2; ++j) {
                t[j] = _mm256_permute2f128_ps(v[2 * j], v[2 * j + 1], 0x20);
                t[R / 2 + j] = _mm256_permute2f128_ps(v[2 * j], v[2 * j + 1], 0x31);
            }
            for (unsigned int j = 0; j < R; ++j)
                v[j] = t[j];
        } else if constexpr (R == 4) {
            static_assert(s == 1);
            V const t0 = _mm256_unpacklo_ps(v[0], v[1]), t1 = _mm256_unpackhi_ps(v[0], v[1]);
            V const t2 = _mm256_unpacklo_ps(v[2], v[3]), t3 = _mm256_unpackhi_ps(v[2], v[3]);
            // u0 holds column 0 | 4, u1 column 1 | 5, u2 column 2 | 6, u3 column 3 | 7.
            V const u0 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
            V const u1 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
            V const u2 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
            V const u3 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
            v[0] = _mm256_permute2f128_ps(u0, u1, 0x20);
            v[1] = _mm256_permute2f128_ps(u2, u3, 0x20);
            v[2] = _mm256_permute2f128_ps(u0, u1, 0x31);
            v[3] = _mm256_permute2f128_ps(u2, u3, 0x31);
        } else {
            static_assert(R == 8 && s == 1);
            V u[8];
            for (unsigned int h = 0; h < 2; ++h) {
                V* const x = v + 4 * h;
                V const t0 = _mm256_unpacklo_ps(x[0], x[1]), t1 = _mm256_unpackhi_ps(x[0], x[1]);
                V const t2 = _mm256_unpacklo_ps(x[2], x[3]), t3 = _mm256_unpackhi_ps(x[2], x[3]);
                u[4 * h + 0] = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
                u[4 * h + 1] = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
                u[4 * h + 2] = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
                u[4 * h + 3] = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
            }
            // u[c] holds column c | c + 4 of rows 0..3, u[4 + c] the same of rows 4..7.
            for (unsigned int c = 0; c < 4; ++c) {
                v[c] = _mm256_permute2f128_ps(u[c], u[4 + c], 0x20);
                v[4 + c] = _mm256_permute2f128_ps(u[c], u[4 + c], 0x31);
            }
        }
    }
};

struct D4 {
    using V = __m256d;
    using T = double;
    static constexpr unsigned int width = 4;
    [[gnu::always_inline]] static V load(T const* p) { return _mm256_loadu_pd(p); }
    [[gnu::always_inline]] static void store(T* p, V v) { _mm256_storeu_pd(p, v); }
    [[gnu::always_inline]] static V set1(T x) { return _mm256_set1_pd(x); }
    [[gnu::always_inline]] static V add(V a, V b) { return _mm256_add_pd(a, b); }
    [[gnu::always_inline]] static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
    [[gnu::always_inline]] static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
    [[gnu::always_inline]] static V fmadd(V a, V b, V c) { return _mm256_fmadd_pd(a, b, c); }
    [[gnu::always_inline]] static V fmsub(V a, V b, V c) { return _mm256_fmsub_pd(a, b, c); }
    [[gnu::always_inline]] static V fnmadd(V a, V b, V c) { return _mm256_fnmadd_pd(a, b, c); }

    [[gnu::always_inline]] static void deinterleave(V a, V b, V& re, V& im)
    {
        re = _mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), _MM_SHUFFLE(3, 1, 2, 0));
        im = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), _MM_SHUFFLE(3, 1, 2, 0));
    }

    [[gnu::always_inline]] static void interleave(V re, V im, V& a, V& b)
    {
        V const lo = _mm256_unpacklo_pd(re, im); // pairs 0 | 2
        V const hi = _mm256_unpackhi_pd(re, im); // pairs 1 | 3
        a = _mm256_permute2f128_pd(lo, hi, 0x20);
        b = _mm256_permute2f128_pd(lo, hi, 0x31);
    }

    [[gnu::always_inline]] static V reverse(V v) { return _mm256_permute4x64_pd(v, _MM_SHUFFLE(0, 1, 2, 3)); }
    // As F8::mirror.
    [[gnu::always_inline]] static V mirror(T const* p) { return mirror(p - width, p); }
    // With the register of the points before p at q.
    [[gnu::always_inline]] static V mirror(T const* q, T const* p)
    {
        return _mm256_blend_pd(_mm256_permute4x64_pd(load(q), _MM_SHUFFLE(1, 2, 3, 0)), load(p), 1);
    }

    // Columns of the 4×4 block of rows v[0..3].
    [[gnu::always_inline]] static void transpose4(V* v)
    {
        V const t0 = _mm256_unpacklo_pd(v[0], v[1]), t1 = _mm256_unpackhi_pd(v[0], v[1]);
        V const t2 = _mm256_unpacklo_pd(v[2], v[3]), t3 = _mm256_unpackhi_pd(v[2], v[3]);
        v[0] = _mm256_permute2f128_pd(t0, t2, 0x20);
        v[1] = _mm256_permute2f128_pd(t1, t3, 0x20);
        v[2] = _mm256_permute2f128_pd(t0, t2, 0x31);
        v[3] = _mm256_permute2f128_pd(t1, t3, 0x31);
    }

    template <unsigned int R, unsigned int s>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        static_assert(s == 1 && (R == 4 || R == 8));
        transpose4(v);
        if constexpr (R == 8) {
            transpose4(v + 4);
            V const t[8] = {v[0], v[4], v[1], v[5], v[2], v[6], v[3], v[7]};
            for (unsigned int j = 0; j < 8; ++j)
                v[j] = t[j];
        }
    }
};

} // namespace

} // namespace Cordel::IPP::detail
