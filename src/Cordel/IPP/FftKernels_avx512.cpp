// AVX-512 kernels of the fast FFT engine: the same passes on 512-bit registers, with every
// reordering done by two-source permutes.

#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftStages.h>

#include <immintrin.h>

#include <array>
#include <type_traits>

namespace Cordel::IPP::detail {

namespace {

// Permute indexes over two W-lane sources (b's lanes numbered W..2W−1), one per lane.
template <unsigned int W>
using Index = std::array<std::conditional_t<W == 16, int, long long>, W>;

// Lanes from a and b taken in blocks of g, alternately; `upper` takes the upper halves.
template <unsigned int W>
constexpr Index<W> alternate(unsigned int g, bool upper)
{
    Index<W> x{};
    for (unsigned int i = 0; i < W; ++i) {
        unsigned int const block = i / (2 * g), r = i % (2 * g);
        unsigned int const at = (upper ? W / 2 : 0) + block * g + r % g;
        x[i] = r < g ? at : W + at;
    }
    return x;
}

template <unsigned int W>
constexpr Index<W> everyOther(unsigned int first)
{
    Index<W> x{};
    for (unsigned int i = 0; i < W; ++i)
        x[i] = 2 * i + first;
    return x;
}

template <unsigned int W>
constexpr Index<W> reversed()
{
    Index<W> x{};
    for (unsigned int i = 0; i < W; ++i)
        x[i] = W - 1 - i;
    return x;
}

// The tables are made at compile time and loaded from read-only data.
template <unsigned int W, unsigned int g, bool upper>
__m512i alternating()
{
    static constexpr Index<W> x = alternate<W>(g, upper);
    return _mm512_loadu_si512(x.data());
}

template <unsigned int W, unsigned int first>
__m512i everyOtherLane()
{
    static constexpr Index<W> x = everyOther<W>(first);
    return _mm512_loadu_si512(x.data());
}

template <unsigned int W>
__m512i reversedLanes()
{
    static constexpr Index<W> x = reversed<W>();
    return _mm512_loadu_si512(x.data());
}

// The reorderings common to both precisions, on top of the element's two-source permute.
template <typename Self>
struct Shuffles {
    template <unsigned int s, typename V>
    static void interleave4(V& v0, V& v1, V& v2, V& v3)
    {
        constexpr unsigned int W = Self::width;
        constexpr unsigned int s2 = 2 * s < W ? 2 * s : s;
        __m512i const lo1 = alternating<W, s, false>(), hi1 = alternating<W, s, true>();
        __m512i const lo2 = alternating<W, s2, false>(), hi2 = alternating<W, s2, true>();
        V const a = Self::permute(v0, lo1, v1), b = Self::permute(v0, hi1, v1);
        V const c = Self::permute(v2, lo1, v3), d = Self::permute(v2, hi1, v3);
        if constexpr (2 * s < W) {
            v0 = Self::permute(a, lo2, c);
            v1 = Self::permute(a, hi2, c);
            v2 = Self::permute(b, lo2, d);
            v3 = Self::permute(b, hi2, d);
        } else {
            v0 = a;
            v1 = c;
            v2 = b;
            v3 = d;
        }
    }
};

struct F16 : Shuffles<F16> {
    using V = __m512;
    using T = float;
    static constexpr unsigned int width = 16;
    static V load(T const* p) { return _mm512_loadu_ps(p); }
    static void store(T* p, V v) { _mm512_storeu_ps(p, v); }
    static V set1(T x) { return _mm512_set1_ps(x); }
    static V add(V a, V b) { return _mm512_add_ps(a, b); }
    static V sub(V a, V b) { return _mm512_sub_ps(a, b); }
    static V mul(V a, V b) { return _mm512_mul_ps(a, b); }
    static V fmadd(V a, V b, V c) { return _mm512_fmadd_ps(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm512_fmsub_ps(a, b, c); }
    static V fnmadd(V a, V b, V c) { return _mm512_fnmadd_ps(a, b, c); }
    static V permute(V a, __m512i x, V b) { return _mm512_permutex2var_ps(a, x, b); }

    static void deinterleave(V a, V b, V& re, V& im)
    {
        re = permute(a, everyOtherLane<16, 0>(), b);
        im = permute(a, everyOtherLane<16, 1>(), b);
    }
    static void interleave(V re, V im, V& a, V& b)
    {
        a = permute(re, alternating<16, 1, false>(), im);
        b = permute(re, alternating<16, 1, true>(), im);
    }
    static V reverse(V v) { return permute(v, reversedLanes<16>(), v); }

};

struct D8 : Shuffles<D8> {
    using V = __m512d;
    using T = double;
    static constexpr unsigned int width = 8;
    static V load(T const* p) { return _mm512_loadu_pd(p); }
    static void store(T* p, V v) { _mm512_storeu_pd(p, v); }
    static V set1(T x) { return _mm512_set1_pd(x); }
    static V add(V a, V b) { return _mm512_add_pd(a, b); }
    static V sub(V a, V b) { return _mm512_sub_pd(a, b); }
    static V mul(V a, V b) { return _mm512_mul_pd(a, b); }
    static V fmadd(V a, V b, V c) { return _mm512_fmadd_pd(a, b, c); }
    static V fmsub(V a, V b, V c) { return _mm512_fmsub_pd(a, b, c); }
    static V fnmadd(V a, V b, V c) { return _mm512_fnmadd_pd(a, b, c); }
    static V permute(V a, __m512i x, V b) { return _mm512_permutex2var_pd(a, x, b); }

    static void deinterleave(V a, V b, V& re, V& im)
    {
        re = permute(a, everyOtherLane<8, 0>(), b);
        im = permute(a, everyOtherLane<8, 1>(), b);
    }
    static void interleave(V re, V im, V& a, V& b)
    {
        a = permute(re, alternating<8, 1, false>(), im);
        b = permute(re, alternating<8, 1, true>(), im);
    }
    static V reverse(V v) { return permute(v, reversedLanes<8>(), v); }

};

} // namespace

FftKernels<float> const fftAvx512Float = stages::kernels<F16>();
FftKernels<double> const fftAvx512Double = stages::kernels<D8>();

} // namespace Cordel::IPP::detail
