#pragma once
// The fast engine behind orders 2 to 13: the pass list, the twiddles and the working buffers are
// all made with the state, so a transform allocates nothing. Results follow the portable engine's
// layout and scaling; only the rounding differs.

#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/detail/FftKernels.h>

namespace Cordel::IPP::detail {

// Complex transform of 2^order points. Transforms write the engine's buffers: one at a time.
template <typename T>
class FastFft {
public:
    explicit FastFft(unsigned int order);
    FastFft(FastFft const&) = delete;
    FastFft& operator=(FastFft const&) = delete;

    unsigned int Size() const { return plan.size; }

    void ForwardInterleaved(T const* in, T* out) const;
    void InverseInterleaved(T const* in, T* out) const;
    void ForwardSplit(T const* re, T const* im, T* reOut, T* imOut) const;
    void InverseSplit(T const* re, T const* im, T* reOut, T* imOut) const;

    // The plan's own run (see FftKernels.h for the flags).
    void Run(T const* inRe, T const* inIm, T* outRe, T* outIm, unsigned int flags, T scale) const;
    FftKernels<T> const& Kernels() const { return *kernels; }
    FftPlan<T> const& Plan() const { return plan; }
    // The buffer the last pass may write when the output stays inside (the other one being its input),
    // and the one the first pass may read when the input comes from inside.
    T* ResultRe() const { return plan.re[(plan.passCount + 1) % 2]; }
    T* ResultIm() const { return plan.im[(plan.passCount + 1) % 2]; }
    T* SourceRe() const { return plan.re[1]; }
    T* SourceIm() const { return plan.im[1]; }

private:
    FftKernels<T> const* kernels;
    FftPlan<T> plan;
    aligned_vector<T> twiddles;
    aligned_vector<T> buffers;
};

// Real transform of 2^order points (order >= 2) through a complex one of half the length.
template <typename T>
class FastRealFft {
public:
    explicit FastRealFft(unsigned int order);

    void Forward(T const* in, T* out) const;
    void Inverse(T const* in, T* out) const;

private:
    unsigned int length;
    FastFft<T> half;
    aligned_vector<T> rotation; // e^(-2πik/n), k < n/2: n/2 real parts, then n/2 imaginary parts
};

extern template class FastFft<float>;
extern template class FastFft<double>;
extern template class FastRealFft<float>;
extern template class FastRealFft<double>;

} // namespace Cordel::IPP::detail
