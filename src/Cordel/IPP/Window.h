#pragma once
// Window functions. Each multiplies the array in place (apply one to ones to obtain the window)
// and spans n samples with the divisor n − 1, so the first and last samples are the window's end
// points. The float forms evaluate in single precision around a double-precision cosine; the
// double forms evaluate in double from the same single-precision step. A window of one sample is
// 1: the array is left as it is.

#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// Triangular: 0 at both ends, 1 in the middle.
CORDEL_API void WindowBartlett(unsigned int n, float* x);
CORDEL_API void WindowBartlett(unsigned int n, double* x);

// 0.5 − 0.5·cos(2πi/(n−1)).
CORDEL_API void WindowHann(unsigned int n, float* x);
CORDEL_API void WindowHann(unsigned int n, double* x);

// 0.54 − 0.46·cos(2πi/(n−1)).
CORDEL_API void WindowHamming(unsigned int n, float* x);
CORDEL_API void WindowHamming(unsigned int n, double* x);

// (alpha + 1)/2 − 0.5·cos(2πi/(n−1)) − (alpha/2)·cos(4πi/(n−1)); alpha = −0.16 is the classic
// Blackman window.
CORDEL_API void WindowBlackman(unsigned int n, float* x, float alpha);
CORDEL_API void WindowBlackman(unsigned int n, double* x, float alpha);

// I0(alpha·√(M² − (i − M)²)) / I0(alpha·M) with M = (n − 1)/2; alpha = 0 leaves the array as it is.
CORDEL_API void WindowKaiser(unsigned int n, float* x, float alpha);
CORDEL_API void WindowKaiser(unsigned int n, double* x, float alpha);

} // namespace Cordel::IPP
