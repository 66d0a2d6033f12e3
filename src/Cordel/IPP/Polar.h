#pragma once
// Magnitudes and conversions between Cartesian and polar form (the conventions of Arithmetic.h
// apply). Single-precision results are computed in double and rounded once.

#include <Cordel/IPP/Complex.h>
#include <Cordel/common/Export.h>

namespace Cordel::IPP {

// dst = √(re² + im²).
CORDEL_API void Magnitude(unsigned int n, double const* re, double const* im, double* dst);
// dst = √(re² + im²), the squares summed in float and the root taken in double.
CORDEL_API void Magnitude(unsigned int n, Complex_Float const* src, float* dst);

// src holds n interleaved (re, im) pairs; mag = √(re² + im²) (squares summed in float, root in
// double) and phase = atan2(im, re) in double.
CORDEL_API void CartToPolar(unsigned int n, float const* src, float* mag, float* phase);

// dst holds n interleaved pairs (mag·cos phase, mag·sin phase), formed in double.
CORDEL_API void PolarToCart(unsigned int n, float const* mag, float const* phase, float* dst);

} // namespace Cordel::IPP
