#pragma once
// The float multirate FIR: upsample by U, filter, downsample by D, in one polyphase pass.
//
// With taps h[0 .. L-1], the input x is spread to the upsampled rate,
//   u[m] = x[j] when m = j·U + upPhase, and 0 otherwise,
// filtered, v[m] = Σ_{k<L} h[k]·u[m-k] (the sum in float, in tap order), and decimated,
//   y[i] = v[i·D + downPhase].
// Indices count from the first sample ever given to MRFProcess; inputs before it (j < 0) come
// from the delay line.
//
// MRFInit(state, U, D, taps, L, dlyLine, upPhase, downPhase): does nothing when state or taps is
// null or when L, U or D is 0; the phases are taken modulo their factors. On entry dlyLine holds
// the inputs before the first one, the most recent first (dlyLine[0] = x[-1]); missing values
// are 0. MRFInit resizes it to the number of past inputs the filter can reach,
// ceil((L - 1 + upPhase) / U), keeping its leading values and zero-filling the rest.
//
// MRFProcess(src, dst, n, state) consumes n input samples and writes every output whose
// upsampled index falls among theirs: n·U/D outputs when n·U is a multiple of D (otherwise the
// phase carries over to the next call, and the count varies by one between calls).
//
// The double family, UpSample and DownSample are present for compatibility and do nothing.

#include <Cordel/common/Export.h>

#include <vector>

namespace Cordel::IPP {

struct MRFState_Float;
struct MRFState_Double;

CORDEL_API void MRFInit(MRFState_Float** state, unsigned int upFactor, unsigned int downFactor, float const* taps,
                        unsigned int tapCount, std::vector<float>& dlyLine, unsigned int upPhase,
                        unsigned int downPhase);
CORDEL_API void MRFProcess(float const* src, float* dst, unsigned int n, MRFState_Float* state);
CORDEL_API void MRFFree(MRFState_Float* state);

CORDEL_API void MRFInit(MRFState_Double** state, unsigned int upFactor, unsigned int downFactor, double const* taps,
                        unsigned int tapCount, std::vector<double>& dlyLine, unsigned int upPhase,
                        unsigned int downPhase);
CORDEL_API void MRFProcess(double const* src, double* dst, unsigned int n, MRFState_Double* state);
CORDEL_API void MRFFree(MRFState_Double* state);

CORDEL_API void UpSample(unsigned int n, float const* src, float* dst, unsigned int factor, unsigned int phase);
CORDEL_API void UpSample(unsigned int n, double const* src, double* dst, unsigned int factor, unsigned int phase);
CORDEL_API void DownSample(unsigned int n, float const* src, float* dst, unsigned int factor, unsigned int phase);
CORDEL_API void DownSample(unsigned int n, double const* src, double* dst, unsigned int factor, unsigned int phase);

} // namespace Cordel::IPP
