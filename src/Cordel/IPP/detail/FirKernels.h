#pragma once
// The FIR's block kernels. x points at the first new sample of a time-ordered buffer that holds
// the L-1 samples before it, so x[i-k] is valid for k < L. Output i splits its taps at
// c_i = ((c0 - 1 + i) mod L) + 1: taps below c_i form the first sum, the rest the second, exactly
// as the one-sample form splits them at the circular write position.

#include <Cordel/IPP/detail/Dispatch.h>

namespace Cordel::IPP::detail {

// The plain loop, for any m (FIR.cpp), and eight outputs to a register (FirKernels_avx2.cpp).
void firBlockPortable(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0);
void firBlockAvx2(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0);

// The FIR's entries in the dispatch table: the AVX2 kernel takes groups of 32 outputs.
inline constexpr FirEntry firPortable{firBlockPortable, 1};
inline constexpr FirEntry firAvx2{firBlockAvx2, 32};

} // namespace Cordel::IPP::detail
