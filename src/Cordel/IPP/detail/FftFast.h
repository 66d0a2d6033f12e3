#pragma once
// The fast engine behind orders 2 to 13: everything a transform needs (stage list, twiddles,
// bit-reversal table) is computed when the state is made, so a transform allocates nothing.
// Results follow the portable engine's layout and scaling; only the rounding differs.

#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/detail/FftKernels.h>

#include <vector>

namespace Cordel::IPP::detail {

// Complex transform of 2^order points on split-complex data.
template <typename T>
class FastFft {
public:
    explicit FastFft(unsigned int order);

    unsigned int Size() const { return size; }

    // Interleaved pairs; work holds two arrays of Size() elements.
    void ForwardInterleaved(T const* in, T* out, T* workRe, T* workIm) const;
    void InverseInterleaved(T const* in, T* out, T* workRe, T* workIm) const;
    void ForwardSplit(T const* re, T const* im, T* reOut, T* imOut, T* workRe, T* workIm) const;
    void InverseSplit(T const* re, T const* im, T* reOut, T* imOut, T* workRe, T* workIm) const;

    // In place, unscaled, result in bit-reversed order (see Reversal).
    void Run(T* re, T* im) const;
    unsigned int const* Reversal() const { return reversal.data(); }
    void Deinterleave(T const* src, T* re, T* im) const;

private:
    struct Stage {
        unsigned int radix;
        unsigned int span; // quarter (radix 4) or half (radix 2) size
        std::size_t twiddle;
    };

    unsigned int size;
    FftKernels<T> const* kernels;
    std::vector<Stage> stages;
    bool useTail;
    aligned_vector<T> twiddles;
    aligned_vector<unsigned int> reversal;
};

// Real transform of 2^order points (order >= 2) through a complex one of half the length.
template <typename T>
class FastRealFft {
public:
    explicit FastRealFft(unsigned int order);

    // work holds two arrays of n/2 elements.
    void Forward(T const* in, T* out, T* workRe, T* workIm) const;
    void Inverse(T const* in, T* out, T* workRe, T* workIm) const;

private:
    unsigned int length;
    FastFft<T> half;
    aligned_vector<T> rotation; // e^(-2πik/n), k < n/2, interleaved pairs
};

extern template class FastFft<float>;
extern template class FastFft<double>;
extern template class FastRealFft<float>;
extern template class FastRealFft<double>;

} // namespace Cordel::IPP::detail
