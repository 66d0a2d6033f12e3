#pragma once
// Power-of-two fast Fourier transforms in six flavours, driven through opaque states.
//
// A state is made by FFTInit for a given order (n = 2^order points), used by any number of
// FFTFwd/FFTInv calls and released by FFTFree. The forward transforms are unscaled DFTs
// (X[k] = sum x[j]·e^(-2πi·jk/n)); the inverse transforms scale by 1/n, so that forward then
// inverse gives back the input.
//
// Real transforms use a packed spectrum of n+2 values: out[2k] = Re X[k], out[2k+1] = Im X[k]
// for k = 0 .. n/2; the imaginary parts of bins 0 and n/2 are written as 0 and ignored when read.
//
// FFTInit does nothing (and leaves *out as it was) when out is null, when order is 0 or when
// order is above 30. A state may serve one transform at a time: each transform writes the
// state's working buffers. The byte buffer argument is accepted and ignored: FFTGetBufSize
// always reports 0.

#include <Cordel/common/Export.h>
#include <Cordel/IPP/Complex.h>

namespace Cordel::IPP {

struct FFTState_Float;
struct FFTState_Double;
struct FFTState_Complex_Float_Interleaved;
struct FFTState_Complex_Float_Deinterleaved;
struct FFTState_Complex_Double_Interleaved;
struct FFTState_Complex_Double_Deinterleaved;

CORDEL_API void FFTInit(FFTState_Float** out, unsigned int order);
CORDEL_API void FFTInit(FFTState_Double** out, unsigned int order);
CORDEL_API void FFTInit(FFTState_Complex_Float_Interleaved** out, unsigned int order);
CORDEL_API void FFTInit(FFTState_Complex_Float_Deinterleaved** out, unsigned int order);
CORDEL_API void FFTInit(FFTState_Complex_Double_Interleaved** out, unsigned int order);
CORDEL_API void FFTInit(FFTState_Complex_Double_Deinterleaved** out, unsigned int order);

CORDEL_API void FFTGetBufSize(FFTState_Float const* state, unsigned int* size);
CORDEL_API void FFTGetBufSize(FFTState_Double const* state, unsigned int* size);
CORDEL_API void FFTGetBufSize(FFTState_Complex_Float_Interleaved const* state, unsigned int* size);
CORDEL_API void FFTGetBufSize(FFTState_Complex_Float_Deinterleaved const* state, unsigned int* size);
CORDEL_API void FFTGetBufSize(FFTState_Complex_Double_Interleaved const* state, unsigned int* size);
CORDEL_API void FFTGetBufSize(FFTState_Complex_Double_Deinterleaved const* state, unsigned int* size);

// Real: n samples in, n+2 packed values out (forward); n+2 packed values in, n samples out (inverse).
CORDEL_API void FFTFwd(float const* in, float* out, FFTState_Float* state, unsigned char* buffer);
CORDEL_API void FFTFwd(double const* in, double* out, FFTState_Double* state, unsigned char* buffer);
CORDEL_API void FFTInv(float const* in, float* out, FFTState_Float* state, unsigned char* buffer);
CORDEL_API void FFTInv(double const* in, double* out, FFTState_Double* state, unsigned char* buffer);

// Complex, interleaved: n pairs in, n pairs out.
CORDEL_API void FFTFwd(Complex_Float const* in, Complex_Float* out, FFTState_Complex_Float_Interleaved* state,
                       unsigned char* buffer);
CORDEL_API void FFTFwd(Complex_Double const* in, Complex_Double* out, FFTState_Complex_Double_Interleaved* state,
                       unsigned char* buffer);
CORDEL_API void FFTInv(Complex_Float const* in, Complex_Float* out, FFTState_Complex_Float_Interleaved* state,
                       unsigned char* buffer);
CORDEL_API void FFTInv(Complex_Double const* in, Complex_Double* out, FFTState_Complex_Double_Interleaved* state,
                       unsigned char* buffer);

// Complex, deinterleaved: separate arrays of n real and n imaginary parts.
CORDEL_API void FFTFwd(float const* re, float const* im, float* reOut, float* imOut,
                       FFTState_Complex_Float_Deinterleaved* state, unsigned char* buffer);
CORDEL_API void FFTFwd(double const* re, double const* im, double* reOut, double* imOut,
                       FFTState_Complex_Double_Deinterleaved* state, unsigned char* buffer);
CORDEL_API void FFTInv(float const* re, float const* im, float* reOut, float* imOut,
                       FFTState_Complex_Float_Deinterleaved* state, unsigned char* buffer);
CORDEL_API void FFTInv(double const* re, double const* im, double* reOut, double* imOut,
                       FFTState_Complex_Double_Deinterleaved* state, unsigned char* buffer);

CORDEL_API void FFTFree(FFTState_Float* state);
CORDEL_API void FFTFree(FFTState_Double* state);
CORDEL_API void FFTFree(FFTState_Complex_Float_Interleaved* state);
CORDEL_API void FFTFree(FFTState_Complex_Float_Deinterleaved* state);
CORDEL_API void FFTFree(FFTState_Complex_Double_Interleaved* state);
CORDEL_API void FFTFree(FFTState_Complex_Double_Deinterleaved* state);

} // namespace Cordel::IPP
