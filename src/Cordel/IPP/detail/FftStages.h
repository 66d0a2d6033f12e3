#pragma once
// The radix-2 and radix-4 decimation-in-frequency stages, written once for any register type S
// (S::V the register, S::T the element, S::width the lanes, and load/store/add/sub/mul/fmadd/fmsub).
// Only the SIMD translation units include this, each with register types of its own.

namespace Cordel::IPP::detail {

// (ur + i·ui)·(wr + i·wi), stored.
template <typename S>
inline void storeProduct(typename S::T* re, typename S::T* im, typename S::V ur, typename S::V ui,
                         typename S::V wr, typename S::V wi)
{
    S::store(re, S::fmsub(ur, wr, S::mul(ui, wi)));
    S::store(im, S::fmadd(ur, wi, S::mul(ui, wr)));
}

template <typename S>
void radix2(typename S::T* re, typename S::T* im, unsigned int n, unsigned int h, typename S::T const* tw)
{
    using V = typename S::V;
    for (unsigned int b = 0; b < n; b += 2 * h) {
        auto* r0 = re + b;
        auto* i0 = im + b;
        auto* r1 = r0 + h;
        auto* i1 = i0 + h;
        for (unsigned int j = 0; j < h; j += S::width) {
            V const ar = S::load(r0 + j), ai = S::load(i0 + j);
            V const cr = S::load(r1 + j), ci = S::load(i1 + j);
            S::store(r0 + j, S::add(ar, cr));
            S::store(i0 + j, S::add(ai, ci));
            storeProduct<S>(r1 + j, i1 + j, S::sub(ar, cr), S::sub(ai, ci), S::load(tw + j), S::load(tw + h + j));
        }
    }
}

template <typename S>
void radix4(typename S::T* re, typename S::T* im, unsigned int n, unsigned int q, typename S::T const* tw)
{
    using V = typename S::V;
    auto const* w1r = tw;
    auto const* w1i = tw + q;
    auto const* w2r = tw + 2 * q;
    auto const* w2i = tw + 3 * q;
    auto const* w3r = tw + 4 * q;
    auto const* w3i = tw + 5 * q;
    for (unsigned int b = 0; b < n; b += 4 * q) {
        auto* r = re + b;
        auto* i = im + b;
        for (unsigned int j = 0; j < q; j += S::width) {
            V const a0r = S::load(r + j), a0i = S::load(i + j);
            V const a1r = S::load(r + q + j), a1i = S::load(i + q + j);
            V const a2r = S::load(r + 2 * q + j), a2i = S::load(i + 2 * q + j);
            V const a3r = S::load(r + 3 * q + j), a3i = S::load(i + 3 * q + j);
            V const t0r = S::add(a0r, a2r), t0i = S::add(a0i, a2i);
            V const t1r = S::sub(a0r, a2r), t1i = S::sub(a0i, a2i);
            V const t2r = S::add(a1r, a3r), t2i = S::add(a1i, a3i);
            V const t3r = S::sub(a1r, a3r), t3i = S::sub(a1i, a3i);
            S::store(r + j, S::add(t0r, t2r));
            S::store(i + j, S::add(t0i, t2i));
            storeProduct<S>(r + q + j, i + q + j, S::sub(t0r, t2r), S::sub(t0i, t2i), S::load(w2r + j),
                            S::load(w2i + j));
            storeProduct<S>(r + 2 * q + j, i + 2 * q + j, S::add(t1r, t3i), S::sub(t1i, t3r), S::load(w1r + j),
                            S::load(w1i + j));
            storeProduct<S>(r + 3 * q + j, i + 3 * q + j, S::sub(t1r, t3i), S::add(t1i, t3r), S::load(w3r + j),
                            S::load(w3i + j));
        }
    }
}

} // namespace Cordel::IPP::detail
