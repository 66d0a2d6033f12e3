#pragma once
// IIR filters in double precision, of any order or as a cascade of biquads, streaming: the delay
// values stay in the state between calls.
//
// General order: taps are b0 .. b_order then a0 .. a_order (2·(order+1) values), and
//   y[n] = Σ_{k=0..order} b_k·x[n-k] - Σ_{k=1..order} a_k·y[n-k],
// computed in transposed direct form II with one delay value per order.
// Biquads: six taps per section, b0 b1 b2 a0 a1 a2, and two delay values s0 s1 per section:
//   y = b0·x + s0;  s0 = b1·x + s1 - a1·y;  s1 = b2·x - a2·y.
//
// IIRInit scales all taps by 1/a0. IIRInit_BiQuad scales every section by 1/a0 of the FIRST
// section only, so cascades should be given with a0 = 1 in every section. IIRSetTaps stores
// the taps it is given as they are (a0 must already be 1).
//
// The float family and the double IIR_InPlace are present for compatibility and do nothing
// (the float one-sample IIR returns 0).

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

struct IIRState_Double;
struct IIRState_Float;

// Do nothing unless state and taps are not null and order (count) is not 0. dly, when not null,
// gives the initial delay values (order of them, or two per section).
CORDEL_API void IIRInit(IIRState_Double** state, double const* taps, unsigned int order, double const* dly);
CORDEL_API void IIRInit_BiQuad(IIRState_Double** state, double const* taps, unsigned int count, double const* dly);
CORDEL_API void IIRSetTaps(IIRState_Double* state, double const* taps);
CORDEL_API void IIRGetDlyLine(IIRState_Double const* state, double* out);
// A null in zeroes the delay values.
CORDEL_API void IIRSetDlyLine(IIRState_Double* state, double const* in);
CORDEL_API double IIR(double x, IIRState_Double* state);
CORDEL_API void IIR(unsigned int n, double const* src, double* dst, IIRState_Double* state);
CORDEL_API void IIR_InPlace(unsigned int n, double* x, IIRState_Double* state);
CORDEL_API void IIRFree(IIRState_Double* state);

CORDEL_API void IIRInit(IIRState_Float** state, float const* taps, unsigned int order, float const* dly);
CORDEL_API void IIRInit_BiQuad(IIRState_Float** state, float const* taps, unsigned int count, float const* dly);
CORDEL_API float IIR(float x, IIRState_Float* state);
CORDEL_API void IIR(unsigned int n, float const* src, float* dst, IIRState_Float* state);
CORDEL_API void IIR_InPlace(unsigned int n, float* x, IIRState_Float* state);
CORDEL_API void IIRGetDlyLine(IIRState_Float const* state, float* out);
CORDEL_API void IIRSetDlyLine(IIRState_Float* state, float const* in);
CORDEL_API void IIRFree(IIRState_Float* state);

} // namespace Cordel::IPP
