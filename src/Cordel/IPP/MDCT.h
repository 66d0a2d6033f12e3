#pragma once
// The float MDCT of N samples into N/2 coefficients, in place, through an N/4-point complex FFT.
//
// Normalisation: the forward transform gives
//   X[k] = (1/√N)·Σ_{n<N} x[n]·cos(2π/N·(n + 1/2 + N/4)·(k + 1/2)),   k < N/2,
// and the inverse gives
//   y[n] = (4/√N)·Σ_{k<N/2} X[k]·cos(2π/N·(n + 1/2 + N/4)·(k + 1/2)),  n < N.
// With a window w applied before the forward and after the inverse, where
// w[n]² + w[n + N/2]² = 1, overlap-adding frames that advance by N/2 gives back the input.
//
// The lengths that work are powers of two from 4 up; the buffer size queries report 1, and the
// byte buffer argument is ignored. The transforms allocate their temporaries on each call.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

struct MDCTStateFwd_Float;
struct MDCTStateInv_Float;

// Do nothing when state is null or N is 0.
CORDEL_API void MDCTInitFwd(MDCTStateFwd_Float** state, unsigned int N);
CORDEL_API void MDCTInitInv(MDCTStateInv_Float** state, unsigned int N);

CORDEL_API void MDCTGetFwdBufSize(MDCTStateFwd_Float const* state, unsigned int* size);
CORDEL_API void MDCTGetInvBufSize(MDCTStateInv_Float const* state, unsigned int* size);

// N samples in; the first N/2 are replaced with the coefficients.
CORDEL_API void MDCTFwd_InPlace(float* x, MDCTStateFwd_Float* state, unsigned char* buffer);
// N/2 coefficients in; N samples out, in the same array (which must hold N values).
CORDEL_API void MDCTInv_InPlace(float* x, MDCTStateInv_Float* state, unsigned char* buffer);

CORDEL_API void MDCTFwdFree(MDCTStateFwd_Float* state);
CORDEL_API void MDCTInvFree(MDCTStateInv_Float* state);

} // namespace Cordel::IPP
