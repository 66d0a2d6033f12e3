#pragma once
// The float FIR filter: y[n] = Σ_{k<L} h[k]·x[n-k], streaming through a circular delay line, so a
// signal may be fed in blocks of any size (including one sample at a time) with the same result.
//
// Each output is two dot products over the delay line as it lies in memory (from the write
// position to the end, then from the start up to it), the second added to the first; every sum
// runs in float, in index order. The block forms give bit-for-bit the results of the one-sample form.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

struct FIRState_Float;

// Does nothing unless state and taps are not null and L is not 0. dly, when not null, primes the
// raw delay line with L values: dly[k] stands for the input k samples back (k = 1 .. L-1; dly[0]
// is overwritten by the first sample).
CORDEL_API void FIRInit(FIRState_Float** state, float const* taps, unsigned int L, float const* dly);
CORDEL_API float FIR(float x, FIRState_Float* state);
CORDEL_API void FIR(unsigned int n, float const* src, float* dst, FIRState_Float* state);
CORDEL_API void FIR_InPlace(unsigned int n, float* x, FIRState_Float* state);
// The L raw delay-line values in buffer order (not rotated to time order).
CORDEL_API void FIRGetDlyLine(FIRState_Float const* state, float* out);
// Replaces the raw delay line (a null in zeroes it); the write position is kept.
CORDEL_API void FIRSetDlyLine(FIRState_Float* state, float const* in);
CORDEL_API void FIRFree(FIRState_Float* state);

} // namespace Cordel::IPP
