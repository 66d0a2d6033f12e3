// The portable FFT engine.

#include <Cordel/IPP/Interleave.h>
#include <Cordel/IPP/detail/FftImpl.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

namespace Cordel::IPP::detail {

namespace {

unsigned int ceilLog2(unsigned int n)
{
    unsigned int b = 0;
    while ((std::uint64_t{1} << b) < n)
        ++b;
    return b;
}

// n/2 (or count) rotations by w1, starting from (1, 0): the running product's rounding is kept on
// purpose rather than calling sine and cosine for every k.
template <typename T>
void rotationTable(aligned_vector<T>& table, unsigned int n, unsigned int first, unsigned int count)
{
    double const angle = 2.0 * std::numbers::pi / n;
    T const c = static_cast<T>(std::cos(angle));
    T const s = static_cast<T>(-std::sin(angle));
    T re = 1;
    T im = 0;
    for (unsigned int k = 0; k < first; ++k) {
        T const r = re * c - im * s;
        im = re * s + im * c;
        re = r;
    }
    table.resize(2 * std::size_t{count});
    for (unsigned int k = 0; k < count; ++k) {
        table[2 * k] = re;
        table[2 * k + 1] = im;
        T const r = re * c - im * s;
        im = re * s + im * c;
        re = r;
    }
}

// Split real and imaginary arrays to and from the interleaved form the engine works on.
template <typename T>
void interleave(unsigned int n, T const* re, T const* im, T* dst)
{
    T const* const parts[2] = {re, im};
    Interleave(2, n, parts, dst, false);
}

template <typename T>
void deinterleave(unsigned int n, T const* src, T* re, T* im)
{
    T* const parts[2] = {re, im};
    Deinterleave(2, n, src, parts, false);
}

} // namespace

template <typename T>
FftImpl<T>::FftImpl(FftMode mode, unsigned int n) : length(n), log2(ceilLog2(n))
{
    if (mode == FftMode::Complex) {
        if (n > 1) {
            CachePerms.resize(n - 1);
            unsigned int j = 0;
            for (unsigned int i = 0; i < n - 1; ++i) {
                CachePerms[i] = j;
                unsigned int k = n / 2;
                while (k >= 1 && k <= j) {
                    j -= k;
                    k /= 2;
                }
                j += k;
            }
        }
        rotationTable(twiddles, n, 0, n / 2);
    } else if (n >= 2) {
        half = std::make_unique<FftImpl>(FftMode::Complex, n / 2);
        rotationTable(twiddles, n, 1, n / 2 - 1);
    }
}

template <typename T>
void FftImpl<T>::transformInPlace(T* x) const
{
    unsigned int const n = length;
    for (unsigned int i = 0; i + 1 < n; ++i) {
        unsigned int const j = CachePerms[i];
        if (i < j) {
            std::swap(x[2 * i], x[2 * j]);
            std::swap(x[2 * i + 1], x[2 * j + 1]);
        }
    }
    for (unsigned int size = 2; size <= n; size *= 2) {
        unsigned int const halfSize = size / 2;
        unsigned int const step = n / size;
        for (unsigned int start = 0; start < n; start += size) {
            for (unsigned int j = 0; j < halfSize; ++j) {
                T const wr = twiddles[2 * j * step];
                T const wi = twiddles[2 * j * step + 1];
                T* a = x + 2 * (start + j);
                T* b = x + 2 * (start + j + halfSize);
                T const tr = wr * b[0] - wi * b[1];
                T const ti = wr * b[1] + wi * b[0];
                b[0] = a[0] - tr;
                b[1] = a[1] - ti;
                a[0] += tr;
                a[1] += ti;
            }
        }
    }
}

template <typename T>
void FftImpl<T>::ForwardComplex(T const* in, T* out)
{
    if (in != out)
        for (std::size_t j = 0; j < 2 * std::size_t{length}; ++j)
            out[j] = in[j];
    transformInPlace(out);
}

template <typename T>
void FftImpl<T>::InverseComplex(T const* in, T* out)
{
    unsigned int const n = length;
    if (n == 1) {
        out[0] = in[0];
        out[1] = in[1];
        return;
    }
    for (unsigned int j = 0; j < n; ++j) {
        out[2 * j] = in[2 * j];
        out[2 * j + 1] = -in[2 * j + 1];
    }
    transformInPlace(out);
    T const scale = T(1) / static_cast<T>(n);
    for (unsigned int j = 0; j < n; ++j) {
        out[2 * j] *= scale;
        out[2 * j + 1] *= -scale;
    }
}

template <typename T>
void FftImpl<T>::ForwardDeinterleaved(T const* re, T const* im, T* reOut, T* imOut)
{
    scratch0.resize(2 * std::size_t{length});
    interleave(length, re, im, scratch0.data());
    transformInPlace(scratch0.data());
    deinterleave(length, scratch0.data(), reOut, imOut);
}

template <typename T>
void FftImpl<T>::InverseDeinterleaved(T const* re, T const* im, T* reOut, T* imOut)
{
    scratch0.resize(2 * std::size_t{length});
    interleave(length, re, im, scratch0.data());
    InverseComplex(scratch0.data(), scratch0.data());
    deinterleave(length, scratch0.data(), reOut, imOut);
}

// x holds the n/2 complex results of the half-length transform and room for bin n/2. Bins k and
// n/2-k read each other, so they are untangled together to work in place.
template <typename T>
void FftImpl<T>::untangle(T* x) const
{
    unsigned int const m = length / 2;
    T const z0r = x[0];
    T const z0i = x[1];
    x[0] = z0r + z0i;
    x[1] = 0;
    x[2 * m] = z0r - z0i;
    x[2 * m + 1] = 0;
    auto bin = [&](unsigned int k, T zr, T zi, T cr, T ci) {
        // E = (Z[k] + conj Z[m-k])·0.5, O = (Z[k] - conj Z[m-k])·(-0.5i), X[k] = E + t_k·O
        T const er = (zr + cr) * T(0.5);
        T const ei = (zi - ci) * T(0.5);
        T const dr = zr - cr;
        T const di = zi + ci;
        T const orr = di * T(0.5);
        T const oi = dr * T(-0.5);
        T const tr = twiddles[2 * (k - 1)];
        T const ti = twiddles[2 * (k - 1) + 1];
        x[2 * k] = er + (tr * orr - ti * oi);
        x[2 * k + 1] = ei + (tr * oi + ti * orr);
    };
    for (unsigned int k = 1; k <= m / 2; ++k) {
        unsigned int const c = m - k;
        T const ar = x[2 * k], ai = x[2 * k + 1];
        T const br = x[2 * c], bi = x[2 * c + 1];
        bin(k, ar, ai, br, bi);
        if (c != k)
            bin(c, br, bi, ar, ai);
    }
}

template <typename T>
void FftImpl<T>::ForwardReal(T const* in, T* out)
{
    unsigned int const n = length;
    if (n == 1) {
        T const x0 = in[0];
        out[0] = x0;
        out[1] = 0;
        return;
    }
    if (n == 2) {
        T const x0 = in[0], x1 = in[1];
        out[0] = x0 + x1;
        out[1] = 0;
        out[2] = x0 - x1;
        out[3] = 0;
        return;
    }
    half->ForwardComplex(in, out);
    untangle(out);
}

template <typename T>
void FftImpl<T>::InverseReal(T const* in, T* out)
{
    unsigned int const n = length;
    if (n == 1) {
        out[0] = in[0];
        return;
    }
    if (n == 2) {
        T const a = in[0], b = in[2];
        out[0] = (a + b) / T(2);
        out[1] = (a - b) / T(2);
        return;
    }
    scratch0.resize(n);
    scratch1.resize(std::size_t{n} + 2);
    T* r = scratch0.data();
    T* y = scratch1.data();
    unsigned int const m = n / 2;
    // Bins 0 and n/2 are real by definition: their imaginary parts are not read.
    r[0] = in[0];
    for (unsigned int k = 1; k < m; ++k)
        r[k] = in[2 * k] + in[2 * k + 1];
    r[m] = in[2 * m];
    for (unsigned int k = m + 1; k < n; ++k)
        r[k] = in[2 * (n - k)] - in[2 * (n - k) + 1];
    ForwardReal(r, y);
    T const nn = static_cast<T>(n);
    for (unsigned int k = 0; k <= m; ++k)
        out[k] = (y[2 * k] + y[2 * k + 1]) / nn;
    for (unsigned int k = m + 1; k < n; ++k)
        out[k] = (y[2 * (n - k)] - y[2 * (n - k) + 1]) / nn;
}

template class FftImpl<float>;
template class FftImpl<double>;

} // namespace Cordel::IPP::detail
