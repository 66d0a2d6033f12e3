// AVX-512 kernels of the fast FFT engine: the same passes on 512-bit registers, with every
// reordering done by two-source permutes.

#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftRegisters256.h>
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

// p[0], p[−1], ..., p[−W+1] from the registers at p − W (a) and p (b).
template <unsigned int W>
constexpr Index<W> mirroring()
{
    Index<W> x{};
    for (unsigned int i = 0; i < W; ++i)
        x[i] = W - i;
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
__m512i mirrorLanes()
{
    static constexpr Index<W> x = mirroring<W>();
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
    template <unsigned int R, typename V>
    [[gnu::always_inline]] static void riffle(V* v, __m512i lo, __m512i hi)
    {
        V t[R];
        for (unsigned int j = 0; j < R / 2; ++j) {
            t[2 * j] = Self::permute(v[j], lo, v[j + R / 2]);
            t[2 * j + 1] = Self::permute(v[j], hi, v[j + R / 2]);
        }
        for (unsigned int j = 0; j < R; ++j)
            v[j] = t[j];
    }

    // log2 R riffles of blocks of s: after them, block j of every register comes before block j + 1
    // of any, in register order. Blocks of half a register need only the halves paired.
    template <unsigned int R, unsigned int s, typename V>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        constexpr unsigned int W = Self::width;
        if constexpr (2 * s == W) {
            // (The immediate-operand shuffles would do, but this compiler warns about them.)
            __m512i const lo = alternating<W, s, false>(), hi = alternating<W, s, true>();
            V t[R];
            for (unsigned int j = 0; j < R / 2; ++j) {
                t[j] = Self::permute(v[2 * j], lo, v[2 * j + 1]);
                t[R / 2 + j] = Self::permute(v[2 * j], hi, v[2 * j + 1]);
            }
            for (unsigned int j = 0; j < R; ++j)
                v[j] = t[j];
        } else {
            __m512i const lo = alternating<W, s, false>(), hi = alternating<W, s, true>();
            riffle<R>(v, lo, hi);
            riffle<R>(v, lo, hi);
            if constexpr (R == 8)
                riffle<R>(v, lo, hi);
        }
    }
};

struct F16 : Shuffles<F16> {
    using V = __m512;
    using T = float;
    static constexpr unsigned int width = 16;
    [[gnu::always_inline]] static V load(T const* p) { return _mm512_loadu_ps(p); }
    [[gnu::always_inline]] static void store(T* p, V v) { _mm512_storeu_ps(p, v); }
    [[gnu::always_inline]] static V set1(T x) { return _mm512_set1_ps(x); }
    [[gnu::always_inline]] static V add(V a, V b) { return _mm512_add_ps(a, b); }
    [[gnu::always_inline]] static V sub(V a, V b) { return _mm512_sub_ps(a, b); }
    [[gnu::always_inline]] static V mul(V a, V b) { return _mm512_mul_ps(a, b); }
    [[gnu::always_inline]] static V fmadd(V a, V b, V c) { return _mm512_fmadd_ps(a, b, c); }
    [[gnu::always_inline]] static V fmsub(V a, V b, V c) { return _mm512_fmsub_ps(a, b, c); }
    [[gnu::always_inline]] static V fnmadd(V a, V b, V c) { return _mm512_fnmadd_ps(a, b, c); }
    [[gnu::always_inline]] static V permute(V a, __m512i x, V b) { return _mm512_permutex2var_ps(a, x, b); }

    [[gnu::always_inline]] static void deinterleave(V a, V b, V& re, V& im)
    {
        re = permute(a, everyOtherLane<16, 0>(), b);
        im = permute(a, everyOtherLane<16, 1>(), b);
    }
    [[gnu::always_inline]] static void interleave(V re, V im, V& a, V& b)
    {
        a = permute(re, alternating<16, 1, false>(), im);
        b = permute(re, alternating<16, 1, true>(), im);
    }
    [[gnu::always_inline]] static V reverse(V v) { return permute(v, reversedLanes<16>(), v); }
    // As F8::mirror.
    [[gnu::always_inline]] static V mirror(T const* p) { return permute(load(p - width), mirrorLanes<16>(), load(p)); }

};

struct D8 : Shuffles<D8> {
    using V = __m512d;
    using T = double;
    static constexpr unsigned int width = 8;
    [[gnu::always_inline]] static V load(T const* p) { return _mm512_loadu_pd(p); }
    [[gnu::always_inline]] static void store(T* p, V v) { _mm512_storeu_pd(p, v); }
    [[gnu::always_inline]] static V set1(T x) { return _mm512_set1_pd(x); }
    [[gnu::always_inline]] static V add(V a, V b) { return _mm512_add_pd(a, b); }
    [[gnu::always_inline]] static V sub(V a, V b) { return _mm512_sub_pd(a, b); }
    [[gnu::always_inline]] static V mul(V a, V b) { return _mm512_mul_pd(a, b); }
    [[gnu::always_inline]] static V fmadd(V a, V b, V c) { return _mm512_fmadd_pd(a, b, c); }
    [[gnu::always_inline]] static V fmsub(V a, V b, V c) { return _mm512_fmsub_pd(a, b, c); }
    [[gnu::always_inline]] static V fnmadd(V a, V b, V c) { return _mm512_fnmadd_pd(a, b, c); }
    [[gnu::always_inline]] static V permute(V a, __m512i x, V b) { return _mm512_permutex2var_pd(a, x, b); }

    [[gnu::always_inline]] static void deinterleave(V a, V b, V& re, V& im)
    {
        re = permute(a, everyOtherLane<8, 0>(), b);
        im = permute(a, everyOtherLane<8, 1>(), b);
    }
    [[gnu::always_inline]] static void interleave(V re, V im, V& a, V& b)
    {
        a = permute(re, alternating<8, 1, false>(), im);
        b = permute(re, alternating<8, 1, true>(), im);
    }
    [[gnu::always_inline]] static V reverse(V v) { return permute(v, reversedLanes<8>(), v); }
    // As F8::mirror.
    [[gnu::always_inline]] static V mirror(T const* p) { return mirror(p - width, p); }
    // With the register of the points before p at q.
    [[gnu::always_inline]] static V mirror(T const* q, T const* p) { return permute(load(q), mirrorLanes<8>(), load(p)); }

};

} // namespace

FftKernels<float> const fftAvx512Float = stages::kernels<F16>();
FftKernels<double> const fftAvx512Double = stages::kernels<D8>();
FftKernels<float> const fftAvx512HalfFloat = stages::kernels<F8>();
FftKernels<double> const fftAvx512HalfDouble = stages::kernels<D4>();

} // namespace Cordel::IPP::detail
