// The fast FFT engine: plans, the drivers around the passes, and the choice of kernels.

#include <Cordel/IPP/detail/FftFast.h>
#include <Cordel/IPP/detail/FftKernels.h>
#include <Cordel/IPP/detail/FftStages.h>

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <numbers>

namespace Cordel::IPP::detail {

namespace {

// One lane: the portable kernels, and the ones short transforms fall back to.
template <typename E>
struct Scalar {
    using V = E;
    using T = E;
    static constexpr unsigned int width = 1;
    static V load(T const* p) { return *p; }
    static void store(T* p, V v) { *p = v; }
    static V set1(T x) { return x; }
    static V add(V a, V b) { return a + b; }
    static V sub(V a, V b) { return a - b; }
    static V mul(V a, V b) { return a * b; }
    static V fmadd(V a, V b, V c) { return a * b + c; }
    static V fmsub(V a, V b, V c) { return a * b - c; }
    static V fnmadd(V a, V b, V c) { return c - a * b; }
    static void deinterleave(V a, V b, V& re, V& im)
    {
        re = a;
        im = b;
    }
    static void interleave(V re, V im, V& a, V& b)
    {
        a = re;
        b = im;
    }
    static V reverse(V v) { return v; }
};

template <typename T>
FftChoice<T> const& choiceOf(FftEntry const& entry)
{
    if constexpr (sizeof(T) == sizeof(float))
        return entry.floats;
    else
        return entry.doubles;
}

// A pass takes one register from each of its R parts of the transform, so a set's registers must
// fit N/R points. Radix 8 wants 32 registers, so it runs only on the AVX-512 builds (whose 256-bit
// variant serves the transforms too short for 512-bit registers); radix 4 everywhere. What fits
// nothing runs on the portable kernels.
template <typename T>
FftKernels<T> const& kernelsFor(unsigned int size, bool& eights)
{
    FftChoice<T> const& set = choiceOf<T>(dispatch().fft);
    for (unsigned int radix : {8u, 4u}) {
        if (radix == 8 && !set.radix8)
            continue;
        for (FftKernels<T> const* k : {set.full, set.half}) {
            if (k != nullptr && size / radix >= k->width) {
                eights = radix == 8;
                return *k;
            }
        }
    }
    eights = false;
    return *choiceOf<T>(fftPortable).full;
}

} // namespace

constinit FftKernels<float> const fftPortableFloat = stages::kernels<Scalar<float>>();
constinit FftKernels<double> const fftPortableDouble = stages::kernels<Scalar<double>>();

// The twiddles are computed in double for both precisions: the tables are small and made once.
template <typename T>
FastFft<T>::FastFft(unsigned int order, FastFft const* sharing)
{
    unsigned int const size = 1u << order;
    bool eights = false;
    kernels = &kernelsFor<T>(size, eights);
    // On 16-lane registers, from 4096 points up, two radix-4 passes before the radix-8 ones: they
    // do the narrow strides with fewer shuffles, and the larger sizes gain from it.
    unsigned int const leadingFours = kernels->width == 16 && order >= 12 ? 2 : 0;
    Radices r = radices(order, eights, leadingFours);
    if (sharing != nullptr && r.radix[r.count - 1] == 8) {
        r.radix[r.count - 1] = 4;
        r.add(2);
    }
    unsigned int const width = kernels->width;
    plan.size = size;
    plan.passCount = r.count;
    std::size_t total = 0;
    for (unsigned int k = 0, s = 1; k < r.count; s *= r.radix[k], ++k) {
        unsigned int const groups = size / s / r.radix[k];
        bool const last = k + 1 == r.count;
        unsigned int const count = last ? 0 : s >= width ? groups : size / r.radix[k];
        plan.passes[k] = {r.radix[k], s, groups, nullptr, count};
        total += 2 * std::size_t{r.radix[k] - 1} * count;
    }

    // The first pass again, for paired reads: the same values, each lane's at the point it holds.
    FftPass<T> const& first = plan.passes[0];
    bool const paired = kernels->pairedLanes != nullptr && plan.passCount > 1 && first.stride < width;
    std::size_t const pairedCount = paired ? 2 * std::size_t{first.radix - 1} * first.count : 0;
    twiddles.resize(total + pairedCount);
    T* tw = twiddles.data();
    for (unsigned int k = 0; k + 1 < plan.passCount; ++k) {
        FftPass<T>& p = plan.passes[k];
        unsigned int const points = p.radix * p.groups;
        bool const wide = p.stride >= width;
        std::size_t const block = wide ? 1 : width; // values of j side by side
        for (unsigned int j = 0; j < p.count; ++j) {
            unsigned int const power = j / (wide ? 1 : p.stride);
            T* const at = tw + j / block * 2 * (p.radix - 1) * block + j % block;
            for (unsigned int e = 1; e < p.radix; ++e) {
                double const angle = -2.0 * std::numbers::pi * double(e * power) / points;
                at[(2 * e - 2) * block] = static_cast<T>(std::cos(angle));
                at[(2 * e - 1) * block] = static_cast<T>(std::sin(angle));
            }
        }
        p.twiddles = tw;
        tw += 2 * std::size_t{p.radix - 1} * p.count;
    }
    if (paired) {
        T* const out = tw;
        T const* const in = first.twiddles;
        for (std::size_t j = 0; j < first.count; ++j) {
            std::size_t const block = j / width * 2 * (first.radix - 1) * width;
            for (std::size_t e = 0; e < 2 * std::size_t{first.radix - 1}; ++e)
                out[block + e * width + j % width] = in[block + e * width + kernels->pairedLanes[j % width]];
        }
        plan.pairedTwiddles = out;
    }

    if (sharing != nullptr) {
        for (unsigned int b = 0; b < 2; ++b) {
            plan.re[b] = sharing->plan.re[b];
            plan.im[b] = sharing->plan.im[b];
        }
        return;
    }
    // Four arrays on cache-line boundaries, a real part and an imaginary part half a page apart.
    std::size_t const line = 64 / sizeof(T);
    std::size_t const page = 4096 / sizeof(T);
    std::size_t const stride = (FftPadding<T>::length(size) + page - 1) / page * page + page / 2;
    buffers.resize(4 * stride + line);
    T* at = buffers.data() + (line - reinterpret_cast<std::uintptr_t>(buffers.data()) / sizeof(T) % line) % line;
    for (unsigned int b = 0; b < 2; ++b) {
        plan.re[b] = at + 2 * b * stride;
        plan.im[b] = plan.re[b] + stride;
    }
}

template <typename T>
void FastFft<T>::Run(T const* inRe, T const* inIm, T* outRe, T* outIm, unsigned int flags, T scale) const
{
    kernels->run(plan, inRe, inIm, outRe, outIm, flags, scale);
}

// The inverse is the forward transform with real and imaginary parts exchanged on the way in
// and out, which the first and last passes do as they read and write.
template <typename T>
void FastFft<T>::ForwardInterleaved(T const* in, T* out) const
{
    Run(in, nullptr, out, nullptr, fftInInterleaved | fftOutInterleaved, T(1));
}

template <typename T>
void FastFft<T>::InverseInterleaved(T const* in, T* out) const
{
    Run(in, nullptr, out, nullptr, fftInInterleaved | fftOutInterleaved | fftInverse, T(1) / static_cast<T>(Size()));
}

template <typename T>
void FastFft<T>::ForwardSplit(T const* re, T const* im, T* reOut, T* imOut) const
{
    Run(re, im, reOut, imOut, 0, T(1));
}

template <typename T>
void FastFft<T>::InverseSplit(T const* re, T const* im, T* reOut, T* imOut) const
{
    Run(re, im, reOut, imOut, fftInverse, T(1) / static_cast<T>(Size()));
}

template <typename T>
FastRealFft<T>::FastRealFft(unsigned int order) : length(1u << order), half(order - 1)
{
    unsigned int const m = length / 2;
    FftPlan<T> const& plan = half.Plan();
    // Plans of two passes run in registers, where the untangling is never a pass of its own.
    if (half.Kernels().forwardReal != nullptr && plan.passCount > 2 && plan.passes[plan.passCount - 1].radix == 8)
        fusedHalf = std::make_unique<FastFft<T> const>(order - 1, half);
    rotation.resize(2 * std::size_t{m});
    for (unsigned int k = 0; k < m; ++k) {
        double const angle = -2.0 * std::numbers::pi * k / length;
        rotation[k] = static_cast<T>(std::cos(angle));
        rotation[m + k] = static_cast<T>(std::sin(angle));
    }
}

// The n samples are read as n/2 complex values (even samples real, odd imaginary) by the first
// pass; the last pass leaves their transform inside for the untangling.
template <typename T>
void FastRealFft<T>::Forward(T const* in, T* out) const
{
    unsigned int const m = length / 2;
    if (auto const fused = half.Kernels().forwardReal) {
        fused((fusedHalf ? *fusedHalf : half).Plan(), in, rotation.data(), rotation.data() + m, out);
        return;
    }
    T* zRe = half.ResultRe();
    T* zIm = half.ResultIm();
    half.Run(in, nullptr, zRe, zIm, fftInInterleaved, T(1));
    half.Kernels().untangle(m, zRe, zIm, rotation.data(), rotation.data() + m, out);
}

template <typename T>
void FastRealFft<T>::Inverse(T const* in, T* out) const
{
    unsigned int const m = length / 2;
    T* zRe = half.SourceRe();
    T* zIm = half.SourceIm();
    half.Kernels().tangle(m, in, rotation.data(), rotation.data() + m, zRe, zIm);
    half.Run(zRe, zIm, out, nullptr, fftOutInterleaved | fftInverse, T(1) / static_cast<T>(length));
}

template class FastFft<float>;
template class FastFft<double>;
template class FastRealFft<float>;
template class FastRealFft<double>;

} // namespace Cordel::IPP::detail
