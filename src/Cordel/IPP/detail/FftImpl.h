#pragma once
// The portable radix-2 engine. It serves the orders the fast engine does not take, and its
// arithmetic (twiddles built by repeated rotation, the real untangling, the Hartley-identity
// inverse) is kept exactly, since callers may depend on its rounding.

#include <Cordel/IPP/Memory.h>

#include <memory>

namespace Cordel::IPP::detail {

enum class FftMode { Real = 0, Complex = 1 };

template <typename T>
class FftImpl {
public:
    FftImpl(FftMode mode, unsigned int n);
    FftImpl(FftImpl const&) = delete;
    FftImpl& operator=(FftImpl const&) = delete;

    // Complex mode: n interleaved (re, im) pairs. The inverse scales by 1/n.
    void ForwardComplex(T const* in, T* out);
    void InverseComplex(T const* in, T* out);
    void ForwardDeinterleaved(T const* re, T const* im, T* reOut, T* imOut);
    void InverseDeinterleaved(T const* re, T const* im, T* reOut, T* imOut);

    // Real mode: n samples to the packed spectrum of n+2 values, and back.
    void ForwardReal(T const* in, T* out);
    void InverseReal(T const* in, T* out);

private:
    void transformInPlace(T* x) const;
    void untangle(T* x) const;

    unsigned int length;
    unsigned int log2;
    aligned_vector<unsigned int> CachePerms;
    aligned_vector<T> twiddles; // interleaved pairs
    std::unique_ptr<FftImpl> half;
    aligned_vector<T> scratch0;
    aligned_vector<T> scratch1;
};

extern template class FftImpl<float>;
extern template class FftImpl<double>;

} // namespace Cordel::IPP::detail
