#pragma once
// The FIR's block kernels. x points at the first new sample of a time-ordered buffer that holds
// the L-1 samples before it, so x[i-k] is valid for k < L. Output i splits its taps at
// c_i = ((c0 - 1 + i) mod L) + 1: taps below c_i form the first sum, the rest the second, exactly
// as the one-sample form splits them at the circular write position.

namespace Cordel::IPP::detail {

using FirBlockKernel = void (*)(float const* h, unsigned int L, float const* x, float* y, unsigned int m,
                                unsigned int c0);

void firBlockAvx2(float const* h, unsigned int L, float const* x, float* y, unsigned int m, unsigned int c0);

} // namespace Cordel::IPP::detail
