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

// The order in-lane shuffles leave 4-byte lanes in when they split two registers of interleaved
// pairs into real and imaginary parts: each 128-bit quarter takes two points from the first
// register, then the same two from the second. Lane l holds point pairedOrder[l].
template <unsigned int W>
constexpr std::array<unsigned char, W> pairedOrder()
{
    std::array<unsigned char, W> x{};
    for (unsigned int l = 0; l < W; ++l)
        x[l] = static_cast<unsigned char>(l % 4 < 2 ? l / 4 * 2 + l % 4 : W / 2 + l / 4 * 2 + l % 4 - 2);
    return x;
}

// A permute index for sources in a paired order (`in`), for a result in it (`out`); lane l of the
// order holds point order[l].
template <unsigned int W>
constexpr Index<W> paired(Index<W> x, bool in, bool out, std::array<unsigned char, W> const& order)
{
    std::array<unsigned int, W> at{}; // the lane holding each point
    for (unsigned int l = 0; l < W; ++l)
        at[order[l]] = l;
    if (in)
        for (auto& v : x)
            v = static_cast<unsigned int>(v) < W ? at[v] : W + at[v - W];
    if (out) {
        Index<W> const y = x;
        for (unsigned int l = 0; l < W; ++l)
            x[l] = y[order[l]];
    }
    return x;
}

// The tables are made at compile time and loaded from read-only data.
template <unsigned int W, unsigned int g, bool upper>
__m512i alternating()
{
    static constexpr Index<W> x = alternate<W>(g, upper);
    return _mm512_loadu_si512(x.data());
}

template <typename Self, unsigned int g, bool upper, bool in, bool out>
__m512i alternatingPaired()
{
    constexpr unsigned int W = Self::width;
    static constexpr Index<W> x = paired<W>(alternate<W>(g, upper), in, out, Self::pairedLanes);
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

    // The halves of registers 2j and 2j + 1 paired: the lo selections to the first R/2 registers,
    // the hi ones to the last.
    template <unsigned int R, typename V>
    [[gnu::always_inline]] static void pairHalves(V* v, __m512i lo, __m512i hi)
    {
        V t[R];
        for (unsigned int j = 0; j < R / 2; ++j) {
            t[j] = Self::permute(v[2 * j], lo, v[2 * j + 1]);
            t[R / 2 + j] = Self::permute(v[2 * j], hi, v[2 * j + 1]);
        }
        for (unsigned int j = 0; j < R; ++j)
            v[j] = t[j];
    }

    // log2 R riffles of blocks of s: after them, block j of every register comes before block j + 1
    // of any, in register order. Blocks of half a register need only the halves paired. The first
    // riffle may read registers in the paired order and the last leave them in it.
    template <unsigned int R, unsigned int s, bool in = false, bool out = false, typename V>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        constexpr unsigned int W = Self::width;
        if constexpr (in || out) {
            constexpr bool one = 2 * s == W;
            __m512i const lo = alternating<W, s, false>(), hi = alternating<W, s, true>();
            __m512i const firstLo = alternatingPaired<Self, s, false, in, one && out>();
            __m512i const firstHi = alternatingPaired<Self, s, true, in, one && out>();
            if constexpr (one) {
                pairHalves<R>(v, firstLo, firstHi);
            } else {
                __m512i const lastLo = alternatingPaired<Self, s, false, false, out>();
                __m512i const lastHi = alternatingPaired<Self, s, true, false, out>();
                riffle<R>(v, firstLo, firstHi);
                if constexpr (R == 8)
                    riffle<R>(v, lo, hi);
                riffle<R>(v, lastLo, lastHi);
            }
        } else if constexpr (2 * s == W) {
            // (The immediate-operand shuffles would do, but this compiler warns about them.)
            pairHalves<R>(v, alternating<W, s, false>(), alternating<W, s, true>());
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
    static constexpr std::array<unsigned char, 16> pairedLanes = pairedOrder<16>();
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

    // The unmasked forms of these intrinsics trip this compiler's uninitialised-use warning; a
    // full mask gives the same instruction.
    static constexpr __mmask16 all = 0xFFFF;
    [[gnu::always_inline]] static V unpacklo(V a, V b) { return _mm512_mask_unpacklo_ps(a, all, a, b); }
    [[gnu::always_inline]] static V unpackhi(V a, V b) { return _mm512_mask_unpackhi_ps(a, all, a, b); }

    // Within 128-bit quarters only, which costs half what a permute across them does; the points
    // come out in the paired order.
    [[gnu::always_inline]] static void deinterleavePaired(V a, V b, V& re, V& im)
    {
        re = _mm512_mask_shuffle_ps(a, all, a, b, _MM_SHUFFLE(2, 0, 2, 0));
        im = _mm512_mask_shuffle_ps(a, all, a, b, _MM_SHUFFLE(3, 1, 3, 1));
    }
    [[gnu::always_inline]] static void interleavePaired(V re, V im, V& a, V& b)
    {
        a = unpacklo(re, im);
        b = unpackhi(re, im);
    }

    // Eight registers of one point per lane to two points of eight outputs each: one round of
    // permutes across the quarters, which also takes the paired order when `in`, then two of
    // in-lane unpacks, where the riffles would make all three rounds cross the quarters. Lane bits
    // (0..3), with q the point within the register and k the register: the first round leaves
    // (q3, q2, k2, q0) with q1 as the register bit; each unpack then takes a k into bit 0 and
    // bit 0 up to bit 1, the bit 1 it displaces going to the register.
    template <unsigned int R, unsigned int s, bool in = false, bool out = false>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        if constexpr (R == 8 && s == 1 && !out) {
            __m512i const x0 = firstRound<0, in>(), x1 = firstRound<1, in>();
            V u[4][2];
            for (unsigned int a = 0; a < 4; ++a) {
                u[a][0] = permute(v[a], x0, v[a + 4]);
                u[a][1] = permute(v[a], x1, v[a + 4]);
            }
            V w[2][2][2];
            for (unsigned int k0 = 0; k0 < 2; ++k0)
                for (unsigned int h = 0; h < 2; ++h) {
                    w[k0][h][0] = unpacklo(u[k0][h], u[k0 + 2][h]);
                    w[k0][h][1] = unpackhi(u[k0][h], u[k0 + 2][h]);
                }
            for (unsigned int h = 0; h < 2; ++h)
                for (unsigned int g = 0; g < 2; ++g) {
                    v[h + 2 * g] = unpacklo(w[0][h][g], w[1][h][g]);
                    v[h + 2 * g + 4] = unpackhi(w[0][h][g], w[1][h][g]);
                }
        } else {
            Shuffles<F16>::transpose<R, s, in, out>(v);
        }
    }

private:
    template <unsigned int h, bool in>
    static constexpr Index<16> firstRoundIndex()
    {
        Index<16> x{};
        for (unsigned int l = 0; l < 16; ++l) {
            unsigned int const q3 = l & 1, q2 = l >> 1 & 1, k2 = l >> 2 & 1, q0 = l >> 3 & 1;
            x[l] = static_cast<int>(16 * k2 + q0 + 2 * h + 4 * q2 + 8 * q3);
        }
        return paired<16>(x, in, false, pairedLanes);
    }
    template <unsigned int h, bool in>
    [[gnu::always_inline]] static __m512i firstRound()
    {
        static constexpr Index<16> x = firstRoundIndex<h, in>();
        return _mm512_loadu_si512(x.data());
    }
};

struct D8 : Shuffles<D8> {
    using V = __m512d;
    using T = double;
    static constexpr unsigned int width = 8;
    // 128 points take all 32 registers and spill a few values, which still costs less than the
    // two trips through the working buffers that the passes would make.
    static constexpr bool sixteenInRegisters = true;
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

    // The unmasked forms of these intrinsics trip this compiler's uninitialised-use warning (as
    // in F16); a full mask gives the same instruction.
    static constexpr __mmask8 all = 0xFF;
    [[gnu::always_inline]] static V unpacklo(V a, V b) { return _mm512_mask_unpacklo_pd(a, all, a, b); }
    [[gnu::always_inline]] static V unpackhi(V a, V b) { return _mm512_mask_unpackhi_pd(a, all, a, b); }
    // 128-bit quarters 0 and 2 (`odd` false) or 1 and 3 of a, then the same of b.
    template <bool odd>
    [[gnu::always_inline]] static V quarters(V a, V b)
    {
        return _mm512_mask_shuffle_f64x2(a, all, a, b, odd ? _MM_SHUFFLE(3, 1, 3, 1) : _MM_SHUFFLE(2, 0, 2, 0));
    }

    // Unpacking two registers of interleaved pairs takes one point of each per 128-bit quarter:
    // lane l holds point pairedLanes[l] of the eight.
    static constexpr std::array<unsigned char, 8> pairedLanes = {0, 4, 1, 5, 2, 6, 3, 7};
    [[gnu::always_inline]] static void deinterleavePaired(V a, V b, V& re, V& im)
    {
        re = unpacklo(a, b);
        im = unpackhi(a, b);
    }
    [[gnu::always_inline]] static void interleavePaired(V re, V im, V& a, V& b)
    {
        a = unpacklo(re, im);
        b = unpackhi(re, im);
    }

    // Register k's lane for point q to register q's lane for point k (the first pass's
    // transposition, the only one the plans of this width have), from and into the paired order
    // when asked. Each round exchanges one bit of the register number with one of the lane
    // number: an in-lane unpack for lane bit 0, then two rounds of quarter shuffles (which need
    // no index register) for bits 1 and 2, each shuffle also moving lane bit 2 down to bit 1.
    // Which register bit goes to which lane bit sets the order the points come out in, and which
    // lane bit of the source held which point bit the order they go in.
    template <unsigned int R, unsigned int s, bool in = false, bool out = false>
    [[gnu::always_inline]] static void transpose(V* v)
    {
        if constexpr (R == 8 && s == 1)
            transpose8<in, out>(v);
        else
            Shuffles<D8>::transpose<R, s, in, out>(v);
    }

private:
    template <bool in, bool out>
    [[gnu::always_inline]] static void transpose8(V* v)
    {
        // The register bits taken into lane bits 0, 1 and 2: paired, lane (l2 l1 l0) holds point
        // (l0 l2 l1) in binary.
        constexpr unsigned int kA = out ? 4 : 1, kB = out ? 1 : 2, kC = out ? 2 : 4;
        // The point bits the rounds leave in the registers: lane bit 0, then 1, then 2 of the
        // source, as the shuffles moved them.
        constexpr unsigned int qA = in ? 4 : 1, qB = in ? 1 : 2, qC = in ? 2 : 4;
        V a[2][2][2], b[2][2][2];
        for (unsigned int xb = 0; xb < 2; ++xb)
            for (unsigned int xc = 0; xc < 2; ++xc) {
                unsigned int const k = xb * kB + xc * kC;
                a[xb][xc][0] = unpacklo(v[k], v[k + kA]);
                a[xb][xc][1] = unpackhi(v[k], v[k + kA]);
            }
        for (unsigned int xc = 0; xc < 2; ++xc)
            for (unsigned int ya = 0; ya < 2; ++ya) {
                b[xc][ya][0] = quarters<false>(a[0][xc][ya], a[1][xc][ya]);
                b[xc][ya][1] = quarters<true>(a[0][xc][ya], a[1][xc][ya]);
            }
        for (unsigned int ya = 0; ya < 2; ++ya)
            for (unsigned int yb = 0; yb < 2; ++yb) {
                unsigned int const q = ya * qA + yb * qB;
                v[q] = quarters<false>(b[0][ya][yb], b[1][ya][yb]);
                v[q + qC] = quarters<true>(b[0][ya][yb], b[1][ya][yb]);
            }
    }
};

} // namespace

constinit FftKernels<float> const fftAvx512Float = stages::kernels<F16>();
constinit FftKernels<double> const fftAvx512Double = stages::kernels<D8>();
constinit FftKernels<float> const fftAvx512HalfFloat = stages::kernels<F8>();
constinit FftKernels<double> const fftAvx512HalfDouble = stages::kernels<D4>();

} // namespace Cordel::IPP::detail
