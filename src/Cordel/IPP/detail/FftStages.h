#pragma once
// The passes of the fast FFT engine and the real-transform pre/post processing, written once for
// any register type S. S provides:
//   V, T, width                          the register, the element, the lanes
//   load, store, set1, add, sub, mul     element-wise
//   fmadd(a, b, c) = a·b + c, fmsub(a, b, c) = a·b − c, fnmadd(a, b, c) = c − a·b
//   deinterleave(a, b, re, im)           2·width interleaved pairs to split
//   interleave(re, im, a, b)             and back
//   reverse(v)                           lanes in reverse order
//   interleave4<s>(v0, v1, v2, v3)       the 4·width values v0..v3 taken in blocks of s, block j of
//                                        each in turn (v0 j, v1 j, v2 j, v3 j, v0 j+1, ...), s < width
// Only the kernel translation units include this, each with register types of its own, so every
// instantiation has internal linkage and no wide code can serve a baseline caller.

#include <Cordel/IPP/detail/FftKernels.h>

#include <cstddef>
#include <utility>

namespace Cordel::IPP::detail::stages {

template <typename S, bool interleaved, bool swap>
struct Reader {
    using T = typename S::T;
    using V = typename S::V;
    T const* re;
    T const* im;
    void operator()(std::size_t j, V& r, V& i) const
    {
        if constexpr (interleaved) {
            S::deinterleave(S::load(re + 2 * j), S::load(re + 2 * j + S::width), r, i);
        } else {
            r = S::load(re + j);
            i = S::load(im + j);
        }
        if constexpr (swap)
            std::swap(r, i);
    }
};

template <typename S, bool interleaved, bool inverse>
struct Writer {
    using T = typename S::T;
    using V = typename S::V;
    T* re;
    T* im;
    V scale;
    void operator()(std::size_t j, V r, V i) const
    {
        if constexpr (inverse) {
            V const t = S::mul(i, scale);
            i = S::mul(r, scale);
            r = t;
        }
        if constexpr (interleaved) {
            V a, b;
            S::interleave(r, i, a, b);
            S::store(re + 2 * j, a);
            S::store(re + 2 * j + S::width, b);
        } else {
            S::store(re + j, r);
            S::store(im + j, i);
        }
    }
};

template <typename S>
struct Radix4 {
    using V = typename S::V;
    V r[4], i[4];

    // The 4-point DFT of a0..a3 in place of them.
    void butterfly()
    {
        V const apcR = S::add(r[0], r[2]), apcI = S::add(i[0], i[2]);
        V const amcR = S::sub(r[0], r[2]), amcI = S::sub(i[0], i[2]);
        V const bpdR = S::add(r[1], r[3]), bpdI = S::add(i[1], i[3]);
        V const bmdR = S::sub(r[1], r[3]), bmdI = S::sub(i[1], i[3]);
        r[0] = S::add(apcR, bpdR);
        i[0] = S::add(apcI, bpdI);
        r[2] = S::sub(apcR, bpdR);
        i[2] = S::sub(apcI, bpdI);
        r[1] = S::add(amcR, bmdI);
        i[1] = S::sub(amcI, bmdR);
        r[3] = S::sub(amcR, bmdI);
        i[3] = S::add(amcI, bmdR);
    }

    void twiddle(int k, V wr, V wi)
    {
        V const t = S::fmsub(r[k], wr, S::mul(i[k], wi));
        i[k] = S::fmadd(r[k], wi, S::mul(i[k], wr));
        r[k] = t;
    }
};

// A twiddled radix-4 pass whose stride is at least the register width.
template <typename S, typename Read, typename Write>
void passWide(Read const& read, Write const& write, unsigned int n, FftPass<typename S::T> const& pass)
{
    using T = typename S::T;
    std::size_t const quarter = n / 4;
    std::size_t const s = pass.stride;
    std::size_t const count = pass.count;
    T const* tw = pass.twiddles;
    for (std::size_t p = 0; p < pass.quarter; ++p) {
        auto const w1r = S::set1(tw[p]), w1i = S::set1(tw[count + p]);
        auto const w2r = S::set1(tw[2 * count + p]), w2i = S::set1(tw[3 * count + p]);
        auto const w3r = S::set1(tw[4 * count + p]), w3i = S::set1(tw[5 * count + p]);
        for (std::size_t j = 0; j < s; j += S::width) {
            std::size_t const m = j + s * p;
            Radix4<S> b;
            for (int k = 0; k < 4; ++k)
                read(m + k * quarter, b.r[k], b.i[k]);
            b.butterfly();
            b.twiddle(1, w1r, w1i);
            b.twiddle(2, w2r, w2i);
            b.twiddle(3, w3r, w3i);
            std::size_t const o = j + 4 * s * p;
            for (int k = 0; k < 4; ++k)
                write(o + k * s, b.r[k], b.i[k]);
        }
    }
}

// A twiddled radix-4 pass of stride s narrower than a register: a register holds width/s values
// of p, whose four outputs are interleaved in blocks of s before the store.
template <typename S, unsigned int s, typename Read, typename Write>
void passNarrow(Read const& read, Write const& write, unsigned int n, FftPass<typename S::T> const& pass)
{
    using T = typename S::T;
    std::size_t const quarter = n / 4;
    T const* tw = pass.twiddles;
    for (std::size_t m = 0; m < quarter; m += S::width) {
        Radix4<S> b;
        for (int k = 0; k < 4; ++k)
            read(m + k * quarter, b.r[k], b.i[k]);
        b.butterfly();
        b.twiddle(1, S::load(tw + m), S::load(tw + quarter + m));
        b.twiddle(2, S::load(tw + 2 * quarter + m), S::load(tw + 3 * quarter + m));
        b.twiddle(3, S::load(tw + 4 * quarter + m), S::load(tw + 5 * quarter + m));
        S::template interleave4<s>(b.r[0], b.r[1], b.r[2], b.r[3]);
        S::template interleave4<s>(b.i[0], b.i[1], b.i[2], b.i[3]);
        for (int k = 0; k < 4; ++k)
            write(4 * m + k * S::width, b.r[k], b.i[k]);
    }
}

// The last pass: 4-point (or 2-point) transforms of stride n/4 (n/2), no twiddles.
template <typename S, typename Read, typename Write>
void passLast4(Read const& read, Write const& write, unsigned int n)
{
    std::size_t const quarter = n / 4;
    for (std::size_t j = 0; j < quarter; j += S::width) {
        Radix4<S> b;
        for (int k = 0; k < 4; ++k)
            read(j + k * quarter, b.r[k], b.i[k]);
        b.butterfly();
        for (int k = 0; k < 4; ++k)
            write(j + k * quarter, b.r[k], b.i[k]);
    }
}

template <typename S, typename Read, typename Write>
void passLast2(Read const& read, Write const& write, unsigned int n)
{
    using V = typename S::V;
    std::size_t const half = n / 2;
    for (std::size_t j = 0; j < half; j += S::width) {
        V ar, ai, br, bi;
        read(j, ar, ai);
        read(j + half, br, bi);
        write(j, S::add(ar, br), S::add(ai, bi));
        write(j + half, S::sub(ar, br), S::sub(ai, bi));
    }
}

template <typename S, typename Read, typename Write>
void pass(Read const& read, Write const& write, unsigned int n, FftPass<typename S::T> const& p)
{
    if (p.twiddles == nullptr) {
        if (p.radix == 2)
            passLast2<S>(read, write, n);
        else
            passLast4<S>(read, write, n);
    } else if (p.stride >= S::width) {
        passWide<S>(read, write, n, p);
    } else if constexpr (S::width > 1) {
        if (p.stride == 1)
            passNarrow<S, 1>(read, write, n, p);
        else if constexpr (S::width > 4)
            passNarrow<S, 4>(read, write, n, p);
    }
}

template <typename S, bool inInterleaved, bool outInterleaved, bool inverse>
void runWith(FftPlan<typename S::T> const& plan, typename S::T const* inRe, typename S::T const* inIm,
             typename S::T* outRe, typename S::T* outIm, typename S::T scale)
{
    using Split = Reader<S, false, false>;
    using Store = Writer<S, false, false>;
    Reader<S, inInterleaved, inverse> const first{inRe, inIm};
    Writer<S, outInterleaved, inverse> const last{outRe, outIm, S::set1(scale)};
    unsigned int const n = plan.size;
    unsigned int const count = plan.passCount;
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
    for (; k + S::width <= m; k += S::width) {
        std::size_t const mirror = m - k - (S::width - 1);
        V const zr = S::load(zRe + k), zi = S::load(zIm + k);
        V const cr = S::reverse(S::load(zRe + mirror)), ci = S::reverse(S::load(zIm + mirror));
        // With conj Z[m−k] = (cr, −ci).
        V const er = S::mul(S::add(zr, cr), half), ei = S::mul(S::sub(zi, ci), half);
        V const orr = S::mul(S::add(zi, ci), half), oi = S::mul(S::sub(cr, zr), half);
        V const tr = S::load(tRe + k), ti = S::load(tIm + k);
        V const xr = S::fmadd(tr, orr, S::fnmadd(ti, oi, er));
        V const xi = S::fmadd(tr, oi, S::fmadd(ti, orr, ei));
        V a, b;
        S::interleave(xr, xi, a, b);
        S::store(out + 2 * k, a);
        S::store(out + 2 * k + S::width, b);
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
    for (; k + S::width <= m; k += S::width) {
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

template <typename S>
constexpr FftKernels<typename S::T> kernels()
{
    return {S::width, run<S>, untangle<S>, tangle<S>};
}

} // namespace Cordel::IPP::detail::stages
