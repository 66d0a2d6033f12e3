#pragma once
// The fast engine behind orders 2 to 13: the pass list, the twiddles and the working buffers are
// all made with the state, so a transform allocates nothing. Results follow the portable engine's
// layout and scaling; only the rounding differs.

#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/detail/FftKernels.h>

#include <memory>

namespace Cordel::IPP::detail {

// Complex transform of 2^order points. Transforms write the engine's buffers: one at a time.
template <typename T>
class FastFft {
public:
    explicit FastFft(unsigned int order) : FastFft(order, nullptr) {}
    // The same transform with a last pass of at most four points (a last radix-8 pass becomes
    // radix 4 then 2), on the working buffers of `sharing`, a plan of the same order that outlives
    // it and is not run at the same time.
    FastFft(unsigned int order, FastFft const& sharing) : FastFft(order, &sharing) {}
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
    FastFft(unsigned int order, FastFft const* sharing);

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
    // For the forward transform, when the kernels fuse a short last pass with the untangling and
    // the half transform would end in radix 8 over memory: the split pass saves the untangling's
    // own pass over the data (the inverse keeps the shorter plan).
    std::unique_ptr<FastFft<T> const> fusedHalf;
    aligned_vector<T> rotation; // e^(-2πik/n), k < n/2: n/2 real parts, then n/2 imaginary parts
};

extern template class FastFft<float>;
extern template class FastFft<double>;
extern template class FastRealFft<float>;
extern template class FastRealFft<double>;

} // namespace Cordel::IPP::detail
