// The fast FFT engine: plans, the drivers around the stages, and the choice of kernels.

#include <Cordel/IPP/detail/FftFast.h>
#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftStages.h>

#include <cmath>
#include <numbers>

namespace Cordel::IPP::detail {

namespace {

template <typename E>
struct Scalar {
    using V = E;
    using T = E;
    static constexpr unsigned int width = 1;
    static V load(T const* p) { return *p; }
    static void store(T* p, V v) { *p = v; }
    static V add(V a, V b) { return a + b; }
    static V sub(V a, V b) { return a - b; }
    static V mul(V a, V b) { return a * b; }
    static V fmadd(V a, V b, V c) { return a * b + c; }
    static V fmsub(V a, V b, V c) { return a * b - c; }
};

template <typename T>
void deinterleavePortable(unsigned int n, T const* src, T* re, T* im)
{
    for (unsigned int j = 0; j < n; ++j) {
        re[j] = src[2 * j];
        im[j] = src[2 * j + 1];
    }
}

template <typename T>
FftKernels<T> portableKernels()
{
    return {deinterleavePortable<T>, radix2<Scalar<T>>, radix4<Scalar<T>>, nullptr, 0, nullptr, 0};
}

bool hasAvx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

bool hasAvx512()
{
    return hasAvx2() && __builtin_cpu_supports("avx512f");
}

template <typename T>
FftKernels<T> chooseKernels()
{
    if (!hasAvx2())
        return portableKernels<T>();
    FftKernels<T> k{deinterleaveAvx2, radix2Avx2, radix4Avx2, tailAvx2, sizeof(T) == 4 ? 3u : 2u, nullptr, 0};
    if (hasAvx512()) {
        k.radix4Wide = radix4Avx512;
        k.wideQuarter = sizeof(T) == 4 ? 16 : 8;
    }
    return k;
}

template <typename T>
FftKernels<T> const& chosenKernels();

template <>
FftKernels<float> const& chosenKernels<float>()
{
    return fftKernelsFloat();
}

template <>
FftKernels<double> const& chosenKernels<double>()
{
    return fftKernelsDouble();
}

// Transforms shorter than one register's worth of points run on the scalar stages.
template <typename T>
FftKernels<T> const& kernelsFor(unsigned int order)
{
    static FftKernels<T> const portable = portableKernels<T>();
    FftKernels<T> const& chosen = chosenKernels<T>();
    return chosen.tail && order >= chosen.tailLog ? chosen : portable;
}

// Twiddles in double for both precisions: the tables are small and made once.
template <typename T>
void appendPowers(aligned_vector<T>& table, unsigned int count, unsigned int span, unsigned int power)
{
    std::size_t const at = table.size();
    table.resize(at + 2 * std::size_t{count});
    for (unsigned int j = 0; j < count; ++j) {
        double const angle = -2.0 * std::numbers::pi * double(j) * power / span;
        table[at + j] = static_cast<T>(std::cos(angle));
        table[at + count + j] = static_cast<T>(std::sin(angle));
    }
}

} // namespace

FftKernels<float> const& fftKernelsFloat()
{
    static FftKernels<float> const chosen = chooseKernels<float>();
    return chosen;
}

FftKernels<double> const& fftKernelsDouble()
{
    static FftKernels<double> const chosen = chooseKernels<double>();
    return chosen;
}

template <typename T>
FastFft<T>::FastFft(unsigned int order) : size(1u << order), kernels(&kernelsFor<T>(order))
{
    FftKernels<T> const& k = *kernels;
    useTail = k.tail != nullptr;
    unsigned int const tailSpan = useTail ? 1u << k.tailLog : 1u;
    unsigned int span = size;
    unsigned int remaining = order - (useTail ? k.tailLog : 0);
    if (remaining % 2 == 1) {
        stages.push_back({2, span / 2, twiddles.size()});
        appendPowers(twiddles, span / 2, span, 1);
        span /= 2;
    }
    for (; span > tailSpan; span /= 4) {
        unsigned int const q = span / 4;
        stages.push_back({4, q, twiddles.size()});
        for (unsigned int power = 1; power <= 3; ++power)
            appendPowers(twiddles, q, span, power);
    }
    reversal.resize(size);
    for (unsigned int j = 0; j < size; ++j) {
        unsigned int r = 0;
        for (unsigned int b = 0; b < order; ++b)
            r |= ((j >> b) & 1u) << (order - 1 - b);
        reversal[j] = r;
    }
}

template <typename T>
void FastFft<T>::Run(T* re, T* im) const
{
    FftKernels<T> const& k = *kernels;
    for (Stage const& s : stages) {
        T const* tw = twiddles.data() + s.twiddle;
        if (s.radix == 2)
            k.radix2(re, im, size, s.span, tw);
        else if (k.radix4Wide && s.span >= k.wideQuarter)
            k.radix4Wide(re, im, size, s.span, tw);
        else
            k.radix4(re, im, size, s.span, tw);
    }
    if (useTail)
        k.tail(re, im, size);
}

template <typename T>
void FastFft<T>::Deinterleave(T const* src, T* re, T* im) const
{
    kernels->deinterleave(size, src, re, im);
}

// The inverse is the forward transform with real and imaginary parts exchanged on the way in
// and out, which costs nothing on split data.
template <typename T>
void FastFft<T>::ForwardInterleaved(T const* in, T* out, T* workRe, T* workIm) const
{
    Deinterleave(in, workRe, workIm);
    Run(workRe, workIm);
    unsigned int const* rev = reversal.data();
    for (unsigned int k = 0; k < size; ++k) {
        out[2 * k] = workRe[rev[k]];
        out[2 * k + 1] = workIm[rev[k]];
    }
}

template <typename T>
void FastFft<T>::InverseInterleaved(T const* in, T* out, T* workRe, T* workIm) const
{
    Deinterleave(in, workIm, workRe);
    Run(workRe, workIm);
    T const scale = T(1) / static_cast<T>(size);
    unsigned int const* rev = reversal.data();
    for (unsigned int k = 0; k < size; ++k) {
        out[2 * k] = workIm[rev[k]] * scale;
        out[2 * k + 1] = workRe[rev[k]] * scale;
    }
}

template <typename T>
void FastFft<T>::ForwardSplit(T const* re, T const* im, T* reOut, T* imOut, T* workRe, T* workIm) const
{
    Copy(size, re, workRe);
    Copy(size, im, workIm);
    Run(workRe, workIm);
    unsigned int const* rev = reversal.data();
    for (unsigned int k = 0; k < size; ++k) {
        reOut[k] = workRe[rev[k]];
        imOut[k] = workIm[rev[k]];
    }
}

template <typename T>
void FastFft<T>::InverseSplit(T const* re, T const* im, T* reOut, T* imOut, T* workRe, T* workIm) const
{
    Copy(size, im, workRe);
    Copy(size, re, workIm);
    Run(workRe, workIm);
    T const scale = T(1) / static_cast<T>(size);
    unsigned int const* rev = reversal.data();
    for (unsigned int k = 0; k < size; ++k) {
        reOut[k] = workIm[rev[k]] * scale;
        imOut[k] = workRe[rev[k]] * scale;
    }
}

template <typename T>
FastRealFft<T>::FastRealFft(unsigned int order) : length(1u << order), half(order - 1)
{
    unsigned int const m = length / 2;
    rotation.resize(2 * std::size_t{m});
    for (unsigned int k = 0; k < m; ++k) {
        double const angle = -2.0 * std::numbers::pi * k / length;
        rotation[2 * k] = static_cast<T>(std::cos(angle));
        rotation[2 * k + 1] = static_cast<T>(std::sin(angle));
    }
}

// The n samples are read as n/2 complex values (even samples real, odd imaginary); their
// transform Z gives X[k] = E + t_k·O with E = (Z[k] + conj Z[m-k])/2, O = (Z[k] - conj Z[m-k])/(2i).
template <typename T>
void FastRealFft<T>::Forward(T const* in, T* out, T* workRe, T* workIm) const
{
    unsigned int const m = length / 2;
    half.Deinterleave(in, workRe, workIm);
    half.Run(workRe, workIm);
    unsigned int const* rev = half.Reversal();
    T const z0r = workRe[0];
    T const z0i = workIm[0];
    for (unsigned int k = 1; k < m; ++k) {
        unsigned int const a = rev[k];
        unsigned int const b = rev[m - k];
        T const zr = workRe[a], zi = workIm[a];
        T const cr = workRe[b], ci = -workIm[b];
        T const er = (zr + cr) * T(0.5), ei = (zi + ci) * T(0.5);
        T const orr = (zi - ci) * T(0.5), oi = (cr - zr) * T(0.5);
        T const tr = rotation[2 * k], ti = rotation[2 * k + 1];
        out[2 * k] = er + tr * orr - ti * oi;
        out[2 * k + 1] = ei + tr * oi + ti * orr;
    }
    out[0] = z0r + z0i;
    out[1] = 0;
    out[2 * m] = z0r - z0i;
    out[2 * m + 1] = 0;
}

// The mirror of Forward: E and O are recovered from X[k] and conj X[m-k], Z = E + i·O is
// transformed back (exchanging real and imaginary parts around a forward run), and the
// complex samples are the even and odd outputs.
template <typename T>
void FastRealFft<T>::Inverse(T const* in, T* out, T* workRe, T* workIm) const
{
    unsigned int const m = length / 2;
    // Bin 0 and bin m are real by definition: their imaginary parts are not read.
    T const x0 = in[0];
    T const xm = in[2 * m];
    workIm[0] = x0 + xm;
    workRe[0] = x0 - xm;
    for (unsigned int k = 1; k < m; ++k) {
        T const xr = in[2 * k], xi = in[2 * k + 1];
        T const cr = in[2 * (m - k)], ci = -in[2 * (m - k) + 1];
        T const er = xr + cr, ei = xi + ci;
        T const dr = xr - cr, di = xi - ci;
        T const tr = rotation[2 * k], ti = -rotation[2 * k + 1];
        T const orr = dr * tr - di * ti, oi = dr * ti + di * tr;
        // Z = E + i·O, stored with real and imaginary parts exchanged.
        workIm[k] = er - oi;
        workRe[k] = ei + orr;
    }
    half.Run(workRe, workIm);
    unsigned int const* rev = half.Reversal();
    T const scale = T(1) / static_cast<T>(length);
    for (unsigned int k = 0; k < m; ++k) {
        out[2 * k] = workIm[rev[k]] * scale;
        out[2 * k + 1] = workRe[rev[k]] * scale;
    }
}

template class FastFft<float>;
template class FastFft<double>;
template class FastRealFft<float>;
template class FastRealFft<double>;

} // namespace Cordel::IPP::detail
