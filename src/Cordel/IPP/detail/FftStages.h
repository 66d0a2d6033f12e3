#pragma once
// The passes of the fast FFT engine and the real-transform pre/post processing, written once for
// any register type S. S provides:
//   V, T, width                          the register, the element, the lanes
//   load, store, set1, add, sub, mul     element-wise
//   fmadd(a, b, c) = a·b + c, fmsub(a, b, c) = a·b − c, fnmadd(a, b, c) = c − a·b
//   deinterleave(a, b, re, im)           2·width interleaved pairs to split
//   interleave(re, im, a, b)             and back
//   reverse(v)                           lanes in reverse order
//   transpose<R, s>(v)                   the R·width values of v[0..R−1] taken in blocks of s, block j
//                                        of each in turn (v0 j, v1 j, ..., v0 j+1, ...), s < width
// and may provide, for interleaved data moved with in-lane shuffles only:
//   pairedLanes                          lane l holds point pairedLanes[l] of the register's points
//   deinterleavePaired, interleavePaired as deinterleave and interleave, in that lane order
//   transpose<R, s, in, out>(v)          transpose, from registers in that order when `in`, into
//                                        it when `out`
// and may ask, with sixteenInRegisters, for transforms of 16 registers to be done in registers too.
// Each kernel translation unit (the portable one too) includes this with register types of its
// own, so every instantiation has internal linkage and no wide code can serve a baseline caller.
// The passes are kept out of line: inlined into the drivers, their many reader/writer
// combinations only bloat the code.

#include <Cordel/IPP/detail/FftKernels.h>

#include <bit>
#include <cstddef>
#include <utility>

namespace Cordel::IPP::detail::stages {

namespace {

// Where point j of a working buffer lives (see FftPadding).
template <typename T>
[[gnu::always_inline]] inline std::size_t padded(std::size_t j)
{
    return j + (j >> FftPadding<T>::chunkLog) * FftPadding<T>::pad;
}

} // namespace

// Reads and writes of a pass: the caller's interleaved or split arrays, or a working buffer.
enum class Layout { Interleaved, Split, Working };

template <typename S>
constexpr bool hasPairs = requires { S::pairedLanes; };

// `paired`: registers in the lane order of S::pairedLanes (read and written so by the interleaved
// layout; for a working buffer, the order a pass leaves them in).
template <typename S, Layout layout, bool swap, bool paired = false>
struct Reader {
    using T = typename S::T;
    using V = typename S::V;
    static constexpr bool inPairs = paired;
    T const* re;
    T const* im;
    [[gnu::always_inline]] void operator()(std::size_t j, V& r, V& i) const
    {
        if constexpr (layout == Layout::Interleaved && paired) {
            S::deinterleavePaired(S::load(re + 2 * j), S::load(re + 2 * j + S::width), r, i);
        } else if constexpr (layout == Layout::Interleaved) {
            S::deinterleave(S::load(re + 2 * j), S::load(re + 2 * j + S::width), r, i);
        } else if constexpr (layout == Layout::Working) {
            r = S::load(re + padded<T>(j));
            i = S::load(im + padded<T>(j));
        } else {
            r = S::load(re + j);
            i = S::load(im + j);
        }
        if constexpr (swap)
            std::swap(r, i);
    }
};

template <typename S, Layout layout, bool inverse, bool paired = false>
struct Writer {
    using T = typename S::T;
    using V = typename S::V;
    static constexpr bool working = layout == Layout::Working;
    static constexpr bool inPairs = paired;
    T* re;
    T* im;
    V scale;
    [[gnu::always_inline]] void operator()(std::size_t j, V r, V i) const
    {
        if constexpr (inverse) {
            V const t = S::mul(i, scale);
            i = S::mul(r, scale);
            r = t;
        }
        if constexpr (layout == Layout::Interleaved) {
            V a, b;
            if constexpr (paired)
                S::interleavePaired(r, i, a, b);
            else
                S::interleave(r, i, a, b);
            S::store(re + 2 * j, a);
            S::store(re + 2 * j + S::width, b);
        } else if constexpr (layout == Layout::Working) {
            S::store(re + padded<T>(j), r);
            S::store(im + padded<T>(j), i);
        } else {
            S::store(re + j, r);
            S::store(im + j, i);
        }
    }
};

// R points held in registers (each register a lane-wise set of independent transforms).
template <typename S, unsigned int R>
struct Points {
    using V = typename S::V;
    V r[R], i[R];

    [[gnu::always_inline]] void twiddle(unsigned int k, V wr, V wi)
    {
        V const t = S::fmsub(r[k], wr, S::mul(i[k], wi));
        i[k] = S::fmadd(r[k], wi, S::mul(i[k], wr));
        r[k] = t;
    }

    // The 4-point DFT of x0..x3 into the points at a, a + d, a + 2d, a + 3d.
    [[gnu::always_inline]] void dft4(V x0r, V x0i, V x1r, V x1i, V x2r, V x2i, V x3r, V x3i, unsigned int a, unsigned int d)
    {
        V const apcR = S::add(x0r, x2r), apcI = S::add(x0i, x2i);
        V const amcR = S::sub(x0r, x2r), amcI = S::sub(x0i, x2i);
        V const bpdR = S::add(x1r, x3r), bpdI = S::add(x1i, x3i);
        V const bmdR = S::sub(x1r, x3r), bmdI = S::sub(x1i, x3i);
        r[a] = S::add(apcR, bpdR);
        i[a] = S::add(apcI, bpdI);
        r[a + 2 * d] = S::sub(apcR, bpdR);
        i[a + 2 * d] = S::sub(apcI, bpdI);
        r[a + d] = S::add(amcR, bmdI);
        i[a + d] = S::sub(amcI, bmdR);
        r[a + 3 * d] = S::sub(amcR, bmdI);
        i[a + 3 * d] = S::add(amcI, bmdR);
    }

    // The R-point DFT in place, in natural order.
    [[gnu::always_inline]] void dft()
    {
        if constexpr (R == 2) {
            V const sr = S::add(r[0], r[1]), si = S::add(i[0], i[1]);
            r[1] = S::sub(r[0], r[1]);
            i[1] = S::sub(i[0], i[1]);
            r[0] = sr;
            i[0] = si;
        } else if constexpr (R == 4) {
            dft4(r[0], i[0], r[1], i[1], r[2], i[2], r[3], i[3], 0, 1);
        } else {
            static_assert(R == 8);
            // Radix-2 split: the sums give the even outputs, the differences times e^(-iπk/4) the
            // odd ones.
            using T = typename S::T;
            V const h = S::set1(T(0.70710678118654752440L));
            V const e0r = S::add(r[0], r[4]), e0i = S::add(i[0], i[4]);
            V const e1r = S::add(r[1], r[5]), e1i = S::add(i[1], i[5]);
            V const e2r = S::add(r[2], r[6]), e2i = S::add(i[2], i[6]);
            V const e3r = S::add(r[3], r[7]), e3i = S::add(i[3], i[7]);
            V const d0r = S::sub(r[0], r[4]), d0i = S::sub(i[0], i[4]);
            V const d1r = S::sub(r[1], r[5]), d1i = S::sub(i[1], i[5]);
            V const d2r = S::sub(r[2], r[6]), d2i = S::sub(i[2], i[6]);
            V const d3r = S::sub(r[3], r[7]), d3i = S::sub(i[3], i[7]);
            V const f1r = S::mul(S::add(d1r, d1i), h), f1i = S::mul(S::sub(d1i, d1r), h);
            V const f3r = S::mul(S::sub(d3i, d3r), h), f3i = S::mul(S::add(d3r, d3i), S::set1(T(-0.70710678118654752440L)));
            // d2·(−i) = (d2i, −d2r): folded into the 4-point DFT's signs by passing it as is.
            dft4(e0r, e0i, e1r, e1i, e2r, e2i, e3r, e3i, 0, 2);
            dft4(d0r, d0i, f1r, f1i, d2i, S::sub(S::set1(T(0)), d2r), f3r, f3i, 1, 2);
        }
    }
};

// The transposition of a narrow pass on both parts of its points, from and into the paired order
// as asked (only the sets with that order take the flags).
template <typename S, unsigned int R, unsigned int s, bool in, bool out>
[[gnu::always_inline]] inline void transposeParts(Points<S, R>& b)
{
    if constexpr (in || out) {
        S::template transpose<R, s, in, out>(b.r);
        S::template transpose<R, s, in, out>(b.i);
    } else {
        S::template transpose<R, s>(b.r);
        S::template transpose<R, s>(b.i);
    }
}

// A twiddled radix-R pass whose stride is at least the register width.
template <typename S, unsigned int R, typename Read, typename Write>
[[gnu::noinline]] void passWide(Read const read, Write const write, unsigned int n, FftPass<typename S::T> const& pass)
{
    using T = typename S::T;
    using V = typename S::V;
    std::size_t const part = n / R;
    std::size_t const s = pass.stride;
    T const* tw = pass.twiddles;
    for (std::size_t p = 0; p < pass.groups; ++p, tw += 2 * (R - 1)) {
        V wr[R], wi[R];
        for (unsigned int k = 1; k < R; ++k) {
            wr[k] = S::set1(tw[2 * k - 2]);
            wi[k] = S::set1(tw[2 * k - 1]);
        }
        for (std::size_t j = 0; j < s; j += S::width) {
            std::size_t const m = j + s * p;
            Points<S, R> b;
            for (unsigned int k = 0; k < R; ++k)
                read(m + k * part, b.r[k], b.i[k]);
            b.dft();
            for (unsigned int k = 1; k < R; ++k)
                b.twiddle(k, wr[k], wi[k]);
            std::size_t const o = j + R * s * p;
            for (unsigned int k = 0; k < R; ++k)
                write(o + k * s, b.r[k], b.i[k]);
        }
    }
}

// A twiddled radix-R pass of stride s narrower than a register: a register holds width/s values
// of p, whose R outputs are interleaved in blocks of s before the store.
template <typename S, unsigned int R, unsigned int s, typename Read, typename Write>
[[gnu::noinline]] void passNarrow(Read const read, Write const write, unsigned int n, FftPass<typename S::T> const& pass)
{
    using T = typename S::T;
    std::size_t const part = n / R;
    T const* tw = pass.twiddles;
    // Two steps per turn: with both in view the scheduler overlaps one step's transposition and
    // stores with the next one's loads and arithmetic, which measured 4-13 % faster on 256 to 2048
    // points (four steps gained nothing more).
    _Pragma("GCC unroll 2")
    for (std::size_t m = 0; m < part; m += S::width, tw += 2 * (R - 1) * S::width) {
        Points<S, R> b;
        for (unsigned int k = 0; k < R; ++k)
            read(m + k * part, b.r[k], b.i[k]);
        b.dft();
        for (unsigned int k = 1; k < R; ++k)
            b.twiddle(k, S::load(tw + (2 * k - 2) * S::width), S::load(tw + (2 * k - 1) * S::width));
        transposeParts<S, R, s, Read::inPairs, Write::inPairs>(b);
        for (unsigned int k = 0; k < R; ++k)
            write(R * m + k * S::width, b.r[k], b.i[k]);
    }
}

// The last pass: R-point transforms of stride n/R, no twiddles.
template <typename S, unsigned int R, typename Read, typename Write>
[[gnu::noinline]] void passLast(Read const read, Write const write, unsigned int n)
{
    std::size_t const part = n / R;
    for (std::size_t j = 0; j < part; j += S::width) {
        Points<S, R> b;
        for (unsigned int k = 0; k < R; ++k)
            read(j + k * part, b.r[k], b.i[k]);
        b.dft();
        for (unsigned int k = 0; k < R; ++k)
            write(j + k * part, b.r[k], b.i[k]);
    }
}

// Only the last pass, which has no twiddles, writes outside the working buffers.
template <typename S, unsigned int R, typename Read, typename Write>
void passOfRadix(Read const read, Write const write, unsigned int n, FftPass<typename S::T> const& p)
{
    if constexpr (!Write::working) {
        passLast<S, R>(read, write, n);
    } else if constexpr (R > 2) {
        if (p.stride >= S::width) {
            passWide<S, R>(read, write, n, p);
        } else if constexpr (S::width > 1) {
            if (p.stride == 1) {
                passNarrow<S, R, 1>(read, write, n, p);
            } else if constexpr (S::width > 4) {
                if (p.stride == 4) {
                    passNarrow<S, R, 4>(read, write, n, p);
                } else if constexpr (S::width > 8) {
                    passNarrow<S, R, 8>(read, write, n, p);
                }
            }
        }
    }
}

template <typename S, typename Read, typename Write>
void pass(Read const read, Write const write, unsigned int n, FftPass<typename S::T> const& p)
{
    if (p.radix == 8)
        passOfRadix<S, 8>(read, write, n, p);
    else if (p.radix == 4)
        passOfRadix<S, 4>(read, write, n, p);
    else
        passOfRadix<S, 2>(read, write, n, p);
}

// Transforms of Q registers per part (Q·width points) are done whole in registers: the same passes
// with the same arithmetic, but each pass hands its registers to the next instead of a store that
// the next pass's loads would have to wait for, which is most of the time at these sizes.
template <typename S, unsigned int Q, unsigned int R, unsigned int s, bool last, bool inPairs = false, bool outPairs = false>
[[gnu::always_inline]] inline void registerPass(typename S::V (&r)[Q], typename S::V (&i)[Q], typename S::T const* tw)
{
    using V = typename S::V;
    constexpr unsigned int W = S::width;
    constexpr unsigned int per = Q / R > 0 ? Q / R : 1; // registers per part of the pass
    static_assert(Q * W / R >= W, "a part is at least a register");
    V yr[Q], yi[Q];
    _Pragma("GCC unroll 16") for (unsigned int t = 0; t < per; ++t) {
        Points<S, R> b;
        _Pragma("GCC unroll 16") for (unsigned int k = 0; k < R; ++k) {
            b.r[k] = r[t + k * per];
            b.i[k] = i[t + k * per];
        }
        b.dft();
        if constexpr (last) {
            _Pragma("GCC unroll 16") for (unsigned int k = 0; k < R; ++k) {
                yr[t + k * per] = b.r[k];
                yi[t + k * per] = b.i[k];
            }
        } else if constexpr (s >= W) {
            unsigned int const p = t * W / s, j = t * W % s;
            _Pragma("GCC unroll 16") for (unsigned int k = 1; k < R; ++k)
                b.twiddle(k, S::set1(tw[p * 2 * (R - 1) + 2 * k - 2]), S::set1(tw[p * 2 * (R - 1) + 2 * k - 1]));
            _Pragma("GCC unroll 16") for (unsigned int k = 0; k < R; ++k) {
                yr[(j + R * s * p + k * s) / W] = b.r[k];
                yi[(j + R * s * p + k * s) / W] = b.i[k];
            }
        } else {
            typename S::T const* const w = tw + t * 2 * (R - 1) * W;
            _Pragma("GCC unroll 16") for (unsigned int k = 1; k < R; ++k)
                b.twiddle(k, S::load(w + (2 * k - 2) * W), S::load(w + (2 * k - 1) * W));
            transposeParts<S, R, s, inPairs, outPairs>(b);
            _Pragma("GCC unroll 16") for (unsigned int k = 0; k < R; ++k) {
                yr[R * t + k] = b.r[k];
                yi[R * t + k] = b.i[k];
            }
        }
    }
    _Pragma("GCC unroll 16") for (unsigned int q = 0; q < Q; ++q) {
        r[q] = yr[q];
        i[q] = yi[q];
    }
}

template <typename S, unsigned int Q, bool eights>
struct InRegisters {
    static constexpr unsigned int order = std::bit_width(Q * S::width) - 1;
    static constexpr Radices passes = radices(order, eights, 0);

    // Whether the plan's passes are these (the twiddles are laid out for them).
    static bool fits(FftPlan<typename S::T> const& plan)
    {
        if (plan.size != Q * S::width || plan.passCount != passes.count)
            return false;
        _Pragma("GCC unroll 16") for (unsigned int k = 0; k < passes.count; ++k)
            if (plan.passes[k].radix != passes.radix[k])
                return false;
        return true;
    }

    // The last pass that transposes (0: the first, which always does).
    static constexpr unsigned int lastNarrow = [] {
        unsigned int last = 0;
        for (unsigned int k = 0, s = 1; k + 1 < passes.count; s *= passes.radix[k], ++k)
            if (s < S::width)
                last = k;
        return last;
    }();

    // With paired reads, the first pass takes the twiddles in the paired order and its
    // transposition puts the points in place; with paired writes, the last transposing pass
    // leaves them in the paired order (as in the passes over memory).
    template <unsigned int k = 0, unsigned int stride = 1, bool inPairs = false, bool outPairs = false>
    [[gnu::always_inline]] static void from(FftPlan<typename S::T> const& plan, typename S::V (&r)[Q], typename S::V (&i)[Q])
    {
        if constexpr (k < passes.count) {
            constexpr unsigned int R = passes.radix[k];
            constexpr bool in = inPairs && k == 0, out = outPairs && k == lastNarrow;
            registerPass<S, Q, R, stride, k + 1 == passes.count, in, out>(r, i, in ? plan.pairedTwiddles : plan.passes[k].twiddles);
            from<k + 1, stride * R, inPairs, outPairs>(plan, r, i);
        }
    }

    template <typename Read, typename Write>
    [[gnu::noinline]] static void run(FftPlan<typename S::T> const& plan, Read const read, Write const write)
    {
        typename S::V r[Q], i[Q];
        static_assert(!Write::inPairs || lastNarrow + 1 < passes.count, "a transposing pass leaves the paired order");
        _Pragma("GCC unroll 16") for (unsigned int q = 0; q < Q; ++q)
            read(q * S::width, r[q], i[q]);
        from<0, 1, Read::inPairs, Write::inPairs>(plan, r, i);
        _Pragma("GCC unroll 16") for (unsigned int q = 0; q < Q; ++q)
            write(q * S::width, r[q], i[q]);
    }
};

// Runs the plan in registers when it is one of those transforms.
template <typename S, typename Read, typename Write>
bool runInRegisters(FftPlan<typename S::T> const& plan, Read const read, Write const write)
{
    if constexpr (S::width > 1) {
        if (InRegisters<S, 4, false>::fits(plan)) {
            InRegisters<S, 4, false>::run(plan, read, write);
            return true;
        }
        if (InRegisters<S, 8, true>::fits(plan)) {
            InRegisters<S, 8, true>::run(plan, read, write);
            return true;
        }
        if (InRegisters<S, 8, false>::fits(plan)) {
            InRegisters<S, 8, false>::run(plan, read, write);
            return true;
        }
        if constexpr (requires { S::sixteenInRegisters; }) {
            if (InRegisters<S, 16, true>::fits(plan)) {
                InRegisters<S, 16, true>::run(plan, read, write);
                return true;
            }
        }
    }
    return false;
}

template <typename S, bool inInterleaved, bool outInterleaved, bool inverse>
void runWith(FftPlan<typename S::T> const& plan, typename S::T const* inRe, typename S::T const* inIm,
             typename S::T* outRe, typename S::T* outIm, typename S::T scale)
{
    using Split = Reader<S, Layout::Working, false>;
    using Store = Writer<S, Layout::Working, false>;
    constexpr Layout in = inInterleaved ? Layout::Interleaved : Layout::Split;
    constexpr Layout out = outInterleaved ? Layout::Interleaved : Layout::Split;
    Reader<S, in, inverse> const first{inRe, inIm};
    Writer<S, out, inverse> const last{outRe, outIm, S::set1(scale)};
    unsigned int const n = plan.size;
    unsigned int const count = plan.passCount;
    if constexpr (hasPairs<S> && (inInterleaved || outInterleaved)) {
        // Interleaved data read and written with in-lane shuffles only, in the paired lane order:
        // the first pass takes its twiddles in that order and its transposition puts the points
        // back in place; the last transposing pass leaves them in that order for the last pass,
        // the ones between being indifferent to it.
        unsigned int lastNarrow = 0;
        while (lastNarrow + 1 < count && plan.passes[lastNarrow + 1].stride < S::width)
            ++lastNarrow;
        bool const pairedIn = inInterleaved && plan.pairedTwiddles != nullptr;
        bool const pairedOut = outInterleaved && lastNarrow + 1 < count;
        if (pairedIn || pairedOut) {
            Reader<S, in, inverse, true> const firstPaired{inRe, inIm};
            Writer<S, out, inverse, true> const lastPaired{outRe, outIm, S::set1(scale)};
            if constexpr (inInterleaved && outInterleaved) {
                if (pairedIn && pairedOut && runInRegisters<S>(plan, firstPaired, lastPaired))
                    return;
            }
            if constexpr (inInterleaved) {
                if (pairedIn && !pairedOut && runInRegisters<S>(plan, firstPaired, last))
                    return;
            }
            if constexpr (outInterleaved) {
                if (!pairedIn && pairedOut && runInRegisters<S>(plan, first, lastPaired))
                    return;
            }
            for (unsigned int k = 0; k < count; ++k) {
                FftPass<typename S::T> p = plan.passes[k];
                Split const from{plan.re[(k + 1) % 2], plan.im[(k + 1) % 2]};
                Store const to{plan.re[k % 2], plan.im[k % 2], S::set1(1)};
                Writer<S, Layout::Working, false, true> const toPaired{to.re, to.im, to.scale};
                if (k == 0) {
                    // The first pass may also be the last that transposes.
                    auto const firstPass = [&](auto const& read) {
                        if (pairedOut && lastNarrow == 0)
                            pass<S>(read, toPaired, n, p);
                        else
                            pass<S>(read, to, n, p);
                    };
                    if constexpr (inInterleaved) {
                        if (pairedIn) {
                            p.twiddles = plan.pairedTwiddles;
                            firstPass(firstPaired);
                            continue;
                        }
                    }
                    firstPass(first);
                } else if (k + 1 == count) {
                    if constexpr (outInterleaved) {
                        if (pairedOut) {
                            pass<S>(from, lastPaired, n, p);
                            continue;
                        }
                    }
                    pass<S>(from, last, n, p);
                } else if (k == lastNarrow && pairedOut) {
                    if constexpr (outInterleaved)
                        pass<S>(from, toPaired, n, p);
                } else {
                    pass<S>(from, to, n, p);
                }
            }
            return;
        }
    }
    if (runInRegisters<S>(plan, first, last))
        return;
    for (unsigned int k = 0; k < count; ++k) {
        FftPass<typename S::T> const& p = plan.passes[k];
        Split const from{plan.re[(k + 1) % 2], plan.im[(k + 1) % 2]};
        Store const to{plan.re[k % 2], plan.im[k % 2], S::set1(1)};
        if (k == 0 && k + 1 == count)
            pass<S>(first, last, n, p);
        else if (k == 0)
            pass<S>(first, to, n, p);
        else if (k + 1 == count)
            pass<S>(from, last, n, p);
        else
            pass<S>(from, to, n, p);
    }
}

template <typename S>
void run(FftPlan<typename S::T> const& plan, typename S::T const* inRe, typename S::T const* inIm,
         typename S::T* outRe, typename S::T* outIm, unsigned int flags, typename S::T scale)
{
    switch (flags) {
    case 0: return runWith<S, false, false, false>(plan, inRe, inIm, outRe, outIm, scale);
    case 1: return runWith<S, true, false, false>(plan, inRe, inIm, outRe, outIm, scale);
    case 2: return runWith<S, false, true, false>(plan, inRe, inIm, outRe, outIm, scale);
    case 3: return runWith<S, true, true, false>(plan, inRe, inIm, outRe, outIm, scale);
    case 4: return runWith<S, false, false, true>(plan, inRe, inIm, outRe, outIm, scale);
    case 5: return runWith<S, true, false, true>(plan, inRe, inIm, outRe, outIm, scale);
    case 6: return runWith<S, false, true, true>(plan, inRe, inIm, outRe, outIm, scale);
    default: return runWith<S, true, true, true>(plan, inRe, inIm, outRe, outIm, scale);
    }
}

// The register of p[0], p[−1], ..., p[−width+1]. p may be one past the end of a working buffer's
// points (what it reads there is not used): the buffers have room after their points.
template <typename S>
[[gnu::always_inline]] inline typename S::V mirrored(typename S::T const* p)
{
    if constexpr (requires { S::mirror(p); })
        return S::mirror(p);
    else
        return S::reverse(S::load(p - (S::width - 1)));
}

// The register of X[k .. k+width−1] from Z[k ..] = (zr, zi) and Z[m−k], Z[m−k−1], ... = (cr, ci),
// written interleaved at `out`. With conj Z[m−k] = (cr, −ci).
template <typename S>
[[gnu::always_inline]] inline void untangled(typename S::V zr, typename S::V zi, typename S::V cr, typename S::V ci,
                                             typename S::V half, typename S::T const* tRe, typename S::T const* tIm,
                                             typename S::T* out)
{
    using V = typename S::V;
    V const er = S::mul(S::add(zr, cr), half), ei = S::mul(S::sub(zi, ci), half);
    V const orr = S::mul(S::add(zi, ci), half), oi = S::mul(S::sub(cr, zr), half);
    V const tr = S::load(tRe), ti = S::load(tIm);
    V const xr = S::fmadd(tr, orr, S::fnmadd(ti, oi, er));
    V const xi = S::fmadd(tr, oi, S::fmadd(ti, orr, ei));
    V a, b;
    S::interleave(xr, xi, a, b);
    S::store(out, a);
    S::store(out + S::width, b);
}

// X[k] = E + t_k·O with E = (Z[k] + conj Z[m−k])/2 and O = (Z[k] − conj Z[m−k])/(2i); a register
// takes k .. k+width−1 and the mirrored m−k .. m−k−width+1 in reverse order.
template <typename S>
void untangle(unsigned int m, typename S::T const* zRe, typename S::T const* zIm, typename S::T const* tRe,
              typename S::T const* tIm, typename S::T* out)
{
    using T = typename S::T;
    using V = typename S::V;
    T const z0r = zRe[0], z0i = zIm[0];
    V const half = S::set1(T(0.5));
    std::size_t k = 1;
    // Whole registers from k = 0 keep the loads and stores on register boundaries; point 0, whose
    // mirror is the point m that Z lacks, is written again below.
    bool const whole = S::width > 1 && m % S::width == 0;
    // Otherwise the last register is moved back to end at m − 1; the points it takes twice come
    // out the same.
    for (std::size_t next = whole ? 0 : 1; (whole || m > S::width) && next < m; next += S::width) {
        k = whole || next + S::width <= m ? next : m - S::width;
        V const zr = S::load(zRe + k), zi = S::load(zIm + k);
        V const cr = mirrored<S>(zRe + (m - k)), ci = mirrored<S>(zIm + (m - k));
        untangled<S>(zr, zi, cr, ci, half, tRe + k, tIm + k, out + 2 * k);
        k = m;
    }
    for (; k < m; ++k) {
        T const zr = zRe[k], zi = zIm[k];
        T const cr = zRe[m - k], ci = zIm[m - k];
        T const er = (zr + cr) * T(0.5), ei = (zi - ci) * T(0.5);
        T const orr = (zi + ci) * T(0.5), oi = (cr - zr) * T(0.5);
        out[2 * k] = er + tRe[k] * orr - tIm[k] * oi;
        out[2 * k + 1] = ei + tRe[k] * oi + tIm[k] * orr;
    }
    out[0] = z0r + z0i;
    out[1] = 0;
    out[2 * m] = z0r - z0i;
    out[2 * m + 1] = 0;
}

// The mirror of untangle: E and O from X[k] and conj X[m−k], Z = E + i·O (without the halves,
// which the 1/n of the inverse takes care of).
template <typename S>
void tangle(unsigned int m, typename S::T const* in, typename S::T const* tRe, typename S::T const* tIm,
            typename S::T* zRe, typename S::T* zIm)
{
    using T = typename S::T;
    using V = typename S::V;
    // Bins 0 and m are real by definition: their imaginary parts are not read.
    T const x0 = in[0], xm = in[2 * std::size_t{m}];
    std::size_t k = 1;
    // As in untangle: whole registers from k = 0 when they fit (point 0 is written again below).
    bool const whole = S::width > 1 && m % S::width == 0;
    for (std::size_t next = whole ? 0 : 1; (whole || m > S::width) && next < m; next += S::width) {
        k = whole || next + S::width <= m ? next : m - S::width;
        std::size_t const mirror = m - k - (S::width - 1);
        V xr, xi, cr, ci;
        S::deinterleave(S::load(in + 2 * k), S::load(in + 2 * k + S::width), xr, xi);
        S::deinterleave(S::load(in + 2 * mirror), S::load(in + 2 * mirror + S::width), cr, ci);
        cr = S::reverse(cr);
        ci = S::reverse(ci); // conj X[m−k] = (cr, −ci)
        V const er = S::add(xr, cr), ei = S::sub(xi, ci);
        V const dr = S::sub(xr, cr), di = S::add(xi, ci);
        // O = D·conj(t)
        V const tr = S::load(tRe + k), ti = S::load(tIm + k);
        V const orr = S::fmadd(dr, tr, S::mul(di, ti));
        V const oi = S::fnmadd(dr, ti, S::mul(di, tr));
        S::store(zRe + k, S::sub(er, oi));
        S::store(zIm + k, S::add(ei, orr));
        k = m;
    }
    for (; k < m; ++k) {
        T const xr = in[2 * k], xi = in[2 * k + 1];
        T const cr = in[2 * (m - k)], ci = in[2 * (m - k) + 1];
        T const er = xr + cr, ei = xi - ci;
        T const dr = xr - cr, di = xi + ci;
        T const orr = dr * tRe[k] + di * tIm[k];
        T const oi = di * tRe[k] - dr * tIm[k];
        zRe[k] = er - oi;
        zIm[k] = ei + orr;
    }
    zRe[0] = x0 + xm;
    zIm[0] = x0 - xm;
}

// The last pass of a real forward's half transform, with the untangling done on its registers
// instead of on what it would store. A step takes the columns j .. j+width−1 of the pass and the
// mirrored columns part−j, part−j−1, ...: X at j + k·part needs Z at m − j − k·part, which is the
// mirrored register of part R−1−k. The mirrored DFT is the same lane-wise arithmetic on other
// lanes, so every value comes out as the separate pass and untangling make it. S::mirror(q, p)
// is the register p[0], q[width−1], ..., q[1]: the mirrored one ending at p, with the register of
// the points before p at q (the padding may lie between them).
template <typename S, unsigned int R>
[[gnu::noinline]] void lastPassUntangled(typename S::T const* zRe, typename S::T const* zIm, unsigned int m,
                                         typename S::T const* tRe, typename S::T const* tIm, typename S::T* out)
{
    using T = typename S::T;
    using V = typename S::V;
    constexpr unsigned int W = S::width;
    std::size_t const part = m / R;
    V const half = S::set1(T(0.5));
    T z0r = 0, z0i = 0;
    for (std::size_t j = 0; j < part; j += W) {
        Points<S, R> a, b;
        for (unsigned int k = 0; k < R; ++k) {
            std::size_t const at = (k + 1) * part - j;
            a.r[k] = S::load(zRe + padded<T>(j + k * part));
            a.i[k] = S::load(zIm + padded<T>(j + k * part));
            b.r[k] = S::mirror(zRe + padded<T>(at - W), zRe + padded<T>(at));
            b.i[k] = S::mirror(zIm + padded<T>(at - W), zIm + padded<T>(at));
        }
        a.dft();
        b.dft();
        if (j == 0) {
            // The first mirrored lane is column `part`, one past the pass's columns: the point it
            // stands for, Z[(q+1)·part], is the first lane of the next part. Z[m] (of the last
            // part) does not exist; it only reaches X[0], which is written again below.
            alignas(64) T lane[2][W];
            for (unsigned int q = 0; q + 1 < R; ++q) {
                S::store(lane[0], a.r[q + 1]);
                S::store(lane[1], b.r[q]);
                lane[1][0] = lane[0][0];
                b.r[q] = S::load(lane[1]);
                S::store(lane[0], a.i[q + 1]);
                S::store(lane[1], b.i[q]);
                lane[1][0] = lane[0][0];
                b.i[q] = S::load(lane[1]);
            }
            S::store(lane[0], a.r[0]);
            S::store(lane[1], a.i[0]);
            z0r = lane[0][0];
            z0i = lane[1][0];
        }
        for (unsigned int k = 0; k < R; ++k) {
            std::size_t const x = j + k * part;
            untangled<S>(a.r[k], a.i[k], b.r[R - 1 - k], b.i[R - 1 - k], half, tRe + x, tIm + x, out + 2 * x);
        }
    }
    out[0] = z0r + z0i;
    out[1] = 0;
    out[2 * std::size_t{m}] = z0r - z0i;
    out[2 * std::size_t{m} + 1] = 0;
}

// The whole real forward: the half transform's passes but the last, then the last with the
// untangling. Transforms in registers, of one pass, of parts narrower than a register, or ending
// in a radix-8 pass keep the separate untangling.
template <typename S, typename Read>
void forwardRealFrom(FftPlan<typename S::T> const& plan, Read const first, typename S::T const* tRe,
                     typename S::T const* tIm, typename S::T* out)
{
    using T = typename S::T;
    unsigned int const m = plan.size;
    unsigned int const count = plan.passCount;
    unsigned int const radix = plan.passes[count - 1].radix;
    Writer<S, Layout::Split, false> const last{plan.re[0], plan.im[0], S::set1(T(1))};
    if (runInRegisters<S>(plan, first, last)) {
        untangle<S>(m, plan.re[0], plan.im[0], tRe, tIm, out);
        return;
    }
    // Two radix-8 transforms at once would not fit the registers.
    if (count < 2 || m / radix < S::width || radix == 8) {
        // Into the buffer the last pass does not read.
        T* const zRe = plan.re[(count + 1) % 2];
        T* const zIm = plan.im[(count + 1) % 2];
        run<S>(plan, first.re, nullptr, zRe, zIm, fftInInterleaved, T(1));
        untangle<S>(m, zRe, zIm, tRe, tIm, out);
        return;
    }
    using Split = Reader<S, Layout::Working, false>;
    using Store = Writer<S, Layout::Working, false>;
    for (unsigned int k = 0; k + 1 < count; ++k) {
        Split const from{plan.re[(k + 1) % 2], plan.im[(k + 1) % 2]};
        Store const to{plan.re[k % 2], plan.im[k % 2], S::set1(T(1))};
        if (k == 0) {
            FftPass<T> p = plan.passes[0];
            if constexpr (Read::inPairs)
                p.twiddles = plan.pairedTwiddles;
            pass<S>(first, to, m, p);
        } else {
            pass<S>(from, to, m, plan.passes[k]);
        }
    }
    T const* const zRe = plan.re[count % 2];
    T const* const zIm = plan.im[count % 2];
    if (radix == 4)
        lastPassUntangled<S, 4>(zRe, zIm, m, tRe, tIm, out);
    else
        lastPassUntangled<S, 2>(zRe, zIm, m, tRe, tIm, out);
}

// The samples are read as pairs in the paired lane order when the set has one (as run does).
template <typename S>
void forwardReal(FftPlan<typename S::T> const& plan, typename S::T const* in, typename S::T const* tRe,
                 typename S::T const* tIm, typename S::T* out)
{
    if constexpr (hasPairs<S>) {
        if (plan.pairedTwiddles != nullptr)
            return forwardRealFrom<S>(plan, Reader<S, Layout::Interleaved, false, true>{in, nullptr}, tRe, tIm, out);
    }
    forwardRealFrom<S>(plan, Reader<S, Layout::Interleaved, false>{in, nullptr}, tRe, tIm, out);
}

template <typename S>
constexpr FftKernels<typename S::T> kernels()
{
    constexpr bool fused = requires(typename S::T const* p) { S::mirror(p, p); };
    using T = typename S::T;
    void (*real)(FftPlan<T> const&, T const*, T const*, T const*, T*) = nullptr;
    if constexpr (fused)
        real = forwardReal<S>;
    unsigned char const* lanes = nullptr;
    if constexpr (hasPairs<S>)
        lanes = S::pairedLanes.data();
    return {S::width, run<S>, untangle<S>, tangle<S>, real, lanes};
}

} // namespace Cordel::IPP::detail::stages
